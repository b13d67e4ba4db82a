// The seven logic kinds as the tool sees them: names, classes, folders and
// file extensions, how a file's kind is recognised, and loading and storing
// one definition record with either framing.
//
// A definition file holds one record, either as the record's own bytes (the
// "plain" framing: the kind comes from the folder or the extension) or
// written through the framework's object operator (the "object" framing: a
// new-class tag, the schema and the class name come first, so the file names
// its own kind).
//
//   const KindInfo* kind = FindKind("indica");            // also "CDBSubINDICA"
//   LoadedRecord rec = LoadDefinition("ws/Logic/Indica/PriceMomentum.ind", nullptr);
//   std::vector<BYTE> again = StoreDefinition(*rec.record, rec.framing);
#ifndef CHARTCORE_TOOLS_CHARTCORE_KINDS_H_
#define CHARTCORE_TOOLS_CHARTCORE_KINDS_H_

#include <memory>
#include <string>
#include <vector>

#include "chartcore/logic/definition_record.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"

namespace chartcore {
namespace tool {

// ---------------------------------------------------------------------------
// The kind table
// ---------------------------------------------------------------------------

enum class LogicKind { kFunct, kIndica, kSignal, kRegion, kFill, kPattern, kOptimize };

// KindInfo: one logic kind.
//   name        the kind as the system writes it ("INDICA")
//   className   the record class ("CDBSubINDICA")
//   extensions  file extensions of its definitions, the first one the usual
//               one (".ind"; functions have ".fct" and ".bic")
//   folder      the workspace folder builder (GetPath_Logic_Indica)
struct KindInfo {
  LogicKind kind;
  const char* name;
  const char* className;
  std::vector<std::string> extensions;
  CString (*folder)(CString root);
  int currentVersion;
  std::unique_ptr<CDBSubBase> (*create)();
};

// AllKinds: the seven kinds in the order the tool lists them.
const std::vector<KindInfo>& AllKinds();
// KindOf: the entry of a kind.
const KindInfo& KindOf(LogicKind kind);
// FindKind: a kind by its name or class name, ignoring case ("signal",
// "CDBSubSIGNAL"); nullptr when there is none.
const KindInfo* FindKind(const std::string& text);
// KindNameList: "FUNCT, INDICA, ..." for messages.
std::string KindNameList();
// FolderName: the last folder of the kind's workspace folder ("Indica",
// "Function"), taken from the workspace layout itself.
std::string FolderName(const KindInfo& kind);

// ---------------------------------------------------------------------------
// Recognising a file's kind
// ---------------------------------------------------------------------------

enum class Framing { kPlain, kObject };

// KindFromFraming: the kind named by the object framing at the start of
// bytes (tag FFFF, schema word, name length word, a record class name); null
// when the bytes do not start that way.
const KindInfo* KindFromFraming(const std::vector<BYTE>& bytes);
// KindFromFolder: the kind whose folder holds path (".../Logic/Signal/x"),
// matched on the last two folders ignoring case; null otherwise.
const KindInfo* KindFromFolder(const std::string& path);
// KindFromExtension: the kind whose extensions include path's, ignoring case.
const KindInfo* KindFromExtension(const std::string& path);
// IsDefinitionFileName: whether the name has one of the kinds' extensions.
bool IsDefinitionFileName(const std::string& path);

// ---------------------------------------------------------------------------
// Loading and storing
// ---------------------------------------------------------------------------

// The largest definition file the tool reads; real ones are a few kilobytes.
constexpr ULONGLONG kMaxDefinitionBytes = 64ull << 20;

// LoadedRecord: a definition read from a file.
//   fileVersion  the format version the file carries (the record itself is
//                upgraded: it writes its class's current version)
//   currentForm  whether storing the record again gives the file's bytes (a
//                current-version file without trailing bytes)
struct LoadedRecord {
  const KindInfo* kind = nullptr;
  Framing framing = Framing::kPlain;
  int fileVersion = 0;
  bool currentForm = false;
  std::unique_ptr<CDBSubBase> record;
};

// LoadDefinition: reads the definition in path. The kind is forced (when
// given), else taken from the framing, the folder or the extension, in that
// order. Throws ToolError for a missing or unreadable file, an unknown kind,
// a framing naming another kind than the forced one, and a corrupt record
// ("<path>: corrupt INDICA definition (archive cause endOfFile: ...)").
LoadedRecord LoadDefinition(const std::string& path, const KindInfo* forced);

// ParseDefinition: as LoadDefinition for bytes already read.
LoadedRecord ParseDefinition(const std::string& path, const std::vector<BYTE>& bytes, const KindInfo* forced);

// StoreDefinition: the bytes of record in the given framing.
std::vector<BYTE> StoreDefinition(CDBSubBase& record, Framing framing);

// FormulaText: the record's formula, its third text (m_strText3).
CString FormulaText(CDBSubBase& record);

// ArchiveCauseText: "endOfFile: the data ends inside the record" and so on.
std::string ArchiveCauseText(int cause);

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_KINDS_H_
