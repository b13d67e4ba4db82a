// The script editor as a real window: typing, colouring, mouse, clipboard,
// list and tip popups, find dialog, scroll bars, files and the main window.
#include <QAction>
#include <QClipboard>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cstdio>

#include "chartcore_qt/find_dialog.h"
#include "chartcore_qt/script_editor_window.h"
#include "qt_test_util.h"

using chartcore::qt::FindReplaceDialog;
using chartcore::qt::ToQString;
using qt_test::CountColor;
using qt_test::CountOther;

namespace {

using EditorWindow = qt_test::EditorTest;

TEST_F(EditorWindow, TypedFormulaIsColouredWordByWord) {
  widget->SetFontPointSize(24);  // glyph stems cover whole pixels in the exact colour
  QTest::keyClicks(client, "a = crossup(close, 5); // buy");
  Keys({Qt::Key_Escape});
  // Space goes through the key-down path and '(' through WM_CHAR: each once.
  EXPECT_EQ(widget->Text(), QString("a = crossup(close, 5); // buy"));
  const QImage image = Grab();
  const QRgb red = qRgb(255, 0, 0), green = qRgb(0, 128, 0);
  const QRect word = CellRect(0, 4, 11), comment = CellRect(0, 22, 28), plain = CellRect(0, 0, 4);
  EXPECT_GT(CountColor(image, word, red), 3);  // "crossup": a built-in function word
  EXPECT_EQ(CountColor(image, word, green), 0);
  EXPECT_GT(CountColor(image, comment, green), 3);
  EXPECT_EQ(CountColor(image, comment, red), 0);
  EXPECT_EQ(CountColor(image, plain, red), 0);
  EXPECT_GT(CountOther(image, plain, qRgb(255, 255, 255)), 0);
}

TEST_F(EditorWindow, KeysReachTheEditorOnceAsOnWindows) {
  // Enter and Tab are handled on key-down: no second character follows.
  QTest::keyClicks(client, "x\ty\rz");
  EXPECT_EQ(widget->Text(), QString("x\ty\nz"));
  // '(' shares its code with the Down key; typed on the last line it is
  // text, not a caret move.
  Keys({Qt::Key_Up, Qt::Key_End});
  QTest::keyClick(client, Qt::Key_ParenLeft, Qt::ShiftModifier);
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(4, 0));
  EXPECT_EQ(widget->Text(), QString("x\ty(\nz"));
  // Backspace deletes through WM_CHAR; Delete deletes forward, typing no DEL.
  Keys({Qt::Key_Backspace, Qt::Key_Home, Qt::Key_Delete});
  EXPECT_EQ(widget->Text(), QString("\ty\nz"));
  // Ctrl+A selects all and types no control character; typing replaces.
  Keys({Qt::Key_A}, Qt::ControlModifier);
  QTest::keyClicks(client, "klmn");
  EXPECT_EQ(widget->Text(), QString("klmn"));
  // Shift extends the selection while it is held (key state from the events).
  Keys({Qt::Key_Left, Qt::Key_Left}, Qt::ShiftModifier);
  EXPECT_EQ(Selected(), QString("mn"));
  EXPECT_GE(chartcore::GetPortKeyState(VK_SHIFT), 0);  // released again after the click
}

TEST_F(EditorWindow, MouseSelectsAndClipboardIsTheSystemOne) {
  widget->SetText("alpha beta\ngamma");
  QTest::mouseClick(client, Qt::LeftButton, Qt::NoModifier, CellPoint(0, 6));
  QTest::mouseClick(client, Qt::LeftButton, Qt::ShiftModifier, CellPoint(1, 3));  // extends
  EXPECT_EQ(Selected(), QString("beta\r\ngam"));
  // A drag selects from press to release.
  const QPoint to = CellPoint(0, 5);
  QTest::mousePress(client, Qt::LeftButton, Qt::NoModifier, CellPoint(0, 0));
  QMouseEvent move(QEvent::MouseMove, to, client->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(client, &move);
  QTest::mouseRelease(client, Qt::LeftButton, Qt::NoModifier, to);
  EXPECT_EQ(Selected(), QString("alpha"));
  // A double click selects the word under it, painted inverted (black behind
  // white text), while unselected text is mostly background.
  QTest::mouseDClick(client, Qt::LeftButton, Qt::NoModifier, CellPoint(1, 2));
  EXPECT_EQ(Selected(), QString("gamma"));
  const QImage image = Grab();
  const int area = CellRect(1, 0, 5).width() * CellRect(1, 0, 5).height();
  EXPECT_GT(CountColor(image, CellRect(1, 0, 5), 0), area / 2);
  EXPECT_LT(CountColor(image, CellRect(0, 0, 5), 0), area / 4);
  // Copied for other programs with "\n" line ends; "\n" pasted makes lines.
  Keys({Qt::Key_A, Qt::Key_C}, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), QString("alpha beta\ngamma"));
  QGuiApplication::clipboard()->setText("x\ny");
  Keys({Qt::Key_End, Qt::Key_V}, Qt::ControlModifier);
  EXPECT_EQ(widget->Text(), QString("alpha beta\ngammax\ny"));
  QGuiApplication::clipboard()->clear();
  EXPECT_FALSE(Edit().Paste());
}

