#include "chartcore/foundation/strings.h"

#include <cwchar>

#include <gtest/gtest.h>

namespace {

// A writable copy of a literal, as the host's parsers hold their texts.
struct Buf {
  explicit Buf(const wchar_t* s) { std::wcscpy(text, s); }
  wchar_t text[64];
};

}  // namespace

TEST(WildCmpPattern, StarsQuestionMarksAndCase) {
  EXPECT_EQ(WildCmp(L"a*c", L"abbbc"), 1);
  EXPECT_EQ(WildCmp(L"a?c", L"abbc"), 0);  // ? is exactly one character
  EXPECT_EQ(WildCmp(L"a?c", L"abc"), 1);
  EXPECT_EQ(WildCmp(L"A*", L"abc"), 0);  // case-sensitive
  EXPECT_EQ(WildCmp(L"abc", L"abcd"), 0);  // the pattern must cover the whole text
  EXPECT_EQ(WildCmp(L"abcd", L"abc"), 0);
  EXPECT_EQ(WildCmp(L"*.bic", L"MACD.bic"), 1);
  EXPECT_EQ(WildCmp(L"*.bic", L"MACD.fct"), 0);
  EXPECT_EQ(WildCmp(L"??", L"a"), 0);
}

TEST(WildCmpPattern, EmptyTextAndEmptyPattern) {
  EXPECT_EQ(WildCmp(L"*", L""), 1);
  EXPECT_EQ(WildCmp(L"***", L""), 1);
  EXPECT_EQ(WildCmp(L"", L""), 1);
  EXPECT_EQ(WildCmp(L"", L"x"), 0);
  EXPECT_EQ(WildCmp(L"?", L""), 0);  // ? needs a character
  EXPECT_EQ(WildCmp(L"*a", L""), 0);
  EXPECT_EQ(WildCmp(nullptr, L""), 1);  // null reads as empty
  EXPECT_EQ(WildCmp(L"*", nullptr), 1);
}

TEST(WildCmpPattern, BacktracksAcrossSeveralStars) {
  // The first "b" after the star is a false start; the star must swallow it.
  EXPECT_EQ(WildCmp(L"*bc", L"abbc"), 1);
  EXPECT_EQ(WildCmp(L"a*b*c", L"axbxbxc"), 1);
  EXPECT_EQ(WildCmp(L"a*b*c", L"axbxbx"), 0);  // no final c
  EXPECT_EQ(WildCmp(L"*ab*ab", L"xabyabzab"), 1);
  EXPECT_EQ(WildCmp(L"*a?c*", L"zzabxabc"), 1);  // ?-match after a restart
  EXPECT_EQ(WildCmp(L"a**c", L"ac"), 1);  // consecutive stars match nothing
  EXPECT_EQ(WildCmp(L"a*", L"a"), 1);  // trailing star after the text ended
  EXPECT_EQ(WildCmp(L"*x", L"aaaa"), 0);
  EXPECT_EQ(WildCmp(L"*?", L"a"), 1);
  EXPECT_EQ(WildCmp(L"*aab", L"aaaab"), 1);  // restarts advance one character at a time
}

TEST(FindStringSearch, CaseSensitiveAndFolded) {
  Buf t(L"Price=10;price=20");
  EXPECT_EQ(FindString(t.text, Buf(L"price").text), t.text + 9);
  EXPECT_EQ(FindString(t.text, Buf(L"PRICE").text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"PRICE").text), t.text);  // first, ignoring case
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"E=2").text), t.text + 13);
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"x").text), nullptr);
  // Only a to z fold: accented and Hangul letters compare as they are.
  Buf accented(L"caf\x00E9");
  EXPECT_EQ(FindStringNoCase(accented.text, Buf(L"CAF\x00C9").text), nullptr);
  EXPECT_EQ(FindStringNoCase(accented.text, Buf(L"CAF\x00E9").text), accented.text);
  Buf hangul(L"\xD55C\xAE00 ma");
  EXPECT_EQ(FindStringNoCase(hangul.text, Buf(L"\xAE00 MA").text), hangul.text + 1);
}

