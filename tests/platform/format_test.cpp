#include "chartcore/platform/format.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/exceptions.h"

namespace {

CString F(const wchar_t* format, ...) {
  va_list args;
  va_start(args, format);
  CString s;
  s.FormatV(format, args);
  va_end(args);
  return s;
}

double FromBits(std::uint64_t b) {
  double v;
  std::memcpy(&v, &b, sizeof v);
  return v;
}

// Exact reference for "%.Nf" of n / 2^k: the value times 10^N is computed
// in integers and rounded half away from zero.
std::wstring ReferenceFixed(std::int64_t n, int k, int decimals) {
  std::uint64_t scaled = static_cast<std::uint64_t>(n < 0 ? -n : n);
  for (int i = 0; i < decimals; ++i) scaled *= 10;
  const std::uint64_t den = std::uint64_t{1} << k;
  const std::uint64_t rounded = scaled / den + ((scaled % den) * 2 >= den ? 1 : 0);
  std::string digits = std::to_string(rounded);
  const size_t d = static_cast<size_t>(decimals);
  if (digits.size() <= d) digits.insert(0, d + 1 - digits.size(), '0');
  if (d > 0) digits.insert(digits.size() - d, ".");
  const std::string s = (n < 0 ? "-" : "") + digits;
  return std::wstring(s.begin(), s.end());
}

}  // namespace

TEST(FormatStrings, WideNarrowAndZeroPadding) {
  // In a wide format %s is wide, %S and %hs narrow, %ls wide.
  EXPECT_EQ(F(L"%s|%S|%hs|%ls", L"w", "n", "h", L"l"), L"w|n|h|l");
  // The 0 flag pads strings with zeros; the date-join idiom relies on it.
  EXPECT_EQ(F(L"%02s", L"5"), L"05");
  EXPECT_EQ(F(L"%4s%02s%02s", L"2024", L"1", L"5"), L"20240105");
  EXPECT_EQ(F(L"%02s%02s%02s", L"9", L"7", L"30"), L"090730");
  // - beats 0; precision cuts; width applies after the cut.
  EXPECT_EQ(F(L"[%-05s]", L"ab"), L"[ab   ]");
  EXPECT_EQ(F(L"[%5.2s]", L"abcd"), L"[   ab]");
  EXPECT_EQ(F(L"[%05.2s]", L"abcd"), L"[000ab]");
  EXPECT_EQ(F(L"[%*s][%-*s]", 4, L"x", 3, L"y"), L"[   x][y  ]");
  EXPECT_EQ(F(L"[%*s]", -3, L"x"), L"[x  ]");  // negative * width means left
  EXPECT_EQ(F(L"[%.*s]", -1, L"abc"), L"[abc]");  // negative * precision is none
  EXPECT_EQ(F(L"%s|%.3S", static_cast<const wchar_t*>(nullptr), static_cast<const char*>(nullptr)), L"(null)|(nu");
  // Narrow text: UTF-8 when valid, else code page 949; precision counts characters.
  EXPECT_EQ(F(L"%S", "\xED\x95\x9C\xEA\xB8\x80"), L"\xD55C\xAE00");
  EXPECT_EQ(F(L"%S", "\xC7\xD1\xB1\xDB"), L"\xD55C\xAE00");
  EXPECT_EQ(F(L"%.1S|%.1S", "\xED\x95\x9C\xEA\xB8\x80", "\xC7\xD1\xB1\xDB"), L"\xD55C|\xD55C");
  // Characters: %c wide, %C and %hc narrow, %lc wide; a lone high byte prints nothing.
  EXPECT_EQ(F(L"%c%C%hc%lc%3c", L'\xD55C', 'a', 'b', L'c', L'd'), L"\xD55C" L"abc  d");
  EXPECT_EQ(F(L"[%3C]", 0xB0), L"[  \xB0]");  // a lone high byte is the code point of its value
  EXPECT_EQ(F(L"%c", 0).GetLength(), 1);  // a NUL character is still written
  EXPECT_EQ(F(L"[%.0c][%3.c][%03.0C][%.5c]", L'a', L'b', 'c', L'd'), L"[][   ][000][d]");  // precision 0: no character
  // %% and unknown conversions print the character; a % closing a longer
  // directive and a trailing % print nothing.
  EXPECT_EQ(F(L"100%% %y %5% %-.2l% %Iq %5y end%"), L"100% y   Iq y end");
  // %n is refused: nothing printed, nothing stored, its argument skipped.
  int stored = 77;
  EXPECT_EQ(F(L"a%nb%d", &stored, 5), L"ab5");
  EXPECT_EQ(stored, 77);
}

