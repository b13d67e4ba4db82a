// Starting other programs on systems without the Windows process calls.
//
// On Windows the library starts programs through the system
// (CreateProcessW, ShellExecuteW) and this header declares nothing. Elsewhere
// these functions start programs directly, never through a shell, so no
// character of a file name or address is ever interpreted.
#ifndef CHARTCORE_PLATFORM_PROCESS_H_
#define CHARTCORE_PLATFORM_PROCESS_H_

#if !defined(_WIN32)

#include <cstddef>
#include <string>
#include <vector>

#include "chartcore/platform/export.h"

namespace chartcore {

// The full path of an executable file called `name` in one of the PATH
// directories (PATH unset: /usr/local/bin, /usr/bin, /bin), or empty. A name
// with a '/' is checked as it stands. Empty PATH entries (the current
// directory) are not searched.
CHARTCORE_API std::string FindProgramOnPath(const std::string& name);

// Starts `program` (a path) with `arguments` and returns at once: true when
// the program was executed. The program runs in a session of its own with
// default signal handling, its standard input, output and error on /dev/null
// and none of the host's other descriptors, and never becomes a child the
// host has to reap.
CHARTCORE_API bool StartDetachedProgram(const std::string& program, const std::vector<std::string>& arguments);

// Runs `program` with `arguments` to read what it prints on its standard
// output, keeping at most `maxBytes` of it; its input and error output are
// /dev/null, and it starts with no signal blocked or ignored. True when the program closed its output within `timeoutMs`;
// otherwise it is killed and the result is false.
CHARTCORE_API bool RunProgramAndCapture(const std::string& program, const std::vector<std::string>& arguments,
                                        std::string& output, int timeoutMs, size_t maxBytes);

}  // namespace chartcore

#endif  // !_WIN32

#endif  // CHARTCORE_PLATFORM_PROCESS_H_
