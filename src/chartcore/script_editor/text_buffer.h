// The line-based text store behind the script editor, with bounded undo.
//
// CCrystalTextBuffer holds a formula's lines (wide text, one 32-bit flag set
// per line), the line-end style, the modified flag and an undo history of
// insert and delete records grouped into user actions. It knows nothing of
// drawing: the views attached with AddView (CCrystalTextWnd) are told of each
// change with a CInsertContext or CDeleteContext that moves their carets.
// Positions are CPoint with x = column and y = line, both 0-based.
//
//   CCrystalTextBuffer buf;
//   buf.InitNew();
//   int endLine, endChar;
//   buf.BeginUndoGroup();
//   buf.InsertText(nullptr, 0, 0, L"MA(C, 5)\r\nRSI(14)", endLine, endChar);  // 2 lines
//   buf.FlushUndoGroup(nullptr);
//   CPoint cursor; buf.Undo(cursor);                                          // 1 empty line
#ifndef CHARTCORE_SCRIPT_EDITOR_TEXT_BUFFER_H_
#define CHARTCORE_SCRIPT_EDITOR_TEXT_BUFFER_H_

#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"
#include "chartcore/script_editor/block_list.h"

class CCrystalTextWnd;

// ---------------------------------------------------------------------------
// Constants
// ---------------------------------------------------------------------------

// Line-end styles (GetCRLFMode / SetCRLFMode, LoadFromFile, SaveToFile).
enum : int {
  CRLF_STYLE_AUTOMATIC = -1,  // load: detect from the file; save: the buffer's style
  CRLF_STYLE_DOS = 0,         // "\r\n"
  CRLF_STYLE_UNIX = 1,        // "\n"
  CRLF_STYLE_MAC = 2,         // "\r"
};

// Line flags. Ten numbered bookmarks (LF_BOOKMARK(0) .. LF_BOOKMARK(9)) each
// stand on at most one line; LF_BOOKMARKS marks the plain bookmarks that
// FindNextBookmarkLine visits.
constexpr DWORD LF_BOOKMARK(int id) { return id >= 0 && id < 10 ? (0x00000001u << id) : 0u; }
constexpr DWORD LF_EXECUTION = 0x00010000;
constexpr DWORD LF_BREAKPOINT = 0x00020000;
constexpr DWORD LF_COMPILATION_ERROR = 0x00040000;
constexpr DWORD LF_BOOKMARKS = 0x00080000;
constexpr DWORD LF_INVALID_BREAKPOINT = 0x00100000;

// Update hints given to the views (CCrystalTextWnd::UpdateView).
constexpr DWORD UPDATE_HORZRANGE = 0x0001;   // the line's text changed
constexpr DWORD UPDATE_VERTRANGE = 0x0002;   // lines from the line down changed or moved
constexpr DWORD UPDATE_SINGLELINE = 0x0100;  // only the given line changed
constexpr DWORD UPDATE_FLAGSONLY = 0x0200;   // only the line's flags changed
constexpr DWORD UPDATE_RESET = 0x1000;       // everything changed (4096; line -1)

// Action codes of undo records, named by GetUndoDescription.
enum : int {
  CE_ACTION_UNKNOWN = 0,
  CE_ACTION_PASTE = 1,
  CE_ACTION_DELSEL = 2,
  CE_ACTION_CUT = 3,
  CE_ACTION_TYPING = 4,
  CE_ACTION_BACKSPACE = 5,
  CE_ACTION_INDENT = 6,
  CE_ACTION_DRAGDROP = 7,
  CE_ACTION_REPLACE = 8,
  CE_ACTION_DELETE = 9,
  CE_ACTION_AUTOINDENT = 10,
  CE_ACTION_COMPOSITION = 11,
};

// ---------------------------------------------------------------------------
// Position-update contexts
// ---------------------------------------------------------------------------

// CUpdateContext: one change from m_ptStart to m_ptEnd. RecalcPoint moves a
// position to where the same text stands after the change.
class CHARTCORE_API CUpdateContext {
 public:
  CUpdateContext() = default;
  CUpdateContext(const CPoint& ptStart, const CPoint& ptEnd) : m_ptStart(ptStart), m_ptEnd(ptEnd) {}
  virtual ~CUpdateContext();
  virtual void RecalcPoint(CPoint& ptPosition) = 0;
  // Lines the change added (positive) or removed (negative) below m_ptStart.y.
  virtual int GetLineDelta() const = 0;

  CPoint m_ptStart;
  CPoint m_ptEnd;
};

