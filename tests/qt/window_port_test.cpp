// The Qt window port under plain framework windows: geometry, painting,
// timers, destruction from a handler, desktop answers; the surface drawing
// helpers (gradients, faded and shadow images, translucent windows).
#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QPalette>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>

#include <cmath>
#include <vector>

#include "chartcore/platform/system.h"
#include "chartcore_qt/surface_drawing.h"
#include "qt_test_util.h"

using chartcore::qt::ClientWidget;
using chartcore::qt::WindowWidget;
using qt_test::CountColor;

namespace {

// A pixel's colour without its alpha, as 0xRRGGBB.
QRgb Rgb(const QImage& image, int x, int y) { return image.pixel(x, y) & 0xFFFFFF; }

// A window that paints a fixed picture and records its timers and sizes.
class ProbeWnd : public CWnd {
 public:
  std::vector<UINT_PTR> timers;
  int destroyOnTimer = 0;  // destroy itself at this many ticks
  bool destroyOnScroll = false;
  CSize lastSize;
  // Watched across a destruction from a handler: whether it still stood
  // when DestroyWindow returned inside the handler.
  QPointer<QWidget> watched;
  bool watchedSurvived = false;

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
    dc.LineTo(30, 40);
  }
  void OnTimer(UINT_PTR id) override {
    timers.push_back(id);
    if (destroyOnTimer > 0 && static_cast<int>(timers.size()) == destroyOnTimer) DestroyAndWatch();
  }
  void OnVScroll(UINT, UINT) override {
    if (destroyOnScroll) DestroyAndWatch();
  }
  void DestroyAndWatch() {
    DestroyWindow();
    watchedSurvived = !watched.isNull();
  }
  void OnSize(UINT, int cx, int cy) override { lastSize = CSize(cx, cy); }
};

TEST(QtWindowPort, StylesMapToWidgetsAndCoordinates) {
  ProbeWnd top, child, scrolled, popup;
  ASSERT_TRUE(top.Create(nullptr, L"probe", WS_VISIBLE, CRect(100, 80, 400, 280), nullptr, 1));
  EXPECT_TRUE(WindowWidget(&top)->isWindow());
  EXPECT_EQ(WindowWidget(&top)->windowTitle(), QString("probe"));
  CRect client;
  top.GetClientRect(&client);
  EXPECT_EQ(client, CRect(0, 0, 300, 200));
  EXPECT_EQ(top.lastSize, CSize(300, 200));

  // A child sits in the parent's client coordinates.
  ASSERT_TRUE(child.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(10, 20, 110, 70), &top, 2));
  EXPECT_EQ(WindowWidget(&child)->parentWidget(), ClientWidget(&top));
  CPoint origin(0, 0), topOrigin(0, 0);
  child.ClientToScreen(&origin);
  top.ClientToScreen(&topOrigin);
  EXPECT_EQ(origin, CPoint(topOrigin.x + 10, topOrigin.y + 20));
  child.ScreenToClient(&origin);
  EXPECT_EQ(origin, CPoint(0, 0));

  // Scroll bars stand beside the client area, outside its rectangle.
  ASSERT_TRUE(scrolled.Create(nullptr, L"", WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL, CRect(0, 0, 200, 100),
                              &top, 3));
  scrolled.GetClientRect(&client);
  const QList<QScrollBar*> bars = WindowWidget(&scrolled)->findChildren<QScrollBar*>();
  ASSERT_EQ(bars.size(), 2);
  const QScrollBar* vbar = bars[0]->orientation() == Qt::Vertical ? bars[0] : bars[1];
  EXPECT_EQ(client.Width(), 200 - vbar->sizeHint().width());
  EXPECT_LT(client.Height(), 100);

  // A popup is its own window, hidden until shown, never focused, placed in
  // screen coordinates.
  ASSERT_TRUE(popup.Create(nullptr, L"", WS_POPUP, CRect(300, 300, 350, 320), &top, 4));
  QWidget* popupFrame = WindowWidget(&popup);
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
  EXPECT_EQ(WindowWidget(&child), nullptr);
}

