// The text buffer: lines, undo records and their groups, text files.
#include "chartcore/script_editor/text_buffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/text_codec.h"
#include "chartcore/script_editor/text_view.h"

namespace {

// Calls fn(start, length) for each line of text split at "\r\n", "\n" and
// "\r" (at least one line). The style of the first line end found is stored
// in *firstStyle when given and still automatic.
template <typename Fn>
void ForEachLine(const wchar_t* text, size_t length, int* firstStyle, Fn fn) {
  size_t start = 0;
  for (size_t i = 0; i < length; ++i) {
    wchar_t ch = text[i];
    if (ch != L'\r' && ch != L'\n') continue;
    fn(text + start, i - start);
    int style = CRLF_STYLE_UNIX;
    if (ch == L'\r') {
      if (i + 1 < length && text[i + 1] == L'\n') {
        style = CRLF_STYLE_DOS;
        ++i;
      } else {
        style = CRLF_STYLE_MAC;
      }
    }
    if (firstStyle != nullptr && *firstStyle == CRLF_STYLE_AUTOMATIC) *firstStyle = style;
    start = i + 1;
  }
  fn(text + start, length - start);
}

size_t CountLines(const wchar_t* text, size_t length) {
  size_t count = 0;
  ForEachLine(text, length, nullptr, [&](const wchar_t*, size_t) { ++count; });
  return count;
}

std::vector<std::wstring> SplitLines(const wchar_t* text, size_t length) {
  std::vector<std::wstring> pieces;
  ForEachLine(text, length, nullptr, [&](const wchar_t* p, size_t n) { pieces.emplace_back(p, n); });
  return pieces;
}

const wchar_t* ActionName(int nAction) {
  switch (nAction) {
    case CE_ACTION_PASTE: return L"Paste";
    case CE_ACTION_DELSEL: return L"Delete Selection";
    case CE_ACTION_CUT: return L"Cut";
    case CE_ACTION_TYPING: return L"Typing";
    case CE_ACTION_BACKSPACE: return L"Backspace";
    case CE_ACTION_INDENT: return L"Indent";
    case CE_ACTION_DRAGDROP: return L"Drag and Drop";
    case CE_ACTION_REPLACE: return L"Replace";
    case CE_ACTION_DELETE: return L"Delete";
    case CE_ACTION_AUTOINDENT: return L"Auto Indent";
    case CE_ACTION_COMPOSITION: return L"Input Method";
    default: return L"Edit";
  }
}

bool Cp949Holds(const std::wstring& text) {
  std::string bytes = chartcore::WideToCp949(text.data(), text.size());
  return chartcore::Cp949ToWide(bytes.data(), bytes.size()) == text;
}

}  // namespace

// ---------------------------------------------------------------------------
// Position-update contexts
// ---------------------------------------------------------------------------
CUpdateContext::~CUpdateContext() = default;

void CInsertContext::RecalcPoint(CPoint& pt) {
  if (pt.y < m_ptStart.y) return;
  if (pt.y > m_ptStart.y) {
    pt.y += m_ptEnd.y - m_ptStart.y;
    return;
  }
  // On the start line: only positions strictly right of the start move.
  if (pt.x <= m_ptStart.x) return;
  pt.y = m_ptEnd.y;
  pt.x += m_ptEnd.x - m_ptStart.x;
}

void CDeleteContext::RecalcPoint(CPoint& pt) {
  if (pt.y < m_ptStart.y || (pt.y == m_ptStart.y && pt.x <= m_ptStart.x)) return;
  if (pt.y > m_ptEnd.y) {
    pt.y -= m_ptEnd.y - m_ptStart.y;
    return;
  }
  if (pt.y == m_ptEnd.y && pt.x >= m_ptEnd.x) {
    pt.y = m_ptStart.y;
    pt.x += m_ptStart.x - m_ptEnd.x;
    return;
  }
  pt = m_ptStart;
}

// ---------------------------------------------------------------------------
// Lifecycle
// ---------------------------------------------------------------------------
CCrystalTextBuffer::CCrystalTextBuffer() = default;

