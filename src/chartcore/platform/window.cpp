// Windows over ports; the headless port and factory.
#include "chartcore/platform/window.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace chartcore {
namespace {

// Every live CWnd that has a handle, so FromHandle can refuse stale handles.
std::unordered_set<const CWnd*>& LiveWindows() {
  static std::unordered_set<const CWnd*> windows;
  return windows;
}

WindowPortFactory* g_pFactory = nullptr;

// Win32 raises shorter timer periods to this minimum.
constexpr UINT kMinTimerElapse = 10;

}  // namespace

// ---------------------------------------------------------------------------
// WindowPort / WindowPortFactory
// ---------------------------------------------------------------------------
WindowPort::~WindowPort() = default;
WindowPortFactory::~WindowPortFactory() = default;

CWnd* WindowPortFactory::SetFocusWindow(CWnd* wnd) {
  CWnd* old = m_pFocus;
  if (old == wnd) return old;
  m_pFocus = wnd;
  if (old != nullptr) old->SendMessage(WM_KILLFOCUS, reinterpret_cast<WPARAM>(wnd ? wnd->GetSafeHwnd() : nullptr));
  // The old window's handler may have moved the focus elsewhere already.
  if (wnd != nullptr && m_pFocus == wnd) {
    if (wnd->GetPort() != nullptr) wnd->GetPort()->SetFocus();
    wnd->SendMessage(WM_SETFOCUS, reinterpret_cast<WPARAM>(old ? old->GetSafeHwnd() : nullptr));
  }
  return old;
}

CWnd* WindowPortFactory::SetCaptureWindow(CWnd* wnd) {
  CWnd* old = m_pCapture;
  if (old == wnd) return old;
  if (old != nullptr && old->GetPort() != nullptr) old->GetPort()->SetCapture(false);
  m_pCapture = wnd;
  if (wnd != nullptr && wnd->GetPort() != nullptr) wnd->GetPort()->SetCapture(true);
  return old;
}

void WindowPortFactory::ForgetWindow(CWnd* wnd) {
  if (m_pFocus == wnd) m_pFocus = nullptr;
  if (m_pCapture == wnd) m_pCapture = nullptr;
}

WindowPortFactory* SetWindowPortFactory(WindowPortFactory* factory) {
  WindowPortFactory* old = &GetWindowPortFactory();
  g_pFactory = factory;
  return old;
}

WindowPortFactory& GetWindowPortFactory() {
  if (g_pFactory != nullptr) return *g_pFactory;
  return GetHeadlessPortFactory();
}

BOOL SetClipboardText(const CString& text) { return GetWindowPortFactory().SetClipboardText(text); }

CString GetClipboardText() {
  CString text;
  if (!GetWindowPortFactory().GetClipboardText(text)) text.Empty();
  return text;
}

SHORT GetPortKeyState(int nVirtKey) { return GetWindowPortFactory().GetKeyState(nVirtKey); }

bool IsKeyDown(int nVirtKey) { return GetPortKeyState(nVirtKey) < 0; }

BOOL DispatchWindowMessage(MSG* msg) {
  if (msg == nullptr) return FALSE;
  CWnd* target = CWnd::FromHandle(msg->hwnd);
  if (target == nullptr) return FALSE;
  for (CWnd* wnd = target; wnd != nullptr; wnd = wnd->GetParent()) {
    if (wnd->PreTranslateMessage(msg)) return TRUE;
    // PreTranslateMessage may have destroyed the target.
    if (CWnd::FromHandle(msg->hwnd) != target) return TRUE;
  }
  target->SendMessage(msg->message, msg->wParam, msg->lParam);
  return FALSE;
}

// ---------------------------------------------------------------------------
// HeadlessWindowPort
// ---------------------------------------------------------------------------
HeadlessWindowPort::HeadlessWindowPort(CWnd* owner) : m_pOwner(owner) {}

HeadlessWindowPort::~HeadlessWindowPort() { GetHeadlessPortFactory().StopAllTimers(m_pOwner); }

void HeadlessWindowPort::Create(const WindowCreateInfo& info) {
  m_dwStyle = info.style;
  m_rect = info.rect;
  m_rect.NormalizeRect();
  m_text = info.text;
  m_bCreated = true;
  m_bInvalid = true;
  m_rcInvalid = GetClientRect();
}

void HeadlessWindowPort::Destroy() {
  GetHeadlessPortFactory().StopAllTimers(m_pOwner);
  m_bCreated = false;
  m_bVisible = false;
}

void HeadlessWindowPort::Show(int nCmdShow) {
  bool show = nCmdShow != SW_HIDE;
  if (show && !m_bVisible) Invalidate(nullptr);
  m_bVisible = show;
}

void HeadlessWindowPort::Move(const CRect& rect) {
  CRect r = rect;
  r.NormalizeRect();
  if (r == m_rect) return;
  m_rect = r;
  Invalidate(nullptr);
}

CRect HeadlessWindowPort::GetClientRect() const { return CRect(0, 0, m_rect.Width(), m_rect.Height()); }

CPoint HeadlessWindowPort::ClientToScreen(CPoint pt) const {
  CPoint p(pt.x + m_rect.left, pt.y + m_rect.top);
  // A child's rectangle is relative to its parent's client area. The parent
  // is asked of the owner each time: SetParent moves the window and a
  // destroyed parent lets go of its children.
  CWnd* parent = m_pOwner != nullptr ? m_pOwner->GetParent() : nullptr;
  if ((m_dwStyle & WS_CHILD) != 0 && parent != nullptr && parent->GetPort() != nullptr)
    return parent->GetPort()->ClientToScreen(p);
  return p;
}

