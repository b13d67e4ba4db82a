// The library's version, for hosts and the tool to print.
#ifndef CHARTCORE_PLATFORM_VERSION_H_
#define CHARTCORE_PLATFORM_VERSION_H_

#include "chartcore/platform/export.h"

#define CHARTCORE_VERSION_MAJOR 0
#define CHARTCORE_VERSION_MINOR 1
#define CHARTCORE_VERSION_PATCH 0

namespace chartcore {
// GetLibraryVersion: "major.minor.patch" of the library the host loaded (which
// may differ from the headers it was compiled against).
CHARTCORE_API const char* GetLibraryVersion();
}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_VERSION_H_
