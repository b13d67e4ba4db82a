// The Qt window port under plain framework windows: geometry, painting,
// timers, destruction from a handler, desktop answers.
#include <QApplication>
#include <QElapsedTimer>
#include <QPalette>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include <cmath>
#include <vector>

#include "chartcore/platform/system.h"
#include "chartcore_qt/conversions.h"
#include "chartcore_qt/qt_backend.h"
#include "qt_test_util.h"

using qt_test::CountColor;

namespace {

// A window that paints a fixed picture and records its timers and messages.
class ProbeWnd : public CWnd {
 public:
  std::vector<UINT_PTR> timers;
  int destroyOnTimer = 0;  // destroy itself at this many ticks
  int sizes = 0;
  CSize lastSize;

 protected:
  void OnPaint() override {
    CPaintDC dc(this);
    dc.FillSolidRect(10, 10, 20, 10, RGB(0, 0, 255));
    CBrush red(RGB(255, 0, 0));
    CRect frame(40, 10, 60, 30);
    dc.FrameRect(&frame, &red);
    CPen pen(PS_SOLID, 1, RGB(0, 128, 0));
    dc.SelectObject(&pen);
    dc.MoveTo(10, 40);
    dc.LineTo(30, 40);  // the end point (30, 40) stays unpainted
  }
  void OnTimer(UINT_PTR id) override {
    timers.push_back(id);
    if (destroyOnTimer > 0 && static_cast<int>(timers.size()) == destroyOnTimer) DestroyWindow();
  }
  void OnSize(UINT, int cx, int cy) override {
    ++sizes;
    lastSize = CSize(cx, cy);
  }
};

QImage GrabClient(CWnd& wnd) {
  return chartcore::qt::ClientWidget(&wnd)->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

TEST(QtWindowPort, StylesMapToWidgetsAndCoordinates) {
  ProbeWnd top;
  ASSERT_TRUE(top.Create(nullptr, L"probe", WS_VISIBLE, CRect(100, 80, 400, 280), nullptr, 1));
  QWidget* frame = chartcore::qt::WindowWidget(&top);
  ASSERT_NE(frame, nullptr);
  EXPECT_TRUE(frame->isWindow());
  EXPECT_EQ(frame->windowTitle(), QString("probe"));
  CRect client;
  top.GetClientRect(&client);
  EXPECT_EQ(client, CRect(0, 0, 300, 200));
  EXPECT_EQ(top.lastSize, CSize(300, 200));

  // A child sits in the parent's client coordinates.
  ProbeWnd child;
  ASSERT_TRUE(child.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 20, 110, 70), &top, 2));
  EXPECT_EQ(chartcore::qt::WindowWidget(&child)->parentWidget(), chartcore::qt::ClientWidget(&top));
  CPoint origin(0, 0);
  child.ClientToScreen(&origin);
  CPoint topOrigin(0, 0);
  top.ClientToScreen(&topOrigin);
  EXPECT_EQ(origin, CPoint(topOrigin.x + 10, topOrigin.y + 20));
  child.ScreenToClient(&origin);
  EXPECT_EQ(origin, CPoint(0, 0));

  // Scroll bars stand beside the client area, outside its rectangle.
  ProbeWnd scrolled;
  ASSERT_TRUE(scrolled.Create(nullptr, L"", WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL, CRect(0, 0, 200, 100),
                              &top, 3));
  scrolled.GetClientRect(&client);
  const QList<QScrollBar*> bars = chartcore::qt::WindowWidget(&scrolled)->findChildren<QScrollBar*>();
  ASSERT_EQ(bars.size(), 2);
  const int barWidth = bars[0]->orientation() == Qt::Vertical ? bars[0]->sizeHint().width() : bars[1]->sizeHint().width();
  EXPECT_EQ(client.Width(), 200 - barWidth);
  EXPECT_LT(client.Height(), 100);

  // A popup is its own window, never active, placed in screen coordinates.
  ProbeWnd popup;
  ASSERT_TRUE(popup.Create(nullptr, L"", WS_POPUP, CRect(300, 300, 350, 320), &top, 4));
  QWidget* popupFrame = chartcore::qt::WindowWidget(&popup);
  EXPECT_TRUE(popupFrame->isWindow());
  EXPECT_FALSE(popup.IsWindowVisible());
  popup.ShowWindow(SW_SHOW);
  EXPECT_EQ(popupFrame->focusPolicy(), Qt::NoFocus);
  CRect r;
  popup.GetWindowRect(&r);
  EXPECT_EQ(r, CRect(300, 300, 350, 320));
  popup.MoveWindow(310, 305, 60, 30);
  EXPECT_EQ(popupFrame->geometry(), QRect(310, 305, 60, 30));

