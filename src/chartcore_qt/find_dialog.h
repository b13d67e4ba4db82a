// The find and replace dialog of the editor windows.
//
// One modeless dialog serves both commands: in find mode it shows the text to
// find and the options (match case, whole word, search upwards); in replace
// mode also the replacement and the Replace and Replace All buttons. Searches
// run in the editor's own text (CCrystalTextWnd::FindNext, wrapping around),
// a match is selected in the editor, and every replacement is one undo step
// (Replace All is one step for all of them).
//
//   chartcore::qt::FindReplaceDialog dialog(&edit, parentWidget);
//   dialog.SetReplaceMode(true);
//   dialog.SetFindText("close");  dialog.SetReplaceText("open");
//   int n = dialog.ReplaceAll();               // n replacements
#ifndef CHARTCORE_QT_FIND_DIALOG_H_
#define CHARTCORE_QT_FIND_DIALOG_H_

#include <QDialog>
#include <QString>

#include "chartcore/script_editor/text_view.h"
#include "chartcore_qt/export.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace chartcore {
namespace qt {

class CHARTCORE_QT_API FindReplaceDialog : public QDialog {
  Q_OBJECT

 public:
  // edit must outlive the dialog.
  FindReplaceDialog(CCrystalEditWnd* edit, QWidget* parent = nullptr);
  ~FindReplaceDialog() override;

  // Find mode (false) or replace mode (true): the title, the replacement
  // field and the replace buttons follow.
  void SetReplaceMode(bool replace);
  bool IsReplaceMode() const { return m_bReplace; }

  void SetFindText(const QString& text);
  QString GetFindText() const;
  void SetReplaceText(const QString& text);
  QString GetReplaceText() const;
  // The options as the editor's FIND_ flags.
  DWORD GetFlags() const;
  void SetFlags(DWORD flags);

  // Finds the next match (the previous one with "Up"), wrapping around, and
  // selects it. False, with "Not found" in the status line, when there is
  // none or the text to find is empty or spans lines.
  bool FindNext();
  // Replaces the selected match, then finds the next. False when no further
  // match exists.
  bool ReplaceNext();
  // Replaces every match in one undo step; returns the count (also in the
  // status line).
  int ReplaceAll();
  // The status line: empty, "Not found", or "N replaced".
  QString GetStatusText() const;

 private:
  void UpdateButtons();

  CCrystalEditWnd* m_pEdit;
  bool m_bReplace = false;
  QLineEdit* m_findEdit;
  QLineEdit* m_replaceEdit;
  QLabel* m_replaceLabel;
  QCheckBox* m_matchCase;
  QCheckBox* m_wholeWord;
  QCheckBox* m_up;
  QPushButton* m_findButton;
  QPushButton* m_replaceButton;
  QPushButton* m_replaceAllButton;
  QLabel* m_status;
};

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_FIND_DIALOG_H_
