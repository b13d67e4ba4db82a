#include "chartcore/foundation/log_launch.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/foundation/paths.h"
#include "temp_workspace.h"

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <thread>
#endif

using chartcore_test::TempDir;
using testing_fs::MessageCapture;

TEST(LogFile, AppendsInOrderWithNothingBetween) {
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
  // A folder that does not exist is skipped silently.
  WriteLog(t.lib("no/such/dir/x.log"), L"lost");
  EXPECT_FALSE(t.Has("no"));
}

#if !defined(_WIN32)
TEST(LogFile, TwoProcessesAppendWholeLines) {
  TempDir t;
  const int kLines = 300;
  pid_t children[2];
  for (int c = 0; c < 2; ++c) {
    if ((children[c] = fork()) == 0) {
      // Long lines, so that a torn or overwritten write would show.
      const std::wstring line = std::wstring(200, L"ab"[c]) + L"\n";
      for (int i = 0; i < kLines; ++i) WriteLog(t.lib("shared.log"), line.c_str());
      _exit(0);
    }
    ASSERT_GT(children[c], 0);
  }
  for (pid_t pid : children) ASSERT_EQ(waitpid(pid, nullptr, 0), pid);
  const std::string all = t.Read("shared.log");
  ASSERT_EQ(all.size(), 2u * kLines * 201);  // nothing overwritten
  int lineOfA = 0;
  for (size_t at = 0; at < all.size() && !HasFailure(); at += 201) {
    const std::string line = all.substr(at, 201);
    EXPECT_EQ(line, std::string(200, line[0] == 'a' ? 'a' : 'b') + "\n") << "torn line at byte " << at;
    lineOfA += line[0] == 'a';
  }
  EXPECT_EQ(lineOfA, kLines);  // and so as many of the other
}

namespace {

// A folder of fake desktop programs, alone on PATH (BROWSER unset). Each fake
// records the arguments it was started with (NUL-separated, its own path
// first), then waits for the test to open the gate before it finishes, so a
// test can see that the library returned while the program still ran.
class FakeDesktop {
 public:
  FakeDesktop() : m_path(std::getenv("PATH") != nullptr ? std::getenv("PATH") : "/usr/bin:/bin") {
    std::filesystem::create_directories(m_dir.native("bin"));
    setenv("PATH", m_dir.native("bin").c_str(), 1);
    unsetenv("BROWSER");
  }
  ~FakeDesktop() {
    OpenGate();  // every fake that started finishes before its folder goes
    for (const std::string& name : m_recorders) {
      if (m_dir.Has(name + ".args")) WaitFor(name + ".done");
    }
    setenv("PATH", m_path.c_str(), 1);
    unsetenv("BROWSER");
  }

  // A recording program; for "--version" it prints version instead.
  void AddRecorder(const std::string& name, const std::string& version = "") {
    const std::string out = "'" + m_dir.root().string() + "/" + name;
    Script(name, "#!/bin/sh\nPATH=/usr/bin:/bin\n"
                 "if [ \"$1\" = --version ]; then printf '%s\\n' '" + version + "'; exit 0; fi\n"
                 "printf '%s\\0' \"$0\" \"$@\" > " + out + ".tmp'\nmv " + out + ".tmp' " + out + ".args'\n"
                 "i=0\nwhile [ ! -e '" + m_dir.root().string() + "/gate' ] && [ $i -lt 600 ]; do\n"
                 "  sleep 0.05; i=$((i+1))\ndone\n: > " + out + ".done'\n");
    m_recorders.push_back(name);
  }
  // A program whose interpreter does not exist, so exec fails.
  void AddBroken(const std::string& name) { Script(name, "#!/nonexistent/interpreter\n"); }

  std::string Bin(const std::string& name) const { return m_dir.native("bin/" + name).string(); }
  std::string Native(const std::string& relative) const { return m_dir.native(relative).string(); }
  CString Lib(const std::string& relative) const { return m_dir.lib(relative); }
  bool Finished(const std::string& name) const { return m_dir.Has(name + ".done"); }
  void OpenGate() const { m_dir.MakeFile("gate", ""); }

  // The arguments a fake was started with (waiting for it to write them).
  std::vector<std::string> Arguments(const std::string& name) const {
    std::vector<std::string> words;
    const std::string all = WaitFor(name + ".args") ? m_dir.Read(name + ".args") : "";
    for (size_t start = 0, end; (end = all.find('\0', start)) != std::string::npos; start = end + 1) {
      words.push_back(all.substr(start, end - start));
    }
    return words;
  }

