// ScriptEditorWidget: the script editor as a Qt widget a host puts in its
// layouts.
//
// It owns a CScriptEdit on the Qt backend (installed on first use), embedded
// with its scroll bars, its completion list and its parameter tip. Besides
// what the editor itself does (colouring, completion, tips, undo, the
// clipboard keys), the widget adds the find and replace dialogs (Ctrl+F,
// Ctrl+H, F3 and Shift+F3 to search again), file loading and atomic saving,
// and a signal when the text's modified state changes.
//
//   QApplication app(argc, argv);
//   chartcore::qt::ScriptEditorWidget editor;
//   editor.SetWorkspace("/home/u/ws");            // user functions, completion list
//   editor.LoadFile("/home/u/ws/formula.txt");
//   editor.show();
//   return app.exec();
#ifndef CHARTCORE_QT_SCRIPT_EDITOR_WIDGET_H_
#define CHARTCORE_QT_SCRIPT_EDITOR_WIDGET_H_

#include <QPointer>
#include <QString>
#include <QWidget>

#include "chartcore/script_editor/script_edit.h"
#include "chartcore_qt/export.h"

namespace chartcore {
namespace qt {

class FindReplaceDialog;

class CHARTCORE_QT_API ScriptEditorWidget : public QWidget {
  Q_OBJECT

 public:
  explicit ScriptEditorWidget(QWidget* parent = nullptr);
  ~ScriptEditorWidget() override;

  // The editor itself, for everything the core offers; edits and caret moves
  // made through it are signalled like the user's.
  CScriptEdit& Editor() { return m_edit; }
  // The editor's client area (what paints and takes keys); nullptr when the
  // Qt backend could not be installed.
  QWidget* EditorClient() const;

  // ---------------------------------------------------------------------------
  // Workspace and text
  // ---------------------------------------------------------------------------

  // Loads the user function list of the workspace root and sets the script
  // mode (0 and 1 leave volume prices and breadth indicators uncoloured).
  // The completion list is filled once: a second call returns false and
  // changes nothing.
  bool SetWorkspace(const QString& root, int scriptMode = 2);
  // Replaces the text with a file's (UTF-8, UTF-16LE with a mark, or code
  // page 949) as a fresh, unmodified document. False when it cannot be read;
  // the text is then unchanged.
  bool LoadFile(const QString& path);
  // Writes the text in the encoding it was loaded with, replacing the file
  // atomically, and clears the modified state. False on failure.
  bool SaveFile(const QString& path);
  // The text, lines joined by "\n".
  QString Text() const;
  // Replaces the text as a fresh document: no undo history, not modified.
  void SetText(const QString& text);
  bool IsModified() const;
  // The editor font: the monospace face at this many points (below 1: 10).
  void SetFontPointSize(int points);

  // ---------------------------------------------------------------------------
  // Find and replace
  // ---------------------------------------------------------------------------

  // Opens the dialog in find or replace mode, with the selection (when it is
  // on one line) as the text to find. Returns the dialog.
  FindReplaceDialog* ShowFindDialog();
  FindReplaceDialog* ShowReplaceDialog();
  // Searches again for the dialog's text, down or up; false when nothing was
  // searched for yet or nothing matches.
  bool FindAgain(bool up);

 signals:
  // The text became modified or unmodified (an edit, an undo back to the
  // saved state, a save, a load).
  void modificationChanged(bool modified);
  // An edit changed the text.
  void textEdited();
  // The caret moved to another line or column (0-based).
  void cursorMoved(int line, int column);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // The editor, telling the widget of every finished edit and caret move,
  // whoever made it (keys, mouse, menu, dialogs, the host).
  class NotifyingEdit : public CScriptEdit {
   public:
    explicit NotifyingEdit(ScriptEditorWidget* owner) : m_pOwner(owner) {}
    // The widget going away hears nothing more.
    void Detach() { m_pOwner = nullptr; }
    void OnChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
    void OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;

   private:
    ScriptEditorWidget* m_pOwner;
  };

  FindReplaceDialog* OpenDialog(bool replace);
  // Emits the signals for what changed since the last call. A slot that
  // edits again is answered after it returns, not from inside the emit.
  void CheckChanges();
  // The caret part of CheckChanges alone.
  void CheckCaret();

  NotifyingEdit m_edit{this};
  bool m_bChecking = false;
  bool m_bCheckAgain = false;
  QPointer<FindReplaceDialog> m_dialog;
  bool m_bWorkspaceSet = false;
  bool m_bModified = false;
  int m_nUndoPosition = 0;
  int m_nUndoCount = 0;
  CPoint m_ptCaret;
};

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_SCRIPT_EDITOR_WIDGET_H_
