#include "terminal.h"

#include <utility>

#include "tool_text.h"

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace chartcore {
namespace tool {
namespace {
constexpr std::size_t kBarWidth = 24;
constexpr std::size_t kItemWidth = 40;
}  // namespace

bool IsTerminal(std::FILE* stream) {
#if defined(_WIN32)
  return _isatty(_fileno(stream)) != 0;
#else
  return isatty(fileno(stream)) != 0;
#endif
}

void UseUtf8Console() {
#if defined(_WIN32)
  SetConsoleOutputCP(CP_UTF8);
#endif
}

ProgressBar::ProgressBar(std::ostream& out, bool enabled, std::size_t total, std::string label)
    : out_(out), enabled_(enabled && total > 1), total_(total), label_(std::move(label)) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Step(const std::string& item) {
  if (!enabled_) return;
  // Stepped past the total (a caller's miscount), the bar stays full.
  if (done_ < total_) ++done_;
  const std::size_t filled = done_ * kBarWidth / total_;
  std::string shown = Printable(item);
  if (shown.size() > kItemWidth) {
    std::size_t cut = shown.size() - (kItemWidth - 3);
    while (cut < shown.size() && (static_cast<unsigned char>(shown[cut]) & 0xC0) == 0x80) ++cut;  // whole characters
    shown = "..." + shown.substr(cut);
  }
  const std::string line = label_ + " [" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " +
                           std::to_string(done_) + "/" + std::to_string(total_) + " " + shown;
  // Blanks over the end of a longer previous line.
  out_ << '\r' << line << std::string(drawn_ > line.size() ? drawn_ - line.size() : 0, ' ') << std::flush;
  drawn_ = line.size();
}

void ProgressBar::Finish() {
  if (!enabled_ || drawn_ == 0) return;
  out_ << '\r' << std::string(drawn_, ' ') << '\r' << std::flush;
  drawn_ = 0;
}

}  // namespace tool
}  // namespace chartcore
