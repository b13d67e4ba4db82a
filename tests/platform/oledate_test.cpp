#include "chartcore/platform/oledate.h"

#if !defined(_WIN32)

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace {

bool Leap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

// Reference day count by plain counting: days from 1899-12-30 to y-m-d.
long DayNumber(int y, int m, int d) {
  static const int kMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  long days = 0;
  for (int yy = 1; yy < y; ++yy) days += Leap(yy) ? 366 : 365;
  for (int mm = 1; mm < m; ++mm) days += kMonthDays[mm - 1] + (mm == 2 && Leap(y) ? 1 : 0);
  days += d - 1;
  return days - 693593;  // 1899-12-30 is day 693593 counted from 0001-01-01
}

SYSTEMTIME Fields(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  SYSTEMTIME st = {};
  st.wYear = static_cast<WORD>(y);
  st.wMonth = static_cast<WORD>(mo);
  st.wDay = static_cast<WORD>(d);
  st.wHour = static_cast<WORD>(h);
  st.wMinute = static_cast<WORD>(mi);
  st.wSecond = static_cast<WORD>(s);
  return st;
}

double ToDate(SYSTEMTIME st) {
  double v = std::numeric_limits<double>::quiet_NaN();
  return SystemTimeToVariantTime(&st, &v) ? v : -1e9;
}

// "y-m-d h:m:s.ms w<day of week>" of calendar fields.
std::string Text(const SYSTEMTIME& st) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d.%03d w%d", st.wYear, st.wMonth, st.wDay, st.wHour,
                st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek);
  return buf;
}

// The fields of a DATE from VarUdateFromDate, with " d<day of year>", or
// "invalid" for E_INVALIDARG.
std::string Breakdown(double date) {
  UDATE u = {};
  const HRESULT hr = VarUdateFromDate(date, 0, &u);
  if (hr != S_OK) return hr == E_INVALIDARG ? "invalid" : "?";
  return Text(u.st) + " d" + std::to_string(u.wDayOfYear);
}

// The fields of a DATE from VariantTimeToSystemTime, or "invalid".
std::string SystemBreakdown(double date) {
  SYSTEMTIME st = {};
  return VariantTimeToSystemTime(date, &st) ? Text(st) : "invalid";
}

}  // namespace

TEST(OleDate, FieldsToDateAndBack) {
  EXPECT_EQ(DayNumber(1899, 12, 30), 0);
  EXPECT_EQ(ToDate(Fields(1899, 12, 30)), 0.0);
  EXPECT_EQ(ToDate(Fields(2024, 1, 1, 12)), DayNumber(2024, 1, 1) + 0.5);
  EXPECT_EQ(ToDate(Fields(1900, 3, 1, 6)), DayNumber(1900, 3, 1) + 0.25);  // 1900 is no leap year
  // Before day 0 the integer part is the day and the fraction the time.
  EXPECT_EQ(ToDate(Fields(1899, 12, 29, 6)), -1.25);
  EXPECT_EQ(ToDate(Fields(100, 1, 1)), static_cast<double>(DayNumber(100, 1, 1)));
  // Day of week (0 = Sunday) and day of year come with the fields.
  EXPECT_EQ(Breakdown(-1.25), "1899-12-29 06:00:00.000 w5 d363");
  EXPECT_EQ(Breakdown(-0.5), "1899-12-30 12:00:00.000 w6 d364");  // still day 0, at noon
  EXPECT_EQ(Breakdown(0.0), "1899-12-30 00:00:00.000 w6 d364");   // a Saturday
  EXPECT_EQ(Breakdown(DayNumber(2024, 1, 1) + 0.75), "2024-01-01 18:00:00.000 w1 d1");
  EXPECT_EQ(Breakdown(DayNumber(2024, 12, 31)), "2024-12-31 00:00:00.000 w2 d366");
  EXPECT_EQ(Breakdown(DayNumber(2023, 12, 31)), "2023-12-31 00:00:00.000 w0 d365");
  // Times round to the nearest second; 23:59:59.6 becomes the next midnight.
  EXPECT_EQ(SystemBreakdown(DayNumber(2024, 2, 28) + 86399.6 / 86400), "2024-02-29 00:00:00.000 w4");
  EXPECT_EQ(SystemBreakdown(DayNumber(2024, 2, 28) + 37815.4 / 86400), "2024-02-28 10:30:15.000 w3");
}

