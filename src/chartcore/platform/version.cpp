#include "chartcore/platform/version.h"

#define CC_STR2(x) #x
#define CC_STR(x) CC_STR2(x)

namespace chartcore {
const char* GetLibraryVersion() {
  return CC_STR(CHARTCORE_VERSION_MAJOR) "." CC_STR(CHARTCORE_VERSION_MINOR) "." CC_STR(CHARTCORE_VERSION_PATCH);
}
}  // namespace chartcore