CCrystalTextBuffer::~CCrystalTextBuffer() {
  // Views outlive nothing of ours: tell them the buffer is gone.
  for (CCrystalTextWnd* view : std::vector<CCrystalTextWnd*>(m_lpViews))
    if (view->GetTextBuffer() == this) view->DetachFromBuffer();
}

void CCrystalTextBuffer::ResetDocument(std::vector<SLineInfo>&& lines) {
  m_aLines.assign(std::move(lines));
  if (m_aLines.empty()) m_aLines.push_back(SLineInfo());
  m_aUndoBuf.clear();
  m_bInit = TRUE;
  m_bReadOnly = FALSE;
  m_bModified = FALSE;
  m_nUndoPosition = 0;
  m_nSyncPosition = 0;
  m_bUndoGroup = FALSE;
  m_bUndoBeginGroup = FALSE;
  UpdateViews(nullptr, nullptr, UPDATE_RESET, -1);
}

BOOL CCrystalTextBuffer::InitNew(int nCrlfStyle) {
  FreeAll();
  m_nCRLFMode = nCrlfStyle;
  m_nUndoBufSize = DEFAULT_UNDO_LIMIT;
  ResetDocument(std::vector<SLineInfo>());
  return TRUE;
}

void CCrystalTextBuffer::FreeAll() {
  m_aLines.clear();
  std::vector<SUndoRecord>().swap(m_aUndoBuf);
  m_nUndoPosition = 0;
  m_nSyncPosition = 0;
  m_bUndoGroup = FALSE;
  m_bUndoBeginGroup = FALSE;
  m_bModified = FALSE;
  m_bInit = FALSE;
}

void CCrystalTextBuffer::SetText(LPCTSTR text) {
  std::vector<SLineInfo> lines;
  if (text != nullptr) lines = MakeLines(text, std::wcslen(text), nullptr);
  int mode = m_nCRLFMode;
  int limit = m_nUndoBufSize;
  ResetDocument(std::move(lines));
  m_nCRLFMode = mode;
  m_nUndoBufSize = limit;
}

CString CCrystalTextBuffer::GetAllText(LPCTSTR eol) const {
  CString text;
  if (m_aLines.empty()) return text;
  GetText(0, 0, GetLineCount() - 1, GetLineLength(GetLineCount() - 1), text,
          eol != nullptr ? eol : LineEnd(m_nCRLFMode));
  return text;
}

// ---------------------------------------------------------------------------
// Lines
// ---------------------------------------------------------------------------
int CCrystalTextBuffer::GetLineLength(int nLine) const {
  if (nLine < 0 || nLine >= GetLineCount()) return 0;
  return static_cast<int>(m_aLines[static_cast<size_t>(nLine)].m_text.size());
}

LPCTSTR CCrystalTextBuffer::GetLineChars(int nLine) const {
  if (nLine < 0 || nLine >= GetLineCount()) return nullptr;
  return m_aLines[static_cast<size_t>(nLine)].m_text.c_str();
}

CString CCrystalTextBuffer::GetLineText(int nLine) const {
  if (nLine < 0 || nLine >= GetLineCount()) return CString();
  return CString(m_aLines[static_cast<size_t>(nLine)].m_text);
}

void CCrystalTextBuffer::GetText(int nStartLine, int nStartChar, int nEndLine, int nEndChar, CString& text,
                                 LPCTSTR eol) const {
  text.Empty();
  if (m_aLines.empty()) return;
  const int count = GetLineCount();
  auto clampLine = [&](int l) { return std::max(0, std::min(l, count - 1)); };
  nStartLine = clampLine(nStartLine);
  nEndLine = clampLine(nEndLine);
  nStartChar = std::max(0, std::min(nStartChar, GetLineLength(nStartLine)));
  nEndChar = std::max(0, std::min(nEndChar, GetLineLength(nEndLine)));
  if (nStartLine > nEndLine || (nStartLine == nEndLine && nStartChar >= nEndChar)) return;
  if (eol == nullptr) eol = L"\r\n";
  std::wstring& out = text.str();
  if (nStartLine == nEndLine) {
    out.assign(m_aLines[static_cast<size_t>(nStartLine)].m_text, static_cast<size_t>(nStartChar),
               static_cast<size_t>(nEndChar - nStartChar));
    return;
  }
  out.append(m_aLines[static_cast<size_t>(nStartLine)].m_text, static_cast<size_t>(nStartChar), std::wstring::npos);
  for (int l = nStartLine + 1; l < nEndLine; ++l) {
    out += eol;
    out += m_aLines[static_cast<size_t>(l)].m_text;
  }
  out += eol;
  out.append(m_aLines[static_cast<size_t>(nEndLine)].m_text, 0, static_cast<size_t>(nEndChar));
}

