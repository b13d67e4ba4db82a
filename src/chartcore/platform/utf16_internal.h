// UTF-16 code units to and from wchar_t, shared by the archive's strings and
// the UTF-16 text files. Where wchar_t is 16 bits the units are the
// characters; where it is 32 bits characters above U+FFFF are surrogate
// pairs. Lone surrogates pass through in both directions.
#ifndef CHARTCORE_PLATFORM_UTF16_INTERNAL_H_
#define CHARTCORE_PLATFORM_UTF16_INTERNAL_H_

#include <cstdint>
#include <string>

namespace chartcore {
namespace internal {

constexpr bool kWideIs16Bit = sizeof(wchar_t) == 2;

inline bool IsHighSurrogate(unsigned u) { return u >= 0xD800 && u <= 0xDBFF; }
inline bool IsLowSurrogate(unsigned u) { return u >= 0xDC00 && u <= 0xDFFF; }

// The code units of one character (returns 1 or 2); a value beyond Unicode
// becomes U+FFFD.
inline int EncodeUtf16(wchar_t ch, std::uint16_t (&units)[2]) {
  const auto c = static_cast<std::uint32_t>(ch);
  if (kWideIs16Bit || c <= 0xFFFF) {
    units[0] = static_cast<std::uint16_t>(c);
    return 1;
  }
  if (c > 0x10FFFF) {
    units[0] = 0xFFFD;
    return 1;
  }
  const std::uint32_t v = c - 0x10000;
  units[0] = static_cast<std::uint16_t>(0xD800 + (v >> 10));
  units[1] = static_cast<std::uint16_t>(0xDC00 + (v & 0x3FF));
  return 2;
}

// Joins code units into wide text as they arrive (a pair may be split across
// buffer refills).
class Utf16Joiner {
 public:
  explicit Utf16Joiner(std::wstring& out) : m_out(out) {}
  void Add(unsigned u) {
    if (kWideIs16Bit) {
      m_out.push_back(static_cast<wchar_t>(u));
      return;
    }
    if (m_high != 0) {
      if (IsLowSurrogate(u)) {
        m_out.push_back(static_cast<wchar_t>(0x10000 + ((m_high - 0xD800u) << 10) + (u - 0xDC00u)));
        m_high = 0;
        return;
      }
      m_out.push_back(static_cast<wchar_t>(m_high));
      m_high = 0;
    }
    if (IsHighSurrogate(u)) {
      m_high = u;
    } else {
      m_out.push_back(static_cast<wchar_t>(u));
    }
  }
  // 1 while the first half of a pair waits for its second.
  size_t Pending() const { return m_high != 0 ? 1 : 0; }
  void Finish() {
    if (m_high != 0) m_out.push_back(static_cast<wchar_t>(m_high));
    m_high = 0;
  }

 private:
  std::wstring& m_out;
  unsigned m_high = 0;
};

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_UTF16_INTERNAL_H_
