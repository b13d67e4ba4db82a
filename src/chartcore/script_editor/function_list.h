// CIntelliList: the completion list of the script editor.
//
// The editor fills this popup list once with the user's function names and
// the built-in function words, opens it next to the caret while a word is
// typed that begins an entry, and inserts the entry the user picks (double
// click or Enter). The list keeps its items sorted without regard to case,
// moves its selection by lines and pages like a list view, and closes itself
// when it has been idle (no key reached it) for 3 seconds.
//
//   CIntelliList list;
//   list.Create(&editor);
//   list.AddItem(L"crossup");  list.AddItem(L"BarsSince");
//   list.SelectItem(list.FindPrefix(L"cro"));   // selects "crossup"
//   list.GetSelectedText();                     // "crossup"
#ifndef CHARTCORE_SCRIPT_EDITOR_FUNCTION_LIST_H_
#define CHARTCORE_SCRIPT_EDITOR_FUNCTION_LIST_H_

#include "chartcore/platform/arrays.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/window.h"

class CScriptEdit;

// CIntelliList: a popup dialog (template 3022, 126 by 63 dialog units, no
// caption) holding one single-selection, ascending-sorted, one-column list
// (control id 7001) whose items all carry image 0.
class CHARTCORE_API CIntelliList : public CDialog {
 public:
  enum { IDD = 3022, IDC_LIST = 7001 };
  // Id of the idle timer and its period.
  enum { kIdleTimer = 1, kIdleDelay = 3000 };

  CIntelliList();
  ~CIntelliList() override;

  // ---------------------------------------------------------------------------
  // Creation
  // ---------------------------------------------------------------------------

  // Creates the hidden list owned by pParentWnd. When the parent is a script
  // editor, picks and idle closing go to it (OnDblclkList, HideList);
  // otherwise the list only hides itself. Returns 0 when it exists already.
  BOOL Create(CWnd* pParentWnd);

  // ---------------------------------------------------------------------------
  // Items
  // ---------------------------------------------------------------------------

  // Inserts an item at its sorted place (case-insensitive; an item equal to
  // existing ones goes after them) and returns its index. The selection stays
  // on the item it was on.
  int AddItem(const CString& text);
  void DeleteAllItems();
  int GetItemCount() const { return static_cast<int>(m_arrItems.GetSize()); }
  // The item's text; empty for an index out of range.
  CString GetItemText(int index) const;
  // Index of the first item (in list order) that begins with prefix,
  // ignoring case; -1 for an empty prefix or when none does.
  int FindPrefix(const CString& prefix) const;

  // ---------------------------------------------------------------------------
  // Selection and scrolling
  // ---------------------------------------------------------------------------

  // Selects the item and scrolls it into view; -1 (or any index out of range)
  // clears the selection.
  void SelectItem(int index);
  // The selected index, -1 when none.
  int GetCurSel() const { return m_nCurSel; }
  // The selected item's text, empty when none.
  CString GetSelectedText() const { return GetItemText(m_nCurSel); }
  // One line up or down, clamped to the list; with nothing selected both
  // select the first item.
  void LineUp();
  void LineDown();
  // A page up or down as a list view moves: first to the top (bottom) row of
  // the visible page, then a page further; clamped to the list.
  void PageUp();
  void PageDown();
  void SelectFirst();
  void SelectLast();
  // The first visible row and the number of rows that fit (at least 1).
  int GetTopIndex() const { return m_nTopIndex; }
  int GetCountPerPage() const;
  // Height of one row in pixels (from the port's font metrics).
  int GetRowHeight() const;

  // ---------------------------------------------------------------------------
  // Idle timer
  // ---------------------------------------------------------------------------

  // Kills a running idle timer and starts it again (3000 ms).
  void RestartIdleTimer();
  void StopIdleTimer();

  // The list's own handling of the keys the editor hands it while shown:
  // Enter picks the selection, Escape closes the list, Home and End select the
  // first and last item, Up and Down move by one. TRUE when the message was
  // one of those key-downs.
  BOOL PreTranslateMessage(MSG* pMsg) override;

 protected:
  void OnPaint() override;
  // Idle timer: closes the list (through the editor, so its flag clears).
  void OnTimer(UINT_PTR nIDEvent) override;
  // A click selects the row under it; a double click picks it.
  void OnLButtonDown(UINT nFlags, CPoint point) override;
  void OnLButtonDblClk(UINT nFlags, CPoint point) override;
  BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint pt) override;
  void OnDestroy() override;

 private:
  void EnsureVisible(int index);
  int RowAt(CPoint point) const;
  void Pick();
  void Close();

  CScriptEdit* m_pEditor = nullptr;
  CStringArray m_arrItems;
  int m_nCurSel = -1;
  int m_nTopIndex = 0;
};

#endif  // CHARTCORE_SCRIPT_EDITOR_FUNCTION_LIST_H_
