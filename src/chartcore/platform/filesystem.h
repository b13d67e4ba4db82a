// The C runtime and Win32 file-system calls the library makes, for Linux.
//
// The workspace helpers create and remove folders, test access, copy, move
// and delete files in the Windows vocabulary (_wmkdir, CreateDirectoryW,
// GetFileAttributesW, ...). On Windows these are the system's own and this
// header only includes the system headers; on Linux they are provided here,
// taking the library's `\` paths (turned into `/` at the system call). The
// C runtime forms return 0 or -1 with errno set; the Win32 forms return
// TRUE/FALSE and report the reason through GetLastError with Windows error
// numbers (ERROR_FILE_NOT_FOUND, ERROR_ALREADY_EXISTS, ...).
//
//   if (_waccess(L"/home/u/ws\\Logic", 0) != 0) _wmkdir(L"/home/u/ws\\Logic");
//   CopyFileW(L"a.dat", L"b.dat", TRUE);   // FALSE if b.dat exists
#ifndef CHARTCORE_PLATFORM_FILESYSTEM_H_
#define CHARTCORE_PLATFORM_FILESYSTEM_H_

#include "chartcore/platform/types.h"

#if defined(_WIN32)
#include <direct.h>
#include <io.h>
#include <stdio.h>
#else

#include <string>

// ---------------------------------------------------------------------------
// Win32 error numbers reported by GetLastError
// ---------------------------------------------------------------------------
enum : DWORD {
  ERROR_SUCCESS = 0,
  ERROR_FILE_NOT_FOUND = 2,
  ERROR_PATH_NOT_FOUND = 3,
  ERROR_TOO_MANY_OPEN_FILES = 4,
  ERROR_ACCESS_DENIED = 5,
  ERROR_INVALID_HANDLE = 6,
  ERROR_NOT_ENOUGH_MEMORY = 8,
  ERROR_CURRENT_DIRECTORY = 16,
  ERROR_NOT_SAME_DEVICE = 17,
  ERROR_WRITE_PROTECT = 19,
  ERROR_GEN_FAILURE = 31,
  ERROR_SHARING_VIOLATION = 32,
  ERROR_HANDLE_DISK_FULL = 39,
  ERROR_FILE_EXISTS = 80,
  ERROR_INVALID_PARAMETER = 87,
  ERROR_DISK_FULL = 112,
  ERROR_INVALID_NAME = 123,
  ERROR_DIR_NOT_EMPTY = 145,
  ERROR_BUSY = 170,
  ERROR_ALREADY_EXISTS = 183,
  ERROR_FILENAME_EXCED_RANGE = 206,
  ERROR_DIRECTORY = 267,
};

// ---------------------------------------------------------------------------
// File attributes
// ---------------------------------------------------------------------------
// On Linux a file is read-only when it has no write permission bit, hidden
// when its name starts with a dot, and a reparse point when it is a symbolic
// link (with FILE_ATTRIBUTE_DIRECTORY when it leads to a directory, as a
// Windows directory link has); FILE_ATTRIBUTE_NORMAL stands for "none of the
// others".
enum : DWORD {
  FILE_ATTRIBUTE_READONLY = 0x00000001,
  FILE_ATTRIBUTE_HIDDEN = 0x00000002,
  FILE_ATTRIBUTE_SYSTEM = 0x00000004,
  FILE_ATTRIBUTE_DIRECTORY = 0x00000010,
  FILE_ATTRIBUTE_ARCHIVE = 0x00000020,
  FILE_ATTRIBUTE_NORMAL = 0x00000080,
  FILE_ATTRIBUTE_REPARSE_POINT = 0x00000400,
};
constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFFu;

// MoveFileExW flags.
enum : DWORD { MOVEFILE_REPLACE_EXISTING = 0x1, MOVEFILE_COPY_ALLOWED = 0x2, MOVEFILE_WRITE_THROUGH = 0x8 };

typedef void* LPSECURITY_ATTRIBUTES;