CPoint HeadlessWindowPort::ScreenToClient(CPoint pt) const {
  CPoint origin = ClientToScreen(CPoint(0, 0));
  return CPoint(pt.x - origin.x, pt.y - origin.y);
}

void HeadlessWindowPort::Invalidate(const CRect* rect) {
  ++m_nInvalidates;
  CRect client = GetClientRect();
  CRect r = rect != nullptr ? *rect : client;
  if (!m_bInvalid) {
    m_rcInvalid = r;
  } else {
    m_rcInvalid.left = std::min(m_rcInvalid.left, r.left);
    m_rcInvalid.top = std::min(m_rcInvalid.top, r.top);
    m_rcInvalid.right = std::max(m_rcInvalid.right, r.right);
    m_rcInvalid.bottom = std::max(m_rcInvalid.bottom, r.bottom);
  }
  m_bInvalid = true;
}

void HeadlessWindowPort::Update() {
  if (!m_bInvalid || !m_bCreated || m_bPainting) return;
  const int paintsBefore = m_nPaints;
  m_pOwner->SendMessage(WM_PAINT);
  // A handler that never began painting is validated as the default handling
  // does. When BeginPaint ran it took the marked area, so anything marked now
  // was invalidated during the paint and must stay for the next one.
  if (m_nPaints == paintsBefore) m_bInvalid = false;
}

CRect HeadlessWindowPort::BeginPaint() {
  m_bPainting = true;
  ++m_nPaints;
  m_ops.clear();
  CRect r = m_bInvalid ? m_rcInvalid : GetClientRect();
  m_bInvalid = false;
  return r;
}

void HeadlessWindowPort::EndPaint() { m_bPainting = false; }

namespace {
HeadlessDrawOp RectOp(HeadlessDrawOp::Kind kind, const CRect& rect, COLORREF color) {
  HeadlessDrawOp op;
  op.kind = kind;
  op.rect = rect;
  op.color = color;
  return op;
}
}  // namespace

void HeadlessWindowPort::FillRect(const CRect& rect, COLORREF color) {
  m_ops.push_back(RectOp(HeadlessDrawOp::kFill, rect, color));
}

void HeadlessWindowPort::FrameRect(const CRect& rect, COLORREF color) {
  m_ops.push_back(RectOp(HeadlessDrawOp::kFrame, rect, color));
}

void HeadlessWindowPort::DrawLine(CPoint from, CPoint to, COLORREF color, int /*width*/) {
  HeadlessDrawOp op;
  op.kind = HeadlessDrawOp::kLine;
  op.from = from;
  op.to = to;
  op.color = color;
  m_ops.push_back(op);
}

void HeadlessWindowPort::DrawText(int x, int y, const wchar_t* text, int length, const LOGFONT* font,
                                  COLORREF color, bool opaque, COLORREF background) {
  HeadlessDrawOp op;
  op.kind = HeadlessDrawOp::kText;
  op.from = CPoint(x, y);
  op.text = CString(text, length);
  CSize extent = MeasureText(font, text, length);
  op.rect = CRect(x, y, x + extent.cx, y + extent.cy);
  op.color = color;
  op.opaque = opaque;
  op.background = background;
  if (font != nullptr) {
    op.fontHeight = font->lfHeight;
    op.fontWeight = font->lfWeight;
  }
  m_ops.push_back(op);
}

CSize HeadlessWindowPort::MeasureText(const LOGFONT* /*font*/, const wchar_t* /*text*/, int length) {
  return CSize(length > 0 ? length * kCharWidth : 0, kCharHeight);
}

void HeadlessWindowPort::GetTextMetrics(const LOGFONT* /*font*/, TEXTMETRIC* metrics) {
  if (metrics == nullptr) return;
  std::memset(metrics, 0, sizeof(*metrics));
  metrics->tmHeight = kCharHeight;
  metrics->tmAscent = 13;
  metrics->tmDescent = 3;
  metrics->tmAveCharWidth = kCharWidth;
  metrics->tmMaxCharWidth = kCharWidth;
  metrics->tmWeight = FW_NORMAL;
}

void HeadlessWindowPort::SetTimer(UINT_PTR id, UINT elapse) { GetHeadlessPortFactory().StartTimer(m_pOwner, id, elapse); }

bool HeadlessWindowPort::KillTimer(UINT_PTR id) { return GetHeadlessPortFactory().StopTimer(m_pOwner, id); }

void HeadlessWindowPort::CreateCaret(int width, int height) {
  m_bHasCaret = true;
  m_bCaretShown = false;  // a new caret starts hidden, as Win32's does
  m_sizeCaret = CSize(width, height);
}

void HeadlessWindowPort::DestroyCaret() {
  m_bHasCaret = false;
  m_bCaretShown = false;
}

// ---------------------------------------------------------------------------
// HeadlessPortFactory
// ---------------------------------------------------------------------------
HeadlessPortFactory::HeadlessPortFactory() = default;
HeadlessPortFactory::~HeadlessPortFactory() = default;

std::unique_ptr<WindowPort> HeadlessPortFactory::CreatePort(CWnd* wnd) {
  return std::unique_ptr<WindowPort>(new HeadlessWindowPort(wnd));
}

