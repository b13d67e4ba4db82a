#include "chartcore/logic/record_file.h"

#include <functional>

namespace chartcore {

namespace {

constexpr UINT kReadFlags = CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary;

// Writes through an archive over the temporary file of an atomic save. On a
// failure the archive is abandoned without flushing, so nothing more reaches
// the temporary file that is about to be removed.
BOOL SaveThroughArchive(LPCTSTR path, const std::function<void(CArchive&)>& write, CFileException* error) {
  return WriteFileAtomic(
      path,
      [&write](CFile& file) {
        CArchive ar(&file, CArchive::store);
        try {
          write(ar);
          ar.Close();
        } catch (...) {
          ar.Abort();
          throw;
        }
      },
      error);
}

}  // namespace

namespace internal {

BOOL ReadRecordFile(LPCTSTR path, CDBSubBase& record, CFileException* error) {
  CFile file;
  if (!file.Open(path, kReadFlags, error)) return FALSE;
  CArchive ar(&file, CArchive::load);
  record.Serialize(ar);
  ar.Close();
  return TRUE;
}

}  // namespace internal

BOOL SaveRecordFile(LPCTSTR path, CDBSubBase& record, CFileException* error) {
  return SaveThroughArchive(path, [&record](CArchive& ar) { record.Serialize(ar); }, error);
}

BOOL SaveRecordObjectFile(LPCTSTR path, CDBSubBase& record, CFileException* error) {
  return SaveThroughArchive(path, [&record](CArchive& ar) { ar.WriteObject(&record); }, error);
}

std::unique_ptr<CDBSubBase> ReadRecordObject(CArchive& ar) {
  // Asking for the common base makes the archive refuse every class that is
  // not a definition record before anything is created.
  std::unique_ptr<CObject> object(ar.ReadObject(RUNTIME_CLASS(CDBSubBase)));
  auto* record = dynamic_cast<CDBSubBase*>(object.get());
  if (record == nullptr) AfxThrowArchiveException(CArchiveException::badClass);
  object.release();
  return std::unique_ptr<CDBSubBase>(record);
}

std::unique_ptr<CDBSubBase> LoadRecordObjectFile(LPCTSTR path, CFileException* error) {
  CFile file;
  if (!file.Open(path, kReadFlags, error)) return nullptr;
  CArchive ar(&file, CArchive::load);
  std::unique_ptr<CDBSubBase> record = ReadRecordObject(ar);
  ar.Close();
  return record;
}

}  // namespace chartcore
