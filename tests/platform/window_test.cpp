// Windows over the headless port: timers on the manual clock, geometry,
// message routing, painting, focus, dialogs, clipboard and key state.
#include "chartcore/platform/window.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using chartcore::GetHeadlessPort;
using chartcore::GetHeadlessPortFactory;
using chartcore::HeadlessDrawOp;

// Records what reaches its handlers, in order, into its own log or a shared one.
class ProbeWnd : public CWnd {
 public:
  std::string log;
  std::string* sink = &log;
  std::string tag;  // written before each entry
  BOOL consumeKeyDown = FALSE;
  UINT_PTR killOnFire = 0;
  bool drawOnPaint = false;
  bool invalidateInPaint = false;  // once, after the paint began

  BOOL PreTranslateMessage(MSG* msg) override { return msg->message == WM_KEYDOWN && consumeKeyDown; }
  // The log so far, leaving it empty.
  std::string Take() { return std::exchange(log, std::string()); }

 protected:
  void Note(const std::string& what) { *sink += tag + what + " "; }
  void OnTimer(UINT_PTR id) override {
    Note("timer" + std::to_string(id));
    if (killOnFire == id) KillTimer(id);
  }
  void OnChar(UINT ch, UINT rep, UINT flags) override {
    Note("char" + std::to_string(ch) + "x" + std::to_string(rep) + "/" + std::to_string(flags));
  }
  void OnSetFocus(CWnd*) override { Note("focus"); }
  void OnKillFocus(CWnd*) override { Note("unfocus"); }
  void OnDestroy() override { Note("destroy"); }
  void OnSize(UINT, int cx, int cy) override { Note("size" + std::to_string(cx) + "x" + std::to_string(cy)); }
  void OnPaint() override {
    Note("paint");
    CPaintDC dc(this);
    if (std::exchange(invalidateInPaint, false)) Invalidate();
    if (!drawOnPaint) return;
    dc.FillSolidRect(0, 0, 10, 10, RGB(1, 2, 3));
    dc.SetTextColor(RGB(255, 0, 0));
    dc.SetBkMode(TRANSPARENT);
    dc.TextOut(4, 5, CString(L"abc"));
    CBrush black(RGB(0, 0, 0));
    CRect r(0, 0, 20, 20);
    dc.FrameRect(&r, &black);
  }
};

class TipDialog : public CDialog {
 public:
  int inits = 0;

 protected:
  BOOL OnInitDialog() override {
    ++inits;
    return TRUE;
  }
};

class WindowTest : public ::testing::Test {
 protected:
  void SetUp() override { GetHeadlessPortFactory().ResetInput(); }
  void TearDown() override { GetHeadlessPortFactory().ResetInput(); }
};

TEST_F(WindowTest, TimersFireOnTheManualClockOnly) {
  ProbeWnd wnd;
  EXPECT_EQ(wnd.SetTimer(1, 3000), 0u);  // not created yet: no timer
  ASSERT_TRUE(wnd.Create(nullptr, L"w", WS_POPUP, CRect(0, 0, 100, 50), nullptr, 7));
  wnd.Take();
  EXPECT_EQ(wnd.SetTimer(0, 3000), 0u);  // id 0 is refused
  ASSERT_EQ(wnd.SetTimer(1, 3000), 1u);
  auto& clock = GetHeadlessPortFactory();
  clock.AdvanceClock(2999);  // one millisecond short
  EXPECT_EQ(wnd.Take(), "");
  EXPECT_EQ(clock.AdvanceClock(1), 1);
  EXPECT_EQ(wnd.Take(), "timer1 ");
  // Repeats every period until killed: 7000 ms more is two more firings.
  EXPECT_EQ(clock.AdvanceClock(7000), 2);
  // Setting the id again restarts it from now.
  clock.AdvanceClock(1000);  // at 11000, 1000 ms before it would fire
  wnd.SetTimer(1, 3000);     // now due at 14000
  clock.AdvanceClock(2000);
  EXPECT_EQ(wnd.Take(), "timer1 timer1 ");
  clock.AdvanceClock(1000);
  EXPECT_EQ(wnd.Take(), "timer1 ");
  EXPECT_TRUE(wnd.KillTimer(1));
  EXPECT_FALSE(wnd.KillTimer(1));  // already gone
  clock.AdvanceClock(10000);
  EXPECT_EQ(wnd.Take(), "");

  // A handler that kills its timer fires once; periods below 10 ms become 10.
  wnd.killOnFire = 2;
  wnd.SetTimer(2, 1);
  clock.AdvanceClock(9);
  EXPECT_EQ(wnd.Take(), "");
  EXPECT_EQ(clock.AdvanceClock(100), 1);
  EXPECT_EQ(wnd.Take(), "timer2 ");

  // Destroying the window stops its timers.
  wnd.SetTimer(3, 50);
  EXPECT_TRUE(clock.IsTimerRunning(&wnd, 3));
  wnd.DestroyWindow();
  EXPECT_FALSE(clock.IsTimerRunning(&wnd, 3));
  EXPECT_EQ(clock.AdvanceClock(1000), 0);

  // Timers of several windows fire in time order: b at 200, 400, 600; a at
  // 300, 600 (set first, so first at the tie).
  std::string order;
  ProbeWnd a, b;
  a.Create(nullptr, L"a", WS_POPUP, CRect(0, 0, 1, 1), nullptr, 1);
  b.Create(nullptr, L"b", WS_POPUP, CRect(0, 0, 1, 1), nullptr, 2);
  a.sink = b.sink = &order;
  a.tag = "a.";
  b.tag = "b.";
  a.SetTimer(1, 300);
  b.SetTimer(1, 200);
  clock.AdvanceClock(600);
  EXPECT_EQ(order, "b.timer1 a.timer1 b.timer1 a.timer1 b.timer1 ");
  a.sink = &a.log;
  b.sink = &b.log;
}