// CInsertContext: text was inserted from m_ptStart to m_ptEnd. A position
// exactly at m_ptStart stays before the inserted text, deliberately; one
// further right on that line moves with the text to m_ptEnd's line; one on a
// later line moves down by the lines inserted.
class CHARTCORE_API CInsertContext : public CUpdateContext {
 public:
  using CUpdateContext::CUpdateContext;
  void RecalcPoint(CPoint& ptPosition) override;
  int GetLineDelta() const override { return m_ptEnd.y - m_ptStart.y; }
};

// CDeleteContext: the text from m_ptStart to m_ptEnd was deleted. A position
// inside the range moves to m_ptStart; one at or after m_ptEnd on its line
// moves to m_ptStart's line; one on a later line moves up.
class CHARTCORE_API CDeleteContext : public CUpdateContext {
 public:
  using CUpdateContext::CUpdateContext;
  void RecalcPoint(CPoint& ptPosition) override;
  int GetLineDelta() const override { return m_ptStart.y - m_ptEnd.y; }
};

// ---------------------------------------------------------------------------
// CCrystalTextBuffer
// ---------------------------------------------------------------------------

class CHARTCORE_API CCrystalTextBuffer {
 public:
  // One undo step: an insertion (flags & UNDO_INSERT) or deletion of text
  // between two positions; UNDO_BEGINGROUP marks the first record of a user
  // action. Lines inside the text are separated by '\n'.
  enum : int { UNDO_INSERT = 0x0001, UNDO_BEGINGROUP = 0x0100 };
  struct SUndoRecord {
    int m_dwFlags = 0;
    CPoint m_ptStartPos;
    CPoint m_ptEndPos;
    std::wstring m_text;
    int m_nAction = CE_ACTION_UNKNOWN;
  };

  // Text file encodings: read by detection, written as the file was read.
  enum : int {
    ENCODING_UTF8 = 0,      // UTF-8 without a byte-order mark
    ENCODING_UTF8_BOM = 1,  // UTF-8 with EF BB BF (the default of new buffers)
    ENCODING_UTF16LE = 2,   // UTF-16LE with FF FE
    ENCODING_CP949 = 3,     // code page 949 (Korean, no mark)
  };

  // The default undo limit, in records.
  enum : int { DEFAULT_UNDO_LIMIT = 2048 };

  CCrystalTextBuffer();
  virtual ~CCrystalTextBuffer();
  CCrystalTextBuffer(const CCrystalTextBuffer&) = delete;
  CCrystalTextBuffer& operator=(const CCrystalTextBuffer&) = delete;

  // -------------------------------------------------------------------------
  // Lifecycle
  // -------------------------------------------------------------------------
  // One empty line, not read-only, the given line-end style, not modified,
  // empty undo history (limit 2048, saved position 0); every attached view
  // gets UPDATE_RESET over all lines. Always TRUE.
  BOOL InitNew(int nCrlfStyle = CRLF_STYLE_DOS);
  // Frees lines and undo history; the buffer is no longer initialised (no
  // lines) until InitNew or a load.
  void FreeAll();
  BOOL IsInitialized() const { return m_bInit; }
  // A read-only buffer refuses InsertText and DeleteText (they return FALSE).
  BOOL GetReadOnly() const { return m_bReadOnly; }
  void SetReadOnly(BOOL bReadOnly = TRUE) { m_bReadOnly = bReadOnly ? TRUE : FALSE; }

  // Replaces all text with text (lines split at "\r\n", "\n" or "\r") as a
  // fresh document: undo history cleared, not modified, views reset. The
  // line-end style is kept. Initialises the buffer if needed.
  void SetText(LPCTSTR text);
  // All text, lines joined by eol (nullptr: the buffer's own line end).
  CString GetAllText(LPCTSTR eol = nullptr) const;

  // -------------------------------------------------------------------------
  // Lines
  // -------------------------------------------------------------------------
  // 0 when not initialised.
  int GetLineCount() const { return static_cast<int>(m_aLines.size()); }
  // 0 for a line outside the buffer.
  int GetLineLength(int nLine) const;
  // The line's characters, null-terminated (lines never hold a line break);
  // nullptr for a line outside the buffer.
  LPCTSTR GetLineChars(int nLine) const;
  // Empty for a line outside the buffer.
  CString GetLineText(int nLine) const;
  // The text between two positions (clamped to the buffer), lines joined by
  // eol (nullptr: "\r\n"). Empty when the start is after the end.
  void GetText(int nStartLine, int nStartChar, int nEndLine, int nEndChar, CString& text,
               LPCTSTR eol = nullptr) const;

