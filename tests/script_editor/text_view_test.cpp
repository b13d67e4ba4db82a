// The text view and edit window on the headless port: incremental parsing,
// painting, key routing, selection, clipboard, mouse, find and replace,
// composition.
#include "chartcore/script_editor/text_view.h"

#include <cwctype>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using chartcore::GetHeadlessPort;
using chartcore::GetHeadlessPortFactory;
using chartcore::HeadlessDrawOp;

// Colours "/* ... */" comments (cookie 4 carries them over lines) and digit
// runs, counts its calls and records the edit notifications.
class ProbeEdit : public CCrystalEditWnd {
 public:
  int cookieCalls = 0, blockCalls = 0, changes = 0, curpos = 0, scrolls = 0;
  std::vector<UINT> chars, keys;

  DWORD ParseLine(DWORD cookie, int line, TEXTBLOCK* buf, int& n) override {
    ++(buf != nullptr ? blockCalls : cookieCalls);
    LPCTSTR s = GetLineChars(line);
    const int len = GetLineLength(line);
    auto add = [&](int pos, int color) {
      if (buf != nullptr) buf[n++] = TEXTBLOCK{pos, color};
    };
    bool comment = (cookie & 4) != 0;
    add(0, comment ? COLORINDEX_COMMENT : COLORINDEX_NORMALTEXT);
    for (int i = 0; i < len; ++i) {
      if (!comment && i + 1 < len && s[i] == L'/' && s[i + 1] == L'*') {
        comment = true;
        add(i, COLORINDEX_COMMENT);
        ++i;
      } else if (comment && i + 1 < len && s[i] == L'*' && s[i + 1] == L'/') {
        comment = false;
        add(i + 2, COLORINDEX_NORMALTEXT);
        ++i;
      } else if (!comment && std::iswdigit(static_cast<wint_t>(s[i]))) {
        add(i, COLORINDEX_NUMBER);
        add(i + 1, COLORINDEX_NORMALTEXT);
      }
    }
    return comment ? 4 : 0;
  }
  void OnCharEditClr(NMHDR* hdr, LRESULT* result) override {
    chars.push_back(reinterpret_cast<NMEDITCLR*>(hdr)->nChar);
    *result = 0;
  }
  void OnKeyDownEditClr(NMHDR* hdr, LRESULT* result) override {
    keys.push_back(reinterpret_cast<NMEDITCLR*>(hdr)->nChar);
    *result = 1;
  }
  void OnChangeEditClr(NMHDR*, LRESULT*) override { ++changes; }
  void OnCurPosChangeEditClr(NMHDR*, LRESULT*) override { ++curpos; }
  void OnScrollEditClr(NMHDR*, LRESULT*) override { ++scrolls; }
};

class Parent : public CWnd {
 public:
  int enChanges = 0;

 protected:
  BOOL OnCommand(WPARAM wParam, LPARAM) override {
    if (HIWORD(wParam) == EN_CHANGE && LOWORD(wParam) == 100) ++enChanges;
    return TRUE;
  }
};

class EditTest : public ::testing::Test {
 protected:
  void SetUp() override {
    GetHeadlessPortFactory().ResetInput();
    parent.Create(nullptr, L"p", WS_POPUP | WS_VISIBLE, CRect(0, 0, 400, 300), nullptr, 1);
    // 320 x 160 pixels: 10 lines of 16 pixels, 40 characters of 8.
    ASSERT_TRUE(edit.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 320, 160), &parent, 100));
    buf.InitNew();
    edit.AttachToBuffer(&buf);
  }
  void TearDown() override {
    edit.DestroyWindow();
    GetHeadlessPortFactory().ResetInput();
  }
  void Key(UINT vk) { edit.SendMessage(WM_KEYDOWN, vk, MAKELPARAM(1, 0)); }
  void Chars(const wchar_t* text) {
    for (; *text != 0; ++text) edit.SendMessage(WM_CHAR, static_cast<WPARAM>(*text), MAKELPARAM(1, 0));
  }
  void Hold(UINT vk, bool down) { GetHeadlessPortFactory().SetKeyDown(static_cast<int>(vk), down); }
  void CtrlKey(UINT vk) {
    Hold(VK_CONTROL, true);
    Key(vk);
    Hold(VK_CONTROL, false);
  }
  CString Text() { return buf.GetAllText(L"|"); }
  std::vector<HeadlessDrawOp> TextOps() {
    edit.Invalidate();
    edit.UpdateWindow();
    std::vector<HeadlessDrawOp> ops;
    for (const auto& op : GetHeadlessPort(&edit)->GetDrawOps())
      if (op.kind == HeadlessDrawOp::kText) ops.push_back(op);
    return ops;
  }

  Parent parent;
  ProbeEdit edit;
  CCrystalTextBuffer buf;
};