TEST_F(WindowTest, GeometryAndMessageRoutingOfChildren) {
  ProbeWnd top, child;
  ASSERT_TRUE(top.Create(nullptr, L"top", WS_POPUP | WS_VISIBLE, CRect(100, 50, 500, 350), nullptr, 1));
  ASSERT_TRUE(child.Create(nullptr, L"c", WS_CHILD | WS_VISIBLE, CRect(10, 20, 110, 70), &top, 5));
  EXPECT_EQ(child.Take(), "size100x50 ");  // OnSize runs at creation
  EXPECT_EQ(top.GetDlgItem(5), &child);
  EXPECT_EQ(top.GetDlgItem(6), nullptr);

  CPoint pt(1, 2);
  child.ClientToScreen(&pt);
  EXPECT_EQ(pt, CPoint(111, 72));  // 1 + 10 + 100, 2 + 20 + 50
  child.ScreenToClient(&pt);
  EXPECT_EQ(pt, CPoint(1, 2));
  CRect wr;
  child.GetWindowRect(&wr);
  EXPECT_EQ(wr, CRect(110, 70, 210, 120));

  // Hiding the parent hides the child; ShowWindow reports the old state.
  EXPECT_TRUE(child.IsWindowVisible());
  EXPECT_TRUE(top.ShowWindow(SW_HIDE));
  EXPECT_FALSE(top.ShowWindow(SW_HIDE));
  EXPECT_FALSE(child.IsWindowVisible());
  top.ShowWindow(SW_SHOW);

  // A resize reaches OnSize; a pure move does not.
  child.MoveWindow(0, 0, 30, 40);
  child.SetWindowPos(nullptr, 5, 6, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  EXPECT_EQ(child.Take(), "size30x40 ");
  child.GetWindowRect(&wr);
  EXPECT_EQ(wr, CRect(105, 56, 135, 96));

  // The position follows the parent SetParent gives, and a parent that goes
  // away leaves the child where it is relative to the screen.
  auto other = std::make_unique<ProbeWnd>();
  ASSERT_TRUE(other->Create(nullptr, L"o", WS_POPUP | WS_VISIBLE, CRect(1000, 2000, 1100, 2100), nullptr, 2));
  EXPECT_EQ(child.SetParent(other.get()), &top);
  child.GetWindowRect(&wr);
  EXPECT_EQ(wr, CRect(1005, 2006, 1035, 2046));
  other.reset();
  EXPECT_EQ(child.GetParent(), nullptr);
  child.GetWindowRect(&wr);
  EXPECT_EQ(wr, CRect(5, 6, 35, 46));
  EXPECT_EQ(child.SetParent(&top), nullptr);
  child.GetWindowRect(&wr);
  EXPECT_EQ(wr, CRect(105, 56, 135, 96));

  // Messages go through PreTranslateMessage of the target and its parents:
  // WM_CHAR '(' with a repeat count of 3 and flags 0x1E in the high word.
  MSG msg{child.GetSafeHwnd(), WM_CHAR, L'(', MAKELPARAM(3, 0x1E), 0, POINT{0, 0}};
  EXPECT_FALSE(chartcore::DispatchWindowMessage(&msg));
  EXPECT_EQ(child.Take(), "char40x3/30 ");
  // The parent consumes key-downs: the child never sees them.
  top.consumeKeyDown = TRUE;
  MSG down{child.GetSafeHwnd(), WM_KEYDOWN, VK_DOWN, MAKELPARAM(1, 0), 0, POINT{0, 0}};
  EXPECT_TRUE(chartcore::DispatchWindowMessage(&down));
  // Unknown and null handles do nothing.
  MSG bad{nullptr, WM_CHAR, L'a', 0, 0, POINT{0, 0}};
  EXPECT_FALSE(chartcore::DispatchWindowMessage(&bad));
  EXPECT_FALSE(chartcore::DispatchWindowMessage(nullptr));

  // Destroying the parent destroys the child too (WM_DESTROY each).
  const HWND stale = child.GetSafeHwnd();
  top.Take();
  top.DestroyWindow();
  EXPECT_EQ(top.Take() + child.Take(), "destroy destroy ");
  EXPECT_FALSE(child.IsWindow());
  EXPECT_EQ(CWnd::FromHandle(reinterpret_cast<HWND>(&child)), nullptr);
  EXPECT_FALSE(top.DestroyWindow());  // second time: nothing to destroy
  MSG late{stale, WM_CHAR, L'a', 0, 0, POINT{0, 0}};
  EXPECT_FALSE(chartcore::DispatchWindowMessage(&late));
  EXPECT_EQ(child.Take(), "");
}


TEST_F(WindowTest, PaintingIsRecordedWithFixedMetrics) {
  ProbeWnd wnd;
  wnd.drawOnPaint = true;
  wnd.Create(nullptr, L"w", WS_POPUP | WS_VISIBLE, CRect(0, 0, 200, 100), nullptr, 1);
  wnd.Take();
  auto* port = GetHeadlessPort(&wnd);
  ASSERT_NE(port, nullptr);
  wnd.UpdateWindow();  // a new window is marked for painting
  wnd.UpdateWindow();  // nothing marked: no paint
  EXPECT_EQ(wnd.Take(), "paint ");

  CRect part(0, 0, 5, 5);
  wnd.InvalidateRect(&part);
  EXPECT_TRUE(port->IsInvalid());
  wnd.UpdateWindow();
  EXPECT_EQ(wnd.Take(), "paint ");
  const auto& ops = port->GetDrawOps();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].kind, HeadlessDrawOp::kFill);
  EXPECT_EQ(ops[0].rect, CRect(0, 0, 10, 10));
  EXPECT_EQ(ops[0].color, RGB(1, 2, 3));
  EXPECT_EQ(ops[1].kind, HeadlessDrawOp::kText);
  EXPECT_EQ(ops[1].text, L"abc");
  EXPECT_EQ(ops[1].rect, CRect(4, 5, 28, 21));  // 3 characters of 8 x 16
  EXPECT_FALSE(ops[1].opaque);
  EXPECT_EQ(ops[1].color, RGB(255, 0, 0));
  EXPECT_EQ(ops[2].kind, HeadlessDrawOp::kFrame);

  // An invalidation made while painting stays for the next paint.
  wnd.invalidateInPaint = true;
  wnd.Invalidate();
  wnd.UpdateWindow();
  EXPECT_TRUE(port->IsInvalid());
  wnd.UpdateWindow();
  EXPECT_FALSE(port->IsInvalid());
  EXPECT_EQ(wnd.Take(), "paint paint ");

  CClientDC dc(&wnd);
  EXPECT_EQ(dc.GetTextExtent(CString(L"테스트")), CSize(24, 16));
  EXPECT_EQ(dc.GetTextExtent(L"", 0), CSize(0, 16));
  TEXTMETRIC tm;
  ASSERT_TRUE(dc.GetTextMetrics(&tm));
  EXPECT_EQ(CSize(tm.tmAveCharWidth, tm.tmHeight), CSize(8, 16));

  // A window that is not created measures and draws nothing.
  CWnd none;
  CClientDC nodc(&none);
  EXPECT_EQ(nodc.GetTextExtent(CString(L"abc")), CSize(0, 0));
  EXPECT_FALSE(nodc.TextOut(0, 0, CString(L"x")));
}