// ---------------------------------------------------------------------------
// Line flags
// ---------------------------------------------------------------------------
DWORD CCrystalTextBuffer::GetLineFlags(int nLine) const {
  if (nLine < 0 || nLine >= GetLineCount()) return 0;
  return m_aLines[static_cast<size_t>(nLine)].m_dwFlags;
}

void CCrystalTextBuffer::SetLineFlag(int nLine, DWORD dwFlag, BOOL bSet, BOOL bRemoveFromPreviousLine) {
  if (dwFlag == 0) return;
  const int count = GetLineCount();
  auto change = [&](int l, bool on) {
    DWORD& flags = m_aLines[static_cast<size_t>(l)].m_dwFlags;
    DWORD next = on ? (flags | dwFlag) : (flags & ~dwFlag);
    if (next == flags) return;
    flags = next;
    UpdateViews(nullptr, nullptr, UPDATE_SINGLELINE | UPDATE_FLAGSONLY, l);
  };
  if (nLine == -1) {
    if (bSet) return;
    for (int l = 0; l < count; ++l) change(l, false);
    return;
  }
  if (nLine < 0 || nLine >= count) return;
  if (bSet && bRemoveFromPreviousLine) {
    for (int l = 0; l < count; ++l)
      if (l != nLine) change(l, false);
  }
  change(nLine, bSet != FALSE);
}

int CCrystalTextBuffer::FindLineWithFlag(DWORD dwFlag) const {
  for (int l = 0; l < GetLineCount(); ++l)
    if ((m_aLines[static_cast<size_t>(l)].m_dwFlags & dwFlag) != 0) return l;
  return -1;
}

int CCrystalTextBuffer::GetLineWithFlag(DWORD dwFlag) const { return dwFlag == 0 ? -1 : FindLineWithFlag(dwFlag); }

int CCrystalTextBuffer::FindNextBookmarkLine(int nCurrentLine) const {
  const int count = GetLineCount();
  if (count == 0) return -1;
  if (nCurrentLine < 0 || nCurrentLine >= count) nCurrentLine = count - 1;
  for (int step = 1; step <= count; ++step) {
    int l = (nCurrentLine + step) % count;
    if ((m_aLines[static_cast<size_t>(l)].m_dwFlags & LF_BOOKMARKS) != 0) return l;
  }
  return -1;
}

int CCrystalTextBuffer::FindPrevBookmarkLine(int nCurrentLine) const {
  const int count = GetLineCount();
  if (count == 0) return -1;
  if (nCurrentLine < 0 || nCurrentLine >= count) nCurrentLine = 0;
  for (int step = 1; step <= count; ++step) {
    int l = ((nCurrentLine - step) % count + count) % count;
    if ((m_aLines[static_cast<size_t>(l)].m_dwFlags & LF_BOOKMARKS) != 0) return l;
  }
  return -1;
}

// ---------------------------------------------------------------------------
// Editing
// ---------------------------------------------------------------------------
std::vector<CCrystalTextBuffer::SLineInfo> CCrystalTextBuffer::MakeLines(const wchar_t* text, size_t length,
                                                                         int* firstStyle) {
  // Counted first, so a million-line file fills one allocation.
  std::vector<SLineInfo> lines;
  lines.reserve(CountLines(text, length));
  ForEachLine(text, length, firstStyle, [&](const wchar_t* p, size_t n) {
    lines.emplace_back();
    lines.back().m_text.assign(p, n);
  });
  return lines;
}

