// Windows, dialogs and drawing of the framework layer, behind a window port.
//
// CWnd and CDialog keep the framework's names and message vocabulary (MSG,
// WM_KEYDOWN, VK_DOWN, OnChar, OnTimer, ...) but own no native window: every
// screen operation (show, move, repaint, measure text, draw, timers, caret,
// clipboard, key state) goes through a chartcore::WindowPort that the
// installed chartcore::WindowPortFactory creates for each window. The default
// factory is headless: fixed metrics (every character 8 px wide, 16 px high),
// a manual clock that a test advances to fire timers, an in-memory clipboard
// and a recorded list of drawing operations. A GUI backend installs its own.
//
//   CWnd wnd;
//   wnd.Create(nullptr, L"probe", WS_CHILD | WS_VISIBLE, CRect(0, 0, 80, 32), nullptr, 1);
//   wnd.SetTimer(1, 3000);
//   chartcore::GetHeadlessPortFactory().AdvanceClock(3000);   // OnTimer(1) runs
#ifndef CHARTCORE_PLATFORM_WINDOW_H_
#define CHARTCORE_PLATFORM_WINDOW_H_

#include <memory>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"

// ---------------------------------------------------------------------------
// Message vocabulary (from the system headers on Windows)
// ---------------------------------------------------------------------------
#if !defined(_WIN32)
typedef short SHORT;
struct HWND__;
typedef HWND__* HWND;
typedef void* HINSTANCE;
typedef void* HMENU;

// One input message as a message loop sees it.
struct MSG {
  HWND hwnd;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
  DWORD time;
  POINT pt;
};
typedef MSG* LPMSG;
typedef POINT* LPPOINT;

// Header of a WM_NOTIFY notification.
struct NMHDR {
  HWND hwndFrom;
  UINT_PTR idFrom;
  UINT code;
};

// What CWnd::PreCreateWindow may adjust before a window is made.
struct CREATESTRUCTW {
  LPVOID lpCreateParams;
  HINSTANCE hInstance;
  HMENU hMenu;
  HWND hwndParent;
  int cy;
  int cx;
  int y;
  int x;
  LONG style;
  LPCWSTR lpszName;
  LPCWSTR lpszClass;
  DWORD dwExStyle;
};
typedef CREATESTRUCTW CREATESTRUCT;
typedef CREATESTRUCTW* LPCREATESTRUCT;

// Logical font description; the headless port ignores everything but the
// fields a backend needs to pick a face (height, weight, italic, face name).
struct LOGFONTW {
  LONG lfHeight;
  LONG lfWidth;
  LONG lfEscapement;
  LONG lfOrientation;
  LONG lfWeight;
  BYTE lfItalic;
  BYTE lfUnderline;
  BYTE lfStrikeOut;
  BYTE lfCharSet;
  BYTE lfOutPrecision;
  BYTE lfClipPrecision;
  BYTE lfQuality;
  BYTE lfPitchAndFamily;
  WCHAR lfFaceName[32];
};
typedef LOGFONTW LOGFONT;

// Metrics of a font as the port measures it.
struct TEXTMETRICW {
  LONG tmHeight;
  LONG tmAscent;
  LONG tmDescent;
  LONG tmInternalLeading;
  LONG tmExternalLeading;
  LONG tmAveCharWidth;
  LONG tmMaxCharWidth;
  LONG tmWeight;
};
typedef TEXTMETRICW TEXTMETRIC;

constexpr UINT WM_CREATE = 0x0001;
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_SETFOCUS = 0x0007;
constexpr UINT WM_KILLFOCUS = 0x0008;
constexpr UINT WM_SETTEXT = 0x000C;
constexpr UINT WM_PAINT = 0x000F;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_SETFONT = 0x0030;
constexpr UINT WM_NOTIFY = 0x004E;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_CHAR = 0x0102;
constexpr UINT WM_SYSKEYDOWN = 0x0104;
constexpr UINT WM_SYSKEYUP = 0x0105;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_HSCROLL = 0x0114;
constexpr UINT WM_VSCROLL = 0x0115;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
constexpr UINT WM_RBUTTONDOWN = 0x0204;
constexpr UINT WM_RBUTTONUP = 0x0205;
constexpr UINT WM_MOUSEWHEEL = 0x020A;
constexpr UINT WM_USER = 0x0400;

// Edit-control notification sent to the parent with WM_COMMAND.
constexpr UINT EN_CHANGE = 0x0300;

