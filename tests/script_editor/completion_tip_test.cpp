#include "chartcore/script_editor/completion_tip.h"

#include <utility>
#include <vector>

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

TEST_F(IntelliTip, LayoutSplitsLinesAndSizesFromMeasuredTextOnly) {
  EXPECT_FALSE(tip.Create(&parent));  // one window per tip
  EXPECT_FALSE(tip.IsWindowVisible());
  tip.SetCursorPoint(CPoint(10, 20));  // client of the parent -> screen (110, 70)
  EXPECT_EQ(tip.GetCursorPoint(), CPoint(110, 70));
  // The array then holds the display lines, not the parameters given; the width is the longest
  // line (never under "테스트") plus 10, the height 16 per line plus 2.
  struct Case { const wchar_t* text; std::vector<CString> lines; int width, height; };
  const Case cases[] = {
      {L"A", {L"A"}, 34, 18},
      {L"A\nB\n", {L"A", L"B", L""}, 34, 50},  // two separators: three lines, the last empty
      {L"", {L""}, 34, 18},
      {L"MA(Price, Period)\n이동평균", {L"MA(Price, Period)", L"이동평균"}, 17 * 8 + 10, 34},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    CStringArray params = Params({L"Price", L"Period"});
    tip.SetFunction(c.text, params);
    ASSERT_EQ(tip.GetNumParams(), static_cast<int>(c.lines.size()));
    for (size_t i = 0; i < c.lines.size(); ++i) EXPECT_EQ(tip.GetParams()[static_cast<INT_PTR>(i)], c.lines[i]);
    EXPECT_EQ(TipRect(), CRect(110, 70, 110 + c.width, 70 + c.height));
  }

  // The name and the parameters alone change no layout.
  const CRect laidOut = TipRect();
  tip.SetFunctionName(L"MA");
  EXPECT_EQ(tip.GetNumParams(), 2);  // the display lines stay
  EXPECT_EQ(tip.GetParams()[0], CString(L"MA(Price, Period)"));
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
  // The first line's runs (bold ones marked) and the second line below them.
  struct Case { const wchar_t* text; int cur; std::vector<std::pair<CString, bool>> runs; };
  const Case cases[] = {
      {L"MA(Price, Period)\nmoving", 1, {{L"MA(Price, ", false}, {L"Period", true}, {L")", false}, {L"moving", false}}},
      {L"MA(Price, Period)\nmoving", 5, {{L"MA(Price, Period)", false}, {L"moving", false}}},  // past the list
      // Blanks around a parameter stay normal; a nested call is one parameter.
      {L"F( a(1, 2) , b)\nx", 0, {{L"F( ", false}, {L"a(1, 2)", true}, {L" , b)", false}, {L"x", false}}},
      {L"F(a(1, 2), b)\nx", 1, {{L"F(a(1, 2), ", false}, {L"b", true}, {L")", false}, {L"x", false}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    CStringArray params;
    tip.SetFunction(c.text, params);
    tip.SetCurParam(c.cur);
    tip.Show();
    chartcore::HeadlessWindowPort* port = GetHeadlessPort(&tip);
    ASSERT_NE(port, nullptr);
    tip.UpdateWindow();
    const CRect client(0, 0, TipRect().Width(), 34);
    const std::vector<HeadlessDrawOp>& ops = port->GetDrawOps();
    ASSERT_GE(ops.size(), 2u);
    const HeadlessDrawOp &fill = ops.front(), &frame = ops.back();
    EXPECT_TRUE(fill.kind == HeadlessDrawOp::kFill && fill.color == RGB(255, 255, 200) && fill.rect == client);
    EXPECT_TRUE(frame.kind == HeadlessDrawOp::kFrame && frame.color == RGB(0, 0, 0) && frame.rect == client);
    std::vector<HeadlessDrawOp> texts;
    for (const HeadlessDrawOp& op : ops)
      if (op.kind == HeadlessDrawOp::kText && !op.text.IsEmpty()) texts.push_back(op);
    ASSERT_EQ(texts.size(), c.runs.size());
    CPoint at(2, 0);
    for (size_t i = 0; i < texts.size(); ++i) {
      if (i + 1 == texts.size()) at = CPoint(2, 16);  // one measured line lower
      EXPECT_EQ(texts[i].text, c.runs[i].first);
      EXPECT_EQ(texts[i].from, at);
      EXPECT_EQ(texts[i].fontWeight, c.runs[i].second ? 700 : 0);
      EXPECT_EQ(texts[i].fontHeight, 15);
      at.x += 8 * c.runs[i].first.GetLength();
    }
  }
}

TEST_F(IntelliTip, HidesThreeSecondsAfterEachShow) {
  auto& clock = GetHeadlessPortFactory();
  tip.Hide();  // harmless while hidden
  EXPECT_FALSE(tip.IsShown());
  tip.Show();
  EXPECT_TRUE(tip.IsShown());
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
  EXPECT_EQ(clock.AdvanceClock(5000), 0);
}
