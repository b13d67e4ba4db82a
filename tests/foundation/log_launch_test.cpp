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

using testing_fs::MessageCapture;
using testing_fs::TempDir;

TEST(LogFile, AppendsInOrderWithNothingBetween) {
  TempDir t;
  const CString log = t.lib("logs/trade.log");
  t.MakeDir("logs");
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
  const CString log = t.lib("shared.log");
  const int kLines = 300;
  // Each line is long enough that a torn write would show.
  const std::wstring bodyA(200, L'a');
  const std::wstring bodyB(200, L'b');
  std::vector<pid_t> children;
  for (const std::wstring* body : {&bodyA, &bodyB}) {
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      for (int i = 0; i < kLines; ++i) WriteLog(log, (*body + L"\n").c_str());
      _exit(0);
    }
    children.push_back(pid);
  }
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const std::string all = t.Read("shared.log");
  const std::string lineA = std::string(200, 'a') + "\n";
  const std::string lineB = std::string(200, 'b') + "\n";
  ASSERT_EQ(all.size(), 2u * kLines * lineA.size());  // nothing overwritten
  int countA = 0, countB = 0;
  for (size_t at = 0; at < all.size(); at += lineA.size()) {
    const std::string line = all.substr(at, lineA.size());
    if (line == lineA) ++countA;
    else if (line == lineB) ++countB;
    else ADD_FAILURE() << "torn line at byte " << at;
  }
  EXPECT_EQ(countA, kLines);
  EXPECT_EQ(countB, kLines);
}

namespace {

// A folder of fake desktop programs, alone on PATH. Each fake records the
// arguments it was started with (NUL-separated, its own path first), then
// waits until the test opens the gate before it finishes, so a test can see
// that the library returned while the program was still running.
class FakeDesktop {
 public:
  FakeDesktop() {
    m_bin = m_dir.native("bin");
    testing_fs::fs::create_directories(m_bin);
    Save("PATH", m_path);
    Save("BROWSER", m_browser);
    setenv("PATH", m_bin.c_str(), 1);
    unsetenv("BROWSER");
  }
  ~FakeDesktop() {
    OpenGate();
    for (const std::string& name : m_recorders) {
      if (testing_fs::fs::exists(Record(name))) WaitFor(m_dir.native(name + ".done"));
    }
    Restore("PATH", m_path);
    Restore("BROWSER", m_browser);
  }

  // A program that records its arguments; for "--version" it prints version.
  void AddRecorder(const std::string& name, const std::string& version = "") {
    const std::string dir = m_dir.root().string();
    Script(name, "#!/bin/sh\nPATH=/usr/bin:/bin\n"
                 "if [ \"$1\" = --version ]; then printf '%s\\n' '" + version + "'; exit 0; fi\n"
                 "printf '%s\\0' \"$0\" \"$@\" > '" + dir + "/" + name + ".tmp'\n"
                 "mv '" + dir + "/" + name + ".tmp' '" + dir + "/" + name + ".args'\n"
                 "i=0\nwhile [ ! -e '" + dir + "/gate' ] && [ $i -lt 600 ]; do sleep 0.05; i=$((i+1)); done\n"
                 ": > '" + dir + "/" + name + ".done'\n");
    m_recorders.push_back(name);
  }
  // A program that cannot be executed (its interpreter does not exist).
  void AddBroken(const std::string& name) { Script(name, "#!/nonexistent/interpreter\n"); }

  std::string BinPath(const std::string& name) const { return (m_bin / name).string(); }
  testing_fs::fs::path Record(const std::string& name) const { return m_dir.native(name + ".args"); }
  bool Finished(const std::string& name) const { return testing_fs::fs::exists(m_dir.native(name + ".done")); }
  void OpenGate() const { m_dir.MakeFile("gate", ""); }
  const TempDir& dir() const { return m_dir; }

  // The arguments the fake was started with, waiting for it to write them.
  std::vector<std::string> Arguments(const std::string& name) const {
    std::vector<std::string> words;
    if (!WaitFor(Record(name))) return words;
    const std::string all = m_dir.Read(name + ".args");
    size_t start = 0;
    for (size_t end; (end = all.find('\0', start)) != std::string::npos; start = end + 1) {
      words.push_back(all.substr(start, end - start));
    }
    return words;
  }

