#include "chartcore/properties/logic_property.h"

#include <memory>

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

}  // namespace

TEST(LogicProperty, IndicatorObjectMirrorsItsDefinition) {
  CDBSubINDICA def;
  def.m_strText1 = L"\uC774\uD3C9";  // 이평
  def.m_strText3 = L"MA(C, Period)";
  AddVariables(def.m_arrVariable, 3);
  for (int i = 0; i < 2; ++i) {
    CDBSubINDICA_ELM e;
    e.strE00.Format(L"line%d", i);
    e.nE01 = 1 + i; e.nE06 = 6; e.nE07 = 7; e.clrE08 = 0x808; e.clrE09 = 0x909;
    e.nE10 = 10; e.strE11 = L"not kept"; e.nE12 = 12; e.nE13 = 13;
    def.m_arrElement.Add(e);
  }
  CDBSubINDICA_BASE base;
  base.nBase0 = 4; base.dBase1 = 70.0; base.nBase5 = 5;
  def.m_arrBase.Add(base);

  CProperty_INDICA obj;
  obj.m_strItemCode = L"005930";
  obj.SetSaveFlag(0);
  CProperty_DATA_Binding bind;
  bind.nDataType = 4;
  obj.m_arrBinding.Add(bind);
  for (int i = 0; i < 6; ++i) obj.m_arrParam.Add(CProperty_INDICA_Param());  // a rebuild replaces these

  obj.BuildFromDefinition(L"MA", def);
  EXPECT_EQ(obj.GetName(), L"MA");
  EXPECT_EQ(obj.m_strTitle, L"MA");
  EXPECT_EQ(obj.m_strText1, L"\uC774\uD3C9");
  EXPECT_EQ(obj.m_strText3, L"MA(C, Period)");
  ExpectMirrored(obj.m_arrParam, def.m_arrVariable);
  ASSERT_EQ(obj.m_arrSubDB.GetSize(), 2);
  const CProperty_INDICA_SubDB& s = obj.m_arrSubDB[1];
  EXPECT_EQ(s.strE00, L"line1");
  EXPECT_EQ(s.nE01, 2);
  EXPECT_EQ(s.nE06, 6);
  EXPECT_EQ(s.nE07, 7);
  EXPECT_EQ(s.clrE08, 0x808u);
  EXPECT_EQ(s.clrE09, 0x909u);
  EXPECT_EQ(s.nE10, 10);
  EXPECT_EQ(s.nE12, 12);
  EXPECT_EQ(s.nE13, 13);
  EXPECT_EQ(s.nShow, 1);
  ASSERT_EQ(obj.m_arrBasis.GetSize(), 1);
  EXPECT_EQ(obj.m_arrBasis[0].dBase1, 70.0);
  EXPECT_EQ(obj.m_arrBasis[0].nBase5, 5);
  // What the host set on the object survives the build.
  EXPECT_EQ(obj.m_strItemCode, L"005930");
  EXPECT_EQ(obj.GetSaveFlag(), 0);
  EXPECT_EQ(obj.m_arrBinding.GetSize(), 1);

  // The object's values are its own: editing them leaves the definition.
  obj.m_arrParam[0].dValue = 99;
  EXPECT_EQ(def.m_arrVariable[0].dValue, 0.0);
}