TEST(FormatIntegers, SizesFlagsAndPrecision) {
  EXPECT_EQ(F(L"%d|%i|%u|%o|%x|%X", -12, 34, 4000000000u, 8, 255, 255), L"-12|34|4000000000|10|ff|FF");
  // l is 32 bits as Windows long; ll, I64 and j are 64; h narrows to 16.
  EXPECT_EQ(F(L"%ld|%lu|%lx", -1, 0xFFFFFFFFu, 0xDEADBEEFu), L"-1|4294967295|deadbeef");
  EXPECT_EQ(F(L"%lld|%I64d|%I64u|%jd", -9000000000LL, 9000000000LL, 18446744073709551615ULL,
              static_cast<std::intmax_t>(-1)),
            L"-9000000000|9000000000|18446744073709551615|-1");
  EXPECT_EQ(F(L"%I32d|%hd|%hu|%hx", -7, 70000, 70000, -1), L"-7|4464|4464|ffff");  // 70000 mod 65536 = 4464
  EXPECT_EQ(F(L"%Id|%zu|%td", static_cast<std::intptr_t>(-3000000000LL), static_cast<size_t>(3000000000u),
              static_cast<std::ptrdiff_t>(-5)),
            L"-3000000000|3000000000|-5");
  EXPECT_EQ(F(L"%d|%d", INT_MIN, INT_MAX), L"-2147483648|2147483647");
  EXPECT_EQ(F(L"%lld", LLONG_MIN), L"-9223372036854775808");
  // Flags: + and space on signed only, # gives 0x (not for zero) and a leading octal 0.
  EXPECT_EQ(F(L"%+d|% d|%+u|%#x|%#X|%#x|%#o|%#o", 5, 5, 5u, 255, 255, 0, 8, 0), L"+5| 5|5|0xff|0XFF|0|010|0");
  // Width, zero padding after the sign, precision as minimum digits; unlike C
  // the 0 flag still pads to the width when a precision is given.
  EXPECT_EQ(F(L"[%5d][%-5d][%05d][%05.3d][%.0d][%.3d][%8.3d][%-08.3d]", -42, -42, -42, -42, 0, 7, 5, 5),
            L"[  -42][-42  ][-0042][-0042][][007][     005][005     ]");
  EXPECT_EQ(F(L"[%5.0d][%+.0d][%#.0o][%#.3o][%#5o]", 0, 0, 0, 8, 8), L"[     ][+][][010][  010]");
  EXPECT_EQ(F(L"%.1000x", 255).Right(3), L"0ff");  // no cap on the precision
  EXPECT_EQ(F(L"[%#06x][%*d][%0*d]", 10, 4, 1, 3, 7), L"[0x000a][   1][007]");
  // %p: pointer-sized, upper case, zero-filled digits, blank padding only.
  const std::wstring p = F(L"%p", reinterpret_cast<void*>(0xAB)).GetString();
  EXPECT_EQ(p.size(), 2 * sizeof(void*));
  EXPECT_EQ(p.substr(p.size() - 3), L"0AB");
  EXPECT_EQ(F(L"%020p", reinterpret_cast<void*>(1)).Left(static_cast<int>(20 - 2 * sizeof(void*))),
            CString(L' ', static_cast<int>(20 - 2 * sizeof(void*))));
}

