#include "chartcore/logic/signal_region_fill.h"

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
  if (pSource != nullptr && pSource != this) *this = *pSource;
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
  if (pSource != nullptr && pSource != this) *this = *pSource;
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
  if (pSource != nullptr && pSource != this) *this = *pSource;
}
