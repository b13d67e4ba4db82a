// Saves under failing file operations: for every n, the nth write, flush,
// rename or close of a save fails, and the save either succeeds or reports the
// failure, while the file on disk is the old one or the new one whole and no
// temporary file is left beside it.
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <signal.h>
#include <sys/resource.h>
#endif

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "chartcore/foundation/log_launch.h"
#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/profile.h"
#include "chartcore/script_editor/text_buffer.h"
#include "common/temp_dir.h"

namespace {

using chartcore::internal::FileOperation;
using chartcore_test::TempDir;

struct Fault {
  FileOperation op;
  long osError;
  int expectedCause;  // the CFileException cause a save reports
  const char* name;
};

// The injected errors are the system's own numbers: errno on Linux, the
// GetLastError codes on Windows.
#if defined(_WIN32)
constexpr long kDiskFull = ERROR_DISK_FULL, kWriteFault = ERROR_WRITE_FAULT, kDenied = ERROR_ACCESS_DENIED,
               kIoError = ERROR_GEN_FAILURE;
#else
constexpr long kDiskFull = ENOSPC, kWriteFault = EIO, kDenied = EACCES, kIoError = EIO;
#endif

const Fault kFaults[] = {
    {FileOperation::kWrite, kDiskFull, CFileException::diskFull, "write"},
    {FileOperation::kFlush, kWriteFault, CFileException::hardIO, "flush"},
    {FileOperation::kRename, kDenied, CFileException::accessDenied, "rename"},
    {FileOperation::kClose, kIoError, CFileException::hardIO, "close"},
};

// What one save attempt reports: whether it claims success, and the cause it
// gives for a failure (kNoCause when the writer has no way to give one).
constexpr int kNoCause = -1;
struct Outcome {
  bool saved;
  int cause;
};

// The outcome of every trial and how many operations of each kind a save
// without faults uses.
struct Sweep {
  int trials = 0;
  int failures = 0;
  int used[4] = {0, 0, 0, 0};
};

// Runs `save` once for every n and every kind of fault, with `oldBytes` on
// disk before each attempt. A save that reports success must leave
// `newBytes`; one that reports failure `oldBytes` and the injected cause. A
// writer without a result (the log) may leave either. Only the target may
// remain in its folder. The target is folder/name below the scratch root.
Sweep SweepFaults(const TempDir& dir, const std::string& folder, const std::string& name, const std::string& oldBytes,
                  const std::string& newBytes, const std::function<Outcome()>& save, bool reportsResult = true) {
  const std::string target = folder + "/" + name;
  Sweep sweep;
  for (const Fault& fault : kFaults) {
    for (int n = 1;; ++n) {
      SCOPED_TRACE(std::string("fault: ") + fault.name + " #" + std::to_string(n));
      dir.MakeFile(target, oldBytes);
      chartcore::internal::ResetFileFaultInjector();
      chartcore::internal::SetFileFaultInjector(fault.op, n, fault.osError);
      const Outcome outcome = save();
      const int used = chartcore::internal::GetFileOperationCount(fault.op);
      chartcore::internal::ResetFileFaultInjector();
      ++sweep.trials;
      const std::string onDisk = dir.Read(target);
      if (!reportsResult) {
        EXPECT_TRUE(onDisk == oldBytes || onDisk == newBytes) << "torn file of " << onDisk.size() << " bytes";
      } else if (outcome.saved) {
        EXPECT_EQ(onDisk, newBytes);
      } else {
        ++sweep.failures;
        EXPECT_EQ(onDisk, oldBytes);
        if (outcome.cause != kNoCause) {
          EXPECT_EQ(outcome.cause, fault.expectedCause);
        }
      }
      EXPECT_EQ(dir.Tree(folder), std::vector<std::string>{name});
      if (used < n) {
        // The save finished before the nth operation: nothing failed.
        EXPECT_TRUE(outcome.saved);
        EXPECT_EQ(onDisk, newBytes);
        sweep.used[static_cast<int>(fault.op)] = used;
        break;
      }
    }
  }
  return sweep;
}

// A record big enough to take several writes through the archive's buffer.
CDBSubINDICA MakeIndicator(const wchar_t* name, int elements) {
  CDBSubINDICA ind;
  ind.m_strText1 = name;
  for (int i = 0; i < elements; ++i) {
    CDBSubINDICA_ELM e;
    e.strE00 = CString(L'E', 200) + CString(name);
    e.nE01 = i;
    ind.m_arrElement.Add(e);
  }
  return ind;
}

std::string RecordBytes(const TempDir& dir, CDBSubINDICA& record) {
  EXPECT_TRUE(chartcore::SaveRecordFile(dir.lib("reference.ind"), record));
  const std::string bytes = dir.Read("reference.ind");
  std::filesystem::remove(dir.native("reference.ind"));
  return bytes;
}

}  // namespace

