#include "chartcore/properties/logic_property.h"

namespace {

// A parameter starts as the definition's own variable: same text, integer
// and value(s).
void AssignShape(chartcore::LogicVariable& param, const chartcore::LogicVariable& variable) { param = variable; }
void AssignShape(chartcore::OptimizeVariable& param, const chartcore::OptimizeVariable& variable) {
  param = variable;
}

// MirrorArray: replaces target with one entry per source element, in order,
// each made by convert.
template <class TARGET, class SOURCE, class ARG, class Convert>
void MirrorArray(CArray<TARGET, const TARGET&>& target, const CArray<SOURCE, ARG>& source, Convert convert) {
  target.RemoveAll();
  const INT_PTR size = source.GetSize();
  for (INT_PTR i = 0; i < size; ++i) {
    TARGET entry;
    convert(entry, source.GetAt(i));
    target.Add(entry);
  }
}

template <class PARAM, class VAR, class ARG>
void MirrorVariables(CArray<PARAM, const PARAM&>& params, const CArray<VAR, ARG>& variables) {
  MirrorArray(params, variables, [](PARAM& p, const VAR& v) { AssignShape(p, v); });
}

// The texts every logic object takes from its definition's header.
template <class PROPERTY>
void TakeHeader(PROPERTY& object, LPCTSTR name, const CDBSubBase& definition) {
  object.m_strName = name != nullptr ? name : L"";
  object.m_strText1 = definition.m_strText1;
  object.m_strText2 = definition.m_strText2;
}

void ToSubDB(CProperty_INDICA_SubDB& s, const CDBSubINDICA_ELM& e) {
  s.strE00 = e.strE00;
  s.nE01 = e.nE01;
  s.nE02 = e.nE02;
  s.nE03 = e.nE03;
  s.nE04 = e.nE04;
  s.nE05 = e.nE05;
  s.nE06 = e.nE06;
  s.nE07 = e.nE07;
  s.clrE08 = e.clrE08;
  s.clrE09 = e.clrE09;
  s.nE10 = e.nE10;
  s.nE12 = e.nE12;
  s.nE13 = e.nE13;
  s.nShow = 1;
}

void ToSubDB(CProperty_OPTIMIZE_SubDB& s, const CDBSubOPTIMIZE_ELM& e) {
  s.nE01 = e.nE01;
  s.nE02 = e.nE02;
  s.nE03 = e.nE03;
  s.nE04 = e.nE04;
}

}  // namespace

// ---------------------------------------------------------------------------
// CProperty_INDICA
// ---------------------------------------------------------------------------

CProperty_INDICA::CProperty_INDICA() = default;
CProperty_INDICA::~CProperty_INDICA() = default;

void CProperty_INDICA::BuildFromDefinition(LPCTSTR name, const CDBSubINDICA& definition) {
  TakeHeader(*this, name, definition);
  m_strTitle = m_strName;
  m_strText3 = definition.m_strText3;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
  MirrorArray(m_arrSubDB, definition.m_arrElement, [](CProperty_INDICA_SubDB& s, const CDBSubINDICA_ELM& e) {
    ToSubDB(s, e);
  });
  MirrorArray(m_arrBasis, definition.m_arrBase,
              [](CDBSubINDICA_BASE& basis, const CDBSubINDICA_BASE& base) { basis = base; });
}

// ---------------------------------------------------------------------------
// CProperty_SIGNAL, CProperty_REGION, CProperty_FILL
// ---------------------------------------------------------------------------

CProperty_SIGNAL::CProperty_SIGNAL() = default;
CProperty_SIGNAL::~CProperty_SIGNAL() = default;

void CProperty_SIGNAL::BuildFromDefinition(LPCTSTR name, const CDBSubSIGNAL& definition) {
  TakeHeader(*this, name, definition);
  m_strText3 = definition.m_strText3;
  m_strText4 = definition.m_strText4;
  m_clrSignal = definition.clrS04;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
}

CProperty_REGION::CProperty_REGION() = default;
CProperty_REGION::~CProperty_REGION() = default;

void CProperty_REGION::BuildFromDefinition(LPCTSTR name, const CDBSubREGION& definition) {
  TakeHeader(*this, name, definition);
  m_strText3 = definition.m_strText3;
  m_strText4 = definition.m_strText4;
  m_clrRegion = definition.clrR04;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
}

CProperty_FILL::CProperty_FILL() = default;
CProperty_FILL::~CProperty_FILL() = default;

void CProperty_FILL::BuildFromDefinition(LPCTSTR name, const CDBSubFILL& definition) {
  TakeHeader(*this, name, definition);
  m_strText3 = definition.m_strText3;
  m_strText4 = definition.m_strText4;
  m_strText5 = definition.m_strText5;
  m_clrFill = definition.clrF06;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
}

// ---------------------------------------------------------------------------
// CProperty_PATTERN
// ---------------------------------------------------------------------------

CProperty_PATTERN::CProperty_PATTERN() = default;
CProperty_PATTERN::~CProperty_PATTERN() = default;

void CProperty_PATTERN::BuildFromDefinition(LPCTSTR name, const CDBSubPATTERN& definition) {
  TakeHeader(*this, name, definition);
  m_strText3 = definition.m_strText3;
  m_strText4 = definition.m_strText4;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
  MirrorArray(m_arrSubDB, definition.m_arrBong, [](CProperty_PATTERN_SubDB& s, const CDBSubPATTERN_BONG& b) {
    s.nKind = kSubDBCandle;
    s.nValue1 = b.nBong1;
    s.nValue2 = b.nBong2;
    s.nValue3 = b.nBong3;
    s.nValue4 = b.nBong4;
  });
  const INT_PTR lines = definition.m_arrLine.GetSize();
  for (INT_PTR i = 0; i < lines; ++i) {
    CProperty_PATTERN_SubDB s;
    s.nKind = kSubDBLine;
    s.nValue1 = definition.m_arrLine.GetAt(i).nLine;
    m_arrSubDB.Add(s);
  }
}

// ---------------------------------------------------------------------------
// CProperty_OPTIMIZE
// ---------------------------------------------------------------------------

CProperty_OPTIMIZE::CProperty_OPTIMIZE() = default;
CProperty_OPTIMIZE::~CProperty_OPTIMIZE() = default;

void CProperty_OPTIMIZE::BuildFromDefinition(LPCTSTR name, const CDBSubOPTIMIZE& definition) {
  TakeHeader(*this, name, definition);
  m_strText3 = definition.m_strText3;
  MirrorVariables(m_arrParam, definition.m_arrVariable);
  m_arrPayoff.RemoveAll();
  MirrorArray(m_arrSubDB, definition.m_arrElement, [](CProperty_OPTIMIZE_SubDB& s, const CDBSubOPTIMIZE_ELM& e) {
    ToSubDB(s, e);
  });
}