  // Polls for a file a fake writes; the bound only keeps a broken run from
  // hanging, nothing is measured.
  bool WaitFor(const std::string& relative) const {
    for (int i = 0; i < 2000 && !m_dir.Has(relative); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return m_dir.Has(relative);
  }

 private:
  void Script(const std::string& name, const std::string& text) {
    m_dir.MakeFile("bin/" + name, text);
    std::filesystem::permissions(m_dir.native("bin/" + name), std::filesystem::perms::owner_all);
  }

  TempDir m_dir;
  std::string m_path;
  std::vector<std::string> m_recorders;
};

// True when this process has no child at all, running or zombie: a viewer
// started and left behind would show up here.
bool HasNoChildren() {
  errno = 0;
  return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

using Words = std::vector<std::string>;
using Texts = std::vector<std::wstring>;
const std::string kPage = "https://example.com/a b?x=1&y=\\2";  // an address is not a path

}  // namespace

TEST(ViewerLaunch, PathArrivesWholeAndCallDoesNotWait) {
  FakeDesktop desk;
  desk.AddRecorder("xdg-open");
  const std::string awkward = "my docs/it's \"q\" $HOME; a*b.pdf";
  EXPECT_EQ(RunPDFFile(desk.Lib(awkward)), 1);
  // The fake still waits for the gate, so the call did not wait for it, and
  // neither it nor a helper process is a child of ours.
  EXPECT_FALSE(desk.Finished("xdg-open"));
  EXPECT_TRUE(HasNoChildren());
  EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.Bin("xdg-open"), desk.Native(awkward)}));
  desk.OpenGate();
  EXPECT_TRUE(desk.WaitFor("xdg-open.done"));
  EXPECT_TRUE(HasNoChildren());
}

TEST(ViewerLaunch, OpenersAndBrowsersInOrderWithTheirMessages) {
  MessageCapture messages;
  {
    FakeDesktop desk;  // no opener at all
    EXPECT_EQ(RunTextFile(desk.Lib("a.txt")), 0);
    EXPECT_EQ(RunPDFFile(desk.Lib("a.pdf")), 1);  // handed over, whatever happened
    desk.AddBroken("xdg-open");  // a failed exec is reported back...
    EXPECT_EQ(RunTextFile(desk.Lib("a.txt")), 0);
    desk.AddRecorder("gio");  // ...and the next opener is tried
    EXPECT_EQ(RunTextFile(desk.Lib("a.txt")), 1);
    EXPECT_EQ(desk.Arguments("gio"), (Words{desk.Bin("gio"), "open", desk.Native("a.txt")}));
  }
  {
    FakeDesktop desk;
    desk.AddRecorder("x-www-browser");  // second attempt: a browser on the search path
    EXPECT_EQ(RunHtmlFile(desk.Lib("r.html")), 1);
    EXPECT_EQ(desk.Arguments("x-www-browser"), (Words{desk.Bin("x-www-browser"), desk.Native("r.html")}));
    desk.AddRecorder("xdg-open");  // the first attempt wins when it can
    EXPECT_EQ(RunHtmlFile(CString(chartcore::Utf8ToWide(kPage))), 1);
    EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.Bin("xdg-open"), kPage}));
  }
  EXPECT_TRUE(messages.shown().empty());
  {
    FakeDesktop desk;  // nothing on PATH and nothing registered
    EXPECT_EQ(RunHtmlFile(L"x.html"), 0);
    setenv("BROWSER", "no-such-browser;", 1);  // registered but missing; ';' trimmed
    EXPECT_EQ(RunHtmlFile(L"x.html"), 0);
    EXPECT_EQ(messages.texts(), (Texts{L"[ERROR]Find Internet Explorer", L"[ERROR]Execute Internet Explorer"}));
    for (const auto& shown : messages.shown()) {
      EXPECT_EQ(shown.caption, L"ERROR");
      EXPECT_EQ(shown.type & MB_ICONERROR, static_cast<UINT>(MB_ICONERROR));
    }
    desk.AddRecorder("mybrowser");  // the first usable entry of the list, %s placed
    setenv("BROWSER", "no-such-browser:mybrowser --new-tab %s --x=100%%;", 1);
    EXPECT_EQ(RunHtmlFile(CString(chartcore::Utf8ToWide(kPage))), 1);
    EXPECT_EQ(desk.Arguments("mybrowser"), (Words{desk.Bin("mybrowser"), "--new-tab", kPage, "--x=100%"}));
  }
  EXPECT_EQ(messages.shown().size(), 2u);
  EXPECT_TRUE(HasNoChildren());
}

