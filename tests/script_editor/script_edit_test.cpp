#include "chartcore/script_editor/script_words.h"

#include <cwchar>

#include <gtest/gtest.h>

using namespace chartcore::internal;

namespace {

int Classify(const wchar_t* w, int mode = 2, const NoCaseWordIndex* basic = nullptr) {
  return ClassifyScriptWord(w, static_cast<int>(std::wcslen(w)), mode, basic);
}

}  // namespace

TEST(ScriptWords, TablesHaveTheLanguagesCounts) {
  EXPECT_EQ(CountWords(kConstantWords), 14);
  EXPECT_EQ(CountWords(kBuiltinFunctionWords), 88);
  EXPECT_EQ(CountWords(kMathFunctionWords), 19);
  EXPECT_EQ(CountWords(kPriceWords), 38);
  // The indicator table holds 239 names (its usual description says 240).
  EXPECT_EQ(CountWords(kIndicatorWords), 239);
  EXPECT_EQ(CountWords(kPriceWordsSkippedInModes01), 6);
  EXPECT_EQ(CountWords(kIndicatorsSkippedInModes01), 37);
  // The two deliberate spellings stay as they are.
  EXPECT_TRUE(IsExactTableWord(kIndicatorWords, L"HeometricMA"));
  EXPECT_TRUE(IsExactTableWord(kIndicatorWords, L"PVrank"));
  EXPECT_FALSE(IsExactTableWord(kIndicatorWords, L"PVRank"));
  // Exact look-up is case-sensitive; a null word is never found.
  EXPECT_TRUE(IsExactTableWord(kBuiltinFunctionWords, L"crossup"));
  EXPECT_FALSE(IsExactTableWord(kBuiltinFunctionWords, L"CrossUp"));
  EXPECT_FALSE(IsExactTableWord(kBuiltinFunctionWords, nullptr));
}

TEST(ScriptWords, ClassifiesEachTableWholeWordIgnoringCase) {
  EXPECT_EQ(Classify(L"TRUE"), kScriptConstant);
  EXPECT_EQ(Classify(L"만일"), kScriptConstant);       // Korean "if"
  EXPECT_EQ(Classify(L"CrossUp"), kScriptBuiltin);     // table has "crossup"
  EXPECT_EQ(Classify(L"상향돌파"), kScriptBuiltin);
  EXPECT_EQ(Classify(L"ROUNDDOWN"), kScriptMath);
  EXPECT_EQ(Classify(L"WELLES이평"), kScriptPrice);
  EXPECT_EQ(Classify(L"welles이평"), kScriptPrice);
  EXPECT_EQ(Classify(L"ichimokusenkouspan2"), kScriptIndicator);
  // Whole words only: a longer or shorter word is not an entry.
  EXPECT_EQ(Classify(L"crossupx"), 0);
  EXPECT_EQ(Classify(L"crossu"), 0);
  EXPECT_EQ(Classify(L"x"), 0);
  EXPECT_EQ(ClassifyScriptWord(nullptr, 3, 2, nullptr), 0);
  EXPECT_EQ(ClassifyScriptWord(L"sum", 0, 2, nullptr), 0);
  // A prefix of the buffer is classified by the given length alone.
  EXPECT_EQ(ClassifyScriptWord(L"sumxyz", 3, 2, nullptr), kScriptBuiltin);
}

TEST(ScriptWords, ScriptModesZeroAndOneShrinkPriceAndIndicatorTables) {
  for (int mode : {0, 1}) {
    EXPECT_EQ(Classify(L"volume", mode), 0) << mode;
    EXPECT_EQ(Classify(L"미결제약정", mode), 0) << mode;
    EXPECT_EQ(Classify(L"OBV", mode), 0) << mode;
    EXPECT_EQ(Classify(L"pvrank", mode), 0) << mode;  // excluded as "PVRank"
    EXPECT_EQ(Classify(L"close", mode), kScriptPrice) << mode;
    EXPECT_EQ(Classify(L"MACD", mode), kScriptIndicator) << mode;
    // "MFI" is only in the exclusion list: never an indicator in any mode.
    EXPECT_EQ(Classify(L"MFI", mode), 0) << mode;
  }
  for (int mode : {2, 3, -1}) {
    EXPECT_EQ(Classify(L"volume", mode), kScriptPrice) << mode;
    EXPECT_EQ(Classify(L"OBV", mode), kScriptIndicator) << mode;
    EXPECT_EQ(Classify(L"MFI", mode), 0) << mode;
  }
}

