#include "chartcore/platform/file.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "chartcore/platform/chartype.h"
#include "chartcore/platform/filesystem.h"
#include "chartcore/platform/text_codec.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#else
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#endif

// ---------------------------------------------------------------------------
// Paths
// ---------------------------------------------------------------------------

namespace chartcore {

CString ToNativePath(const CString& path) {
#if defined(_WIN32)
  return path;
#else
  CString native(path);
  native.Replace(L'\\', L'/');
  return native;
#endif
}

namespace internal {

std::string NativePathBytes(const wchar_t* path) {
  if (path == nullptr) return std::string();
  std::string bytes = WideToUtf8(path, std::char_traits<wchar_t>::length(path));
  std::replace(bytes.begin(), bytes.end(), '\\', '/');
  return bytes;
}

}  // namespace internal

int FileCauseFromOsError(long osError) {
#if defined(_WIN32)
  switch (osError) {
    case ERROR_SUCCESS: return CFileException::none;
    case ERROR_FILE_NOT_FOUND: return CFileException::fileNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE: return CFileException::badPath;
    case ERROR_TOO_MANY_OPEN_FILES: return CFileException::tooManyOpenFiles;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS: return CFileException::accessDenied;
    case ERROR_INVALID_HANDLE: return CFileException::invalidFile;
    case ERROR_CURRENT_DIRECTORY: return CFileException::removeCurrentDir;
    case ERROR_CANNOT_MAKE: return CFileException::directoryFull;
    case ERROR_NEGATIVE_SEEK:
    case ERROR_SEEK_ON_DEVICE: return CFileException::badSeek;
    case ERROR_CRC:
    case ERROR_READ_FAULT:
    case ERROR_WRITE_FAULT:
    case ERROR_GEN_FAILURE: return CFileException::hardIO;
    case ERROR_SHARING_VIOLATION: return CFileException::sharingViolation;
    case ERROR_LOCK_VIOLATION: return CFileException::lockViolation;
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_DISK_FULL: return CFileException::diskFull;
    case ERROR_HANDLE_EOF: return CFileException::endOfFile;
    default: return CFileException::genericException;
  }
#else
  switch (osError) {
    case 0: return CFileException::none;
    case ENOENT: return CFileException::fileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
    case EINVAL: return CFileException::badPath;
    case EMFILE:
    case ENFILE: return CFileException::tooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EEXIST: return CFileException::accessDenied;
    case EBADF: return CFileException::invalidFile;
    case ESPIPE:
    case EOVERFLOW: return CFileException::badSeek;
    case EIO: return CFileException::hardIO;
    case EBUSY:
    case ETXTBSY: return CFileException::sharingViolation;
    case ENOLCK: return CFileException::lockViolation;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return CFileException::diskFull;
    default: return CFileException::genericException;
  }
#endif
}

// ---------------------------------------------------------------------------
// Fault injection
// ---------------------------------------------------------------------------

namespace internal {
namespace {

constexpr int kOperationKinds = 4;

struct FaultSlot {
  std::atomic<int> count{0};
  std::atomic<int> failAt{0};  // 0: disarmed
  std::atomic<long> osError{0};
};

FaultSlot& Slot(FileOperation op) {
  static FaultSlot slots[kOperationKinds];
  return slots[static_cast<int>(op)];
}

}  // namespace

void SetFileFaultInjector(FileOperation op, int nth, long osError) {
  FaultSlot& slot = Slot(op);
  slot.osError.store(osError);
  slot.failAt.store(nth > 0 ? slot.count.load() + nth : 0);
}

void ResetFileFaultInjector() {
  for (int i = 0; i < kOperationKinds; ++i) {
    FaultSlot& slot = Slot(static_cast<FileOperation>(i));
    slot.failAt.store(0);
    slot.count.store(0);
    slot.osError.store(0);
  }
}

int GetFileOperationCount(FileOperation op) { return Slot(op).count.load(); }

long CheckFileFault(FileOperation op) {
  FaultSlot& slot = Slot(op);
  const int number = slot.count.fetch_add(1) + 1;
  const int failAt = slot.failAt.load();
  if (failAt == 0 || number != failAt) return 0;
  const long err = slot.osError.load();
#if defined(_WIN32)
  return err != 0 ? err : static_cast<long>(ERROR_GEN_FAILURE);
#else
  return err != 0 ? err : EIO;
#endif
}

}  // namespace internal
}  // namespace chartcore

using chartcore::internal::CheckFileFault;
using chartcore::internal::FileOperation;

namespace {

constexpr std::intptr_t kNoFile = -1;

#if defined(_WIN32)
long LastOsError() { return static_cast<long>(::GetLastError()); }
#endif

void FillException(CFileException* pError, long osError, const wchar_t* name) {
  if (pError == nullptr) return;
  pError->m_cause = chartcore::FileCauseFromOsError(osError);
  pError->m_lOsError = osError;
  pError->m_strFileName = name ? name : L"";
}

// The part of a path after its last separator.
CString LastPathPart(const CString& path) {
  const int slash = std::max(path.ReverseFind(L'\\'), path.ReverseFind(L'/'));
  return path.Mid(slash + 1);
}

// A name without its extension (a leading dot is part of the name).
CString StripExtension(const CString& name) {
  const int dot = name.ReverseFind(L'.');
  return dot > 0 ? name.Left(dot) : name;
}

#if defined(_WIN32)

HANDLE AsHandle(std::intptr_t h) { return reinterpret_cast<HANDLE>(h); }

// Opens through the wide system call; returns kNoFile and the error on failure.
std::intptr_t OpenHandle(const wchar_t* name, UINT flags, long& osError) {
  DWORD access = 0;
  switch (flags & 3) {
    case CFile::modeRead: access = GENERIC_READ; break;
    case CFile::modeWrite: access = GENERIC_WRITE; break;
    case CFile::modeReadWrite: access = GENERIC_READ | GENERIC_WRITE; break;
    default: osError = ERROR_INVALID_PARAMETER; return kNoFile;
  }
  DWORD share = 0;
  switch (flags & 0x70) {
    case CFile::shareDenyWrite: share = FILE_SHARE_READ; break;
    case CFile::shareDenyRead: share = FILE_SHARE_WRITE; break;
    case CFile::shareDenyNone: share = FILE_SHARE_READ | FILE_SHARE_WRITE; break;
    default: share = 0; break;  // compatibility mode is exclusive
  }
  DWORD disposition = OPEN_EXISTING;
  if (flags & CFile::modeCreate) disposition = (flags & CFile::modeNoTruncate) ? OPEN_ALWAYS : CREATE_ALWAYS;
  SECURITY_ATTRIBUTES sa = {sizeof(sa), nullptr, (flags & CFile::modeNoInherit) ? FALSE : TRUE};
  HANDLE h = ::CreateFileW(name, access, share, &sa, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) {
    osError = static_cast<long>(::GetLastError());
    return kNoFile;
  }
  return reinterpret_cast<std::intptr_t>(h);
}

#else

// Opens through open(2) with the mode flags; returns kNoFile and errno on
// failure. Descriptors are never inherited by programs the library starts.
std::intptr_t OpenHandle(const wchar_t* name, UINT flags, long& osError) {
  int oflags = O_CLOEXEC;
  switch (flags & 3) {
    case CFile::modeRead: oflags |= O_RDONLY; break;
    case CFile::modeWrite: oflags |= O_WRONLY; break;
    case CFile::modeReadWrite: oflags |= O_RDWR; break;
    default: osError = EINVAL; return kNoFile;
  }
  if (flags & CFile::modeCreate) {
    oflags |= O_CREAT;
    if (!(flags & CFile::modeNoTruncate)) oflags |= O_TRUNC;
  }
  const std::string path = chartcore::internal::NativePathBytes(name);
  int fd;
  do {
    fd = ::open(path.c_str(), oflags, 0666);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) {
    osError = errno;
    return kNoFile;
  }
  struct stat st;
  if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
    ::close(fd);
    osError = EISDIR;
    return kNoFile;
  }
  return fd;
}

