#include "chartcore/foundation/formatting.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cwchar>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "chartcore/packets/packet_types.h"

namespace {

using chartcore::kPacketEmptyValue;
using chartcore::kPacketNoMaxValue;

std::wstring W(const CString& s) { return s.str(); }

std::wstring Fmt(double v, int code, int group = 0) { return W(GetYPacketStringOfFormat(v, code, group)); }
std::wstring Field(double v, int width, int decimals, int group = 0) {
  return W(GetYPacketStringOfFormat(v, width, decimals, group));
}
std::wstring Scaled(double v, double scale, int group = 0) { return W(GetYPacketStringOfFormat(v, scale, group)); }

// Rows of a text made and the text expected; a failure names its row.
void ExpectTexts(std::initializer_list<std::pair<std::wstring, std::wstring>> rows) {
  int row = 0;
  for (const auto& [got, expected] : rows) EXPECT_EQ(got, expected) << "row " << row++;
}

struct FmtCase { double value; int code, group; const wchar_t* text; };

void ExpectCodes(std::initializer_list<FmtCase> cases) {
  for (const FmtCase& c : cases) EXPECT_EQ(Fmt(c.value, c.code, c.group), c.text) << c.value << " code " << c.code;
}

// The text of a code (up to 69, 74 and 75) built with the framework's Format
// step by step, as the formatter's fast path must reproduce it.
std::wstring FormatReference(double v, int code, int group) {
  if (std::fabs(v) < 1e-8) v = 0;
  if (v == kPacketEmptyValue || v == kPacketNoMaxValue || !(std::fabs(v) <= 1e18)) return L"N/A";
  CString text;
  wchar_t format[chartcore::kFloatFormatBufferSize];
  MakeFloatFormatData(format, (code >= 1 && code <= 7) ? std::pow(10.0, -code) : 1.0);
  text.Format(format, code >= 65 ? std::trunc(v) : v);
  if (group == 1 && (v >= 1000 || v <= -1000)) InsertCommaWithSpace(text, 3);
  if (code >= 65) {
    const double f = GetDecimalScaleFromFloat(code) * (v - std::trunc(v));
    CString digits;
    digits.Format(L"%.f", f);
    text.AppendFormat(code == 75 && f < 10 ? L"`0%s" : L"`%s", digits.GetString());
  }
  return W(text);
}

// Random values that hit what rounding gets wrong: exact ties at the shown
// decimals (odd multiples of 2^-(d+1)) and their neighbours, and values of any
// magnitude from 1e-9 to 1e18; both signs.
double NextValue(std::mt19937_64& rng, int decimals) {
  const auto unit = [&rng] { return std::ldexp(static_cast<double>(rng() >> 11), -53); };
  const double sign = (rng() & 1) ? -1.0 : 1.0;
  if (rng() % 3 == 0) return sign * std::pow(10.0, -9.0 + 27.0 * unit()) * (1.0 + unit());
  const int bits = std::min(decimals + 1, 30);
  const double odd = static_cast<double>((rng() % (std::uint64_t{1} << (bits - 1))) * 2 + 1);
  const double tie = std::floor(unit() * 1e6) + std::ldexp(odd, -bits);
  return sign * ((rng() & 1) ? tie : std::nextafter(tie, (rng() & 1) ? 1e300 : -1e300));
}

// A formatter text reads back to the value it shows, and printing that value
// again reads back to it once more.
void ExpectReadsBack(double v, int code, int group) {
  const std::wstring text = Fmt(v, code, group);
  const double shown = GetPriceValueOfFormat(text.c_str(), code);
  ASSERT_NE(shown, kPacketEmptyValue) << text << " code " << code;
  const std::wstring again = Fmt(shown, code, group);
  ASSERT_EQ(GetPriceValueOfFormat(again.c_str(), code), shown) << text << " -> " << again;
  if (code >= 65 && code <= 75) {
    // Whole part plus the printed numerator over the denominator.
    const double scale = GetDecimalScaleFromFloat(code), whole = std::trunc(v);
    ASSERT_NEAR(shown, whole + std::round(scale * (v - whole)) / scale, 1e-9 * (1 + std::fabs(v))) << text;
  } else if (shown != 0 && group == 0) {
    // Normalised texts read back to themselves; "-0" reads as 0, which prints
    // unsigned, and -999.6 shows "-1000" ungrouped while -1000 is grouped.
    ASSERT_EQ(again, text) << code;
  }
}

}  // namespace

