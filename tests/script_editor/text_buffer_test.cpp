// The text buffer: lines, undo, the saved position, contexts, flags and files.
#include "chartcore/script_editor/text_buffer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/script_editor/text_view.h"
#include "common/temp_dir.h"

namespace {

// Inserts text at (x, y) as one undo group (or merged into the previous one).
void Type(CCrystalTextBuffer& buf, int y, int x, const wchar_t* text, int action = CE_ACTION_TYPING,
          BOOL merge = FALSE) {
  int el = 0, ec = 0;
  buf.BeginUndoGroup(merge);
  ASSERT_TRUE(buf.InsertText(nullptr, y, x, text, el, ec, action));
  buf.FlushUndoGroup(nullptr);
}

CString All(const CCrystalTextBuffer& buf) { return buf.GetAllText(L"|"); }

// One undo (or redo) step; then whether the buffer is modified.
bool Step(CCrystalTextBuffer& buf, bool redo = false) {
  CPoint cursor;
  redo ? buf.Redo(cursor) : buf.Undo(cursor);
  return buf.IsModified() != FALSE;
}

// A view that only logs what the buffer tells it.
class LogView : public CCrystalTextWnd {
 public:
  std::vector<DWORD> hints;
  std::vector<int> lines;
  void UpdateView(CCrystalTextWnd* src, CUpdateContext* ctx, DWORD flags, int line) override {
    hints.push_back(flags);
    lines.push_back(line);
    CCrystalTextWnd::UpdateView(src, ctx, flags, line);
  }
};

TEST(TextBuffer, InsertSplitsOnEveryLineEndAndDeleteJoins) {
  CCrystalTextBuffer buf;
  EXPECT_EQ(buf.GetLineCount(), 0);  // nothing before InitNew
  int el = 0, ec = 0;
  EXPECT_FALSE(buf.InsertText(nullptr, 0, 0, L"x", el, ec));
  LogView view;
  buf.AddView(&view);
  buf.AddView(&view);  // once only
  ASSERT_TRUE(buf.InitNew(CRLF_STYLE_UNIX));
  EXPECT_EQ(buf.GetLineCount(), 1);
  EXPECT_EQ(buf.GetLineChars(1), nullptr);
  EXPECT_FALSE(buf.CanUndo());
  EXPECT_FALSE(buf.IsModified());
  EXPECT_EQ(view.hints, std::vector<DWORD>{4096u});  // the reset hint over all lines
  EXPECT_EQ(view.lines, std::vector<int>{-1});
  buf.RemoveView(&view);
  buf.RemoveView(&view);  // harmless

  // "\r\n" is one break, a lone "\r" and a lone "\n" one each.
  ASSERT_TRUE(buf.InsertText(nullptr, 0, 0, L"a\r\nb\rc\nd", el, ec));
  EXPECT_EQ(All(buf), L"a|b|c|d");
  EXPECT_EQ(CPoint(ec, el), CPoint(1, 3));
  // Inserting into the middle of a line carries its tail to the last line.
  ASSERT_TRUE(buf.InsertText(nullptr, 1, 0, L"x\n\ny", el, ec));
  EXPECT_EQ(All(buf), L"a|x||yb|c|d");
  EXPECT_EQ(CPoint(ec, el), CPoint(1, 3));  // right after "y", before the carried "b"
  // A trailing break makes an empty last line.
  ASSERT_TRUE(buf.InsertText(nullptr, 5, 1, L"\r\n", el, ec));
  EXPECT_EQ(All(buf), L"a|x||yb|c|d|");

  // Bad positions and texts change nothing.
  EXPECT_FALSE(buf.InsertText(nullptr, 0, 2, L"z", el, ec));  // past the line end
  EXPECT_FALSE(buf.InsertText(nullptr, 7, 0, L"z", el, ec));  // past the last line
  EXPECT_FALSE(buf.InsertText(nullptr, -1, 0, L"z", el, ec));
  EXPECT_FALSE(buf.InsertText(nullptr, 0, 0, nullptr, el, ec));
  EXPECT_TRUE(buf.InsertText(nullptr, 0, 0, L"", el, ec));  // nothing to do
  EXPECT_FALSE(buf.DeleteText(nullptr, 3, 1, 1, 0));  // start after end
  EXPECT_FALSE(buf.DeleteText(nullptr, 0, 0, 0, 5));  // end past the line
  EXPECT_EQ(All(buf), L"a|x||yb|c|d|");

  // Deleting across lines joins the first line's head and the last's tail.
  ASSERT_TRUE(buf.DeleteText(nullptr, 0, 1, 3, 1));
  EXPECT_EQ(All(buf), L"ab|c|d|");
  CString text;
  buf.GetText(0, 1, 2, 1, text, L"\n");
  EXPECT_EQ(text, L"b\nc\nd");
  buf.GetText(2, 1, 0, 0, text);  // reversed: empty
  EXPECT_EQ(text, L"");

  buf.SetReadOnly();
  EXPECT_FALSE(buf.InsertText(nullptr, 0, 0, L"z", el, ec));
  EXPECT_FALSE(buf.DeleteText(nullptr, 0, 0, 0, 1));
}

TEST(TextBuffer, UndoAndRedoStepOverWholeGroups) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  Type(buf, 0, 0, L"MA(C)");
  // One group of two records: replace "C" by "close\nx".
  buf.BeginUndoGroup();
  ASSERT_TRUE(buf.DeleteText(nullptr, 0, 3, 0, 4, CE_ACTION_REPLACE));
  int el, ec;
  ASSERT_TRUE(buf.InsertText(nullptr, 0, 3, L"close\nx", el, ec, CE_ACTION_REPLACE));
  buf.FlushUndoGroup(nullptr);
  EXPECT_EQ(All(buf), L"MA(close|x)");
  EXPECT_EQ(buf.GetUndoRecord(0)->m_dwFlags, 257);  // insertion that begins a group
  EXPECT_EQ(buf.GetUndoRecord(1)->m_dwFlags, 256);  // deletion that begins a group
  EXPECT_EQ(buf.GetUndoRecord(2)->m_dwFlags, 1);
  EXPECT_EQ(buf.GetUndoRecord(3), nullptr);