// Virtual-key codes.
constexpr UINT VK_LBUTTON = 0x01;
constexpr UINT VK_BACK = 0x08;
constexpr UINT VK_TAB = 0x09;
constexpr UINT VK_RETURN = 0x0D;
constexpr UINT VK_SHIFT = 0x10;
constexpr UINT VK_CONTROL = 0x11;
constexpr UINT VK_MENU = 0x12;
constexpr UINT VK_ESCAPE = 0x1B;
constexpr UINT VK_SPACE = 0x20;
constexpr UINT VK_PRIOR = 0x21;
constexpr UINT VK_NEXT = 0x22;
constexpr UINT VK_END = 0x23;
constexpr UINT VK_HOME = 0x24;
constexpr UINT VK_LEFT = 0x25;
constexpr UINT VK_UP = 0x26;
constexpr UINT VK_RIGHT = 0x27;
constexpr UINT VK_DOWN = 0x28;
constexpr UINT VK_INSERT = 0x2D;
constexpr UINT VK_DELETE = 0x2E;
constexpr UINT VK_F1 = 0x70;
constexpr UINT VK_F3 = 0x72;
constexpr UINT VK_F12 = 0x7B;

// Mouse-message key flags (wParam of WM_LBUTTONDOWN and kin).
constexpr UINT MK_LBUTTON = 0x0001;
constexpr UINT MK_RBUTTON = 0x0002;
constexpr UINT MK_SHIFT = 0x0004;
constexpr UINT MK_CONTROL = 0x0008;

// Window styles.
constexpr DWORD WS_OVERLAPPED = 0x00000000;
constexpr DWORD WS_TABSTOP = 0x00010000;
constexpr DWORD WS_HSCROLL = 0x00100000;
constexpr DWORD WS_VSCROLL = 0x00200000;
constexpr DWORD WS_BORDER = 0x00800000;
constexpr DWORD WS_DISABLED = 0x08000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_POPUP = 0x80000000;

// ShowWindow commands.
constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOWNOACTIVATE = 4;
constexpr int SW_SHOW = 5;
constexpr int SW_SHOWNA = 8;

// SetWindowPos flags.
constexpr UINT SWP_NOSIZE = 0x0001;
constexpr UINT SWP_NOMOVE = 0x0002;
constexpr UINT SWP_NOZORDER = 0x0004;
constexpr UINT SWP_NOACTIVATE = 0x0010;
constexpr UINT SWP_SHOWWINDOW = 0x0040;
constexpr UINT SWP_HIDEWINDOW = 0x0080;

// Scroll-bar codes of WM_VSCROLL / WM_HSCROLL.
constexpr UINT SB_LINEUP = 0;
constexpr UINT SB_LINELEFT = 0;
constexpr UINT SB_LINEDOWN = 1;
constexpr UINT SB_LINERIGHT = 1;
constexpr UINT SB_PAGEUP = 2;
constexpr UINT SB_PAGELEFT = 2;
constexpr UINT SB_PAGEDOWN = 3;
constexpr UINT SB_PAGERIGHT = 3;
constexpr UINT SB_THUMBPOSITION = 4;
constexpr UINT SB_THUMBTRACK = 5;
constexpr UINT SB_TOP = 6;
constexpr UINT SB_LEFT = 6;
constexpr UINT SB_BOTTOM = 7;
constexpr UINT SB_RIGHT = 7;
constexpr UINT SB_ENDSCROLL = 8;

// System colour indexes (GetSysColor).
constexpr int COLOR_SCROLLBAR = 0;
constexpr int COLOR_WINDOW = 5;
constexpr int COLOR_WINDOWTEXT = 8;
constexpr int COLOR_HIGHLIGHT = 13;
constexpr int COLOR_HIGHLIGHTTEXT = 14;
constexpr int COLOR_BTNFACE = 15;
constexpr int COLOR_GRAYTEXT = 17;
constexpr int COLOR_INFOTEXT = 23;
constexpr int COLOR_INFOBK = 24;

// Background modes of CDC::SetBkMode.
constexpr int TRANSPARENT = 1;
constexpr int OPAQUE = 2;

// Font weights.
constexpr LONG FW_NORMAL = 400;
constexpr LONG FW_BOLD = 700;

// Pen styles.
constexpr int PS_SOLID = 0;

#ifndef LOWORD
#define LOWORD(l) (static_cast<WORD>(static_cast<DWORD>(l) & 0xFFFF))
#endif
#ifndef HIWORD
#define HIWORD(l) (static_cast<WORD>((static_cast<DWORD>(l) >> 16) & 0xFFFF))
#endif
#ifndef MAKELONG
#define MAKELONG(a, b) (static_cast<LONG>((static_cast<DWORD>(static_cast<WORD>(a))) | \
                                          (static_cast<DWORD>(static_cast<WORD>(b)) << 16)))
#endif
#ifndef MAKELPARAM
#define MAKELPARAM(l, h) (static_cast<LPARAM>(MAKELONG(l, h)))
#endif
#ifndef MAKEWPARAM
#define MAKEWPARAM(l, h) (static_cast<WPARAM>(static_cast<DWORD>(MAKELONG(l, h))))
#endif
#ifndef GET_X_LPARAM
#define GET_X_LPARAM(lp) (static_cast<int>(static_cast<short>(LOWORD(lp))))
#endif
#ifndef GET_Y_LPARAM
#define GET_Y_LPARAM(lp) (static_cast<int>(static_cast<short>(HIWORD(lp))))
#endif