  // Polls for a file the fakes write; the bound only keeps a broken run from
  // hanging, nothing is measured.
  static bool WaitFor(const testing_fs::fs::path& path) {
    for (int i = 0; i < 2000; ++i) {
      if (testing_fs::fs::exists(path)) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
  }

 private:
  void Script(const std::string& name, const std::string& text) {
    std::ofstream(m_bin / name) << text;
    testing_fs::fs::permissions(m_bin / name, testing_fs::fs::perms::owner_all);
  }
  static void Save(const char* name, std::string& keep) {
    const char* value = std::getenv(name);
    keep = value != nullptr ? std::string(value) + '\x01' : std::string();
  }
  static void Restore(const char* name, const std::string& kept) {
    if (kept.empty()) unsetenv(name);
    else setenv(name, kept.substr(0, kept.size() - 1).c_str(), 1);
  }

  TempDir m_dir;
  testing_fs::fs::path m_bin;
  std::string m_path;
  std::string m_browser;
  std::vector<std::string> m_recorders;
};

// True when this process has no child at all, running or zombie: a viewer
// started and left behind would show up here.
bool HasNoChildren() {
  errno = 0;
  return waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

using Words = std::vector<std::string>;

}  // namespace

TEST(ViewerLaunch, PathArrivesWholeAndCallDoesNotWait) {
  FakeDesktop desk;
  desk.AddRecorder("xdg-open");
  const CString path = desk.dir().lib("my docs/it's \"q\" $HOME; a*b.pdf");
  EXPECT_EQ(RunPDFFile(path), 1);
  // The fake is still waiting for the gate, so the call did not wait for it,
  // and neither it nor a helper is a child of ours.
  EXPECT_FALSE(desk.Finished("xdg-open"));
  EXPECT_TRUE(HasNoChildren());
  const std::string native = desk.dir().native("my docs").string() + "/it's \"q\" $HOME; a*b.pdf";
  EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.BinPath("xdg-open"), native}));
  desk.OpenGate();
  EXPECT_TRUE(FakeDesktop::WaitFor(desk.dir().native("xdg-open.done")));
  EXPECT_TRUE(HasNoChildren());
}

TEST(ViewerLaunch, OpenersInOrderAndFailures) {
  MessageCapture messages;
  {
    FakeDesktop desk;  // no opener at all
    EXPECT_EQ(RunTextFile(desk.dir().lib("a.txt")), 0);
    EXPECT_EQ(RunPDFFile(desk.dir().lib("a.pdf")), 1);  // handed over, whatever happened
  }
  {
    // An opener that cannot be executed is reported back and the next is tried.
    FakeDesktop desk;
    desk.AddBroken("xdg-open");
    desk.AddRecorder("gio");
    EXPECT_NE(RunTextFile(desk.dir().lib("notes.txt")), 0);
    EXPECT_EQ(desk.Arguments("gio"), (Words{desk.BinPath("gio"), "open", desk.dir().native("notes.txt").string()}));
  }
  {
    FakeDesktop desk;
    desk.AddBroken("xdg-open");
    EXPECT_EQ(RunTextFile(desk.dir().lib("notes.txt")), 0);
  }
  EXPECT_TRUE(messages.shown().empty());  // only the browser search speaks
  EXPECT_TRUE(HasNoChildren());
}

