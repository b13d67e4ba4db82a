#include "chartcore/platform/system.h"

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

TEST(SystemMulDiv, RoundsHalfAwayFromZeroAndFlagsFailures) {
  EXPECT_EQ(MulDiv(13, 72, 96), 10);    // 9.75: the font point of a 13-pixel height
  EXPECT_EQ(-MulDiv(-13, 72, 96), 10);  // GetFontPointFromHeight(-13) at 96 dpi
  EXPECT_EQ(MulDiv(10, 1, 4), 3);       // 2.5 away from zero
  EXPECT_EQ(MulDiv(-10, 1, 4), -3);
  EXPECT_EQ(MulDiv(10, 1, -4), -3);
  EXPECT_EQ(MulDiv(-10, 1, -4), 3);
  EXPECT_EQ(MulDiv(7, 1, 3), 2);        // 2.33 down
  EXPECT_EQ(MulDiv(-7, 1, 3), -2);
  EXPECT_EQ(MulDiv(5, 1, 0), -1);       // no divisor
  EXPECT_EQ(MulDiv(INT_MAX, INT_MAX, INT_MAX), INT_MAX);  // the product needs 64 bits
  EXPECT_EQ(MulDiv(INT_MAX, 2, 1), -1);                   // result beyond 32 bits
  EXPECT_EQ(MulDiv(-INT_MAX, 1, 1), -INT_MAX);
  EXPECT_EQ(MulDiv(INT_MIN, 1, 1), -1);  // -2^31 counts as overflow, as on Windows
  EXPECT_EQ(MulDiv(INT_MIN, -1, 1), -1);
  EXPECT_EQ(MulDiv(0, 5, -3), 0);
}

TEST(SystemMessageBox, RoutesToTheHandlerAndRestoresDefault) {
  struct Shown {
    std::wstring text, caption;
    UINT type;
  };
  std::vector<Shown> shown;
  auto previous = chartcore::SetMessageBoxHandler([&](const CString& text, const CString& caption, UINT type) {
    shown.push_back({text.GetString(), caption.GetString(), type});
    return IDYES;
  });
  EXPECT_FALSE(previous);  // nothing was installed before
  EXPECT_EQ(AfxMessageBox(L"Unable to make C:\\ws Directory"), IDYES);
  EXPECT_EQ(MessageBoxW(nullptr, L"[ERROR]Find Internet Explorer", L"ERROR", MB_OK | MB_ICONERROR), IDYES);
  EXPECT_EQ(MessageBoxW(nullptr, nullptr, nullptr, MB_YESNO), IDYES);
  ASSERT_EQ(shown.size(), 3u);
  EXPECT_EQ(shown[0].text, L"Unable to make C:\\ws Directory");
  EXPECT_EQ(shown[0].caption, L"chartcore");
  EXPECT_EQ(shown[0].type, static_cast<UINT>(MB_OK));
  EXPECT_EQ(shown[1].caption, L"ERROR");
  EXPECT_EQ(shown[1].type, static_cast<UINT>(0x10));
  EXPECT_EQ(shown[2].text, L"");
  // Replacing returns the installed handler; an empty one restores the
  // default, which on Linux is stderr and IDOK.
  auto mine = chartcore::SetMessageBoxHandler(nullptr);
  EXPECT_TRUE(static_cast<bool>(mine));
#if !defined(_WIN32)
  testing::internal::CaptureStderr();
  EXPECT_EQ(AfxMessageBox(L"\xD55C\xAE00 text", MB_YESNO), IDOK);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "chartcore: \xED\x95\x9C\xEA\xB8\x80 text\n");
  EXPECT_EQ(shown.size(), 3u);
#endif
}

// Without a provider: the screen's own setting on Windows, 96 on Linux.
int ScreenSetting() {
#if defined(_WIN32)
  HDC screen = GetDC(nullptr);
  const int dpi = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
  if (screen) ReleaseDC(nullptr, screen);
  return dpi > 0 ? dpi : 96;
#else
  return 96;
#endif
}

