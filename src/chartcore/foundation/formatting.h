// Value and price formatting: how packet values and bar dates become text.
//
// A packet's y format is an int "format code": 1-7 show that many decimals,
// 0 and below and 8-64 whole numbers, 65-75 binary (or tenth) fractions written
// whole`numerator ("101`16" is 101 16/32), 76 and 77 32nds with a fraction of
// a 32nd, 78 and above 32nds with a tenth. Numbers come out exactly as the
// framework's Format prints them (exact decimal digits of the double, exact
// ties away from zero) but without going through printf on the hot path.
// Values that are no data (the empty value, the no-maximum value, NaN,
// magnitudes above 1e18) print "N/A". The date and time strings of a bar's
// x value live here too, since they are built on the same number printing.
//
//   GetYPacketStringOfFormat(1234.5, 1, 1);        // "1,234.5"
//   GetYPacketStringOfFormat(101.15625, 75, 0);    // "101`05"
//   GetPriceValueOfFormat(L"101`05", 75);          // 101.15625
//   GetXPacketDateString(20240115093000.0, 0);     // "2024/01/15093000"
//   GetXPacketTimeString(20240115093000.0, 0);     // "09:30:00"
#ifndef CHARTCORE_FOUNDATION_FORMATTING_H_
#define CHARTCORE_FOUNDATION_FORMATTING_H_

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/export.h"

namespace chartcore {

// Room that the wchar_t* writers below need, terminator included.
constexpr int kFloatFormatBufferSize = 16;  // MakeFloatFormatData
constexpr int kNotationBufferSize = 32;     // GetNotationFmt
// Field widths are capped here and decimals there, so that no argument can
// ask for a text of gigabytes.
constexpr int kMaxFieldWidth = 1024;
constexpr int kMaxDecimals = 100;
// The largest magnitude that prints; anything above is "N/A".
constexpr double kMaxPrintableValue = 1e18;

}  // namespace chartcore

// ---------------------------------------------------------------------------
// Date and time strings of an x value
// ---------------------------------------------------------------------------
// Separator modes: 1 gives "-" for both; 2 gives ":" in dates and "/" in
// times (the defaults swapped, as the screens expect); anything else "/" in
// dates and ":" in times. A value of more than fourteen integer digits is cut
// to its first fourteen digits first (finer than seconds).

// GetXPacketDateString: YYYY/MM/DD for a date; a date-time value keeps its
// time digits after the day (20240115093000 gives "2024/01/15093000"). Values
// below 1e7 come back as their plain rounded digits ("-1000", "1234567"), at
// any magnitude. "N/A" for the empty value and for NaN or infinities.
CHARTCORE_API CString GetXPacketDateString(double value, int separatorMode);

// GetXPacketTimeString: hh:mm:ss of a date-time value or of a packed time
// (153000 gives "15:30:00"). The separators go after the second and fourth
// character as they stand, so a five-digit time is not padded: 93000 gives
// "93:00:0". Values below 10000 come back as plain digits. "N/A" for the empty
// value, for exactly -1e37, for everything below -1e20, and for NaN or
// infinities.
CHARTCORE_API CString GetXPacketTimeString(double value, int separatorMode);

// ---------------------------------------------------------------------------
// Values of a format code
// ---------------------------------------------------------------------------

// GetYPacketStringOfFormat: the text of a value under a format code. Values
// below 1e-8 in magnitude print as 0. With group 1 (exactly) and a value of at
// least 1000 in magnitude the integer digits are grouped by thousands; the
// test looks at the value, not the text, so 999.999 with code 2 is "1000.00".
// Codes 65-75 print the whole part, a back-quote and the rounded numerator,
// signs included ("-101`-1" for -101.5 with code 65); code 75 pads numerators
// below 10 with one "0" ("101`05"; 9.6 32nds give "101`010"). Codes above 75
// are written by GetNotationFmt and never grouped.
CHARTCORE_API CString GetYPacketStringOfFormat(double value, int code, int group);

// GetYPacketStringOfFormat: the value printed in a field of `width` with
// `decimals` decimals ("%10.2f"); with 0 (or negative) decimals as a plain
// whole number without a field. The empty value (or NaN, infinity) gives "N/A"
// padded to the field, plus decimals + 1 more blanks when decimals > 0, so it
// lines up with the numbers; a width below 1 gives "N/A". No 1e18 limit here.
CHARTCORE_API CString GetYPacketStringOfFormat(double value, int width, int decimals, int group);

