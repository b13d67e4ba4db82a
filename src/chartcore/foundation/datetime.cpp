#include "chartcore/foundation/datetime.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/int_conversion_internal.h"
#include "chartcore/platform/oledate.h"
#include "chartcore/platform/system.h"

namespace {

// The threshold between YYYYMMDD and YYYYMMDDhhmmss; exactly 1e8 is a date.
constexpr double kDateTimeThreshold = 100000000.0;
// The latest year the local-time builders represent, as the original runtime.
constexpr int kLastLocalYear = 3000;

using chartcore::internal::TruncateToInt;
using chartcore::internal::WrapToInt32;

// d(v): the date part as a real number, YYYYMMDD.hhmmss for a date-time value.
inline double DatePart(double v) { return v > kDateTimeThreshold ? v / 1000000.0 : v; }

// t(v): the time part of a date-time value (only called when v > 1e8).
inline double TimePart(double v) {
  return v - 1000000.0 * static_cast<double>(TruncateToInt(v / 1000000.0));
}

// s: the biased hhmmss that the hour, minute and second getters split.
inline int BiasedTime(double v) { return TruncateToInt(TimePart(v) + 0.0001); }

// Reads up to `count` characters like _wtoi: optional blanks, a sign, digits.
int ReadInt(const CString& text, int first, int count) {
  int i = first;
  const int end = first + count;
  while (i < end && (text[i] == L' ' || text[i] == L'\t')) ++i;
  bool negative = false;
  if (i < end && (text[i] == L'-' || text[i] == L'+')) negative = text[i++] == L'-';
  int n = 0;
  for (; i < end && text[i] >= L'0' && text[i] <= L'9'; ++i) n = n * 10 + (text[i] - L'0');
  return negative ? -n : n;
}

// The calendar fields as the text functions read them: the value printed with
// no decimals, characters 1-4, 5-6 and 7-8. False for a text below 8 chars.
bool ReadDateText(double v, int& year, int& month, int& day) {
  CString text;
  text.Format(L"%.lf", v);
  if (text.GetLength() < 8) return false;
  year = ReadInt(text, 0, 4);
  month = ReadInt(text, 4, 2);
  day = ReadInt(text, 6, 2);
  return true;
}

// Fills a SYSTEMTIME; out-of-range fields wrap to WORD as the original's
// assignments did, and the OLE conversion then refuses them.
SYSTEMTIME MakeSystemTime(int year, int month, int day, int hms) {
  SYSTEMTIME st = {};
  st.wYear = static_cast<WORD>(year);
  st.wMonth = static_cast<WORD>(month);
  st.wDay = static_cast<WORD>(day);
  st.wHour = static_cast<WORD>(hms);
  st.wMinute = static_cast<WORD>(hms);
  st.wSecond = static_cast<WORD>(hms);
  return st;
}

// Day of the year through an OLE date, or -1 when a conversion fails.
int OleDayOfYear(int year, int month, int day) {
  SYSTEMTIME st = MakeSystemTime(year, month, day, 1);
  DATE date = 0;
  if (!SystemTimeToVariantTime(&st, &date)) return -1;
  UDATE ud = {};
  if (FAILED(VarUdateFromDate(date, 0, &ud))) return -1;
  return ud.wDayOfYear;
}

// Local calendar time of the fields, validated as the builders require.
__time64_t BuildLocalTime(int year, int month, int day, int hour, int minute, int second) {
  if (year < 1900 || month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 || hour > 23 ||
      minute < 0 || minute > 59 || second < 0 || second > 59) {
    AtlThrow(E_FAIL);
  }
  if (year > kLastLocalYear) AtlThrow(E_INVALIDARG);
  struct tm t = {};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_isdst = -1;
  t.tm_wday = -1;  // left alone only by a failed conversion (-1 is a real time)
  const __time64_t result = _mktime64(&t);
  if (result == -1 && t.tm_wday == -1) AtlThrow(E_INVALIDARG);
  return result;
}

// The local breakdown of a time into the caller's struct; false on failure.
bool LocalTime(__time64_t when, struct tm& out) { return _localtime64_s(&out, &when) == 0; }

// Local breakdown of a builder's result; unrepresentable gives E_INVALIDARG.
struct tm BreakDownLocal(__time64_t when) {
  struct tm t = {};
  if (!LocalTime(when, t) || t.tm_year + 1900 > kLastLocalYear) AtlThrow(E_INVALIDARG);
  return t;
}

CString LocalDateText(std::int64_t offsetSeconds) {
  const __time64_t when = _time64(nullptr) + offsetSeconds;
  struct tm t = {};
  CString year(L"0"), month(L"0"), day(L"0");
  if (LocalTime(when, t)) {
    day.Format(L"%d", t.tm_mday);
    month.Format(L"%d", t.tm_mon + 1);
    year.Format(L"%d", t.tm_year + 1900);
  }
  CString text;
  text.Format(L"%4s%02s%02s", year.GetString(), month.GetString(), day.GetString());
  return text;
}

}  // namespace

