// OLE automation dates: the DATE value and its conversions to and from
// calendar fields (SYSTEMTIME, UDATE).
//
// A DATE is a double counting days from 1899-12-30 (day 0); the fraction is
// the time of day. Before day 0 the integer part is still the day and the
// fraction's absolute value the time, so -1.25 is 1899-12-29 06:00. Valid
// dates run from 100-01-01 to 9999-12-31. The conversions are computed
// arithmetically on the proleptic Gregorian calendar; on Windows they are the
// system's own.
//
//   SYSTEMTIME st = {};
//   VariantTimeToSystemTime(45292.5, &st);   // 2024-01-01 12:00:00, a Monday
#ifndef CHARTCORE_PLATFORM_OLEDATE_H_
#define CHARTCORE_PLATFORM_OLEDATE_H_

#include "chartcore/platform/types.h"

#if defined(_WIN32)
#include <oleauto.h>
#else

// ---------------------------------------------------------------------------
// Calendar field records
// ---------------------------------------------------------------------------

typedef WORD USHORT;

// SYSTEMTIME: calendar fields; wMonth 1-12, wDayOfWeek 0 = Sunday.
struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};
typedef SYSTEMTIME* LPSYSTEMTIME;

// UDATE: SYSTEMTIME plus the day of the year (1-366).
struct UDATE {
  SYSTEMTIME st;
  USHORT wDayOfYear;
};

// Flags of VarDateFromUdate: keep only the time or only the date part.
constexpr ULONG VAR_TIMEVALUEONLY = 0x00000001;
constexpr ULONG VAR_DATEVALUEONLY = 0x00000002;

// ---------------------------------------------------------------------------
// Fields to DATE
// ---------------------------------------------------------------------------

// VarDateFromUdate: the DATE of the fields in pudateIn->st (day of week, day
// of year and milliseconds are ignored), normalised as Windows does: a
// two-digit year 0-29 means 2000-2029 and 30-99 means 1930-1999; a month of 0
// is December of the year before and months past 12 run into the following
// years; a day of 0 is the last day of the month before and days past the
// month's end run into the following months (2023-02-29 is 2023-03-01);
// hours, minutes and seconds past their range run into the following days.
// Returns S_OK, or E_INVALIDARG (leaving *pdateOut alone) for a year above
// 9999 or a null pointer.
CHARTCORE_API HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut);

// SystemTimeToVariantTime: the same for a SYSTEMTIME, except that a month
// above 12 or a day above 31 fails; TRUE on success, FALSE on failure.
CHARTCORE_API INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, double* pvtime);

// ---------------------------------------------------------------------------
// DATE to fields
// ---------------------------------------------------------------------------

// VarUdateFromDate: the calendar fields of a DATE, the time rounded to the
// nearest second (wMilliseconds is 0), with the day of week (0 = Sunday) and
// the day of year filled in. dwFlags is accepted and ignored. E_INVALIDARG
// for a DATE outside 100-01-01 .. 9999-12-31 23:59:59, a NaN or a null
// pointer.
CHARTCORE_API HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut);

// VariantTimeToSystemTime: the same into a SYSTEMTIME; TRUE or FALSE.
CHARTCORE_API INT VariantTimeToSystemTime(double vtime, LPSYSTEMTIME lpSystemTime);

#endif  // !_WIN32

#endif  // CHARTCORE_PLATFORM_OLEDATE_H_