TEST(ScriptWords, NumbersFollowTheLanguagesShortTest) {
  EXPECT_TRUE(IsScriptNumber(L"7", 1));
  EXPECT_TRUE(IsScriptNumber(L"3.14", 4));
  EXPECT_TRUE(IsScriptNumber(L"1e", 2));
  EXPECT_TRUE(IsScriptNumber(L"1.2.3", 5));    // dots are never checked for count
  EXPECT_TRUE(IsScriptNumber(L"0XFF", 4));
  EXPECT_TRUE(IsScriptNumber(L"0x1aF", 5));
  EXPECT_FALSE(IsScriptNumber(L"0x", 2));      // second char 'x' is no digit
  EXPECT_FALSE(IsScriptNumber(L"0x1G", 4));    // hex form gets no second chance
  EXPECT_FALSE(IsScriptNumber(L"1_000", 5));
  EXPECT_FALSE(IsScriptNumber(L".5", 2));
  EXPECT_FALSE(IsScriptNumber(L"", 0));
  EXPECT_FALSE(IsScriptNumber(L"\x0661", 1));  // Arabic-Indic one: not a decimal digit here
  EXPECT_EQ(Classify(L"0x1G"), 0);
  EXPECT_EQ(Classify(L"10"), kScriptNumber);
}

TEST(ScriptWords, UserFunctionsComeLastAndMatchIgnoringCase) {
  NoCaseWordIndex basic;
  basic.Add(L"MyFunc", 6, 1);
  basic.Add(L"나의함수", 4, 1);
  basic.Add(L"sum", 3, 1);      // a table word keeps its table colour
  basic.Add(L"MYFUNC", 6, 2);   // same word: flags merge, no second entry
  basic.Add(L"", 0, 1);         // ignored
  basic.Add(nullptr, 3, 1);     // ignored
  EXPECT_EQ(basic.GetCount(), 3);
  EXPECT_EQ(basic.Find(L"myfunc", 6), 3u);
  EXPECT_EQ(basic.Find(L"myfun", 5), 0u);
  EXPECT_EQ(basic.Find(L"myfuncs", 7), 0u);
  EXPECT_EQ(Classify(L"myFUNC", 2, &basic), kScriptUserFunction);
  EXPECT_EQ(Classify(L"나의함수", 0, &basic), kScriptUserFunction);
  EXPECT_EQ(Classify(L"SUM", 2, &basic), kScriptBuiltin);
  // Words excluded by the mode fall through to the user list.
  basic.Add(L"OBV", 3, 1);
  EXPECT_EQ(Classify(L"obv", 0, &basic), kScriptUserFunction);
  basic.Clear();
  EXPECT_EQ(basic.GetCount(), 0);
  EXPECT_EQ(basic.Find(L"myfunc", 6), 0u);
}

TEST(ScriptWords, IndexStaysCorrectWhileGrowing) {
  NoCaseWordIndex ix;
  wchar_t w[16];
  for (int i = 0; i < 1000; ++i) {
    std::swprintf(w, 16, L"Fn%d", i);
    ix.Add(w, static_cast<int>(std::wcslen(w)), static_cast<unsigned>(i + 1));
  }
  EXPECT_EQ(ix.GetCount(), 1000);
  for (int i = 0; i < 1000; i += 37) {
    std::swprintf(w, 16, L"FN%d", i);
    EXPECT_EQ(ix.Find(w, static_cast<int>(std::wcslen(w))), static_cast<unsigned>(i + 1));
  }
  EXPECT_EQ(ix.Find(L"fn1000", 6), 0u);
}
