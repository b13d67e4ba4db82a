// Chart-object property records: the common base and the drawing objects.
//
// When the user places logic or a drawing on a chart, the chart keeps a
// property record for that object: its own settings and its bindings to data
// series. CProperty_BASE is what every such record shares (name, save flag,
// event elements); this header also holds the records of objects that show
// no definition: analysis tools, drawings, price and volume series. Property
// records are plain copyable values; the host builds, edits and stores them.
//
//   CProperty_VOLUME vol;
//   CProperty_DATA_Binding b;  b.strSource = L"005930";  b.nDataType = 5;
//   vol.m_arrBinding.Add(b);
//   vol.GetName();                          // "거래량"
#ifndef CHARTCORE_PROPERTIES_CHART_PROPERTY_H_
#define CHARTCORE_PROPERTIES_CHART_PROPERTY_H_

#include "chartcore/platform/arrays.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/export.h"
#include "chartcore/platform/types.h"

// Property records copy and move member by member (deep copies of every
// string and array); their virtual destructors would otherwise suppress the
// implicit moves.
#define CHARTCORE_PROPERTY_COPYABLE(Class)     \
  Class(const Class&) = default;               \
  Class(Class&&) = default;                    \
  Class& operator=(const Class&) = default;    \
  Class& operator=(Class&&) = default;

// ---------------------------------------------------------------------------
// Shared element classes
// ---------------------------------------------------------------------------

// CProperty_EVENT_ELEMENT: one event of a chart object: a condition the host
// watches on the object and what it does when the condition is met. The
// codes in the integers are the host's.
//   nEventType     what is watched (crossing, touching, a signal, ...)
//   nCondition     which way it must happen (above, below, up, down, ...)
//   nElement       the output element watched, or -1 for the object itself
//   nEnable        1 while the event is active
//   strName        the event's label
//   nSound, strSoundFile    1: play the sound file when it fires
//   nMessage, strMessage    1: show the message when it fires
//   nRepeat        how many times it may fire (0: no limit)
//   dValue1 … dValue3       the thresholds of the condition
class CHARTCORE_API CProperty_EVENT_ELEMENT {
 public:
  int nEventType = 0;
  int nCondition = 0;
  int nElement = 0;
  int nEnable = 0;
  CString strName;
  int nSound = 0;
  CString strSoundFile;
  int nMessage = 0;
  CString strMessage;
  int nRepeat = 0;
  double dValue1 = 0.0;
  double dValue2 = 0.0;
  double dValue3 = 0.0;
};

// CProperty_DATA_Binding: a binding of a chart object to a data series.
//   nKind        0: a column of a chart item; 1: an output of another object
//   nDataType    the packet column (0 date, 1 open … 4 close, 5 volume, ...)
//   strSource    the item code, or the name of the other object
//   strElement   the output element's name when nKind is 1
//   nElement     the output element's index when nKind is 1, else -1
class CHARTCORE_API CProperty_DATA_Binding {
 public:
  int nKind = 0;
  int nDataType = 0;
  CString strSource;
  CString strElement;
  int nElement = 0;
};

// ---------------------------------------------------------------------------
// CProperty_BASE
// ---------------------------------------------------------------------------

// CProperty_BASE: what every chart-object property record holds: the
// object's name, whether it is saved with the chart, and its events.
class CHARTCORE_API CProperty_BASE {
 public:
  CProperty_BASE();
  virtual ~CProperty_BASE();
  CHARTCORE_PROPERTY_COPYABLE(CProperty_BASE)

  // SetSaveFlag: marks whether the object is saved with the chart (nonzero:
  // saved). New records are saved.
  void SetSaveFlag(int nFlag) { m_nSaveFlag = nFlag; }
  // GetSaveFlag: the flag SetSaveFlag stored.
  int GetSaveFlag() const { return m_nSaveFlag; }

  // GetName: the name the chart shows for the object (m_strName; kinds with
  // a fixed name return that instead).
  virtual CString GetName() const;

