// A temporary folder for tests that touch real files, with small helpers to
// read and write its files directly (bypassing the classes under test).
#ifndef CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_
#define CHARTCORE_TESTS_PLATFORM_TEMP_FOLDER_H_

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"

namespace chartcore_test {

// A fresh folder per test, removed with everything in it afterwards.
class TempFolder {
 public:
  TempFolder() {
    char tmpl[] = "/tmp/chartcore_fileXXXXXX";
    const char* made = mkdtemp(tmpl);
    if (made != nullptr) m_native = made;
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
        if (lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
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