TEST(LogicProperty, SignalRegionFillPatternOptimizeMirrorTheirDefinitions) {
  CDBSubSIGNAL sig;
  sig.clrS04 = 0x123;
  sig.m_strText4 = L"four";
  AddVariables(sig.m_arrVariable, 2);
  CProperty_SIGNAL ps;
  ps.BuildFromDefinition(L"sig", sig);
  ExpectMirrored(ps.m_arrParam, sig.m_arrVariable);
  EXPECT_EQ(ps.m_clrSignal, 0x123u);
  EXPECT_EQ(ps.m_strText4, L"four");

  CDBSubREGION reg;
  AddVariables(reg.m_arrVariable, 1);
  CProperty_REGION pr;
  pr.BuildFromDefinition(L"reg", reg);
  ExpectMirrored(pr.m_arrParam, reg.m_arrVariable);
  EXPECT_EQ(pr.m_clrRegion, 0x0090EE90u);

  CDBSubFILL fill;
  fill.m_strText5 = L"five";
  CProperty_FILL pf;
  AddVariables(pf.m_arrParam, 2);  // a definition without variables empties them
  pf.BuildFromDefinition(nullptr, fill);
  EXPECT_EQ(pf.m_arrParam.GetSize(), 0);
  EXPECT_EQ(pf.m_strText5, L"five");
  EXPECT_TRUE(pf.GetName().IsEmpty());

  CDBSubPATTERN pat;
  AddVariables(pat.m_arrVariable, 2);
  CDBSubPATTERN_BONG bong;
  bong.nBong1 = 1; bong.nBong2 = 2; bong.nBong3 = 3; bong.nBong4 = 4;
  pat.m_arrBong.Add(bong);
  pat.m_arrBong.Add(bong);
  CDBSubPATTERN_LINE line;
  line.nLine = 9;
  pat.m_arrLine.Add(line);
  CProperty_PATTERN pp;
  pp.BuildFromDefinition(L"pat", pat);
  ExpectMirrored(pp.m_arrParam, pat.m_arrVariable);
  ASSERT_EQ(pp.m_arrSubDB.GetSize(), 3);  // two candles, then the line
  EXPECT_EQ(pp.m_arrSubDB[1].nKind, CProperty_PATTERN::kSubDBCandle);
  EXPECT_EQ(pp.m_arrSubDB[1].nValue4, 4);
  EXPECT_EQ(pp.m_arrSubDB[2].nKind, CProperty_PATTERN::kSubDBLine);
  EXPECT_EQ(pp.m_arrSubDB[2].nValue1, 9);
  EXPECT_EQ(pp.m_arrSubDB[2].nValue2, 0);

  CDBSubOPTIMIZE opt;
  CDBSubOPTIMIZE_VAR ov;
  ov.strText = L"Period"; ov.nValue = 2; ov.dValue1 = 5; ov.dValue2 = 60; ov.dValue3 = 5; ov.dValue4 = 20;
  opt.m_arrVariable.Add(ov);
  CDBSubOPTIMIZE_ELM oe;
  oe.nE01 = 1; oe.nE04 = 4;
  opt.m_arrElement.Add(oe);
  CProperty_OPTIMIZE po;
  po.m_arrPayoff.Add(CProperty_OPTIMIZE_Payoff());
  po.BuildFromDefinition(L"opt", opt);
  ASSERT_EQ(po.m_arrParam.GetSize(), 1);
  EXPECT_EQ(po.m_arrParam[0].strText, L"Period");
  EXPECT_EQ(po.m_arrParam[0].nValue, 2);
  EXPECT_EQ(po.m_arrParam[0].dValue2, 60.0);
  EXPECT_EQ(po.m_arrParam[0].dValue4, 20.0);
  ASSERT_EQ(po.m_arrSubDB.GetSize(), 1);
  EXPECT_EQ(po.m_arrSubDB[0].nE04, 4);
  EXPECT_EQ(po.m_arrPayoff.GetSize(), 0);  // results of an earlier run no longer apply
}

TEST(LogicProperty, ElementCopiesCarryEveryMember) {
  CProperty_INDICA_SubDB s;
  s.strE00 = L"\uC120";  // 선
  s.nE01 = 1; s.nE02 = 2; s.nE03 = 3; s.nE04 = 4; s.nE05 = 5; s.nE06 = 6; s.nE07 = 7;
  s.clrE08 = 8; s.clrE09 = 9; s.nE10 = 10; s.nE12 = 12; s.nE13 = 13; s.nShow = 0;
  CProperty_INDICA_SubDB t;
  t = s;
  EXPECT_EQ(t.strE00, L"\uC120");
  // All thirteen integers: 1+…+10 without 8 and 9 as colours, 12, 13, nShow 0.
  EXPECT_EQ(t.nE01 + t.nE02 + t.nE03 + t.nE04 + t.nE05 + t.nE06 + t.nE07 + t.nE10 + t.nE12 + t.nE13, 63);
  EXPECT_EQ(t.clrE08 + t.clrE09, 17u);
  EXPECT_EQ(t.nShow, 0);

  CProperty_EVENT_ELEMENT e;
  e.nEventType = 1; e.nCondition = 2; e.nElement = 3; e.nEnable = 4;
  e.strName = L"cross"; e.nSound = 5; e.strSoundFile = L"ding.wav"; e.nMessage = 6; e.strMessage = L"\uB3CC\uD30C";
  e.nRepeat = 7; e.dValue1 = 1.5; e.dValue2 = 2.5; e.dValue3 = 3.5;
  CProperty_EVENT_ELEMENT f(e);
  CProperty_EVENT_ELEMENT g;
  g = std::move(f);
  for (const CProperty_EVENT_ELEMENT* x : {&e, &g}) {
    EXPECT_EQ(x->strName, L"cross");
    EXPECT_EQ(x->strSoundFile, L"ding.wav");
    EXPECT_EQ(x->strMessage, L"\uB3CC\uD30C");
    EXPECT_EQ(x->nEventType + x->nCondition + x->nElement + x->nEnable + x->nSound + x->nMessage + x->nRepeat, 28);
    EXPECT_EQ(x->dValue1 + x->dValue2 + x->dValue3, 7.5);
  }

  CProperty_DATA_Binding b;
  b.nKind = 1; b.nDataType = 5; b.strSource = L"MA"; b.strElement = L"line0"; b.nElement = 0;
  CProperty_DATA_Binding c(std::move(b));
  EXPECT_EQ(c.strSource, L"MA");
  EXPECT_EQ(c.strElement, L"line0");
  EXPECT_EQ(c.nKind + c.nDataType + c.nElement, 6);
}