// GetKeyState: the port's modifier state; the high bit (negative value) means
// the key is down. On Windows the system call of that name is used instead.
CHARTCORE_API SHORT GetKeyState(int nVirtKey);
// GetSysColor: the installed port factory's system colours.
CHARTCORE_API DWORD GetSysColor(int nIndex);
// GetTickCount: milliseconds of the installed port factory's clock (the
// headless clock starts at 0 and moves only when a test advances it).
CHARTCORE_API DWORD GetTickCount();
#else
#include <windowsx.h>
#endif  // !_WIN32

class CWnd;
class CDC;

namespace chartcore {

// ---------------------------------------------------------------------------
// The window port: one per created CWnd
// ---------------------------------------------------------------------------

// What a CWnd tells its port when it is created. rect is in the parent's
// client coordinates for a child window (WS_CHILD) and in screen coordinates
// for a popup or top-level window.
struct CHARTCORE_API WindowCreateInfo {
  CWnd* parent = nullptr;
  DWORD style = 0;
  CRect rect;
  CString text;
  UINT id = 0;
};

// WindowPort: the screen side of one window. A backend implements every
// operation; the window keeps its logic state and asks the port only for what
// the screen knows. Coordinates: rectangles given to Move and returned by
// GetWindowRect are in the same coordinates as WindowCreateInfo::rect.
class CHARTCORE_API WindowPort {
 public:
  virtual ~WindowPort();

  // Lifecycle: Create is called once, right after the factory made the port;
  // Destroy once, before the port is deleted (no calls come after it).
  virtual void Create(const WindowCreateInfo& info) = 0;
  virtual void Destroy() = 0;

  // Visibility and geometry.
  virtual void Show(int nCmdShow) = 0;
  virtual bool IsVisible() const = 0;
  virtual void Move(const CRect& rect) = 0;
  virtual CRect GetWindowRect() const = 0;
  // The client area, always with its top-left at (0, 0).
  virtual CRect GetClientRect() const = 0;
  virtual CPoint ClientToScreen(CPoint pt) const = 0;
  virtual CPoint ScreenToClient(CPoint pt) const = 0;
  virtual void SetText(const CString& text) = 0;
  virtual void SetEnabled(bool enabled) = 0;

  // Repainting: Invalidate marks (a part of) the client area for painting
  // (rect nullptr: all of it); Update paints now when something is marked, by
  // sending WM_PAINT to the window.
  virtual void Invalidate(const CRect* rect) = 0;
  virtual void Update() = 0;

  // Painting primitives, in client coordinates, called by a CDC between
  // BeginPaint and EndPaint (CPaintDC) or at any time (CClientDC; a backend
  // that cannot draw outside a paint cycle may turn such calls into an
  // Invalidate). BeginPaint returns the rectangle to paint.
  virtual CRect BeginPaint() = 0;
  virtual void EndPaint() = 0;
  virtual void FillRect(const CRect& rect, COLORREF color) = 0;
  virtual void FrameRect(const CRect& rect, COLORREF color) = 0;
  virtual void DrawLine(CPoint from, CPoint to, COLORREF color, int width) = 0;
  // Draws text with its top-left at (x, y); opaque fills the text's extent
  // with background first.
  virtual void DrawText(int x, int y, const wchar_t* text, int length, const LOGFONT* font, COLORREF color,
                        bool opaque, COLORREF background) = 0;

  // Text measurement. font may be nullptr (the system font).
  virtual CSize MeasureText(const LOGFONT* font, const wchar_t* text, int length) = 0;
  virtual void GetTextMetrics(const LOGFONT* font, TEXTMETRIC* metrics) = 0;

  // Timers: a timer fires every elapse milliseconds by sending WM_TIMER with
  // its id to the window until it is killed; setting an id again restarts it.
  virtual void SetTimer(UINT_PTR id, UINT elapse) = 0;
  virtual bool KillTimer(UINT_PTR id) = 0;

  // The caret (one per window, shown while the window has the focus).
  virtual void CreateCaret(int width, int height) = 0;
  virtual void DestroyCaret() = 0;
  virtual void SetCaretPos(CPoint pt) = 0;
  virtual CPoint GetCaretPos() const = 0;
  virtual void ShowCaret(bool show) = 0;

  // Input plumbing: keyboard focus and mouse capture as the screen sees them.
  virtual void SetFocus() = 0;
  virtual void SetCapture(bool capture) = 0;
};

// WindowPortFactory: makes the ports and answers for the desktop (clipboard,
// key state, clock, system colours, focus, capture). The host installs one
// with SetWindowPortFactory; the headless factory is the default.
class CHARTCORE_API WindowPortFactory {
 public:
  virtual ~WindowPortFactory();

  // A new, not yet created port for wnd (never nullptr).
  virtual std::unique_ptr<WindowPort> CreatePort(CWnd* wnd) = 0;

