// Fuzzes the script line parser: random lines (UTF-16 code units) with random
// incoming cookies and script modes. The block list must fit the buffer the
// view sizes by 3 * length + 8, positions must never decrease and must stay
// within the line, the cookie must not depend on whether blocks are asked,
// and the cookie passed on carries no bit that neither came in nor is a
// parse state.
//
// The same units, split into lines at '\n', then go into a script editor:
// the blocks it paints for each line must be those of the parser chained
// from the first line, also after a character is typed into one line and
// after that is undone (the view's cookie cache must follow every edit).
//
// Input: byte 0 holds the cookie bits (low five), the script mode (next two)
// and, in its top bit, "a full 32-bit cookie follows in bytes 1-4"; then the
// line, two bytes a unit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "chartcore/script_editor/script_edit.h"
#include "chartcore/script_editor/script_words.h"

namespace {

struct Block {
  int m_nCharPos;
  int m_nColorIndex;
};

[[noreturn]] void Fault() { std::abort(); }

const chartcore::internal::NoCaseWordIndex& UserFunctions() {
  static const chartcore::internal::NoCaseWordIndex index = [] {
    chartcore::internal::NoCaseWordIndex ix;
    ix.Add(L"MyAvg", 5, 1);
    ix.Add(L"나의함수", 4, 1);
    return ix;
  }();
  return index;
}

void CheckOneLine(DWORD cookie, int mode, const std::vector<wchar_t>& line) {
  const int n = static_cast<int>(line.size());
  std::vector<Block> blocks(static_cast<std::size_t>(3 * n + 8));
  int count = 0;
  const DWORD next = chartcore::internal::ParseScriptLine(cookie, line.data(), n, blocks.data(), count, mode,
                                                          &UserFunctions());
  if (count < 0 || count > 3 * n + 8) Fault();
  for (int i = 0; i < count; ++i) {
    const Block& b = blocks[static_cast<std::size_t>(i)];
    if (b.m_nCharPos < 0 || b.m_nCharPos > n) Fault();
    if (i > 0 && b.m_nCharPos < blocks[static_cast<std::size_t>(i - 1)].m_nCharPos) Fault();
    if (b.m_nColorIndex < 2 || b.m_nColorIndex > 16) Fault();
  }
  if (next & ~(cookie | 0x1Fu)) Fault();
  int none = 0;
  if (chartcore::internal::ParseScriptLine<Block>(cookie, line.data(), n, nullptr, none, mode, &UserFunctions()) !=
          next ||
      none != 0) {
    Fault();
  }
}

// The editor's blocks of every line against the parser chained from line 0
// (the editor's script mode is 2 and it has no user functions).
void CheckEditor(CScriptEdit& edit) {
  CCrystalTextBuffer* buf = edit.LocateTextBuffer();
  DWORD cookie = 0;
  std::vector<CCrystalTextWnd::TEXTBLOCK> painted;
  for (int i = 0; i < buf->GetLineCount(); ++i) {
    const int n = buf->GetLineLength(i);
    std::vector<Block> blocks(static_cast<std::size_t>(3 * n + 8));
    int count = 0;
    const DWORD next =
        chartcore::internal::ParseScriptLine(cookie, buf->GetLineChars(i), n, blocks.data(), count, 2, nullptr);
    if (edit.GetParseCookie(i) != cookie) Fault();
    edit.GetLineBlocks(i, painted);
    if (count == 0) blocks[static_cast<std::size_t>(count++)] = Block{0, 2};
    if (static_cast<int>(painted.size()) != count) Fault();
    for (int k = 0; k < count; ++k) {
      const Block& b = blocks[static_cast<std::size_t>(k)];
      if (painted[static_cast<std::size_t>(k)].m_nCharPos != b.m_nCharPos ||
          painted[static_cast<std::size_t>(k)].m_nColorIndex != b.m_nColorIndex) {
        Fault();
      }
    }
    cookie = next;
  }
}

CScriptEdit& Editor() {
  static CScriptEdit* edit = [] {
    auto* e = new CScriptEdit;  // lives for the process, as a host's editor would
    e->InitWindow();
    return e;
  }();
  return *edit;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  DWORD cookie = data[0] & 0x1F;
  const int mode = (data[0] >> 5) & 3;
  std::size_t start = 1;
  if ((data[0] & 0x80) != 0 && size >= 5) {
    cookie = static_cast<DWORD>(data[1]) | (static_cast<DWORD>(data[2]) << 8) | (static_cast<DWORD>(data[3]) << 16) |
             (static_cast<DWORD>(data[4]) << 24);
    start = 5;
  }
  std::vector<wchar_t> units;
  for (std::size_t i = start; i + 1 < size; i += 2) units.push_back(static_cast<wchar_t>(data[i] | (data[i + 1] << 8)));

  // Each line alone with the incoming cookie.
  std::vector<wchar_t> line;
  for (wchar_t u : units) {
    if (u == L'\n') {
      CheckOneLine(cookie, mode, line);
      line.clear();
    } else {
      line.push_back(u);
    }
  }
  CheckOneLine(cookie, mode, line);

  // The whole text in the editor: loaded, typed into, undone.
  std::wstring text(units.begin(), units.end());
  for (wchar_t& u : text) {
    if (u == L'\0' || u == L'\r') u = L' ';  // the buffer splits lines at '\r' too
  }
  CScriptEdit& edit = Editor();
  CCrystalTextBuffer* buf = edit.LocateTextBuffer();
  buf->SetText(text.c_str());
  CheckEditor(edit);
  const int lineIndex = static_cast<int>(data[size - 1]) % buf->GetLineCount();
  const int column = static_cast<int>(data[0]) % (buf->GetLineLength(lineIndex) + 1);
  static const wchar_t* const kTyped[4] = {L"\"", L"/*", L"\\", L"*/\n#"};
  int endLine = 0, endChar = 0;
  buf->BeginUndoGroup();
  if (!buf->InsertText(nullptr, lineIndex, column, kTyped[data[size - 1] & 3], endLine, endChar, CE_ACTION_TYPING))
    Fault();
  buf->FlushUndoGroup(nullptr);
  CheckEditor(edit);
  CPoint cursor;
  if (!buf->Undo(cursor)) Fault();
  CheckEditor(edit);
  return 0;
}
