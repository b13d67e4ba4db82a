#include "chartcore/foundation/paths.h"

#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/platform/file.h"
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
  for (auto folder : {GetPath_Local_Data, GetPath_Local_Image, GetPath_Local_Result, GetPath_Local_Save,
                      GetPath_Local_Templ}) {
    all += folder(L"C:\\Root", L"_u01").str() + L"|";
  }
  EXPECT_EQ(all, L"C:\\Root\\Logic\\|C:\\Root\\Logic\\Indica\\|C:\\Root\\Logic\\Signal\\|C:\\Root\\Logic\\Region\\|"
                 L"C:\\Root\\Logic\\Fill\\|C:\\Root\\Logic\\Pattern\\|C:\\Root\\Logic\\Optimize\\|"
                 L"C:\\Root\\Logic\\Function\\|C:\\Root\\Logic\\Market\\|"  // functions: the long name
                 L"C:\\Root\\Save\\|C:\\Root\\Templ\\|C:\\Root\\Event\\|"
                 L"C:\\Root\\Local_u01\\Data\\|C:\\Root\\Local_u01\\Image\\|C:\\Root\\Local_u01\\Result\\|"
                 L"C:\\Root\\Local_u01\\Save\\|C:\\Root\\Local_u01\\Templ\\|");
  const struct { CString got; const wchar_t* expected; } rows[] = {
      {GetPath_Logic_Indica(L"C:\\Root\\"), L"C:\\Root\\\\Logic\\Indica\\"},  // a trailing separator doubles
      {GetPath(L"C:\\Root"), L"C:\\Root\\"}, {GetPath(L"C:\\Root\\"), L"C:\\Root\\"},
      {GetPath(L"C:\\Root\\\\"), L"C:\\Root\\\\"}, {GetPath(L""), L"\\"},  // only a missing one is added
      {GetPath_Local(L"C:\\Root\\\\", L""), L"C:\\Root\\"},                 // every trailing one dropped
      {GetPath_Local(L"C:\\Root", L"_u01"), L"C:\\Root\\Local_u01\\"},
      {GetPath_Local(L"C:\\Root\\", L"\\kim"), L"C:\\Root\\Local\\kim\\"},  // the caller's own separator
      {GetPath_Local(L"C:\\Root", L"\xAE40"), L"C:\\Root\\Local\xAE40\\"},
      {GetPath_Local_Data(L"C:\\Root\\", L""), L"C:\\Root\\Data\\"},
      {GetPath_Local_Data(L"C:\\100%s", L""), L"C:\\100%s\\Data\\"},  // a printf directive is only text
      {GetPath_Local_Control(L"C:\\Root", L"_u01", L"Grid"), L"C:\\Root\\Local_u01\\Grid\\"},
      {GetPath_Local_Control(L"C:\\Root", L"_u01", L"Grid\\"), L"C:\\Root\\Local_u01\\Grid\\"},
      {GetPath_Local_Control(L"C:\\Root", L"_u01", L""), L"C:\\Root\\Local_u01\\"}};
  for (const auto& r : rows) EXPECT_EQ(r.got, r.expected);
}

TEST(WorkspacePathText, ShortNamesAndFileNames) {
  const struct { const wchar_t* in; const wchar_t* out; } paths[] = {
      {L"C:\\Documents and Settings\\u\\Program Files", L"C:\\Docume~1\\u\\Program Files"},  // only the first kind
      {L"C:\\Program Files\\a\\Program Files", L"C:\\Progra~1\\a\\Progra~1"},
      {L"C:\\program files\\a", L"C:\\program files\\a"}};  // case-sensitive
  for (const auto& c : paths) EXPECT_EQ(ChangeVariablePathName(c.in), c.out);
  const struct { const wchar_t *in, *replacement, *out; } names[] = {
      {L" a:b/c ", L"_", L"a_b_c"}, {L"say \"hi\"", L"_", L"say \"hi\""},  // the quote stays
      {L"*?\\|<>", L"-", L"------"}, {L"\ta b\r\n", L"_", L"a b"},         // blanks inside are kept
      // One kind after another: a replacement holding a later character of
      // the set is replaced again, an earlier one is not.
      {L"x:y", L"a/", L"xaa/y"}, {L"x/y", L"a:", L"xa:y"}};
  for (const auto& c : names) EXPECT_EQ(ChangeVariableFileName(c.in, c.replacement), c.out) << c.in;
}