  // -------------------------------------------------------------------------
  // Line flags
  // -------------------------------------------------------------------------
  // 0 for a line outside the buffer.
  DWORD GetLineFlags(int nLine) const;
  // Sets or clears dwFlag on nLine. With bRemoveFromPreviousLine, setting a
  // flag first clears it from every other line (a numbered bookmark stands on
  // one line only). nLine -1 with bSet FALSE clears the flag everywhere.
  // Views get UPDATE_SINGLELINE | UPDATE_FLAGSONLY for each changed line.
  void SetLineFlag(int nLine, DWORD dwFlag, BOOL bSet, BOOL bRemoveFromPreviousLine = TRUE);
  // The first line holding any bit of dwFlag, or -1.
  int FindLineWithFlag(DWORD dwFlag) const;
  // The line holding the flag that stands on one line (a numbered bookmark,
  // the execution point), or -1.
  int GetLineWithFlag(DWORD dwFlag) const;
  // The next line after nCurrentLine with LF_BOOKMARKS, wrapping around to the
  // top; -1 when no line has one.
  int FindNextBookmarkLine(int nCurrentLine = 0) const;
  // The previous line before nCurrentLine with LF_BOOKMARKS, wrapping around to
  // the bottom; -1 when no line has one.
  int FindPrevBookmarkLine(int nCurrentLine = 0) const;

  // -------------------------------------------------------------------------
  // Editing
  // -------------------------------------------------------------------------
  // Inserts text at (nPos, nLine); "\r\n", "\n" and "\r" inside it split
  // lines. Sets nEndLine/nEndChar to the position right after the inserted
  // text, records an undo step with nAction and tells the views (pSource is
  // the view that made the change, may be nullptr). FALSE (and nothing
  // changed, end = start) for a position outside the text, a null text or a
  // read-only buffer; an empty text changes nothing and returns TRUE.
  BOOL InsertText(CCrystalTextWnd* pSource, int nLine, int nPos, LPCTSTR pszText, int& nEndLine, int& nEndChar,
                  int nAction = CE_ACTION_UNKNOWN);
  // Deletes the text from (nStartChar, nStartLine) to (nEndChar, nEndLine),
  // records it for undo and tells the views. FALSE (nothing changed) when a
  // position is outside the text, the start is after the end, or the buffer
  // is read-only; an empty range changes nothing and returns TRUE.
  BOOL DeleteText(CCrystalTextWnd* pSource, int nStartLine, int nStartChar, int nEndLine, int nEndChar,
                  int nAction = CE_ACTION_UNKNOWN);

  // -------------------------------------------------------------------------
  // Undo
  // -------------------------------------------------------------------------
  BOOL CanUndo() const { return m_nUndoPosition > 0; }
  BOOL CanRedo() const { return m_nUndoPosition < static_cast<int>(m_aUndoBuf.size()); }
  // Steps back over one group (up to and including the record that begins
  // it) without recording; ptCursorPos gets the start of the group's first
  // record. Modified becomes whether the undo position differs from the
  // saved position. FALSE when there is nothing to undo.
  BOOL Undo(CPoint& ptCursorPos);
  // Steps forward over one group; ptCursorPos gets the position after the last
  // redone record (the end of an insertion, the start of a deletion).
  BOOL Redo(CPoint& ptCursorPos);
  // Removes every record (undo position 0, no group open). The saved position
  // stays 0 when the buffer is unmodified, else becomes unreachable.
  void CleanUndoBuffer();
  // Opens a user action: the next record begins a group, unless
  // bMergeWithPrevious asks to continue the previous group and that is
  // possible: no redo records, the undo position is not the saved position,
  // and the last record is a single-line typing insertion.
  void BeginUndoGroup(BOOL bMergeWithPrevious = FALSE);
  // Closes the action. With a view and a non-empty history: the next record
  // will begin a group and the view's caret moves to the last applied record
  // (the end of an insertion, the start of a deletion). The view then sends
  // its change notification (EN_CHANGE to its parent). The group closes.
  void FlushUndoGroup(CCrystalTextWnd* pSource);
  // The text of the action Undo (Redo) would take back ("Typing", "Paste",
  // ...); nPos -1 means the current position. FALSE when there is none.
  BOOL GetUndoDescription(CString& desc, int nPos = -1) const;
  BOOL GetRedoDescription(CString& desc, int nPos = -1) const;
  // History inspection.
  int GetUndoRecordCount() const { return static_cast<int>(m_aUndoBuf.size()); }
  // nullptr outside 0 .. GetUndoRecordCount() - 1.
  const SUndoRecord* GetUndoRecord(int nIndex) const;
  int GetUndoPosition() const { return m_nUndoPosition; }
  // The undo position of the last save (-1 once that state can no longer be
  // reached by undo or redo).
  int GetSavedPosition() const { return m_nSyncPosition; }
  int GetUndoLimit() const { return m_nUndoBufSize; }
  // At least 1.
  void SetUndoLimit(int nRecords) { m_nUndoBufSize = nRecords < 1 ? 1 : nRecords; }
  // Whether a group is open (between BeginUndoGroup and FlushUndoGroup).
  BOOL IsInUndoGroup() const { return m_bUndoGroup; }

