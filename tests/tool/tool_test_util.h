// Helpers of the tool tests: running the tool in-process with captured
// output, scratch folders, and file bytes.
#ifndef CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_
#define CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

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

// A fresh folder below the system's temporary folder, removed afterwards.
class TempDir {
 public:
  TempDir() {
    static std::atomic<int> serial{0};
    do {
      root_ = fs::temp_directory_path() / ("chartcore_tool_test_" + std::to_string(std::random_device{}()) + "_" +
                                           std::to_string(serial++));
    } while (!fs::create_directory(root_));
  }
  ~TempDir() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::string path() const { return root_.string(); }
  std::string operator/(const std::string& relative) const { return (root_ / relative).string(); }

 private:
  fs::path root_;
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
    if (entry.is_regular_file()) {
      files[fs::relative(entry.path(), root).generic_string()] = ReadBytes(entry.path().string());
    }
  }
  return files;
}

}  // namespace tooltest

#endif  // CHARTCORE_TESTS_TOOL_TOOL_TEST_UTIL_H_
