// Text and error helpers shared by the chartcore tool and the sample
// generator.
//
// The tool talks UTF-8 on its command line and its output, while the library
// speaks wide CString; these helpers convert at that boundary. A command
// reports failure by throwing ToolError with one line of text, which the
// dispatcher prints after the command's name.
//
//   CString root = chartcore::tool::Wide(argv[1]);
//   throw chartcore::tool::ToolError(chartcore::tool::Utf8(root) + ": not a workspace");
#ifndef CHARTCORE_TOOLS_CHARTCORE_TOOL_TEXT_H_
#define CHARTCORE_TOOLS_CHARTCORE_TOOL_TEXT_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"

namespace chartcore {
namespace tool {

// ToolError: a command failed; what() is the one-line reason (no command
// name, no trailing newline). The tool exits with exitCode.
class ToolError : public std::runtime_error {
 public:
  explicit ToolError(const std::string& message, int exitCode = 1)
      : std::runtime_error(message), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

// Wide: UTF-8 text as a CString (undecodable bytes become U+FFFD).
CString Wide(const std::string& utf8);
// Utf8: a CString as UTF-8 (a lone surrogate becomes U+FFFD).
std::string Utf8(const CString& text);
// Printable: text from a file as it may reach a terminal: the C0 controls
// other than tab, DEL and the C1 controls (U+0080 to U+009F) become U+FFFD,
// so a name or formula cannot move the cursor, recolour or retitle the
// terminal. The UTF-8 form decodes first (undecodable bytes become U+FFFD).
std::string Printable(const CString& text);
std::string Printable(const std::string& utf8);
// Quoted: text in double quotes, for error messages ("x.ind" -> "\"x.ind\"").
std::string Quoted(const std::string& text);

// ReadFileBytes: the whole file, read through the framework's file layer.
// Throws ToolError "<path>: cannot open (<reason>)" when it cannot be opened,
// and "<path>: larger than <limit> bytes" for a file over maxBytes, so a
// wrong argument never makes the tool read gigabytes.
std::vector<BYTE> ReadFileBytes(const std::string& path, ULONGLONG maxBytes);

// WriteFileBytes: replaces the file at path with bytes atomically (a
// temporary file beside it, then a rename). Throws ToolError
// "<path>: cannot write (<reason>)"; the old file is then untouched.
void WriteFileBytes(const std::string& path, const void* data, std::size_t size);

// FileErrorText: the reason a CFileException cause stands for, in words
// ("file not found", "access denied", ...).
std::string FileErrorText(int cause);

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_TOOL_TEXT_H_
