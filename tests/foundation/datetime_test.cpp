#include "chartcore/foundation/datetime.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/system.h"

namespace {

// Calls check(YYYYMMDD, weekday, day of year) for every day from 1901 to 2099
// (1 = Sunday), counted on from 1901-01-01, a Tuesday, without the library's
// text, OLE or runtime paths. Every fourth year is a leap year in this range.
template <class Check>
void ForEachDay(Check check) {
  int weekday = 3;
  for (int y = 1901; y <= 2099; ++y) {
    const int lengths[] = {31, y % 4 == 0 ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int m = 1, doy = 1; m <= 12; ++m) {
      for (int d = 1; d <= lengths[m - 1]; ++d, ++doy, weekday = weekday % 7 + 1) {
        check(y * 10000 + m * 100 + d, weekday, doy);
      }
    }
  }
}

// The test environment's zone: an IANA name on Linux; the Windows runtime
// knows only the POSIX-style "KST-9" (a fixed UTC+9 without Seoul's history).
#if defined(_WIN32)
constexpr const char* kSeoulZone = "KST-9";
#else
constexpr const char* kSeoulZone = "Asia/Seoul";
#endif

HRESULT ThrownCode(void (*call)()) {
  try {
    call();
  } catch (const CAtlException& e) {
    return e.m_hr;
  }
  return S_OK;
}

// Rows of a call's result and the result expected; a failure names its row.
void ExpectRows(std::initializer_list<std::pair<int, int>> rows) {
  int row = 0;
  for (const auto& [got, expected] : rows) EXPECT_EQ(got, expected) << "row " << row++;
}

}  // namespace

TEST(DateTimeGetters, FieldsOfBothFormsThresholdAndBiases) {
  const double t = 20240115093045.0;
  const double belowMidnight = std::nextafter(20240115000000.0, 0.0);
  ExpectRows({
      {GetYear(20240115), 2024}, {GetYear2(20240115), 24}, {GetMonth(20240115), 1}, {GetDate(20240115), 15},
      {GetDay(20240115), 240115}, {GetYearMonthDay(20240115), 20240115},  // GetDay is YYMMDD
      {GetYear(t), 2024}, {GetMonth(t), 1}, {GetDate(t), 15}, {GetDay(t), 240115}, {GetYearMonthDay(t), 20240115},
      {GetHour(t), 9}, {GetMinute(t), 30}, {GetSecond(t), 45}, {GetTime(t), 93045},
      {GetHalfHour(20240115093000.0), 930}, {GetHalfHour(20240115092959.0), 900},
      {GetHour(20240115), 0}, {GetMinute(20240115), 0}, {GetSecond(20240115), 0}, {GetHalfHour(20240115), 0},
      {GetTime(20240115), 0},
      // Exactly 1e8 is a date; 100000001 is a date and time (its date reads 100.000001).
      {GetHour(1e8), 0}, {GetTime(1e8), 0}, {GetCompSecond(1e8), 0},
      {GetTime(100000001), 1}, {GetSecond(100000001), 1}, {GetCompSecond(100000001), 1}, {GetYear(100000001), 0},
      // Just below a date: the 0.0001 and 0.5 biases lift it, 0.000001 does not.
      {GetYear(20240115 - 1e-5), 2024}, {GetDate(20240115 - 1e-5), 15}, {GetCompDate(20240115 - 1e-5), 20240115},
      {GetYearMonthDay(20240115 - 1e-5), 20240114}, {GetDay(20240115 - 1e-5), 240114},
      // Just below midnight in the 14-digit form: the date digits get their
      // bias, the time digits none, so the time reads 99:99:99.
      {GetYearMonthDay(belowMidnight), 20240115}, {GetDate(belowMidnight), 15}, {GetTime(belowMidnight), 999999},
      {GetHour(belowMidnight), 99}, {GetTime(std::nextafter(20240115093000.0, 0.0)), 92999},
      {GetDate(20231231.99995), 32}, {GetMonth(20231231.99995), 12},  // 0.5 rounds past the month's last day
      // Garbage never faults: out-of-range truncation gives INT_MIN; NaN is not above 1e8.
      {GetYear(1e300), INT_MIN / 10000}, {GetYear(std::nan("")), INT_MIN / 10000}, {GetTime(1e300), INT_MIN},
      {GetCompMinute(std::nan("")), 0},
  });
}

