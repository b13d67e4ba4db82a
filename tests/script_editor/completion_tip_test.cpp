#include "chartcore/script_editor/completion_tip.h"

#include <gtest/gtest.h>

using chartcore::GetHeadlessPort;
using chartcore::GetHeadlessPortFactory;
using chartcore::HeadlessDrawOp;

namespace {

// A top-level parent at screen (100, 50); the headless port measures every
// character as 8 by 16 pixels, so "테스트" is 24 wide and a line 16 high.
struct IntelliTip : ::testing::Test {
  void SetUp() override {
    ASSERT_TRUE(parent.Create(nullptr, L"editor", WS_VISIBLE, CRect(100, 50, 740, 530), nullptr, 0));
    ASSERT_TRUE(tip.Create(&parent));
  }
  CRect TipRect() {
    CRect r;
    tip.GetWindowRect(&r);
    return r;
  }
  CWnd parent;
  CIntelliTip tip;
};

CStringArray Params(std::initializer_list<const wchar_t*> items) {
  CStringArray a;
  for (const wchar_t* s : items) a.Add(s);
  return a;
}

}  // namespace

TEST_F(IntelliTip, LayoutSplitsLinesAndSizesFromMeasuredText) {
  EXPECT_FALSE(tip.Create(&parent));  // one window per tip
  EXPECT_FALSE(tip.IsWindowVisible());
  tip.SetCursorPoint(CPoint(10, 20));  // client of the parent -> screen (110, 70)
  EXPECT_EQ(tip.GetCursorPoint(), CPoint(110, 70));
  CStringArray params = Params({L"Price", L"Period"});
  tip.SetFunction(L"MA(Price, Period)\n이동평균", params);
  // The array now holds the display lines, not the two parameters.
  ASSERT_EQ(tip.GetNumParams(), 2);
  EXPECT_EQ(tip.GetParams()[0], CString(L"MA(Price, Period)"));
  EXPECT_EQ(tip.GetParams()[1], CString(L"이동평균"));
  // 17 characters * 8 + 10 wide; 2 lines * 16 + 2 high.
  EXPECT_EQ(TipRect(), CRect(110, 70, 110 + 146, 70 + 34));
  // Narrower than "테스트": still its 24 pixels plus 10.
  CStringArray none;
  tip.SetFunction(L"A", none);
  EXPECT_EQ(tip.GetNumParams(), 1);
  EXPECT_EQ(TipRect(), CRect(110, 70, 144, 88));
  // Two separators make three lines, the last empty; an empty text one line.
  tip.SetFunction(L"A\nB\n", none);
  ASSERT_EQ(tip.GetNumParams(), 3);
  EXPECT_TRUE(tip.GetParams()[2].IsEmpty());
  EXPECT_EQ(TipRect().Height(), 3 * 16 + 2);
  tip.SetFunction(L"", none);
  EXPECT_EQ(tip.GetNumParams(), 1);
  EXPECT_EQ(TipRect().Height(), 18);
}

TEST_F(IntelliTip, NameAndParametersWithoutRelayout) {
  CStringArray params = Params({L"a", L"b"});
  tip.SetFunction(L"F(a, b)\ncomment", params);
  const CRect laidOut = TipRect();
  tip.SetFunctionName(L"F");
  EXPECT_EQ(tip.GetNumParams(), 2);  // the display lines stay
  EXPECT_EQ(tip.GetParams()[0], CString(L"F(a, b)"));
  EXPECT_EQ(TipRect(), laidOut);
  CStringArray three = Params({L"x", L"y", L"z"});
  tip.SetFunctionParam(three);
  EXPECT_EQ(tip.GetNumParams(), 3);
  tip.SetFunctionParam(const_cast<CStringArray&>(tip.GetParams()));  // itself: unchanged
  EXPECT_EQ(tip.GetNumParams(), 3);
  // SetCurParam repaints the whole tip but does not move or size it.
  chartcore::HeadlessWindowPort* port = GetHeadlessPort(&tip);
  ASSERT_NE(port, nullptr);
  const int invalidates = port->GetInvalidateCount();
  tip.SetCurParam(1);
  EXPECT_GT(port->GetInvalidateCount(), invalidates);
  EXPECT_EQ(TipRect(), laidOut);
}

