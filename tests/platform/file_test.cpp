// The file classes on real files in a temporary folder (paths written with
// the library's `\`), the memory file, text lines, folder listing with
// wildcards, and the atomic save under injected failures.
#include "chartcore/platform/file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/filesystem.h"
#include "platform/temp_folder.h"

namespace {

using chartcore::internal::FileOperation;
using chartcore::internal::ResetFileFaultInjector;
using chartcore::internal::SetFileFaultInjector;
using chartcore_test::kOsAccessDenied;
using chartcore_test::kOsDiskFull;
using chartcore_test::kOsIoError;
using chartcore_test::kOsNotFound;
using chartcore_test::TempFolder;

// A path through a missing folder: Windows names the path, Linux the file.
#if defined(_WIN32)
constexpr int kMissingFolderCause = CFileException::badPath;
#else
constexpr int kMissingFolderCause = CFileException::fileNotFound;
#endif

// The cause and system error of the CFileException f throws ({-1, 0} if none).
std::pair<int, long> FileError(const std::function<void()>& f) {
  try {
    f();
  } catch (const CFileException& e) {
    return {e.m_cause, e.m_lOsError};
  }
  return {-1, 0};
}

int FileCause(const std::function<void()>& f) { return FileError(f).first; }

}  // namespace

TEST(CFileOnDisk, OpenFailuresReadWriteSeekAndNames) {
  TempFolder dir;
  CFile file;
  CFileException error;
  EXPECT_FALSE(file.Open(dir.Path(L"missing.dat"), CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  EXPECT_EQ(error.m_lOsError, kOsNotFound);
  EXPECT_EQ(error.m_strFileName, std::wstring(dir.Path(L"missing.dat").GetString()));
  EXPECT_FALSE(file.Open(dir.Path(L"no\\such\\x.dat"), CFile::modeCreate | CFile::modeWrite, &error));
  EXPECT_EQ(error.m_cause, kMissingFolderCause);
  EXPECT_FALSE(file.Open(L"", CFile::modeRead, &error));
  EXPECT_FALSE(file.Open(dir.Path(L""), CFile::modeRead, &error));  // a folder is not a file
  EXPECT_EQ(error.m_cause, CFileException::accessDenied);
  EXPECT_FALSE(file.Open(dir.Path(L"x"), 3, &error));  // no such access mode
  EXPECT_FALSE(file.IsOpen());
  EXPECT_THROW(CFile(dir.Path(L"missing.dat"), CFile::modeRead), CFileException);
  EXPECT_EQ(FileCause([&] { file.Write("x", 1); }), CFileException::invalidFile);  // not open

  const CString path = dir.Path(L"data.file.dat");
  ASSERT_TRUE(file.Open(path, CFile::modeCreate | CFile::modeReadWrite | CFile::shareDenyNone));
  file.Write("0123456789", 10);
  EXPECT_EQ(file.GetPosition(), 10u);
  EXPECT_EQ(file.Seek(-4, CFile::end), 6u);
  char buf[16] = {};
  EXPECT_EQ(file.Read(buf, 16), 4u);  // fewer at the end
  EXPECT_STREQ(buf, "6789");
  EXPECT_EQ(file.Read(buf, 16), 0u);
  EXPECT_EQ(file.Seek(2, CFile::begin), 2u);
  EXPECT_EQ(file.Seek(3, CFile::current), 5u);
  EXPECT_EQ(FileCause([&] { file.Seek(-6, CFile::current); }), CFileException::badSeek);
  EXPECT_EQ(file.SeekToEnd(), 10u);
  file.SetLength(4);
  file.SetLength(6);  // extends with zeros
  file.Flush();
  EXPECT_EQ(file.GetFilePath(), path);
  EXPECT_TRUE(file.GetFileName() == L"data.file.dat");
  EXPECT_TRUE(file.GetFileTitle() == L"data.file");
  file.Close();
  file.Close();  // closing twice is harmless
  EXPECT_EQ(dir.Read("data.file.dat"), std::string("0123\0\0", 6));
  // Rename never replaces an existing name, on any system.
  dir.MakeFile("other.dat", "other");
  EXPECT_EQ(FileCause([&] { CFile::Rename(path, dir.Path(L"other.dat")); }), CFileException::accessDenied);
  EXPECT_EQ(dir.Read("other.dat"), "other");
  CFile::Rename(path, dir.Path(L"renamed.dat"));
  EXPECT_EQ(dir.Read("renamed.dat"), std::string("0123\0\0", 6));
  CFile::Rename(dir.Path(L"renamed.dat"), path);

  // modeNoTruncate keeps the contents; modeCreate alone empties the file.
  ASSERT_TRUE(file.Open(path, CFile::modeCreate | CFile::modeNoTruncate | CFile::modeWrite));
  EXPECT_EQ(file.GetLength(), 6u);
  ASSERT_TRUE(file.Open(path, CFile::modeCreate | CFile::modeWrite));  // Open closes the file before
  EXPECT_EQ(file.GetLength(), 0u);
  // Writing to a file opened for reading throws (the system refuses the
  // access on Windows, the descriptor on Linux).
  ASSERT_TRUE(file.Open(path, CFile::modeRead));
#if defined(_WIN32)
  EXPECT_EQ(FileCause([&] { file.Write("x", 1); }), CFileException::accessDenied);
  EXPECT_TRUE(chartcore::ToNativePath(L"C:\\ws\\Logic\\") == L"C:\\ws\\Logic\\");  // used as it is
#else
  EXPECT_EQ(FileCause([&] { file.Write("x", 1); }), CFileException::invalidFile);
  EXPECT_TRUE(chartcore::ToNativePath(L"/home/u/ws\\Logic\\") == L"/home/u/ws/Logic/");
#endif
}

TEST(CFileOnDisk, InjectedFailuresThrowWithCauses) {
  TempFolder dir;
  ResetFileFaultInjector();
  CFile file(dir.Path(L"f.dat"), CFile::modeCreate | CFile::modeWrite);
  SetFileFaultInjector(FileOperation::kWrite, 2, kOsDiskFull);
  file.Write("a", 1);
  EXPECT_EQ(FileError([&] { file.Write("b", 1); }), std::make_pair(int{CFileException::diskFull}, kOsDiskFull));
  file.Write("c", 1);  // only the armed one fails
  EXPECT_EQ(chartcore::internal::GetFileOperationCount(FileOperation::kWrite), 3);
  SetFileFaultInjector(FileOperation::kClose, 1, kOsIoError);
  EXPECT_EQ(FileCause([&] { file.Close(); }), CFileException::hardIO);
  EXPECT_FALSE(file.IsOpen());  // released anyway
  ResetFileFaultInjector();
  EXPECT_EQ(dir.Read("f.dat"), "ac");
}

TEST(CMemFileBehaviour, GrowsSeeksAndDetaches) {
  CMemFile mem(16);
  for (int i = 0; i < 1000; ++i) mem.Write(&i, sizeof(i));
  EXPECT_EQ(mem.GetLength(), 4000u);
  mem.Seek(4 * 999, CFile::begin);
  int last = 0;
  EXPECT_EQ(mem.Read(&last, 4), 4u);
  EXPECT_EQ(last, 999);
  EXPECT_EQ(mem.Read(&last, 4), 0u);
  EXPECT_EQ(FileCause([&] { mem.Seek(-1, CFile::begin); }), CFileException::badSeek);
  EXPECT_EQ(FileCause([&] { mem.Seek(0, 7); }), CFileException::badSeek);  // no such origin
  mem.Seek(4010, CFile::begin);  // past the end: the gap reads as zeros
  mem.Write("z", 1);
  EXPECT_EQ(mem.GetLength(), 4011u);
  EXPECT_EQ(mem.GetData()[4005], 0);
  mem.SetLength(2);
  EXPECT_EQ(mem.GetPosition(), 2u);
  BYTE* block = mem.Detach();
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block[0], 0);  // the bytes of int 0
  std::free(block);
  EXPECT_EQ(mem.GetLength(), 0u);
  mem.Write("ok", 2);  // usable again after Detach
  EXPECT_EQ(mem.GetLength(), 2u);

  // An attached block with grow step 0: the block's bytes are the file.
  BYTE fixed[4] = {1, 2, 3, 4};
  CMemFile view(fixed, 4);
  BYTE got[4] = {};
  EXPECT_EQ(view.Read(got, 4), 4u);
  EXPECT_EQ(got[3], 4);
  view.SeekToBegin();
  view.Write("\x09", 1);
  EXPECT_EQ(fixed[0], 9);  // written in place
  view.SeekToEnd();
  EXPECT_EQ(FileCause([&] { view.Write("x", 1); }), CFileException::diskFull);
  EXPECT_EQ(view.Detach(), fixed);

  // A growable attached block starts empty, fills the block, then moves out.
  BYTE start[4] = {0, 0, 0, 0};
  CMemFile growing;
  growing.Attach(start, 4, 8);
  EXPECT_EQ(growing.GetLength(), 0u);
  growing.Write("abcd", 4);
  EXPECT_EQ(growing.GetData(), start);
  growing.Write("efgh", 4);
  EXPECT_NE(growing.GetData(), start);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(growing.GetData()), 8), "abcdefgh");
  EXPECT_EQ(std::memcmp(start, "abcd", 4), 0);  // the caller's block is left as it was
  std::free(growing.Detach());  // a block the file allocated is the caller's to free
  EXPECT_FALSE(growing.Open(L"x", CFile::modeRead));
}

