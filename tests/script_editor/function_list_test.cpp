#include "chartcore/script_editor/function_list.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/script_editor/script_edit.h"

namespace fs = std::filesystem;
using chartcore::GetHeadlessPortFactory;

namespace {

// A workspace in a temporary folder with a function list and definitions:
//   System: MyAvg (Count 3, but Name1 is empty, so Name2 is never read)
//   User:   BasicOne, 나의함수, CrossUp
//   MyAvg.fct     formula "MyAvg(Price, Period)", comment "이동평균"
//   BasicOne.bic  name "BasicOne", comment "basic comment"
//   BasicTwo.bic  name "BasicTwo()" (already a call form)
//   NoName.bic    empty name field
//   Corrupt.fct   a record cut short
class Workspace {
 public:
  Workspace() {
    static std::atomic<int> serial{0};
    m_dir = fs::temp_directory_path() /
            ("chartcore-sedit-" + std::to_string(std::random_device{}()) + "-" + std::to_string(serial++));
    fs::create_directories(m_dir / "Logic" / "Function");
    root = CString(m_dir.wstring().c_str());
    // The Korean name as each system's list files hold it without a
    // byte-order mark: UTF-8 on Linux, the system code page (949) on Windows.
#if defined(_WIN32)
    const char* const korean = "\xB3\xAA\xC0\xC7\xC7\xD4\xBC\xF6";
#else
    const char* const korean = "\xEB\x82\x98\xEC\x9D\x98\xED\x95\xA8\xEC\x88\x98";
#endif
    WriteList(std::string("[System]\nCount=3\nName0=MyAvg\nName1=\nName2=Skipped\n"
                          "[User]\nCount=3\nName0=BasicOne\nName1=") +
              korean + "\nName2=CrossUp\n");
    SaveFunct(L"MyAvg.fct", L"MyAvg", L"MyAvg(Price, Period)", L"이동평균");
    SaveFunct(L"BasicOne.bic", L"BasicOne", L"", L"basic comment");
    SaveFunct(L"BasicTwo.bic", L"BasicTwo()", L"", L"");
    SaveFunct(L"NoName.bic", L"", L"x", L"");
    SaveFunct(L"Corrupt.fct", L"Corrupt", L"Corrupt(a)", L"long enough comment");
    fs::resize_file(m_dir / "Logic" / "Function" / "Corrupt.fct", 12);
  }
  ~Workspace() {
    std::error_code ec;
    fs::remove_all(m_dir, ec);
  }
  void WriteList(const std::string& text) {
    std::ofstream(m_dir / "Logic" / "Function" / "New_Function.dat", std::ios::binary) << text;
  }
  void SaveFunct(const wchar_t* file, const wchar_t* name, const wchar_t* formula, const wchar_t* comment) {
    CDBSubFUNCT record;
    record.m_strText1 = name;
    record.m_strText3 = formula;
    record.m_strText4 = comment;
    const CString path = root + L"\\Logic\\Function\\" + file;
    ASSERT_TRUE(chartcore::SaveRecordFile(path, record));
  }

  CString root;

 private:
  fs::path m_dir;
};

// An editor over the workspace, as a host sets it up.
struct Editor : ::testing::Test {
  void SetUp() override {
    GetHeadlessPortFactory().ResetInput();
    edit.InitWindow();
    edit.InitBasicFunctionList(ws.root, L"u01", L"MyLogic", 2);
    edit.SetFocus();
  }
  void Key(UINT vk) { Send(WM_KEYDOWN, vk); }
  void Type(const wchar_t* text) {
    for (; *text; ++text) Send(WM_CHAR, *text);
  }
  void Send(UINT message, UINT code) {
    MSG msg{};
    msg.hwnd = edit.GetSafeHwnd();
    msg.message = message;
    msg.wParam = code;
    msg.lParam = 1;  // repeat count 1
    if (!chartcore::DispatchWindowMessage(&msg)) ADD_FAILURE() << "not consumed: " << code;
  }
  CString Line(int n) { return edit.GetLineText(n); }
  CRect Rect(CWnd& w) {
    CRect r;
    w.GetWindowRect(&r);
    return r;
  }

  Workspace ws;
  CScriptEdit edit;
};

}  // namespace

// ---------------------------------------------------------------------------
// The function list and the definitions
// ---------------------------------------------------------------------------

