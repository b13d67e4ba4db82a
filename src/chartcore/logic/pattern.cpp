#include "chartcore/logic/pattern.h"

#include <utility>

using chartcore::internal::Exchange;
using chartcore::internal::ExchangeArray;
using chartcore::internal::ExchangeIfPresent;

IMPLEMENT_SERIAL(CDBSubPATTERN, CDBSubBase, VERSIONABLE_SCHEMA | 0)

namespace {

void ExchangeBong(CArchive& ar, CDBSubPATTERN_BONG& bong) {
  Exchange(ar, bong.nBong1);
  Exchange(ar, bong.nBong2);
  Exchange(ar, bong.nBong3);
  Exchange(ar, bong.nBong4);
}

void ExchangeLine(CArchive& ar, CDBSubPATTERN_LINE& line) { Exchange(ar, line.nLine); }

}  // namespace

CDBSubPATTERN::CDBSubPATTERN() : CDBSubBase(kCurrentVersion) {}

CDBSubPATTERN::~CDBSubPATTERN() = default;

void CDBSubPATTERN::Serialize(CArchive& ar) {
  const int v = SerializeHeader(ar);
  Exchange(ar, nP01);
  Exchange(ar, nP02);
  Exchange(ar, nP03);
  Exchange(ar, nP04);
  Exchange(ar, nP05);
  Exchange(ar, nP06);
  Exchange(ar, nP07);
  ExchangeIfPresent(ar, v, 1, nP08);
  ExchangeIfPresent(ar, v, 1, nP09);
  Exchange(ar, nP10);  // declared after the version 1 pair, yet in every file
  Exchange(ar, m_strText3);
  Exchange(ar, m_strText4);
  ExchangeArray(ar, m_arrBong, ExchangeBong);
  ExchangeArray(ar, m_arrLine, ExchangeLine);
  chartcore::internal::ExchangeVariables(ar, m_arrVariable);
  Exchange(ar, nTail);
}

void CDBSubPATTERN::CopyDataBase(const CDBSubPATTERN* pSource) {
  if (pSource == nullptr || pSource == this) return;
  // The variables stay this record's own: a pattern copy takes the shape of
  // the candles, not the values the user gave the variables.
  CArray<CDBSubPATTERN_VAR, CDBSubPATTERN_VAR> own(std::move(m_arrVariable));
  *this = *pSource;
  m_arrVariable = std::move(own);
}
