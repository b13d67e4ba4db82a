// The text view (display, caret, selection, cookies, find) and the edit
// window (keyboard, mouse, clipboard, composition).
#include "chartcore/script_editor/text_view.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "chartcore/platform/chartype.h"

namespace {

// Re-parsing after an edit stops after this many lines even when the cookies
// keep changing (an opened block comment); the rest is parsed when needed.
constexpr int kMaxEagerReparse = 2000;
// The caret's width in pixels.
constexpr int kCaretWidth = 2;
// The selection margin's width in pixels.
constexpr int kMarginWidth = 20;
// Wheel lines per notch.
constexpr int kWheelLines = 3;

bool PointLess(const CPoint& a, const CPoint& b) { return a.y < b.y || (a.y == b.y && a.x < b.x); }

bool IsBlank(wchar_t ch) { return ch == L' ' || ch == L'\t'; }

// The keys that move the caret: arrows, Home, End, Page Up, Page Down.
bool IsCaretKey(UINT vk) {
  return vk == VK_LEFT || vk == VK_RIGHT || vk == VK_UP || vk == VK_DOWN || vk == VK_PRIOR || vk == VK_NEXT ||
         vk == VK_HOME || vk == VK_END;
}

}  // namespace

// ---------------------------------------------------------------------------
// Construction and buffer
// ---------------------------------------------------------------------------
CCrystalTextWnd::CCrystalTextWnd() { std::memset(&m_lfView, 0, sizeof(m_lfView)); }

CCrystalTextWnd::~CCrystalTextWnd() {
  if (m_pTextBuffer != nullptr) m_pTextBuffer->RemoveView(this);
  m_pTextBuffer = nullptr;
}

CCrystalTextBuffer* CCrystalTextWnd::LocateTextBuffer() { return nullptr; }

void CCrystalTextWnd::AttachToBuffer(CCrystalTextBuffer* pBuf) {
  if (m_pTextBuffer != nullptr) m_pTextBuffer->RemoveView(this);
  m_pTextBuffer = pBuf != nullptr ? pBuf : LocateTextBuffer();
  if (m_pTextBuffer != nullptr) m_pTextBuffer->AddView(this);
  UpdateView(nullptr, nullptr, UPDATE_RESET, -1);
}

void CCrystalTextWnd::DetachFromBuffer() {
  if (m_pTextBuffer == nullptr) return;
  m_pTextBuffer->RemoveView(this);
  m_pTextBuffer = nullptr;
  UpdateView(nullptr, nullptr, UPDATE_RESET, -1);
}

void CCrystalTextWnd::OnDestroy() {
  m_bDragging = FALSE;
  m_bHasFocus = FALSE;
  DetachFromBuffer();
  CWnd::OnDestroy();
}

// ---------------------------------------------------------------------------
// Line access
// ---------------------------------------------------------------------------
int CCrystalTextWnd::GetLineCount() {
  if (m_pTextBuffer == nullptr || m_pTextBuffer->GetLineCount() == 0) return 1;
  return m_pTextBuffer->GetLineCount();
}

int CCrystalTextWnd::GetLineLength(int nLineIndex) {
  return m_pTextBuffer != nullptr ? m_pTextBuffer->GetLineLength(nLineIndex) : 0;
}

LPCTSTR CCrystalTextWnd::GetLineChars(int nLineIndex) {
  LPCTSTR chars = m_pTextBuffer != nullptr ? m_pTextBuffer->GetLineChars(nLineIndex) : nullptr;
  return chars != nullptr ? chars : L"";
}

CString CCrystalTextWnd::GetLineText(int nLineIndex) {
  return CString(GetLineChars(nLineIndex), GetLineLength(nLineIndex));
}

void CCrystalTextWnd::GetText(const CPoint& ptStart, const CPoint& ptEnd, CString& text) {
  text.Empty();
  if (m_pTextBuffer != nullptr) m_pTextBuffer->GetText(ptStart.y, ptStart.x, ptEnd.y, ptEnd.x, text, L"\r\n");
}

int CCrystalTextWnd::GetMaxLineLength() {
  if (m_nMaxLineLength < 0) {
    int longest = 0;
    const int count = GetLineCount();
    for (int l = 0; l < count; ++l) longest = std::max(longest, GetLineLength(l));
    m_nMaxLineLength = longest;
  }
  return m_nMaxLineLength;
}

// ---------------------------------------------------------------------------
// Colouring and cookies
// ---------------------------------------------------------------------------
DWORD CCrystalTextWnd::ParseLine(DWORD /*dwCookie*/, int /*nLineIndex*/, TEXTBLOCK* /*pBuf*/, int& /*nActualItems*/) {
  return 0;
}

COLORREF CCrystalTextWnd::GetColor(int nColorIndex) {
  switch (nColorIndex) {
    case COLORINDEX_WHITESPACE:
    case COLORINDEX_BKGND: return chartcore::GetWindowPortFactory().GetSysColor(COLOR_WINDOW);
    case COLORINDEX_NORMALTEXT: return chartcore::GetWindowPortFactory().GetSysColor(COLOR_WINDOWTEXT);
    case COLORINDEX_SELMARGIN: return chartcore::GetWindowPortFactory().GetSysColor(COLOR_SCROLLBAR);
    case COLORINDEX_SELBKGND: return RGB(0, 0, 0);
    case COLORINDEX_SELTEXT: return RGB(255, 255, 255);
    case COLORINDEX_KEYWORD: return RGB(0, 0, 255);
    case COLORINDEX_INDICATOR: return RGB(128, 64, 64);
    case COLORINDEX_USERFUNCTION: return RGB(165, 42, 42);
    case COLORINDEX_COMMENT: return RGB(0, 128, 0);
    case COLORINDEX_NUMBER: return RGB(0, 128, 128);
    case COLORINDEX_OPERATOR: return RGB(255, 0, 0);
    case COLORINDEX_FUNCNAME: return RGB(255, 0, 0);
    case COLORINDEX_MATHFUNCTION: return RGB(255, 0, 255);
    case COLORINDEX_PRICE: return RGB(162, 40, 202);
    case COLORINDEX_STRING: return RGB(128, 0, 0);
    case COLORINDEX_PREPROCESSOR: return RGB(0, 0, 255);
    case COLORINDEX_ERRORBKGND: return RGB(255, 0, 0);
    default: return RGB(128, 0, 0);
  }
}

DWORD CCrystalTextWnd::GetParseCookie(int nLineIndex) {
  const int count = GetLineCount();
  if (nLineIndex <= 0 || nLineIndex >= count) return 0;
  if (static_cast<int>(m_aParseCookies.size()) != count) {
    m_aParseCookies.resize(static_cast<size_t>(count), 0);
    m_nValidCookies = std::min(m_nValidCookies, count);
  }
  // Entry i holds the cookie line i returns, i.e. the one line i + 1 starts with.
  while (m_nValidCookies < nLineIndex) {
    const int i = m_nValidCookies;
    DWORD prev = i == 0 ? 0 : m_aParseCookies[static_cast<size_t>(i - 1)];
    int items = 0;
    m_aParseCookies[static_cast<size_t>(i)] = ParseLine(prev, i, nullptr, items);
    ++m_nValidCookies;
  }
  return m_aParseCookies[static_cast<size_t>(nLineIndex - 1)];
}

void CCrystalTextWnd::ResetParseCookies() {
  m_aParseCookies.assign(static_cast<size_t>(GetLineCount()), 0);
  m_nValidCookies = 0;
  Invalidate();
}

void CCrystalTextWnd::GetLineBlocks(int nLineIndex, std::vector<TEXTBLOCK>& blocks) {
  const int length = GetLineLength(nLineIndex);
  // Room for every block a parse can report; only the reported ones are kept.
  blocks.resize(static_cast<size_t>(3 * length + 8));
  int items = 0;
  ParseLine(GetParseCookie(nLineIndex), nLineIndex, blocks.data(), items);
  items = std::max(0, std::min(items, static_cast<int>(blocks.size())));
  blocks.resize(static_cast<size_t>(items));
  if (blocks.empty() || blocks.front().m_nCharPos > 0) blocks.insert(blocks.begin(), TEXTBLOCK{0, COLORINDEX_NORMALTEXT});
}

