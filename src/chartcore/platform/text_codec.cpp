#include "chartcore/platform/text_codec.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "chartcore/platform/utf16_internal.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <iconv.h>
#endif

namespace chartcore {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Decodes one UTF-8 sequence at s[0..n). Returns its length, or, with ok
// false and cp = U+FFFD, the length of the maximal ill-formed prefix (at least
// 1), so every bad stretch becomes one replacement as is usual practice.
size_t DecodeUtf8(const unsigned char* s, size_t n, char32_t& cp, bool& ok) {
  ok = true;
  const unsigned char b0 = s[0];
  if (b0 < 0x80) {
    cp = b0;
    return 1;
  }
  size_t need;
  unsigned char lo = 0x80, hi = 0xBF;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    need = 1;
    cp = b0 & 0x1F;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    need = 2;
    cp = b0 & 0x0F;
    if (b0 == 0xE0) lo = 0xA0;       // no overlongs
    else if (b0 == 0xED) hi = 0x9F;  // no surrogates
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    need = 3;
    cp = b0 & 0x07;
    if (b0 == 0xF0) lo = 0x90;
    else if (b0 == 0xF4) hi = 0x8F;  // nothing above U+10FFFF
  } else {
    cp = kReplacement;
    ok = false;
    return 1;
  }
  size_t i = 1;
  for (; i <= need; ++i) {
    if (i >= n) break;
    const unsigned char b = s[i];
    const unsigned char l = i == 1 ? lo : 0x80;
    const unsigned char h = i == 1 ? hi : 0xBF;
    if (b < l || b > h) break;
    cp = (cp << 6) | (b & 0x3F);
  }
  if (i <= need) {
    cp = kReplacement;
    ok = false;
  }
  return i;
}

