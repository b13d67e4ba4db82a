// Test fixtures for the file-system helpers: the shared scratch folder, and a
// message-box handler that records what the library would have shown the user.
#ifndef CHARTCORE_TESTS_FOUNDATION_TEMP_WORKSPACE_H_
#define CHARTCORE_TESTS_FOUNDATION_TEMP_WORKSPACE_H_

#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/system.h"
#include "common/temp_dir.h"

namespace testing_fs {

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
