#include "chartcore/foundation/log_launch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <new>
#include <string>
#include <vector>

#include "chartcore/foundation/paths.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/system.h"
#include "chartcore/platform/text_codec.h"

#if defined(_WIN32)
#include <objbase.h>
#include <shellapi.h>
#else
#include "chartcore/platform/process.h"
#endif

namespace {

// The automation name of the spreadsheet application, declared narrow as the
// automation headers declare it.
const char kSpreadsheetProgId[] = "Excel.Application";

// Buffers the registry and program look-ups write into.
const int kAppBufferSize = 255;

void ShowError(const wchar_t* text, const wchar_t* caption) {
  MessageBoxW(nullptr, text, caption, MB_OK | MB_ICONERROR);
}

// Widens the ProgID for the look-ups, reporting each way it can fail.
bool WidenProgId(const char* progId, std::wstring& wide) {
  if (progId == nullptr || *progId == '\0') {
    ShowError(L"Type ProgID in EditBox", L"Error");
    return false;
  }
  try {
    wide = chartcore::Utf8ToWide(progId, std::strlen(progId));
  } catch (const std::bad_alloc&) {
    ShowError(L"Out of Memory", L"Error");
    return false;
  }
  if (wide.empty() || wide.find(L'\xFFFD') != std::wstring::npos) {
    ShowError(L"Error in Conversion", L"Error");
    return false;
  }
  return true;
}

// Copies text into a caller's buffer of size characters; false when it does
// not fit with its terminator.
bool CopyOut(const std::wstring& text, wchar_t* buffer, int size) {
  if (text.empty() || static_cast<long long>(text.size()) + 1 > size) return false;
  std::wmemcpy(buffer, text.c_str(), text.size() + 1);
  return true;
}

// The leading decimal number of a version text ("16", "7.4.7.2" gives 7).
int LeadingNumber(const wchar_t* text) {
  int value = 0;
  for (const wchar_t* p = text; *p >= L'0' && *p <= L'9'; ++p) {
    if (value > 100000) return 0;
    value = value * 10 + (*p - L'0');
  }
  return value;
}

}  // namespace