TEST(QtWindowPort, PaintsThroughQPainterWithWindowsPixelRules) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 100, 60), nullptr, 1));
  const QImage image = ClientWidget(&wnd)->grab().toImage().convertToFormat(QImage::Format_RGB32);
  // FillSolidRect(10, 10, 20, 10): 200 pixels, right and bottom exclusive.
  EXPECT_EQ(CountColor(image, image.rect(), 0x0000FF), 200);
  EXPECT_EQ(Rgb(image, 29, 19), 0x0000FFu);
  EXPECT_NE(Rgb(image, 30, 19), 0x0000FFu);
  // FrameRect of (40, 10)-(60, 30): a one-pixel ring inside, 4 * 20 - 4.
  EXPECT_EQ(CountColor(image, image.rect(), 0xFF0000), 76);
  EXPECT_NE(Rgb(image, 50, 20), 0xFF0000u);
  // LineTo(30, 40) from (10, 40): 20 pixels, the end point left out.
  EXPECT_EQ(CountColor(image, image.rect(), 0x008000), 20);
  EXPECT_NE(Rgb(image, 30, 40), 0x008000u);
  EXPECT_EQ(Rgb(image, 90, 50), QApplication::palette().color(QPalette::Base).rgb() & 0xFFFFFF);  // the window colour
}

TEST(QtWindowPort, TimersRepeatUntilKilledAndAWindowMayDestroyItselfFromOneOrItsScrollBar) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 50, 50), nullptr, 1));
  EXPECT_EQ(wnd.SetTimer(7, 20), 7u);
  QTRY_VERIFY_WITH_TIMEOUT(wnd.timers.size() >= 2, 5000);
  EXPECT_TRUE(wnd.KillTimer(7));
  EXPECT_FALSE(wnd.KillTimer(7));  // no longer running
  EXPECT_FALSE(wnd.KillTimer(8));  // never set
  for (const QTimer* timer : ClientWidget(&wnd)->findChildren<QTimer*>()) EXPECT_FALSE(timer->isActive());

  // Destroyed from inside its own timer: the widgets (the emitting timer
  // among them) go once the handler has returned, and no later tick reaches
  // the window.
  wnd.timers.clear();
  wnd.destroyOnTimer = 1;
  QPointer<QWidget> frame = WindowWidget(&wnd);
  wnd.watched = frame;
  wnd.SetTimer(9, 10);
  QTRY_VERIFY_WITH_TIMEOUT(!wnd.IsWindow(), 5000);
  EXPECT_TRUE(wnd.watchedSurvived);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(frame.isNull());
  EXPECT_EQ(wnd.timers, std::vector<UINT_PTR>{9});

  // The same from WM_VSCROLL, sent while the bar is emitting its new value.
  ProbeWnd scrolled;
  ASSERT_TRUE(scrolled.Create(nullptr, L"", WS_VISIBLE | WS_VSCROLL, CRect(0, 0, 80, 80), nullptr, 2));
  QScrollBar* bar = WindowWidget(&scrolled)->findChild<QScrollBar*>();
  ASSERT_NE(bar, nullptr);
  scrolled.destroyOnScroll = true;
  scrolled.watched = WindowWidget(&scrolled);
  bar->setValue(bar->value() + 1);
  EXPECT_FALSE(scrolled.IsWindow());
  EXPECT_TRUE(scrolled.watchedSurvived);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(scrolled.watched.isNull());
}

