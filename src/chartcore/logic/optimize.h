// Optimisation definitions: CDBSubOPTIMIZE and its element classes.
//
// An optimisation definition describes a run of the optimiser over the
// user's logic: nine integer settings (two of them colours), a third text,
// the optimisation elements, the variables with their four values each, and
// a trailing integer. Format version 1 added nO04 … nO09. Copying with
// CopyDataBase clears nO09 in the copy instead of taking the source's value.
//
//   CDBSubOPTIMIZE opt;
//   CDBSubOPTIMIZE_VAR period;  period.strText = L"Period";
//   period.dValue1 = 5;  period.dValue2 = 60;  period.dValue3 = 5;
//   opt.m_arrVariable.Add(period);
//   opt.Serialize(ar);
#ifndef CHARTCORE_LOGIC_OPTIMIZE_H_
#define CHARTCORE_LOGIC_OPTIMIZE_H_

#include "chartcore/logic/definition_record.h"

// ---------------------------------------------------------------------------
// Element classes
// ---------------------------------------------------------------------------

// CDBSubOPTIMIZE_ELM: one optimisation element: four integers, then a
// string (declaration and archive order alike).
class CHARTCORE_API CDBSubOPTIMIZE_ELM {
 public:
  int nE01 = 0;
  int nE02 = 0;
  int nE03 = 0;
  int nE04 = 0;
  CString strE05;
};

// CDBSubOPTIMIZE_VAR: one optimisation variable: text, integer and four
// doubles (see chartcore::OptimizeVariable).
class CHARTCORE_API CDBSubOPTIMIZE_VAR : public chartcore::OptimizeVariable {};

// ---------------------------------------------------------------------------
// CDBSubOPTIMIZE
// ---------------------------------------------------------------------------

// CDBSubOPTIMIZE: the definition record of an optimisation (format version
// 1). Archive order is the declaration order.
class CHARTCORE_API CDBSubOPTIMIZE : public CDBSubBase {
  DECLARE_SERIAL(CDBSubOPTIMIZE)

 public:
  static constexpr int kCurrentVersion = 1;

  CDBSubOPTIMIZE();
  ~CDBSubOPTIMIZE() override;
  CDBSubOPTIMIZE(CDBSubOPTIMIZE&&) = default;
  CDBSubOPTIMIZE& operator=(CDBSubOPTIMIZE&&) = default;

  // Serialize: writes version 1 and every field, or reads a file of version
  // 0 or later; a version 0 file goes from nO03 straight to m_strText3 and
  // leaves nO04 … nO09 as they were. A truncated file throws
  // CArchiveException (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: makes this record a copy of pSource, except that nO09 is
  // set to 0 rather than copied (a copied optimisation starts without the
  // source's setting). Both arrays are replaced by copies of the source's.
  // A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubOPTIMIZE* pSource);

  int nO01 = 0;
  int nO02 = 1;
  int nO03 = 0;
  int nO04 = 1;                                  // since version 1; kept
  COLORREF clrO05 = chartcore::kDefinitionRed;   // since version 1; kept
  COLORREF clrO06 = chartcore::kDefinitionBlue;  // since version 1; kept
  int nO07 = 0;                                  // since version 1; kept
  int nO08 = 1;                                  // since version 1; kept
  int nO09 = 1;                                  // since version 1; kept
  CString m_strText3;
  CArray<CDBSubOPTIMIZE_ELM, CDBSubOPTIMIZE_ELM> m_arrElement;
  CArray<CDBSubOPTIMIZE_VAR, CDBSubOPTIMIZE_VAR> m_arrVariable;
  int nTail = -1;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubOPTIMIZE& operator=(const CDBSubOPTIMIZE&) = default;
};

#endif  // CHARTCORE_LOGIC_OPTIMIZE_H_
