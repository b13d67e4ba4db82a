// CIntelliTip: the parameter tip of the script editor.
//
// While the user types a function call the editor shows this small pale-yellow
// window next to the caret with the function's text: its call form on the
// first line and, below, its comment. The tip sizes itself to its lines (never
// narrower than the word "테스트"), draws the parameter the caret is in with
// the bold font, takes no input, and hides itself 3 seconds after each Show.
//
//   CIntelliTip tip;
//   tip.Create(&editor);
//   CStringArray params;  params.Add(L"Price");  params.Add(L"Period");
//   tip.SetCursorPoint(CPoint(40, 32));          // client point of the editor
//   tip.SetFunction(L"MA(Price, Period)\n이동평균", params);
//   tip.Show();                                  // gone after 3000 ms
#ifndef CHARTCORE_SCRIPT_EDITOR_COMPLETION_TIP_H_
#define CHARTCORE_SCRIPT_EDITOR_COMPLETION_TIP_H_

#include "chartcore/platform/arrays.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/window.h"

// CIntelliTip: a popup dialog (template 3024, 198 by 6 dialog units before it
// sizes itself) owned by the editor.
class CHARTCORE_API CIntelliTip : public CDialog {
 public:
  enum { IDD = 3024 };
  // Id of the timer that hides a shown tip.
  enum { kHideTimer = 1 };
  // Milliseconds a shown tip stays before it hides itself.
  enum { kHideDelay = 3000 };

  CIntelliTip();
  ~CIntelliTip() override;

  // ---------------------------------------------------------------------------
  // Creation
  // ---------------------------------------------------------------------------

  // Stores the parent (the editor) and creates the hidden tip window owned by
  // it. Returns nonzero on success, 0 when the tip exists already.
  BOOL Create(CWnd* pParentWnd);

  // ---------------------------------------------------------------------------
  // Content
  // ---------------------------------------------------------------------------

  // Stores the tip text (lines separated by "\n"), rebuilds the parameter
  // array from params and lays the tip out, which replaces the array's
  // entries by the text's display lines (so GetNumParams then counts lines).
  void SetFunction(CString strFunction, CStringArray& params);
  // Stores the text only: no layout, the displayed lines stay. The editor
  // uses it to keep the function's name for its "still left of the caret"
  // check while the call form stays on screen.
  void SetFunctionName(CString strName);
  // Empties the array and copies params into it (no layout).
  void SetFunctionParam(CStringArray& params);
  // The stored text.
  CString GetFunction() const { return m_strFunction; }
  // The array's element count: the parameters given, or the display lines
  // once the tip has been laid out.
  int GetNumParams() const { return static_cast<int>(m_arrParams.GetSize()); }
  // The array itself (display lines after a layout).
  const CStringArray& GetParams() const { return m_arrParams; }
  // Stores the index of the parameter the caret is in and repaints the whole
  // tip; the layout does not change. The parameter of that index inside the
  // parentheses of the first line is drawn bold; an index with no such
  // parameter (negative, or past the last) highlights nothing.
  void SetCurParam(int nCurParam);
  int GetCurParam() const { return m_nCurParam; }

  // ---------------------------------------------------------------------------
  // Placement and visibility
  // ---------------------------------------------------------------------------

  // Takes a point in the parent's client coordinates, converts it to screen
  // coordinates through the parent, stores it as the tip's top-left corner
  // and lays the tip out.
  void SetCursorPoint(CPoint pt);
  // The stored top-left corner in screen coordinates.
  CPoint GetCursorPoint() const { return m_ptScreen; }
  // Shows the tip and (re)starts the 3-second hide timer.
  void Show();
  // Hides the tip and stops the timer; harmless while hidden.
  void Hide();
  // 1 while the tip is shown (cleared by Hide and by the hide timer).
  BOOL IsShown() const { return m_bVisible; }

 protected:
  BOOL OnInitDialog() override;
  void OnPaint() override;
  // Timer 1: stops itself and closes the tip as if cancelled.
  void OnTimer(UINT_PTR nIDEvent) override;
  // The tip takes no input: the focus goes back to the window that had it.
  void OnSetFocus(CWnd* pOldWnd) override;
  void OnDestroy() override;

 private:
  // Measures the lines with the normal font, moves and sizes the window.
  void UpdatePosition();
  // Start and end (exclusive) of the current parameter inside line, or false.
  bool FindCurParamSpan(const CString& line, int& start, int& end) const;

  CWnd* m_pParentWnd = nullptr;
  CFont m_fontNormal;
  CFont m_fontBold;
  CPoint m_ptScreen;
  CString m_strFunction;
  CStringArray m_arrParams;
  int m_nCurParam = 0;
  BOOL m_bVisible = FALSE;
};

#endif  // CHARTCORE_SCRIPT_EDITOR_COMPLETION_TIP_H_
