// The editor widget and window with files: load, atomic save, modified state.
#include <QSignalSpy>
#include <QTest>

#include <string>

#include "chartcore_qt/script_editor_window.h"
#include "qt_test_util.h"

namespace {

using EditorFiles = qt_test::EditorTest;

TEST_F(EditorFiles, LoadEditSaveRoundTripWithModifiedSignals) {
  // Code page 949 on disk (no mark, not UTF-8): "종가" is C1 BE B0 A1.
  ws.Folder().MakeFile("formula.txt", "a = \xC1\xBE\xB0\xA1;\r\nb = 2;\r\n");
  QSignalSpy modified(widget.get(), &chartcore::qt::ScriptEditorWidget::modificationChanged);
  QSignalSpy edited(widget.get(), &chartcore::qt::ScriptEditorWidget::textEdited);
  const QString path = ws.Path("formula.txt");
  ASSERT_TRUE(widget->LoadFile(path));
  EXPECT_EQ(widget->Text(), QString("a = 종가;\nb = 2;\n"));
  EXPECT_FALSE(widget->IsModified());
  EXPECT_EQ(Edit().GetCursorPos(), CPoint(0, 0));

  QTest::keyClicks(client, "x");
  EXPECT_TRUE(widget->IsModified());
  ASSERT_EQ(modified.count(), 1);
  EXPECT_TRUE(modified.at(0).at(0).toBool());
  EXPECT_GE(edited.count(), 1);
  // Undo back to the loaded text is unmodified again.
  QTest::keyClick(client, Qt::Key_Z, Qt::ControlModifier);
  ASSERT_EQ(modified.count(), 2);
  EXPECT_FALSE(modified.at(1).at(0).toBool());

  QTest::keyClicks(client, "y");
  ASSERT_TRUE(widget->SaveFile(path));
  EXPECT_FALSE(widget->IsModified());
  EXPECT_EQ(modified.count(), 4);
  // Saved in the encoding and line ends it was loaded with.
  EXPECT_EQ(ws.Folder().Read("formula.txt"), std::string("ya = \xC1\xBE\xB0\xA1;\r\nb = 2;\r\n"));
  // A file that cannot be read leaves the text alone.
  EXPECT_FALSE(widget->LoadFile(path + ".missing"));
  EXPECT_FALSE(widget->LoadFile(QString()));
  EXPECT_EQ(widget->Text(), QString("ya = 종가;\nb = 2;\n"));
  // Saving into a folder that does not exist fails and keeps the state.
  QTest::keyClicks(client, "z");
  EXPECT_FALSE(widget->SaveFile(ws.Path("no/such/f.txt")));
  EXPECT_TRUE(widget->IsModified());
  // The workspace is loaded once: a second one is refused.
  EXPECT_FALSE(widget->SetWorkspace(ws.QRoot()));
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
  window.Editor()->Editor().ReplaceSelText(L"// ");
  QTest::keyClick(window.Editor()->EditorClient(), Qt::Key_Space);  // input reaches the window
  EXPECT_TRUE(window.windowTitle().startsWith("new.txt *"));
  ASSERT_TRUE(window.Save());
  EXPECT_FALSE(window.windowTitle().contains("*"));
  EXPECT_TRUE(window.MaybeSave());  // nothing unsaved: no question asked
  EXPECT_EQ(ws.Folder().Read("new.txt").substr(3), std::string("//  v = MyAvg(c, 5);"));  // after the mark
  // Untitled and not shown: no file to save to.
  window.NewFile(QString());
  EXPECT_FALSE(window.Save());
}

}  // namespace