  // Clipboard text; GetClipboardText returns FALSE (and leaves text empty)
  // when the clipboard holds no text.
  virtual BOOL SetClipboardText(const CString& text) = 0;
  virtual BOOL GetClipboardText(CString& text) = 0;

  // Key state as GetKeyState reports it (high bit: down; low bit: toggled).
  virtual SHORT GetKeyState(int nVirtKey) = 0;
  // Milliseconds since some fixed moment.
  virtual DWORD GetTickCount() = 0;
  virtual COLORREF GetSysColor(int nIndex) = 0;

  // Focus and capture bookkeeping, shared by every backend: SetFocusWindow
  // sends WM_KILLFOCUS to the old window and WM_SETFOCUS to the new one and
  // tells the new one's port; it returns the window that had the focus.
  CWnd* SetFocusWindow(CWnd* wnd);
  CWnd* GetFocusWindow() const { return m_pFocus; }
  CWnd* SetCaptureWindow(CWnd* wnd);
  CWnd* GetCaptureWindow() const { return m_pCapture; }
  // Forgets wnd (called when a window is destroyed).
  void ForgetWindow(CWnd* wnd);

 private:
  CWnd* m_pFocus = nullptr;
  CWnd* m_pCapture = nullptr;
};

// Installs factory for windows created from now on and returns the previous
// one; nullptr reinstalls the headless factory. The caller keeps ownership.
CHARTCORE_API WindowPortFactory* SetWindowPortFactory(WindowPortFactory* factory);
// The installed factory (never nullptr).
CHARTCORE_API WindowPortFactory& GetWindowPortFactory();

// Clipboard text through the installed factory.
CHARTCORE_API BOOL SetClipboardText(const CString& text);
CHARTCORE_API CString GetClipboardText();

// Key state through the installed factory (the same as GetKeyState on Linux).
CHARTCORE_API SHORT GetPortKeyState(int nVirtKey);
// True when the key is down by the port's key state.
CHARTCORE_API bool IsKeyDown(int nVirtKey);

// Delivers an input message the way a message loop does: the target window
// (msg->hwnd) and then each of its ancestors gets PreTranslateMessage; if one
// returns TRUE the message is consumed and DispatchWindowMessage returns TRUE
// (a backend then generates no WM_CHAR for that key, as no translation runs).
// Otherwise the message is sent to the target and FALSE is returned. An
// unknown or null hwnd does nothing and returns FALSE.
CHARTCORE_API BOOL DispatchWindowMessage(MSG* msg);

// ---------------------------------------------------------------------------
// The headless port: fixed metrics, manual clock, recorded drawing
// ---------------------------------------------------------------------------

// One drawing operation the headless port recorded during a paint.
struct CHARTCORE_API HeadlessDrawOp {
  enum Kind { kFill, kFrame, kLine, kText };
  Kind kind = kFill;
  CRect rect;           // kFill, kFrame: the rectangle; kText: the text's extent
  CPoint from, to;      // kLine; kText: from is the top-left
  CString text;         // kText
  COLORREF color = 0;   // fill, frame, line or text colour
  COLORREF background = 0;
  bool opaque = false;
  LONG fontHeight = 0;  // kText: the font's lfHeight (0 for none)
  LONG fontWeight = 0;  // kText: the font's lfWeight (0 for none)
};

// HeadlessWindowPort: keeps geometry and visibility, measures every character
// as 8 by 16 pixels, and records the drawing of the last paint.
class CHARTCORE_API HeadlessWindowPort : public WindowPort {
 public:
  enum { kCharWidth = 8, kCharHeight = 16 };

  explicit HeadlessWindowPort(CWnd* owner);
  ~HeadlessWindowPort() override;

  void Create(const WindowCreateInfo& info) override;
  void Destroy() override;
  void Show(int nCmdShow) override;
  bool IsVisible() const override { return m_bVisible; }
  void Move(const CRect& rect) override;
  CRect GetWindowRect() const override { return m_rect; }
  CRect GetClientRect() const override;
  CPoint ClientToScreen(CPoint pt) const override;
  CPoint ScreenToClient(CPoint pt) const override;
  void SetText(const CString& text) override { m_text = text; }
  void SetEnabled(bool enabled) override { m_bEnabled = enabled; }
  void Invalidate(const CRect* rect) override;
  void Update() override;
  CRect BeginPaint() override;
  void EndPaint() override;
  void FillRect(const CRect& rect, COLORREF color) override;
  void FrameRect(const CRect& rect, COLORREF color) override;
  void DrawLine(CPoint from, CPoint to, COLORREF color, int width) override;
  void DrawText(int x, int y, const wchar_t* text, int length, const LOGFONT* font, COLORREF color, bool opaque,
                COLORREF background) override;
  CSize MeasureText(const LOGFONT* font, const wchar_t* text, int length) override;
  void GetTextMetrics(const LOGFONT* font, TEXTMETRIC* metrics) override;
  void SetTimer(UINT_PTR id, UINT elapse) override;
  bool KillTimer(UINT_PTR id) override;
  void CreateCaret(int width, int height) override;
  void DestroyCaret() override;
  void SetCaretPos(CPoint pt) override { m_ptCaret = pt; }
  CPoint GetCaretPos() const override { return m_ptCaret; }
  void ShowCaret(bool show) override { m_bCaretShown = show; }
  void SetFocus() override {}
  void SetCapture(bool capture) override { m_bCaptured = capture; }

