#include "chartcore_qt/script_editor_widget.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include "chartcore_qt/conversions.h"
#include "chartcore_qt/find_dialog.h"
#include "chartcore_qt/port_widgets.h"
#include "chartcore_qt/qt_backend.h"

namespace chartcore {
namespace qt {

namespace {

// Control id of the embedded editor window.
constexpr UINT kEditorId = 1000;

bool IsCommandKey(const QKeyEvent* key, int wanted, Qt::KeyboardModifiers mods) {
  return key->key() == wanted && (key->modifiers() & ~Qt::KeypadModifier) == mods;
}

}  // namespace

ScriptEditorWidget::ScriptEditorWidget(QWidget* parent) : QWidget(parent) {
  InstallQtBackend();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  // Created hidden and without a parent window, then embedded here, so no
  // top-level window flashes up.
  m_edit.Create(nullptr, L"", WS_CHILD, CRect(0, 0, 400, 300), nullptr, kEditorId);
  if (EmbedWindow(&m_edit, this)) layout->addWidget(WindowWidget(&m_edit));
  m_edit.InitWindow();
  m_edit.ShowWindow(SW_SHOW);
  if (auto* client = qobject_cast<internal::PortClient*>(EditorClient())) {
    setFocusProxy(client);
    client->installEventFilter(this);
  }
}

ScriptEditorWidget::~ScriptEditorWidget() {
  // Slots of a host being torn down must not run from here.
  m_edit.Detach();
  if (m_dialog) delete m_dialog.data();
  if (QWidget* client = EditorClient()) client->removeEventFilter(this);
  m_edit.DestroyWindow();
}

QWidget* ScriptEditorWidget::EditorClient() const { return ClientWidget(&m_edit); }

// ---------------------------------------------------------------------------
// Workspace and text
// ---------------------------------------------------------------------------
bool ScriptEditorWidget::SetWorkspace(const QString& root, int scriptMode) {
  if (m_bWorkspaceSet) return false;
  m_bWorkspaceSet = true;
  m_edit.InitBasicFunctionList(ToCString(root), CString(), CString(), scriptMode);
  // The user functions change the colouring of text already shown.
  m_edit.ResetParseCookies();
  return true;
}

bool ScriptEditorWidget::LoadFile(const QString& path) {
  CCrystalTextBuffer* buffer = m_edit.LocateTextBuffer();
  if (path.isEmpty() || buffer->LoadFromFile(ToCString(path)) == FALSE) return false;
  m_edit.SetCursorPos(CPoint(0, 0));
  m_edit.SetSelection(CPoint(0, 0), CPoint(0, 0));
  m_edit.ScrollToLine(0);
  CheckChanges();
  return true;
}

bool ScriptEditorWidget::SaveFile(const QString& path) {
  if (path.isEmpty()) return false;
  const bool saved = m_edit.LocateTextBuffer()->SaveToFile(ToCString(path)) != FALSE;
  CheckChanges();
  return saved;
}

QString ScriptEditorWidget::Text() const {
  return ToQString(const_cast<NotifyingEdit&>(m_edit).LocateTextBuffer()->GetAllText(L"\n"));
}

void ScriptEditorWidget::SetText(const QString& text) {
  m_edit.LocateTextBuffer()->SetText(ToCString(text));
  CheckChanges();
}

bool ScriptEditorWidget::IsModified() const {
  return const_cast<NotifyingEdit&>(m_edit).LocateTextBuffer()->IsModified() != FALSE;
}

void ScriptEditorWidget::SetFontPointSize(int points) {
  const LOGFONT lf = MonospaceLogFont(points);
  m_edit.SetViewFont(&lf);
}

void ScriptEditorWidget::NotifyingEdit::OnChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  CScriptEdit::OnChangeEditClr(pNMHDR, pResult);
  if (m_pOwner != nullptr) m_pOwner->CheckChanges();
}

void ScriptEditorWidget::NotifyingEdit::OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  CScriptEdit::OnCurPosChangeEditClr(pNMHDR, pResult);
  // Inside an edit the caret is only on its way: the change notification
  // that closes the edit reports it. An undo moves it record by record with
  // the text half restored, so only the caret is reported from here.
  CCrystalTextBuffer* buffer = LocateTextBuffer();
  if (m_pOwner != nullptr && (buffer == nullptr || buffer->IsInUndoGroup() == FALSE)) m_pOwner->CheckCaret();
}

