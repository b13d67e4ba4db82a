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

TEST(WildCmpPattern, StarsQuestionMarksAndBacktracking) {
  const struct { const wchar_t* pattern; const wchar_t* text; int match; } cases[] = {
      {L"a*c", L"abbbc", 1}, {L"a?c", L"abbc", 0}, {L"A*", L"abc", 0},  // ? is one character; case counts
      {L"abc", L"abcd", 0}, {L"abcd", L"abc", 0},                       // the whole text, no more
      {L"*", L"", 1}, {L"***", L"", 1}, {L"", L"", 1}, {L"", L"x", 0}, {L"?", L"", 0}, {nullptr, L"", 1},  // null: ""
      // Backtracking across several stars.
      {L"*bc", L"abbc", 1}, {L"a*b*c", L"axbxbxc", 1}, {L"a*b*c", L"axbxbx", 0},  // a false start; no final c
      {L"*ab*ab", L"xabyabzab", 1}, {L"*a?c*", L"zzabxabc", 1},                   // ?-match after a restart
      {L"a**c", L"ac", 1}, {L"a*", L"a", 1}, {L"*x", L"aaaa", 0},                 // stars match nothing
      {L"*aab", L"aaaab", 1}};  // restarts advance one character at a time
  for (const auto& c : cases) EXPECT_EQ(WildCmp(c.pattern, c.text), c.match) << c.text;
}

TEST(FindStringSearch, CaseFoldingEmptyInputsAndRunningOffTheEnd) {
  Buf t(L"Price=10;price=20");
  EXPECT_EQ(FindString(t.text, Buf(L"price").text), t.text + 9);
  EXPECT_EQ(FindString(t.text, Buf(L"PRICE").text), nullptr);
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"PRICE").text), t.text);  // first, ignoring case
  EXPECT_EQ(FindStringNoCase(t.text, Buf(L"E=2").text), t.text + 13);
  // Only a to z fold: accented letters compare as they are.
  Buf accented(L"caf\x00E9");
  EXPECT_EQ(FindStringNoCase(accented.text, Buf(L"CAF\x00C9").text), nullptr);
  EXPECT_EQ(FindStringNoCase(accented.text, Buf(L"CAF\x00E9").text), accented.text);

  Buf abc(L"abc");
  Buf empty(L"");
  EXPECT_EQ(FindString(empty.text, abc.text), nullptr);
  EXPECT_EQ(FindString(abc.text, empty.text), nullptr);
  EXPECT_EQ(FindStringNoCase(empty.text, abc.text), nullptr);
  EXPECT_EQ(FindStringNoCase(abc.text, empty.text), nullptr);
  EXPECT_EQ(FindStringNoCase(abc.text, nullptr), nullptr);
  // The sub is longer than what is left after its first character matches.
  EXPECT_EQ(FindStringNoCase(abc.text, Buf(L"CD").text), nullptr);
  EXPECT_EQ(FindStringNoCase(abc.text, Buf(L"ABC").text), abc.text);  // exactly fits
}

TEST(StrDelInPlace, RemovesFirstOccurrenceOnly) {
  Buf t(L"a,b,c");
  EXPECT_EQ(StrDel(t.text, Buf(L",").text), t.text + 1);
  EXPECT_STREQ(t.text, L"ab,c");
  wchar_t* at = DeleteString(t.text, Buf(L",c").text);  // the twin behaves alike
  EXPECT_EQ(at, t.text + 2);
  EXPECT_STREQ(t.text, L"ab");
  EXPECT_EQ(*at, L'\0');  // the terminator moved onto the deleted position
  EXPECT_EQ(StrDel(t.text, Buf(L"A").text), nullptr);  // case-sensitive
  EXPECT_EQ(StrDel(t.text, Buf(L"").text), nullptr);
  EXPECT_STREQ(t.text, L"ab");
}

TEST(CutStringUntilKeySplit, HeadOutKeyStays) {
  wchar_t head[64];
  Buf t(L"abc=def");
  EXPECT_EQ(CutStringUntilKey(t.text, head, Buf(L"=").text), head + 3);  // the terminator after "abc"
  EXPECT_STREQ(head, L"abc");
  EXPECT_STREQ(t.text, L"=def");
  EXPECT_STREQ(head + 4, L"def");  // the rest of the copy is still behind it

  Buf s(L"Len Period 20");  // the key is found without case
  EXPECT_EQ(CutStringUntilKey(s.text, head, Buf(L"PERIOD").text), head + 4);
  EXPECT_STREQ(head, L"Len ");
  EXPECT_STREQ(s.text, L"Period 20");

  Buf m(L"abc");  // missing key: the full copy, text unchanged
  EXPECT_EQ(CutStringUntilKey(m.text, head, Buf(L"=").text), nullptr);
  EXPECT_STREQ(head, L"abc");
  EXPECT_STREQ(m.text, L"abc");

  Buf k(L"=x");  // key first: empty head, and an empty text is never deleted
  EXPECT_EQ(CutStringUntilKey(k.text, head, Buf(L"=").text), head);
  EXPECT_STREQ(head, L"");
  EXPECT_STREQ(k.text, L"=x");
  EXPECT_EQ(CutStringUntilKey(nullptr, head, k.text), nullptr);
  EXPECT_EQ(CutStringUntilKey(k.text, nullptr, k.text), nullptr);
}