TEST_F(EditTest, ReparsesOnlyUntilALinesCookieIsUnchanged) {
  std::wstring text;
  for (int i = 0; i < 20; ++i) text += L"line\n";
  text += L"end";  // 21 lines
  buf.SetText(text.c_str());
  EXPECT_EQ(edit.GetParseCookie(20), 0u);
  EXPECT_EQ(edit.cookieCalls, 20);  // lines 0..19 once each
  EXPECT_EQ(edit.GetParseCookie(20), 0u);
  EXPECT_EQ(edit.cookieCalls, 20);  // cached
  edit.cookieCalls = 0;

  // A character that changes no state: only its own line is parsed.
  edit.SetCursorPos(CPoint(0, 5));
  Chars(L"x");
  EXPECT_EQ(edit.cookieCalls, 1);

  // Opening a comment changes every cached line below: lines 5..19.
  edit.cookieCalls = 0;
  edit.SetCursorPos(CPoint(0, 5));
  Chars(L"/");
  EXPECT_EQ(edit.cookieCalls, 1);
  Chars(L"*");
  EXPECT_EQ(edit.cookieCalls, 1 + 15);
  EXPECT_EQ(edit.GetParseCookie(20), 4u);
  EXPECT_EQ(edit.cookieCalls, 1 + 15);  // line 19's cookie was part of that pass

  // Closing it again: '*' keeps the state (one line), '/' reverts all.
  edit.cookieCalls = 0;
  Chars(L"*");
  EXPECT_EQ(edit.cookieCalls, 1);
  Chars(L"/");
  EXPECT_EQ(edit.cookieCalls, 1 + 15);
  EXPECT_EQ(edit.GetParseCookie(20), 0u);

  // Splitting a line: the head and the tail, then the tail's cookie matches.
  edit.cookieCalls = 0;
  edit.SetCursorPos(CPoint(2, 10));
  Chars(L"\r");
  EXPECT_EQ(buf.GetLineCount(), 22);
  EXPECT_EQ(edit.cookieCalls, 2);
  // Joining them again: the merged line only.
  edit.cookieCalls = 0;
  Chars(L"\b");
  EXPECT_EQ(edit.cookieCalls, 1);
  EXPECT_EQ(edit.GetValidCookieCount(), 20);  // all but the last line's

  // Painting parses each visible line once with blocks, no cookies anew.
  edit.cookieCalls = edit.blockCalls = 0;
  edit.ScrollToLine(0);
  TextOps();
  EXPECT_EQ(edit.blockCalls, 10);
  EXPECT_EQ(edit.cookieCalls, 0);

  edit.ResetParseCookies();
  EXPECT_EQ(edit.GetValidCookieCount(), 0);
}

