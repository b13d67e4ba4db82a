// CScriptEdit: the editor in which the user writes trading-logic formulas.
//
// It is an edit window over its own text buffer that colours the script
// language (constants, built-in, math, price and indicator words, the user's
// functions, numbers, strings, comments and directive lines), loads the
// user's function list from the workspace, offers a completion list while a
// function name is typed and shows a parameter tip with the function's
// formula and comment once its '(' is typed. It works on any window port; on
// the headless default everything can be driven and checked without a screen.
//
//   CScriptEdit edit;
//   edit.InitWindow();                                  // buffer, list and tip
//   edit.InitBasicFunctionList(L"/home/u/ws", L"", L"", 2);
//   edit.OnChar(L'c', 1, 0);                            // list opens at "CompressC"
//   edit.GetLineBlocks(0, blocks);                      // colour blocks of line 0
#ifndef CHARTCORE_SCRIPT_EDITOR_SCRIPT_EDIT_H_
#define CHARTCORE_SCRIPT_EDITOR_SCRIPT_EDIT_H_

#include "chartcore/platform/arrays.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/window.h"
#include "chartcore/script_editor/completion_tip.h"
#include "chartcore/script_editor/function_list.h"
#include "chartcore/script_editor/script_words.h"
#include "chartcore/script_editor/text_buffer.h"
#include "chartcore/script_editor/text_view.h"

class CDBSubFUNCT;

// CScriptEdit: the script editor window. The colouring lives in script_edit,
// the function list, definition look-ups, word scanners and key routing in
// function_list, the tip in completion_tip.
//
// Completion, as the editor offers it:
// - The list opens while a word is typed (letters, digits, '_', Korean) that
//   begins a list entry, ignoring case, and selects the first such entry; it
//   follows the word as it grows or shrinks (typing, Backspace, caret moves)
//   and closes when no entry begins with it, when a character that is no word
//   character is typed, and after 3 seconds without a key.
// - Enter or a double click in the list inserts the pick: the word typed
//   before the caret is replaced together with the rest of the word after it.
//   (OnDblclkList alone replaces only from the caret to the word's end.)
// - Typing '(' right after a function with a definition file shows the tip:
//   its formula (the call form) and, on the next line, its comment; the
//   parameter the caret is in is drawn bold and advances with each ','.
//   Typing ')' that closes the call, Escape, or moving to where the function's
//   name is no longer left of the caret closes the tip.
// - List and tip stand right below the caret line (the list below the tip
//   when both are shown) and follow the caret and scrolling.
class CHARTCORE_API CScriptEdit : public CCrystalEditWnd {
 public:
  CScriptEdit();
  ~CScriptEdit() override;

  // ---------------------------------------------------------------------------
  // Set-up
  // ---------------------------------------------------------------------------

  // Initialises the own buffer as an empty text, attaches the view to it and
  // creates the parameter tip and the completion list with the editor as
  // parent. Call once; an editor whose window was not created yet gets a
  // 640 by 480 window on the installed port first, so a default-constructed
  // editor is complete after this call.
  void InitWindow();
  // Loads the user function list "New_Function.dat" of root's logic-function
  // folder ("System" then "User" section, names "Name0", "Name1", ... up to
  // "Count" or the first empty one) and stores the script mode (0 and 1 leave
  // volume prices and breadth/volume indicators uncoloured). The list and the
  // built-in function words are added to the completion list, so call it once
  // per editor. userId and logicName are kept for the host (GetUserID,
  // GetLogicName); the editor itself does not use them. A missing file gives
  // an empty function list.
  void InitBasicFunctionList(CString root, CString userId, CString logicName, int nScriptMode);

  CString GetWorkspaceRoot() const { return m_strRoot; }
  CString GetUserID() const { return m_strUserID; }
  CString GetLogicName() const { return m_strLogicName; }
  // The script mode; 2 (every table applies) until InitBasicFunctionList.
  int GetScriptMode() const { return m_nScriptMode; }
  // The user function names in file order ("System" names first).
  const CStringArray& GetBasicFunctionList() const { return m_arrBasicFunction; }

  // The editor's own buffer.
  CCrystalTextBuffer* LocateTextBuffer() override;

  // ---------------------------------------------------------------------------
  // Colouring
  // ---------------------------------------------------------------------------

  // Colour blocks of one line for the view; see chartcore::internal::
  // ParseScriptLine. Words are classified only when pBuf is given.
  DWORD ParseLine(DWORD dwCookie, int nLineIndex, TEXTBLOCK* pBuf, int& nActualItems) override;
  // 1 when the user function list holds a name of exactly nLength characters
  // equal to pszWord ignoring case, else 0 (also for a null word).
  int IsBasicFunction(const wchar_t* pszWord, int nLength) const;

  // ---------------------------------------------------------------------------
  // Function definitions (".bic" basic, ".fct" core, in the logic-function
  // folder). Each returns an empty text for an empty name, a missing,
  // unreadable or corrupt file.
  // ---------------------------------------------------------------------------

  // The comment of the basic function's definition.
  CString GetBasicComment(CString strName);
  // The name field of the basic function's definition as a call form: "()"
  // is appended unless the field is empty or already holds "()".
  CString GetBasicFormular(CString strName);
  // The comment of the core function's definition.
  CString GetCoreComment(CString strName);
  // The formula of the core function's definition.
  CString GetCoreFormular(CString strName);

  // ---------------------------------------------------------------------------
  // Word scanners
  // ---------------------------------------------------------------------------