TEST_F(IntelliTip, PaintsYellowLinesBoldParameterAndBlackFrame) {
  CStringArray params;
  tip.SetFunction(L"MA(Price, Period)\nmoving", params);
  tip.SetCurParam(1);
  tip.Show();
  chartcore::HeadlessWindowPort* port = GetHeadlessPort(&tip);
  ASSERT_NE(port, nullptr);
  tip.Invalidate();
  tip.UpdateWindow();
  const std::vector<HeadlessDrawOp>& ops = port->GetDrawOps();
  ASSERT_GE(ops.size(), 5u);
  EXPECT_EQ(ops.front().kind, HeadlessDrawOp::kFill);
  EXPECT_EQ(ops.front().color, RGB(255, 255, 200));
  EXPECT_EQ(ops.front().rect, CRect(0, 0, 146, 34));
  EXPECT_EQ(ops.back().kind, HeadlessDrawOp::kFrame);
  EXPECT_EQ(ops.back().color, RGB(0, 0, 0));
  EXPECT_EQ(ops.back().rect, CRect(0, 0, 146, 34));
  // First line in three runs: "MA(Price, " normal, "Period" bold, ")" normal.
  std::vector<HeadlessDrawOp> texts;
  for (const HeadlessDrawOp& op : ops) {
    if (op.kind == HeadlessDrawOp::kText && !op.text.IsEmpty()) texts.push_back(op);
  }
  ASSERT_EQ(texts.size(), 4u);
  EXPECT_EQ(texts[0].text, CString(L"MA(Price, "));
  EXPECT_EQ(texts[0].from, CPoint(2, 0));
  EXPECT_EQ(texts[0].fontWeight, 0);
  EXPECT_EQ(texts[0].fontHeight, 15);
  EXPECT_EQ(texts[1].text, CString(L"Period"));
  EXPECT_EQ(texts[1].from, CPoint(2 + 10 * 8, 0));
  EXPECT_EQ(texts[1].fontWeight, 700);
  EXPECT_EQ(texts[2].text, CString(L")"));
  EXPECT_EQ(texts[2].from, CPoint(2 + 16 * 8, 0));
  EXPECT_EQ(texts[3].text, CString(L"moving"));
  EXPECT_EQ(texts[3].from, CPoint(2, 16));  // one measured line lower
  // A parameter index past the list highlights nothing.
  tip.SetCurParam(5);
  tip.UpdateWindow();
  int bold = 0;
  for (const HeadlessDrawOp& op : port->GetDrawOps()) bold += op.kind == HeadlessDrawOp::kText && op.fontWeight == 700;
  EXPECT_EQ(bold, 0);
}

TEST_F(IntelliTip, HidesThreeSecondsAfterEachShow) {
  auto& clock = GetHeadlessPortFactory();
  tip.Hide();  // harmless while hidden
  EXPECT_FALSE(tip.IsShown());
  tip.Show();
  EXPECT_TRUE(tip.IsShown());
  EXPECT_TRUE(tip.IsWindowVisible());
  clock.AdvanceClock(2000);
  tip.Show();  // restarts the 3 seconds
  clock.AdvanceClock(2999);
  EXPECT_TRUE(tip.IsWindowVisible());
  clock.AdvanceClock(1);
  EXPECT_FALSE(tip.IsWindowVisible());
  EXPECT_FALSE(tip.IsShown());
  EXPECT_FALSE(clock.IsTimerRunning(&tip, CIntelliTip::kHideTimer));
  // Hide stops the timer; nothing fires later.
  tip.Show();
  tip.Hide();
  EXPECT_FALSE(clock.IsTimerRunning(&tip, CIntelliTip::kHideTimer));
  EXPECT_EQ(clock.AdvanceClock(5000), 0);
  // Destroying a shown tip leaves no timer behind.
  tip.Show();
  tip.DestroyWindow();
  EXPECT_FALSE(clock.IsTimerRunning(&tip, CIntelliTip::kHideTimer));
  EXPECT_FALSE(tip.IsShown());
}
