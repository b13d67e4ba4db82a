// The framework's exception family.
//
// Exceptions are thrown by value and caught by reference; all derive from
// CException, which derives from std::exception. Archive failures carry the
// framework's cause numbers so hosts can tell a truncated file (endOfFile)
// from a file of the wrong kind (badClass).
//
//   try { ar >> record; }
//   catch (const CArchiveException& e) { if (e.m_cause == CArchiveException::endOfFile) ... }
#ifndef CHARTCORE_PLATFORM_EXCEPTIONS_H_
#define CHARTCORE_PLATFORM_EXCEPTIONS_H_

#include <exception>
#include <string>

#include "chartcore/platform/types.h"

class CHARTCORE_API CException : public std::exception {
 public:
  CException() = default;
  ~CException() override;
  const char* what() const noexcept override;
};

// CArchiveException: a failure while reading or writing an archive.
class CHARTCORE_API CArchiveException : public CException {
 public:
  enum {
    none = 0,
    genericException = 1,
    readOnly = 2,
    endOfFile = 3,
    writeOnly = 4,
    badIndex = 5,
    badClass = 6,
    badSchema = 7,
    bufferFull = 8,
  };
  explicit CArchiveException(int cause = none, const wchar_t* fileName = nullptr);
  const char* what() const noexcept override;

  int m_cause;
  std::wstring m_strFileName;
};

// CFileException: a failure of an open file (read, write, seek, flush, close),
// or the reason an Open returned FALSE. m_lOsError carries errno (or the
// system error code on Windows).
class CHARTCORE_API CFileException : public CException {
 public:
  enum {
    none = 0,
    genericException = 1,
    fileNotFound = 2,
    badPath = 3,
    tooManyOpenFiles = 4,
    accessDenied = 5,
    invalidFile = 6,
    removeCurrentDir = 7,
    directoryFull = 8,
    badSeek = 9,
    hardIO = 10,
    sharingViolation = 11,
    lockViolation = 12,
    diskFull = 13,
    endOfFile = 14,
  };
  explicit CFileException(int cause = none, long osError = -1, const wchar_t* fileName = nullptr);
  const char* what() const noexcept override;

  int m_cause;
  long m_lOsError;
  std::wstring m_strFileName;
};

// CInvalidArgException: an index or count outside what a container holds.
class CHARTCORE_API CInvalidArgException : public CException {
 public:
  const char* what() const noexcept override;
};

// CMemoryException: an allocation the framework could not make.
class CHARTCORE_API CMemoryException : public CException {
 public:
  const char* what() const noexcept override;
};

// CAtlException: a COM-style error code (E_FAIL, E_INVALIDARG, ...).
class CHARTCORE_API CAtlException : public CException {
 public:
  explicit CAtlException(HRESULT hr = E_FAIL) : m_hr(hr) {}
  operator HRESULT() const { return m_hr; }
  const char* what() const noexcept override;

  HRESULT m_hr;
};

// AtlThrow: throws CAtlException carrying hr.
[[noreturn]] CHARTCORE_API void AtlThrow(HRESULT hr);

// AfxThrowInvalidArgException, AfxThrowArchiveException, AfxThrowFileException,
// AfxThrowMemoryException: the framework's throw helpers.
[[noreturn]] CHARTCORE_API void AfxThrowInvalidArgException();
[[noreturn]] CHARTCORE_API void AfxThrowArchiveException(int cause, const wchar_t* fileName = nullptr);
[[noreturn]] CHARTCORE_API void AfxThrowFileException(int cause, long osError = -1,
                                                      const wchar_t* fileName = nullptr);
[[noreturn]] CHARTCORE_API void AfxThrowMemoryException();

#endif  // CHARTCORE_PLATFORM_EXCEPTIONS_H_
