#include "chartcore/foundation/datetime.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/system.h"

namespace {

// Days since 1970-01-01 of a proleptic Gregorian date, computed without the
// library's text or OLE paths (the civil-days algorithm).
std::int64_t DaysFromCivil(int y, int m, int d) {
  y -= m <= 2 ? 1 : 0;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void CivilFromDays(std::int64_t z, int& y, int& m, int& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(yoe + era * 400 + (m <= 2 ? 1 : 0));
}

// 1 = Sunday ... 7 = Saturday; 1970-01-01 was a Thursday.
int Weekday(std::int64_t days) { return static_cast<int>(((days % 7) + 7 + 4) % 7) + 1; }

bool ZoneIsSeoul() {
  const char* tz = std::getenv("TZ");
  return tz && std::strcmp(tz, "Asia/Seoul") == 0;
}

HRESULT ThrownCode(void (*call)()) {
  try {
    call();
  } catch (const CAtlException& e) {
    return e.m_hr;
  }
  return S_OK;
}

}  // namespace

TEST(DateTimeGetters, FieldsOfBothForms) {
  EXPECT_EQ(GetYear(20240115), 2024);
  EXPECT_EQ(GetYear2(20240115), 24);
  EXPECT_EQ(GetMonth(20240115), 1);
  EXPECT_EQ(GetDate(20240115), 15);
  EXPECT_EQ(GetDay(20240115), 240115);  // YYMMDD, not the day of the month
  EXPECT_EQ(GetYearMonthDay(20240115), 20240115);
  const double t = 20240115093045.0;
  EXPECT_EQ(GetYear(t), 2024);
  EXPECT_EQ(GetMonth(t), 1);
  EXPECT_EQ(GetDate(t), 15);
  EXPECT_EQ(GetDay(t), 240115);
  EXPECT_EQ(GetYearMonthDay(t), 20240115);
  EXPECT_EQ(GetHour(t), 9);
  EXPECT_EQ(GetMinute(t), 30);
  EXPECT_EQ(GetSecond(t), 45);
  EXPECT_EQ(GetTime(t), 93045);
  EXPECT_EQ(GetHalfHour(20240115093000.0), 930);
  EXPECT_EQ(GetHalfHour(20240115092959.0), 900);
  for (auto getter : {GetHour, GetMinute, GetSecond, GetHalfHour, GetTime}) EXPECT_EQ(getter(20240115), 0);
}

TEST(DateTimeGetters, ThresholdAndBiases) {
  // Exactly 1e8 is a date; one more is a date and time.
  EXPECT_EQ(GetHour(100000000), 0);
  EXPECT_EQ(GetTime(100000000), 0);
  EXPECT_EQ(GetCompSecond(100000000), 0);
  EXPECT_EQ(GetTime(100000001), 1);
  EXPECT_EQ(GetSecond(100000001), 1);
  EXPECT_EQ(GetCompSecond(100000001), 1);
  EXPECT_EQ(GetYear(100000001), 0);  // the date part is 100.000001
  // Just below a date: the 0.0001 and 0.5 biases lift it, 0.000001 does not.
  const double below = 20240115 - 1e-5;
  EXPECT_EQ(GetYear(below), 2024);
  EXPECT_EQ(GetDate(below), 15);
  EXPECT_EQ(GetCompDate(below), 20240115);
  EXPECT_EQ(GetYearMonthDay(below), 20240114);
  EXPECT_EQ(GetDay(below), 240114);
  // Just below midnight in the 14-digit form: the date part gets its bias,
  // the time part has none, so the time reads 99:99:99.
  const double beforeMidnight = std::nextafter(20240115000000.0, 0.0);
  EXPECT_EQ(GetYearMonthDay(beforeMidnight), 20240115);
  EXPECT_EQ(GetDate(beforeMidnight), 15);
  EXPECT_EQ(GetTime(beforeMidnight), 999999);
  EXPECT_EQ(GetHour(beforeMidnight), 99);
  EXPECT_EQ(GetTime(std::nextafter(20240115093000.0, 0.0)), 92999);
  // The 0.5 of GetDate rounds past the month's last day: no validation.
  EXPECT_EQ(GetDate(20231231.99995), 32);
  EXPECT_EQ(GetMonth(20231231.99995), 12);
  // Garbage never faults: out-of-range truncation gives INT_MIN.
  EXPECT_EQ(GetYear(1e300), INT_MIN / 10000);
  EXPECT_EQ(GetYear(std::nan("")), INT_MIN / 10000);
  EXPECT_EQ(GetTime(1e300), INT_MIN);
  EXPECT_EQ(GetCompMinute(std::nan("")), 0);  // NaN is not above 1e8
}

TEST(DateTimeKeys, SameKeyExactlyWithinTheUnit) {
  EXPECT_EQ(GetCompYear(20241231235959.0), 2024);
  EXPECT_EQ(GetCompMonth(20240115), 202401);
  EXPECT_EQ(GetCompMonth(20240115093000.0), 202401);
  EXPECT_EQ(GetCompDate(20240115093000.0), 20240115);
  EXPECT_EQ(GetCompDate(20240115235959.0), 20240115);  // 0.5 + 0.235959 stays in the day
  EXPECT_EQ(GetCompHalfHour(20240115093000.0), 150930);
  EXPECT_EQ(GetCompHalfHour(20240115092959.0), 150900);
  EXPECT_EQ(GetCompHalfHour(20240115), 0);
  // Keys below the day carry no date: the same hour of two days is equal.
  EXPECT_EQ(GetCompHour(20240115093000.0), 9);
  EXPECT_EQ(GetCompHour(20240116093000.0), 9);
  EXPECT_EQ(GetCompMinute(20240115093059.0), 930);
  EXPECT_EQ(GetCompMinute(20240115093100.0), 931);
  EXPECT_EQ(GetCompSecond(20240115093059.0), 93059);
  for (auto key : {GetCompHour, GetCompMinute, GetCompSecond}) EXPECT_EQ(key(20240115), 0);
}

TEST(DateTimeCalendar, AgreesWithCivilDayCounts) {
  // Every day from 1901 to 2099 in both forms.
  for (std::int64_t days = DaysFromCivil(1901, 1, 1); days <= DaysFromCivil(2099, 12, 31); ++days) {
    int y = 0, m = 0, d = 0;
    CivilFromDays(days, y, m, d);
    const double date = y * 10000.0 + m * 100 + d;
    const int doy = static_cast<int>(days - DaysFromCivil(y, 1, 1)) + 1;
    ASSERT_EQ(GetDayOfWeek(date), Weekday(days)) << date;
    ASSERT_EQ(GetDayOfWeek(date * 1e6 + 235959), Weekday(days)) << date;
    ASSERT_EQ(GetDayOfYear(date), doy) << date;
    ASSERT_EQ(GetWeekOfYear(date), doy / 7 + 1) << date;
    // Weeks of the month start at 1 and move on exactly on Sundays.
    const int week = GetWeekOfMonth(date);
    if (d == 1) {
      ASSERT_EQ(week, 1) << date;
    } else {
      ASSERT_EQ(week, GetWeekOfMonth(date - 1) + (Weekday(days) == 1 ? 1 : 0)) << date;
    }
  }
}

TEST(DateTimeCalendar, ShortTextsAndFailedConversions) {
  EXPECT_EQ(GetDayOfWeek(20240114), 1);  // a Sunday
  EXPECT_EQ(GetDayOfWeek(20240115), 2);
  EXPECT_EQ(GetDayOfWeek(1234567), -1);  // seven characters
  EXPECT_EQ(GetDayOfYear(1234567), -1);
  EXPECT_EQ(GetWeekOfMonth(1234567), -1);
  EXPECT_EQ(GetWeekOfYear(1234567), -1);
  EXPECT_EQ(GetWeekOfYear(20240106), 1);
  EXPECT_EQ(GetWeekOfYear(20240107), 2);
  EXPECT_EQ(GetWeekOfMonth(20240505), 2);  // May 2024 begins on a Wednesday
  EXPECT_EQ(GetWeekOfMonth(20240504), 1);
  EXPECT_EQ(GetDayOfYear(20241231), 366);
  EXPECT_EQ(GetDayOfYear(20240231), 62);   // the 31st of February rolls into March
  EXPECT_EQ(GetDayOfYear(20241301), -1);   // month 13: the conversion fails
  EXPECT_EQ(GetWeekOfYear(20241301), 1);   // ... and counts as day -1
  EXPECT_EQ(GetDayOfYear(20240132), -1);
  EXPECT_EQ(GetDayOfWeek(20240114.5), 2);  // printed rounded: 20240115
  EXPECT_EQ(GetDayOfWeek(-1234567), 6);  // "-1234567": year -123, month 45, day 67
}

TEST(DateTimeCalendar, GetWeekKeepsItsYearBeforeQuirk) {
  // The fields come out as month -1 (or 0) and day 0 of the value's year:
  // November 30th (or December 31st) of the year before.
  EXPECT_EQ(GetWeek(20240115), 5);  // 2023-11-30, a Thursday
  EXPECT_EQ(GetWeek(20240701), 5);  // the same day for every date of 2024
  EXPECT_EQ(GetWeek(20231231), 4);  // 2022-11-30, a Wednesday
  EXPECT_EQ(GetWeek(20480208), 3);  // month 0 here: 2047-12-31, a Tuesday
  EXPECT_EQ(GetWeek(20240115093000.0), 0);  // a year no local time holds
  EXPECT_EQ(GetWeek(1e300), 0);
}

TEST(DateTimeStepping, NextDayAndCalendarTimes) {
  EXPECT_EQ(GetNextYearMonthDay(20241231), 20250101);
  EXPECT_EQ(GetNextYearMonthDay(20240228), 20240229);
  EXPECT_EQ(GetNextYearMonthDay(20230228), 20230301);
  EXPECT_EQ(GetNextYearMonthDay(20240115235959.0), 20240116);  // the time is dropped
  EXPECT_EQ(GetNextYearMonthDay(19500101), 19500102);          // before 1970 too
  EXPECT_EQ(GetNextYearMonthDay(19000101), 19000102);
  EXPECT_EQ(GetNextYearMonthDay(20240231), 20240303);          // day 31 passes, the runtime rolls it
  for (std::int64_t days = DaysFromCivil(1990, 1, 1); days <= DaysFromCivil(2060, 12, 31); days += 3) {
    int y = 0, m = 0, d = 0;
    CivilFromDays(days, y, m, d);
    int ny = 0, nm = 0, nd = 0;
    CivilFromDays(days + 1, ny, nm, nd);
    ASSERT_EQ(GetNextYearMonthDay(y * 10000.0 + m * 100 + d), ny * 10000 + nm * 100 + nd);
  }
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115093045.0, 60, 2), 20240115093100.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115093045.0, 60, 3), 20240115090100.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115093045.0, 60, 1), 20240115093145.0);  // no other code aligns
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115093045.0, -36000, 0), 20240114233045.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240131235959.0, 1, 0), 20240201000000.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20231231235959.0, 1, 0), 20240101000000.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240228120000.0, 86400, 0), 20240229120000.0);
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115, 90, 0), 20240115000130.0);  // date only: from midnight
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115096000.0, 0, 3), 20240115090000.0);  // aligned before checked
}

