// The export macro of the Qt window backend.
//
// chartcore_qt is a library of its own above chartcore, so it has its own
// macro: on Windows a DLL must export its own names and import the core's,
// which one shared macro cannot say. Everything a host may use is marked
// CHARTCORE_QT_API; the rest stays hidden, as with the core library.
//
//   class CHARTCORE_QT_API ScriptEditorWidget : public QWidget { ... };
#ifndef CHARTCORE_QT_EXPORT_H_
#define CHARTCORE_QT_EXPORT_H_

#if defined(CHARTCORE_QT_STATIC)
#define CHARTCORE_QT_API
#elif defined(_WIN32)
#if defined(CHARTCORE_QT_BUILDING)
#define CHARTCORE_QT_API __declspec(dllexport)
#else
#define CHARTCORE_QT_API __declspec(dllimport)
#endif
#else
#define CHARTCORE_QT_API __attribute__((visibility("default")))
#endif

#endif  // CHARTCORE_QT_EXPORT_H_