TEST(FaultInjection, DefinitionRecordSaveKeepsOldFileOrWritesNewOne) {
  TempDir dir;
  CDBSubINDICA oldRecord = MakeIndicator(L"old", 10);
  CDBSubINDICA newRecord = MakeIndicator(L"new", 40);
  const std::string oldBytes = RecordBytes(dir, oldRecord);
  const std::string newBytes = RecordBytes(dir, newRecord);
  ASSERT_GT(newBytes.size(), 3u * 4096u);  // several buffer-fulls
  const Sweep sweep = SweepFaults(dir, "Indica", "MACD.ind", oldBytes, newBytes, [&] {
    CFileException error;
    const BOOL saved = chartcore::SaveRecordFile(dir.lib("Indica/MACD.ind"), newRecord, &error);
    return Outcome{saved != FALSE, error.m_cause};
  });
  // 4 writes of the archive's buffer (the last one partly full), one sync, one
  // rename, one close: every one of them was made to fail once.
  EXPECT_EQ(sweep.used[0], static_cast<int>((newBytes.size() + 4095) / 4096));
  EXPECT_EQ(sweep.used[1], 1);
  EXPECT_EQ(sweep.used[2], 1);
  EXPECT_EQ(sweep.used[3], 1);
  EXPECT_EQ(sweep.failures, sweep.used[0] + 3);

  // The object form (class tag first) and a loaded record go the same way.
  CDBSubFUNCT funct;
  funct.m_strText3 = L"MA(C, Period)";
  ASSERT_TRUE(chartcore::SaveRecordObjectFile(dir.lib("reference.fct"), funct));
  const std::string functBytes = dir.Read("reference.fct");
  std::filesystem::remove(dir.native("reference.fct"));
  SweepFaults(dir, "Function", "MyAvg.fct", "previous", functBytes, [&] {
    CFileException error;
    const BOOL saved = chartcore::SaveRecordObjectFile(dir.lib("Function/MyAvg.fct"), funct, &error);
    return Outcome{saved != FALSE, error.m_cause};
  });
  std::unique_ptr<CDBSubBase> back = chartcore::LoadRecordObjectFile(dir.lib("Function/MyAvg.fct"));
  ASSERT_NE(back, nullptr);
  EXPECT_TRUE(static_cast<CDBSubFUNCT*>(back.get())->m_strText3 == L"MA(C, Period)");
}

TEST(FaultInjection, TextBufferSaveKeepsOldFileAndModifiedFlag) {
  TempDir dir;
  const std::string oldBytes = "\xEF\xBB\xBFold formula\r\n";
  // 3000 lines of a formula in UTF-8 with a mark and DOS line ends.
  std::wstring text;
  for (int i = 0; i < 3000; ++i) text += L"지표" + std::to_wstring(i) + L" = MA(C, 5);\r\n";
  const std::string newBytes = "\xEF\xBB\xBF" + chartcore::WideToUtf8(text);
  const Sweep sweep = SweepFaults(dir, "Script", "formula.txt", oldBytes, newBytes, [&] {
    CCrystalTextBuffer buf;
    buf.InitNew();
    int endLine = 0, endChar = 0;
    buf.InsertText(nullptr, 0, 0, text.c_str(), endLine, endChar, CE_ACTION_PASTE);
    EXPECT_TRUE(buf.IsModified());
    const BOOL saved = buf.SaveToFile(dir.lib("Script/formula.txt"));
    // A failed save leaves the work marked as unsaved.
    EXPECT_EQ(buf.IsModified(), saved ? FALSE : TRUE);
    return Outcome{saved != FALSE, kNoCause};
  }, /*reportsResult=*/true);
  EXPECT_GE(sweep.used[0], 1);
  EXPECT_EQ(sweep.used[1] + sweep.used[2] + sweep.used[3], 3);
  EXPECT_EQ(sweep.failures, sweep.used[0] + 3);
}