#if defined(_WIN32)
// ===========================================================================
// Windows: system directory, search path and registry
// ===========================================================================
namespace {

// Starts a command line without waiting; the handles are closed at once so
// nothing of the child stays with us.
BOOL StartCommandLine(const CString& commandLine) {
  std::wstring buffer(commandLine.GetString());
  buffer.push_back(L'\0');
  STARTUPINFOW startup;
  std::memset(&startup, 0, sizeof startup);
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info;
  std::memset(&info, 0, sizeof info);
  const BOOL started = CreateProcessW(nullptr, &buffer[0], nullptr, nullptr, FALSE, 0, nullptr,
                                      nullptr, &startup, &info);
  if (started) {
    CloseHandle(info.hThread);
    CloseHandle(info.hProcess);
  }
  return started;
}

// Reads the default or named string value of an open key.
bool ReadKeyString(HKEY key, const wchar_t* valueName, std::wstring& value) {
  DWORD type = 0;
  DWORD bytes = 0;
  if (RegQueryValueExW(key, valueName, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) return false;
  if ((type != REG_SZ && type != REG_EXPAND_SZ) || bytes > 64 * 1024) return false;
  std::vector<wchar_t> buffer(bytes / sizeof(wchar_t) + 2, L'\0');
  bytes = static_cast<DWORD>((buffer.size() - 1) * sizeof(wchar_t));
  if (RegQueryValueExW(key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &bytes) !=
      ERROR_SUCCESS) {
    return false;
  }
  value.assign(buffer.data());
  return true;
}

bool OpenKey(HKEY root, const CString& subKey, REGSAM access, HKEY& key) {
  key = nullptr;
  return RegOpenKeyExW(root, subKey, 0, access, &key) == ERROR_SUCCESS;
}

// A LocalServer entry holds the executable and its start switches
// ("C:\...\EXCEL.EXE" /automation): keep the executable only.
std::wstring ExecutableOfServerEntry(const std::wstring& entry) {
  std::wstring text = entry;
  while (!text.empty() && text.front() == L' ') text.erase(0, 1);
  if (!text.empty() && text.front() == L'"') {
    const size_t close = text.find(L'"', 1);
    return close == std::wstring::npos ? text.substr(1) : text.substr(1, close - 1);
  }
  size_t cut = text.find(L" /");
  const size_t dash = text.find(L" -");
  if (dash < cut) cut = dash;
  if (cut != std::wstring::npos) text.erase(cut);
  while (!text.empty() && text.back() == L' ') text.pop_back();
  return text;
}

}  // namespace

int GetAppPath(const wchar_t* progId, wchar_t* path, int pathSize) {
  if (path == nullptr || pathSize < kAppBufferSize) return 0;
  path[0] = L'\0';
  if (progId == nullptr || *progId == L'\0') return 0;

  CLSID clsid;
  if (FAILED(CLSIDFromProgID(progId, &clsid))) {
    ShowError(L"Could not get CLSID from ProgID, Make sure ProgID is correct", L"Error");
    return 0;
  }
  LPOLESTR clsidText = nullptr;
  if (FAILED(StringFromCLSID(clsid, &clsidText)) || clsidText == nullptr) {
    ShowError(L"Could not convert CLSID to String", L"Error");
    return 0;
  }
  const CString clsidString(clsidText);
  CoTaskMemFree(clsidText);

  // The server keys of the class (64-bit view, then the 32-bit one), and the
  // application's App Paths entry as the last source.
  const wchar_t* const serverKeys[] = {L"CLSID\\%s\\LocalServer32", L"CLSID\\%s\\LocalServer",
                                       L"Wow6432Node\\CLSID\\%s\\LocalServer32"};
  HKEY key = nullptr;
  for (const wchar_t* pattern : serverKeys) {
    CString subKey;
    subKey.Format(pattern, clsidString.GetString());
    if (OpenKey(HKEY_CLASSES_ROOT, subKey, KEY_READ, key)) break;
  }
  if (key == nullptr) {
    OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Excel.exe",
            KEY_READ, key);
  }
  if (key == nullptr) {
    ShowError(L"No LocalServer Key found!!", L"Error");
    return 0;
  }
  std::wstring entry;
  const bool read = ReadKeyString(key, nullptr, entry);
  RegCloseKey(key);
  if (!read) {
    ShowError(L"Error trying to query for path", L"Error");
    return 0;
  }
  return CopyOut(ExecutableOfServerEntry(entry), path, pathSize) ? 1 : 0;
}

int GetAppVersion(const wchar_t* progId, wchar_t* version, int versionSize) {
  if (version == nullptr || versionSize < kAppBufferSize) return 0;
  version[0] = L'\0';
  if (progId == nullptr || *progId == L'\0') return 0;
  HKEY key = nullptr;
  if (!OpenKey(HKEY_CLASSES_ROOT, CString(progId) + L"\\CurVer", KEY_READ, key)) return 0;
  std::wstring current;
  const bool read = ReadKeyString(key, nullptr, current);
  RegCloseKey(key);
  // "Excel.Application.16": the version is what follows the last dot.
  const size_t dot = current.rfind(L'.');
  if (!read || dot == std::wstring::npos || LeadingNumber(current.c_str() + dot + 1) == 0) return 0;
  return CopyOut(current.substr(dot + 1), version, versionSize) ? 1 : 0;
}

void WriteLog(CString path, const wchar_t* text) {
  std::string bytes;
  if (text != nullptr && *text != L'\0') {
    // Text mode: a line end goes out as CR LF, in the system code page.
    CString translated(text);
    translated.Replace(L"\n", L"\r\n");
    const int size = WideCharToMultiByte(CP_ACP, 0, translated.GetString(), translated.GetLength(), nullptr, 0,
                                         nullptr, nullptr);
    if (size > 0) {
      bytes.assign(static_cast<size_t>(size), '\0');
      WideCharToMultiByte(CP_ACP, 0, translated.GetString(), translated.GetLength(), &bytes[0], size, nullptr,
                          nullptr);
    }
  }
  // One append through the file layer (append-only access, so two processes
  // logging to one file never overwrite each other); a file that cannot be
  // opened is skipped.
  chartcore::AppendToFile(path, bytes.data(), static_cast<UINT>(bytes.size()));
}

