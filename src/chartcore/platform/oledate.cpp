#include "chartcore/platform/oledate.h"

#if !defined(_WIN32)

#include <cmath>
#include <cstdint>

namespace {

// Day 0 of the OLE calendar, 1899-12-30, is 25569 days before 1970-01-01.
constexpr std::int64_t kOleDayOfUnixEpoch = 25569;
// 100-01-01 and 9999-12-31, the first and last valid days.
constexpr std::int64_t kFirstOleDay = -657434;
constexpr std::int64_t kLastOleDay = 2958465;
constexpr std::int64_t kSecondsPerDay = 86400;

// Days from 1970-01-01 to y-m-d on the proleptic Gregorian calendar (month
// 1-12, any year), by the era-based method.
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, std::int64_t& y, unsigned& m, unsigned& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = doy - (153 * mp + 2) / 5 + 1;
  m = mp < 10 ? mp + 3 : mp - 9;
  y = static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2);
}

std::int64_t OleDay(std::int64_t y, unsigned m, unsigned d) { return DaysFromCivil(y, m, d) + kOleDayOfUnixEpoch; }


std::int64_t FloorDiv(std::int64_t a, std::int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

// Builds a DATE from fields, normalising every field that runs over: the
// month into the following years, the day into the following months, the
// time into the following days. Only a year above 9999 fails.
HRESULT BuildDate(const SYSTEMTIME& st, ULONG dwFlags, DATE* pdateOut) {
  std::int64_t year = st.wYear;
  if (year <= 29) year += 2000;
  else if (year <= 99) year += 1900;
  if (year > 9999) return E_INVALIDARG;
  // Month 0 is December of the year before.
  std::int64_t month = static_cast<std::int64_t>(st.wMonth) - 1;
  year += FloorDiv(month, 12);
  month -= 12 * FloorDiv(month, 12);
  // Counting from the month's first day makes day 0 the last day of the
  // month before and lets days past the month's end run into the next.
  std::int64_t day = OleDay(year, static_cast<unsigned>(month + 1), 1) + st.wDay - 1;
  std::int64_t seconds = st.wHour * std::int64_t{3600} + st.wMinute * std::int64_t{60} + st.wSecond;
  day += seconds / kSecondsPerDay;
  seconds %= kSecondsPerDay;
  const double time = static_cast<double>(seconds) / kSecondsPerDay;
  DATE result;
  if (dwFlags & VAR_TIMEVALUEONLY) result = time;
  else if (dwFlags & VAR_DATEVALUEONLY) result = static_cast<double>(day);
  else result = day >= 0 ? static_cast<double>(day) + time : static_cast<double>(day) - time;
  *pdateOut = result;
  return S_OK;
}

}  // namespace

HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut) {
  if (!pudateIn || !pdateOut) return E_INVALIDARG;
  return BuildDate(pudateIn->st, dwFlags, pdateOut);
}

INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, double* pvtime) {
  if (!lpSystemTime || !pvtime) return FALSE;
  // Unlike VarDateFromUdate, a month above 12 or a day above 31 is refused.
  if (lpSystemTime->wMonth > 12 || lpSystemTime->wDay > 31) return FALSE;
  return BuildDate(*lpSystemTime, 0, pvtime) == S_OK ? TRUE : FALSE;
}

HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut) {
  (void)dwFlags;
  if (!pudateOut) return E_INVALIDARG;
  // Before day 0 a day's times lie below its number: 100-01-01 12:00 is
  // -657434.5, so the first day ends the range at -657435 exclusive.
  if (!(dateIn > static_cast<double>(kFirstOleDay - 1) && dateIn < static_cast<double>(kLastOleDay + 1))) {
    return E_INVALIDARG;
  }
  // The integer part is the day whatever the sign; the fraction's magnitude
  // is the time of day.
  const double whole = std::trunc(dateIn);
  std::int64_t day = static_cast<std::int64_t>(whole);
  std::int64_t seconds = std::llround(std::fabs(dateIn - whole) * kSecondsPerDay);
  if (seconds >= kSecondsPerDay) {
    seconds -= kSecondsPerDay;
    ++day;
  }
  if (day > kLastOleDay) return E_INVALIDARG;
  std::int64_t y;
  unsigned m, d;
  CivilFromDays(day - kOleDayOfUnixEpoch, y, m, d);
  UDATE u = {};
  u.st.wYear = static_cast<WORD>(y);
  u.st.wMonth = static_cast<WORD>(m);
  u.st.wDay = static_cast<WORD>(d);
  u.st.wDayOfWeek = static_cast<WORD>(((day % 7) + 7 + 6) % 7);  // day 0 was a Saturday
  u.st.wHour = static_cast<WORD>(seconds / 3600);
  u.st.wMinute = static_cast<WORD>(seconds / 60 % 60);
  u.st.wSecond = static_cast<WORD>(seconds % 60);
  u.st.wMilliseconds = 0;
  u.wDayOfYear = static_cast<USHORT>(day - OleDay(y, 1, 1) + 1);
  *pudateOut = u;
  return S_OK;
}

INT VariantTimeToSystemTime(double vtime, LPSYSTEMTIME lpSystemTime) {
  if (!lpSystemTime) return FALSE;
  UDATE u;
  if (VarUdateFromDate(vtime, 0, &u) != S_OK) return FALSE;
  *lpSystemTime = u.st;
  return TRUE;
}

#endif  // !_WIN32