  // Inspection for tests.
  // Operations recorded since the last BeginPaint (drawing outside a paint
  // appends to the same list).
  const std::vector<HeadlessDrawOp>& GetDrawOps() const { return m_ops; }
  void ClearDrawOps() { m_ops.clear(); }
  // Whether something is marked for painting, how often Invalidate was
  // called and how many paints ran.
  bool IsInvalid() const { return m_bInvalid; }
  int GetInvalidateCount() const { return m_nInvalidates; }
  int GetPaintCount() const { return m_nPaints; }
  bool IsCaretShown() const { return m_bCaretShown; }
  bool HasCaret() const { return m_bHasCaret; }
  CSize GetCaretSize() const { return m_sizeCaret; }
  bool IsCaptured() const { return m_bCaptured; }
  bool IsEnabled() const { return m_bEnabled; }
  const CString& GetText() const { return m_text; }
  bool IsCreated() const { return m_bCreated; }

 private:
  CWnd* m_pOwner;
  DWORD m_dwStyle = 0;
  CRect m_rect;
  CString m_text;
  bool m_bCreated = false;
  bool m_bVisible = false;
  bool m_bEnabled = true;
  bool m_bInvalid = false;
  bool m_bPainting = false;
  bool m_bCaptured = false;
  bool m_bHasCaret = false;
  bool m_bCaretShown = false;
  int m_nInvalidates = 0;
  int m_nPaints = 0;
  CRect m_rcInvalid;
  CPoint m_ptCaret;
  CSize m_sizeCaret;
  std::vector<HeadlessDrawOp> m_ops;
};

// HeadlessPortFactory: the default factory. Its clock starts at 0 and moves
// only through AdvanceClock, which fires the due timers of every headless
// window in time order (a timer due at the same moment as another fires in
// the order the timers were set).
class CHARTCORE_API HeadlessPortFactory : public WindowPortFactory {
 public:
  HeadlessPortFactory();
  ~HeadlessPortFactory() override;

  std::unique_ptr<WindowPort> CreatePort(CWnd* wnd) override;
  BOOL SetClipboardText(const CString& text) override;
  BOOL GetClipboardText(CString& text) override;
  SHORT GetKeyState(int nVirtKey) override;
  DWORD GetTickCount() override { return m_dwNow; }
  // White window, black text, grey scroll bar, blue highlight (the classic
  // desktop scheme).
  COLORREF GetSysColor(int nIndex) override;

  // Moves the clock forward by ms milliseconds, firing every timer that falls
  // due on the way (a repeating timer fires once per elapsed period). Returns
  // the number of WM_TIMER messages sent.
  int AdvanceClock(DWORD ms);
  DWORD GetClock() const { return m_dwNow; }
  // Presses or releases a key for GetKeyState (VK_SHIFT, VK_CONTROL, ...).
  void SetKeyDown(int nVirtKey, bool down);
  // Releases every key, empties the clipboard (timers and clock stay).
  void ResetInput();

  // Timer bookkeeping used by the headless ports.
  void StartTimer(CWnd* wnd, UINT_PTR id, UINT elapse);
  bool StopTimer(CWnd* wnd, UINT_PTR id);
  void StopAllTimers(CWnd* wnd);
  // Whether wnd has timer id running, and when it falls due next (0 if not).
  bool IsTimerRunning(const CWnd* wnd, UINT_PTR id) const;
  DWORD GetTimerDue(const CWnd* wnd, UINT_PTR id) const;

 private:
  struct Timer {
    CWnd* wnd;
    UINT_PTR id;
    DWORD elapse;
    DWORD due;
    unsigned long long order;
  };
  DWORD m_dwNow = 0;
  unsigned long long m_nOrder = 0;
  std::vector<Timer> m_timers;
  std::vector<int> m_keysDown;
  bool m_bHasClipboard = false;
  CString m_clipboard;
};

// The default headless factory (also when another factory is installed).
CHARTCORE_API HeadlessPortFactory& GetHeadlessPortFactory();
// wnd's port as the headless port, or nullptr when wnd has none or another kind.
CHARTCORE_API HeadlessWindowPort* GetHeadlessPort(const CWnd* wnd);

}  // namespace chartcore

// ---------------------------------------------------------------------------
// Drawing objects
// ---------------------------------------------------------------------------