TEST_F(WindowTest, FocusCaptureAndDialogs) {
  ProbeWnd a, b;
  a.Create(nullptr, L"a", WS_POPUP | WS_VISIBLE, CRect(0, 0, 300, 300), nullptr, 1);
  b.Create(nullptr, L"b", WS_POPUP, CRect(0, 0, 10, 10), nullptr, 2);
  a.Take();
  b.Take();
  a.SetFocus();
  EXPECT_EQ(CWnd::GetFocus(), &a);
  EXPECT_EQ(b.SetFocus(), &a);
  b.SetFocus();  // already focused: no messages
  EXPECT_EQ(a.Take() + "| " + b.Take(), "focus unfocus | focus ");
  b.DestroyWindow();
  EXPECT_EQ(CWnd::GetFocus(), nullptr);

  a.SetCapture();
  EXPECT_EQ(CWnd::GetCapture(), &a);
  EXPECT_TRUE(GetHeadlessPort(&a)->IsCaptured());
  CWnd::ReleaseCapture();
  EXPECT_EQ(CWnd::GetCapture(), nullptr);
  EXPECT_FALSE(GetHeadlessPort(&a)->IsCaptured());

  // A dialog sizes itself from template units and hides when it ends.
  TipDialog tip;
  tip.SetTemplateSize(CSize(198, 6));
  ASSERT_TRUE(tip.Create(3024, &a));
  EXPECT_FALSE(tip.Create(3024, &a));  // exists already
  EXPECT_EQ(tip.inits, 1);
  EXPECT_FALSE(tip.IsWindowVisible());  // modeless dialogs start hidden
  CRect r;
  tip.GetClientRect(&r);
  EXPECT_EQ(r, CRect(0, 0, 396, 12));  // 198 x 6 units of 2 x 2 pixels
  tip.ShowWindow(SW_SHOW);
  tip.EndDialog(2);
  EXPECT_FALSE(tip.IsWindowVisible());
  EXPECT_EQ(tip.GetResult(), 2);
  EXPECT_TRUE(tip.IsWindow());  // a modeless dialog keeps its window
}

