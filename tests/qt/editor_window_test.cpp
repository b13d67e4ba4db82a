// The script editor as a real window: typing, colouring, caret, list and tip.
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include <cstdio>
#include <cstring>

#include "chartcore_qt/find_dialog.h"
#include "qt_test_util.h"

using qt_test::CountColor;
using qt_test::CountOther;
using qt_test::EditorTest;

namespace {

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 128, 0);

using EditorWindow = EditorTest;

TEST_F(EditorWindow, TypedFormulaIsColouredWordByWord) {
  // Large enough that glyph stems cover whole pixels in the exact colour.
  widget->SetFontPointSize(24);
  QTest::keyClicks(client, "a = crossup(close, 5); // buy");
  QTest::keyClick(client, Qt::Key_Escape);
  // Space went through the key-down path and '(' through WM_CHAR: each
  // once, nothing else inserted.
  EXPECT_EQ(widget->Text(), QString("a = crossup(close, 5); // buy"));
  const QImage image = Grab();
  image.save(qt_test::ShotPath("editor_formula.png"));
  const QRect word = CellRect(0, 4, 11);      // "crossup": a built-in function word
  const QRect comment = CellRect(0, 22, 28);  // "// buy"
  const QRect plain = CellRect(0, 0, 4);      // "a = "
  EXPECT_GT(CountColor(image, word, kRed), 3);
  EXPECT_EQ(CountColor(image, word, kGreen), 0);
  EXPECT_GT(CountColor(image, comment, kGreen), 3);
  EXPECT_EQ(CountColor(image, comment, kRed), 0);
  EXPECT_EQ(CountColor(image, plain, kRed), 0);
  EXPECT_GT(CountOther(image, plain, qRgb(255, 255, 255)), 0);
}

