// The C runtime and Win32 file-system stand-ins on real folders, with the
// Windows results and error numbers the workspace helpers rely on.
#include "chartcore/platform/filesystem.h"

#include <sys/stat.h>

#include <cerrno>

#include <gtest/gtest.h>

#include "chartcore/platform/file.h"
#include "platform/temp_folder.h"

using chartcore_test::ReadAll;
using chartcore_test::TempFolder;
using chartcore_test::WriteAll;

// A plain file's attributes: none on Windows, FILE_ATTRIBUTE_NORMAL standing
// for "none" in the Linux stand-ins.
#if defined(_WIN32)
constexpr DWORD kPlainFileAttributes = 0;
#else
constexpr DWORD kPlainFileAttributes = FILE_ATTRIBUTE_NORMAL;
#endif

TEST(FileSystemCalls, CRuntimeFolderAndFileCalls) {
  TempFolder dir;
  const CString logic = dir.Path(L"Logic");
  EXPECT_EQ(_wmkdir(logic), 0);
  EXPECT_EQ(_wmkdir(logic), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(_wmkdir(dir.Path(L"a\\b")), -1);  // one level at a time
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(_wmkdir(logic + L"\\Indica"), 0);
  EXPECT_EQ(_waccess(logic + L"\\Indica\\", 0), 0);  // a trailing `\` still names the folder
  EXPECT_EQ(_wrmdir(logic), -1);
  EXPECT_EQ(errno, ENOTEMPTY);

  WriteAll(dir.Native("f.dat"), "abc");
  const CString file = dir.Path(L"f.dat");
  EXPECT_EQ(_waccess(file, 0), 0);
  EXPECT_EQ(_waccess(file, 6), 0);
#if !defined(_WIN32)
  // The newer runtime refuses the execute bit; msvcrt ignores it.
  EXPECT_EQ(_waccess(file, 1), -1);  // execute is no Windows mode
  EXPECT_EQ(errno, EINVAL);
#endif
  chmod(dir.Native("f.dat").c_str(), 0444);
  EXPECT_EQ(_waccess(file, 4), 0);
  EXPECT_EQ(_waccess(file, 2), -1);  // read-only, whoever asks
  EXPECT_EQ(errno, EACCES);
  chmod(dir.Native("f.dat").c_str(), 0644);
  EXPECT_EQ(_waccess(dir.Path(L"none"), 0), -1);
  EXPECT_EQ(errno, ENOENT);

  WriteAll(dir.Native("g.dat"), "g");
  EXPECT_EQ(_wrename(file, dir.Path(L"g.dat")), -1);  // never replaces
#if !defined(_WIN32)
  EXPECT_EQ(errno, EACCES);  // as documented; msvcrt itself reports EEXIST
#endif
  EXPECT_EQ(_wrename(file, dir.Path(L"h.dat")), 0);
  EXPECT_EQ(ReadAll(dir.Native("h.dat")), "abc");
  EXPECT_EQ(_wremove(logic), -1);  // folders are not removed as files
  EXPECT_EQ(errno, EACCES);
  EXPECT_EQ(_wremove(dir.Path(L"h.dat")), 0);
  EXPECT_EQ(_wunlink(dir.Path(L"g.dat")), 0);
  EXPECT_EQ(_wunlink(dir.Path(L"g.dat")), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(_wrmdir(logic + L"\\Indica"), 0);
  EXPECT_EQ(_wrmdir(logic), 0);
}

TEST(FileSystemCalls, Win32CallsAndLastError) {
  TempFolder dir;
  const CString save = dir.Path(L"Save");
  EXPECT_TRUE(CreateDirectoryW(save, nullptr));
#if !defined(_WIN32)
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));  // the system leaves it as it was
#endif
  EXPECT_FALSE(CreateDirectoryW(save, nullptr));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_FALSE(CreateDirectoryW(dir.Path(L"x\\y"), nullptr));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));

  WriteAll(dir.Native("Save/a.dat"), "data");
  EXPECT_FALSE(RemoveDirectoryW(save));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));

  const CString a = save + L"\\a.dat";
  const CString b = save + L"\\b.dat";
  EXPECT_TRUE(CopyFileW(a, b, TRUE));
  EXPECT_EQ(ReadAll(dir.Native("Save/b.dat")), "data");
  EXPECT_FALSE(CopyFileW(a, b, TRUE));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
  WriteAll(dir.Native("Save/a.dat"), "newer");
  EXPECT_TRUE(CopyFileW(a, b, FALSE));
  EXPECT_EQ(ReadAll(dir.Native("Save/b.dat")), "newer");
  EXPECT_FALSE(CopyFileW(dir.Path(L"none"), b, FALSE));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_FALSE(CopyFileW(save, b, FALSE));  // a folder is not copied
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));

  // Attributes: read-only is the absence of write bits; the flag copies.
  EXPECT_EQ(GetFileAttributesW(save), static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
  // Windows marks every new file for archiving; Linux has no such bit.
  EXPECT_EQ(GetFileAttributesW(a) & ~FILE_ATTRIBUTE_ARCHIVE,
            static_cast<DWORD>(kPlainFileAttributes));
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"none")), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_TRUE(SetFileAttributesW(a, FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(GetFileAttributesW(a) & ~FILE_ATTRIBUTE_ARCHIVE, static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  EXPECT_FALSE(DeleteFileW(a));  // read-only files are not deleted
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
#if !defined(_WIN32)
  EXPECT_FALSE(CopyFileW(b, a, FALSE));  // nor replaced (Wine's CopyFileW does replace it)
#endif
  EXPECT_TRUE(CopyFileW(a, save + L"\\c.dat", TRUE));
  EXPECT_EQ(GetFileAttributesW(save + L"\\c.dat") & FILE_ATTRIBUTE_READONLY, static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  EXPECT_TRUE(SetFileAttributesW(a, FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(SetFileAttributesW(save + L"\\c.dat", FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(DeleteFileW(save + L"\\c.dat"));
  EXPECT_FALSE(DeleteFileW(save));  // nor folders
  WriteAll(dir.Native(".config"), "");
  EXPECT_EQ(GetFileAttributesW(dir.Path(L".config")) & ~FILE_ATTRIBUTE_ARCHIVE,
            static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN));

  // Moving never replaces unless asked to.
  EXPECT_FALSE(MoveFileW(a, b));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
  EXPECT_TRUE(MoveFileExW(a, b, MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(GetFileAttributesW(a), INVALID_FILE_ATTRIBUTES);
  EXPECT_TRUE(MoveFileW(save, dir.Path(L"Saved")));
  EXPECT_EQ(ReadAll(dir.Native("Saved/b.dat")), "newer");
  EXPECT_FALSE(MoveFileW(dir.Path(L"none"), dir.Path(L"other")));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));

  EXPECT_TRUE(DeleteFileW(dir.Path(L"Saved\\b.dat")));
  EXPECT_TRUE(RemoveDirectoryW(dir.Path(L"Saved")));
  EXPECT_FALSE(RemoveDirectoryW(dir.Path(L"Saved")));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

#if !defined(_WIN32)
// On Windows these calls are the system's, which knows nothing of the
// injector.
TEST(FileSystemCalls, InjectedRenameFailureLeavesBothNames) {
  TempFolder dir;
  WriteAll(dir.Native("from.dat"), "x");
  chartcore::internal::ResetFileFaultInjector();
  chartcore::internal::SetFileFaultInjector(chartcore::internal::FileOperation::kRename, 1, EIO);
  EXPECT_EQ(_wrename(dir.Path(L"from.dat"), dir.Path(L"to.dat")), -1);
  EXPECT_EQ(errno, EIO);
  chartcore::internal::SetFileFaultInjector(chartcore::internal::FileOperation::kRename, 1, EIO);
  EXPECT_FALSE(MoveFileW(dir.Path(L"from.dat"), dir.Path(L"to.dat")));
  chartcore::internal::ResetFileFaultInjector();
  EXPECT_EQ(ReadAll(dir.Native("from.dat")), "x");
  EXPECT_EQ(GetFileAttributesW(dir.Path(L"to.dat")), INVALID_FILE_ATTRIBUTES);
}
#endif  // !_WIN32