namespace {

bool StartTextViewer(const CString& path) {
  wchar_t systemDirectory[1024];
  const UINT length = GetSystemDirectoryW(systemDirectory, 1024);
  if (length == 0 || length >= 1024) systemDirectory[0] = L'\0';
  CString commandLine;
  // The path goes unquoted: Notepad takes the whole rest of its command line.
  commandLine.Format(L"%s\\notepad.exe %s", systemDirectory, path.GetString());
  return StartCommandLine(commandLine) != 0;
}

void OpenAssociated(const CString& path) { ShellExecuteW(nullptr, L"open", path, nullptr, L".", SW_SHOWMAXIMIZED); }

// The browser at its install location, then one found on the search path.
bool StartBrowserDirect(const CString& target) {
  CString commandLine;
  commandLine.Format(L"C:\\Program Files\\Internet Explorer\\IEXPLORE.exe %s", target.GetString());
  if (StartCommandLine(commandLine)) return true;
  commandLine.Format(L"IEXPLORE.exe %s", target.GetString());
  return StartCommandLine(commandLine) != 0;
}

// The browser's folder from its App Paths entry.
bool FindRegisteredBrowser(std::wstring& directory) {
  HKEY key = nullptr;
  const bool found =
      OpenKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\IEXPLORE.EXE",
              0x2001F, key) &&
      ReadKeyString(key, L"Path", directory);
  if (key != nullptr) RegCloseKey(key);
  while (!directory.empty() && directory.back() == L';') directory.pop_back();
  return found;
}

bool StartRegisteredBrowser(const std::wstring& directory, const CString& target) {
  CString commandLine;
  commandLine.Format(L"%s\\IEXPLORE.exe %s", directory.c_str(), target.GetString());
  return StartCommandLine(commandLine) != 0;
}

bool StartApplication(const wchar_t* application, const CString& path) {
  CString commandLine;
  commandLine.Format(L"%s \"%s\"", application, path.GetString());
  return StartCommandLine(commandLine) != 0;
}

// Without a registered server: the application at the install location of
// its version.
bool StartSpreadsheetElsewhere(const std::wstring& progId, const CString& path) {
  wchar_t version[kAppBufferSize];
  if (!GetAppVersion(progId.c_str(), version, kAppBufferSize)) return false;
  CString commandLine;
  commandLine.Format(L"C:\\Program Files\\Microsoft Office\\Office%s\\EXCEL.EXE \"%s\"", version,
                     path.GetString());
  return StartCommandLine(commandLine) != 0;
}

}  // namespace

