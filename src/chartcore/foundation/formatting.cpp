#include "chartcore/foundation/formatting.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>

#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/chartype.h"

namespace {

using chartcore::kMaxDecimals;
using chartcore::kMaxFieldWidth;
using chartcore::kPacketEmptyValue;
using chartcore::kPacketNoMaxValue;

constexpr wchar_t kNotAvailable[] = L"N/A";
// Values below this magnitude are noise and print as 0.
constexpr double kZeroThreshold = 1e-8;
// Below 2^63 the integer part fits the exact 64-bit path.
constexpr double kExactLimit = 9.2e18;
// Decimals the exact path renders; 10^18 and twice the scaled fraction still
// fit 64 bits.
constexpr int kExactDecimals = 18;

constexpr std::uint64_t kPow10[kExactDecimals + 1] = {1ULL,
                                                      10ULL,
                                                      100ULL,
                                                      1000ULL,
                                                      10000ULL,
                                                      100000ULL,
                                                      1000000ULL,
                                                      10000000ULL,
                                                      100000000ULL,
                                                      1000000000ULL,
                                                      10000000000ULL,
                                                      100000000000ULL,
                                                      1000000000000ULL,
                                                      10000000000000ULL,
                                                      100000000000000ULL,
                                                      1000000000000000ULL,
                                                      10000000000000000ULL,
                                                      100000000000000000ULL,
                                                      1000000000000000000ULL};

bool IsPrintable(double v) {
  // NaN fails the magnitude test.
  return v != kPacketEmptyValue && v != kPacketNoMaxValue && std::fabs(v) <= chartcore::kMaxPrintableValue;
}

bool ShouldGroup(int group, double v) { return group == 1 && (v >= 1000.0 || v <= -1000.0); }

int ClampDecimals(int decimals) { return std::min(std::max(decimals, 0), kMaxDecimals); }

// 10^n as a double: exact up to 10^22, the runtime's pow beyond.
double PowerOfTen(std::int64_t n) {
  static const double kExact[23] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (n >= 0 && n <= 22) return kExact[n];
  return std::pow(10.0, static_cast<double>(n));
}

// ---------------------------------------------------------------------------
// Exact fixed-point digits
// ---------------------------------------------------------------------------

struct U128 {
  std::uint64_t hi;
  std::uint64_t lo;
};

U128 Multiply64(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t aLo = a & 0xFFFFFFFFu, aHi = a >> 32;
  const std::uint64_t bLo = b & 0xFFFFFFFFu, bHi = b >> 32;
  const std::uint64_t p0 = aLo * bLo, p1 = aLo * bHi, p2 = aHi * bLo, p3 = aHi * bHi;
  const std::uint64_t mid = (p0 >> 32) + (p1 & 0xFFFFFFFFu) + (p2 & 0xFFFFFFFFu);
  return {p3 + (p1 >> 32) + (p2 >> 32) + (mid >> 32), (p0 & 0xFFFFFFFFu) | (mid << 32)};
}

// The low 64 bits of x >> shift, 0 <= shift < 128.
std::uint64_t ShiftRight(U128 x, int shift) {
  if (shift == 0) return x.lo;
  if (shift < 64) return (x.lo >> shift) | (x.hi << (64 - shift));
  return x.hi >> (shift - 64);
}

// A double rounded to a number of decimals: sign, integer part and the
// decimals as an integer below 10^decimals.
struct FixedParts {
  bool negative;
  std::uint64_t whole;
  std::uint64_t fraction;
};

// Rounds exactly as the Microsoft runtime prints: the exact binary value, ties
// away from zero. False where this path does not apply (NaN, infinities,
// magnitudes from 2^63, more than 18 decimals, and negative zero, whose sign
// the runtime decides).
bool SplitFixed(double v, int decimals, FixedParts& out) {
  if (decimals < 0 || decimals > kExactDecimals || !(std::fabs(v) < kExactLimit)) return false;
  const bool negative = std::signbit(v);
  if (negative && v == 0) return false;
  const double a = std::fabs(v);
  std::uint64_t whole = static_cast<std::uint64_t>(a);
  const double f = a - static_cast<double>(whole);  // exact
  std::uint64_t fraction = 0;
  if (f != 0) {
    if (decimals == 0) {
      if (f >= 0.5) ++whole;
    } else {
      std::uint64_t bits = 0;
      std::memcpy(&bits, &f, sizeof bits);
      const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
      std::uint64_t mantissa = bits & ((std::uint64_t{1} << 52) - 1);
      int scale = 1074;  // f = mantissa * 2^-scale
      if (exponent != 0) {
        mantissa |= std::uint64_t{1} << 52;
        scale = 1075 - exponent;
      }
      // q = floor(f * 10^d * 2); (q + 1) / 2 rounds half up on the exact value.
      const int shift = scale - 1;
      const std::uint64_t q = shift >= 128 ? 0 : ShiftRight(Multiply64(mantissa, kPow10[decimals]), shift);
      fraction = (q + 1) >> 1;
      if (fraction == kPow10[decimals]) {
        fraction = 0;
        ++whole;
      }
    }
  }
  out = {negative, whole, fraction};
  return true;
}

// Digits of n, most significant first, into out; returns the count.
int WriteUnsigned(wchar_t* out, std::uint64_t n, bool group) {
  wchar_t tmp[32];
  int k = 0, digits = 0;
  do {
    if (group && digits > 0 && digits % 3 == 0) tmp[k++] = L',';
    tmp[k++] = static_cast<wchar_t>(L'0' + n % 10);
    n /= 10;
    ++digits;
  } while (n != 0);
  for (int i = 0; i < k; ++i) out[i] = tmp[k - 1 - i];
  return k;
}

// n zero-padded to `width` digits (n < 10^width).
int WriteZeroPadded(wchar_t* out, std::uint64_t n, int width) {
  for (int i = width - 1; i >= 0; --i) {
    out[i] = static_cast<wchar_t>(L'0' + n % 10);
    n /= 10;
  }
  return width;
}

int DigitCount(std::uint64_t n) {
  int d = 1;
  while (n >= 10) {
    n /= 10;
    ++d;
  }
  return d;
}

// Writes a printf format of a field width (0: none) and decimals (0: none).
void WriteFloatFormat(wchar_t* out, int width, int decimals) {
  int k = 0;
  out[k++] = L'%';
  if (width > 0) k += WriteUnsigned(out + k, static_cast<std::uint64_t>(width), false);
  out[k++] = L'.';
  if (decimals > 0) k += WriteUnsigned(out + k, static_cast<std::uint64_t>(decimals), false);
  out[k++] = L'f';
  out[k] = L'\0';
}

// ---------------------------------------------------------------------------
// Text assembly
// ---------------------------------------------------------------------------

// Collects a formatted value. Numbers go through the exact path when it
// applies and through the framework's Format otherwise, so both give the same
// digits; grouping matches InsertCommaWithSpace on the printed number.
class NumberText {
 public:
  NumberText() { m_text.reserve(32); }

