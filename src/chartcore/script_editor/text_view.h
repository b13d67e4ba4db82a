// The generic text view and edit window of the script editor.
//
// CCrystalTextWnd shows a CCrystalTextBuffer: it keeps the caret, the
// selection, the scrolling state (top line, horizontal pixel offset) and one
// parse cookie per line, and paints each visible line as coloured blocks that
// the virtual ParseLine produces (a derived editor such as CScriptEdit does
// the colouring). CCrystalEditWnd adds keyboard and mouse editing, the
// clipboard, find and replace, and input-method composition; every edit is
// one undo group. Everything works on the headless window port.
//
//   CCrystalTextBuffer buf;  buf.InitNew();
//   CCrystalEditWnd edit;
//   edit.Create(nullptr, L"", WS_CHILD | WS_VISIBLE, CRect(0, 0, 640, 480), nullptr, 100);
//   edit.AttachToBuffer(&buf);
//   edit.OnChar(L'a', 1, 0);                                   // types "a"
//   edit.OnChar(VK_DOWN, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);  // the Down key, not '('
#ifndef CHARTCORE_SCRIPT_EDITOR_TEXT_VIEW_H_
#define CHARTCORE_SCRIPT_EDITOR_TEXT_VIEW_H_

#include <string>
#include <unordered_map>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"
#include "chartcore/platform/window.h"
#include "chartcore/script_editor/text_buffer.h"

// Data of the edit window's notifications (ECN_... codes): what was typed or
// pressed, where the caret stands in the text and on the screen, and the top
// line. Handlers receive it as the NMHDR* of the notification.
struct NMEDITCLR {
  NMHDR hdr;
  UINT nChar;       // ECN_CHAR: the character; ECN_KEYDOWN: the virtual-key code
  UINT nRepCnt;
  UINT nFlags;
  CPoint ptCursor;  // caret position (x = column, y = line)
  CPoint ptCaret;   // caret position in client pixels
  int nTopLine;
};

// ---------------------------------------------------------------------------
// CCrystalTextWnd: display, caret, selection, scrolling, colouring
// ---------------------------------------------------------------------------
class CHARTCORE_API CCrystalTextWnd : public CWnd {
 public:
  // One colour block of a line: from m_nCharPos to the next block's position
  // (or the line's end), coloured by GetColor(m_nColorIndex).
  struct TEXTBLOCK {
    int m_nCharPos;
    int m_nColorIndex;
  };

  // Colour indexes: those the view paints with (background, selection,
  // margin) and those the script colouring emits.
  enum COLORINDEX {
    COLORINDEX_WHITESPACE = 0,
    COLORINDEX_BKGND = 1,
    COLORINDEX_NORMALTEXT = 2,
    COLORINDEX_SELMARGIN = 3,
    COLORINDEX_SELBKGND = 4,
    COLORINDEX_SELTEXT = 5,
    COLORINDEX_KEYWORD = 6,       // constant and operator words
    COLORINDEX_INDICATOR = 7,     // indicator names
    COLORINDEX_USERFUNCTION = 8,  // the user's function names
    COLORINDEX_COMMENT = 9,
    COLORINDEX_NUMBER = 10,
    COLORINDEX_OPERATOR = 11,
    COLORINDEX_FUNCNAME = 12,     // built-in function words
    COLORINDEX_MATHFUNCTION = 13,
    COLORINDEX_PRICE = 14,        // price and field words
    COLORINDEX_STRING = 15,
    COLORINDEX_PREPROCESSOR = 16, // directive lines
    COLORINDEX_ERRORTEXT = 17,
    COLORINDEX_ERRORBKGND = 18,
  };