TEST(DateTimeStepping, LocalZoneDecidesTheDay) {
  if (!ZoneIsSeoul()) GTEST_SKIP() << "needs TZ=Asia/Seoul";
  // 1987-10-11 had 25 hours in Seoul: midnight plus 86,400 s is still that day.
  EXPECT_EQ(GetNextYearMonthDay(19871011), 19871011);
  EXPECT_EQ(GetNextYearMonthDay(19870510), 19870511);  // the 23-hour day
  // Seoul kept UTC+8:30 in 1955; the seconds are sign-extended.
  EXPECT_DOUBLE_EQ(CalcNextDateTime(20240115, INT_MIN, 0), 19551227201552.0);
}

TEST(DateTimeStepping, BuildersRaiseComErrors) {
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(18991231); }), E_FAIL);  // year below 1900
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(20241301); }), E_FAIL);  // month 13
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(20240100); }), E_FAIL);  // day 0
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(30011231); }), E_INVALIDARG);  // past the last year
  EXPECT_EQ(ThrownCode([] { GetNextYearMonthDay(30001231); }), E_INVALIDARG);  // the next day is
  EXPECT_EQ(ThrownCode([] { CalcNextDateTime(20240115240000.0, 0, 0); }), E_FAIL);  // hour 24
  EXPECT_EQ(ThrownCode([] { CalcNextDateTime(20240115096000.0, 0, 2); }), E_FAIL);  // minute 60 stays
  EXPECT_EQ(ThrownCode([] { CalcNextDateTime(20240115093060.0, 0, 0); }), E_FAIL);
  EXPECT_EQ(ThrownCode([] { CalcNextDateTime(1e300, 0, 0); }), E_FAIL);
  EXPECT_EQ(ThrownCode([] { GetNextCycleTime(235500, 0, 10); }), E_FAIL);  // 24:05 rolls over: no year
  EXPECT_EQ(ThrownCode([] { GetNextCycleTime(235930, 1, 0); }), E_FAIL);
}

