// The workspace directory layout and the directory and file-name helpers that
// go with it.
//
// The user's logic definitions, templates, saved charts, results and event
// files live in a fixed tree below a root the host passes in. Every module
// builds its directories through the GetPath_... functions, so the layout is
// decided here. Paths use the Windows separator "\" on every platform (the
// framework's file layer maps it at the system call); every directory
// returned ends in "\". Roots are joined as they stand, so a root that already
// ends in "\" gives a doubled separator, which file systems accept.
//
//   CString dir = GetPath_Logic_Indica(L"C:\\Root");   // "C:\Root\Logic\Indica\"
//   CString mine = GetPath_Local_Data(L"C:\\Root", L"_u01");
//   // "C:\Root\Local_u01\Data\"
#ifndef CHARTCORE_FOUNDATION_PATHS_H_
#define CHARTCORE_FOUNDATION_PATHS_H_

#include "chartcore/platform/cstring.h"

// ---------------------------------------------------------------------------
// Workspace layout
// ---------------------------------------------------------------------------

// GetPath_Logic: root + "\Logic\", the parent of the logic folders below.
CHARTCORE_API CString GetPath_Logic(CString root);
// GetPath_Logic_Indica: root + "\Logic\Indica\" (indicator definitions).
CHARTCORE_API CString GetPath_Logic_Indica(CString root);
// GetPath_Logic_Signal: root + "\Logic\Signal\" (signal definitions).
CHARTCORE_API CString GetPath_Logic_Signal(CString root);
// GetPath_Logic_Region: root + "\Logic\Region\" (region definitions).
CHARTCORE_API CString GetPath_Logic_Region(CString root);
// GetPath_Logic_Fill: root + "\Logic\Fill\" (fill definitions).
CHARTCORE_API CString GetPath_Logic_Fill(CString root);
// GetPath_Logic_Pattern: root + "\Logic\Pattern\" (pattern definitions).
CHARTCORE_API CString GetPath_Logic_Pattern(CString root);
// GetPath_Logic_Optimize: root + "\Logic\Optimize\" (optimisations).
CHARTCORE_API CString GetPath_Logic_Optimize(CString root);
// GetPath_Logic_Funct: root + "\Logic\Function\" (user functions and the
// function list "New_Function.dat"); the folder name is the long one.
CHARTCORE_API CString GetPath_Logic_Funct(CString root);
// GetPath_Logic_Market: root + "\Logic\Market\".
CHARTCORE_API CString GetPath_Logic_Market(CString root);
// GetPath_Save: root + "\Save\" (saved charts).
CHARTCORE_API CString GetPath_Save(CString root);
// GetPath_Templ: root + "\Templ\" (screen templates).
CHARTCORE_API CString GetPath_Templ(CString root);
// GetPath_Event: root + "\Event\" (event files).
CHARTCORE_API CString GetPath_Event(CString root);

// GetPath_Local: the user's own branch. Trailing "\" of root are dropped;
// an empty user gives root + "\"; otherwise root + "\Local" + user + "\".
// The user text joins "Local" directly: callers that want a sub-directory
// pass it with its own leading separator.
//   GetPath_Local(L"C:\\Root", L"_u01") == L"C:\\Root\\Local_u01\\"
//   GetPath_Local(L"C:\\Root\\\\", L"") == L"C:\\Root\\"
CHARTCORE_API CString GetPath_Local(CString root, CString user);
// GetPath_Local_Data: GetPath_Local(root, user) + "Data\".
CHARTCORE_API CString GetPath_Local_Data(CString root, CString user);
// GetPath_Local_Image: GetPath_Local(root, user) + "Image\".
CHARTCORE_API CString GetPath_Local_Image(CString root, CString user);
// GetPath_Local_Result: GetPath_Local(root, user) + "Result\".
CHARTCORE_API CString GetPath_Local_Result(CString root, CString user);
// GetPath_Local_Save: GetPath_Local(root, user) + "Save\".
CHARTCORE_API CString GetPath_Local_Save(CString root, CString user);
// GetPath_Local_Templ: GetPath_Local(root, user) + "Templ\".
CHARTCORE_API CString GetPath_Local_Templ(CString root, CString user);
// GetPath_Local_Control: a control's own folder in the user's branch,
// GetPath_Local(root, user) + control, ending in a single added "\" unless
// control already ends in one. An empty control gives GetPath_Local itself.
//   GetPath_Local_Control(L"C:\\Root", L"_u01", L"Grid") == L"C:\\Root\\Local_u01\\Grid\\"
CHARTCORE_API CString GetPath_Local_Control(CString root, CString user, CString control);

// GetPath: path with one "\" appended unless it already ends in "\".
CHARTCORE_API CString GetPath(CString path);

// ---------------------------------------------------------------------------
// Directories
// ---------------------------------------------------------------------------