BOOL HeadlessPortFactory::SetClipboardText(const CString& text) {
  m_clipboard = text;
  m_bHasClipboard = true;
  return TRUE;
}

BOOL HeadlessPortFactory::GetClipboardText(CString& text) {
  if (!m_bHasClipboard) {
    text.Empty();
    return FALSE;
  }
  text = m_clipboard;
  return TRUE;
}

SHORT HeadlessPortFactory::GetKeyState(int nVirtKey) {
  bool down = std::find(m_keysDown.begin(), m_keysDown.end(), nVirtKey) != m_keysDown.end();
  return down ? static_cast<SHORT>(-128) : static_cast<SHORT>(0);
}

COLORREF HeadlessPortFactory::GetSysColor(int nIndex) {
  switch (nIndex) {
    case COLOR_SCROLLBAR: return RGB(200, 200, 200);
    case COLOR_WINDOW: return RGB(255, 255, 255);
    case COLOR_WINDOWTEXT: return RGB(0, 0, 0);
    case COLOR_HIGHLIGHT: return RGB(0, 120, 215);
    case COLOR_HIGHLIGHTTEXT: return RGB(255, 255, 255);
    case COLOR_BTNFACE: return RGB(240, 240, 240);
    case COLOR_GRAYTEXT: return RGB(109, 109, 109);
    case COLOR_INFOTEXT: return RGB(0, 0, 0);
    case COLOR_INFOBK: return RGB(255, 255, 225);
    default: return RGB(0, 0, 0);
  }
}

void HeadlessPortFactory::SetKeyDown(int nVirtKey, bool down) {
  auto it = std::find(m_keysDown.begin(), m_keysDown.end(), nVirtKey);
  if (down && it == m_keysDown.end()) m_keysDown.push_back(nVirtKey);
  if (!down && it != m_keysDown.end()) m_keysDown.erase(it);
}

void HeadlessPortFactory::ResetInput() {
  m_keysDown.clear();
  m_clipboard.Empty();
  m_bHasClipboard = false;
}

void HeadlessPortFactory::StartTimer(CWnd* wnd, UINT_PTR id, UINT elapse) {
  if (elapse < kMinTimerElapse) elapse = kMinTimerElapse;
  StopTimer(wnd, id);
  m_timers.push_back(Timer{wnd, id, elapse, m_dwNow + elapse, m_nOrder++});
}

bool HeadlessPortFactory::StopTimer(CWnd* wnd, UINT_PTR id) {
  auto it = std::find_if(m_timers.begin(), m_timers.end(),
                         [&](const Timer& t) { return t.wnd == wnd && t.id == id; });
  if (it == m_timers.end()) return false;
  m_timers.erase(it);
  return true;
}

void HeadlessPortFactory::StopAllTimers(CWnd* wnd) {
  m_timers.erase(std::remove_if(m_timers.begin(), m_timers.end(), [&](const Timer& t) { return t.wnd == wnd; }),
                 m_timers.end());
}

bool HeadlessPortFactory::IsTimerRunning(const CWnd* wnd, UINT_PTR id) const {
  return std::any_of(m_timers.begin(), m_timers.end(), [&](const Timer& t) { return t.wnd == wnd && t.id == id; });
}

DWORD HeadlessPortFactory::GetTimerDue(const CWnd* wnd, UINT_PTR id) const {
  for (const Timer& t : m_timers)
    if (t.wnd == wnd && t.id == id) return t.due;
  return 0;
}

int HeadlessPortFactory::AdvanceClock(DWORD ms) {
  const DWORD end = m_dwNow + ms;
  int fired = 0;
  for (;;) {
    // The earliest due timer at or before the end; ties by the order set.
    const Timer* next = nullptr;
    for (const Timer& t : m_timers) {
      if (t.due > end) continue;
      if (next == nullptr || t.due < next->due || (t.due == next->due && t.order < next->order)) next = &t;
    }
    if (next == nullptr) break;
    CWnd* wnd = next->wnd;
    UINT_PTR id = next->id;
    m_dwNow = next->due;
    // Reschedule before delivery, so a handler that kills or resets the
    // timer has the last word.
    Timer fire = *next;
    StopTimer(wnd, id);
    fire.due = m_dwNow + fire.elapse;
    fire.order = m_nOrder++;
    m_timers.push_back(fire);
    ++fired;
    wnd->SendMessage(WM_TIMER, static_cast<WPARAM>(id), 0);
  }
  m_dwNow = end;
  return fired;
}

HeadlessPortFactory& GetHeadlessPortFactory() {
  static HeadlessPortFactory factory;
  return factory;
}

HeadlessWindowPort* GetHeadlessPort(const CWnd* wnd) {
  if (wnd == nullptr) return nullptr;
  return dynamic_cast<HeadlessWindowPort*>(wnd->GetPort());
}

}  // namespace chartcore

#if !defined(_WIN32)
SHORT GetKeyState(int nVirtKey) { return chartcore::GetPortKeyState(nVirtKey); }
DWORD GetSysColor(int nIndex) { return chartcore::GetWindowPortFactory().GetSysColor(nIndex); }
DWORD GetTickCount() { return chartcore::GetWindowPortFactory().GetTickCount(); }
#endif

// ---------------------------------------------------------------------------
// Drawing objects
// ---------------------------------------------------------------------------
CFont::CFont() : m_bCreated(false) { std::memset(&m_lf, 0, sizeof(m_lf)); }

