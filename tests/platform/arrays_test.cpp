// CArray and the named arrays: the framework's index rules, growth, and
// element lifetimes.
#include "chartcore/platform/arrays.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

// Counts live instances, to prove every constructed element is destroyed.
struct Tracked {
  static int live;
  int value = 0;
  Tracked() { ++live; }
  Tracked(int v) : value(v) { ++live; }  // NOLINT: implicit on purpose
  Tracked(const Tracked& o) : value(o.value) { ++live; }
  Tracked& operator=(const Tracked&) = default;
  ~Tracked() { --live; }
};
int Tracked::live = 0;

}  // namespace

TEST(CArraySemantics, GrowingAddsValueInitialisedElements) {
  CArray<int, int> a;
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(a.GetUpperBound(), -1);
  EXPECT_EQ(a.GetData(), nullptr);  // nothing allocated yet
  EXPECT_EQ(a.Add(5), 0);
  EXPECT_EQ(a.Add(6), 1);
  a.SetAtGrow(4, 9);  // gap 2..3 is zero
  ASSERT_EQ(a.GetSize(), 5);
  EXPECT_EQ(a[2], 0);
  EXPECT_EQ(a[3], 0);
  EXPECT_EQ(a.GetAt(4), 9);
  a.SetSize(7);
  EXPECT_EQ(a[6], 0);
  a.SetSize(2);
  EXPECT_EQ(a.GetCount(), 2);
  a.SetSize(4);  // regrown slots are zero again, not the old 0/9
  EXPECT_EQ(a[3], 0);

  CStringArray names;
  names.SetSize(2);
  EXPECT_TRUE(names[1].IsEmpty());
  names.SetAtGrow(3, L"FUNCT");
  EXPECT_TRUE(names[2].IsEmpty());
  EXPECT_TRUE(names[3] == L"FUNCT");
  EXPECT_EQ(names.Add(names[3]), 4);  // an element of the array itself, across a regrowth
  EXPECT_TRUE(names[4] == L"FUNCT");

  // A self-referencing SetAtGrow that must reallocate.
  CStringArray one;
  one.Add(L"x");
  one.FreeExtra();
  one.SetAtGrow(10, one[0]);
  EXPECT_TRUE(one[10] == L"x");
  EXPECT_TRUE(one[5].IsEmpty());
}

TEST(CArraySemantics, OutOfRangeAndBadCountsThrow) {
  CArray<double> a;
  EXPECT_THROW(a.GetAt(0), CInvalidArgException);
  a.Add(1.0);
  a.Add(2.0);
  EXPECT_THROW(a[2], CInvalidArgException);
  EXPECT_THROW(a[-1], CInvalidArgException);
  EXPECT_THROW(a.ElementAt(2), CInvalidArgException);
  EXPECT_THROW(a.SetAt(2, 0.0), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(2), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(-1), CInvalidArgException);
  EXPECT_THROW(a.RemoveAt(1, 2), CInvalidArgException);  // runs past the end
  EXPECT_THROW(a.RemoveAt(0, -1), CInvalidArgException);
  EXPECT_THROW(a.InsertAt(-1, 0.0), CInvalidArgException);
  EXPECT_THROW(a.InsertAt(0, 0.0, 0), CInvalidArgException);
  EXPECT_THROW(a.InsertAt(0, static_cast<const CArray<double>*>(nullptr)), CInvalidArgException);
  EXPECT_THROW(a.SetAtGrow(-1, 0.0), CInvalidArgException);
  EXPECT_THROW(a.SetSize(-1), CInvalidArgException);
  a.RemoveAt(1, 0);  // a count of 0 removes nothing
  EXPECT_EQ(a.GetSize(), 2);
  const CArray<double>& c = a;
  EXPECT_THROW(c[5], CInvalidArgException);
  EXPECT_EQ(c[1], 2.0);
}

