#include "chartcore/platform/chartype.h"

#include <clocale>

#include <gtest/gtest.h>

TEST(CharType, UnicodeClassesWhateverTheLocale) {
  std::setlocale(LC_ALL, "C");  // the process locale must not matter
  EXPECT_TRUE(chartcore::IsAlnumW(L'\xD55C'));  // a Hangul syllable is a letter
  EXPECT_TRUE(chartcore::IsAlphaW(L'\x00E9'));
  EXPECT_TRUE(chartcore::IsSpaceW(0x3000));     // ideographic space
  EXPECT_TRUE(chartcore::IsSpaceW(L'\t'));
  EXPECT_FALSE(chartcore::IsSpaceW(0x00A0) && chartcore::IsAlnumW(0x00A0));
  EXPECT_FALSE(chartcore::IsDigitW(0x0663));    // Arabic-Indic three: not 0-9
  EXPECT_TRUE(chartcore::IsDigitW(L'7'));
  EXPECT_FALSE(chartcore::IsXDigitW(0xFF21));   // fullwidth A is no hex digit
  EXPECT_TRUE(chartcore::IsXDigitW(L'f'));
  EXPECT_TRUE(chartcore::IsPunctW(L';'));
  EXPECT_TRUE(chartcore::IsUpperW(L'\x00C4'));
  EXPECT_TRUE(chartcore::IsLowerW(L'\x03C3'));
  // Lone surrogates belong to no class.
  EXPECT_FALSE(chartcore::IsAlnumW(static_cast<wchar_t>(0xD800)));
  EXPECT_FALSE(chartcore::IsSpaceW(static_cast<wchar_t>(0xDFFF)));
  EXPECT_EQ(chartcore::ToUpperW(static_cast<wchar_t>(0xD800)), static_cast<wchar_t>(0xD800));
  // Simple case mappings, and characters without one returned as they are.
  EXPECT_EQ(chartcore::ToUpperW(L'\x00E9'), L'\x00C9');
  EXPECT_EQ(chartcore::ToLowerW(L'\x03A3'), L'\x03C3');
  EXPECT_EQ(chartcore::ToUpperW(L'\xD55C'), L'\xD55C');
  EXPECT_EQ(chartcore::ToUpperW(L'z'), L'Z');
  // Narrow forms stay ASCII.
  EXPECT_FALSE(chartcore::IsAlnumA(0xE9));
  EXPECT_EQ(chartcore::ToUpperA(0xE9), 0xE9);
  EXPECT_EQ(chartcore::ToLowerA('Q'), 'q');
}

// On Windows the system answers for its code page: 949 in the Korean
// locale the tests run in.
TEST(CharType, Cp949LeadBytes) {
  EXPECT_FALSE(IsDBCSLeadByte(0x80));
  EXPECT_TRUE(IsDBCSLeadByte(0x81));
  EXPECT_TRUE(IsDBCSLeadByte(0xC7));  // first byte of "한" (C7 D1)
  EXPECT_TRUE(IsDBCSLeadByte(0xFE));
  EXPECT_FALSE(IsDBCSLeadByte(0xFF));
  EXPECT_FALSE(IsDBCSLeadByte('A'));
}