BOOL CFont::CreateFontIndirect(const LOGFONT* lf) {
  if (lf == nullptr) return FALSE;
  m_lf = *lf;
  m_lf.lfFaceName[31] = L'\0';
  m_bCreated = true;
  return TRUE;
}

BOOL CFont::CreatePointFont(int nPointSize, LPCTSTR lpszFaceName) {
  LOGFONT lf;
  std::memset(&lf, 0, sizeof(lf));
  // Tenths of a point at 96 pixels per inch, rounded: -(pt * 96 / 72).
  lf.lfHeight = -static_cast<LONG>((nPointSize * 96 + 360) / 720);
  lf.lfWeight = FW_NORMAL;
  if (lpszFaceName != nullptr) {
    size_t n = 0;
    while (n < 31 && lpszFaceName[n] != L'\0') {
      lf.lfFaceName[n] = lpszFaceName[n];
      ++n;
    }
  }
  return CreateFontIndirect(&lf);
}

int CFont::GetLogFont(LOGFONT* lf) const {
  if (!m_bCreated || lf == nullptr) return 0;
  *lf = m_lf;
  return static_cast<int>(sizeof(LOGFONT));
}

BOOL CFont::DeleteObject() {
  BOOL was = m_bCreated ? TRUE : FALSE;
  m_bCreated = false;
  return was;
}

BOOL CPen::CreatePen(int /*nPenStyle*/, int nWidth, COLORREF color) {
  m_color = color;
  m_nWidth = nWidth < 1 ? 1 : nWidth;
  return TRUE;
}

// ---------------------------------------------------------------------------
// CDC
// ---------------------------------------------------------------------------
CDC::CDC(CWnd* wnd) : m_pWnd(wnd) {
  if (wnd != nullptr) m_pFont = wnd->GetFont();
}

CDC::~CDC() = default;

chartcore::WindowPort* CDC::Port() const { return m_pWnd != nullptr ? m_pWnd->GetPort() : nullptr; }

CFont* CDC::SelectObject(CFont* font) {
  CFont* old = m_pFont;
  m_pFont = font;
  return old;
}

CPen* CDC::SelectObject(CPen* pen) {
  CPen* old = m_pPen;
  m_pPen = pen;
  return old;
}

COLORREF CDC::SetTextColor(COLORREF color) {
  COLORREF old = m_crText;
  m_crText = color;
  return old;
}

COLORREF CDC::SetBkColor(COLORREF color) {
  COLORREF old = m_crBk;
  m_crBk = color;
  return old;
}

int CDC::SetBkMode(int mode) {
  int old = m_nBkMode;
  if (mode == TRANSPARENT || mode == OPAQUE) m_nBkMode = mode;
  return old;
}

BOOL CDC::TextOut(int x, int y, LPCTSTR text, int count) {
  chartcore::WindowPort* port = Port();
  if (port == nullptr || text == nullptr) return FALSE;
  if (count < 0) count = static_cast<int>(std::wcslen(text));
  port->DrawText(x, y, text, count, m_pFont != nullptr ? m_pFont->GetLogFontPtr() : nullptr, m_crText,
                 m_nBkMode == OPAQUE, m_crBk);
  return TRUE;
}

BOOL CDC::TextOut(int x, int y, const CString& text) { return TextOut(x, y, text.GetString(), text.GetLength()); }

CSize CDC::GetTextExtent(LPCTSTR text, int count) const {
  chartcore::WindowPort* port = Port();
  if (port == nullptr || text == nullptr) return CSize(0, 0);
  if (count < 0) count = static_cast<int>(std::wcslen(text));
  return port->MeasureText(m_pFont != nullptr ? m_pFont->GetLogFontPtr() : nullptr, text, count);
}

CSize CDC::GetTextExtent(const CString& text) const { return GetTextExtent(text.GetString(), text.GetLength()); }

BOOL CDC::GetTextMetrics(TEXTMETRIC* metrics) const {
  chartcore::WindowPort* port = Port();
  if (port == nullptr || metrics == nullptr) return FALSE;
  port->GetTextMetrics(m_pFont != nullptr ? m_pFont->GetLogFontPtr() : nullptr, metrics);
  return TRUE;
}

void CDC::FillSolidRect(LPCRECT rect, COLORREF color) {
  chartcore::WindowPort* port = Port();
  if (port != nullptr && rect != nullptr) port->FillRect(CRect(*rect), color);
}

void CDC::FillSolidRect(int x, int y, int cx, int cy, COLORREF color) {
  CRect r(x, y, x + cx, y + cy);
  FillSolidRect(&r, color);
}

void CDC::FillRect(LPCRECT rect, CBrush* brush) {
  if (brush != nullptr) FillSolidRect(rect, brush->GetColor());
}

void CDC::FrameRect(LPCRECT rect, CBrush* brush) {
  chartcore::WindowPort* port = Port();
  if (port != nullptr && rect != nullptr && brush != nullptr) port->FrameRect(CRect(*rect), brush->GetColor());
}

CPoint CDC::MoveTo(int x, int y) {
  CPoint old = m_ptCurrent;
  m_ptCurrent = CPoint(x, y);
  return old;
}

BOOL CDC::LineTo(int x, int y) {
  chartcore::WindowPort* port = Port();
  CPoint to(x, y);
  if (port != nullptr)
    port->DrawLine(m_ptCurrent, to, m_pPen != nullptr ? m_pPen->GetColor() : RGB(0, 0, 0),
                   m_pPen != nullptr ? m_pPen->GetWidth() : 1);
  m_ptCurrent = to;
  return port != nullptr ? TRUE : FALSE;
}

