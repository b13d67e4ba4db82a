#include "chartcore/platform/profile.h"

#if !defined(_WIN32)

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "chartcore/platform/chartype.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/text_codec.h"

namespace chartcore {
namespace internal {
namespace {

// ---------------------------------------------------------------------------
// Files
// ---------------------------------------------------------------------------

// What identifies one version of a file's contents for the cache.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  long long mtimeSec = 0;
  long mtimeNsec = 0;
  bool operator==(const FileStamp& o) const {
    return device == o.device && inode == o.inode && size == o.size && mtimeSec == o.mtimeSec &&
           mtimeNsec == o.mtimeNsec;
  }
};

bool StampOf(const std::string& path, FileStamp& stamp) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
  stamp.device = st.st_dev;
  stamp.inode = st.st_ino;
  stamp.size = st.st_size;
  stamp.mtimeSec = static_cast<long long>(st.st_mtim.tv_sec);
  stamp.mtimeNsec = st.st_mtim.tv_nsec;
  return true;
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return false;
  bytes.clear();
  char chunk[65536];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) bytes.append(chunk, n);
  const bool ok = !std::ferror(f);
  std::fclose(f);
  return ok;
}

// ---------------------------------------------------------------------------
// Parsed profile
// ---------------------------------------------------------------------------

bool IsBlank(wchar_t c) { return c == L' ' || c == L'\t'; }

std::wstring TrimBlanks(const std::wstring& s) {
  size_t b = 0, e = s.size();
  while (b < e && IsBlank(s[b])) ++b;
  while (e > b && IsBlank(s[e - 1])) --e;
  return s.substr(b, e - b);
}

bool SameName(const std::wstring& a, const std::wstring& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && ToLowerW(a[i]) != ToLowerW(b[i])) return false;
  }
  return true;
}

// One line of the file: its raw bytes (terminator included) and its text.
struct Line {
  std::string raw;
  std::wstring text;
  bool terminated = false;
};

struct Entry {
  std::wstring key;
  std::wstring value;
  size_t line;
  bool quoted;  // the value lost a pair of quotes
};

struct Section {
  std::wstring name;
  size_t header;       // line of "[name]", or npos for the keys before any header
  size_t lastContent;  // last non-blank line of the section (new keys go after it)
  size_t end;          // first line after the section (the next header)
  std::vector<Entry> entries;
};

struct Profile {
  UINT codePage = kCodePageUtf8;
  std::string bom;
  std::string newline = "\r\n";  // as bytes of the file's encoding
  std::vector<Line> lines;
  std::vector<Section> sections;

  const Section* FindSection(const std::wstring& name) const {
    for (const Section& s : sections) {
      if (SameName(s.name, name)) return &s;
    }
    return nullptr;
  }
};

const Entry* FindEntry(const Section& section, const std::wstring& key) {
  for (const Entry& e : section.entries) {
    if (SameName(e.key, key)) return &e;
  }
  return nullptr;
}

// A value loses one pair of matching quotes around the whole of it.
std::wstring Unquote(const std::wstring& v) {
  if (v.size() >= 2 && (v[0] == L'"' || v[0] == L'\'') && v.back() == v[0]) return v.substr(1, v.size() - 2);
  return v;
}

void SplitLines(const std::string& bytes, size_t start, UINT codePage, std::vector<Line>& lines) {
  const size_t unit = codePage == kCodePageUtf16LE ? 2 : 1;
  size_t pos = start;
  while (pos < bytes.size()) {
    size_t end = pos;
    bool terminated = false;
    while (end < bytes.size()) {
      if (unit == 1 ? bytes[end] == '\n' : (end + 1 < bytes.size() && bytes[end] == '\n' && bytes[end + 1] == 0)) {
        terminated = true;
        break;
      }
      end += unit;
    }
    if (end > bytes.size()) end = bytes.size();
    size_t contentEnd = end;
    if (terminated && contentEnd >= pos + unit && bytes[contentEnd - unit] == '\r' &&
        (unit == 1 || bytes[contentEnd - 1] == 0)) {
      contentEnd -= unit;
    }
    Line line;
    const size_t next = terminated ? end + unit : end;
    line.raw.assign(bytes, pos, next - pos);
    line.text = BytesToWide(bytes.data() + pos, contentEnd - pos, codePage);
    line.terminated = terminated;
    lines.push_back(std::move(line));
    pos = next;
  }
}

