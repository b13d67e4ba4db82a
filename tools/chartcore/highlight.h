// Script text coloured the way the formula editor colours it, for a terminal
// (ANSI 24-bit colours) or a web page (HTML).
//
// The text goes into a CScriptEdit on the headless window port, set up with
// the workspace's user function list and a script mode; each line's colour
// blocks come from the editor's ParseLine (comment and string state carried
// from line to line) and each block's colour from GetColor. Normal text keeps
// the terminal's own colour, so the output stays readable on dark and light
// terminals alike; HTML uses the editor's colours throughout.
//
//   std::string out = HighlightScript(L"if crossup(c, ma) // buy", "/home/u/ws", 2,
//                                     ColourStyle::kAnsi, "  ");
#ifndef CHARTCORE_TOOLS_CHARTCORE_HIGHLIGHT_H_
#define CHARTCORE_TOOLS_CHARTCORE_HIGHLIGHT_H_

#include <string>

#include "chartcore/platform/cstring.h"

namespace chartcore {
namespace tool {

enum class ColourStyle { kAnsi, kHtml, kPlain };

// HighlightScript: text (lines split at "\r\n", "\n" or "\r") coloured for
// style. workspaceRoot is where the user function list is read from
// ("<root>/Logic/Function/New_Function.dat"; a missing list colours no user
// functions); mode is the editor's script mode (0 and 1 leave volume prices
// and breadth/volume indicators uncoloured). A line break ending the text
// ends the last line (no empty line follows it). Every output line starts with
// indent (kAnsi, kPlain). kHtml gives a whole page titled title.
std::string HighlightScript(const CString& text, const std::string& workspaceRoot, int mode, ColourStyle style,
                            const std::string& indent, const std::string& title = std::string());

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_HIGHLIGHT_H_
