// The terminal side of the tool: whether an output is a terminal, UTF-8
// output on consoles that need telling, and the progress bar that long runs
// draw on standard error.
//
//   ProgressBar bar(std::cerr, IsTerminal(stderr), files.size(), "inspect");
//   for (...) { bar.Step(name); ... }
//   bar.Finish();                                  // clears the bar's line
#ifndef CHARTCORE_TOOLS_CHARTCORE_TERMINAL_H_
#define CHARTCORE_TOOLS_CHARTCORE_TERMINAL_H_

#include <cstddef>
#include <cstdio>
#include <ostream>
#include <string>

namespace chartcore {
namespace tool {

// IsTerminal: whether the stream is an interactive terminal.
bool IsTerminal(std::FILE* stream);

// UseUtf8Console: on Windows consoles, switches output to UTF-8 (the tool
// writes UTF-8 everywhere); elsewhere nothing to do.
void UseUtf8Console();

// ProgressBar: "label [#####     ] 12/40 name" redrawn in place with a
// carriage return. A disabled bar (not a terminal, or fewer than two steps)
// draws nothing, so the caller need not test.
class ProgressBar {
 public:
  ProgressBar(std::ostream& out, bool enabled, std::size_t total, std::string label);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Step: one more item is being worked on.
  void Step(const std::string& item);
  // Finish: erases the bar (also done by the destructor).
  void Finish();

 private:
  std::ostream& out_;
  bool enabled_;
  std::size_t total_;
  std::size_t done_ = 0;
  std::string label_;
  std::size_t drawn_ = 0;  // characters on the bar's line
};

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_TERMINAL_H_
