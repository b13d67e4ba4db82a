#include "chartcore/script_editor/function_list.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/script_editor/script_edit.h"
#include "common/temp_dir.h"

using chartcore::GetHeadlessPortFactory;

namespace {

// An editor over a workspace in a temporary folder, as a host sets it up: the
// function list and the definitions of a core function and three basic ones.
struct Editor : ::testing::Test {
  void SetUp() override {
    // List files have no byte-order mark: UTF-8 on Linux, the code page (949) on Windows.
#if defined(_WIN32)
    const char* const korean = "\xB3\xAA\xC0\xC7\xC7\xD4\xBC\xF6";
#else
    const char* const korean = "\xEB\x82\x98\xEC\x9D\x98\xED\x95\xA8\xEC\x88\x98";
#endif
    const std::string list = "[System]\nCount=3\nName0=MyAvg\nName1=\nName2=Skipped\n[User]\nCount=3\n";
    dir.MakeFile("Logic/Function/New_Function.dat", list + "Name0=BasicOne\nName1=" + korean + "\nName2=CrossUp\n");
    SaveFunct("MyAvg.fct", L"MyAvg", L"MyAvg(Price, Period)", L"이동평균");
    SaveFunct("\xEB\x82\x98\xEC\x9D\x98\xED\x95\xA8\xEC\x88\x98.fct", L"나의함수", L"나의함수(a)", L"");
    SaveFunct("BasicOne.bic", L"BasicOne", L"", L"basic comment");
    SaveFunct("BasicTwo.bic", L"BasicTwo()", L"", L"");
    SaveFunct("NoName.bic", L"", L"x", L"");
    SaveFunct("Corrupt.fct", L"Corrupt", L"Corrupt(a)", L"long enough comment");  // then cut short
    std::filesystem::resize_file(dir.native("Logic/Function/Corrupt.fct"), 12);
    GetHeadlessPortFactory().ResetInput();
    edit.InitWindow();
    edit.InitBasicFunctionList(Root(), L"u01", L"MyLogic", 2);
    edit.SetFocus();
  }
  void SaveFunct(const char* file, const wchar_t* name, const wchar_t* formula, const wchar_t* comment) {
    CDBSubFUNCT record;
    record.m_strText1 = name;
    record.m_strText3 = formula;
    record.m_strText4 = comment;
    ASSERT_TRUE(chartcore::SaveRecordFile(dir.lib(std::string("Logic/Function/") + file), record));
  }
  CString Root() const { return CString(dir.root().wstring().c_str()); }

  void Send(UINT message, UINT code) {
    MSG msg{edit.GetSafeHwnd(), message, code, 1, 0, POINT{0, 0}};  // repeat count 1
    if (!chartcore::DispatchWindowMessage(&msg)) ADD_FAILURE() << "not consumed: " << code;
  }
  void Key(UINT vk) { Send(WM_KEYDOWN, vk); }
  void Type(const wchar_t* text) {
    for (; *text; ++text) Send(WM_CHAR, *text);
  }
  CString Text() { return edit.LocateTextBuffer()->GetAllText(L"|"); }
  CRect Rect(CWnd& w) {
    CRect r;
    w.GetWindowRect(&r);
    return r;
  }
  // The list's pick while it is shown, "-" while hidden; the editor's flag and the window agree.
  CString Pick() {
    EXPECT_EQ(edit.GetIntelliList().IsWindowVisible(), edit.IsListShown());
    return edit.IsListShown() ? edit.GetIntelliList().GetSelectedText() : CString(L"-");
  }

  // One keystroke's journey: typed characters (or, when null, a key down),
  // then the list's pick, the tip's parameter (-1 while hidden), the caret's column.
  struct Step { const wchar_t* typed; UINT key; const wchar_t* pick; int param, caret; };
  void Journey(const std::vector<Step>& steps) {
    for (const Step& s : steps) {
      SCOPED_TRACE(::testing::Message() << "step " << (&s - steps.data()));
      if (s.typed) Type(s.typed); else Key(s.key);
      EXPECT_EQ(Pick(), s.pick);
      EXPECT_EQ(edit.IsTipShown() ? edit.GetIntelliTip().GetCurParam() : -1, s.param);
      EXPECT_EQ(edit.GetCursorPos().x, s.caret);
    }
  }