// GetYPacketStringOfFormat: the value printed for a scale (the price step):
// a scale of 65 or more is taken as a format code; 0 and 1 print whole
// numbers; 0.01 prints two decimals; a scale above 1 becomes a field width
// ("%10.f" for 10). Values below one step in magnitude print as 0.
CHARTCORE_API CString GetYPacketStringOfFormat(double value, double scale, int group);

// MakeFloatFormatData: writes the printf format of a scale: above 1 a field
// width ("%10.f"), 0 or 1 (or NaN) "%.f", otherwise as many decimals as 1/scale
// has integer digits beyond the first ("%.2f" for 0.01, "%.1f" for 0.5 and
// 0.25). Writes at most kFloatFormatBufferSize characters.
CHARTCORE_API void MakeFloatFormatData(wchar_t* out, double scale);

// MakeFloatFormatData: "%<width>.<decimals>f" when width >= 1 and decimals > 0,
// else "%.f". Width is capped at kMaxFieldWidth, decimals at kMaxDecimals.
CHARTCORE_API void MakeFloatFormatData(wchar_t* out, int width, int decimals);

// GetDecimalScaleFromFloat: the denominator of a code: 2, 4, 8, 16, 32, 64,
// 128 for 65, 66, 67, 68, 75, 76, 77 and 10 for every other code.
CHARTCORE_API int GetDecimalScaleFromFloat(int code);

// ---------------------------------------------------------------------------
// Thousands grouping
// ---------------------------------------------------------------------------

// InsertComma: groups the integer part of a number text in place by groupSize
// digits: commas already present are removed and blanks trimmed first, the
// part from "." on is kept aside. In a text with a leading sign a separator
// goes only where position + groupSize >= 5, so none follows the sign
// directly: "-1234567.5" gives "-1,234,567.5", "+123" stays. A group size of 0
// only removes the old commas; a text without an integer part (".5") is left
// as it is after that.
CHARTCORE_API void InsertComma(CString& text, unsigned int groupSize);

// InsertCommaWithSpace: as InsertComma, but the blanks padding the text on
// either side (fixed-width fields) are put back unchanged around the number:
// "   1234.50" gives "   1,234.50".
CHARTCORE_API void InsertCommaWithSpace(CString& text, unsigned int groupSize);

// ---------------------------------------------------------------------------
// Fractions of a 32nd
// ---------------------------------------------------------------------------

// GetNotationFmt: writes a bond or futures price in 32nds as the exchanges
// quote it, sign first ("-134`012"):
//  - 64 and 128: whole`ddf: two digits of whole 32nds and a third digit for
//    the fraction of a 32nd, truncated: 0, 2 (a quarter), 5 (a half) or 7
//    (three quarters). The price is rounded to the nearest 64th or 128th
//    first: 134 + 1.25/32 gives "134`012", 134 + 16.5/32 "134`165".
//  - 10: whole`dd.t: 32nds and tenths of a 32nd, rounded to the nearest tenth
//    (134 + 16.3/32 gives "134`16.3", 134.5 "134`16.0").
//  - anything else: whole`dd, rounded to the nearest 32nd ("134`16").
// A 32nd count that rounds up to 32 carries into the whole part. Values that
// do not print give "N/A". Writes at most kNotationBufferSize characters.
CHARTCORE_API void GetNotationFmt(wchar_t* out, double value, int denominator);

// ---------------------------------------------------------------------------
// Reading formatted prices back
// ---------------------------------------------------------------------------

// GetPriceValueOfFormat: the value a text of GetYPacketStringOfFormat shows,
// for the same code: every text the formatter writes, grouped or padded or
// not, reads back to the value it stands for ("1,234.57" gives 1234.57,
// "101`16" with code 75 gives 101.5, "-101`-1" with code 65 -101.5,
// "134`012" with code 77 134.0390625). Typed input is read too: a fraction
// without its own sign takes the sign of the whole part ("-101`1" is -101.5),
// and a decimal text is accepted under a fraction code. "N/A", an empty text
// or anything else that is not a number gives the empty value.
CHARTCORE_API double GetPriceValueOfFormat(CString text, int code);

// ---------------------------------------------------------------------------
// Helpers around a format
// ---------------------------------------------------------------------------