// ---------------------------------------------------------------------------
// Field getters
// ---------------------------------------------------------------------------

int GetYear(double value) { return TruncateToInt(DatePart(value) + 0.0001) / 10000; }

int GetYear2(double value) { return GetYear(value) % 100; }

int GetMonth(double value) { return (TruncateToInt(DatePart(value) + 0.0001) % 10000) / 100; }

int GetDate(double value) { return TruncateToInt(DatePart(value) + 0.5) % 100; }

int GetDay(double value) { return TruncateToInt(DatePart(value) + 0.000001) % 1000000; }

int GetYearMonthDay(double value) { return TruncateToInt(DatePart(value) + 0.000001); }

int GetHour(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return (BiasedTime(value) % 1000000) / 10000;
}

int GetMinute(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return (BiasedTime(value) % 10000) / 100;
}

int GetSecond(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return BiasedTime(value) % 100;
}

int GetHalfHour(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return GetHour(value) * 100 + (GetMinute(value) < 30 ? 0 : 30);
}

int GetTime(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return TruncateToInt(TimePart(value));
}

// ---------------------------------------------------------------------------
// Comparison keys
// ---------------------------------------------------------------------------

int GetCompYear(double value) { return TruncateToInt(DatePart(value) + 0.0001) / 10000; }

int GetCompMonth(double value) { return TruncateToInt(DatePart(value) + 0.0001) / 100; }

int GetCompDate(double value) { return TruncateToInt(DatePart(value) + 0.5); }

int GetCompHalfHour(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return (GetDate(value) * 100 + GetHour(value)) * 100 + (GetMinute(value) < 30 ? 0 : 30);
}

int GetCompHour(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return BiasedTime(value) / 10000;
}

int GetCompMinute(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return BiasedTime(value) / 100;
}

int GetCompSecond(double value) {
  if (!(value > kDateTimeThreshold)) return 0;
  return BiasedTime(value);
}

// ---------------------------------------------------------------------------
// Calendar
// ---------------------------------------------------------------------------

int GetDayOfWeek(double value) {
  int y = 0, m = 0, d = 0;
  if (!ReadDateText(value, y, m, d)) return -1;
  if (m < 3) {
    y -= 1;
    m += 12;
  }
  const int w = (d + (13 * m + 8) / 5 + y + y / 4 - y / 100 + y / 400) % 7;
  return w + 1;
}

int GetDayOfYear(double value) {
  int y = 0, m = 0, d = 0;
  if (!ReadDateText(value, y, m, d)) return -1;
  return OleDayOfYear(y, m, d);
}

int GetWeekOfMonth(double value) {
  int y = 0, m = 0, d = 0;
  if (!ReadDateText(value, y, m, d)) return -1;
  int first = -1;  // weekday of the 1st, 1 = Sunday
  SYSTEMTIME st = MakeSystemTime(y, m, 1, 0);
  DATE date = 0;
  SYSTEMTIME back = {};
  if (SystemTimeToVariantTime(&st, &date) && VariantTimeToSystemTime(date, &back)) first = back.wDayOfWeek + 1;
  const int n = d - 1 + first;
  return n / 7 + (n % 7 >= 1 ? 1 : 0);
}

int GetWeekOfYear(double value) {
  int y = 0, m = 0, d = 0;
  if (!ReadDateText(value, y, m, d)) return -1;
  return OleDayOfYear(y, m, d) / 7 + 1;
}

int GetWeek(double value) {
  struct tm t = {};
  if (!LocalTime(_time64(nullptr), t)) return 0;
  // The value as "%.lf" prints it and reads back: rounded half away from zero.
  const double x = std::round(value);
  // Deliberately untruncated: the month and day come out as -1 or 0.
  const double a = x / 10000.0 * 10000.0;
  const double b = x / 100.0 * 100.0;
  t.tm_year = TruncateToInt((a - 19000000.0) / 10000.0);
  t.tm_mon = TruncateToInt((b - a) / 100.0 - 1.0);
  t.tm_mday = TruncateToInt(x - b);
  t.tm_wday = -1;
  const __time64_t when = _mktime64(&t);
  if (when == -1 && t.tm_wday == -1) return 0;
  if (t.tm_year < 0 || t.tm_year > kLastLocalYear - 1900) return 0;
  return t.tm_wday + 1;
}

// ---------------------------------------------------------------------------
// Stepping and counting
// ---------------------------------------------------------------------------

int GetNextYearMonthDay(double value) {
  const __time64_t midnight = BuildLocalTime(GetYear(value), GetMonth(value), GetDate(value), 0, 0, 0);
  const struct tm t = BreakDownLocal(midnight + 86400);
  return (t.tm_year + 1900) * 10000 + (t.tm_mon + 1) * 100 + t.tm_mday;
}