TEST_F(Editor, LoadsTheFunctionListAndKeepsTheHostStrings) {
  const CStringArray& names = edit.GetBasicFunctionList();
  ASSERT_EQ(names.GetSize(), 4);  // System stops at the empty Name1
  EXPECT_EQ(names[0], CString(L"MyAvg"));
  EXPECT_EQ(names[1], CString(L"BasicOne"));
  EXPECT_EQ(names[2], CString(L"나의함수"));
  EXPECT_EQ(names[3], CString(L"CrossUp"));
  EXPECT_EQ(edit.IsBasicFunction(L"myavg", 5), 1);
  EXPECT_EQ(edit.IsBasicFunction(L"myavgx", 5), 1);  // only the given length counts
  EXPECT_EQ(edit.IsBasicFunction(L"myav", 4), 0);
  EXPECT_EQ(edit.IsBasicFunction(nullptr, 3), 0);
  // The completion list holds the four names and the 88 built-in words.
  CIntelliList& list = edit.GetIntelliList();
  EXPECT_EQ(list.GetItemCount(), 92);
  // Sorted without regard to case; equal entries keep their order of adding.
  const int cross = list.FindPrefix(L"CROSSUP");
  EXPECT_EQ(list.GetItemText(cross), CString(L"CrossUp"));
  EXPECT_EQ(list.GetItemText(cross + 1), CString(L"crossup"));
  EXPECT_EQ(list.GetItemText(0), CString(L"accum"));
  EXPECT_EQ(list.FindPrefix(L"zz"), -1);
  EXPECT_EQ(list.FindPrefix(L""), -1);
  // Another workspace without the file: no names, only the built-in words added.
  CScriptEdit other;
  other.InitWindow();
  other.InitBasicFunctionList(ws.root + L"\\missing", L"", L"", 0);
  EXPECT_EQ(other.GetBasicFunctionList().GetSize(), 0);
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
  int endLine = 0;
  int endChar = 0;
  edit.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"/* a\nb */ MyAvg(volume)", endLine, endChar);
  std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
  edit.GetLineBlocks(1, blocks);  // starts inside the comment opened on line 0
  ASSERT_EQ(blocks.size(), 6u);
  EXPECT_EQ(blocks[0].m_nColorIndex, 9);
  EXPECT_EQ(blocks[2].m_nCharPos, 5);
  EXPECT_EQ(blocks[2].m_nColorIndex, 8);   // user function
  EXPECT_EQ(blocks[4].m_nCharPos, 11);
  EXPECT_EQ(blocks[4].m_nColorIndex, 14);  // "volume" in mode 2
  CScriptEdit mode0;
  mode0.InitWindow();
  mode0.InitBasicFunctionList(ws.root, L"", L"", 0);
  mode0.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"volume", endLine, endChar);
  mode0.GetLineBlocks(0, blocks);
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].m_nColorIndex, 2);
}

// ---------------------------------------------------------------------------
// Word scanners
// ---------------------------------------------------------------------------