  // Notification codes (NMHDR::code) of the edit window.
  enum : UINT {
    ECN_CARET = 0x0A01,       // the caret moved on the screen
    ECN_CHANGE = 0x0A02,      // an edit finished (sent with EN_CHANGE)
    ECN_CHAR = 0x0A03,        // a character was typed and inserted
    ECN_CURPOSCHANGE = 0x0A04,// the caret's text position changed
    ECN_KEYDOWN = 0x0A05,     // a key was pressed (after the view acted on it)
    ECN_SCROLL = 0x0A06,      // the top line or horizontal offset changed
  };

  // Find flags.
  enum : DWORD { FIND_MATCH_CASE = 0x0001, FIND_WHOLE_WORD = 0x0002, FIND_DIRECTION_UP = 0x0010 };

  CCrystalTextWnd();
  ~CCrystalTextWnd() override;

  // -------------------------------------------------------------------------
  // Buffer
  // -------------------------------------------------------------------------
  // Attaches to pBuf, or with nullptr to LocateTextBuffer(); detaches from a
  // previous buffer first. Caret, selection, scrolling and cookies reset.
  void AttachToBuffer(CCrystalTextBuffer* pBuf = nullptr);
  void DetachFromBuffer();
  // The buffer a derived view owns (nullptr here).
  virtual CCrystalTextBuffer* LocateTextBuffer();
  CCrystalTextBuffer* GetTextBuffer() const { return m_pTextBuffer; }
  // Called by the buffer for each change; keeps caret, selection and cookies
  // consistent and marks the changed lines for painting.
  virtual void UpdateView(CCrystalTextWnd* pSource, CUpdateContext* pContext, DWORD dwFlags, int nLineIndex = -1);

  // -------------------------------------------------------------------------
  // Line access (from the buffer; without one: a single empty line)
  // -------------------------------------------------------------------------
  virtual int GetLineCount();
  virtual int GetLineLength(int nLineIndex);
  // Never nullptr: L"" for a line outside the text.
  virtual LPCTSTR GetLineChars(int nLineIndex);
  CString GetLineText(int nLineIndex);
  // The text between two positions, lines joined by "\r\n".
  void GetText(const CPoint& ptStart, const CPoint& ptEnd, CString& text);
  // The length of the longest line, in characters.
  int GetMaxLineLength();

  // -------------------------------------------------------------------------
  // Colouring
  // -------------------------------------------------------------------------
  // Splits a line into colour blocks, given the cookie the line above
  // returned, and returns the cookie for the next line. With a null pBuf only
  // the cookie is computed. The caller sets nActualItems to 0 and provides
  // room for 3 * length + 8 blocks. The plain view colours nothing (no blocks,
  // cookie 0).
  virtual DWORD ParseLine(DWORD dwCookie, int nLineIndex, TEXTBLOCK* pBuf, int& nActualItems);
  // The colour of an index: 0 and 1 the window colour, 2 the window text
  // colour, 3 the scroll-bar colour, 4 black, 5 white, 6 blue, 7 (128,64,64),
  // 8 (165,42,42), 9 green (0,128,0), 10 teal (0,128,128), 11 and 18 red,
  // 12 red, 13 magenta, 14 (162,40,202), 15 (128,0,0), 16 blue, any other
  // (128,0,0).
  virtual COLORREF GetColor(int nColorIndex);
  // The cookie a line starts with (the cookie the line above returned; 0 for
  // the first line and for lines outside the text). Cookies are cached and
  // computed forward from the last known one.
  DWORD GetParseCookie(int nLineIndex);
  // Forgets every cached cookie (after a change of what ParseLine depends on,
  // such as the function list) and repaints.
  void ResetParseCookies();
  // How many leading lines have a cached end-of-line cookie.
  int GetValidCookieCount() const { return m_nValidCookies; }
  // The blocks of a line as painted: ParseLine's blocks, or one normal-text
  // block at 0 when it gives none.
  void GetLineBlocks(int nLineIndex, std::vector<TEXTBLOCK>& blocks);

