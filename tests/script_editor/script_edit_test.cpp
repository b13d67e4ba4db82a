#include "chartcore/script_editor/script_words.h"

#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace chartcore::internal;

namespace {

int Classify(const wchar_t* w, int mode = 2, const NoCaseWordIndex* basic = nullptr) {
  return ClassifyScriptWord(w, static_cast<int>(std::wcslen(w)), mode, basic);
}

}  // namespace

TEST(ScriptWords, TablesHaveTheLanguagesCountsAndSpellings) {
  const std::pair<const wchar_t* const*, int> counts[] = {
      {kConstantWords, 14}, {kBuiltinFunctionWords, 88}, {kMathFunctionWords, 19}, {kPriceWords, 38},
      // 239 indicator names, counted from the table itself.
      {kIndicatorWords, 239}, {kPriceWordsSkippedInModes01, 6}, {kIndicatorsSkippedInModes01, 37}};
  for (const auto& c : counts) EXPECT_EQ(CountWords(c.first), c.second) << c.first[0];
  // Exact look-up is case-sensitive; the two deliberate spellings stay.
  struct Exact { const wchar_t* const* table; const wchar_t* word; bool found; };
  const Exact exact[] = {{kIndicatorWords, L"HeometricMA", true},      {kIndicatorWords, L"PVrank", true},
                         {kIndicatorWords, L"PVRank", false},          {kBuiltinFunctionWords, L"crossup", true},
                         {kBuiltinFunctionWords, L"CrossUp", false},   {kBuiltinFunctionWords, nullptr, false}};
  for (const Exact& e : exact) EXPECT_EQ(IsExactTableWord(e.table, e.word), e.found) << (e.word ? e.word : L"null");
}

TEST(ScriptWords, ClassifiesWholeWordsIgnoringCaseByScriptMode) {
  // Modes 0 and 1 drop the volume price words and the breadth and volume indicators. A word
  // reads as a number exactly when it is coloured as one (no constant starts with a digit).
  struct Case { const wchar_t* word; int modes01, others; };
  const Case cases[] = {
      {L"TRUE", 6, 6}, {L"만일", 6, 6}, {L"CrossUp", 12, 12}, {L"상향돌파", 12, 12}, {L"ROUNDDOWN", 13, 13},
      {L"WELLES이평", 14, 14}, {L"ichimokusenkouspan2", 7, 7}, {L"close", 14, 14}, {L"MACD", 7, 7},
      {L"crossupx", 0, 0}, {L"crossu", 0, 0},  // whole words only
      {L"volume", 0, 14}, {L"OBV", 0, 7},
      {L"pvrank", 0, 7},  // excluded as "PVRank", listed as "PVrank"
      {L"MFI", 0, 0},     // only in the exclusion list: never an indicator
      {L"10", 10, 10}, {L"3.14", 10, 10}, {L"1e", 10, 10},
      {L"1.2.3", 10, 10},  // dots are never counted
      {L"0XFF", 10, 10}, {L"0x1aF", 10, 10},
      {L"0x", 0, 0},    // second character 'x' is no digit
      {L"0x1G", 0, 0},  // the hex form gets no second chance
      {L"1_000", 0, 0}, {L".5", 0, 0}, {L"", 0, 0},
      {L"\x0661", 0, 0},  // Arabic-Indic one: not a decimal digit here
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.word);
    for (int mode : {0, 1, 2, 3, -1})
      EXPECT_EQ(Classify(c.word, mode), mode == 0 || mode == 1 ? c.modes01 : c.others) << mode;
    EXPECT_EQ(IsScriptNumber(c.word, static_cast<int>(std::wcslen(c.word))), c.others == kScriptNumber);
  }
  EXPECT_EQ(ClassifyScriptWord(nullptr, 3, 2, nullptr), 0);
  EXPECT_EQ(ClassifyScriptWord(L"sum", 0, 2, nullptr), 0);
  // A prefix of the buffer is classified by the given length alone.
  EXPECT_EQ(ClassifyScriptWord(L"sumxyz", 3, 2, nullptr), kScriptBuiltin);
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

  // The index stays correct while it grows.
  for (int i = 0; i < 1000; ++i) {
    const std::wstring w = L"Fn" + std::to_wstring(i);
    basic.Add(w.c_str(), static_cast<int>(w.size()), static_cast<unsigned>(i + 1));
  }
  EXPECT_EQ(basic.GetCount(), 1000);
  const auto find = [&basic](const std::wstring& w) { return basic.Find(w.c_str(), static_cast<int>(w.size())); };
  for (int i = 0; i < 1000; i += 37) EXPECT_EQ(find(L"FN" + std::to_wstring(i)), static_cast<unsigned>(i + 1));
  EXPECT_EQ(find(L"fn1000"), 0u);
}

namespace {

struct Block { int m_nCharPos, m_nColorIndex; };
using Blocks = std::vector<std::pair<int, int>>;

}  // namespace