#endif

// Opens for CFile::Open and CStdioFile::Open alike: validates the name and
// fills pError on failure.
std::intptr_t OpenForFile(const wchar_t* name, UINT flags, CFileException* pError) {
  long osError = 0;
  std::intptr_t h = kNoFile;
  if (name == nullptr || *name == L'\0') {
#if defined(_WIN32)
    osError = ERROR_PATH_NOT_FOUND;
#else
    osError = ENOENT;
#endif
  } else {
    h = OpenHandle(name, flags, osError);
  }
  if (h == kNoFile) FillException(pError, osError, name);
  return h;
}

}  // namespace

// ---------------------------------------------------------------------------
// CFile
// ---------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CFile, CObject)

CFile::CFile() : m_hFile(kNoFile), m_bFailed(false) {}

CFile::CFile(const wchar_t* lpszFileName, UINT nOpenFlags) : m_hFile(kNoFile), m_bFailed(false) {
  CFileException error;
  if (!CFile::Open(lpszFileName, nOpenFlags, &error)) throw error;
}

CFile::~CFile() {
  if (m_hFile != kNoFile) CFile::Abort();
}

BOOL CFile::Open(const wchar_t* lpszFileName, UINT nOpenFlags, CFileException* pError) {
  if (m_hFile != kNoFile) CFile::Abort();
  m_bFailed = false;
  const std::intptr_t h = OpenForFile(lpszFileName, nOpenFlags, pError);
  if (h == kNoFile) return FALSE;
  m_hFile = h;
  m_strFileName = lpszFileName;
  return TRUE;
}

void CFile::ThrowOsError(long osError) const {
  m_bFailed = true;
  AfxThrowFileException(chartcore::FileCauseFromOsError(osError), osError, m_strFileName.GetString());
}

void CFile::CheckOpen() const {
  if (m_hFile == kNoFile) {
    m_bFailed = true;
    AfxThrowFileException(CFileException::invalidFile, -1, m_strFileName.GetString());
  }
}

BOOL CFile::IsOpen() const { return m_hFile != kNoFile; }

UINT CFile::Read(void* lpBuf, UINT nCount) {
  CheckOpen();
  if (nCount == 0) return 0;
#if defined(_WIN32)
  DWORD got = 0;
  if (!::ReadFile(AsHandle(m_hFile), lpBuf, nCount, &got, nullptr)) {
    const long err = LastOsError();
    if (err == ERROR_BROKEN_PIPE) return 0;
    ThrowOsError(err);
  }
  return got;
#else
  char* out = static_cast<char*>(lpBuf);
  UINT done = 0;
  while (done < nCount) {
    const ssize_t got = ::read(static_cast<int>(m_hFile), out + done, nCount - done);
    if (got < 0) {
      if (errno == EINTR) continue;
      ThrowOsError(errno);
    }
    if (got == 0) break;
    done += static_cast<UINT>(got);
  }
  return done;
#endif
}

void CFile::Write(const void* lpBuf, UINT nCount) {
  CheckOpen();
  if (const long injected = CheckFileFault(FileOperation::kWrite)) ThrowOsError(injected);
  const char* in = static_cast<const char*>(lpBuf);
  UINT done = 0;
  while (done < nCount) {
#if defined(_WIN32)
    DWORD put = 0;
    if (!::WriteFile(AsHandle(m_hFile), in + done, nCount - done, &put, nullptr)) ThrowOsError(LastOsError());
    if (put == 0) ThrowOsError(ERROR_DISK_FULL);
#else
    const ssize_t put = ::write(static_cast<int>(m_hFile), in + done, nCount - done);
    if (put < 0) {
      if (errno == EINTR) continue;
      ThrowOsError(errno);
    }
    if (put == 0) ThrowOsError(ENOSPC);
#endif
    done += static_cast<UINT>(put);
  }
}

ULONGLONG CFile::Seek(LONGLONG lOff, UINT nFrom) {
  CheckOpen();
#if defined(_WIN32)
  DWORD method = FILE_BEGIN;
  if (nFrom == current) method = FILE_CURRENT;
  else if (nFrom == end) method = FILE_END;
  else if (nFrom != begin) ThrowOsError(ERROR_INVALID_PARAMETER);
  LARGE_INTEGER dist;
  dist.QuadPart = lOff;
  LARGE_INTEGER pos;
  if (!::SetFilePointerEx(AsHandle(m_hFile), dist, &pos, method)) ThrowOsError(LastOsError());
  return static_cast<ULONGLONG>(pos.QuadPart);
#else
  int whence = SEEK_SET;
  if (nFrom == current) whence = SEEK_CUR;
  else if (nFrom == end) whence = SEEK_END;
  else if (nFrom != begin) ThrowOsError(ESPIPE);
  const off_t pos = ::lseek(static_cast<int>(m_hFile), static_cast<off_t>(lOff), whence);
  if (pos < 0) ThrowOsError(errno == EINVAL ? ESPIPE : errno);  // before the start
  return static_cast<ULONGLONG>(pos);
#endif
}