  chartcore_test::TempDir dir;
  CScriptEdit edit;
};

std::vector<CString> Strings(const CStringArray& a) {
  std::vector<CString> v;
  for (INT_PTR i = 0; i < a.GetSize(); ++i) v.push_back(a[i]);
  return v;
}

}  // namespace

TEST_F(Editor, LoadsTheFunctionListIntoTheCompletionList) {
  // System stops at the empty Name1.
  EXPECT_EQ(Strings(edit.GetBasicFunctionList()),
            (std::vector<CString>{L"MyAvg", L"BasicOne", L"나의함수", L"CrossUp"}));
  EXPECT_EQ(edit.IsBasicFunction(L"myavg", 5), 1);
  EXPECT_EQ(edit.IsBasicFunction(L"myavgx", 5), 1);  // only the given length counts
  EXPECT_EQ(edit.IsBasicFunction(L"myav", 4), 0);
  EXPECT_EQ(edit.IsBasicFunction(nullptr, 3), 0);
  // The list: the four names and 88 built-in words, sorted ignoring case, equal ones in order of adding.
  CIntelliList& list = edit.GetIntelliList();
  EXPECT_EQ(list.GetItemCount(), 92);
  const int cross = list.FindPrefix(L"CROSSUP");
  EXPECT_EQ(list.GetItemText(cross), CString(L"CrossUp"));
  EXPECT_EQ(list.GetItemText(cross + 1), CString(L"crossup"));
  EXPECT_EQ(list.GetItemText(0), CString(L"accum"));
  EXPECT_EQ(list.FindPrefix(L"zz"), -1);
  EXPECT_EQ(list.FindPrefix(L""), -1);
  // Another workspace without the file: no names, only the built-in words.
  CScriptEdit other;
  other.InitWindow();
  other.InitBasicFunctionList(Root() + L"\\missing", L"", L"", 0);
  EXPECT_EQ(other.GetIntelliList().GetItemCount(), 88);
}

TEST_F(Editor, LooksUpFormulasAndComments) {
  EXPECT_EQ(edit.GetCoreFormular(L"MyAvg"), CString(L"MyAvg(Price, Period)"));
  EXPECT_EQ(edit.GetCoreComment(L"MyAvg"), CString(L"이동평균"));
  EXPECT_EQ(edit.GetBasicFormular(L"BasicOne"), CString(L"BasicOne()"));
  EXPECT_EQ(edit.GetBasicComment(L"BasicOne"), CString(L"basic comment"));
  EXPECT_EQ(edit.GetBasicFormular(L"BasicTwo"), CString(L"BasicTwo()"));  // holds "()" already
  EXPECT_EQ(edit.GetBasicFormular(L"NoName"), CString());                 // empty name: no "()"
  // Missing files, an empty name and a damaged record give empty texts.
  EXPECT_EQ(edit.GetBasicFormular(L"MyAvg"), CString());
  EXPECT_EQ(edit.GetCoreFormular(L"BasicOne"), CString());
  EXPECT_EQ(edit.GetCoreFormular(L""), CString());
  EXPECT_EQ(edit.GetCoreFormular(L"Corrupt"), CString());
  EXPECT_EQ(edit.GetCoreComment(L"Corrupt"), CString());
}

TEST_F(Editor, ColoursThroughTheViewWithModeAndUserFunctions) {
  using Blocks = std::vector<std::pair<int, int>>;
  const auto blocksOf = [](CScriptEdit& e, int line) {
    std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
    e.GetLineBlocks(line, blocks);
    Blocks out;
    for (const auto& b : blocks) out.emplace_back(b.m_nCharPos, b.m_nColorIndex);
    return out;
  };
  int endLine = 0, endChar = 0;
  edit.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"/* a\nb */ MyAvg(volume)", endLine, endChar);
  // Line 1 starts in line 0's comment; MyAvg is a user function, "volume" a price word in mode 2.
  EXPECT_EQ(blocksOf(edit, 1), (Blocks{{0, 9}, {4, 2}, {5, 8}, {10, 2}, {11, 14}, {17, 2}}));
  CScriptEdit mode0;
  mode0.InitWindow();
  mode0.InitBasicFunctionList(Root(), L"", L"", 0);
  mode0.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"volume", endLine, endChar);
  EXPECT_EQ(blocksOf(mode0, 0), (Blocks{{0, 2}}));
}

