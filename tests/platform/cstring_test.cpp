#include "chartcore/platform/cstring.h"

#include <cwchar>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/platform/exceptions.h"

TEST(CStringSearch, FindWithStartAndReverseFind) {
  const CString s(L"abcabc");
  // The start is honoured; a start at or past the end, or before 0, finds nothing.
  EXPECT_EQ((std::vector<int>{s.Find(L"bc"), s.Find(L"bc", 2), s.Find(L"bc", 5), s.Find(L"bc", 6), s.Find(L"bc", -1),
                              s.Find(L"zz")}),
            (std::vector<int>{1, 4, -1, -1, -1, -1}));
  EXPECT_EQ((std::vector<int>{s.Find(L'c', 3), s.Find(L'c', 6), s.ReverseFind(L'a'), s.ReverseFind(L'z'),
                              s.FindOneOf(L"xc")}),
            (std::vector<int>{5, -1, 3, -1, 2}));
}

TEST(CStringExtract, LeftMidRightClamp) {
  const CString s(L"hello");
  const CString sep(L"|");
  EXPECT_EQ(s.Left(2) + sep + s.Left(-1) + sep + s.Left(99), L"he||hello");
  // A negative start counts from 0; a negative count takes nothing.
  EXPECT_EQ(s.Mid(1, 3) + sep + s.Mid(3) + sep + s.Mid(-2, 2) + sep + s.Mid(4, 10) + sep + s.Mid(5) + sep +
                s.Mid(9, 1) + sep + s.Mid(1, -3),
            L"ell|lo|he|o|||");
  EXPECT_EQ(s.Right(3) + sep + s.Right(0) + sep + s.Right(99), L"llo||hello");
  EXPECT_EQ(s.SpanIncluding(L"leh") + sep + s.SpanExcluding(L"lo"), L"hell|he");
  // Tokenize skips leading delimiters and ends with start = -1.
  const CString list(L";a;;b;");
  int pos = 0;
  EXPECT_EQ(list.Tokenize(L";", pos), L"a");
  EXPECT_EQ(list.Tokenize(L";", pos), L"b");
  EXPECT_EQ(list.Tokenize(L";", pos), L"");
  EXPECT_EQ(pos, -1);
}

TEST(CStringEdit, InsertDeleteReplaceRemoveTrim) {
  // Insert past the end appends, before the start prepends; Delete clamps its
  // count and removes nothing past the end or for a negative count.
  CString s(L"abc");
  EXPECT_EQ((std::vector<int>{s.Insert(99, L"XY"), s.Insert(-3, L'_'), s.Delete(1, 2)}), (std::vector<int>{5, 6, 4}));
  EXPECT_EQ(s, L"_cXY");
  EXPECT_EQ((std::vector<int>{s.Delete(3, 10), s.Delete(10, 1), s.Delete(0, -1)}), (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(s, L"_cX");
  // Occurrences do not overlap; an empty pattern replaces nothing.
  CString r(L"aaaa");
  EXPECT_EQ((std::vector<int>{r.Replace(L"aa", L"b"), r.Replace(L"", L"x"), r.Replace(L"b", nullptr)}),
            (std::vector<int>{2, 0, 2}));
  EXPECT_TRUE(r.IsEmpty());
  CString c(L"a-b-c");
  EXPECT_EQ((std::vector<int>{c.Replace(L'-', L'+'), c.Remove(L'+')}), (std::vector<int>{2, 2}));
  EXPECT_EQ(c, L"abc");
  // Trim takes Unicode blanks too (U+3000); MakeUpper and MakeLower map
  // beyond ASCII.
  CString t(L" \t\x3000" L"x y\r\n "), u(L"xxhixyx"), v(L"--a--"), w(L"MiXed \xC4");
  EXPECT_EQ((std::vector<CString>{t.Trim(), u.Trim(L"xy"), v.TrimLeft(L'-'), v.TrimRight(L'-'), w.MakeUpper(),
                                  w.MakeLower()}),
            (std::vector<CString>{L"x y", L"hi", L"a--", L"a", L"MIXED \xC4", L"mixed \xE4"}));
}

TEST(CStringBuffer, GetBufferReleaseBufferAndAt) {
  CString s(L"abc");
  std::wcscpy(s.GetBuffer(10), L"hello");
  s.ReleaseBuffer();  // up to the first terminator
  EXPECT_EQ(s, L"hello");
  s.GetBuffer(0)[1] = L'E';
  s.ReleaseBuffer(3);  // an explicit length cuts
  EXPECT_EQ(s, L"hEl");
  s.GetBufferSetLength(2);
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