TEST(DateTimeStepping, CycleTimesAndCounts) {
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93045, 1, 0), 93115.0);
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93030, 1, 0), 93100.0);
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93045, 0, 10), 94045.0);
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93045, 7, 75), 104545.0);  // any other kind steps minutes
  EXPECT_DOUBLE_EQ(GetNextCycleTime(245500, 0, 10), 250500.0);  // 25 is returned as it is
  EXPECT_DOUBLE_EQ(GetNextCycleTime(1093000, 0, 30), 1100000.0);  // higher digits carried over
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93000, 0, -40), 89000.0);    // truncating int arithmetic
  EXPECT_DOUBLE_EQ(GetNextCycleTime(93000, 0, INT_MAX), 357914033700.0);  // no int overflow

  EXPECT_EQ(GetDiffCycleCount(20240115093000.0, 90000, 153000, 1, 60), 31);
  // 100000 - 93000 = 7000 reads as 70 minutes, not 30.
  EXPECT_EQ(GetDiffCycleCount(20240115100000.0, 93000, 153000, 1, 60), 71);
  EXPECT_EQ(GetDiffCycleCount(20240115100000.0, 93000, 153000, 2, 60), 361 + 71);
  EXPECT_EQ(GetDiffCycleCount(20240115093000.0, 90000, 153000, 1, 0), -1);
  EXPECT_EQ(GetDiffCycleCount(20240115, 90000, 153000, 1, 60), -1499);  // no time: 0 - 90000
  // Overflowing differences wrap as 32-bit ints; INT_MIN / -1 does not fault.
  EXPECT_EQ(GetDiffCycleCount(20240115093000.0, INT_MIN, INT_MAX, INT_MAX, -1), 2147390645);

  EXPECT_EQ(GetSecToTime(3599), 5959);
  EXPECT_EQ(GetSecToTime(3600), 10000);
  EXPECT_EQ(GetSecToTime(90000), 250000);  // hours past 24 stay
  EXPECT_EQ(GetSecToTime(-5), -5);
  EXPECT_EQ(GetSecToTime(INT_MAX), 1670264111);  // 596523:14:07 wraps as the int did
  EXPECT_EQ(GetTimeToSec(93000), 34200);
  EXPECT_EQ(GetTimeToSec(199), 159);  // seconds are not validated
  EXPECT_EQ(GetTimeToSec(-100), -100);
  for (int s = 0; s < 360000; s += 7) ASSERT_EQ(GetTimeToSec(GetSecToTime(s)), s);
}

