// Starting programs where the system has no CreateProcessW (viewers, the
// spreadsheet's version): no shell in between, bounded output, bounded wait.
#if !defined(_WIN32)

#include "chartcore/platform/process.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "temp_folder.h"

using chartcore::FindProgramOnPath;
using chartcore::RunProgramAndCapture;
using chartcore::StartDetachedProgram;

TEST(Process, ProgramsAreFoundOnPathOnlyWhenExecutable) {
  chartcore_test::TempFolder dir;
  std::filesystem::create_directory(dir.Native("bin"));
  std::filesystem::create_directory(dir.Native("bin/folder"));
  chartcore_test::WriteAll(dir.Native("bin/tool"), "#!/bin/sh\necho tool\n");
  chartcore_test::WriteAll(dir.Native("bin/plain"), "not a program\n");
  std::filesystem::permissions(dir.Native("bin/tool"), std::filesystem::perms::owner_all);
  const std::string saved = std::getenv("PATH") != nullptr ? std::getenv("PATH") : "";
  // An empty entry stands for the current directory and is skipped.
  setenv("PATH", ("::" + dir.Native("nowhere") + ":" + dir.Native("bin") + ":").c_str(), 1);
  EXPECT_EQ(FindProgramOnPath("tool"), dir.Native("bin/tool"));
  EXPECT_EQ(FindProgramOnPath("plain"), "");   // no execute permission
  EXPECT_EQ(FindProgramOnPath("folder"), "");  // a directory is not a program
  EXPECT_EQ(FindProgramOnPath(""), "");
  // A name with a slash is checked where it is, PATH aside.
  EXPECT_EQ(FindProgramOnPath(dir.Native("bin/tool")), dir.Native("bin/tool"));
  EXPECT_EQ(FindProgramOnPath(dir.Native("bin/plain")), "");
  setenv("PATH", saved.c_str(), 1);
}

TEST(Process, CapturedOutputIsBoundedAndSoIsTheWait) {
  const std::string sh = FindProgramOnPath("sh");
  ASSERT_FALSE(sh.empty());
  std::string out;
  // Arguments arrive as they are: no shell interprets them.
  ASSERT_TRUE(RunProgramAndCapture(sh, {"-c", "printf '%s|' \"$@\"", "sh", "a b", "$HOME", "*"}, out, 10000, 100));
  EXPECT_EQ(out, "a b|$HOME|*|");
  // Output beyond the limit is read and dropped, so the program still ends.
  ASSERT_TRUE(RunProgramAndCapture(sh, {"-c", "head -c 200000 /dev/zero"}, out, 10000, 10));
  EXPECT_EQ(out, std::string(10, '\0'));
  // A program that keeps its output open is killed at the deadline and reaped.
  EXPECT_FALSE(RunProgramAndCapture(sh, {"-c", "sleep 30"}, out, 200, 100));
  errno = 0;
  EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD);
  EXPECT_FALSE(RunProgramAndCapture("/nonexistent/program", {}, out, 1000, 100));
  EXPECT_FALSE(StartDetachedProgram("/nonexistent/program", {}));
  EXPECT_FALSE(StartDetachedProgram("", {}));
}

TEST(Process, StartedProgramsKeepNothingOfTheHost) {
  if (!std::filesystem::exists("/proc/self/status")) GTEST_SKIP() << "no /proc to look at a program's state";
  const std::string sh = FindProgramOnPath("sh");
  const std::string cat = FindProgramOnPath("cat");
  ASSERT_FALSE(sh.empty() || cat.empty());
  // The host blocks one signal and ignores another; neither reaches a
  // program it starts.
  sigset_t blocked, saved;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &blocked, &saved), 0);
  struct sigaction ignore {}, savedAction {};
  ignore.sa_handler = SIG_IGN;
  ASSERT_EQ(sigaction(SIGUSR2, &ignore, &savedAction), 0);
  std::string status;
  const bool ran = RunProgramAndCapture(cat, {"/proc/self/status"}, status, 10000, 100000);
  sigaction(SIGUSR2, &savedAction, nullptr);
  pthread_sigmask(SIG_SETMASK, &saved, nullptr);
  ASSERT_TRUE(ran);
  // The masks are hexadecimal, signal n at bit n - 1; the C library treats
  // its own signals from 32 up as it likes, so only signals 1 to 31 count.
  std::istringstream lines(status);
  int seen = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("SigBlk:", 0) != 0 && line.rfind("SigIgn:", 0) != 0) continue;
    ++seen;
    EXPECT_EQ(std::stoull(line.substr(7), nullptr, 16) & 0x7FFFFFFFull, 0u) << line;
  }
  EXPECT_EQ(seen, 2);

  // A detached shell tells where its descriptors 0, 1 and 2 lead through a
  // FIFO the test reads to its end (the open waits for the writer). The
  // links are read in a subshell: a shell may apply a command's redirection
  // to itself while the command runs.
  chartcore_test::TempFolder dir;
  const std::string fifo = dir.Native("fds");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  ASSERT_TRUE(StartDetachedProgram(
      sh, {"-c", "exec 3>\"$1\"; for n in 0 1 2; do echo \"$(readlink /proc/$$/fd/$n)\" >&3; done", "sh", fifo}));
  std::ifstream in(fifo);
  const std::string links((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(links, "/dev/null\n/dev/null\n/dev/null\n");
}

#endif  // !_WIN32
