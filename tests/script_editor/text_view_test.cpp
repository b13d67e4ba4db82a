// The text view and edit window on the headless port.
#include "chartcore/script_editor/text_view.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/script_editor/script_words.h"

namespace {

using chartcore::GetHeadlessPort;
using chartcore::GetHeadlessPortFactory;
using chartcore::HeadlessDrawOp;

// Colours with the script parser, counts its calls and records the edit notifications.
class ProbeEdit : public CCrystalEditWnd {
 public:
  int cookieCalls = 0, blockCalls = 0, changes = 0, scrolls = 0;
  std::vector<UINT> chars, keys;

  DWORD ParseLine(DWORD cookie, int line, TEXTBLOCK* buf, int& n) override {
    ++(buf != nullptr ? blockCalls : cookieCalls);
    return chartcore::internal::ParseScriptLine(cookie, GetLineChars(line), GetLineLength(line), buf, n, 2, nullptr);
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
  // A key down, with the key `held` (Shift, Ctrl) down meanwhile.
  void Key(UINT vk, UINT held = 0) {
    if (held) GetHeadlessPortFactory().SetKeyDown(static_cast<int>(held), true);
    edit.SendMessage(WM_KEYDOWN, vk, MAKELPARAM(1, 0));
    if (held) GetHeadlessPortFactory().SetKeyDown(static_cast<int>(held), false);
  }
  void Chars(const wchar_t* text) {
    for (; *text != 0; ++text) edit.SendMessage(WM_CHAR, static_cast<WPARAM>(*text), MAKELPARAM(1, 0));
  }
  CString Text() { return buf.GetAllText(L"|"); }
  std::pair<CPoint, CPoint> Selection() {
    std::pair<CPoint, CPoint> sel;
    edit.GetSelection(sel.first, sel.second);
    return sel;
  }
  // Repaints and returns the text drawn: each run's text, x and colour.
  using Run = std::tuple<std::wstring, int, COLORREF>;
  std::vector<Run> Paint() {
    edit.Invalidate();
    edit.UpdateWindow();
    std::vector<Run> runs;
    for (const auto& op : GetHeadlessPort(&edit)->GetDrawOps())
      if (op.kind == HeadlessDrawOp::kText) runs.emplace_back(op.text.GetString(), op.from.x, op.color);
    return runs;
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

  // An edit parses its line and those below while their cookie changes; the last line's then costs nothing.
  struct Case { CPoint caret; const wchar_t* typed; int calls; DWORD lastCookie; };  // caret x -1: left as it is
  const Case cases[] = {
      {{0, 5}, L"x", 1, 0}, {{0, 5}, L"/", 1, 0},  // no state changes yet
      {{-1, 0}, L"*", 15, 4},      // opens a comment: lines 5..19 parse again
      {{-1, 0}, L"*", 1, 4},       // keeps the state
      {{-1, 0}, L"/", 15, 0},      // closes it: all of them revert
      {{2, 10}, L"\r", 2, 0},      // a split: the head and the tail, whose cookie matches
      {{-1, 0}, L"\b", 1, 0},      // joined again: the merged line only
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    edit.cookieCalls = 0;
    if (c.caret.x >= 0) edit.SetCursorPos(c.caret);
    Chars(c.typed);
    EXPECT_EQ(edit.cookieCalls, c.calls);
    EXPECT_EQ(edit.GetParseCookie(20), c.lastCookie);
    EXPECT_EQ(edit.cookieCalls, c.calls);
  }
  EXPECT_EQ(edit.GetValidCookieCount(), 20);  // all but the last line's

  // Painting parses each visible line once with blocks, no cookies anew.
  edit.cookieCalls = edit.blockCalls = 0;
  edit.ScrollToLine(0);
  Paint();
  EXPECT_EQ(edit.blockCalls, 10);
  EXPECT_EQ(edit.cookieCalls, 0);
  edit.ResetParseCookies();
  EXPECT_EQ(edit.GetValidCookieCount(), 0);
}

TEST_F(EditTest, PaintsBlocksSelectionAndComposition) {
  const COLORREF black = RGB(0, 0, 0), white = RGB(255, 255, 255), teal = RGB(0, 128, 128), green = RGB(0, 128, 0);
  buf.SetText(L"a 1 //c");
  // Normal text in the window text colour, the number teal, the comment green.
  EXPECT_EQ(Paint(), (std::vector<Run>{{L"a", 0, black}, {L" ", 8, black}, {L"1", 16, teal}, {L" ", 24, black},
                                       {L"//c", 32, green}}));

  // A selection is drawn white on black over its own columns.
  edit.SetSelection(CPoint(2, 0), CPoint(4, 0));
  EXPECT_EQ(Paint(), (std::vector<Run>{{L"a", 0, black}, {L" ", 8, black}, {L"1", 16, white}, {L" ", 24, white},
                                       {L"//c", 32, green}}));
  bool blackFill = false;
  for (const auto& op : GetHeadlessPort(&edit)->GetDrawOps())
    blackFill |= op.kind == HeadlessDrawOp::kFill && op.rect == CRect(16, 0, 24, 16) && op.color == black;
  EXPECT_TRUE(blackFill);

  // Composition text shows at the caret, pushing the rest right; the buffer changes once, on commit.
  edit.SetSelection(CPoint(2, 0), CPoint(2, 0));
  edit.SetCursorPos(CPoint(2, 0));
  edit.SetFocus();
  edit.SetCompositionText(L"\xD55C");
  EXPECT_EQ(buf.GetLineText(0), L"a 1 //c");
  EXPECT_EQ(edit.GetCaretPos(), CPoint(24, 0));  // after the composed character
  EXPECT_EQ(Paint(), (std::vector<Run>{{L"a", 0, black}, {L" ", 8, black}, {L"1", 24, teal}, {L" ", 32, black},
                                       {L"//c", 40, green}, {L"\xD55C", 16, black}}));  // drawn last, in the gap
  const int undoBefore = buf.GetUndoRecordCount();
  ASSERT_TRUE(edit.CommitComposition(L"\xD55C"));
  EXPECT_FALSE(edit.IsComposing());
  EXPECT_EQ(buf.GetLineText(0), L"a \xD55C" L"1 //c");
  EXPECT_EQ(buf.GetUndoRecordCount(), undoBefore + 1);
  EXPECT_EQ(edit.chars.back(), 0xD55Cu);
  EXPECT_TRUE(edit.Undo());
  EXPECT_EQ(buf.GetLineText(0), L"a 1 //c");
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

  // Enter keeps the leading blanks; Backspace takes back the typing, the indent and the line break; Home
  // goes to the first non-blank, then to column 0; Ctrl+Z and Ctrl+Y step; control characters insert nothing.
  buf.SetText(L"  x");
  edit.SetCursorPos(CPoint(3, 0));
  struct Step { const wchar_t* typed; UINT key; const wchar_t* text; CPoint caret; };  // typed null: the key
  const Step steps[] = {
      {L"\r", 0, L"  x|  ", {2, 1}},      {L"y\b\b\b\b", 0, L"  x", {3, 0}},
      {nullptr, VK_HOME, L"  x", {2, 0}},  {nullptr, VK_HOME, L"  x", {0, 0}},
      {nullptr, VK_END, L"  x", {3, 0}},   {L"\b", 0, L"  ", {2, 0}},
      {nullptr, VK_HOME, L"  ", {0, 0}},   {nullptr, VK_DELETE, L" ", {0, 0}},
      {nullptr, 'Z', L"  ", {0, 0}},       {nullptr, 'Z', L"  x", {2, 0}},
      {nullptr, 'Y', L"  ", {2, 0}},       {L"\x01\x1A", 0, L"  ", {2, 0}},
  };
  for (const Step& s : steps) {
    SCOPED_TRACE(&s - steps);
    if (s.typed) Chars(s.typed); else Key(s.key, s.key >= 'A' && s.key <= 'Z' ? VK_CONTROL : 0);
    EXPECT_EQ(Text(), s.text);
    EXPECT_EQ(edit.GetCursorPos(), s.caret);
  }
  // Over a selection the indent is that of the line where the selection starts.
  buf.SetText(L"ab\n        xy\n  cd");
  edit.SetSelection(CPoint(4, 1), CPoint(1, 2));
  Chars(L"\r");
  EXPECT_EQ(Text(), L"ab|    |     cd");
  buf.SetReadOnly();  // takes no typing
  Chars(L"z");
  EXPECT_EQ(Text(), L"ab|    |     cd");
}

TEST_F(EditTest, ParenIsTextButTheFlaggedDownKeyMoves) {
  buf.SetText(L"first\nsecond");
  edit.SetCursorPos(CPoint(2, 0));
  // 0x28 is both '(' and VK_DOWN: unflagged it is typed, flagged it moves.
  edit.OnChar(0x28, 1, 0);
  EXPECT_EQ(Text(), L"fi(rst|second");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 0));
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

