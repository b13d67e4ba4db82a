// Helpers of the Qt backend's tests: a workspace with a user function, an
// editor shown on the offscreen screen, pixel counts in grabbed images.
#ifndef CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_
#define CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QWidget>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/script_editor/script_edit.h"
#include "chartcore_qt/conversions.h"
#include "chartcore_qt/qt_backend.h"
#include "chartcore_qt/script_editor_widget.h"
#include "common/temp_dir.h"

namespace qt_test {

// A temporary workspace whose function list names the user function MyAvg,
// defined as "MyAvg(Price, Period)" with the comment "이동평균".
class Workspace : public chartcore_test::TempDir {
 public:
  Workspace() {
    MakeFile("Logic/Function/New_Function.dat", "[System]\nCount=1\nName0=MyAvg\n[User]\nCount=0\n");
    CDBSubFUNCT record;
    record.m_strText1 = L"MyAvg";
    record.m_strText3 = L"MyAvg(Price, Period)";
    record.m_strText4 = L"이동평균";
    EXPECT_TRUE(chartcore::SaveRecordFile(lib("Logic/Function/MyAvg.fct"), record));
  }
  QString QRoot() const { return QString::fromStdWString(root().wstring()); }
  QString Path(const std::string& relative) const { return QString::fromStdWString(native(relative).wstring()); }
};

// An editor widget over the workspace, shown, active and focused.
class EditorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    widget = std::make_unique<chartcore::qt::ScriptEditorWidget>();
    widget->resize(640, 400);
    widget->SetWorkspace(ws.QRoot());
    widget->show();
    widget->activateWindow();
    QApplication::setActiveWindow(widget.get());
    client = widget->EditorClient();
    ASSERT_NE(client, nullptr);
    client->setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(widget.get()));
    QApplication::processEvents();
  }
  void TearDown() override {
    widget.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  CScriptEdit& Edit() { return widget->Editor(); }
  // Clicks the keys in turn, each with the same modifiers.
  void Keys(std::initializer_list<Qt::Key> keys, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    for (Qt::Key key : keys) QTest::keyClick(client, key, mods);
  }
  QString Selected() { return chartcore::qt::ToQString(Edit().GetSelectedText()); }
  // What the editor shows now, painted through the backend.
  QImage Grab() { return client->grab().toImage().convertToFormat(QImage::Format_RGB32); }
  // The pixels of columns [from, to) of a line, in client coordinates.
  QRect CellRect(int line, int from, int to) {
    const CPoint a = Edit().TextToClient(CPoint(from, line));
    const CPoint b = Edit().TextToClient(CPoint(to, line));
    return QRect(a.x, a.y, b.x - a.x, Edit().GetLineHeight());
  }
  // Just inside the left edge of a column: a click there lands before it.
  QPoint CellPoint(int line, int column) {
    const QRect cell = CellRect(line, column, column + 1);
    return QPoint(cell.left() + 1, cell.center().y());
  }
  QWidget* ListWidget() { return chartcore::qt::WindowWidget(&Edit().GetIntelliList()); }
  QWidget* TipWidget() { return chartcore::qt::WindowWidget(&Edit().GetIntelliTip()); }

  Workspace ws;
  std::unique_ptr<chartcore::qt::ScriptEditorWidget> widget;
  QWidget* client = nullptr;
};

// How many pixels of area (clipped to the image) have exactly this colour.
inline int CountColor(const QImage& image, const QRect& area, QRgb color) {
  const QRect r = area.intersected(image.rect());
  int count = 0;
  for (int y = r.top(); y <= r.bottom(); ++y)
    for (int x = r.left(); x <= r.right(); ++x)
      if ((image.pixel(x, y) & 0xFFFFFF) == (color & 0xFFFFFF)) ++count;
  return count;
}

// How many pixels of area (clipped) differ from the colour.
inline int CountOther(const QImage& image, const QRect& area, QRgb color) {
  const QRect r = area.intersected(image.rect());
  return r.width() * r.height() - CountColor(image, area, color);
}

// The editor with its shown popups drawn where they stand on the screen (each
// popup is a window of its own, so a grab of the editor alone lacks them),
// saved as `name` in the build folder's screenshots/; returns the path, empty
// when the file could not be written.
inline QString SaveScreenshot(QWidget* editor, std::initializer_list<QWidget*> popups, const char* name) {
  const QPoint origin = editor->mapToGlobal(QPoint(0, 0));
  QRect bounds(QPoint(0, 0), editor->size());
  for (QWidget* popup : popups)
    if (popup != nullptr && popup->isVisible()) bounds |= popup->geometry().translated(-origin);
  QImage canvas(bounds.size(), QImage::Format_RGB32);
  canvas.fill(Qt::lightGray);
  QPainter painter(&canvas);
  painter.drawImage(-bounds.topLeft(), editor->grab().toImage());
  for (QWidget* popup : popups)
    if (popup != nullptr && popup->isVisible())
      painter.drawImage(popup->geometry().topLeft() - origin - bounds.topLeft(), popup->grab().toImage());
  painter.end();
  std::filesystem::create_directories(CHARTCORE_QT_SHOT_DIR);
  const QString path = QString::fromUtf8(CHARTCORE_QT_SHOT_DIR) + QLatin1Char('/') + QString::fromUtf8(name);
  return canvas.save(path) ? path : QString();
}

}  // namespace qt_test

#endif  // CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_
