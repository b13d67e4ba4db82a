// Fuzz target for definition record files: the input is read as a plain file
// of each of the seven record kinds and as an object stream (class tag and
// name first). Any input may fail with the framework's exceptions; none may
// crash, leak or allocate beyond what its size justifies. A record that did
// load must write bytes that load back to the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/platform/file.h"

namespace {

using Bytes = std::vector<BYTE>;

Bytes StoreRecord(CObject& record) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  record.Serialize(ar);
  ar.Close();
  return Bytes(file.GetData(), file.GetData() + file.GetLength());
}

void LoadRecord(Bytes bytes, CObject& record) {
  const UINT size = static_cast<UINT>(bytes.size());
  bytes.push_back(0);  // a valid buffer even for empty input
  CMemFile file(bytes.data(), size);
  CArchive ar(&file, CArchive::load);
  record.Serialize(ar);
}

// A loaded record is in the current version: writing it, reading that and
// writing again must give the same bytes.
void CheckRoundTrip(CDBSubBase& record, CDBSubBase& fresh) {
  const Bytes first = StoreRecord(record);
  LoadRecord(first, fresh);
  if (StoreRecord(fresh) != first) std::abort();
}

template <class RECORD>
void LoadAs(const Bytes& input) {
  RECORD record;
  try {
    LoadRecord(input, record);
  } catch (const CException&) {
    return;
  }
  RECORD fresh;
  CheckRoundTrip(record, fresh);
}

void LoadAsObject(Bytes input) {
  const UINT size = static_cast<UINT>(input.size());
  input.push_back(0);
  CMemFile file(input.data(), size);
  CArchive ar(&file, CArchive::load);
  std::unique_ptr<CDBSubBase> record;
  try {
    record = chartcore::ReadRecordObject(ar);
  } catch (const CException&) {
    return;
  }
  std::unique_ptr<CObject> fresh(record->GetRuntimeClass()->CreateObject());
  auto* freshRecord = dynamic_cast<CDBSubBase*>(fresh.get());
  if (freshRecord == nullptr) std::abort();
  CheckRoundTrip(*record, *freshRecord);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes input(data, data + size);
  LoadAs<CDBSubFUNCT>(input);
  LoadAs<CDBSubINDICA>(input);
  LoadAs<CDBSubSIGNAL>(input);
  LoadAs<CDBSubREGION>(input);
  LoadAs<CDBSubFILL>(input);
  LoadAs<CDBSubPATTERN>(input);
  LoadAs<CDBSubOPTIMIZE>(input);
  LoadAsObject(input);
  return 0;
}