TEST(ViewerLaunch, BrowserAttemptsAndTheirMessages) {
  MessageCapture messages;
  const std::string page = "https://example.com/a b?x=1&y=\\2";  // an address is not a path
  {
    FakeDesktop desk;
    desk.AddRecorder("xdg-open");
    desk.AddRecorder("x-www-browser");
    EXPECT_NE(RunHtmlFile(CString(chartcore::Utf8ToWide(page))), 0);
    EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.BinPath("xdg-open"), page}));
    EXPECT_FALSE(testing_fs::fs::exists(desk.Record("x-www-browser")));  // first attempt won
  }
  {
    FakeDesktop desk;  // second attempt: a browser on the search path
    desk.AddRecorder("x-www-browser");
    EXPECT_NE(RunHtmlFile(desk.dir().lib("report.html")), 0);
    EXPECT_EQ(desk.Arguments("x-www-browser"),
              (Words{desk.BinPath("x-www-browser"), desk.dir().native("report.html").string()}));
  }
  EXPECT_TRUE(messages.shown().empty());
  {
    FakeDesktop desk;  // nothing registered either
    EXPECT_EQ(RunHtmlFile(L"x.html"), 0);
    ASSERT_EQ(messages.shown().size(), 1u);
    EXPECT_EQ(messages.shown()[0].text, L"[ERROR]Find Internet Explorer");
    EXPECT_EQ(messages.shown()[0].caption, L"ERROR");
    EXPECT_EQ(messages.shown()[0].type & MB_ICONERROR, static_cast<UINT>(MB_ICONERROR));
  }
  messages.clear();
  {
    FakeDesktop desk;  // registered but not there; the trailing ';' is trimmed
    setenv("BROWSER", "no-such-browser;", 1);
    EXPECT_EQ(RunHtmlFile(L"x.html"), 0);
    EXPECT_EQ(messages.texts(), (std::vector<std::wstring>{L"[ERROR]Execute Internet Explorer"}));
  }
  messages.clear();
  {
    FakeDesktop desk;  // the registered list: first usable entry, %s placed
    desk.AddRecorder("mybrowser");
    setenv("BROWSER", "no-such-browser:mybrowser --new-tab %s --x=100%%;", 1);
    EXPECT_NE(RunHtmlFile(CString(chartcore::Utf8ToWide(page))), 0);
    EXPECT_EQ(desk.Arguments("mybrowser"), (Words{desk.BinPath("mybrowser"), "--new-tab", page, "--x=100%"}));
  }
  {
    FakeDesktop desk;  // without %s the page goes last
    desk.AddRecorder("mybrowser");
    setenv("BROWSER", "mybrowser", 1);
    EXPECT_NE(RunHtmlFile(L"p.html"), 0);
    EXPECT_EQ(desk.Arguments("mybrowser"), (Words{desk.BinPath("mybrowser"), "p.html"}));
  }
  EXPECT_TRUE(messages.shown().empty());
  EXPECT_TRUE(HasNoChildren());
}

TEST(ViewerLaunch, SpreadsheetFoundOnPathAndItsVersion) {
  MessageCapture messages;
  wchar_t buffer[255];
  {
    FakeDesktop desk;
    desk.AddRecorder("soffice", "LibreOffice 6.1.0.3 10(Build:3)");
    desk.AddRecorder("localc", "LibreOffice 7.6.4.1 60(Build:1)");
    // localc comes first; the version is the number before the first dot.
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 255), 1);
    EXPECT_EQ(std::wstring(buffer), chartcore::Utf8ToWide(desk.BinPath("localc")));
    EXPECT_EQ(GetAppVersion(L"Excel.Application", buffer, 255), 1);
    EXPECT_EQ(std::wstring(buffer), L"7");
    EXPECT_EQ(GetExcelAppVersion(), 7);
    EXPECT_EQ(GetAppPath(L"excel.application.16", buffer, 255), 1);  // versioned, any case
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 254), 0);  // buffer too small
    EXPECT_EQ(GetAppVersion(L"Excel.Application", buffer, 100), 0);
    EXPECT_EQ(GetAppPath(L"Word.Application", buffer, 255), 0);
    EXPECT_EQ(GetAppPath(L"Excel.ApplicationX", buffer, 255), 0);
    EXPECT_EQ(GetAppPath(nullptr, buffer, 255), 0);

    EXPECT_NE(RunExcelFile(desk.dir().lib("out/result 1.xls")), 0);
    EXPECT_EQ(desk.Arguments("localc"),
              (Words{desk.BinPath("localc"), desk.dir().native("out").string() + "/result 1.xls"}));
  }
  {
    FakeDesktop desk;
    desk.AddRecorder("soffice", "soffice 24");  // no dotted number: the first one
    EXPECT_EQ(GetExcelAppVersion(), 24);
  }
  {
    FakeDesktop desk;
    desk.AddRecorder("libreoffice", "no version here");
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 255), 1);
    EXPECT_EQ(GetExcelAppVersion(), 0);
  }
  {
    // None installed: version 0, and the file goes to the default opener.
    FakeDesktop desk;
    desk.AddRecorder("xdg-open");
    EXPECT_EQ(GetExcelAppVersion(), 0);
    EXPECT_EQ(GetAppPath(L"Excel.Application", buffer, 255), 0);
    EXPECT_NE(RunExcelFile(desk.dir().lib("r.xls")), 0);
    EXPECT_EQ(desk.Arguments("xdg-open"), (Words{desk.BinPath("xdg-open"), desk.dir().native("r.xls").string()}));
  }
  EXPECT_TRUE(messages.shown().empty());
  EXPECT_TRUE(HasNoChildren());
}
#endif
