// The C runtime and Win32 file-system stand-ins on real folders, with the
// Windows results and error numbers the workspace helpers rely on.
#include "chartcore/platform/filesystem.h"

#include <sys/stat.h>

#include <cerrno>

#include <gtest/gtest.h>

#include "chartcore/platform/file.h"
#include "platform/temp_folder.h"

namespace {

using chartcore_test::TempFolder;

// A plain file's attributes: none on Windows, FILE_ATTRIBUTE_NORMAL standing
// for "none" in the Linux stand-ins.
#if defined(_WIN32)
constexpr DWORD kPlainFileAttributes = 0;
#else
constexpr DWORD kPlainFileAttributes = FILE_ATTRIBUTE_NORMAL;
#endif

// The outcome of a C runtime call: 0 for success, else the errno it set.
int Errno(int result) { return result == 0 ? 0 : result == -1 ? errno : -2; }
// The outcome of a Win32 call: 0 for success, else its GetLastError.
DWORD Error(BOOL ok) { return ok ? 0 : GetLastError(); }

}  // namespace

TEST(FileSystemCalls, CRuntimeFolderAndFileCalls) {
  TempFolder dir;
  const CString logic = dir.Path(L"Logic");
  EXPECT_EQ(Errno(_wmkdir(logic)), 0);
  EXPECT_EQ(Errno(_wmkdir(logic)), EEXIST);
  EXPECT_EQ(Errno(_wmkdir(dir.Path(L"a\\b"))), ENOENT);  // one level at a time
  EXPECT_EQ(Errno(_wmkdir(logic + L"\\Indica")), 0);
  EXPECT_EQ(Errno(_waccess(logic + L"\\Indica\\", 0)), 0);  // a trailing `\` still names the folder
  EXPECT_EQ(Errno(_wrmdir(logic)), ENOTEMPTY);

  dir.MakeFile("f.dat", "abc");
  const CString file = dir.Path(L"f.dat");
  EXPECT_EQ(Errno(_waccess(file, 0)), 0);
  EXPECT_EQ(Errno(_waccess(file, 6)), 0);
#if !defined(_WIN32)
  // The newer runtime refuses the execute bit; msvcrt ignores it.
  EXPECT_EQ(Errno(_waccess(file, 1)), EINVAL);  // execute is no Windows mode
#endif
  chmod(dir.Native("f.dat").c_str(), 0444);
  EXPECT_EQ(Errno(_waccess(file, 4)), 0);
  EXPECT_EQ(Errno(_waccess(file, 2)), EACCES);  // read-only, whoever asks
  chmod(dir.Native("f.dat").c_str(), 0644);
  EXPECT_EQ(Errno(_waccess(dir.Path(L"none"), 0)), ENOENT);

  dir.MakeFile("g.dat", "g");
  EXPECT_EQ(Errno(_wrename(file, dir.Path(L"g.dat"))), EEXIST);  // never replaces, on either system
  EXPECT_EQ(dir.Read("g.dat"), "g");
  EXPECT_EQ(Errno(_wmkdir(dir.Path(L"Other"))), 0);
  EXPECT_EQ(Errno(_wrename(logic, dir.Path(L"Other"))), EEXIST);  // not even onto an empty folder
  EXPECT_EQ(Errno(_wrename(file, dir.Path(L"h.dat"))), 0);
  EXPECT_EQ(dir.Read("h.dat"), "abc");
  EXPECT_EQ(Errno(_wremove(logic)), EACCES);  // folders are not removed as files
  EXPECT_EQ(Errno(_wremove(dir.Path(L"h.dat"))), 0);
  EXPECT_EQ(Errno(_wunlink(dir.Path(L"g.dat"))), 0);
  EXPECT_EQ(Errno(_wunlink(dir.Path(L"g.dat"))), ENOENT);
  EXPECT_EQ(Errno(_wrmdir(logic + L"\\Indica")), 0);
  EXPECT_EQ(Errno(_wrmdir(logic)), 0);
  EXPECT_EQ(Errno(_wrmdir(dir.Path(L"Other"))), 0);
  EXPECT_EQ(dir.Tree(""), std::vector<std::string>{});
}