// GetAutoYPacketStringOfFormat: the grouped text of the code with only as
// many decimals as the value needs (trailing zeros dropped): 1234.50 with
// code 2 gives "1,234.5", 12.00 gives "12". Fraction codes print as
// GetYPacketStringOfFormat(value, code, 1).
CHARTCORE_API CString GetAutoYPacketStringOfFormat(double value, int code);

// GetDecimalFloatFormat: the value with `decimals` decimals (0 to
// kMaxDecimals), grouped when group is 1 and the value is 1000 or more in
// magnitude, trailing decimal zeros dropped when trimZeros is 1. Values below
// 1e-8 print as 0; values that do not print give "N/A".
//   GetDecimalFloatFormat(1234.5, 3, 1, 0) == "1,234.500"
//   GetDecimalFloatFormat(1234.5, 3, 0, 1) == "1234.5"
CHARTCORE_API CString GetDecimalFloatFormat(double value, int decimals, int group, int trimZeros);

// GetDiffValueOfFloat: a - b rounded to the smallest step the code shows
// (10^-code for 1-7; 1/2 ... 1/32 for 65-68 and 75; 1/10 for 69-74; 1/64 and
// 1/128 for 76 and 77; 1/320 for 78 and above; 1 otherwise), free of binary
// noise: 0.3 - 0.1 with code 2 gives 0.2 exactly as 0.2 reads. With inSteps 1
// the result is the number of steps instead (0.25 with code 2 gives 25).
// An empty, no-maximum or NaN operand gives the empty value.
CHARTCORE_API double GetDiffValueOfFloat(double a, double b, int code, int inSteps);

// ---------------------------------------------------------------------------
// Tick size, point value and numeric helpers
// ---------------------------------------------------------------------------

// GetTickValue: the share price tick for a price. Kind 0: below 1,000 1,
// 5,000 5, 10,000 10, 50,000 50, 100,000 100, 500,000 500, else 1,000.
// Kind 1: the same up to 50,000, else 100. Bounds are strict (49,999 ticks
// 50, 50,000 ticks 100). Any other kind gives 0.
CHARTCORE_API double GetTickValue(int kind, double price);

// GetMarketPointValue: the money value of one point of a market's price:
// 500,000 for 14, 16, 44, 124; 10 for 15, 25; 500 for 26, 34, 134; 10,000 for
// 1007; 1 for every other market.
CHARTCORE_API double GetMarketPointValue(int market);

// CompareFloat: 0 when a lies strictly within tolerance of b, else 1 if a > b
// and -1 otherwise: CompareFloat(1.0, 1.05, 0.05) is -1.
CHARTCORE_API int CompareFloat(double a, double b, double tolerance);

// GetDepressedValue: value / 10^power for power > 0, value * 10^-power for
// power < 0; power 0 and the empty value come back unchanged.
CHARTCORE_API double GetDepressedValue(double value, int power);

// ---------------------------------------------------------------------------
// Padding helpers
// ---------------------------------------------------------------------------
// Each edits the text in place and returns its new length.

// AddChar: inserts `insert` `count` times at position (clamped to the text:
// below 0 inserts at the front, past the end appends). A null or empty insert
// or a count below 1 changes nothing; at most 65,536 characters are added.
CHARTCORE_API int AddChar(CString& text, int position, const wchar_t* insert, int count);

// AddSpaceChar: pads the text with blanks to `width` characters, on the left
// (right-aligning it) when onLeft is 1, else on the right. Wider texts stay;
// widths are capped at kMaxFieldWidth.
CHARTCORE_API int AddSpaceChar(CString& text, int width, int onLeft);

// AddZeroChar: makes a number text show at least `decimals` decimals by
// adding zeros (and a point): "12" with 2 gives "12.00", "1,234.5" gives
// "1,234.50". Blanks around the number stay; texts that are not a plain
// number ("N/A", "101`16") are left unchanged. Decimals are capped at
// kMaxDecimals.
CHARTCORE_API int AddZeroChar(CString& text, int decimals);

// RemoveZeroChar: drops trailing zeros of the decimals and a point left bare:
// "12.500" gives "12.5", "12.000" gives "12", "1200" stays. A negative zero
// left behind ("-0.00") becomes "0". Texts that are not a plain number stay.
CHARTCORE_API int RemoveZeroChar(CString& text);

#endif  // CHARTCORE_FOUNDATION_FORMATTING_H_