TEST_F(EditTest, PaintsBlocksSelectionAndComposition) {
  buf.SetText(L"a1 /*c*/");
  auto ops = TextOps();
  ASSERT_EQ(ops.size(), 4u);
  EXPECT_EQ(ops[0].text, L"a");
  EXPECT_EQ(ops[0].color, RGB(0, 0, 0));  // normal text: the window text colour
  EXPECT_EQ(ops[1].text, L"1");
  EXPECT_EQ(ops[1].from, CPoint(8, 0));
  EXPECT_EQ(ops[1].color, RGB(0, 128, 128));  // number
  EXPECT_EQ(ops[2].text, L" ");
  EXPECT_EQ(ops[3].text, L"/*c*/");
  EXPECT_EQ(ops[3].from, CPoint(24, 0));
  EXPECT_EQ(ops[3].color, RGB(0, 128, 0));  // comment

  // A selection is drawn white on black over its own columns.
  edit.SetSelection(CPoint(1, 0), CPoint(3, 0));
  bool blackFill = false;
  ops = TextOps();
  for (const auto& op : GetHeadlessPort(&edit)->GetDrawOps())
    if (op.kind == HeadlessDrawOp::kFill && op.rect == CRect(8, 0, 16, 16) && op.color == RGB(0, 0, 0)) blackFill = true;
  EXPECT_TRUE(blackFill);
  ASSERT_EQ(ops.size(), 4u);
  EXPECT_EQ(ops[1].color, RGB(255, 255, 255));
  EXPECT_EQ(ops[2].color, RGB(255, 255, 255));
  EXPECT_EQ(ops[3].color, RGB(0, 128, 0));

  // Composition text shows at the caret and pushes the rest right; the
  // buffer does not change until it is committed, once.
  edit.SetSelection(CPoint(1, 0), CPoint(1, 0));
  edit.SetCursorPos(CPoint(1, 0));
  edit.SetFocus();
  edit.SetCompositionText(L"\xD55C");
  EXPECT_EQ(buf.GetLineText(0), L"a1 /*c*/");
  EXPECT_EQ(edit.GetCaretPos(), CPoint(16, 0));  // after the composed character
  ops = TextOps();
  bool composed = false;
  for (const auto& op : ops) {
    if (op.text == L"\xD55C") composed = op.from == CPoint(8, 0);
    if (op.text == L"1") {
      EXPECT_EQ(op.from, CPoint(16, 0));
    }
  }
  EXPECT_TRUE(composed);
  const int undoBefore = buf.GetUndoRecordCount();
  ASSERT_TRUE(edit.CommitComposition(L"\xD55C"));
  EXPECT_FALSE(edit.IsComposing());
  EXPECT_EQ(buf.GetLineText(0), L"a\xD55C" L"1 /*c*/");
  EXPECT_EQ(buf.GetUndoRecordCount(), undoBefore + 1);
  EXPECT_EQ(edit.chars.back(), 0xD55Cu);
  EXPECT_TRUE(edit.Undo());
  EXPECT_EQ(buf.GetLineText(0), L"a1 /*c*/");
  EXPECT_FALSE(edit.CommitComposition(L""));
}

TEST_F(EditTest, TypingEnterBackspaceDeleteAndUndoGroups) {
  Chars(L"ab c");
  EXPECT_EQ(Text(), L"ab c");
  EXPECT_EQ(edit.chars, (std::vector<UINT>{'a', 'b', ' ', 'c'}));
  EXPECT_EQ(parent.enChanges, 4);  // every edit tells the parent
  // Words merge into one undo step; the blank is a step of its own.
  EXPECT_EQ(buf.GetUndoRecordCount(), 4);
  EXPECT_EQ(buf.GetUndoRecord(1)->m_dwFlags, 1);    // "b" continues "a"
  EXPECT_EQ(buf.GetUndoRecord(3)->m_dwFlags, 257);  // "c" after a blank

  // Enter keeps the blanks that lead the line.
  buf.SetText(L"  x");
  edit.SetCursorPos(CPoint(3, 0));
  Chars(L"\r");
  EXPECT_EQ(Text(), L"  x|  ");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 1));
  Chars(L"y\b\b\b\b");  // y, then back over it, the indent and the line break
  EXPECT_EQ(Text(), L"  x");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 0));
  Chars(L"\b");
  EXPECT_EQ(Text(), L"  ");
  edit.SetCursorPos(CPoint(0, 0));
  Key(VK_DELETE);
  EXPECT_EQ(Text(), L" ");

  // Ctrl+Z takes back one step at a time, Ctrl+Y redoes.
  CtrlKey('Z');
  EXPECT_EQ(Text(), L"  ");
  CtrlKey('Z');
  EXPECT_EQ(Text(), L"  x");
  CtrlKey('Y');
  EXPECT_EQ(Text(), L"  ");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 0));

  // Control characters of Ctrl+letter insert nothing; a read-only buffer
  // takes no typing.
  Chars(L"\x01\x1A");
  EXPECT_EQ(Text(), L"  ");
  buf.SetReadOnly();
  Chars(L"z");
  EXPECT_EQ(Text(), L"  ");
}

