// A sequence kept in blocks, for the per-line records of the text buffer and
// the view.
//
// A formula file may hold a million lines; with one flat array every Enter
// or joined line in its middle would move half a million records. Here the
// records sit in blocks of about a thousand, so an insertion or removal moves
// the records of one block and renumbers the block starts, whatever the
// length of the file. Reading by index finds the block by the last one used
// (reading line after line costs no search) or by binary search.
//
//   chartcore::internal::BlockList<DWORD> cookies;
//   cookies.assign(1000000, 0);
//   cookies.insert(500000, 1, 4);        // one block's records move
//   cookies.erase(10, 20);
//   DWORD c = cookies[499990];           // 4
#ifndef CHARTCORE_SCRIPT_EDITOR_BLOCK_LIST_H_
#define CHARTCORE_SCRIPT_EDITOR_BLOCK_LIST_H_

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

namespace chartcore {
namespace internal {

// BlockList: an indexable sequence of T with insertion and removal at any
// index in time proportional to a block (kBlock records) plus the number of
// blocks. Indexes outside 0 .. size() - 1 are the caller's error, as for a
// std::vector. Not for use from two threads at once (reads move a cursor).
template <class T>
class BlockList {
 public:
  // Blocks are filled with kBlock records; one that grows past 2 * kBlock is
  // split.
  static constexpr std::size_t kBlock = 1024;

  BlockList() = default;

  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }

  T& operator[](std::size_t i) {
    const std::size_t b = Find(i);
    return m_blocks[b][i - m_starts[b]];
  }
  const T& operator[](std::size_t i) const {
    const std::size_t b = Find(i);
    return m_blocks[b][i - m_starts[b]];
  }

  // clear: no records, and the blocks' memory released.
  void clear() {
    std::vector<Block>().swap(m_blocks);
    std::vector<std::size_t>().swap(m_starts);
    m_size = 0;
    m_cursor = 0;
  }

  // assign: the records of `items` (moved), in order.
  void assign(std::vector<T>&& items) {
    clear();
    insert(0, std::move(items));
  }
  // assign: n copies of value.
  void assign(std::size_t n, const T& value) {
    clear();
    insert(0, n, value);
  }
  // resize: cut to n records, or add copies of value at the end.
  void resize(std::size_t n, const T& value) {
    if (n < m_size) {
      erase(n, m_size);
    } else if (n > m_size) {
      insert(m_size, n - m_size, value);
    }
  }
  void push_back(T&& value) {
    std::vector<T> one;
    one.push_back(std::move(value));
    insert(m_size, std::move(one));
  }

  // insert: n copies of value before index pos (0 .. size()).
  void insert(std::size_t pos, std::size_t n, const T& value) {
    if (n != 0) insert(pos, std::vector<T>(n, value));
  }