void Classify(Profile& p) {
  p.sections.clear();
  const size_t none = std::wstring::npos;
  size_t current = none;  // index into p.sections (pointers would move as it grows)
  for (size_t i = 0; i < p.lines.size(); ++i) {
    const std::wstring t = TrimBlanks(p.lines[i].text);
    if (!t.empty() && t[0] == L'[') {
      if (current != none) p.sections[current].end = i;
      const size_t close = t.find(L']');
      Section s;
      s.name = TrimBlanks(t.substr(1, close == none ? none : close - 1));
      s.header = s.lastContent = i;
      p.sections.push_back(std::move(s));
      current = p.sections.size() - 1;
      continue;
    }
    const size_t eq = t.find(L'=');
    if (eq != none && current == none) {
      Section s;
      s.header = none;
      p.sections.push_back(std::move(s));
      current = p.sections.size() - 1;
    }
    if (current == none) continue;
    if (!t.empty()) p.sections[current].lastContent = i;
    if (eq != none) {
      const std::wstring raw = TrimBlanks(t.substr(eq + 1));
      std::wstring value = Unquote(raw);
      const bool quoted = value.size() != raw.size();
      p.sections[current].entries.push_back(Entry{TrimBlanks(t.substr(0, eq)), std::move(value), i, quoted});
    }
  }
  if (current != none) p.sections[current].end = p.lines.size();
}

void Parse(const std::string& bytes, Profile& p) {
  size_t bomLength = 0;
  p.codePage = DetectTextEncoding(bytes.data(), bytes.size(), bomLength);
  p.bom.assign(bytes, 0, bomLength);
  p.lines.clear();
  SplitLines(bytes, bomLength, p.codePage, p.lines);
  // Lines we add end as the file's first line does (\r\n for a new file).
  bool crlf = true;
  if (!p.lines.empty() && p.lines[0].terminated) {
    const std::wstring raw = BytesToWide(p.lines[0].raw.data(), p.lines[0].raw.size(), p.codePage);
    crlf = raw.size() >= 2 && raw[raw.size() - 2] == L'\r';
  }
  p.newline = WideToBytes(crlf ? L"\r\n" : L"\n", crlf ? 2 : 1, p.codePage);
  Classify(p);
}

// ---------------------------------------------------------------------------
// Cache: the function list reads one file key by key, so the parsed form of
// the last few files is kept with the bytes it came from. A file whose size,
// time and inode have stayed the same since a settled read is not read again;
// any other is read, and parsed again only when its bytes differ.
// ---------------------------------------------------------------------------

struct CacheEntry {
  std::string path;
  FileStamp stamp;
  bool trusted = false;  // the stamp alone tells the file is unchanged
  std::string bytes;
  std::shared_ptr<const Profile> profile;
};

std::mutex& CacheMutex() {
  static std::mutex m;
  return m;
}

std::vector<CacheEntry>& Cache() {
  static std::vector<CacheEntry> entries;
  return entries;
}

constexpr size_t kCachedFiles = 4;
constexpr long long kSettledSeconds = 2;

void ForgetCached(const std::string& path) {
  std::lock_guard<std::mutex> lock(CacheMutex());
  auto& cache = Cache();
  cache.erase(std::remove_if(cache.begin(), cache.end(), [&](const CacheEntry& e) { return e.path == path; }),
              cache.end());
}

// The parsed file, or null when it cannot be read.
std::shared_ptr<const Profile> LoadProfile(const wchar_t* file) {
  if (!file) return nullptr;
  const std::string path = NativePathBytes(file);
  FileStamp stamp;
  if (!StampOf(path, stamp)) return nullptr;
  {
    std::lock_guard<std::mutex> lock(CacheMutex());
    for (const CacheEntry& e : Cache()) {
      if (e.path == path && e.trusted && e.stamp == stamp) return e.profile;
    }
  }
  std::string bytes;
  if (!ReadWholeFile(path, bytes)) return nullptr;
  std::shared_ptr<const Profile> profile;
  {
    std::lock_guard<std::mutex> lock(CacheMutex());
    for (const CacheEntry& e : Cache()) {
      if (e.path == path && e.bytes == bytes) profile = e.profile;
    }
  }
  if (!profile) {
    auto parsed = std::make_shared<Profile>();
    Parse(bytes, *parsed);
    profile = std::move(parsed);
  }
  // The parse always matches the bytes, so they are remembered; the stamp is
  // trusted only when the file did not change while being read and was last
  // modified seconds ago: file times advance in coarse ticks, so a same-size
  // rewrite within the tick would look unchanged.
  FileStamp after;
  const long long now = static_cast<long long>(std::time(nullptr));
  const bool trusted = StampOf(path, after) && after == stamp && static_cast<off_t>(bytes.size()) == stamp.size &&
                       now - stamp.mtimeSec >= kSettledSeconds;
  std::lock_guard<std::mutex> lock(CacheMutex());
  auto& cache = Cache();
  cache.erase(std::remove_if(cache.begin(), cache.end(), [&](const CacheEntry& e) { return e.path == path; }),
              cache.end());
  if (cache.size() >= kCachedFiles) cache.erase(cache.begin());
  cache.push_back(CacheEntry{path, stamp, trusted, std::move(bytes), profile});
  return profile;
}