TEST(FormattingCodes, DecimalsRoundingGroupingAndUnprintableValues) {
  ExpectCodes({
      {1e-9, 2, 0, L"0.00"}, {-1e-9, 0, 0, L"0"},  // below 1e-8 is zero, before the sign is seen
      {1e19, 0, 0, L"N/A"}, {1e18, 0, 0, L"1000000000000000000"}, {-1e18 * 1.0000001, 2, 0, L"N/A"},  // 1e18 prints
      {kPacketNoMaxValue, 2, 0, L"N/A"}, {kPacketEmptyValue, 2, 0, L"N/A"}, {std::nan(""), 2, 0, L"N/A"},
      {2.5, 0, 0, L"3"}, {-2.5, 0, 0, L"-3"}, {0.125, 2, 0, L"0.13"}, {-0.125, 2, 0, L"-0.13"},  // ties: away from 0
      {2.675, 2, 0, L"2.67"}, {-0.001, 2, 0, L"-0.00"},  // stored below 2.675; a rounded zero keeps its sign
      {1.23456789, 7, 0, L"1.2345679"}, {1234.5, 8, 0, L"1235"}, {1234.5, 64, 0, L"1235"},  // 8-64: whole
      {1234.4, -3, 0, L"1234"},                                                                // below 0 too
      // Grouping looks at the value, not the text, and only a flag of exactly 1 groups.
      {1234.5, 1, 1, L"1,234.5"}, {1234.5, 1, 0, L"1234.5"}, {1234.5, 1, 2, L"1234.5"}, {999.9, 1, 1, L"999.9"},
      {999.999, 2, 1, L"1000.00"}, {-1000.0, 0, 1, L"-1,000"}, {-1234567.5, 1, 1, L"-1,234,567.5"},  // rounds to 1000
      {123456789012345678.0, 0, 1, L"123,456,789,012,345,680"}, {1234.5, 65, 1, L"1,234`1"},  // nearest double
  });
}

TEST(FormattingCodes, FractionCodesWriteNumeratorsAsPrinted) {
  ExpectCodes({
      {101.5, 65, 0, L"101`1"}, {101.75, 66, 0, L"101`3"}, {101.875, 67, 0, L"101`7"}, {101.9375, 68, 0, L"101`15"},
      {101.5, 69, 0, L"101`5"}, {101.03125, 75, 0, L"101`01"}, {101.15625, 75, 0, L"101`05"},  // 69-74: tenths
      {101.5, 75, 0, L"101`16"}, {101.3, 75, 0, L"101`010"},  // 9.6 32nds: padded before rounding to 10
      {101.99, 65, 0, L"101`2"},                              // 1.98 halves round to 2, not carried
      {-101.5, 65, 0, L"-101`-1"}, {-101.5, 75, 0, L"-101`0-16"}, {-0.5, 65, 0, L"-0`-1"},  // numerators keep signs
      {0.0, 75, 0, L"0`00"}, {134.0 + 1.25 / 32, 77, 0, L"134`012"},
      {1234.0 + 16.5 / 32, 77, 1, L"1234`165"}, {134.0 + 1.5 / 32, 76, 0, L"134`015"},  // notations: never grouped
      {134.0 + 16.3 / 32, 78, 0, L"134`16.3"}, {134.5, 99, 0, L"134`16.0"},
  });
}