  void Put(wchar_t ch) { m_text.push_back(ch); }
  void Put(const std::wstring& s) { m_text += s; }

  // Appends v as "%<width>.<decimals>f" prints it (width 0: no field).
  void PutFixed(double v, int decimals, int width, bool group) {
    FixedParts parts;
    if (!SplitFixed(v, decimals, parts)) {
      wchar_t format[chartcore::kFloatFormatBufferSize];
      WriteFloatFormat(format, width, decimals);
      CString text;
      text.Format(format, v);
      if (group) InsertCommaWithSpace(text, 3);
      m_text += text.str();
      return;
    }
    wchar_t digits[64];
    int k = 0;
    if (parts.negative) digits[k++] = L'-';
    const int plain = k + DigitCount(parts.whole) + (decimals > 0 ? decimals + 1 : 0);
    k += WriteUnsigned(digits + k, parts.whole, group);
    if (decimals > 0) {
      digits[k++] = L'.';
      k += WriteZeroPadded(digits + k, parts.fraction, decimals);
    }
    if (width > plain) m_text.append(static_cast<size_t>(width - plain), L' ');
    m_text.append(digits, static_cast<size_t>(k));
  }

  CString Take() { return CString(std::move(m_text)); }
  const std::wstring& str() const { return m_text; }

