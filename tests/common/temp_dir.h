// A scratch folder for tests that touch real files: created fresh under the
// system's temporary folder and removed with everything in it (read-only
// files and folders included). Its helpers read and write files directly,
// bypassing the library, so a test's expectations never come from the code
// under test.
//
//   chartcore_test::TempDir dir;
//   dir.MakeFile("a/b.txt", "x");
//   EXPECT_EQ(dir.Tree(""), (std::vector<std::string>{"a/", "a/b.txt"}));
#ifndef CHARTCORE_TESTS_COMMON_TEMP_DIR_H_
#define CHARTCORE_TESTS_COMMON_TEMP_DIR_H_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/text_codec.h"

namespace chartcore_test {

namespace fs = std::filesystem;

// TempDir: a fresh folder per object, gone with the object.
class TempDir {
 public:
  TempDir() {
    static std::atomic<int> serial{0};
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    do {
      m_root = fs::temp_directory_path() / ("chartcore_ws_" + std::to_string(stamp) + "_" + std::to_string(serial++));
    } while (!fs::create_directory(m_root));
  }
  ~TempDir() {
    std::error_code ec;
    // Read-only files and folders must become writable before they can go.
    for (auto it = fs::recursive_directory_iterator(m_root, ec); !ec && it != fs::end(it); it.increment(ec)) {
      if (!it->is_symlink()) fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    }
    fs::remove_all(m_root, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const fs::path& root() const { return m_root; }
  fs::path native(const std::string& relative) const { return m_root / fs::u8path(relative); }

  // The library's form of a path below the root: "\" between the parts.
  CString lib(const std::string& relative) const {
    std::wstring text = chartcore::Utf8ToWide(m_root.u8string() + "/" + relative);
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(m_root.u8string().size()), text.end(), L'/', L'\\');
    return CString(text);
  }

  // MakeFile: writes content, creating the folders on the way.
  void MakeFile(const std::string& relative, const std::string& content) const {
    fs::create_directories(native(relative).parent_path());
    std::ofstream(native(relative), std::ios::binary) << content;
  }
  bool Has(const std::string& relative) const {
    std::error_code ec;
    return fs::exists(fs::symlink_status(native(relative), ec));
  }
  // Read: the file's bytes ("" when it cannot be opened).
  std::string Read(const std::string& relative) const {
    std::ifstream in(native(relative), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // Every entry below a folder, as sorted relative paths with "/" ("d/" for
  // folders), so a whole tree compares in one expectation ("" is the root).
  std::vector<std::string> Tree(const std::string& relative) const {
    std::vector<std::string> names;
    std::error_code ec;
    const fs::path top = relative.empty() ? m_root : native(relative);
    for (auto it = fs::recursive_directory_iterator(top, ec); !ec && it != fs::end(it); it.increment(ec)) {
      const bool folder = it->is_directory() && !it->is_symlink();
      names.push_back(it->path().lexically_relative(top).generic_u8string() + (folder ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  fs::path m_root;
};

}  // namespace chartcore_test

#endif  // CHARTCORE_TESTS_COMMON_TEMP_DIR_H_