// ---------------------------------------------------------------------------
// Copying out
// ---------------------------------------------------------------------------

DWORD CopyText(const std::wstring& text, LPWSTR out, DWORD size) {
  const size_t n = std::min<size_t>(text.size(), size - 1);
  std::wmemcpy(out, text.data(), n);
  out[n] = L'\0';
  return static_cast<DWORD>(n);
}

// Names each followed by a terminator, then one more terminator.
DWORD CopyList(const std::vector<std::wstring>& names, LPWSTR out, DWORD size) {
  std::wstring list;
  for (const std::wstring& n : names) {
    list += n;
    list += L'\0';
  }
  if (list.size() + 1 <= size) {
    std::wmemcpy(out, list.data(), list.size());
    out[list.size()] = L'\0';
    if (list.empty() && size >= 2) out[1] = L'\0';  // an empty list still reads as "\0\0"
    return static_cast<DWORD>(list.size());
  }
  if (size < 2) {
    out[0] = L'\0';
    return 0;
  }
  std::wmemcpy(out, list.data(), size - 2);
  out[size - 2] = L'\0';
  out[size - 1] = L'\0';
  return size - 2;
}

// A quoted value is copied as the system copies it: the closing quote still
// counts against the buffer and is taken off after the copy, so a buffer of
// exactly the value's length plus one loses the value's last character.
DWORD CopyValue(const Entry& entry, LPWSTR out, DWORD size) {
  if (entry.quoted && !entry.value.empty() && size - 1 == entry.value.size())
    return CopyText(entry.value.substr(0, entry.value.size() - 1), out, size);
  return CopyText(entry.value, out, size);
}

// ---------------------------------------------------------------------------
// Writing
// ---------------------------------------------------------------------------

Line MakeLine(const Profile& p, const std::wstring& text) {
  Line line;
  line.raw = WideToBytes(text.data(), text.size(), p.codePage) + p.newline;
  line.text = text;
  line.terminated = true;
  return line;
}

// Lines inserted after an unterminated last line need it terminated first,
// without changing what it reads as. A UTF-16 file cut at an odd byte ends in
// a stray byte (read as U+FFFD): that line is written again from its text, so
// the lines added after it start on a code unit. A line ending in a bare '\r'
// gets "\r\n" whatever the file's style, as a "\n" would make that '\r' part
// of the line end and take it from the value.
void TerminateLine(const Profile& p, Line& line) {
  if (!line.terminated) {
    if (p.codePage == kCodePageUtf16LE && line.raw.size() % 2 != 0)
      line.raw = WideToBytes(line.text.data(), line.text.size(), p.codePage);
    const bool endsInCr = !line.text.empty() && line.text.back() == L'\r';
    line.raw += endsInCr ? WideToBytes(L"\r\n", 2, p.codePage) : p.newline;
    line.terminated = true;
  }
}

// Replaces the file atomically (readers see the old file or the new one,
// never half of it); the new file keeps the old one's permissions.
bool SaveLines(const wchar_t* file, const Profile& p) {
  std::string bytes = p.bom;
  for (const Line& l : p.lines) bytes += l.raw;
  return WriteFileAtomic(file, [&bytes](CFile& f) {
           for (size_t done = 0; done < bytes.size();) {
             const UINT chunk = static_cast<UINT>(std::min<size_t>(bytes.size() - done, 1u << 30));
             f.Write(bytes.data() + done, chunk);
             done += chunk;
           }
         }) != FALSE;
}

// Applies one edit to the lines; returns false when nothing changes.
bool EditProfile(Profile& p, const std::wstring& app, const wchar_t* key, const wchar_t* value) {
  const Section* section = p.FindSection(app);
  if (!key) {  // delete the section
    if (!section) return false;
    const size_t first = section->header == std::wstring::npos ? 0 : section->header;
    p.lines.erase(p.lines.begin() + static_cast<std::ptrdiff_t>(first),
                  p.lines.begin() + static_cast<std::ptrdiff_t>(section->end));
    return true;
  }
  const std::wstring keyName = TrimBlanks(key);
  const Entry* entry = section ? FindEntry(*section, keyName) : nullptr;
  if (!value) {  // delete the key
    if (!entry) return false;
    p.lines.erase(p.lines.begin() + static_cast<std::ptrdiff_t>(entry->line));
    return true;
  }
  const std::wstring text = keyName + L"=" + value;
  if (entry) {
    const bool terminated = p.lines[entry->line].terminated;
    p.lines[entry->line] = MakeLine(p, text);
    if (!terminated) {  // the file's last line stays without a line end
      p.lines[entry->line].raw.resize(p.lines[entry->line].raw.size() - p.newline.size());
      p.lines[entry->line].terminated = false;
    }
    return true;
  }
  if (section) {
    // After the section's last key or header, before blank lines that follow.
    const size_t after = section->lastContent;
    TerminateLine(p, p.lines[after]);
    p.lines.insert(p.lines.begin() + static_cast<std::ptrdiff_t>(after + 1), MakeLine(p, text));
    return true;
  }
  if (app.empty()) {  // keys before the first header form the section ""
    p.lines.insert(p.lines.begin(), MakeLine(p, text));
    return true;
  }
  if (!p.lines.empty()) TerminateLine(p, p.lines.back());
  p.lines.push_back(MakeLine(p, L"[" + app + L"]"));
  p.lines.push_back(MakeLine(p, text));
  return true;
}

