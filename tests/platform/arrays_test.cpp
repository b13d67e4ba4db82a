// CArray and the named arrays: the framework's index rules, growth, and
// element lifetimes.
#include "chartcore/platform/arrays.h"

#include <functional>
#include <iterator>
#include <utility>
#include <vector>

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

template <class T, class A>
std::vector<T> Items(const CArray<T, A>& a) {
  return std::vector<T>(a.begin(), a.end());
}

}  // namespace

TEST(CArraySemantics, GrowingAddsValueInitialisedElements) {
  CArray<int, int> a;
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(a.GetUpperBound(), -1);
  EXPECT_EQ(a.GetData(), nullptr);  // nothing allocated yet
  EXPECT_EQ(a.Add(5), 0);
  EXPECT_EQ(a.Add(6), 1);
  a.SetAtGrow(4, 9);  // the gap is zero
  EXPECT_EQ(Items(a), (std::vector<int>{5, 6, 0, 0, 9}));
  a.SetSize(7);
  EXPECT_EQ(a[6], 0);
  a.SetSize(2);
  EXPECT_EQ(a.GetCount(), 2);
  a.SetSize(4);  // regrown slots are zero again, not the old 0/9
  EXPECT_EQ(Items(a), (std::vector<int>{5, 6, 0, 0}));

  CStringArray names;
  names.SetSize(2);
  names.SetAtGrow(3, L"FUNCT");
  EXPECT_EQ(names.Add(names[3]), 4);  // an element of the array itself, across a regrowth
  EXPECT_EQ(Items(names), (std::vector<CString>{L"", L"", L"", L"FUNCT", L"FUNCT"}));
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
  const CArray<double>& c = a;
  const std::function<void()> bad[] = {
      [&] { a[2]; },          [&] { a[-1]; },          [&] { a.ElementAt(2); },  [&] { a.SetAt(2, 0.0); },
      [&] { a.RemoveAt(2); }, [&] { a.RemoveAt(-1); }, [&] { a.RemoveAt(0, -1); },
      [&] { a.RemoveAt(1, 2); },  // runs past the end
      [&] { a.InsertAt(-1, 0.0); }, [&] { a.InsertAt(0, 0.0, 0); },
      [&] { a.InsertAt(0, static_cast<const CArray<double>*>(nullptr)); },
      [&] { a.SetAtGrow(-1, 0.0); }, [&] { a.SetSize(-1); }, [&] { c[5]; },
  };
  for (size_t i = 0; i < std::size(bad); ++i) EXPECT_THROW(bad[i](), CInvalidArgException) << i;
  a.RemoveAt(1, 0);  // a count of 0 removes nothing
  EXPECT_EQ(Items(a), (std::vector<double>{1.0, 2.0}));
}

TEST(CArraySemantics, InsertRemoveAppendCopy) {
  CArray<int, int> a;
  for (int i = 0; i < 5; ++i) a.Add(i);
  a.InsertAt(2, 9, 3);
  EXPECT_EQ(Items(a), (std::vector<int>{0, 1, 9, 9, 9, 2, 3, 4}));
  a.RemoveAt(2, 3);
  a.InsertAt(7, 8, 2);         // past the end: the gap is zero
  a.InsertAt(a.GetSize(), 1);  // at the end appends
  EXPECT_EQ(Items(a), (std::vector<int>{0, 1, 2, 3, 4, 0, 0, 8, 8, 1}));

  CArray<int, int> b;
  b.Add(100);
  b.Add(200);
  EXPECT_EQ(a.Append(b), 10);  // where the appended part starts
  EXPECT_EQ(b.Append(b), 2);   // self-append doubles
  a.InsertAt(1, &b);
  EXPECT_EQ(Items(a), (std::vector<int>{0, 100, 200, 100, 200, 1, 2, 3, 4, 0, 0, 8, 8, 1, 100, 200}));
  b.InsertAt(0, &b);  // self-insert
  EXPECT_EQ(Items(b), (std::vector<int>{100, 200, 100, 200, 100, 200, 100, 200}));
  a.Copy(b);
  EXPECT_EQ(Items(a), Items(b));
  a.Copy(CArray<int, int>());
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
  CStringArray& alias = assigned;
  assigned = alias;  // self-assignment keeps the elements
  EXPECT_EQ(Items(assigned), Items(a));
  CStringArray moved(std::move(a));
  EXPECT_EQ(moved.GetSize(), 2);
  EXPECT_EQ(a.GetSize(), 0);  // NOLINT: moved-from is empty by contract
  a = std::move(moved);
  EXPECT_EQ(Items(a), (std::vector<CString>{L"one", L"two"}));
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
