#include "chartcore/script_editor/script_edit.h"

CScriptEdit::CScriptEdit() = default;

CScriptEdit::~CScriptEdit() {
  // Destroy while this is still a script editor, so OnDestroy runs here.
  if (IsWindow()) DestroyWindow();
}

void CScriptEdit::InitWindow() {
  if (!IsWindow()) Create(nullptr, L"", WS_VISIBLE, CRect(0, 0, 640, 480), nullptr, 0);
  m_TextBuffer.InitNew(0);
  AttachToBuffer(nullptr);
  m_wndIntelliTip.Create(this);
  m_wndIntelliList.Create(this);
}

BOOL CScriptEdit::PreCreateWindow(CREATESTRUCT& cs) {
  cs.style |= static_cast<LONG>(WS_VSCROLL | WS_HSCROLL);
  return CCrystalEditWnd::PreCreateWindow(cs);
}

CCrystalTextBuffer* CScriptEdit::LocateTextBuffer() { return &m_TextBuffer; }

DWORD CScriptEdit::ParseLine(DWORD dwCookie, int nLineIndex, TEXTBLOCK* pBuf, int& nActualItems) {
  return chartcore::internal::ParseScriptLine(dwCookie, GetLineChars(nLineIndex), GetLineLength(nLineIndex), pBuf,
                                              nActualItems, m_nScriptMode, &m_basicIndex);
}

int CScriptEdit::IsBasicFunction(const wchar_t* pszWord, int nLength) const {
  return m_basicIndex.Find(pszWord, nLength) != 0 ? 1 : 0;
}

void CScriptEdit::OnDestroy() {
  CCrystalEditWnd::OnDestroy();
  HideList();
  HideTip();
  if (m_wndIntelliList.IsWindow()) m_wndIntelliList.DestroyWindow();
  if (m_wndIntelliTip.IsWindow()) m_wndIntelliTip.DestroyWindow();
  DetachFromBuffer();
  m_TextBuffer.FreeAll();
}