TEST(FormattingCodes, FieldWidthAndScaleOverloads) {
  ExpectTexts({
      {Field(kPacketEmptyValue, 8, 2), L"N/A" + std::wstring(8, L' ')},  // the field plus decimals + 1
      {Field(kPacketEmptyValue, 2, 0), L"N/A"}, {Field(kPacketEmptyValue, 0, 1), L"N/A  "},  // already wider than 2
      {Field(1234.5, 10, 2, 1), L"   1,234.50"}, {Field(-1234.5, 10, 2, 1), L"  -1,234.50"},  // blanks kept, one wider
      {Field(-0.125, 8, 2), L"   -0.13"}, {Field(2.675, 1, 2), L"2.67"},  // ties away from zero; stored below 2.675
      {Field(1234.5, 10, 0), L"1235"}, {Field(1234.5, 10, -2), L"1235"},  // no decimals: "%.f", no field
      {Field(1234.5, 0, 2), L"N/A"},                                      // no field at all
      {Field(kPacketNoMaxValue, 1, 1), L"-1000000015047466219876688855040.0"},
      // A scale: below one step prints 0; 65 and above is a code; above 1 a width.
      {Scaled(0.004, 0.01), L"0.00"}, {Scaled(-0.004, 0.01), L"0.00"}, {Scaled(5.5, 0.5), L"5.5"},
      {Scaled(1234.5678, 0.01, 1), L"1,234.57"}, {Scaled(-0.3333333, 1e-6), L"-0.333333"},
      {Scaled(5.5, 1.0), L"6"}, {Scaled(5.5, 0.0), L"6"}, {Scaled(101.5, 75.0), L"101`16"},
      {Scaled(1234.5, 10.0), L"      1235"}, {Scaled(1234.5, 10.0, 1), L"      1,235"},
      {Scaled(5.0, 10.0), L"         0"}, {Scaled(kPacketEmptyValue, 0.01), L"N/A"},
      {Scaled(kPacketNoMaxValue, 0.01), L"N/A"}, {Scaled(2e18, 0.01), L"N/A"},
  });
  const std::wstring huge = Field(1e300, 5, 2);  // no 1e18 limit here
  EXPECT_EQ(huge.size(), 304u);
  EXPECT_EQ(huge.substr(0, 17), L"10000000000000000");
  EXPECT_EQ(Field(1.5, 1 << 30, 1).size(), static_cast<size_t>(chartcore::kMaxFieldWidth));
}

TEST(FormattingCodes, FloatFormatsOfScalesAndFields) {
  const struct { double scale; const wchar_t* format; } scales[] = {
      {0.01, L"%.2f"}, {0.1, L"%.1f"}, {0.5, L"%.1f"}, {0.25, L"%.1f"}, {0.0000001, L"%.7f"},
      {0.05, L"%.2f"},                                         // 1/0.05 reads back as 20.00: two divisions
      {1.0, L"%.f"}, {0.0, L"%.f"}, {std::nan(""), L"%.f"}, {10.0, L"%10.f"}, {1.5, L"%1.f"},
      {1e12, L"%1024.f"}, {-0.01, L"%.1f"}, {1e-300, L"%.100f"},  // capped field; one division; capped decimals
  };
  wchar_t buf[chartcore::kFloatFormatBufferSize];
  for (const auto& c : scales) {
    MakeFloatFormatData(buf, c.scale);
    EXPECT_STREQ(buf, c.format) << c.scale;
  }
  const struct { int width, decimals; const wchar_t* format; } fields[] = {
      {10, 2, L"%10.2f"}, {0, 2, L"%.f"}, {10, 0, L"%.f"}, {1 << 30, 1 << 30, L"%1024.100f"}};
  for (const auto& c : fields) {
    MakeFloatFormatData(buf, c.width, c.decimals);
    EXPECT_STREQ(buf, c.format);
  }
  const struct { int code, denominator; } codes[] = {
      {-5, 10}, {0, 10}, {8, 10}, {64, 10}, {65, 2}, {66, 4}, {67, 8}, {68, 16},
      {69, 10}, {74, 10}, {75, 32}, {76, 64}, {77, 128}, {78, 10}};
  for (const auto& c : codes) EXPECT_EQ(GetDecimalScaleFromFloat(c.code), c.denominator) << c.code;
}

