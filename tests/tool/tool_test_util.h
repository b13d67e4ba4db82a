// Helpers of the tool tests: running the tool in-process with captured
// output, scratch folders, and file bytes.
#ifndef CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_
#define CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/temp_dir.h"
#include "sample_workspace.h"
#include "tool.h"

namespace tooltest {

namespace fs = std::filesystem;

// What one run of the tool printed and returned.
struct RunResult {
  int code;
  std::string out;
  std::string err;
};

// Runs the tool with args (no program name) as if from a shell; the
// terminal flags say what stdout and stderr are.
inline RunResult Cli(const std::vector<std::string>& args, bool outTerminal = false, bool errTerminal = false) {
  std::vector<const char*> argv = {"chartcore"};
  for (const std::string& arg : args) argv.push_back(arg.c_str());
  std::ostringstream out;
  std::ostringstream err;
  chartcore::tool::ToolContext context(out, err, outTerminal, errTerminal);
  const int code = chartcore::tool::RunTool(static_cast<int>(argv.size()), argv.data(), context);
  return {code, out.str(), err.str()};
}

// A refusal: this exit code, nothing on stdout, exactly err on stderr.
inline ::testing::AssertionResult Refused(const RunResult& run, int code, const std::string& err) {
  if (run.code == code && run.out.empty() && run.err == err) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "exit " << run.code << ", stdout \"" << run.out << "\", stderr \"" << run.err
                                       << "\"";
}

// Whether text holds part (the whole text is shown when it does not).
inline ::testing::AssertionResult Has(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess() << "\"" << part << "\" in:\n" << text;
  return ::testing::AssertionFailure() << "\"" << part << "\" not in:\n" << text;
}

// A scratch folder whose paths come as the tool takes them: dir / "a/b".
class TempDir : public chartcore_test::TempDir {
 public:
  std::string path() const { return root().string(); }
  std::string operator/(const std::string& relative) const { return (root() / relative).string(); }
};

// A scratch folder holding the sample workspace.
class SampleDir : public TempDir {
 public:
  SampleDir() { chartcore::tool::WriteSampleWorkspace(path()); }
};

inline std::string ReadBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::string& path, const std::string& bytes) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

// Every file below root (relative path with "/" -> bytes).
inline std::map<std::string, std::string> TreeBytes(const std::string& root) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_regular_file()) continue;
    files[fs::relative(entry.path(), root).generic_string()] = ReadBytes(entry.path().string());
  }
  return files;
}

}  // namespace tooltest

#endif  // CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_
