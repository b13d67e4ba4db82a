// The shared scratch folder (common/temp_dir.h) in the shape the platform
// tests use, and the system error numbers the file classes report.
#ifndef CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
#define CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_

#include <cerrno>
#include <fstream>
#include <string>

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

// TempFolder: names below the folder in the library's form
// ("<temp>/chartcore_ws_…\" + name) and as native bytes for chmod and stat.
// Read, MakeFile and Tree come from TempDir and bypass the library.
class TempFolder : public TempDir {
 public:
  CString Path(const wchar_t* name) const { return CString(root().wstring().c_str()) + L"\\" + name; }
  std::string Native(const char* name) const { return root().string() + "/" + name; }
};

inline void WriteAll(const std::string& native, const std::string& bytes) {
  std::ofstream(native, std::ios::binary) << bytes;
}

}  // namespace chartcore_test

#endif  // CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
