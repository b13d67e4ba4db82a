#include "chartcore/platform/filesystem.h"

#if !defined(_WIN32)

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "chartcore/platform/file.h"

namespace {

thread_local DWORD g_lastError = ERROR_SUCCESS;

using chartcore::internal::NativePathBytes;

// Sets errno to err and returns -1 (the C runtime's failure result).
int FailErrno(int err) {
  errno = err;
  return -1;
}

// Records a Win32 error number and returns FALSE.
BOOL FailWin32(DWORD code) {
  g_lastError = code;
  return FALSE;
}

BOOL FailFromErrno(int err) { return FailWin32(chartcore::Win32ErrorFromErrno(err)); }

BOOL Succeed() {
  g_lastError = ERROR_SUCCESS;
  return TRUE;
}

bool StatPath(const std::string& path, struct stat& st) { return ::stat(path.c_str(), &st) == 0; }

bool HasWriteBits(const struct stat& st) { return (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0; }

// The last part of a native path, ignoring trailing slashes.
std::string LastPart(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Renames without ever replacing: EEXIST when the target exists. Counts as
// a rename for the fault injector.
int RenameNoReplace(const std::string& from, const std::string& to) {
  if (const long injected = chartcore::internal::CheckFileFault(chartcore::internal::FileOperation::kRename))
    return FailErrno(static_cast<int>(injected));
  struct stat st;
  if (::lstat(to.c_str(), &st) == 0) return FailErrno(EEXIST);
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : -1;
}

}  // namespace

namespace chartcore {

DWORD Win32ErrorFromErrno(int err) {
  switch (err) {
    case 0: return ERROR_SUCCESS;
    case ENOENT: return ERROR_FILE_NOT_FOUND;
    case ENOTDIR: return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR: return ERROR_ACCESS_DENIED;
    case EROFS: return ERROR_WRITE_PROTECT;
    case EEXIST: return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY: return ERROR_DIR_NOT_EMPTY;
    case ENOSPC:
    case EDQUOT: return ERROR_DISK_FULL;
    case ENAMETOOLONG: return ERROR_FILENAME_EXCED_RANGE;
    case EMFILE:
    case ENFILE: return ERROR_TOO_MANY_OPEN_FILES;
    case EBUSY: return ERROR_BUSY;
    case EXDEV: return ERROR_NOT_SAME_DEVICE;
    case EINVAL: return ERROR_INVALID_PARAMETER;
    case ENOMEM: return ERROR_NOT_ENOUGH_MEMORY;
    case EBADF: return ERROR_INVALID_HANDLE;
    case EIO: return ERROR_GEN_FAILURE;
    default: return ERROR_GEN_FAILURE;
  }
}

}  // namespace chartcore

// ---------------------------------------------------------------------------
// C runtime forms
// ---------------------------------------------------------------------------

int _wmkdir(const wchar_t* dirname) {
  if (dirname == nullptr || *dirname == L'\0') return FailErrno(ENOENT);
  return ::mkdir(NativePathBytes(dirname).c_str(), 0777) == 0 ? 0 : -1;
}

int _wrmdir(const wchar_t* dirname) {
  if (dirname == nullptr || *dirname == L'\0') return FailErrno(ENOENT);
  if (::rmdir(NativePathBytes(dirname).c_str()) == 0) return 0;
  return FailErrno(errno == EEXIST ? ENOTEMPTY : errno);
}

int _waccess(const wchar_t* path, int mode) {
  if (path == nullptr) return FailErrno(EINVAL);
  if ((mode & ~6) != 0) return FailErrno(EINVAL);
  const std::string native = NativePathBytes(path);
  struct stat st;
  if (!StatPath(native, st)) return -1;
  // Read-only means no write permission bit, whoever asks (root included).
  if ((mode & 2) != 0 && !S_ISDIR(st.st_mode) && !HasWriteBits(st)) return FailErrno(EACCES);
  int how = F_OK;
  if (mode & 2) how |= W_OK;
  if (mode & 4) how |= R_OK;
  return ::access(native.c_str(), how) == 0 ? 0 : -1;
}

int _wremove(const wchar_t* path) { return _wunlink(path); }

int _wunlink(const wchar_t* path) {
  if (path == nullptr || *path == L'\0') return FailErrno(ENOENT);
  const std::string native = NativePathBytes(path);
  struct stat st;
  if (::lstat(native.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return FailErrno(EACCES);
  return ::unlink(native.c_str()) == 0 ? 0 : -1;
}

int _wrename(const wchar_t* oldname, const wchar_t* newname) {
  if (oldname == nullptr || newname == nullptr) return FailErrno(EINVAL);
  if (RenameNoReplace(NativePathBytes(oldname), NativePathBytes(newname)) == 0) return 0;
  // The Windows runtime reports an existing new name as EEXIST.
  return FailErrno(errno == ENOTEMPTY ? EEXIST : errno);
}

// ---------------------------------------------------------------------------
// Win32 forms
// ---------------------------------------------------------------------------

DWORD GetLastError() { return g_lastError; }

void SetLastError(DWORD dwErrCode) { g_lastError = dwErrCode; }

BOOL CreateDirectoryW(const wchar_t* lpPathName, LPSECURITY_ATTRIBUTES) {
  if (lpPathName == nullptr || *lpPathName == L'\0') return FailWin32(ERROR_PATH_NOT_FOUND);
  if (::mkdir(NativePathBytes(lpPathName).c_str(), 0777) == 0) return Succeed();
  return errno == ENOENT ? FailWin32(ERROR_PATH_NOT_FOUND) : FailFromErrno(errno);
}

BOOL RemoveDirectoryW(const wchar_t* lpPathName) {
  if (lpPathName == nullptr || *lpPathName == L'\0') return FailWin32(ERROR_PATH_NOT_FOUND);
  if (::rmdir(NativePathBytes(lpPathName).c_str()) == 0) return Succeed();
  if (errno == EEXIST || errno == ENOTEMPTY) return FailWin32(ERROR_DIR_NOT_EMPTY);
  if (errno == ENOTDIR) return FailWin32(ERROR_DIRECTORY);
  return FailFromErrno(errno);
}

BOOL DeleteFileW(const wchar_t* lpFileName) {
  if (lpFileName == nullptr || *lpFileName == L'\0') return FailWin32(ERROR_PATH_NOT_FOUND);
  const std::string native = NativePathBytes(lpFileName);
  struct stat st;
  if (::lstat(native.c_str(), &st) != 0) return FailFromErrno(errno);
  if (S_ISDIR(st.st_mode)) return FailWin32(ERROR_ACCESS_DENIED);
  if (S_ISREG(st.st_mode) && !HasWriteBits(st)) return FailWin32(ERROR_ACCESS_DENIED);
  return ::unlink(native.c_str()) == 0 ? Succeed() : FailFromErrno(errno);
}

BOOL CopyFileW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName, BOOL bFailIfExists) {
  if (lpExistingFileName == nullptr || lpNewFileName == nullptr) return FailWin32(ERROR_INVALID_PARAMETER);
  const std::string from = NativePathBytes(lpExistingFileName);
  const std::string to = NativePathBytes(lpNewFileName);
  struct stat source;
  if (!StatPath(from, source)) return FailFromErrno(errno);
  if (S_ISDIR(source.st_mode)) return FailWin32(ERROR_ACCESS_DENIED);
  struct stat target;
  if (StatPath(to, target)) {
    if (bFailIfExists) return FailWin32(ERROR_FILE_EXISTS);
    if (S_ISDIR(target.st_mode) || !HasWriteBits(target)) return FailWin32(ERROR_ACCESS_DENIED);
  }
  const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return FailFromErrno(errno);
  CFileException error;
  const BOOL copied = chartcore::WriteFileAtomic(
      lpNewFileName,
      [&](CFile& out) {
        char block[64 * 1024];
        for (;;) {
          const ssize_t got = ::read(in, block, sizeof(block));
          if (got < 0 && errno == EINTR) continue;
          if (got < 0) AfxThrowFileException(chartcore::FileCauseFromOsError(errno), errno, lpExistingFileName);
          if (got == 0) break;
          out.Write(block, static_cast<UINT>(got));
        }
      },
      &error);
  ::close(in);
  if (!copied) return FailFromErrno(error.m_lOsError > 0 ? static_cast<int>(error.m_lOsError) : EIO);
  // A copy carries the source's permissions (a read-only source gives a
  // read-only copy, as the attribute is copied on Windows).
  ::chmod(to.c_str(), source.st_mode & 07777);
  return Succeed();
}

BOOL MoveFileExW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName, DWORD dwFlags) {
  if (lpExistingFileName == nullptr || lpNewFileName == nullptr) return FailWin32(ERROR_INVALID_PARAMETER);
  const std::string from = NativePathBytes(lpExistingFileName);
  const std::string to = NativePathBytes(lpNewFileName);
  struct stat source;
  if (::lstat(from.c_str(), &source) != 0) return FailFromErrno(errno);
  struct stat target;
  const bool targetExists = ::lstat(to.c_str(), &target) == 0;
  int result;
  if (targetExists && (dwFlags & MOVEFILE_REPLACE_EXISTING) != 0) {
    // Only a file replaces a file; folders are never replaced.
    if (S_ISDIR(target.st_mode) || S_ISDIR(source.st_mode)) return FailWin32(ERROR_ACCESS_DENIED);
    if (const long injected = chartcore::internal::CheckFileFault(chartcore::internal::FileOperation::kRename)) {
      errno = static_cast<int>(injected);
      result = -1;
    } else {
      result = ::rename(from.c_str(), to.c_str());
    }
  } else {
    result = RenameNoReplace(from, to);
  }
  if (result == 0) return Succeed();
  if (errno == EEXIST) return FailWin32(ERROR_ALREADY_EXISTS);
  if (errno == EXDEV && S_ISREG(source.st_mode) && (dwFlags & MOVEFILE_COPY_ALLOWED) != 0) {
    // Across file systems a file moves as a copy followed by a delete.
    if (!CopyFileW(lpExistingFileName, lpNewFileName, (dwFlags & MOVEFILE_REPLACE_EXISTING) ? FALSE : TRUE))
      return FALSE;
    if (::unlink(from.c_str()) != 0) return FailFromErrno(errno);
    return Succeed();
  }
  return FailFromErrno(errno);
}

BOOL MoveFileW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName) {
  return MoveFileExW(lpExistingFileName, lpNewFileName, MOVEFILE_COPY_ALLOWED);
}

DWORD GetFileAttributesW(const wchar_t* lpFileName) {
  if (lpFileName == nullptr || *lpFileName == L'\0') {
    g_lastError = ERROR_PATH_NOT_FOUND;
    return INVALID_FILE_ATTRIBUTES;
  }
  const DWORD attributes = chartcore::internal::NativeAttributes(NativePathBytes(lpFileName));
  g_lastError = attributes == INVALID_FILE_ATTRIBUTES ? chartcore::Win32ErrorFromErrno(errno) : ERROR_SUCCESS;
  return attributes;
}

DWORD chartcore::internal::NativeAttributes(const std::string& native, ULONGLONG* length) {
  if (length != nullptr) *length = 0;
  struct stat st;
  if (::lstat(native.c_str(), &st) != 0) return INVALID_FILE_ATTRIBUTES;
  DWORD attributes = 0;
  if (S_ISLNK(st.st_mode)) {
    attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    // The rest describes what the link leads to; a dangling link is only a link.
    struct stat target;
    if (StatPath(native, target)) st = target;
  }
  if (S_ISDIR(st.st_mode)) {
    attributes |= FILE_ATTRIBUTE_DIRECTORY;
  } else if (length != nullptr) {
    *length = static_cast<ULONGLONG>(st.st_size);
  }
  if (!HasWriteBits(st)) attributes |= FILE_ATTRIBUTE_READONLY;
  const std::string name = LastPart(native);
  if (name.size() > 1 && name[0] == '.' && name != "..") attributes |= FILE_ATTRIBUTE_HIDDEN;
  if (attributes == 0) attributes = FILE_ATTRIBUTE_NORMAL;
  return attributes;
}

BOOL SetFileAttributesW(const wchar_t* lpFileName, DWORD dwFileAttributes) {
  if (lpFileName == nullptr || *lpFileName == L'\0') return FailWin32(ERROR_PATH_NOT_FOUND);
  const std::string native = NativePathBytes(lpFileName);
  struct stat st;
  if (!StatPath(native, st)) return FailFromErrno(errno);
  mode_t mode = st.st_mode & 07777;
  if (dwFileAttributes & FILE_ATTRIBUTE_READONLY) {
    mode &= static_cast<mode_t>(~(S_IWUSR | S_IWGRP | S_IWOTH));
  } else if (!HasWriteBits(st)) {
    // Clearing read-only gives the owner write permission back.
    mode |= S_IWUSR;
  }
  if (mode == (st.st_mode & 07777)) return Succeed();
  return ::chmod(native.c_str(), mode) == 0 ? Succeed() : FailFromErrno(errno);
}

#endif  // !_WIN32
