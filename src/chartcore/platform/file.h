// The framework's file classes: CFile (unbuffered binary file), CMemFile
// (growable in-memory file), CStdioFile (buffered text lines) and CFileFind
// (directory listing with wildcards), plus the atomic save every writer of
// the library uses.
//
// Paths are the library's own: `\` separates folders, as the workspace
// functions build them. On Linux both `\` and `/` are accepted and `\`
// becomes `/` at the system call. Opening reports failure as a result (with
// the reason in a CFileException the caller passes); reading, writing,
// seeking, flushing and closing an open file throw CFileException.
//
//   CFileException error;
//   BOOL saved = chartcore::WriteFileAtomic(L"C:\\ws\\Logic\\Indica\\RSI.dat",
//       [&](CFile& file) {
//         CArchive ar(&file, CArchive::store);
//         record.Serialize(ar);
//         ar.Close();
//       }, &error);
#ifndef CHARTCORE_PLATFORM_FILE_H_
#define CHARTCORE_PLATFORM_FILE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/object.h"
#include "chartcore/platform/types.h"

class CFile;

namespace chartcore {

// ToNativePath: the path as the system wants it: on Linux every `\` becomes
// `/` ("/home/u/ws\Logic\" gives "/home/u/ws/Logic/"); on Windows the path
// is returned unchanged.
CHARTCORE_API CString ToNativePath(const CString& path);

// FileCauseFromOsError: the CFileException cause for a system error number
// (errno on Linux, GetLastError on Windows): ENOENT fileNotFound, ENOSPC
// diskFull, EACCES accessDenied, and so on; genericException otherwise.
CHARTCORE_API int FileCauseFromOsError(long osError);

// WriteFileAtomic: replaces the file at `path` with what `writer` writes.
// The writer gets a CFile open on a new temporary file in the same folder
// (unique name "<name>.~tmp<process>_<n>"). After it returns, the temporary file is
// flushed to disk, closed and renamed over the target, so readers see either
// the old file whole or the new file whole.
//
// Returns TRUE on success. On failure the temporary file is removed, the
// target is exactly as it was, and FALSE is returned with `error` (when
// given) describing the failing step: a CFileException thrown by the writer
// is copied as it is; open, write, flush, close and rename failures give the
// cause of the system error. Any other exception the writer throws
// (CArchiveException, CInvalidArgException, ...) is rethrown unchanged after
// the temporary file is removed, so its own cause reaches the caller.
//
// A writer that archives into the file should Close its CArchive itself; if
// it leaves the last buffer to the archive's destructor and that write
// fails, the failure is still noticed (the file remembers it) and the save
// returns FALSE.
CHARTCORE_API BOOL WriteFileAtomic(const wchar_t* path, const std::function<void(CFile&)>& writer,
                                   CFileException* error = nullptr);

// AppendToFile: adds `count` bytes at the end of the file at `path`, creating
// it when missing (the folder must exist). The bytes go out in one write at
// the end of the file as the system finds it (O_APPEND; append-only access on
// Windows), so processes appending to one file, as to a log, never overwrite
// each other. Returns TRUE when every byte was written and the file closed.
// Otherwise FALSE, with `error` (when given) describing the failing open,
// write or close; on Linux a write that got only part of the bytes out (a
// full disk) is cut off again unless another writer appended after it, so
// the file keeps its old bytes. Writes and closes count for the fault
// injector below. A count of 0 only creates the file.
//   const std::string line = "09:00:01 order sent\n";
//   chartcore::AppendToFile(L"/ws\\Local\\trade.log", line.data(), static_cast<UINT>(line.size()));
CHARTCORE_API BOOL AppendToFile(const wchar_t* path, const void* data, UINT count, CFileException* error = nullptr);

namespace internal {

// ---------------------------------------------------------------------------
// Fault injection (for tests of failure paths)
// ---------------------------------------------------------------------------
// The framework's file code counts its writes (CFile/CStdioFile Write and
// WriteString, AppendToFile), flushes (Flush and the disk sync of
// WriteFileAtomic), renames (CFile::Rename, WriteFileAtomic, _wrename,
// MoveFileW) and closes (Close, AppendToFile) separately. SetFileFaultInjector arms a fault: counting from the
// call, the nth operation of that kind fails as if the system had returned
// osError (errno on Linux). A failing close still releases the file.
// nth = 0 disarms that kind. ResetFileFaultInjector disarms all and zeroes
// the counters. The counters are process-wide (atomic).
enum class FileOperation { kWrite = 0, kFlush = 1, kRename = 2, kClose = 3 };
CHARTCORE_API void SetFileFaultInjector(FileOperation op, int nth, long osError);
CHARTCORE_API void ResetFileFaultInjector();
// GetFileOperationCount: operations of that kind since the last reset.
CHARTCORE_API int GetFileOperationCount(FileOperation op);
// CheckFileFault: counts one operation of that kind; returns the injected
// error number when this one must fail, else 0. Used by the file code.
CHARTCORE_API long CheckFileFault(FileOperation op);

// NativePathBytes: the path for the system call (Linux: UTF-8 with `/`).
CHARTCORE_API std::string NativePathBytes(const wchar_t* path);

// The atomic save's view of a CFile's handle and failure flag. A befriended
// class rather than the exported function itself: MinGW's GCC rejects a
// friend declaration of a dllimport function.
struct AtomicSaveAccess;

}  // namespace internal
}  // namespace chartcore