TEST(CArraySemantics, InsertRemoveAppendCopy) {
  CArray<int, int> a;
  for (int i = 0; i < 5; ++i) a.Add(i);  // 0 1 2 3 4
  a.InsertAt(2, 9, 3);                     // 0 1 9 9 9 2 3 4
  ASSERT_EQ(a.GetSize(), 8);
  EXPECT_EQ(a[1], 1);
  EXPECT_EQ(a[4], 9);
  EXPECT_EQ(a[5], 2);
  a.RemoveAt(2, 3);  // back to 0 1 2 3 4
  EXPECT_EQ(a[2], 2);
  a.InsertAt(7, 8, 2);  // past the end: 5, 6 zero, then 8 8
  ASSERT_EQ(a.GetSize(), 9);
  EXPECT_EQ(a[5], 0);
  EXPECT_EQ(a[7], 8);
  EXPECT_EQ(a[8], 8);
  a.InsertAt(a.GetSize(), 1);  // at the end appends
  EXPECT_EQ(a[9], 1);

  CArray<int, int> b;
  b.Add(100);
  b.Add(200);
  EXPECT_EQ(a.Append(b), 10);  // where the appended part starts
  EXPECT_EQ(a[11], 200);
  EXPECT_EQ(b.Append(b), 2);  // self-append doubles
  EXPECT_EQ(b.GetSize(), 4);
  EXPECT_EQ(b[3], 200);
  a.InsertAt(1, &b);  // 0 100 200 100 200 1 ...
  EXPECT_EQ(a[1], 100);
  EXPECT_EQ(a[4], 200);
  EXPECT_EQ(a[5], 1);
  b.InsertAt(0, &b);  // self-insert
  EXPECT_EQ(b.GetSize(), 8);

  a.Copy(b);
  EXPECT_EQ(a.GetSize(), 8);
  EXPECT_EQ(a[7], 200);
  CArray<int, int> empty;
  a.Copy(empty);
  EXPECT_TRUE(a.IsEmpty());
}

TEST(CArraySemantics, CopiesAreDeepAndMovesEmptyTheSource) {
  CStringArray a;
  a.Add(L"one");
  a.Add(L"two");
  CStringArray copy(a);
  copy[0] = L"changed";
  EXPECT_TRUE(a[0] == L"one");
  CStringArray assigned;
  assigned.Add(L"old");
  assigned = a;
  EXPECT_EQ(assigned.GetSize(), 2);
  CStringArray& alias = assigned;
  assigned = alias;  // self-assignment keeps the elements
  EXPECT_TRUE(assigned[1] == L"two");
  CStringArray moved(std::move(a));
  EXPECT_EQ(moved.GetSize(), 2);
  EXPECT_EQ(a.GetSize(), 0);  // NOLINT: moved-from is empty by contract
  a = std::move(moved);
  EXPECT_TRUE(a[1] == L"two");
  int n = 0;
  for (const CString& s : a) n += s.GetLength();
  EXPECT_EQ(n, 6);
}

TEST(CArraySemantics, StorageIsExactForSetSizeAndGeometricForAdd) {
  CArray<int, int> a;
  a.SetSize(1000);
  const int* first = a.GetData();
  a.SetSize(1000);
  EXPECT_EQ(a.GetData(), first);  // same size: no reallocation
  a.SetSize(10);
  EXPECT_EQ(a.GetData(), first);  // shrinking keeps the block
  a.FreeExtra();
  EXPECT_NE(a.GetData(), nullptr);
  a.RemoveAll();
  EXPECT_EQ(a.GetData(), nullptr);

  // One million Adds reallocate only a few dozen times.
  int reallocations = 0;
  const int* last = nullptr;
  for (int i = 0; i < 1000000; ++i) {
    a.Add(i);
    if (a.GetData() != last) {
      ++reallocations;
      last = a.GetData();
    }
  }
  EXPECT_LT(reallocations, 60);
  EXPECT_EQ(a[999999], 999999);
}

TEST(CArraySemantics, EveryElementIsDestroyed) {
  Tracked::live = 0;
  {
    CArray<Tracked> a;
    a.SetSize(10);
    a.Add(Tracked(3));
    a.InsertAt(2, Tracked(4), 5);
    a.RemoveAt(0, 3);
    CArray<Tracked> b(a);
    b.Append(a);
    a.SetSize(2);
    a.FreeExtra();
    b.Copy(a);
    EXPECT_EQ(Tracked::live, 4);  // 2 in a, 2 in b
  }
  EXPECT_EQ(Tracked::live, 0);
}