bool CCrystalTextBuffer::IsValidPos(int nLine, int nChar) const {
  return nLine >= 0 && nLine < GetLineCount() && nChar >= 0 && nChar <= GetLineLength(nLine);
}

BOOL CCrystalTextBuffer::InternalInsertText(CCrystalTextWnd* pSource, int nLine, int nPos, const wchar_t* text,
                                            size_t length, int& nEndLine, int& nEndChar) {
  std::vector<std::wstring> pieces = SplitLines(text, length);
  std::wstring& first = m_aLines[static_cast<size_t>(nLine)].m_text;
  if (pieces.size() == 1) {
    first.insert(static_cast<size_t>(nPos), pieces[0]);
    nEndLine = nLine;
    nEndChar = nPos + static_cast<int>(pieces[0].size());
  } else {
    std::wstring tail = first.substr(static_cast<size_t>(nPos));
    first.erase(static_cast<size_t>(nPos));
    first += pieces[0];
    const size_t added = pieces.size() - 1;
    std::vector<SLineInfo> fresh(added);
    for (size_t i = 0; i < added; ++i) fresh[i].m_text = std::move(pieces[i + 1]);
    nEndLine = nLine + static_cast<int>(added);
    nEndChar = static_cast<int>(fresh.back().m_text.size());
    fresh.back().m_text += tail;
    // The new line records go in after the edited line; only the records of
    // one block move, however long the file.
    m_aLines.insert(static_cast<size_t>(nLine) + 1, std::move(fresh));
  }
  CInsertContext context(CPoint(nPos, nLine), CPoint(nEndChar, nEndLine));
  DWORD flags = nEndLine == nLine ? (UPDATE_SINGLELINE | UPDATE_HORZRANGE) : (UPDATE_HORZRANGE | UPDATE_VERTRANGE);
  UpdateViews(pSource, &context, flags, nLine);
  return TRUE;
}

BOOL CCrystalTextBuffer::InternalDeleteText(CCrystalTextWnd* pSource, int nStartLine, int nStartChar, int nEndLine,
                                            int nEndChar, std::wstring* deleted) {
  std::wstring& first = m_aLines[static_cast<size_t>(nStartLine)].m_text;
  if (nStartLine == nEndLine) {
    if (deleted != nullptr)
      deleted->assign(first, static_cast<size_t>(nStartChar), static_cast<size_t>(nEndChar - nStartChar));
    first.erase(static_cast<size_t>(nStartChar), static_cast<size_t>(nEndChar - nStartChar));
  } else {
    if (deleted != nullptr) {
      deleted->assign(first, static_cast<size_t>(nStartChar), std::wstring::npos);
      for (int l = nStartLine + 1; l < nEndLine; ++l) {
        *deleted += L'\n';
        *deleted += m_aLines[static_cast<size_t>(l)].m_text;
      }
      *deleted += L'\n';
      deleted->append(m_aLines[static_cast<size_t>(nEndLine)].m_text, 0, static_cast<size_t>(nEndChar));
    }
    std::wstring rest = m_aLines[static_cast<size_t>(nEndLine)].m_text.substr(static_cast<size_t>(nEndChar));
    first.erase(static_cast<size_t>(nStartChar));
    first += rest;
    m_aLines.erase(static_cast<size_t>(nStartLine) + 1, static_cast<size_t>(nEndLine) + 1);
  }
  CDeleteContext context(CPoint(nStartChar, nStartLine), CPoint(nEndChar, nEndLine));
  DWORD flags =
      nStartLine == nEndLine ? (UPDATE_SINGLELINE | UPDATE_HORZRANGE) : (UPDATE_HORZRANGE | UPDATE_VERTRANGE);
  UpdateViews(pSource, &context, flags, nStartLine);
  return TRUE;
}