TEST(QtWindowPort, DesktopAnswersComeFromQtAndClosingDestroys) {
  ProbeWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 50, 50), nullptr, 1));
  wnd.SetFocus();
  QWidget* client = ClientWidget(&wnd);
  ASSERT_NE(client->screen(), nullptr);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), std::lround(client->screen()->logicalDotsPerInchY()));
  EXPECT_EQ(GetSysColor(COLOR_WINDOW), chartcore::qt::ToColorRef(QApplication::palette().color(QPalette::Base)));
  // Key state follows the events that reached a window.
  QTest::keyPress(client, Qt::Key_Shift, Qt::ShiftModifier);
  EXPECT_LT(GetKeyState(VK_SHIFT), 0);
  QTest::keyPress(client, Qt::Key_Q, Qt::ShiftModifier);
  EXPECT_LT(GetKeyState('Q'), 0);
  QTest::keyRelease(client, Qt::Key_Q, Qt::ShiftModifier);
  QTest::keyRelease(client, Qt::Key_Shift, Qt::NoModifier);
  EXPECT_GE(GetKeyState(VK_SHIFT), 0);
  EXPECT_GE(GetKeyState('Q'), 0);
  // The right mouse button too, as virtual key 2.
  QTest::mousePress(client, Qt::RightButton, Qt::NoModifier, QPoint(5, 5));
  EXPECT_LT(GetKeyState(2), 0);
  QTest::mouseRelease(client, Qt::RightButton, Qt::NoModifier, QPoint(5, 5));
  EXPECT_GE(GetKeyState(2), 0);
  // Closing the top-level window (the user's close box: WM_CLOSE) destroys it.
  QPointer<QWidget> frame = WindowWidget(&wnd);
  frame->close();
  EXPECT_FALSE(wnd.IsWindow());
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(frame.isNull());
}

TEST(SurfaceDrawing, GradientBandsRunExactlyFromStartToEnd) {
  // Ends exact, the middle rounded half away from zero: 127.5 is 128 going
  // up, 127 going down. One band is the start; indexes outside clamp; the
  // high byte goes.
  EXPECT_EQ(GradientColorAt(RGB(0, 0, 0), RGB(255, 255, 255), 1, 3), RGB(128, 128, 128));
  EXPECT_EQ(GradientColorAt(RGB(255, 0, 0), RGB(0, 0, 0), 1, 3), RGB(127, 0, 0));
  EXPECT_EQ(GradientColorAt(RGB(0, 0, 0), RGB(255, 255, 255), 2, 3), RGB(255, 255, 255));
  EXPECT_EQ(GradientColorAt(0xFF112233u, RGB(255, 255, 255), 0, 1), 0x112233u);
  EXPECT_EQ(GradientColorAt(RGB(1, 2, 3), RGB(9, 9, 9), 7, 3), RGB(9, 9, 9));
  QImage image(10, 4, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  DrawGradientRect(&painter, CRect(0, 0, 10, 4), RGB(0, 0, 255), RGB(255, 0, 0), TRUE);
  DrawGradientRect(&painter, CRect(5, 5, 2, 2), RGB(0, 0, 0), RGB(0, 0, 0), TRUE);  // inverted: nothing
  DrawGradientRect(static_cast<QPainter*>(nullptr), CRect(0, 0, 1, 1), 0, 0, TRUE);
  painter.end();
  EXPECT_EQ(Rgb(image, 0, 3), 0x0000FFu);
  EXPECT_EQ(Rgb(image, 9, 0), 0xFF0000u);
  EXPECT_EQ(Rgb(image, 3, 1), 0x5500AAu);  // column 3 of 10: 255 * 3 / 9 = 85 red

  // Vertically through a window's context, inside its paint.
  class GradientWnd : public CWnd {
    void OnPaint() override {
      CPaintDC dc(this);
      DrawGradientRect(&dc, CRect(0, 0, 20, 11), RGB(0, 0, 0), RGB(0, 200, 0), FALSE);
    }
  };
  GradientWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 20, 20), nullptr, 1));
  const QImage shot = chartcore::qt::ClientWidget(&wnd)->grab().toImage();
  EXPECT_EQ(Rgb(shot, 5, 5), 0x006400u);  // 200 * 5 / 10 = 100 green
  EXPECT_EQ(Rgb(shot, 5, 10), 0x00C800u);
}