TEST_F(Editor, WordScannersKeepTheirQuirks) {
  int pos = 3;
  EXPECT_EQ(edit.GetNextWord(L"highest", pos), CString(L"hest"));
  EXPECT_EQ(pos, 7);
  pos = 2;  // on '(': the whole line, the column stays
  EXPECT_EQ(edit.GetNextWord(L"MA(C, 5)", pos), CString(L"MA(C, 5)"));
  EXPECT_EQ(pos, 2);
  for (int bad : {-1, 7}) {
    pos = bad;
    EXPECT_EQ(edit.GetNextWord(L"highest", pos), CString()) << bad;
    EXPECT_EQ(pos, bad);
  }
  pos = 1;  // a character above 256
  EXPECT_EQ(edit.GetNextWord(L"a한b", pos), CString());
  pos = 8;  // back over "MA(C, 5)": the comma stops the scan
  EXPECT_EQ(edit.GetPrevWord(L"MA(C, 5)", pos), CString(L" 5)"));
  EXPECT_EQ(pos, 5);
  pos = 3;  // blanks skipped first
  EXPECT_EQ(edit.GetPrevWord(L"x  ", pos), CString(L"x"));
  EXPECT_EQ(pos, 0);
  pos = 3;
  EXPECT_EQ(edit.GetPrevWord(L"   ", pos), CString());
  pos = 2;  // '+' is not taken: empty, column unchanged
  EXPECT_EQ(edit.GetPrevWord(L"a+", pos), CString());
  EXPECT_EQ(pos, 2);
  pos = 2;  // Korean before the blank: empty, column moved back over the blank
  EXPECT_EQ(edit.GetPrevWord(L"한 ", pos), CString());
  EXPECT_EQ(pos, 1);
  pos = 0;
  EXPECT_EQ(edit.GetPrevWord(L"abc", pos), CString());
  pos = 8;  // the word being typed may be Korean
  EXPECT_EQ(edit.GetPrevWord1(L"x = 상향돌파", pos), CString(L"상향돌파"));
  EXPECT_EQ(pos, 4);
  pos = 2;
  EXPECT_EQ(edit.GetPrevWord1(L"a+", pos), CString());
  EXPECT_EQ(pos, 2);
  pos = 5;  // a call's name, blanks allowed around the '('
  EXPECT_EQ(edit.GetPrevWord2(L"MA ( ", pos), CString(L"MA"));
  EXPECT_EQ(pos, 0);
  pos = 1;
  EXPECT_EQ(edit.GetPrevWord2(L"(", pos), CString());
  EXPECT_EQ(pos, 1);
  pos = 2;
  EXPECT_EQ(edit.GetPrevWord2(L"MA", pos), CString());
}

// ---------------------------------------------------------------------------
// Completion list
// ---------------------------------------------------------------------------

TEST_F(Editor, TypingOpensTheListAndAPickReplacesTheWord) {
  CIntelliList& list = edit.GetIntelliList();
  Type(L"cro");
  ASSERT_TRUE(edit.IsListShown());
  EXPECT_TRUE(list.IsWindowVisible());
  // The first entry beginning with "cro": crossdn, crossdown, CrossUp, crossup.
  EXPECT_EQ(list.GetSelectedText(), CString(L"crossdn"));
  // The list stands right below the caret line: 3 characters in, one line down.
  EXPECT_EQ(Rect(list).TopLeft(), CPoint(24, 16));
  // Up and Down move the list, not the caret.
  Key(VK_DOWN);
  EXPECT_EQ(list.GetSelectedText(), CString(L"crossdown"));
  Key(VK_UP);
  EXPECT_EQ(list.GetSelectedText(), CString(L"crossdn"));
  Key(VK_DOWN);
  Key(VK_DOWN);
  Key(VK_DOWN);
  EXPECT_EQ(list.GetSelectedText(), CString(L"crossup"));
  EXPECT_EQ(edit.GetCursorPos(), CPoint(3, 0));
  Key(VK_RETURN);  // "cro" and the pick become "crossup"
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_FALSE(list.IsWindowVisible());
  EXPECT_EQ(Line(0), CString(L"crossup"));
  EXPECT_EQ(edit.GetLineCount(), 1);  // Enter went to the list, not into the text
  EXPECT_EQ(edit.GetCursorPos(), CPoint(7, 0));
  // A word no entry begins with closes the list; so does a blank.
  Type(L" cr");
  EXPECT_TRUE(edit.IsListShown());
  Type(L"z");
  EXPECT_FALSE(edit.IsListShown());
  Type(L" sum");
  EXPECT_TRUE(edit.IsListShown());
  Key(VK_SPACE);
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_EQ(Line(0), CString(L"crossup crz sum "));
  // Backspace keeps the list in step with the shrinking word.
  Type(L"highe");
  EXPECT_EQ(list.GetSelectedText(), CString(L"highest"));
  Type(L"\b\b\b");
  EXPECT_TRUE(edit.IsListShown());
  EXPECT_EQ(list.GetSelectedText(), CString(L"highest"));  // still the first "hi" entry
  Key(VK_ESCAPE);
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_EQ(Line(0), CString(L"crossup crz sum hi"));
}