TEST(FindStringSearch, EmptyInputsAndRunOffTheEnd) {
  Buf t(L"abc");
  Buf empty(L"");
  EXPECT_EQ(FindString(empty.text, t.text), nullptr);
  EXPECT_EQ(FindString(t.text, empty.text), nullptr);
  EXPECT_EQ(FindStringNoCase(empty.text, t.text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, empty.text), nullptr);
  EXPECT_EQ(FindString(nullptr, t.text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, nullptr), nullptr);
  // The sub is longer than what is left after its first character matches.
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"CD").text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"abcd").text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"ABC").text), t.text);  // exactly fits
}

TEST(StrDelInPlace, RemovesFirstOccurrenceOnly) {
  Buf t(L"a,b,c");
  wchar_t* at = StrDel(t.text, Buf(L",").text);
  EXPECT_EQ(at, t.text + 1);
  EXPECT_STREQ(t.text, L"ab,c");
  at = DeleteString(t.text, Buf(L",c").text);  // the twin behaves alike
  EXPECT_EQ(at, t.text + 2);
  EXPECT_STREQ(t.text, L"ab");
  EXPECT_EQ(*at, L'\0');  // the terminator moved onto the deleted position

  Buf u(L"Abc");
  EXPECT_EQ(StrDel(u.text, Buf(L"a").text), nullptr);  // case-sensitive
  EXPECT_EQ(StrDel(u.text, Buf(L"").text), nullptr);
  EXPECT_STREQ(u.text, L"Abc");
  EXPECT_EQ(StrDel(u.text, Buf(L"Abc").text), u.text);
  EXPECT_STREQ(u.text, L"");
}

TEST(CutStringUntilKeySplit, HeadOutKeyStays) {
  Buf t(L"abc=def");
  wchar_t head[64];
  wchar_t* at = CutStringUntilKey(t.text, head, Buf(L"=").text);
  EXPECT_EQ(at, head + 3);  // the terminator after "abc"
  EXPECT_STREQ(head, L"abc");
  EXPECT_STREQ(t.text, L"=def");
  // The rest of the output buffer still holds the copy of the whole text.
  EXPECT_STREQ(head + 4, L"def");

  // The key is found without case; the head keeps its own case.
  Buf s(L"Len Period 20");
  at = CutStringUntilKey(s.text, head, Buf(L"PERIOD").text);
  EXPECT_STREQ(head, L"Len ");
  EXPECT_STREQ(s.text, L"Period 20");
  EXPECT_EQ(at, head + 4);
}

TEST(CutStringUntilKeySplit, MissingKeyAndEmptyHead) {
  wchar_t head[64];
  Buf t(L"abc");
  EXPECT_EQ(CutStringUntilKey(t.text, head, Buf(L"=").text), nullptr);
  EXPECT_STREQ(head, L"abc");  // full copy stays in the output buffer
  EXPECT_STREQ(t.text, L"abc");

  // Key at the start: the head is empty, and an empty text is never deleted.
  Buf k(L"=x");
  wchar_t* at = CutStringUntilKey(k.text, head, Buf(L"=").text);
  EXPECT_EQ(at, head);
  EXPECT_STREQ(head, L"");
  EXPECT_STREQ(k.text, L"=x");

  // Empty key is never found.
  Buf e(L"ab");
  EXPECT_EQ(CutStringUntilKey(e.text, head, Buf(L"").text), nullptr);
  EXPECT_EQ(CutStringUntilKey(nullptr, head, Buf(L"=").text), nullptr);
  EXPECT_EQ(CutStringUntilKey(e.text, nullptr, Buf(L"=").text), nullptr);
  EXPECT_STREQ(e.text, L"ab");
}
