#include "chartcore/logic/optimize.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Load;
using testing_records::Store;

namespace {

// An optimisation file by hand: nine settings, Korean text 3, one element,
// one variable with its four values.
ByteWriter OptimizeFile() {
  ByteWriter w;
  w.Header(1).Ints({1, 2, 3, 4, 5, 6, 7, 8, 1}).Str(L"\uCD5C\uC801\uD654");  // 최적화
  w.Ints({1, 11, 12, 13, 14}).Str(L"net");
  w.Int(1).Str(L"Period").Int(1).Double(5).Double(60).Double(5).Double(20);
  return w.Int(9);
}

}  // namespace

TEST(OptimizeArchive, FreshAndFilledRecordsWriteExactBytes) {
  ByteWriter fresh;
  fresh.Header(1).Ints({0, 1, 0, 1}).Dword(0x000000FF).Dword(0x00FF0000).Ints({0, 1, 1}).Str(L"").Ints({0, 0, -1});
  CDBSubOPTIMIZE o;
  EXPECT_EQ(Store(o), fresh.bytes);

  const ByteWriter w = OptimizeFile();
  Load(w.bytes, o);
  EXPECT_EQ(o.clrO06, 6u);
  ASSERT_EQ(o.m_arrElement.GetSize() + o.m_arrVariable.GetSize(), 2);
  EXPECT_EQ(o.m_arrElement[0].strE05, L"net");
  EXPECT_EQ(o.m_arrVariable[0].dValue2 * 100 + o.m_arrVariable[0].dValue4, 6020.0);
  EXPECT_EQ(Store(o), w.bytes);
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
  Load(OptimizeFile().bytes, src);
  CDBSubOPTIMIZE dst;
  for (int i = 0; i < 4; ++i) dst.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  dst.CopyDataBase(&src);
  EXPECT_EQ(dst.nO09, 0);
  src.nO09 = 0;  // with that one field equal, the copies write the same bytes
  EXPECT_EQ(Store(dst), Store(src));
}