void CCrystalTextWnd::AdjustCookiesForChange(int nLine, int nLineDelta) {
  const int oldValid = m_nValidCookies;
  const int count = GetLineCount();
  // New entries go in before the edited line, so the old end cookie of the
  // edited line lands on the line that now ends with its old tail; a deletion
  // removes the entries of the lines merged away, keeping the last one's.
  if (nLineDelta > 0 && nLine <= static_cast<int>(m_aParseCookies.size())) {
    m_aParseCookies.insert(static_cast<size_t>(nLine), static_cast<size_t>(nLineDelta), 0);
  } else if (nLineDelta < 0 && nLine - nLineDelta <= static_cast<int>(m_aParseCookies.size())) {
    m_aParseCookies.erase(static_cast<size_t>(nLine), static_cast<size_t>(nLine - nLineDelta));
  }
  if (static_cast<int>(m_aParseCookies.size()) != count) {
    // The cache did not follow the buffer (it was never sized): start over
    // from the edited line.
    m_aParseCookies.resize(static_cast<size_t>(count), 0);
    m_nValidCookies = std::min(oldValid, nLine);
    return;
  }
  const int lastChanged = nLine + std::max(nLineDelta, 0);
  // Exact entries beyond the change, at their new indexes.
  int shiftedValid = oldValid > nLine + std::max(-nLineDelta, 0) ? oldValid + nLineDelta : std::min(oldValid, nLine);
  m_nValidCookies = std::min(oldValid, nLine);
  if (shiftedValid <= nLine) return;  // nothing cached past the edit: parsed when needed

  for (int i = nLine; i < count; ++i) {
    DWORD prev = i == 0 ? 0 : m_aParseCookies[static_cast<size_t>(i - 1)];
    int items = 0;
    DWORD cookie = ParseLine(prev, i, nullptr, items);
    const bool hadExact = i >= lastChanged && i < shiftedValid;
    const bool same = hadExact && m_aParseCookies[static_cast<size_t>(i)] == cookie;
    m_aParseCookies[static_cast<size_t>(i)] = cookie;
    m_nValidCookies = i + 1;
    if (same) {
      // Every later line starts as before, so its cached cookie still holds.
      m_nValidCookies = shiftedValid;
      return;
    }
    if (i + 1 >= shiftedValid && i >= lastChanged) return;
    if (i - nLine >= kMaxEagerReparse) return;
  }
}

void CCrystalTextWnd::ReparseFrom(int nLine) {
  if (static_cast<int>(m_aParseCookies.size()) != GetLineCount())
    m_aParseCookies.resize(static_cast<size_t>(GetLineCount()), 0);
  m_nValidCookies = std::max(0, std::min(m_nValidCookies, nLine));
}

// ---------------------------------------------------------------------------
// Buffer notifications
// ---------------------------------------------------------------------------
void CCrystalTextWnd::UpdateView(CCrystalTextWnd* pSource, CUpdateContext* pContext, DWORD dwFlags, int nLineIndex) {
  if ((dwFlags & UPDATE_RESET) != 0) {
    m_aParseCookies.assign(static_cast<size_t>(GetLineCount()), 0);
    m_nValidCookies = 0;
    m_ptCursorPos = m_ptAnchor = m_ptSelStart = m_ptSelEnd = CPoint(0, 0);
    m_nIdealCaretX = 0;
    m_nTopLine = 0;
    m_nOffsetX = 0;
    m_nMaxLineLength = -1;
    m_bDragging = FALSE;
    m_strComposition.Empty();
    Invalidate();
    UpdateCaret();
    return;
  }
  if ((dwFlags & UPDATE_FLAGSONLY) != 0) {
    InvalidateLines(nLineIndex, nLineIndex);
    return;
  }
  const CPoint oldCursor = m_ptCursorPos;
  if (pContext != nullptr) {
    pContext->RecalcPoint(m_ptCursorPos);
    pContext->RecalcPoint(m_ptAnchor);
    pContext->RecalcPoint(m_ptSelStart);
    pContext->RecalcPoint(m_ptSelEnd);
    AdjustCookiesForChange(pContext->m_ptStart.y, pContext->GetLineDelta());
    const int lineLength = GetLineLength(pContext->m_ptStart.y);
    if (pContext->GetLineDelta() == 0 && m_nMaxLineLength >= 0 && lineLength >= m_nMaxLineLength)
      m_nMaxLineLength = lineLength;
    else
      m_nMaxLineLength = -1;
  } else if (nLineIndex >= 0) {
    ReparseFrom(nLineIndex);
    m_nMaxLineLength = -1;
  } else {
    ReparseFrom(0);
    m_nMaxLineLength = -1;
  }
  m_ptCursorPos = ClampToText(m_ptCursorPos);
  m_ptAnchor = ClampToText(m_ptAnchor);
  m_ptSelStart = ClampToText(m_ptSelStart);
  m_ptSelEnd = ClampToText(m_ptSelEnd);
  if (m_nTopLine >= GetLineCount()) m_nTopLine = GetLineCount() - 1;
  if ((dwFlags & UPDATE_SINGLELINE) != 0 && nLineIndex >= 0)
    InvalidateLines(nLineIndex, nLineIndex);
  else
    InvalidateLines(std::max(0, nLineIndex), -1);
  UpdateCaret();
  // Another view's edit moved our caret: say so (our own edits notify when
  // they place the caret).
  if (pSource != this && m_ptCursorPos != oldCursor) SendEditNotify(ECN_CURPOSCHANGE);
}

void CCrystalTextWnd::OnUndoGroupFlushed(const CPoint& ptCursor) {
  CPoint pt = ClampToText(ptCursor);
  m_ptAnchor = m_ptSelStart = m_ptSelEnd = pt;
  SetCursorPos(pt);
  EnsureVisible(pt);
}

void CCrystalTextWnd::SendChangeNotify() {
  SendEditNotify(ECN_CHANGE);
  CWnd* parent = GetParent();
  if (parent != nullptr)
    parent->SendMessage(WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(), EN_CHANGE), reinterpret_cast<LPARAM>(GetSafeHwnd()));
}

// ---------------------------------------------------------------------------
// Notifications
// ---------------------------------------------------------------------------
LRESULT CCrystalTextWnd::SendEditNotify(UINT code, UINT nChar, UINT nRepCnt, UINT nFlags) {
  NMEDITCLR nm{};
  nm.hdr.hwndFrom = GetSafeHwnd();
  nm.hdr.idFrom = static_cast<UINT_PTR>(GetDlgCtrlID());
  nm.hdr.code = code;
  nm.nChar = nChar;
  nm.nRepCnt = nRepCnt;
  nm.nFlags = nFlags;
  nm.ptCursor = m_ptCursorPos;
  nm.ptCaret = TextToClient(m_ptCursorPos);
  nm.nTopLine = m_nTopLine;
  LRESULT result = 0;
  NMHDR* hdr = &nm.hdr;
  switch (code) {
    case ECN_CARET: OnCaretEditClr(hdr, &result); break;
    case ECN_CHANGE: OnChangeEditClr(hdr, &result); break;
    case ECN_CHAR: OnCharEditClr(hdr, &result); break;
    case ECN_CURPOSCHANGE: OnCurPosChangeEditClr(hdr, &result); break;
    case ECN_KEYDOWN: OnKeyDownEditClr(hdr, &result); break;
    case ECN_SCROLL: OnScrollEditClr(hdr, &result); break;
    default: break;
  }
  return result;
}

namespace {
void ForwardNotify(CWnd* wnd, NMHDR* pNMHDR, LRESULT* pResult) {
  if (pResult != nullptr) *pResult = 0;
  CWnd* parent = wnd->GetParent();
  if (parent != nullptr && pNMHDR != nullptr)
    parent->SendMessage(WM_NOTIFY, static_cast<WPARAM>(pNMHDR->idFrom), reinterpret_cast<LPARAM>(pNMHDR));
}
}  // namespace

void CCrystalTextWnd::OnCaretEditClr(NMHDR* pNMHDR, LRESULT* pResult) { ForwardNotify(this, pNMHDR, pResult); }
// The parent hears of a change through EN_CHANGE (SendChangeNotify).
void CCrystalTextWnd::OnChangeEditClr(NMHDR* /*pNMHDR*/, LRESULT* pResult) {
  if (pResult != nullptr) *pResult = 0;
}
void CCrystalTextWnd::OnCharEditClr(NMHDR* pNMHDR, LRESULT* pResult) { ForwardNotify(this, pNMHDR, pResult); }
void CCrystalTextWnd::OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  ForwardNotify(this, pNMHDR, pResult);
}
void CCrystalTextWnd::OnKeyDownEditClr(NMHDR* pNMHDR, LRESULT* pResult) { ForwardNotify(this, pNMHDR, pResult); }
void CCrystalTextWnd::OnScrollEditClr(NMHDR* pNMHDR, LRESULT* pResult) { ForwardNotify(this, pNMHDR, pResult); }

