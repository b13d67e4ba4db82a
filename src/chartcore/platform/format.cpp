#include "chartcore/platform/format.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <system_error>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/text_codec.h"

namespace chartcore {
namespace {

// ---------------------------------------------------------------------------
// Output sinks: the engine writes through one of these, chosen at compile time
// so the common conversions cost no virtual calls.
// ---------------------------------------------------------------------------

// Appends to a string, refusing to grow past kMaxFormattedLength.
class StringSink {
 public:
  explicit StringSink(std::wstring& out) : out_(out) {}
  void Put(wchar_t ch) {
    Check(1);
    out_.push_back(ch);
  }
  void Fill(wchar_t ch, size_t n) {
    if (n == 0) return;
    Check(n);
    out_.append(n, ch);
  }
  void Write(const wchar_t* text, size_t n) {
    Check(n);
    out_.append(text, n);
  }
  void Write(const char* ascii, size_t n) {
    Check(n);
    const size_t old = out_.size();
    out_.resize(old + n);
    wchar_t* dst = &out_[old];
    for (size_t i = 0; i < n; ++i) dst[i] = static_cast<unsigned char>(ascii[i]);
  }

 private:
  void Check(size_t n) {
    if (out_.size() > kMaxFormattedLength || n > kMaxFormattedLength - out_.size()) AfxThrowMemoryException();
  }
  std::wstring& out_;
};

// Writes into a caller's buffer of fixed size, remembering whether anything
// was cut off.
class BufferSink {
 public:
  BufferSink(wchar_t* buf, size_t capacity) : buf_(buf), cap_(capacity) {}
  void Put(wchar_t ch) {
    if (pos_ < cap_) buf_[pos_++] = ch;
    else truncated_ = true;
  }
  void Fill(wchar_t ch, size_t n) {
    const size_t room = Room(n);
    for (size_t i = 0; i < room; ++i) buf_[pos_ + i] = ch;
    pos_ += room;
  }
  void Write(const wchar_t* text, size_t n) {
    const size_t room = Room(n);
    std::wmemcpy(buf_ + pos_, text, room);
    pos_ += room;
  }
  void Write(const char* ascii, size_t n) {
    const size_t room = Room(n);
    for (size_t i = 0; i < room; ++i) buf_[pos_ + i] = static_cast<unsigned char>(ascii[i]);
    pos_ += room;
  }
  size_t size() const { return pos_; }
  bool truncated() const { return truncated_; }

 private:
  size_t Room(size_t n) {
    const size_t room = cap_ - pos_;
    if (n > room) {
      truncated_ = true;
      return room;
    }
    return n;
  }
  wchar_t* buf_;
  size_t cap_;
  size_t pos_ = 0;
  bool truncated_ = false;
};

// Only counts (the runtime's _vscwprintf).
class CountSink {
 public:
  void Put(wchar_t) { ++n_; }
  void Fill(wchar_t, size_t n) { n_ += n; }
  void Write(const wchar_t*, size_t n) { n_ += n; }
  void Write(const char*, size_t n) { n_ += n; }
  size_t size() const { return n_; }