  // insert: the records of `items` (moved) before index pos (0 .. size()).
  void insert(std::size_t pos, std::vector<T>&& items) {
    const std::size_t n = items.size();
    if (n == 0) return;
    if (m_blocks.empty()) {
      AppendChunks(m_blocks, items, 0, n);
      m_size = n;
      Renumber(0);
      return;
    }
    // Into the block holding pos, or at the end of the last block.
    std::size_t b = pos < m_size ? Find(pos) : m_blocks.size() - 1;
    std::size_t offset = pos - m_starts[b];
    Block& block = m_blocks[b];
    m_size += n;
    if (block.size() + n <= 2 * kBlock) {
      block.insert(block.begin() + static_cast<std::ptrdiff_t>(offset), std::make_move_iterator(items.begin()),
                   std::make_move_iterator(items.end()));
      for (std::size_t j = b + 1; j < m_starts.size(); ++j) m_starts[j] += n;
      return;
    }
    // Too many for one block: the block is cut at pos, the new records go in
    // fresh blocks between the two parts, and the tail joins the last of them
    // when it fits.
    std::vector<Block> fresh;
    AppendChunks(fresh, items, 0, n);
    Block& last = fresh.back();
    if (last.size() + (block.size() - offset) <= 2 * kBlock) {
      last.insert(last.end(), std::make_move_iterator(block.begin() + static_cast<std::ptrdiff_t>(offset)),
                  std::make_move_iterator(block.end()));
    } else {
      fresh.emplace_back(std::make_move_iterator(block.begin() + static_cast<std::ptrdiff_t>(offset)),
                         std::make_move_iterator(block.end()));
    }
    block.erase(block.begin() + static_cast<std::ptrdiff_t>(offset), block.end());
    std::size_t at = b + 1;
    if (block.empty()) {
      m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(b));
      at = b;
    }
    m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(at), std::make_move_iterator(fresh.begin()),
                    std::make_move_iterator(fresh.end()));
    Renumber(b == 0 ? 0 : b - 1);
  }

  // erase: removes the records of indexes first .. last - 1.
  void erase(std::size_t first, std::size_t last) {
    if (first >= last) return;
    const std::size_t b1 = Find(first);
    const std::size_t b2 = Find(last - 1);
    const std::size_t from = first - m_starts[b1];
    const std::size_t to = last - m_starts[b2];  // one past, within block b2
    m_size -= last - first;
    if (b1 == b2) {
      Block& block = m_blocks[b1];
      block.erase(block.begin() + static_cast<std::ptrdiff_t>(from), block.begin() + static_cast<std::ptrdiff_t>(to));
    } else {
      Block& head = m_blocks[b1];
      Block& tail = m_blocks[b2];
      head.erase(head.begin() + static_cast<std::ptrdiff_t>(from), head.end());
      tail.erase(tail.begin(), tail.begin() + static_cast<std::ptrdiff_t>(to));
      // Two small neighbours left behind become one block.
      if (head.size() + tail.size() <= kBlock) {
        head.insert(head.end(), std::make_move_iterator(tail.begin()), std::make_move_iterator(tail.end()));
        tail.clear();
      }
      m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(b1 + 1),
                     m_blocks.begin() + static_cast<std::ptrdiff_t>(b2));
    }
    // Blocks left empty go.
    const std::size_t check = std::min(b1 + 2, m_blocks.size());
    for (std::size_t j = check; j-- > b1;) {
      if (m_blocks[j].empty()) m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(j));
    }
    Renumber(b1 == 0 ? 0 : b1 - 1);
  }

 private:
  using Block = std::vector<T>;

  // Moves items[from, to) into blocks of kBlock records appended to out.
  static void AppendChunks(std::vector<Block>& out, std::vector<T>& items, std::size_t from, std::size_t to) {
    for (std::size_t at = from; at < to; at += kBlock) {
      const std::size_t end = std::min(to, at + kBlock);
      out.emplace_back(std::make_move_iterator(items.begin() + static_cast<std::ptrdiff_t>(at)),
                       std::make_move_iterator(items.begin() + static_cast<std::ptrdiff_t>(end)));
    }
  }

  // Recomputes the block starts from block `from` on.
  void Renumber(std::size_t from) {
    m_starts.resize(m_blocks.size());
    for (std::size_t j = from; j < m_blocks.size(); ++j)
      m_starts[j] = j == 0 ? 0 : m_starts[j - 1] + m_blocks[j - 1].size();
    m_cursor = 0;
  }

  // The block holding index i: the last one used, the one after it, or the
  // one a binary search over the starts finds.
  std::size_t Find(std::size_t i) const {
    if (m_cursor < m_blocks.size() && i >= m_starts[m_cursor] && i - m_starts[m_cursor] < m_blocks[m_cursor].size())
      return m_cursor;
    const std::size_t next = m_cursor + 1;
    if (next < m_blocks.size() && i >= m_starts[next] && i - m_starts[next] < m_blocks[next].size())
      return m_cursor = next;
    m_cursor = static_cast<std::size_t>(std::upper_bound(m_starts.begin(), m_starts.end(), i) - m_starts.begin()) - 1;
    return m_cursor;
  }

  std::vector<Block> m_blocks;
  std::vector<std::size_t> m_starts;  // index of each block's first record
  std::size_t m_size = 0;
  mutable std::size_t m_cursor = 0;  // the block the last read found
};

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_SCRIPT_EDITOR_BLOCK_LIST_H_