#else
// ===========================================================================
// Other systems: programs on PATH, started without a shell
// ===========================================================================
namespace {

// Library paths use "\"; addresses ("https://...", "mailto:...") go to the
// opener as they are. A scheme has at least two letters, so "C:" is a path.
std::string NativeTarget(const CString& target) {
  const std::wstring& text = target.str();
  size_t i = 0;
  while (i < text.size() && ((text[i] >= L'a' && text[i] <= L'z') || (text[i] >= L'A' && text[i] <= L'Z') ||
                             (i > 0 && ((text[i] >= L'0' && text[i] <= L'9') || text[i] == L'+' ||
                                        text[i] == L'-' || text[i] == L'.')))) {
    ++i;
  }
  if (i >= 2 && i < text.size() && text[i] == L':') return chartcore::WideToUtf8(text);
  return chartcore::WideToUtf8(chartcore::ToNativePath(target).str());
}

// The desktop's openers of a file or address with its default application,
// in order of preference, with the words that come before the target.
struct Opener {
  const char* program;
  const char* verb;
};
const Opener kOpeners[] = {{"xdg-open", nullptr}, {"gio", "open"},       {"kde-open5", nullptr},
                           {"kde-open", nullptr}, {"gnome-open", nullptr}, {"exo-open", nullptr}};

bool OpenWithDefaultApplication(const std::string& target) {
  for (const Opener& opener : kOpeners) {
    const std::string program = chartcore::FindProgramOnPath(opener.program);
    if (program.empty()) continue;
    std::vector<std::string> arguments;
    if (opener.verb != nullptr) arguments.push_back(opener.verb);
    arguments.push_back(target);
    if (chartcore::StartDetachedProgram(program, arguments)) return true;
  }
  return false;
}

const char* const kBrowsers[] = {"x-www-browser", "sensible-browser", "firefox", "firefox-esr",
                                 "chromium", "google-chrome", "epiphany"};

bool StartBrowserOnPath(const std::string& target) {
  for (const char* name : kBrowsers) {
    const std::string program = chartcore::FindProgramOnPath(name);
    if (!program.empty() && chartcore::StartDetachedProgram(program, {target})) return true;
  }
  return false;
}

// One command of the BROWSER list: words split at blanks, "%s" replaced by
// the target ("%%" is a percent sign); without "%s" the target is appended.
bool StartBrowserCommand(const std::string& command, const std::string& target) {
  std::vector<std::string> words;
  bool placed = false;
  size_t start = 0;
  while (start < command.size()) {
    while (start < command.size() && command[start] == ' ') ++start;
    if (start >= command.size()) break;
    size_t end = command.find(' ', start);
    if (end == std::string::npos) end = command.size();
    const std::string word = command.substr(start, end - start);
    std::string expanded;
    for (size_t i = 0; i < word.size(); ++i) {
      if (word[i] == '%' && i + 1 < word.size() && word[i + 1] == 's') {
        expanded += target;
        placed = true;
        ++i;
      } else if (word[i] == '%' && i + 1 < word.size() && word[i + 1] == '%') {
        expanded += '%';
        ++i;
      } else {
        expanded += word[i];
      }
    }
    words.push_back(expanded);
    start = end;
  }
  if (words.empty()) return false;
  if (!placed) words.push_back(target);
  const std::string program = chartcore::FindProgramOnPath(words.front());
  words.erase(words.begin());
  return chartcore::StartDetachedProgram(program, words);
}

// The spreadsheet program that stands for the automation ProgID: the name is
// matched without case as the registry matches it, and a version suffix
// ("Excel.Application.16") names the same application.
bool IsSpreadsheetProgId(const wchar_t* progId) {
  CString name(progId);
  const CString base(L"excel.application");
  name.MakeLower();
  if (name.Left(base.GetLength()) != base) return false;
  if (name.GetLength() == base.GetLength()) return true;
  if (name[base.GetLength()] != L'.' || name.GetLength() == base.GetLength() + 1) return false;
  for (int i = base.GetLength() + 1; i < name.GetLength(); ++i) {
    if (name[i] < L'0' || name[i] > L'9') return false;
  }
  return true;
}

std::string FindSpreadsheetProgram() {
  for (const char* name : {"localc", "libreoffice", "soffice"}) {
    std::string program = chartcore::FindProgramOnPath(name);
    if (!program.empty()) return program;
  }
  return std::string();
}

// The major version in what a program prints for --version: the first number
// followed by a dot ("LibreOffice 7.4.7.2 40(Build:2)" gives "7"), else the
// first number at all.
std::wstring MajorVersionOf(const std::string& printed) {
  std::string firstNumber;
  for (size_t i = 0; i < printed.size();) {
    if (printed[i] < '0' || printed[i] > '9') {
      ++i;
      continue;
    }
    size_t end = i;
    while (end < printed.size() && printed[end] >= '0' && printed[end] <= '9') ++end;
    const std::string number = printed.substr(i, end - i);
    if (end < printed.size() && printed[end] == '.' && end + 1 < printed.size() && printed[end + 1] >= '0' &&
        printed[end + 1] <= '9') {
      return chartcore::Utf8ToWide(number);
    }
    if (firstNumber.empty()) firstNumber = number;
    i = end;
  }
  return chartcore::Utf8ToWide(firstNumber);
}

}  // namespace

int GetAppPath(const wchar_t* progId, wchar_t* path, int pathSize) {
  if (path == nullptr || pathSize < kAppBufferSize) return 0;
  path[0] = L'\0';
  if (progId == nullptr || !IsSpreadsheetProgId(progId)) return 0;
  const std::string program = FindSpreadsheetProgram();
  if (program.empty()) return 0;
  return CopyOut(chartcore::Utf8ToWide(program), path, pathSize) ? 1 : 0;
}