TEST_F(EditorWindow, CompletionListOpensBelowTheCaretAndDoubleClickInserts) {
  QTest::keyClicks(client, "x = crossu");
  ASSERT_TRUE(Edit().IsListShown());
  QWidget* list = ListWidget();
  EXPECT_FALSE(list->isActiveWindow());  // the editor keeps the keyboard
  const CPoint caret = Edit().TextToClient(Edit().GetCursorPos());
  EXPECT_EQ(list->geometry().topLeft(), client->mapToGlobal(QPoint(caret.x, caret.y + Edit().GetLineHeight())));
  // Double click on the selected row: the typed part is replaced by the word.
  CIntelliList& items = Edit().GetIntelliList();
  ASSERT_EQ(ToQString(items.GetSelectedText()), QString("crossup"));
  const int row = items.GetCurSel() - items.GetTopIndex();
  QSignalSpy edited(widget.get(), &chartcore::qt::ScriptEditorWidget::textEdited);
  QTest::mouseDClick(chartcore::qt::ClientWidget(&items), Qt::LeftButton, Qt::NoModifier,
                     QPoint(10, row * items.GetRowHeight() + items.GetRowHeight() / 2));
  EXPECT_EQ(widget->Text(), QString("x = crossup"));
  EXPECT_EQ(edited.count(), 1);  // the pick is an edit, though no key reached the editor
  EXPECT_FALSE(list->isVisible());
}

TEST_F(EditorWindow, TipIsSizedFromItsFontAndHidesOnItsOwnTimer) {
  QTest::keyClicks(client, "v = MyAvg(");
  ASSERT_TRUE(Edit().IsTipShown());
  QWidget* tip = TipWidget();
  EXPECT_FALSE(tip->isActiveWindow());
  // Measured in the tip's font (a zeroed LOGFONT of height 15): the widest
  // line, never narrower than "테스트", plus 10; a line height per line plus 2.
  LOGFONT lf{};
  lf.lfHeight = 15;
  const QFontMetrics& fm = chartcore::qt::FontMetricsOf(&lf);
  EXPECT_EQ(tip->width(), std::max({fm.horizontalAdvance("테스트"), fm.horizontalAdvance("MyAvg(Price, Period)"),
                                    fm.horizontalAdvance("이동평균")}) + 10);
  EXPECT_EQ(tip->height(), fm.height() * 2 + 2);
  // Pale yellow inside a one-pixel black border, with text on both lines.
  const QImage image = tip->grab().toImage().convertToFormat(QImage::Format_RGB32);
  const QRgb pale = qRgb(255, 255, 200);
  EXPECT_EQ(image.pixel(0, 0) & 0xFFFFFF, 0u);
  EXPECT_EQ(image.pixel(1, 1) & 0xFFFFFF, pale & 0xFFFFFF);
  EXPECT_GT(CountOther(image, QRect(2, 1, image.width() - 4, fm.height()), pale), 10);
  EXPECT_GT(CountOther(image, QRect(2, 1 + fm.height(), image.width() - 4, fm.height()), pale), 10);
  // It goes by itself on a 3-second window timer, which must never fire
  // early (a precise Qt timer); the timer is fired here rather than awaited.
  QTimer* hide = nullptr;
  for (QTimer* timer : chartcore::qt::ClientWidget(&Edit().GetIntelliTip())->findChildren<QTimer*>())
    if (timer->isActive()) hide = timer;
  ASSERT_NE(hide, nullptr);
  EXPECT_EQ(hide->interval(), static_cast<int>(CIntelliTip::kHideDelay));
  EXPECT_EQ(hide->timerType(), Qt::PreciseTimer);
  QMetaObject::invokeMethod(hide, "timeout");
  EXPECT_FALSE(tip->isVisible());
}