TEST(DateTimeClock, TextsOfNowAndMonthNames) {
  const auto dateOf = [](std::int64_t offset) {
    const __time64_t when = _time64(nullptr) + offset;
    struct tm t = {};
    _localtime64_s(&t, &when);
    char buf[48];
    std::snprintf(buf, sizeof buf, "%04d%02d%02d", t.tm_year + 1900, t.tm_mon + 1, t.tm_mday);
    return std::wstring(buf, buf + 8);
  };
  for (const auto& [text, offset] : {std::make_pair(GetToday(), 0), std::make_pair(GetNextDay(), 86400),
                                     std::make_pair(GetPrevDay(), -86400)}) {
    const std::wstring before = dateOf(offset);
    EXPECT_TRUE(text.str() == before || text.str() == dateOf(offset)) << offset;  // may cross midnight
  }
  const std::wstring now = GetCurrentLocalTime().str();
  ASSERT_EQ(now.size(), 6u);
  EXPECT_LE(now, L"235959");
  EXPECT_EQ(now.find_first_not_of(L"0123456789"), std::wstring::npos);
  EXPECT_EQ(GetEnglishNameOfMonth(1).str(), L"Jan");
  EXPECT_EQ(GetEnglishNameOfMonth(5).str(), L"May");
  EXPECT_EQ(GetEnglishNameOfMonth(12).str(), L"Dec");
  EXPECT_TRUE(GetEnglishNameOfMonth(0).IsEmpty());
  EXPECT_TRUE(GetEnglishNameOfMonth(13).IsEmpty());
  EXPECT_TRUE(GetEnglishNameOfMonth(INT_MIN).IsEmpty());
}
