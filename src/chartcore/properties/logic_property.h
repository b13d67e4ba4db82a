// Chart-object property records of the user's logic.
//
// A chart object that shows a piece of logic (an indicator, signal, region,
// fill, pattern or optimisation) keeps its own copy of what it needs from the
// definition: the name and texts, its own values of the definition's
// variables (the Param array, one parameter per variable, in order) and, for
// kinds with outputs, one SubDB entry per output element. BuildFromDefinition
// fills those from a definition record when the user places it on a chart;
// the user then edits the object's values without touching the definition.
// What the host sets on the object itself (save flag, events, bindings, item)
// is kept by a rebuild.
//
//   CDBSubINDICA def;                  // loaded from "\Logic\Indica\MACD..."
//   CProperty_INDICA obj;
//   obj.BuildFromDefinition(L"MACD", def);
//   obj.m_arrParam[0].dValue = 12;     // this chart's own short period
#ifndef CHARTCORE_PROPERTIES_LOGIC_PROPERTY_H_
#define CHARTCORE_PROPERTIES_LOGIC_PROPERTY_H_

#include "chartcore/logic/definition_record.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/properties/chart_property.h"

// ---------------------------------------------------------------------------
// Parameters: the object's own value of one variable (text, integer, double)
// ---------------------------------------------------------------------------

// CProperty_INDICA_Param: the object's value of one indicator variable.
class CHARTCORE_API CProperty_INDICA_Param : public chartcore::LogicVariable {};
// CProperty_SIGNAL_Param: the object's value of one signal variable.
class CHARTCORE_API CProperty_SIGNAL_Param : public chartcore::LogicVariable {};
// CProperty_REGION_Param: the object's value of one region variable.
class CHARTCORE_API CProperty_REGION_Param : public chartcore::LogicVariable {};
// CProperty_FILL_Param: the object's value of one fill variable.
class CHARTCORE_API CProperty_FILL_Param : public chartcore::LogicVariable {};
// CProperty_PATTERN_Param: the object's value of one pattern variable.
class CHARTCORE_API CProperty_PATTERN_Param : public chartcore::LogicVariable {};
// CProperty_OPTIMIZE_Param: the object's values of one optimisation variable
// (text, integer, four doubles).
class CHARTCORE_API CProperty_OPTIMIZE_Param : public chartcore::OptimizeVariable {};

// ---------------------------------------------------------------------------
// Indicator
// ---------------------------------------------------------------------------

// CProperty_INDICA_SubDB: one output element of the indicator as this object
// draws it: the element's name, its settings under the labels of
// CDBSubINDICA_ELM, and nShow (1: the object draws this output).
class CHARTCORE_API CProperty_INDICA_SubDB {
 public:
  CString strE00;
  int nE01 = 0;
  int nE02 = 0;
  int nE03 = 0;
  int nE04 = 0;
  int nE05 = 0;
  int nE06 = 0;
  int nE07 = 0;
  COLORREF clrE08 = 0;
  COLORREF clrE09 = 0;
  int nE10 = 0;
  int nE12 = 0;
  int nE13 = 0;
  int nShow = 1;
};

// CProperty_INDICA_Basis: one base entry of the indicator as set for this
// object (the members of CDBSubINDICA_BASE, same labels).
class CHARTCORE_API CProperty_INDICA_Basis : public CDBSubINDICA_BASE {};

// CProperty_INDICA: an indicator placed on a chart.
//   m_strTitle     the label the chart shows (the name until the user sets one)
//   m_strText1 … m_strText3   the definition's texts
//   m_strItemCode  the chart item the indicator is computed on
//   m_strComment   the user's note on this object
class CHARTCORE_API CProperty_INDICA : public CProperty_BASE {
 public:
  CProperty_INDICA();
  ~CProperty_INDICA() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_INDICA)

  // BuildFromDefinition: takes name, the texts, one parameter per variable,
  // one SubDB entry per output element (nShow 1) and one basis entry per base
  // entry from definition, replacing what those arrays held. The title is set
  // to name. Save flag, events, item code, comment and bindings are kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubINDICA& definition);

  CString m_strTitle;
  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CString m_strItemCode;
  CString m_strComment;
  CArray<CProperty_INDICA_Param, const CProperty_INDICA_Param&> m_arrParam;
  CArray<CProperty_INDICA_SubDB, const CProperty_INDICA_SubDB&> m_arrSubDB;
  CArray<CProperty_INDICA_Basis, const CProperty_INDICA_Basis&> m_arrBasis;
  CArray<CProperty_DATA_Binding, const CProperty_DATA_Binding&> m_arrBinding;
};

// ---------------------------------------------------------------------------
// Signal, region, fill
// ---------------------------------------------------------------------------

// CProperty_SIGNAL: a signal placed on a chart: the definition's texts, the
// colour it is marked in, and its parameters.
class CHARTCORE_API CProperty_SIGNAL : public CProperty_BASE {
 public:
  CProperty_SIGNAL();
  ~CProperty_SIGNAL() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_SIGNAL)

  // BuildFromDefinition: takes name, the four texts, the colour (clrS04) and
  // one parameter per variable from definition; save flag and events are kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubSIGNAL& definition);

  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CString m_strText4;
  COLORREF m_clrSignal = chartcore::kDefinitionRed;
  CArray<CProperty_SIGNAL_Param, const CProperty_SIGNAL_Param&> m_arrParam;
};

