// Fuzz target for price texts: the formatter of format codes against the
// parser that reads its texts back. Input: a double (8 bytes), a format code
// (a signed byte, so whole numbers, decimals, fractions and the 32nd codes
// all occur), a group flag, then a text in UTF-16LE.
//
// Checked: a formatted value parses to a value that formats to the same text
// ("N/A" parses to the empty value); the parsed value of any text, formatted
// and parsed again, is stable; the other formatters and the grouping helpers
// stay within their documented sizes.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <vector>

#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"

namespace {

[[noreturn]] void Fault() { std::abort(); }

constexpr double kEmpty = chartcore::kPacketEmptyValue;

// Texts are compared as a reader sees them:
// - Grouping is decided by the value, not by the text: 999.999 with two
//   decimals prints "1000.00" ungrouped, and the 1000 read back from it
//   prints grouped. Separators go.
// - A small negative value or fraction prints as a negative zero ("-0.00"
//   for -0.003, "-100`-0" for -100.00002 in halves), which reads back as zero
//   and prints without the sign. Signs of zeros go.
// - The numerator of a fraction is rounded on its own, so it can reach the
//   denominator: 100.755 in halves prints "100`2", which stands for 101 and
//   reads back as 101, printing "101`0". Such a numerator is carried.
CString Canonical(CString text, int code) {
  text.Remove(L',');
  const int tick = text.Find(L'`');
  if (tick < 0 || code < 65 || code > 75) {
    if (text.GetLength() > 1 && text[0] == L'-' && text.FindOneOf(L"123456789") < 0) text.Delete(0);
    return text;
  }
  long long whole = std::wcstoll(text.Left(tick).GetString(), nullptr, 10);
  // Code 75 pads every numerator below 10 with a "0", negative ones too
  // ("-1`0-32"), and 9.6 32nds print as "010".
  CString field = text.Mid(tick + 1);
  if (field.GetLength() > 1 && field[0] == L'0' && field[1] == L'-') field.Delete(0);
  long long numerator = std::wcstoll(field.GetString(), nullptr, 10);
  const long long denominator = GetDecimalScaleFromFloat(code);
  if (numerator == denominator || numerator == -denominator) {
    whole += numerator > 0 ? 1 : -1;
    numerator = 0;
  }
  CString out;
  out.Format(L"%lld`%lld", whole, numerator);
  return out;
}

// Format, parse, format again: the same text.
void CheckRoundTrip(double value, int code, int group) {
  const CString text = GetYPacketStringOfFormat(value, code, group);
  const double back = GetPriceValueOfFormat(text, code);
  if (text == L"N/A") {
    if (back != kEmpty) Fault();
    return;
  }
  if (back == kEmpty || std::isnan(back)) Fault();
  const CString again = GetYPacketStringOfFormat(back, code, group);
  if (Canonical(again, code) != Canonical(text, code)) Fault();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 10) return 0;
  double value;
  std::memcpy(&value, data, sizeof value);
  const int code = static_cast<signed char>(data[8]);
  const int group = data[9] & 1;
  std::vector<wchar_t> units;
  for (std::size_t i = 10; i + 1 < size; i += 2) units.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
  const CString text(units.data(), static_cast<int>(units.size()));

  CheckRoundTrip(value, code, group);
  // A price a user typed: whatever it reads as must format stably.
  const double typed = GetPriceValueOfFormat(text, code);
  if (std::isnan(typed)) Fault();
  if (typed != kEmpty) CheckRoundTrip(typed, code, group);

  // The fixed-size writers stay inside their buffers (the sanitizer sees the
  // exact sizes) and terminate.
  std::vector<wchar_t> notation(chartcore::kNotationBufferSize);
  GetNotationFmt(notation.data(), value, code);
  if (std::wmemchr(notation.data(), L'\0', notation.size()) == nullptr) Fault();
  std::vector<wchar_t> format(chartcore::kFloatFormatBufferSize);
  MakeFloatFormatData(format.data(), value);
  MakeFloatFormatData(format.data(), code * 37, code);
  if (std::wmemchr(format.data(), L'\0', format.size()) == nullptr) Fault();

  // Field widths and decimals are capped, so no argument makes a huge text.
  const int width = static_cast<int>(static_cast<std::int16_t>(data[9] | (data[8] << 8)));
  if (GetYPacketStringOfFormat(value, width, code, group).GetLength() > 3 * chartcore::kMaxFieldWidth) Fault();
  if (GetYPacketStringOfFormat(value, static_cast<double>(width) / 64.0, group).GetLength() >
      3 * chartcore::kMaxFieldWidth) {
    Fault();
  }
  GetDecimalFloatFormat(value, code, group, data[9] >> 7);
  GetAutoYPacketStringOfFormat(value, code);

  // Grouping helpers on any text: regrouping a grouped text changes nothing.
  CString grouped = text;
  InsertComma(grouped, 3);
  CString regrouped = grouped;
  InsertComma(regrouped, 3);
  if (regrouped != grouped) Fault();
  CString padded = text;
  InsertCommaWithSpace(padded, static_cast<unsigned>(data[9] & 7));
  CString trimmed = text;
  RemoveZeroChar(trimmed);
  AddZeroChar(trimmed, code);
  return 0;
}
