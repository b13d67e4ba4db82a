// ScriptEditorWindow: a main window around the script editor, for a user
// who writes a formula file outside a host application.
//
// It holds a ScriptEditorWidget with File (New, Open, Save, Save As, Quit)
// and Edit (Undo, Redo, Cut, Copy, Paste, Select All, Find, Replace, Find
// Next) menus, shows the file's name and a "*" while it has unsaved changes,
// the caret's line and column in the status bar, and asks before unsaved
// changes are thrown away.
//
//   QApplication app(argc, argv);
//   chartcore::qt::ScriptEditorWindow window;
//   window.OpenWorkspace("/home/u/ws");
//   window.OpenFile("/home/u/ws/golden_cross.txt");
//   window.show();
//   return app.exec();
#ifndef CHARTCORE_QT_SCRIPT_EDITOR_WINDOW_H_
#define CHARTCORE_QT_SCRIPT_EDITOR_WINDOW_H_

#include <QMainWindow>
#include <QString>

#include "chartcore_qt/export.h"

class QLabel;

namespace chartcore {
namespace qt {

class ScriptEditorWidget;

class CHARTCORE_QT_API ScriptEditorWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit ScriptEditorWindow(QWidget* parent = nullptr);
  ~ScriptEditorWindow() override;

  ScriptEditorWidget* Editor() const { return m_editor; }

  // Loads the workspace's user functions (once; see ScriptEditorWidget).
  bool OpenWorkspace(const QString& root, int scriptMode = 2);
  // Opens a formula file; false (the text unchanged) when it cannot be read.
  bool OpenFile(const QString& path);
  // Starts an empty, unmodified text whose file is path (written by Save;
  // "" for an untitled text).
  void NewFile(const QString& path);
  // Saves to the current file (asks for a name when there is none yet, unless
  // the window is not shown); false when nothing was saved.
  bool Save();
  // Saves to path, which becomes the current file; false on failure, which a
  // shown window also reports in a message box.
  bool SaveAs(const QString& path);
  // The current file ("" for a new text).
  QString CurrentFile() const { return m_path; }

  // When the text has unsaved changes, asks whether to save them: true when
  // the caller may go on (saved or discarded), false when the user cancelled.
  bool MaybeSave();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void BuildMenus();
  void UpdateTitle();
  void UpdatePosition();

  ScriptEditorWidget* m_editor;
  QLabel* m_position;
  QString m_path;
};

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_SCRIPT_EDITOR_WINDOW_H_
