// chartcore: the core of a charting and system-trading front end.
//
// Including this one header gives a host every exported name of the library:
// the framework layer, packets, foundation functions, logic definitions,
// chart-object properties and the script editor. Each module's section lists
// its public headers.
#ifndef CHARTCORE_CHARTCORE_H_
#define CHARTCORE_CHARTCORE_H_

// --- platform: the framework layer ---
#include "chartcore/platform/export.h"
#include "chartcore/platform/types.h"
#include "chartcore/platform/version.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/chartype.h"
#include "chartcore/platform/cstring.h"

// --- packets ---

// --- foundation ---

// --- logic ---

// --- properties ---

// --- script_editor ---

#endif  // CHARTCORE_CHARTCORE_H_