TEST(FileSystemCalls, Win32CallsAndLastError) {
  TempFolder dir;
  const CString save = dir.Path(L"Save");
  EXPECT_TRUE(CreateDirectoryW(save, nullptr));
#if !defined(_WIN32)
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));  // the system leaves it as it was
#endif
  EXPECT_EQ(Error(CreateDirectoryW(save, nullptr)), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(Error(CreateDirectoryW(dir.Path(L"x\\y"), nullptr)), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
  dir.MakeFile("Save/a.dat", "data");
  EXPECT_EQ(Error(RemoveDirectoryW(save)), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));

  const CString a = save + L"\\a.dat";
  const CString b = save + L"\\b.dat";
  EXPECT_EQ(Error(CopyFileW(a, b, TRUE)), 0u);
  EXPECT_EQ(dir.Read("Save/b.dat"), "data");
  EXPECT_EQ(Error(CopyFileW(a, b, TRUE)), static_cast<DWORD>(ERROR_FILE_EXISTS));
  dir.MakeFile("Save/a.dat", "newer");
  EXPECT_EQ(Error(CopyFileW(a, b, FALSE)), 0u);
  EXPECT_EQ(dir.Read("Save/b.dat"), "newer");
  EXPECT_EQ(Error(CopyFileW(dir.Path(L"none"), b, FALSE)), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(Error(CopyFileW(save, b, FALSE)), static_cast<DWORD>(ERROR_ACCESS_DENIED));  // a folder is not copied

  // Attributes: read-only is the absence of write bits; the flag copies.
  // Windows marks every new file for archiving; Linux has no such bit.
  EXPECT_EQ(GetFileAttributesW(save), static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
  EXPECT_EQ(GetFileAttributesW(a) & ~FILE_ATTRIBUTE_ARCHIVE, kPlainFileAttributes);
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"none")), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(SetFileAttributesW(a, FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(GetFileAttributesW(a) & ~FILE_ATTRIBUTE_ARCHIVE, static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(Error(DeleteFileW(a)), static_cast<DWORD>(ERROR_ACCESS_DENIED));  // read-only files are not deleted
#if !defined(_WIN32)
  EXPECT_FALSE(CopyFileW(b, a, FALSE));  // nor replaced (Wine's CopyFileW does replace it)
#endif
  const CString c = save + L"\\c.dat";
  EXPECT_TRUE(CopyFileW(a, c, TRUE));
  EXPECT_EQ(GetFileAttributesW(c) & FILE_ATTRIBUTE_READONLY, static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  EXPECT_TRUE(SetFileAttributesW(a, FILE_ATTRIBUTE_NORMAL) && SetFileAttributesW(c, FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(DeleteFileW(c));
  EXPECT_FALSE(DeleteFileW(save));  // nor folders
  dir.MakeFile(".config", "");
  EXPECT_EQ(GetFileAttributesW(dir.Path(L".config")) & ~FILE_ATTRIBUTE_ARCHIVE,
            static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN));

  // Moving never replaces unless asked to.
  EXPECT_EQ(Error(MoveFileW(a, b)), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_TRUE(MoveFileExW(a, b, MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(GetFileAttributesW(a), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(MoveFileW(save, dir.Path(L"Saved")));
  EXPECT_EQ(dir.Read("Saved/b.dat"), "newer");
  EXPECT_EQ(Error(MoveFileW(dir.Path(L"none"), dir.Path(L"other"))), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(DeleteFileW(dir.Path(L"Saved\\b.dat")));
  EXPECT_TRUE(RemoveDirectoryW(dir.Path(L"Saved")));
  EXPECT_EQ(Error(RemoveDirectoryW(dir.Path(L"Saved"))), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

#if !defined(_WIN32)
// Symbolic links look as Windows links do: reparse points, with the folder
// bit when they lead to a folder, so tree walks can leave them unfollowed.
TEST(FileSystemCalls, SymbolicLinksAreReparsePoints) {
  TempFolder dir;
  dir.MakeFile("Data/a.dat", "x");
  std::filesystem::create_directory_symlink(dir.native("Data"), dir.native("ToData"));
  std::filesystem::create_symlink(dir.native("Data/a.dat"), dir.native("ToFile"));
  std::filesystem::create_symlink(dir.native("missing"), dir.native("Dangling"));
  const DWORD kLink = FILE_ATTRIBUTE_REPARSE_POINT;
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"ToData")), kLink | FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"ToFile")), kLink);
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"Dangling")), kLink);
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"Data")), static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
  CFileFind finder;
  ASSERT_TRUE(finder.FindFile(dir.Path(L"To*")));
  finder.FindNextFile();
  EXPECT_TRUE(finder.GetFileName() == L"ToData" && finder.MatchesMask(kLink) && finder.IsDirectory());
  finder.FindNextFile();
  EXPECT_TRUE(finder.GetFileName() == L"ToFile" && finder.MatchesMask(kLink) && !finder.IsDirectory());
  EXPECT_EQ(finder.GetLength(), 1u);  // the length of what it leads to
  // A folder link goes as a file, leaving its folder as it was.
  EXPECT_EQ(Error(RemoveDirectoryW(dir.Path(L"ToData"))), static_cast<DWORD>(ERROR_DIRECTORY));
  EXPECT_TRUE(DeleteFileW(dir.Path(L"ToData")));
  EXPECT_EQ(dir.Read("Data/a.dat"), "x");
}

// On Windows these calls are the system's, which knows nothing of the
// injector.
TEST(FileSystemCalls, InjectedRenameFailureLeavesBothNames) {
  TempFolder dir;
  dir.MakeFile("from.dat", "x");
  using chartcore::internal::FileOperation;
  chartcore::internal::ResetFileFaultInjector();
  chartcore::internal::SetFileFaultInjector(FileOperation::kRename, 1, EIO);
  EXPECT_EQ(Errno(_wrename(dir.Path(L"from.dat"), dir.Path(L"to.dat"))), EIO);
  chartcore::internal::SetFileFaultInjector(FileOperation::kRename, 1, EIO);
  EXPECT_FALSE(MoveFileW(dir.Path(L"from.dat"), dir.Path(L"to.dat")));
  chartcore::internal::ResetFileFaultInjector();
  EXPECT_EQ(dir.Tree(""), std::vector<std::string>{"from.dat"});
  EXPECT_EQ(dir.Read("from.dat"), "x");
}
#endif  // !_WIN32