int GetAppVersion(const wchar_t* progId, wchar_t* version, int versionSize) {
  if (version == nullptr || versionSize < kAppBufferSize) return 0;
  version[0] = L'\0';
  if (progId == nullptr || !IsSpreadsheetProgId(progId)) return 0;
  const std::string program = FindSpreadsheetProgram();
  std::string printed;
  // A first start of an office suite may take a while to set up its profile.
  if (program.empty() || !chartcore::RunProgramAndCapture(program, {"--version"}, printed, 20000, 4096)) return 0;
  const std::wstring major = MajorVersionOf(printed);
  if (LeadingNumber(major.c_str()) == 0) return 0;
  return CopyOut(major, version, versionSize) ? 1 : 0;
}

void WriteLog(CString path, const wchar_t* text) {
  const std::string bytes = text != nullptr ? chartcore::WideToUtf8(text, std::wcslen(text)) : std::string();
  // One append through the file layer: the write lands at the end as the
  // system finds it, so two processes logging to one file never overwrite
  // each other, and a write that fails leaves the log as it was. A file that
  // cannot be opened is skipped.
  chartcore::AppendToFile(path, bytes.data(), static_cast<UINT>(bytes.size()));
}

namespace {

bool StartTextViewer(const CString& path) { return OpenWithDefaultApplication(NativeTarget(path)); }

void OpenAssociated(const CString& path) { OpenWithDefaultApplication(NativeTarget(path)); }

// The desktop's default browser through its opener, then a browser on PATH.
bool StartBrowserDirect(const CString& target) {
  const std::string page = NativeTarget(target);
  return OpenWithDefaultApplication(page) || StartBrowserOnPath(page);
}

// The user's registered browsers: the BROWSER list, without a trailing
// separator.
bool FindRegisteredBrowser(std::wstring& commands) {
  const char* registered = std::getenv("BROWSER");
  commands = chartcore::Utf8ToWide(registered != nullptr ? registered : "");
  while (!commands.empty() && (commands.back() == L';' || commands.back() == L':')) commands.pop_back();
  return !commands.empty();
}

// The first command of the ":"-separated list that starts.
bool StartRegisteredBrowser(const std::wstring& commands, const CString& target) {
  const std::string list = chartcore::WideToUtf8(commands);
  const std::string page = NativeTarget(target);
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    if (end > start && StartBrowserCommand(list.substr(start, end - start), page)) return true;
    start = end + 1;
  }
  return false;
}

bool StartApplication(const wchar_t* application, const CString& path) {
  return chartcore::StartDetachedProgram(chartcore::WideToUtf8(std::wstring(application)), {NativeTarget(path)});
}

// Without an installed spreadsheet program: the desktop's opener.
bool StartSpreadsheetElsewhere(const std::wstring&, const CString& path) {
  return OpenWithDefaultApplication(NativeTarget(path));
}

}  // namespace

#endif

// ===========================================================================
// Viewers: the order of attempts and the messages, on every system
// ===========================================================================

int RunTextFile(CString path) { return StartTextViewer(path) ? 1 : 0; }

int RunPDFFile(CString path) {
  OpenAssociated(path);
  return 1;
}

int RunHtmlFile(CString target) {
  if (StartBrowserDirect(target)) return 1;
  std::wstring registered;
  if (!FindRegisteredBrowser(registered)) {
    ShowError(L"[ERROR]Find Internet Explorer", L"ERROR");
    return 0;
  }
  if (StartRegisteredBrowser(registered, target)) return 1;
  ShowError(L"[ERROR]Execute Internet Explorer", L"ERROR");
  return 0;
}

int RunExcelFile(CString path) {
  std::wstring progId;
  if (!WidenProgId(kSpreadsheetProgId, progId)) return 0;
  wchar_t application[kAppBufferSize];
  if (GetAppPath(progId.c_str(), application, kAppBufferSize)) return StartApplication(application, path) ? 1 : 0;
  return StartSpreadsheetElsewhere(progId, path) ? 1 : 0;
}

int GetExcelAppVersion() {
  std::wstring progId = chartcore::Utf8ToWide(kSpreadsheetProgId, std::strlen(kSpreadsheetProgId));
  wchar_t version[kAppBufferSize];
  if (!GetAppVersion(progId.c_str(), version, kAppBufferSize)) return 0;
  return LeadingNumber(version);
}