TEST(OleDate, NormalisesFieldsAsWindows) {
  struct Case { SYSTEMTIME given; SYSTEMTIME same; };
  const Case cases[] = {
      {Fields(2023, 2, 29), Fields(2023, 3, 1)},  {Fields(2023, 4, 31), Fields(2023, 5, 1)},
      {Fields(2023, 2, 31), Fields(2023, 3, 3)},
      {Fields(2024, 0, 15), Fields(2023, 12, 15)},  // month 0: December before
      {Fields(2024, 3, 0), Fields(2024, 2, 29)},    // day 0: the last day before
      {Fields(2024, 1, 0), Fields(2023, 12, 31)},   //
      {Fields(0, 1, 1), Fields(2000, 1, 1)},      {Fields(29, 6, 1), Fields(2029, 6, 1)},  // two-digit years
      {Fields(30, 6, 1), Fields(1930, 6, 1)},     {Fields(99, 6, 1), Fields(1999, 6, 1)},
      {Fields(2024, 1, 1, 24), Fields(2024, 1, 2)},  // times run over into the next days
  };
  for (const Case& c : cases) EXPECT_EQ(ToDate(c.given), ToDate(c.same)) << Text(c.given);
  EXPECT_EQ(ToDate(Fields(2023, 12, 31, 1)), DayNumber(2023, 12, 31) + 1.0 / 24);
  EXPECT_EQ(ToDate(Fields(9999, 12, 31)), static_cast<double>(DayNumber(9999, 12, 31)));
  EXPECT_EQ(ToDate(Fields(2024, 1, 1, 23, 59, 3600)), DayNumber(2024, 1, 2) + 3540.0 / 86400);  // 00:59
  EXPECT_EQ(ToDate(Fields(1899, 12, 29, 30)), 0.25);  // day -1 plus 30 hours is day 0 at 06:00
  EXPECT_EQ(ToDate(Fields(100, 1, 0)), static_cast<double>(DayNumber(100, 1, 1) - 1));  // before 100-01-01
  // Failures.
  for (const SYSTEMTIME& bad : {Fields(2024, 13, 1), Fields(2024, 1, 32), Fields(10000, 1, 1), Fields(9999, 12, 32)}) {
    EXPECT_EQ(ToDate(bad), -1e9) << Text(bad);
  }
  EXPECT_EQ(VarDateFromUdate(nullptr, 0, nullptr), E_INVALIDARG);
  // VarDateFromUdate, unlike SystemTimeToVariantTime, rolls months and days over too.
  UDATE over = {};
  over.st = Fields(2024, 13, 32);
  DATE rolled = 0;
  ASSERT_EQ(VarDateFromUdate(&over, 0, &rolled), S_OK);
  EXPECT_EQ(rolled, static_cast<double>(DayNumber(2025, 2, 1)));  // January 2025, day 32
  over.st = Fields(10000, 1, 1);
  EXPECT_EQ(VarDateFromUdate(&over, 0, &rolled), E_INVALIDARG);
  // Value-only flags.
  UDATE u = {};
  u.st = Fields(2024, 1, 1, 6);
  DATE d = 0;
  ASSERT_EQ(VarDateFromUdate(&u, VAR_TIMEVALUEONLY, &d), S_OK);
  EXPECT_EQ(d, 0.25);
  ASSERT_EQ(VarDateFromUdate(&u, VAR_DATEVALUEONLY, &d), S_OK);
  EXPECT_EQ(d, static_cast<double>(DayNumber(2024, 1, 1)));
}

TEST(OleDate, RangeLimitsAndRoundTrips) {
  EXPECT_EQ(Breakdown(DayNumber(100, 1, 1) - 0.5), "0100-01-01 12:00:00.000 w5 d1");
  EXPECT_EQ(Breakdown(DayNumber(9999, 12, 31) + 86399.4 / 86400), "9999-12-31 23:59:59.000 w5 d365");
  const double bad[] = {DayNumber(100, 1, 1) - 1.0, DayNumber(9999, 12, 31) + 1.0,
                        DayNumber(9999, 12, 31) + 86399.7 / 86400,  // rounds past the end
                        std::numeric_limits<double>::quiet_NaN()};
  for (double v : bad) EXPECT_EQ(Breakdown(v), "invalid") << v;
  EXPECT_EQ(VarUdateFromDate(0.0, 0, nullptr), E_INVALIDARG);
  EXPECT_EQ(SystemBreakdown(1e10), "invalid");
  // Every field set survives the round trip (milliseconds are not kept).
  std::mt19937 rng(7);
  for (int i = 0; i < 3000; ++i) {
    const int y = 100 + static_cast<int>(rng() % 9900);
    const int mo = 1 + static_cast<int>(rng() % 12);
    const int d = 1 + static_cast<int>(rng() % 28);
    SYSTEMTIME in = Fields(y, mo, d, static_cast<int>(rng() % 24), static_cast<int>(rng() % 60), static_cast<int>(rng() % 60));
    const double v = ToDate(in);
    ASSERT_EQ(std::trunc(v), static_cast<double>(DayNumber(y, mo, d))) << Text(in);
    // The day of week is the only field the round trip adds.
    EXPECT_EQ(SystemBreakdown(v).substr(0, 23), Text(in).substr(0, 23));
  }
}

#endif  // !_WIN32
