// platform_answers: prints one platform's answers to the profile and format
// cases of a corpus, one UTF-8 line per case, so the answers of Linux and
// Windows compare with a plain diff. Built natively it answers with the
// library's profile reader and CString::Format; built with MinGW and run
// under Wine it answers with the system's GetPrivateProfileStringW and
// GetPrivateProfileIntW and the msvcrt runtime's _snwprintf (the legacy
// printf, as -D__USE_MINGW_ANSI_STDIO=0 selects).
//
//   platform_answers tests/windows/corpus > answers.txt
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#if defined(_WIN32)
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cwchar>
#else
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/profile.h"
#endif

namespace {

// A malformed corpus line would get the same refusal on both systems and
// compare equal: it stops the run instead.
[[noreturn]] void BadCase() {
  std::fprintf(stderr, "platform_answers: malformed case line\n");
  std::exit(2);
}


// ---------------------------------------------------------------------------
// Text: the corpus is UTF-8; wchar_t is UTF-16 on Windows, UTF-32 on Linux.
// ---------------------------------------------------------------------------

std::wstring FromUtf8(const std::string& bytes) {
  std::wstring out;
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char b = static_cast<unsigned char>(bytes[i]);
    const int extra = b < 0x80 ? 0 : b < 0xE0 ? 1 : b < 0xF0 ? 2 : 3;
    std::uint32_t cp = extra == 0 ? b : b & (0x3F >> extra);
    for (int k = 1; k <= extra && i + k < bytes.size(); ++k) cp = (cp << 6) | (bytes[i + k] & 0x3F);
    i += static_cast<size_t>(extra) + 1;
    if (sizeof(wchar_t) == 2 && cp > 0xFFFF) {
      out.push_back(static_cast<wchar_t>(0xD800 + ((cp - 0x10000) >> 10)));
      out.push_back(static_cast<wchar_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<wchar_t>(cp));
    }
  }
  return out;
}

// The text as printable UTF-8: control characters (terminators of a list
// included) as \xNN, a backslash doubled, the rest as it is.
std::string Printable(const wchar_t* text, size_t length) {
  std::string out;
  for (size_t i = 0; i < length; ++i) {
    std::uint32_t cp = static_cast<std::uint32_t>(text[i]);
    if (sizeof(wchar_t) == 2) cp &= 0xFFFF;
    if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < length) {
      const std::uint32_t low = static_cast<std::uint32_t>(text[i + 1]) & 0xFFFF;
      if (low >= 0xDC00 && low < 0xE000) {
        cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    char escaped[16];
    if (cp < 0x20 || cp == 0x7F) {
      std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(cp));
      out += escaped;
    } else if (cp == '\\') {
      out += "\\\\";
    } else if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

// A corpus field: "\s" a blank, "\t" a tab, "\\" a backslash.
std::string Unescape(const std::string& field) {
  std::string out;
  for (size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 1 < field.size()) {
      const char next = field[++i];
      out.push_back(next == 's' ? ' ' : next == 't' ? '\t' : next);
    } else {
      out.push_back(field[i]);
    }
  }
  return out;
}

// The case lines of a corpus file (comments and blank lines skipped), each
// split at tabs, with its line number.
struct CaseLine {
  int number;
  std::vector<std::string> fields;
};

std::vector<CaseLine> ReadCases(const std::string& path) {
  std::vector<CaseLine> cases;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::cerr << "platform_answers: cannot read " << path << "\n";
    std::exit(2);
  }
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    CaseLine c{number, {}};
    size_t start = 0;
    for (size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
      c.fields.push_back(line.substr(start, tab - start));
    c.fields.push_back(line.substr(start));
    cases.push_back(c);
  }
  return cases;
}

// ---------------------------------------------------------------------------
// Profile look-ups
// ---------------------------------------------------------------------------

// A path the platform's profile functions open: under Wine a Unix path is
// reached through drive Z:.
std::wstring ProfilePath(const std::string& corpus, const std::string& file) {
#if defined(_WIN32)
  std::wstring path = FromUtf8(corpus + "/profile/" + file);
  for (wchar_t& ch : path) {
    if (ch == L'/') ch = L'\\';
  }
  return path[0] == L'\\' ? L"Z:" + path : path;
#else
  return FromUtf8(corpus + "/profile/" + file);
#endif
}

struct OptionalText {
  bool null;
  std::wstring text;
  const wchar_t* get() const { return null ? nullptr : text.c_str(); }
};

OptionalText Argument(const std::string& field) {
  if (field == "~") return {true, std::wstring()};
  return {false, FromUtf8(Unescape(field))};
}

