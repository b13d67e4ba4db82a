#include "chartcore/logic/optimize.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Load;
using testing_records::Store;

namespace {

void FillOptimize(CDBSubOPTIMIZE& o) {
  o.nO01 = 1; o.nO02 = 2; o.nO03 = 3; o.nO04 = 4; o.clrO05 = 5; o.clrO06 = 6; o.nO07 = 7; o.nO08 = 8; o.nO09 = 1;
  o.m_strText3 = L"\uCD5C\uC801\uD654";  // 최적화
  CDBSubOPTIMIZE_ELM e;
  e.nE01 = 11; e.nE02 = 12; e.nE03 = 13; e.nE04 = 14; e.strE05 = L"net";
  o.m_arrElement.Add(e);
  CDBSubOPTIMIZE_VAR v;
  v.strText = L"Period"; v.nValue = 1; v.dValue1 = 5; v.dValue2 = 60; v.dValue3 = 5; v.dValue4 = 20;
  o.m_arrVariable.Add(v);
  o.nTail = 9;
}

}  // namespace

TEST(OptimizeArchive, FreshAndFilledRecordsWriteExactBytes) {
  ByteWriter fresh;
  fresh.Header(1).Int(0).Int(1).Int(0).Int(1).Dword(0x000000FF).Dword(0x00FF0000).Int(0).Int(1).Int(1);
  fresh.Str(L"").Int(0).Int(0).Int(-1);
  CDBSubOPTIMIZE o;
  EXPECT_EQ(Store(o), fresh.bytes);

  FillOptimize(o);
  ByteWriter w;
  w.Header(1).Int(1).Int(2).Int(3).Int(4).Dword(5).Dword(6).Int(7).Int(8).Int(1).Str(L"\uCD5C\uC801\uD654");
  w.Int(1).Int(11).Int(12).Int(13).Int(14).Str(L"net");
  w.Int(1).Str(L"Period").Int(1).Double(5).Double(60).Double(5).Double(20);
  w.Int(9);
  EXPECT_EQ(Store(o), w.bytes);
  CDBSubOPTIMIZE back;
  Load(w.bytes, back);
  EXPECT_EQ(back.m_arrVariable[0].dValue4, 20.0);
  EXPECT_EQ(back.m_arrElement[0].strE05, L"net");
  EXPECT_EQ(Store(back), w.bytes);
}

TEST(OptimizeArchive, VersionZeroGoesFromO03ToText3) {
  ByteWriter v0;
  v0.Header(0).Int(1).Int(2).Int(3).Str(L"t3").Int(0).Int(0).Int(6);
  CDBSubOPTIMIZE fresh;
  Load(v0.bytes, fresh);
  EXPECT_EQ(fresh.nO03, 3);
  EXPECT_EQ(fresh.nO04, 1);
  EXPECT_EQ(fresh.clrO05, 0x000000FFu);
  EXPECT_EQ(fresh.clrO06, 0x00FF0000u);
  EXPECT_EQ(fresh.nO07, 0);
  EXPECT_EQ(fresh.nO08, 1);
  EXPECT_EQ(fresh.nO09, 1);
  EXPECT_EQ(fresh.m_strText3, L"t3");
  EXPECT_EQ(fresh.nTail, 6);

  CDBSubOPTIMIZE used;
  used.nO04 = 40;
  used.nO09 = 90;
  Load(v0.bytes, used);
  EXPECT_EQ(used.nO04, 40);  // absent fields keep what the record held
  EXPECT_EQ(used.nO09, 90);
  EXPECT_EQ(Store(used).size(), v0.bytes.size() + 24);  // six fields more when written back
}

TEST(OptimizeCopy, CopyDataBaseClearsO09AndCopiesTheRest) {
  CDBSubOPTIMIZE src;
  FillOptimize(src);
  CDBSubOPTIMIZE dst;
  for (int i = 0; i < 4; ++i) dst.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  dst.CopyDataBase(&src);
  EXPECT_EQ(dst.nO09, 0);
  EXPECT_EQ(dst.nO08, 8);
  EXPECT_EQ(dst.m_arrElement.GetSize(), 1);
  EXPECT_EQ(dst.m_arrVariable.GetSize(), 1);
  src.nO09 = 0;  // with that one field equal, the copies write the same bytes
  EXPECT_EQ(Store(dst), Store(src));
}