double CalcNextDateTime(double value, int seconds, int align) {
  int minute = GetMinute(value);
  int second = GetSecond(value);
  if (align == 3) {
    minute = 0;
    second = 0;
  } else if (align == 2) {
    second = 0;
  }
  const __time64_t start =
      BuildLocalTime(GetYear(value), GetMonth(value), GetDate(value), GetHour(value), minute, second);
  const struct tm t = BreakDownLocal(start + static_cast<__time64_t>(seconds));
  return static_cast<double>(t.tm_year + 1900) * 1e10 + static_cast<double>(t.tm_mon + 1) * 1e8 +
         static_cast<double>(t.tm_mday) * 1e6 + static_cast<double>(t.tm_hour) * 1e4 +
         static_cast<double>(t.tm_min) * 100.0 + static_cast<double>(t.tm_sec);
}

double GetNextCycleTime(int time, int kind, int minutes) {
  const double v = static_cast<double>(time);
  const double hms = std::fmod(v, 1000000.0);
  const std::int64_t hh = TruncateToInt(hms) / 10000;
  const int below = TruncateToInt(std::fmod(v, 10000.0));
  std::int64_t mm = below / 100;
  std::int64_t ss = below % 100;
  std::int64_t carry = minutes;
  if (kind == 1) {
    ss += 30;
    carry = ss / 60;
    ss %= 60;
  }
  mm += carry;
  const std::int64_t hour = hh + mm / 60;
  mm %= 60;
  if (hour != 24) return static_cast<double>((hour * 100 + mm) * 100 + ss) + (v - hms);

  // Midnight rolls the date held in the higher digits over.
  const int year = TruncateToInt(v / 1e10);
  const int month = TruncateToInt(std::fmod(v, 1e10) / 1e8);
  const int day = TruncateToInt(std::fmod(v, 1e8) / 1e6);
  const __time64_t start = BuildLocalTime(year, month, day, 0, static_cast<int>(mm), static_cast<int>(ss));
  const struct tm t = BreakDownLocal(start + 86400);
  return static_cast<double>(t.tm_mon + 1) * 1e8 + static_cast<double>(t.tm_year + 1900) * 1e10 +
         static_cast<double>(t.tm_mday) * 1e6 + static_cast<double>(t.tm_min) * 100.0 +
         static_cast<double>(t.tm_sec);
}

int GetDiffCycleCount(double value, int start, int end, int day, int cycle) {
  if (cycle == 0) return -1;
  const std::int64_t a =
      static_cast<std::int64_t>(GetTimeToSec(WrapToInt32(static_cast<std::int64_t>(GetTime(value)) - start))) / cycle + 1;
  const std::int64_t b =
      static_cast<std::int64_t>(GetTimeToSec(WrapToInt32(static_cast<std::int64_t>(end) - start))) / cycle + 1;
  return WrapToInt32(WrapToInt32(b) * (static_cast<std::int64_t>(day) - 1) + WrapToInt32(a));
}

int GetSecToTime(int seconds) {
  std::int64_t n = seconds;
  std::int64_t h = 0;
  if (n >= 3600) {
    h = n / 3600;
    n -= h * 3600;
  }
  if (n < 60) return WrapToInt32(h * 10000 + n);
  const std::int64_t m = n / 60;
  const std::int64_t s = n - m * 60;
  return WrapToInt32((h * 100 + m) * 100 + s);
}

int GetTimeToSec(int time) {
  std::int64_t n = time;
  std::int64_t h = 0;
  if (n >= 10000) {
    h = n / 10000;
    n -= h * 10000;
  }
  if (n < 100) return WrapToInt32(h * 3600 + n);
  const std::int64_t m = n / 100;
  return WrapToInt32((n - m * 100) + (h * 60 + m) * 60);
}

// ---------------------------------------------------------------------------
// Clock and names
// ---------------------------------------------------------------------------

CString GetToday() { return LocalDateText(0); }

CString GetNextDay() { return LocalDateText(86400); }

CString GetPrevDay() { return LocalDateText(-86400); }

CString GetCurrentLocalTime() {
  struct tm t = {};
  CString hour(L"-1"), minute(L"-1"), second(L"-1");
  if (LocalTime(_time64(nullptr), t)) {
    hour.Format(L"%d", t.tm_hour);
    minute.Format(L"%d", t.tm_min);
    second.Format(L"%d", t.tm_sec);
  }
  CString text;
  text.Format(L"%02s%02s%02s", hour.GetString(), minute.GetString(), second.GetString());
  return text;
}

CString GetEnglishNameOfMonth(int month) {
  static const wchar_t* const kNames[12] = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                            L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
  if (month < 1 || month > 12) return CString();
  return CString(kNames[month - 1]);
}
