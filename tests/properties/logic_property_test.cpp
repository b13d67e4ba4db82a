#include "chartcore/properties/logic_property.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

namespace {

template <class VAR, class ARG>
void AddVariables(CArray<VAR, ARG>& variables, int count) {
  for (int i = 0; i < count; ++i) {
    VAR v;
    v.strText.Format(L"v%d", i);
    v.nValue = 10 + i;
    v.dValue = 0.5 * i;
    variables.Add(v);
  }
}

// Every parameter carries the text, integer and value of its variable.
template <class PARAM, class PARG, class VAR, class VARG>
void ExpectMirrored(const CArray<PARAM, PARG>& params, const CArray<VAR, VARG>& variables) {
  ASSERT_EQ(params.GetSize(), variables.GetSize());
  for (INT_PTR i = 0; i < params.GetSize(); ++i) {
    EXPECT_EQ(params[i].strText, variables[i].strText);
    EXPECT_EQ(params[i].nValue, variables[i].nValue);
    EXPECT_EQ(params[i].dValue, variables[i].dValue);
  }
}

// The members of an output element, so one comparison shows a dropped or
// swapped member.
auto Fields(const CProperty_INDICA_SubDB& s) {
  return std::make_tuple(std::wstring(s.strE00.str()), s.nE01, s.nE02, s.nE03, s.nE04, s.nE05, s.nE06, s.nE07,
                         s.clrE08, s.clrE09, s.nE10, s.nE12, s.nE13, s.nShow);
}

}  // namespace

TEST(LogicProperty, IndicatorObjectMirrorsItsDefinition) {
  CDBSubINDICA def;
  def.m_strText1 = L"\uC774\uD3C9";  // 이평
  def.m_strText2 = L"two";
  def.m_strText3 = L"MA(C, Period)";
  AddVariables(def.m_arrVariable, 3);
  def.m_arrElement.Add(CDBSubINDICA_ELM{L"line0", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, L"not kept", 12, 13});
  def.m_arrElement.Add(CDBSubINDICA_ELM{L"line1", 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, L"", 32, 33});
  def.m_arrBase.Add(CDBSubINDICA_BASE{4, 70.0, 2, 3, 4, 5});

  CProperty_INDICA obj;
  obj.m_strItemCode = L"005930";
  obj.SetSaveFlag(0);
  obj.m_arrBinding.Add(CProperty_DATA_Binding());
  obj.m_arrEvent.Add(CProperty_EVENT_ELEMENT());
  for (int i = 0; i < 6; ++i) obj.m_arrParam.Add(CProperty_INDICA_Param());  // a rebuild replaces these
  CProperty_INDICA_SubDB hidden;
  hidden.nShow = 0;
  obj.m_arrSubDB.Add(hidden);

  obj.BuildFromDefinition(L"MA", def);
  EXPECT_EQ(obj.GetName(), L"MA");
  EXPECT_EQ(obj.m_strTitle, L"MA");
  EXPECT_EQ(obj.m_strText1, L"\uC774\uD3C9");
  EXPECT_EQ(obj.m_strText2, L"two");
  EXPECT_EQ(obj.m_strText3, L"MA(C, Period)");
  ExpectMirrored(obj.m_arrParam, def.m_arrVariable);
  // Every member of each element in its place, shown, without the text strE11.
  ASSERT_EQ(obj.m_arrSubDB.GetSize(), 2);
  EXPECT_EQ(Fields(obj.m_arrSubDB[0]), Fields({L"line0", 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 13, 1}));
  EXPECT_EQ(Fields(obj.m_arrSubDB[1]), Fields({L"line1", 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 32, 33, 1}));
  ASSERT_EQ(obj.m_arrBasis.GetSize(), 1);
  const CProperty_INDICA_Basis& basis = obj.m_arrBasis[0];
  EXPECT_EQ(std::make_tuple(basis.nBase0, basis.dBase1, basis.nBase2, basis.nBase3, basis.nBase4, basis.nBase5),
            std::make_tuple(4, 70.0, 2, 3, 4, 5));
  // What the host set on the object survives the build.
  EXPECT_EQ(obj.m_strItemCode, L"005930");
  EXPECT_EQ(obj.GetSaveFlag(), 0);
  EXPECT_EQ(obj.m_arrBinding.GetSize(), 1);
  EXPECT_EQ(obj.m_arrEvent.GetSize(), 1);

  // The object's values are its own: editing them leaves the definition.
  obj.m_arrParam[0].dValue = 99;
  EXPECT_EQ(def.m_arrVariable[0].dValue, 0.0);
}