  CString m_strName;
  int m_nSaveFlag = 1;
  CArray<CProperty_EVENT_ELEMENT, const CProperty_EVENT_ELEMENT&> m_arrEvent;
};

// ---------------------------------------------------------------------------
// Analysis tools
// ---------------------------------------------------------------------------

// CProperty_ANAL_LINE: one line of an analysis tool, from a start point to an
// end point in chart coordinates (x a packed date-time, y a value).
class CHARTCORE_API CProperty_ANAL_LINE {
 public:
  double dStartDate = 0.0;
  double dStartValue = 0.0;
  double dEndDate = 0.0;
  double dEndValue = 0.0;
  COLORREF clrLine = 0;
  int nStyle = 0;
  int nWidth = 1;
};

// CProperty_ANAL_SNAPPoint: a point the tool snapped to: the bar's packed
// date-time, the value, the bar index and the packet column it came from.
class CHARTCORE_API CProperty_ANAL_SNAPPoint {
 public:
  double dDate = 0.0;
  double dValue = 0.0;
  int nBarIndex = -1;
  int nDataType = 4;
};

// CProperty_ANAL: an analysis tool drawn on the chart (trend line, channel,
// retracement ...): its kind (the host's tool code), its lines and the points
// it snapped to.
class CHARTCORE_API CProperty_ANAL : public CProperty_BASE {
 public:
  CProperty_ANAL();
  ~CProperty_ANAL() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_ANAL)

  int m_nToolType = 0;
  CArray<CProperty_ANAL_LINE, const CProperty_ANAL_LINE&> m_arrLine;
  CArray<CProperty_ANAL_SNAPPoint, const CProperty_ANAL_SNAPPoint&> m_arrSnapPoint;
};

// ---------------------------------------------------------------------------
// Drawings
// ---------------------------------------------------------------------------

// CProperty_NOTICE_LINE: a horizontal notice line at a value; style and width
// are the 16-bit pen settings of the drawing.
//   nAlarm   1: alert when the price reaches the line
class CHARTCORE_API CProperty_NOTICE_LINE {
 public:
  double dValue = 0.0;
  COLORREF clrLine = 0;
  WORD wStyle = 0;
  WORD wWidth = 1;
  int nAlarm = 0;
};

// CProperty_DRAW: a free drawing or note on the chart: its kind (the host's
// code), its text and its notice lines.
class CHARTCORE_API CProperty_DRAW : public CProperty_BASE {
 public:
  CProperty_DRAW();
  ~CProperty_DRAW() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_DRAW)

  int m_nDrawType = 0;
  CString m_strText;
  CArray<CProperty_NOTICE_LINE, const CProperty_NOTICE_LINE&> m_arrNoticeLine;
};

// ---------------------------------------------------------------------------
// Price and volume series
// ---------------------------------------------------------------------------

// CProperty_PRICE: the price series of a chart item: how it is drawn (the
// host's chart-type code and the rising and falling colours) and the data it
// is bound to.
class CHARTCORE_API CProperty_PRICE : public CProperty_BASE {
 public:
  CProperty_PRICE();
  ~CProperty_PRICE() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_PRICE)

  int m_nChartType = 0;
  COLORREF m_clrUp = RGB(255, 0, 0);
  COLORREF m_clrDown = RGB(0, 0, 255);
  CArray<CProperty_DATA_Binding, const CProperty_DATA_Binding&> m_arrBinding;
};

// CProperty_VOLUME: the trading-volume series of a chart item; a price-like
// series whose name is always "거래량".
class CHARTCORE_API CProperty_VOLUME : public CProperty_PRICE {
 public:
  CProperty_VOLUME();
  ~CProperty_VOLUME() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_VOLUME)

  // GetName: "거래량" (trading volume), whatever m_strName holds.
  CString GetName() const override;
};

#endif  // CHARTCORE_PROPERTIES_CHART_PROPERTY_H_
