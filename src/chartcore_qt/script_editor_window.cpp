#include "chartcore_qt/script_editor_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

#include "chartcore_qt/script_editor_widget.h"

namespace chartcore {
namespace qt {

ScriptEditorWindow::ScriptEditorWindow(QWidget* parent) : QMainWindow(parent) {
  m_editor = new ScriptEditorWidget(this);
  setCentralWidget(m_editor);
  m_position = new QLabel(this);
  statusBar()->addPermanentWidget(m_position);
  BuildMenus();
  connect(m_editor, &ScriptEditorWidget::modificationChanged, this, [this] { UpdateTitle(); });
  connect(m_editor, &ScriptEditorWidget::cursorMoved, this, [this] { UpdatePosition(); });
  UpdateTitle();
  UpdatePosition();
  m_editor->setFocus();
}

ScriptEditorWindow::~ScriptEditorWindow() = default;

namespace {

template <typename Slot>
QAction* AddItem(QMenu* menu, const QString& text, const QKeySequence& keys, QObject* context, Slot slot) {
  QAction* action = menu->addAction(text);
  action->setShortcut(keys);
  QObject::connect(action, &QAction::triggered, context, slot);
  return action;
}

}  // namespace

void ScriptEditorWindow::BuildMenus() {
  QMenu* file = menuBar()->addMenu(tr("&File"));
  AddItem(file, tr("&New"), QKeySequence::New, this, [this] {
    if (MaybeSave()) NewFile(QString());
  });
  AddItem(file, tr("&Open..."), QKeySequence::Open, this, [this] {
    if (!MaybeSave()) return;
    const QString path = QFileDialog::getOpenFileName(this, tr("Open formula"), QFileInfo(m_path).path());
    if (!path.isEmpty() && !OpenFile(path))
      QMessageBox::warning(this, windowTitle(), tr("Cannot read %1").arg(path));
  });
  AddItem(file, tr("&Save"), QKeySequence::Save, this, [this] { Save(); });
  AddItem(file, tr("Save &As..."), QKeySequence::SaveAs, this, [this] {
    const QString path = QFileDialog::getSaveFileName(this, tr("Save formula"), m_path);
    if (!path.isEmpty()) SaveAs(path);
  });
  file->addSeparator();
  AddItem(file, tr("&Quit"), QKeySequence::Quit, this, [this] { close(); });

  // The editor handles its own keys; the menu shows them and works by mouse.
  CScriptEdit& edit = m_editor->Editor();
  QMenu* editMenu = menuBar()->addMenu(tr("&Edit"));
  AddItem(editMenu, tr("&Undo"), QKeySequence::Undo, this, [&edit] { edit.Undo(); });
  AddItem(editMenu, tr("&Redo"), QKeySequence(Qt::CTRL | Qt::Key_Y), this, [&edit] { edit.Redo(); });
  editMenu->addSeparator();
  AddItem(editMenu, tr("Cu&t"), QKeySequence::Cut, this, [&edit] { edit.Cut(); });
  AddItem(editMenu, tr("&Copy"), QKeySequence::Copy, this, [&edit] { edit.Copy(); });
  AddItem(editMenu, tr("&Paste"), QKeySequence::Paste, this, [&edit] { edit.Paste(); });
  AddItem(editMenu, tr("Select &All"), QKeySequence::SelectAll, this, [&edit] { edit.SelectAll(); });
  editMenu->addSeparator();
  AddItem(editMenu, tr("&Find..."), QKeySequence(Qt::CTRL | Qt::Key_F), this, [this] { m_editor->ShowFindDialog(); });
  AddItem(editMenu, tr("&Replace..."), QKeySequence(Qt::CTRL | Qt::Key_H), this,
                      [this] { m_editor->ShowReplaceDialog(); });
  AddItem(editMenu, tr("Find &Next"), QKeySequence(Qt::Key_F3), this, [this] { m_editor->FindAgain(false); });
}

bool ScriptEditorWindow::OpenWorkspace(const QString& root, int scriptMode) {
  return m_editor->SetWorkspace(root, scriptMode);
}

bool ScriptEditorWindow::OpenFile(const QString& path) {
  if (!m_editor->LoadFile(path)) return false;
  m_path = path;
  UpdateTitle();
  UpdatePosition();
  return true;
}

void ScriptEditorWindow::NewFile(const QString& path) {
  m_editor->SetText(QString());
  m_path = path;
  UpdateTitle();
  UpdatePosition();
}

bool ScriptEditorWindow::Save() {
  if (m_path.isEmpty()) {
    if (!isVisible()) return false;
    const QString path = QFileDialog::getSaveFileName(this, tr("Save formula"));
    if (path.isEmpty()) return false;
    return SaveAs(path);
  }
  return SaveAs(m_path);
}

bool ScriptEditorWindow::SaveAs(const QString& path) {
  if (!m_editor->SaveFile(path)) {
    // Every save goes through here (Save, Save As, the question before
    // closing), so none fails unseen; a hidden window asks nobody.
    if (isVisible()) QMessageBox::warning(this, windowTitle(), tr("Cannot write %1").arg(path));
    return false;
  }
  m_path = path;
  UpdateTitle();
  return true;
}

bool ScriptEditorWindow::MaybeSave() {
  if (!m_editor->IsModified()) return true;
  const auto answer = QMessageBox::question(this, windowTitle(), tr("The formula has unsaved changes. Save them?"),
                                            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
  if (answer == QMessageBox::Cancel) return false;
  if (answer == QMessageBox::Discard) return true;
  return Save();
}

void ScriptEditorWindow::closeEvent(QCloseEvent* event) {
  if (MaybeSave()) {
    event->accept();
  } else {
    event->ignore();
  }
}

void ScriptEditorWindow::UpdateTitle() {
  const QString name = m_path.isEmpty() ? tr("Untitled") : QFileInfo(m_path).fileName();
  setWindowTitle(name + (m_editor->IsModified() ? QStringLiteral(" *") : QString()) + tr(" - Formula editor"));
}

void ScriptEditorWindow::UpdatePosition() {
  const CPoint caret = m_editor->Editor().GetCursorPos();
  m_position->setText(tr("Line %1, Col %2").arg(caret.y + 1).arg(caret.x + 1));
}

}  // namespace qt
}  // namespace chartcore