CPaintDC::CPaintDC(CWnd* wnd) : CDC(wnd) {
  chartcore::WindowPort* port = Port();
  if (port != nullptr) m_rcPaint = port->BeginPaint();
}

CPaintDC::~CPaintDC() {
  chartcore::WindowPort* port = Port();
  if (port != nullptr) port->EndPaint();
}

// ---------------------------------------------------------------------------
// CWnd
// ---------------------------------------------------------------------------
CWnd::CWnd() = default;

CWnd::~CWnd() {
  // Virtual handlers of the derived part cannot run any more: tear down
  // without WM_DESTROY. A derived window destroys itself in its own
  // destructor when it wants OnDestroy.
  for (CWnd* child : std::vector<CWnd*>(m_children)) child->m_pParent = nullptr;
  m_children.clear();
  if (m_pParent != nullptr) {
    auto& siblings = m_pParent->m_children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), this), siblings.end());
    m_pParent = nullptr;
  }
  ReleasePort();
}

void CWnd::ReleasePort() {
  chartcore::GetWindowPortFactory().ForgetWindow(this);
  chartcore::GetHeadlessPortFactory().ForgetWindow(this);
  if (m_port) {
    m_port->Destroy();
    m_port.reset();
  }
  chartcore::LiveWindows().erase(this);
  m_hWnd = nullptr;
}

CWnd* CWnd::FromHandle(HWND hWnd) {
  const CWnd* wnd = reinterpret_cast<const CWnd*>(hWnd);
  if (wnd == nullptr || chartcore::LiveWindows().count(wnd) == 0) return nullptr;
  return const_cast<CWnd*>(wnd);
}

BOOL CWnd::PreCreateWindow(CREATESTRUCT& /*cs*/) { return TRUE; }

BOOL CWnd::Create(LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, const RECT& rect, CWnd* pParentWnd,
                  UINT nID) {
  if (m_hWnd != nullptr || pParentWnd == this) return FALSE;
  CREATESTRUCT cs;
  std::memset(&cs, 0, sizeof(cs));
  cs.hwndParent = pParentWnd != nullptr ? pParentWnd->GetSafeHwnd() : nullptr;
  cs.x = rect.left;
  cs.y = rect.top;
  cs.cx = rect.right - rect.left;
  cs.cy = rect.bottom - rect.top;
  cs.style = static_cast<LONG>(dwStyle);
  cs.lpszName = lpszWindowName;
  cs.lpszClass = lpszClassName;
  cs.hMenu = reinterpret_cast<HMENU>(static_cast<UINT_PTR>(nID));
  if (!PreCreateWindow(cs)) return FALSE;

  m_dwStyle = static_cast<DWORD>(cs.style);
  m_nID = static_cast<UINT>(reinterpret_cast<UINT_PTR>(cs.hMenu));
  m_strText = cs.lpszName != nullptr ? CString(cs.lpszName) : CString();
  m_port = chartcore::GetWindowPortFactory().CreatePort(this);
  if (!m_port) return FALSE;
  m_hWnd = reinterpret_cast<HWND>(this);
  chartcore::LiveWindows().insert(this);
  m_pParent = pParentWnd;
  if (pParentWnd != nullptr) pParentWnd->m_children.push_back(this);

  chartcore::WindowCreateInfo info;
  info.parent = pParentWnd;
  info.style = m_dwStyle & ~WS_VISIBLE;
  info.rect = CRect(cs.x, cs.y, cs.x + cs.cx, cs.y + cs.cy);
  info.text = m_strText;
  info.id = m_nID;
  m_port->Create(info);

  if (OnCreate(&cs) == -1) {
    DestroyWindow();
    return FALSE;
  }
  CRect client = m_port->GetClientRect();
  OnSize(0, client.Width(), client.Height());
  if ((m_dwStyle & WS_VISIBLE) != 0) m_port->Show(SW_SHOW);
  return TRUE;
}

BOOL CWnd::DestroyWindow() {
  if (m_hWnd == nullptr || m_bDestroying) return FALSE;
  m_bDestroying = true;
  SendMessage(WM_DESTROY);
  for (CWnd* child : std::vector<CWnd*>(m_children)) {
    if (FromHandle(reinterpret_cast<HWND>(child)) == child) child->DestroyWindow();
  }
  ReleasePort();
  m_bDestroying = false;
  PostNcDestroy();
  return TRUE;
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (m_hWnd == nullptr) return 0;
  return WindowProc(message, wParam, lParam);
}