// CFont: a logical font. The port picks the face; only the description lives
// here, so copying a CFont is copying its LOGFONT.
class CHARTCORE_API CFont {
 public:
  CFont();
  // Stores *lf; returns FALSE for a null lf.
  BOOL CreateFontIndirect(const LOGFONT* lf);
  // A font of nPointSize tenths of a point (96 pixels per inch) and face.
  BOOL CreatePointFont(int nPointSize, LPCTSTR lpszFaceName);
  // Copies the description into *lf; returns 0 when no font was created.
  int GetLogFont(LOGFONT* lf) const;
  BOOL DeleteObject();
  bool IsCreated() const { return m_bCreated; }
  const LOGFONT* GetLogFontPtr() const { return m_bCreated ? &m_lf : nullptr; }

 private:
  LOGFONT m_lf;
  bool m_bCreated;
};

// CBrush: a solid colour for FillRect and FrameRect.
class CHARTCORE_API CBrush {
 public:
  CBrush() = default;
  explicit CBrush(COLORREF color) : m_color(color), m_bCreated(true) {}
  BOOL CreateSolidBrush(COLORREF color) { m_color = color; m_bCreated = true; return TRUE; }
  BOOL DeleteObject() { m_bCreated = false; return TRUE; }
  COLORREF GetColor() const { return m_color; }

 private:
  COLORREF m_color = 0;
  bool m_bCreated = false;
};

// CPen: a solid line colour and width for MoveTo / LineTo.
class CHARTCORE_API CPen {
 public:
  CPen() = default;
  CPen(int nPenStyle, int nWidth, COLORREF color) { CreatePen(nPenStyle, nWidth, color); }
  BOOL CreatePen(int nPenStyle, int nWidth, COLORREF color);
  BOOL DeleteObject() { return TRUE; }
  COLORREF GetColor() const { return m_color; }
  int GetWidth() const { return m_nWidth; }

 private:
  COLORREF m_color = 0;
  int m_nWidth = 1;
};

// CDC: a drawing context over a window's port. It holds the selected font,
// pen, text and background colours and background mode, and turns each call
// into a port primitive. A CDC of a window without a port draws nothing and
// measures every text as empty.
class CHARTCORE_API CDC {
 public:
  explicit CDC(CWnd* wnd);
  virtual ~CDC();
  CDC(const CDC&) = delete;
  CDC& operator=(const CDC&) = delete;

  // Selection: each returns the previously selected object (nullptr for the
  // system default).
  CFont* SelectObject(CFont* font);
  CPen* SelectObject(CPen* pen);
  CFont* GetCurrentFont() const { return m_pFont; }

  COLORREF SetTextColor(COLORREF color);
  COLORREF GetTextColor() const { return m_crText; }
  COLORREF SetBkColor(COLORREF color);
  COLORREF GetBkColor() const { return m_crBk; }
  // TRANSPARENT or OPAQUE; returns the previous mode (OPAQUE initially).
  int SetBkMode(int mode);
  int GetBkMode() const { return m_nBkMode; }

  // Text at (x, y), the top-left corner, in the text colour; in OPAQUE mode
  // its extent is filled with the background colour first. A negative count
  // means the whole null-terminated text.
  BOOL TextOut(int x, int y, LPCTSTR text, int count);
  BOOL TextOut(int x, int y, const CString& text);
  CSize GetTextExtent(LPCTSTR text, int count) const;
  CSize GetTextExtent(const CString& text) const;
  BOOL GetTextMetrics(TEXTMETRIC* metrics) const;

  void FillSolidRect(LPCRECT rect, COLORREF color);
  void FillSolidRect(int x, int y, int cx, int cy, COLORREF color);
  void FillRect(LPCRECT rect, CBrush* brush);
  // A one-pixel frame along the inside of rect.
  void FrameRect(LPCRECT rect, CBrush* brush);
  CPoint MoveTo(int x, int y);
  // A line from the current position to (x, y) with the selected pen (black,
  // one pixel wide by default); (x, y) becomes the current position.
  BOOL LineTo(int x, int y);

  CWnd* GetWindow() const { return m_pWnd; }

 protected:
  chartcore::WindowPort* Port() const;

  CWnd* m_pWnd;
  CFont* m_pFont = nullptr;
  CPen* m_pPen = nullptr;
  COLORREF m_crText = 0;
  COLORREF m_crBk = RGB(255, 255, 255);
  int m_nBkMode = OPAQUE;
  CPoint m_ptCurrent;
};

// CPaintDC: the context of one paint (inside OnPaint). m_rcPaint is the part
// of the client area to repaint.
class CHARTCORE_API CPaintDC : public CDC {
 public:
  explicit CPaintDC(CWnd* wnd);
  ~CPaintDC() override;
  CRect m_rcPaint;
};

// CClientDC: a context for measuring (or drawing outside a paint).
class CHARTCORE_API CClientDC : public CDC {
 public:
  explicit CClientDC(CWnd* wnd) : CDC(wnd) {}
};

// ---------------------------------------------------------------------------
// CWnd
// ---------------------------------------------------------------------------

