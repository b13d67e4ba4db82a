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
#include "chartcore/platform/format.h"
#include "chartcore/platform/text_codec.h"
#include "chartcore/platform/profile.h"
#include "chartcore/platform/oledate.h"
#include "chartcore/platform/system.h"
#include "chartcore/platform/window.h"
#include "chartcore/platform/arrays.h"
#include "chartcore/platform/object.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/archive.h"
#include "chartcore/platform/filesystem.h"
#include "chartcore/platform/process.h"
#include "chartcore/platform/command_line.h"

// --- packets ---
#include "chartcore/packets/packet_types.h"
#include "chartcore/packets/packet.h"
#include "chartcore/packets/packet_memory.h"

// --- foundation ---
#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/foundation/markets.h"
#include "chartcore/foundation/paths.h"
#include "chartcore/foundation/strings.h"
#include "chartcore/foundation/colours_geometry.h"
#include "chartcore/foundation/log_launch.h"

// --- logic ---
#include "chartcore/logic/definition_record.h"
#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/record_file.h"

// --- properties ---
#include "chartcore/properties/chart_property.h"
#include "chartcore/properties/logic_property.h"

// --- script_editor ---
#include "chartcore/script_editor/text_buffer.h"
#include "chartcore/script_editor/text_view.h"
#include "chartcore/script_editor/completion_tip.h"
#include "chartcore/script_editor/function_list.h"
#include "chartcore/script_editor/script_edit.h"

#endif  // CHARTCORE_CHARTCORE_H_