TEST_F(EditorWindow, EscapeAndFocusLossHideListAndTip) {
  // With both shown, the tip stands below the caret line and the list below
  // the tip. The list has the keys while shown, so the first Escape closes
  // it and the second the tip; neither types anything.
  QTest::keyClicks(client, "MyAvg(cro");
  ASSERT_TRUE(Edit().IsTipShown());
  ASSERT_TRUE(Edit().IsListShown());
  EXPECT_EQ(ListWidget()->geometry().top(), TipWidget()->geometry().bottom() + 1);
  Keys({Qt::Key_Escape});
  EXPECT_FALSE(Edit().IsListShown());
  EXPECT_FALSE(ListWidget()->isVisible());
  EXPECT_TRUE(TipWidget()->isVisible());
  Keys({Qt::Key_Escape});
  EXPECT_FALSE(Edit().IsTipShown());
  EXPECT_FALSE(TipWidget()->isVisible());
  EXPECT_EQ(widget->Text(), QString("MyAvg(cro"));
  // The focus going to another widget hides both; it comes back on return.
  QTest::keyClicks(client, "\rMyAvg(cro");
  ASSERT_TRUE(Edit().IsListShown());
  ASSERT_TRUE(Edit().IsTipShown());
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

TEST_F(EditorWindow, FindAndReplaceDialogs) {
  widget->SetText("close open\nClose close");
  // Ctrl+F opens the find dialog with the selected word to find, typing nothing.
  Edit().SetSelection(CPoint(0, 0), CPoint(5, 0));
  Keys({Qt::Key_F}, Qt::ControlModifier);
  auto* dialog = widget->findChild<FindReplaceDialog*>();
  ASSERT_NE(dialog, nullptr);
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_FALSE(dialog->IsReplaceMode());
  EXPECT_EQ(dialog->GetFindText(), QString("close"));
  EXPECT_EQ(widget->Text(), QString("close open\nClose close"));
  // The dialog's flags reach the search: any case first, then matching case.
  EXPECT_TRUE(dialog->FindNext());
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(5, 1));
  dialog->SetFlags(CCrystalTextWnd::FIND_MATCH_CASE | CCrystalTextWnd::FIND_DIRECTION_UP);
  Keys({Qt::Key_F3});  // F3 searches down whatever the dialog says
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(11, 1));
  Keys({Qt::Key_F3}, Qt::ShiftModifier);  // and Shift+F3 up
  EXPECT_EQ(Selected(), QString("close"));
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(5, 0));
  dialog->SetFindText("nowhere");
  EXPECT_FALSE(dialog->FindNext());
  EXPECT_EQ(dialog->GetStatusText(), QString("Not found"));
  dialog->SetFindText("a\nb");  // a text on two lines is never searched
  EXPECT_FALSE(dialog->FindNext());
  // Ctrl+H: the same dialog in replace mode.
  Keys({Qt::Key_H}, Qt::ControlModifier);
  EXPECT_TRUE(dialog->IsReplaceMode());
  EXPECT_EQ(widget->findChildren<FindReplaceDialog*>().size(), 1);
  dialog->SetFindText("close");
  dialog->SetReplaceText("high");
  dialog->SetFlags(CCrystalTextWnd::FIND_WHOLE_WORD);
  EXPECT_EQ(dialog->ReplaceAll(), 3);
  EXPECT_EQ(dialog->GetStatusText(), QString("3 replaced"));
  EXPECT_EQ(widget->Text(), QString("high open\nhigh high"));
  dialog->hide();
}