// CWnd: a window. Messages reach it through SendMessage (or
// chartcore::DispatchWindowMessage for input) and WindowProc, which calls the
// virtual On... handler of each message. A CWnd that is not created answers
// with empty rectangles, invisible and FALSE, and ignores drawing.
class CHARTCORE_API CWnd {
 public:
  CWnd();
  virtual ~CWnd();
  CWnd(const CWnd&) = delete;
  CWnd& operator=(const CWnd&) = delete;

  // -------------------------------------------------------------------------
  // Creation and destruction
  // -------------------------------------------------------------------------
  // Creates the window: PreCreateWindow may adjust the creation data, the
  // installed factory makes the port, OnCreate runs (returning -1 undoes the
  // creation) and WS_VISIBLE shows the window. rect is in the parent's client
  // coordinates for WS_CHILD, else in screen coordinates. Returns FALSE when
  // the window exists already or a step refused.
  virtual BOOL Create(LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, const RECT& rect,
                      CWnd* pParentWnd, UINT nID);
  // Destroys the children, then sends WM_DESTROY (OnDestroy), then releases
  // the port and its timers. FALSE when the window does not exist.
  virtual BOOL DestroyWindow();
  virtual BOOL PreCreateWindow(CREATESTRUCT& cs);
  // The handle: identifies this window in MSG and NMHDR (nullptr when not
  // created). FromHandle maps it back (nullptr for an unknown handle).
  HWND GetSafeHwnd() const { return m_hWnd; }
  static CWnd* FromHandle(HWND hWnd);
  HWND m_hWnd = nullptr;

  // -------------------------------------------------------------------------
  // Messages
  // -------------------------------------------------------------------------
  // Sends a message to WindowProc now and returns its result (0 when the
  // window is not created).
  LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
  // Gives a window the chance to consume an input message before dispatch;
  // TRUE means consumed. The default consumes nothing.
  virtual BOOL PreTranslateMessage(MSG* pMsg);

  // -------------------------------------------------------------------------
  // Visibility, geometry and painting
  // -------------------------------------------------------------------------
  // Returns whether the window was visible before.
  BOOL ShowWindow(int nCmdShow);
  BOOL IsWindowVisible() const;
  BOOL IsWindow() const { return m_hWnd != nullptr; }
  void MoveWindow(int x, int y, int nWidth, int nHeight, BOOL bRepaint = TRUE);
  void MoveWindow(LPCRECT lpRect, BOOL bRepaint = TRUE);
  BOOL SetWindowPos(const CWnd* pWndInsertAfter, int x, int y, int cx, int cy, UINT nFlags);
  // The window in screen coordinates; the client area from (0, 0).
  void GetWindowRect(LPRECT lpRect) const;
  void GetClientRect(LPRECT lpRect) const;
  void ClientToScreen(LPPOINT lpPoint) const;
  void ClientToScreen(LPRECT lpRect) const;
  void ScreenToClient(LPPOINT lpPoint) const;
  void ScreenToClient(LPRECT lpRect) const;
  void Invalidate(BOOL bErase = TRUE);
  void InvalidateRect(LPCRECT lpRect, BOOL bErase = TRUE);
  // Paints now if part of the window is marked.
  void UpdateWindow();
  BOOL EnableWindow(BOOL bEnable = TRUE);
  BOOL IsWindowEnabled() const { return m_bEnabled; }

  // -------------------------------------------------------------------------
  // Text, font, style, relations
  // -------------------------------------------------------------------------
  void SetWindowText(LPCTSTR lpszString);
  void GetWindowText(CString& rString) const;
  int GetWindowTextLength() const { return m_strText.GetLength(); }
  // The window keeps the pointer; the font must outlive its use.
  void SetFont(CFont* pFont, BOOL bRedraw = TRUE);
  CFont* GetFont() const { return m_pFont; }
  DWORD GetStyle() const { return m_dwStyle; }
  BOOL ModifyStyle(DWORD dwRemove, DWORD dwAdd, UINT nFlags = 0);
  CWnd* GetParent() const { return m_pParent; }
  // Returns the old parent.
  CWnd* SetParent(CWnd* pWndNewParent);
  int GetDlgCtrlID() const { return static_cast<int>(m_nID); }
  int SetDlgCtrlID(int nID);
  // The child with control id nID, or nullptr.
  CWnd* GetDlgItem(int nID) const;
  const std::vector<CWnd*>& GetChildren() const { return m_children; }

  // -------------------------------------------------------------------------
  // Timers, focus, capture, caret
  // -------------------------------------------------------------------------
  // Starts (or restarts) timer nIDEvent; WM_TIMER reaches OnTimer every
  // nElapse ms (at least 10) until KillTimer. Returns nIDEvent, or 0 when the
  // window is not created or nIDEvent is 0. lpfnTimer must be nullptr.
  UINT_PTR SetTimer(UINT_PTR nIDEvent, UINT nElapse, void* lpfnTimer = nullptr);
  // FALSE when no such timer runs.
  BOOL KillTimer(UINT_PTR nIDEvent);
  // Returns the window that had the focus.
  CWnd* SetFocus();
  static CWnd* GetFocus();
  CWnd* SetCapture();
  static BOOL ReleaseCapture();
  static CWnd* GetCapture();
  // The caret of this window, in client pixels.
  void CreateSolidCaret(int nWidth, int nHeight);
  void DestroyCaret();
  void SetCaretPos(POINT point);
  CPoint GetCaretPos() const;
  void ShowCaret();
  void HideCaret();