// ---------------------------------------------------------------------------
// Caret and selection
// ---------------------------------------------------------------------------
CPoint CCrystalTextWnd::ClampToText(CPoint pt) {
  const int count = GetLineCount();
  pt.y = std::max(0, std::min(static_cast<int>(pt.y), count - 1));
  pt.x = std::max(0, std::min(static_cast<int>(pt.x), GetLineLength(pt.y)));
  return pt;
}

BOOL CCrystalTextWnd::IsValidTextPos(const CPoint& pt) {
  return pt.y >= 0 && pt.y < GetLineCount() && pt.x >= 0 && pt.x <= GetLineLength(pt.y) ? TRUE : FALSE;
}

void CCrystalTextWnd::SetCursorPos(const CPoint& ptCursorPos) {
  CPoint pt = ClampToText(ptCursorPos);
  const bool moved = pt != m_ptCursorPos;
  m_ptCursorPos = pt;
  m_nIdealCaretX = GetColumnX(pt.y, pt.x);
  UpdateCaret();
  if (moved) SendEditNotify(ECN_CURPOSCHANGE);
}

void CCrystalTextWnd::GetSelection(CPoint& ptStart, CPoint& ptEnd) const {
  ptStart = m_ptSelStart;
  ptEnd = m_ptSelEnd;
}

void CCrystalTextWnd::SetSelection(const CPoint& ptStart, const CPoint& ptEnd) {
  CPoint a = ClampToText(ptStart);
  CPoint b = ClampToText(ptEnd);
  m_ptAnchor = a;
  if (PointLess(b, a)) std::swap(a, b);
  if (a != m_ptSelStart || b != m_ptSelEnd) {
    // Repaint the lines of the old and new selections.
    int first = std::min(a.y, m_ptSelStart.y);
    int last = std::max(b.y, m_ptSelEnd.y);
    m_ptSelStart = a;
    m_ptSelEnd = b;
    InvalidateLines(first, last);
  }
}

void CCrystalTextWnd::SetAnchor(const CPoint& ptAnchor) { m_ptAnchor = ClampToText(ptAnchor); }

void CCrystalTextWnd::UpdateSelectionFromAnchor() {
  CPoint anchor = m_ptAnchor;
  SetSelection(m_ptAnchor, m_ptCursorPos);
  m_ptAnchor = anchor;
}

void CCrystalTextWnd::MoveCursorTo(const CPoint& pt, BOOL bExtend) {
  CPoint target = ClampToText(pt);
  if (!bExtend) m_ptAnchor = target;
  SetCursorPos(target);
  UpdateSelectionFromAnchor();
  EnsureVisible(target);
}

void CCrystalTextWnd::SelectAll() {
  const int last = GetLineCount() - 1;
  CPoint end(GetLineLength(last), last);
  SetSelection(CPoint(0, 0), end);
  SetCursorPos(end);
  EnsureVisible(end);
}

CString CCrystalTextWnd::GetSelectedText() {
  CString text;
  if (IsSelection()) GetText(m_ptSelStart, m_ptSelEnd, text);
  return text;
}

BOOL CCrystalTextWnd::Copy() {
  if (!IsSelection()) return FALSE;
  return chartcore::SetClipboardText(GetSelectedText());
}

BOOL CCrystalTextWnd::IsWordChar(wchar_t ch) const { return chartcore::IsAlnumW(ch) || ch == L'_' ? TRUE : FALSE; }

int CCrystalTextWnd::WordStart(int nLine, int nColumn) {
  LPCTSTR chars = GetLineChars(nLine);
  int x = std::max(0, std::min(nColumn, GetLineLength(nLine)));
  if (x > 0 && IsWordChar(chars[x - 1])) {
    while (x > 0 && IsWordChar(chars[x - 1])) --x;
  } else if (x > 0 && IsBlank(chars[x - 1])) {
    while (x > 0 && IsBlank(chars[x - 1])) --x;
  } else if (x > 0) {
    --x;
  }
  return x;
}

int CCrystalTextWnd::WordEnd(int nLine, int nColumn) {
  LPCTSTR chars = GetLineChars(nLine);
  const int length = GetLineLength(nLine);
  int x = std::max(0, std::min(nColumn, length));
  if (x < length && IsWordChar(chars[x])) {
    while (x < length && IsWordChar(chars[x])) ++x;
  } else if (x < length && IsBlank(chars[x])) {
    while (x < length && IsBlank(chars[x])) ++x;
  } else if (x < length) {
    ++x;
  }
  return x;
}

// ---------------------------------------------------------------------------
// Geometry
// ---------------------------------------------------------------------------
void CCrystalTextWnd::SetViewFont(const LOGFONT* lf) {
  if (lf != nullptr) {
    m_lfView = *lf;
    m_bHasViewFont = TRUE;
  } else {
    m_bHasViewFont = FALSE;
  }
  m_charWidths.clear();
  m_nLineHeight = 0;
  m_nCharWidth = 0;
  // The caret is as tall as a line: a focused view makes it anew.
  if (m_bCaretCreated) CreateSolidCaret(kCaretWidth, GetLineHeight());
  Invalidate();
  UpdateCaret();
}

namespace {
const LOGFONT* ViewFontOf(BOOL hasViewFont, const LOGFONT& lf, const CWnd* wnd) {
  if (hasViewFont) return &lf;
  return wnd->GetFont() != nullptr ? wnd->GetFont()->GetLogFontPtr() : nullptr;
}
}  // namespace

int CCrystalTextWnd::GetLineHeight() {
  if (m_nLineHeight > 0) return m_nLineHeight;
  chartcore::WindowPort* port = GetPort();
  if (port == nullptr) return chartcore::HeadlessWindowPort::kCharHeight;
  TEXTMETRIC tm;
  std::memset(&tm, 0, sizeof(tm));
  port->GetTextMetrics(ViewFontOf(m_bHasViewFont, m_lfView, this), &tm);
  m_nLineHeight = std::max(1, static_cast<int>(tm.tmHeight + tm.tmExternalLeading));
  return m_nLineHeight;
}

int CCrystalTextWnd::GetCharWidth() {
  if (m_nCharWidth > 0) return m_nCharWidth;
  chartcore::WindowPort* port = GetPort();
  if (port == nullptr) return chartcore::HeadlessWindowPort::kCharWidth;
  m_nCharWidth = std::max(1, static_cast<int>(port->MeasureText(ViewFontOf(m_bHasViewFont, m_lfView, this), L"X", 1).cx));
  return m_nCharWidth;
}

int CCrystalTextWnd::GetCharPixelWidth(wchar_t ch) {
  if (ch == L'\t') return m_nTabSize * GetCharPixelWidth(L' ');
  chartcore::WindowPort* port = GetPort();
  if (port == nullptr) return chartcore::HeadlessWindowPort::kCharWidth;
  auto it = m_charWidths.find(ch);
  if (it != m_charWidths.end()) return it->second;
  int width = std::max(0, static_cast<int>(port->MeasureText(ViewFontOf(m_bHasViewFont, m_lfView, this), &ch, 1).cx));
  m_charWidths.emplace(ch, width);
  return width;
}

void CCrystalTextWnd::SetTabSize(int nTabSize) {
  nTabSize = std::max(1, std::min(nTabSize, 64));
  if (nTabSize == m_nTabSize) return;
  m_nTabSize = nTabSize;
  Invalidate();
  UpdateCaret();
}

void CCrystalTextWnd::SetSelectionMargin(BOOL bSelMargin) {
  m_bSelMargin = bSelMargin ? TRUE : FALSE;
  Invalidate();
  UpdateCaret();
}

int CCrystalTextWnd::GetMarginWidth() const { return m_bSelMargin ? kMarginWidth : 0; }

int CCrystalTextWnd::AdvanceX(int x, wchar_t ch, int tabWidth) {
  return ch == L'\t' ? (x / tabWidth + 1) * tabWidth : x + GetCharPixelWidth(ch);
}

int CCrystalTextWnd::GetCompositionWidth() {
  int width = 0;
  for (int i = 0; i < m_strComposition.GetLength(); ++i) width += GetCharPixelWidth(m_strComposition.GetString()[i]);
  return width;
}