ULONGLONG CFile::GetLength() const {
  CheckOpen();
#if defined(_WIN32)
  LARGE_INTEGER size;
  if (!::GetFileSizeEx(AsHandle(m_hFile), &size)) ThrowOsError(LastOsError());
  return static_cast<ULONGLONG>(size.QuadPart);
#else
  struct stat st;
  if (::fstat(static_cast<int>(m_hFile), &st) != 0) ThrowOsError(errno);
  return static_cast<ULONGLONG>(st.st_size);
#endif
}

ULONGLONG CFile::GetPosition() const {
  CheckOpen();
#if defined(_WIN32)
  LARGE_INTEGER zero;
  zero.QuadPart = 0;
  LARGE_INTEGER pos;
  if (!::SetFilePointerEx(AsHandle(m_hFile), zero, &pos, FILE_CURRENT)) ThrowOsError(LastOsError());
  return static_cast<ULONGLONG>(pos.QuadPart);
#else
  const off_t pos = ::lseek(static_cast<int>(m_hFile), 0, SEEK_CUR);
  if (pos < 0) ThrowOsError(errno);
  return static_cast<ULONGLONG>(pos);
#endif
}

void CFile::SetLength(ULONGLONG dwNewLen) {
  CheckOpen();
#if defined(_WIN32)
  const ULONGLONG pos = GetPosition();
  Seek(static_cast<LONGLONG>(dwNewLen), begin);
  if (!::SetEndOfFile(AsHandle(m_hFile))) ThrowOsError(LastOsError());
  Seek(static_cast<LONGLONG>(pos), begin);
#else
  if (dwNewLen > static_cast<ULONGLONG>(std::numeric_limits<off_t>::max())) ThrowOsError(EFBIG);
  int r;
  do {
    r = ::ftruncate(static_cast<int>(m_hFile), static_cast<off_t>(dwNewLen));
  } while (r != 0 && errno == EINTR);
  if (r != 0) ThrowOsError(errno);
#endif
}

void CFile::Flush() {
  if (m_hFile == kNoFile) return;
  if (const long injected = CheckFileFault(FileOperation::kFlush)) ThrowOsError(injected);
#if defined(_WIN32)
  if (!::FlushFileBuffers(AsHandle(m_hFile))) ThrowOsError(LastOsError());
#else
  int r;
  do {
    r = ::fsync(static_cast<int>(m_hFile));
  } while (r != 0 && errno == EINTR);
  // Pipes and devices cannot be synced; there is nothing to commit then.
  if (r != 0 && errno != EINVAL && errno != EROFS) ThrowOsError(errno);
#endif
}

void CFile::Close() {
  if (m_hFile == kNoFile) return;
  const long injected = CheckFileFault(FileOperation::kClose);
  const std::intptr_t h = m_hFile;
  m_hFile = kNoFile;
#if defined(_WIN32)
  const long err = ::CloseHandle(AsHandle(h)) ? 0 : LastOsError();
#else
  // The descriptor is released even when close reports an error; retrying
  // could close a descriptor another thread has just been given.
  const long err = ::close(static_cast<int>(h)) == 0 || errno == EINTR ? 0 : errno;
#endif
  if (injected) ThrowOsError(injected);
  if (err) ThrowOsError(err);
}

void CFile::Abort() {
  if (m_hFile == kNoFile) return;
#if defined(_WIN32)
  ::CloseHandle(AsHandle(m_hFile));
#else
  ::close(static_cast<int>(m_hFile));
#endif
  m_hFile = kNoFile;
}

CString CFile::GetFilePath() const { return m_strFileName; }

CString CFile::GetFileName() const { return LastPathPart(GetFilePath()); }

CString CFile::GetFileTitle() const { return StripExtension(GetFileName()); }

void CFile::SetFilePath(const wchar_t* lpszNewName) { m_strFileName = lpszNewName; }

void CFile::Rename(const wchar_t* lpszOldName, const wchar_t* lpszNewName) {
#if defined(_WIN32)
  long err = CheckFileFault(FileOperation::kRename);
  if (err == 0 && !::MoveFileW(lpszOldName, lpszNewName)) err = LastOsError();
#else
  // The runtime's rename: it counts an injected fault and, as on Windows,
  // never replaces an existing name.
  const long err = ::_wrename(lpszOldName, lpszNewName) == 0 ? 0 : errno;
#endif
  if (err) AfxThrowFileException(chartcore::FileCauseFromOsError(err), err, lpszOldName);
}

void CFile::Remove(const wchar_t* lpszFileName) {
#if defined(_WIN32)
  if (!::DeleteFileW(lpszFileName)) {
    const long err = LastOsError();
    AfxThrowFileException(chartcore::FileCauseFromOsError(err), err, lpszFileName);
  }
#else
  const std::string path = chartcore::internal::NativePathBytes(lpszFileName);
  if (::unlink(path.c_str()) != 0) {
    const long err = errno == EISDIR ? EACCES : errno;
    AfxThrowFileException(chartcore::FileCauseFromOsError(err), err, lpszFileName);
  }
#endif
}

// ---------------------------------------------------------------------------
// CMemFile
// ---------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CMemFile, CFile)

CMemFile::CMemFile(UINT nGrowBytes)
    : m_lpBuffer(nullptr), m_nBufferSize(0), m_nFileSize(0), m_nPosition(0), m_nGrowBytes(nGrowBytes), m_bOwned(true) {
  if (m_nGrowBytes == 0) m_nGrowBytes = 1024;
}

CMemFile::CMemFile(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes)
    : m_lpBuffer(nullptr), m_nBufferSize(0), m_nFileSize(0), m_nPosition(0), m_nGrowBytes(0), m_bOwned(true) {
  Attach(lpBuffer, nBufferSize, nGrowBytes);
}

CMemFile::~CMemFile() { FreeOwned(); }

void CMemFile::FreeOwned() {
  if (m_bOwned) std::free(m_lpBuffer);
  m_lpBuffer = nullptr;
  m_nBufferSize = m_nFileSize = m_nPosition = 0;
  m_bOwned = true;
}