TEST(CStdioFileText, LinesInUtf8WithBomLineEndsAndFailures) {
  TempFolder dir;
  {
    CStdioFile out(dir.Path(L"log.txt"), CFile::modeCreate | CFile::modeWrite | CFile::typeText);
    out.WriteString(L"\xD55C\xAD6D\n");  // "한국"
    out.WriteString(L"second\nthird");
  }
#if defined(_WIN32)
  // The system code page (949) and the Windows line end.
  EXPECT_EQ(dir.Read("log.txt"), "\xC7\xD1\xB1\xB9\r\nsecond\r\nthird");
#else
  EXPECT_EQ(dir.Read("log.txt"), "\xED\x95\x9C\xEA\xB5\xAD\nsecond\nthird");
#endif

  dir.MakeFile("in.txt", "\xEF\xBB\xBF" "first\r\n\r\nbad\xFF\nlast");
  CStdioFile in;
  ASSERT_TRUE(in.Open(dir.Path(L"in.txt"), CFile::modeRead));
  // The mark is skipped, "\r\n" dropped; an empty line is still a line; the
  // last line needs no line end.
  std::vector<std::wstring> lines;
  CString line(L"x");
  while (in.ReadString(line)) lines.push_back(line.GetString());
  EXPECT_TRUE(line.IsEmpty());
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0] + L"|" + lines[1] + L"|" + lines[3], L"first||last");
#if defined(_WIN32)
  EXPECT_EQ(lines[2].substr(0, 3), L"bad");  // the system decides what a stray 0xFF becomes