  // A group per step: the cursor goes to an undone group's start, after the last redone record.
  struct Case { bool redo; const wchar_t* text; CPoint cursor; };
  const Case cases[] = {{false, L"MA(C)", {3, 0}}, {false, L"", {0, 0}},
                        {true, L"MA(C)", {5, 0}},  {true, L"MA(close|x)", {1, 1}}};
  CPoint cursor;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ASSERT_TRUE(c.redo ? buf.Redo(cursor) : buf.Undo(cursor));
    EXPECT_EQ(All(buf), c.text);
    EXPECT_EQ(cursor, c.cursor);
  }
  EXPECT_FALSE(buf.Redo(cursor));
  CString desc;
  ASSERT_TRUE(buf.GetUndoDescription(desc));
  EXPECT_EQ(desc, L"Replace");
  ASSERT_TRUE(buf.Undo(cursor));
  ASSERT_TRUE(buf.GetRedoDescription(desc));
  EXPECT_EQ(desc, L"Replace");

  // Records without any group mark (no BeginUndoGroup) are one group: one undo, or the limit, takes all.
  CCrystalTextBuffer raw;
  raw.InitNew();
  raw.SetUndoLimit(4);
  for (int i = 0; i < 3; ++i) raw.InsertText(nullptr, 0, i, L"r", el, ec);
  EXPECT_EQ(raw.GetUndoRecord(0)->m_dwFlags, 1);
  ASSERT_TRUE(raw.Undo(cursor));
  EXPECT_EQ(All(raw), L"");
  EXPECT_EQ(raw.GetUndoPosition(), 0);
  EXPECT_FALSE(raw.Undo(cursor));  // nothing left
  ASSERT_TRUE(raw.Redo(cursor));
  for (int i = 3; i < 5; ++i) raw.InsertText(nullptr, 0, i, L"r", el, ec);
  EXPECT_EQ(raw.GetUndoRecordCount(), 1);
}