TEST(LogicProperty, SignalRegionFillTakeTextsColourAndParameters) {
  CDBSubSIGNAL sig;
  sig.m_strText1 = L"one";
  sig.m_strText4 = L"four";
  sig.clrS04 = 0x123;
  AddVariables(sig.m_arrVariable, 2);
  CProperty_SIGNAL ps;
  ps.SetSaveFlag(0);
  ps.BuildFromDefinition(L"sig", sig);
  ExpectMirrored(ps.m_arrParam, sig.m_arrVariable);
  EXPECT_EQ(ps.m_strText1, L"one");
  EXPECT_EQ(ps.m_strText4, L"four");
  EXPECT_EQ(ps.m_clrSignal, 0x123u);
  EXPECT_EQ(ps.GetSaveFlag(), 0);

  CDBSubREGION reg;
  reg.m_strText3 = L"three";
  reg.clrR04 = 0x456;
  AddVariables(reg.m_arrVariable, 1);
  CProperty_REGION pr;
  pr.BuildFromDefinition(L"reg", reg);
  ExpectMirrored(pr.m_arrParam, reg.m_arrVariable);
  EXPECT_EQ(pr.m_strText3, L"three");
  EXPECT_EQ(pr.m_clrRegion, 0x456u);

  CDBSubFILL fill;
  fill.m_strText2 = L"two";
  fill.m_strText5 = L"five";
  fill.clrF06 = 0x789;
  CProperty_FILL pf;
  AddVariables(pf.m_arrParam, 2);  // a definition without variables empties them
  pf.BuildFromDefinition(nullptr, fill);
  EXPECT_EQ(pf.m_arrParam.GetSize(), 0);
  EXPECT_EQ(pf.m_strText2, L"two");
  EXPECT_EQ(pf.m_strText5, L"five");
  EXPECT_EQ(pf.m_clrFill, 0x789u);
  EXPECT_TRUE(pf.GetName().IsEmpty());  // a null name is an empty one
}

TEST(LogicProperty, PatternAndOptimizeTakeTheirParts) {
  CDBSubPATTERN pat;
  AddVariables(pat.m_arrVariable, 2);
  pat.m_arrBong.Add(CDBSubPATTERN_BONG{1, 2, 3, 4});
  pat.m_arrBong.Add(CDBSubPATTERN_BONG{5, 6, 7, 8});
  pat.m_arrLine.Add(CDBSubPATTERN_LINE{9});
  CProperty_PATTERN pp;
  pp.BuildFromDefinition(L"pat", pat);
  ExpectMirrored(pp.m_arrParam, pat.m_arrVariable);
  // The candles in order, then the line with only its one integer.
  ASSERT_EQ(pp.m_arrSubDB.GetSize(), 3);
  const auto part = [&pp](int i) {
    const CProperty_PATTERN_SubDB& s = pp.m_arrSubDB[i];
    return std::make_tuple(s.nKind, s.nValue1, s.nValue2, s.nValue3, s.nValue4);
  };
  EXPECT_EQ(part(0), std::make_tuple(CProperty_PATTERN::kSubDBCandle, 1, 2, 3, 4));
  EXPECT_EQ(part(1), std::make_tuple(CProperty_PATTERN::kSubDBCandle, 5, 6, 7, 8));
  EXPECT_EQ(part(2), std::make_tuple(CProperty_PATTERN::kSubDBLine, 9, 0, 0, 0));

  CDBSubOPTIMIZE opt;
  opt.m_arrVariable.Add(CDBSubOPTIMIZE_VAR{{L"Period", 2, 5.0, 60.0, 5.5, 20.0}});
  opt.m_arrElement.Add(CDBSubOPTIMIZE_ELM{1, 2, 3, 4, L"not kept"});
  CProperty_OPTIMIZE po;
  po.m_arrPayoff.Add(CProperty_OPTIMIZE_Payoff());
  po.BuildFromDefinition(L"opt", opt);
  ASSERT_EQ(po.m_arrParam.GetSize(), 1);
  const CProperty_OPTIMIZE_Param& p = po.m_arrParam[0];
  EXPECT_EQ(std::make_tuple(std::wstring(p.strText.str()), p.nValue, p.dValue1, p.dValue2, p.dValue3, p.dValue4),
            std::make_tuple(std::wstring(L"Period"), 2, 5.0, 60.0, 5.5, 20.0));
  ASSERT_EQ(po.m_arrSubDB.GetSize(), 1);
  const CProperty_OPTIMIZE_SubDB& s = po.m_arrSubDB[0];
  EXPECT_EQ(std::make_tuple(s.nE01, s.nE02, s.nE03, s.nE04), std::make_tuple(1, 2, 3, 4));
  EXPECT_EQ(po.m_arrPayoff.GetSize(), 0);  // results of an earlier run no longer apply
}