void CMemFile::Attach(BYTE* lpBuffer, UINT nBufferSize, UINT nGrowBytes) {
  FreeOwned();
  m_lpBuffer = lpBuffer;
  m_nBufferSize = lpBuffer != nullptr ? nBufferSize : 0;
  m_nGrowBytes = nGrowBytes;
  m_nFileSize = nGrowBytes == 0 ? m_nBufferSize : 0;
  m_bOwned = lpBuffer == nullptr;
}

BYTE* CMemFile::Detach() {
  BYTE* block = m_lpBuffer;
  m_lpBuffer = nullptr;
  m_bOwned = true;
  FreeOwned();
  if (m_nGrowBytes == 0) m_nGrowBytes = 1024;
  return block;
}

BOOL CMemFile::Open(const wchar_t* lpszFileName, UINT, CFileException* pError) {
  // A memory file has no name to open.
#if defined(_WIN32)
  FillException(pError, ERROR_INVALID_HANDLE, lpszFileName);
#else
  FillException(pError, EBADF, lpszFileName);
#endif
  return FALSE;
}

void CMemFile::GrowFile(size_t nNeeded) {
  if (nNeeded <= m_nBufferSize) return;
  if (m_nGrowBytes == 0) {
#if defined(_WIN32)
    ThrowOsError(ERROR_DISK_FULL);
#else
    ThrowOsError(ENOSPC);
#endif
  }
  // Half again the current block, in whole multiples of the grow step, so
  // writing n bytes a few at a time costs amortised O(n).
  size_t capacity = std::max(nNeeded, m_nBufferSize + m_nBufferSize / 2);
  const size_t step = m_nGrowBytes;
  if (capacity > std::numeric_limits<size_t>::max() - step) AfxThrowMemoryException();
  capacity = (capacity + step - 1) / step * step;
  BYTE* fresh;
  if (m_bOwned) {
    fresh = static_cast<BYTE*>(std::realloc(m_lpBuffer, capacity));
    if (fresh == nullptr) AfxThrowMemoryException();
  } else {
    fresh = static_cast<BYTE*>(std::malloc(capacity));
    if (fresh == nullptr) AfxThrowMemoryException();
    if (m_nFileSize != 0) std::memcpy(fresh, m_lpBuffer, m_nFileSize);
    m_bOwned = true;
  }
  m_lpBuffer = fresh;
  m_nBufferSize = capacity;
}

UINT CMemFile::Read(void* lpBuf, UINT nCount) {
  if (m_nPosition >= m_nFileSize || nCount == 0) return 0;
  const size_t take = std::min<size_t>(nCount, m_nFileSize - m_nPosition);
  std::memcpy(lpBuf, m_lpBuffer + m_nPosition, take);
  m_nPosition += take;
  return static_cast<UINT>(take);
}

void CMemFile::Write(const void* lpBuf, UINT nCount) {
  if (const long injected = CheckFileFault(FileOperation::kWrite)) ThrowOsError(injected);
  if (nCount == 0) return;
  const size_t end = m_nPosition + nCount;
  if (end > m_nBufferSize) GrowFile(end);
  if (m_nPosition > m_nFileSize) std::memset(m_lpBuffer + m_nFileSize, 0, m_nPosition - m_nFileSize);
  std::memcpy(m_lpBuffer + m_nPosition, lpBuf, nCount);
  m_nPosition = end;
  if (end > m_nFileSize) m_nFileSize = end;
}

ULONGLONG CMemFile::Seek(LONGLONG lOff, UINT nFrom) {
  LONGLONG base = 0;
  if (nFrom == current) base = static_cast<LONGLONG>(m_nPosition);
  else if (nFrom == end) base = static_cast<LONGLONG>(m_nFileSize);
  else if (nFrom != begin) AfxThrowFileException(CFileException::badSeek, -1, m_strFileName.GetString());
  if ((lOff < 0 && base + lOff < 0) || (lOff > 0 && lOff > std::numeric_limits<LONGLONG>::max() - base) ||
      static_cast<ULONGLONG>(base + lOff) > std::numeric_limits<size_t>::max())
    AfxThrowFileException(CFileException::badSeek, -1, m_strFileName.GetString());
  m_nPosition = static_cast<size_t>(base + lOff);
  return m_nPosition;
}

ULONGLONG CMemFile::GetLength() const { return m_nFileSize; }

ULONGLONG CMemFile::GetPosition() const { return m_nPosition; }

void CMemFile::SetLength(ULONGLONG dwNewLen) {
  if (dwNewLen > std::numeric_limits<size_t>::max()) AfxThrowMemoryException();
  const size_t length = static_cast<size_t>(dwNewLen);
  if (length > m_nBufferSize) GrowFile(length);
  if (length > m_nFileSize) std::memset(m_lpBuffer + m_nFileSize, 0, length - m_nFileSize);
  m_nFileSize = length;
  if (m_nPosition > length) m_nPosition = length;
}

void CMemFile::Flush() {
  if (const long injected = CheckFileFault(FileOperation::kFlush)) ThrowOsError(injected);
}

void CMemFile::Close() { FreeOwned(); }

void CMemFile::Abort() { FreeOwned(); }

// ---------------------------------------------------------------------------
// CStdioFile
// ---------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CStdioFile, CFile)

CStdioFile::CStdioFile() : m_pStream(nullptr), m_bText(true), m_bAtStart(false) {}

CStdioFile::CStdioFile(const wchar_t* lpszFileName, UINT nOpenFlags)
    : m_pStream(nullptr), m_bText(true), m_bAtStart(false) {
  CFileException error;
  if (!CStdioFile::Open(lpszFileName, nOpenFlags, &error)) throw error;
}

CStdioFile::~CStdioFile() {
  if (m_pStream != nullptr) CStdioFile::Abort();
}