TEST_F(Editor, DoubleClickPickReplacesOnlyTheRestOfTheWord) {
  CIntelliList& list = edit.GetIntelliList();
  int endLine = 0;
  int endChar = 0;
  edit.LocateTextBuffer()->InsertText(nullptr, 0, 0, L"highest + x", endLine, endChar);
  edit.SetSelection(CPoint(3, 0), CPoint(3, 0));
  edit.SetCursorPos(CPoint(3, 0));
  list.SelectItem(list.FindPrefix(L"highest"));
  LRESULT result = -1;
  edit.OnDblclkList(nullptr, &result);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(Line(0), CString(L"highighest + x"));  // "hest" replaced, the typed "hig" stays
  // A user function picks its call form from its definition.
  edit.SetCursorPos(CPoint(14, 0));
  edit.SetSelection(CPoint(14, 0), CPoint(14, 0));
  list.SelectItem(list.FindPrefix(L"BasicOne"));
  edit.OnDblclkList(nullptr, &result);
  EXPECT_EQ(Line(0), CString(L"highighest + xBasicOne()"));
  // "CrossUp" has no definition and is not exactly a built-in word: nothing.
  list.SelectItem(list.FindPrefix(L"CrossUp"));
  ASSERT_EQ(list.GetSelectedText(), CString(L"CrossUp"));
  edit.SetCursorPos(CPoint(0, 0));
  edit.SetSelection(CPoint(0, 0), CPoint(0, 0));
  edit.OnDblclkList(nullptr, &result);
  EXPECT_EQ(Line(0), CString(L"highighest + xBasicOne()"));
  // No selection at all: nothing to insert either.
  list.SelectItem(-1);
  edit.OnDblclkList(nullptr, &result);
  EXPECT_EQ(Line(0), CString(L"highighest + xBasicOne()"));
}

