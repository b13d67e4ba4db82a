// Fuzz target for profile (INI) files such as "New_Function.dat": the input
// is the file. Every section and key the lists name is read whole and into
// small buffers, as a number and with a default; then one key is written and
// the values read again. Checked: results always fit and are terminated, a cut
// value is the prefix of the whole one, a key just written reads back, and
// writing one key changes no other key's value.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "chartcore/platform/chartype.h"
#include "chartcore/platform/profile.h"
#include "fuzz_files.h"

namespace {

[[noreturn]] void Fault() { std::abort(); }

// Room for any value or list of the file: no text is longer than the file.
DWORD g_big = 0;
constexpr size_t kMaxSections = 8;
constexpr size_t kMaxKeys = 16;

// Splits a "a\0b\0\0" list; checks its terminators.
std::vector<std::wstring> ReadList(LPCWSTR app, const wchar_t* file, DWORD size) {
  std::vector<wchar_t> out(size + 1, L'\x7F');
  const DWORD n = GetPrivateProfileStringW(app, nullptr, L"unused", out.data(), size, file);
  if (size < 2) {
    if (n != 0) Fault();
    return {};
  }
  // The list ends with two terminators: the last name's and one more (an
  // empty list is two terminators alone); a list cut to the buffer ends with
  // two terminators after what fitted.
  const bool twoTerminators = out[n] == L'\0' && ((n > 0 && out[n - 1] == L'\0') || (n + 1 < size && out[n + 1] == L'\0'));
  if (n > size - 1 || out[size] != L'\x7F') Fault();
  if (!twoTerminators) {
    // The keys of a section that is not there: the default, cut to the
    // buffer and ended once, as for a missing key.
    const DWORD expect = std::min<DWORD>(6, size - 1);
    if (app == nullptr || n != expect || out[n] != L'\0' || std::wcsncmp(out.data(), L"unused", n) != 0) Fault();
    return {};
  }
  std::vector<std::wstring> names;
  for (DWORD i = 0; i < n;) {
    const std::wstring name(out.data() + i);
    names.push_back(name);
    i += static_cast<DWORD>(name.size()) + 1;
  }
  return names;
}

// A value as a host reads it. The thorough read also checks a small buffer
// (a cut value is the prefix of the whole) and the number reading.
std::wstring ReadValue(const std::wstring& app, const std::wstring& key, const wchar_t* file, DWORD smallSize,
                       bool thorough) {
  std::vector<wchar_t> big(g_big + 1, L'\x7F');
  const DWORD n = GetPrivateProfileStringW(app.c_str(), key.c_str(), L"default ", big.data(), g_big, file);
  if (n >= g_big || big[n] != L'\0' || big[g_big] != L'\x7F') Fault();
  const std::wstring whole(big.data(), n);
  if (!thorough) return whole;
  std::vector<wchar_t> small(smallSize + 1, L'\x7F');
  const DWORD m = GetPrivateProfileStringW(app.c_str(), key.c_str(), L"default ", small.data(), smallSize, file);
  // A quoted value read into a buffer of exactly its length plus one loses
  // its last character (the closing quote still counted), as the system does.
  const bool quoteCut = n > 0 && smallSize - 1 == n && m + 1 == n;
  if ((m != std::min<DWORD>(n, smallSize - 1) && !quoteCut) || small[m] != L'\0' || small[smallSize] != L'\x7F' ||
      whole.compare(0, m, small.data(), m) != 0) {
    Fault();
  }
  GetPrivateProfileIntW(app.c_str(), key.c_str(), -7, file);
  return whole;
}

// Key names match as the profile reader matches them: by lower case.
bool SameKey(const std::wstring& a, const wchar_t* b) {
  size_t i = 0;
  for (; i < a.size() && b[i] != L'\0'; ++i) {
    if (a[i] != b[i] && chartcore::ToLowerW(a[i]) != chartcore::ToLowerW(b[i])) return false;
  }
  return i == a.size() && b[i] == L'\0';
}

using Values = std::map<std::pair<std::wstring, std::wstring>, std::wstring>;

// Every value the lists lead to.
Values ReadAll(const wchar_t* file, DWORD smallSize) {
  Values values;
  std::vector<std::wstring> sections = ReadList(nullptr, file, g_big);
  if (sections.size() > kMaxSections) sections.resize(kMaxSections);
  sections.push_back(L"");  // the keys before the first header
  for (const std::wstring& s : sections) {
    std::vector<std::wstring> keys = ReadList(s.c_str(), file, g_big);
    ReadList(s.c_str(), file, smallSize);
    if (keys.size() > kMaxKeys) keys.resize(kMaxKeys);
    for (size_t k = 0; k < keys.size(); ++k) values[{s, keys[k]}] = ReadValue(s, keys[k], file, smallSize, k < 2);
  }
  return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzzfiles::ScratchFile profile("profile.ini");
  profile.Write(data, size);
  g_big = static_cast<DWORD>(size) + 64;
  const DWORD smallSize = 1 + static_cast<DWORD>(size % 13);

  const Values before = ReadAll(profile.Path(), smallSize);
  // A key that is not there gives the default with its trailing blanks cut.
  wchar_t out[16];
  if (GetPrivateProfileStringW(L"\x1F missing", L"key", L"def  ", out, 16, profile.Path()) != 3 ||
      std::wcscmp(out, L"def") != 0) {
    Fault();
  }
  if (GetPrivateProfileIntW(L"\x1F missing", L"key", 42, profile.Path()) != 42) Fault();

  // Write one key into the first section (or a new one) and read again.
  std::wstring section = L"FuzzSection";
  for (const auto& entry : before) {
    if (!entry.first.first.empty()) {
      section = entry.first.first;
      break;
    }
  }
  const wchar_t* kKey = L"FuzzKey";
  const wchar_t* kValue = L"written value";
  if (!WritePrivateProfileStringW(section.c_str(), kKey, kValue, profile.Path())) Fault();
  if (ReadValue(section, kKey, profile.Path(), smallSize, true) != kValue) Fault();
  for (const auto& entry : before) {
    if (SameKey(entry.first.second, kKey)) continue;
    if (ReadValue(entry.first.first, entry.first.second, profile.Path(), smallSize, false) != entry.second) Fault();
  }
  return 0;
}