 private:
  std::wstring m_text;
};

// The value rounded to whole numbers, as "%.f" prints it.
CString WholeText(double v) {
  NumberText text;
  text.PutFixed(v, 0, 0, false);
  return text.Take();
}

// Reads a decimal number written with ASCII digits, sign and point only;
// false for anything else (or a magnitude beyond a double).
bool ReadDecimal(const std::wstring& s, double& out) {
  std::string narrow;
  narrow.reserve(s.size());
  size_t i = 0;
  if (i < s.size() && (s[i] == L'+' || s[i] == L'-')) {
    if (s[i] == L'-') narrow.push_back('-');
    ++i;
  }
  bool digit = false, point = false;
  for (; i < s.size(); ++i) {
    const wchar_t c = s[i];
    if (c >= L'0' && c <= L'9') {
      digit = true;
    } else if (c == L'.' && !point) {
      point = true;
    } else {
      return false;
    }
    narrow.push_back(static_cast<char>(c));
  }
  if (!digit) return false;
  const char* begin = narrow.data();
  const char* end = begin + narrow.size();
  const auto result = std::from_chars(begin, end, out, std::chars_format::fixed);
  return result.ec == std::errc() && result.ptr == end && std::isfinite(out);
}

// The smallest step a code shows, as 1/denominator.
double StepDenominator(int code) {
  if (code >= 1 && code <= 7) return PowerOfTen(code);
  if (code >= 65 && code <= 68) return GetDecimalScaleFromFloat(code);
  if (code >= 69 && code <= 74) return 10.0;
  if (code == 75 || code == 76 || code == 77) return GetDecimalScaleFromFloat(code);
  if (code >= 78) return 320.0;
  return 1.0;
}

// The notation denominator of codes above 75.
int NotationDenominator(int code) { return code == 76 ? 64 : (code == 77 ? 128 : 10); }

// The format of a scale: a field width, or decimals (both 0: "%.f").
struct FloatLayout {
  int width;
  int decimals;
};

FloatLayout LayoutOfScale(double scale) {
  if (scale > 1) return {scale >= kMaxFieldWidth ? kMaxFieldWidth : static_cast<int>(scale), 0};
  if (scale == 1 || scale == 0 || std::isnan(scale)) return {0, 0};
  // 1/scale printed with two decimals and read back, then one decimal for
  // each division by ten that keeps the integer part above 1.
  double r = 1.0 / scale;
  if (!std::isfinite(r)) return {0, kMaxDecimals};
  NumberText text;
  text.PutFixed(r, 2, 0, false);
  ReadDecimal(text.str(), r);
  int n = 0;
  do {
    r /= 10.0;
    ++n;
  } while (std::trunc(r) > 1 && n < kMaxDecimals);
  return {0, n};
}

// Leading and trailing blanks of a text.
void BlankMargins(const std::wstring& s, size_t& lead, size_t& trail) {
  lead = 0;
  while (lead < s.size() && chartcore::IsSpaceW(s[lead])) ++lead;
  trail = 0;
  while (trail < s.size() - lead && chartcore::IsSpaceW(s[s.size() - 1 - trail])) ++trail;
}

// Finds a plain number (blanks, sign, digits with commas, optional point and
// decimals, blanks). begin/end bound the number; point is npos without one.
bool FindPlainNumber(const std::wstring& s, size_t& begin, size_t& end, size_t& point) {
  size_t lead = 0, trail = 0;
  BlankMargins(s, lead, trail);
  begin = lead;
  end = s.size() - trail;
  point = std::wstring::npos;
  size_t i = begin;
  if (i < end && (s[i] == L'-' || s[i] == L'+')) ++i;
  bool digit = false;
  for (; i < end; ++i) {
    const wchar_t c = s[i];
    if (c >= L'0' && c <= L'9') {
      digit = true;
    } else if (c == L',' && point == std::wstring::npos) {
    } else if (c == L'.' && point == std::wstring::npos) {
      point = i;
    } else {
      return false;
    }
  }
  return digit;
}

// Reads the numerator of a whole`numerator text: optional leading zeros (code
// 75 pads "-16" to "0-16"), an optional sign, digits.
bool ReadNumerator(const std::wstring& s, double& value, bool& signedField) {
  size_t i = 0;
  while (i < s.size() && s[i] == L'0') ++i;
  signedField = i < s.size() && (s[i] == L'-' || s[i] == L'+');
  if (!signedField) i = 0;
  const bool negative = signedField && s[i] == L'-';
  if (signedField) ++i;
  if (i >= s.size()) return false;
  double n = 0;
  for (; i < s.size(); ++i) {
    if (s[i] < L'0' || s[i] > L'9') return false;
    n = n * 10 + (s[i] - L'0');
  }
  value = negative ? -n : n;
  return true;
}

// Reads the field after the back-quote of GetNotationFmt as a count of 32nds
// (with its fraction); false for a malformed field.
bool ReadNotationField(const std::wstring& s, int code, double& thirtySeconds) {
  auto digitAt = [&](size_t i) { return i < s.size() && s[i] >= L'0' && s[i] <= L'9'; };
  if (!digitAt(0) || !digitAt(1)) return false;
  const int whole32 = (s[0] - L'0') * 10 + (s[1] - L'0');
  if (s.size() == 2) {
    thirtySeconds = whole32;
    return true;
  }
  if (code >= 78) {
    if (s.size() != 4 || s[2] != L'.' || !digitAt(3)) return false;
    thirtySeconds = (whole32 * 10 + (s[3] - L'0')) / 10.0;
    return true;
  }
  if (s.size() != 3 || !digitAt(2)) return false;
  const int digit = s[2] - L'0';
  // The third digit is the truncated tenth: 2 a quarter, 7 three quarters.
  const double part = digit == 2 ? 0.25 : (digit == 7 ? 0.75 : digit / 10.0);
  thirtySeconds = whole32 + part;
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------
// Date and time strings of an x value
// ---------------------------------------------------------------------------

namespace {

// Cuts a value of more than fourteen integer digits to its first fourteen.
double CutToFourteenDigits(double v) {
  if (!(v >= 1e14)) return v;
  const CString text = WholeText(v);
  double cut = 0;
  for (int i = 0; i < 14 && i < text.GetLength(); ++i) cut = cut * 10 + (text[i] - L'0');
  return cut;
}

}  // namespace

CString GetXPacketDateString(double value, int separatorMode) {
  if (value == kPacketEmptyValue || !std::isfinite(value)) return CString(kNotAvailable);
  value = CutToFourteenDigits(value);
  CString text = WholeText(value);
  if (value < 1e7) return text;
  const wchar_t separator = separatorMode == 1 ? L'-' : (separatorMode == 2 ? L':' : L'/');
  text.Insert(4, separator);
  text.Insert(7, separator);
  return text;
}

CString GetXPacketTimeString(double value, int separatorMode) {
  if (value == kPacketEmptyValue || value == -1e37 || value < -1e20 || !std::isfinite(value)) {
    return CString(kNotAvailable);
  }
  value = CutToFourteenDigits(value);
  CString text = WholeText(value);
  if (value < 10000) return text;
  if (value >= 1e8) text = text.Mid(8);
  const wchar_t separator = separatorMode == 1 ? L'-' : (separatorMode == 2 ? L'/' : L':');
  text.Insert(2, separator);
  text.Insert(5, separator);
  return text;
}

// ---------------------------------------------------------------------------
// Values of a format code
// ---------------------------------------------------------------------------

CString GetYPacketStringOfFormat(double value, int code, int group) {
  if (std::fabs(value) < kZeroThreshold) value = 0;
  if (!IsPrintable(value)) return CString(kNotAvailable);
  if (code > 75) {
    wchar_t buffer[chartcore::kNotationBufferSize];
    GetNotationFmt(buffer, value, NotationDenominator(code));
    return CString(buffer);
  }
  const bool grouped = ShouldGroup(group, value);
  NumberText text;
  if (code >= 65) {
    const double whole = std::trunc(value);
    text.PutFixed(whole, 0, 0, grouped);
    const double numerator = GetDecimalScaleFromFloat(code) * (value - whole);
    text.Put(L'`');
    if (code == 75 && numerator < 10) text.Put(L'0');
    text.PutFixed(numerator, 0, 0, false);
  } else {
    text.PutFixed(value, (code >= 1 && code <= 7) ? code : 0, 0, grouped);
  }
  return text.Take();
}

CString GetYPacketStringOfFormat(double value, int width, int decimals, int group) {
  const int places = ClampDecimals(decimals);
  const int field = std::min(width, kMaxFieldWidth);
  if (value == kPacketEmptyValue || !std::isfinite(value)) {
    CString text(kNotAvailable);
    if (field > text.GetLength()) text += CString(L' ', field - text.GetLength());
    if (places > 0) text += CString(L' ', places + 1);
    return text;
  }
  if (width < 1) return CString(kNotAvailable);
  NumberText text;
  text.PutFixed(value, places, places > 0 ? field : 0, ShouldGroup(group, value));
  return text.Take();
}

CString GetYPacketStringOfFormat(double value, double scale, int group) {
  if (value == kPacketEmptyValue) return CString(kNotAvailable);
  if (scale >= 65) return GetYPacketStringOfFormat(value, scale >= INT_MAX ? INT_MAX : static_cast<int>(scale), group);
  if (std::fabs(value) < kZeroThreshold || std::fabs(value) < scale) value = 0;
  if (!IsPrintable(value)) return CString(kNotAvailable);
  const FloatLayout layout = (scale == 0 || scale == 1) ? FloatLayout{0, 0} : LayoutOfScale(scale);
  NumberText text;
  text.PutFixed(value, layout.decimals, layout.width, ShouldGroup(group, value));
  return text.Take();
}

void MakeFloatFormatData(wchar_t* out, double scale) {
  if (!out) return;
  const FloatLayout layout = LayoutOfScale(scale);
  WriteFloatFormat(out, layout.width, layout.decimals);
}

void MakeFloatFormatData(wchar_t* out, int width, int decimals) {
  if (!out) return;
  if (width >= 1 && decimals > 0) {
    WriteFloatFormat(out, std::min(width, kMaxFieldWidth), ClampDecimals(decimals));
  } else {
    WriteFloatFormat(out, 0, 0);
  }
}

int GetDecimalScaleFromFloat(int code) {
  switch (code) {
    case 65: return 2;
    case 66: return 4;
    case 67: return 8;
    case 68: return 16;
    case 75: return 32;
    case 76: return 64;
    case 77: return 128;
    default: return 10;
  }
}

// ---------------------------------------------------------------------------
// Thousands grouping
// ---------------------------------------------------------------------------

void InsertComma(CString& text, unsigned int groupSize) {
  text.Remove(L',');
  text.Trim();
  std::wstring& s = text.str();
  std::wstring aside;
  const size_t point = s.find(L'.');
  if (point != std::wstring::npos) {
    aside = s.substr(point);
    s.erase(point);
  }
  if (!s.empty() && groupSize > 0 && groupSize <= static_cast<unsigned int>(INT_MAX)) {
    const bool isSigned = s[0] == L'-' || s[0] == L'+';
    const std::int64_t n = groupSize;
    for (std::int64_t p = static_cast<std::int64_t>(s.size()) - n; p > 0; p -= n) {
      if (!isSigned || p + n >= 5) s.insert(static_cast<size_t>(p), 1, L',');
    }
  }
  s += aside;
}

void InsertCommaWithSpace(CString& text, unsigned int groupSize) {
  const std::wstring& s = text.str();
  size_t lead = 0, trail = 0;
  BlankMargins(s, lead, trail);
  CString number(s.substr(lead, s.size() - lead - trail));
  InsertComma(number, groupSize);
  text = CString(s.substr(0, lead) + number.str() + s.substr(s.size() - trail));
}

// ---------------------------------------------------------------------------
// Fractions of a 32nd
// ---------------------------------------------------------------------------

void GetNotationFmt(wchar_t* out, double value, int denominator) {
  if (!out) return;
  if (std::fabs(value) < kZeroThreshold) value = 0;
  if (!IsPrintable(value)) {
    std::wcscpy(out, kNotAvailable);
    return;
  }
  // Units of the finest step: 1/64, 1/128, a tenth of a 32nd, or a 32nd.
  const int units = denominator == 64 || denominator == 128 ? denominator : (denominator == 10 ? 320 : 32);
  const double magnitude = std::fabs(value);
  std::uint64_t whole = static_cast<std::uint64_t>(magnitude);
  std::uint64_t steps = static_cast<std::uint64_t>(std::round((magnitude - static_cast<double>(whole)) * units));
  if (steps >= static_cast<std::uint64_t>(units)) {
    steps = 0;
    ++whole;
  }
  int k = 0;
  if (value < 0 && (whole != 0 || steps != 0)) out[k++] = L'-';
  k += WriteUnsigned(out + k, whole, false);
  out[k++] = L'`';
  if (units == 64 || units == 128) {
    // Whole 32nds and the truncated tenth of the remainder: "%d`%03.0f".
    const std::uint64_t per32 = static_cast<std::uint64_t>(units) / 32;
    const std::uint64_t tenth = (steps % per32) * 10 / per32;
    k += WriteZeroPadded(out + k, (steps / per32) * 10 + tenth, 3);
  } else if (units == 320) {
    // "%d`%s.%s": 32nds and the tenth digit.
    k += WriteZeroPadded(out + k, steps / 10, 2);
    out[k++] = L'.';
    k += WriteZeroPadded(out + k, steps % 10, 1);
  } else {
    // "%d`%02d".
    k += WriteZeroPadded(out + k, steps, 2);
  }
  out[k] = L'\0';
}

// ---------------------------------------------------------------------------
// Reading formatted prices back
// ---------------------------------------------------------------------------

double GetPriceValueOfFormat(CString text, int code) {
  text.Trim();
  text.Remove(L',');
  const std::wstring& s = text.str();
  const size_t tick = s.find(L'`');
  double value = 0;
  if (tick == std::wstring::npos) return ReadDecimal(s, value) ? value : kPacketEmptyValue;
  if (code < 65) return kPacketEmptyValue;

  const std::wstring wholeText = s.substr(0, tick);
  const std::wstring field = s.substr(tick + 1);
  double whole = 0;
  if (wholeText.find(L'.') != std::wstring::npos || !ReadDecimal(wholeText, whole)) return kPacketEmptyValue;
  const bool negative = std::signbit(whole);
  const double magnitude = std::fabs(whole);
  if (code > 75) {
    double thirtySeconds = 0;
    if (!ReadNotationField(field, code, thirtySeconds)) return kPacketEmptyValue;
    const double v = magnitude + thirtySeconds / 32.0;
    return negative ? -v : v;
  }
  double numerator = 0;
  bool signedField = false;
  if (!ReadNumerator(field, numerator, signedField)) return kPacketEmptyValue;
  const double denominator = GetDecimalScaleFromFloat(code);
  // One rounding only while whole × denominator is exact, so a tenth reads as
  // the nearest double of the decimal. Beyond 2^53 that product itself would
  // round (losing the fraction the text shows), so the fraction is added on.
  const bool exact = magnitude * denominator + std::fabs(numerator) < 9007199254740992.0;
  if (signedField) return exact ? (whole * denominator + numerator) / denominator : whole + numerator / denominator;
  const double v = exact ? (magnitude * denominator + numerator) / denominator : magnitude + numerator / denominator;
  return negative ? -v : v;
}

// ---------------------------------------------------------------------------
// Helpers around a format
// ---------------------------------------------------------------------------

CString GetAutoYPacketStringOfFormat(double value, int code) {
  CString text = GetYPacketStringOfFormat(value, code, 1);
  if (code >= 1 && code <= 7) RemoveZeroChar(text);
  return text;
}

CString GetDecimalFloatFormat(double value, int decimals, int group, int trimZeros) {
  if (std::fabs(value) < kZeroThreshold) value = 0;
  if (!IsPrintable(value)) return CString(kNotAvailable);
  NumberText number;
  number.PutFixed(value, ClampDecimals(decimals), 0, ShouldGroup(group, value));
  CString text = number.Take();
  if (trimZeros == 1) RemoveZeroChar(text);
  return text;
}

double GetDiffValueOfFloat(double a, double b, int code, int inSteps) {
  if (a == kPacketEmptyValue || b == kPacketEmptyValue || a == kPacketNoMaxValue || b == kPacketNoMaxValue ||
      std::isnan(a) || std::isnan(b)) {
    return kPacketEmptyValue;
  }
  const double denominator = StepDenominator(code);
  const double steps = std::round((a - b) * denominator);
  return inSteps == 1 ? steps : steps / denominator;
}

// ---------------------------------------------------------------------------
// Tick size, point value and numeric helpers
// ---------------------------------------------------------------------------

double GetTickValue(int kind, double price) {
  if (kind == 0) {
    if (price < 1000) return 1;
    if (price < 5000) return 5;
    if (price < 10000) return 10;
    if (price < 50000) return 50;
    if (price < 100000) return 100;
    if (price < 500000) return 500;
    return 1000;
  }
  if (kind == 1) {
    if (price < 1000) return 1;
    if (price < 5000) return 5;
    if (price < 10000) return 10;
    if (price < 50000) return 50;
    return 100;
  }
  return 0;
}

double GetMarketPointValue(int market) {
  switch (market) {
    case 14: case 16: case 44: case 124: return 500000;
    case 15: case 25: return 10;
    case 26: case 34: case 134: return 500;
    case 1007: return 10000;
    default: return 1;
  }
}

int CompareFloat(double a, double b, double tolerance) {
  if (b - tolerance < a && a < b + tolerance) return 0;
  return a > b ? 1 : -1;
}

double GetDepressedValue(double value, int power) {
  if (power == 0 || value == kPacketEmptyValue) return value;
  if (power > 0) return value / PowerOfTen(power);
  return value * PowerOfTen(-static_cast<std::int64_t>(power));
}

// ---------------------------------------------------------------------------
// Padding helpers
// ---------------------------------------------------------------------------

int AddChar(CString& text, int position, const wchar_t* insert, int count) {
  constexpr size_t kMaxAdded = 65536;
  const size_t piece = insert ? std::wcslen(insert) : 0;
  if (piece == 0 || count < 1) return text.GetLength();
  std::wstring added;
  for (int i = 0; i < count && added.size() + piece <= kMaxAdded; ++i) added.append(insert, piece);
  std::wstring& s = text.str();
  const size_t at = position < 0 ? 0 : std::min(static_cast<size_t>(position), s.size());
  s.insert(at, added);
  return text.GetLength();
}

int AddSpaceChar(CString& text, int width, int onLeft) {
  const int target = std::min(width, kMaxFieldWidth);
  if (target > text.GetLength()) {
    const size_t pad = static_cast<size_t>(target - text.GetLength());
    std::wstring& s = text.str();
    if (onLeft == 1) {
      s.insert(0, pad, L' ');
    } else {
      s.append(pad, L' ');
    }
  }
  return text.GetLength();
}

int AddZeroChar(CString& text, int decimals) {
  std::wstring& s = text.str();
  size_t begin = 0, end = 0, point = 0;
  const int wanted = std::min(decimals, kMaxDecimals);
  if (wanted < 1 || !FindPlainNumber(s, begin, end, point)) return text.GetLength();
  const int have = point == std::wstring::npos ? 0 : static_cast<int>(end - point - 1);
  if (have < wanted) {
    std::wstring zeros = point == std::wstring::npos ? L"." : L"";
    zeros.append(static_cast<size_t>(wanted - have), L'0');
    s.insert(end, zeros);
  }
  return text.GetLength();
}

int RemoveZeroChar(CString& text) {
  std::wstring& s = text.str();
  size_t begin = 0, end = 0, point = 0;
  if (!FindPlainNumber(s, begin, end, point)) return text.GetLength();
  if (point != std::wstring::npos) {
    size_t cut = end;
    while (cut > point + 1 && s[cut - 1] == L'0') --cut;
    if (cut == point + 1) cut = point;
    s.erase(cut, end - cut);
    end = cut;
  }
  const size_t digits = s[begin] == L'-' || s[begin] == L'+' ? begin + 1 : begin;
  if (s.find_first_of(L"0123456789", digits) >= end) {
    s.insert(end, 1, L'0');  // ".000" keeps its value as "0"
    ++end;
  }
  if (s[begin] == L'-' && s.find_first_not_of(L"0,", begin + 1) >= end) s.erase(begin, 1);
  return text.GetLength();
}