int CCrystalTextWnd::GetColumnX(int nLineIndex, int nColumn) {
  LPCTSTR chars = GetLineChars(nLineIndex);
  const int length = GetLineLength(nLineIndex);
  const int upto = std::max(0, std::min(nColumn, length));
  const int tabWidth = std::max(1, GetCharPixelWidth(L'\t'));
  int x = 0;
  for (int i = 0; i < upto; ++i) x = AdvanceX(x, chars[i], tabWidth);
  return x;
}

CPoint CCrystalTextWnd::TextToClient(const CPoint& ptText) {
  return CPoint(GetMarginWidth() + GetColumnX(ptText.y, ptText.x) - m_nOffsetX,
                (ptText.y - m_nTopLine) * GetLineHeight());
}

CPoint CCrystalTextWnd::ClientToText(const CPoint& ptClient) {
  const int lineHeight = GetLineHeight();
  int row = ptClient.y >= 0 ? ptClient.y / lineHeight : -((-ptClient.y + lineHeight - 1) / lineHeight);
  int line = std::max(0, std::min(m_nTopLine + row, GetLineCount() - 1));
  const int target = ptClient.x - GetMarginWidth() + m_nOffsetX;
  LPCTSTR chars = GetLineChars(line);
  const int length = GetLineLength(line);
  const int tabWidth = std::max(1, GetCharPixelWidth(L'\t'));
  int x = 0;
  for (int i = 0; i < length; ++i) {
    const int next = AdvanceX(x, chars[i], tabWidth);
    // The nearer edge of the character decides.
    if (target < (x + next + 1) / 2) return CPoint(i, line);
    x = next;
  }
  return CPoint(length, line);
}

void CCrystalTextWnd::InvalidateLines(int nFirstLine, int nLastLine) {
  if (GetPort() == nullptr) return;
  CRect client;
  GetClientRect(&client);
  const int lineHeight = GetLineHeight();
  CRect r = client;
  r.top = std::max(static_cast<int>(client.top), (nFirstLine - m_nTopLine) * lineHeight);
  if (nLastLine >= 0) r.bottom = std::min(static_cast<int>(client.bottom), (nLastLine - m_nTopLine + 1) * lineHeight);
  if (r.bottom <= r.top) return;
  InvalidateRect(&r, FALSE);
}

// ---------------------------------------------------------------------------
// Scrolling
// ---------------------------------------------------------------------------
int CCrystalTextWnd::GetScreenLines() {
  CRect client;
  GetClientRect(&client);
  return std::max(1, static_cast<int>(client.Height()) / GetLineHeight());
}

void CCrystalTextWnd::NotifyScroll() {
  Invalidate();
  UpdateCaret();
  SendEditNotify(ECN_SCROLL);
}

void CCrystalTextWnd::ScrollToLine(int nNewTopLine) {
  nNewTopLine = std::max(0, std::min(nNewTopLine, GetLineCount() - 1));
  if (nNewTopLine == m_nTopLine) return;
  m_nTopLine = nNewTopLine;
  NotifyScroll();
}

void CCrystalTextWnd::ScrollToHorz(int nOffsetX) {
  nOffsetX = std::max(0, nOffsetX);
  if (nOffsetX == m_nOffsetX) return;
  m_nOffsetX = nOffsetX;
  NotifyScroll();
}

void CCrystalTextWnd::EnsureVisible(CPoint pt) {
  pt = ClampToText(pt);
  const int screenLines = GetScreenLines();
  if (pt.y < m_nTopLine)
    ScrollToLine(pt.y);
  else if (pt.y >= m_nTopLine + screenLines)
    ScrollToLine(pt.y - screenLines + 1);
  CRect client;
  GetClientRect(&client);
  const int textWidth = static_cast<int>(client.Width()) - GetMarginWidth();
  if (textWidth <= 0) return;
  const int x = GetColumnX(pt.y, pt.x);
  const int charWidth = GetCharWidth();
  if (x < m_nOffsetX)
    ScrollToHorz(std::max(0, x - textWidth / 4));
  else if (x + kCaretWidth > m_nOffsetX + textWidth)
    ScrollToHorz(x + kCaretWidth - textWidth + textWidth / 4 + charWidth);
}

void CCrystalTextWnd::UpdateCaret() {
  CPoint pixel = TextToClient(m_ptCursorPos);
  pixel.x += GetCompositionWidth();
  if (m_bHasFocus && GetPort() != nullptr) {
    SetCaretPos(pixel);
    CRect client;
    GetClientRect(&client);
    const bool inside = pixel.y >= 0 && pixel.y < client.bottom && pixel.x >= GetMarginWidth() && pixel.x <= client.right;
    if (inside)
      ShowCaret();
    else
      HideCaret();
  }
  if (pixel != m_ptLastCaretPixel) {
    m_ptLastCaretPixel = pixel;
    SendEditNotify(ECN_CARET);
  }
}

// ---------------------------------------------------------------------------
// Find
// ---------------------------------------------------------------------------
int CCrystalTextWnd::FindInLine(int nLine, const std::wstring& what, int from, int to, DWORD dwFlags, bool last) {
  // Matches lie inside [from, to); the first one, or the last with `last`.
  LPCTSTR chars = GetLineChars(nLine);
  const int length = GetLineLength(nLine);
  const int wlen = static_cast<int>(what.size());
  from = std::max(0, from);
  to = std::min(to, length);
  const bool matchCase = (dwFlags & FIND_MATCH_CASE) != 0;
  const bool wholeWord = (dwFlags & FIND_WHOLE_WORD) != 0;
  int found = -1;
  for (int s = from; s + wlen <= to; ++s) {
    bool equal = true;
    for (int k = 0; k < wlen && equal; ++k) {
      wchar_t a = chars[s + k];
      wchar_t b = what[static_cast<size_t>(k)];
      equal = matchCase ? a == b : chartcore::ToLowerW(a) == chartcore::ToLowerW(b);
    }
    if (!equal) continue;
    if (wholeWord && ((s > 0 && IsWordChar(chars[s - 1])) || (s + wlen < length && IsWordChar(chars[s + wlen]))))
      continue;
    found = s;
    if (!last) break;
  }
  return found;
}

BOOL CCrystalTextWnd::FindTextInBlock(LPCTSTR pszText, const CPoint& ptStartPos, const CPoint& ptBlockBegin,
                                      const CPoint& ptBlockEnd, DWORD dwFlags, BOOL bWrapSearch,
                                      CPoint* pptFoundPos) {
  if (pszText == nullptr || *pszText == L'\0') return FALSE;
  std::wstring what(pszText);
  if (what.find_first_of(L"\r\n") != std::wstring::npos) return FALSE;
  CPoint begin = ClampToText(ptBlockBegin);
  CPoint end = ClampToText(ptBlockEnd);
  if (PointLess(end, begin)) std::swap(begin, end);
  CPoint start = ClampToText(ptStartPos);
  if (PointLess(start, begin)) start = begin;
  if (PointLess(end, start)) start = end;
  const int wlen = static_cast<int>(what.size());
  auto lineFrom = [&](int l) { return l == begin.y ? static_cast<int>(begin.x) : 0; };
  auto lineTo = [&](int l) { return l == end.y ? static_cast<int>(end.x) : GetLineLength(l); };
  auto report = [&](int x, int l) {
    if (pptFoundPos != nullptr) *pptFoundPos = CPoint(x, l);
    return TRUE;
  };

  if ((dwFlags & FIND_DIRECTION_UP) == 0) {
    for (int l = start.y; l <= end.y; ++l) {
      int x = FindInLine(l, what, l == start.y ? static_cast<int>(start.x) : lineFrom(l), lineTo(l), dwFlags, false);
      if (x >= 0) return report(x, l);
    }
    if (!bWrapSearch) return FALSE;
    for (int l = begin.y; l <= start.y; ++l) {
      // On the start line only matches beginning before the start are new.
      int to = l == start.y ? std::min(lineTo(l), static_cast<int>(start.x) + wlen - 1) : lineTo(l);
      int x = FindInLine(l, what, lineFrom(l), to, dwFlags, false);
      if (x >= 0) return report(x, l);
    }
    return FALSE;
  }
  for (int l = start.y; l >= begin.y; --l) {
    int x = FindInLine(l, what, lineFrom(l), l == start.y ? static_cast<int>(start.x) : lineTo(l), dwFlags, true);
    if (x >= 0) return report(x, l);
  }
  if (!bWrapSearch) return FALSE;
  for (int l = end.y; l >= start.y; --l) {
    int from = l == start.y ? std::max(lineFrom(l), static_cast<int>(start.x) - wlen + 1) : lineFrom(l);
    int x = FindInLine(l, what, from, lineTo(l), dwFlags, true);
    if (x >= 0) return report(x, l);
  }
  return FALSE;
}