  // -------------------------------------------------------------------------
  // State
  // -------------------------------------------------------------------------
  BOOL IsModified() const { return m_bModified; }
  // Sets the modified flag; clearing it also makes the current undo position
  // the saved one (the text now equals what the host stored).
  void SetModified(BOOL bModified = TRUE);
  // Stored and returned unchanged.
  int GetCRLFMode() const { return m_nCRLFMode; }
  void SetCRLFMode(int nCRLFMode) { m_nCRLFMode = nCRLFMode; }
  // The encoding SaveToFile writes (the one a load detected).
  int GetEncoding() const { return m_nEncoding; }
  void SetEncoding(int nEncoding);

  // -------------------------------------------------------------------------
  // Views
  // -------------------------------------------------------------------------
  // Attaching a view twice keeps one entry; removing an unknown view is
  // harmless.
  void AddView(CCrystalTextWnd* pView);
  void RemoveView(CCrystalTextWnd* pView);
  // Calls UpdateView on every attached view.
  void UpdateViews(CCrystalTextWnd* pSource, CUpdateContext* pContext, DWORD dwUpdateFlags, int nLineIndex = -1);

  // -------------------------------------------------------------------------
  // Files
  // -------------------------------------------------------------------------
  // Reads a text file: UTF-8 with or without a byte-order mark, UTF-16LE with
  // one, or code page 949 (no mark, not valid UTF-8). nCrlfStyle -1 takes the
  // line-end style of the first line end in the file (DOS when it has none).
  // The text replaces the buffer as a fresh, unmodified document. FALSE (the
  // buffer unchanged) when the file cannot be read.
  BOOL LoadFromFile(LPCTSTR pszFileName, int nCrlfStyle = CRLF_STYLE_AUTOMATIC);
  // Writes the text with the given line end (-1: the buffer's style; DOS if
  // that is automatic too) in the buffer's encoding, replacing the file
  // atomically. Text that code page 949 cannot hold is written as UTF-8 with a
  // mark instead (and the encoding switches), so nothing is lost. With
  // bClearModifiedFlag the buffer becomes unmodified at this undo position.
  BOOL SaveToFile(LPCTSTR pszFileName, int nCrlfStyle = CRLF_STYLE_AUTOMATIC, BOOL bClearModifiedFlag = TRUE);

 protected:
  // Records a change for undo (discarding the redo part and, at the limit, the
  // oldest group).
  void AddUndoRecord(BOOL bInsert, const CPoint& ptStartPos, const CPoint& ptEndPos, const std::wstring& text,
                     int nAction);

 private:
  struct SLineInfo {
    std::wstring m_text;
    DWORD m_dwFlags = 0;
  };

  BOOL InternalInsertText(CCrystalTextWnd* pSource, int nLine, int nPos, const wchar_t* text, size_t length,
                          int& nEndLine, int& nEndChar);
  BOOL InternalDeleteText(CCrystalTextWnd* pSource, int nStartLine, int nStartChar, int nEndLine, int nEndChar,
                          std::wstring* deleted);
  static std::vector<SLineInfo> MakeLines(const wchar_t* text, size_t length, int* firstStyle);
  bool IsValidPos(int nLine, int nChar) const;
  void ResetDocument(std::vector<SLineInfo>&& lines);
  const wchar_t* LineEnd(int nCrlfStyle) const;
  BOOL ApplyRecord(const SUndoRecord& rec, bool forward, CPoint& ptCursor);

  // In blocks, so an Enter in the middle of a long file moves one block of
  // line records, not half the file.
  chartcore::internal::BlockList<SLineInfo> m_aLines;
  std::vector<CCrystalTextWnd*> m_lpViews;
  std::vector<SUndoRecord> m_aUndoBuf;
  BOOL m_bInit = FALSE;
  BOOL m_bReadOnly = FALSE;
  BOOL m_bModified = FALSE;
  int m_nCRLFMode = CRLF_STYLE_DOS;
  int m_nEncoding = ENCODING_UTF8_BOM;
  int m_nUndoBufSize = DEFAULT_UNDO_LIMIT;
  int m_nUndoPosition = 0;
  int m_nSyncPosition = 0;
  BOOL m_bUndoGroup = FALSE;
  BOOL m_bUndoBeginGroup = FALSE;
};

#endif  // CHARTCORE_SCRIPT_EDITOR_TEXT_BUFFER_H_
