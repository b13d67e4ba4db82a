#include "chartcore/platform/chartype.h"

#include <clocale>
#include <string>

#include <gtest/gtest.h>

TEST(CharType, UnicodeClassesWhateverTheLocale) {
  std::setlocale(LC_ALL, "C");  // the process locale must not matter
  EXPECT_TRUE(chartcore::IsAlnumW(L'\xD55C'));  // a Hangul syllable is a letter
  EXPECT_TRUE(chartcore::IsAlphaW(L'\x00E9'));
  EXPECT_TRUE(chartcore::IsSpaceW(0x3000));     // ideographic space
  EXPECT_TRUE(chartcore::IsSpaceW(L'\t'));
  // The no-break spaces are white space, as Unicode and the Windows runtime
  // have them, and no letters.
  for (wchar_t nbsp : {L'\x00A0', L'\x2007', L'\x202F'}) {
    EXPECT_TRUE(chartcore::IsSpaceW(nbsp)) << static_cast<int>(nbsp);
    EXPECT_FALSE(chartcore::IsAlnumW(nbsp)) << static_cast<int>(nbsp);
  }
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
  // Simple case mappings; characters without one (a lone surrogate, Hangul)
  // come back as they are. Narrow forms stay ASCII.
  const wchar_t surrogate = static_cast<wchar_t>(0xD800);
  EXPECT_EQ(std::wstring({chartcore::ToUpperW(L'\x00E9'), chartcore::ToLowerW(L'\x03A3'), chartcore::ToUpperW(L'z'),
                          chartcore::ToUpperW(L'\xD55C'), chartcore::ToUpperW(surrogate)}),
            std::wstring({L'\x00C9', L'\x03C3', L'Z', L'\xD55C', surrogate}));
  EXPECT_FALSE(chartcore::IsAlnumA(0xE9));
  EXPECT_EQ(chartcore::ToUpperA(0xE9), 0xE9);
  EXPECT_EQ(chartcore::ToLowerA('Q'), 'q');
}

// On Windows the system answers for its code page: 949 in the Korean
// locale the tests run in. C7 is the first byte of "한" (C7 D1).
TEST(CharType, Cp949LeadBytes) {
  for (int b : {0x80, 0x81, 0xC7, 0xFE, 0xFF, 0x41}) {
    EXPECT_EQ(IsDBCSLeadByte(static_cast<BYTE>(b)) != 0, b >= 0x81 && b <= 0xFE) << b;
  }
}