void AppendUtf8(std::string& out, char32_t c) {
  if (c > 0x10FFFF || IsSurrogate(c)) c = kReplacement;
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

void AppendUtf16Unit(std::string& out, unsigned unit) {
  out += static_cast<char>(unit & 0xFF);
  out += static_cast<char>((unit >> 8) & 0xFF);
}

#if !defined(_WIN32)

// ---------------------------------------------------------------------------
// Code page 949 through iconv. Each thread keeps its own pair of descriptors
// (an iconv_t carries shift state and must not be shared without a lock).
// ---------------------------------------------------------------------------

class IconvPair {
 public:
  IconvPair() {
    toWide_ = Open("WCHAR_T", "CP949");
    fromWide_ = Open("CP949", "WCHAR_T");
  }
  ~IconvPair() {
    if (toWide_ != Invalid()) iconv_close(toWide_);
    if (fromWide_ != Invalid()) iconv_close(fromWide_);
  }
  IconvPair(const IconvPair&) = delete;
  IconvPair& operator=(const IconvPair&) = delete;
  iconv_t toWide() const { return toWide_; }
  iconv_t fromWide() const { return fromWide_; }
  static iconv_t Invalid() { return reinterpret_cast<iconv_t>(-1); }

 private:
  static iconv_t Open(const char* to, const char* from) {
    iconv_t cd = iconv_open(to, from);
    if (cd != Invalid()) return cd;
    // C libraries without the WCHAR_T name know the explicit UTF-32 form.
    const std::uint16_t probe = 1;
    const bool little = *reinterpret_cast<const unsigned char*>(&probe) == 1;
    const char* utf32 = little ? "UTF-32LE" : "UTF-32BE";
    return iconv_open(std::strcmp(to, "WCHAR_T") == 0 ? utf32 : to, std::strcmp(from, "WCHAR_T") == 0 ? utf32 : from);
  }
  iconv_t toWide_;
  iconv_t fromWide_;
};

IconvPair& Converters() {
  thread_local IconvPair pair;
  return pair;
}

// Runs cd over the input, writing `replacement` for each input unit (one
// byte, or one wchar_t) it cannot convert and resuming after that unit, so a
// bad byte or an unmappable character never costs the text around it.
// Returns the number of bytes written.
size_t ConvertReplacing(iconv_t cd, const char* in, size_t inLeft, size_t inUnit, char* out, size_t outLeft,
                        const void* replacement, size_t replacementSize) {
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  char* src = const_cast<char*>(in);
  char* dst = out;
  while (inLeft > 0) {
    if (iconv(cd, &src, &inLeft, &dst, &outLeft) != static_cast<size_t>(-1)) break;
    if ((errno != EILSEQ && errno != EINVAL) || outLeft < replacementSize) break;
    std::memcpy(dst, replacement, replacementSize);
    dst += replacementSize;
    outLeft -= replacementSize;
    const size_t skip = inLeft < inUnit ? inLeft : inUnit;
    src += skip;
    inLeft -= skip;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  return static_cast<size_t>(dst - out);
}

std::wstring Cp949ToWideImpl(const char* bytes, size_t length) {
  std::wstring out;
  if (length == 0) return out;
  iconv_t cd = Converters().toWide();
  if (cd == IconvPair::Invalid()) {
    // No converter at all: keep ASCII, mark the rest as undecodable.
    out.reserve(length);
    for (size_t i = 0; i < length; ++i) {
      const unsigned char b = static_cast<unsigned char>(bytes[i]);
      out += b < 0x80 ? static_cast<wchar_t>(b) : static_cast<wchar_t>(kReplacement);
    }
    return out;
  }
  out.resize(length);  // never more characters than bytes
  // An undecodable byte (or a lead byte cut off at the end) becomes U+FFFD.
  const wchar_t rep = static_cast<wchar_t>(kReplacement);
  const size_t written = ConvertReplacing(cd, bytes, length, 1, reinterpret_cast<char*>(&out[0]),
                                          length * sizeof(wchar_t), &rep, sizeof rep);
  out.resize(written / sizeof(wchar_t));
  return out;
}

std::string WideToCp949Impl(const wchar_t* text, size_t length) {
  std::string out;
  if (length == 0) return out;
  iconv_t cd = Converters().fromWide();
  if (cd == IconvPair::Invalid()) {
    out.reserve(length);
    for (size_t i = 0; i < length; ++i) out += text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    return out;
  }
  out.resize(length * 2);  // two bytes per character at most
  // A character the code page cannot hold (or a lone surrogate) becomes '?'.
  const size_t written = ConvertReplacing(cd, reinterpret_cast<const char*>(text), length * sizeof(wchar_t),
                                          sizeof(wchar_t), &out[0], out.size(), "?", 1);
  out.resize(written);
  return out;
}

#else  // _WIN32

// ---------------------------------------------------------------------------
// Windows: the system's code-page functions.
// ---------------------------------------------------------------------------

std::wstring MultiByteToWide(UINT codePage, DWORD flags, const char* bytes, size_t length) {
  std::wstring out;
  if (length == 0) return out;
  const int inLen = length > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(length);
  const int n = MultiByteToWideChar(codePage, flags, bytes, inLen, nullptr, 0);
  if (n <= 0) return out;
  out.resize(static_cast<size_t>(n));
  MultiByteToWideChar(codePage, flags, bytes, inLen, &out[0], n);
  return out;
}

std::string WideToMultiByte(UINT codePage, const wchar_t* text, size_t length) {
  std::string out;
  if (length == 0) return out;
  const int inLen = length > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(length);
  const int n = WideCharToMultiByte(codePage, 0, text, inLen, nullptr, 0, nullptr, nullptr);
  if (n <= 0) return out;
  out.resize(static_cast<size_t>(n));
  WideCharToMultiByte(codePage, 0, text, inLen, &out[0], n, nullptr, nullptr);
  return out;
}

std::wstring Cp949ToWideImpl(const char* bytes, size_t length) {
  std::wstring out = MultiByteToWide(949, MB_ERR_INVALID_CHARS, bytes, length);
  if (!out.empty()) return out;
  // Some byte is undecodable: go character by character so that it alone
  // becomes U+FFFD and decoding resumes at the next byte (the system would
  // swallow a lead byte's ASCII successor into its '?').
  out.reserve(length);
  size_t i = 0;
  while (i < length) {
    const size_t n = IsDBCSLeadByteEx(949, static_cast<BYTE>(bytes[i])) && i + 1 < length ? 2 : 1;
    wchar_t w[2];
    const int got = MultiByteToWideChar(949, MB_ERR_INVALID_CHARS, bytes + i, static_cast<int>(n), w, 2);
    if (got > 0) {
      out.append(w, static_cast<size_t>(got));
      i += n;
    } else {
      out += static_cast<wchar_t>(kReplacement);
      ++i;
    }
  }
  return out;
}

std::string WideToCp949Impl(const wchar_t* text, size_t length) { return WideToMultiByte(949, text, length); }

#endif

}  // namespace

// ---------------------------------------------------------------------------
// UTF-8
// ---------------------------------------------------------------------------

std::string WideToUtf8(const wchar_t* text, size_t length) {
  std::string out;
  if (!text || length == 0) return out;
  out.reserve(length + length / 2);
  for (size_t i = 0; i < length; ++i) {
    char32_t c = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i]));
    if (sizeof(wchar_t) == 2 && c >= 0xD800 && c <= 0xDBFF && i + 1 < length) {
      const char32_t low = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i + 1]));
      if (low >= 0xDC00 && low <= 0xDFFF) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::string WideToUtf8(const std::wstring& text) { return WideToUtf8(text.data(), text.size()); }

std::wstring Utf8ToWide(const char* bytes, size_t length) {
  std::wstring out;
  if (!bytes || length == 0) return out;
  out.reserve(length);
  const unsigned char* s = reinterpret_cast<const unsigned char*>(bytes);
  size_t i = 0;
  while (i < length) {
    if (s[i] < 0x80) {  // ASCII runs dominate
      out += static_cast<wchar_t>(s[i++]);
      continue;
    }
    char32_t cp;
    bool ok;
    i += DecodeUtf8(s + i, length - i, cp, ok);
    if (sizeof(wchar_t) == 2 && cp >= 0x10000) {
      out += static_cast<wchar_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<wchar_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<wchar_t>(cp);
    }
  }
  return out;
}

