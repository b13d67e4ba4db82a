#include "chartcore_qt/surface_drawing.h"

#include <QGraphicsOpacityEffect>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <vector>

#include "chartcore_qt/conversions.h"
#include "chartcore_qt/qt_backend.h"

namespace {

// start + (end - start) * index / (count - 1), rounded half away from zero.
int Interpolate(int start, int end, int index, int count) {
  const long long numerator = static_cast<long long>(end - start) * index;
  const long long denominator = count - 1;
  const long long twice = 2 * numerator + (numerator >= 0 ? denominator : -denominator);
  return start + static_cast<int>(twice / (2 * denominator));
}

// Calls band(rect, colour) for each one-pixel band of the gradient.
template <typename Band>
void ForEachBand(const CRect& rect, COLORREF crStart, COLORREF crEnd, BOOL bHorizontal, Band band) {
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  if (width <= 0 || height <= 0) return;
  const int count = bHorizontal ? width : height;
  for (int i = 0; i < count; ++i) {
    const COLORREF color = GradientColorAt(crStart, crEnd, i, count);
    const CRect r = bHorizontal ? CRect(rect.left + i, rect.top, rect.left + i + 1, rect.bottom)
                                : CRect(rect.left, rect.top + i, rect.right, rect.top + i + 1);
    band(r, color);
  }
}

// One box-blur pass of radius r over a w x h alpha plane, along rows
// (step 1) or columns (step w).
void BoxBlur(std::vector<int>& plane, int w, int h, int r, bool rows) {
  if (r <= 0) return;
  const int lines = rows ? h : w;
  const int length = rows ? w : h;
  const int window = 2 * r + 1;
  std::vector<int> line(static_cast<size_t>(length));
  for (int l = 0; l < lines; ++l) {
    auto at = [&](int i) -> int& {
      return rows ? plane[static_cast<size_t>(l) * w + i] : plane[static_cast<size_t>(i) * w + l];
    };
    for (int i = 0; i < length; ++i) line[static_cast<size_t>(i)] = at(i);
    long long sum = 0;
    for (int i = 0; i <= r && i < length; ++i) sum += line[static_cast<size_t>(i)];
    for (int i = 0; i < length; ++i) {
      at(i) = static_cast<int>((2 * sum + window) / (2 * window));
      const int enter = i + r + 1;
      const int leave = i - r;
      if (enter < length) sum += line[static_cast<size_t>(enter)];
      if (leave >= 0) sum -= line[static_cast<size_t>(leave)];
    }
  }
}

}  // namespace

COLORREF GradientColorAt(COLORREF crStart, COLORREF crEnd, int index, int count) {
  if (count <= 1 || index <= 0) return RGB(GetRValue(crStart), GetGValue(crStart), GetBValue(crStart));
  if (index >= count - 1) return RGB(GetRValue(crEnd), GetGValue(crEnd), GetBValue(crEnd));
  return RGB(Interpolate(GetRValue(crStart), GetRValue(crEnd), index, count),
             Interpolate(GetGValue(crStart), GetGValue(crEnd), index, count),
             Interpolate(GetBValue(crStart), GetBValue(crEnd), index, count));
}

void DrawGradientRect(QPainter* painter, const CRect& rect, COLORREF crStart, COLORREF crEnd, BOOL bHorizontal) {
  if (painter == nullptr) return;
  ForEachBand(rect, crStart, crEnd, bHorizontal, [&](const CRect& band, COLORREF color) {
    painter->fillRect(chartcore::qt::ToQRect(band), chartcore::qt::ToQColor(color));
  });
}

void DrawGradientRect(CDC* pDC, const CRect& rect, COLORREF crStart, COLORREF crEnd, BOOL bHorizontal) {
  if (pDC == nullptr) return;
  ForEachBand(rect, crStart, crEnd, bHorizontal,
              [&](const CRect& band, COLORREF color) { pDC->FillSolidRect(&band, color); });
}

QImage GetFadedBitmap(const QImage& source, COLORREF crFadeTo, int nPercent) {
  if (source.isNull()) return QImage();
  const int p = std::max(0, std::min(100, nPercent));
  QImage image = source.convertToFormat(QImage::Format_ARGB32);
  const int tr = GetRValue(crFadeTo), tg = GetGValue(crFadeTo), tb = GetBValue(crFadeTo);
  auto fade = [p](int c, int t) { return (c * (100 - p) + t * p + 50) / 100; };
  for (int y = 0; y < image.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = 0; x < image.width(); ++x) {
      const QRgb px = line[x];
      line[x] = qRgba(fade(qRed(px), tr), fade(qGreen(px), tg), fade(qBlue(px), tb), qAlpha(px));
    }
  }
  return image;
}

QImage GetShadowBitmap(const QImage& source, COLORREF crShadow, int nBlurRadius, int nOpacityPercent) {
  if (source.isNull()) return QImage();
  const int r = std::max(0, std::min(64, nBlurRadius));
  const int opacity = std::max(0, std::min(100, nOpacityPercent));
  const QImage alpha = source.convertToFormat(QImage::Format_ARGB32);
  const int w = alpha.width() + 2 * r;
  const int h = alpha.height() + 2 * r;
  std::vector<int> plane(static_cast<size_t>(w) * static_cast<size_t>(h), 0);
  for (int y = 0; y < alpha.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(alpha.constScanLine(y));
    for (int x = 0; x < alpha.width(); ++x)
      plane[static_cast<size_t>(y + r) * w + (x + r)] = (qAlpha(line[x]) * opacity + 50) / 100;
  }
  BoxBlur(plane, w, h, r, true);
  BoxBlur(plane, w, h, r, false);
  QImage shadow(w, h, QImage::Format_ARGB32);
  const int sr = GetRValue(crShadow), sg = GetGValue(crShadow), sb = GetBValue(crShadow);
  for (int y = 0; y < h; ++y) {
    auto* line = reinterpret_cast<QRgb*>(shadow.scanLine(y));
    for (int x = 0; x < w; ++x) line[x] = qRgba(sr, sg, sb, plane[static_cast<size_t>(y) * w + x]);
  }
  return shadow;
}

BOOL SetTransparentWnd(QWidget* widget, BYTE alpha) {
  if (widget == nullptr) return FALSE;
  if (widget->isWindow()) {
    widget->setWindowOpacity(alpha / 255.0);
    return TRUE;
  }
  if (alpha == 255) {
    widget->setGraphicsEffect(nullptr);
    return TRUE;
  }
  auto* effect = qobject_cast<QGraphicsOpacityEffect*>(widget->graphicsEffect());
  if (effect == nullptr) {
    effect = new QGraphicsOpacityEffect(widget);
    widget->setGraphicsEffect(effect);
  }
  effect->setOpacity(alpha / 255.0);
  return TRUE;
}

BOOL SetTransparentWnd(CWnd* pWnd, BYTE alpha) { return SetTransparentWnd(chartcore::qt::WindowWidget(pWnd), alpha); }
