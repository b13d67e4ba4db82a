#include "kinds.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <new>
#include <system_error>

#include "chartcore/foundation/paths.h"
#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/platform/archive.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/file.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

template <class RECORD>
std::unique_ptr<CDBSubBase> Make() {
  return std::make_unique<RECORD>();
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool SameNoCase(const std::string& a, const std::string& b) { return Lower(a) == Lower(b); }

// The last folder of a layout path such as "\Logic\Indica\" ("Indica").
std::string LastFolder(const CString& layoutPath) {
  CString trimmed = layoutPath;
  trimmed.TrimRight(L'\\');
  const int cut = trimmed.ReverseFind(L'\\');
  return Utf8(trimmed.Mid(cut + 1));
}

// The folders of path from the root down, split at both separators.
std::vector<std::string> Folders(const std::string& path) {
  std::error_code ec;
  std::filesystem::path absolute = std::filesystem::absolute(std::filesystem::u8path(path), ec);
  const std::string text = ec ? path : absolute.lexically_normal().u8string();
  std::vector<std::string> parts;
  std::string part;
  for (char c : text) {
    if (c == '/' || c == '\\') {
      if (!part.empty()) parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  if (!part.empty()) parts.push_back(part);
  if (!parts.empty()) parts.pop_back();  // the file name
  return parts;
}

std::string Extension(const std::string& path) {
  const size_t slash = path.find_last_of("/\\");
  const size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return std::string();
  return Lower(path.substr(dot));
}

int ReadInt32(const std::vector<BYTE>& bytes, size_t at) {
  if (bytes.size() < at + 4) return 0;
  const unsigned value = static_cast<unsigned>(bytes[at]) | (static_cast<unsigned>(bytes[at + 1]) << 8) |
                         (static_cast<unsigned>(bytes[at + 2]) << 16) | (static_cast<unsigned>(bytes[at + 3]) << 24);
  return static_cast<int>(value);
}

// Where the record's own bytes start after the object framing, or 0.
size_t FramingLength(const std::vector<BYTE>& bytes) {
  if (bytes.size() < 6 || bytes[0] != 0xFF || bytes[1] != 0xFF) return 0;
  const size_t nameLength = static_cast<size_t>(bytes[4]) | (static_cast<size_t>(bytes[5]) << 8);
  return bytes.size() >= 6 + nameLength ? 6 + nameLength : 0;
}

}  // namespace

const std::vector<KindInfo>& AllKinds() {
  static const std::vector<KindInfo> kinds = {
      {LogicKind::kFunct, "FUNCT", "CDBSubFUNCT", {".fct", ".bic"}, GetPath_Logic_Funct,
       CDBSubFUNCT::kCurrentVersion, Make<CDBSubFUNCT>},
      {LogicKind::kIndica, "INDICA", "CDBSubINDICA", {".ind"}, GetPath_Logic_Indica, CDBSubINDICA::kCurrentVersion,
       Make<CDBSubINDICA>},
      {LogicKind::kSignal, "SIGNAL", "CDBSubSIGNAL", {".sig"}, GetPath_Logic_Signal, CDBSubSIGNAL::kCurrentVersion,
       Make<CDBSubSIGNAL>},
      {LogicKind::kRegion, "REGION", "CDBSubREGION", {".reg"}, GetPath_Logic_Region, CDBSubREGION::kCurrentVersion,
       Make<CDBSubREGION>},
      {LogicKind::kFill, "FILL", "CDBSubFILL", {".fil"}, GetPath_Logic_Fill, CDBSubFILL::kCurrentVersion,
       Make<CDBSubFILL>},
      {LogicKind::kPattern, "PATTERN", "CDBSubPATTERN", {".pat"}, GetPath_Logic_Pattern,
       CDBSubPATTERN::kCurrentVersion, Make<CDBSubPATTERN>},
      {LogicKind::kOptimize, "OPTIMIZE", "CDBSubOPTIMIZE", {".opt"}, GetPath_Logic_Optimize,
       CDBSubOPTIMIZE::kCurrentVersion, Make<CDBSubOPTIMIZE>},
  };
  return kinds;
}

const KindInfo& KindOf(LogicKind kind) {
  for (const KindInfo& info : AllKinds()) {
    if (info.kind == kind) return info;
  }
  return AllKinds().front();
}

const KindInfo* FindKind(const std::string& text) {
  for (const KindInfo& info : AllKinds()) {
    if (SameNoCase(text, info.name) || SameNoCase(text, info.className)) return &info;
  }
  return nullptr;
}

std::string KindNameList() {
  std::string list;
  for (const KindInfo& info : AllKinds()) list += (list.empty() ? "" : ", ") + std::string(info.name);
  return list;
}

std::string FolderName(const KindInfo& kind) { return LastFolder(kind.folder(CString())); }

const KindInfo* KindFromFraming(const std::vector<BYTE>& bytes) {
  const size_t length = FramingLength(bytes);
  if (length == 0) return nullptr;
  const std::string name(bytes.begin() + 6, bytes.begin() + static_cast<std::ptrdiff_t>(length));
  for (const KindInfo& info : AllKinds()) {
    if (name == info.className) return &info;
  }
  return nullptr;
}

const KindInfo* KindFromFolder(const std::string& path) {
  const std::vector<std::string> folders = Folders(path);
  if (folders.size() < 2) return nullptr;
  const std::string logic = LastFolder(GetPath_Logic(CString()));
  if (!SameNoCase(folders[folders.size() - 2], logic)) return nullptr;
  for (const KindInfo& info : AllKinds()) {
    if (SameNoCase(folders.back(), FolderName(info))) return &info;
  }
  return nullptr;
}

const KindInfo* KindFromExtension(const std::string& path) {
  const std::string extension = Extension(path);
  for (const KindInfo& info : AllKinds()) {
    for (const std::string& known : info.extensions) {
      if (extension == known) return &info;
    }
  }
  return nullptr;
}

bool IsDefinitionFileName(const std::string& path) { return KindFromExtension(path) != nullptr; }

CString FormulaText(CDBSubBase& record) {
  if (auto* r = dynamic_cast<CDBSubFUNCT*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubINDICA*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubSIGNAL*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubREGION*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubFILL*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubPATTERN*>(&record)) return r->m_strText3;
  if (auto* r = dynamic_cast<CDBSubOPTIMIZE*>(&record)) return r->m_strText3;
  return CString();
}

std::string ArchiveCauseText(int cause) {
  switch (cause) {
    case CArchiveException::endOfFile: return "endOfFile: the data ends inside the record";
    case CArchiveException::badClass: return "badClass: the file holds an object of another class";
    case CArchiveException::badSchema: return "badSchema: the class's schema is not one this library reads";
    case CArchiveException::badIndex: return "badIndex: an object reference points nowhere";
    case CArchiveException::genericException: return "genericException: the data cannot be read";
    case CArchiveException::readOnly: return "readOnly";
    case CArchiveException::writeOnly: return "writeOnly";
    case CArchiveException::bufferFull: return "bufferFull";
    default: return "cause " + std::to_string(cause);
  }
}

LoadedRecord ParseDefinition(const std::string& path, const std::vector<BYTE>& bytes, const KindInfo* forced) {
  const KindInfo* framed = KindFromFraming(bytes);
  const KindInfo* kind = forced;
  if (kind == nullptr) kind = framed;
  if (kind == nullptr) kind = KindFromFolder(path);
  if (kind == nullptr) kind = KindFromExtension(path);
  if (kind == nullptr) {
    throw ToolError(path + ": unknown kind (not in a logic folder, no known extension, no class tag; give --kind " +
                    KindNameList() + ")");
  }
  if (framed != nullptr && framed != kind) {
    throw ToolError(path + ": holds a " + framed->name + " definition, not " + kind->name);
  }

  LoadedRecord loaded;
  loaded.kind = kind;
  loaded.framing = framed != nullptr ? Framing::kObject : Framing::kPlain;
  loaded.fileVersion = ReadInt32(bytes, framed != nullptr ? FramingLength(bytes) : 0);
  const std::string corrupt = path + ": corrupt " + kind->name + " definition (";
  try {
    // The memory file reads the caller's bytes in place and never writes them.
    CMemFile memory(const_cast<BYTE*>(bytes.data()), static_cast<UINT>(bytes.size()));
    CArchive ar(&memory, CArchive::load);
    if (framed != nullptr) {
      loaded.record = ReadRecordObject(ar);
    } else {
      loaded.record = kind->create();
      loaded.record->Serialize(ar);
    }
    ar.Close();
  } catch (const CArchiveException& e) {
    throw ToolError(corrupt + "archive cause " + ArchiveCauseText(e.m_cause) + ")");
  } catch (const CException& e) {
    throw ToolError(corrupt + e.what() + ")");
  } catch (const std::bad_alloc&) {
    throw ToolError(corrupt + "a count in the file asks for more memory than there is)");
  }
  loaded.currentForm = StoreDefinition(*loaded.record, loaded.framing) == bytes;
  return loaded;
}

LoadedRecord LoadDefinition(const std::string& path, const KindInfo* forced) {
  return ParseDefinition(path, ReadFileBytes(path, kMaxDefinitionBytes), forced);
}

std::vector<BYTE> StoreDefinition(CDBSubBase& record, Framing framing) {
  CMemFile memory;
  {
    CArchive ar(&memory, CArchive::store);
    if (framing == Framing::kObject) {
      ar.WriteObject(&record);
    } else {
      record.Serialize(ar);
    }
    ar.Close();
  }
  const BYTE* data = memory.GetData();
  const size_t length = static_cast<size_t>(memory.GetLength());
  return data != nullptr ? std::vector<BYTE>(data, data + length) : std::vector<BYTE>();
}

}  // namespace tool
}  // namespace chartcore
