// The diagnostic log file and the external viewers of exported results.
//
// Screens that export results open them in the user's own programs: a
// spreadsheet file in the spreadsheet application, a report page in the web
// browser, a PDF or text file in its associated program. Each viewer is
// started as a separate process; the call does not wait for it and leaves no
// process behind to reap. Paths use the library's "\" separator on every
// platform. On Windows the viewers are found in the system directory, the
// search path and the registry; on other systems through the desktop's
// default-application opener (xdg-open and its kin on PATH), with the path
// handed over as one argument, blanks and quotes included. Failures that the
// user must see go to the message-box handler.
//
//   WriteLog(GetPath_Local(root, user) + L"trade.log", L"order sent\n");
//   if (!RunExcelFile(GetPath_Local_Result(root, user) + L"result.xls")) { ... }
#ifndef CHARTCORE_FOUNDATION_LOG_LAUNCH_H_
#define CHARTCORE_FOUNDATION_LOG_LAUNCH_H_

#include "chartcore/platform/cstring.h"

// ---------------------------------------------------------------------------
// Log file
// ---------------------------------------------------------------------------

// WriteLog: appends text to the log file, creating it when missing. The text
// is written as it stands (the caller supplies time stamps and line ends):
// UTF-8 on Linux; on Windows in the system code page with "\n" written as
// "\r\n". Each call is one append, so lines from two processes logging to one
// file never interleave within a call. A file that cannot be opened is
// skipped silently; a null text writes nothing.
CHARTCORE_API void WriteLog(CString path, const wchar_t* text);

// ---------------------------------------------------------------------------
// Viewers
// ---------------------------------------------------------------------------

// RunTextFile: opens the file in the text viewer (Notepad from the system
// directory on Windows, with the path unquoted on its command line; the
// default application elsewhere). Returns non-zero when the viewer started.
CHARTCORE_API int RunTextFile(CString path);

// RunPDFFile: opens the file with the program associated with it. Always
// returns 1, whether or not a program could be started: hosts treat the
// request as handed over.
CHARTCORE_API int RunPDFFile(CString path);

// RunHtmlFile: opens a page (a file path or an address) in a web browser,
// trying in order: the default browser (on Windows the browser at its fixed
// install location, elsewhere the default-application opener); a browser on
// the search path; the browser registered for the user (the registry's App
// Paths entry on Windows, the BROWSER variable elsewhere, a ":"-separated
// list of commands where "%s" stands for the page). When that last source is
// missing the message "[ERROR]Find Internet Explorer" is shown, when it
// cannot be started "[ERROR]Execute Internet Explorer", both titled "ERROR".
// Returns non-zero when a browser started.
CHARTCORE_API int RunHtmlFile(CString target);

// RunExcelFile: opens the file in the spreadsheet application found by
// GetAppPath for "Excel.Application"; when none is found, on Windows the
// application at the install location of its version, elsewhere the
// default-application opener. Returns non-zero when the application started.
CHARTCORE_API int RunExcelFile(CString path);

// GetExcelAppVersion: the major version of the installed spreadsheet
// application (16 for "Excel.Application.16"; on Linux the first number its
// --version prints, 7 for "LibreOffice 7.4.7.2"), or 0 when none is installed.
CHARTCORE_API int GetExcelAppVersion();

#endif  // CHARTCORE_FOUNDATION_LOG_LAUNCH_H_
