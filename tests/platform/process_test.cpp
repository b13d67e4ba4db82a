// Starting programs where the system has no CreateProcessW (viewers, the
// spreadsheet's version): no shell in between, bounded output, bounded wait.
#if !defined(_WIN32)

#include "chartcore/platform/process.h"

#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
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

#endif  // !_WIN32