  // The port of a created window (nullptr otherwise).
  chartcore::WindowPort* GetPort() const { return m_port.get(); }

 protected:
  // -------------------------------------------------------------------------
  // Dispatch and handlers
  // -------------------------------------------------------------------------
  // Calls the handler of the message; unknown messages go to DefWindowProc
  // (which returns 0).
  virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
  virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);

  // Returns 0 to go on, -1 to refuse creation.
  virtual int OnCreate(LPCREATESTRUCT lpCreateStruct);
  virtual void OnDestroy();
  // Called after the port is gone; the window may delete itself here.
  virtual void PostNcDestroy();
  virtual void OnPaint();
  virtual void OnSize(UINT nType, int cx, int cy);
  virtual void OnTimer(UINT_PTR nIDEvent);
  virtual void OnSetFocus(CWnd* pOldWnd);
  virtual void OnKillFocus(CWnd* pNewWnd);
  // Key messages: nRepCnt is the low word of lParam, nFlags the high word.
  virtual void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags);
  virtual void OnKeyUp(UINT nChar, UINT nRepCnt, UINT nFlags);
  virtual void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags);
  // Mouse messages: point in client coordinates, nFlags the MK_ flags.
  virtual void OnLButtonDown(UINT nFlags, CPoint point);
  virtual void OnLButtonUp(UINT nFlags, CPoint point);
  virtual void OnLButtonDblClk(UINT nFlags, CPoint point);
  virtual void OnRButtonDown(UINT nFlags, CPoint point);
  virtual void OnMouseMove(UINT nFlags, CPoint point);
  // Returns TRUE when the wheel was used.
  virtual BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint pt);
  virtual void OnVScroll(UINT nSBCode, UINT nPos);
  virtual void OnHScroll(UINT nSBCode, UINT nPos);
  // WM_NOTIFY from a child: return TRUE when handled (*pResult is the
  // message's result).
  virtual BOOL OnNotify(WPARAM wParam, LPARAM lParam, LRESULT* pResult);
  // WM_COMMAND: TRUE when handled.
  virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);

 private:
  friend class CDC;
  void ReleasePort();

  std::unique_ptr<chartcore::WindowPort> m_port;
  CWnd* m_pParent = nullptr;
  std::vector<CWnd*> m_children;
  CString m_strText;
  CFont* m_pFont = nullptr;
  DWORD m_dwStyle = 0;
  UINT m_nID = 0;
  bool m_bEnabled = true;
  bool m_bDestroying = false;
};

// ---------------------------------------------------------------------------
// CDialog
// ---------------------------------------------------------------------------

// CDialog: a modeless dialog window. The library carries no dialog resources:
// a dialog's template size (in dialog units) is given with SetTemplateSize
// before Create, and converted to pixels with the port's text metrics (a
// horizontal unit is a quarter of the average character width, a vertical unit
// an eighth of the character height: 2 by 2 pixels on the headless port).
//
//   class CTip : public CDialog { ... };
//   CTip tip; tip.SetTemplateSize(CSize(198, 6)); tip.Create(3024, &editor);
class CHARTCORE_API CDialog : public CWnd {
 public:
  explicit CDialog(UINT nIDTemplate = 0, CWnd* pParentWnd = nullptr);
  ~CDialog() override;

  // Creates the dialog hidden as a popup owned by pParentWnd (or the parent
  // given to the constructor) at screen (0, 0) with the template size, then
  // calls OnInitDialog. FALSE when it exists already.
  BOOL Create(UINT nIDTemplate, CWnd* pParentWnd = nullptr);
  using CWnd::Create;
  void SetTemplateSize(CSize dialogUnits) { m_sizeTemplate = dialogUnits; }
  CSize GetTemplateSize() const { return m_sizeTemplate; }
  UINT GetTemplateID() const { return m_nIDTemplate; }
  // Converts dialog units to pixels in place.
  void MapDialogRect(LPRECT lpRect) const;

  // Ends the dialog with nResult (1 for OK, 2 for cancel): a modeless dialog
  // hides and keeps its window.
  void EndDialog(int nResult);
  int GetResult() const { return m_nResult; }

 protected:
  // Called once by Create; the return value is the framework's focus hint.
  virtual BOOL OnInitDialog();
  virtual void OnOK();
  virtual void OnCancel();

 private:
  UINT m_nIDTemplate;
  CWnd* m_pParentWnd;
  CSize m_sizeTemplate;
  int m_nResult = 0;
};

#endif  // CHARTCORE_PLATFORM_WINDOW_H_