std::wstring Utf8ToWide(const std::string& bytes) { return Utf8ToWide(bytes.data(), bytes.size()); }

bool IsValidUtf8(const char* bytes, size_t length) {
  if (!bytes) return length == 0;
  const unsigned char* s = reinterpret_cast<const unsigned char*>(bytes);
  size_t i = 0;
  while (i < length) {
    if (s[i] < 0x80) {
      ++i;
      continue;
    }
    char32_t cp;
    bool ok;
    i += DecodeUtf8(s + i, length - i, cp, ok);
    if (!ok) return false;
  }
  return true;
}

// ---------------------------------------------------------------------------
// Code page 949
// ---------------------------------------------------------------------------

std::string WideToCp949(const wchar_t* text, size_t length) {
  if (!text) return std::string();
  // Plain ASCII needs no converter.
  size_t i = 0;
  while (i < length && static_cast<std::make_unsigned_t<wchar_t>>(text[i]) < 0x80) ++i;
  if (i == length) {
    std::string out(length, '\0');
    for (size_t k = 0; k < length; ++k) out[k] = static_cast<char>(text[k]);
    return out;
  }
  return WideToCp949Impl(text, length);
}

std::wstring Cp949ToWide(const char* bytes, size_t length) {
  if (!bytes) return std::wstring();
  size_t i = 0;
  while (i < length && static_cast<unsigned char>(bytes[i]) < 0x80) ++i;
  if (i == length) {
    std::wstring out(length, L'\0');
    for (size_t k = 0; k < length; ++k) out[k] = static_cast<unsigned char>(bytes[k]);
    return out;
  }
  return Cp949ToWideImpl(bytes, length);
}

// ---------------------------------------------------------------------------
// UTF-16LE
// ---------------------------------------------------------------------------

std::string WideToUtf16LE(const wchar_t* text, size_t length) {
  std::string out;
  if (!text || length == 0) return out;
  out.reserve(length * 2);
  for (size_t i = 0; i < length; ++i) {
    std::uint16_t units[2];
    const int count = internal::EncodeUtf16(text[i], units);
    for (int k = 0; k < count; ++k) AppendUtf16Unit(out, units[k]);
  }
  return out;
}

std::wstring Utf16LEToWide(const void* bytes, size_t byteCount) {
  std::wstring out;
  if (!bytes || byteCount == 0) return out;
  const unsigned char* s = static_cast<const unsigned char*>(bytes);
  const size_t units = byteCount / 2;
  out.reserve(units + (byteCount & 1));
  internal::Utf16Joiner joiner(out);
  for (size_t k = 0; k < units; ++k) joiner.Add(static_cast<unsigned>(s[2 * k] | (s[2 * k + 1] << 8)));
  joiner.Finish();
  if (byteCount & 1) out += static_cast<wchar_t>(kReplacement);
  return out;
}

size_t Utf16Length(const wchar_t* text, size_t length) {
  if (!text) return 0;
  size_t n = length;
  if (sizeof(wchar_t) == 4) {
    for (size_t i = 0; i < length; ++i) {
      const char32_t c = static_cast<char32_t>(static_cast<std::make_unsigned_t<wchar_t>>(text[i]));
      if (c >= 0x10000 && c <= 0x10FFFF) ++n;
    }
  }
  return n;
}

// ---------------------------------------------------------------------------
// By code page number
// ---------------------------------------------------------------------------

std::wstring BytesToWide(const char* bytes, size_t length, UINT codePage) {
  switch (codePage) {
    case kCodePageUtf8: return Utf8ToWide(bytes, length);
    case kCodePageUtf16LE: return Utf16LEToWide(bytes, length);
    default: return Cp949ToWide(bytes, length);
  }
}

std::string WideToBytes(const wchar_t* text, size_t length, UINT codePage) {
  switch (codePage) {
    case kCodePageUtf8: return WideToUtf8(text, length);
    case kCodePageUtf16LE: return WideToUtf16LE(text, length);
    default: return WideToCp949(text, length);
  }
}

UINT DetectTextEncoding(const char* bytes, size_t length, size_t& bomLength, bool preferUtf8WithoutBom) {
  bomLength = 0;
  const unsigned char* s = reinterpret_cast<const unsigned char*>(bytes);
  if (s && length >= 3 && s[0] == 0xEF && s[1] == 0xBB && s[2] == 0xBF) {
    bomLength = 3;
    return kCodePageUtf8;
  }
  if (s && length >= 2 && s[0] == 0xFF && s[1] == 0xFE) {
    bomLength = 2;
    return kCodePageUtf16LE;
  }
#if defined(_WIN32)
  if (!preferUtf8WithoutBom) return kCodePageCp949;
#else
  (void)preferUtf8WithoutBom;
#endif
  return IsValidUtf8(bytes, length) ? kCodePageUtf8 : kCodePageCp949;
}

}  // namespace chartcore
