#include "chartcore/platform/system.h"

#include <cerrno>
#include <cstdio>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <cwchar>
#include <mutex>
#include <string>
#include <utility>

#include "chartcore/platform/text_codec.h"

#if defined(_WIN32)
// The library's own name for the box routes through the handler; the default
// below needs the system's function itself.
#undef MessageBoxW
#endif

namespace chartcore {
namespace {

// The host hooks: a host may install them from any thread, so they are read
// and written under a lock and called outside it (a handler may show another
// box).
struct Hooks {
  std::mutex mutex;
  MessageBoxHandler messageBox;
  std::function<int()> pixelsPerInch;
};

Hooks& GetHooks() {
  static Hooks hooks;
  return hooks;
}

constexpr int kDefaultPixelsPerInch = 96;

// The screen's own setting without a backend: the system's answer on
// Windows; Linux has no screen to ask here.
int SystemPixelsPerInchY() {
#if defined(_WIN32)
  HDC screen = ::GetDC(nullptr);
  if (screen == nullptr) return 0;
  const int dpi = ::GetDeviceCaps(screen, LOGPIXELSY);
  ::ReleaseDC(nullptr, screen);
  return dpi;
#else
  return 0;
#endif
}

int DefaultMessageBox(void* owner, const wchar_t* text, const wchar_t* caption, UINT type) {
#if defined(_WIN32)
  return ::MessageBoxW(static_cast<HWND>(owner), text, caption, type);
#else
  (void)owner;
  (void)type;
  // No desktop is assumed: the message goes to standard error, the answer is OK.
  std::string line = WideToUtf8(caption, std::wcslen(caption));
  line += ": ";
  line += WideToUtf8(text, std::wcslen(text));
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
  return IDOK;
#endif
}

}  // namespace

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
  Hooks& hooks = GetHooks();
  std::lock_guard<std::mutex> lock(hooks.mutex);
  std::swap(hooks.messageBox, handler);
  return handler;
}

std::function<int()> SetScreenPixelsPerInchProvider(std::function<int()> provider) {
  Hooks& hooks = GetHooks();
  std::lock_guard<std::mutex> lock(hooks.mutex);
  std::swap(hooks.pixelsPerInch, provider);
  return provider;
}

int GetScreenPixelsPerInchY() {
  std::function<int()> provider;
  {
    Hooks& hooks = GetHooks();
    std::lock_guard<std::mutex> lock(hooks.mutex);
    provider = hooks.pixelsPerInch;
  }
  const int dpi = provider ? provider() : SystemPixelsPerInchY();
  return dpi > 0 ? dpi : kDefaultPixelsPerInch;
}

int ShowMessageBox(void* owner, const wchar_t* text, const wchar_t* caption, UINT type) {
  if (!text) text = L"";
  if (!caption) caption = L"";
  MessageBoxHandler handler;
  {
    Hooks& hooks = GetHooks();
    std::lock_guard<std::mutex> lock(hooks.mutex);
    handler = hooks.messageBox;
  }
  if (handler) return handler(CString(text), CString(caption), type);
  return DefaultMessageBox(owner, text, caption, type);
}

}  // namespace chartcore

int AfxMessageBox(LPCTSTR text, UINT type, UINT helpId) {
  (void)helpId;
  return chartcore::ShowMessageBox(nullptr, text, L"chartcore", type);
}

#if defined(_WIN32)

int WINAPI ChartcoreMessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
  return chartcore::ShowMessageBox(owner, text, caption, type);
}

#else

int MessageBoxW(void* owner, LPCWSTR text, LPCWSTR caption, UINT type) {
  return chartcore::ShowMessageBox(owner, text, caption, type);
}

int MulDiv(int a, int b, int c) {
  if (c == 0) return -1;
  const std::int64_t product = static_cast<std::int64_t>(a) * b;
  std::int64_t quotient = product / c;
  const std::int64_t remainder = product % c;
  // Half or more of the divisor left over rounds away from zero.
  const std::int64_t absRemainder = remainder < 0 ? -remainder : remainder;
  const std::int64_t absDivisor = c < 0 ? -static_cast<std::int64_t>(c) : c;
  if (2 * absRemainder >= absDivisor) quotient += ((product < 0) != (c < 0)) ? -1 : 1;
  // As on Windows, -2^31 counts as overflow too: the result fits in 32 bits
  // and its negation does.
  if (quotient > INT32_MAX || quotient < -INT32_MAX) return -1;
  return static_cast<int>(quotient);
}

__time64_t _time64(__time64_t* t) {
  const __time64_t now = static_cast<__time64_t>(std::time(nullptr));
  if (t) *t = now;
  return now;
}

int _localtime64_s(struct tm* out, const __time64_t* t) {
  if (!out) return EINVAL;
  const time_t value = t ? static_cast<time_t>(*t) : 0;
  if (!t || static_cast<__time64_t>(value) != *t || !localtime_r(&value, out)) {
    out->tm_sec = out->tm_min = out->tm_hour = out->tm_mday = out->tm_mon = out->tm_year = -1;
    out->tm_wday = out->tm_yday = out->tm_isdst = -1;
    return EINVAL;
  }
  return 0;
}

struct tm* _localtime64(const __time64_t* t) {
  thread_local struct tm result;
  return _localtime64_s(&result, t) == 0 ? &result : nullptr;
}

__time64_t _mktime64(struct tm* tm) {
  if (!tm) return -1;
  return static_cast<__time64_t>(mktime(tm));
}

#endif