// ---------------------------------------------------------------------------
// CFile
// ---------------------------------------------------------------------------

// CFile: a binary file without a buffer of its own (every Read and Write is
// a system call; wrap it in a CArchive for buffered access).
class CHARTCORE_API CFile : public CObject {
  DECLARE_DYNAMIC(CFile)

 public:
  enum OpenFlags : UINT {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    shareCompat = 0x0000,
    shareExclusive = 0x0010,
    shareDenyWrite = 0x0020,
    shareDenyRead = 0x0030,
    shareDenyNone = 0x0040,
    modeNoInherit = 0x0080,
    modeCreate = 0x1000,
    modeNoTruncate = 0x2000,
    typeText = 0x4000,
    typeBinary = 0x8000,
  };
  enum SeekPosition : UINT { begin = 0, current = 1, end = 2 };

  // CFile: a closed file.
  CFile();
  // CFile: opens at once; failure throws the CFileException Open fills.
  CFile(const wchar_t* lpszFileName, UINT nOpenFlags);
  // ~CFile: closes an open file; errors are ignored (call Close to see them).
  ~CFile() override;
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // Open: opens lpszFileName with the mode flags: modeRead / modeWrite /
  // modeReadWrite; modeCreate creates the file (emptying an existing one
  // unless modeNoTruncate); without modeCreate the file must exist. Share
  // flags are honoured on Windows and ignored on Linux. A directory cannot be
  // opened (accessDenied). Returns nonzero on success; on failure returns
  // FALSE and fills pError (cause, system error, file name). A file still
  // open is closed first.
  virtual BOOL Open(const wchar_t* lpszFileName, UINT nOpenFlags, CFileException* pError = nullptr);

  // Read: reads up to nCount bytes; returns the count read (0 at the end).
  virtual UINT Read(void* lpBuf, UINT nCount);
  // Write: writes all nCount bytes or throws (diskFull when the disk is full).
  virtual void Write(const void* lpBuf, UINT nCount);
  // Seek: moves to lOff from begin, current or end; returns the new position.
  // A position before the start throws badSeek.
  virtual ULONGLONG Seek(LONGLONG lOff, UINT nFrom);
  void SeekToBegin() { Seek(0, begin); }
  ULONGLONG SeekToEnd() { return Seek(0, end); }
  virtual ULONGLONG GetLength() const;
  virtual ULONGLONG GetPosition() const;
  // SetLength: cuts or extends (with zeros) the file to dwNewLen bytes.
  virtual void SetLength(ULONGLONG dwNewLen);
  // Flush: commits the file's data to the disk.
  virtual void Flush();
  // Close: closes the file; a failure throws (the file is closed anyway).
  virtual void Close();
  // Abort: closes without reporting errors; a closed file is left alone.
  virtual void Abort();

  // GetFilePath: the path as it was opened; GetFileName: its last part;
  // GetFileTitle: the last part without its extension.
  virtual CString GetFilePath() const;
  CString GetFileName() const;
  CString GetFileTitle() const;
  virtual void SetFilePath(const wchar_t* lpszNewName);

