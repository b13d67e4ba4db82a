// Fuzzes the script line parser: random lines (UTF-16 code units) with random
// incoming cookies and script modes. The block list must fit the buffer the
// view sizes by 3 * length + 8, positions must never decrease and must stay
// within the line, and the cookie must not depend on whether blocks are asked.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "chartcore/script_editor/script_words.h"

namespace {

struct Block {
  int m_nCharPos;
  int m_nColorIndex;
};

const chartcore::internal::NoCaseWordIndex& UserFunctions() {
  static const chartcore::internal::NoCaseWordIndex index = [] {
    chartcore::internal::NoCaseWordIndex ix;
    ix.Add(L"MyAvg", 5, 1);
    ix.Add(L"나의함수", 4, 1);
    return ix;
  }();
  return index;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  // First byte: cookie bits and mode; the rest: the line, two bytes a unit.
  const DWORD cookie = data[0] & 0x1F;
  const int mode = (data[0] >> 5) & 3;
  std::vector<wchar_t> line;
  for (std::size_t i = 1; i + 1 < size; i += 2) line.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));
  const int n = static_cast<int>(line.size());
  std::vector<Block> blocks(static_cast<std::size_t>(3 * n + 8));
  int count = 0;
  const DWORD next = chartcore::internal::ParseScriptLine(cookie, line.data(), n, blocks.data(), count, mode,
                                                          &UserFunctions());
  if (count < 0 || count > 3 * n + 8) std::abort();
  for (int i = 0; i < count; ++i) {
    const Block& b = blocks[static_cast<std::size_t>(i)];
    if (b.m_nCharPos < 0 || b.m_nCharPos > n) std::abort();
    if (i > 0 && b.m_nCharPos < blocks[static_cast<std::size_t>(i - 1)].m_nCharPos) std::abort();
    if (b.m_nColorIndex < 2 || b.m_nColorIndex > 16) std::abort();
  }
  if (next & ~static_cast<DWORD>(0x1F)) std::abort();
  int none = 0;
  if (chartcore::internal::ParseScriptLine<Block>(cookie, line.data(), n, nullptr, none, mode, &UserFunctions()) !=
          next ||
      none != 0) {
    std::abort();
  }
  return 0;
}