BOOL CCrystalTextBuffer::InsertText(CCrystalTextWnd* pSource, int nLine, int nPos, LPCTSTR pszText, int& nEndLine,
                                    int& nEndChar, int nAction) {
  nEndLine = nLine;
  nEndChar = nPos;
  if (!m_bInit || m_bReadOnly || pszText == nullptr || !IsValidPos(nLine, nPos)) return FALSE;
  size_t length = std::wcslen(pszText);
  if (length == 0) return TRUE;
  InternalInsertText(pSource, nLine, nPos, pszText, length, nEndLine, nEndChar);
  AddUndoRecord(TRUE, CPoint(nPos, nLine), CPoint(nEndChar, nEndLine), std::wstring(pszText, length), nAction);
  m_bModified = TRUE;
  return TRUE;
}

BOOL CCrystalTextBuffer::DeleteText(CCrystalTextWnd* pSource, int nStartLine, int nStartChar, int nEndLine,
                                    int nEndChar, int nAction) {
  if (!m_bInit || m_bReadOnly || !IsValidPos(nStartLine, nStartChar) || !IsValidPos(nEndLine, nEndChar))
    return FALSE;
  if (nStartLine > nEndLine || (nStartLine == nEndLine && nStartChar > nEndChar)) return FALSE;
  if (nStartLine == nEndLine && nStartChar == nEndChar) return TRUE;
  std::wstring deleted;
  InternalDeleteText(pSource, nStartLine, nStartChar, nEndLine, nEndChar, &deleted);
  AddUndoRecord(FALSE, CPoint(nStartChar, nStartLine), CPoint(nEndChar, nEndLine), deleted, nAction);
  m_bModified = TRUE;
  return TRUE;
}

// ---------------------------------------------------------------------------
// Undo
// ---------------------------------------------------------------------------
void CCrystalTextBuffer::AddUndoRecord(BOOL bInsert, const CPoint& ptStartPos, const CPoint& ptEndPos,
                                       const std::wstring& text, int nAction) {
  // A new change makes the redo part unreachable, the saved state with it
  // when the save lay there.
  if (m_nUndoPosition < static_cast<int>(m_aUndoBuf.size())) {
    m_aUndoBuf.erase(m_aUndoBuf.begin() + m_nUndoPosition, m_aUndoBuf.end());
    if (m_nSyncPosition > m_nUndoPosition) m_nSyncPosition = -1;
  }
  if (static_cast<int>(m_aUndoBuf.size()) >= m_nUndoBufSize && !m_aUndoBuf.empty()) {
    // Drop the oldest group whole: the first record and all up to the next
    // group begin.
    size_t drop = 1;
    while (drop < m_aUndoBuf.size() && (m_aUndoBuf[drop].m_dwFlags & UNDO_BEGINGROUP) == 0) ++drop;
    m_aUndoBuf.erase(m_aUndoBuf.begin(), m_aUndoBuf.begin() + static_cast<std::ptrdiff_t>(drop));
    if (m_nSyncPosition >= 0) {
      m_nSyncPosition -= static_cast<int>(drop);
      if (m_nSyncPosition < 0) m_nSyncPosition = -1;
    }
  }
  SUndoRecord rec;
  rec.m_dwFlags = bInsert ? UNDO_INSERT : 0;
  if (m_bUndoBeginGroup) {
    m_bUndoBeginGroup = FALSE;
    rec.m_dwFlags |= UNDO_BEGINGROUP;
  }
  rec.m_ptStartPos = ptStartPos;
  rec.m_ptEndPos = ptEndPos;
  rec.m_text = text;
  rec.m_nAction = nAction;
  m_aUndoBuf.push_back(std::move(rec));
  m_nUndoPosition = static_cast<int>(m_aUndoBuf.size());
}