TEST_F(Editor, WordScannersKeepTheirQuirks) {
  using Scanner = CString (CScriptEdit::*)(CString, int&);
  const Scanner next = &CScriptEdit::GetNextWord, prev = &CScriptEdit::GetPrevWord,
                prev1 = &CScriptEdit::GetPrevWord1, prev2 = &CScriptEdit::GetPrevWord2;
  struct Case { Scanner scanner; const wchar_t* line; int pos; const wchar_t* word; int after; };
  const Case cases[] = {
      {next, L"highest", 3, L"hest", 7},
      {next, L"MA(C, 5)", 2, L"MA(C, 5)", 2},  // on '(': the whole line, the column stays
      {next, L"highest", -1, L"", -1}, {next, L"highest", 7, L"", 7},
      {next, L"a한b", 1, L"", 1},  // a character above 256
      {prev, L"MA(C, 5)", 8, L" 5)", 5},  // the comma stops the scan
      {prev, L"x  ", 3, L"x", 0},  // blanks skipped first
      {prev, L"   ", 3, L"", 0}, {prev, L"abc", 0, L"", 0},
      {prev, L"a+", 2, L"", 2},  // '+' is not taken: the column stays
      {prev, L"한 ", 2, L"", 1},  // Korean before the blank: moved back over the blank
      {prev1, L"x = 상향돌파", 8, L"상향돌파", 4},  // the word being typed may be Korean
      {prev1, L"a+", 2, L"", 2},
      {prev2, L"MA ( ", 5, L"MA", 0},  // a call's name, blanks allowed around the '('
      {prev2, L"(", 1, L"", 1}, {prev2, L"MA", 2, L"", 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.line << " at " << c.pos);
    int pos = c.pos;
    EXPECT_EQ((edit.*c.scanner)(c.line, pos), CString(c.word));
    EXPECT_EQ(pos, c.after);
  }
}

TEST_F(Editor, TypingOpensTheListAndAPickReplacesTheWord) {
  // The first entry beginning with "cro": crossdn, crossdown, CrossUp, crossup.
  Journey({{L"cro", 0, L"crossdn", -1, 3}});
  // The list stands right below the caret line: 3 characters in, one line down.
  EXPECT_EQ(Rect(edit.GetIntelliList()).TopLeft(), CPoint(24, 16));
  Journey({
      // Up and Down move the list, not the caret; Enter puts "crossup" in place of "cro".
      {nullptr, VK_DOWN, L"crossdown", -1, 3}, {nullptr, VK_UP, L"crossdn", -1, 3},
      {nullptr, VK_DOWN, L"crossdown", -1, 3}, {nullptr, VK_DOWN, L"CrossUp", -1, 3},
      {nullptr, VK_DOWN, L"crossup", -1, 3},   {nullptr, VK_RETURN, L"-", -1, 7},
      // A word no entry begins with and a blank (typed or a key) close it; a leading digit never opens it.
      {L" cr", 0, L"crossdn", -1, 10}, {L"z", 0, L"-", -1, 11}, {L" sum", 0, L"sum", -1, 15},
      {nullptr, VK_SPACE, L"-", -1, 16}, {L"1c", 0, L"-", -1, 18},
      {L" highe", 0, L"highest", -1, 24},
      {L"\b\b\b", 0, L"highest", -1, 21},  // Backspace follows the word: still the first "hi" entry
      {nullptr, VK_ESCAPE, L"-", -1, 21},
  });
  EXPECT_EQ(Text(), CString(L"crossup crz sum 1c hi"));  // Enter went to the list, not into the text
  // A Korean word typed so far is replaced as well, not left after the pick.
  Journey({{L" 나의", 0, L"나의함수", -1, 24}, {nullptr, VK_RETURN, L"-", -1, 29}});
  EXPECT_EQ(Text(), CString(L"crossup crz sum 1c hi 나의함수(a)"));
}

