// Candle pattern definitions: CDBSubPATTERN and its element classes.
//
// A pattern definition holds, beside the common header, ten integer settings,
// two further texts and three element arrays: the candles of the pattern
// (BONG is the word for one candle bar), its lines and its variables, then a
// trailing integer. Format version 1 added nP08 and nP09. Copying a pattern
// with CopyDataBase takes everything except the variables.
//
//   CDBSubPATTERN pat;
//   CDBSubPATTERN_BONG bong;  bong.nBong1 = 100;  pat.m_arrBong.Add(bong);
//   pat.Serialize(ar);
#ifndef CHARTCORE_LOGIC_PATTERN_H_
#define CHARTCORE_LOGIC_PATTERN_H_

#include "chartcore/logic/definition_record.h"

// ---------------------------------------------------------------------------
// Element classes
// ---------------------------------------------------------------------------

// CDBSubPATTERN_BONG: one candle of a pattern, four integers written in
// order. What each integer measures is set by the host's pattern editor.
class CHARTCORE_API CDBSubPATTERN_BONG {
 public:
  int nBong1 = 0;
  int nBong2 = 0;
  int nBong3 = 0;
  int nBong4 = 0;
};

// CDBSubPATTERN_LINE: one line of a pattern, a single integer.
class CHARTCORE_API CDBSubPATTERN_LINE {
 public:
  int nLine = 0;
};

// CDBSubPATTERN_VAR: one variable of a pattern (text, integer, double).
class CHARTCORE_API CDBSubPATTERN_VAR : public chartcore::LogicVariable {};

// ---------------------------------------------------------------------------
// CDBSubPATTERN
// ---------------------------------------------------------------------------

// CDBSubPATTERN: the definition record of a candle pattern (format version 1).
// Archive order is the declaration order.
class CHARTCORE_API CDBSubPATTERN : public CDBSubBase {
  DECLARE_SERIAL(CDBSubPATTERN)

 public:
  static constexpr int kCurrentVersion = 1;

  CDBSubPATTERN();
  ~CDBSubPATTERN() override;
  CDBSubPATTERN(CDBSubPATTERN&&) = default;
  CDBSubPATTERN& operator=(CDBSubPATTERN&&) = default;

  // Serialize: writes version 1 and every field, or reads a file of version
  // 0 or later; a version 0 file goes from nP07 straight to nP10 and leaves
  // nP08 and nP09 as they were. A truncated file throws CArchiveException
  // (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: copies the header, the ten settings, both texts, the
  // candles and lines (replacing this record's) and nTail from pSource. The
  // variables are not copied: this record keeps its own. A null source or
  // the record itself changes nothing.
  void CopyDataBase(const CDBSubPATTERN* pSource);

  int nP01 = 0;
  int nP02 = -1;
  int nP03 = 0;
  int nP04 = 1;
  int nP05 = 0;
  int nP06 = -1;
  int nP07 = -1;
  int nP08 = 0;  // since version 1; kept
  int nP09 = 1;  // since version 1; kept
  int nP10 = 0;
  CString m_strText3;
  CString m_strText4;
  CArray<CDBSubPATTERN_BONG, CDBSubPATTERN_BONG> m_arrBong;
  CArray<CDBSubPATTERN_LINE, CDBSubPATTERN_LINE> m_arrLine;
  CArray<CDBSubPATTERN_VAR, CDBSubPATTERN_VAR> m_arrVariable;
  int nTail = 0;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubPATTERN& operator=(const CDBSubPATTERN&) = default;
};

#endif  // CHARTCORE_LOGIC_PATTERN_H_