// Flags of CopyDirectory, DeleteDirectory and DeleteFiles.
enum : int {
  DIRECTORY_TOP_LEVEL = 0,  // only the files directly in the directory
  DIRECTORY_RECURSIVE = 1,  // sub-directories too, to any depth
};

// MakeDirectory: creates the last level of path. Returns 1 when the path
// exists afterwards (also when it already existed), 0 for an empty path or
// when the directory cannot be made. No message.
CHARTCORE_API int MakeDirectory(CString& path);

// ReMakeDirectory: empties and removes a directory, keeping the host's long
// standing order of calls. A trailing "\" is removed from the caller's
// string. The files directly in the directory are deleted (sub-directories
// and read-only files are left), then the directory is removed when it can
// be. When it is gone, the message "Unable to make <path> Directory" is shown
// and the result is 0; when it still exists the result is 1. Empty path: 0.
CHARTCORE_API int ReMakeDirectory(CString& path);

// CopyDirectory: copies the files of from into to, creating to and its
// missing parents; with DIRECTORY_RECURSIVE also every sub-directory. Files
// already in to are replaced (read-only ones too); copies keep the read-only
// mark of their source. Returns 1 when everything was copied, else 0 after
// copying what could be. A missing source shows "<from> path is not existed"
// and gives 0; a destination inside the source (or equal to it) gives 0.
CHARTCORE_API int CopyDirectory(CString from, CString to, int flag);

// DeleteDirectory: deletes the files of the directory (read-only ones too)
// and removes it; with DIRECTORY_RECURSIVE also every sub-directory and its
// contents (a link to a directory is removed, not followed). Trailing "\"
// are removed from the caller's string. Returns 1 when the directory is gone,
// 0 when something remains (sub-directories without the flag). A missing
// directory shows "Directory is not existed" and gives 0.
CHARTCORE_API int DeleteDirectory(CString& path, int flag);

// DeleteFiles: deletes the files matching "<directory>\*.<extension>" (read-
// only ones too; "*" as the extension matches every file); with
// DIRECTORY_RECURSIVE the same in every sub-directory. Directories are never
// removed. Returns 1 when every matching file is gone (also when none
// matched), else 0. A missing directory shows "Directory is not existed" and
// gives 0.
CHARTCORE_API int DeleteFiles(CString directory, CString extension, int flag);

// RenameDirectory: moves the directory from to to (a rename within a volume;
// across volumes a copy of the whole tree followed by deleting the source).
// Returns 1 on success; 0 when to already exists or the move fails, and then
// the source is left whole. A missing source shows "<from> path is not
// existed" and gives 0.
CHARTCORE_API int RenameDirectory(CString from, CString to);

// ---------------------------------------------------------------------------
// Path and file-name texts
// ---------------------------------------------------------------------------

// ChangeVariablePathName: shortens one well-known long directory name to its
// short form: "Documents and Settings" to "Docume~1" or, only when that is
// absent, "Program Files" to "Progra~1". Case-sensitive; other paths are
// returned unchanged.
CHARTCORE_API CString ChangeVariablePathName(CString path);

// ChangeVariableFileName: makes a text usable as a file name: blanks are
// trimmed at both ends, then each of : / * ? \ | < > (in that order) is
// replaced by the replacement text. The double quote is kept.
//   ChangeVariableFileName(L" a:b/c ", L"_") == L"a_b_c"
CHARTCORE_API CString ChangeVariableFileName(CString name, CString replacement);

// ---------------------------------------------------------------------------
// Installed applications (implemented with the launching code, log_launch)
// ---------------------------------------------------------------------------

// GetAppPath: the full path of the program that serves an automation ProgID
// such as "Excel.Application", written to path (at most pathSize characters
// with the terminator). Returns 1 when found and it fits, else 0; a buffer of
// fewer than 255 characters gives 0 at once.
// On Windows the program is looked up in the registry (the ProgID's CLSID and
// its LocalServer keys, then the application's App Paths entry), showing a
// diagnostic message box for each failing step. On other systems the
// spreadsheet ProgIDs ("Excel.Application" and its versioned forms) name the
// spreadsheet program found on PATH: localc, libreoffice or soffice, in that
// order; other ProgIDs and a missing program give 0 silently.
CHARTCORE_API int GetAppPath(const wchar_t* progId, wchar_t* path, int pathSize);

// GetAppVersion: the major version of the program serving progId as decimal
// text ("16"), written to version (at most versionSize characters with the
// terminator). Returns 1 when known, else 0; a buffer of fewer than 255
// characters gives 0 at once. On Windows it is the last part of the ProgID's
// "CurVer" entry; elsewhere the first number of what the program found by
// GetAppPath prints for --version.
CHARTCORE_API int GetAppVersion(const wchar_t* progId, wchar_t* version, int versionSize);

#endif  // CHARTCORE_FOUNDATION_PATHS_H_
