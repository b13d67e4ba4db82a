#include "chartcore/foundation/strings.h"

#include <cwchar>

#include <gtest/gtest.h>

namespace {

// A writable copy of a literal, as the host's parsers hold their texts; a
// null literal stays null.
struct Buf {
  explicit Buf(const wchar_t* s) : ptr(s != nullptr ? std::wcscpy(text, s) : nullptr) {}
  wchar_t text[64];
  wchar_t* ptr;
};

}  // namespace

TEST(WildCmpPattern, StarsQuestionMarksAndBacktracking) {
  const struct { const wchar_t* pattern; const wchar_t* text; int match; } cases[] = {
      {L"a*c", L"abbbc", 1}, {L"a?c", L"abbc", 0},  // ? is exactly one character
      {L"A*", L"abc", 0},                           // case counts
      {L"abc", L"abcd", 0}, {L"abcd", L"abc", 0},   // the whole text, no more, no less
      {L"*", L"", 1}, {L"***", L"", 1}, {L"", L"", 1}, {L"", L"x", 0}, {L"?", L"", 0},
      {nullptr, L"", 1},                            // null reads as ""
      // Backtracking across several stars.
      {L"*bc", L"abbc", 1}, {L"a*b*c", L"axbxbxc", 1}, {L"a*b*c", L"axbxbx", 0},  // a false start; no final c
      {L"*ab*ab", L"xabyabzab", 1}, {L"*a?c*", L"zzabxabc", 1},                   // ?-match after a restart
      {L"a**c", L"ac", 1}, {L"a*", L"a", 1}, {L"*x", L"aaaa", 0},                 // stars match nothing
      {L"*aab", L"aaaab", 1},  // restarts advance one character at a time
  };
  for (const auto& c : cases) EXPECT_EQ(WildCmp(c.pattern, c.text), c.match) << c.pattern << " / " << c.text;
}

TEST(FindStringSearch, CaseFoldingEmptyInputsAndRunningOffTheEnd) {
  using Finder = wchar_t* (*)(wchar_t*, wchar_t*);
  const Finder exact = FindString, folded = FindStringNoCase;
  const struct { Finder find; const wchar_t* text; const wchar_t* sub; int at; } cases[] = {
      {exact, L"Price=10;price=20", L"price", 9}, {exact, L"Price=10;price=20", L"PRICE", -1},
      {folded, L"Price=10;price=20", L"PRICE", 0}, {folded, L"Price=10;price=20", L"E=2", 13},
      // Only a to z fold: accented letters compare as they are.
      {folded, L"caf\x00E9", L"CAF\x00C9", -1}, {folded, L"caf\x00E9", L"CAF\x00E9", 0},
      // An empty or null text or sub is never searched.
      {exact, L"", L"abc", -1}, {exact, L"abc", L"", -1}, {folded, L"", L"abc", -1}, {folded, L"abc", L"", -1},
      {folded, L"abc", nullptr, -1},
      // The sub is longer than what is left after its first character matches.
      {folded, L"abc", L"CD", -1}, {folded, L"abc", L"ABC", 0},  // exactly fits
  };
  for (const auto& c : cases) {
    Buf text(c.text), sub(c.sub);
    wchar_t* found = c.find(text.ptr, sub.ptr);
    EXPECT_EQ(found, c.at < 0 ? nullptr : text.text + c.at) << c.text << " / " << (c.sub ? c.sub : L"(null)");
  }
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
  // at: the result's offset in head (-1: null); rest: what follows that
  // terminator in head, the remainder of the full copy.
  const struct { const wchar_t *text, *key; int at; const wchar_t *head, *left, *rest; } cases[] = {
      {L"abc=def", L"=", 3, L"abc", L"=def", L"def"},
      {L"Len Period 20", L"PERIOD", 4, L"Len ", L"Period 20", L"eriod 20"},  // the key is found without case
      {L"abc", L"=", -1, L"abc", L"abc", nullptr},                            // missing key: the full copy
      {L"=x", L"=", 0, L"", L"=x", L"x"},  // key first: an empty head is never deleted from the text
  };
  for (const auto& c : cases) {
    wchar_t head[64];
    Buf text(c.text);
    wchar_t* end = CutStringUntilKey(text.text, head, Buf(c.key).text);
    EXPECT_EQ(end, c.at < 0 ? nullptr : head + c.at) << c.text;
    EXPECT_STREQ(head, c.head);
    EXPECT_STREQ(text.text, c.left);
    EXPECT_STREQ(c.at < 0 ? nullptr : head + c.at + 1, c.rest);
  }
  wchar_t head[64];
  Buf key(L"=");
  EXPECT_EQ(CutStringUntilKey(nullptr, head, key.text), nullptr);
  EXPECT_EQ(CutStringUntilKey(key.text, nullptr, key.text), nullptr);
}