std::string AnswerProfile(const std::string& corpus, const CaseLine& c) {
  const std::vector<std::string>& f = c.fields;
  if (f.size() == 6 && f[0] == "str") {
    const std::wstring path = ProfilePath(corpus, f[1]);
    const OptionalText section = Argument(f[2]), key = Argument(f[3]), def = Argument(f[4]);
    const DWORD size = static_cast<DWORD>(std::strtoul(f[5].c_str(), nullptr, 10));
    // Filled with a marker, so a missing terminator shows.
    std::vector<wchar_t> buffer(size + 4, L'#');
    const DWORD got = GetPrivateProfileStringW(section.get(), key.get(), def.get(), buffer.data(), size, path.c_str());
    // The answer and the terminator after it (for a list, its last one).
    const size_t shown = size == 0 ? 0 : got + 1;
    return std::to_string(got) + " [" + Printable(buffer.data(), shown) + "]";
  }
  if (f.size() == 5 && f[0] == "int") {
    const std::wstring path = ProfilePath(corpus, f[1]);
    const OptionalText section = Argument(f[2]), key = Argument(f[3]);
    const INT def = static_cast<INT>(std::strtol(f[4].c_str(), nullptr, 10));
    return std::to_string(GetPrivateProfileIntW(section.get(), key.get(), def, path.c_str()));
  }
  BadCase();
}

// ---------------------------------------------------------------------------
// Format
// ---------------------------------------------------------------------------

template <class... Args>
std::string Formatted(const std::wstring& format, Args... args) {
#if defined(_WIN32)
  wchar_t buffer[4096];
  const int n = _snwprintf(buffer, 4095, format.c_str(), args...);
  if (n < 0) return "overflow";
  buffer[n] = L'\0';
  return Printable(buffer, static_cast<size_t>(n));
#else
  CString text;
  text.Format(format.c_str(), args...);
  return Printable(text.GetString(), static_cast<size_t>(text.GetLength()));
#endif
}

// Calls Formatted with one to three arguments of one type.
template <class T>
std::string FormattedWith(const std::wstring& format, const std::vector<T>& a) {
  switch (a.size()) {
    case 1: return Formatted(format, a[0]);
    case 2: return Formatted(format, a[0], a[1]);
    case 3: return Formatted(format, a[0], a[1], a[2]);
    default: BadCase();
  }
}

std::string AnswerFormat(const CaseLine& c) {
  const std::vector<std::string>& f = c.fields;
  if (f.size() < 3) BadCase();
  const std::wstring format = FromUtf8(Unescape(f[1]));
  const std::vector<std::string> raw(f.begin() + 2, f.end());
  std::vector<std::wstring> wide;
  for (const std::string& r : raw) wide.push_back(FromUtf8(Unescape(r)));
  const std::string type = f[0];
  if (type == "d" || type == "u") {
    std::vector<int> v;
    for (const std::string& r : raw) v.push_back(static_cast<int>(std::strtoll(r.c_str(), nullptr, 0)));
    return FormattedWith(format, v);
  }
  if (type == "I") {
    std::vector<long long> v;
    for (const std::string& r : raw) v.push_back(std::strtoll(r.c_str(), nullptr, 10));
    return FormattedWith(format, v);
  }
  if (type == "f") {
    std::vector<double> v;
    for (const std::string& r : raw) v.push_back(std::strtod(r.c_str(), nullptr));
    return FormattedWith(format, v);
  }
  if (type == "s") {
    std::vector<const wchar_t*> v;
    for (const std::wstring& w : wide) v.push_back(w.c_str());
    return FormattedWith(format, v);
  }
  if (type == "S") {
    std::vector<const char*> v;
    for (const std::string& r : raw) v.push_back(r.c_str());
    return FormattedWith(format, v);
  }
  if (type == "c") {
    // A wide character travels as an int through the variable arguments.
    std::vector<int> v;
    for (const std::wstring& w : wide) v.push_back(w.empty() ? 0 : static_cast<int>(w[0]));
    return FormattedWith(format, v);
  }
  BadCase();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: platform_answers CORPUS_DIR\n";
    return 2;
  }
  const std::string corpus = argv[1];
#if defined(_WIN32)
  // "\n" alone, as the native program writes it.
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  for (const CaseLine& c : ReadCases(corpus + "/profile_cases.txt"))
    std::cout << "profile " << c.number << ": " << AnswerProfile(corpus, c) << "\n";
  for (const CaseLine& c : ReadCases(corpus + "/format_cases.txt"))
    std::cout << "format " << c.number << ": " << AnswerFormat(c) << "\n";
  return 0;
}