BOOL CCrystalTextBuffer::ApplyRecord(const SUndoRecord& rec, bool forward, CPoint& ptCursor) {
  // Forward re-does the record; backward takes it back.
  const bool insert = ((rec.m_dwFlags & UNDO_INSERT) != 0) == forward;
  if (insert) {
    if (!IsValidPos(rec.m_ptStartPos.y, rec.m_ptStartPos.x)) return FALSE;
    int endLine = 0, endChar = 0;
    InternalInsertText(nullptr, rec.m_ptStartPos.y, rec.m_ptStartPos.x, rec.m_text.data(), rec.m_text.size(),
                       endLine, endChar);
    ptCursor = CPoint(endChar, endLine);
  } else {
    if (!IsValidPos(rec.m_ptStartPos.y, rec.m_ptStartPos.x) || !IsValidPos(rec.m_ptEndPos.y, rec.m_ptEndPos.x))
      return FALSE;
    InternalDeleteText(nullptr, rec.m_ptStartPos.y, rec.m_ptStartPos.x, rec.m_ptEndPos.y, rec.m_ptEndPos.x,
                       nullptr);
    ptCursor = rec.m_ptStartPos;
  }
  return TRUE;
}

BOOL CCrystalTextBuffer::Undo(CPoint& ptCursorPos) {
  if (!CanUndo() || !m_bInit) return FALSE;
  for (;;) {
    --m_nUndoPosition;
    const SUndoRecord& rec = m_aUndoBuf[static_cast<size_t>(m_nUndoPosition)];
    CPoint pt;
    if (!ApplyRecord(rec, false, pt)) {
      // A record that no longer fits the text cannot be taken back; the
      // history beyond it is dropped rather than corrupting the text.
      m_aUndoBuf.erase(m_aUndoBuf.begin(), m_aUndoBuf.begin() + m_nUndoPosition + 1);
      m_nUndoPosition = 0;
      m_nSyncPosition = -1;
      break;
    }
    ptCursorPos = rec.m_ptStartPos;
    if ((rec.m_dwFlags & UNDO_BEGINGROUP) != 0 || m_nUndoPosition == 0) break;
  }
  m_bModified = m_nUndoPosition == m_nSyncPosition ? FALSE : TRUE;
  return TRUE;
}

BOOL CCrystalTextBuffer::Redo(CPoint& ptCursorPos) {
  if (!CanRedo() || !m_bInit) return FALSE;
  const int count = static_cast<int>(m_aUndoBuf.size());
  do {
    const SUndoRecord& rec = m_aUndoBuf[static_cast<size_t>(m_nUndoPosition)];
    CPoint pt;
    if (!ApplyRecord(rec, true, pt)) {
      m_aUndoBuf.erase(m_aUndoBuf.begin() + m_nUndoPosition, m_aUndoBuf.end());
      if (m_nSyncPosition > m_nUndoPosition) m_nSyncPosition = -1;
      break;
    }
    ptCursorPos = pt;
    ++m_nUndoPosition;
  } while (m_nUndoPosition < count &&
           (m_aUndoBuf[static_cast<size_t>(m_nUndoPosition)].m_dwFlags & UNDO_BEGINGROUP) == 0);
  m_bModified = m_nUndoPosition == m_nSyncPosition ? FALSE : TRUE;
  return TRUE;
}

void CCrystalTextBuffer::CleanUndoBuffer() {
  m_aUndoBuf.clear();
  m_nUndoPosition = 0;
  m_bUndoGroup = FALSE;
  m_nSyncPosition = m_bModified ? -1 : 0;
}

void CCrystalTextBuffer::BeginUndoGroup(BOOL bMergeWithPrevious) {
  m_bUndoGroup = TRUE;
  bool merge = false;
  if (bMergeWithPrevious && m_nUndoPosition > 0 && m_nUndoPosition == static_cast<int>(m_aUndoBuf.size()) &&
      m_nUndoPosition != m_nSyncPosition) {
    const SUndoRecord& last = m_aUndoBuf.back();
    merge = (last.m_dwFlags & UNDO_INSERT) != 0 && last.m_nAction == CE_ACTION_TYPING &&
            last.m_ptStartPos.y == last.m_ptEndPos.y;
  }
  m_bUndoBeginGroup = merge ? FALSE : TRUE;
}