  // Enter, Space and Tab arriving as keys edit and report their character; Escape does nothing.
  for (UINT vk : {VK_SPACE, VK_RETURN, VK_TAB, VK_ESCAPE}) edit.OnChar(vk, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(Text(), L"fi(( |\trst|second");
  EXPECT_EQ(edit.chars, (std::vector<UINT>{0x28, 0x28, ' ', '\r', '\t'}));
  // A repeat count repeats the key.
  edit.OnChar(VK_LEFT, 3, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(4, 0));  // from (1,1): (0,1), line 0's end (5,0), (4,0)
}

TEST_F(EditTest, SelectionClipboardAndMouse) {
  buf.SetText(L"alpha beta");
  Key(VK_HOME);
  for (int i = 0; i < 5; ++i) Key(VK_RIGHT, VK_SHIFT);
  EXPECT_EQ(Selection(), std::make_pair(CPoint(0, 0), CPoint(5, 0)));
  Key('C', VK_CONTROL);
  EXPECT_EQ(chartcore::GetClipboardText(), L"alpha");
  Key(VK_END);
  Key('V', VK_CONTROL);
  EXPECT_EQ(Text(), L"alpha betaalpha");
  Key('A', VK_CONTROL);
  Key('X', VK_CONTROL);
  EXPECT_EQ(Text(), L"");
  EXPECT_EQ(chartcore::GetClipboardText(), L"alpha betaalpha");
  Key('Z', VK_CONTROL);
  EXPECT_EQ(Text(), L"alpha betaalpha");

  // Typing over a selection replaces it in one step.
  edit.SetSelection(CPoint(6, 0), CPoint(10, 0));
  Chars(L"x");
  EXPECT_EQ(Text(), L"alpha xalpha");
  Key('Z', VK_CONTROL);
  EXPECT_EQ(Text(), L"alpha betaalpha");

  // A click lands on the nearer side of a character (8 pixels each), a drag extends, a double click takes the word.
  edit.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(19, 3));  // 19 < 20, middle of column 2
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 0));
  EXPECT_EQ(CWnd::GetFocus(), &edit);
  edit.SendMessage(WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(44, 3));  // 44 >= 44: after column 5
  edit.SendMessage(WM_LBUTTONUP, 0, MAKELPARAM(44, 3));
  EXPECT_EQ(Selection(), std::make_pair(CPoint(2, 0), CPoint(6, 0)));
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
  EXPECT_EQ(edit.scrolls, 1);
  edit.SendMessage(WM_MOUSEWHEEL, MAKEWPARAM(0, 120), 0);  // one notch up: three lines
  EXPECT_EQ(edit.GetTopLine(), 7);
}