BOOL CWnd::PreTranslateMessage(MSG* /*pMsg*/) { return FALSE; }

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  const UINT repeat = LOWORD(lParam);
  const UINT flags = HIWORD(lParam);
  const CPoint mouse(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
  switch (message) {
    case WM_DESTROY: OnDestroy(); return 0;
    case WM_PAINT: OnPaint(); return 0;
    case WM_SIZE: OnSize(static_cast<UINT>(wParam), LOWORD(lParam), HIWORD(lParam)); return 0;
    case WM_TIMER: OnTimer(static_cast<UINT_PTR>(wParam)); return 0;
    case WM_SETFOCUS: OnSetFocus(FromHandle(reinterpret_cast<HWND>(wParam))); return 0;
    case WM_KILLFOCUS: OnKillFocus(FromHandle(reinterpret_cast<HWND>(wParam))); return 0;
    case WM_KEYDOWN: OnKeyDown(static_cast<UINT>(wParam), repeat, flags); return 0;
    case WM_KEYUP: OnKeyUp(static_cast<UINT>(wParam), repeat, flags); return 0;
    case WM_CHAR: OnChar(static_cast<UINT>(wParam), repeat, flags); return 0;
    case WM_LBUTTONDOWN: OnLButtonDown(static_cast<UINT>(wParam), mouse); return 0;
    case WM_LBUTTONUP: OnLButtonUp(static_cast<UINT>(wParam), mouse); return 0;
    case WM_LBUTTONDBLCLK: OnLButtonDblClk(static_cast<UINT>(wParam), mouse); return 0;
    case WM_RBUTTONDOWN: OnRButtonDown(static_cast<UINT>(wParam), mouse); return 0;
    case WM_MOUSEMOVE: OnMouseMove(static_cast<UINT>(wParam), mouse); return 0;
    case WM_MOUSEWHEEL: {
      // The wheel's point is in screen coordinates.
      CPoint pt = mouse;
      ScreenToClient(&pt);
      return OnMouseWheel(LOWORD(wParam), static_cast<short>(HIWORD(wParam)), pt);
    }
    case WM_VSCROLL: OnVScroll(LOWORD(wParam), static_cast<UINT>(static_cast<short>(HIWORD(wParam)))); return 0;
    case WM_HSCROLL: OnHScroll(LOWORD(wParam), static_cast<UINT>(static_cast<short>(HIWORD(wParam)))); return 0;
    case WM_NOTIFY: {
      LRESULT result = 0;
      if (OnNotify(wParam, lParam, &result)) return result;
      return DefWindowProc(message, wParam, lParam);
    }
    case WM_COMMAND:
      if (OnCommand(wParam, lParam)) return 0;
      return DefWindowProc(message, wParam, lParam);
    case WM_SETTEXT:
      SetWindowText(reinterpret_cast<LPCTSTR>(lParam));
      return TRUE;
    case WM_CLOSE: DestroyWindow(); return 0;
    default: return DefWindowProc(message, wParam, lParam);
  }
}

LRESULT CWnd::DefWindowProc(UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) { return 0; }

int CWnd::OnCreate(LPCREATESTRUCT /*lpCreateStruct*/) { return 0; }
void CWnd::OnDestroy() {}
void CWnd::PostNcDestroy() {}

void CWnd::OnPaint() {
  // Validates the marked area, as the system's default painting does.
  CPaintDC dc(this);
}

void CWnd::OnSize(UINT /*nType*/, int /*cx*/, int /*cy*/) {}
void CWnd::OnTimer(UINT_PTR /*nIDEvent*/) {}
void CWnd::OnSetFocus(CWnd* /*pOldWnd*/) {}
void CWnd::OnKillFocus(CWnd* /*pNewWnd*/) {}
void CWnd::OnKeyDown(UINT /*nChar*/, UINT /*nRepCnt*/, UINT /*nFlags*/) {}
void CWnd::OnKeyUp(UINT /*nChar*/, UINT /*nRepCnt*/, UINT /*nFlags*/) {}
void CWnd::OnChar(UINT /*nChar*/, UINT /*nRepCnt*/, UINT /*nFlags*/) {}
void CWnd::OnLButtonDown(UINT /*nFlags*/, CPoint /*point*/) {}
void CWnd::OnLButtonUp(UINT /*nFlags*/, CPoint /*point*/) {}
void CWnd::OnLButtonDblClk(UINT /*nFlags*/, CPoint /*point*/) {}
void CWnd::OnRButtonDown(UINT /*nFlags*/, CPoint /*point*/) {}
void CWnd::OnMouseMove(UINT /*nFlags*/, CPoint /*point*/) {}
BOOL CWnd::OnMouseWheel(UINT /*nFlags*/, short /*zDelta*/, CPoint /*pt*/) { return FALSE; }
void CWnd::OnVScroll(UINT /*nSBCode*/, UINT /*nPos*/) {}
void CWnd::OnHScroll(UINT /*nSBCode*/, UINT /*nPos*/) {}
BOOL CWnd::OnNotify(WPARAM /*wParam*/, LPARAM /*lParam*/, LRESULT* /*pResult*/) { return FALSE; }
BOOL CWnd::OnCommand(WPARAM /*wParam*/, LPARAM /*lParam*/) { return FALSE; }

BOOL CWnd::ShowWindow(int nCmdShow) {
  if (!m_port) return FALSE;
  BOOL was = m_port->IsVisible() ? TRUE : FALSE;
  m_port->Show(nCmdShow);
  if (nCmdShow == SW_HIDE)
    m_dwStyle &= ~WS_VISIBLE;
  else
    m_dwStyle |= WS_VISIBLE;
  return was;
}

BOOL CWnd::IsWindowVisible() const {
  if (!m_port || !m_port->IsVisible()) return FALSE;
  // A child is visible only while its parents are.
  if ((m_dwStyle & WS_CHILD) != 0 && m_pParent != nullptr) return m_pParent->IsWindowVisible();
  return TRUE;
}