void CCrystalTextBuffer::FlushUndoGroup(CCrystalTextWnd* pSource) {
  if (pSource != nullptr) {
    if (m_nUndoPosition > 0) {
      m_bUndoBeginGroup = TRUE;
      const SUndoRecord& last = m_aUndoBuf[static_cast<size_t>(m_nUndoPosition - 1)];
      pSource->OnUndoGroupFlushed((last.m_dwFlags & UNDO_INSERT) != 0 ? last.m_ptEndPos : last.m_ptStartPos);
    }
    pSource->SendChangeNotify();
  }
  m_bUndoGroup = FALSE;
}

BOOL CCrystalTextBuffer::GetUndoDescription(CString& desc, int nPos) const {
  if (nPos < 0) nPos = m_nUndoPosition;
  if (nPos <= 0 || nPos > static_cast<int>(m_aUndoBuf.size())) return FALSE;
  // The action of the group's first record names the whole group.
  int i = nPos - 1;
  while (i > 0 && (m_aUndoBuf[static_cast<size_t>(i)].m_dwFlags & UNDO_BEGINGROUP) == 0) --i;
  desc = ActionName(m_aUndoBuf[static_cast<size_t>(i)].m_nAction);
  return TRUE;
}

BOOL CCrystalTextBuffer::GetRedoDescription(CString& desc, int nPos) const {
  if (nPos < 0) nPos = m_nUndoPosition;
  if (nPos < 0 || nPos >= static_cast<int>(m_aUndoBuf.size())) return FALSE;
  desc = ActionName(m_aUndoBuf[static_cast<size_t>(nPos)].m_nAction);
  return TRUE;
}

const CCrystalTextBuffer::SUndoRecord* CCrystalTextBuffer::GetUndoRecord(int nIndex) const {
  if (nIndex < 0 || nIndex >= static_cast<int>(m_aUndoBuf.size())) return nullptr;
  return &m_aUndoBuf[static_cast<size_t>(nIndex)];
}

// ---------------------------------------------------------------------------
// State
// ---------------------------------------------------------------------------
void CCrystalTextBuffer::SetModified(BOOL bModified) {
  m_bModified = bModified ? TRUE : FALSE;
  if (!m_bModified) m_nSyncPosition = m_nUndoPosition;
}

void CCrystalTextBuffer::SetEncoding(int nEncoding) {
  if (nEncoding >= ENCODING_UTF8 && nEncoding <= ENCODING_CP949) m_nEncoding = nEncoding;
}

// ---------------------------------------------------------------------------
// Views
// ---------------------------------------------------------------------------
void CCrystalTextBuffer::AddView(CCrystalTextWnd* pView) {
  if (pView != nullptr && std::find(m_lpViews.begin(), m_lpViews.end(), pView) == m_lpViews.end())
    m_lpViews.push_back(pView);
}

void CCrystalTextBuffer::RemoveView(CCrystalTextWnd* pView) {
  m_lpViews.erase(std::remove(m_lpViews.begin(), m_lpViews.end(), pView), m_lpViews.end());
}

void CCrystalTextBuffer::UpdateViews(CCrystalTextWnd* pSource, CUpdateContext* pContext, DWORD dwUpdateFlags,
                                     int nLineIndex) {
  // A view may detach itself while being updated.
  for (CCrystalTextWnd* view : std::vector<CCrystalTextWnd*>(m_lpViews))
    if (std::find(m_lpViews.begin(), m_lpViews.end(), view) != m_lpViews.end())
      view->UpdateView(pSource, pContext, dwUpdateFlags, nLineIndex);
}

// ---------------------------------------------------------------------------
// Files
// ---------------------------------------------------------------------------
const wchar_t* CCrystalTextBuffer::LineEnd(int nCrlfStyle) const {
  switch (nCrlfStyle) {
    case CRLF_STYLE_UNIX: return L"\n";
    case CRLF_STYLE_MAC: return L"\r";
    default: return L"\r\n";
  }
}