void ScriptEditorWidget::CheckCaret() {
  if (m_bChecking) {
    m_bCheckAgain = true;
    return;
  }
  const CPoint caret = m_edit.GetCursorPos();
  if (caret == m_ptCaret) return;
  m_ptCaret = caret;
  emit cursorMoved(caret.y, caret.x);
}

void ScriptEditorWidget::CheckChanges() {
  if (m_bChecking) {
    m_bCheckAgain = true;
    return;
  }
  m_bChecking = true;
  do {
    m_bCheckAgain = false;
    CCrystalTextBuffer* buffer = m_edit.LocateTextBuffer();
    const int position = buffer->GetUndoPosition();
    const int count = buffer->GetUndoRecordCount();
    const bool edited = position != m_nUndoPosition || count != m_nUndoCount;
    m_nUndoPosition = position;
    m_nUndoCount = count;
    if (edited) emit textEdited();
    const CPoint caret = m_edit.GetCursorPos();
    if (caret != m_ptCaret) {
      m_ptCaret = caret;
      emit cursorMoved(caret.y, caret.x);
    }
    const bool modified = buffer->IsModified() != FALSE;
    if (modified != m_bModified) {
      m_bModified = modified;
      emit modificationChanged(modified);
    }
  } while (m_bCheckAgain);
  m_bChecking = false;
}

// ---------------------------------------------------------------------------
// Find and replace
// ---------------------------------------------------------------------------
FindReplaceDialog* ScriptEditorWidget::OpenDialog(bool replace) {
  if (!m_dialog) m_dialog = new FindReplaceDialog(&m_edit, this);
  m_dialog->SetReplaceMode(replace);
  const CString selected = m_edit.GetSelectedText();
  if (!selected.IsEmpty() && selected.Find(L'\n') < 0 && selected.Find(L'\r') < 0)
    m_dialog->SetFindText(ToQString(selected));
  m_dialog->show();
  m_dialog->raise();
  m_dialog->activateWindow();
  return m_dialog;
}

FindReplaceDialog* ScriptEditorWidget::ShowFindDialog() { return OpenDialog(false); }

FindReplaceDialog* ScriptEditorWidget::ShowReplaceDialog() { return OpenDialog(true); }

bool ScriptEditorWidget::FindAgain(bool up) {
  if (!m_dialog || m_dialog->GetFindText().isEmpty()) return false;
  const QString what = m_dialog->GetFindText();
  DWORD flags = m_dialog->GetFlags() & ~CCrystalTextWnd::FIND_DIRECTION_UP;
  if (up) flags |= CCrystalTextWnd::FIND_DIRECTION_UP;
  return m_edit.FindNext(ToCString(what), flags) != FALSE;
}

bool ScriptEditorWidget::eventFilter(QObject* watched, QEvent* event) {
  if (watched == EditorClient() && (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride)) {
    auto* key = static_cast<QKeyEvent*>(event);
    const bool find = IsCommandKey(key, Qt::Key_F, Qt::ControlModifier);
    const bool replace = IsCommandKey(key, Qt::Key_H, Qt::ControlModifier);
    const bool again = IsCommandKey(key, Qt::Key_F3, Qt::NoModifier);
    const bool back = IsCommandKey(key, Qt::Key_F3, Qt::ShiftModifier);
    if (find || replace || again || back) {
      // The editor's accelerators: handled here, before the key reaches the
      // window as a message, as an accelerator table would.
      event->accept();
      if (event->type() == QEvent::KeyPress) {
        if (find) ShowFindDialog();
        if (replace) ShowReplaceDialog();
        if (again || back) FindAgain(back);
      }
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace qt
}  // namespace chartcore
