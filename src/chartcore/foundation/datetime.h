// Packed date and time values: the encoding every bar date travels in.
//
// A bar's date is a double holding the decimal digits of its calendar fields:
// YYYYMMDD for a date (value <= 1e8) or YYYYMMDDhhmmss for a date and time
// (value > 1e8; exactly 1e8 still counts as a date). Times of day travel as int
// hhmmss and durations as int seconds. The getters and comparison keys are pure
// arithmetic on the double, each with its own small bias against representation
// error; the calendar functions go through text, OLE dates or the C runtime's
// local time, so the TZ environment decides the time zone.
//
//   double bar = 20240115093000.0;
//   GetYear(bar);                       // 2024
//   GetTime(bar);                       // 93000
//   GetCompMinute(bar);                 // 930: same minute bar as 20240115093059
//   CalcNextDateTime(bar, 60, 2);       // 20240115093100.0
#ifndef CHARTCORE_FOUNDATION_DATETIME_H_
#define CHARTCORE_FOUNDATION_DATETIME_H_

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/export.h"

// Every conversion from double to int below truncates toward zero. A double
// outside the int range (or NaN) truncates to INT_MIN, as the x86 conversion
// instruction of the original hosts does, so garbage values give garbage
// fields but never undefined behaviour.

// ---------------------------------------------------------------------------
// Field getters
// ---------------------------------------------------------------------------
// Each works on both forms; the time getters return 0 for a date-only value.
// No field is validated: a month of 13 simply comes out as 13.

// GetYear: YYYY. Bias 0.0001 on the date part.
CHARTCORE_API int GetYear(double value);
// GetYear2: the year modulo 100 (24 for 2024).
CHARTCORE_API int GetYear2(double value);
// GetMonth: MM, 1-12 for a well-formed value. Bias 0.0001.
CHARTCORE_API int GetMonth(double value);
// GetDate: DD, the day of the month. Bias 0.5, which cannot roll the day over
// because the time fraction of the date part stays below 0.24.
CHARTCORE_API int GetDate(double value);
// GetDay: YYMMDD, the date modulo 1,000,000 (240115), not the day of the month.
CHARTCORE_API int GetDay(double value);
// GetYearMonthDay: YYYYMMDD. Bias 0.000001.
CHARTCORE_API int GetYearMonthDay(double value);
// GetHour, GetMinute, GetSecond: hh, mm, ss of a date-time value, else 0.
CHARTCORE_API int GetHour(double value);
CHARTCORE_API int GetMinute(double value);
CHARTCORE_API int GetSecond(double value);
// GetHalfHour: hhmm with the minutes floored to the half hour (930, 900), or 0.
CHARTCORE_API int GetHalfHour(double value);
// GetTime: hhmmss of a date-time value, else 0. The only time getter without a
// bias: the double just below 20240115093000 gives 92999.
CHARTCORE_API int GetTime(double value);

// ---------------------------------------------------------------------------
// Comparison keys
// ---------------------------------------------------------------------------
// Two values give the same key exactly when they fall into the same unit, so a
// scan can tell where a new bar of a compressed period begins. Keys below the
// day carry no date (the half-hour key only the day of the month): callers
// compare them within one trading day only.

// GetCompYear: YYYY.
CHARTCORE_API int GetCompYear(double value);
// GetCompMonth: YYYYMM.
CHARTCORE_API int GetCompMonth(double value);
// GetCompDate: YYYYMMDD (bias 0.5).
CHARTCORE_API int GetCompDate(double value);
// GetCompHalfHour: DDhh00 or DDhh30 (150930 for 2024-01-15 09:30), or 0 for a
// date-only value.
CHARTCORE_API int GetCompHalfHour(double value);
// GetCompHour: hh only; 0 for a date-only value.
CHARTCORE_API int GetCompHour(double value);
// GetCompMinute: hhmm only; 0 for a date-only value.
CHARTCORE_API int GetCompMinute(double value);
// GetCompSecond: hhmmss only; 0 for a date-only value.
CHARTCORE_API int GetCompSecond(double value);

// ---------------------------------------------------------------------------
// Calendar
// ---------------------------------------------------------------------------
// These read the value as text (printed with no decimals, rounded): the first
// four characters are the year, the next two the month and the next two the
// day, so both forms work. A text shorter than 8 characters gives -1.

