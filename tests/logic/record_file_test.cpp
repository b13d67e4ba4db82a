#include "chartcore/logic/record_file.h"

#include <cerrno>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/signal_region_fill.h"
#include "common/temp_dir.h"
#include "logic/record_bytes.h"

using testing_records::Bytes;
using testing_records::Store;

namespace {

// Record files in a fresh folder per test; every fault armed is disarmed.
class RecordFileTest : public ::testing::Test {
 protected:
  void TearDown() override { chartcore::internal::ResetFileFaultInjector(); }
  std::wstring PathOf(const char* name) const { return dir_.native(name).wstring(); }
  Bytes FileBytes(const char* name) const {
    const std::string bytes = dir_.Read(name);
    return Bytes(bytes.begin(), bytes.end());
  }
  std::size_t FileCount() const { return dir_.Tree("").size(); }

  chartcore_test::TempDir dir_;
};

// An indicator whose save breaks off halfway through its bytes.
template <class EXCEPTION>
class BrokenIndica : public CDBSubINDICA {
 public:
  explicit BrokenIndica(EXCEPTION e) : error_(e) {}
  void Serialize(CArchive& ar) override {
    ar << 7 << CString(L"half");
    throw error_;
  }

 private:
  EXCEPTION error_;
};

}  // namespace

TEST_F(RecordFileTest, SavesAndLoadsPlainRecords) {
  CDBSubINDICA ind;
  ind.nA01 = 3;
  ind.m_strText1 = L"\uC9C0\uD45C";  // 지표
  ind.m_arrVariable.Add(CDBSubINDICA_VAR());
  CFileException error;
  ASSERT_TRUE(chartcore::SaveRecordFile(PathOf("a.ind").c_str(), ind, &error));
  EXPECT_EQ(FileBytes("a.ind"), Store(ind));  // the record's own bytes, nothing around them
  EXPECT_EQ(FileCount(), 1u);                 // no temporary file left beside it

  CDBSubINDICA back;
  ASSERT_TRUE(chartcore::LoadRecordFile(PathOf("a.ind").c_str(), back, &error));
  EXPECT_EQ(Store(back), Store(ind));

  // Library paths with `\` work too.
  const std::wstring backslashed = dir_.root().wstring() + L"\\a.ind";
  CDBSubINDICA viaBackslash;
  EXPECT_TRUE(chartcore::LoadRecordFile(backslashed.c_str(), viaBackslash));
  EXPECT_EQ(viaBackslash.nA01, 3);

  // A missing file is a result, and the record is untouched.
  EXPECT_FALSE(chartcore::LoadRecordFile(PathOf("missing.ind").c_str(), back, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  EXPECT_EQ(back.nA01, 3);
}

TEST_F(RecordFileTest, CorruptFileThrowsAndLeavesTheRecordUntouched) {
  CDBSubSIGNAL sig;
  sig.m_arrVariable.Add(CDBSubSIGNAL_VAR());
  Bytes bytes = Store(sig);
  bytes.resize(bytes.size() - 3);  // cut inside nTail
  dir_.MakeFile("cut.sig", std::string(bytes.begin(), bytes.end()));

  CDBSubSIGNAL target;
  target.nS01 = 42;
  target.m_strText3 = L"keep";
  try {
    chartcore::LoadRecordFile(PathOf("cut.sig").c_str(), target);
    ADD_FAILURE() << "a truncated file loaded";
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
  }
  EXPECT_EQ(target.nS01, 42);
  EXPECT_EQ(target.m_strText3, L"keep");
  EXPECT_EQ(target.m_arrVariable.GetSize(), 0);
}

TEST_F(RecordFileTest, FailedSaveLeavesTheOldFileWhole) {
  CDBSubINDICA old;
  old.nTail = 1;
  ASSERT_TRUE(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), old));
  const Bytes oldBytes = FileBytes("x.ind");

  // The record's own writing fails with a file error: a result.
  BrokenIndica<CFileException> diskFull{CFileException(CFileException::diskFull)};
  CFileException error;
  EXPECT_FALSE(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), diskFull, &error));
  EXPECT_EQ(error.m_cause, CFileException::diskFull);
  EXPECT_EQ(FileBytes("x.ind"), oldBytes);
  EXPECT_EQ(FileCount(), 1u);

  // Any other exception passes to the caller, after the same clean-up.
  BrokenIndica<CArchiveException> badIndex{CArchiveException(CArchiveException::badIndex)};
  EXPECT_THROW(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), badIndex), CArchiveException);
  EXPECT_EQ(FileBytes("x.ind"), oldBytes);
  EXPECT_EQ(FileCount(), 1u);

  // The system refuses the final rename.
  CDBSubINDICA next;
  next.nTail = 2;
  chartcore::internal::SetFileFaultInjector(chartcore::internal::FileOperation::kRename, 1, EIO);
  EXPECT_FALSE(chartcore::SaveRecordObjectFile(PathOf("x.ind").c_str(), next, &error));
  EXPECT_EQ(FileBytes("x.ind"), oldBytes);
  EXPECT_EQ(FileCount(), 1u);

  // A folder that does not exist.
  EXPECT_FALSE(chartcore::SaveRecordFile(PathOf("no/such/dir.ind").c_str(), next, &error));
}