TEST(FormattingGrouping, SignsDecimalsBlanksAndGroupSizes) {
  const struct { const wchar_t* in; unsigned n; bool space; const wchar_t* out; } cases[] = {
      {L"+123", 3, false, L"+123"}, {L"1234567", 3, false, L"1,234,567"}, {L"-1234567.5", 3, false, L"-1,234,567.5"},
      {L"-123456", 3, false, L"-123,456"},                            // none right after the sign
      {L"1,2,3,4", 3, false, L"1,234"}, {L"  1234  ", 3, false, L"1,234"},  // old commas go first; trimmed
      {L"1234.5678", 3, false, L"1,234.5678"}, {L"1234", 1, false, L"1,2,3,4"},
      {L"-1234", 1, false, L"-123,4"},                                // signed: only where p + 1 >= 5
      {L"1,234", 0, false, L"1234"}, {L".5", 3, false, L".5"}, {L"", 3, false, L""},  // size 0 only removes
      {L"1234", 4000000000u, false, L"1234"}, {L"   1234.50", 3, true, L"   1,234.50"},
      {L"1234   ", 3, true, L"1,234   "}, {L"  -1234 ", 3, true, L"  -1,234 "}, {L"   ", 3, true, L"   "},
  };
  for (const auto& c : cases) {
    CString s(c.in);
    c.space ? InsertCommaWithSpace(s, c.n) : InsertComma(s, c.n);
    EXPECT_EQ(W(s), c.out) << c.in << " " << c.n;
  }
}

TEST(FormattingNotation, ThirtySecondsWithTheirFraction) {
  const struct { double v; int denominator; const wchar_t* text; } cases[] = {
      {134.0 + 1.25 / 32, 128, L"134`012"}, {134.0 + 16.5 / 32, 128, L"134`165"},
      {134.0 + 16.75 / 32, 128, L"134`167"}, {134.0 + 16.74 / 32, 128, L"134`167"},  // 7.5 truncated; 128th first
      {134.0 + 16.5 / 32, 64, L"134`165"}, {134.0 + 16.2 / 32, 64, L"134`160"},     // nearest 64th is 16/32
      {134.0 + 31.9 / 32, 64, L"135`000"},                                            // into the next whole
      {134.0 + 16.3 / 32, 10, L"134`16.3"}, {134.5, 10, L"134`16.0"}, {-134.5, 10, L"-134`16.0"},  // sign first
      {-0.5, 64, L"-0`160"}, {-1e-6, 64, L"0`000"},                                   // no sign on a rounded zero
      {134.5, 32, L"134`16"}, {134.5, 7, L"134`16"},                                  // any other: 32nds
      {kPacketEmptyValue, 64, L"N/A"}, {std::nan(""), 64, L"N/A"},
  };
  wchar_t buf[chartcore::kNotationBufferSize];
  for (const auto& c : cases) {
    GetNotationFmt(buf, c.v, c.denominator);
    EXPECT_STREQ(buf, c.text) << c.v << "/" << c.denominator;
  }
  GetNotationFmt(buf, -999999999999999999.0, 10);  // the longest text fits
  EXPECT_LT(std::wcslen(buf), static_cast<size_t>(chartcore::kNotationBufferSize));
}