BOOL CStdioFile::Open(const wchar_t* lpszFileName, UINT nOpenFlags, CFileException* pError) {
  if (m_pStream != nullptr) CStdioFile::Abort();
  m_bFailed = false;
  m_pending.clear();
  const std::intptr_t h = OpenForFile(lpszFileName, nOpenFlags, pError);
  if (h == kNoFile) return FALSE;
  const char* mode = (nOpenFlags & 3) == modeRead ? "rb" : ((nOpenFlags & 3) == modeWrite ? "wb" : "r+b");
#if defined(_WIN32)
  // The CRT stream is opened in binary mode: line ends are written by
  // WriteString itself, so both modes behave the same on every platform.
  const int fd = ::_open_osfhandle(h, _O_BINARY | ((nOpenFlags & 3) == modeRead ? _O_RDONLY : 0));
  FILE* stream = fd < 0 ? nullptr : ::_fdopen(fd, mode);
  if (stream == nullptr) {
    const long err = fd < 0 ? static_cast<long>(ERROR_TOO_MANY_OPEN_FILES) : static_cast<long>(ERROR_NOT_ENOUGH_MEMORY);
    if (fd < 0) ::CloseHandle(AsHandle(h)); else ::_close(fd);
    FillException(pError, err, lpszFileName);
    return FALSE;
  }
#else
  // "wb" on an existing descriptor does not truncate: open(2) already did
  // (or, with modeNoTruncate, deliberately did not).
  FILE* stream = ::fdopen(static_cast<int>(h), mode);
  if (stream == nullptr) {
    const long err = errno;
    ::close(static_cast<int>(h));
    FillException(pError, err, lpszFileName);
    return FALSE;
  }
#endif
  m_pStream = stream;
  m_hFile = h;
  m_strFileName = lpszFileName;
  m_bText = (nOpenFlags & typeBinary) == 0;
  m_bAtStart = true;
  return TRUE;
}

void CStdioFile::ThrowStreamError(long osError) {
  if (m_pStream != nullptr) std::clearerr(m_pStream);
  ThrowOsError(osError != 0 ? osError : EIO);
}

void CStdioFile::SkipBomIfAtStart() {
  if (!m_bAtStart) return;
  m_bAtStart = false;
  unsigned char bom[3];
  const size_t got = std::fread(bom, 1, 3, m_pStream);
  if (got == 3 && bom[0] == 0xEF && bom[1] == 0xBB && bom[2] == 0xBF) return;
  // Not a mark: go back to the start (fseek also clears a read end-of-file).
  if (std::fseek(m_pStream, 0, SEEK_SET) != 0) ThrowStreamError(errno);
}

// Reads the bytes of one line (without its "\n"); false when the file had
// nothing left.
bool CStdioFile::ReadLineBytes(std::string& line, bool& sawNewline) {
  CheckOpen();
  SkipBomIfAtStart();
  line.clear();
  sawNewline = false;
  for (;;) {
    const int c = std::getc(m_pStream);
    if (c == EOF) {
      if (std::ferror(m_pStream)) ThrowStreamError(errno);
      break;
    }
    if (c == '\n') {
      sawNewline = true;
      break;
    }
    line.push_back(static_cast<char>(c));
  }
  if (m_bText && sawNewline && !line.empty() && line.back() == '\r') line.pop_back();
  return sawNewline || !line.empty();
}

namespace {

std::wstring DecodeText(const std::string& bytes) {
#if defined(_WIN32)
  if (bytes.empty()) return std::wstring();
  const int n = ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  if (n > 0) ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), &out[0], n);
  return out;
#else
  return chartcore::Utf8ToWide(bytes);
#endif
}

std::string EncodeText(const wchar_t* text, size_t length) {
#if defined(_WIN32)
  if (length == 0) return std::string();
  const int n = ::WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<size_t>(n), '\0');
  if (n > 0) ::WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), &out[0], n, nullptr, nullptr);
  return out;
#else
  return chartcore::WideToUtf8(text, length);
#endif
}

}  // namespace

BOOL CStdioFile::ReadString(CString& rString) {
  if (!m_pending.empty()) {
    // The rest of a line a bounded read left behind.
    std::wstring rest = std::move(m_pending);
    m_pending.clear();
    if (!rest.empty() && rest.back() == L'\n') rest.pop_back();
    rString = CString(std::move(rest));
    return TRUE;
  }
  std::string bytes;
  bool sawNewline = false;
  if (!ReadLineBytes(bytes, sawNewline)) {
    rString.Empty();
    return FALSE;
  }
  rString = CString(DecodeText(bytes));
  return TRUE;
}

wchar_t* CStdioFile::ReadString(wchar_t* lpsz, UINT nMax) {
  if (lpsz == nullptr || nMax == 0) return nullptr;
  if (m_pending.empty()) {
    std::string bytes;
    bool sawNewline = false;
    if (!ReadLineBytes(bytes, sawNewline)) return nullptr;
    m_pending = DecodeText(bytes);
    if (sawNewline) m_pending.push_back(L'\n');
  }
  const size_t take = std::min<size_t>(nMax - 1, m_pending.size());
  std::char_traits<wchar_t>::copy(lpsz, m_pending.data(), take);
  lpsz[take] = L'\0';
  m_pending.erase(0, take);
  return lpsz;
}

void CStdioFile::WriteString(const wchar_t* lpsz) {
  CheckOpen();
  if (lpsz == nullptr) return;
  const size_t length = std::char_traits<wchar_t>::length(lpsz);
#if defined(_WIN32)
  if (m_bText) {
    std::wstring text;
    text.reserve(length + length / 16);
    for (size_t i = 0; i < length; ++i) {
      if (lpsz[i] == L'\n') text.push_back(L'\r');
      text.push_back(lpsz[i]);
    }
    const std::string bytes = EncodeText(text.data(), text.size());
    Write(bytes.data(), static_cast<UINT>(bytes.size()));
    return;
  }
#endif
  const std::string bytes = EncodeText(lpsz, length);
  Write(bytes.data(), static_cast<UINT>(bytes.size()));
}

UINT CStdioFile::Read(void* lpBuf, UINT nCount) {
  CheckOpen();
  m_bAtStart = false;
  m_pending.clear();
  if (nCount == 0) return 0;
  const size_t got = std::fread(lpBuf, 1, nCount, m_pStream);
  if (got < nCount && std::ferror(m_pStream)) ThrowStreamError(errno);
  return static_cast<UINT>(got);
}

void CStdioFile::Write(const void* lpBuf, UINT nCount) {
  CheckOpen();
  m_bAtStart = false;
  if (const long injected = CheckFileFault(FileOperation::kWrite)) ThrowStreamError(injected);
  if (nCount == 0) return;
  if (std::fwrite(lpBuf, 1, nCount, m_pStream) != nCount) ThrowStreamError(errno);
}