  // IsOpen: TRUE while a file is open.
  virtual BOOL IsOpen() const;

  // Rename, Remove: the file system operations, throwing CFileException on
  // failure. Rename replaces an existing target on Linux.
  static void Rename(const wchar_t* lpszOldName, const wchar_t* lpszNewName);
  static void Remove(const wchar_t* lpszFileName);

 protected:
  // Throws the CFileException for a system error and remembers the failure.
  [[noreturn]] void ThrowOsError(long osError) const;
  void CheckOpen() const;

  std::intptr_t m_hFile;  // file descriptor (Linux) or HANDLE (Windows); -1 when closed
  CString m_strFileName;
  // Set when a Write, Flush or Close of this file has failed; WriteFileAtomic
  // refuses to publish such a file.
  mutable bool m_bFailed;

  friend struct chartcore::internal::AtomicSaveAccess;
};

// ---------------------------------------------------------------------------
// CMemFile
// ---------------------------------------------------------------------------

// CMemFile: a file in memory. It grows as it is written (geometrically, in
// multiples of nGrowBytes); reading past the end returns fewer bytes.
class CHARTCORE_API CMemFile : public CFile {
  DECLARE_DYNAMIC(CMemFile)

 public:
  // CMemFile: an empty memory file.
  explicit CMemFile(UINT nGrowBytes = 1024);
  // CMemFile: a memory file over a caller's block (see Attach).
  CMemFile(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes = 0);
  ~CMemFile() override;

  // Attach: uses lpBuffer as the file. With nGrowBytes 0 the file holds the
  // block's nBufferSize bytes and cannot grow (writing past the end throws
  // CFileException diskFull). With nGrowBytes > 0 the file starts empty, and
  // when it outgrows the block its contents move to a new malloc'ed block
  // that the file owns; the caller's block is never freed or reallocated by
  // the file.
  void Attach(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes = 0);
  // Detach: ends the file and hands its block to the caller (nullptr when
  // nothing was allocated). A block the file allocated must be released with
  // free(); a block given to Attach is the caller's own. Read GetLength first.
  BYTE* Detach();

  BOOL Open(const wchar_t* lpszFileName, UINT nOpenFlags, CFileException* pError = nullptr) override;
  UINT Read(void* lpBuf, UINT nCount) override;
  void Write(const void* lpBuf, UINT nCount) override;
  // Seek: any position from 0 on is allowed; writing past the end fills the
  // gap with zeros.
  ULONGLONG Seek(LONGLONG lOff, UINT nFrom) override;
  ULONGLONG GetLength() const override;
  ULONGLONG GetPosition() const override;
  void SetLength(ULONGLONG dwNewLen) override;
  void Flush() override;
  // Close: frees an owned block and empties the file.
  void Close() override;
  void Abort() override;
  BOOL IsOpen() const override { return TRUE; }

  // GetBufferPtr-style access: the bytes of the file (valid until it grows).
  const BYTE* GetData() const { return m_lpBuffer; }

 private:
  // The archive uses a plain memory file's block as its own buffer.
  friend class CArchive;

  void GrowFile(size_t nNewCapacity);
  void FreeOwned();

  BYTE* m_lpBuffer;
  size_t m_nBufferSize;
  size_t m_nFileSize;
  size_t m_nPosition;
  UINT m_nGrowBytes;
  bool m_bOwned;
};

// ---------------------------------------------------------------------------
// CStdioFile
// ---------------------------------------------------------------------------

// CStdioFile: a buffered file read and written as text lines. Text is UTF-8
// on Linux (a UTF-8 byte-order mark at the start is skipped) and the system
// code page on Windows. In text mode (the default; typeBinary turns it off)
// a line may end in "\n" or "\r\n".
class CHARTCORE_API CStdioFile : public CFile {
  DECLARE_DYNAMIC(CStdioFile)

 public:
  CStdioFile();
  // CStdioFile: opens at once; failure throws CFileException.
  CStdioFile(const wchar_t* lpszFileName, UINT nOpenFlags);
  ~CStdioFile() override;

  BOOL Open(const wchar_t* lpszFileName, UINT nOpenFlags, CFileException* pError = nullptr) override;

