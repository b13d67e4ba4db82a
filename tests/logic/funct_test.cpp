#include "chartcore/logic/funct.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Store;

TEST(FunctArchive, HoldsHeaderOneIntegerAndTwoTexts) {
  CDBSubFUNCT fn;
  ByteWriter fresh;
  fresh.Header(0).Int(0).Str(L"").Str(L"");
  EXPECT_EQ(Store(fn), fresh.bytes);
  EXPECT_EQ(fresh.bytes.size(), 36u);  // header 24, integer 4, two empty texts 8

  fn.m_strText1 = L"\uC911\uAC04\uAC12";  // 중간값
  fn.nU01 = 2;
  fn.m_strText3 = L"Value = (H + L) / 2;";
  fn.m_strText4 = L"\uACE0\uAC00\uC640 \uC800\uAC00\uC758 \uC911\uAC04";
  ByteWriter w;
  w.Header(0, L"\uC911\uAC04\uAC12").Int(2).Str(L"Value = (H + L) / 2;");
  w.Str(L"\uACE0\uAC00\uC640 \uC800\uAC00\uC758 \uC911\uAC04");
  EXPECT_EQ(Store(fn), w.bytes);

  // The leading version is not used: any number reads the same record and
  // writes version 0 back. A copy takes every field.
  EXPECT_EQ(testing_records::Reloaded<CDBSubFUNCT>(testing_records::WithVersion(w.bytes, 0x7F)), w.bytes);
  CDBSubFUNCT copy;
  copy.CopyDataBase(&fn);
  EXPECT_EQ(Store(copy), w.bytes);
}