ULONGLONG CStdioFile::Seek(LONGLONG lOff, UINT nFrom) {
  CheckOpen();
  int whence = SEEK_SET;
  if (nFrom == current) whence = SEEK_CUR;
  else if (nFrom == end) whence = SEEK_END;
  // An unknown origin is refused like the other files do, not taken as the
  // start, and leaves the position and any pending text alone.
  else if (nFrom != begin) AfxThrowFileException(CFileException::badSeek, -1, m_strFileName.GetString());
  m_pending.clear();
#if defined(_WIN32)
  if (::_fseeki64(m_pStream, lOff, whence) != 0) ThrowStreamError(ERROR_NEGATIVE_SEEK);
#else
  if (::fseeko(m_pStream, static_cast<off_t>(lOff), whence) != 0) ThrowStreamError(errno == EINVAL ? ESPIPE : errno);
#endif
  const ULONGLONG pos = GetPosition();
  m_bAtStart = pos == 0;
  return pos;
}

ULONGLONG CStdioFile::GetLength() const {
  CheckOpen();
  // The stream's buffer may hold bytes not yet handed to the system.
  if (std::fflush(m_pStream) != 0) ThrowOsError(errno);
  return CFile::GetLength();
}

ULONGLONG CStdioFile::GetPosition() const {
  CheckOpen();
#if defined(_WIN32)
  const long long pos = ::_ftelli64(m_pStream);
#else
  const off_t pos = ::ftello(m_pStream);
#endif
  if (pos < 0) ThrowOsError(errno);
  return static_cast<ULONGLONG>(pos);
}

void CStdioFile::SetLength(ULONGLONG dwNewLen) {
  CheckOpen();
  if (std::fflush(m_pStream) != 0) ThrowStreamError(errno);
  CFile::SetLength(dwNewLen);
}

void CStdioFile::Flush() {
  if (m_pStream == nullptr) return;
  if (const long injected = CheckFileFault(FileOperation::kFlush)) ThrowStreamError(injected);
  if (std::fflush(m_pStream) != 0) ThrowStreamError(errno);
}

void CStdioFile::Close() {
  if (m_pStream == nullptr) return;
  const long injected = CheckFileFault(FileOperation::kClose);
  FILE* stream = m_pStream;
  m_pStream = nullptr;
  m_hFile = kNoFile;
  m_pending.clear();
  // fclose writes what is buffered; a full disk shows up here.
  const long err = std::fclose(stream) == 0 ? 0 : errno;
  if (injected) ThrowOsError(injected);
  if (err) ThrowOsError(err);
}

void CStdioFile::Abort() {
  if (m_pStream == nullptr) return;
  std::fclose(m_pStream);
  m_pStream = nullptr;
  m_hFile = kNoFile;
  m_pending.clear();
}

// ---------------------------------------------------------------------------
// Wildcards
// ---------------------------------------------------------------------------

namespace {

bool SameLetter(wchar_t a, wchar_t b) { return a == b || chartcore::ToUpperW(a) == chartcore::ToUpperW(b); }

// Matches name[i..] against mask[j..]. `*` takes any run; `?` one
// character other than a dot, or nothing when the name is at a dot or its
// end; a mask dot followed only by wildcards may also match the end of the
// name. Results are remembered per (i, j), so no mask costs more than
// name length times mask length steps.
class MaskMatcher {
 public:
  MaskMatcher(const wchar_t* name, size_t nameLen, const wchar_t* mask, size_t maskLen)
      : m_name(name), m_nameLen(nameLen), m_mask(mask), m_maskLen(maskLen),
        m_memo((nameLen + 1) * (maskLen + 1), -1) {}

  bool Match(size_t i, size_t j) {
    signed char& memo = m_memo[i * (m_maskLen + 1) + j];
    if (memo < 0) memo = Compute(i, j) ? 1 : 0;
    return memo == 1;
  }

 private:
  bool Compute(size_t i, size_t j) {
    if (j == m_maskLen) return i == m_nameLen;
    const wchar_t m = m_mask[j];
    const bool atEnd = i == m_nameLen;
    if (m == L'*') return Match(i, j + 1) || (!atEnd && Match(i + 1, j));
    if (m == L'?') {
      if (atEnd || m_name[i] == L'.') return Match(i, j + 1);
      return Match(i + 1, j + 1);
    }
    if (m == L'.' && atEnd) {
      // "name.*", "name.???" and "name." also find "name".
      size_t k = j + 1;
      while (k < m_maskLen && (m_mask[k] == L'*' || m_mask[k] == L'?')) ++k;
      return k == m_maskLen;
    }
    return !atEnd && SameLetter(m_name[i], m) && Match(i + 1, j + 1);
  }

  const wchar_t* m_name;
  size_t m_nameLen;
  const wchar_t* m_mask;
  size_t m_maskLen;
  std::vector<signed char> m_memo;
};

}  // namespace

namespace chartcore {

BOOL MatchFileMask(const wchar_t* name, const wchar_t* mask) {
  if (name == nullptr || mask == nullptr) return FALSE;
  const size_t nameLen = std::char_traits<wchar_t>::length(name);
  const size_t maskLen = std::char_traits<wchar_t>::length(mask);
  if (maskLen == 0) return FALSE;
  // A mask ending in a dot asks for names without an extension.
  if (maskLen > 1 && mask[maskLen - 1] == L'.' && mask[maskLen - 2] != L'.') {
    const std::wstring head(mask, maskLen - 1);
    if (head.find(L'.') == std::wstring::npos && std::wstring(name).find(L'.') != std::wstring::npos) return FALSE;
  }
  return MaskMatcher(name, nameLen, mask, maskLen).Match(0, 0) ? TRUE : FALSE;
}

}  // namespace chartcore

// ---------------------------------------------------------------------------
// CFileFind
// ---------------------------------------------------------------------------

IMPLEMENT_DYNAMIC(CFileFind, CObject)

CFileFind::CFileFind() : m_chSeparator(L'\\'), m_nCurrent(-1) {}

CFileFind::~CFileFind() = default;

void CFileFind::Close() {
  m_entries.clear();
  m_strRoot.Empty();
  m_nCurrent = -1;
}

