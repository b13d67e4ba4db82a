#include "chartcore/logic/optimize.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
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
  fresh.Header(1).Ints({0, 1, 0, 1}).Dword(0x000000FF).Dword(0x00FF0000).Ints({0, 1, 1}).Str(L"").Ints({0, 0, -1});
  CDBSubOPTIMIZE o;
  EXPECT_EQ(Store(o), fresh.bytes);

  FillOptimize(o);
  ByteWriter w;
  w.Header(1).Ints({1, 2, 3, 4, 5, 6, 7, 8, 1}).Str(L"\uCD5C\uC801\uD654");
  w.Ints({1, 11, 12, 13, 14}).Str(L"net");
  w.Int(1).Str(L"Period").Int(1).Double(5).Double(60).Double(5).Double(20);
  w.Int(9);
  EXPECT_EQ(Store(o), w.bytes);
  EXPECT_EQ(testing_records::Reloaded<CDBSubOPTIMIZE>(w.bytes), w.bytes);
}

TEST(OptimizeArchive, VersionZeroGoesFromO03ToText3) {
  ByteWriter v0;
  v0.Header(0).Ints({1, 2, 3}).Str(L"t3").Ints({0, 0, 6});
  CDBSubOPTIMIZE fresh;
  Load(v0.bytes, fresh);
  // Constructor values stand for the six absent fields: the fresh record
  // writes them back as version 1.
  ByteWriter v1;
  v1.Header(1).Ints({1, 2, 3, 1}).Dword(0x000000FF).Dword(0x00FF0000).Ints({0, 1, 1}).Str(L"t3").Ints({0, 0, 6});
  EXPECT_EQ(Store(fresh), v1.bytes);

  CDBSubOPTIMIZE used;
  used.nO04 = 40;
  used.nO09 = 90;
  Load(v0.bytes, used);
  EXPECT_EQ(used.nO04, 40);  // absent fields keep what the record held
  EXPECT_EQ(used.nO09, 90);
}

TEST(OptimizeCopy, CopyDataBaseClearsO09AndCopiesTheRest) {
  CDBSubOPTIMIZE src;
  FillOptimize(src);
  CDBSubOPTIMIZE dst;
  for (int i = 0; i < 4; ++i) dst.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  dst.CopyDataBase(&src);
  EXPECT_EQ(dst.nO09, 0);
  src.nO09 = 0;  // with that one field equal, the copies write the same bytes
  EXPECT_EQ(Store(dst), Store(src));
}