TEST(FormatFloats, ExactTiesRoundAwayFromZero) {
  EXPECT_EQ(F(L"%.f|%.f|%.f|%.f|%.f", 0.5, 1.5, 2.5, -2.5, 1234.5), L"1|2|3|-3|1235");
  EXPECT_EQ(F(L"%.lf|%.0f", 2.5, 3.5), L"3|4");  // %.lf is %f with precision 0
  EXPECT_EQ(F(L"%.2f|%.2f|%.1f", 0.125, -0.125, 0.25), L"0.13|-0.13|0.3");
  EXPECT_EQ(F(L"%.f|%.2f|%f", -0.125, -0.0, -0.0), L"-0|-0.00|-0.000000");
  // Not ties: the stored binary value decides (2.675 is 2.67499999...).
  EXPECT_EQ(F(L"%.2f|%.1f|%.2f", 2.675, 0.35, 1.005), L"2.67|0.3|1.00");
  // Carries through nines and into a new leading digit.
  EXPECT_EQ(F(L"%.1f|%.f|%.2f", 9.95, 9.5, 99.995), L"9.9|10|100.00");  // 9.95 lies below, 99.995 above
  EXPECT_EQ(F(L"%.1f|%.f", 9.75, 99.5), L"9.8|100");
  // Big and tiny values print exact digits, never a fallback to %e.
  EXPECT_EQ(F(L"%.0f", 1e22), L"10000000000000000000000");
  EXPECT_EQ(F(L"%.2f", 1e23), L"99999999999999991611392.00");
  const std::wstring big = F(L"%.2f", 1e300).GetString();
  EXPECT_EQ(big.size(), 304u);  // 301 integer digits, point, 2 decimals
  EXPECT_EQ(big.substr(0, 17), L"10000000000000000");
  EXPECT_EQ(F(L"%.3f|%.20f", 1e-300, 0.1), L"0.000|0.10000000000000000555");
  EXPECT_EQ(F(L"%f|%.3f", 5e-324, 0.0005), L"0.000000|0.001");  // 0.0005 is stored as 0.000500000000000000010...
  // Flags and width with floats.
  EXPECT_EQ(F(L"[%08.2f][%-8.2f][%+.1f][% .1f][%#.0f][%8.3f]", -1.5, 1.5, 2.0, 2.0, 3.0, 3.14159),
            L"[-0001.50][1.50    ][+2.0][ 2.0][3.][   3.142]");
  // L reads a long double.
  EXPECT_EQ(F(L"%.1Lf", static_cast<long double>(2.25)), L"2.3");
}

TEST(FormatFloats, RandomTiesMatchExactReference) {
  // Values n / 2^k with k = decimals + 1 are exact ties at that precision; values
  // with other k are not. Both must match the integer reference.
  std::mt19937_64 rng(12345);
  for (int i = 0; i < 4000; ++i) {
    const int k = static_cast<int>(rng() % 12) + 1;
    const int decimals = static_cast<int>(rng() % 12);
    const std::int64_t n = static_cast<std::int64_t>(rng() % 2000001) - 1000000;
    const double v = std::ldexp(static_cast<double>(n), -k);
    wchar_t format[16];
    chartcore::FormatToBuffer(format, 16, L"%%.%df", decimals);
    ASSERT_EQ(std::wstring(F(format, v).GetString()), ReferenceFixed(n, k, decimals))
        << "n=" << n << " k=" << k << " decimals=" << decimals;
  }
}

TEST(FormatFloats, ExponentAndGeneralForms) {
  // Exponents have at least three digits.
  EXPECT_EQ(F(L"%e|%E|%.2e|%.0e|%#.0e", 100000.0, 1.5e-10, -12345.678, 25.0, 3.0),
            L"1.000000e+005|1.500000E-010|-1.23e+004|3e+001|3.e+000");  // 25 is a tie: 3e+001
  EXPECT_EQ(F(L"%e|%.3e", 0.0, 1e308), L"0.000000e+000|1.000e+308");
  EXPECT_EQ(F(L"%.2e", 9.995e-7), L"9.99e-007");  // stored below the tie
  EXPECT_EQ(F(L"%.1e", 9.96), L"1.0e+001");       // carry moves the exponent
  // %g picks the shorter form and drops trailing zeros unless #.
  EXPECT_EQ(F(L"%g|%g|%g|%g|%G", 100000.0, 1000000.0, 0.0001, 0.00001, 1e-20),
            L"100000|1e+006|0.0001|1e-005|1E-020");
  EXPECT_EQ(F(L"%g|%.3g|%#g|%.0g|%g|%#g", 2.5, 3.14159, 1.0, 2.5, 0.0, 0.0), L"2.5|3.14|1.00000|3|0|0.00000");
  EXPECT_EQ(F(L"%#.0g|%#.1g|%#.2g", 1.0, 1.0, 1.0), L"1.|1.|1.0");  // # keeps the point in %g
  EXPECT_EQ(F(L"%.2g|%.2g", 0.125, 99.5), L"0.13|1e+002");  // ties away; rounding can switch to e
  // Hexadecimal floating point.
  EXPECT_EQ(F(L"%a|%A|%.1a|%a", 1.0, 3.0, 1.96875, 0.0), L"0x1.0000000000000p+0|0X1.8000000000000P+1|0x2.0p+0|0x0.0000000000000p+0");
  EXPECT_EQ(F(L"%.0a|%a", 1.5, -0.5), L"0x2p+0|-0x1.0000000000000p-1");
}

