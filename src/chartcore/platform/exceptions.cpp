#include "chartcore/platform/exceptions.h"

CException::~CException() = default;
const char* CException::what() const noexcept { return "CException"; }

CArchiveException::CArchiveException(int cause, const wchar_t* fileName)
    : m_cause(cause), m_strFileName(fileName ? fileName : L"") {}

const char* CArchiveException::what() const noexcept {
  switch (m_cause) {
    case none: return "archive: no error";
    case genericException: return "archive: generic error";
    case readOnly: return "archive: tried to write to an archive opened for loading";
    case endOfFile: return "archive: reached the end of the file while reading";
    case writeOnly: return "archive: tried to read from an archive opened for storing";
    case badIndex: return "archive: invalid file format";
    case badClass: return "archive: tried to read an object of the wrong type";
    case badSchema: return "archive: tried to read an object with a different version of the class";
    case bufferFull: return "archive: buffer full";
    default: return "archive: unknown error";
  }
}

CFileException::CFileException(int cause, long osError, const wchar_t* fileName)
    : m_cause(cause), m_lOsError(osError), m_strFileName(fileName ? fileName : L"") {}

const char* CFileException::what() const noexcept {
  switch (m_cause) {
    case none: return "file: no error";
    case fileNotFound: return "file: not found";
    case badPath: return "file: bad path";
    case tooManyOpenFiles: return "file: too many open files";
    case accessDenied: return "file: access denied";
    case invalidFile: return "file: invalid file";
    case removeCurrentDir: return "file: cannot remove the current directory";
    case directoryFull: return "file: directory full";
    case badSeek: return "file: bad seek";
    case hardIO: return "file: hardware I/O error";
    case sharingViolation: return "file: sharing violation";
    case lockViolation: return "file: lock violation";
    case diskFull: return "file: disk full";
    case endOfFile: return "file: end of file";
    default: return "file: error";
  }
}

const char* CInvalidArgException::what() const noexcept { return "invalid argument"; }
const char* CMemoryException::what() const noexcept { return "out of memory"; }
const char* CAtlException::what() const noexcept { return "COM error"; }

void AtlThrow(HRESULT hr) { throw CAtlException(hr); }
void AfxThrowInvalidArgException() { throw CInvalidArgException(); }
void AfxThrowArchiveException(int cause, const wchar_t* fileName) { throw CArchiveException(cause, fileName); }
void AfxThrowFileException(int cause, long osError, const wchar_t* fileName) {
  throw CFileException(cause, osError, fileName);
}
void AfxThrowMemoryException() { throw CMemoryException(); }