void CWnd::MoveWindow(int x, int y, int nWidth, int nHeight, BOOL bRepaint) {
  if (!m_port) return;
  CRect old = m_port->GetWindowRect();
  m_port->Move(CRect(x, y, x + nWidth, y + nHeight));
  CRect now = m_port->GetWindowRect();
  if (old.Width() != now.Width() || old.Height() != now.Height()) OnSize(0, now.Width(), now.Height());
  if (bRepaint) m_port->Invalidate(nullptr);
}

void CWnd::MoveWindow(LPCRECT lpRect, BOOL bRepaint) {
  if (lpRect != nullptr)
    MoveWindow(lpRect->left, lpRect->top, lpRect->right - lpRect->left, lpRect->bottom - lpRect->top, bRepaint);
}

BOOL CWnd::SetWindowPos(const CWnd* /*pWndInsertAfter*/, int x, int y, int cx, int cy, UINT nFlags) {
  if (!m_port) return FALSE;
  CRect r = m_port->GetWindowRect();
  if ((nFlags & SWP_NOMOVE) == 0) r = CRect(x, y, x + r.Width(), y + r.Height());
  if ((nFlags & SWP_NOSIZE) == 0) r = CRect(r.left, r.top, r.left + cx, r.top + cy);
  if ((nFlags & (SWP_NOMOVE | SWP_NOSIZE)) != (SWP_NOMOVE | SWP_NOSIZE))
    MoveWindow(r.left, r.top, r.Width(), r.Height(), TRUE);
  if ((nFlags & SWP_SHOWWINDOW) != 0) ShowWindow((nFlags & SWP_NOACTIVATE) != 0 ? SW_SHOWNA : SW_SHOW);
  if ((nFlags & SWP_HIDEWINDOW) != 0) ShowWindow(SW_HIDE);
  return TRUE;
}

void CWnd::GetWindowRect(LPRECT lpRect) const {
  if (lpRect == nullptr) return;
  if (!m_port) {
    *lpRect = CRect();
    return;
  }
  CRect client = m_port->GetClientRect();
  CPoint tl = m_port->ClientToScreen(CPoint(0, 0));
  *lpRect = CRect(tl.x, tl.y, tl.x + client.Width(), tl.y + client.Height());
}

void CWnd::GetClientRect(LPRECT lpRect) const {
  if (lpRect == nullptr) return;
  *lpRect = m_port ? m_port->GetClientRect() : CRect();
}

void CWnd::ClientToScreen(LPPOINT lpPoint) const {
  if (lpPoint == nullptr || !m_port) return;
  *lpPoint = m_port->ClientToScreen(CPoint(*lpPoint));
}

namespace {
// Maps both corners of a rectangle with one point mapping.
template <typename Map>
void MapCorners(LPRECT rect, Map map) {
  CPoint tl = map(CPoint(rect->left, rect->top));
  CPoint br = map(CPoint(rect->right, rect->bottom));
  *rect = CRect(tl, br);
}
}  // namespace

void CWnd::ClientToScreen(LPRECT lpRect) const {
  if (lpRect == nullptr || !m_port) return;
  MapCorners(lpRect, [&](CPoint p) { return m_port->ClientToScreen(p); });
}

void CWnd::ScreenToClient(LPPOINT lpPoint) const {
  if (lpPoint == nullptr || !m_port) return;
  *lpPoint = m_port->ScreenToClient(CPoint(*lpPoint));
}

void CWnd::ScreenToClient(LPRECT lpRect) const {
  if (lpRect == nullptr || !m_port) return;
  MapCorners(lpRect, [&](CPoint p) { return m_port->ScreenToClient(p); });
}

void CWnd::Invalidate(BOOL /*bErase*/) {
  if (m_port) m_port->Invalidate(nullptr);
}

void CWnd::InvalidateRect(LPCRECT lpRect, BOOL /*bErase*/) {
  if (!m_port) return;
  if (lpRect == nullptr) {
    m_port->Invalidate(nullptr);
  } else {
    CRect r(*lpRect);
    m_port->Invalidate(&r);
  }
}

void CWnd::UpdateWindow() {
  if (m_port) m_port->Update();
}

BOOL CWnd::EnableWindow(BOOL bEnable) {
  BOOL wasDisabled = m_bEnabled ? FALSE : TRUE;
  m_bEnabled = bEnable != FALSE;
  if (m_bEnabled)
    m_dwStyle &= ~WS_DISABLED;
  else
    m_dwStyle |= WS_DISABLED;
  if (m_port) m_port->SetEnabled(m_bEnabled);
  return wasDisabled;
}

void CWnd::SetWindowText(LPCTSTR lpszString) {
  m_strText = lpszString != nullptr ? CString(lpszString) : CString();
  if (m_port) m_port->SetText(m_strText);
}

void CWnd::GetWindowText(CString& rString) const { rString = m_strText; }

void CWnd::SetFont(CFont* pFont, BOOL bRedraw) {
  m_pFont = pFont;
  if (bRedraw) Invalidate();
}

BOOL CWnd::ModifyStyle(DWORD dwRemove, DWORD dwAdd, UINT /*nFlags*/) {
  DWORD old = m_dwStyle;
  m_dwStyle = (m_dwStyle & ~dwRemove) | dwAdd;
  if (m_port && ((old ^ m_dwStyle) & WS_VISIBLE) != 0) m_port->Show((m_dwStyle & WS_VISIBLE) != 0 ? SW_SHOW : SW_HIDE);
  return old != m_dwStyle ? TRUE : FALSE;
}

