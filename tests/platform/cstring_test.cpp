#include "chartcore/platform/cstring.h"

#include <cwchar>

#include <gtest/gtest.h>

#include "chartcore/platform/exceptions.h"

TEST(CStringSearch, FindWithStartAndReverseFind) {
  const CString s(L"abcabc");
  EXPECT_EQ(s.Find(L"bc"), 1);
  EXPECT_EQ(s.Find(L"bc", 2), 4);  // the start is honoured
  EXPECT_EQ(s.Find(L"bc", 5), -1);
  EXPECT_EQ(s.Find(L"bc", 6), -1);  // start at the end
  EXPECT_EQ(s.Find(L"bc", -1), -1);
  EXPECT_EQ(s.Find(L'c', 3), 5);
  EXPECT_EQ(s.Find(L'c', 6), -1);
  EXPECT_EQ(s.Find(L"zz"), -1);
  EXPECT_EQ(s.ReverseFind(L'a'), 3);
  EXPECT_EQ(s.ReverseFind(L'z'), -1);
  EXPECT_EQ(s.FindOneOf(L"xc"), 2);
}

TEST(CStringExtract, LeftMidRightClamp) {
  const CString s(L"hello");
  EXPECT_EQ(s.Left(2), L"he");
  EXPECT_EQ(s.Left(-1), L"");
  EXPECT_EQ(s.Left(99), L"hello");
  EXPECT_EQ(s.Mid(1, 3), L"ell");
  EXPECT_EQ(s.Mid(3), L"lo");
  EXPECT_EQ(s.Mid(-2, 2), L"he");  // a negative start counts from 0
  EXPECT_EQ(s.Mid(4, 10), L"o");
  EXPECT_EQ(s.Mid(5), L"");
  EXPECT_EQ(s.Mid(9, 1), L"");
  EXPECT_EQ(s.Mid(1, -3), L"");
  EXPECT_EQ(s.Right(3), L"llo");
  EXPECT_EQ(s.Right(0), L"");
  EXPECT_EQ(s.Right(99), L"hello");
  EXPECT_EQ(s.SpanIncluding(L"leh"), L"hell");
  EXPECT_EQ(s.SpanExcluding(L"lo"), L"he");
  // Tokenize skips leading delimiters and ends with start = -1.
  const CString list(L";a;;b;");
  int pos = 0;
  EXPECT_EQ(list.Tokenize(L";", pos), L"a");
  EXPECT_EQ(list.Tokenize(L";", pos), L"b");
  EXPECT_EQ(list.Tokenize(L";", pos), L"");
  EXPECT_EQ(pos, -1);
}

TEST(CStringEdit, InsertDeleteReplaceRemoveTrim) {
  CString s(L"abc");
  EXPECT_EQ(s.Insert(99, L"XY"), 5);  // past the end appends
  EXPECT_EQ(s, L"abcXY");
  EXPECT_EQ(s.Insert(-3, L'_'), 6);  // before the start prepends
  EXPECT_EQ(s, L"_abcXY");
  EXPECT_EQ(s.Delete(1, 2), 4);
  EXPECT_EQ(s, L"_cXY");
  EXPECT_EQ(s.Delete(3, 10), 3);  // the count is clamped
  EXPECT_EQ(s.Delete(10, 1), 3);  // an index past the end removes nothing
  EXPECT_EQ(s.Delete(0, -1), 3);
  EXPECT_EQ(s, L"_cX");
  CString r(L"aaaa");
  EXPECT_EQ(r.Replace(L"aa", L"b"), 2);  // occurrences do not overlap
  EXPECT_EQ(r, L"bb");
  EXPECT_EQ(r.Replace(L"", L"x"), 0);
  EXPECT_EQ(r.Replace(L"b", nullptr), 2);
  EXPECT_TRUE(r.IsEmpty());
  CString c(L"a-b-c");
  EXPECT_EQ(c.Replace(L'-', L'+'), 2);
  EXPECT_EQ(c.Remove(L'+'), 2);
  EXPECT_EQ(c, L"abc");
  CString t(L" \t\x3000" L"x y\r\n ");
  EXPECT_EQ(t.Trim(), L"x y");  // Unicode blanks too (U+3000)
  CString u(L"xxhixyx");
  EXPECT_EQ(u.Trim(L"xy"), L"hi");
  CString v(L"--a--");
  EXPECT_EQ(v.TrimLeft(L'-'), L"a--");
  EXPECT_EQ(v.TrimRight(L'-'), L"a");
  CString w(L"MiXed \xC4");
  EXPECT_EQ(w.MakeUpper(), L"MIXED \xC4");
  EXPECT_EQ(w.MakeLower(), L"mixed \xE4");
}

TEST(CStringBuffer, GetBufferReleaseBufferAndAt) {
  CString s(L"abc");
  wchar_t* p = s.GetBuffer(10);
  std::wcscpy(p, L"hello");
  s.ReleaseBuffer();  // up to the first terminator
  EXPECT_EQ(s, L"hello");
  p = s.GetBuffer(0);
  p[1] = L'E';
  s.ReleaseBuffer(3);  // an explicit length cuts
  EXPECT_EQ(s, L"hEl");
  p = s.GetBufferSetLength(2);
  EXPECT_EQ(s.GetLength(), 2);
  s.ReleaseBuffer();
  EXPECT_EQ(s, L"hE");
  EXPECT_EQ(s.GetAt(1), L'E');
  EXPECT_THROW(s.GetAt(2), CInvalidArgException);
  EXPECT_THROW(s.GetAt(-1), CInvalidArgException);
  EXPECT_THROW(s.SetAt(5, L'x'), CInvalidArgException);
  s.SetAt(0, L'H');
  EXPECT_EQ(s, L"HE");
}

TEST(CStringCompare, CaseAndOrder) {
  const CString s(L"Apple");
  EXPECT_EQ(s.Compare(L"Apple"), 0);
  EXPECT_LT(s.Compare(L"apple"), 0);  // by code unit: 'A' < 'a'
  EXPECT_EQ(s.CompareNoCase(L"aPPLE"), 0);
  EXPECT_LT(s.CompareNoCase(L"apples"), 0);
  EXPECT_GT(s.CompareNoCase(nullptr), 0);
  EXPECT_LT(CString(L"a_").CompareNoCase(L"aB"), 0);  // folds to lower case: '_' < 'b'
  EXPECT_EQ(CString(L"\xC4x").CompareNoCase(L"\xE4X"), 0);
  EXPECT_TRUE(L"Apple" == s);
  EXPECT_TRUE(s != CString(L"apple"));
  EXPECT_TRUE(s < CString(L"B"));
  EXPECT_EQ(L"[" + s + L']', L"[Apple]");
  EXPECT_EQ(CString(L"ab\0cd", 5).GetLength(), 5);  // a counted copy keeps embedded NULs
  EXPECT_EQ(CString(L'x', 3), L"xxx");
  EXPECT_EQ(CString(static_cast<const wchar_t*>(nullptr)), L"");
}
