#include "chartcore/script_editor/script_words.h"

#include <cwchar>
#include <utility>
#include <vector>

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
  EXPECT_EQ(Classify(L"ichimokusenkouspan2"), kScriptIndicator);
  // Whole words only: a longer or shorter word is not an entry.
  EXPECT_EQ(Classify(L"crossupx"), 0);
  EXPECT_EQ(Classify(L"crossu"), 0);
  EXPECT_EQ(ClassifyScriptWord(nullptr, 3, 2, nullptr), 0);
  EXPECT_EQ(ClassifyScriptWord(L"sum", 0, 2, nullptr), 0);
  // A prefix of the buffer is classified by the given length alone.
  EXPECT_EQ(ClassifyScriptWord(L"sumxyz", 3, 2, nullptr), kScriptBuiltin);
}

TEST(ScriptWords, ScriptModesZeroAndOneShrinkPriceAndIndicatorTables) {
  for (int mode : {0, 1}) {
    EXPECT_EQ(Classify(L"volume", mode), 0) << mode;
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

// ---------------------------------------------------------------------------
// Line parsing
// ---------------------------------------------------------------------------

namespace {

struct Block {
  int m_nCharPos;
  int m_nColorIndex;
};

struct Parsed {
  std::vector<std::pair<int, int>> blocks;
  DWORD cookie;
};

Parsed Parse(const wchar_t* line, DWORD cookie = 0, int mode = 2, const NoCaseWordIndex* basic = nullptr) {
  const int n = static_cast<int>(std::wcslen(line));
  std::vector<Block> buf(static_cast<size_t>(3 * n + 8));
  int count = 0;
  Parsed p;
  p.cookie = ParseScriptLine(cookie, line, n, buf.data(), count, mode, basic);
  for (int i = 0; i < count; ++i) p.blocks.emplace_back(buf[static_cast<size_t>(i)].m_nCharPos, buf[static_cast<size_t>(i)].m_nColorIndex);
  // Without a block buffer the cookie must come out the same.
  int none = 0;
  EXPECT_EQ(ParseScriptLine<Block>(cookie, line, n, nullptr, none, mode, basic), p.cookie) << "null buffer";
  EXPECT_EQ(none, 0);
  return p;
}

using Blocks = std::vector<std::pair<int, int>>;

}  // namespace

TEST(ScriptParse, WordsNumbersAndTheBlankAfterAWord) {
  // "x" is no table word but the blank that ends it still opens a block at 1.
  Parsed p = Parse(L"x = 1; // note");
  EXPECT_EQ(p.blocks, (Blocks{{0, 2}, {1, 2}, {4, 10}, {5, 2}, {7, 9}}));
  EXPECT_EQ(p.cookie, 0u);  // a line comment does not outlive its line
  // '+' ends the word, so 1e+5 is the number "1e", normal text and "5".
  EXPECT_EQ(Parse(L"1e+5").blocks, (Blocks{{0, 2}, {0, 10}, {2, 2}, {3, 10}}));
  EXPECT_EQ(Parse(L"0XFF;").blocks, (Blocks{{0, 2}, {0, 10}, {4, 2}}));
  EXPECT_EQ(Parse(L"0x").blocks, (Blocks{{0, 2}}));
  // Every class, case-insensitive; the word ended by '(' is coloured from its start.
  EXPECT_EQ(Parse(L"CrossUp(c, MA)").blocks,
            (Blocks{{0, 2}, {0, 12}, {7, 2}, {8, 14}, {9, 2}, {11, 7}, {13, 2}}));
  EXPECT_EQ(Parse(L"만일 abs(1)").blocks, (Blocks{{0, 2}, {0, 6}, {2, 2}, {3, 13}, {6, 2}, {7, 10}, {8, 2}}));
  // '.' and '_' join words; the low byte 0xD7 of U+00D7 is a DBCS lead byte.
  EXPECT_EQ(Parse(L"sum.x").blocks, (Blocks{{0, 2}}));
  EXPECT_EQ(Parse(L"sum\x00D7").blocks, (Blocks{{0, 2}}));
  EXPECT_EQ(Parse(L"sum\x2212").blocks, (Blocks{{0, 2}, {0, 12}, {3, 2}}));  // minus sign ends it
}

TEST(ScriptParse, ScriptModeAndUserFunctions) {
  EXPECT_EQ(Parse(L"volume+OBV", 0, 0).blocks, (Blocks{{0, 2}, {6, 2}}));
  EXPECT_EQ(Parse(L"volume+OBV", 0, 2).blocks, (Blocks{{0, 2}, {0, 14}, {6, 2}, {7, 7}}));
  NoCaseWordIndex basic;
  basic.Add(L"MyAvg", 5, 1);
  EXPECT_EQ(Parse(L"myavg(c)", 0, 2, &basic).blocks, (Blocks{{0, 2}, {0, 8}, {5, 2}, {6, 14}, {7, 2}}));
}

TEST(ScriptParse, CommentsAcrossLinesThroughTheCookie) {
  Parsed a = Parse(L"/* a");
  EXPECT_EQ(a.blocks, (Blocks{{0, 2}, {0, 9}, {2, 9}}));
  EXPECT_EQ(a.cookie, 4u);
  Parsed b = Parse(L"b */ c", a.cookie);
  EXPECT_EQ(b.blocks, (Blocks{{0, 9}, {4, 2}, {5, 14}}));
  EXPECT_EQ(b.cookie, 0u);
  // An empty line keeps only the block comment.
  int count = 0;
  EXPECT_EQ(ParseScriptLine<Block>(4 | 8, L"", 0, nullptr, count, 2, nullptr), 4u);
  EXPECT_EQ(ParseScriptLine<Block>(8, L"", 0, nullptr, count, 2, nullptr), 0u);
  // "/*/" opens and closes on the shared '*'.
  EXPECT_EQ(Parse(L"/*/x").cookie, 0u);
  // A backslash carries a line comment into the next line, which is all comment.
  Parsed c = Parse(L"// a \\");
  EXPECT_EQ(c.blocks, (Blocks{{0, 2}, {0, 9}}));
  EXPECT_EQ(c.cookie, 1u);
  Parsed d = Parse(L"b", c.cookie);
  EXPECT_EQ(d.blocks, (Blocks{{0, 9}, {0, 9}}));
  EXPECT_EQ(d.cookie, 0u);
  // A block comment inside a line goes back to normal after "*/".
  EXPECT_EQ(Parse(L"a/*b*/x").blocks, (Blocks{{0, 2}, {1, 2}, {1, 9}, {3, 9}, {6, 2}}));
}

TEST(ScriptParse, StringsEscapesAndContinuation) {
  // Two quotes give four blocks: more than length + 1.
  EXPECT_EQ(Parse(L"\"\"").blocks, (Blocks{{0, 2}, {0, 15}, {1, 15}, {2, 2}}));
  EXPECT_EQ(Parse(L"'a'").blocks, (Blocks{{0, 2}, {0, 15}, {1, 15}, {3, 2}}));
  // An escaped quote does not end the string.
  Parsed e = Parse(L"\"a\\\"b\"");
  EXPECT_EQ(e.blocks, (Blocks{{0, 2}, {0, 15}, {1, 15}, {6, 2}}));
  EXPECT_EQ(e.cookie, 0u);
  // Closing quote escaped: open to the line's end, yet not carried over.
  Parsed open = Parse(L"\"a\\\"");
  EXPECT_EQ(open.blocks, (Blocks{{0, 2}, {0, 15}, {1, 15}}));
  EXPECT_EQ(open.cookie, 0u);
  // A trailing backslash carries the string bit.
  Parsed s = Parse(L"s = \"abc\\");
  EXPECT_EQ(s.cookie, 8u);
  Parsed t = Parse(L"xy\" + 1", s.cookie);
  EXPECT_EQ(t.blocks, (Blocks{{0, 15}, {3, 2}, {6, 10}}));
  EXPECT_EQ(t.cookie, 0u);
  EXPECT_EQ(Parse(L"'x\\", 0).cookie, 16u);
  // "//" inside a string is text.
  EXPECT_EQ(Parse(L"\"//\"").cookie, 0u);
}

TEST(ScriptParse, DirectiveLines) {
  EXPECT_EQ(Parse(L"#define X 1 // c").blocks, (Blocks{{0, 2}, {0, 16}, {12, 9}}));
  EXPECT_EQ(Parse(L"  # x").blocks, (Blocks{{0, 2}, {2, 16}}));
  EXPECT_EQ(Parse(L"a # b").blocks, (Blocks{{0, 2}, {1, 2}}));
  EXPECT_EQ(Parse(L"#a /* b */ c").blocks, (Blocks{{0, 2}, {0, 16}, {3, 9}, {5, 9}, {10, 16}}));
  // Continued with a backslash the next line is still a directive.
  Parsed d = Parse(L"#x \\");
  EXPECT_EQ(d.cookie, 2u);
  Parsed e = Parse(L"sum", d.cookie);
  EXPECT_EQ(e.blocks, (Blocks{{0, 16}}));
  EXPECT_EQ(e.cookie, 0u);
  // Only a line that starts clean may become a directive: not after a string bit.
  EXPECT_EQ(Parse(L"#", 8).blocks, (Blocks{{0, 15}}));
}
