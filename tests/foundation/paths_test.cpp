#include "chartcore/foundation/paths.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/platform/filesystem.h"
#include "temp_workspace.h"

TEST(WorkspacePathText, FoldersJoinRootAsItStands) {
  // Every folder of the root, concatenated: the exact texts, one after another.
  std::wstring all;
  for (auto folder : {GetPath_Logic, GetPath_Logic_Indica, GetPath_Logic_Signal, GetPath_Logic_Region,
                      GetPath_Logic_Fill, GetPath_Logic_Pattern, GetPath_Logic_Optimize, GetPath_Logic_Funct,
                      GetPath_Logic_Market, GetPath_Save, GetPath_Templ, GetPath_Event}) {
    all += folder(L"C:\\Root").str() + L"|";
  }
  EXPECT_EQ(all, L"C:\\Root\\Logic\\|C:\\Root\\Logic\\Indica\\|C:\\Root\\Logic\\Signal\\|C:\\Root\\Logic\\Region\\|"
                 L"C:\\Root\\Logic\\Fill\\|C:\\Root\\Logic\\Pattern\\|C:\\Root\\Logic\\Optimize\\|"
                 L"C:\\Root\\Logic\\Function\\|C:\\Root\\Logic\\Market\\|"  // functions: the long name
                 L"C:\\Root\\Save\\|C:\\Root\\Templ\\|C:\\Root\\Event\\|");
  // A trailing separator on the root is kept, so it doubles.
  EXPECT_EQ(GetPath_Logic_Indica(L"C:\\Root\\"), L"C:\\Root\\\\Logic\\Indica\\");
  EXPECT_EQ(GetPath(L"C:\\Root"), L"C:\\Root\\");
  EXPECT_EQ(GetPath(L"C:\\Root\\"), L"C:\\Root\\");
  EXPECT_EQ(GetPath(L"C:\\Root\\\\"), L"C:\\Root\\\\");  // only a missing one is added
  EXPECT_EQ(GetPath(L""), L"\\");

  EXPECT_EQ(GetPath_Local(L"C:\\Root\\\\", L""), L"C:\\Root\\");  // every trailing one dropped
  EXPECT_EQ(GetPath_Local(L"C:\\Root", L"_u01"), L"C:\\Root\\Local_u01\\");
  EXPECT_EQ(GetPath_Local(L"C:\\Root\\", L"\\kim"), L"C:\\Root\\Local\\kim\\");  // caller's own separator
  EXPECT_EQ(GetPath_Local(L"C:\\Root", L"\xAE40"), L"C:\\Root\\Local\xAE40\\");
  all.clear();
  for (auto folder : {GetPath_Local_Data, GetPath_Local_Image, GetPath_Local_Result, GetPath_Local_Save,
                      GetPath_Local_Templ}) {
    all += folder(L"C:\\Root", L"_u01").str() + L"|";
  }
  EXPECT_EQ(all, L"C:\\Root\\Local_u01\\Data\\|C:\\Root\\Local_u01\\Image\\|C:\\Root\\Local_u01\\Result\\|"
                 L"C:\\Root\\Local_u01\\Save\\|C:\\Root\\Local_u01\\Templ\\|");
  EXPECT_EQ(GetPath_Local_Data(L"C:\\Root\\", L""), L"C:\\Root\\Data\\");
  // A root holding a printf directive is printed as text, not as a format.
  EXPECT_EQ(GetPath_Local_Data(L"C:\\100%s", L""), L"C:\\100%s\\Data\\");
  EXPECT_EQ(GetPath_Local_Control(L"C:\\Root", L"_u01", L"Grid"), L"C:\\Root\\Local_u01\\Grid\\");
  EXPECT_EQ(GetPath_Local_Control(L"C:\\Root", L"_u01", L"Grid\\"), L"C:\\Root\\Local_u01\\Grid\\");
  EXPECT_EQ(GetPath_Local_Control(L"C:\\Root", L"_u01", L""), L"C:\\Root\\Local_u01\\");
}

TEST(WorkspacePathText, ShortNamesAndFileNames) {
  EXPECT_EQ(ChangeVariablePathName(L"C:\\Documents and Settings\\u\\Program Files"),
            L"C:\\Docume~1\\u\\Program Files");  // only the first kind is shortened
  EXPECT_EQ(ChangeVariablePathName(L"C:\\Program Files\\a\\Program Files"), L"C:\\Progra~1\\a\\Progra~1");
  EXPECT_EQ(ChangeVariablePathName(L"C:\\program files\\a"), L"C:\\program files\\a");  // case-sensitive

  EXPECT_EQ(ChangeVariableFileName(L" a:b/c ", L"_"), L"a_b_c");
  EXPECT_EQ(ChangeVariableFileName(L"say \"hi\"", L"_"), L"say \"hi\"");  // the quote stays
  EXPECT_EQ(ChangeVariableFileName(L"*?\\|<>", L"-"), L"------");
  EXPECT_EQ(ChangeVariableFileName(L"\ta b\r\n", L"_"), L"a b");  // blanks inside are kept
  // The characters are replaced one kind after another: a replacement holding
  // a later character of the set is replaced again, an earlier one is not.
  EXPECT_EQ(ChangeVariableFileName(L"x:y", L"a/"), L"xaa/y");  // ':' -> "a/", then '/' -> "a/"
  EXPECT_EQ(ChangeVariableFileName(L"x/y", L"a:"), L"xa:y");  // ':' was already done
}

