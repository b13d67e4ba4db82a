// The block list behind the editor's line records: the same contents as a
// plain vector under any mix of edits, and an edit in the middle of a long
// list moves one block's records, not the list's.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "chartcore/script_editor/block_list.h"

namespace {

using chartcore::internal::BlockList;
constexpr std::size_t kBlock = BlockList<int>::kBlock;

template <class T>
std::vector<T> Contents(const BlockList<T>& list) {
  std::vector<T> out;
  for (std::size_t i = 0; i < list.size(); ++i) out.push_back(list[i]);
  return out;
}

std::vector<int> Range(int from, int count) {
  std::vector<int> v;
  for (int i = 0; i < count; ++i) v.push_back(from + i);
  return v;
}

// A record that counts how often records are moved or copied.
struct Counted {
  static long long moves;
  int value = 0;
  Counted() = default;
  explicit Counted(int v) : value(v) {}
  Counted(const Counted& o) : value(o.value) { ++moves; }
  Counted(Counted&& o) noexcept : value(o.value) { ++moves; }
  Counted& operator=(const Counted& o) {
    value = o.value;
    ++moves;
    return *this;
  }
  Counted& operator=(Counted&& o) noexcept {
    value = o.value;
    ++moves;
    return *this;
  }
};
long long Counted::moves = 0;

}  // namespace

TEST(BlockList, EditsAtBlockBoundariesKeepOrder) {
  BlockList<int> list;
  EXPECT_TRUE(list.empty());
  list.assign(Range(0, static_cast<int>(3 * kBlock)));  // three full blocks
  ASSERT_EQ(list.size(), 3 * kBlock);
  EXPECT_EQ(list[kBlock - 1], static_cast<int>(kBlock) - 1);  // last of block 0
  EXPECT_EQ(list[kBlock], static_cast<int>(kBlock));          // first of block 1

  // Filling block 1 to exactly twice the block size stays one block; one more
  // record splits it. Either way the order is the vector's.
  std::vector<int> expected = Contents(list);
  const std::vector<int> added = Range(-1000, static_cast<int>(kBlock));
  list.insert(kBlock, std::vector<int>(added));
  expected.insert(expected.begin() + kBlock, added.begin(), added.end());
  EXPECT_EQ(Contents(list), expected);
  list.insert(2 * kBlock, 1, 7);
  expected.insert(expected.begin() + 2 * kBlock, 7);
  EXPECT_EQ(Contents(list), expected);

  // A removal across three blocks, one that empties the list, then growth
  // from nothing at the end.
  list.erase(kBlock / 2, 3 * kBlock);
  expected.erase(expected.begin() + kBlock / 2, expected.begin() + 3 * kBlock);
  EXPECT_EQ(Contents(list), expected);
  list.erase(0, list.size());
  EXPECT_TRUE(list.empty());
  list.push_back(5);
  list.resize(3, 9);
  EXPECT_EQ(Contents(list), (std::vector<int>{5, 9, 9}));
  list.resize(1, 0);
  EXPECT_EQ(Contents(list), std::vector<int>{5});
  list.assign(2, 4);
  EXPECT_EQ(Contents(list), (std::vector<int>{4, 4}));
}

TEST(BlockList, RandomEditsMatchAVector) {
  // A fixed sequence of inserts and removals of every size at every kind of
  // position, checked against std::vector after each step (reading both
  // forwards and at random places, so the cursor is exercised too).
  std::uint32_t seed = 12345;
  const auto next = [&seed](std::uint32_t bound) {
    seed = seed * 1664525u + 1013904223u;
    return static_cast<std::size_t>((seed >> 8) % bound);
  };
  BlockList<std::string> list;
  std::vector<std::string> expected;
  int serial = 0;
  for (int step = 0; step < 3000; ++step) {
    const std::size_t size = expected.size();
    if (size == 0 || next(3) != 0) {
      const std::size_t pos = next(static_cast<std::uint32_t>(size + 1));
      const std::size_t count = next(4) == 0 ? next(3 * kBlock) + 1 : next(3) + 1;
      std::vector<std::string> items;
      for (std::size_t k = 0; k < count; ++k) items.push_back("line " + std::to_string(serial++));
      expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(pos), items.begin(), items.end());
      list.insert(pos, std::move(items));
    } else {
      const std::size_t first = next(static_cast<std::uint32_t>(size));
      const std::size_t last = first + 1 + next(static_cast<std::uint32_t>(next(4) == 0 ? size - first : 3)) % (size - first);
      expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(first),
                     expected.begin() + static_cast<std::ptrdiff_t>(last));
      list.erase(first, last);
    }
    ASSERT_EQ(list.size(), expected.size()) << "step " << step;
    for (int probe = 0; probe < 8 && !expected.empty(); ++probe) {
      const std::size_t i = next(static_cast<std::uint32_t>(expected.size()));
      ASSERT_EQ(list[i], expected[i]) << "step " << step << " index " << i;
    }
  }
  EXPECT_EQ(Contents(list), expected);
}

TEST(BlockList, AnEditInTheMiddleMovesOneBlock) {
  // A million records, as the lines of a long formula file: an insertion
  // and a removal in the middle move at most a block's worth of records
  // (twice the block size bounds a block), where a vector moves half a million.
  std::vector<Counted> records(1000000);
  BlockList<Counted> list;
  list.assign(std::move(records));
  Counted::moves = 0;
  std::vector<Counted> one(1);
  list.insert(500000, std::move(one));
  EXPECT_LE(Counted::moves, static_cast<long long>(2 * kBlock + 1));
  Counted::moves = 0;
  list.erase(500000, 500001);
  EXPECT_LE(Counted::moves, static_cast<long long>(2 * kBlock));
  // A paste of many lines moves its own records and one block's tail.
  Counted::moves = 0;
  list.insert(250000, std::vector<Counted>(5000));
  EXPECT_LE(Counted::moves, static_cast<long long>(5000 + 2 * kBlock));
  EXPECT_EQ(list.size(), 1005000u);
}