TEST(FormattingParse, ReadsEveryFormOfTheFormatterBack) {
  const struct { const wchar_t* text; int code; double value; } cases[] = {
      {L"1,234.57", 2, 1234.57}, {L"   1,234.50", 2, 1234.5}, {L"-0.13", 2, -0.13}, {L"+5", 0, 5.0},
      {L"101`16", 75, 101.5}, {L"101`05", 75, 101.15625}, {L"101`010", 75, 101.3125},  // the padded 10
      {L"-101`0-16", 75, -101.5}, {L"-101`-1", 65, -101.5}, {L"-0`-1", 65, -0.5},
      {L"-101`1", 65, -101.5},                                 // typed: the fraction takes the sign
      {L"101`2", 65, 102.0}, {L"1,234`1", 65, 1234.5},         // what the text shows
      {L"101`3", 69, 101.3},                                   // tenths: nearest double of 101.3
      {L"134`012", 77, 134.0 + 1.25 / 32}, {L"134`167", 77, 134.0 + 16.75 / 32}, {L"134`165", 76, 134.0 + 16.5 / 32},
      {L"-134`16.3", 78, -(134.0 + 16.3 / 32)}, {L"101.5", 75, 101.5},  // a typed decimal under a fraction code
      // Beyond 2^53 / 10 the tenth still lands: whole × 10 alone would round.
      {L"3236962230866197`5", 71, 3236962230866197.5}, {L"-3236962230866197`5", 71, -3236962230866197.5},
      // Unreadable: a fraction under a decimal code, one digit for a 32nd count.
      {L"", 75, kPacketEmptyValue}, {L"N/A", 75, kPacketEmptyValue}, {L"abc", 75, kPacketEmptyValue},
      {L"1.2.3", 75, kPacketEmptyValue}, {L"12`", 75, kPacketEmptyValue}, {L"`5", 75, kPacketEmptyValue},
      {L"1`x", 75, kPacketEmptyValue}, {L"1e5", 75, kPacketEmptyValue}, {L"--1", 75, kPacketEmptyValue},
      {L"1`2`3", 75, kPacketEmptyValue}, {L"1.5`3", 75, kPacketEmptyValue}, {L"101`16", 2, kPacketEmptyValue},
      {L"134`1", 77, kPacketEmptyValue}, {L"134`16.", 78, kPacketEmptyValue},
  };
  for (const auto& c : cases) EXPECT_EQ(GetPriceValueOfFormat(c.text, c.code), c.value) << c.text << " " << c.code;
}

TEST(FormattingFastPath, CodesMatchFrameworkFormatAndReadBack) {
  // Both signs, exact ties (of the numerator too) and their neighbours,
  // grouping on and off; every 25th text of the compared codes is read back.
  std::mt19937_64 rng(20240115);
  for (const int code : {-1, 0, 2, 5, 7, 8, 65, 66, 68, 69, 74, 75, 76, 77, 78}) {
    const bool reference = code <= 75;
    const int decimals = code >= 1 && code <= 7 ? code : code >= 65 ? 5 : 0;
    for (int i = 0; i < (reference ? 50000 : 4000) && !HasFailure(); ++i) {
      const double v = NextValue(rng, decimals);
      const int group = (i >> 1) & 1;
      if (reference) {
        ASSERT_EQ(Fmt(v, code, group), FormatReference(v, code, group)) << "code " << code << " value " << v;
      }
      if (!reference || i % 25 == 0) ExpectReadsBack(std::fmod(v, 1e15), code, group);  // a meaningful fraction
    }
  }
}