  // -------------------------------------------------------------------------
  // Caret and selection
  // -------------------------------------------------------------------------
  CPoint GetCursorPos() const { return m_ptCursorPos; }
  // Moves the caret (clamped to the text), collapses nothing: the selection
  // stays as it is. Notifies ECN_CURPOSCHANGE when the position changed.
  void SetCursorPos(const CPoint& ptCursorPos);
  // The selection, start before end (equal when nothing is selected).
  void GetSelection(CPoint& ptStart, CPoint& ptEnd) const;
  // Selects between two positions (clamped, in either order); the anchor
  // becomes ptStart.
  void SetSelection(const CPoint& ptStart, const CPoint& ptEnd);
  CPoint GetAnchor() const { return m_ptAnchor; }
  void SetAnchor(const CPoint& ptAnchor);
  BOOL IsSelection() const { return m_ptSelStart != m_ptSelEnd; }
  void SelectAll();
  CString GetSelectedText();
  // Whether pt is a position inside the text (line in range, column within
  // the line's length).
  BOOL IsValidTextPos(const CPoint& pt);
  // Scrolls so that the position is on screen.
  void EnsureVisible(CPoint pt);
  // Copies the selection to the clipboard; FALSE when nothing is selected.
  BOOL Copy();

  // -------------------------------------------------------------------------
  // Scrolling and geometry
  // -------------------------------------------------------------------------
  int GetTopLine() const { return m_nTopLine; }
  // Clamped to 0 .. line count - 1. Notifies ECN_SCROLL when it moved.
  void ScrollToLine(int nNewTopLine);
  // The horizontal scroll offset in pixels (0 .. ).
  int GetHorzOffset() const { return m_nOffsetX; }
  void ScrollToHorz(int nOffsetX);
  // Whole lines that fit in the client area (at least 1).
  int GetScreenLines();
  int GetLineHeight();
  // The width of the character 'X' in the view's font.
  int GetCharWidth();
  // The width of a character as laid out (a tab is measured by GetTabSize
  // spaces from the line's start, so use GetColumnX for positions).
  int GetCharPixelWidth(wchar_t ch);
  int GetTabSize() const { return m_nTabSize; }
  // 1 .. 64.
  void SetTabSize(int nTabSize);
  // The selection margin left of the text (bookmarks are drawn there).
  BOOL GetSelectionMargin() const { return m_bSelMargin; }
  void SetSelectionMargin(BOOL bSelMargin);
  int GetMarginWidth() const;
  // The x of a column of a line relative to the text's left edge (no margin,
  // no scrolling).
  int GetColumnX(int nLineIndex, int nColumn);
  // A text position to client pixels (its top-left) and back; ClientToText
  // clamps to the text and picks the nearer side of a character.
  CPoint TextToClient(const CPoint& ptText);
  CPoint ClientToText(const CPoint& ptClient);
  // The font the view measures and paints with (nullptr: the system font).
  void SetViewFont(const LOGFONT* lf);

  // -------------------------------------------------------------------------
  // Find
  // -------------------------------------------------------------------------
  // Searches for pszText (one line, no line breaks) from ptStartPos: forward
  // for the first match starting at or after it, or with FIND_DIRECTION_UP
  // backward for the last match ending at or before it. FIND_MATCH_CASE
  // compares exactly (else case-insensitively), FIND_WHOLE_WORD wants no
  // letter, digit or '_' right before and after. With bWrapSearch the search
  // goes on from the other end. *pptFoundPos gets the match's start. FALSE
  // when nothing matches or the text is empty or holds a line break.
  BOOL FindText(LPCTSTR pszText, const CPoint& ptStartPos, DWORD dwFlags, BOOL bWrapSearch, CPoint* pptFoundPos);
  // The same within [ptBlockBegin, ptBlockEnd) (matches must lie inside).
  BOOL FindTextInBlock(LPCTSTR pszText, const CPoint& ptStartPos, const CPoint& ptBlockBegin,
                       const CPoint& ptBlockEnd, DWORD dwFlags, BOOL bWrapSearch, CPoint* pptFoundPos);
  // Finds the next match after the selection (or the previous one before it
  // with FIND_DIRECTION_UP), wrapping, selects it and moves the caret to its
  // end. FALSE when there is none.
  BOOL FindNext(LPCTSTR pszText, DWORD dwFlags);

