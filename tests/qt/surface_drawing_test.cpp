// Gradients, faded and shadow images, translucent windows.
#include "chartcore_qt/surface_drawing.h"

#include <QGraphicsOpacityEffect>
#include <QPainter>

#include <gtest/gtest.h>

#include "chartcore_qt/qt_backend.h"

namespace {

TEST(SurfaceDrawing, GradientBandsRunExactlyFromStartToEnd) {
  // Ends exact, middle rounded half away from zero: 0 -> 255 over 3 bands
  // has 127.5 in the middle, which rounds to 128; 255 -> 0 gives 127.
  EXPECT_EQ(GradientColorAt(RGB(0, 0, 0), RGB(255, 255, 255), 1, 3), RGB(128, 128, 128));
  EXPECT_EQ(GradientColorAt(RGB(255, 0, 0), RGB(0, 0, 0), 1, 3), RGB(127, 0, 0));
  EXPECT_EQ(GradientColorAt(RGB(0, 0, 0), RGB(255, 255, 255), 2, 3), RGB(255, 255, 255));
  // One band is the start colour; indexes outside clamp; the high byte goes.
  EXPECT_EQ(GradientColorAt(0xFF112233u, RGB(255, 255, 255), 0, 1), 0x112233u);
  EXPECT_EQ(GradientColorAt(RGB(1, 2, 3), RGB(9, 9, 9), 7, 3), RGB(9, 9, 9));

  QImage image(10, 4, QImage::Format_RGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  DrawGradientRect(&painter, CRect(0, 0, 10, 4), RGB(0, 0, 255), RGB(255, 0, 0), TRUE);
  DrawGradientRect(&painter, CRect(5, 5, 2, 2), RGB(0, 0, 0), RGB(0, 0, 0), TRUE);  // inverted: nothing
  DrawGradientRect(static_cast<QPainter*>(nullptr), CRect(0, 0, 1, 1), 0, 0, TRUE);
  painter.end();
  EXPECT_EQ(image.pixel(0, 3) & 0xFFFFFF, qRgb(0, 0, 255) & 0xFFFFFF);
  EXPECT_EQ(image.pixel(9, 0) & 0xFFFFFF, qRgb(255, 0, 0) & 0xFFFFFF);
  // Column 3 of 10: 255 * 3 / 9 = 85 red, 255 - 85 = 170 blue.
  EXPECT_EQ(image.pixel(3, 1) & 0xFFFFFF, qRgb(85, 0, 170) & 0xFFFFFF);

  // Vertically through a window's context, inside its paint.
  class GradientWnd : public CWnd {
   protected:
    void OnPaint() override {
      CPaintDC dc(this);
      DrawGradientRect(&dc, CRect(0, 0, 20, 11), RGB(0, 0, 0), RGB(0, 200, 0), FALSE);
    }
  };
  GradientWnd wnd;
  ASSERT_TRUE(wnd.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 20, 20), nullptr, 1));
  const QImage shot = chartcore::qt::ClientWidget(&wnd)->grab().toImage();
  EXPECT_EQ(shot.pixel(5, 5) & 0xFFFFFF, qRgb(0, 100, 0) & 0xFFFFFF);  // 200 * 5 / 10
  EXPECT_EQ(shot.pixel(5, 10) & 0xFFFFFF, qRgb(0, 200, 0) & 0xFFFFFF);
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
  EXPECT_EQ(GetFadedBitmap(source, RGB(1, 2, 3), 0).pixel(0, 0), source.pixel(0, 0));
  EXPECT_EQ(GetFadedBitmap(source, RGB(1, 2, 3), 250).pixel(0, 0), qRgba(1, 2, 3, 255));  // clamped to 100
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
  // A transparent source casts no shadow; huge radii are clamped.
  QImage clear(4, 4, QImage::Format_ARGB32);
  clear.fill(Qt::transparent);
  const QImage none = GetShadowBitmap(clear, RGB(0, 0, 0), 1000);
  EXPECT_EQ(none.size(), QSize(4 + 128, 4 + 128));
  EXPECT_EQ(qAlpha(none.pixel(66, 66)), 0);
  EXPECT_TRUE(GetShadowBitmap(QImage(), 0, 2).isNull());
}

TEST(SurfaceDrawing, TransparentWindows) {
  CWnd top;
  ASSERT_TRUE(top.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 40, 40), nullptr, 1));
  EXPECT_TRUE(SetTransparentWnd(&top, 128));
  EXPECT_NEAR(chartcore::qt::WindowWidget(&top)->windowOpacity(), 128 / 255.0, 0.01);
  CWnd child;
  ASSERT_TRUE(child.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 10, 10), &top, 2));
  EXPECT_TRUE(SetTransparentWnd(&child, 51));
  auto* effect = qobject_cast<QGraphicsOpacityEffect*>(chartcore::qt::WindowWidget(&child)->graphicsEffect());
  ASSERT_NE(effect, nullptr);
  EXPECT_NEAR(effect->opacity(), 0.2, 0.01);
  EXPECT_TRUE(SetTransparentWnd(&child, 255));
  EXPECT_EQ(chartcore::qt::WindowWidget(&child)->graphicsEffect(), nullptr);
  // Not a window of the Qt backend.
  CWnd none;
  EXPECT_FALSE(SetTransparentWnd(&none, 100));
  EXPECT_FALSE(SetTransparentWnd(static_cast<QWidget*>(nullptr), 100));
}

}  // namespace
