// Definition record files: saving and loading one record per file.
//
// A logic file in the workspace holds one definition record, either as the
// record's own Serialize bytes (the plain form, whose kind the caller knows
// from the folder) or written through the framework's object operator (class
// tag, schema and class name first, so the file tells its own kind). Saves
// replace the file atomically: the bytes go to a temporary file beside the
// target, which is then renamed over it, so a failed save leaves the old file
// whole. Loads read into a fresh record and hand it over only when the whole
// record was read, so a failed load leaves the caller's record untouched.
//
//   CDBSubINDICA ind;
//   CFileException err;
//   if (!chartcore::LoadRecordFile(L"/ws\\Logic\\Indica\\MACD.ind", ind, &err)) { ... }
//   ind.nA01 = 2;
//   chartcore::SaveRecordFile(L"/ws\\Logic\\Indica\\MACD.ind", ind, &err);
//
//   std::unique_ptr<CDBSubBase> any = chartcore::LoadRecordObjectFile(path);
//   if (any->IsKindOf(RUNTIME_CLASS(CDBSubSIGNAL))) { ... }
#ifndef CHARTCORE_LOGIC_RECORD_FILE_H_
#define CHARTCORE_LOGIC_RECORD_FILE_H_

#include <memory>
#include <utility>

#include "chartcore/logic/definition_record.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/file.h"

namespace chartcore {

namespace internal {
// ReadRecordFile: opens path and lets record read itself from it. Returns
// FALSE, with the reason in *error when given, if the file cannot be opened;
// a corrupt or truncated file throws the archive's exception.
CHARTCORE_API BOOL ReadRecordFile(LPCTSTR path, CDBSubBase& record, CFileException* error);
}  // namespace internal

// ---------------------------------------------------------------------------
// Plain record files (the record's own bytes)
// ---------------------------------------------------------------------------

// SaveRecordFile: writes record's Serialize bytes to path, replacing any file
// there atomically. Returns TRUE on success. Returns FALSE, with the reason in
// *error when given, if the temporary file cannot be written or renamed (or
// Serialize throws a CFileException); any other exception from Serialize
// passes to the caller. Either way the file at path is exactly as it was and
// no temporary file is left.
CHARTCORE_API BOOL SaveRecordFile(LPCTSTR path, CDBSubBase& record, CFileException* error = nullptr);

// LoadRecordFile: reads the record of kind RECORD (one of the seven CDBSub…
// classes) from a plain record file into record. Returns FALSE, with the
// reason in *error when given, if the file cannot be opened. A corrupt or
// truncated file throws CArchiveException (endOfFile for a short file). On
// FALSE or an exception record is untouched.
template <class RECORD>
BOOL LoadRecordFile(LPCTSTR path, RECORD& record, CFileException* error = nullptr) {
  RECORD fresh;
  if (!internal::ReadRecordFile(path, fresh, error)) return FALSE;
  record = std::move(fresh);
  return TRUE;
}

// ---------------------------------------------------------------------------
// Object files (class tag and name first)
// ---------------------------------------------------------------------------

// SaveRecordObjectFile: writes record through the framework's object operator
// (new-class tag, schema 0, class name, then the record's bytes), replacing
// any file at path atomically. Returns as SaveRecordFile.
CHARTCORE_API BOOL SaveRecordObjectFile(LPCTSTR path, CDBSubBase& record, CFileException* error = nullptr);

// ReadRecordObject: reads one record written through the object operator and
// returns it, created by its class name; the caller owns it. A class that is
// not one of the seven record kinds, an unknown class name, or a null object
// throws CArchiveException (badClass); a truncated stream throws it with
// endOfFile. Nothing is leaked when reading fails.
CHARTCORE_API std::unique_ptr<CDBSubBase> ReadRecordObject(CArchive& ar);

// LoadRecordObjectFile: opens path and reads its record as ReadRecordObject
// does. Returns an empty pointer, with the reason in *error when given, if
// the file cannot be opened; throws as ReadRecordObject.
CHARTCORE_API std::unique_ptr<CDBSubBase> LoadRecordObjectFile(LPCTSTR path, CFileException* error = nullptr);

}  // namespace chartcore

#endif  // CHARTCORE_LOGIC_RECORD_FILE_H_