  // -------------------------------------------------------------------------
  // Painting
  // -------------------------------------------------------------------------
  // Paints the visible lines: background, margin, blocks in their colours,
  // the selection, and the composition text at the caret.
  virtual void OnDraw(CDC* pDC);

  // -------------------------------------------------------------------------
  // Undo-group plumbing (called by CCrystalTextBuffer::FlushUndoGroup)
  // -------------------------------------------------------------------------
  // Moves the caret to ptCursor, collapses the selection there and scrolls it
  // into view.
  void OnUndoGroupFlushed(const CPoint& ptCursor);
  // Sends ECN_CHANGE (OnChangeEditClr) and EN_CHANGE to the parent.
  void SendChangeNotify();

  // -------------------------------------------------------------------------
  // Notification hooks. Each receives an NMEDITCLR; the defaults forward it
  // to the parent as WM_NOTIFY and set *pResult to 0. A derived editor
  // overrides them to react (the list and tip of the script editor).
  // -------------------------------------------------------------------------
  virtual void OnCaretEditClr(NMHDR* pNMHDR, LRESULT* pResult);
  virtual void OnChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult);
  virtual void OnCharEditClr(NMHDR* pNMHDR, LRESULT* pResult);
  virtual void OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult);
  virtual void OnKeyDownEditClr(NMHDR* pNMHDR, LRESULT* pResult);
  virtual void OnScrollEditClr(NMHDR* pNMHDR, LRESULT* pResult);

  // Message handlers (public so a backend or a derived router may call them).
  void OnPaint() override;
  void OnSize(UINT nType, int cx, int cy) override;
  void OnSetFocus(CWnd* pOldWnd) override;
  void OnKillFocus(CWnd* pNewWnd) override;
  void OnLButtonDown(UINT nFlags, CPoint point) override;
  void OnLButtonUp(UINT nFlags, CPoint point) override;
  void OnLButtonDblClk(UINT nFlags, CPoint point) override;
  void OnMouseMove(UINT nFlags, CPoint point) override;
  BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint pt) override;
  void OnVScroll(UINT nSBCode, UINT nPos) override;
  void OnHScroll(UINT nSBCode, UINT nPos) override;

 protected:
  void OnDestroy() override;
  // Sends one notification through its hook; returns the handler's result.
  LRESULT SendEditNotify(UINT code, UINT nChar = 0, UINT nRepCnt = 0, UINT nFlags = 0);
  // Positions the port's caret at the text caret (after any composition
  // text) and notifies ECN_CARET when its pixel position changed.
  void UpdateCaret();
  // Moves caret and selection together: with bExtend the selection runs from
  // the anchor to pt, else it collapses at pt. Scrolls pt into view.
  void MoveCursorTo(const CPoint& pt, BOOL bExtend);
  // The invalidation rectangle of lines [first, last] (last -1: to the bottom).
  void InvalidateLines(int nFirstLine, int nLastLine);
  CPoint ClampToText(CPoint pt);
  BOOL IsWordChar(wchar_t ch) const;
  // Word boundaries around a column (for double click and Ctrl+arrows).
  int WordStart(int nLine, int nColumn);
  int WordEnd(int nLine, int nColumn);
  // The first (or with last, the last) match of what that lies inside
  // columns [from, to) of a line, or -1; FIND_ flags as for FindText.
  int FindInLine(int nLine, const std::wstring& what, int from, int to, DWORD dwFlags, bool last);

  // The composition text of an input method (shown at the caret, not in
  // the buffer).
  CString m_strComposition;
  CCrystalTextBuffer* m_pTextBuffer = nullptr;
  CPoint m_ptCursorPos;
  CPoint m_ptAnchor;
  CPoint m_ptSelStart;
  CPoint m_ptSelEnd;
  // The column the caret keeps while moving up and down over shorter lines.
  int m_nIdealCaretX = 0;

 private:
  void DrawLine(CDC* pDC, int nLineIndex, int y, const CRect& rcClient);
  // The x after a character that starts at x: a tab goes to the next tab stop.
  int AdvanceX(int x, wchar_t ch, int tabWidth);
  // The width of the text being composed at the caret (0 when none).
  int GetCompositionWidth();
  void AdjustCookiesForChange(int nLine, int nLineDelta);
  void ReparseFrom(int nLine);
  void UpdateSelectionFromAnchor();
  void NotifyScroll();

  // End-of-line cookie per line, in blocks like the buffer's lines, so an
  // Enter in a long file does not move every cookie below it.
  chartcore::internal::BlockList<DWORD> m_aParseCookies;
  int m_nValidCookies = 0;             // leading entries that are exact
  int m_nTopLine = 0;
  int m_nOffsetX = 0;
  int m_nTabSize = 4;
  BOOL m_bSelMargin = FALSE;
  BOOL m_bDragging = FALSE;
  BOOL m_bHasFocus = FALSE;
  BOOL m_bCaretCreated = FALSE;
  CPoint m_ptLastCaretPixel = CPoint(-1, -1);
  int m_nMaxLineLength = -1;           // -1: to be measured
  LOGFONT m_lfView;
  BOOL m_bHasViewFont = FALSE;
  std::unordered_map<wchar_t, int> m_charWidths;
  int m_nLineHeight = 0;
  int m_nCharWidth = 0;
  // Kept between painted lines so a paint allocates nothing per line.
  std::vector<int> m_paintXs;
  std::vector<int> m_paintCuts;
  std::vector<TEXTBLOCK> m_paintBlocks;
};