TEST(DateTimeKeys, SameKeyExactlyWithinTheUnit) {
  ExpectRows({
      {GetCompYear(20241231235959.0), 2024}, {GetCompMonth(20240115), 202401}, {GetCompMonth(20240115093000.0), 202401},
      {GetCompDate(20240115093000.0), 20240115},
      {GetCompDate(20240115235959.0), 20240115},  // 0.5 + 0.235959 stays in the day
      {GetCompHalfHour(20240115093000.0), 150930}, {GetCompHalfHour(20240115092959.0), 150900},
      {GetCompHalfHour(20240115), 0},
      // Keys below the day carry no date: the same hour of two days is equal.
      {GetCompHour(20240115093000.0), 9}, {GetCompHour(20240116093000.0), 9}, {GetCompMinute(20240115093059.0), 930},
      {GetCompMinute(20240115093100.0), 931}, {GetCompSecond(20240115093059.0), 93059},
      {GetCompHour(20240115), 0}, {GetCompMinute(20240115), 0}, {GetCompSecond(20240115), 0},
  });
}

TEST(DateTimeCalendar, AgreesWithCountedDays) {
  int previous = 0;
  ForEachDay([&previous](int date, int weekday, int dayOfYear) {
    if (::testing::Test::HasFailure()) return;
    EXPECT_EQ(GetDayOfWeek(date), weekday) << date;
    EXPECT_EQ(GetDayOfWeek(date * 1e6 + 235959), weekday) << date;
    EXPECT_EQ(GetDayOfYear(date), dayOfYear) << date;
    EXPECT_EQ(GetWeekOfYear(date), dayOfYear / 7 + 1) << date;
    // Weeks of the month start at 1 and move on exactly on Sundays.
    EXPECT_EQ(GetWeekOfMonth(date), date % 100 == 1 ? 1 : GetWeekOfMonth(previous) + (weekday == 1)) << date;
    // The next day through the runtime's local calendar, away from Seoul's
    // summer times and inside what the Windows runtime takes.
    if (previous >= 19900101 && previous <= 20601231) {
      EXPECT_EQ(GetNextYearMonthDay(previous), date) << previous;
    }
    previous = date;
  });
}

TEST(DateTimeCalendar, ShortTextsFailedConversionsAndGetWeek) {
  ExpectRows({
      // Valid dates: AgreesWithCountedDays.
      {GetDayOfWeek(1234567), -1}, {GetDayOfYear(1234567), -1}, {GetWeekOfMonth(1234567), -1},  // seven characters
      {GetWeekOfYear(1234567), -1}, {GetDayOfYear(20240231), 62},  // the 31st of February rolls into March
      {GetDayOfYear(20241301), -1}, {GetWeekOfYear(20241301), 1},    // month 13 fails, and counts as day -1
      {GetDayOfYear(20240132), -1}, {GetDayOfWeek(20240114.5), 2},   // printed rounded: 20240115
      {GetDayOfWeek(-1234567), 6},                                   // "-1234567": year -123, month 45, day 67
      // GetWeek: the fields come out as month -1 (or 0) and day 0 of the
      // value's year: November 30th (or December 31st) of the year before.
      {GetWeek(20240115), 5}, {GetWeek(20240701), 5},  // 2023-11-30, a Thursday, for every date of 2024
      {GetWeek(20231231), 4}, {GetWeek(20480208), 3},  // 2022-11-30, a Wednesday; month 0: 2047-12-31, a Tuesday
      {GetWeek(20240115093000.0), 0}, {GetWeek(1e300), 0},  // a year no local time holds
  });
}