TEST_F(EditorWindow, ScrollBarsFollowTheViewAndScrollIt) {
  QString text;
  for (int i = 0; i < 200; ++i) text += QString("line %1 ").arg(i) + QString(120, QLatin1Char('x')) + "\n";
  widget->SetText(text);
  QScrollBar* bars[2] = {nullptr, nullptr};  // vertical, horizontal
  for (QScrollBar* bar : widget->findChildren<QScrollBar*>()) bars[bar->orientation() == Qt::Vertical ? 0 : 1] = bar;
  ASSERT_TRUE(bars[0] != nullptr && bars[1] != nullptr);
  Grab();  // a paint brings the bars in line
  const int page = Edit().GetScreenLines();
  EXPECT_EQ(bars[0]->maximum(), 201 - page);  // 201 lines: the text ends with a line break
  EXPECT_EQ(bars[0]->pageStep(), page);
  bars[0]->setValue(50);
  EXPECT_EQ(Edit().GetTopLine(), 50);
  bars[1]->setValue(40);
  EXPECT_EQ(Edit().GetHorzOffset(), 40);
  // Scrolling the view moves the bar: Ctrl+End goes to the last line.
  Keys({Qt::Key_End}, Qt::ControlModifier);
  EXPECT_EQ(bars[0]->value(), Edit().GetTopLine());
  EXPECT_GT(bars[0]->value(), 150);
  // The wheel scrolls by whole notches only: two half notches make one.
  const int top = Edit().GetTopLine();
  const QPointF at(20, 20);
  QWheelEvent half(at, client->mapToGlobal(at), QPoint(), QPoint(0, 60), Qt::NoButton, Qt::NoModifier,
                   Qt::NoScrollPhase, false);
  QApplication::sendEvent(client, &half);
  EXPECT_EQ(Edit().GetTopLine(), top);
  QApplication::sendEvent(client, &half);
  EXPECT_LT(Edit().GetTopLine(), top);
  EXPECT_EQ(bars[0]->value(), Edit().GetTopLine());
}

TEST_F(EditorWindow, LoadEditSaveRoundTripWithModifiedSignals) {
  // Code page 949 on disk (no mark, not UTF-8): "종가" is C1 BE B0 A1.
  ws.MakeFile("formula.txt", "a = \xC1\xBE\xB0\xA1;\r\nb = 2;\r\n");
  QSignalSpy modified(widget.get(), &chartcore::qt::ScriptEditorWidget::modificationChanged);
  QSignalSpy edited(widget.get(), &chartcore::qt::ScriptEditorWidget::textEdited);
  const QString path = ws.Path("formula.txt");
  ASSERT_TRUE(widget->LoadFile(path));
  EXPECT_EQ(widget->Text(), QString("a = 종가;\nb = 2;\n"));
  EXPECT_FALSE(widget->IsModified());
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(0, 0));
  // Typing modifies, and undo back to the loaded text is unmodified again.
  QTest::keyClicks(client, "x");
  EXPECT_EQ(edited.count(), 1);  // one typed character, one edit (the load is no edit)
  QTest::keyClick(client, Qt::Key_Z, Qt::ControlModifier);
  ASSERT_EQ(modified.count(), 2);
  EXPECT_TRUE(modified.at(0).at(0).toBool());
  EXPECT_FALSE(modified.at(1).at(0).toBool());
  // Saved in the encoding and line ends it was loaded with.
  QTest::keyClicks(client, "y");
  ASSERT_TRUE(widget->SaveFile(path));
  EXPECT_FALSE(widget->IsModified());
  EXPECT_EQ(modified.count(), 4);
  EXPECT_EQ(ws.Read("formula.txt"), std::string("ya = \xC1\xBE\xB0\xA1;\r\nb = 2;\r\n"));
  // A file that cannot be read leaves the text alone.
  EXPECT_FALSE(widget->LoadFile(path + ".missing"));
  EXPECT_FALSE(widget->LoadFile(QString()));
  EXPECT_EQ(widget->Text(), QString("ya = 종가;\nb = 2;\n"));
  // Saving into a folder that does not exist fails and keeps the state.
  QTest::keyClicks(client, "z");
  EXPECT_FALSE(widget->SaveFile(ws.Path("no/such/f.txt")));
  EXPECT_TRUE(widget->IsModified());
  EXPECT_FALSE(widget->SetWorkspace(ws.QRoot()));  // the workspace is loaded once
}

// The picture for the record: a formula in its colours, the tip over a call
// and the completion list below it.
TEST_F(EditorWindow, ScreenshotOfTheEditorAtWork) {
  widget->SetFontPointSize(12);
  QTest::keyClicks(client, "// golden cross of two averages");
  Keys({Qt::Key_Return});
  QTest::keyClicks(client, "fast = ma(close, 5);");
  Keys({Qt::Key_Return});
  QTest::keyClicks(client, "if crossup(fast, MyAvg(c");
  ASSERT_TRUE(Edit().IsTipShown() && Edit().IsListShown());
  const QString path = qt_test::SaveScreenshot(widget.get(), {TipWidget(), ListWidget()}, "editor_window.png");
  ASSERT_FALSE(path.isEmpty());
  std::printf("screenshot: %s\n", path.toUtf8().constData());
}