#else
  EXPECT_EQ(lines[2], L"bad\xFFFD");  // an invalid byte becomes U+FFFD
#endif

  // Reading again from the start skips the mark again; binary mode keeps "\r".
  in.SeekToBegin();
  wchar_t buf[4];
  EXPECT_EQ(in.ReadString(buf, 4), buf);
  EXPECT_STREQ(buf, L"fir");
  EXPECT_EQ(in.ReadString(buf, 4), buf);
  EXPECT_STREQ(buf, L"st\n");  // the "\n" is kept when it fits
  // An unknown origin is refused, as by the other files, and moves nothing.
  const ULONGLONG before = in.GetPosition();
  EXPECT_EQ(FileCause([&] { in.Seek(1, 7); }), CFileException::badSeek);
  EXPECT_EQ(in.GetPosition(), before);
  in.Close();
  CStdioFile binary(dir.Path(L"in.txt"), CFile::modeRead | CFile::typeBinary);
  ASSERT_TRUE(binary.ReadString(line));
  EXPECT_TRUE(line == L"first\r");

  // Write failures surface at Flush or at the write itself.
  ResetFileFaultInjector();
  CStdioFile out(dir.Path(L"t.txt"), CFile::modeCreate | CFile::modeWrite);
  out.WriteString(L"kept");
  SetFileFaultInjector(FileOperation::kFlush, 1, kOsDiskFull);
  EXPECT_EQ(FileCause([&] { out.Flush(); }), CFileException::diskFull);
  SetFileFaultInjector(FileOperation::kWrite, 1, kOsIoError);
  EXPECT_EQ(FileCause([&] { out.WriteString(L"lost"); }), CFileException::hardIO);
  out.Close();
  ResetFileFaultInjector();
  EXPECT_EQ(dir.Read("t.txt"), "kept");
}