std::mutex& WriteMutex() {
  static std::mutex m;
  return m;
}

// GetPrivateProfileIntW's reading of a value, as the system's integer
// conversion reads it: a sign, then a base prefix 0x, 0o or 0b (lower case)
// or decimal digits (leading zeros are no octal: "005930" is 5930), wrapping
// on overflow.
UINT ParseProfileInt(const std::wstring& s) {
  size_t i = 0;
  while (i < s.size() && IsBlank(s[i])) ++i;
  bool negative = false;
  if (i < s.size() && (s[i] == L'+' || s[i] == L'-')) negative = s[i++] == L'-';
  unsigned base = 10;
  const auto hexDigit = [](wchar_t c) -> int {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
  };
  if (i + 1 < s.size() && s[i] == L'0') {
    const wchar_t prefix = s[i + 1];
    base = prefix == L'x' ? 16 : prefix == L'o' ? 8 : prefix == L'b' ? 2 : 10;
    if (base != 10) i += 2;
  }
  UINT value = 0;
  for (; i < s.size(); ++i) {
    const int d = hexDigit(s[i]);
    if (d < 0 || static_cast<unsigned>(d) >= base) break;
    value = value * base + static_cast<UINT>(d);
  }
  return negative ? 0u - value : value;
}

}  // namespace
}  // namespace internal
}  // namespace chartcore

DWORD GetPrivateProfileStringW(LPCWSTR app, LPCWSTR key, LPCWSTR def, LPWSTR out, DWORD size, LPCWSTR file) {
  using namespace chartcore::internal;
  if (!out || size == 0) return 0;
  const auto profile = LoadProfile(file);
  if (!app) {
    std::vector<std::wstring> names;
    if (profile) {
      for (const Section& s : profile->sections) {
        if (s.header != std::wstring::npos) names.push_back(s.name);
      }
    }
    return CopyList(names, out, size);
  }
  const Section* section = profile ? profile->FindSection(TrimBlanks(app)) : nullptr;
  if (!key && section) {
    std::vector<std::wstring> names;
    // The system reads ";Count=9" as a key but leaves it out of the list.
    for (const Entry& e : section->entries) {
      if (e.key.empty() || e.key[0] != L';') names.push_back(e.key);
    }
    return CopyList(names, out, size);
  }
  const Entry* entry = section && key ? FindEntry(*section, TrimBlanks(key)) : nullptr;
  if (entry) return CopyValue(*entry, out, size);
  std::wstring fallback = def ? def : L"";
  if (fallback.size() > size - 1) fallback.resize(size - 1);
  while (!fallback.empty() && fallback.back() == L' ') fallback.pop_back();
  return CopyText(fallback, out, size);
}

UINT GetPrivateProfileIntW(LPCWSTR app, LPCWSTR key, INT def, LPCWSTR file) {
  using namespace chartcore::internal;
  if (!app || !key) return static_cast<UINT>(def);
  const auto profile = LoadProfile(file);
  const Section* section = profile ? profile->FindSection(TrimBlanks(app)) : nullptr;
  const Entry* entry = section ? FindEntry(*section, TrimBlanks(key)) : nullptr;
  if (!entry || entry->value.empty()) return static_cast<UINT>(def);
  return ParseProfileInt(entry->value);
}

BOOL WritePrivateProfileStringW(LPCWSTR app, LPCWSTR key, LPCWSTR value, LPCWSTR file) {
  using namespace chartcore::internal;
  if (!app && !key && !value) return TRUE;  // a cache flush: nothing is held back
  if (!app || !file) return FALSE;
  const std::string path = NativePathBytes(file);
  std::lock_guard<std::mutex> lock(WriteMutex());
  Profile profile;
  FileStamp stamp;
  if (StampOf(path, stamp)) {
    std::string bytes;
    if (!ReadWholeFile(path, bytes)) return FALSE;
    Parse(bytes, profile);
  }
  if (!EditProfile(profile, TrimBlanks(app), key, value)) return TRUE;
  const bool saved = SaveLines(file, profile);
  ForgetCached(path);
  return saved ? TRUE : FALSE;
}

#endif  // !_WIN32