TEST_F(EditTest, ParenIsTextButTheFlaggedDownKeyMoves) {
  buf.SetText(L"first\nsecond");
  edit.SetCursorPos(CPoint(2, 0));
  // 0x28 is both '(' and VK_DOWN: unflagged it is typed.
  edit.OnChar(0x28, 1, 0);
  EXPECT_EQ(Text(), L"fi(rst|second");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 0));
  EXPECT_EQ(edit.chars, std::vector<UINT>{0x28});
  // Flagged it is the Down key: the caret moves, nothing is inserted.
  edit.OnChar(VK_DOWN, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 1));
  EXPECT_EQ(edit.keys, std::vector<UINT>{VK_DOWN});

  // The same through messages: key-down routes, WM_CHAR types.
  MSG down{edit.GetSafeHwnd(), WM_KEYDOWN, VK_UP, MAKELPARAM(1, 0), 0, POINT{0, 0}};
  chartcore::DispatchWindowMessage(&down);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 0));
  MSG paren{edit.GetSafeHwnd(), WM_CHAR, 0x28, MAKELPARAM(1, 0), 0, POINT{0, 0}};
  chartcore::DispatchWindowMessage(&paren);
  EXPECT_EQ(Text(), L"fi((rst|second");

  // Enter, Space and Tab arriving as keys edit and report their character;
  // Escape does nothing.
  edit.OnChar(VK_SPACE, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  edit.OnChar(VK_RETURN, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  edit.OnChar(VK_TAB, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  edit.OnChar(VK_ESCAPE, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(Text(), L"fi(( |\trst|second");
  EXPECT_EQ(edit.chars, (std::vector<UINT>{0x28, 0x28, ' ', '\r', '\t'}));
  // A repeat count repeats the key.
  edit.OnChar(VK_LEFT, 3, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(4, 0));  // from (1,1): (0,1), line 0's end (5,0), (4,0)
}

TEST_F(EditTest, SelectionClipboardAndMouse) {
  buf.SetText(L"alpha beta");
  Key(VK_HOME);
  Hold(VK_SHIFT, true);
  for (int i = 0; i < 5; ++i) Key(VK_RIGHT);
  Hold(VK_SHIFT, false);
  CPoint s, e;
  edit.GetSelection(s, e);
  EXPECT_EQ(s, CPoint(0, 0));
  EXPECT_EQ(e, CPoint(5, 0));
  CtrlKey('C');
  EXPECT_EQ(chartcore::GetClipboardText(), L"alpha");
  Key(VK_END);
  CtrlKey('V');
  EXPECT_EQ(Text(), L"alpha betaalpha");
  CtrlKey('A');
  CtrlKey('X');
  EXPECT_EQ(Text(), L"");
  EXPECT_EQ(chartcore::GetClipboardText(), L"alpha betaalpha");
  CtrlKey('Z');
  EXPECT_EQ(Text(), L"alpha betaalpha");

  // Typing over a selection replaces it in one step.
  edit.SetSelection(CPoint(6, 0), CPoint(10, 0));
  Chars(L"x");
  EXPECT_EQ(Text(), L"alpha xalpha");
  CtrlKey('Z');
  EXPECT_EQ(Text(), L"alpha betaalpha");

  // A click lands on the nearer side of a character (8 pixels each); a drag
  // extends from there.
  edit.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(19, 3));  // 19 < 20, middle of column 2
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 0));
  EXPECT_EQ(CWnd::GetFocus(), &edit);
  edit.SendMessage(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(44, 3));  // 44 >= 44: after column 5
  edit.SendMessage(WM_LBUTTONUP, 0, MAKELPARAM(44, 3));
  edit.GetSelection(s, e);
  EXPECT_EQ(s, CPoint(2, 0));
  EXPECT_EQ(e, CPoint(6, 0));
  edit.SendMessage(WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(60, 3));  // in "betaalpha"
  EXPECT_EQ(edit.GetSelectedText(), L"betaalpha");

  // Up and Down keep the caret's column over a shorter line.
  buf.SetText(L"abcdef\nab\nabcdef");
  edit.SetCursorPos(CPoint(5, 0));
  Key(VK_DOWN);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 1));
  Key(VK_DOWN);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(5, 2));

  // Page Down moves a screen (10 lines) and scrolls with it.
  std::wstring many;
  for (int i = 0; i < 30; ++i) many += L"l\n";
  buf.SetText(many.c_str());
  edit.scrolls = 0;
  Key(VK_NEXT);
  EXPECT_EQ(edit.GetCursorPos().y, 10);
  EXPECT_EQ(edit.GetTopLine(), 10);
  EXPECT_GE(edit.scrolls, 1);
  edit.SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0);  // one notch up: three lines
  EXPECT_EQ(edit.GetTopLine(), 7);
}