TEST_F(Editor, ListMovesByPagesAndClosesWhenIdle) {
  CIntelliList& list = edit.GetIntelliList();
  auto& clock = GetHeadlessPortFactory();
  EXPECT_EQ(list.GetCountPerPage(), 7);  // 63 dialog units = 126 pixels of 16-pixel rows
  Type(L"c");
  const int first = list.GetCurSel();
  ASSERT_GE(first, 0);
  EXPECT_EQ(list.GetItemText(first), CString(L"CompressC"));
  EXPECT_EQ(list.GetTopIndex(), first - 6);  // scrolled so the pick is the bottom row
  Key(VK_NEXT);  // already on the page's bottom row: a page further
  EXPECT_EQ(list.GetCurSel(), first + 6);
  EXPECT_EQ(edit.GetCursorPos(), CPoint(1, 0));  // the caret stays
  Key(VK_PRIOR);  // to the page's top row first
  EXPECT_EQ(list.GetCurSel(), first);
  Key(VK_PRIOR);
  EXPECT_EQ(list.GetCurSel(), first - 6);
  Key(VK_END);
  EXPECT_EQ(list.GetCurSel(), list.GetItemCount() - 1);
  Key(VK_HOME);
  EXPECT_EQ(list.GetCurSel(), 0);
  EXPECT_EQ(Line(0), CString(L"c"));
  // Each key restarts the 3-second idle timer; then the list closes.
  clock.AdvanceClock(2000);
  Key(VK_DOWN);
  clock.AdvanceClock(2999);
  EXPECT_TRUE(edit.IsListShown());
  clock.AdvanceClock(1);
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_FALSE(list.IsWindowVisible());
  // Enter now edits the text again.
  Key(VK_RETURN);
  EXPECT_EQ(edit.GetLineCount(), 2);
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

// ---------------------------------------------------------------------------
// Key routing and the tip
// ---------------------------------------------------------------------------

TEST_F(Editor, TypedParenAndDownKeyEachDoTheirOwnThing) {
  Type(L"a\rb");
  edit.SetCursorPos(CPoint(1, 0));
  edit.SetSelection(CPoint(1, 0), CPoint(1, 0));
  Send(WM_CHAR, 0x28);  // '(' typed
  EXPECT_EQ(Line(0), CString(L"a("));
  EXPECT_EQ(edit.GetCursorPos(), CPoint(2, 0));
  Send(WM_KEYDOWN, 0x28);  // VK_DOWN: the caret moves, nothing is typed
  EXPECT_EQ(Line(0), CString(L"a("));
  EXPECT_EQ(Line(1), CString(L"b"));
  EXPECT_EQ(edit.GetCursorPos().y, 1);
  // Delete and Tab through the key-down path edit the text.
  Key(VK_HOME);
  Key(VK_DELETE);
  EXPECT_EQ(Line(1), CString());
  Key(VK_TAB);
  EXPECT_EQ(Line(1), CString(L"\t"));
  // A key the editor does not route reaches the window (not consumed).
  MSG msg{};
  msg.hwnd = edit.GetSafeHwnd();
  msg.message = WM_KEYDOWN;
  msg.wParam = 'Q';
  EXPECT_FALSE(edit.PreTranslateMessage(&msg));
  EXPECT_FALSE(edit.PreTranslateMessage(nullptr));
}

TEST_F(Editor, TipShowsFormulaTracksParametersAndCloses) {
  CIntelliTip& tip = edit.GetIntelliTip();
  Type(L"MyAvg(");
  ASSERT_TRUE(edit.IsTipShown());
  EXPECT_TRUE(tip.IsWindowVisible());
  EXPECT_EQ(tip.GetFunction(), CString(L"MyAvg"));
  ASSERT_EQ(tip.GetNumParams(), 2);  // the two display lines
  EXPECT_EQ(tip.GetParams()[0], CString(L"MyAvg(Price, Period)"));
  EXPECT_EQ(tip.GetParams()[1], CString(L"이동평균"));
  EXPECT_EQ(tip.GetCurParam(), 0);
  // Below the caret line: 6 characters in, one line down; 20 chars wide.
  EXPECT_EQ(Rect(tip), CRect(48, 16, 48 + 170, 16 + 34));
  // A word inside the call opens the list below the tip.
  Type(L"c");
  ASSERT_TRUE(edit.IsListShown());
  EXPECT_EQ(Rect(edit.GetIntelliList()).TopLeft(), CPoint(56, 50));
  Type(L",");
  EXPECT_FALSE(edit.IsListShown());
  EXPECT_EQ(tip.GetCurParam(), 1);
  EXPECT_EQ(Rect(tip).left, 64);  // followed the caret
  Key(VK_SPACE);
  Type(L"sum(1, 2)");  // a nested call without a definition keeps the outer tip
  EXPECT_TRUE(edit.IsTipShown());
  EXPECT_EQ(tip.GetCurParam(), 1);
  Type(L")");  // closes MyAvg's call
  EXPECT_FALSE(edit.IsTipShown());
  EXPECT_FALSE(tip.IsWindowVisible());
  EXPECT_EQ(Line(0), CString(L"MyAvg(c, sum(1, 2))"));
  // A basic function's tip is its call form and comment.
  Key(VK_RETURN);
  Type(L"BasicOne (");
  ASSERT_TRUE(edit.IsTipShown());
  EXPECT_EQ(tip.GetParams()[0], CString(L"BasicOne()"));
  EXPECT_EQ(tip.GetParams()[1], CString(L"basic comment"));
  Key(VK_ESCAPE);
  EXPECT_FALSE(edit.IsTipShown());
  EXPECT_EQ(Line(1), CString(L"BasicOne ("));
  // No tip for a word without a definition.
  Type(L"crossup(");
  EXPECT_FALSE(edit.IsTipShown());
}

TEST_F(Editor, TipHidesByItselfAndWhenItsNameIsLeftBehind) {
  CIntelliTip& tip = edit.GetIntelliTip();
  auto& clock = GetHeadlessPortFactory();
  Type(L"MyAvg(");
  clock.AdvanceClock(2999);
  EXPECT_TRUE(tip.IsWindowVisible());
  clock.AdvanceClock(1);
  EXPECT_FALSE(tip.IsWindowVisible());
  EXPECT_TRUE(edit.IsTipShown());  // the editor's flag outlives the timer
  Key(VK_ESCAPE);
  EXPECT_FALSE(edit.IsTipShown());
  Key(VK_RETURN);
  Type(L"x, MyAvg(");
  ASSERT_TRUE(edit.IsTipShown());
  Key(VK_LEFT);  // "x, MyAvg" still left of the caret
  EXPECT_TRUE(edit.IsTipShown());
  Key(VK_LEFT);  // "x, MyAv": the name is gone
  EXPECT_FALSE(edit.IsTipShown());
  Key(VK_END);
  Type(L"1, MyAvg(");
  ASSERT_TRUE(edit.IsTipShown());
  Key(VK_HOME);  // Home, Up and Down hide it outright
  EXPECT_FALSE(edit.IsTipShown());
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