TEST(ScriptParse, BlocksAndCookiesOfEachConstruct) {
  // A line, its starting cookie (the previous row's where rows continue), its blocks and its cookie.
  struct Case { const wchar_t* line; DWORD in; Blocks blocks; DWORD out; int mode = 2; };
  const Case cases[] = {
      // The blank ending "x", no table word, still opens a block; a line comment ends with its line.
      {L"x = 1; // note", 0, {{0, 2}, {1, 2}, {4, 10}, {5, 2}, {7, 9}}, 0},
      // '+' ends the word: 1e+5 is the number "1e", normal text and "5".
      {L"1e+5", 0, {{0, 2}, {0, 10}, {2, 2}, {3, 10}}, 0},
      {L"0XFF;", 0, {{0, 2}, {0, 10}, {4, 2}}, 0}, {L"0x", 0, {{0, 2}}, 0},
      // Every class, case-insensitive; a word ended by '(' is coloured from its start.
      {L"CrossUp(c, MA)", 0, {{0, 2}, {0, 12}, {7, 2}, {8, 14}, {9, 2}, {11, 7}, {13, 2}}, 0},
      {L"만일 abs(1)", 0, {{0, 2}, {0, 6}, {2, 2}, {3, 13}, {6, 2}, {7, 10}, {8, 2}}, 0},
      // '.' and '_' join words, as U+00D7 does (0xD7 is a DBCS lead byte); the minus sign U+2212 ends one.
      {L"sum.x", 0, {{0, 2}}, 0}, {L"sum\x00D7", 0, {{0, 2}}, 0}, {L"sum\x2212", 0, {{0, 2}, {0, 12}, {3, 2}}, 0},
      {L"volume+OBV", 0, {{0, 2}, {6, 2}}, 0, 0}, {L"volume+OBV", 0, {{0, 2}, {0, 14}, {6, 2}, {7, 7}}, 0},
      {L"myavg(c)", 0, {{0, 2}, {0, 8}, {5, 2}, {6, 14}, {7, 2}}, 0},  // a user function
      // Block comments run across lines through the cookie.
      {L"/* a", 0, {{0, 2}, {0, 9}, {2, 9}}, 4},
      {L"b */ c", 4, {{0, 9}, {4, 2}, {5, 14}}, 0},
      {L"", 4 | 8, {}, 4}, {L"", 8, {}, 0},  // an empty line keeps only the block comment
      {L"/*/x", 0, {{0, 2}, {0, 9}, {2, 9}, {3, 2}}, 0},  // "/*/" opens and closes on the shared '*'
      {L"a/*b*/x", 0, {{0, 2}, {1, 2}, {1, 9}, {3, 9}, {6, 2}}, 0},
      // A backslash carries a line comment into the next line, which is all comment.
      {L"// a \\", 0, {{0, 2}, {0, 9}}, 1}, {L"b", 1, {{0, 9}, {0, 9}}, 0},
      // Strings: two quotes give four blocks, more than length + 1.
      {L"\"\"", 0, {{0, 2}, {0, 15}, {1, 15}, {2, 2}}, 0}, {L"'a'", 0, {{0, 2}, {0, 15}, {1, 15}, {3, 2}}, 0},
      {L"\"a\\\"b\"", 0, {{0, 2}, {0, 15}, {1, 15}, {6, 2}}, 0},  // an escaped quote does not end it
      {L"\"a\\\"", 0, {{0, 2}, {0, 15}, {1, 15}}, 0},  // open to the end, yet not carried over
      {L"s = \"abc\\", 0, {{0, 2}, {1, 2}, {4, 15}, {5, 15}}, 8},  // a trailing backslash carries it
      {L"xy\" + 1", 8, {{0, 15}, {3, 2}, {6, 10}}, 0},
      {L"'x\\", 0, {{0, 2}, {0, 15}, {1, 15}}, 16},
      {L"\"//\"", 0, {{0, 2}, {0, 15}, {1, 15}, {4, 2}}, 0},  // "//" inside a string is text
      // Directive lines run to the end; only a comment interrupts them.
      {L"#define X 1 // c", 0, {{0, 2}, {0, 16}, {12, 9}}, 0},
      {L"  # x", 0, {{0, 2}, {2, 16}}, 0}, {L"a # b", 0, {{0, 2}, {1, 2}}, 0},
      {L"#a /* b */ c", 0, {{0, 2}, {0, 16}, {3, 9}, {5, 9}, {10, 16}}, 0},
      {L"#x \\", 0, {{0, 2}, {0, 16}}, 2}, {L"sum", 2, {{0, 16}}, 0},  // continued by a backslash
      {L"#", 8, {{0, 15}}, 0},  // only a line that starts clean may become a directive
  };
  NoCaseWordIndex basic;
  basic.Add(L"MyAvg", 5, 1);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const int n = static_cast<int>(std::wcslen(c.line));
    std::vector<Block> buf(static_cast<size_t>(3 * n + 8));
    int count = 0;
    EXPECT_EQ(ParseScriptLine(c.in, c.line, n, buf.data(), count, c.mode, &basic), c.out);
    Blocks got;
    for (int i = 0; i < count; ++i) got.emplace_back(buf[i].m_nCharPos, buf[i].m_nColorIndex);
    EXPECT_EQ(got, c.blocks);
    // Without a block buffer the cookie comes out the same.
    int none = 0;
    EXPECT_EQ(ParseScriptLine<Block>(c.in, c.line, n, nullptr, none, c.mode, &basic), c.out);
    EXPECT_EQ(none, 0);
  }
}