TEST(TextBuffer, ModifiedFollowsTheSavedPosition) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  Type(buf, 0, 0, L"a");
  Type(buf, 0, 1, L"b");
  EXPECT_TRUE(buf.IsModified());
  buf.SetModified(FALSE);  // the host stored the text here: position 2
  EXPECT_EQ(buf.GetSavedPosition(), 2);
  Type(buf, 0, 2, L"c");
  EXPECT_FALSE(Step(buf));  // back at the saved position
  EXPECT_TRUE(Step(buf));   // past it
  EXPECT_FALSE(Step(buf, true));

  // A new edit after an undo discards the redo records, and the saved state among them for good.
  Step(buf, true);  // "abc", saved state is one undo back
  Step(buf);
  Step(buf);  // "a": saved position 2 lies among the redo records
  Type(buf, 0, 1, L"x");
  EXPECT_EQ(buf.GetUndoRecordCount(), 2);
  EXPECT_EQ(All(buf), L"ax");
  EXPECT_EQ(buf.GetSavedPosition(), -1);
  EXPECT_TRUE(Step(buf));
  EXPECT_TRUE(Step(buf));  // empty text, but the saved text was "ab"

  // Cleaning the history of an unmodified buffer keeps it saved at 0.
  CCrystalTextBuffer clean;
  clean.InitNew();
  Type(clean, 0, 0, L"q");
  clean.SetModified(FALSE);
  clean.CleanUndoBuffer();
  EXPECT_EQ(clean.GetSavedPosition(), 0);
  EXPECT_FALSE(clean.CanUndo());
}

TEST(TextBuffer, TheRecordPastTheLimitDropsTheOldestWholeGroup) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  int el, ec;
  // A first group of three records, then 2045 one-record groups: 2048.
  buf.BeginUndoGroup();
  for (int i = 0; i < 3; ++i) buf.InsertText(nullptr, 0, i, L"g", el, ec);
  buf.FlushUndoGroup(nullptr);
  for (int i = 0; i < 2045; ++i) Type(buf, 0, 3 + i, L"x");
  ASSERT_EQ(buf.GetUndoRecordCount(), 2048);
  buf.SetModified(FALSE);  // saved at 2048
  // The 2049th record removes the three records of the first group.
  Type(buf, 0, 0, L"y");
  EXPECT_EQ(buf.GetUndoRecordCount(), 2046);
  EXPECT_EQ(buf.GetUndoPosition(), 2046);
  EXPECT_EQ(buf.GetSavedPosition(), 2045);  // moved with the records
  EXPECT_EQ(buf.GetUndoRecord(0)->m_dwFlags, 257);
  EXPECT_FALSE(Step(buf));
  // Undo everything left: the first three "g" can no longer be taken back.
  while (buf.CanUndo()) Step(buf);
  EXPECT_EQ(buf.GetLineText(0), L"ggg");
}

TEST(TextBuffer, MergingContinuesOnlyATypingGroup) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  Type(buf, 0, 0, L"a");
  Type(buf, 0, 1, L"b", CE_ACTION_TYPING, TRUE);  // continues the typing group
  EXPECT_EQ(buf.GetUndoRecord(1)->m_dwFlags, 1);
  Type(buf, 0, 2, L"c", CE_ACTION_PASTE);
  Type(buf, 0, 3, L"d", CE_ACTION_TYPING, TRUE);  // the last record is a paste: no merge
  EXPECT_EQ(buf.GetUndoRecord(3)->m_dwFlags, 257);
  buf.SetModified(FALSE);
  Type(buf, 0, 4, L"e", CE_ACTION_TYPING, TRUE);  // never across the saved position
  EXPECT_EQ(buf.GetUndoRecord(4)->m_dwFlags, 257);
  for (int i = 0; i < 3; ++i) Step(buf);
  EXPECT_EQ(All(buf), L"ab");
  Step(buf);
  EXPECT_EQ(All(buf), L"");  // "ab" went in one step
}