BOOL CCrystalTextWnd::FindText(LPCTSTR pszText, const CPoint& ptStartPos, DWORD dwFlags, BOOL bWrapSearch,
                               CPoint* pptFoundPos) {
  const int last = GetLineCount() - 1;
  return FindTextInBlock(pszText, ptStartPos, CPoint(0, 0), CPoint(GetLineLength(last), last), dwFlags, bWrapSearch,
                         pptFoundPos);
}

BOOL CCrystalTextWnd::FindNext(LPCTSTR pszText, DWORD dwFlags) {
  CPoint from = (dwFlags & FIND_DIRECTION_UP) != 0 ? m_ptSelStart : m_ptSelEnd;
  if (!IsSelection()) from = m_ptCursorPos;
  CPoint found;
  if (!FindText(pszText, from, dwFlags, TRUE, &found)) return FALSE;
  CPoint end(found.x + static_cast<LONG>(std::wcslen(pszText)), found.y);
  SetSelection(found, end);
  SetCursorPos(end);
  EnsureVisible(end);
  return TRUE;
}

// ---------------------------------------------------------------------------
// Painting
// ---------------------------------------------------------------------------
void CCrystalTextWnd::OnPaint() {
  CPaintDC dc(this);
  OnDraw(&dc);
}

void CCrystalTextWnd::OnDraw(CDC* pDC) {
  if (pDC == nullptr) return;
  CRect client;
  GetClientRect(&client);
  CFont font;
  CFont* oldFont = nullptr;
  bool selected = false;
  if (m_bHasViewFont) {
    font.CreateFontIndirect(&m_lfView);
    oldFont = pDC->SelectObject(&font);
    selected = true;
  }
  pDC->FillSolidRect(&client, GetColor(COLORINDEX_BKGND));
  const int lineHeight = GetLineHeight();
  const int margin = GetMarginWidth();
  if (margin > 0) pDC->FillSolidRect(0, 0, margin, client.Height(), GetColor(COLORINDEX_SELMARGIN));
  const int count = GetLineCount();
  for (int line = m_nTopLine, y = 0; line < count && y < client.bottom; ++line, y += lineHeight) {
    if (margin > 0 && m_pTextBuffer != nullptr && (m_pTextBuffer->GetLineFlags(line) & (LF_BOOKMARKS | 0x3FF)) != 0) {
      CRect mark(4, y + lineHeight / 4, margin - 4, y + lineHeight - lineHeight / 4);
      pDC->FillSolidRect(&mark, GetColor(COLORINDEX_KEYWORD));
    }
    DrawLine(pDC, line, y, client);
  }
  if (selected) pDC->SelectObject(oldFont);
  UpdateCaret();
}

void CCrystalTextWnd::DrawLine(CDC* pDC, int nLineIndex, int y, const CRect& rcClient) {
  LPCTSTR chars = GetLineChars(nLineIndex);
  const int length = GetLineLength(nLineIndex);
  const int margin = GetMarginWidth();
  const int lineHeight = GetLineHeight();
  const bool composing = !m_strComposition.IsEmpty() && nLineIndex == m_ptCursorPos.y;
  const int compWidth = composing ? GetCompositionWidth() : 0;

  // x of every column, composition text pushing the caret's right side over.
  std::vector<int>& xs = m_paintXs;
  xs.resize(static_cast<size_t>(length) + 1);
  xs[0] = 0;
  const int tabWidth = std::max(1, GetCharPixelWidth(L'\t'));
  for (int i = 0; i < length; ++i)
    xs[static_cast<size_t>(i) + 1] = AdvanceX(xs[static_cast<size_t>(i)], chars[i], tabWidth);
  // Columns right of the caret move over by the composition text's width.
  auto screenX = [&](int col) {
    return margin + xs[static_cast<size_t>(col)] - m_nOffsetX + (composing && col >= m_ptCursorPos.x ? compWidth : 0);
  };

  // Selected columns of this line; a selection running on past the line end
  // also marks one character cell after the text.
  int selBegin = -1, selEnd = -1;
  bool selEol = false;
  if (IsSelection() && nLineIndex >= m_ptSelStart.y && nLineIndex <= m_ptSelEnd.y) {
    selBegin = nLineIndex == m_ptSelStart.y ? static_cast<int>(m_ptSelStart.x) : 0;
    selEnd = nLineIndex == m_ptSelEnd.y ? static_cast<int>(m_ptSelEnd.x) : length;
    selEol = nLineIndex < m_ptSelEnd.y;
  }

  std::vector<TEXTBLOCK>& blocks = m_paintBlocks;
  GetLineBlocks(nLineIndex, blocks);
  std::vector<int>& cuts = m_paintCuts;
  cuts.clear();
  for (const TEXTBLOCK& b : blocks) cuts.push_back(std::max(0, std::min(b.m_nCharPos, length)));
  cuts.push_back(length);
  if (selBegin >= 0) {
    cuts.push_back(selBegin);
    cuts.push_back(selEnd);
  }
  if (composing) cuts.push_back(static_cast<int>(m_ptCursorPos.x));
  std::sort(cuts.begin(), cuts.end());
  cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());

  size_t block = 0;
  for (size_t c = 0; c + 1 < cuts.size(); ++c) {
    const int a = cuts[c], b = cuts[c + 1];
    while (block + 1 < blocks.size() && blocks[block + 1].m_nCharPos <= a) ++block;
    const bool inSel = selBegin >= 0 && a >= selBegin && b <= selEnd;
    const COLORREF color = inSel ? GetColor(COLORINDEX_SELTEXT) : GetColor(blocks[block].m_nColorIndex);
    const int x0 = screenX(a);
    int x1 = x0 + (xs[static_cast<size_t>(b)] - xs[static_cast<size_t>(a)]);
    if (x1 < margin || x0 > rcClient.right) continue;
    if (inSel) pDC->FillSolidRect(x0, y, x1 - x0, lineHeight, GetColor(COLORINDEX_SELBKGND));
    pDC->SetBkMode(TRANSPARENT);
    pDC->SetTextColor(color);
    // Tabs are drawn as the space they take: each tab-free run at its column.
    int run = a;
    while (run < b) {
      if (chars[run] == L'\t') {
        ++run;
        continue;
      }
      int runEnd = run;
      while (runEnd < b && chars[runEnd] != L'\t') ++runEnd;
      pDC->TextOut(x0 + (xs[static_cast<size_t>(run)] - xs[static_cast<size_t>(a)]), y, chars + run, runEnd - run);
      run = runEnd;
    }
  }
  if (selEol) {
    pDC->FillSolidRect(screenX(length), y, GetCharWidth(), lineHeight, GetColor(COLORINDEX_SELBKGND));
  }
  if (composing) {
    // The text being composed, underlined, at the caret.
    const int x = margin + xs[static_cast<size_t>(m_ptCursorPos.x)] - m_nOffsetX;
    pDC->SetBkMode(TRANSPARENT);
    pDC->SetTextColor(GetColor(COLORINDEX_NORMALTEXT));
    pDC->TextOut(x, y, m_strComposition);
    CPen pen(PS_SOLID, 1, GetColor(COLORINDEX_NORMALTEXT));
    CPen* oldPen = pDC->SelectObject(&pen);
    pDC->MoveTo(x, y + lineHeight - 1);
    pDC->LineTo(x + compWidth, y + lineHeight - 1);
    pDC->SelectObject(oldPen);
  }
}

// ---------------------------------------------------------------------------
// Focus, size, mouse, scroll messages
// ---------------------------------------------------------------------------
void CCrystalTextWnd::OnSize(UINT /*nType*/, int /*cx*/, int /*cy*/) {
  Invalidate();
  UpdateCaret();
}

void CCrystalTextWnd::OnSetFocus(CWnd* /*pOldWnd*/) {
  m_bHasFocus = TRUE;
  CreateSolidCaret(kCaretWidth, GetLineHeight());
  m_bCaretCreated = TRUE;
  UpdateCaret();
}

