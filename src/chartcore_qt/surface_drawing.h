// The drawing helpers of the colour family that need a surface: gradient
// fills, faded and shadow images, and translucent windows.
//
// They sit beside DarkenColor and its kin but draw, so they live in the Qt
// backend: a gradient goes to a QPainter or to a window's device context, the
// two image helpers take and return QImages, and SetTransparentWnd sets a
// window's opacity. Colours are COLORREF as everywhere in the system.
//
//   DrawGradientRect(&painter, CRect(0, 0, 200, 20), RGB(255, 255, 255), RGB(0, 0, 128), TRUE);
//   QImage ghost = GetFadedBitmap(icon, RGB(255, 255, 255), 60);   // 60 % toward white
//   QImage shadow = GetShadowBitmap(icon, RGB(0, 0, 0), 3, 50);     // soft, half opaque
//   SetTransparentWnd(&tipWindow, 200);
#ifndef CHARTCORE_QT_SURFACE_DRAWING_H_
#define CHARTCORE_QT_SURFACE_DRAWING_H_

#include <QImage>

#include "chartcore/platform/types.h"
#include "chartcore/platform/window.h"
#include "chartcore_qt/export.h"

class QPainter;
class QWidget;

// ---------------------------------------------------------------------------
// Gradients
// ---------------------------------------------------------------------------

// GradientColorAt: the colour of band index of count bands running from
// crStart to crEnd: each channel start + (end - start) * index / (count - 1),
// rounded half away from zero, so the first band is exactly crStart and the
// last exactly crEnd. One band (or an index at or below 0) is crStart; an
// index at or past the last is crEnd.
CHARTCORE_QT_API COLORREF GradientColorAt(COLORREF crStart, COLORREF crEnd, int index, int count);

// DrawGradientRect: fills rect with one-pixel bands from crStart to crEnd:
// left to right when bHorizontal, else top to bottom (GradientColorAt for
// each band). An empty or inverted rectangle draws nothing; a null painter
// or context does nothing. The context form draws through the window's port,
// so it works on any window (on the Qt backend inside OnPaint).
CHARTCORE_QT_API void DrawGradientRect(QPainter* painter, const CRect& rect, COLORREF crStart, COLORREF crEnd,
                                       BOOL bHorizontal);
CHARTCORE_QT_API void DrawGradientRect(CDC* pDC, const CRect& rect, COLORREF crStart, COLORREF crEnd,
                                       BOOL bHorizontal);

// ---------------------------------------------------------------------------
// Images
// ---------------------------------------------------------------------------

// GetFadedBitmap: a copy of source with every pixel's colour moved nPercent
// of the way toward crFadeTo (each channel c becomes
// (c * (100 - p) + t * p + 50) / 100, truncated); alpha is kept. nPercent is
// clamped to 0 .. 100 (0: an unchanged copy, 100: crFadeTo in the source's
// shape). The result is ARGB32; a null source gives a null image.
CHARTCORE_QT_API QImage GetFadedBitmap(const QImage& source, COLORREF crFadeTo, int nPercent);

// GetShadowBitmap: the shadow that source casts: an ARGB32 image larger by
// nBlurRadius on every side, in crShadow, whose alpha is the source's alpha
// scaled by nOpacityPercent (0 .. 100) and spread by a box blur of that
// radius (horizontal then vertical, each the rounded mean over 2r + 1
// pixels). The radius is clamped to 0 .. 64; with 0 the shadow is the exact
// silhouette. Draw it under the source, offset by the shadow's depth. A null
// source gives a null image.
CHARTCORE_QT_API QImage GetShadowBitmap(const QImage& source, COLORREF crShadow, int nBlurRadius,
                                        int nOpacityPercent = 100);

// ---------------------------------------------------------------------------
// Windows
// ---------------------------------------------------------------------------

// SetTransparentWnd: makes a window translucent: alpha 255 opaque, 0
// invisible. A top-level or popup window gets the system's window opacity; a
// child window is blended with its parent. FALSE for a window without a Qt
// port (or a null widget).
CHARTCORE_QT_API BOOL SetTransparentWnd(CWnd* pWnd, BYTE alpha);
CHARTCORE_QT_API BOOL SetTransparentWnd(QWidget* widget, BYTE alpha);

#endif  // CHARTCORE_QT_SURFACE_DRAWING_H_