TEST(FormattingDateTimeStrings, SeparatorsModesPlainDigitsAndLongValues) {
  const struct { double v; int mode; const wchar_t* date; const wchar_t* time; } cases[] = {
      {20240115, 0, L"2024/01/15", nullptr}, {20240115, 1, L"2024-01-15", nullptr},
      {20240115, 2, L"2024:01:15", nullptr}, {20240115, 7, L"2024/01/15", nullptr},  // unknown mode: default
      {20240115093000.0, 0, L"2024/01/15093000", L"09:30:00"}, {20240115093000.0, 2, nullptr, L"09/30/00"},
      {153000, 1, nullptr, L"15-30-00"}, {93000, 0, nullptr, L"93:00:0"},    // five digits are not padded
      {1234567, 0, L"1234567", nullptr}, {9999, 0, nullptr, L"9999"},
      {9999999.6, 0, L"10000000", nullptr}, {-1000, 0, L"-1000", nullptr},    // below 1e7, printed rounded
      {100000000, 0, nullptr, L"0::"},                                        // a date alone leaves one digit
      {-1e37, 0, nullptr, L"N/A"}, {-5e20, 0, nullptr, L"N/A"}, {-9e19, 0, nullptr, L"-90000000000000000000"},
      {kPacketEmptyValue, 0, L"N/A", L"N/A"}, {std::nan(""), 0, nullptr, L"N/A"},
      // Digits finer than seconds are cut: the first fourteen digits stay.
      {202401150930001.0, 0, L"2024/01/15093000", nullptr}, {202401150930459.0, 0, nullptr, L"09:30:45"},
      {123456789012345678.0, 0, nullptr, L"90:12:34"}, {1e300, 0, L"1000/00/00000000", nullptr},
  };
  for (const auto& c : cases) {
    const std::wstring date = W(GetXPacketDateString(c.v, c.mode)), time = W(GetXPacketTimeString(c.v, c.mode));
    EXPECT_EQ(date, c.date != nullptr ? c.date : date) << c.v << " mode " << c.mode;
    EXPECT_EQ(time, c.time != nullptr ? c.time : time) << c.v << " mode " << c.mode;
  }
  // A date far below zero prints all its digits (more than a 30-wide buffer).
  const std::wstring digits = W(GetXPacketDateString(-1e300, 0));
  EXPECT_EQ(digits.size(), 302u);
  EXPECT_EQ(digits.substr(0, 5), L"-1000");
  EXPECT_EQ(W(GetXPacketDateString(-1.7976931348623157e308, 0)).size(), 310u);
}

TEST(FormattingHelpers, AutoDecimalAndDifferences) {
  ExpectTexts({
      {W(GetAutoYPacketStringOfFormat(1234.5, 2)), L"1,234.5"}, {W(GetAutoYPacketStringOfFormat(12.0, 2)), L"12"},
      {W(GetAutoYPacketStringOfFormat(-0.001, 2)), L"0"}, {W(GetAutoYPacketStringOfFormat(1234.5, 65)), L"1,234`1"},
      {W(GetAutoYPacketStringOfFormat(kPacketEmptyValue, 2)), L"N/A"},
      {W(GetDecimalFloatFormat(1234.5, 3, 1, 0)), L"1,234.500"}, {W(GetDecimalFloatFormat(1234.5, 3, 0, 1)), L"1234.5"},
      {W(GetDecimalFloatFormat(0.125, 2, 0, 0)), L"0.13"},  // an exact tie goes away from zero
      {W(GetDecimalFloatFormat(1.0, 25, 0, 0)), L"1." + std::wstring(25, L'0')},  // beyond the fast path
      {W(GetDecimalFloatFormat(1e19, 2, 0, 0)), L"N/A"},
  });
  const struct { double a, b; int code, kind; double diff; } diffs[] = {
      {0.3, 0.1, 2, 0, 0.2},  // 0.19999999999999998 without rounding
      {0.3, 0.05, 2, 1, 25.0}, {101.5, 101.0 + 1.0 / 32, 75, 1, 15.0}, {101.5, 101.0, 77, 1, 64.0},
      {101.5, 101.0, 78, 1, 160.0}, {10.7, 10.0, 0, 0, 1.0},
      {kPacketEmptyValue, 1.0, 2, 0, kPacketEmptyValue}, {1.0, kPacketNoMaxValue, 2, 0, kPacketEmptyValue}};
  for (const auto& c : diffs) EXPECT_EQ(GetDiffValueOfFloat(c.a, c.b, c.code, c.kind), c.diff) << c.a << " " << c.code;
}