TEST(DateTimeStepping, NextDayAndCalendarTimes) {
  ExpectRows({
      {GetNextYearMonthDay(20241231), 20250101}, {GetNextYearMonthDay(20240228), 20240229},
      {GetNextYearMonthDay(20230228), 20230301}, {GetNextYearMonthDay(20240115235959.0), 20240116},  // time dropped
      {GetNextYearMonthDay(20240231), 20240303},  // day 31 passes, the runtime rolls it
  });
#if defined(_WIN32)
  // The Windows runtime refuses local times before 1970.
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(19500101); }), E_INVALIDARG);
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(19000101); }), E_INVALIDARG);
#else
  EXPECT_EQ(GetNextYearMonthDay(19500101), 19500102);  // before 1970 too
  EXPECT_EQ(GetNextYearMonthDay(19000101), 19000102);
#endif
  const struct { double from; int seconds, align; double next; } steps[] = {
      {20240115093045.0, 60, 2, 20240115093100.0}, {20240115093045.0, 60, 3, 20240115090100.0},
      {20240115093045.0, 60, 1, 20240115093145.0},                  // no other code aligns
      {20240115093045.0, -36000, 0, 20240114233045.0},              // negative seconds go back a day
      {20240131235959.0, 1, 0, 20240201000000.0}, {20231231235959.0, 1, 0, 20240101000000.0},  // roll-overs
      {20240228120000.0, 86400, 0, 20240229120000.0}, {20240115, 90, 0, 20240115000130.0},     // date only: midnight
      {20240115096000.0, 0, 3, 20240115090000.0}};                  // aligned before checked
  for (const auto& c : steps) EXPECT_DOUBLE_EQ(CalcNextDateTime(c.from, c.seconds, c.align), c.next) << c.from;
}

TEST(DateTimeStepping, LocalZoneDecidesTheDay) {
  const char* tz = std::getenv("TZ");
  if (tz == nullptr || std::strcmp(tz, kSeoulZone) != 0) GTEST_SKIP() << "needs TZ=" << kSeoulZone;
#if defined(_WIN32)
  // KST-9 never had summer time, and 1955 lies before what the runtime takes.
  EXPECT_EQ(GetNextYearMonthDay(19871011), 19871012);
  EXPECT_EQ(GetNextYearMonthDay(19870510), 19870511);
  EXPECT_EQ(ThrownCode([] { CalcNextDateTime(20240115, INT_MIN, 0); }), E_INVALIDARG);
#else
  // 1987-10-11 had 25 hours in Seoul: midnight plus 86,400 s is still that day.
  EXPECT_EQ(GetNextYearMonthDay(19871011), 19871011);
  EXPECT_EQ(GetNextYearMonthDay(19870510), 19870511);  // the 23-hour day
  // Seoul kept UTC+8:30 in 1955; the seconds are sign-extended.
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115, INT_MIN, 0), 19551227201552.0);
#endif
}

TEST(DateTimeStepping, BuildersRaiseComErrors) {
  const struct { void (*call)(); HRESULT code; } cases[] = {
      {[] { GetNextYearMonthDay(18991231); }, E_FAIL},        // year below 1900
      {[] { GetNextYearMonthDay(20241301); }, E_FAIL},        // month 13
      {[] { GetNextYearMonthDay(20240100); }, E_FAIL},        // day 0
      {[] { GetNextYearMonthDay(30011231); }, E_INVALIDARG},  // past the last year
      {[] { GetNextYearMonthDay(30001231); }, E_INVALIDARG},  // the next day is
      {[] { CalcNextDateTime(20240115240000.0, 0, 0); }, E_FAIL},  // hour 24
      {[] { CalcNextDateTime(20240115096000.0, 0, 2); }, E_FAIL},  // minute 60 stays
      {[] { CalcNextDateTime(20240115093060.0, 0, 0); }, E_FAIL},
      {[] { CalcNextDateTime(1e300, 0, 0); }, E_FAIL},
      {[] { GetNextCycleTime(235500, 0, 10); }, E_FAIL},  // 24:05 rolls over: no year
      {[] { GetNextCycleTime(235930, 1, 0); }, E_FAIL}};
  int row = 0;
  for (const auto& c : cases) EXPECT_EQ(ThrownCode(c.call), c.code) << "row " << row++;
}

