#include "chartcore/platform/oledate.h"

#if !defined(_WIN32)

#include <cmath>
#include <limits>
#include <random>

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

}  // namespace

TEST(OleDate, FieldsToDateAndBack) {
  EXPECT_EQ(DayNumber(1899, 12, 30), 0);
  EXPECT_EQ(ToDate(Fields(1899, 12, 30)), 0.0);
  EXPECT_EQ(ToDate(Fields(2024, 1, 1, 12)), DayNumber(2024, 1, 1) + 0.5);
  EXPECT_EQ(ToDate(Fields(1900, 3, 1, 6)), DayNumber(1900, 3, 1) + 0.25);  // 1900 is no leap year
  // Before day 0 the integer part is the day and the fraction the time.
  EXPECT_EQ(ToDate(Fields(1899, 12, 29, 6)), -1.25);
  EXPECT_EQ(ToDate(Fields(100, 1, 1)), static_cast<double>(DayNumber(100, 1, 1)));
  UDATE u = {};
  ASSERT_EQ(VarUdateFromDate(-1.25, 0, &u), S_OK);
  EXPECT_EQ(u.st.wYear * 10000 + u.st.wMonth * 100 + u.st.wDay, 18991229);
  EXPECT_EQ(u.st.wHour, 6);
  ASSERT_EQ(VarUdateFromDate(-0.5, 0, &u), S_OK);  // still day 0, at noon
  EXPECT_EQ(u.st.wDay, 30);
  EXPECT_EQ(u.st.wHour, 12);
  // Day of week (0 = Sunday) and day of year.
  ASSERT_EQ(VarUdateFromDate(DayNumber(2024, 1, 1) + 0.75, 0, &u), S_OK);  // a Monday
  EXPECT_EQ(u.st.wDayOfWeek, 1);
  EXPECT_EQ(u.st.wHour, 18);
  EXPECT_EQ(u.wDayOfYear, 1);
  ASSERT_EQ(VarUdateFromDate(0.0, 0, &u), S_OK);  // 1899-12-30 was a Saturday
  EXPECT_EQ(u.st.wDayOfWeek, 6);
  EXPECT_EQ(u.wDayOfYear, 364);
  ASSERT_EQ(VarUdateFromDate(DayNumber(2024, 12, 31), 0, &u), S_OK);
  EXPECT_EQ(u.wDayOfYear, 366);
  ASSERT_EQ(VarUdateFromDate(DayNumber(2023, 12, 31), 0, &u), S_OK);
  EXPECT_EQ(u.wDayOfYear, 365);
  // Times round to the nearest second; 23:59:59.6 becomes the next midnight.
  SYSTEMTIME st = {};
  ASSERT_TRUE(VariantTimeToSystemTime(DayNumber(2024, 2, 28) + 86399.6 / 86400, &st));
  EXPECT_EQ(st.wMonth * 100 + st.wDay, 229);
  EXPECT_EQ(st.wHour + st.wMinute + st.wSecond + st.wMilliseconds, 0);
  ASSERT_TRUE(VariantTimeToSystemTime(DayNumber(2024, 2, 28) + 37815.4 / 86400, &st));
  EXPECT_EQ(st.wHour * 10000 + st.wMinute * 100 + st.wSecond, 103015);
}