TEST(FormattingHelpers, TicksPointValuesAndNumericHelpers) {
  // Strict bounds: each step starts exactly at its price.
  const struct { double price, kind0, kind1; } ticks[] = {
      {999.99, 1, 1}, {1000, 5, 5}, {4999, 5, 5}, {5000, 10, 10}, {9999, 10, 10}, {10000, 50, 50},
      {49999, 50, 50}, {50000, 100, 100}, {99999, 100, 100}, {100000, 500, 100}, {499999, 500, 100},
      {500000, 1000, 100}};
  for (const auto& c : ticks) {
    EXPECT_EQ(GetTickValue(0, c.price), c.kind0) << c.price;
    EXPECT_EQ(GetTickValue(1, c.price), c.kind1) << c.price;
    EXPECT_EQ(GetTickValue(2, c.price), 0) << c.price;
  }
  const struct { int market; double value; } points[] = {
      {14, 500000}, {16, 500000}, {44, 500000}, {124, 500000}, {15, 10}, {25, 10},
      {26, 500}, {34, 500}, {134, 500}, {1007, 10000}, {17, 1}};
  for (const auto& c : points) EXPECT_EQ(GetMarketPointValue(c.market), c.value) << c.market;
  const struct { double a, b, tolerance; int order; } compares[] = {
      {1.0, 1.05, 0.05, -1}, {1.0, 1.04, 0.05, 0}, {2.0, 1.0, 0.5, 1}};  // the bound is strict
  for (const auto& c : compares) EXPECT_EQ(CompareFloat(c.a, c.b, c.tolerance), c.order) << c.b;
  const struct { double value; int power; double depressed; } powers[] = {
      {12345.0, 2, 123.45}, {1.5, -3, 1500.0}, {kPacketEmptyValue, 3, kPacketEmptyValue}, {1.0, INT32_MIN, HUGE_VAL}};
  for (const auto& c : powers) EXPECT_EQ(GetDepressedValue(c.value, c.power), c.depressed) << c.power;
}

TEST(FormattingHelpers, PaddingAndZeroHelpers) {
  CString s(L"abc");
  EXPECT_EQ(AddChar(s, 1, L"-", 3), 6);
  AddChar(s, -5, L"<", 1);
  AddChar(s, 99, L">", 1);
  EXPECT_EQ(W(s), L"<a---bc>");
  EXPECT_EQ(AddChar(s, 0, L"", 5), 8);  // nothing to add, or no times
  EXPECT_EQ(AddChar(s, 0, nullptr, 5), 8);
  EXPECT_EQ(AddChar(s, 0, L"x", 0), 8);
  CString big;
  EXPECT_EQ(AddChar(big, 0, L"ab", 2000000000), 65536);

  CString pad(L"N/A");
  EXPECT_EQ(AddSpaceChar(pad, 6, 1), 6);
  AddSpaceChar(pad, 8, 0);
  EXPECT_EQ(W(pad), L"   N/A  ");
  EXPECT_EQ(AddSpaceChar(pad, 2, 1), 8);
  EXPECT_EQ(AddSpaceChar(pad, 2000000000, 1), chartcore::kMaxFieldWidth);

  // Decimals to add zeros up to, or -1 to drop the trailing zeros.
  const struct { const wchar_t* in; int n; const wchar_t* out; } zeros[] = {
      {L"12", 2, L"12.00"}, {L"1,234.5", 2, L"1,234.50"}, {L"1.2345", 2, L"1.2345"},  // never cuts
      {L"  -7  ", 1, L"  -7.0  "}, {L"N/A", 2, L"N/A"}, {L"101`16", 2, L"101`16"}, {L"12", 0, L"12"},
      {L"12.500", -1, L"12.5"}, {L"12.000", -1, L"12"}, {L"1200", -1, L"1200"}, {L"-0.00", -1, L"0"},
      {L"-0.10", -1, L"-0.1"}, {L"-.000", -1, L"0"}, {L"  1,200.50 ", -1, L"  1,200.5 "}, {L"N/A", -1, L"N/A"},
      {L"", -1, L""}};
  for (const auto& c : zeros) {
    CString text(c.in);
    EXPECT_EQ(c.n < 0 ? RemoveZeroChar(text) : AddZeroChar(text, c.n), static_cast<int>(std::wcslen(c.out)));
    EXPECT_EQ(W(text), c.out) << c.in;
  }
}