TEST(SurfaceDrawing, FadedImageMovesColoursAndKeepsAlpha) {
  QImage source(2, 1, QImage::Format_ARGB32);
  source.setPixel(0, 0, qRgba(0, 100, 255, 255));
  source.setPixel(1, 0, qRgba(200, 0, 0, 40));
  // Half way to white: (0 * 50 + 255 * 50 + 50) / 100 = 128, (100 * 50 +
  // 255 * 50 + 50) / 100 = 178, 255 stays.
  const QImage half = GetFadedBitmap(source, RGB(255, 255, 255), 50);
  EXPECT_EQ(half.pixel(0, 0), qRgba(128, 178, 255, 255));
  EXPECT_EQ(qAlpha(half.pixel(1, 0)), 40);
  // The percentage clamps to 0 .. 100.
  EXPECT_EQ(GetFadedBitmap(source, RGB(1, 2, 3), 0).pixel(0, 0), source.pixel(0, 0));
  EXPECT_EQ(GetFadedBitmap(source, RGB(1, 2, 3), 250).pixel(0, 0), qRgba(1, 2, 3, 255));
  EXPECT_EQ(GetFadedBitmap(source, RGB(1, 2, 3), -5).pixel(0, 0), source.pixel(0, 0));
  EXPECT_TRUE(GetFadedBitmap(QImage(), 0, 50).isNull());
}

TEST(SurfaceDrawing, ShadowIsTheBlurredSilhouette) {
  QImage dot(1, 1, QImage::Format_ARGB32);
  dot.setPixel(0, 0, qRgba(10, 20, 30, 255));
  // Radius 0: the exact silhouette, opacity applied: (255 * 50 + 50) / 100.
  const QImage flat = GetShadowBitmap(dot, RGB(0, 0, 64), 0, 50);
  ASSERT_EQ(flat.size(), QSize(1, 1));
  EXPECT_EQ(flat.pixel(0, 0), qRgba(0, 0, 64, 128));
  // Radius 1: 3 x 3; the rows spread 255 to 85 each, the columns 85 to
  // round(85 / 3) = 28 everywhere.
  const QImage soft = GetShadowBitmap(dot, RGB(0, 0, 0), 1);
  ASSERT_EQ(soft.size(), QSize(3, 3));
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 3; ++x) EXPECT_EQ(qAlpha(soft.pixel(x, y)), 28) << x << "," << y;
  // A transparent source casts no shadow; huge radii are clamped to 64.
  QImage clear(4, 4, QImage::Format_ARGB32);
  clear.fill(Qt::transparent);
  const QImage none = GetShadowBitmap(clear, RGB(0, 0, 0), 1000);
  EXPECT_EQ(none.size(), QSize(4 + 128, 4 + 128));
  EXPECT_EQ(qAlpha(none.pixel(66, 66)), 0);
  EXPECT_TRUE(GetShadowBitmap(QImage(), 0, 2).isNull());
}

TEST(SurfaceDrawing, TransparentWindows) {
  // A top-level window gets the window opacity, a child an effect that
  // goes again when it is made opaque.
  CWnd top, child, none;
  ASSERT_TRUE(top.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 40, 40), nullptr, 1));
  EXPECT_TRUE(SetTransparentWnd(&top, 128));
  EXPECT_NEAR(chartcore::qt::WindowWidget(&top)->windowOpacity(), 128 / 255.0, 0.01);
  ASSERT_TRUE(child.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 10, 10), &top, 2));
  EXPECT_TRUE(SetTransparentWnd(&child, 51));
  auto* effect = qobject_cast<QGraphicsOpacityEffect*>(chartcore::qt::WindowWidget(&child)->graphicsEffect());
  ASSERT_NE(effect, nullptr);
  EXPECT_NEAR(effect->opacity(), 0.2, 0.01);
  EXPECT_TRUE(SetTransparentWnd(&child, 255));
  EXPECT_EQ(chartcore::qt::WindowWidget(&child)->graphicsEffect(), nullptr);
  EXPECT_FALSE(SetTransparentWnd(&none, 100));  // not a window of the Qt backend
  EXPECT_FALSE(SetTransparentWnd(static_cast<QWidget*>(nullptr), 100));
}

}  // namespace