TEST_F(RecordFileTest, ObjectFilesTellTheirKind) {
  CDBSubFILL fill;
  fill.nF02 = 12;
  ASSERT_TRUE(chartcore::SaveRecordObjectFile(PathOf("f.obj").c_str(), fill));
  const Bytes bytes = FileBytes("f.obj");
  ASSERT_GE(bytes.size(), 16u);
  EXPECT_EQ(std::string(bytes.begin() + 6, bytes.begin() + 16), "CDBSubFILL");

  std::unique_ptr<CDBSubBase> loaded = chartcore::LoadRecordObjectFile(PathOf("f.obj").c_str());
  ASSERT_NE(loaded, nullptr);
  ASSERT_TRUE(loaded->IsKindOf(RUNTIME_CLASS(CDBSubFILL)));
  EXPECT_EQ(static_cast<CDBSubFILL*>(loaded.get())->nF02, 12);

  CFileException error;
  EXPECT_EQ(chartcore::LoadRecordObjectFile(PathOf("none.obj").c_str(), &error), nullptr);
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);

  // A plain record file is not an object stream.
  ASSERT_TRUE(chartcore::SaveRecordFile(PathOf("plain.fil").c_str(), fill));
  EXPECT_THROW(chartcore::LoadRecordObjectFile(PathOf("plain.fil").c_str()), CArchiveException);
}

TEST(RecordFileSeeds, FuzzSeedsAreValidRecordFiles) {
  // The fuzzer starts from these; each must stay a whole file of its kind.
  const std::wstring dir = std::filesystem::path(CHARTCORE_SOURCE_DIR "/fuzz/corpus/records").wstring() + L"/";
  const auto load = [&dir](const wchar_t* name, auto& record) {
    return chartcore::LoadRecordFile((dir + name).c_str(), record) != 0;
  };
  CDBSubFUNCT fn;
  CDBSubINDICA ind;
  CDBSubSIGNAL sig;
  CDBSubFILL fill;
  CDBSubPATTERN pat;
  CDBSubOPTIMIZE opt;
  EXPECT_TRUE(load(L"funct.fct", fn) && load(L"indica.ind", ind) && load(L"signal.sig", sig) &&
              load(L"fill.fil", fill) && load(L"pattern.pat", pat) && load(L"optimize.opt", opt));
  EXPECT_EQ(fn.m_strText3, L"Value = (H + L) / 2;");
  EXPECT_EQ(ind.m_arrElement.GetSize() + pat.m_arrLine.GetSize(), 2);  // one element, one line
  for (const wchar_t* name : {L"indica.obj", L"region.obj"}) {
    EXPECT_NE(chartcore::LoadRecordObjectFile((dir + name).c_str()), nullptr) << name;
  }
}