 private:
  size_t n_ = 0;
};

// A va_list the conversions can consume from; copied once so the caller's
// list is never touched.
struct ArgList {
  explicit ArgList(va_list args) { va_copy(ap, args); }
  ~ArgList() { va_end(ap); }
  ArgList(const ArgList&) = delete;
  ArgList& operator=(const ArgList&) = delete;
  va_list ap;
};

// ---------------------------------------------------------------------------
// Conversion directive
// ---------------------------------------------------------------------------

enum : unsigned {
  kLeft = 1u << 0,        // '-'
  kPlus = 1u << 1,        // '+'
  kSpace = 1u << 2,       // ' '
  kAlt = 1u << 3,         // '#'
  kZero = 1u << 4,        // '0'
  kShort = 1u << 5,       // h: 16-bit integers, narrow text
  kLong = 1u << 6,        // l: 32-bit integers, wide text
  kWide = 1u << 7,        // w: wide text
  kInt64 = 1u << 8,       // ll, I64, j
  kPtrSize = 1u << 9,     // I, z, t
  kLongDouble = 1u << 10  // L
};

// Digits a double can have: 767 significant, 1074 after the point. Beyond
// this many decimals every digit is 0 and is written as padding instead.
constexpr int kExactDecimals = 1100;

struct Directive {
  unsigned flags = 0;
  int width = 0;
  int precision = -1;  // -1: none given
};

// Writes one field: prefix (sign, "0x"), zerosBefore (an integer's
// precision), text, zerosAfter (decimals beyond the exact digits) and suffix
// (an exponent), padded to the width. The 0 flag pads every conversion with
// zeros after the prefix, strings included, and loses to the - flag.
template <class Sink, class Ch>
void EmitField(Sink& sink, const Directive& dir, const char* prefix, size_t prefixLen, size_t zerosBefore,
               const Ch* text, size_t textLen, size_t zerosAfter = 0, const char* suffix = nullptr,
               size_t suffixLen = 0) {
  const std::uint64_t used = std::uint64_t{prefixLen} + zerosBefore + textLen + zerosAfter + suffixLen;
  const std::uint64_t width = dir.width > 0 ? static_cast<std::uint64_t>(dir.width) : 0;
  const size_t padding = width > used ? static_cast<size_t>(width - used) : 0;
  if (!(dir.flags & (kLeft | kZero))) sink.Fill(L' ', padding);
  if (prefixLen) sink.Write(prefix, prefixLen);
  if ((dir.flags & (kZero | kLeft)) == kZero) sink.Fill(L'0', padding);
  sink.Fill(L'0', zerosBefore);
  sink.Write(text, textLen);
  sink.Fill(L'0', zerosAfter);
  if (suffixLen) sink.Write(suffix, suffixLen);
  if (dir.flags & kLeft) sink.Fill(L' ', padding);
}

int SaturatingAppendDigit(int value, wchar_t digit) {
  const int d = digit - L'0';
  if (value > (INT_MAX - d) / 10) return INT_MAX;
  return value * 10 + d;
}

bool IsDigit(wchar_t ch) { return ch >= L'0' && ch <= L'9'; }

// ---------------------------------------------------------------------------
// Integers
// ---------------------------------------------------------------------------

// Reads an integer argument of the width the flags select. Windows `long` is
// 32 bits, so l reads 32; h narrows to 16 after the int promotion.
std::uint64_t ReadInteger(ArgList& args, unsigned flags, bool isSigned, bool& negative) {
  negative = false;
  if ((flags & kInt64) || ((flags & kPtrSize) && sizeof(void*) == 8)) {
    if (isSigned) {
      const long long v = va_arg(args.ap, long long);
      negative = v < 0;
      return negative ? 0 - static_cast<std::uint64_t>(v) : static_cast<std::uint64_t>(v);
    }
    return static_cast<std::uint64_t>(va_arg(args.ap, unsigned long long));
  }
  if (flags & kPtrSize) {
    // 32-bit pointers: the argument is an int-sized value.
  } else if (flags & kShort) {
    const int v = va_arg(args.ap, int);
    if (isSigned) {
      const short s = static_cast<short>(v);
      negative = s < 0;
      return negative ? static_cast<std::uint64_t>(-static_cast<int>(s)) : static_cast<std::uint64_t>(s);
    }
    return static_cast<unsigned short>(v);
  }
  if (isSigned) {
    const int v = va_arg(args.ap, int);
    negative = v < 0;
    return negative ? static_cast<std::uint64_t>(-static_cast<long long>(v)) : static_cast<std::uint64_t>(v);
  }
  return va_arg(args.ap, unsigned int);
}

// An explicit precision is a minimum count of digits; unlike C, the runtime
// keeps zero padding to the width with it ("%08.3d" of 5 is "00000005").
template <class Sink>
void FormatInteger(Sink& sink, const Directive& dir, std::uint64_t number, bool negative, bool isSigned, unsigned radix,
                   bool upper) {
  char prefix[2];
  size_t prefixLen = 0;
  if (radix == 16 && (dir.flags & kAlt) && number != 0) {
    prefix[0] = '0';
    prefix[1] = upper ? 'X' : 'x';
    prefixLen = 2;
  }
  char buf[32];
  char* end = buf + sizeof(buf);
  char* text = end;
  const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  for (; number != 0; number /= radix) *--text = digits[number % radix];
  const size_t count = static_cast<size_t>(end - text);
  const size_t precision = dir.precision < 0 ? 1 : static_cast<size_t>(dir.precision);
  const size_t zeros = precision > count ? precision - count : 0;
  // # gives octal a leading 0 unless the digits already start with one; a
  // zero printed with precision 0 has no digits and gets none.
  if (radix == 8 && (dir.flags & kAlt) && zeros == 0 && count > 0) *--text = '0';
  if (isSigned) {
    if (negative) prefix[prefixLen++] = '-';
    else if (dir.flags & kPlus) prefix[prefixLen++] = '+';
    else if (dir.flags & kSpace) prefix[prefixLen++] = ' ';
  }
  EmitField(sink, dir, prefix, prefixLen, zeros, text, static_cast<size_t>(end - text));
}

// ---------------------------------------------------------------------------
// Floating point
// ---------------------------------------------------------------------------

// A decimal mantissa: value = 0.d1d2d3... x 10^decpt, digits beyond n are
// zero. Zero is n = 0, decpt = 1. Infinities and NaNs use the old runtime's
// pseudo-digits ("1#INF", decpt 1) and go through the same rounding, which is
// where "1.#J" for "%.2f" of an infinity comes from.
struct Decimal {
  char d[800];
  int n;
  int decpt;
};

std::uint64_t Bits(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

// Number of binary digits after the point in a finite value; its exact
// decimal expansion has the same number of decimal digits after the point.
int FractionalBits(double v) {
  const std::uint64_t b = Bits(v);
  const int biased = static_cast<int>((b >> 52) & 0x7FF);
  std::uint64_t m = b & ((std::uint64_t{1} << 52) - 1);
  int e2;
  if (biased == 0) {
    if (m == 0) return 0;
    e2 = -1074;
  } else {
    m |= std::uint64_t{1} << 52;
    e2 = biased - 1075;
  }
  int tz = 0;
  while ((m & 1) == 0) {
    m >>= 1;
    ++tz;
  }
  const int k = -(e2 + tz);
  return k > 0 ? k : 0;
}

// The exact decimal digits of a finite, non-negative value.
void ExactDecimal(double mag, Decimal& out) {
  out.n = 0;
  out.decpt = 1;
  if (mag == 0) return;
  char tmp[1200];
  const auto res = std::to_chars(tmp, tmp + sizeof tmp, mag, std::chars_format::fixed, FractionalBits(mag));
  const char* p = tmp;
  const char* end = res.ptr;
  int intDigits = 0;
  bool seenNonZero = false;
  int leadingZeros = 0;  // zeros after the point before the first digit
  bool afterPoint = false;
  for (; p < end; ++p) {
    const char c = *p;
    if (c == '.') {
      afterPoint = true;
      continue;
    }
    if (!seenNonZero) {
      if (c == '0') {
        if (afterPoint) ++leadingZeros;
        continue;
      }
      seenNonZero = true;
    }
    if (!afterPoint) ++intDigits;
    if (out.n < static_cast<int>(sizeof out.d)) out.d[out.n++] = c;
  }
  out.decpt = intDigits > 0 ? intDigits : -leadingZeros;
  while (out.n > 0 && out.d[out.n - 1] == '0') --out.n;
}

void NonFiniteDecimal(const char* digits, Decimal& out) {
  out.n = static_cast<int>(std::strlen(digits));
  std::memcpy(out.d, digits, static_cast<size_t>(out.n));
  out.decpt = 1;
}

// Keeps `keep` digits, rounding up when the first dropped digit is 5 or more.
// On exact digits that is rounding half away from zero; on the pseudo-digits
// of infinities it reproduces the old runtime's letter arithmetic.
void RoundDecimal(Decimal& dec, int keep) {
  if (keep < 0) {
    dec.n = 0;
    return;
  }
  if (keep >= dec.n) return;
  const bool up = dec.d[keep] >= '5';
  dec.n = keep;
  if (!up) return;
  int i = keep - 1;
  while (i >= 0 && dec.d[i] == '9') dec.d[i--] = '0';
  if (i >= 0) {
    ++dec.d[i];
  } else {
    dec.d[0] = '1';
    dec.n = 1;
    ++dec.decpt;
  }
}

char DigitAt(const Decimal& dec, int i) { return i >= 0 && i < dec.n ? dec.d[i] : '0'; }

// Fixed notation with ndec decimals; returns the length written.
size_t FixedText(Decimal& dec, int ndec, char* out) {
  RoundDecimal(dec, dec.decpt + ndec);
  char* p = out;
  if (dec.decpt <= 0) {
    *p++ = '0';
  } else {
    for (int i = 0; i < dec.decpt; ++i) *p++ = DigitAt(dec, i);
  }
  if (ndec > 0) {
    *p++ = '.';
    for (int j = 0; j < ndec; ++j) *p++ = DigitAt(dec, dec.decpt + j);
  }
  return static_cast<size_t>(p - out);
}

// Scientific notation with ndec decimals and an exponent of at least three
// digits ("1.000000e+005").
size_t ExponentText(Decimal& dec, int ndec, bool caps, char* out) {
  RoundDecimal(dec, ndec + 1);
  char* p = out;
  *p++ = DigitAt(dec, 0);
  if (ndec > 0) {
    *p++ = '.';
    for (int j = 1; j <= ndec; ++j) *p++ = DigitAt(dec, j);
  }
  *p++ = caps ? 'E' : 'e';
  int exp = dec.n == 0 ? 0 : dec.decpt - 1;
  *p++ = exp < 0 ? '-' : '+';
  if (exp < 0) exp = -exp;
  *p++ = static_cast<char>('0' + exp / 100 % 10);
  *p++ = static_cast<char>('0' + exp / 10 % 10);
  *p++ = static_cast<char>('0' + exp % 10);
  return static_cast<size_t>(p - out);
}

// Drops trailing zeros of the decimals (and a bare point), before any
// exponent, as %g does without the # flag.
size_t CropZeros(char* text, size_t len) {
  size_t point = 0;
  while (point < len && text[point] != '.') ++point;
  if (point == len) return len;
  size_t expPos = point;
  while (expPos < len && text[expPos] != 'e' && text[expPos] != 'E') ++expPos;
  size_t keep = expPos;
  while (keep > point + 1 && text[keep - 1] == '0') --keep;
  if (keep == point + 1) keep = point;
  std::memmove(text + keep, text + expPos, len - expPos);
  return keep + (len - expPos);
}

size_t GeneralText(Decimal& dec, int precision, bool alt, bool caps, char* out) {
  RoundDecimal(dec, precision);
  const int magnitude = dec.decpt - 1;
  size_t len;
  if (magnitude < -4 || magnitude >= precision) {
    len = ExponentText(dec, precision - 1, caps, out);
  } else {
    len = FixedText(dec, precision - 1 - magnitude, out);
  }
  return alt ? len : CropZeros(out, len);
}

// Hexadecimal floating point: "0x1.8000000000000p+1" for 3.0 (13 hex digits by
// default, exponent in decimal without padding). Shows `shown` (at most 13)
// hex digits, rounding the rest half away from zero.
size_t HexText(double mag, int shown, bool point, bool caps, char* out) {
  const std::uint64_t b = Bits(mag);
  const int biased = static_cast<int>((b >> 52) & 0x7FF);
  std::uint64_t frac = b & ((std::uint64_t{1} << 52) - 1);
  unsigned lead = biased == 0 ? 0 : 1;
  int exp = biased == 0 ? (frac == 0 ? 0 : -1022) : biased - 1023;
  if (shown < 13) {
    const int shift = 4 * (13 - shown);
    const std::uint64_t rest = frac & ((std::uint64_t{1} << shift) - 1);
    frac >>= shift;
    if (rest >= (std::uint64_t{1} << (shift - 1))) {
      ++frac;
      if (frac >> (4 * shown)) {  // carried into the leading digit
        frac = 0;
        ++lead;
      }
    }
  }
  const char* digits = caps ? "0123456789ABCDEF" : "0123456789abcdef";
  char* p = out;
  *p++ = '0';
  *p++ = caps ? 'X' : 'x';
  *p++ = digits[lead];
  if (point) *p++ = '.';
  for (int i = shown - 1; i >= 0; --i) *p++ = digits[(frac >> (4 * i)) & 0xF];
  *p++ = caps ? 'P' : 'p';
  *p++ = exp < 0 ? '-' : '+';
  if (exp < 0) exp = -exp;
  char tmp[8];
  int t = 0;
  do {
    tmp[t++] = static_cast<char>('0' + exp % 10);
    exp /= 10;
  } while (exp);
  while (t) *p++ = tmp[--t];
  return static_cast<size_t>(p - out);
}

// Pseudo-digits of the old runtime for values without digits: every negative
// NaN is the "indefinite" of x86 arithmetic, every other NaN a quiet one.
const char* NonFiniteDigits(double v) {
  const std::uint64_t b = Bits(v);
  if ((b & ((std::uint64_t{1} << 52) - 1)) == 0) return "1#INF";
  return (b >> 63) ? "1#IND" : "1#QNAN";
}

// Inserts the point a # flag forces when there are no decimals, before any
// exponent.
size_t ForceDecimalPoint(char* text, size_t len) {
  size_t i = 0;
  if (i < len && text[i] == '-') ++i;
  while (i < len && text[i] != 'e' && text[i] != 'E' && text[i] != 'p' && text[i] != 'P' && text[i] != '.') ++i;
  if (i < len && text[i] == '.') return len;
  std::memmove(text + i + 1, text + i, len - i);
  text[i] = '.';
  return len + 1;
}

// A rendered number: text[0..suffixAt) is the mantissa (with a leading '-'
// for negative values, negative zero included), then zerosAfter zeros, then
// text[suffixAt..len), the exponent if any.
struct FloatText {
  char text[1600];
  size_t len = 0;
  size_t suffixAt = 0;
  size_t zerosAfter = 0;
};

// Infinities and NaNs: "1.#INF" and its kin with the decimals padded with
// zeros or rounded digit by digit; %g without a precision (or with 0) prints
// the text as it is, and # never adds a point.
void RenderNonFinite(double v, wchar_t type, int precision, bool alt, bool caps, FloatText& out) {
  Decimal dec;
  NonFiniteDecimal(NonFiniteDigits(v), dec);
  int decimals;
  if (type == L'g') decimals = precision <= 0 ? dec.n - 1 : precision - 1;
  else if (precision >= 0) decimals = precision;
  else decimals = type == L'a' ? 13 : 6;
  const int shown = decimals < kExactDecimals ? decimals : kExactDecimals;
  char* p = out.text;
  if (Bits(v) >> 63) *p++ = '-';
  if (type == L'a') {
    *p++ = '0';
    *p++ = caps ? 'X' : 'x';
  }
  p += FixedText(dec, shown, p);
  out.len = static_cast<size_t>(p - out.text);
  out.zerosAfter = static_cast<size_t>(decimals - shown);
  if (type == L'g' && !alt) {
    out.len = CropZeros(out.text, out.len);
    out.zerosAfter = 0;
  }
  out.suffixAt = out.len;
  const char* suffix = type == L'e' ? (caps ? "E+000" : "e+000") : type == L'a' ? (caps ? "P+0" : "p+0") : "";
  std::memcpy(out.text + out.len, suffix, std::strlen(suffix));
  out.len += std::strlen(suffix);
}

// Renders a double for conversion `type` (lower case e f g a; caps for the
// upper-case forms).
void RenderFloat(double v, wchar_t type, int precision, unsigned flags, bool caps, FloatText& out) {
  const bool alt = (flags & kAlt) != 0;
  if (!std::isfinite(v)) {
    RenderNonFinite(v, type, precision, alt, caps, out);
    return;
  }
  int wanted = precision;
  if (wanted < 0) wanted = type == L'a' ? 13 : 6;
  else if (wanted == 0 && type == L'g') wanted = 1;
  const int limit = type == L'a' ? 13 : kExactDecimals;
  const int shown = wanted < limit ? wanted : limit;
  const bool negative = (Bits(v) >> 63) != 0;
  char* p = out.text;
  // Common case: when the value is not exactly halfway at this precision,
  // the correctly rounded conversion is already the runtime's result.
  if (type == L'f' && FractionalBits(v) != shown + 1) {
    p = std::to_chars(p, out.text + sizeof out.text - 1, v, std::chars_format::fixed, shown).ptr;
  } else {
    if (negative) *p++ = '-';
    const double mag = negative ? -v : v;
    if (type == L'a') {
      p += HexText(mag, shown, wanted > 0 || alt, caps, p);
    } else {
      Decimal dec;
      ExactDecimal(mag, dec);
      if (type == L'f') p += FixedText(dec, shown, p);
      else if (type == L'e') p += ExponentText(dec, shown, caps, p);
      else p += GeneralText(dec, shown, alt, caps, p);
    }
  }
  out.len = static_cast<size_t>(p - out.text);
  // # keeps the point: with no decimals asked for, and always for %g.
  if (alt && (precision == 0 || type == L'g')) out.len = ForceDecimalPoint(out.text, out.len);
  // The exponent starts at the last e or p (hex digits may contain e).
  const char expChar = type == L'a' ? 'p' : 'e';
  out.suffixAt = out.len;
  for (size_t i = out.len; i-- > 0;) {
    if (out.text[i] == expChar || out.text[i] == expChar - ('a' - 'A')) {
      out.suffixAt = i;
      break;
    }
  }
  // Decimals beyond the exact digits are zeros; %g drops them unless #.
  out.zerosAfter = (type != L'g' || alt) ? static_cast<size_t>(wanted - shown) : 0;
}

template <class Sink>
void FormatFloat(Sink& sink, const Directive& dir, double v, wchar_t type, bool caps) {
  FloatText f;
  RenderFloat(v, type, dir.precision, dir.flags, caps, f);
  const char* text = f.text;
  size_t len = f.len;
  size_t suffixAt = f.suffixAt;
  char prefix[3];
  size_t prefixLen = 0;
  if (text[0] == '-') {
    prefix[prefixLen++] = '-';
    ++text;
    --len;
    --suffixAt;
  } else if (dir.flags & kPlus) {
    prefix[prefixLen++] = '+';
  } else if (dir.flags & kSpace) {
    prefix[prefixLen++] = ' ';
  }
  if (type == L'a' && len >= 2 && text[0] == '0') {  // "0x" goes before zero padding, as in hex integers
    prefix[prefixLen++] = text[0];
    prefix[prefixLen++] = text[1];
    text += 2;
    len -= 2;
    suffixAt -= 2;
  }
  EmitField(sink, dir, prefix, prefixLen, 0, text, suffixAt, f.zerosAfter, text + suffixAt, len - suffixAt);
}

// ---------------------------------------------------------------------------
// Characters and strings
// ---------------------------------------------------------------------------

size_t BoundedWideLength(const wchar_t* s, int precision) {
  if (precision < 0) return std::wcslen(s);
  size_t n = 0;
  while (n < static_cast<size_t>(precision) && s[n]) ++n;
  return n;
}

// How many bytes of narrow text to read: up to the terminator, or, with a
// precision, just far enough that either reading (UTF-8 or code page 949) has
// seen `precision` characters, so a buffer without terminator is not overrun.
size_t NarrowExtent(const char* s, int precision) {
  if (precision < 0) return std::strlen(s);
  const auto byte = [s](size_t i) { return static_cast<unsigned char>(s[i]); };
  size_t utf8End = 0;
  for (int chars = 0; chars < precision && byte(utf8End); ++chars) {
    const unsigned char lead = byte(utf8End++);
    int follow = lead >= 0xF0 && lead <= 0xF7 ? 3 : lead >= 0xE0 && lead <= 0xEF ? 2 : lead >= 0xC0 && lead <= 0xDF ? 1 : 0;
    while (follow-- > 0 && byte(utf8End) >= 0x80 && byte(utf8End) <= 0xBF) ++utf8End;
  }
  size_t dbcsEnd = 0;
  for (int chars = 0; chars < precision && byte(dbcsEnd); ++chars) {
    const unsigned char lead = byte(dbcsEnd++);
    if (lead >= 0x81 && lead <= 0xFE && byte(dbcsEnd)) ++dbcsEnd;
  }
  return utf8End > dbcsEnd ? utf8End : dbcsEnd;
}

template <class Sink>
void FormatNarrowString(Sink& sink, const Directive& dir, const char* s) {
  if (!s) s = "(null)";
  const size_t bytes = NarrowExtent(s, dir.precision);
  bool ascii = true;
  for (size_t i = 0; i < bytes && ascii; ++i) ascii = static_cast<unsigned char>(s[i]) < 0x80;
  size_t limit = dir.precision < 0 ? SIZE_MAX : static_cast<size_t>(dir.precision);
  if (ascii) {
    EmitField(sink, dir, "", 0, 0, s, bytes < limit ? bytes : limit);
    return;
  }
  const std::wstring wide = BytesToWide(s, bytes, IsValidUtf8(s, bytes) ? kCodePageUtf8 : kCodePageCp949);
  EmitField(sink, dir, "", 0, 0, wide.data(), wide.size() < limit ? wide.size() : limit);
}

template <class Sink>
void FormatChar(Sink& sink, const Directive& dir, int value, bool narrow) {
  wchar_t ch;
  if (narrow) {
    // One byte is one character; above 0x7F it is no character of either
    // narrow encoding on its own, so it stands for the code point of its
    // value, as the runtime's default locale reads it.
    ch = static_cast<unsigned char>(value);
  } else {
    ch = static_cast<wchar_t>(value);
  }
  // A precision of 0 prints no character, as for a string, but still pads.
  EmitField(sink, dir, "", 0, 0, &ch, dir.precision == 0 ? 0 : 1);
}

// ---------------------------------------------------------------------------
// The engine
// ---------------------------------------------------------------------------

template <class Sink>
void FormatImpl(Sink& sink, const wchar_t* format, ArgList& args) {
  const wchar_t* p = format;
  while (*p) {
    const wchar_t* literal = p;
    while (*p && *p != L'%') ++p;
    if (p != literal) sink.Write(literal, static_cast<size_t>(p - literal));
    if (!*p) break;
    ++p;  // the '%'
    const wchar_t* const dirStart = p;

    Directive dir;
    for (;; ++p) {
      if (*p == L'-') dir.flags |= kLeft;
      else if (*p == L'+') dir.flags |= kPlus;
      else if (*p == L' ') dir.flags |= kSpace;
      else if (*p == L'#') dir.flags |= kAlt;
      else if (*p == L'0') dir.flags |= kZero;
      else break;
    }
    if (*p == L'*') {
      ++p;
      const int w = va_arg(args.ap, int);
      if (w < 0) {
        dir.flags |= kLeft;
        dir.width = w == INT_MIN ? INT_MAX : -w;
      } else {
        dir.width = w;
      }
    } else {
      while (IsDigit(*p)) dir.width = SaturatingAppendDigit(dir.width, *p++);
    }
    if (*p == L'.') {
      ++p;
      dir.precision = 0;
      if (*p == L'*') {
        ++p;
        const int pr = va_arg(args.ap, int);
        dir.precision = pr < 0 ? -1 : pr;
      } else {
        while (IsDigit(*p)) dir.precision = SaturatingAppendDigit(dir.precision, *p++);
      }
    }

    bool badSize = false;
    for (bool more = true; more;) {
      switch (*p) {
        case L'h': dir.flags |= kShort; ++p; break;
        case L'l':
          ++p;
          if (*p == L'l') {
            dir.flags |= kInt64;
            ++p;
          } else {
            dir.flags |= kLong;
          }
          break;
        case L'L': dir.flags |= kLongDouble; ++p; break;
        case L'w': dir.flags |= kWide; ++p; break;
        case L'j': dir.flags |= kInt64; ++p; break;
        case L'z':
        case L't': dir.flags |= kPtrSize; ++p; break;
        case L'N':
        case L'F': ++p; break;  // near/far pointer prefixes: no meaning left
        case L'I':
          if (p[1] == L'6' && p[2] == L'4') {
            dir.flags |= kInt64;
            p += 3;
          } else if (p[1] == L'3' && p[2] == L'2') {
            dir.flags &= ~(kInt64 | kPtrSize);
            p += 3;
          } else if (p[1] && std::wcschr(L"diouxX", p[1])) {
            dir.flags |= kPtrSize;
            ++p;
          } else {
            badSize = true;  // the runtime prints the 'I' as text
            more = false;
          }
          break;
        default: more = false; break;
      }
    }
    const wchar_t type = *p;
    if (type == 0) break;  // a format ending inside a conversion prints nothing more
    ++p;
    if (badSize) {
      sink.Put(type);
      continue;
    }

    bool negative = false;
    std::uint64_t number;
    switch (type) {
      case L'd':
      case L'i':
        number = ReadInteger(args, dir.flags, true, negative);
        FormatInteger(sink, dir, number, negative, true, 10, false);
        break;
      case L'u':
        number = ReadInteger(args, dir.flags, false, negative);
        FormatInteger(sink, dir, number, false, false, 10, false);
        break;
      case L'o':
        number = ReadInteger(args, dir.flags, false, negative);
        FormatInteger(sink, dir, number, false, false, 8, false);
        break;
      case L'x':
      case L'X':
        number = ReadInteger(args, dir.flags, false, negative);
        FormatInteger(sink, dir, number, false, false, 16, type == L'X');
        break;
      case L'p': {
        dir.precision = 2 * static_cast<int>(sizeof(void*));
        dir.flags &= ~kZero;  // a pointer is padded with blanks only
        const std::uintptr_t ptr = reinterpret_cast<std::uintptr_t>(va_arg(args.ap, void*));
        FormatInteger(sink, dir, ptr, false, false, 16, true);
        break;
      }
      case L'c':
      case L'C': {
        const bool narrow =
            (dir.flags & kShort) || (type == L'C' && !(dir.flags & (kLong | kWide)));
        FormatChar(sink, dir, va_arg(args.ap, int), narrow);
        break;
      }
      case L's':
      case L'S': {
        const bool narrow =
            (dir.flags & kShort) || (type == L'S' && !(dir.flags & (kLong | kWide)));
        if (narrow) {
          FormatNarrowString(sink, dir, va_arg(args.ap, const char*));
        } else {
          const wchar_t* s = va_arg(args.ap, const wchar_t*);
          if (!s) s = L"(null)";
          EmitField(sink, dir, "", 0, 0, s, BoundedWideLength(s, dir.precision));
        }
        break;
      }
      case L'e':
      case L'E':
      case L'f':
      case L'g':
      case L'G':
      case L'a':
      case L'A': {
        const double v = (dir.flags & kLongDouble) ? static_cast<double>(va_arg(args.ap, long double))
                                                     : va_arg(args.ap, double);
        const bool caps = type == L'E' || type == L'G' || type == L'A';
        const wchar_t lower = caps ? static_cast<wchar_t>(type - L'A' + L'a') : type;
        FormatFloat(sink, dir, v, lower, caps);
        break;
      }
      case L'n':
        (void)va_arg(args.ap, void*);  // refused: nothing is stored
        break;
      case L'%':
        // "%%" prints a percent sign; a '%' closing a directive with
        // flags, width, precision or size ("%5%") prints nothing.
        if (p - 1 == dirStart) sink.Put(L'%');
        break;
      default:
        sink.Put(type);  // an unknown conversion prints the character
        break;
    }
  }
}

// Text is built in a per-thread buffer, then copied out once, so formatting
// allocates only the result and the arguments may alias the destination.
class ScratchText {
 public:
  ScratchText() : text_(Buffer()) { text_.clear(); }
  ~ScratchText() {
    if (text_.capacity() > 4096) {
      text_.clear();
      text_.shrink_to_fit();
    }
  }
  ScratchText(const ScratchText&) = delete;
  ScratchText& operator=(const ScratchText&) = delete;
  std::wstring& text() { return text_; }

 private:
  static std::wstring& Buffer() {
    thread_local std::wstring buffer;
    return buffer;
  }
  std::wstring& text_;
};

template <class Consume>
void FormatThroughScratch(const wchar_t* format, va_list args, Consume consume) {
  ScratchText scratch;
  if (format) {
    StringSink sink(scratch.text());
    ArgList list(args);
    FormatImpl(sink, format, list);
  }
  consume(scratch.text());
}

}  // namespace

std::wstring FormatWide(const wchar_t* format, va_list args) {
  std::wstring result;
  FormatThroughScratch(format, args, [&result](const std::wstring& text) { result = text; });
  return result;
}

void AppendFormatWide(std::wstring& out, const wchar_t* format, va_list args) {
  FormatThroughScratch(format, args, [&out](const std::wstring& text) { out += text; });
}

int FormatToBufferV(wchar_t* buf, size_t count, const wchar_t* format, va_list args) {
  if (!buf || count == 0 || !format) return -1;
  BufferSink sink(buf, count - 1);
  ArgList list(args);
  FormatImpl(sink, format, list);
  buf[sink.size()] = L'\0';
  if (sink.truncated() || sink.size() > static_cast<size_t>(INT_MAX)) return -1;
  return static_cast<int>(sink.size());
}

int FormatToBuffer(wchar_t* buf, size_t count, const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = FormatToBufferV(buf, count, format, args);
  va_end(args);
  return n;
}

int FormatLengthV(const wchar_t* format, va_list args) {
  if (!format) return -1;
  CountSink sink;
  ArgList list(args);
  FormatImpl(sink, format, list);
  return sink.size() > static_cast<size_t>(INT_MAX) ? -1 : static_cast<int>(sink.size());
}

}  // namespace chartcore

// ---------------------------------------------------------------------------
// CString's formatting members
// ---------------------------------------------------------------------------

void CString::FormatV(const wchar_t* format, va_list args) {
  if (!format) AfxThrowInvalidArgException();
  chartcore::FormatThroughScratch(format, args, [this](const std::wstring& text) { m_str.assign(text); });
}

void CString::AppendFormatV(const wchar_t* format, va_list args) {
  if (!format) AfxThrowInvalidArgException();
  chartcore::FormatThroughScratch(format, args, [this](const std::wstring& text) { m_str.append(text); });
}

void CString::Format(const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  try {
    FormatV(format, args);
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
}

void CString::AppendFormat(const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  try {
    AppendFormatV(format, args);
  } catch (...) {
    va_end(args);
    throw;
  }
  va_end(args);
}