TEST(ViewerLaunch, SpreadsheetFoundOnPathAndItsVersion) {
  MessageCapture messages;
  wchar_t buffer[255];
  {
    FakeDesktop desk;
    desk.AddRecorder("soffice", "LibreOffice 6.1.0.3 10(Build:3)");
    desk.AddRecorder("localc", "LibreOffice 7.6.4.1 60(Build:1)");
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 255), 1);  // localc comes first
    EXPECT_EQ(std::wstring(buffer), chartcore::Utf8ToWide(desk.Bin("localc")));
    EXPECT_EQ(GetAppVersion(L"Excel.Application", buffer, 255), 1);
    EXPECT_EQ(std::wstring(buffer), L"7");  // the number before the first dot
    EXPECT_EQ(GetExcelAppVersion(), 7);
    EXPECT_EQ(GetAppPath(L"excel.application.16", buffer, 255), 1);  // versioned, any case
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 254), 0);  // buffer too small
    EXPECT_EQ(GetAppVersion(L"Excel.Application", buffer, 100), 0);
    EXPECT_EQ(GetAppPath(L"Word.Application", buffer, 255), 0);
    EXPECT_EQ(GetAppPath(L"Excel.ApplicationX", buffer, 255), 0);
    EXPECT_EQ(RunExcelFile(desk.Lib("out/result 1.xls")), 1);
    EXPECT_EQ(desk.Arguments("localc"), (Words{desk.Bin("localc"), desk.Native("out/result 1.xls")}));
  }
  {
    FakeDesktop desk;
    desk.AddRecorder("soffice", "soffice 24");  // no dotted number: the first one
    EXPECT_EQ(GetExcelAppVersion(), 24);
  }
  {
    FakeDesktop desk;  // none installed: version 0, the file goes to the opener
    desk.AddRecorder("xdg-open");
    EXPECT_EQ(GetExcelAppVersion(), 0);
    EXPECT_EQ(RunExcelFile(desk.Lib("r.xls")), 1);
    EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.Bin("xdg-open"), desk.Native("r.xls")}));
  }
  EXPECT_TRUE(messages.shown().empty());
  EXPECT_TRUE(HasNoChildren());
}
#endif

#if defined(_WIN32)
namespace {

// A spreadsheet server registered among the machine's classes (those of the
// test's own Wine prefix), removed afterwards. Only looked up: nothing is
// started.
constexpr const wchar_t* kSheetClsid = L"{6F0C2D1A-8E3B-4C57-9A61-2B7E5D4C3F10}";

class RegisteredSheet {
 public:
  RegisteredSheet()
      : registered(Set(L"Software\\Classes\\ChartcoreTest.Sheet\\CLSID", kSheetClsid) &&
                   Set(L"Software\\Classes\\ChartcoreTest.Sheet\\CurVer", L"ChartcoreTest.Sheet.16") &&
                   Set(ServerKey() + L"\\LocalServer32", L" \"C:\\Office 16\\SHEET.EXE\" /automation")) {}
  ~RegisteredSheet() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\ChartcoreTest.Sheet");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, ServerKey().c_str());
  }
  RegisteredSheet(const RegisteredSheet&) = delete;
  RegisteredSheet& operator=(const RegisteredSheet&) = delete;

  const bool registered;  // false without the right to write the machine's classes

 private:
  static std::wstring ServerKey() { return std::wstring(L"Software\\Classes\\CLSID\\") + kSheetClsid; }
  static bool Set(const std::wstring& subKey, const std::wstring& value) {
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, subKey.c_str(), nullptr, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
  }
};

}  // namespace

TEST(ViewerLaunch, SpreadsheetFoundInTheRegistryWithoutStartingIt) {
  MessageCapture messages;
  RegisteredSheet sheet;
  if (!sheet.registered) GTEST_SKIP() << "the machine's classes are not writable";
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