// On Windows the system writes profile files, out of reach of the file layer's
// fault hook; elsewhere the framework's own writer must keep the file whole.
#if !defined(_WIN32)
TEST(FaultInjection, FunctionListKeyWriteKeepsOldFileOrWritesNewOne) {
  // The user function list is rewritten whole for every key it gains.
  TempDir dir;
  const std::string oldBytes = "[System]\r\nCount=1\r\nName0=TrueHigh\r\n[User]\r\nCount=0\r\n";
  dir.MakeFile("reference/New_Function.dat", oldBytes);
  ASSERT_TRUE(WritePrivateProfileStringW(L"User", L"Name0", L"MyAvg", dir.lib("reference/New_Function.dat")));
  const std::string newBytes = dir.Read("reference/New_Function.dat");
  ASSERT_EQ(newBytes, "[System]\r\nCount=1\r\nName0=TrueHigh\r\n[User]\r\nCount=0\r\nName0=MyAvg\r\n");
  const Sweep sweep = SweepFaults(dir, "Function", "New_Function.dat", oldBytes, newBytes, [&] {
    const BOOL saved = WritePrivateProfileStringW(L"User", L"Name0", L"MyAvg", dir.lib("Function/New_Function.dat"));
    return Outcome{saved != FALSE, kNoCause};
  });
  EXPECT_GE(sweep.used[0], 1);
  EXPECT_EQ(sweep.used[1] + sweep.used[2] + sweep.used[3], 3);
}
#endif

TEST(FaultInjection, LogLineIsAppendedWholeOrNotAtAll) {
  TempDir dir;
  const std::string oldBytes = "09:00:00 start\n";
  // The log is a text file: "\n" goes out as the platform's line end.
#if defined(_WIN32)
  const std::string line = "09:00:01 order sent\r\n";
#else
  const std::string line = "09:00:01 order sent\n";
#endif
  const Sweep sweep = SweepFaults(dir, "Local", "trade.log", oldBytes, oldBytes + line, [&] {
    WriteLog(dir.lib("Local/trade.log"), L"09:00:01 order sent\n");
    return Outcome{true, kNoCause};
  }, /*reportsResult=*/false);
  // The log goes through the framework's file code: its write and close are
  // among the operations that were made to fail.
  EXPECT_GE(sweep.used[0], 1);
  EXPECT_GE(sweep.used[3], 1);
}

#if !defined(_WIN32)
TEST(FaultInjection, AppendCutOffPartWayIsTakenBackOff) {
  // A file size limit a few bytes above the log's size makes the system
  // write only part of the line, as a disk that fills up would.
  TempDir dir;
  dir.MakeFile("Local/trade.log", "09:00:00 start\n");
  const std::string line = "09:00:01 a line that does not fit\n";
  struct rlimit saved;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  struct rlimit small = saved;
  small.rlim_cur = 20;
  void (*oldHandler)(int) = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  CFileException error;
  const BOOL appended = chartcore::AppendToFile(dir.lib("Local/trade.log"), line.data(),
                                                static_cast<UINT>(line.size()), &error);
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, oldHandler);
  EXPECT_FALSE(appended);
  EXPECT_EQ(error.m_cause, CFileException::diskFull);  // EFBIG
  EXPECT_EQ(dir.Read("Local/trade.log"), "09:00:00 start\n");  // the 5 bytes that got out are gone
  // Without the limit the same line goes out whole.
  EXPECT_TRUE(chartcore::AppendToFile(dir.lib("Local/trade.log"), line.data(), static_cast<UINT>(line.size())));
  EXPECT_EQ(dir.Read("Local/trade.log"), "09:00:00 start\n" + line);
}
#endif