TEST(DateTimeStepping, CycleTimesAndCounts) {
  const struct { int time, kind, step; double next; } cycles[] = {
      {93045, 1, 0, 93115.0}, {93030, 1, 0, 93100.0}, {93045, 0, 10, 94045.0},
      {93045, 7, 75, 104545.0},          // any other kind steps minutes
      {245500, 0, 10, 250500.0},         // 25 is returned as it is
      {1093000, 0, 30, 1100000.0},       // higher digits carried over
      {93000, 0, -40, 89000.0},          // truncating int arithmetic
      {93000, 0, INT_MAX, 357914033700.0}};  // no int overflow
  for (const auto& c : cycles) EXPECT_DOUBLE_EQ(GetNextCycleTime(c.time, c.kind, c.step), c.next) << c.time;

  const double bar = 20240115093000.0;
  ExpectRows({
      {GetDiffCycleCount(bar, 90000, 153000, 1, 60), 31},
      // 100000 - 93000 = 7000 reads as 70 minutes, not 30; day 2 starts 361 bars on.
      {GetDiffCycleCount(20240115100000.0, 93000, 153000, 1, 60), 71},
      {GetDiffCycleCount(20240115100000.0, 93000, 153000, 2, 60), 361 + 71},
      {GetDiffCycleCount(bar, 90000, 153000, 1, 0), -1}, {GetDiffCycleCount(20240115, 90000, 153000, 1, 60), -1499},
      // Overflowing differences wrap as 32-bit ints; INT_MIN / -1 does not fault.
      {GetDiffCycleCount(bar, INT_MIN, INT_MAX, INT_MAX, -1), 2147390645},
      {GetSecToTime(3599), 5959}, {GetSecToTime(3600), 10000}, {GetSecToTime(90000), 250000},  // past 24 hours
      {GetSecToTime(-5), -5}, {GetSecToTime(INT_MAX), 1670264111},  // 596523:14:07 wraps as the int did
      {GetTimeToSec(93000), 34200}, {GetTimeToSec(199), 159}, {GetTimeToSec(-100), -100},  // seconds unchecked
  });
  for (int s = 0; s < 360000; s += 7) ASSERT_EQ(GetTimeToSec(GetSecToTime(s)), s);
}

TEST(DateTimeClock, TextsOfNowAndMonthNames) {
  // The local clock `offset` seconds from now in a strftime format, as the C
  // runtime gives it.
  const auto clock = [](int offset, const wchar_t* format) {
    const __time64_t when = _time64(nullptr) + offset;
    struct tm t = {};
    _localtime64_s(&t, &when);
    wchar_t text[32] = L"";
    std::wcsftime(text, 32, format, &t);
    return std::wstring(text);
  };
  const struct { CString (*get)(); int offset; const wchar_t* format; } texts[] = {
      {GetToday, 0, L"%Y%m%d"}, {GetNextDay, 86400, L"%Y%m%d"}, {GetPrevDay, -86400, L"%Y%m%d"},
      {GetCurrentLocalTime, 0, L"%H%M%S"}};
  for (const auto& c : texts) {
    const std::wstring before = clock(c.offset, c.format), text = c.get().str();
    EXPECT_TRUE(text == before || text == clock(c.offset, c.format)) << text;  // the call may cross a tick
  }
  const struct { int month; const wchar_t* name; } months[] = {{1, L"Jan"}, {12, L"Dec"}, {0, L""}, {13, L""}};
  for (const auto& c : months) EXPECT_EQ(GetEnglishNameOfMonth(c.month), c.name) << c.month;
}
