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
  chartcore_test::TempDir dir_;
};

// An indicator whose save breaks off halfway through its bytes.
class BrokenIndica : public CDBSubINDICA {
 public:
  explicit BrokenIndica(void (*fail)()) : fail_(fail) {}
  void Serialize(CArchive& ar) override {
    ar << 7 << CString(L"half");
    fail_();
  }
  void (*fail_)();
};

}  // namespace

TEST_F(RecordFileTest, PlainFilesHoldTheRecordsOwnBytesAndFailedLoadsChangeNothing) {
  CDBSubINDICA ind;
  ind.m_strText1 = L"\uC9C0\uD45C";  // 지표
  ind.m_arrVariable.SetSize(1);
  const Bytes whole = Store(ind);
  CFileException error;
  ASSERT_TRUE(chartcore::SaveRecordFile(PathOf("a.ind").c_str(), ind, &error));
  EXPECT_EQ(dir_.Read("a.ind"), std::string(whole.begin(), whole.end()));  // nothing around the record's bytes
  EXPECT_EQ(dir_.Tree(""), (std::vector<std::string>{"a.ind"}));  // no temporary file left
  CDBSubINDICA back;
  ASSERT_TRUE(chartcore::LoadRecordFile((dir_.root().wstring() + L"\\a.ind").c_str(), back, &error));  // `\` too
  EXPECT_EQ(Store(back), whole);

  // A missing file is a result and a cut one throws; the record is untouched.
  EXPECT_FALSE(chartcore::LoadRecordFile(PathOf("missing.ind").c_str(), back, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  dir_.MakeFile("cut.ind", std::string(whole.begin(), whole.end() - 3));  // cut inside nTail
  try {
    chartcore::LoadRecordFile(PathOf("cut.ind").c_str(), back);
    ADD_FAILURE() << "a truncated file loaded";
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::endOfFile);
  }
  EXPECT_EQ(Store(back), whole);
}

TEST_F(RecordFileTest, FailedSaveLeavesTheOldFileWhole) {
  CDBSubINDICA old;
  old.nTail = 1;
  ASSERT_TRUE(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), old));
  const std::string oldBytes = dir_.Read("x.ind");
  const auto unchanged = [&] { return dir_.Read("x.ind") == oldBytes && dir_.Tree("").size() == 1u; };
  // The record's own writing fails with a file error: a result.
  BrokenIndica diskFull([] { throw CFileException(CFileException::diskFull); });
  CFileException error;
  EXPECT_FALSE(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), diskFull, &error));
  EXPECT_EQ(error.m_cause, CFileException::diskFull);
  EXPECT_TRUE(unchanged());
  // Any other exception passes to the caller, after the same clean-up.
  BrokenIndica badIndex([] { throw CArchiveException(CArchiveException::badIndex); });
  EXPECT_THROW(chartcore::SaveRecordFile(PathOf("x.ind").c_str(), badIndex), CArchiveException);
  EXPECT_TRUE(unchanged());
  // The system refuses the final rename.
  chartcore::internal::SetFileFaultInjector(chartcore::internal::FileOperation::kRename, 1, EIO);
  EXPECT_FALSE(chartcore::SaveRecordObjectFile(PathOf("x.ind").c_str(), old, &error));
  EXPECT_TRUE(unchanged());
  EXPECT_FALSE(chartcore::SaveRecordFile(PathOf("no/such/dir.ind").c_str(), old, &error));
  // A missing folder: Windows names the path, Linux the file.
#if defined(_WIN32)
  EXPECT_EQ(error.m_cause, CFileException::badPath);
#else
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
#endif
  EXPECT_TRUE(unchanged());
}

TEST_F(RecordFileTest, ObjectFilesTellTheirKind) {
  CDBSubFILL fill;
  fill.nF02 = 12;
  ASSERT_TRUE(chartcore::SaveRecordObjectFile(PathOf("f.obj").c_str(), fill));
  std::unique_ptr<CDBSubBase> loaded = chartcore::LoadRecordObjectFile(PathOf("f.obj").c_str());
  ASSERT_TRUE(loaded != nullptr && loaded->IsKindOf(RUNTIME_CLASS(CDBSubFILL)));
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
  CDBSubFUNCT fn; CDBSubINDICA ind; CDBSubSIGNAL sig; CDBSubFILL fill; CDBSubPATTERN pat; CDBSubOPTIMIZE opt;
  EXPECT_TRUE(load(L"funct.fct", fn) && load(L"indica.ind", ind) && load(L"signal.sig", sig) &&
              load(L"fill.fil", fill) && load(L"pattern.pat", pat) && load(L"optimize.opt", opt));
  EXPECT_EQ(fn.m_strText3, L"Value = (H + L) / 2;");
  EXPECT_EQ(ind.m_arrElement.GetSize(), 1);
  EXPECT_EQ(pat.m_arrLine.GetSize(), 1);
  for (const wchar_t* name : {L"indica.obj", L"region.obj"}) {
    EXPECT_NE(chartcore::LoadRecordObjectFile((dir + name).c_str()), nullptr) << name;
  }
}