TEST(OleDate, NormalisesFieldsAsWindows) {
  EXPECT_EQ(ToDate(Fields(2023, 2, 29)), ToDate(Fields(2023, 3, 1)));
  EXPECT_EQ(ToDate(Fields(2023, 4, 31)), ToDate(Fields(2023, 5, 1)));
  EXPECT_EQ(ToDate(Fields(2023, 2, 31)), ToDate(Fields(2023, 3, 3)));
  EXPECT_EQ(ToDate(Fields(2023, 12, 31, 1)), DayNumber(2023, 12, 31) + 1.0 / 24);
  EXPECT_EQ(ToDate(Fields(2024, 0, 15)), ToDate(Fields(2023, 12, 15)));  // month 0: December before
  EXPECT_EQ(ToDate(Fields(2024, 3, 0)), ToDate(Fields(2024, 2, 29)));   // day 0: last day before
  EXPECT_EQ(ToDate(Fields(2024, 1, 0)), ToDate(Fields(2023, 12, 31)));
  EXPECT_EQ(ToDate(Fields(0, 1, 1)), ToDate(Fields(2000, 1, 1)));  // two-digit years
  EXPECT_EQ(ToDate(Fields(29, 6, 1)), ToDate(Fields(2029, 6, 1)));
  EXPECT_EQ(ToDate(Fields(30, 6, 1)), ToDate(Fields(1930, 6, 1)));
  EXPECT_EQ(ToDate(Fields(99, 6, 1)), ToDate(Fields(1999, 6, 1)));
  EXPECT_EQ(ToDate(Fields(9999, 12, 31)), static_cast<double>(DayNumber(9999, 12, 31)));
  // Failures.
  EXPECT_EQ(ToDate(Fields(2024, 13, 1)), -1e9);
  EXPECT_EQ(ToDate(Fields(2024, 1, 32)), -1e9);
  EXPECT_EQ(ToDate(Fields(10000, 1, 1)), -1e9);
  EXPECT_EQ(ToDate(Fields(9999, 12, 32)), -1e9);
  EXPECT_EQ(VarDateFromUdate(nullptr, 0, nullptr), E_INVALIDARG);
  // Times run over into the next days; a date may fall before 100-01-01.
  EXPECT_EQ(ToDate(Fields(2024, 1, 1, 24)), static_cast<double>(DayNumber(2024, 1, 2)));
  EXPECT_EQ(ToDate(Fields(2024, 1, 1, 23, 59, 3600)), DayNumber(2024, 1, 2) + 3540.0 / 86400);  // 00:59
  EXPECT_EQ(ToDate(Fields(1899, 12, 29, 30)), 0.25);  // day -1 plus 30 hours is day 0 at 06:00
  EXPECT_EQ(ToDate(Fields(100, 1, 0)), static_cast<double>(DayNumber(100, 1, 1) - 1));
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
  UDATE u = {};
  EXPECT_EQ(VarUdateFromDate(DayNumber(100, 1, 1) - 0.5, 0, &u), S_OK);  // 100-01-01 at noon
  EXPECT_EQ(u.st.wYear, 100);
  EXPECT_EQ(VarUdateFromDate(DayNumber(100, 1, 1) - 1.0, 0, &u), E_INVALIDARG);
  EXPECT_EQ(VarUdateFromDate(DayNumber(9999, 12, 31) + 1.0, 0, &u), E_INVALIDARG);
  EXPECT_EQ(VarUdateFromDate(DayNumber(9999, 12, 31) + 86399.7 / 86400, 0, &u), E_INVALIDARG);  // rounds past the end
  EXPECT_EQ(VarUdateFromDate(std::numeric_limits<double>::quiet_NaN(), 0, &u), E_INVALIDARG);
  EXPECT_EQ(VarUdateFromDate(0.0, 0, nullptr), E_INVALIDARG);
  SYSTEMTIME st = {};
  EXPECT_FALSE(VariantTimeToSystemTime(1e10, &st));
  // Every field set survives the round trip (milliseconds are not kept).
  std::mt19937 rng(7);
  for (int i = 0; i < 3000; ++i) {
    const int y = 100 + static_cast<int>(rng() % 9900);
    const int mo = 1 + static_cast<int>(rng() % 12);
    const int d = 1 + static_cast<int>(rng() % 28);
    SYSTEMTIME in = Fields(y, mo, d, static_cast<int>(rng() % 24), static_cast<int>(rng() % 60), static_cast<int>(rng() % 60));
    const double v = ToDate(in);
    ASSERT_EQ(std::trunc(v), static_cast<double>(DayNumber(y, mo, d))) << y << "-" << mo << "-" << d;
    SYSTEMTIME out = {};
    ASSERT_TRUE(VariantTimeToSystemTime(v, &out));
    EXPECT_EQ(out.wYear * 10000 + out.wMonth * 100 + out.wDay, y * 10000 + mo * 100 + d);
    EXPECT_EQ(out.wHour * 3600 + out.wMinute * 60 + out.wSecond, in.wHour * 3600 + in.wMinute * 60 + in.wSecond);
  }
}

#endif  // !_WIN32
