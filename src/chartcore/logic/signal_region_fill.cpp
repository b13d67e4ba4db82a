#include "chartcore/logic/signal_region_fill.h"

using chartcore::internal::CopyArray;
using chartcore::internal::Exchange;
using chartcore::internal::ExchangeSince;
using chartcore::internal::ExchangeVariables;

IMPLEMENT_SERIAL(CDBSubSIGNAL, CDBSubBase, VERSIONABLE_SCHEMA | 0)
IMPLEMENT_SERIAL(CDBSubREGION, CDBSubBase, VERSIONABLE_SCHEMA | 0)
IMPLEMENT_SERIAL(CDBSubFILL, CDBSubBase, VERSIONABLE_SCHEMA | 0)

// ---------------------------------------------------------------------------
// CDBSubSIGNAL
// ---------------------------------------------------------------------------

CDBSubSIGNAL::CDBSubSIGNAL() : CDBSubBase(kCurrentVersion) {}

CDBSubSIGNAL::~CDBSubSIGNAL() = default;

void CDBSubSIGNAL::Serialize(CArchive& ar) {
  SerializeHeader(ar);  // never changed: the file's version steers nothing
  Exchange(ar, nS01);
  Exchange(ar, nS02);
  Exchange(ar, nS03);
  Exchange(ar, clrS04);
  Exchange(ar, nS05);
  Exchange(ar, nS06);
  Exchange(ar, m_strText3);
  Exchange(ar, m_strText4);
  ExchangeVariables(ar, m_arrVariable);
  Exchange(ar, nTail);
}

void CDBSubSIGNAL::CopyDataBase(const CDBSubSIGNAL* pSource) {
  if (pSource == nullptr || pSource == this) return;
  const CDBSubSIGNAL& s = *pSource;
  CopyHeader(s);
  nS01 = s.nS01;
  nS02 = s.nS02;
  nS03 = s.nS03;
  clrS04 = s.clrS04;
  nS05 = s.nS05;
  nS06 = s.nS06;
  m_strText3 = s.m_strText3;
  m_strText4 = s.m_strText4;
  CopyArray(m_arrVariable, s.m_arrVariable);
  nTail = s.nTail;
}

// ---------------------------------------------------------------------------
// CDBSubREGION
// ---------------------------------------------------------------------------

CDBSubREGION::CDBSubREGION() : CDBSubBase(kCurrentVersion) {}

CDBSubREGION::~CDBSubREGION() = default;

void CDBSubREGION::Serialize(CArchive& ar) {
  SerializeHeader(ar);  // never changed: the file's version steers nothing
  Exchange(ar, nR01);
  Exchange(ar, nR02);
  Exchange(ar, nR03);
  Exchange(ar, clrR04);
  Exchange(ar, nR05);
  Exchange(ar, nR06);
  Exchange(ar, nR07);
  Exchange(ar, nR08);
  Exchange(ar, m_strText3);
  Exchange(ar, m_strText4);
  ExchangeVariables(ar, m_arrVariable);
  Exchange(ar, nTail);
}

void CDBSubREGION::CopyDataBase(const CDBSubREGION* pSource) {
  if (pSource == nullptr || pSource == this) return;
  const CDBSubREGION& s = *pSource;
  CopyHeader(s);
  nR01 = s.nR01;
  nR02 = s.nR02;
  nR03 = s.nR03;
  clrR04 = s.clrR04;
  nR05 = s.nR05;
  nR06 = s.nR06;
  nR07 = s.nR07;
  nR08 = s.nR08;
  m_strText3 = s.m_strText3;
  m_strText4 = s.m_strText4;
  CopyArray(m_arrVariable, s.m_arrVariable);
  nTail = s.nTail;
}

// ---------------------------------------------------------------------------
// CDBSubFILL
// ---------------------------------------------------------------------------

CDBSubFILL::CDBSubFILL() : CDBSubBase(kCurrentVersion) {}

CDBSubFILL::~CDBSubFILL() = default;

void CDBSubFILL::Serialize(CArchive& ar) {
  const int v = SerializeHeader(ar);
  Exchange(ar, nF01);
  ExchangeSince(ar, v, 1, nF02, -1);
  Exchange(ar, nF03);
  Exchange(ar, nF04);
  Exchange(ar, nF05);
  Exchange(ar, clrF06);
  Exchange(ar, nF07);
  Exchange(ar, nF08);
  Exchange(ar, nF09);
  Exchange(ar, m_strText3);
  Exchange(ar, m_strText4);
  Exchange(ar, m_strText5);
  ExchangeVariables(ar, m_arrVariable);
  Exchange(ar, nTail);
}

void CDBSubFILL::CopyDataBase(const CDBSubFILL* pSource) {
  if (pSource == nullptr || pSource == this) return;
  const CDBSubFILL& s = *pSource;
  CopyHeader(s);
  nF01 = s.nF01;
  nF02 = s.nF02;
  nF03 = s.nF03;
  nF04 = s.nF04;
  nF05 = s.nF05;
  clrF06 = s.clrF06;
  nF07 = s.nF07;
  nF08 = s.nF08;
  nF09 = s.nF09;
  m_strText3 = s.m_strText3;
  m_strText4 = s.m_strText4;
  m_strText5 = s.m_strText5;
  CopyArray(m_arrVariable, s.m_arrVariable);
  nTail = s.nTail;
}