TEST_F(Editor, DoubleClickPickReplacesOnlyTheRestOfTheWord) {
  CIntelliList& list = edit.GetIntelliList();
  int endLine = 0, endChar = 0;
  edit.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"highest + x", endLine, endChar);
  const auto pickAt = [&](int caret, const wchar_t* item) {
    edit.SetCursorPos(CPoint(caret, 0));
    edit.SetSelection(CPoint(caret, 0), CPoint(caret, 0));
    list.SelectItem(item ? list.FindPrefix(item) : -1);
    EXPECT_EQ(list.GetSelectedText(), CString(item ? item : L""));
    LRESULT result = -1;
    edit.OnDblclkList(nullptr, &result);
    EXPECT_EQ(result, 0);
    return Text();
  };
  EXPECT_EQ(pickAt(3, L"highest"), CString(L"highighest + x"));  // "hest" replaced, the typed "hig" stays
  EXPECT_EQ(pickAt(14, L"BasicOne"), CString(L"highighest + xBasicOne()"));  // a user function's call form
  // No definition and not exactly a built-in word, or no selection: nothing.
  EXPECT_EQ(pickAt(0, L"CrossUp"), CString(L"highighest + xBasicOne()"));
  EXPECT_EQ(pickAt(0, nullptr), CString(L"highighest + xBasicOne()"));
}

TEST_F(Editor, ListMovesByPagesAndClosesWhenIdle) {
  CIntelliList& list = edit.GetIntelliList();
  auto& clock = GetHeadlessPortFactory();
  EXPECT_EQ(list.GetCountPerPage(), 7);  // 63 dialog units = 126 pixels of 16-pixel rows
  Type(L"c");
  const int first = list.GetCurSel();
  EXPECT_EQ(list.GetItemText(first), CString(L"CompressC"));
  EXPECT_EQ(list.GetTopIndex(), first - 6);  // scrolled so the pick is the bottom row
  // Page Down (Up) goes to the page's bottom (top) row, then a page further; the caret stays.
  const std::pair<UINT, int> keys[] = {{VK_NEXT, first + 6}, {VK_PRIOR, first}, {VK_PRIOR, first - 6},
                                       {VK_END, list.GetItemCount() - 1}, {VK_HOME, 0}};
  for (const auto& k : keys) {
    Key(k.first);
    EXPECT_EQ(list.GetCurSel(), k.second) << k.first;
  }
  EXPECT_EQ(edit.GetCursorPos(), CPoint(1, 0));
  EXPECT_EQ(Text(), CString(L"c"));
  // Each key restarts the 3-second idle timer; then the list closes.
  clock.AdvanceClock(2000);
  Key(VK_DOWN);
  clock.AdvanceClock(2999);
  EXPECT_EQ(Pick(), list.GetItemText(1));
  clock.AdvanceClock(1);
  EXPECT_EQ(Pick(), CString(L"-"));
  Key(VK_RETURN);  // now edits the text again
  EXPECT_EQ(Text(), CString(L"c|"));
}

TEST_F(Editor, ListClosesOnFocusLossAndClickButNotForItsOwnFocus) {
  Type(L"cr");
  ASSERT_TRUE(edit.IsListShown());
  edit.GetIntelliList().SetFocus();  // the user reaches for the list
  EXPECT_TRUE(edit.IsListShown());
  edit.SetFocus();
  CWnd elsewhere;
  ASSERT_TRUE(elsewhere.Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 10, 10), nullptr, 0));
  elsewhere.SetFocus();
  EXPECT_FALSE(edit.IsListShown());
  edit.SetFocus();
  Type(L"o");
  ASSERT_TRUE(edit.IsListShown());
  edit.SendMessage(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(0, 0));
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_EQ(edit.GetCursorPos(), CPoint(0, 0));
}

TEST_F(Editor, TypedParenAndDownKeyEachDoTheirOwnThing) {
  Type(L"a\rb");
  edit.SetCursorPos(CPoint(1, 0));
  Send(WM_CHAR, 0x28);     // '(' typed
  Send(WM_KEYDOWN, 0x28);  // VK_DOWN, the same code: the caret moves, nothing is typed
  EXPECT_EQ(Text(), CString(L"a(|b"));
  EXPECT_EQ(edit.GetCursorPos().y, 1);
  // Delete and Tab through the key-down path edit the text.
  Key(VK_HOME);
  Key(VK_DELETE);
  Key(VK_TAB);
  EXPECT_EQ(Text(), CString(L"a(|\t"));
  // A key the editor does not route reaches the window (not consumed).
  MSG msg{edit.GetSafeHwnd(), WM_KEYDOWN, 'Q', 1, 0, POINT{0, 0}};
  EXPECT_FALSE(edit.PreTranslateMessage(&msg));
  EXPECT_FALSE(edit.PreTranslateMessage(nullptr));
}