// ---------------------------------------------------------------------------
// CCrystalEditWnd: keyboard and mouse editing
// ---------------------------------------------------------------------------
class CHARTCORE_API CCrystalEditWnd : public CCrystalTextWnd {
 public:
  // A flag OR-ed into OnChar's nFlags by the key-down path: nChar is then a
  // virtual-key code (VK_DOWN), not a typed character ('(' has the same code
  // 0x28). Key messages only carry 16 flag bits, so a real WM_CHAR never has
  // this bit.
  enum : UINT { CHARFLAG_VIRTKEY = 0x00010000 };

  CCrystalEditWnd();
  ~CCrystalEditWnd() override;

  // -------------------------------------------------------------------------
  // Keyboard
  // -------------------------------------------------------------------------
  // A typed character: printable characters are inserted (replacing the
  // selection; overwriting in overwrite mode), '\r' starts a new line (with
  // the indentation of the current line when auto-indent is on), '\b' deletes
  // backwards, '\t' inserts a tab (or indents the selected lines), other
  // control characters are ignored. With CHARFLAG_VIRTKEY in nFlags nChar is
  // a key: VK_RETURN, VK_TAB, VK_SPACE and VK_BACK edit as above, VK_DELETE
  // deletes forward, VK_INSERT toggles overwrite (with Ctrl: copy; with
  // Shift: paste), the arrows, Home, End, Page Up and Page Down move the
  // caret (Shift extends the selection, Ctrl moves by words or to the text's
  // ends), VK_ESCAPE does nothing; ECN_KEYDOWN follows. Each inserted
  // character is followed by ECN_CHAR. nRepCnt repeats the action.
  void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags) override;
  // A key went down: navigation keys, Delete and Insert go to OnChar with
  // CHARFLAG_VIRTKEY; Ctrl+Z / Ctrl+Y undo and redo, Ctrl+C / Ctrl+X /
  // Ctrl+V copy, cut and paste, Ctrl+A selects all; ECN_KEYDOWN follows
  // (typed characters arrive afterwards as WM_CHAR).
  void OnKeyDown(UINT nChar, UINT nRepCnt, UINT nFlags) override;
  void OnKeyUp(UINT nChar, UINT nRepCnt, UINT nFlags) override;

  // -------------------------------------------------------------------------
  // Editing commands (each one undo group)
  // -------------------------------------------------------------------------
  // Replaces the selection (or inserts at the caret) with pszNewText; the
  // caret ends after the new text. FALSE when the buffer refused.
  BOOL ReplaceSelText(LPCTSTR pszNewText);
  // Deletes the selection; FALSE when nothing is selected.
  BOOL DeleteSelection(int nAction = CE_ACTION_DELSEL);
  BOOL Cut();
  // Inserts the clipboard's text; FALSE when it holds none.
  BOOL Paste();
  BOOL CanUndo();
  BOOL CanRedo();
  // Undo / Redo of the buffer, placing the caret where the change was.
  BOOL Undo();
  BOOL Redo();
  // Replaces every match (FIND_MATCH_CASE, FIND_WHOLE_WORD) of pszText with
  // pszReplace in one undo group; returns the number replaced. The caret ends
  // after the last replacement.
  int ReplaceAll(LPCTSTR pszText, LPCTSTR pszReplace, DWORD dwFlags);
  // If the selection is a match of pszText, replaces it; then finds the next
  // match. FALSE when no further match exists.
  BOOL ReplaceNext(LPCTSTR pszText, LPCTSTR pszReplace, DWORD dwFlags);

  // -------------------------------------------------------------------------
  // Modes
  // -------------------------------------------------------------------------
  BOOL GetOverwriteMode() const { return m_bOvrMode; }
  void SetOverwriteMode(BOOL bOvrMode = TRUE) { m_bOvrMode = bOvrMode; }
  BOOL GetAutoIndent() const { return m_bAutoIndent; }
  void SetAutoIndent(BOOL bAutoIndent = TRUE) { m_bAutoIndent = bAutoIndent; }
  // The buffer's read-only flag (TRUE without a buffer).
  BOOL IsReadOnly();

  // -------------------------------------------------------------------------
  // Input-method composition
  // -------------------------------------------------------------------------
  // Shows text at the caret while a character is being composed; the buffer
  // does not change. An empty text ends the display.
  void SetCompositionText(LPCTSTR pszText);
  CString GetCompositionText() const { return m_strComposition; }
  BOOL IsComposing() const { return !m_strComposition.IsEmpty(); }
  // Ends the composition and inserts the committed text once, as one typing
  // group replacing the selection, followed by one ECN_CHAR for its last
  // character. FALSE when the text is empty or the buffer refused.
  BOOL CommitComposition(LPCTSTR pszText);
  void CancelComposition();

 private:
  BOOL InsertTyped(const CString& text, BOOL bMerge, int nAction);
  BOOL HandleVirtualKey(UINT nChar, UINT nRepCnt);
  BOOL InsertNewLine();
  // Undo (redo false) or Redo of the buffer, the caret placed at the change.
  BOOL StepHistory(bool redo);
  BOOL DeleteRange(const CPoint& ptStart, const CPoint& ptEnd, int nAction);
  BOOL DeleteChar(bool forward);
  BOOL DeleteBack();
  BOOL DeleteForward();
  BOOL InsertTab(BOOL bShift);
  void MoveCaret(UINT nKey, BOOL bShift, BOOL bCtrl);

  BOOL m_bOvrMode = FALSE;
  BOOL m_bAutoIndent = TRUE;
  // Where the last typing group ended (to merge the next typed character).
  CPoint m_ptLastTyping = CPoint(-1, -1);
};

#endif  // CHARTCORE_SCRIPT_EDITOR_TEXT_VIEW_H_
