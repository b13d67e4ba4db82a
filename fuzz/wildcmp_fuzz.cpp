// Fuzz target for the wildcard matcher and the in-place string helpers. The
// input is a pattern and a text separated by a zero byte; each byte is one
// character, and 0xFF takes the next two bytes as one wide character (so
// Hangul and the rest of the BMP appear too). WildCmp is compared with a
// plain table-driven matcher; the search, delete and cut helpers with what
// they must leave behind.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

#include "chartcore/foundation/strings.h"

namespace {

[[noreturn]] void Fault() { std::abort(); }

std::wstring Decode(const std::uint8_t* p, std::size_t n) {
  std::wstring s;
  for (std::size_t i = 0; i < n; ++i) {
    wchar_t c = static_cast<wchar_t>(p[i]);
    if (p[i] == 0xFF && i + 2 < n) {
      c = static_cast<wchar_t>(p[i + 1] | (p[i + 2] << 8));
      i += 2;
    }
    if (c != L'\0') s.push_back(c);
  }
  return s;
}

// Whole-text match by dynamic programming over the pattern (row by row of
// the text), the obvious reading of '*' and '?'.
bool Matches(const std::wstring& pattern, const std::wstring& text) {
  std::vector<char> row(pattern.size() + 1, 0), next(pattern.size() + 1, 0);
  row[0] = 1;
  for (std::size_t j = 1; j <= pattern.size(); ++j) row[j] = row[j - 1] && pattern[j - 1] == L'*';
  for (const wchar_t c : text) {
    next[0] = 0;
    for (std::size_t j = 1; j <= pattern.size(); ++j) {
      const wchar_t p = pattern[j - 1];
      next[j] = p == L'*' ? (next[j - 1] || row[j]) : (row[j - 1] && (p == L'?' || p == c));
    }
    row.swap(next);
  }
  return row[pattern.size()] != 0;
}

wchar_t Fold(wchar_t c) { return (c >= L'a' && c <= L'z') ? static_cast<wchar_t>(c - 32) : c; }

std::size_t FindNoCase(const std::wstring& text, const std::wstring& sub) {
  if (text.empty() || sub.empty() || sub.size() > text.size()) return std::wstring::npos;
  for (std::size_t p = 0; p + sub.size() <= text.size(); ++p) {
    std::size_t i = 0;
    while (i < sub.size() && Fold(text[p + i]) == Fold(sub[i])) ++i;
    if (i == sub.size()) return p;
  }
  return std::wstring::npos;
}

// A writable, terminated copy.
std::vector<wchar_t> Buffer(const std::wstring& s) {
  std::vector<wchar_t> b(s.begin(), s.end());
  b.push_back(L'\0');
  return b;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t split = 0;
  while (split < size && data[split] != 0) ++split;
  const std::wstring pattern = Decode(data, split);
  const std::wstring text = split < size ? Decode(data + split + 1, size - split - 1) : std::wstring();

  // Matching.
  const int got = WildCmp(pattern.c_str(), text.c_str());
  if (got != (Matches(pattern, text) ? 1 : 0)) Fault();
  if (got == 1 && WildCmp((pattern + L"*").c_str(), text.c_str()) != 1) Fault();
  if (WildCmp(L"*", text.c_str()) != 1 || WildCmp(nullptr, text.c_str()) != (text.empty() ? 1 : 0)) Fault();

  // Searching: case-sensitive as the C runtime, and with ASCII letters folded.
  std::vector<wchar_t> t = Buffer(text);
  std::vector<wchar_t> p = Buffer(pattern);
  const wchar_t* found = FindString(t.data(), p.data());
  const std::size_t at = text.empty() || pattern.empty() ? std::wstring::npos : text.find(pattern);
  if (found != (at == std::wstring::npos ? nullptr : t.data() + at)) Fault();
  const wchar_t* foundNoCase = FindStringNoCase(t.data(), p.data());
  const std::size_t atNoCase = FindNoCase(text, pattern);
  if (foundNoCase != (atNoCase == std::wstring::npos ? nullptr : t.data() + atNoCase)) Fault();

  // Deleting the first occurrence.
  wchar_t* gap = StrDel(t.data(), p.data());
  if (at == std::wstring::npos) {
    if (gap != nullptr || text.compare(t.data()) != 0) Fault();
  } else {
    if (gap != t.data() + at || (text.substr(0, at) + text.substr(at + pattern.size())).compare(t.data()) != 0)
      Fault();
  }

  // Cutting at the pattern as a key: head + rest gives the text back.
  t = Buffer(text);
  std::vector<wchar_t> head(t.size(), L'\x7F');
  const wchar_t* cut = CutStringUntilKey(t.data(), head.data(), p.data());
  if (atNoCase == std::wstring::npos) {
    if (cut != nullptr || text.compare(head.data()) != 0 || text.compare(t.data()) != 0) Fault();
  } else {
    if (cut != head.data() + atNoCase || *cut != L'\0' || text.substr(0, atNoCase).compare(head.data()) != 0 ||
        text.substr(atNoCase).compare(t.data()) != 0) {
      Fault();
    }
  }
  return 0;
}
