// A temporary folder for tests that touch real files, with small helpers to
// read and write its files directly (bypassing the classes under test).
#ifndef CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
#define CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(_WIN32)
#include <direct.h>
#endif

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"

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

// A fresh folder per test, removed with everything in it afterwards.
class TempFolder {
 public:
  TempFolder() {
#if defined(_WIN32)
    // No mkdtemp: the process id and a counter under the user's temp folder.
    static unsigned serial = 0;
    char base[MAX_PATH + 1];
    const DWORD length = GetTempPathA(MAX_PATH + 1, base);
    for (int attempt = 0; length > 0 && attempt < 1000 && m_native.empty(); ++attempt) {
      const std::string candidate = std::string(base, length) + "chartcore_file" +
                                    std::to_string(GetCurrentProcessId()) + "_" + std::to_string(serial++);
      if (_mkdir(candidate.c_str()) == 0) m_native = candidate;
    }
#else
    char tmpl[] = "/tmp/chartcore_fileXXXXXX";
    const char* made = mkdtemp(tmpl);
    if (made != nullptr) m_native = made;
#endif
  }
  ~TempFolder() { RemoveTree(m_native); }
  // The folder in the library's form: "/tmp/chartcore_fileXXXX\" + name.
  CString Path(const wchar_t* name) const {
    return CString(std::wstring(m_native.begin(), m_native.end()).c_str()) + L"\\" + name;
  }
  std::string Native(const char* name) const { return m_native + "/" + name; }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    if (DIR* d = opendir(m_native.c_str())) {
      while (const dirent* e = readdir(d))
        if (std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0) names.push_back(e->d_name);
      closedir(d);
    }
    return names;
  }

 private:
  static void RemoveTree(const std::string& path) {
    if (path.empty()) return;
    if (DIR* d = opendir(path.c_str())) {
      while (const dirent* e = readdir(d)) {
        if (std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0) continue;
        const std::string child = path + "/" + e->d_name;
        struct stat st;
#if defined(_WIN32)
        // No links to follow; read-only files must become writable to go.
        chmod(child.c_str(), _S_IREAD | _S_IWRITE);
        if (stat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
#else
        if (lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
#endif
          RemoveTree(child);
        } else {
          unlink(child.c_str());
        }
      }
      closedir(d);
    }
    rmdir(path.c_str());
  }
  std::string m_native;
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
