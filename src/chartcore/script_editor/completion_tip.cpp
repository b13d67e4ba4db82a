#include "chartcore/script_editor/completion_tip.h"

#include <cstring>

namespace {

// The word whose measured size gives the tip's minimum width and line height.
const wchar_t kMeasureWord[] = L"테스트";
// Pale yellow of the tip's background.
constexpr COLORREF kTipBackground = RGB(255, 255, 200);

bool IsBlankChar(wchar_t ch) { return ch == L' ' || ch == L'\t'; }

}  // namespace

CIntelliTip::CIntelliTip() : CDialog(IDD) {}

CIntelliTip::~CIntelliTip() {
  if (IsWindow()) DestroyWindow();
}

BOOL CIntelliTip::Create(CWnd* pParentWnd) {
  if (IsWindow()) return FALSE;
  m_pParentWnd = pParentWnd;
  SetTemplateSize(CSize(198, 6));
  return CDialog::Create(IDD, pParentWnd);
}

BOOL CIntelliTip::OnInitDialog() {
  LOGFONT lf;
  std::memset(&lf, 0, sizeof(lf));
  lf.lfHeight = 15;
  m_fontNormal.CreateFontIndirect(&lf);
  lf.lfWeight = FW_BOLD;
  m_fontBold.CreateFontIndirect(&lf);
  return CDialog::OnInitDialog();
}

// ---------------------------------------------------------------------------
// Content
// ---------------------------------------------------------------------------

void CIntelliTip::SetFunction(CString strFunction, CStringArray& params) {
  m_strFunction = strFunction;
  SetFunctionParam(params);
  UpdatePosition();
}

void CIntelliTip::SetFunctionName(CString strName) { m_strFunction = strName; }

void CIntelliTip::SetFunctionParam(CStringArray& params) {
  if (&params == &m_arrParams) return;
  m_arrParams.RemoveAll();
  m_arrParams.Copy(params);
}

void CIntelliTip::SetCurParam(int nCurParam) {
  m_nCurParam = nCurParam;
  Invalidate();
}

// ---------------------------------------------------------------------------
// Placement and visibility
// ---------------------------------------------------------------------------

void CIntelliTip::SetCursorPoint(CPoint pt) {
  if (m_pParentWnd && m_pParentWnd->IsWindow()) m_pParentWnd->ClientToScreen(&pt);
  m_ptScreen = pt;
  UpdatePosition();
}

void CIntelliTip::Show() {
  ShowWindow(SW_SHOW);
  KillTimer(kHideTimer);
  SetTimer(kHideTimer, kHideDelay);
  m_bVisible = TRUE;
}

void CIntelliTip::Hide() {
  ShowWindow(SW_HIDE);
  KillTimer(kHideTimer);
  m_bVisible = FALSE;
}

void CIntelliTip::UpdatePosition() {
  CClientDC dc(this);
  CFont* old = dc.SelectObject(&m_fontNormal);
  m_arrParams.RemoveAll();
  const CSize minimum = dc.GetTextExtent(kMeasureWord, -1);
  int width = minimum.cx;
  const int lineHeight = minimum.cy;
  int lines = 0;
  int start = 0;
  for (;;) {
    int end = m_strFunction.Find(L'\n', start);
    const CString piece = end < 0 ? m_strFunction.Mid(start) : m_strFunction.Mid(start, end - start);
    m_arrParams.Add(piece);
    ++lines;
    const CSize extent = dc.GetTextExtent(piece);
    if (extent.cx > width) width = extent.cx;
    if (end < 0) break;
    start = end + 1;
  }
  dc.SelectObject(old);
  MoveWindow(m_ptScreen.x, m_ptScreen.y, width + 10, lineHeight * lines + 2);
  Invalidate();
}

// ---------------------------------------------------------------------------
// Painting and messages
// ---------------------------------------------------------------------------

bool CIntelliTip::FindCurParamSpan(const CString& line, int& start, int& end) const {
  const int open = line.Find(L'(');
  if (open < 0 || m_nCurParam < 0) return false;
  const int n = line.GetLength();
  int index = 0;
  int depth = 0;
  int segment = open + 1;
  for (int i = open + 1; i <= n; ++i) {
    const wchar_t ch = i < n ? line[i] : L')';
    if (ch == L'(') {
      ++depth;
      continue;
    }
    const bool closes = ch == L')' && depth == 0;
    if (ch == L')' && depth > 0) --depth;
    if (!closes && !(ch == L',' && depth == 0)) continue;
    if (index == m_nCurParam) {
      start = segment;
      end = i;
      while (start < end && IsBlankChar(line[start])) ++start;
      while (end > start && IsBlankChar(line[end - 1])) --end;
      return end > start;
    }
    if (closes) return false;
    ++index;
    segment = i + 1;
  }
  return false;
}

void CIntelliTip::OnPaint() {
  CPaintDC dc(this);
  CRect client;
  GetClientRect(&client);
  dc.FillSolidRect(&client, kTipBackground);
  dc.SetBkMode(TRANSPARENT);
  CRect text = client;
  text.left += 2;
  text.right -= 2;
  CFont* old = dc.SelectObject(&m_fontNormal);
  int advance = dc.GetTextExtent(m_strFunction).cy;
  if (advance <= 0) advance = dc.GetTextExtent(kMeasureWord, -1).cy;
  int y = text.top;
  for (INT_PTR i = 0; i < m_arrParams.GetSize(); ++i, y += advance) {
    const CString& line = m_arrParams[i];
    int start = 0;
    int end = 0;
    if (i == 0 && FindCurParamSpan(line, start, end)) {
      // The call form with the parameter being typed in bold.
      int x = text.left;
      const CString before = line.Left(start);
      const CString current = line.Mid(start, end - start);
      dc.TextOut(x, y, before);
      x += dc.GetTextExtent(before).cx;
      dc.SelectObject(&m_fontBold);
      dc.TextOut(x, y, current);
      x += dc.GetTextExtent(current).cx;
      dc.SelectObject(&m_fontNormal);
      dc.TextOut(x, y, line.Mid(end));
    } else {
      dc.TextOut(text.left, y, line);
    }
  }
  CBrush black(RGB(0, 0, 0));
  dc.FrameRect(&client, &black);
  dc.SelectObject(old);
}

void CIntelliTip::OnTimer(UINT_PTR nIDEvent) {
  if (nIDEvent != kHideTimer) {
    CDialog::OnTimer(nIDEvent);
    return;
  }
  KillTimer(kHideTimer);
  m_bVisible = FALSE;
  OnCancel();
}

void CIntelliTip::OnSetFocus(CWnd* pOldWnd) {
  CWnd* back = pOldWnd && pOldWnd != this && pOldWnd->IsWindow() ? pOldWnd : m_pParentWnd;
  if (back && back->IsWindow()) back->SetFocus();
}

void CIntelliTip::OnDestroy() {
  KillTimer(kHideTimer);
  m_bVisible = FALSE;
  CDialog::OnDestroy();
  m_fontNormal.DeleteObject();
  m_fontBold.DeleteObject();
}