// ---------------------------------------------------------------------------
// Directories on a real file system
// ---------------------------------------------------------------------------

using chartcore_test::TempDir;
using testing_fs::MessageCapture;

namespace {
using Names = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

void MarkReadOnly(const CString& path) { ASSERT_TRUE(SetFileAttributesW(path, FILE_ATTRIBUTE_READONLY)); }
bool IsReadOnly(const CString& path) { return (GetFileAttributesW(path) & FILE_ATTRIBUTE_READONLY) != 0; }
}  // namespace

TEST(WorkspaceDirectories, MakeAndReMakeKeepTheirOrderOfCalls) {
  TempDir t;
  MessageCapture messages;
  CString path;
  EXPECT_EQ(MakeDirectory(path), 0);  // empty
  EXPECT_EQ(ReMakeDirectory(path), 0);
  path = t.lib("Logic");
  EXPECT_EQ(MakeDirectory(path), 1);
  EXPECT_EQ(MakeDirectory(path), 1);  // already there
  path = t.lib("a/b");
  EXPECT_EQ(MakeDirectory(path), 0);  // only the last level is made
  t.MakeFile("plain.txt", "x");
  path = t.lib("plain.txt");
  EXPECT_EQ(MakeDirectory(path), 1);  // anything that exists counts

  // Files go and the sub-directory stays, so the folder cannot be removed
  // and still exists: success, no message.
  t.MakeFile("w/a.txt", "1");
  t.MakeFile("w/sub/c.txt", "3");
  path = t.lib("w") + L"\\";
  EXPECT_EQ(ReMakeDirectory(path), 1);
  EXPECT_EQ(path, t.lib("w"));  // the trailing separator is gone from the caller's string
  EXPECT_EQ(t.Tree("w"), (Names{"sub/", "sub/c.txt"}));
  // A read-only file is not deleted either, so that folder survives too.
  t.MakeFile("r/locked.txt", "1");
  MarkReadOnly(t.lib("r/locked.txt"));
  path = t.lib("r");
  EXPECT_EQ(ReMakeDirectory(path), 1);
  EXPECT_TRUE(t.Has("r/locked.txt"));
  EXPECT_TRUE(messages.shown().empty());

  // Only files: the folder is removed, and then the failure text is shown.
  t.MakeFile("v/a.txt", "1");
  path = t.lib("v");
  EXPECT_EQ(ReMakeDirectory(path), 0);
  EXPECT_FALSE(t.Has("v"));
  EXPECT_EQ(messages.texts(), (Texts{L"Unable to make " + t.lib("v").str() + L" Directory"}));
}

TEST(WorkspaceDirectories, CopyDirectoryTopLevelOrWholeTree) {
  TempDir t;
  MessageCapture messages;
  t.MakeFile("src/a.txt", "A");
  t.MakeFile("src/sub/deep/c.txt", "C");
  t.MakeFile("src/ro.txt", "R");
  MarkReadOnly(t.lib("src/ro.txt"));

  EXPECT_EQ(CopyDirectory(t.lib("src"), t.lib("top"), DIRECTORY_TOP_LEVEL), 1);
  EXPECT_EQ(t.Tree("top"), (Names{"a.txt", "ro.txt"}));
  EXPECT_TRUE(IsReadOnly(t.lib("top/ro.txt")));  // the mark travels with the copy
  // Missing parents of the destination are made; a trailing separator is fine.
  EXPECT_EQ(CopyDirectory(t.lib("src") + L"\\", t.lib("x/y/all"), DIRECTORY_RECURSIVE), 1);
  EXPECT_EQ(t.Tree("x/y/all"), (Names{"a.txt", "ro.txt", "sub/", "sub/deep/", "sub/deep/c.txt"}));
  EXPECT_EQ(t.Read("x/y/all/sub/deep/c.txt"), "C");
  // Copying again replaces files, read-only ones included.
  t.MakeFile("src/ro.txt", "R2");
  EXPECT_EQ(CopyDirectory(t.lib("src"), t.lib("top"), DIRECTORY_TOP_LEVEL), 1);
  EXPECT_EQ(t.Read("top/ro.txt"), "R2");
  // Into itself it would never end: refused before anything is written.
  EXPECT_EQ(CopyDirectory(t.lib("src"), t.lib("src/sub/again"), DIRECTORY_RECURSIVE), 0);
  EXPECT_FALSE(t.Has("src/sub/again"));
  EXPECT_EQ(CopyDirectory(t.lib("src"), t.lib("src"), DIRECTORY_TOP_LEVEL), 0);
  EXPECT_TRUE(messages.shown().empty());

  EXPECT_EQ(CopyDirectory(t.lib("nothing"), t.lib("dst"), DIRECTORY_RECURSIVE), 0);
  EXPECT_EQ(messages.texts(), (Texts{t.lib("nothing").str() + L" path is not existed"}));
  EXPECT_FALSE(t.Has("dst"));
}