TEST_F(WindowTest, ClipboardAndKeyStateComeFromTheFactory) {
  CString text;
  EXPECT_FALSE(GetHeadlessPortFactory().GetClipboardText(text));
  EXPECT_EQ(chartcore::GetClipboardText(), L"");
  EXPECT_TRUE(chartcore::SetClipboardText(CString(L"MA(C, 5)\r\n")));
  EXPECT_EQ(chartcore::GetClipboardText(), L"MA(C, 5)\r\n");

  // On Windows GetKeyState is the system's own; the port's state is what the
  // library reads there.
  EXPECT_GE(chartcore::GetPortKeyState(VK_SHIFT), 0);
  GetHeadlessPortFactory().SetKeyDown(VK_SHIFT, true);
  EXPECT_LT(chartcore::GetPortKeyState(VK_SHIFT), 0);
#if !defined(_WIN32)
  EXPECT_LT(GetKeyState(VK_SHIFT), 0);
#endif
  EXPECT_TRUE(chartcore::IsKeyDown(VK_SHIFT));
  EXPECT_FALSE(chartcore::IsKeyDown(VK_CONTROL));
  GetHeadlessPortFactory().SetKeyDown(VK_SHIFT, false);
  EXPECT_GE(chartcore::GetPortKeyState(VK_SHIFT), 0);

  // Installing a factory and putting back the default.
  chartcore::HeadlessPortFactory other;
  EXPECT_EQ(chartcore::SetWindowPortFactory(&other), &GetHeadlessPortFactory());
  EXPECT_EQ(&chartcore::GetWindowPortFactory(), &other);
  EXPECT_EQ(chartcore::GetClipboardText(), L"");  // the other factory's clipboard
  chartcore::SetWindowPortFactory(nullptr);
  EXPECT_EQ(&chartcore::GetWindowPortFactory(), &GetHeadlessPortFactory());
}

}  // namespace