// ---------------------------------------------------------------------------
// Directories on a real file system
// ---------------------------------------------------------------------------

using chartcore_test::TempDir;
using testing_fs::MessageCapture;

namespace {
using Names = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

// Makes each file with its own name as content; "!" before a name marks it
// read-only.
void Make(const TempDir& t, std::initializer_list<std::string> files) {
  for (const std::string& name : files) {
    t.MakeFile(name.substr(name[0] == '!'), name.substr(name[0] == '!'));
    EXPECT_TRUE(name[0] != '!' || SetFileAttributesW(t.lib(name.substr(1)), FILE_ATTRIBUTE_READONLY)) << name;
  }
}
}  // namespace

TEST(WorkspaceDirectories, MakeAndReMakeKeepTheirOrderOfCalls) {
  TempDir t;
  MessageCapture messages;
  Make(t, {"plain.txt", "w/a.txt", "w/sub/c.txt", "r/a.txt", "!r/locked.txt", "v/a.txt"});
  const struct { const char* relative; int made; } makes[] = {
      {"", 0}, {"L", 1}, {"L", 1}, {"a/b", 0}, {"plain.txt", 1}};  // again; only the last level; anything there
  for (const auto& c : makes) {
    CString path = *c.relative ? t.lib(c.relative) : CString();
    EXPECT_EQ(MakeDirectory(path), c.made) << c.relative;
  }
  EXPECT_TRUE(t.Has("L"));
  CString path;
  EXPECT_EQ(ReMakeDirectory(path), 0);  // empty
  path = L"\\";  // an unset root: not the top of the drive
  EXPECT_EQ(ReMakeDirectory(path), 0);
  EXPECT_TRUE(path.IsEmpty());
  // Files go and a sub-directory or read-only file stays, so the folder
  // cannot be removed and still exists: success, no message.
  path = t.lib("w") + L"\\";
  EXPECT_EQ(ReMakeDirectory(path), 1);
  EXPECT_EQ(path, t.lib("w"));  // the trailing separator is gone from the caller's string
  EXPECT_EQ(t.Tree("w"), (Names{"sub/", "sub/c.txt"}));
  path = t.lib("r");
  EXPECT_EQ(ReMakeDirectory(path), 1);
  EXPECT_EQ(t.Tree("r"), (Names{"locked.txt"}));
  EXPECT_TRUE(messages.shown().empty());
  // Only files: the folder is removed, and then the failure text is shown.
  path = t.lib("v");
  EXPECT_EQ(ReMakeDirectory(path), 0);
  EXPECT_FALSE(t.Has("v"));
  EXPECT_EQ(messages.texts(), (Texts{L"Unable to make " + t.lib("v").str() + L" Directory"}));
}