TEST(WorkspaceDirectories, DeleteDirectoryAndDeleteFiles) {
  TempDir t;
  MessageCapture messages;
  t.MakeFile("d/a.txt", "1");
  t.MakeFile("d/sub/deep/b.txt", "2");
  MarkReadOnly(t.lib("d/sub/deep/b.txt"));
  CString path = t.lib("d") + L"\\\\";
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_TOP_LEVEL), 0);  // the sub-directory keeps it
  EXPECT_EQ(path, t.lib("d"));
  EXPECT_EQ(t.Tree("d"), (Names{"sub/", "sub/deep/", "sub/deep/b.txt"}));
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_RECURSIVE), 1);  // read-only inside too
  EXPECT_FALSE(t.Has("d"));

  t.MakeFile("f/a.dat", "1");
  t.MakeFile("f/B.DAT", "2");  // extensions match without case, as on Windows
  t.MakeFile("f/c.txt", "3");
  t.MakeFile("f/sub/d.dat", "4");
  t.MakeFile("f/folder.dat/e.txt", "5");  // a directory is never deleted
  t.MakeFile("f/ro.dat", "6");
  MarkReadOnly(t.lib("f/ro.dat"));
  EXPECT_EQ(DeleteFiles(t.lib("f"), L"dat", DIRECTORY_TOP_LEVEL), 1);
  EXPECT_EQ(t.Tree("f"), (Names{"c.txt", "folder.dat/", "folder.dat/e.txt", "sub/", "sub/d.dat"}));
  EXPECT_EQ(DeleteFiles(t.lib("f") + L"\\", L"dat", DIRECTORY_RECURSIVE), 1);
  EXPECT_EQ(DeleteFiles(t.lib("f"), L"dat", DIRECTORY_RECURSIVE), 1);  // none left: still success
  EXPECT_EQ(DeleteFiles(t.lib("f"), L"*", DIRECTORY_TOP_LEVEL), 1);  // every file
  EXPECT_EQ(t.Tree("f"), (Names{"folder.dat/", "folder.dat/e.txt", "sub/"}));
  EXPECT_TRUE(messages.shown().empty());

  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_RECURSIVE), 0);
  EXPECT_EQ(DeleteFiles(t.lib("none"), L"dat", DIRECTORY_TOP_LEVEL), 0);
  EXPECT_EQ(messages.texts(), (Texts{L"Directory is not existed", L"Directory is not existed"}));
}

TEST(WorkspaceDirectories, RenameDirectoryMovesWholeTree) {
  TempDir t;
  MessageCapture messages;
  t.MakeFile("old/sub/b.txt", "B");
  EXPECT_EQ(RenameDirectory(t.lib("old"), t.lib("new") + L"\\"), 1);
  EXPECT_FALSE(t.Has("old"));
  EXPECT_EQ(t.Tree("new"), (Names{"sub/", "sub/b.txt"}));
  // An existing target is never merged or replaced: both stay whole.
  t.MakeFile("other/x.txt", "X");
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("other")), 0);
  EXPECT_EQ(t.Tree("new"), (Names{"sub/", "sub/b.txt"}));
  EXPECT_EQ(t.Tree("other"), (Names{"x.txt"}));
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("new/inner")), 0);  // into itself
  EXPECT_TRUE(messages.shown().empty());
  EXPECT_EQ(RenameDirectory(t.lib("gone"), t.lib("any")), 0);
  EXPECT_EQ(messages.texts(), (Texts{t.lib("gone").str() + L" path is not existed"}));
}

#if !defined(_WIN32)
TEST(WorkspaceDirectories, LinksAreRemovedNotFollowed) {
  TempDir t;
  t.MakeFile("keep/precious.txt", "P");
  t.MakeFile("d/a.txt", "1");
  std::filesystem::create_directory_symlink(t.native("keep"), t.native("d/link"));
  CString path = t.lib("d");
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_RECURSIVE), 1);
  EXPECT_EQ(t.Tree("keep"), (Names{"precious.txt"}));  // the link's target is untouched
  std::filesystem::create_directory_symlink(t.native("keep"), t.native("keep/loop"));
  EXPECT_EQ(CopyDirectory(t.lib("keep"), t.lib("copy"), DIRECTORY_RECURSIVE), 1);  // a loop ends
  EXPECT_EQ(t.Tree("copy"), (Names{"precious.txt"}));
}
#endif
