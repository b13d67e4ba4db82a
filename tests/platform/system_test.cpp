#include "chartcore/platform/system.h"

#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A local time to give _mktime64, with the zone deciding summer time.
struct tm LocalTime(int year, int month, int day, int hour) {
  struct tm t = {};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_isdst = -1;
  return t;
}

// Sets the time zone for one test and puts back what the process had, so
// later tests see the zone they were started with.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* zone) {
    const char* old = std::getenv("TZ");
    m_had = old != nullptr;
    if (m_had) m_old = old;
    Set(zone);
  }
  ~ScopedTimeZone() { Set(m_had ? m_old.c_str() : nullptr); }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  static void Set(const char* zone) {
#if defined(_WIN32)
    _putenv((std::string("TZ=") + (zone != nullptr ? zone : "")).c_str());  // "TZ=" removes it
    _tzset();
#else
    if (zone != nullptr) {
      ::setenv("TZ", zone, 1);
    } else {
      ::unsetenv("TZ");
    }
    ::tzset();
#endif
  }
  bool m_had = false;
  std::string m_old;
};

}  // namespace

TEST(SystemMulDiv, RoundsHalfAwayFromZeroAndFlagsFailures) {
  struct Case { int a, b, c, expected; };
  const Case cases[] = {
      {13, 72, 96, 10}, {-13, 72, 96, -10},           // 9.75: the font point of a 13-pixel height
      {10, 1, 4, 3},    {-10, 1, 4, -3},              // 2.5 away from zero, whatever the signs
      {10, 1, -4, -3},  {-10, 1, -4, 3},  {7, 1, 3, 2}, {-7, 1, 3, -2},  // 2.33 down
      {5, 1, 0, -1},                                  // no divisor
      {INT_MAX, INT_MAX, INT_MAX, INT_MAX},           // the product needs 64 bits
      {INT_MAX, 2, 1, -1},                            // result beyond 32 bits
      {-INT_MAX, 1, 1, -INT_MAX}, {INT_MIN, 1, 1, -1}, {INT_MIN, -1, 1, -1},  // -2^31 counts as overflow
      {0, 5, -3, 0},
  };

  for (const Case& c : cases) EXPECT_EQ(MulDiv(c.a, c.b, c.c), c.expected) << c.a << " * " << c.b << " / " << c.c;
}

TEST(SystemMessageBox, RoutesToTheHandlerAndRestoresDefault) {
  std::vector<std::wstring> shown;
  auto previous = chartcore::SetMessageBoxHandler([&](const CString& text, const CString& caption, UINT type) {
    shown.push_back(std::wstring(text.GetString()) + L"|" + caption.GetString() + L"|" + std::to_wstring(type));
    return IDYES;
  });
  EXPECT_FALSE(previous);  // nothing was installed before
  EXPECT_EQ(AfxMessageBox(L"Unable to make C:\\ws Directory"), IDYES);
  EXPECT_EQ(MessageBoxW(nullptr, L"[ERROR]Find Internet Explorer", L"ERROR", MB_OK | MB_ICONERROR), IDYES);
  EXPECT_EQ(MessageBoxW(nullptr, nullptr, nullptr, MB_YESNO), IDYES);
  // The library's name is the default caption; MB_ICONERROR is 0x10.
  EXPECT_EQ(shown, (std::vector<std::wstring>{L"Unable to make C:\\ws Directory|chartcore|0",
                                              L"[ERROR]Find Internet Explorer|ERROR|16", L"||4"}));
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

TEST(SystemScreenMetrics, ProviderOrNinetySix) {
  // Without a provider: the screen's own setting on Windows, 96 on Linux.
#if defined(_WIN32)
  HDC screen = GetDC(nullptr);
  int system = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
  if (screen) ReleaseDC(nullptr, screen);
  if (system <= 0) system = 96;
#else
  const int system = 96;
#endif
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), system);
  auto previous = chartcore::SetScreenPixelsPerInchProvider([] { return 120; });
  EXPECT_FALSE(previous);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), 120);
  EXPECT_EQ(MulDiv(-13, 72, chartcore::GetScreenPixelsPerInchY()), -8);  // -7.8 rounds to -8
  chartcore::SetScreenPixelsPerInchProvider([] { return 0; });  // a backend without an answer
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), 96);
  chartcore::SetScreenPixelsPerInchProvider(nullptr);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), system);
}

#if !defined(_WIN32)
TEST(SystemLocalTime, SeoulBreakdownAndNormalisation) {
  const ScopedTimeZone zone("Asia/Seoul");
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
  struct tm in = LocalTime(2024, 2, 30, 12);
  EXPECT_EQ(_mktime64(&in), 1709262000);  // 2024-03-01 03:00 UTC
  EXPECT_EQ((std::vector<int>{in.tm_mon, in.tm_mday, in.tm_wday, in.tm_yday}), (std::vector<int>{2, 1, 5, 60}));
  // Years before 1970 work both ways.
  struct tm old = LocalTime(1969, 1, 1, 9);
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
  const ScopedTimeZone zone("KST-9");
  const __time64_t epoch = 0;
  const struct tm* t = _localtime64(&epoch);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->tm_year, 70);
  EXPECT_EQ(t->tm_hour, 9);  // UTC+9
  struct tm first = LocalTime(1970, 1, 1, 9);
  EXPECT_EQ(_mktime64(&first), 0);  // 1970-01-01 09:00 KST is the epoch
  struct tm before = LocalTime(1970, 1, 1, 8);
  EXPECT_EQ(_mktime64(&before), -1);  // an hour earlier is 1969 in UTC: refused
  // 1987's summer time in Seoul is unknown to a fixed zone: no 25-hour day.
  struct tm summer = LocalTime(1987, 7, 1, 0);
  EXPECT_EQ(_mktime64(&summer) % 86400, 15 * 3600);  // midnight KST is 15:00 UTC
}
#endif