// ---------------------------------------------------------------------------
// C runtime forms: 0 on success, -1 with errno set on failure
// ---------------------------------------------------------------------------
// _wmkdir: creates one folder (the parent must exist); EEXIST if it exists.
CHARTCORE_API int _wmkdir(const wchar_t* dirname);
// _wrmdir: removes an empty folder; ENOTEMPTY when it holds anything.
CHARTCORE_API int _wrmdir(const wchar_t* dirname);
// _waccess: mode 0 tests existence, 2 write, 4 read, 6 read and write
// (other bits: EINVAL). Folders answer too.
CHARTCORE_API int _waccess(const wchar_t* path, int mode);
// _wremove, _wunlink: delete a file (never a folder: EACCES, as on Windows).
CHARTCORE_API int _wremove(const wchar_t* path);
CHARTCORE_API int _wunlink(const wchar_t* path);
// _wrename: renames a file or folder; fails with EEXIST when the new name
// already exists (Windows never replaces here).
CHARTCORE_API int _wrename(const wchar_t* oldname, const wchar_t* newname);

// ---------------------------------------------------------------------------
// Win32 forms: TRUE on success, FALSE with GetLastError set
// ---------------------------------------------------------------------------
// GetLastError / SetLastError: the calling thread's last Win32 error number.
CHARTCORE_API DWORD GetLastError();
CHARTCORE_API void SetLastError(DWORD dwErrCode);

// CreateDirectoryW: one folder; ERROR_ALREADY_EXISTS if the name exists,
// ERROR_PATH_NOT_FOUND if the parent does not. The attributes are ignored.
CHARTCORE_API BOOL CreateDirectoryW(const wchar_t* lpPathName, LPSECURITY_ATTRIBUTES lpSecurityAttributes);
// RemoveDirectoryW: an empty folder; ERROR_DIR_NOT_EMPTY otherwise.
CHARTCORE_API BOOL RemoveDirectoryW(const wchar_t* lpPathName);
// DeleteFileW: a file; a read-only file is refused (ERROR_ACCESS_DENIED) as
// on Windows, and so is a folder.
CHARTCORE_API BOOL DeleteFileW(const wchar_t* lpFileName);
// CopyFileW: copies contents and permission bits; with bFailIfExists an
// existing target gives ERROR_FILE_EXISTS, otherwise it is replaced (a
// read-only target is refused with ERROR_ACCESS_DENIED). The copy is
// written beside the target and renamed over it, so a failed copy never
// leaves a half-written target.
CHARTCORE_API BOOL CopyFileW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName, BOOL bFailIfExists);
// MoveFileW: renames a file or folder; an existing target gives
// ERROR_ALREADY_EXISTS. Across file systems a file is copied and removed.
CHARTCORE_API BOOL MoveFileW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName);
// MoveFileExW: MoveFileW that replaces an existing file with
// MOVEFILE_REPLACE_EXISTING.
CHARTCORE_API BOOL MoveFileExW(const wchar_t* lpExistingFileName, const wchar_t* lpNewFileName, DWORD dwFlags);
// GetFileAttributesW: FILE_ATTRIBUTE_ bits, or INVALID_FILE_ATTRIBUTES
// when the path does not exist.
CHARTCORE_API DWORD GetFileAttributesW(const wchar_t* lpFileName);
// SetFileAttributesW: only FILE_ATTRIBUTE_READONLY has an effect (it
// removes, or restores, the write permission bits); the others are accepted
// and ignored.
CHARTCORE_API BOOL SetFileAttributesW(const wchar_t* lpFileName, DWORD dwFileAttributes);

namespace chartcore {
// Win32ErrorFromErrno: the Windows error number for an errno value.
CHARTCORE_API DWORD Win32ErrorFromErrno(int err);

namespace internal {
// The attributes GetFileAttributesW and CFileFind report for a native path,
// with a file's size (0 for a folder) in *length when given;
// INVALID_FILE_ATTRIBUTES, with errno set, when nothing is there.
CHARTCORE_API DWORD NativeAttributes(const std::string& native, ULONGLONG* length = nullptr);
}  // namespace internal
}  // namespace chartcore

#endif  // !_WIN32

#endif  // CHARTCORE_PLATFORM_FILESYSTEM_H_
