// printf-style formatting with the rules of the Microsoft C runtime's wide
// printf, on every platform.
//
// All text the library formats (CString::Format, AppendFormat, and every
// swprintf-style write into a caller's buffer) goes through this one engine,
// so a value prints the same on Linux and on Windows and the same as the
// original hosts printed it: %s is a wide string, the 0 flag pads strings
// with zeros, %ld is 32 bits, exponents have three digits, and a number lying
// exactly halfway between two results rounds away from zero.
//
//   wchar_t buf[32];
//   chartcore::FormatToBuffer(buf, 32, L"%.2f|%02s", 0.125, L"5");  // "0.13|05"
#ifndef CHARTCORE_PLATFORM_FORMAT_H_
#define CHARTCORE_PLATFORM_FORMAT_H_

#include <cstdarg>
#include <cstddef>
#include <string>

#include "chartcore/platform/types.h"

namespace chartcore {

// ---------------------------------------------------------------------------
// The rules
// ---------------------------------------------------------------------------
// Conversions: d i u o x X c C s S f e E g G a A p n %, flags - + space # 0,
// width and precision as digits or *, and the length modifiers h l ll I I32
// I64 z j t L w (N and F are accepted and ignored). The runtime's details:
// - the 0 flag pads to the width even with a precision ("%08.3d" of 5 gives
//   "00000005"), except for %p; a precision of 0 prints no digit for a zero
//   and no character for %c; there is no limit on the precision;
// - # gives hex a 0x prefix (not for zero), octal a leading 0 (not for a
//   zero printed without digits) and %g a point that always stays;
// - infinities and NaNs print as "1.#INF00", "-1.#INF00", "1.#QNAN0" and
//   "-1.#IND00" (every negative NaN is the indefinite one of x86
//   arithmetic), their decimals padded or rounded character by character at
//   the precision as if they were digits ("%.2f" of an infinity gives
//   "1.#J"); %g without a precision prints "1.#INF" whole;
// - %% prints a percent sign, a % that ends a longer directive ("%5%")
//   prints nothing, and an unknown conversion character prints as it stands
//   ("%y" gives "y");
// - %n writes nothing and stores nothing (its argument is skipped), as in the
//   secure runtime.
// Narrow text (%S, %hs) is read as UTF-8 when the bytes are valid UTF-8 and
// as code page 949 otherwise (plain ASCII is both), so Korean text written by
// either kind of host prints right; a narrow character (%C, %hc) above 0x7F,
// being no character of either on its own, is the code point of its value.

// ---------------------------------------------------------------------------
// Formatting into strings
// ---------------------------------------------------------------------------

// Longest text one call may produce (characters). A format asking for more
// (for example a width of two billion) throws CMemoryException instead of
// trying to allocate it.
constexpr size_t kMaxFormattedLength = size_t{1} << 26;

// FormatWide: the formatted text. A null format gives an empty string.
CHARTCORE_API std::wstring FormatWide(const wchar_t* format, va_list args);

// AppendFormatWide: appends the formatted text to out. The arguments may point
// into out itself (the text is built aside first).
CHARTCORE_API void AppendFormatWide(std::wstring& out, const wchar_t* format, va_list args);

// ---------------------------------------------------------------------------
// Formatting into caller buffers (the library's swprintf / _snwprintf)
// ---------------------------------------------------------------------------

// FormatToBuffer: writes the formatted text and a terminator into buf, which
// holds count characters. Returns the number of characters written (without
// the terminator), or -1 when the text and its terminator do not fit; then
// buf holds the first count-1 characters, terminated. A null buffer, a count
// of 0 or a null format write nothing and return -1.
//
//   wchar_t b[4];
//   FormatToBuffer(b, 4, L"%d", 12345);   // -1, b == L"123"
CHARTCORE_API int FormatToBuffer(wchar_t* buf, size_t count, const wchar_t* format, ...);
CHARTCORE_API int FormatToBufferV(wchar_t* buf, size_t count, const wchar_t* format, va_list args);

// FormatLengthV: the number of characters the format would produce (the
// runtime's _vscwprintf); -1 for a null format.
CHARTCORE_API int FormatLengthV(const wchar_t* format, va_list args);

}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_FORMAT_H_