TEST(CFileFindListing, WildcardsOrderAndAttributes) {
  TempFolder dir;
  for (const char* name : {"c.txt", "noext", ".hidden"}) dir.MakeFile(name, "");
  dir.MakeFile("b.DAT", "12345");
  dir.MakeFile("a.dat", "1");
  std::filesystem::create_directory(dir.native("Sub"));
  chmod(dir.Native("a.dat").c_str(), 0444);

  CFileFind finder;
  ASSERT_TRUE(finder.FindFile(dir.Path(L"*.dat")));
  EXPECT_TRUE(finder.GetFileName().IsEmpty());  // nothing current before FindNextFile
  EXPECT_TRUE(finder.FindNextFile());           // more to come
  EXPECT_TRUE(finder.GetFileName() == L"a.dat");
  EXPECT_TRUE(finder.IsReadOnly());
  EXPECT_EQ(finder.GetLength(), 1u);
  EXPECT_TRUE(finder.GetFilePath() == dir.Path(L"a.dat"));  // the pattern's `\` kept
  EXPECT_TRUE(finder.GetFileTitle() == L"a");
  EXPECT_FALSE(finder.FindNextFile());  // FALSE: this one is the last
  EXPECT_TRUE(finder.GetFileName() == L"b.DAT");  // letters match regardless of case
  EXPECT_EQ(finder.GetLength(), 5u);
  EXPECT_FALSE(finder.IsReadOnly());
  EXPECT_FALSE(finder.FindNextFile());
  EXPECT_TRUE(finder.GetFileName() == L"b.DAT");

  // Every entry a pattern lists, in name order ignoring case: the name, "/"
  // for a folder, "~" for a dot entry, "*" for a hidden one.
  const auto list = [&](const wchar_t* pattern) {
    std::wstring all;
    for (BOOL more = finder.FindFile(dir.Path(pattern)); more;) {
      more = finder.FindNextFile();
      all += finder.GetFileName().GetString();
      all += std::wstring(finder.IsDirectory() ? L"/" : L"") + (finder.IsDots() ? L"~" : L"") +
             (finder.IsHidden() ? L"*" : L"") + L" ";
    }
    return all;
  };
  // "*.*" matches names without a dot too.
  EXPECT_EQ(list(L"*.*"), L"./~ ../~ .hidden* a.dat b.DAT c.txt noext Sub/ ");
  EXPECT_TRUE(finder.GetRoot() == dir.Path(L"").Left(dir.Path(L"").GetLength() - 1));
  EXPECT_EQ(list(L"*."), L"noext Sub/ ");  // names without an extension
  EXPECT_FALSE(finder.FindFile(dir.Path(L"*.none")));
  EXPECT_FALSE(finder.FindFile(dir.Path(L"Missing\\*.*")));
  EXPECT_FALSE(finder.FindNextFile());
  finder.Close();
  EXPECT_FALSE(finder.IsDirectory());
}