  // The word (ASCII letters, digits, '_') that starts at nPos; nPos moves to
  // its end. Empty for nPos outside the line or on a character above 256.
  // When no word starts at nPos, nPos stays and the whole line is returned.
  CString GetNextWord(CString strLine, int& nPos);
  // The run before nPos, after skipping blanks back, of ASCII letters, digits,
  // '_', '.', '(', ')' and ' '; nPos moves to its start. So "MA(C, 5)" read
  // back from its end gives " 5)" (the comma stops it). Empty when nPos < 1,
  // when only blanks precede it, or the character before is above 256 (nPos
  // has then moved back over the blanks).
  CString GetPrevWord(CString strLine, int& nPos);
  // The word being typed: the letters, digits (Unicode, so Korean too) and
  // '_' right before nPos; nPos moves to its start. Empty when the character
  // before nPos is none of those (nPos stays).
  CString GetPrevWord1(CString strLine, int& nPos);
  // The name of the call whose '(' stands right before nPos (blanks allowed
  // between the '(' and nPos and between the name and the '('); nPos moves to
  // the name's start. Empty when there is no such '(' or no name before it.
  CString GetPrevWord2(CString strLine, int& nPos);

  // ---------------------------------------------------------------------------
  // Completion list and tip
  // ---------------------------------------------------------------------------

  // Hides the list if it is shown (clears the flag, stops its idle timer).
  void HideList();
  // Hides the tip if it is shown (clears the flag).
  void HideTip();
  // Moves the shown list and tip right below the caret line.
  void UpdateIntelliToolsPosition();
  BOOL IsListShown() const { return m_bListShown; }
  BOOL IsTipShown() const { return m_bTipShown; }
  CIntelliList& GetIntelliList() { return m_wndIntelliList; }
  CIntelliTip& GetIntelliTip() { return m_wndIntelliTip; }
  // Inserts the list's selected entry the way a pick from the list does:
  // the word typed before the caret goes too, when the entry begins with it.
  // Called by the list for Enter and double clicks.
  void InsertListPick();

  // ---------------------------------------------------------------------------
  // Notifications of the edit window
  // ---------------------------------------------------------------------------

  // Caret moved on the screen / the view scrolled: list and tip follow.
  void OnCaretEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  void OnScrollEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  // An edit finished: an open list re-matches the word before the caret, an
  // open tip re-counts the current parameter (or closes with its call).
  void OnChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  // A character was typed: opens, follows or closes the list; shows, advances
  // or closes the tip (see the class comment).
  void OnCharEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  // The caret's text position changed: an open list re-matches the word
  // before the caret; list and tip follow the caret.
  void OnCurPosChangeEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  // A key went down. With the list shown Page Up, Page Down, Up and Down move
  // its selection (restarting its idle timer) and Escape hides list and tip.
  // Otherwise, with the tip shown, Escape, Home, Up and Down hide it, and any
  // other key hides it when its function name no longer stands left of the
  // caret. *pResult is always 1.
  void OnKeyDownEditClr(NMHDR* pNMHDR, LRESULT* pResult) override;
  // A pick in the list: hides the list, then replaces the selection made from
  // the caret to the end of the word under it with the item's core formula,
  // else its basic call form, else the item itself when it is exactly a
  // built-in function word. Nothing is replaced when there is nothing to
  // insert. *pResult is 0.
  void OnDblclkList(NMHDR* pNMHDR, LRESULT* pResult);

  // ---------------------------------------------------------------------------
  // Messages
  // ---------------------------------------------------------------------------

  // Key routing. With the list shown a key-down restarts its idle timer and
  // Enter, Escape, End, Home, Up and Down go to the list. Tab, Enter, Escape,
  // Space, Page Up, Page Down, End, Home, the arrows and Delete go to OnChar
  // as keys (CHARFLAG_VIRTKEY); Shift down and up to OnKeyDown / OnKeyUp;
  // WM_CHAR to OnChar. Each of these is consumed (TRUE); anything else goes
  // to the base window.
  BOOL PreTranslateMessage(MSG* pMsg) override;
  // While the list is shown the keys Page Up, Page Down, Up and Down belong to
  // it: the caret stays and only the key-down notification runs.
  void OnChar(UINT nChar, UINT nRepCnt, UINT nFlags) override;
  // Losing the focus (to anything but the list or the tip) and clicking in
  // the text hide list and tip.
  void OnKillFocus(CWnd* pNewWnd) override;
  void OnLButtonDown(UINT nFlags, CPoint point) override;
  // Adds scroll bars to the editor's style.
  BOOL PreCreateWindow(CREATESTRUCT& cs) override;

 protected:
  // Destroys the list and the tip, then frees the own buffer.
  void OnDestroy() override;

 private:
  // Shared by the notifications.
  void RefreshListForWord();
  void ShowTipForCall();
  void UpdateTipParam();
  void PlaceTip(CPoint ptClient);
  CString GetPickInsertText(const CString& strItem);
  CString GetLookupPath(const CString& strName, LPCTSTR pszExtension) const;
  BOOL LoadFunctionRecord(const CString& strName, LPCTSTR pszExtension, CDBSubFUNCT& record) const;

  CCrystalTextBuffer m_TextBuffer;
  BOOL m_bListShown = FALSE;
  BOOL m_bTipShown = FALSE;
  CIntelliList m_wndIntelliList;
  CIntelliTip m_wndIntelliTip;
  int m_nScriptMode = 2;
  CString m_strRoot;
  CString m_strUserID;
  CString m_strLogicName;
  CStringArray m_arrBasicFunction;
  chartcore::internal::NoCaseWordIndex m_basicIndex;
  // What the tip shows, kept to lay it out again when it moves.
  CString m_strTipText;
  CString m_strTipName;
};

#endif  // CHARTCORE_SCRIPT_EDITOR_SCRIPT_EDIT_H_
