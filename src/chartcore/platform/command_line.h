// The program's command-line arguments as UTF-8.
//
// A Windows program's argv is in the system code page (949 on Korean
// hosts), so a path with a character outside it arrives damaged and a
// Korean one arrives as code-page bytes a UTF-8 reader cannot decode. There
// the arguments are taken from the wide command line instead; elsewhere argv
// already holds the bytes the shell passed, which are used as they are.
//
//   int main(int argc, char** argv) {
//     std::vector<std::string> args = chartcore::GetUtf8Arguments(argc, argv);
//     // args[0] is the program, args[1] the first argument, all UTF-8
//   }
#ifndef CHARTCORE_PLATFORM_COMMAND_LINE_H_
#define CHARTCORE_PLATFORM_COMMAND_LINE_H_

#include <string>
#include <vector>

#include "chartcore/platform/export.h"

namespace chartcore {

// GetUtf8Arguments: the arguments of the running program, the program first.
// On Windows they come from the process's wide command line, split by the
// system's own rules and converted to UTF-8 (argc and argv are used only
// when the system cannot split it); elsewhere they are argv[0..argc).
CHARTCORE_API std::vector<std::string> GetUtf8Arguments(int argc, const char* const* argv);

}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_COMMAND_LINE_H_