void CCrystalTextWnd::OnKillFocus(CWnd* /*pNewWnd*/) {
  m_bHasFocus = FALSE;
  m_bDragging = FALSE;
  if (m_bCaretCreated) {
    HideCaret();
    DestroyCaret();
    m_bCaretCreated = FALSE;
  }
}

void CCrystalTextWnd::OnLButtonDown(UINT nFlags, CPoint point) {
  if (GetFocus() != this) SetFocus();
  MoveCursorTo(ClientToText(point), (nFlags & MK_SHIFT) != 0 ? TRUE : FALSE);
  m_bDragging = TRUE;
  SetCapture();
}

void CCrystalTextWnd::OnMouseMove(UINT nFlags, CPoint point) {
  if (!m_bDragging || (nFlags & MK_LBUTTON) == 0) return;
  CRect client;
  GetClientRect(&client);
  // Dragging past the top or bottom edge scrolls a line at a time.
  if (point.y < 0 && m_nTopLine > 0)
    ScrollToLine(m_nTopLine - 1);
  else if (point.y >= client.bottom && client.bottom > 0)
    ScrollToLine(std::min(m_nTopLine + 1, std::max(0, GetLineCount() - GetScreenLines())));
  CPoint pt = ClientToText(point);
  SetCursorPos(pt);
  UpdateSelectionFromAnchor();
}

void CCrystalTextWnd::OnLButtonUp(UINT /*nFlags*/, CPoint /*point*/) {
  if (!m_bDragging) return;
  m_bDragging = FALSE;
  if (GetCapture() == this) ReleaseCapture();
}

void CCrystalTextWnd::OnLButtonDblClk(UINT /*nFlags*/, CPoint point) {
  CPoint pt = ClientToText(point);
  int start = WordStart(pt.y, pt.x);
  int end = WordEnd(pt.y, pt.x);
  // Double-clicking inside a word selects the whole word.
  LPCTSTR chars = GetLineChars(pt.y);
  if (pt.x < GetLineLength(pt.y) && IsWordChar(chars[pt.x])) {
    start = pt.x;
    while (start > 0 && IsWordChar(chars[start - 1])) --start;
  }
  SetSelection(CPoint(start, pt.y), CPoint(end, pt.y));
  SetCursorPos(CPoint(end, pt.y));
  m_bDragging = FALSE;
}

BOOL CCrystalTextWnd::OnMouseWheel(UINT /*nFlags*/, short zDelta, CPoint /*pt*/) {
  const int lines = -static_cast<int>(zDelta) * kWheelLines / 120;
  ScrollToLine(m_nTopLine + lines);
  return TRUE;
}

void CCrystalTextWnd::OnVScroll(UINT nSBCode, UINT nPos) {
  switch (nSBCode) {
    case SB_LINEUP: ScrollToLine(m_nTopLine - 1); break;
    case SB_LINEDOWN: ScrollToLine(m_nTopLine + 1); break;
    case SB_PAGEUP: ScrollToLine(m_nTopLine - GetScreenLines()); break;
    case SB_PAGEDOWN: ScrollToLine(m_nTopLine + GetScreenLines()); break;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK: ScrollToLine(static_cast<int>(nPos)); break;
    case SB_TOP: ScrollToLine(0); break;
    case SB_BOTTOM: ScrollToLine(GetLineCount() - 1); break;
    default: break;
  }
}

void CCrystalTextWnd::OnHScroll(UINT nSBCode, UINT nPos) {
  CRect client;
  GetClientRect(&client);
  const int page = std::max(GetCharWidth(), static_cast<int>(client.Width()) - GetMarginWidth());
  switch (nSBCode) {
    case SB_LINELEFT: ScrollToHorz(m_nOffsetX - GetCharWidth()); break;
    case SB_LINERIGHT: ScrollToHorz(m_nOffsetX + GetCharWidth()); break;
    case SB_PAGELEFT: ScrollToHorz(m_nOffsetX - page); break;
    case SB_PAGERIGHT: ScrollToHorz(m_nOffsetX + page); break;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK: ScrollToHorz(static_cast<int>(nPos)); break;
    case SB_LEFT: ScrollToHorz(0); break;
    case SB_RIGHT: ScrollToHorz(GetMaxLineLength() * GetCharWidth()); break;
    default: break;
  }
}

// ===========================================================================
// CCrystalEditWnd
// ===========================================================================
CCrystalEditWnd::CCrystalEditWnd() = default;
CCrystalEditWnd::~CCrystalEditWnd() = default;

BOOL CCrystalEditWnd::IsReadOnly() {
  return m_pTextBuffer == nullptr || !m_pTextBuffer->IsInitialized() || m_pTextBuffer->GetReadOnly() ? TRUE : FALSE;
}

// ---------------------------------------------------------------------------
// Editing primitives: every public edit is one undo group
// ---------------------------------------------------------------------------
namespace {
// Closes a group: with a change, through the view (caret placed, change
// notified); without one, quietly.
void CloseGroup(CCrystalTextBuffer* buf, CCrystalTextWnd* view, int positionBefore, int countBefore) {
  const bool changed = buf->GetUndoPosition() != positionBefore || buf->GetUndoRecordCount() != countBefore;
  buf->FlushUndoGroup(changed ? view : nullptr);
}

// Replaces the text between two positions by text as one delete and one
// insert, so an edit over many lines adds two records to the history, not
// two a line: past the history's limit the oldest group goes, and a group of
// thousands of records would drop itself.
void ReplaceSpan(CCrystalTextBuffer* buf, CCrystalTextWnd* view, CPoint from, CPoint to, const std::wstring& text,
                 int action) {
  buf->DeleteText(view, from.y, from.x, to.y, to.x, action);
  int endLine = 0, endChar = 0;
  if (!text.empty()) buf->InsertText(view, from.y, from.x, text.c_str(), endLine, endChar, action);
}
}  // namespace

BOOL CCrystalEditWnd::InsertTyped(const CString& text, BOOL bMerge, int nAction) {
  if (IsReadOnly()) return FALSE;
  CCrystalTextBuffer* buf = m_pTextBuffer;
  const int pos = buf->GetUndoPosition(), count = buf->GetUndoRecordCount();
  buf->BeginUndoGroup(bMerge);
  BOOL ok = TRUE;
  CPoint at = m_ptCursorPos;
  if (IsSelection()) {
    at = m_ptSelStart;
    ok = buf->DeleteText(this, m_ptSelStart.y, m_ptSelStart.x, m_ptSelEnd.y, m_ptSelEnd.x, nAction);
  } else if (m_bOvrMode && nAction == CE_ACTION_TYPING && text.GetLength() == 1 && text[0] != L'\r' &&
             at.x < GetLineLength(at.y)) {
    // Overwrite mode replaces the character under the caret, never a line end.
    ok = buf->DeleteText(this, at.y, at.x, at.y, at.x + 1, nAction);
  }
  int endLine = at.y, endChar = at.x;
  if (ok && !text.IsEmpty()) ok = buf->InsertText(this, at.y, at.x, text, endLine, endChar, nAction);
  CloseGroup(buf, this, pos, count);
  if (ok) {
    m_ptAnchor = m_ptSelStart = m_ptSelEnd = CPoint(endChar, endLine);
    SetCursorPos(CPoint(endChar, endLine));
    EnsureVisible(m_ptCursorPos);
  }
  return ok;
}

BOOL CCrystalEditWnd::ReplaceSelText(LPCTSTR pszNewText) {
  if (pszNewText == nullptr) return FALSE;
  m_ptLastTyping = CPoint(-1, -1);
  return InsertTyped(CString(pszNewText), FALSE, CE_ACTION_REPLACE);
}

BOOL CCrystalEditWnd::DeleteRange(const CPoint& ptStart, const CPoint& ptEnd, int nAction) {
  m_ptLastTyping = CPoint(-1, -1);
  CCrystalTextBuffer* buf = m_pTextBuffer;
  const int pos = buf->GetUndoPosition(), count = buf->GetUndoRecordCount();
  buf->BeginUndoGroup();
  BOOL ok = buf->DeleteText(this, ptStart.y, ptStart.x, ptEnd.y, ptEnd.x, nAction);
  CloseGroup(buf, this, pos, count);
  if (ok) {
    m_ptAnchor = m_ptSelStart = m_ptSelEnd = ptStart;
    SetCursorPos(ptStart);
    EnsureVisible(ptStart);
  }
  return ok;
}

BOOL CCrystalEditWnd::DeleteSelection(int nAction) {
  if (IsReadOnly() || !IsSelection()) return FALSE;
  return DeleteRange(m_ptSelStart, m_ptSelEnd, nAction);
}