TEST(EditorMainWindow, TitleFollowsFileAndChanges) {
  qt_test::Workspace ws;
  chartcore::qt::ScriptEditorWindow window;
  EXPECT_TRUE(window.OpenWorkspace(ws.QRoot()));
  EXPECT_TRUE(window.windowTitle().startsWith("Untitled"));
  const QString path = ws.Path("new.txt");
  window.NewFile(path);
  EXPECT_EQ(window.CurrentFile(), path);
  window.Editor()->Editor().ReplaceSelText(L"v = MyAvg(c, 5);");
  window.Editor()->SetText(window.Editor()->Text());  // a fresh document: not modified
  EXPECT_FALSE(window.windowTitle().contains("*"));
  // An edit the host makes through the editor is signalled like typing.
  window.Editor()->Editor().ReplaceSelText(L"// ");
  EXPECT_TRUE(window.windowTitle().startsWith("new.txt *"));
  ASSERT_TRUE(window.Save());
  EXPECT_FALSE(window.windowTitle().contains("*"));
  EXPECT_TRUE(window.MaybeSave());  // nothing unsaved: no question asked
  EXPECT_EQ(ws.Read("new.txt").substr(3), std::string("// v = MyAvg(c, 5);"));  // after the mark
  // Replace All from the dialog and Undo from the menu, no key involved:
  // the title, the edit and the caret follow each.
  QSignalSpy modified(window.Editor(), &chartcore::qt::ScriptEditorWidget::modificationChanged);
  QSignalSpy edited(window.Editor(), &chartcore::qt::ScriptEditorWidget::textEdited);
  QSignalSpy moved(window.Editor(), &chartcore::qt::ScriptEditorWidget::cursorMoved);
  FindReplaceDialog* dialog = window.Editor()->ShowReplaceDialog();
  dialog->SetFindText("c");
  dialog->SetReplaceText("close");
  dialog->SetFlags(CCrystalTextWnd::FIND_WHOLE_WORD);
  EXPECT_EQ(dialog->ReplaceAll(), 1);
  dialog->hide();
  EXPECT_TRUE(window.windowTitle().startsWith("new.txt *"));
  EXPECT_EQ(edited.count(), 1);
  ASSERT_EQ(modified.count(), 1);
  EXPECT_TRUE(modified.at(0).at(0).toBool());
  ASSERT_FALSE(moved.isEmpty());
  EXPECT_EQ(moved.last(), (QList<QVariant>{0, 18}));  // after "close"
  QAction* undo = nullptr;
  for (QAction* action : window.findChildren<QAction*>())
    if (action->text() == "&Undo") undo = action;
  ASSERT_NE(undo, nullptr);
  undo->trigger();
  EXPECT_EQ(window.Editor()->Text(), QString("// v = MyAvg(c, 5);"));
  EXPECT_FALSE(window.windowTitle().contains("*"));  // back to the saved text
  EXPECT_EQ(edited.count(), 2);
  ASSERT_EQ(modified.count(), 2);
  EXPECT_FALSE(modified.at(1).at(0).toBool());
  EXPECT_EQ(moved.last(), (QList<QVariant>{0, 13}));  // where the replaced word began
  window.NewFile(QString());
  EXPECT_FALSE(window.Save());  // untitled and not shown: no file to save to
}

TEST(EditorMainWindow, AFailedSaveIsReportedWhenShown) {
  qt_test::Workspace ws;
  chartcore::qt::ScriptEditorWindow window;
  const QString path = ws.Path("no/such/f.txt");
  window.NewFile(path);
  window.Editor()->Editor().ReplaceSelText(L"a = 1;");
  EXPECT_FALSE(window.Save());  // hidden: fails quietly, nothing to click away
  // Shown, File > Save says why; the box is read and closed from a timer.
  window.show();
  QString reported;
  QTimer closer;
  QObject::connect(&closer, &QTimer::timeout, [&] {
    if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
      reported = box->text();
      box->reject();
    }
  });
  closer.start(10);
  QAction* save = nullptr;
  for (QAction* action : window.findChildren<QAction*>())
    if (action->text() == "&Save") save = action;
  ASSERT_NE(save, nullptr);
  save->trigger();
  closer.stop();
  EXPECT_EQ(reported, "Cannot write " + path);
  EXPECT_TRUE(window.Editor()->IsModified());
  EXPECT_TRUE(window.windowTitle().startsWith("f.txt *"));
  window.hide();
}

}  // namespace