BOOL CFileFind::FindFile(const wchar_t* pstrName, DWORD) {
  Close();
  const CString pattern = (pstrName == nullptr || *pstrName == L'\0') ? CString(L"*.*") : CString(pstrName);
  const int slash = std::max(pattern.ReverseFind(L'\\'), pattern.ReverseFind(L'/'));
  const CString mask = pattern.Mid(slash + 1);
  if (slash >= 0) {
    m_chSeparator = pattern[slash];
    // "\x" keeps its root "\"; "C:\x" its "C:\".
    m_strRoot = pattern.Left(slash == 0 || (slash == 2 && pattern[1] == L':') ? slash + 1 : slash);
  } else {
    m_chSeparator = L'\\';
  }
  if (mask.IsEmpty()) return FALSE;
#if defined(_WIN32)
  WIN32_FIND_DATAW data;
  HANDLE h = ::FindFirstFileW(pattern.GetString(), &data);
  if (h == INVALID_HANDLE_VALUE) return FALSE;
  do {
    // The same mask rules as everywhere: the system would also match a long
    // name through its 8.3 short name ("*.dat" finding "x.data").
    if (!chartcore::MatchFileMask(data.cFileName, mask.GetString())) continue;
    Entry e;
    e.name = data.cFileName;
    e.length = (static_cast<ULONGLONG>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    e.attributes = data.dwFileAttributes;
    m_entries.push_back(std::move(e));
  } while (::FindNextFileW(h, &data));
  ::FindClose(h);
#else
  const std::string dir = slash < 0 ? std::string(".") : chartcore::internal::NativePathBytes(pattern.Left(slash + 1));
  DIR* d = ::opendir(dir.c_str());
  if (d == nullptr) return FALSE;
  while (const dirent* ent = ::readdir(d)) {
    const std::wstring wide = chartcore::Utf8ToWide(ent->d_name, std::strlen(ent->d_name));
    if (!chartcore::MatchFileMask(wide.c_str(), mask.GetString())) continue;
    const std::string full = (dir.back() == '/' ? dir : dir + "/") + ent->d_name;
    Entry e;
    e.name = CString(wide);
    e.attributes = chartcore::internal::NativeAttributes(full, &e.length);
    // An entry that went between the listing and the look-up still lists.
    if (e.attributes == INVALID_FILE_ATTRIBUTES) e.attributes = FILE_ATTRIBUTE_NORMAL;
    m_entries.push_back(std::move(e));
  }
  ::closedir(d);
#endif
  // Directory order is the file system's (arbitrary on Linux, on FAT and on
  // network drives); list by name, ignoring case, as an NTFS folder lists.
  std::sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
    const int c = a.name.CompareNoCase(b.name.GetString());
    return c != 0 ? c < 0 : a.name < b.name;
  });
  return m_entries.empty() ? FALSE : TRUE;
}

BOOL CFileFind::FindNextFile() {
  if (m_entries.empty()) return FALSE;
  if (m_nCurrent + 1 < static_cast<std::ptrdiff_t>(m_entries.size())) ++m_nCurrent;
  return m_nCurrent + 1 < static_cast<std::ptrdiff_t>(m_entries.size()) ? TRUE : FALSE;
}

namespace {
bool HasCurrent(std::ptrdiff_t current, size_t count) { return current >= 0 && static_cast<size_t>(current) < count; }
}  // namespace

CString CFileFind::GetFileName() const {
  return HasCurrent(m_nCurrent, m_entries.size()) ? m_entries[static_cast<size_t>(m_nCurrent)].name : CString();
}

CString CFileFind::GetFilePath() const {
  if (!HasCurrent(m_nCurrent, m_entries.size())) return CString();
  const CString& name = m_entries[static_cast<size_t>(m_nCurrent)].name;
  if (m_strRoot.IsEmpty()) return name;
  const wchar_t last = m_strRoot[m_strRoot.GetLength() - 1];
  return (last == L'\\' || last == L'/') ? m_strRoot + name : m_strRoot + m_chSeparator + name;
}

CString CFileFind::GetFileTitle() const { return StripExtension(GetFileName()); }

CString CFileFind::GetRoot() const { return m_strRoot; }

ULONGLONG CFileFind::GetLength() const {
  return HasCurrent(m_nCurrent, m_entries.size()) ? m_entries[static_cast<size_t>(m_nCurrent)].length : 0;
}

BOOL CFileFind::MatchesMask(DWORD dwMask) const {
  if (!HasCurrent(m_nCurrent, m_entries.size())) return FALSE;
  return (m_entries[static_cast<size_t>(m_nCurrent)].attributes & dwMask) != 0 ? TRUE : FALSE;
}

BOOL CFileFind::IsDirectory() const { return MatchesMask(FILE_ATTRIBUTE_DIRECTORY); }

BOOL CFileFind::IsReadOnly() const { return MatchesMask(FILE_ATTRIBUTE_READONLY); }

BOOL CFileFind::IsHidden() const { return MatchesMask(FILE_ATTRIBUTE_HIDDEN); }

BOOL CFileFind::IsDots() const {
  if (!IsDirectory()) return FALSE;
  const CString name = GetFileName();
  return (name == L"." || name == L"..") ? TRUE : FALSE;
}

// ---------------------------------------------------------------------------
// Atomic replacement
// ---------------------------------------------------------------------------