  // Destroying the parent takes the children's widgets with it.
  top.DestroyWindow();
  EXPECT_FALSE(child.IsWindow());
  EXPECT_EQ(chartcore::qt::WindowWidget(&child), nullptr);
}

TEST(QtWindowPort, PaintsThroughQPainterWithWindowsPixelRules) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 100, 60), nullptr, 1));
  const QImage image = GrabClient(wnd);
  const QRgb blue = qRgb(0, 0, 255), red = qRgb(255, 0, 0), green = qRgb(0, 128, 0);
  // FillSolidRect(10, 10, 20, 10): exactly 200 pixels, right and bottom
  // edges exclusive.
  EXPECT_EQ(CountColor(image, image.rect(), blue), 200);
  EXPECT_EQ(image.pixel(29, 19) & 0xFFFFFF, blue & 0xFFFFFF);
  EXPECT_NE(image.pixel(30, 19) & 0xFFFFFF, blue & 0xFFFFFF);
  // FrameRect of (40, 10)-(60, 30): a one-pixel ring inside, 4 * 20 - 4.
  EXPECT_EQ(CountColor(image, image.rect(), red), 76);
  EXPECT_NE(image.pixel(50, 20) & 0xFFFFFF, red & 0xFFFFFF);
  // LineTo(30, 40) from (10, 40): 20 pixels, the end point left out.
  EXPECT_EQ(CountColor(image, image.rect(), green), 20);
  EXPECT_NE(image.pixel(30, 40) & 0xFFFFFF, green & 0xFFFFFF);
  // The background is the window colour.
  const QRgb base = QApplication::palette().color(QPalette::Base).rgb();
  EXPECT_EQ(image.pixel(90, 50) & 0xFFFFFF, base & 0xFFFFFF);
}

TEST(QtWindowPort, TimersAreRealAndAWindowMayDestroyItselfFromOne) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 50, 50), nullptr, 1));
  EXPECT_EQ(wnd.SetTimer(7, 20), 7u);
  // A window timer repeats until killed.
  QTRY_VERIFY_WITH_TIMEOUT(wnd.timers.size() >= 2, 5000);
  EXPECT_TRUE(wnd.KillTimer(7));
  EXPECT_FALSE(wnd.KillTimer(7));  // no longer running
  EXPECT_FALSE(wnd.KillTimer(8));  // never set
  const size_t fired = wnd.timers.size();
  QTest::qWait(60);
  EXPECT_EQ(wnd.timers.size(), fired);

  // Destroyed from inside its own timer: the widgets go once the handler
  // has returned, and nothing fires any more.
  wnd.timers.clear();
  wnd.destroyOnTimer = 1;
  QPointer<QWidget> frame = chartcore::qt::WindowWidget(&wnd);
  wnd.SetTimer(9, 10);
  QTRY_VERIFY_WITH_TIMEOUT(!wnd.IsWindow(), 5000);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(frame.isNull());
  QTest::qWait(40);
  EXPECT_EQ(wnd.timers.size(), 1u);
}

TEST(QtWindowPort, DesktopAnswersComeFromQtAndClosingDestroys) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 50, 50), nullptr, 1));
  wnd.SetFocus();
  // Pixels per inch of the screen the focused window is on.
  QScreen* screen = chartcore::qt::ClientWidget(&wnd)->screen();
  ASSERT_NE(screen, nullptr);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), static_cast<int>(std::lround(screen->logicalDotsPerInchY())));
  // System colours from the palette.
  EXPECT_EQ(GetSysColor(COLOR_WINDOW), chartcore::qt::ToColorRef(QApplication::palette().color(QPalette::Base)));
  // Key state follows the events that reached a window.
  QWidget* client = chartcore::qt::ClientWidget(&wnd);
  QTest::keyPress(client, Qt::Key_Shift, Qt::ShiftModifier);
  EXPECT_LT(GetKeyState(VK_SHIFT), 0);
  QTest::keyPress(client, Qt::Key_Q, Qt::ShiftModifier);
  EXPECT_LT(GetKeyState('Q'), 0);
  QTest::keyRelease(client, Qt::Key_Q, Qt::ShiftModifier);
  QTest::keyRelease(client, Qt::Key_Shift, Qt::NoModifier);
  EXPECT_GE(GetKeyState(VK_SHIFT), 0);
  EXPECT_GE(GetKeyState('Q'), 0);
  // The clock moves forward.
  const DWORD t0 = GetTickCount();
  QTest::qWait(20);
  EXPECT_GE(GetTickCount() - t0, 15u);
  // Closing the top-level window (the user's close box: WM_CLOSE) destroys it.
  QPointer<QWidget> frame = chartcore::qt::WindowWidget(&wnd);
  frame->close();
  EXPECT_FALSE(wnd.IsWindow());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(frame.isNull());
}

}  // namespace