TEST_F(EditTest, FindAndReplace) {
  buf.SetText(L"Sum sum summary\nSUM(x)");
  CPoint at;
  ASSERT_TRUE(edit.FindText(L"sum", CPoint(0, 0), 0, FALSE, &at));
  EXPECT_EQ(at, CPoint(0, 0));  // any case
  ASSERT_TRUE(edit.FindText(L"sum", CPoint(0, 0), CCrystalTextWnd::FIND_MATCH_CASE, FALSE, &at));
  EXPECT_EQ(at, CPoint(4, 0));
  const DWORD word = CCrystalTextWnd::FIND_WHOLE_WORD;
  ASSERT_TRUE(edit.FindText(L"sum", CPoint(5, 0), word, FALSE, &at));
  EXPECT_EQ(at, CPoint(0, 1));  // "summary" is no whole word; "SUM(" is
  EXPECT_FALSE(edit.FindText(L"sum", CPoint(5, 0), word | CCrystalTextWnd::FIND_MATCH_CASE, FALSE, &at));
  ASSERT_TRUE(edit.FindText(L"sum", CPoint(5, 0), word | CCrystalTextWnd::FIND_MATCH_CASE, TRUE, &at));
  EXPECT_EQ(at, CPoint(4, 0));  // found by wrapping round
  ASSERT_TRUE(edit.FindText(L"sum", CPoint(0, 1), CCrystalTextWnd::FIND_DIRECTION_UP, FALSE, &at));
  EXPECT_EQ(at, CPoint(8, 0));  // the last match before the start
  EXPECT_FALSE(edit.FindText(L"a\nb", CPoint(0, 0), 0, TRUE, &at));
  EXPECT_FALSE(edit.FindText(L"", CPoint(0, 0), 0, TRUE, &at));

  ASSERT_TRUE(edit.FindNext(L"summary", 0));
  EXPECT_EQ(edit.GetSelectedText(), L"summary");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(15, 0));

  const int changesBefore = edit.changes;
  EXPECT_EQ(edit.ReplaceAll(L"sum", L"avg", word), 3);
  EXPECT_EQ(Text(), L"avg avg summary|avg(x)");
  EXPECT_EQ(edit.changes, changesBefore + 1);  // one edit
  ASSERT_TRUE(edit.Undo());
  EXPECT_EQ(Text(), L"Sum sum summary|SUM(x)");  // one undo takes all back
  // A replacement with a line break adds lines as it goes.
  EXPECT_EQ(edit.ReplaceAll(L"(", L"(\n", 0), 1);
  EXPECT_EQ(Text(), L"Sum sum summary|SUM(|x)");
  EXPECT_EQ(edit.ReplaceAll(L"nothing", L"x", 0), 0);

  // ReplaceNext replaces a selected match, then selects the next one.
  buf.SetText(L"ab ab ab");
  edit.SetSelection(CPoint(0, 0), CPoint(2, 0));
  ASSERT_TRUE(edit.ReplaceNext(L"ab", L"X", 0));
  EXPECT_EQ(Text(), L"X ab ab");
  EXPECT_EQ(edit.GetSelectedText(), L"ab");
  CPoint s, e;
  edit.GetSelection(s, e);
  EXPECT_EQ(s, CPoint(2, 0));

  // ReplaceSelText is one undo group and leaves the caret after the text.
  edit.SetSelection(CPoint(2, 0), CPoint(4, 0));
  ASSERT_TRUE(edit.ReplaceSelText(L"highest(C, 5)"));
  EXPECT_EQ(Text(), L"X highest(C, 5) ab");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(15, 0));
  ASSERT_TRUE(edit.Undo());
  EXPECT_EQ(Text(), L"X ab ab");
}

TEST_F(EditTest, FlushingAGroupPlacesTheCaretAndTellsTheParent) {
  buf.SetText(L"abc");
  const int before = parent.enChanges;
  buf.BeginUndoGroup();
  ASSERT_TRUE(buf.DeleteText(nullptr, 0, 1, 0, 2));
  buf.FlushUndoGroup(&edit);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(1, 0));  // the start of the deletion
  EXPECT_EQ(parent.enChanges, before + 1);
  int el, ec;
  buf.BeginUndoGroup();
  ASSERT_TRUE(buf.InsertText(nullptr, 0, 0, L"x\ny", el, ec));
  buf.FlushUndoGroup(&edit);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(1, 1));  // the end of the insertion
  buf.FlushUndoGroup(nullptr);  // no view: nobody is told
  EXPECT_EQ(parent.enChanges, before + 2);
  // With an empty history the caret stays, but the change is still reported.
  buf.CleanUndoBuffer();
  edit.SetCursorPos(CPoint(0, 0));
  buf.FlushUndoGroup(&edit);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(0, 0));
  EXPECT_EQ(parent.enChanges, before + 3);
}

}  // namespace