TEST_F(Editor, TipShowsFormulaTracksParametersAndCloses) {
  CIntelliTip& tip = edit.GetIntelliTip();
  Journey({{L"MyAvg(", 0, L"-", 0, 6}});
  EXPECT_TRUE(tip.IsWindowVisible());
  EXPECT_EQ(tip.GetFunction(), CString(L"MyAvg"));
  EXPECT_EQ(Strings(tip.GetParams()), (std::vector<CString>{L"MyAvg(Price, Period)", L"이동평균"}));
  // Below the caret line: 6 characters in, one line down; 20 chars wide.
  EXPECT_EQ(Rect(tip), CRect(48, 16, 48 + 170, 16 + 34));
  // A word inside the call opens the list below the tip.
  Journey({{L"c", 0, L"CompressC", 0, 7}});
  EXPECT_EQ(Rect(edit.GetIntelliList()).TopLeft(), CPoint(56, 50));
  Journey({{L",", 0, L"-", 1, 8}});
  EXPECT_EQ(Rect(tip).left, 64);  // followed the caret
  // A nested call without a definition keeps the outer tip; the ')' of MyAvg's call closes it.
  Journey({{nullptr, VK_SPACE, L"-", 1, 9}, {L"sum(1, 2)", 0, L"-", 1, 18}, {L")", 0, L"-", -1, 19}});
  EXPECT_FALSE(tip.IsWindowVisible());
  // A basic function's tip is its call form and comment.
  Journey({{nullptr, VK_RETURN, L"-", -1, 0}, {L"BasicOne (", 0, L"-", 0, 10}});
  EXPECT_EQ(Strings(tip.GetParams()), (std::vector<CString>{L"BasicOne()", L"basic comment"}));
  Journey({{nullptr, VK_ESCAPE, L"-", -1, 10}, {L"crossup(", 0, L"-", -1, 18}});  // no tip without a definition
  EXPECT_EQ(Text(), CString(L"MyAvg(c, sum(1, 2))|BasicOne (crossup("));
}

TEST_F(Editor, TipHidesByItselfAndWhenItsNameIsLeftBehind) {
  CIntelliTip& tip = edit.GetIntelliTip();
  auto& clock = GetHeadlessPortFactory();
  Type(L"MyAvg(");
  EXPECT_TRUE(tip.IsWindowVisible());
  clock.AdvanceClock(3000);
  EXPECT_FALSE(tip.IsWindowVisible());
  EXPECT_TRUE(edit.IsTipShown());  // the editor's flag outlives the timer
  Journey({
      {nullptr, VK_ESCAPE, L"-", -1, 6}, {nullptr, VK_RETURN, L"-", -1, 0}, {L"x, MyAvg(", 0, L"-", 0, 9},
      {nullptr, VK_LEFT, L"-", 0, 8},   // "x, MyAvg" still left of the caret
      {nullptr, VK_LEFT, L"-", -1, 7},  // "x, MyAv": the name is gone
      {nullptr, VK_END, L"-", -1, 9},   {L"1, MyAvg(", 0, L"-", 0, 18},
      {nullptr, VK_HOME, L"-", -1, 0},  // Home, Up and Down hide it outright
  });
}

TEST_F(Editor, DestroyReleasesListTipAndBuffer) {
  Type(L"MyAvg(c");
  ASSERT_TRUE(edit.IsTipShown());
  ASSERT_TRUE(edit.IsListShown());
  edit.DestroyWindow();
  EXPECT_FALSE(edit.GetIntelliList().IsWindow());
  EXPECT_FALSE(edit.GetIntelliTip().IsWindow());
  EXPECT_FALSE(edit.LocateTextBuffer()->IsInitialized());
  auto& clock = GetHeadlessPortFactory();
  EXPECT_FALSE(clock.IsTimerRunning(&edit.GetIntelliList(), CIntelliList::kIdleTimer));
  EXPECT_FALSE(clock.IsTimerRunning(&edit.GetIntelliTip(), CIntelliTip::kHideTimer));
}