TEST_F(EditorWindow, KeysReachTheEditorOnceAsOnWindows) {
  // Enter and Tab are handled on key-down: no second character follows.
  QTest::keyClicks(client, "x");
  QTest::keyClick(client, Qt::Key_Tab);
  QTest::keyClicks(client, "y");
  QTest::keyClick(client, Qt::Key_Return);
  QTest::keyClicks(client, "z");
  EXPECT_EQ(widget->Text(), QString("x\ty\nz"));
  // '(' shares its code with the Down key; typed on the last line it must be
  // text, not a caret move (the caret stays on line 1).
  QTest::keyClick(client, Qt::Key_Up);
  QTest::keyClick(client, Qt::Key_End);
  QTest::keyClick(client, Qt::Key_ParenLeft, Qt::ShiftModifier, 0);
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(4, 0));
  EXPECT_EQ(widget->Text(), QString("x\ty(\nz"));
  // Backspace deletes through WM_CHAR; Delete deletes forward and types no
  // DEL character.
  QTest::keyClick(client, Qt::Key_Backspace);
  QTest::keyClick(client, Qt::Key_Home);
  QTest::keyClick(client, Qt::Key_Delete);
  EXPECT_EQ(widget->Text(), QString("\ty\nz"));
  // Ctrl+A selects all and types no control character; typing replaces.
  QTest::keyClick(client, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClicks(client, "k");
  EXPECT_EQ(widget->Text(), QString("k"));
  // Ctrl+Z takes the typing back, Ctrl+Y redoes it.
  QTest::keyClick(client, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(widget->Text(), QString("\ty\nz"));
  QTest::keyClick(client, Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(widget->Text(), QString("k"));
  // Shift extends the selection while it is held (key state from the events).
  QTest::keyClicks(client, "lmn");
  QTest::keyClick(client, Qt::Key_Left, Qt::ShiftModifier);
  QTest::keyClick(client, Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(chartcore::qt::ToQString(Edit().GetSelectedText()), QString("mn"));
  EXPECT_GE(chartcore::GetPortKeyState(VK_SHIFT), 0);  // released again after the click
}

TEST_F(EditorWindow, MousePlacesCaretAndSelects) {
  widget->SetText("alpha beta\ngamma");
  const QRect b = CellRect(0, 6, 7);
  QTest::mouseClick(client, Qt::LeftButton, Qt::NoModifier, QPoint(b.left() + 1, b.center().y()));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(6, 0));
  // Shift+click extends to the clicked place on the next line.
  const QRect m = CellRect(1, 3, 4);
  QTest::mouseClick(client, Qt::LeftButton, Qt::ShiftModifier, QPoint(m.left() + 1, m.center().y()));
  EXPECT_EQ(chartcore::qt::ToQString(Edit().GetSelectedText()), QString("beta\r\ngam"));
  // A drag selects from press to release.
  const QRect a0 = CellRect(0, 0, 1);
  const QRect a5 = CellRect(0, 5, 6);
  QTest::mousePress(client, Qt::LeftButton, Qt::NoModifier, QPoint(a0.left() + 1, a0.center().y()));
  QMouseEvent move(QEvent::MouseMove, QPointF(a5.left() + 1, a5.center().y()), client->mapToGlobal(QPointF(a5.left() + 1, a5.center().y())),
                   Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(client, &move);
  QTest::mouseRelease(client, Qt::LeftButton, Qt::NoModifier, QPoint(a5.left() + 1, a5.center().y()));
  EXPECT_EQ(chartcore::qt::ToQString(Edit().GetSelectedText()), QString("alpha"));
  // A double click selects the word under it.
  const QRect g = CellRect(1, 2, 3);
  QTest::mouseDClick(client, Qt::LeftButton, Qt::NoModifier, QPoint(g.left() + 1, g.center().y()));
  EXPECT_EQ(chartcore::qt::ToQString(Edit().GetSelectedText()), QString("gamma"));
  // The selection is painted inverted (black behind white text): most of
  // its cells are black, while unselected text is mostly background.
  const QImage image = Grab();
  const QRect selected = CellRect(1, 0, 5);
  const QRect plain = CellRect(0, 0, 5);
  const int area = selected.width() * selected.height();
  EXPECT_GT(CountColor(image, selected, qRgb(0, 0, 0)), area / 2);
  EXPECT_LT(CountColor(image, plain, qRgb(0, 0, 0)), area / 4);
}

TEST_F(EditorWindow, ClipboardIsTheSystemOne) {
  widget->SetText("one\ntwo");
  QTest::keyClick(client, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(client, Qt::Key_C, Qt::ControlModifier);
  // Other programs get "\n" line ends.
  EXPECT_EQ(QGuiApplication::clipboard()->text(), QString("one\ntwo"));
  QGuiApplication::clipboard()->setText("three");
  QTest::keyClick(client, Qt::Key_End, Qt::ControlModifier);
  QTest::keyClick(client, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(widget->Text(), QString("one\ntwothree"));
  // Text pasted from elsewhere may carry "\n" lines: they become lines.
  QGuiApplication::clipboard()->setText("x\ny");
  QTest::keyClick(client, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Edit().GetLineCount(), 3);
  QGuiApplication::clipboard()->clear();
  EXPECT_FALSE(Edit().Paste());
}

TEST_F(EditorWindow, CompletionListOpensBelowTheCaretAndDoubleClickInserts) {
  QTest::keyClicks(client, "x = crossu");
  ASSERT_TRUE(Edit().IsListShown());
  QWidget* list = ListWidget();
  ASSERT_NE(list, nullptr);
  EXPECT_FALSE(list->isActiveWindow());  // the editor keeps the keyboard
  // Right below the caret line.
  const CPoint caret = Edit().TextToClient(Edit().GetCursorPos());
  EXPECT_EQ(list->geometry().topLeft(), client->mapToGlobal(QPoint(caret.x, caret.y + Edit().GetLineHeight())));
  CIntelliList& items = Edit().GetIntelliList();
  EXPECT_EQ(chartcore::qt::ToQString(items.GetSelectedText()), QString("crossup"));
  qt_test::ComposeShot(client, {list}).save(qt_test::ShotPath("completion_list.png"));
  // Double click on the selected row: the typed part is replaced by the word.
  QWidget* rows = chartcore::qt::ClientWidget(&items);
  const int row = items.GetCurSel() - items.GetTopIndex();
  const QPoint at(10, row * items.GetRowHeight() + items.GetRowHeight() / 2);
  QTest::mouseDClick(rows, Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_EQ(widget->Text(), QString("x = crossup"));
  EXPECT_FALSE(list->isVisible());
  // The list is sorted, one entry per row: the row above holds the entry
  // before in case-insensitive order.
  EXPECT_LT(items.GetItemText(0).CompareNoCase(items.GetItemText(1)), 0);
}

TEST_F(EditorWindow, TipShowsItsLinesAndHidesAfterThreeSeconds) {
  // Started before the '(' that shows the tip, so it runs at least as long.
  QElapsedTimer shown;
  shown.start();
  QTest::keyClicks(client, "v = MyAvg(");
  ASSERT_TRUE(Edit().IsTipShown());
  QWidget* tip = TipWidget();
  ASSERT_NE(tip, nullptr);
  EXPECT_FALSE(tip->isActiveWindow());
  // Sized from the real font: at least "테스트" measured in the tip's font
  // (a zeroed LOGFONT of height 15) plus 10, one line height per line plus 2.
  LOGFONT lf;
  std::memset(&lf, 0, sizeof(lf));
  lf.lfHeight = 15;
  const QFontMetrics& fm = chartcore::qt::FontMetricsOf(&lf);
  EXPECT_GE(tip->width(), fm.horizontalAdvance(QString("MyAvg(Price, Period)")) + 10);
  EXPECT_EQ(tip->height(), fm.height() * 2 + 2);
  CIntelliTip& tipWnd = Edit().GetIntelliTip();
  ASSERT_EQ(tipWnd.GetNumParams(), 2);
  EXPECT_EQ(chartcore::qt::ToQString(tipWnd.GetParams()[1]), QString("이동평균"));
  // Pale yellow inside a one-pixel black border, with text on both lines.
  const QImage image = tip->grab().toImage().convertToFormat(QImage::Format_RGB32);
  image.save(qt_test::ShotPath("parameter_tip.png"));
  EXPECT_EQ(image.pixel(0, 0) & 0xFFFFFF, 0u);
  EXPECT_EQ(image.pixel(1, 1) & 0xFFFFFF, qRgb(255, 255, 200) & 0xFFFFFF);
  const QRgb pale = qRgb(255, 255, 200);
  EXPECT_GT(CountOther(image, QRect(2, 1, image.width() - 4, fm.height()), pale), 10);
  EXPECT_GT(CountOther(image, QRect(2, 1 + fm.height(), image.width() - 4, fm.height()), pale), 10);
  // Gone by itself 3 seconds after Show: a window timer never fires early.
  QTRY_VERIFY_WITH_TIMEOUT(!tip->isVisible(), 6000);
  EXPECT_GE(shown.elapsed(), 2990);
}

TEST_F(EditorWindow, EscapeHidesListAndTip) {
  QTest::keyClicks(client, "cro");
  ASSERT_TRUE(Edit().IsListShown());
  QTest::keyClick(client, Qt::Key_Escape);
  EXPECT_FALSE(Edit().IsListShown());
  EXPECT_FALSE(ListWidget()->isVisible());
  EXPECT_EQ(widget->Text(), QString("cro"));  // Escape types nothing
  QTest::keyClick(client, Qt::Key_Return);
  QTest::keyClicks(client, "MyAvg(");
  ASSERT_TRUE(Edit().IsTipShown());
  QTest::keyClick(client, Qt::Key_Escape);
  EXPECT_FALSE(Edit().IsTipShown());
  EXPECT_FALSE(TipWidget()->isVisible());
  // Both at once: the list has the keys while it is shown, so the first
  // Escape closes the list and the second the tip.
  QTest::keyClick(client, Qt::Key_Return);
  QTest::keyClicks(client, "MyAvg(cro");
  ASSERT_TRUE(Edit().IsTipShown());
  ASSERT_TRUE(Edit().IsListShown());
  QTest::keyClick(client, Qt::Key_Escape);
  EXPECT_FALSE(ListWidget()->isVisible());
  EXPECT_TRUE(TipWidget()->isVisible());
  QTest::keyClick(client, Qt::Key_Escape);
  EXPECT_FALSE(TipWidget()->isVisible());
  EXPECT_EQ(widget->Text(), QString("cro\nMyAvg(\nMyAvg(cro"));
}

TEST_F(EditorWindow, FindAndReplaceDialogs) {
  widget->SetText("close open\nClose close");
  // Ctrl+F opens the find dialog with the selected word to find.
  Edit().SetSelection(CPoint(0, 0), CPoint(5, 0));
  QTest::keyClick(client, Qt::Key_F, Qt::ControlModifier);
  chartcore::qt::FindReplaceDialog* dialog = widget->findChild<chartcore::qt::FindReplaceDialog*>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_FALSE(dialog->IsReplaceMode());
  EXPECT_EQ(dialog->GetFindText(), QString("close"));
  EXPECT_EQ(widget->Text(), QString("close open\nClose close"));  // Ctrl+F typed nothing
  // Find Next ignores case unless asked: "Close" on line 1 comes next.
  EXPECT_TRUE(dialog->FindNext());
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(5, 1));
  dialog->SetFlags(CCrystalTextWnd::FIND_MATCH_CASE);
  EXPECT_TRUE(dialog->FindNext());
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(11, 1));
  // F3 searches again with the dialog's text, Shift+F3 backwards.
  QTest::keyClick(client, Qt::Key_F3);
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(5, 0));  // wrapped to the top
  QTest::keyClick(client, Qt::Key_F3, Qt::ShiftModifier);
  CPoint start, end;
  Edit().GetSelection(start, end);
  EXPECT_EQ(start, CPoint(6, 1));  // the match before, on the last line
  EXPECT_EQ(end, CPoint(11, 1));
  dialog->SetFindText("nowhere");
  EXPECT_FALSE(dialog->FindNext());
  EXPECT_EQ(dialog->GetStatusText(), QString("Not found"));
  // Ctrl+H: the same dialog in replace mode. Replace All is one undo step.
  QTest::keyClick(client, Qt::Key_H, Qt::ControlModifier);
  EXPECT_TRUE(dialog->IsReplaceMode());
  dialog->SetFindText("close");
  dialog->SetReplaceText("high");
  dialog->SetFlags(CCrystalTextWnd::FIND_WHOLE_WORD);
  EXPECT_EQ(dialog->ReplaceAll(), 3);
  EXPECT_EQ(dialog->GetStatusText(), QString("3 replaced"));
  EXPECT_EQ(widget->Text(), QString("high open\nhigh high"));
  EXPECT_TRUE(Edit().Undo());
  EXPECT_EQ(widget->Text(), QString("close open\nClose close"));
  // A text on two lines is never searched.
  dialog->SetFindText("a\nb");
  EXPECT_FALSE(dialog->FindNext());
  dialog->hide();
}

TEST_F(EditorWindow, ScrollBarsFollowTheViewAndScrollIt) {
  QString text;
  for (int i = 0; i < 200; ++i) text += QString("line %1 ").arg(i) + QString(120, QLatin1Char('x')) + "\n";
  widget->SetText(text);
  QApplication::processEvents();
  const QList<QScrollBar*> bars = widget->findChildren<QScrollBar*>();
  QScrollBar* vbar = nullptr;
  QScrollBar* hbar = nullptr;
  for (QScrollBar* bar : bars) (bar->orientation() == Qt::Vertical ? vbar : hbar) = bar;
  ASSERT_NE(vbar, nullptr);
  ASSERT_NE(hbar, nullptr);
  Grab();  // a paint brings the bars in line
  const int page = Edit().GetScreenLines();
  EXPECT_EQ(vbar->maximum(), 201 - page);  // 201 lines: the text ends with a line break
  EXPECT_EQ(vbar->pageStep(), page);
  // Moving the bar scrolls the view.
  vbar->setValue(50);
  EXPECT_EQ(Edit().GetTopLine(), 50);
  hbar->setValue(40);
  EXPECT_EQ(Edit().GetHorzOffset(), 40);
  // Scrolling the view moves the bar: Ctrl+End goes to the last line.
  QTest::keyClick(client, Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(vbar->value(), Edit().GetTopLine());
  EXPECT_GT(vbar->value(), 150);
  // The wheel scrolls by whole notches only.
  const int top = Edit().GetTopLine();
  const QPointF at(20, 20);
  QWheelEvent half(at, client->mapToGlobal(at), QPoint(), QPoint(0, 60), Qt::NoButton, Qt::NoModifier,
                   Qt::NoScrollPhase, false);
  QApplication::sendEvent(client, &half);
  EXPECT_EQ(Edit().GetTopLine(), top);
  QApplication::sendEvent(client, &half);
  EXPECT_LT(Edit().GetTopLine(), top);
  EXPECT_EQ(vbar->value(), Edit().GetTopLine());
}

TEST_F(EditorWindow, LosingTheFocusHidesListAndTip) {
  QTest::keyClicks(client, "MyAvg(cro");
  ASSERT_TRUE(Edit().IsTipShown());
  ASSERT_TRUE(Edit().IsListShown());
  QLineEdit other(widget.get());
  other.show();
  other.setFocus();
  QApplication::processEvents();
  EXPECT_FALSE(ListWidget()->isVisible());
  EXPECT_FALSE(TipWidget()->isVisible());
  EXPECT_NE(CWnd::GetFocus(), &Edit());
  client->setFocus();
  EXPECT_EQ(CWnd::GetFocus(), &Edit());
}

// The picture for the record: a formula with its colours, the tip over a
// call and the completion list below it.
TEST_F(EditorWindow, ScreenshotOfTheEditorAtWork) {
  widget->SetFontPointSize(12);
  QTest::keyClicks(client, "// golden cross of two averages");
  QTest::keyClick(client, Qt::Key_Return);
  QTest::keyClicks(client, "fast = ma(close, 5);");
  QTest::keyClick(client, Qt::Key_Return);
  QTest::keyClicks(client, "if crossup(fast, MyAvg(c");
  ASSERT_TRUE(Edit().IsTipShown());
  ASSERT_TRUE(Edit().IsListShown());
  const QImage shot = qt_test::ComposeShot(widget.get(), {TipWidget(), ListWidget()});
  const QString path = qt_test::ShotPath("editor_window.png");
  ASSERT_TRUE(shot.save(path));
  std::printf("screenshot: %s\n", path.toUtf8().constData());
  // The tip stands below the caret line, the list below the tip.
  EXPECT_EQ(ListWidget()->geometry().top(), TipWidget()->geometry().bottom() + 1);
}

}  // namespace
