#include "chartcore/foundation/paths.h"

#include <vector>

#include "chartcore/platform/file.h"
#include "chartcore/platform/filesystem.h"
#include "chartcore/platform/system.h"

namespace {

const wchar_t kSep = L'\\';

// Roots are joined as they stand: a trailing separator doubles, deliberately.
CString Join(const CString& root, const wchar_t* piece) { return root + piece; }

// Pieces of the user's branch are printed after GetPath_Local with "%s%s".
CString JoinLocal(const CString& root, const CString& user, const wchar_t* piece) {
  CString result;
  result.Format(L"%s%s", GetPath_Local(root, user).GetString(), piece);
  return result;
}

bool IsSeparator(wchar_t ch) { return ch == L'\\' || ch == L'/'; }

void TrimTrailingSeparators(CString& path) {
  int length = path.GetLength();
  while (length > 0 && IsSeparator(path[length - 1])) --length;
  if (length < path.GetLength()) path = path.Left(length);
}

bool Exists(const CString& path) { return !path.IsEmpty() && _waccess(path, 0) == 0; }

bool IsDirectoryPath(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// One directory entry, read before anything in the directory is changed so
// that deleting or creating entries cannot disturb the listing.
struct Entry {
  CString path;
  CString name;
  bool isDirectory;
};

std::vector<Entry> ListEntries(const CString& directory, const CString& namePattern) {
  std::vector<Entry> entries;
  CFileFind finder;
  BOOL more = finder.FindFile(directory + kSep + namePattern);
  while (more) {
    more = finder.FindNextFile();
    if (finder.IsDots()) continue;
    entries.push_back(Entry{finder.GetFilePath(), finder.GetFileName(), finder.IsDirectory() != 0});
  }
  finder.Close();
  return entries;
}

std::vector<Entry> ListAll(const CString& directory) { return ListEntries(directory, L"*.*"); }

// A link to a directory (a symbolic link, or a junction on Windows) is
// removed as a link: its target is not ours to empty.
bool IsLink(const CString& path) {
  const DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// Removes a link itself, never what it points to: a directory link goes as a
// directory on Windows, every other link as a file.
bool RemoveLink(const CString& path) { return RemoveDirectoryW(path) != 0 || DeleteFileW(path) != 0; }

// Deletes a file whatever its read-only mark says.
bool ForceDeleteFile(const CString& path) {
  if (DeleteFileW(path)) return true;
  const DWORD attributes = GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if ((attributes & FILE_ATTRIBUTE_READONLY) == 0) return false;
  SetFileAttributesW(path, attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
  return DeleteFileW(path) != 0;
}

bool RemoveLinkOrTree(const CString& directory);

// Deletes every file of the directory and, when recursive, every
// sub-directory with its contents. True when all of it went.
bool EmptyDirectory(const CString& directory, bool recursive) {
  bool ok = true;
  for (const Entry& entry : ListAll(directory)) {
    if (IsLink(entry.path)) {
      ok = RemoveLink(entry.path) && ok;
    } else if (!entry.isDirectory) {
      ok = ForceDeleteFile(entry.path) && ok;
    } else if (recursive) {
      ok = RemoveLinkOrTree(entry.path) && ok;
    } else {
      ok = false;
    }
  }
  return ok;
}

bool RemoveLinkOrTree(const CString& directory) {
  if (IsLink(directory)) return RemoveLink(directory);
  EmptyDirectory(directory, true);
  return _wrmdir(directory) == 0;
}

// Creates the directory and every missing level above it.
bool MakeDirectoryTree(const CString& path) {
  if (path.IsEmpty()) return false;
  if (Exists(path)) return IsDirectoryPath(path);
  int cut = path.GetLength() - 1;
  while (cut > 0 && !IsSeparator(path[cut])) --cut;
  CString parent = path.Left(cut);
  TrimTrailingSeparators(parent);
  if (!parent.IsEmpty() && parent != path && !Exists(parent) && !MakeDirectoryTree(parent)) return false;
  return _wmkdir(path) == 0 || IsDirectoryPath(path);
}

// The same path text for comparison: one separator kind, no trailing one,
// and on Windows no case.
CString ComparablePath(CString path) {
  path.Replace(L'/', kSep);
  TrimTrailingSeparators(path);
#if defined(_WIN32)
  path.MakeLower();
#endif
  return path;
}

bool IsSameOrInside(const CString& inner, const CString& outer) {
  const CString a = ComparablePath(inner);
  const CString b = ComparablePath(outer);
  if (a == b) return true;
  return a.GetLength() > b.GetLength() && a.Left(b.GetLength()) == b && a[b.GetLength()] == kSep;
}

bool CopyTree(const CString& from, const CString& to, bool recursive) {
  if (!MakeDirectoryTree(to)) return false;
  bool ok = true;
  for (const Entry& entry : ListAll(from)) {
    const CString target = to + kSep + entry.name;
    if (entry.isDirectory) {
      // Links to directories are not followed: they could lead back up.
      if (recursive && !IsLink(entry.path)) ok = CopyTree(entry.path, target, true) && ok;
      continue;
    }
    // A read-only file in the way would refuse to be replaced.
    const DWORD existing = GetFileAttributesW(target);
    if (existing != INVALID_FILE_ATTRIBUTES && (existing & FILE_ATTRIBUTE_READONLY) != 0) {
      SetFileAttributesW(target, existing & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    }
    ok = CopyFileW(entry.path, target, FALSE) != 0 && ok;
  }
  return ok;
}

void ShowMissingPath(const CString& path) { AfxMessageBox(path + L" path is not existed"); }

void ShowMissingDirectory() { AfxMessageBox(L"Directory is not existed"); }

}  // namespace

// ---------------------------------------------------------------------------
// Workspace layout
// ---------------------------------------------------------------------------

CString GetPath_Logic(CString root) { return Join(root, L"\\Logic\\"); }
CString GetPath_Logic_Indica(CString root) { return Join(root, L"\\Logic\\Indica\\"); }
CString GetPath_Logic_Signal(CString root) { return Join(root, L"\\Logic\\Signal\\"); }
CString GetPath_Logic_Region(CString root) { return Join(root, L"\\Logic\\Region\\"); }
CString GetPath_Logic_Fill(CString root) { return Join(root, L"\\Logic\\Fill\\"); }
CString GetPath_Logic_Pattern(CString root) { return Join(root, L"\\Logic\\Pattern\\"); }
CString GetPath_Logic_Optimize(CString root) { return Join(root, L"\\Logic\\Optimize\\"); }
CString GetPath_Logic_Funct(CString root) { return Join(root, L"\\Logic\\Function\\"); }
CString GetPath_Logic_Market(CString root) { return Join(root, L"\\Logic\\Market\\"); }
CString GetPath_Save(CString root) { return Join(root, L"\\Save\\"); }
CString GetPath_Templ(CString root) { return Join(root, L"\\Templ\\"); }
CString GetPath_Event(CString root) { return Join(root, L"\\Event\\"); }

CString GetPath_Local(CString root, CString user) {
  if (!root.IsEmpty() && root[root.GetLength() - 1] == kSep) root.TrimRight(kSep);
  if (user.IsEmpty()) return root + kSep;
  // The user text goes before the last separator of "\Local\".
  CString piece(L"\\Local\\");
  piece.Insert(piece.ReverseFind(kSep), user);
  return root + piece;
}

CString GetPath_Local_Data(CString root, CString user) { return JoinLocal(root, user, L"Data\\"); }
CString GetPath_Local_Image(CString root, CString user) { return JoinLocal(root, user, L"Image\\"); }
CString GetPath_Local_Result(CString root, CString user) { return JoinLocal(root, user, L"Result\\"); }
CString GetPath_Local_Save(CString root, CString user) { return JoinLocal(root, user, L"Save\\"); }
CString GetPath_Local_Templ(CString root, CString user) { return JoinLocal(root, user, L"Templ\\"); }

CString GetPath_Local_Control(CString root, CString user, CString control) {
  if (control.IsEmpty()) return GetPath_Local(root, user);
  return JoinLocal(root, user, GetPath(control));
}

CString GetPath(CString path) {
  if (!path.IsEmpty() && path[path.GetLength() - 1] == kSep) return path;
  return path + kSep;
}

// ---------------------------------------------------------------------------
// Directories
// ---------------------------------------------------------------------------

int MakeDirectory(CString& path) {
  if (path.IsEmpty()) return 0;
  if (_waccess(path, 0) == 0) return 1;
  return _wmkdir(path) == 0 ? 1 : 0;
}

int ReMakeDirectory(CString& path) {
  if (path.IsEmpty()) return 0;
  if (path[path.GetLength() - 1] == kSep) path = path.Left(path.GetLength() - 1);
  // "\" alone (a root that was never set) would name the top of the drive.
  if (path.IsEmpty()) return 0;

  for (const Entry& entry : ListAll(path)) {
    if (!entry.isDirectory) DeleteFileW(entry.path);
  }
  if (_waccess(path, 0) == 0) _wrmdir(path);

  // Hosts rely on this order: once the directory is gone, the second remove
  // fails and the failure text is shown; a directory that stayed counts as
  // success.
  if (_waccess(path, 0) != 0) {
    if (_wrmdir(path) != 0) {
      CString message;
      message.Format(L"Unable to make %s Directory", path.GetString());
      AfxMessageBox(message);
      return 0;
    }
  }
  return 1;
}

int CopyDirectory(CString from, CString to, int flag) {
  TrimTrailingSeparators(from);
  TrimTrailingSeparators(to);
  if (!IsDirectoryPath(from)) {
    ShowMissingPath(from);
    return 0;
  }
  const bool recursive = (flag & DIRECTORY_RECURSIVE) != 0;
  // A copy into itself would never end (or copy a file onto itself).
  if (to.IsEmpty() || IsSameOrInside(to, from)) return 0;
  return CopyTree(from, to, recursive) ? 1 : 0;
}

int DeleteDirectory(CString& path, int flag) {
  TrimTrailingSeparators(path);
  if (!IsDirectoryPath(path)) {
    ShowMissingDirectory();
    return 0;
  }
  if (IsLink(path)) return RemoveLinkOrTree(path) ? 1 : 0;
  EmptyDirectory(path, (flag & DIRECTORY_RECURSIVE) != 0);
  _wrmdir(path);
  return Exists(path) ? 0 : 1;
}

int DeleteFiles(CString directory, CString extension, int flag) {
  TrimTrailingSeparators(directory);
  if (!IsDirectoryPath(directory)) {
    ShowMissingDirectory();
    return 0;
  }
  bool ok = true;
  for (const Entry& entry : ListEntries(directory, L"*." + extension)) {
    if (!entry.isDirectory) ok = ForceDeleteFile(entry.path) && ok;
  }
  if ((flag & DIRECTORY_RECURSIVE) != 0) {
    for (const Entry& entry : ListAll(directory)) {
      if (entry.isDirectory && !IsLink(entry.path)) {
        ok = DeleteFiles(entry.path, extension, flag) != 0 && ok;
      }
    }
  }
  return ok ? 1 : 0;
}

int RenameDirectory(CString from, CString to) {
  TrimTrailingSeparators(from);
  TrimTrailingSeparators(to);
  if (!IsDirectoryPath(from)) {
    ShowMissingPath(from);
    return 0;
  }
  if (to.IsEmpty() || Exists(to) || IsSameOrInside(to, from)) return 0;
  if (MoveFileW(from, to)) return 1;
  // Any other refusal (rights, a file in use) leaves the source as it is.
  if (GetLastError() != ERROR_NOT_SAME_DEVICE) return 0;

  // Another volume: copy the whole tree, and only a complete copy lets the
  // source go. A partial copy is removed again so nothing is doubled.
  if (!CopyTree(from, to, true)) {
    if (Exists(to)) RemoveLinkOrTree(to);
    return 0;
  }
  return RemoveLinkOrTree(from) ? 1 : 0;
}

// ---------------------------------------------------------------------------
// Path and file-name texts
// ---------------------------------------------------------------------------

CString ChangeVariablePathName(CString path) {
  if (path.Find(L"Documents and Settings") >= 0) {
    path.Replace(L"Documents and Settings", L"Docume~1");
  } else if (path.Find(L"Program Files") >= 0) {
    path.Replace(L"Program Files", L"Progra~1");
  }
  return path;
}

CString ChangeVariableFileName(CString name, CString replacement) {
  name.Trim();
  for (const wchar_t* ch = L":/*?\\|<>"; *ch != L'\0'; ++ch) {
    name.Replace(CString(*ch), replacement);
  }
  return name;
}