BOOL CCrystalTextBuffer::LoadFromFile(LPCTSTR pszFileName, int nCrlfStyle) {
  if (pszFileName == nullptr || *pszFileName == L'\0') return FALSE;
  std::string bytes;
  try {
    CFile file;
    if (!file.Open(pszFileName, CFile::modeRead | CFile::typeBinary | CFile::shareDenyNone)) return FALSE;
    // Reserved up to the reported length (capped: it is only a hint), then
    // read in pieces until the end.
    bytes.reserve(static_cast<size_t>(std::min<ULONGLONG>(file.GetLength(), 1ull << 30)));
    char chunk[65536];
    for (;;) {
      UINT got = file.Read(chunk, sizeof(chunk));
      if (got == 0) break;
      bytes.append(chunk, got);
    }
    file.Close();
  } catch (const CException&) {
    return FALSE;
  }

  size_t bom = 0;
  UINT codePage = chartcore::DetectTextEncoding(bytes.data(), bytes.size(), bom);
  std::wstring text = chartcore::BytesToWide(bytes.data() + bom, bytes.size() - bom, codePage);
  std::string().swap(bytes);
  int encoding = ENCODING_CP949;
  if (codePage == chartcore::kCodePageUtf8)
    encoding = bom != 0 ? ENCODING_UTF8_BOM : ENCODING_UTF8;
  else if (codePage == chartcore::kCodePageUtf16LE)
    encoding = ENCODING_UTF16LE;

  int detected = CRLF_STYLE_AUTOMATIC;
  std::vector<SLineInfo> lines = MakeLines(text.data(), text.size(), &detected);
  std::wstring().swap(text);

  int limit = m_nUndoBufSize;
  ResetDocument(std::move(lines));
  m_nUndoBufSize = limit;
  m_nEncoding = encoding;
  if (nCrlfStyle == CRLF_STYLE_AUTOMATIC)
    m_nCRLFMode = detected == CRLF_STYLE_AUTOMATIC ? CRLF_STYLE_DOS : detected;
  else
    m_nCRLFMode = nCrlfStyle;
  return TRUE;
}

BOOL CCrystalTextBuffer::SaveToFile(LPCTSTR pszFileName, int nCrlfStyle, BOOL bClearModifiedFlag) {
  if (pszFileName == nullptr || *pszFileName == L'\0' || !m_bInit) return FALSE;
  if (nCrlfStyle == CRLF_STYLE_AUTOMATIC) nCrlfStyle = m_nCRLFMode;
  if (nCrlfStyle == CRLF_STYLE_AUTOMATIC) nCrlfStyle = CRLF_STYLE_DOS;
  CString all = GetAllText(LineEnd(nCrlfStyle));
  const std::wstring& text = all.str();

  int encoding = m_nEncoding;
  if (encoding == ENCODING_CP949 && !Cp949Holds(text)) encoding = ENCODING_UTF8_BOM;
  std::string bytes;
  switch (encoding) {
    case ENCODING_UTF8: bytes = chartcore::WideToUtf8(text); break;
    case ENCODING_UTF16LE:
      bytes = "\xFF\xFE";
      bytes += chartcore::WideToUtf16LE(text.data(), text.size());
      break;
    case ENCODING_CP949: bytes = chartcore::WideToCp949(text.data(), text.size()); break;
    default:
      bytes = "\xEF\xBB\xBF";
      bytes += chartcore::WideToUtf8(text);
      break;
  }
  all.Empty();

  BOOL ok = FALSE;
  try {
    ok = chartcore::WriteFileAtomic(pszFileName, [&](CFile& file) {
      // Written in pieces: CFile::Write takes a UINT count.
      size_t done = 0;
      while (done < bytes.size()) {
        size_t n = std::min<size_t>(bytes.size() - done, 1u << 24);
        file.Write(bytes.data() + done, static_cast<UINT>(n));
        done += n;
      }
    });
  } catch (const CException&) {
    ok = FALSE;
  }
  if (!ok) return FALSE;
  m_nEncoding = encoding;
  if (bClearModifiedFlag) {
    m_bModified = FALSE;
    m_nSyncPosition = m_nUndoPosition;
  }
  return TRUE;
}