BOOL CCrystalEditWnd::InsertNewLine() {
  CString text(L"\r\n");
  if (m_bAutoIndent) {
    // The new line starts with the blanks that lead the line it is typed on
    // (as far as the caret, or the start of the selection it replaces).
    const CPoint at = IsSelection() ? m_ptSelStart : m_ptCursorPos;
    LPCTSTR chars = GetLineChars(at.y);
    int n = 0;
    while (n < at.x && IsBlank(chars[n])) ++n;
    text.Append(chars, n);
  }
  m_ptLastTyping = CPoint(-1, -1);
  return InsertTyped(text, FALSE, CE_ACTION_TYPING);
}

BOOL CCrystalEditWnd::DeleteChar(bool forward) {
  // The selection, else one character (or line break) beside the caret.
  if (IsReadOnly()) return FALSE;
  const int action = forward ? CE_ACTION_DELETE : CE_ACTION_BACKSPACE;
  if (IsSelection()) return DeleteSelection(action);
  CPoint start = m_ptCursorPos;
  CPoint end = start;
  if (forward) {
    if (start.x < GetLineLength(start.y)) end.x = start.x + 1;
    else if (start.y < GetLineCount() - 1) end = CPoint(0, start.y + 1);
    else return FALSE;
  } else {
    if (end.x > 0) start.x = end.x - 1;
    else if (end.y > 0) start = CPoint(GetLineLength(end.y - 1), end.y - 1);
    else return FALSE;
  }
  return DeleteRange(start, end, action);
}

BOOL CCrystalEditWnd::DeleteBack() { return DeleteChar(false); }
BOOL CCrystalEditWnd::DeleteForward() { return DeleteChar(true); }

BOOL CCrystalEditWnd::InsertTab(BOOL bShift) {
  if (IsReadOnly()) return FALSE;
  m_ptLastTyping = CPoint(-1, -1);
  if (!IsSelection() || m_ptSelStart.y == m_ptSelEnd.y) {
    if (bShift) return FALSE;
    return InsertTyped(CString(L"\t"), FALSE, CE_ACTION_TYPING);
  }
  // Several lines selected: indent (or with Shift unindent) each of them; a
  // selection ending at column 0 leaves that last line alone.
  const int first = m_ptSelStart.y;
  const int last = m_ptSelEnd.x == 0 ? m_ptSelEnd.y - 1 : m_ptSelEnd.y;
  std::wstring lines;
  bool edited = false;
  for (int l = first; l <= last; ++l) {
    LPCTSTR chars = GetLineChars(l);
    const int length = GetLineLength(l);
    int n = 0;
    if (!bShift) {
      lines += L'\t';
      edited = true;
    } else if (length > 0 && chars[0] == L'\t') {
      n = 1;
    } else {
      while (n < GetTabSize() && n < length && chars[n] == L' ') ++n;
    }
    edited = edited || n > 0;
    lines.append(chars + n, static_cast<size_t>(length - n));
    if (l < last) lines += L'\n';
  }
  CCrystalTextBuffer* buf = m_pTextBuffer;
  const int pos = buf->GetUndoPosition(), count = buf->GetUndoRecordCount();
  buf->BeginUndoGroup();
  if (edited) ReplaceSpan(buf, this, CPoint(0, first), CPoint(GetLineLength(last), last), lines, CE_ACTION_INDENT);
  const bool changed = buf->GetUndoPosition() != pos || buf->GetUndoRecordCount() != count;
  buf->FlushUndoGroup(nullptr);
  CPoint a(0, first), b = m_ptSelEnd.x == 0 ? CPoint(0, m_ptSelEnd.y) : CPoint(GetLineLength(last), last);
  SetSelection(a, b);
  SetCursorPos(b);
  if (changed) SendChangeNotify();
  return changed ? TRUE : FALSE;
}

BOOL CCrystalEditWnd::Cut() {
  if (IsReadOnly() || !IsSelection()) return FALSE;
  if (!Copy()) return FALSE;
  return DeleteSelection(CE_ACTION_CUT);
}

BOOL CCrystalEditWnd::Paste() {
  if (IsReadOnly()) return FALSE;
  CString text;
  if (!chartcore::GetWindowPortFactory().GetClipboardText(text) || text.IsEmpty()) return FALSE;
  m_ptLastTyping = CPoint(-1, -1);
  return InsertTyped(text, FALSE, CE_ACTION_PASTE);
}

BOOL CCrystalEditWnd::CanUndo() { return m_pTextBuffer != nullptr && m_pTextBuffer->CanUndo() ? TRUE : FALSE; }
BOOL CCrystalEditWnd::CanRedo() { return m_pTextBuffer != nullptr && m_pTextBuffer->CanRedo() ? TRUE : FALSE; }

BOOL CCrystalEditWnd::StepHistory(bool redo) {
  if (!(redo ? CanRedo() : CanUndo()) || m_pTextBuffer->GetReadOnly()) return FALSE;
  m_ptLastTyping = CPoint(-1, -1);
  CPoint pt;
  if (!(redo ? m_pTextBuffer->Redo(pt) : m_pTextBuffer->Undo(pt))) return FALSE;
  m_ptAnchor = m_ptSelStart = m_ptSelEnd = ClampToText(pt);
  SetCursorPos(pt);
  EnsureVisible(pt);
  SendChangeNotify();
  return TRUE;
}

BOOL CCrystalEditWnd::Undo() { return StepHistory(false); }
BOOL CCrystalEditWnd::Redo() { return StepHistory(true); }

int CCrystalEditWnd::ReplaceAll(LPCTSTR pszText, LPCTSTR pszReplace, DWORD dwFlags) {
  if (IsReadOnly() || pszText == nullptr || *pszText == L'\0') return 0;
  std::wstring what(pszText);
  if (what.find_first_of(L"\r\n") != std::wstring::npos) return 0;
  const std::wstring with = pszReplace != nullptr ? std::wstring(pszReplace) : std::wstring();
  const int wlen = static_cast<int>(what.size());
  m_ptLastTyping = CPoint(-1, -1);
  // The matches of the text as it stands, joined into what the span from the
  // first match to the end of the last becomes.
  CCrystalTextBuffer* buf = m_pTextBuffer;
  std::wstring result;
  CPoint first(-1, -1), copied;
  CString between;
  int replaced = 0;
  for (int line = 0; line < GetLineCount(); ++line) {
    const int length = GetLineLength(line);
    for (int at = 0;;) {
      const int found = FindInLine(line, what, at, length, dwFlags & (FIND_MATCH_CASE | FIND_WHOLE_WORD), false);
      if (found < 0) break;
      if (first.y < 0) first = copied = CPoint(found, line);
      buf->GetText(copied.y, copied.x, line, found, between, L"\n");
      result.append(between.GetString(), static_cast<size_t>(between.GetLength()));
      result += with;
      copied = CPoint(found + wlen, line);
      at = found + wlen;
      ++replaced;
    }
  }
  if (replaced == 0) return 0;
  const int pos = buf->GetUndoPosition(), count = buf->GetUndoRecordCount();
  buf->BeginUndoGroup();
  ReplaceSpan(buf, this, first, copied, result, CE_ACTION_REPLACE);
  CloseGroup(buf, this, pos, count);
  return replaced;
}

BOOL CCrystalEditWnd::ReplaceNext(LPCTSTR pszText, LPCTSTR pszReplace, DWORD dwFlags) {
  if (pszText == nullptr || *pszText == L'\0') return FALSE;
  if (IsSelection() && m_ptSelStart.y == m_ptSelEnd.y) {
    // The selection is replaced only when it is itself a match.
    CPoint found;
    if (FindTextInBlock(pszText, m_ptSelStart, m_ptSelStart, m_ptSelEnd, dwFlags & ~FIND_DIRECTION_UP, FALSE,
                        &found) &&
        found == m_ptSelStart && m_ptSelEnd.x - m_ptSelStart.x == static_cast<LONG>(std::wcslen(pszText)))
      ReplaceSelText(pszReplace != nullptr ? pszReplace : L"");
  }
  return FindNext(pszText, dwFlags);
}

