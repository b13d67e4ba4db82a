// Test fixtures for the file-system helpers: a scratch folder that is removed
// with everything in it (read-only files included), and a message-box handler
// that records what the library would have shown the user.
#ifndef CHARTCORE_TESTS_FOUNDATION_TEMP_WORKSPACE_H_
#define CHARTCORE_TESTS_FOUNDATION_TEMP_WORKSPACE_H_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/system.h"
#include "chartcore/platform/text_codec.h"

namespace testing_fs {

namespace fs = std::filesystem;

// A fresh folder under the system's temporary folder.
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

  void MakeFile(const std::string& relative, const std::string& content) const {
    fs::create_directories(native(relative).parent_path());
    std::ofstream(native(relative), std::ios::binary) << content;
  }
  bool Has(const std::string& relative) const {
    std::error_code ec;
    return fs::exists(fs::symlink_status(native(relative), ec));
  }
  std::string Read(const std::string& relative) const {
    std::ifstream in(native(relative), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // Every entry below a folder, as sorted relative paths with "/" ("d/" for
  // folders), so a whole tree compares in one expectation.
  std::vector<std::string> Tree(const std::string& relative) const {
    std::vector<std::string> names;
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(native(relative), ec); !ec && it != fs::end(it);
         it.increment(ec)) {
      const bool folder = it->is_directory() && !it->is_symlink();
      names.push_back(it->path().lexically_relative(native(relative)).generic_u8string() + (folder ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  fs::path m_root;
};

// Records every message box while alive, then puts the previous handler back.
class MessageCapture {
 public:
  struct Shown {
    std::wstring text;
    std::wstring caption;
    UINT type;
  };
  MessageCapture() {
    m_previous = chartcore::SetMessageBoxHandler([this](const CString& text, const CString& caption, UINT type) {
      m_shown.push_back(Shown{text.str(), caption.str(), type});
      return IDOK;
    });
  }
  ~MessageCapture() { chartcore::SetMessageBoxHandler(m_previous); }
  MessageCapture(const MessageCapture&) = delete;
  MessageCapture& operator=(const MessageCapture&) = delete;

  const std::vector<Shown>& shown() const { return m_shown; }
  std::vector<std::wstring> texts() const {
    std::vector<std::wstring> all;
    for (const Shown& s : m_shown) all.push_back(s.text);
    return all;
  }

 private:
  std::vector<Shown> m_shown;
  chartcore::MessageBoxHandler m_previous;
};

}  // namespace testing_fs

#endif  // CHARTCORE_TESTS_FOUNDATION_TEMP_WORKSPACE_H_
