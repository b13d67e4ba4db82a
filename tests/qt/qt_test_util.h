// Helpers of the Qt backend's tests: a workspace with user functions, an
// editor window shown on the offscreen screen, and pixel searches in grabbed
// images.
#ifndef CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_
#define CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QWidget>

#include <filesystem>
#include <initializer_list>
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

namespace fs = std::filesystem;

// A workspace in a temporary folder whose function list names the user
// function MyAvg, with the core definition MyAvg.fct: formula
// "MyAvg(Price, Period)", comment "이동평균".
class Workspace {
 public:
  Workspace() {
    m_dir.MakeFile("Logic/Function/New_Function.dat", "[System]\nCount=1\nName0=MyAvg\n[User]\nCount=0\n");
    CDBSubFUNCT record;
    record.m_strText1 = L"MyAvg";
    record.m_strText3 = L"MyAvg(Price, Period)";
    record.m_strText4 = L"이동평균";
    EXPECT_TRUE(chartcore::SaveRecordFile(m_dir.lib("Logic/Function/MyAvg.fct"), record));
  }

  CString Root() const { return CString(m_dir.root().wstring().c_str()); }
  QString QRoot() const { return QString::fromStdWString(m_dir.root().wstring()); }
  // A path below the root, as Qt takes it.
  QString Path(const std::string& relative) const { return QString::fromStdWString(m_dir.native(relative).wstring()); }
  const chartcore_test::TempDir& Folder() const { return m_dir; }

 private:
  chartcore_test::TempDir m_dir;
};

// An editor widget over the workspace, shown, active and focused, with
// everything typed so far closed again at the end.
class EditorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    widget.reset(new chartcore::qt::ScriptEditorWidget);
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
  // What the editor shows now, painted through the backend.
  QImage Grab() { return client->grab().toImage().convertToFormat(QImage::Format_RGB32); }
  // The pixel rectangle of columns [from, to) of a line, in client pixels.
  QRect CellRect(int line, int from, int to) {
    const CPoint a = Edit().TextToClient(CPoint(from, line));
    const CPoint b = Edit().TextToClient(CPoint(to, line));
    return QRect(a.x, a.y, b.x - a.x, Edit().GetLineHeight());
  }
  // The popup widgets of the list and the tip.
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

// How many pixels of area differ from the colour.
inline int CountOther(const QImage& image, const QRect& area, QRgb color) {
  const QRect r = area.intersected(image.rect());
  return r.width() * r.height() - CountColor(image, area, color);
}

// Where the tests leave their screenshots (under the build folder).
inline QString ShotPath(const char* name) {
  fs::create_directories(CHARTCORE_QT_SHOT_DIR);
  return QString::fromUtf8(CHARTCORE_QT_SHOT_DIR) + QLatin1Char('/') + QString::fromUtf8(name);
}

// The client's image with the shown popups drawn where they stand on the
// screen (each popup is a window of its own, so a grab of the editor alone
// does not hold them).
inline QImage ComposeShot(QWidget* client, std::initializer_list<QWidget*> popups) {
  const QPoint origin = client->mapToGlobal(QPoint(0, 0));
  QRect bounds(QPoint(0, 0), client->size());
  for (QWidget* popup : popups)
    if (popup != nullptr && popup->isVisible()) bounds |= popup->geometry().translated(-origin);
  QImage canvas(bounds.size(), QImage::Format_RGB32);
  canvas.fill(Qt::lightGray);
  QPainter painter(&canvas);
  painter.drawImage(-bounds.topLeft(), client->grab().toImage());
  for (QWidget* popup : popups)
    if (popup != nullptr && popup->isVisible())
      painter.drawImage(popup->geometry().topLeft() - origin - bounds.topLeft(), popup->grab().toImage());
  painter.end();
  return canvas;
}

}  // namespace qt_test

#endif  // CHARTCORE_TESTS_QT_QT_TEST_UTIL_H_