TEST(CFileFindListing, MaskRulesAsWindowsAppliesThem) {
  // Many stars against a long name stay quick (the matcher remembers).
  const std::wstring longName(200, L'a');
  struct Case { const wchar_t* name; const wchar_t* mask; bool match; };
  const Case cases[] = {
      {L"a.dat", L"*.DAT", true},     {L"a.data", L"*.dat", false},  {L"noext", L"*.*", true},
      {L".hidden", L"*.*", true},     {L"noext", L"*", true},        {L"noext", L"*.", true},
      {L"x.dat", L"*.", false},       {L"abc", L"abc.*", true},      {L"abc.d", L"abc.*", true},
      {L"ab", L"ab?", true},          {L"ac", L"a?c", false},        {L"abc", L"a?c", true},
      {L"a.txt", L"a?.txt", true},    {L"ab.txt", L"a?.txt", true},  {L"a.b", L"a?b", false},
      {L"abcd", L"abc", false},       {L"\xD55C.dat", L"?.dat", true}, {L"x", L"", false},
      {L"a.b.c", L"*.c", true},       {L"abc", L"abc.???", true},
      {longName.c_str(), L"*a*a*a*a*a*a*a*a*a*a*a*b", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(chartcore::MatchFileMask(c.name, c.mask) != 0, c.match) << c.name << L" vs " << c.mask;
  }
}

TEST(WriteFileAtomicSave, ReplacesWholeAndKeepsPermissions) {
  TempFolder dir;
  const CString path = dir.Path(L"rec.dat");
  dir.MakeFile("rec.dat", "old contents");
  chmod(dir.Native("rec.dat").c_str(), 0640);
  CFileException error;
  ASSERT_TRUE(chartcore::WriteFileAtomic(
      path,
      [](CFile& f) {
        CArchive ar(&f, CArchive::store);
        ar << CString(L"new");
        ar.Close();
      },
      &error));
  EXPECT_EQ(dir.Read("rec.dat"), std::string("\xFF\xFE\xFF\x03n\0e\0w\0", 10));
  {  // and loads back through a disk file with the smallest buffer
    CFile in(path, CFile::modeRead);
    CArchive ar(&in, CArchive::load, 16);
    CString back;
    ar >> back;
    EXPECT_TRUE(back == L"new");
    EXPECT_THROW(ar >> back, CArchiveException);  // at the end
  }
#if !defined(_WIN32)
  struct stat st;
  ASSERT_EQ(stat(dir.Native("rec.dat").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);  // Windows keeps only the read-only flag
#endif
  EXPECT_EQ(dir.Tree(""), std::vector<std::string>{"rec.dat"});  // no temporary file left

  // A new file in a folder that does not exist: FALSE, nothing created.
  EXPECT_FALSE(chartcore::WriteFileAtomic(dir.Path(L"no\\x.dat"), [](CFile&) {}, &error));
  EXPECT_EQ(error.m_cause, kMissingFolderCause);

  // A read-only target is refused and left alone.
  chmod(dir.Native("rec.dat").c_str(), 0444);
  EXPECT_FALSE(chartcore::WriteFileAtomic(path, [](CFile& f) { f.Write("x", 1); }, &error));
  EXPECT_EQ(error.m_cause, CFileException::accessDenied);
  EXPECT_EQ(dir.Read("rec.dat").size(), 10u);
}

TEST(WriteFileAtomicSave, OldFileSurvivesEveryFailure) {
  TempFolder dir;
  const CString path = dir.Path(L"keep.dat");
  const std::string original = "original bytes";
  dir.MakeFile("keep.dat", original);
  const auto writer = [](CFile& f) {
    CArchive ar(&f, CArchive::store, 64);
    for (int i = 0; i < 100; ++i) ar << i;  // several buffer flushes
    ar.Close();
  };
  struct Step { FileOperation op; int nth; long osError; int cause; };
  const Step steps[] = {
      {FileOperation::kWrite, 1, kOsDiskFull, CFileException::diskFull},
      {FileOperation::kWrite, 3, kOsIoError, CFileException::hardIO},
      {FileOperation::kFlush, 1, kOsIoError, CFileException::hardIO},
      {FileOperation::kClose, 1, kOsDiskFull, CFileException::diskFull},
      {FileOperation::kRename, 1, kOsAccessDenied, CFileException::accessDenied},
  };
  for (const Step& s : steps) {
    SCOPED_TRACE(static_cast<int>(s.op));
    ResetFileFaultInjector();
    SetFileFaultInjector(s.op, s.nth, s.osError);
    CFileException error;
    EXPECT_FALSE(chartcore::WriteFileAtomic(path, writer, &error));
    EXPECT_EQ(std::make_pair(error.m_cause, error.m_lOsError), std::make_pair(s.cause, s.osError));
    EXPECT_EQ(dir.Read("keep.dat"), original);
    EXPECT_EQ(dir.Tree(""), std::vector<std::string>{"keep.dat"});
  }
  ResetFileFaultInjector();

  // A failing last write left to the archive's destructor is still noticed.
  SetFileFaultInjector(FileOperation::kWrite, 1, kOsDiskFull);
  EXPECT_FALSE(chartcore::WriteFileAtomic(path, [](CFile& f) {
    CArchive ar(&f, CArchive::store);
    ar << 1;
  }));
  ResetFileFaultInjector();
  EXPECT_EQ(dir.Read("keep.dat"), original);

  // The writer's own exceptions: file failures are results, others rethrown.
  CFileException error;
  EXPECT_FALSE(chartcore::WriteFileAtomic(
      path, [](CFile&) { AfxThrowFileException(CFileException::badPath, ENOTDIR); }, &error));
  EXPECT_EQ(error.m_cause, CFileException::badPath);
  try {
    chartcore::WriteFileAtomic(path, [](CFile& f) {
      f.Write("partial", 7);
      AfxThrowArchiveException(CArchiveException::badIndex);
    });
    FAIL() << "an archive exception passes through";
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::badIndex);
  }
  EXPECT_THROW(chartcore::WriteFileAtomic(path, [](CFile&) { throw std::runtime_error("x"); }), std::runtime_error);
  EXPECT_EQ(dir.Read("keep.dat"), original);
  EXPECT_EQ(dir.Tree(""), std::vector<std::string>{"keep.dat"});
}
