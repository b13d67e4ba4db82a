#include "chartcore/foundation/strings.h"

#include <cstring>
#include <cwchar>

#include "chartcore/platform/chartype.h"

namespace {

// The C runtime's toupper in its default locale: only a to z fold. Wide
// values above the byte range must not reach the narrow classifier.
wchar_t FoldAscii(wchar_t ch) {
  return (ch >= L'a' && ch <= L'z') ? static_cast<wchar_t>(chartcore::ToUpperA(ch)) : ch;
}

bool HasText(const wchar_t* s) { return s != nullptr && *s != L'\0'; }

}  // namespace

int WildCmp(const wchar_t* pattern, const wchar_t* text) {
  const wchar_t* wild = pattern ? pattern : L"";
  const wchar_t* str = text ? text : L"";

  // Literal prefix up to the first star: every character must match.
  while (*str != L'\0' && *wild != L'*') {
    if (*wild != *str && *wild != L'?') return 0;
    ++wild;
    ++str;
  }

  // After a star: remember where to resume, and on a mismatch let the last
  // star swallow one more character of the text.
  const wchar_t* resumeWild = nullptr;
  const wchar_t* resumeStr = nullptr;
  while (*str != L'\0') {
    if (*wild == L'*') {
      if (*++wild == L'\0') return 1;
      resumeWild = wild;
      resumeStr = str + 1;
    } else if (*wild == *str || *wild == L'?') {
      ++wild;
      ++str;
    } else {
      wild = resumeWild;
      str = resumeStr++;
    }
  }

  while (*wild == L'*') ++wild;
  return *wild == L'\0' ? 1 : 0;
}

wchar_t* FindString(wchar_t* text, wchar_t* sub) {
  if (!HasText(text) || !HasText(sub)) return nullptr;
  return std::wcsstr(text, sub);
}

wchar_t* FindStringNoCase(wchar_t* text, wchar_t* sub) {
  if (!HasText(text) || !HasText(sub)) return nullptr;
  const size_t textLen = std::wcslen(text);
  const size_t subLen = std::wcslen(sub);
  const wchar_t first = FoldAscii(sub[0]);
  for (size_t p = 0; p < textLen; ++p) {
    if (FoldAscii(text[p]) != first) continue;
    // Once a first character matches where the rest cannot fit, no later
    // position can fit either.
    if (p + subLen > textLen) return nullptr;
    size_t i = 1;
    while (i < subLen && FoldAscii(text[p + i]) == FoldAscii(sub[i])) ++i;
    if (i == subLen) return text + p;
  }
  return nullptr;
}

wchar_t* StrDel(wchar_t* text, wchar_t* sub) {
  wchar_t* at = FindString(text, sub);
  if (at == nullptr) return nullptr;
  const size_t subLen = std::wcslen(sub);
  const wchar_t* rest = at + subLen;
  std::memmove(at, rest, (std::wcslen(rest) + 1) * sizeof(wchar_t));
  return at;
}

wchar_t* DeleteString(wchar_t* text, wchar_t* sub) { return StrDel(text, sub); }

wchar_t* CutStringUntilKey(wchar_t* text, wchar_t* head, wchar_t* key) {
  if (text == nullptr || head == nullptr) return nullptr;
  std::memmove(head, text, (std::wcslen(text) + 1) * sizeof(wchar_t));
  wchar_t* at = FindStringNoCase(head, key);
  if (at == nullptr) return nullptr;
  *at = L'\0';
  // The head is the text's own beginning, so its first occurrence in the text
  // is that beginning (an empty head is not found and nothing moves).
  StrDel(text, head);
  return at;
}