TEST(SystemScreenMetrics, ProviderOrNinetySix) {
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), ScreenSetting());
  auto previous = chartcore::SetScreenPixelsPerInchProvider([] { return 120; });
  EXPECT_FALSE(previous);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), 120);
  EXPECT_EQ(MulDiv(-13, 72, chartcore::GetScreenPixelsPerInchY()), -8);  // -7.8 rounds to -8
  chartcore::SetScreenPixelsPerInchProvider([] { return 0; });  // a backend without an answer
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), 96);
  chartcore::SetScreenPixelsPerInchProvider(nullptr);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), ScreenSetting());
}

#if !defined(_WIN32)
TEST(SystemLocalTime, SeoulBreakdownAndNormalisation) {
  ::setenv("TZ", "Asia/Seoul", 1);
  ::tzset();
  const __time64_t epoch = 0;
  const struct tm* t = _localtime64(&epoch);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->tm_year, 70);
  EXPECT_EQ(t->tm_hour, 9);  // UTC+9
  EXPECT_EQ(_localtime64(nullptr), nullptr);
  struct tm out;
  EXPECT_EQ(_localtime64_s(&out, nullptr), EINVAL);
  EXPECT_EQ(out.tm_year, -1);
  EXPECT_EQ(_localtime64_s(nullptr, &epoch), EINVAL);
  // 2024-02-30 12:00 normalises to 2024-03-01, a Friday, day 60 of the year.
  struct tm in = {};
  in.tm_year = 124;
  in.tm_mon = 1;
  in.tm_mday = 30;
  in.tm_hour = 12;
  in.tm_isdst = -1;
  const __time64_t when = _mktime64(&in);
  EXPECT_EQ(when, 1709262000);  // 2024-03-01 03:00 UTC
  EXPECT_EQ(in.tm_mon, 2);
  EXPECT_EQ(in.tm_mday, 1);
  EXPECT_EQ(in.tm_wday, 5);
  EXPECT_EQ(in.tm_yday, 60);
  // Years before 1970 work both ways.
  struct tm old = {};
  old.tm_year = 69;
  old.tm_mday = 1;
  old.tm_hour = 9;
  old.tm_isdst = -1;
  const __time64_t t1969 = _mktime64(&old);
  EXPECT_EQ(t1969, -31536000);  // 1969-01-01 00:00 UTC
  ASSERT_NE(_localtime64(&t1969), nullptr);
  EXPECT_EQ(_localtime64(&t1969)->tm_year, 69);
  __time64_t now = 0;
  EXPECT_EQ(_time64(&now), now);
  EXPECT_GT(now, 1700000000);
  EXPECT_EQ(_mktime64(nullptr), -1);
}
#else
// The Windows runtime reads the POSIX-style TZ=KST-9 (a fixed UTC+9) and
// refuses local times before 1970 UTC, which the Linux runtime accepts.
TEST(SystemLocalTime, KoreanZoneOfTheWindowsRuntime) {
  _putenv("TZ=KST-9");
  _tzset();
  const __time64_t epoch = 0;
  const struct tm* t = _localtime64(&epoch);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->tm_year, 70);
  EXPECT_EQ(t->tm_hour, 9);  // UTC+9
  struct tm first = {};
  first.tm_year = 70;
  first.tm_mday = 1;
  first.tm_hour = 9;
  first.tm_isdst = -1;
  EXPECT_EQ(_mktime64(&first), 0);  // 1970-01-01 09:00 KST is the epoch
  struct tm before = {};
  before.tm_year = 70;
  before.tm_mday = 1;
  before.tm_hour = 8;
  before.tm_isdst = -1;
  EXPECT_EQ(_mktime64(&before), -1);  // an hour earlier is 1969 in UTC: refused
  // 1987's summer time in Seoul is unknown to a fixed zone: no 25-hour day.
  struct tm summer = {};
  summer.tm_year = 87;
  summer.tm_mon = 6;
  summer.tm_mday = 1;
  summer.tm_isdst = -1;
  EXPECT_EQ(_mktime64(&summer) % 86400, 15 * 3600);  // midnight KST is 15:00 UTC
}
#endif