TEST_F(EditTest, FindAndReplace) {
  buf.SetText(L"Sum sum summary\nSUM(x)");
  const DWORD kCase = CCrystalTextWnd::FIND_MATCH_CASE, kWord = CCrystalTextWnd::FIND_WHOLE_WORD;
  struct Case { const wchar_t* what; CPoint start; DWORD flags; BOOL wrap; CPoint found; };  // found x -1: none
  const Case cases[] = {
      {L"sum", {0, 0}, 0, FALSE, {0, 0}},  // any case
      {L"sum", {0, 0}, kCase, FALSE, {4, 0}},
      {L"sum", {5, 0}, kWord, FALSE, {0, 1}},  // "summary" is no whole word; "SUM(" is
      {L"sum", {5, 0}, kWord | kCase, FALSE, {-1, 0}},
      {L"sum", {5, 0}, kWord | kCase, TRUE, {4, 0}},  // found by wrapping round
      {L"sum", {0, 1}, CCrystalTextWnd::FIND_DIRECTION_UP, FALSE, {8, 0}},  // the last match before the start
      {L"a\nb", {0, 0}, 0, TRUE, {-1, 0}},
      {L"", {0, 0}, 0, TRUE, {-1, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    CPoint at;
    EXPECT_EQ(edit.FindText(c.what, c.start, c.flags, c.wrap, &at) ? at : CPoint(-1, 0), c.found);
  }
  ASSERT_TRUE(edit.FindNext(L"summary", 0));
  EXPECT_EQ(edit.GetSelectedText(), L"summary");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(15, 0));

  const int changesBefore = edit.changes;
  EXPECT_EQ(edit.ReplaceAll(L"sum", L"avg", kWord), 3);
  EXPECT_EQ(Text(), L"avg avg summary|avg(x)");
  EXPECT_EQ(edit.changes, changesBefore + 1);  // one edit
  ASSERT_TRUE(edit.Undo());
  EXPECT_EQ(Text(), L"Sum sum summary|SUM(x)");  // one undo takes all back
  // A replacement with a line break adds lines as it goes.
  EXPECT_EQ(edit.ReplaceAll(L"(", L"(\n", 0), 1);
  EXPECT_EQ(Text(), L"Sum sum summary|SUM(|x)");
  EXPECT_EQ(edit.ReplaceAll(L"nothing", L"x", 0), 0);
  // Thousands of changed lines are still one undo step (the history keeps
  // at most 2048 records and drops whole groups), and so is a block indent.
  std::wstring many;
  for (int i = 0; i < 3000; ++i) many += L"sum\n";
  buf.SetText(many.c_str());
  const CString original = Text();
  EXPECT_EQ(edit.ReplaceAll(L"sum", L"avg", 0), 3000);
  EXPECT_EQ(edit.ReplaceAll(L"avg", L"x\ty", 0), 3000);
  edit.SetSelection(CPoint(0, 0), CPoint(0, 3000));
  Chars(L"\t");
  EXPECT_EQ(buf.GetLineText(2999), CString(L"\tx\ty"));
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(edit.Undo()) << i;
  EXPECT_EQ(Text(), original);

  // ReplaceNext replaces a selected match, then selects the next one.
  buf.SetText(L"ab ab ab");
  edit.SetSelection(CPoint(0, 0), CPoint(2, 0));
  ASSERT_TRUE(edit.ReplaceNext(L"ab", L"X", 0));
  EXPECT_EQ(Text(), L"X ab ab");
  EXPECT_EQ(Selection(), std::make_pair(CPoint(2, 0), CPoint(4, 0)));

  // ReplaceSelText is one undo group and leaves the caret after the text.
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

namespace {
// Headless windows whose line height follows the font, as on a screen.
class ScalingPort : public chartcore::HeadlessWindowPort {
 public:
  using HeadlessWindowPort::HeadlessWindowPort;
  void GetTextMetrics(const LOGFONT* font, TEXTMETRIC* metrics) override {
    HeadlessWindowPort::GetTextMetrics(font, metrics);
    if (font != nullptr && font->lfHeight != 0) metrics->tmHeight = font->lfHeight < 0 ? -font->lfHeight : font->lfHeight;
  }
};
class ScalingFactory : public chartcore::HeadlessPortFactory {
 public:
  std::unique_ptr<chartcore::WindowPort> CreatePort(CWnd* wnd) override { return std::make_unique<ScalingPort>(wnd); }
};
}  // namespace

TEST(TextViewFont, AFocusedCaretFollowsTheNewLineHeight) {
  ScalingFactory factory;
  // Put back for the tests that follow, whatever happens here.
  struct Restore {
    chartcore::WindowPortFactory* previous;
    ~Restore() { chartcore::SetWindowPortFactory(previous); }
  } restore{chartcore::SetWindowPortFactory(&factory)};
  {
    CCrystalTextBuffer buffer;
    buffer.InitNew();
    CCrystalEditWnd view;
    ASSERT_TRUE(view.Create(nullptr, L"", WS_POPUP | WS_VISIBLE, CRect(0, 0, 320, 160), nullptr, 1));
    view.AttachToBuffer(&buffer);
    view.SetFocus();
    const auto* port = dynamic_cast<const chartcore::HeadlessWindowPort*>(view.GetPort());
    ASSERT_NE(port, nullptr);
    ASSERT_TRUE(port->HasCaret());
    LOGFONT large{};
    large.lfHeight = -30;
    view.SetViewFont(&large);
    EXPECT_EQ(view.GetLineHeight(), 30);
    EXPECT_EQ(port->GetCaretSize().cy, 30);
    EXPECT_TRUE(port->IsCaretShown());
    view.DestroyWindow();
  }
}
