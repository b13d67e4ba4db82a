// Umbrella header of the Qt window backend: every public header of
// chartcore_qt, so a host includes one file next to "chartcore/chartcore.h".
//
//   #include "chartcore_qt/chartcore_qt.h"
//   chartcore::qt::ScriptEditorWidget editor;   // installs the backend
#ifndef CHARTCORE_QT_CHARTCORE_QT_H_
#define CHARTCORE_QT_CHARTCORE_QT_H_

#include "chartcore_qt/conversions.h"
#include "chartcore_qt/export.h"
#include "chartcore_qt/find_dialog.h"
#include "chartcore_qt/key_input.h"
#include "chartcore_qt/qt_backend.h"
#include "chartcore_qt/script_editor_widget.h"
#include "chartcore_qt/surface_drawing.h"

#endif  // CHARTCORE_QT_CHARTCORE_QT_H_