  // ReadString: the next line without its line end; FALSE at the end of the
  // file (with rString emptied).
  virtual BOOL ReadString(CString& rString);
  // ReadString: at most nMax - 1 characters of the next line, the "\n" kept
  // when it fits (a "\r" before it dropped in text mode), terminated; a
  // longer line continues in the next call. nullptr at the end of the file.
  virtual wchar_t* ReadString(wchar_t* lpsz, UINT nMax);
  // WriteString: writes the text encoded for the file; a "\n" becomes the
  // platform's line end in text mode ("\r\n" on Windows, "\n" on Linux).
  virtual void WriteString(const wchar_t* lpsz);

  UINT Read(void* lpBuf, UINT nCount) override;
  void Write(const void* lpBuf, UINT nCount) override;
  ULONGLONG Seek(LONGLONG lOff, UINT nFrom) override;
  ULONGLONG GetLength() const override;
  ULONGLONG GetPosition() const override;
  void SetLength(ULONGLONG dwNewLen) override;
  // Flush: hands the buffered text to the system (no disk sync).
  void Flush() override;
  void Close() override;
  void Abort() override;
  BOOL IsOpen() const override { return m_pStream != nullptr; }

  FILE* m_pStream;

 private:
  bool ReadLineBytes(std::string& line, bool& sawNewline);
  void SkipBomIfAtStart();
  [[noreturn]] void ThrowStreamError(long osError);

  bool m_bText;
  bool m_bAtStart;
  std::wstring m_pending;  // rest of a line a bounded ReadString did not take
};

// ---------------------------------------------------------------------------
// CFileFind
// ---------------------------------------------------------------------------

// CFileFind: lists the entries of a folder that match a pattern. `*` matches
// any run of characters and `?` one character (or none before a dot or at
// the end), a trailing ".*" also matches names without an extension (so
// "*.*" matches every name), and letters match regardless of case, as on
// Windows. "." and ".." are listed like other entries; the entries come in
// name order, ignoring case, as an NTFS folder lists them, on every file
// system.
//
//   CFileFind finder;
//   BOOL more = finder.FindFile(L"C:\\ws\\Logic\\Indica\\*.dat");
//   while (more) {
//     more = finder.FindNextFile();
//     if (!finder.IsDots() && !finder.IsDirectory()) Load(finder.GetFilePath());
//   }
class CHARTCORE_API CFileFind : public CObject {
  DECLARE_DYNAMIC(CFileFind)

 public:
  CFileFind();
  ~CFileFind() override;

  // FindFile: starts a search (nullptr means "*.*" in the current folder).
  // Returns TRUE when at least one entry matches; the first is reached with
  // FindNextFile.
  virtual BOOL FindFile(const wchar_t* pstrName = nullptr, DWORD dwUnused = 0);
  // FindNextFile: moves to the next entry; returns FALSE when the entry it
  // moved to is the last one (which is still valid to inspect).
  virtual BOOL FindNextFile();
  void Close();

  // Of the current entry (empty / FALSE / 0 before the first FindNextFile):
  CString GetFileName() const;
  // GetFilePath: the folder of the pattern, a separator, and the name.
  CString GetFilePath() const;
  // GetFileTitle: the name without its extension.
  CString GetFileTitle() const;
  // GetRoot: the folder part of the pattern ("" for a bare pattern).
  CString GetRoot() const;
  ULONGLONG GetLength() const;
  BOOL IsDirectory() const;
  BOOL IsDots() const;
  BOOL IsReadOnly() const;
  BOOL IsHidden() const;
  // MatchesMask: TRUE when the entry has any of the FILE_ATTRIBUTE_ bits.
  BOOL MatchesMask(DWORD dwMask) const;

 private:
  struct Entry {
    CString name;
    ULONGLONG length;
    DWORD attributes;
  };
  std::vector<Entry> m_entries;
  CString m_strRoot;
  wchar_t m_chSeparator;
  std::ptrdiff_t m_nCurrent;  // -1 before the first FindNextFile
};

namespace chartcore {

// MatchFileMask: TRUE when a file name matches a CFileFind pattern (the rules
// above: `*`, `?`, a trailing ".*" and case-insensitive letters).
CHARTCORE_API BOOL MatchFileMask(const wchar_t* name, const wchar_t* mask);

}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_FILE_H_
