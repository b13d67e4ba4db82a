#include "chartcore/foundation/log_launch.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/foundation/paths.h"
#include "temp_workspace.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <thread>
#endif

using chartcore_test::TempDir;
using testing_fs::MessageCapture;

TEST(LogFile, AppendsAsWrittenAndSkipsWhatCannotBeOpened) {
  TempDir t;
  const CString log = t.lib("logs/trade.log");
  t.MakeFile("logs/other.log", "");
  WriteLog(log, L"first");
  EXPECT_EQ(t.Read("logs/trade.log"), "first");  // created, no line end added
  WriteLog(log, L" second\n");
  WriteLog(log, nullptr);  // nothing to write, nothing lost
  WriteLog(log, L"");
#if defined(_WIN32)
  EXPECT_EQ(t.Read("logs/trade.log"), "first second\r\n");
#else
  EXPECT_EQ(t.Read("logs/trade.log"), "first second\n");
  WriteLog(log, L"\xD55C\xAE00");  // Korean goes out as UTF-8
  EXPECT_EQ(t.Read("logs/trade.log"), "first second\n\xED\x95\x9C\xEA\xB8\x80");
#endif
  WriteLog(t.lib("no/such/dir/x.log"), L"lost");  // a missing folder is not made
  EXPECT_FALSE(t.Has("no"));
}

#if !defined(_WIN32)
TEST(LogFile, TwoProcessesAppendWholeLines) {
  TempDir t;
  const int kLines = 300;
  const pid_t child = fork();  // both processes log at once
  ASSERT_GE(child, 0);
  const std::wstring line = std::wstring(200, child == 0 ? L'b' : L'a') + L"\n";  // long, so a torn write would show
  for (int i = 0; i < kLines; ++i) WriteLog(t.lib("shared.log"), line.c_str());
  if (child == 0) _exit(0);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  const std::string all = t.Read("shared.log");
  ASSERT_EQ(all.size(), 2u * kLines * 201);  // nothing overwritten
  int linesOfA = 0;
  for (size_t at = 0; at < all.size() && !HasFailure(); at += 201) {
    EXPECT_EQ(all.substr(at, 201), std::string(200, all[at]) + "\n") << "torn line at byte " << at;
    linesOfA += all[at] == 'a';
  }
  EXPECT_EQ(linesOfA, kLines);  // and so as many of the other
}

namespace {

// A folder of fake desktop programs, alone on PATH, with BROWSER unset ("!"
// before a name makes a fake whose start fails). A fake that starts adds a
// line "name|argument|..." to the folder's "calls", then waits for the gate
// before it finishes, so a test sees that the library returned while it still
// ran; asked for --version it prints its version text instead.
class FakeDesktop {
 public:
  explicit FakeDesktop(const std::string& names) : m_path(std::getenv("PATH") ? std::getenv("PATH") : "/usr/bin") {
    setenv("PATH", m_dir.native("bin").c_str(), 1);
    unsetenv("BROWSER");
    std::istringstream words(names);
    for (std::string name; words >> name;) name[0] == '!' ? Script(name.substr(1), "#!/nonexistent/sh\n") : Add(name);
  }
  ~FakeDesktop() {
    m_dir.MakeFile("bin/gate", "");  // every fake that started finishes before its folder goes
    WaitFor("done", Count("calls"));
    setenv("PATH", m_path.c_str(), 1);
    unsetenv("BROWSER");
  }

  void Add(const std::string& name, const std::string& version = "") {
    Script(name, "#!/bin/sh\nPATH=/usr/bin:/bin\n"
                 "if [ \"$1\" = --version ]; then echo '" + version + "'; exit 0; fi\n"
                 "line=${0##*/}; for word; do line=\"$line|$word\"; done\n"
                 "printf '%s\\n' \"$line\" >> \"${0%/*}/calls\"\n"
                 "i=0; while [ ! -e \"${0%/*}/gate\" ] && [ $i -lt 600 ]; do sleep 0.05; i=$((i+1)); done\n"
                 "echo >> \"${0%/*}/done\"\n");
  }
  // The lines the started programs wrote, once `count` of them have.
  std::string Calls(size_t count) const {
    WaitFor("calls", count);
    return m_dir.Read("bin/calls");
  }
  size_t Finished() const { return Count("done"); }
  CString Lib(const std::string& relative) const { return m_dir.lib(relative); }
  std::string Native(const std::string& relative) const { return m_dir.native(relative).string(); }