TEST(WorkspaceDirectories, CopyDirectoryTopLevelOrWholeTree) {
  TempDir t;
  MessageCapture messages;
  Make(t, {"src/a.txt", "src/sub/deep/c.txt", "!src/ro.txt"});
  EXPECT_EQ(CopyDirectory(t.lib("src"), t.lib("top"), DIRECTORY_TOP_LEVEL), 1);
  EXPECT_EQ(t.Tree("top"), (Names{"a.txt", "ro.txt"}));
  EXPECT_TRUE(GetFileAttributesW(t.lib("top/ro.txt")) & FILE_ATTRIBUTE_READONLY);  // the mark travels along
  // Missing parents of the destination are made; a trailing separator is fine.
  EXPECT_EQ(CopyDirectory(t.lib("src") + L"\\", t.lib("x/y/all"), DIRECTORY_RECURSIVE), 1);
  EXPECT_EQ(t.Tree("x/y/all"), (Names{"a.txt", "ro.txt", "sub/", "sub/deep/", "sub/deep/c.txt"}));
  EXPECT_EQ(t.Read("x/y/all/sub/deep/c.txt"), "src/sub/deep/c.txt");
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
  Make(t, {"d/a.txt", "!d/sub/deep/b.txt"});
  CString path = t.lib("d") + L"\\\\";
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_TOP_LEVEL), 0);  // the sub-directory keeps it
  EXPECT_EQ(path, t.lib("d"));
  EXPECT_EQ(t.Tree("d"), (Names{"sub/", "sub/deep/", "sub/deep/b.txt"}));
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_RECURSIVE), 1);  // read-only inside too
  EXPECT_FALSE(t.Has("d"));
  // Extensions match without case, as on Windows; a directory is never deleted.
  Make(t, {"f/a.dat", "f/B.DAT", "f/c.txt", "f/sub/d.dat", "f/folder.dat/e.txt", "!f/ro.dat"});
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
  Make(t, {"old/sub/b.txt", "other/x.txt"});
  EXPECT_EQ(RenameDirectory(t.lib("old"), t.lib("new") + L"\\"), 1);
  EXPECT_EQ(t.Tree(""), (Names{"new/", "new/sub/", "new/sub/b.txt", "other/", "other/x.txt"}));
  // An existing target is never merged or replaced, nor is a move into itself made.
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("other")), 0);
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("new/inner")), 0);
  EXPECT_EQ(t.Tree(""), (Names{"new/", "new/sub/", "new/sub/b.txt", "other/", "other/x.txt"}));
  EXPECT_TRUE(messages.shown().empty());
  EXPECT_EQ(RenameDirectory(t.lib("gone"), t.lib("any")), 0);
  EXPECT_EQ(messages.texts(), (Texts{t.lib("gone").str() + L" path is not existed"}));
#if !defined(_WIN32)
  // A refused move leaves everything where it was; only a move to another
  // volume falls back to copying the tree and removing the source.
  using chartcore::internal::FileOperation;
  chartcore::internal::SetFileFaultInjector(FileOperation::kRename, 1, EACCES);
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("moved")), 0);
  EXPECT_EQ(t.Tree(""), (Names{"new/", "new/sub/", "new/sub/b.txt", "other/", "other/x.txt"}));
  chartcore::internal::SetFileFaultInjector(FileOperation::kRename, 1, EXDEV);
  EXPECT_EQ(RenameDirectory(t.lib("new"), t.lib("moved")), 1);
  EXPECT_EQ(t.Tree(""), (Names{"moved/", "moved/sub/", "moved/sub/b.txt", "other/", "other/x.txt"}));
  chartcore::internal::ResetFileFaultInjector();
#endif
}

#if !defined(_WIN32)
TEST(WorkspaceDirectories, LinksAreRemovedNotFollowed) {
  TempDir t;
  Make(t, {"keep/precious.txt", "d/a.txt"});
  std::filesystem::create_directory_symlink(t.native("keep"), t.native("d/link"));
  CString path = t.lib("d");
  EXPECT_EQ(DeleteDirectory(path, DIRECTORY_RECURSIVE), 1);
  EXPECT_EQ(t.Tree("keep"), (Names{"precious.txt"}));  // the link's target is untouched
  std::filesystem::create_directory_symlink(t.native("keep"), t.native("keep/loop"));
  EXPECT_EQ(CopyDirectory(t.lib("keep"), t.lib("copy"), DIRECTORY_RECURSIVE), 1);  // a loop ends
  EXPECT_EQ(t.Tree("copy"), (Names{"precious.txt"}));
}
#endif