TEST(TextBuffer, ContextsMovePositionsByTheRules) {
  CInsertContext ins(CPoint(2, 1), CPoint(3, 3));  // two lines inserted
  CDeleteContext del(CPoint(2, 1), CPoint(3, 3));  // two lines removed
  EXPECT_EQ(ins.GetLineDelta(), 2);
  EXPECT_EQ(del.GetLineDelta(), -2);
  struct Case { CUpdateContext* context; CPoint from, to; };
  const Case cases[] = {
      {&ins, {5, 0}, {5, 0}}, {&ins, {1, 1}, {1, 1}},  // an earlier line, before the start
      {&ins, {2, 1}, {2, 1}},                          // exactly at the start: stays
      {&ins, {4, 1}, {5, 3}},                          // 4 + (3 - 2) on the end line
      {&ins, {0, 2}, {0, 4}},                          // a later line: two down
      {&del, {2, 1}, {2, 1}}, {&del, {9, 1}, {2, 1}},  // at the start, inside
      {&del, {0, 2}, {2, 1}}, {&del, {2, 3}, {2, 1}},  // inside, just before the end
      {&del, {3, 3}, {2, 1}},                          // at the end
      {&del, {7, 3}, {6, 1}},                          // 7 + (2 - 3) on the start line
      {&del, {4, 5}, {4, 3}},                          // a later line: two up
  };
  for (const Case& c : cases) {
    CPoint p = c.from;
    c.context->RecalcPoint(p);
    EXPECT_EQ(p, c.to) << (c.context == &ins ? "insert " : "delete ") << c.from.x << "," << c.from.y;
  }

  // A view attached to the buffer keeps its caret where the text stays.
  CCrystalTextBuffer buf;
  buf.InitNew();
  CCrystalTextWnd view;
  view.AttachToBuffer(&buf);
  Type(buf, 0, 0, L"abcd");
  view.SetCursorPos(CPoint(2, 0));
  Type(buf, 0, 2, L"XY");  // at the caret: the caret stays before it
  EXPECT_EQ(view.GetCursorPos(), CPoint(2, 0));
  Type(buf, 0, 0, L"1\n2");  // before it on the line: moves to the new line
  EXPECT_EQ(view.GetCursorPos(), CPoint(3, 1));
}

TEST(TextBuffer, LineFlagsAndBookmarks) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  Type(buf, 0, 0, L"0\n1\n2\n3\n4");
  LogView view;
  view.AttachToBuffer(&buf);
  view.hints.clear();
  buf.SetLineFlag(1, LF_EXECUTION, TRUE);
  buf.SetLineFlag(3, LF_EXECUTION, TRUE);  // moves from line 1
  EXPECT_EQ(buf.GetLineWithFlag(LF_EXECUTION), 3);
  EXPECT_EQ(buf.GetLineFlags(1), 0u);
  EXPECT_EQ(view.hints.back(), UPDATE_SINGLELINE | UPDATE_FLAGSONLY);
  buf.SetLineFlag(1, LF_BOOKMARKS, TRUE, FALSE);
  buf.SetLineFlag(4, LF_BOOKMARKS, TRUE, FALSE);  // plain bookmarks stay put
  EXPECT_EQ(buf.FindLineWithFlag(LF_BOOKMARKS), 1);
  EXPECT_EQ(buf.FindNextBookmarkLine(1), 4);
  EXPECT_EQ(buf.FindNextBookmarkLine(4), 1);  // wraps
  EXPECT_EQ(buf.FindPrevBookmarkLine(1), 4);  // wraps backwards
  EXPECT_EQ(buf.FindPrevBookmarkLine(3), 1);
  buf.SetLineFlag(-1, LF_BOOKMARKS, FALSE);  // clear everywhere
  EXPECT_EQ(buf.FindNextBookmarkLine(0), -1);
  EXPECT_EQ(buf.GetLineFlags(99), 0u);
  EXPECT_EQ(LF_BOOKMARK(10), 0u);
}