 private:
  size_t Count(const std::string& file) const {  // complete lines
    const std::string all = m_dir.Read("bin/" + file);
    return static_cast<size_t>(std::count(all.begin(), all.end(), '\n'));
  }
  // The bound only keeps a broken run from hanging; nothing is measured.
  void WaitFor(const std::string& file, size_t count) const {
    for (int i = 0; i < 2000 && Count(file) < count; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  void Script(const std::string& name, const std::string& text) {
    m_dir.MakeFile("bin/" + name, text);
    std::filesystem::permissions(m_dir.native("bin/" + name), std::filesystem::perms::owner_all);
  }

  TempDir m_dir;
  std::string m_path;
};

const char kPage[] = "https://example.com/a b?x=1&y=\\2";  // an address, not a path: passed as it is

}  // namespace

TEST(ViewerLaunch, EachViewerTriesItsProgramsInOrderWithoutWaiting) {
  const struct {
    const char* fakes;
    const char* browser;  // BROWSER, or unset
    int (*run)(CString);
    const char* target;
    int result;
    const char* started;  // the one program started, "%t" for the target as it arrives; "" for none
    const wchar_t* message;
  } cases[] = {
      {"", nullptr, RunTextFile, "a.txt", 0, "", nullptr},
      {"", nullptr, RunPDFFile, "a.pdf", 1, "", nullptr},  // handed over, whatever happened
      {"!xdg-open", nullptr, RunTextFile, "a.txt", 0, "", nullptr},
      {"!xdg-open gio kde-open", nullptr, RunTextFile, "my docs/a.txt", 1, "gio|open|%t", nullptr},  // with its verb
      {"xdg-open gio", nullptr, RunPDFFile, "r.pdf", 1, "xdg-open|%t", nullptr},
      // Browsers: the desktop's opener, then one on the search path, then the registered list.
      {"xdg-open x-www-browser mybrowser", "mybrowser", RunHtmlFile, kPage, 1, "xdg-open|%t", nullptr},
      {"x-www-browser firefox mybrowser", "mybrowser", RunHtmlFile, "r.html", 1, "x-www-browser|%t", nullptr},
      {"mybrowser", "no-such-browser:mybrowser --new-tab %s --x=100%%;", RunHtmlFile, kPage, 1,
       "mybrowser|--new-tab|%t|--x=100%", nullptr},  // the first entry that starts; "%%" is a percent sign
      {"mybrowser", "mybrowser --new", RunHtmlFile, kPage, 1, "mybrowser|--new|%t", nullptr},  // no %s: appended
      {"", nullptr, RunHtmlFile, "x.html", 0, "", L"[ERROR]Find Internet Explorer"},
      {"", ":;", RunHtmlFile, "x.html", 0, "", L"[ERROR]Find Internet Explorer"},  // separators alone
      {"", "no-such-browser;", RunHtmlFile, "x.html", 0, "", L"[ERROR]Execute Internet Explorer"},
      // The spreadsheet program found on PATH, else the opener.
      {"xdg-open", nullptr, RunExcelFile, "r.xls", 1, "xdg-open|%t", nullptr},
      {"xdg-open soffice localc", nullptr, RunExcelFile, "out/result 1.xls", 1, "localc|%t", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fakes) + " / " + c.target);
    MessageCapture messages;
    FakeDesktop desk(c.fakes);
    if (c.browser != nullptr) setenv("BROWSER", c.browser, 1);
    const bool address = c.target == std::string(kPage);
    EXPECT_EQ(c.run(address ? CString(chartcore::Utf8ToWide(kPage)) : desk.Lib(c.target)), c.result);
    std::string started = c.started;
    if (const size_t at = started.find("%t"); at != std::string::npos) {
      started.replace(at, 2, address ? kPage : desk.Native(c.target));
    }
    EXPECT_EQ(desk.Calls(*c.started ? 1 : 0), *c.started ? started + "\n" : "");
    EXPECT_EQ(desk.Finished(), 0u);  // the call returned while the program still runs
    EXPECT_EQ(messages.texts(), c.message ? std::vector<std::wstring>{c.message} : std::vector<std::wstring>{});
    for (const auto& shown : messages.shown()) {
      EXPECT_EQ(shown.caption, L"ERROR");
      EXPECT_EQ(shown.type & MB_ICONERROR, static_cast<UINT>(MB_ICONERROR));
    }
  }
}

TEST(ViewerLaunch, SpreadsheetProgramAndItsVersion) {
  MessageCapture messages;
  FakeDesktop desk("");  // none installed: version 0
  EXPECT_EQ(GetExcelAppVersion(), 0);
  desk.Add("soffice", "soffice 24");  // no dotted number: the first number
  EXPECT_EQ(GetExcelAppVersion(), 24);
  desk.Add("localc", "LibreOffice 7.6.4.1 60(Build:1)");  // before soffice; the number before a dot
  EXPECT_EQ(GetExcelAppVersion(), 7);

  const std::wstring localc = chartcore::Utf8ToWide(desk.Native("bin/localc"));
  const struct {
    int (*get)(const wchar_t*, wchar_t*, int);
    const wchar_t* progId;
    int size;
    const wchar_t* text;  // null: not found
  } lookups[] = {
      {GetAppPath, L"Excel.Application", 255, localc.c_str()},
      {GetAppPath, L"excel.application.16", 255, localc.c_str()},  // versioned, any case
      {GetAppPath, L"Excel.Application", 254, nullptr},            // buffer too small
      {GetAppPath, L"Word.Application", 255, nullptr}, {GetAppPath, L"Excel.ApplicationX", 255, nullptr},
      {GetAppPath, L"Excel.Application.", 255, nullptr}, {GetAppVersion, L"Excel.Application", 255, L"7"},
      {GetAppVersion, L"Excel.Application", 100, nullptr}, {GetAppVersion, L"Word.Application", 255, nullptr}};
  for (const auto& c : lookups) {
    wchar_t buffer[255] = L"";
    EXPECT_EQ(c.get(c.progId, buffer, c.size), c.text ? 1 : 0) << c.progId << " " << c.size;
    EXPECT_EQ(std::wstring(buffer), c.text ? c.text : L"") << c.progId << " " << c.size;
  }
  EXPECT_EQ(desk.Calls(0), "");  // looked up, never started
  EXPECT_TRUE(messages.shown().empty());
}
#else
TEST(ViewerLaunch, SpreadsheetFoundInTheRegistryWithoutStartingIt) {
  // A server registered among the machine's classes (those of the test's own
  // Wine prefix) and removed afterwards; only looked up, nothing is started.
  static const std::wstring kClass = L"Software\\Classes\\ChartcoreTest.Sheet";
  static const std::wstring kClsid = L"{6F0C2D1A-8E3B-4C57-9A61-2B7E5D4C3F10}";
  static const std::wstring kServer = L"Software\\Classes\\CLSID\\" + kClsid;
  struct Unregister {
    ~Unregister() {
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, kClass.c_str());
      RegDeleteTreeW(HKEY_LOCAL_MACHINE, kServer.c_str());
    }
  } unregister;
  const auto set = [](const std::wstring& key, const std::wstring& value) {
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
  };
  if (!set(kClass + L"\\CLSID", kClsid) || !set(kClass + L"\\CurVer", L"ChartcoreTest.Sheet.16") ||
      !set(kServer + L"\\LocalServer32", L" \"C:\\Office 16\\SHEET.EXE\" /automation")) {
    GTEST_SKIP() << "the machine's classes are not writable";
  }
  MessageCapture messages;
  wchar_t buffer[255];
  EXPECT_EQ(GetAppPath(L"ChartcoreTest.Sheet", buffer, 255), 1);
  EXPECT_EQ(std::wstring(buffer), L"C:\\Office 16\\SHEET.EXE");  // quotes and switches dropped
  EXPECT_EQ(GetAppVersion(L"ChartcoreTest.Sheet", buffer, 255), 1);
  EXPECT_EQ(std::wstring(buffer), L"16");  // what follows the last dot of CurVer
  EXPECT_EQ(GetAppPath(L"ChartcoreTest.Sheet", buffer, 254), 0);  // buffer too small
  EXPECT_TRUE(messages.shown().empty());
  // An unknown class: the user is told, and no version is found.
  EXPECT_EQ(GetAppPath(L"ChartcoreTest.Missing", buffer, 255), 0);
  ASSERT_EQ(messages.shown().size(), 1u);
  EXPECT_EQ(messages.shown()[0].text, L"Could not get CLSID from ProgID, Make sure ProgID is correct");
  EXPECT_EQ(GetAppVersion(L"ChartcoreTest.Missing", buffer, 255), 0);
  EXPECT_EQ(messages.shown().size(), 1u);
}
#endif
