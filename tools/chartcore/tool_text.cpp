#include "tool_text.h"

#include <filesystem>
#include <system_error>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/text_codec.h"

namespace chartcore {
namespace tool {

CString Wide(const std::string& utf8) {
  const std::wstring wide = chartcore::Utf8ToWide(utf8);
  return CString(wide.c_str(), static_cast<int>(wide.size()));
}

std::string Utf8(const CString& text) {
  return chartcore::WideToUtf8(text.GetString(), static_cast<size_t>(text.GetLength()));
}

std::string Printable(const CString& text) {
  CString shown = text;
  for (int i = 0; i < shown.GetLength(); ++i) {
    const unsigned c = static_cast<unsigned>(shown.GetAt(i));
    if ((c < 0x20 && c != '\t') || (c >= 0x7F && c <= 0x9F)) shown.SetAt(i, static_cast<wchar_t>(0xFFFD));
  }
  return Utf8(shown);
}

std::string Printable(const std::string& utf8) { return Printable(Wide(utf8)); }

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string FileErrorText(int cause) {
  switch (cause) {
    case CFileException::fileNotFound: return "file not found";
    case CFileException::badPath: return "bad path";
    case CFileException::tooManyOpenFiles: return "too many open files";
    case CFileException::accessDenied: return "access denied";
    case CFileException::invalidFile: return "invalid file";
    case CFileException::directoryFull: return "folder full";
    case CFileException::badSeek: return "seek failed";
    case CFileException::hardIO: return "input/output error";
    case CFileException::sharingViolation: return "sharing violation";
    case CFileException::lockViolation: return "lock violation";
    case CFileException::diskFull: return "disk full";
    case CFileException::endOfFile: return "unexpected end of file";
    default: return "system error";
  }
}

std::vector<BYTE> ReadFileBytes(const std::string& path, ULONGLONG maxBytes) {
  std::error_code ec;
  if (std::filesystem::is_directory(std::filesystem::u8path(path), ec)) {
    throw ToolError(path + ": is a folder, not a file");
  }
  CFile file;
  CFileException error;
  if (!file.Open(Wide(path), CFile::modeRead | CFile::typeBinary | CFile::shareDenyNone, &error)) {
    throw ToolError(path + ": cannot open (" + FileErrorText(error.m_cause) + ")");
  }
  try {
    const ULONGLONG length = file.GetLength();
    if (length > maxBytes) {
      throw ToolError(path + ": larger than " + std::to_string(maxBytes) + " bytes, too large for this command");
    }
    std::vector<BYTE> bytes(static_cast<size_t>(length));
    size_t done = 0;
    while (done < bytes.size()) {
      const UINT got = file.Read(bytes.data() + done, static_cast<UINT>(bytes.size() - done));
      if (got == 0) break;  // the file shrank while we read it
      done += got;
    }
    bytes.resize(done);
    file.Close();
    return bytes;
  } catch (const CFileException& e) {
    throw ToolError(path + ": cannot read (" + FileErrorText(e.m_cause) + ")");
  }
}

void WriteFileBytes(const std::string& path, const void* data, std::size_t size) {
  CFileException error;
  const BOOL saved = chartcore::WriteFileAtomic(
      Wide(path), [&](CFile& file) { file.Write(data, static_cast<UINT>(size)); }, &error);
  if (!saved) throw ToolError(path + ": cannot write (" + FileErrorText(error.m_cause) + ")");
}

}  // namespace tool
}  // namespace chartcore
