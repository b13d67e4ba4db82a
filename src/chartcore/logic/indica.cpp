#include "chartcore/logic/indica.h"

using chartcore::internal::Exchange;
using chartcore::internal::ExchangeArray;
using chartcore::internal::ExchangeIfPresent;
using chartcore::internal::ExchangeSince;

IMPLEMENT_SERIAL(CDBSubINDICA, CDBSubBase, VERSIONABLE_SCHEMA | 0)

namespace {

// What a file older than version 3 meant for the colour-and-style group
// that the record (nB10 … nB15) and each element (nE07 … nE13) carry.
constexpr int kOldGroupInt = 0;
constexpr COLORREF kOldGroupUpColour = chartcore::kDefinitionBlue;
constexpr COLORREF kOldGroupDownColour = chartcore::kDefinitionRed;
constexpr int kOldGroupFlag = 1;

// Archive order of an element: strE11 follows nE06, and nE10 (version 7)
// was appended after the version 3 group.
void ExchangeElement(CArchive& ar, CDBSubINDICA_ELM& e, int fileVersion) {
  Exchange(ar, e.strE00);
  Exchange(ar, e.nE01);
  Exchange(ar, e.nE02);
  Exchange(ar, e.nE03);
  Exchange(ar, e.nE04);
  Exchange(ar, e.nE05);
  Exchange(ar, e.nE06);
  Exchange(ar, e.strE11);
  ExchangeSince(ar, fileVersion, 3, e.nE07, kOldGroupInt);
  ExchangeSince(ar, fileVersion, 3, e.clrE08, kOldGroupUpColour);
  ExchangeSince(ar, fileVersion, 3, e.clrE09, kOldGroupDownColour);
  ExchangeSince(ar, fileVersion, 3, e.nE12, kOldGroupFlag);
  ExchangeSince(ar, fileVersion, 3, e.nE13, kOldGroupInt);
  ExchangeSince(ar, fileVersion, 7, e.nE10, kOldGroupInt);
}

void ExchangeBase(CArchive& ar, CDBSubINDICA_BASE& b) {
  Exchange(ar, b.nBase0);
  Exchange(ar, b.dBase1);
  Exchange(ar, b.nBase2);
  Exchange(ar, b.nBase3);
  Exchange(ar, b.nBase4);
  Exchange(ar, b.nBase5);
}

}  // namespace

CDBSubINDICA::CDBSubINDICA() : CDBSubBase(kCurrentVersion) {}

CDBSubINDICA::~CDBSubINDICA() = default;

void CDBSubINDICA::Serialize(CArchive& ar) {
  const int v = SerializeHeader(ar);
  Exchange(ar, nA01);
  Exchange(ar, nA02);
  ExchangeIfPresent(ar, v, 4, nA03);
  ExchangeIfPresent(ar, v, 1, nA04);
  Exchange(ar, nA05);
  Exchange(ar, nA06);
  Exchange(ar, nA07);
  ExchangeIfPresent(ar, v, 5, clrA08);
  ExchangeIfPresent(ar, v, 5, clrA09);
  Exchange(ar, nA10);
  Exchange(ar, nA11);
  ExchangeIfPresent(ar, v, 6, nA12);
  Exchange(ar, m_strText3);
  ExchangeArray(ar, m_arrElement, [v](CArchive& a, CDBSubINDICA_ELM& e) { ExchangeElement(a, e, v); });
  Exchange(ar, nB01);
  Exchange(ar, nB02);
  Exchange(ar, nB03);
  Exchange(ar, nB04);
  Exchange(ar, nB05);
  Exchange(ar, nB06);
  Exchange(ar, nB07);
  ExchangeIfPresent(ar, v, 2, clrB08);
  ExchangeIfPresent(ar, v, 2, clrB09);
  ExchangeSince(ar, v, 3, nB10, kOldGroupInt);
  ExchangeSince(ar, v, 3, clrB11, kOldGroupUpColour);
  ExchangeSince(ar, v, 3, clrB12, kOldGroupDownColour);
  ExchangeSince(ar, v, 3, nB14, kOldGroupFlag);
  ExchangeSince(ar, v, 3, nB15, kOldGroupInt);
  ExchangeSince(ar, v, 7, nB13, kOldGroupInt);
  chartcore::internal::ExchangeVariables(ar, m_arrVariable);
  ExchangeArray(ar, m_arrBase, ExchangeBase);
  Exchange(ar, nTail);
}

void CDBSubINDICA::CopyDataBase(const CDBSubINDICA* pSource) {
  if (pSource != nullptr && pSource != this) *this = *pSource;
}