namespace {

// Syncs the folder holding `path`, so a rename into it survives a crash.
void SyncFolderOf(const wchar_t* path) {
#if defined(_WIN32)
  (void)path;  // MoveFileExW with MOVEFILE_WRITE_THROUGH already waits
#else
  std::string dir = chartcore::internal::NativePathBytes(path);
  const size_t slash = dir.rfind('/');
  dir = slash == std::string::npos ? std::string(".") : (slash == 0 ? std::string("/") : dir.substr(0, slash));
  const int fd = ::open(dir.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY);
  if (fd >= 0) {
    ::fsync(fd);
    ::close(fd);
  }
#endif
}

// Renames over an existing target (which plain Windows rename refuses).
long ReplaceFile(const wchar_t* from, const wchar_t* to) {
  if (const long injected = CheckFileFault(FileOperation::kRename)) return injected;
#if defined(_WIN32)
  if (!::MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return LastOsError();
#else
  const std::string a = chartcore::internal::NativePathBytes(from);
  const std::string b = chartcore::internal::NativePathBytes(to);
  if (::rename(a.c_str(), b.c_str()) != 0) return errno;
#endif
  return 0;
}

void RemoveQuietly(const wchar_t* path) {
#if defined(_WIN32)
  ::DeleteFileW(path);
#else
  ::unlink(chartcore::internal::NativePathBytes(path).c_str());
#endif
}

}  // namespace

namespace chartcore {
namespace internal {

struct AtomicSaveAccess {
  static std::intptr_t Handle(const CFile& file) { return file.m_hFile; }
  static bool Failed(const CFile& file) { return file.m_bFailed; }
};

}  // namespace internal

BOOL WriteFileAtomic(const wchar_t* path, const std::function<void(CFile&)>& writer, CFileException* error) {
  if (path == nullptr || *path == L'\0') {
    FillException(error, 0, path);
    if (error) error->m_cause = CFileException::badPath;
    return FALSE;
  }
  // A read-only target stays as it is, as the system refuses to replace it
  // on Windows. The new file keeps the permissions of the one it replaces.
#if defined(_WIN32)
  const DWORD targetAttributes = ::GetFileAttributesW(path);
  if (targetAttributes != INVALID_FILE_ATTRIBUTES && (targetAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
    FillException(error, ERROR_ACCESS_DENIED, path);
    return FALSE;
  }
#else
  struct stat target;
  const bool targetExists = ::stat(internal::NativePathBytes(path).c_str(), &target) == 0;
  if (targetExists && S_ISREG(target.st_mode) && (target.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
    FillException(error, EACCES, path);
    return FALSE;
  }
#endif
  // A unique name beside the target: the process id and a counter keep two
  // savers (threads or processes) apart; an existing name is skipped.
  static std::atomic<unsigned> counter{0};
#if defined(_WIN32)
  const unsigned long pid = ::GetCurrentProcessId();
#else
  const unsigned long pid = static_cast<unsigned long>(::getpid());
#endif
  CFile file;
  CString tempPath;
  CFileException openError;
  bool opened = false;
  for (int attempt = 0; attempt < 100 && !opened; ++attempt) {
    tempPath = CString(path) + L".~tmp";
    tempPath += std::to_wstring(pid).c_str();
    tempPath += L'_';
    tempPath += std::to_wstring(counter.fetch_add(1)).c_str();
#if defined(_WIN32)
    const bool exists = ::GetFileAttributesW(tempPath.GetString()) != INVALID_FILE_ATTRIBUTES;
#else
    struct stat st;
    const bool exists = ::lstat(internal::NativePathBytes(tempPath.GetString()).c_str(), &st) == 0;
#endif
    if (exists) continue;
    opened = file.Open(tempPath.GetString(), CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive, &openError) != 0;
    if (!opened) break;
  }
  if (!opened) {
    if (error) {
      *error = openError;
      error->m_strFileName = path;
    }
    return FALSE;
  }

#if !defined(_WIN32)
  if (targetExists && S_ISREG(target.st_mode)) ::fchmod(static_cast<int>(internal::AtomicSaveAccess::Handle(file)), target.st_mode & 07777);
#endif

  long osError = 0;
  try {
    writer(file);
    if (internal::AtomicSaveAccess::Failed(file)) {
      // The writer swallowed a failed write (an archive destructor does).
      osError = -1;
    } else {
      file.Flush();
      file.Close();
    }
  } catch (const CFileException& e) {
    file.Abort();
    RemoveQuietly(tempPath.GetString());
    if (error) {
      *error = e;
      error->m_strFileName = path;
    }
    return FALSE;
  } catch (...) {
    file.Abort();
    RemoveQuietly(tempPath.GetString());
    throw;
  }
  if (osError != 0) {
    file.Abort();
    RemoveQuietly(tempPath.GetString());
    if (error) {
      error->m_cause = CFileException::genericException;
      error->m_lOsError = -1;
      error->m_strFileName = path;
    }
    return FALSE;
  }
  osError = ReplaceFile(tempPath.GetString(), path);
  if (osError != 0) {
    RemoveQuietly(tempPath.GetString());
    FillException(error, osError, path);
    return FALSE;
  }
  SyncFolderOf(path);
  return TRUE;
}

BOOL AppendToFile(const wchar_t* path, const void* data, UINT count, CFileException* error) {
  if (path == nullptr || *path == L'\0' || (data == nullptr && count != 0)) {
    FillException(error, 0, path);
    if (error) error->m_cause = path == nullptr || *path == L'\0' ? CFileException::badPath : CFileException::genericException;
    return FALSE;
  }
#if defined(_WIN32)
  // Append-only access: every write lands at the end of the file as it is
  // at that moment, whoever else appends.
  const HANDLE h = ::CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) {
    FillException(error, LastOsError(), path);
    return FALSE;
  }
  long err = CheckFileFault(FileOperation::kWrite);
  if (err == 0 && count != 0) {
    DWORD written = 0;
    if (!::WriteFile(h, data, count, &written, nullptr)) err = LastOsError();
    else if (written != count) err = ERROR_DISK_FULL;
  }
  const long closeInjected = CheckFileFault(FileOperation::kClose);
  const long closeErr = ::CloseHandle(h) ? 0 : LastOsError();
#else
  const std::string native = internal::NativePathBytes(path);
  int fd;
  do {
    fd = ::open(native.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) {
    FillException(error, errno, path);
    return FALSE;
  }
  long err = CheckFileFault(FileOperation::kWrite);
  const char* bytes = static_cast<const char*>(data);
  size_t done = 0;
  while (err == 0 && done < count) {
    const ssize_t n = ::write(fd, bytes + done, count - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      err = n < 0 ? errno : ENOSPC;
      break;
    }
    done += static_cast<size_t>(n);
  }
  if (err != 0 && done != 0) {
    // Part of the bytes got out (a full disk): cut them off again, unless
    // another writer has appended after them meanwhile.
    struct stat st;
    const off_t end = ::lseek(fd, 0, SEEK_CUR);
    if (end >= static_cast<off_t>(done) && ::fstat(fd, &st) == 0 && st.st_size == end) {
      const int cut = ::ftruncate(fd, end - static_cast<off_t>(done));
      (void)cut;  // the write's error is what the caller hears of
    }
  }
  const long closeInjected = CheckFileFault(FileOperation::kClose);
  const long closeErr = ::close(fd) == 0 || errno == EINTR ? 0 : errno;
#endif
  if (err == 0) err = closeInjected != 0 ? closeInjected : closeErr;
  if (err != 0) {
    FillException(error, err, path);
    return FALSE;
  }
  return TRUE;
}

}  // namespace chartcore
