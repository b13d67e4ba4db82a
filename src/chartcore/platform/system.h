// Win32 and C runtime stand-ins the library calls: message boxes, MulDiv, the
// screen's pixels per inch and the 64-bit local-time functions.
//
// Message boxes go to a handler the host installs (its own dialog, or a test
// recording the texts); without one, Windows shows the system's box and Linux
// writes the text and caption to standard error and answers IDOK. The screen
// metrics come from the window backend through a provider; without one the
// screen has 96 pixels per inch.
//
//   chartcore::SetMessageBoxHandler([](const CString& text, const CString& caption, UINT type) {
//     return IDOK;
//   });
//   AfxMessageBox(L"Unable to make C:\\ws Directory");   // reaches the handler
//   MulDiv(-13, 72, 96);                                  // -10
#ifndef CHARTCORE_PLATFORM_SYSTEM_H_
#define CHARTCORE_PLATFORM_SYSTEM_H_

#include <cstdint>
#include <ctime>
#include <functional>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"

// ---------------------------------------------------------------------------
// Message box styles and answers (from the system headers on Windows)
// ---------------------------------------------------------------------------
#if !defined(_WIN32)
enum : UINT {
  MB_OK = 0x00000000,
  MB_OKCANCEL = 0x00000001,
  MB_ABORTRETRYIGNORE = 0x00000002,
  MB_YESNOCANCEL = 0x00000003,
  MB_YESNO = 0x00000004,
  MB_RETRYCANCEL = 0x00000005,
  MB_ICONHAND = 0x00000010,
  MB_ICONERROR = 0x00000010,
  MB_ICONSTOP = 0x00000010,
  MB_ICONQUESTION = 0x00000020,
  MB_ICONEXCLAMATION = 0x00000030,
  MB_ICONWARNING = 0x00000030,
  MB_ICONASTERISK = 0x00000040,
  MB_ICONINFORMATION = 0x00000040,
  MB_DEFBUTTON1 = 0x00000000,
  MB_DEFBUTTON2 = 0x00000100,
  MB_DEFBUTTON3 = 0x00000200,
  MB_APPLMODAL = 0x00000000,
  MB_SYSTEMMODAL = 0x00001000,
  MB_TASKMODAL = 0x00002000,
  MB_SETFOREGROUND = 0x00010000,
  MB_TOPMOST = 0x00040000,
  MB_TYPEMASK = 0x0000000F,
  MB_ICONMASK = 0x000000F0,
};
enum : int { IDOK = 1, IDCANCEL = 2, IDABORT = 3, IDRETRY = 4, IDIGNORE = 5, IDYES = 6, IDNO = 7 };
#endif

namespace chartcore {

// ---------------------------------------------------------------------------
// Host hooks
// ---------------------------------------------------------------------------

// What a message box handler receives: the text, the caption (the
// application's name when the caller gave none) and the MB_ style; it returns
// the button pressed (IDOK, IDYES, ...).
using MessageBoxHandler = std::function<int(const CString& text, const CString& caption, UINT type)>;

// SetMessageBoxHandler: installs the handler for every message box of the
// library and returns the previous one (empty when none was set). An empty
// handler restores the default. Safe to call from any thread.
CHARTCORE_API MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

// SetScreenPixelsPerInchProvider: installs the source of the screen's vertical
// pixels per inch (the window backend does) and returns the previous one.
CHARTCORE_API std::function<int()> SetScreenPixelsPerInchProvider(std::function<int()> provider);

// GetScreenPixelsPerInchY: the provider's answer; without a provider the
// screen's LOGPIXELSY from GetDeviceCaps on Windows; 96 when neither answers
// (Linux without a backend) or the answer is 0 or less.
CHARTCORE_API int GetScreenPixelsPerInchY();

// ShowMessageBox: what AfxMessageBox and MessageBoxW do: the handler if one is
// installed, else the platform's default. A null text or caption counts as
// empty.
CHARTCORE_API int ShowMessageBox(void* owner, const wchar_t* text, const wchar_t* caption, UINT type);

}  // namespace chartcore

// ---------------------------------------------------------------------------
// Message boxes
// ---------------------------------------------------------------------------

// AfxMessageBox: shows text with the caption "chartcore" (a host that wants
// its own name shows it from its handler); returns the button pressed. helpId
// is accepted and ignored (there are no help files).
CHARTCORE_API int AfxMessageBox(LPCTSTR text, UINT type = MB_OK, UINT helpId = 0);

#if defined(_WIN32)
// On Windows MessageBoxW is the system's; the library's calls are routed
// through the handler by this name so a host's handler sees them too.
CHARTCORE_API int WINAPI ChartcoreMessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
#ifdef MessageBoxW
#undef MessageBoxW
#endif
#define MessageBoxW ChartcoreMessageBoxW
#else
// MessageBoxW: a message box with an owner window (may be null), text and
// caption; returns the button pressed.
CHARTCORE_API int MessageBoxW(void* owner, LPCWSTR text, LPCWSTR caption, UINT type);
#endif

// ---------------------------------------------------------------------------
// Arithmetic
// ---------------------------------------------------------------------------
#if !defined(_WIN32)
// MulDiv: a * b / c computed in 64 bits and rounded half away from zero;
// -1 when c is 0 or the result lies outside -(2^31-1) .. 2^31-1.
//   MulDiv(13, 72, 96) == 10     (9.75 rounds up)
//   MulDiv(-13, 72, 96) == -10
CHARTCORE_API int MulDiv(int a, int b, int c);
#endif

// ---------------------------------------------------------------------------
// 64-bit local time (the C runtime's names; Windows has them itself)
// ---------------------------------------------------------------------------
#if !defined(_WIN32)
typedef std::int64_t __time64_t;

// _time64: seconds since 1970-01-01 UTC; also stored through t when not null.
CHARTCORE_API __time64_t _time64(__time64_t* t);

// _localtime64: the local time of *t in a per-thread struct tm (valid until
// the thread's next call), or nullptr for a null pointer or a time the
// system cannot break down. The zone is the process's (TZ).
CHARTCORE_API struct tm* _localtime64(const __time64_t* t);

// _localtime64_s: the same into the caller's struct; 0 on success, EINVAL
// (and the struct filled with -1) on failure.
CHARTCORE_API int _localtime64_s(struct tm* out, const __time64_t* t);

// _mktime64: normalises *tm (fields out of range roll over, as mktime does),
// fills in tm_wday and tm_yday, and returns the time; -1 when it cannot be
// represented. Years before 1970 are accepted.
CHARTCORE_API __time64_t _mktime64(struct tm* tm);
#endif

#endif  // CHARTCORE_PLATFORM_SYSTEM_H_
