#include "chartcore/logic/optimize.h"

using chartcore::internal::Exchange;
using chartcore::internal::ExchangeIfPresent;

IMPLEMENT_SERIAL(CDBSubOPTIMIZE, CDBSubBase, VERSIONABLE_SCHEMA | 0)

namespace {

void ExchangeElement(CArchive& ar, CDBSubOPTIMIZE_ELM& e) {
  Exchange(ar, e.nE01);
  Exchange(ar, e.nE02);
  Exchange(ar, e.nE03);
  Exchange(ar, e.nE04);
  Exchange(ar, e.strE05);
}

}  // namespace

CDBSubOPTIMIZE::CDBSubOPTIMIZE() : CDBSubBase(kCurrentVersion) {}

CDBSubOPTIMIZE::~CDBSubOPTIMIZE() = default;

void CDBSubOPTIMIZE::Serialize(CArchive& ar) {
  const int v = SerializeHeader(ar);
  Exchange(ar, nO01);
  Exchange(ar, nO02);
  Exchange(ar, nO03);
  ExchangeIfPresent(ar, v, 1, nO04);
  ExchangeIfPresent(ar, v, 1, clrO05);
  ExchangeIfPresent(ar, v, 1, clrO06);
  ExchangeIfPresent(ar, v, 1, nO07);
  ExchangeIfPresent(ar, v, 1, nO08);
  ExchangeIfPresent(ar, v, 1, nO09);
  Exchange(ar, m_strText3);
  chartcore::internal::ExchangeArray(ar, m_arrElement, ExchangeElement);
  chartcore::internal::ExchangeVariables(ar, m_arrVariable);
  Exchange(ar, nTail);
}

void CDBSubOPTIMIZE::CopyDataBase(const CDBSubOPTIMIZE* pSource) {
  if (pSource == nullptr || pSource == this) return;
  *this = *pSource;
  nO09 = 0;  // a copy never inherits this setting
}