CWnd* CWnd::SetParent(CWnd* pWndNewParent) {
  CWnd* old = m_pParent;
  if (pWndNewParent == this || pWndNewParent == old) return old;
  // Refuse a cycle: the new parent must not be one of our descendants.
  for (CWnd* p = pWndNewParent; p != nullptr; p = p->m_pParent)
    if (p == this) return nullptr;
  if (old != nullptr) {
    auto& siblings = old->m_children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), this), siblings.end());
  }
  m_pParent = pWndNewParent;
  if (pWndNewParent != nullptr) pWndNewParent->m_children.push_back(this);
  return old;
}

int CWnd::SetDlgCtrlID(int nID) {
  int old = static_cast<int>(m_nID);
  m_nID = static_cast<UINT>(nID);
  return old;
}

CWnd* CWnd::GetDlgItem(int nID) const {
  for (CWnd* child : m_children)
    if (static_cast<int>(child->m_nID) == nID) return child;
  return nullptr;
}

UINT_PTR CWnd::SetTimer(UINT_PTR nIDEvent, UINT nElapse, void* lpfnTimer) {
  if (!m_port || nIDEvent == 0 || lpfnTimer != nullptr) return 0;
  m_port->SetTimer(nIDEvent, nElapse < chartcore::kMinTimerElapse ? chartcore::kMinTimerElapse : nElapse);
  return nIDEvent;
}

BOOL CWnd::KillTimer(UINT_PTR nIDEvent) {
  if (!m_port) return FALSE;
  return m_port->KillTimer(nIDEvent) ? TRUE : FALSE;
}

CWnd* CWnd::SetFocus() {
  if (m_hWnd == nullptr) return GetFocus();
  return chartcore::GetWindowPortFactory().SetFocusWindow(this);
}

CWnd* CWnd::GetFocus() { return chartcore::GetWindowPortFactory().GetFocusWindow(); }

CWnd* CWnd::SetCapture() {
  if (m_hWnd == nullptr) return GetCapture();
  return chartcore::GetWindowPortFactory().SetCaptureWindow(this);
}

BOOL CWnd::ReleaseCapture() {
  chartcore::GetWindowPortFactory().SetCaptureWindow(nullptr);
  return TRUE;
}

CWnd* CWnd::GetCapture() { return chartcore::GetWindowPortFactory().GetCaptureWindow(); }

void CWnd::CreateSolidCaret(int nWidth, int nHeight) {
  if (m_port) m_port->CreateCaret(nWidth, nHeight);
}

void CWnd::DestroyCaret() {
  if (m_port) m_port->DestroyCaret();
}

void CWnd::SetCaretPos(POINT point) {
  if (m_port) m_port->SetCaretPos(CPoint(point));
}

CPoint CWnd::GetCaretPos() const { return m_port ? m_port->GetCaretPos() : CPoint(); }

void CWnd::ShowCaret() {
  if (m_port) m_port->ShowCaret(true);
}

void CWnd::HideCaret() {
  if (m_port) m_port->ShowCaret(false);
}

// ---------------------------------------------------------------------------
// CDialog
// ---------------------------------------------------------------------------
CDialog::CDialog(UINT nIDTemplate, CWnd* pParentWnd) : m_nIDTemplate(nIDTemplate), m_pParentWnd(pParentWnd) {}

CDialog::~CDialog() = default;

BOOL CDialog::Create(UINT nIDTemplate, CWnd* pParentWnd) {
  if (m_hWnd != nullptr) return FALSE;
  m_nIDTemplate = nIDTemplate;
  if (pParentWnd != nullptr) m_pParentWnd = pParentWnd;
  // Created with no size first: converting dialog units needs the port.
  if (!CWnd::Create(nullptr, L"", WS_POPUP, CRect(0, 0, 0, 0), m_pParentWnd, nIDTemplate)) return FALSE;
  CRect r(0, 0, m_sizeTemplate.cx, m_sizeTemplate.cy);
  MapDialogRect(&r);
  MoveWindow(0, 0, r.Width(), r.Height(), FALSE);
  m_nResult = 0;
  OnInitDialog();
  return TRUE;
}

void CDialog::MapDialogRect(LPRECT lpRect) const {
  if (lpRect == nullptr) return;
  TEXTMETRIC tm;
  std::memset(&tm, 0, sizeof(tm));
  chartcore::WindowPort* port = GetPort();
  if (port != nullptr) {
    port->GetTextMetrics(GetFont() != nullptr ? GetFont()->GetLogFontPtr() : nullptr, &tm);
  } else {
    tm.tmAveCharWidth = chartcore::HeadlessWindowPort::kCharWidth;
    tm.tmHeight = chartcore::HeadlessWindowPort::kCharHeight;
  }
  auto mapX = [&](LONG v) { return static_cast<LONG>((static_cast<long long>(v) * tm.tmAveCharWidth) / 4); };
  auto mapY = [&](LONG v) { return static_cast<LONG>((static_cast<long long>(v) * tm.tmHeight) / 8); };
  lpRect->left = mapX(lpRect->left);
  lpRect->right = mapX(lpRect->right);
  lpRect->top = mapY(lpRect->top);
  lpRect->bottom = mapY(lpRect->bottom);
}

void CDialog::EndDialog(int nResult) {
  m_nResult = nResult;
  ShowWindow(SW_HIDE);
}

BOOL CDialog::OnInitDialog() { return TRUE; }
void CDialog::OnOK() { EndDialog(1); }
void CDialog::OnCancel() { EndDialog(2); }
