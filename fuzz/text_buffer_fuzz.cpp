// Fuzz target for the editor's file loading: the input is a formula file in
// any encoding (UTF-8 with or without a mark, UTF-16LE, code page 949, or
// garbage). Checked: the load succeeds and yields at least one line without
// line breaks; a save and a reload give the same lines and line-end style, and
// a second save the same bytes; a few edits picked from the input undo back
// to the loaded text, unmodified, and redo forward to the edited text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "chartcore/script_editor/text_buffer.h"
#include "fuzz_files.h"

namespace {

[[noreturn]] void Fault() { std::abort(); }

bool SameLines(const CCrystalTextBuffer& a, const CCrystalTextBuffer& b) {
  if (a.GetLineCount() != b.GetLineCount()) return false;
  for (int i = 0; i < a.GetLineCount(); ++i) {
    if (a.GetLineText(i) != b.GetLineText(i)) return false;
  }
  return true;
}

void CheckLines(const CCrystalTextBuffer& buf) {
  if (buf.GetLineCount() < 1) Fault();
  for (int i = 0; i < buf.GetLineCount(); ++i) {
    const CString line = buf.GetLineText(i);
    if (line.GetLength() != buf.GetLineLength(i) || line.Find(L'\r') >= 0 || line.Find(L'\n') >= 0) Fault();
  }
}

// Applies edits chosen by the input's bytes, each its own undo group.
void Edit(CCrystalTextBuffer& buf, const std::uint8_t* data, std::size_t size) {
  static const wchar_t* const kTexts[4] = {L"x", L"MA(C, 5)\r\nRSI", L"\n", L"\x314E\x3131 // \"a\\"};
  const std::size_t steps = size < 12 ? size : 12;
  for (std::size_t k = 0; k < steps; ++k) {
    const unsigned b = data[size - 1 - k];
    const int line = static_cast<int>((b * 7u + k) % static_cast<unsigned>(buf.GetLineCount()));
    const int col = static_cast<int>((b * 13u) % static_cast<unsigned>(buf.GetLineLength(line) + 1));
    CPoint cursor;
    switch (b & 3u) {
      case 0: {
        int endLine = 0, endChar = 0;
        buf.BeginUndoGroup(k % 2 == 1);
        if (!buf.InsertText(nullptr, line, col, kTexts[(b >> 2) & 3u], endLine, endChar, CE_ACTION_TYPING)) Fault();
        buf.FlushUndoGroup(nullptr);
        break;
      }
      case 1: {
        const int endLine = line + static_cast<int>((b >> 2) % 3u) < buf.GetLineCount()
                                ? line + static_cast<int>((b >> 2) % 3u)
                                : buf.GetLineCount() - 1;
        const int endCol = endLine == line ? col + (buf.GetLineLength(line) - col) / 2 : buf.GetLineLength(endLine) / 2;
        buf.BeginUndoGroup();
        if (!buf.DeleteText(nullptr, line, col, endLine, endCol, CE_ACTION_DELETE)) Fault();
        buf.FlushUndoGroup(nullptr);
        break;
      }
      case 2:
        buf.Undo(cursor);
        break;
      default:
        buf.Redo(cursor);
        break;
    }
    CheckLines(buf);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzzfiles::ScratchFile input("input.txt");
  static const fuzzfiles::ScratchFile saved("saved.txt");
  static const fuzzfiles::ScratchFile again("again.txt");
  input.Write(data, size);

  CCrystalTextBuffer buf;
  if (!buf.LoadFromFile(input.Path())) Fault();
  CheckLines(buf);
  if (buf.IsModified() || buf.CanUndo() || buf.CanRedo()) Fault();
  const CString loaded = buf.GetAllText(L"\n");

  // Save and reload: the same lines and style; saving that gives the same bytes.
  if (!buf.SaveToFile(saved.Path())) Fault();
  CCrystalTextBuffer back;
  if (!back.LoadFromFile(saved.Path())) Fault();
  if (!SameLines(buf, back) || back.GetCRLFMode() != buf.GetCRLFMode() || back.GetEncoding() != buf.GetEncoding())
    Fault();
  if (!back.SaveToFile(again.Path()) || again.Read() != saved.Read()) Fault();

  // Edits undo back to the loaded text and redo to the edited one.
  Edit(buf, data, size);
  const CString edited = buf.GetAllText(L"\n");
  const int editedPosition = buf.GetUndoPosition();
  CPoint cursor;
  int guard = 0;
  while (buf.CanUndo()) {
    if (!buf.Undo(cursor) || ++guard > 100) Fault();
  }
  if (buf.GetAllText(L"\n") != loaded) Fault();
  // Undone to the saved position (the save above left it at 0).
  if (buf.IsModified()) Fault();
  while (buf.GetUndoPosition() < editedPosition) {
    if (!buf.Redo(cursor) || ++guard > 200) Fault();
  }
  if (buf.GetAllText(L"\n") != edited) Fault();
  CheckLines(buf);
  return 0;
}