// ---------------------------------------------------------------------------
// Keyboard
// ---------------------------------------------------------------------------
void CCrystalEditWnd::MoveCaret(UINT nKey, BOOL bShift, BOOL bCtrl) {
  CPoint pt = m_ptCursorPos;
  const int count = GetLineCount();
  int ideal = m_nIdealCaretX;
  bool vertical = false;
  auto columnAt = [&](int line, int pixelX) {
    CPoint client(GetMarginWidth() + pixelX - GetHorzOffset(), (line - GetTopLine()) * GetLineHeight());
    return static_cast<int>(ClientToText(client).x);
  };
  switch (nKey) {
    case VK_LEFT:
      if (IsSelection() && !bShift) {
        pt = m_ptSelStart;
      } else if (bCtrl) {
        if (pt.x == 0 && pt.y > 0) pt = CPoint(GetLineLength(pt.y - 1), pt.y - 1);
        else pt.x = WordStart(pt.y, pt.x);
      } else if (pt.x > 0) {
        --pt.x;
      } else if (pt.y > 0) {
        pt = CPoint(GetLineLength(pt.y - 1), pt.y - 1);
      }
      break;
    case VK_RIGHT:
      if (IsSelection() && !bShift) {
        pt = m_ptSelEnd;
      } else if (bCtrl) {
        if (pt.x >= GetLineLength(pt.y) && pt.y < count - 1) pt = CPoint(0, pt.y + 1);
        else pt.x = WordEnd(pt.y, pt.x);
      } else if (pt.x < GetLineLength(pt.y)) {
        ++pt.x;
      } else if (pt.y < count - 1) {
        pt = CPoint(0, pt.y + 1);
      }
      break;
    case VK_UP:
      if (bCtrl) {
        ScrollToLine(GetTopLine() - 1);
        return;
      }
      vertical = true;
      if (pt.y > 0) pt = CPoint(columnAt(pt.y - 1, ideal), pt.y - 1);
      break;
    case VK_DOWN:
      if (bCtrl) {
        ScrollToLine(GetTopLine() + 1);
        return;
      }
      vertical = true;
      if (pt.y < count - 1) pt = CPoint(columnAt(pt.y + 1, ideal), pt.y + 1);
      break;
    case VK_PRIOR:
    case VK_NEXT: {
      vertical = true;
      const int page = GetScreenLines();
      const int delta = nKey == VK_PRIOR ? -page : page;
      const int line = std::max(0, std::min(static_cast<int>(pt.y) + delta, count - 1));
      ScrollToLine(GetTopLine() + delta);
      pt = CPoint(columnAt(line, ideal), line);
      break;
    }
    case VK_HOME:
      if (bCtrl) {
        pt = CPoint(0, 0);
      } else {
        // First to the line's first non-blank character, then to column 0.
        LPCTSTR chars = GetLineChars(pt.y);
        int first = 0;
        while (first < GetLineLength(pt.y) && IsBlank(chars[first])) ++first;
        pt.x = pt.x == first ? 0 : first;
      }
      break;
    case VK_END:
      if (bCtrl) pt = CPoint(GetLineLength(count - 1), count - 1);
      else pt.x = GetLineLength(pt.y);
      break;
    default: return;
  }
  MoveCursorTo(pt, bShift);
  if (vertical) m_nIdealCaretX = ideal;
}

BOOL CCrystalEditWnd::HandleVirtualKey(UINT nChar, UINT /*nRepCnt*/) {
  const BOOL shift = chartcore::IsKeyDown(VK_SHIFT) ? TRUE : FALSE;
  const BOOL ctrl = chartcore::IsKeyDown(VK_CONTROL) ? TRUE : FALSE;
  switch (nChar) {
    case VK_RETURN: return InsertNewLine();
    case VK_TAB: return InsertTab(shift);
    case VK_SPACE: return InsertTyped(CString(L" "), FALSE, CE_ACTION_TYPING);
    case VK_BACK: DeleteBack(); return FALSE;
    case VK_DELETE:
      if (shift) Cut();
      else DeleteForward();
      return FALSE;
    case VK_INSERT:
      if (ctrl) Copy();
      else if (shift) Paste();
      else m_bOvrMode = !m_bOvrMode;
      return FALSE;
    default:
      if (IsCaretKey(nChar)) {
        m_ptLastTyping = CPoint(-1, -1);
        MoveCaret(nChar, shift, ctrl);
      }
      return FALSE;
  }
}

void CCrystalEditWnd::OnChar(UINT nChar, UINT nRepCnt, UINT nFlags) {
  const UINT repeat = nRepCnt == 0 ? 1 : nRepCnt;
  if ((nFlags & CHARFLAG_VIRTKEY) != 0) {
    // A key from the key-down path: its code is a virtual key, never text.
    UINT typed = 0;
    for (UINT i = 0; i < repeat; ++i) {
      if (HandleVirtualKey(nChar, repeat)) {
        if (nChar == VK_RETURN) typed = L'\r';
        else if (nChar == VK_TAB) typed = L'\t';
        else if (nChar == VK_SPACE) typed = L' ';
      }
    }
    SendEditNotify(ECN_KEYDOWN, nChar, nRepCnt, nFlags);
    if (typed != 0) SendEditNotify(ECN_CHAR, typed, nRepCnt, nFlags);
    return;
  }
  const wchar_t ch = static_cast<wchar_t>(nChar);
  for (UINT i = 0; i < repeat; ++i) {
    if (ch == L'\r' || ch == L'\n') {
      if (!InsertNewLine()) return;
    } else if (ch == L'\b') {
      DeleteBack();
      continue;
    } else if (ch == L'\t') {
      if (!InsertTab(chartcore::IsKeyDown(VK_SHIFT) ? TRUE : FALSE)) return;
    } else if (nChar < 0x20 || nChar == 0x7F) {
      // Control characters of Ctrl+letter: their commands ran on key-down.
      return;
    } else {
      // Typing a word merges with the typing just before it, so one undo
      // takes back the whole word; any other character starts a new step.
      const BOOL merge = !IsSelection() && !m_bOvrMode && m_ptCursorPos == m_ptLastTyping && IsWordChar(ch) &&
                         m_ptCursorPos.x > 0 && IsWordChar(GetLineChars(m_ptCursorPos.y)[m_ptCursorPos.x - 1]);
      if (!InsertTyped(CString(ch), merge, CE_ACTION_TYPING)) return;
      m_ptLastTyping = m_ptCursorPos;
    }
    SendEditNotify(ECN_CHAR, nChar == L'\n' ? L'\r' : nChar, nRepCnt, nFlags);
  }
}

void CCrystalEditWnd::OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags) {
  if (IsCaretKey(nChar) || nChar == VK_DELETE || nChar == VK_INSERT) {
    OnChar(nChar, nRepCnt, nFlags | CHARFLAG_VIRTKEY);
    return;
  }
  if (chartcore::IsKeyDown(VK_CONTROL) && !chartcore::IsKeyDown(VK_MENU)) {
    switch (nChar) {
      case 'A': SelectAll(); break;
      case 'C': Copy(); break;
      case 'X': Cut(); break;
      case 'V': Paste(); break;
      case 'Z':
        if (chartcore::IsKeyDown(VK_SHIFT)) Redo();
        else Undo();
        break;
      case 'Y': Redo(); break;
      default: break;
    }
  }
  SendEditNotify(ECN_KEYDOWN, nChar, nRepCnt, nFlags);
}

void CCrystalEditWnd::OnKeyUp(UINT /*nChar*/, UINT /*nRepCnt*/, UINT /*nFlags*/) {}

// ---------------------------------------------------------------------------
// Composition
// ---------------------------------------------------------------------------
void CCrystalEditWnd::SetCompositionText(LPCTSTR pszText) {
  m_strComposition = pszText != nullptr ? CString(pszText) : CString();
  InvalidateLines(m_ptCursorPos.y, m_ptCursorPos.y);
  UpdateCaret();
}

BOOL CCrystalEditWnd::CommitComposition(LPCTSTR pszText) {
  CancelComposition();
  if (pszText == nullptr || *pszText == L'\0') return FALSE;
  m_ptLastTyping = CPoint(-1, -1);
  CString text(pszText);
  if (!InsertTyped(text, FALSE, CE_ACTION_COMPOSITION)) return FALSE;
  SendEditNotify(ECN_CHAR, static_cast<UINT>(text[text.GetLength() - 1]), 1, 0);
  return TRUE;
}

void CCrystalEditWnd::CancelComposition() {
  if (m_strComposition.IsEmpty()) return;
  m_strComposition.Empty();
  InvalidateLines(m_ptCursorPos.y, m_ptCursorPos.y);
  UpdateCaret();
}