// CProperty_REGION: a region placed on a chart: the definition's texts, the
// colour it is shaded in, and its parameters.
class CHARTCORE_API CProperty_REGION : public CProperty_BASE {
 public:
  CProperty_REGION();
  ~CProperty_REGION() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_REGION)

  // BuildFromDefinition: takes name, the four texts, the colour (clrR04) and
  // one parameter per variable from definition; save flag and events are kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubREGION& definition);

  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CString m_strText4;
  COLORREF m_clrRegion = chartcore::kDefinitionLightGreen;
  CArray<CProperty_REGION_Param, const CProperty_REGION_Param&> m_arrParam;
};

// CProperty_FILL: a fill placed on a chart: the definition's texts, the
// colour it fills with, and its parameters.
class CHARTCORE_API CProperty_FILL : public CProperty_BASE {
 public:
  CProperty_FILL();
  ~CProperty_FILL() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_FILL)

  // BuildFromDefinition: takes name, the five texts, the colour (clrF06) and
  // one parameter per variable from definition; save flag and events are kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubFILL& definition);

  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CString m_strText4;
  CString m_strText5;
  COLORREF m_clrFill = chartcore::kDefinitionLightGreen;
  CArray<CProperty_FILL_Param, const CProperty_FILL_Param&> m_arrParam;
};

// ---------------------------------------------------------------------------
// Pattern
// ---------------------------------------------------------------------------

// CProperty_PATTERN_SubDB: one part of the pattern as this object matches it:
// a candle (nKind 0, its four integers in nValue1 … nValue4) or a line
// (nKind 1, its integer in nValue1, the others 0).
class CHARTCORE_API CProperty_PATTERN_SubDB {
 public:
  int nKind = 0;
  int nValue1 = 0;
  int nValue2 = 0;
  int nValue3 = 0;
  int nValue4 = 0;
};

// CProperty_PATTERN: a candle pattern placed on a chart: the definition's
// texts, its parameters and its candles and lines.
class CHARTCORE_API CProperty_PATTERN : public CProperty_BASE {
 public:
  // The kinds of a CProperty_PATTERN_SubDB entry.
  static constexpr int kSubDBCandle = 0;
  static constexpr int kSubDBLine = 1;

  CProperty_PATTERN();
  ~CProperty_PATTERN() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_PATTERN)

  // BuildFromDefinition: takes name, the four texts, one parameter per
  // variable, and one SubDB entry per candle followed by one per line, in the
  // definition's order; save flag and events are kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubPATTERN& definition);

  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CString m_strText4;
  CArray<CProperty_PATTERN_Param, const CProperty_PATTERN_Param&> m_arrParam;
  CArray<CProperty_PATTERN_SubDB, const CProperty_PATTERN_SubDB&> m_arrSubDB;
};

// ---------------------------------------------------------------------------
// Optimisation
// ---------------------------------------------------------------------------

// CProperty_OPTIMIZE_Payoff: one result of an optimisation run: the rank of
// the combination of values tried, its trade counts, net profit and largest
// drawdown. The host fills these as the run reports.
class CHARTCORE_API CProperty_OPTIMIZE_Payoff {
 public:
  int nRank = 0;
  int nTradeCount = 0;
  int nWinCount = 0;
  double dNetProfit = 0.0;
  double dMaxDrawdown = 0.0;
};

// CProperty_OPTIMIZE_SubDB: one optimisation element as set for this object
// (the four integers of CDBSubOPTIMIZE_ELM, same labels).
class CHARTCORE_API CProperty_OPTIMIZE_SubDB {
 public:
  int nE01 = 0;
  int nE02 = 0;
  int nE03 = 0;
  int nE04 = 0;
};

// CProperty_OPTIMIZE: an optimisation run attached to a chart: the
// definition's texts, one parameter per variable (with its four values), one
// SubDB entry per element and the results of the last run.
class CHARTCORE_API CProperty_OPTIMIZE : public CProperty_BASE {
 public:
  CProperty_OPTIMIZE();
  ~CProperty_OPTIMIZE() override;
  CHARTCORE_PROPERTY_COPYABLE(CProperty_OPTIMIZE)

  // BuildFromDefinition: takes name, the three texts, one parameter per
  // variable and one SubDB entry per element from definition; the results of
  // a previous run no longer apply and are emptied. Save flag and events are
  // kept.
  void BuildFromDefinition(LPCTSTR name, const CDBSubOPTIMIZE& definition);

  CString m_strText1;
  CString m_strText2;
  CString m_strText3;
  CArray<CProperty_OPTIMIZE_Param, const CProperty_OPTIMIZE_Param&> m_arrParam;
  CArray<CProperty_OPTIMIZE_Payoff, const CProperty_OPTIMIZE_Payoff&> m_arrPayoff;
  CArray<CProperty_OPTIMIZE_SubDB, const CProperty_OPTIMIZE_SubDB&> m_arrSubDB;
};

#endif  // CHARTCORE_PROPERTIES_LOGIC_PROPERTY_H_