// GetDayOfWeek: 1 = Sunday ... 7 = Saturday (Gregorian rule); -1 for a short
// value such as 1234567.
CHARTCORE_API int GetDayOfWeek(double value);
// GetDayOfYear: 1 for January 1st ... 365 or 366, through an OLE date; -1 when
// the date cannot be converted (month 13, for instance).
CHARTCORE_API int GetDayOfYear(double value);
// GetWeekOfMonth: the week of the month, weeks running Sunday to Saturday, the
// week holding the 1st being week 1 (20240505 gives 2).
CHARTCORE_API int GetWeekOfMonth(double value);
// GetWeekOfYear: day of year / 7 + 1, a plain division not aligned to any
// weekday: January 1st-6th are week 1, the 7th begins week 2. A date the OLE
// conversion refuses gives 1; a short value -1.
CHARTCORE_API int GetWeekOfYear(double value);
// GetWeek: a weekday number 1-7 (1 = Sunday), or 0 when the local-time
// conversion fails. Kept as the library has always computed it: it gives the
// weekday of a day at the end of the year before the value's year (for
// 20240115, of 2023-11-30 or 2023-12-31 depending on rounding), not of the
// value itself. Use GetDayOfWeek for the weekday of a date.
CHARTCORE_API int GetWeek(double value);

// ---------------------------------------------------------------------------
// Stepping and counting
// ---------------------------------------------------------------------------
// The builders below make a local calendar time with the C runtime (daylight
// saving "unknown"), so TZ decides the zone. Years from 1900 on are accepted,
// also those before 1970 that the original runtime refused; local times after
// the year 3000 cannot be represented. They throw CAtlException with E_FAIL
// when a field is out of range (year < 1900, month outside 1-12, day outside
// 1-31, hour outside 0-23, minute or second outside 0-59) and with
// E_INVALIDARG when the time cannot be represented.

// GetNextYearMonthDay: the calendar day after the value's date (its time is
// dropped) as YYYYMMDD: 20241231 gives 20250101, 20240228 gives 20240229.
CHARTCORE_API int GetNextYearMonthDay(double value);

// CalcNextDateTime: the value moved by `seconds` (may be negative), always in
// the 14-digit form. Align 3 first zeroes the minute and second, align 2 the
// second; any other code keeps them. A date-only value starts at 00:00:00.
//   CalcNextDateTime(20240115093045, 60, 2) == 20240115093100
//   CalcNextDateTime(20240115093045, 60, 3) == 20240115090100
CHARTCORE_API double CalcNextDateTime(double value, int seconds, int align);

// GetNextCycleTime: the time hhmmss one step later; digits above hhmmss are
// carried over unchanged. Kind 1 steps 30 seconds; any other kind steps the
// given number of minutes. Hours of 25 and more are returned as they come
// (GetNextCycleTime(243000, 0, 60) == 253000); an hour of exactly 24 rolls the
// date over, which an int cannot hold, so that step always throws E_FAIL:
// callers keep their steps below midnight.
CHARTCORE_API double GetNextCycleTime(int time, int kind, int minutes);

// GetDiffCycleCount: the bar index of the value's time within a session of
// bars `cycle` seconds long, counting from bar 1 of day 1. The differences are
// taken between the packed hhmmss numbers before converting them to seconds
// (100000 - 93000 = 7000 reads as 70 minutes); stored bar numbers depend on
// this, so it stays. Integer division throughout; a cycle of 0 gives -1.
//   GetDiffCycleCount(20240115093000, 90000, 153000, 1, 60) == 31
CHARTCORE_API int GetDiffCycleCount(double value, int start, int end, int day, int cycle);

// GetSecToTime: seconds as hhmmss (3599 gives 5959, 3600 gives 10000).
// Negative counts come back unchanged.
CHARTCORE_API int GetSecToTime(int seconds);
// GetTimeToSec: hhmmss as seconds (93000 gives 34200). Values below 100 are
// plain seconds; negative values come back unchanged.
CHARTCORE_API int GetTimeToSec(int time);

// ---------------------------------------------------------------------------
// Clock and names
// ---------------------------------------------------------------------------

// GetToday: today's local date as "YYYYMMDD".
CHARTCORE_API CString GetToday();
// GetNextDay: the local date 86,400 seconds from now.
CHARTCORE_API CString GetNextDay();
// GetPrevDay: the local date 86,400 seconds ago.
CHARTCORE_API CString GetPrevDay();
// GetCurrentLocalTime: the local time of day now as "hhmmss".
CHARTCORE_API CString GetCurrentLocalTime();
// GetEnglishNameOfMonth: "Jan" ... "Dec" for 1-12, an empty string otherwise.
CHARTCORE_API CString GetEnglishNameOfMonth(int month);

#endif  // CHARTCORE_FOUNDATION_DATETIME_H_