TEST(FormatFloats, InfinitiesAndNaNsAsTheOldRuntime) {
  const double inf = std::numeric_limits<double>::infinity();
  const double qnan = FromBits(0x7FF8000000000000ULL);
  const double ind = FromBits(0xFFF8000000000000ULL);  // what 0.0/0.0 gives on x86
  const double snan = FromBits(0x7FF0000000000001ULL);
  const double negativePayload = FromBits(0xFFF8000000000001ULL);
  // Every negative NaN is the indefinite one; signalling NaNs print as quiet.
  EXPECT_EQ(F(L"%f|%f|%f|%f|%f|%f", inf, -inf, qnan, ind, snan, negativePayload),
            L"1.#INF00|-1.#INF00|1.#QNAN0|-1.#IND00|1.#QNAN0|-1.#IND00");
  // The pseudo-digits round like digits: "1#I" + 'N' >= '5' gives "1#J".
  EXPECT_EQ(F(L"%.2f|%.0f|%.1f|%.3f|%.4f|%.3f", inf, inf, inf, inf, inf, qnan), L"1.#J|1|1.$|1.#IO|1.#INF|1.#QO");
  EXPECT_EQ(F(L"%e|%.2e|%g|%g|%G", inf, inf, inf, qnan, ind), L"1.#INF00e+000|1.#Je+000|1.#INF|1.#QNAN|-1.#IND");
  // %g counts significant digits of "1#INF"; without a precision (or with 0)
  // it prints the text whole; # keeps zeros but never adds a point.
  EXPECT_EQ(F(L"%.1g|%.3g|%.0g|%.9g|%#.7g|%#.1g", inf, inf, inf, inf, inf, inf), L"1|1.#J|1.#INF|1.#INF|1.#INF00|1");
  EXPECT_EQ(F(L"%#.0f|%#.0e|%.5f", inf, inf, qnan), L"1|1e+000|1.#QNAN");
  EXPECT_EQ(F(L"%a|%.1A|%.0a", inf, qnan, -inf), L"0x1.#INF000000000p+0|0X1.$P+0|-0x1p+0");
  EXPECT_EQ(F(L"[%10f][%-10.2f][%010f][%+f]", inf, -inf, inf, qnan), L"[  1.#INF00][-1.#J     ][001.#INF00][+1.#QNAN0]");
}

TEST(FormatBuffer, TruncationTerminationAndCounting) {
  wchar_t buf[8];
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, L"%d-%s", 42, L"ab"), 5);
  EXPECT_STREQ(buf, L"42-ab");
  // Seven characters and the terminator fill 8 exactly; eight do not fit.
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, L"%07d", 1), 7);
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, L"%08d", 1), -1);
  EXPECT_STREQ(buf, L"0000000");
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 1, L"x"), -1);
  EXPECT_STREQ(buf, L"");
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 0, L"x"), -1);
  EXPECT_EQ(chartcore::FormatToBuffer(nullptr, 8, L"x"), -1);
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, nullptr), -1);
  // A huge width into a small buffer is cut, not allocated.
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, L"%*d", INT_MAX, 1), -1);
  EXPECT_STREQ(buf, L"       ");
}

TEST(FormatCString, FormatAppendAndAliasing) {
  CString s;
  s.Format(L"%d/%s", 7, L"x");
  EXPECT_EQ(s, L"7/x");
  s.AppendFormat(L"+%.1f", 0.25);
  EXPECT_EQ(s, L"7/x+0.3");
  // The argument may be the string being formatted.
  s.Format(L"[%s|%s]", s.GetString(), s.GetString());
  EXPECT_EQ(s, L"[7/x+0.3|7/x+0.3]");
  s.AppendFormat(L"%s", s.GetString());
  EXPECT_EQ(s.GetLength(), 34);
  // A literal-only format and an empty one.
  s.Format(L"plain");
  EXPECT_EQ(s, L"plain");
  s.Format(L"");
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_THROW(s.Format(nullptr), CInvalidArgException);
  // Asking for more than the formatter will build throws instead of allocating.
  EXPECT_THROW(s.Format(L"%*d", INT_MAX, 1), CMemoryException);
  s.Format(L"%d", 3);  // still usable afterwards
  EXPECT_EQ(s, L"3");
  // Long output beyond any fixed buffer.
  s.Format(L"%3000d|%.600f", 1, 1.0);
  EXPECT_EQ(s.GetLength(), 3000 + 1 + 2 + 600);
  // Precision beyond the exact digits of a double pads with zeros.
  s.Format(L"%.1200f|%.900e|%#.1200g", 0.1, 1.0, 0.5);
  EXPECT_EQ(s.Left(22), L"0.10000000000000000555");
  EXPECT_EQ(s.GetLength(), (2 + 1200) + 1 + (2 + 900 + 5) + 1 + (2 + 1200));
  EXPECT_EQ(s.Right(6), L"000000");
}
