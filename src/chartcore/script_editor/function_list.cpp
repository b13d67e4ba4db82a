#include "chartcore/script_editor/function_list.h"

#include "chartcore/foundation/paths.h"
#include "chartcore/logic/funct.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/platform/chartype.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/profile.h"
#include "chartcore/script_editor/script_edit.h"
#include "chartcore/script_editor/script_words.h"

using chartcore::internal::FoldWordChar;

namespace {

// Orders two texts as the sorted list does: without regard to case.
int CompareFolded(const CString& a, const CString& b) {
  const int n = a.GetLength() < b.GetLength() ? a.GetLength() : b.GetLength();
  for (int i = 0; i < n; ++i) {
    const wchar_t ca = FoldWordChar(a[i]);
    const wchar_t cb = FoldWordChar(b[i]);
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  return a.GetLength() - b.GetLength();
}

bool StartsWithFolded(const CString& text, const CString& prefix) {
  if (prefix.GetLength() > text.GetLength()) return false;
  for (int i = 0; i < prefix.GetLength(); ++i) {
    if (FoldWordChar(text[i]) != FoldWordChar(prefix[i])) return false;
  }
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------
// CIntelliList
// ---------------------------------------------------------------------------

CIntelliList::CIntelliList() : CDialog(IDD) {}

CIntelliList::~CIntelliList() {
  if (IsWindow()) DestroyWindow();
}

BOOL CIntelliList::Create(CWnd* pParentWnd) {
  if (IsWindow()) return FALSE;
  m_pEditor = dynamic_cast<CScriptEdit*>(pParentWnd);
  SetTemplateSize(CSize(126, 63));
  return CDialog::Create(IDD, pParentWnd);
}

int CIntelliList::AddItem(const CString& text) {
  // Upper bound: after every item that sorts equal.
  int lo = 0;
  int hi = GetItemCount();
  while (lo < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (CompareFolded(m_arrItems[mid], text) <= 0) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  m_arrItems.InsertAt(lo, text);
  if (m_nCurSel >= lo) ++m_nCurSel;
  Invalidate();
  return lo;
}

void CIntelliList::DeleteAllItems() {
  m_arrItems.RemoveAll();
  m_nCurSel = -1;
  m_nTopIndex = 0;
  Invalidate();
}

CString CIntelliList::GetItemText(int index) const {
  if (index < 0 || index >= GetItemCount()) return CString();
  return m_arrItems[index];
}

int CIntelliList::FindPrefix(const CString& prefix) const {
  if (prefix.IsEmpty()) return -1;
  // Items that begin with the prefix sort together, right at its lower bound.
  int lo = 0;
  int hi = GetItemCount();
  while (lo < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (CompareFolded(m_arrItems[mid], prefix) < 0) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return lo < GetItemCount() && StartsWithFolded(m_arrItems[lo], prefix) ? lo : -1;
}

// ---------------------------------------------------------------------------
// Selection and scrolling
// ---------------------------------------------------------------------------

int CIntelliList::GetRowHeight() const {
  CClientDC dc(const_cast<CIntelliList*>(this));
  TEXTMETRIC tm;
  if (dc.GetTextMetrics(&tm) && tm.tmHeight > 0) return tm.tmHeight;
  return 16;
}

int CIntelliList::GetCountPerPage() const {
  CRect client;
  GetClientRect(&client);
  const int rows = client.Height() / GetRowHeight();
  return rows < 1 ? 1 : rows;
}

void CIntelliList::EnsureVisible(int index) {
  if (index < 0) return;
  const int perPage = GetCountPerPage();
  if (index < m_nTopIndex) {
    m_nTopIndex = index;
  } else if (index >= m_nTopIndex + perPage) {
    m_nTopIndex = index - perPage + 1;
  }
}

void CIntelliList::SelectItem(int index) {
  m_nCurSel = index >= 0 && index < GetItemCount() ? index : -1;
  EnsureVisible(m_nCurSel);
  Invalidate();
}

void CIntelliList::LineUp() {
  if (GetItemCount() == 0) return;
  SelectItem(m_nCurSel <= 0 ? 0 : m_nCurSel - 1);
}

void CIntelliList::LineDown() {
  if (GetItemCount() == 0) return;
  SelectItem(m_nCurSel < 0 ? 0 : (m_nCurSel + 1 < GetItemCount() ? m_nCurSel + 1 : m_nCurSel));
}

void CIntelliList::PageUp() {
  if (GetItemCount() == 0) return;
  const int perPage = GetCountPerPage();
  int target = m_nTopIndex;
  if (m_nCurSel >= 0 && m_nCurSel <= m_nTopIndex) target = m_nCurSel - (perPage - 1);
  SelectItem(target < 0 ? 0 : target);
}

void CIntelliList::PageDown() {
  const int count = GetItemCount();
  if (count == 0) return;
  const int perPage = GetCountPerPage();
  int target = m_nTopIndex + perPage - 1;
  if (m_nCurSel >= target) target = m_nCurSel + perPage - 1;
  SelectItem(target >= count ? count - 1 : target);
}

void CIntelliList::SelectFirst() {
  if (GetItemCount() > 0) SelectItem(0);
}

void CIntelliList::SelectLast() {
  if (GetItemCount() > 0) SelectItem(GetItemCount() - 1);
}

int CIntelliList::RowAt(CPoint point) const {
  if (point.y < 0) return -1;
  const int row = m_nTopIndex + point.y / GetRowHeight();
  return row < GetItemCount() ? row : -1;
}

// ---------------------------------------------------------------------------
// Timer, keys and mouse
// ---------------------------------------------------------------------------

void CIntelliList::RestartIdleTimer() {
  KillTimer(kIdleTimer);
  SetTimer(kIdleTimer, kIdleDelay);
}

void CIntelliList::StopIdleTimer() { KillTimer(kIdleTimer); }

void CIntelliList::Close() {
  StopIdleTimer();
  if (m_pEditor) {
    m_pEditor->HideList();
  }
  if (IsWindowVisible()) ShowWindow(SW_HIDE);
}

void CIntelliList::Pick() {
  if (m_pEditor) {
    m_pEditor->InsertListPick();
  } else {
    Close();
  }
}

BOOL CIntelliList::PreTranslateMessage(MSG* pMsg) {
  if (!pMsg || pMsg->message != WM_KEYDOWN) return FALSE;
  switch (static_cast<UINT>(pMsg->wParam)) {
    case VK_RETURN:
      Pick();
      return TRUE;
    case VK_ESCAPE:
      Close();
      return TRUE;
    case VK_HOME:
      SelectFirst();
      return TRUE;
    case VK_END:
      SelectLast();
      return TRUE;
    case VK_UP:
      LineUp();
      return TRUE;
    case VK_DOWN:
      LineDown();
      return TRUE;
    default:
      return FALSE;
  }
}

void CIntelliList::OnTimer(UINT_PTR nIDEvent) {
  if (nIDEvent == kIdleTimer) {
    Close();
    return;
  }
  CDialog::OnTimer(nIDEvent);
}

void CIntelliList::OnLButtonDown(UINT nFlags, CPoint point) {
  (void)nFlags;
  const int row = RowAt(point);
  if (row >= 0) SelectItem(row);
  RestartIdleTimer();
}

void CIntelliList::OnLButtonDblClk(UINT nFlags, CPoint point) {
  (void)nFlags;
  const int row = RowAt(point);
  if (row < 0) return;
  SelectItem(row);
  Pick();
}

BOOL CIntelliList::OnMouseWheel(UINT nFlags, short zDelta, CPoint pt) {
  (void)nFlags;
  (void)pt;
  // Three rows per wheel notch, kept inside the list.
  const int maxTop = GetItemCount() - GetCountPerPage();
  int top = m_nTopIndex - zDelta / 120 * 3;
  if (top > maxTop) top = maxTop;
  if (top < 0) top = 0;
  m_nTopIndex = top;
  RestartIdleTimer();
  Invalidate();
  return TRUE;
}

void CIntelliList::OnPaint() {
  CPaintDC dc(this);
  CRect client;
  GetClientRect(&client);
  dc.FillSolidRect(&client, GetSysColor(COLOR_WINDOW));
  dc.SetBkMode(TRANSPARENT);
  const int rowHeight = GetRowHeight();
  for (int row = m_nTopIndex, y = client.top; row < GetItemCount() && y < client.bottom; ++row, y += rowHeight) {
    const bool selected = row == m_nCurSel;
    if (selected) dc.FillSolidRect(client.left, y, client.Width(), rowHeight, GetSysColor(COLOR_HIGHLIGHT));
    dc.SetTextColor(GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
    dc.TextOut(client.left + 2, y, m_arrItems[row]);
  }
  CBrush frame(RGB(0, 0, 0));
  dc.FrameRect(&client, &frame);
}

void CIntelliList::OnDestroy() {
  StopIdleTimer();
  CDialog::OnDestroy();
}

// ---------------------------------------------------------------------------
// CScriptEdit: function list and definition look-ups
// ---------------------------------------------------------------------------

namespace {

// Longest name read from the function list, as the list's own buffer holds.
constexpr DWORD kNameBufferSize = 100;

void ReadFunctionSection(LPCTSTR section, const CString& path, CStringArray& names) {
  const int count = static_cast<int>(GetPrivateProfileIntW(section, L"Count", 0, path));
  wchar_t buffer[kNameBufferSize];
  for (int i = 0; i < count; ++i) {
    CString key;
    key.Format(L"Name%d", i);
    buffer[0] = L'\0';
    GetPrivateProfileStringW(section, key, L"", buffer, kNameBufferSize, path);
    // An empty name ends the section, whatever Count says.
    if (buffer[0] == L'\0') break;
    names.Add(CString(buffer));
  }
}

}  // namespace

void CScriptEdit::InitBasicFunctionList(CString root, CString userId, CString logicName, int nScriptMode) {
  m_arrBasicFunction.RemoveAll();
  m_basicIndex.Clear();
  m_strRoot = root;
  m_strUserID = userId;
  m_strLogicName = logicName;
  m_nScriptMode = nScriptMode;
  CString path;
  path.Format(L"%sNew_Function.dat", static_cast<LPCTSTR>(GetPath_Logic_Funct(root)));
  ReadFunctionSection(L"System", path, m_arrBasicFunction);
  ReadFunctionSection(L"User", path, m_arrBasicFunction);
  for (INT_PTR i = 0; i < m_arrBasicFunction.GetSize(); ++i) {
    const CString& name = m_arrBasicFunction[i];
    m_basicIndex.Add(name, name.GetLength(), 1);
    m_wndIntelliList.AddItem(name);
  }
  for (const wchar_t* const* word = chartcore::internal::kBuiltinFunctionWords; *word; ++word) {
    m_wndIntelliList.AddItem(CString(*word));
  }
  // The colours of user functions and of the mode's words change.
  Invalidate();
}

CString CScriptEdit::GetLookupPath(const CString& strName, LPCTSTR pszExtension) const {
  CString path;
  path.Format(L"%s%s%s", static_cast<LPCTSTR>(GetPath_Logic_Funct(m_strRoot)), static_cast<LPCTSTR>(strName),
              pszExtension);
  return path;
}

BOOL CScriptEdit::LoadFunctionRecord(const CString& strName, LPCTSTR pszExtension, CDBSubFUNCT& record) const {
  if (strName.IsEmpty()) return FALSE;
  try {
    return chartcore::LoadRecordFile(GetLookupPath(strName, pszExtension), record);
  } catch (const CException&) {
    // A damaged definition gives no text rather than stopping the editor.
    return FALSE;
  }
}

namespace {
// A basic function's call form is its name field, with "()" when it has none.
CString BasicCallForm(const CDBSubFUNCT& record) {
  CString text = record.m_strText1;
  if (!text.IsEmpty() && text.Find(L"()") < 0) text += L"()";
  return text;
}
}  // namespace

CString CScriptEdit::GetBasicComment(CString strName) {
  CDBSubFUNCT record;
  return LoadFunctionRecord(strName, L".bic", record) ? record.m_strText4 : CString();
}

CString CScriptEdit::GetBasicFormular(CString strName) {
  CDBSubFUNCT record;
  return LoadFunctionRecord(strName, L".bic", record) ? BasicCallForm(record) : CString();
}

CString CScriptEdit::GetCoreComment(CString strName) {
  CDBSubFUNCT record;
  return LoadFunctionRecord(strName, L".fct", record) ? record.m_strText4 : CString();
}

CString CScriptEdit::GetCoreFormular(CString strName) {
  CDBSubFUNCT record;
  return LoadFunctionRecord(strName, L".fct", record) ? record.m_strText3 : CString();
}

// ---------------------------------------------------------------------------
// CScriptEdit: word scanners
// ---------------------------------------------------------------------------

namespace {

bool IsNarrowWordChar(wchar_t ch) { return ch <= 256 && (chartcore::IsAlnumA(static_cast<int>(ch)) || ch == L'_'); }

// A character of a name being typed: Unicode letters and digits, and '_'.
bool IsNameChar(wchar_t ch) { return ch == L'_' || chartcore::IsAlnumW(ch); }

}  // namespace

CString CScriptEdit::GetNextWord(CString strLine, int& nPos) {
  if (nPos < 0 || nPos >= strLine.GetLength() || strLine[nPos] > 256) return CString();
  int end = nPos;
  while (end < strLine.GetLength() && IsNarrowWordChar(strLine[end])) ++end;
  if (end == nPos) return strLine;
  const CString word = strLine.Mid(nPos, end - nPos);
  nPos = end;
  return word;
}

CString CScriptEdit::GetPrevWord(CString strLine, int& nPos) {
  if (nPos < 1) return CString();
  if (nPos > strLine.GetLength()) nPos = strLine.GetLength();
  while (nPos > 0 && chartcore::IsSpaceW(strLine[nPos - 1])) --nPos;
  if (nPos == 0 || strLine[nPos - 1] > 256) return CString();
  int start = nPos;
  while (start > 0) {
    const wchar_t ch = strLine[start - 1];
    if (!IsNarrowWordChar(ch) && ch != L'.' && ch != L'(' && ch != L')' && ch != L' ') break;
    --start;
  }
  const CString word = strLine.Mid(start, nPos - start);
  nPos = start;
  return word;
}

CString CScriptEdit::GetPrevWord1(CString strLine, int& nPos) {
  if (nPos < 1 || nPos > strLine.GetLength()) return CString();
  int start = nPos;
  while (start > 0 && IsNameChar(strLine[start - 1])) --start;
  const CString word = strLine.Mid(start, nPos - start);
  nPos = start;
  return word;
}

CString CScriptEdit::GetPrevWord2(CString strLine, int& nPos) {
  if (nPos < 1 || nPos > strLine.GetLength()) return CString();
  int p = nPos;
  while (p > 0 && chartcore::IsSpaceW(strLine[p - 1])) --p;
  if (p == 0 || strLine[p - 1] != L'(') return CString();
  --p;
  while (p > 0 && chartcore::IsSpaceW(strLine[p - 1])) --p;
  const CString name = GetPrevWord1(strLine, p);
  if (!name.IsEmpty()) nPos = p;
  return name;
}

// ---------------------------------------------------------------------------
// CScriptEdit: list and tip
// ---------------------------------------------------------------------------

namespace {

// Index of the innermost '(' before end that no ')' closes, or -1.
int FindOpenCall(const CString& line, int end) {
  int depth = 0;
  for (int i = end - 1; i >= 0; --i) {
    if (line[i] == L')') {
      ++depth;
    } else if (line[i] == L'(') {
      if (depth == 0) return i;
      --depth;
    }
  }
  return -1;
}

// Commas at the call's own level between from and end.
int CountTopLevelCommas(const CString& line, int from, int end) {
  int depth = 0;
  int commas = 0;
  for (int i = from; i < end; ++i) {
    if (line[i] == L'(') {
      ++depth;
    } else if (line[i] == L')') {
      if (depth > 0) --depth;
    } else if (line[i] == L',' && depth == 0) {
      ++commas;
    }
  }
  return commas;
}

}  // namespace

void CScriptEdit::HideList() {
  if (!m_bListShown) return;
  m_bListShown = FALSE;
  m_wndIntelliList.StopIdleTimer();
  m_wndIntelliList.ShowWindow(SW_HIDE);
}

void CScriptEdit::HideTip() {
  if (!m_bTipShown) return;
  m_bTipShown = FALSE;
  m_wndIntelliTip.Hide();
}

void CScriptEdit::PlaceTip(CPoint ptClient) {
  m_wndIntelliTip.SetCursorPoint(ptClient);
  // SetCursorPoint lays out the stored text, which is the function's name
  // once shown: lay the call form out again and keep the name.
  const int current = m_wndIntelliTip.GetCurParam();
  // The layout puts the display lines in the tip's parameter array, whatever
  // it was given.
  CStringArray lines;
  m_wndIntelliTip.SetFunction(m_strTipText, lines);
  m_wndIntelliTip.SetFunctionName(m_strTipName);
  m_wndIntelliTip.SetCurParam(current);
}

void CScriptEdit::UpdateIntelliToolsPosition() {
  if (!m_bListShown && !m_bTipShown) return;
  CPoint below = TextToClient(GetCursorPos());
  below.y += GetLineHeight();
  if (m_bTipShown) PlaceTip(below);
  if (!m_bListShown) return;
  CPoint screen = below;
  ClientToScreen(&screen);
  if (m_bTipShown && m_wndIntelliTip.IsWindowVisible()) {
    CRect tip;
    m_wndIntelliTip.GetWindowRect(&tip);
    screen.y = tip.bottom;
  }
  m_wndIntelliList.SetWindowPos(nullptr, screen.x, screen.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CScriptEdit::RefreshListForWord() {
  const CPoint cursor = GetCursorPos();
  int start = cursor.x;
  const CString word = GetPrevWord1(GetLineText(cursor.y), start);
  const int index = word.IsEmpty() || chartcore::IsDigitW(word[0]) ? -1 : m_wndIntelliList.FindPrefix(word);
  if (index < 0) {
    HideList();
    return;
  }
  m_wndIntelliList.SelectItem(index);
  if (!m_bListShown) {
    m_bListShown = TRUE;
    UpdateIntelliToolsPosition();
    m_wndIntelliList.ShowWindow(SW_SHOWNA);
  }
  m_wndIntelliList.RestartIdleTimer();
}

void CScriptEdit::ShowTipForCall() {
  const CPoint cursor = GetCursorPos();
  int start = cursor.x;
  const CString name = GetPrevWord2(GetLineText(cursor.y), start);
  if (name.IsEmpty()) return;
  // A core definition with a formula first, else the basic one: each file
  // read once for both texts.
  CDBSubFUNCT record;
  CString formula, comment;
  if (LoadFunctionRecord(name, L".fct", record) && !record.m_strText3.IsEmpty()) {
    formula = record.m_strText3;
    comment = record.m_strText4;
  } else if (LoadFunctionRecord(name, L".bic", record)) {
    formula = BasicCallForm(record);
    comment = record.m_strText4;
  }
  if (formula.IsEmpty() && comment.IsEmpty()) return;  // not a function with a definition
  if (formula.IsEmpty()) formula = name + L"()";
  m_strTipText = formula;
  if (!comment.IsEmpty()) m_strTipText += L"\n" + comment;
  m_strTipName = name;
  m_bTipShown = TRUE;
  m_wndIntelliTip.SetCurParam(0);
  UpdateIntelliToolsPosition();
  m_wndIntelliTip.Show();
}

void CScriptEdit::UpdateTipParam() {
  const CPoint cursor = GetCursorPos();
  const CString line = GetLineText(cursor.y);
  // The tip belongs to the nearest open call of its function; calls nested
  // inside it (say "MA(C, sum(V" ) do not close it.
  for (int end = cursor.x;;) {
    const int open = FindOpenCall(line, end);
    if (open < 0) break;
    int nameStart = open + 1;
    if (GetPrevWord2(line, nameStart) == m_strTipName) {
      const int current = CountTopLevelCommas(line, open + 1, cursor.x);
      if (current != m_wndIntelliTip.GetCurParam()) m_wndIntelliTip.SetCurParam(current);
      return;
    }
    end = open;
  }
  HideTip();
}

CString CScriptEdit::GetPickInsertText(const CString& strItem) {
  CString text = GetCoreFormular(strItem);
  if (text.IsEmpty()) text = GetBasicFormular(strItem);
  if (text.IsEmpty() && chartcore::internal::IsExactTableWord(chartcore::internal::kBuiltinFunctionWords, strItem)) {
    text = strItem;
  }
  return text;
}

void CScriptEdit::InsertListPick() {
  const CString item = m_wndIntelliList.GetSelectedText();
  if (!GetPickInsertText(item).IsEmpty()) {
    // The word typed so far is replaced too: start the pick at its beginning.
    const CPoint cursor = GetCursorPos();
    int start = cursor.x;
    const CString typed = GetPrevWord1(GetLineText(cursor.y), start);
    if (!typed.IsEmpty() && item.GetLength() >= typed.GetLength() &&
        item.Left(typed.GetLength()).CompareNoCase(typed) == 0) {
      // Selected from its start: the pick then takes the rest of an ASCII
      // word as well, and the typed part of any other word.
      SetCursorPos(CPoint(start, cursor.y));
      SetSelection(CPoint(start, cursor.y), cursor);
    }
  }
  NMHDR hdr;
  hdr.hwndFrom = m_wndIntelliList.GetSafeHwnd();
  hdr.idFrom = CIntelliList::IDC_LIST;
  hdr.code = static_cast<UINT>(-3);  // NM_DBLCLK
  LRESULT result = 0;
  OnDblclkList(&hdr, &result);
}

void CScriptEdit::OnDblclkList(NMHDR* pNMHDR, LRESULT* pResult) {
  (void)pNMHDR;
  const CString text = GetPickInsertText(m_wndIntelliList.GetSelectedText());
  HideList();
  if (!text.IsEmpty()) {
    const CPoint cursor = GetCursorPos();
    int end = cursor.x;
    GetNextWord(GetLineText(cursor.y), end);
    if (end != cursor.x) SetSelection(cursor, CPoint(end, cursor.y));
    ReplaceSelText(text);
  }
  if (pResult) *pResult = 0;
}

// ---------------------------------------------------------------------------
// CScriptEdit: notifications
// ---------------------------------------------------------------------------

void CScriptEdit::OnCaretEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  (void)pNMHDR;
  UpdateIntelliToolsPosition();
  if (pResult) *pResult = 0;
}

void CScriptEdit::OnScrollEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  (void)pNMHDR;
  UpdateIntelliToolsPosition();
  if (pResult) *pResult = 0;
}

void CScriptEdit::OnChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  (void)pNMHDR;
  if (m_bListShown) RefreshListForWord();
  if (m_bTipShown) UpdateTipParam();
  if (pResult) *pResult = 0;
}

void CScriptEdit::OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  (void)pNMHDR;
  if (m_bListShown) RefreshListForWord();
  UpdateIntelliToolsPosition();
  if (pResult) *pResult = 0;
}

void CScriptEdit::OnCharEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  const UINT ch = pNMHDR ? reinterpret_cast<NMEDITCLR*>(pNMHDR)->nChar : 0;
  if (pResult) *pResult = 0;
  if (ch == L'(') {
    HideList();
    ShowTipForCall();
  } else if (ch == L',' || ch == L')') {
    HideList();
    if (m_bTipShown) UpdateTipParam();
  } else if (IsNameChar(static_cast<wchar_t>(ch))) {
    RefreshListForWord();
  } else {
    HideList();
  }
}

void CScriptEdit::OnKeyDownEditClr(NMHDR* pNMHDR, LRESULT* pResult) {
  const UINT key = pNMHDR ? reinterpret_cast<NMEDITCLR*>(pNMHDR)->nChar : 0;
  if (pResult) *pResult = 1;
  if (m_bListShown) {
    switch (key) {
      case VK_PRIOR:
        m_wndIntelliList.RestartIdleTimer();
        m_wndIntelliList.PageUp();
        return;
      case VK_NEXT:
        m_wndIntelliList.RestartIdleTimer();
        m_wndIntelliList.PageDown();
        return;
      case VK_UP:
        m_wndIntelliList.RestartIdleTimer();
        m_wndIntelliList.LineUp();
        return;
      case VK_DOWN:
        m_wndIntelliList.RestartIdleTimer();
        m_wndIntelliList.LineDown();
        return;
      case VK_ESCAPE:
        HideList();
        HideTip();
        return;
      default:
        return;
    }
  }
  if (!m_bTipShown) return;
  if (key == VK_ESCAPE || key == VK_HOME || key == VK_UP || key == VK_DOWN) {
    HideTip();
    return;
  }
  const CPoint cursor = GetCursorPos();
  if (GetLineText(cursor.y).Left(cursor.x).Find(m_wndIntelliTip.GetFunction()) < 0) HideTip();
}

// ---------------------------------------------------------------------------
// CScriptEdit: messages
// ---------------------------------------------------------------------------

BOOL CScriptEdit::PreTranslateMessage(MSG* pMsg) {
  if (!pMsg) return FALSE;
  const UINT key = static_cast<UINT>(pMsg->wParam);
  const UINT repeat = LOWORD(pMsg->lParam);
  const UINT flags = HIWORD(pMsg->lParam);
  if (pMsg->message == WM_KEYDOWN) {
    if (m_bListShown) {
      m_wndIntelliList.RestartIdleTimer();
      if (key == VK_RETURN || key == VK_ESCAPE || key == VK_END || key == VK_HOME || key == VK_UP ||
          key == VK_DOWN) {
        m_wndIntelliList.PreTranslateMessage(pMsg);
        return TRUE;
      }
    }
    switch (key) {
      case VK_TAB:
      case VK_RETURN:
      case VK_ESCAPE:
      case VK_SPACE:
      case VK_PRIOR:
      case VK_NEXT:
      case VK_END:
      case VK_HOME:
      case VK_LEFT:
      case VK_UP:
      case VK_RIGHT:
      case VK_DOWN:
      case VK_DELETE:
        OnChar(key, repeat, flags | CHARFLAG_VIRTKEY);
        return TRUE;
      case VK_SHIFT:
        OnKeyDown(key, repeat, flags);
        return TRUE;
      default:
        break;
    }
  } else if (pMsg->message == WM_KEYUP && key == VK_SHIFT) {
    OnKeyUp(key, repeat, flags);
    return TRUE;
  } else if (pMsg->message == WM_CHAR) {
    OnChar(key, repeat, flags);
    return TRUE;
  }
  return CCrystalEditWnd::PreTranslateMessage(pMsg);
}

void CScriptEdit::OnChar(UINT nChar, UINT nRepCnt, UINT nFlags) {
  if ((nFlags & CHARFLAG_VIRTKEY) && m_bListShown &&
      (nChar == VK_PRIOR || nChar == VK_NEXT || nChar == VK_UP || nChar == VK_DOWN)) {
    SendEditNotify(ECN_KEYDOWN, nChar, nRepCnt, nFlags);
    return;
  }
  CCrystalEditWnd::OnChar(nChar, nRepCnt, nFlags);
}

void CScriptEdit::OnKillFocus(CWnd* pNewWnd) {
  const bool toTools = pNewWnd && (pNewWnd == &m_wndIntelliList || pNewWnd == &m_wndIntelliTip ||
                                   pNewWnd->GetParent() == &m_wndIntelliList);
  if (!toTools) {
    HideList();
    HideTip();
  }
  CCrystalEditWnd::OnKillFocus(pNewWnd);
}

void CScriptEdit::OnLButtonDown(UINT nFlags, CPoint point) {
  HideList();
  HideTip();
  CCrystalEditWnd::OnLButtonDown(nFlags, point);
}
