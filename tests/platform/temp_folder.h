// A temporary folder for the platform tests that touch real files, with small
// helpers to read and write its files directly (bypassing the classes under
// test), and the system error numbers the file classes report.
#ifndef CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
#define CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "common/temp_dir.h"

namespace chartcore_test {

// System error numbers as the file classes report them: errno on Linux,
// GetLastError's numbers on Windows.
#if defined(_WIN32)
constexpr long kOsNotFound = ERROR_FILE_NOT_FOUND;
constexpr long kOsAccessDenied = ERROR_ACCESS_DENIED;
constexpr long kOsDiskFull = ERROR_DISK_FULL;
constexpr long kOsIoError = ERROR_GEN_FAILURE;
#else
constexpr long kOsNotFound = ENOENT;
constexpr long kOsAccessDenied = EACCES;
constexpr long kOsDiskFull = ENOSPC;
constexpr long kOsIoError = EIO;
#endif

// TempFolder: the shared scratch folder (common/temp_dir.h) in the shape the
// platform tests use: flat names, the library's path form and native paths.
class TempFolder {
 public:
  // The folder in the library's form: "<temp>/chartcore_ws_…\" + name.
  CString Path(const wchar_t* name) const { return CString(m_dir.root().wstring().c_str()) + L"\\" + name; }
  std::string Native(const char* name) const { return m_dir.root().string() + "/" + name; }
  // The names in the folder, in the system's listing order.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (auto it = std::filesystem::directory_iterator(m_dir.root(), ec); !ec && it != std::filesystem::end(it);
         it.increment(ec)) {
      names.push_back(it->path().filename().u8string());
    }
    return names;
  }

 private:
  TempDir m_dir;
};

inline std::string ReadAll(const std::string& native) {
  std::ifstream in(native, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteAll(const std::string& native, const std::string& bytes) {
  std::ofstream out(native, std::ios::binary);
  out << bytes;
}

}  // namespace chartcore_test

#endif  // CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