TEST(TextBufferFiles, EveryEncodingAndLineEndRoundTripsByteForByte) {
  struct Case { const char* name; std::string bytes; int encoding, crlf; };
  // "가 = 1", "x" and an empty last line; 가 is U+AC00, EA B0 80 in UTF-8, B0 A1 in code page 949.
  const Case cases[] = {
      {"u8.txt", "\xEA\xB0\x80 = 1\r\nx\r\n", CCrystalTextBuffer::ENCODING_UTF8, CRLF_STYLE_DOS},
      {"u8bom.txt", "\xEF\xBB\xBF\xEA\xB0\x80 = 1\nx\n", CCrystalTextBuffer::ENCODING_UTF8_BOM, CRLF_STYLE_UNIX},
      {"u16.txt", std::string("\xFF\xFE\x00\xAC \x00=\x00 \x00" "1\x00\r\x00x\x00\r\x00", 18),
       CCrystalTextBuffer::ENCODING_UTF16LE, CRLF_STYLE_MAC},
      {"cp949.txt", "\xB0\xA1 = 1\r\nx\r\n", CCrystalTextBuffer::ENCODING_CP949, CRLF_STYLE_DOS},
  };
  chartcore_test::TempDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    dir.MakeFile(c.name, c.bytes);
    CCrystalTextBuffer buf;
    buf.InitNew();
    Type(buf, 0, 0, L"old");
    ASSERT_TRUE(buf.LoadFromFile(dir.lib(c.name)));
    EXPECT_EQ(buf.GetAllText(L"|"), L"\xAC00 = 1|x|");
    EXPECT_EQ(buf.GetEncoding(), c.encoding);
    EXPECT_EQ(buf.GetCRLFMode(), c.crlf);
    EXPECT_FALSE(buf.IsModified());
    EXPECT_FALSE(buf.CanUndo());

    const std::string out = std::string("out_") + c.name;
    Type(buf, 1, 1, L"y");
    ASSERT_TRUE(buf.SaveToFile(dir.lib(out)));
    EXPECT_FALSE(buf.IsModified());
    CCrystalTextBuffer back;
    ASSERT_TRUE(back.LoadFromFile(dir.lib(out)));
    EXPECT_EQ(back.GetAllText(L"|"), L"\xAC00 = 1|xy|");
    Step(buf);  // "xy" back to "x": the file's own text again
    ASSERT_TRUE(buf.SaveToFile(dir.lib(out)));
    EXPECT_EQ(dir.Read(out), c.bytes);
  }
}

TEST(TextBufferFiles, StylesAreKeptChosenOrForcedAndNothingIsLost) {
  chartcore_test::TempDir dir;
  const CString path = dir.lib("style.txt");
  dir.MakeFile("style.txt", "a\nb\r\nc");  // the first line end decides: Unix
  CCrystalTextBuffer buf;
  ASSERT_TRUE(buf.LoadFromFile(path));
  EXPECT_EQ(buf.GetCRLFMode(), CRLF_STYLE_UNIX);
  EXPECT_EQ(buf.GetAllText(L"|"), L"a|b|c");
  ASSERT_TRUE(buf.LoadFromFile(path, CRLF_STYLE_MAC));  // forced
  EXPECT_EQ(buf.GetCRLFMode(), CRLF_STYLE_MAC);
  ASSERT_TRUE(buf.SaveToFile(path, CRLF_STYLE_DOS));  // this save only
  EXPECT_EQ(dir.Read("style.txt"), "a\r\nb\r\nc");
  EXPECT_EQ(buf.GetCRLFMode(), CRLF_STYLE_MAC);
  dir.MakeFile("style.txt", "one line");
  ASSERT_TRUE(buf.LoadFromFile(path));
  EXPECT_EQ(buf.GetCRLFMode(), CRLF_STYLE_DOS);  // no line end: DOS

  // A code-page file given text the code page cannot hold is saved as UTF-8.
  dir.MakeFile("style.txt", "\xB0\xA1");
  ASSERT_TRUE(buf.LoadFromFile(path));
  ASSERT_EQ(buf.GetEncoding(), CCrystalTextBuffer::ENCODING_CP949);
  Type(buf, 0, 1, L"\x00E9\U0001F600");
  ASSERT_TRUE(buf.SaveToFile(path));
  EXPECT_EQ(buf.GetEncoding(), CCrystalTextBuffer::ENCODING_UTF8_BOM);
  CCrystalTextBuffer back;
  ASSERT_TRUE(back.LoadFromFile(path));
  EXPECT_EQ(back.GetLineText(0), L"\xAC00\x00E9\U0001F600");

  // A missing file or folder leaves the buffer as it was.
  EXPECT_FALSE(buf.LoadFromFile(dir.lib("missing.txt")));
  EXPECT_EQ(buf.GetLineText(0), L"\xAC00\x00E9\U0001F600");
  EXPECT_FALSE(buf.SaveToFile(dir.lib("no_dir/x.txt")));
  EXPECT_FALSE(buf.LoadFromFile(L""));
}

}  // namespace
