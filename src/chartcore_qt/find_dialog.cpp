#include "chartcore_qt/find_dialog.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "chartcore_qt/conversions.h"

namespace chartcore {
namespace qt {

namespace {

// A text the editor can search for: not empty and on one line.
bool IsSearchable(const QString& text) {
  return !text.isEmpty() && !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r'));
}

}  // namespace

FindReplaceDialog::FindReplaceDialog(CCrystalEditWnd* edit, QWidget* parent) : QDialog(parent), m_pEdit(edit) {
  setModal(false);
  auto* grid = new QGridLayout;
  m_findEdit = new QLineEdit(this);
  m_replaceEdit = new QLineEdit(this);
  auto* findLabel = new QLabel(tr("Find what:"), this);
  findLabel->setBuddy(m_findEdit);
  m_replaceLabel = new QLabel(tr("Replace with:"), this);
  m_replaceLabel->setBuddy(m_replaceEdit);
  grid->addWidget(findLabel, 0, 0);
  grid->addWidget(m_findEdit, 0, 1);
  grid->addWidget(m_replaceLabel, 1, 0);
  grid->addWidget(m_replaceEdit, 1, 1);

  m_matchCase = new QCheckBox(tr("Match case"), this);
  m_wholeWord = new QCheckBox(tr("Whole word"), this);
  m_up = new QCheckBox(tr("Search up"), this);
  auto* options = new QHBoxLayout;
  options->addWidget(m_matchCase);
  options->addWidget(m_wholeWord);
  options->addWidget(m_up);
  options->addStretch();

  m_findButton = new QPushButton(tr("Find Next"), this);
  m_findButton->setDefault(true);
  m_replaceButton = new QPushButton(tr("Replace"), this);
  m_replaceAllButton = new QPushButton(tr("Replace All"), this);
  auto* closeButton = new QPushButton(tr("Close"), this);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(m_findButton);
  buttons->addWidget(m_replaceButton);
  buttons->addWidget(m_replaceAllButton);
  buttons->addWidget(closeButton);

  m_status = new QLabel(this);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(grid);
  layout->addLayout(options);
  layout->addWidget(m_status);
  layout->addLayout(buttons);

  connect(m_findButton, &QPushButton::clicked, this, [this] { FindNext(); });
  connect(m_replaceButton, &QPushButton::clicked, this, [this] { ReplaceNext(); });
  connect(m_replaceAllButton, &QPushButton::clicked, this, [this] { ReplaceAll(); });
  connect(closeButton, &QPushButton::clicked, this, &QDialog::hide);
  connect(m_findEdit, &QLineEdit::textChanged, this, [this] {
    m_status->clear();
    UpdateButtons();
  });
  SetReplaceMode(false);
}

FindReplaceDialog::~FindReplaceDialog() = default;

void FindReplaceDialog::SetReplaceMode(bool replace) {
  m_bReplace = replace;
  setWindowTitle(replace ? tr("Replace") : tr("Find"));
  m_replaceLabel->setVisible(replace);
  m_replaceEdit->setVisible(replace);
  m_replaceButton->setVisible(replace);
  m_replaceAllButton->setVisible(replace);
  m_status->clear();
  UpdateButtons();
}

void FindReplaceDialog::SetFindText(const QString& text) {
  m_findEdit->setText(text);
  m_findEdit->selectAll();
}

QString FindReplaceDialog::GetFindText() const { return m_findEdit->text(); }

void FindReplaceDialog::SetReplaceText(const QString& text) { m_replaceEdit->setText(text); }

QString FindReplaceDialog::GetReplaceText() const { return m_replaceEdit->text(); }

DWORD FindReplaceDialog::GetFlags() const {
  DWORD flags = 0;
  if (m_matchCase->isChecked()) flags |= CCrystalTextWnd::FIND_MATCH_CASE;
  if (m_wholeWord->isChecked()) flags |= CCrystalTextWnd::FIND_WHOLE_WORD;
  if (m_up->isChecked()) flags |= CCrystalTextWnd::FIND_DIRECTION_UP;
  return flags;
}

void FindReplaceDialog::SetFlags(DWORD flags) {
  m_matchCase->setChecked((flags & CCrystalTextWnd::FIND_MATCH_CASE) != 0);
  m_wholeWord->setChecked((flags & CCrystalTextWnd::FIND_WHOLE_WORD) != 0);
  m_up->setChecked((flags & CCrystalTextWnd::FIND_DIRECTION_UP) != 0);
}

void FindReplaceDialog::UpdateButtons() {
  const bool searchable = IsSearchable(GetFindText());
  m_findButton->setEnabled(searchable);
  m_replaceButton->setEnabled(searchable);
  m_replaceAllButton->setEnabled(searchable);
}

bool FindReplaceDialog::FindNext() {
  const QString what = GetFindText();
  const bool found = IsSearchable(what) && m_pEdit->FindNext(ToCString(what), GetFlags()) != FALSE;
  m_status->setText(found ? QString() : tr("Not found"));
  return found;
}

bool FindReplaceDialog::ReplaceNext() {
  const QString what = GetFindText();
  if (!IsSearchable(what)) {
    m_status->setText(tr("Not found"));
    return false;
  }
  const bool more = m_pEdit->ReplaceNext(ToCString(what), ToCString(GetReplaceText()), GetFlags()) != FALSE;
  m_status->setText(more ? QString() : tr("Not found"));
  return more;
}

int FindReplaceDialog::ReplaceAll() {
  const QString what = GetFindText();
  const int count = IsSearchable(what) ? m_pEdit->ReplaceAll(ToCString(what), ToCString(GetReplaceText()),
                                                             GetFlags() & ~CCrystalTextWnd::FIND_DIRECTION_UP)
                                       : 0;
  m_status->setText(count > 0 ? tr("%1 replaced").arg(count) : tr("Not found"));
  return count;
}

QString FindReplaceDialog::GetStatusText() const { return m_status->text(); }

}  // namespace qt
}  // namespace chartcore
