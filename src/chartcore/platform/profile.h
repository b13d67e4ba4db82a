// Profile (INI) files: GetPrivateProfileStringW, GetPrivateProfileIntW and
// WritePrivateProfileStringW with the Windows rules.
//
// The user function list "New_Function.dat" is such a file. Section and key
// names match without regard to case and with surrounding blanks and tabs
// ignored. A value loses its surrounding blanks and then one pair of matching
// quotes around the whole of it. There are no comments: ";Count=9" is a key
// named ";Count". Keys before the first section header belong to the section
// named "". Of duplicate sections only the first is searched; of duplicate
// keys the first wins. Lines end with \n or \r\n. Files may be UTF-16LE with
// a byte-order mark, UTF-8 with one, or without a mark: UTF-8 when the bytes
// are valid UTF-8, code page 949 otherwise. Paths may use `\` (read as `/`).
// On Windows these are the system's own functions.
//
//   wchar_t name[100];
//   UINT count = GetPrivateProfileIntW(L"System", L"Count", 0, L"/ws/Logic/Function/New_Function.dat");
//   GetPrivateProfileStringW(L"System", L"Name0", L"", name, 100, L"/ws/Logic/Function/New_Function.dat");
#ifndef CHARTCORE_PLATFORM_PROFILE_H_
#define CHARTCORE_PLATFORM_PROFILE_H_

#include "chartcore/platform/types.h"

#if !defined(_WIN32)

// GetPrivateProfileStringW: copies the value of key in section app into out
// (at most size-1 characters, then a terminator) and returns the number of
// characters copied. A quoted value is cut as the system cuts it, closing
// quote included: a buffer of exactly its length plus one loses its last
// character ("\"ab\"" in 3 gives "a"). When the file, the section or the key
// is missing, copies def instead (null counts as ""), itself cut to size-1
// characters with trailing blanks (not tabs) removed. A key present with an
// empty value gives "". With app null: the names of all sections in file
// order, duplicates included, each terminated, the list ending with one more
// terminator ("a\0b\0\0"); with key null: the key names of the section the
// same way (less those starting with ';'), or def when the section is missing. The count returned for a list
// leaves out the final terminator; a list that does not fit is cut, ends with
// two terminators, and the result is size-2. A null out or a size of 0
// returns 0.
CHARTCORE_API DWORD GetPrivateProfileStringW(LPCWSTR app, LPCWSTR key, LPCWSTR def, LPWSTR out, DWORD size,
                                             LPCWSTR file);

// GetPrivateProfileIntW: the key's value read as an integer with a sign and a
// base prefix 0x, 0o or 0b (" 12abc" is 12, "0x10" 16, "0b101" 5, "010" 10,
// "005930" 5930, "+5" 5, "-1" 0xFFFFFFFF, "abc" 0; overflow wraps to 32
// bits). def when the key is missing or its value empty.
CHARTCORE_API UINT GetPrivateProfileIntW(LPCWSTR app, LPCWSTR key, INT def, LPCWSTR file);

// WritePrivateProfileStringW: sets key=value in section app, replacing the
// key's first line or adding a line at the end of the section, and creating
// the section (at the end of the file) or the file when missing. A null value
// deletes the key's line; a null key deletes the section's header and lines.
// Lines it does not change keep their bytes; the file keeps its encoding and
// line ends (a new file is UTF-8 with \r\n). The file is replaced atomically
// (written beside it, then renamed over it) and keeps its permissions.
// Returns TRUE on success (also when there was nothing to delete), FALSE for
// a null app or file, a read-only file, or a file that cannot be written.
// All three arguments null is the Windows cache flush and returns TRUE.
CHARTCORE_API BOOL WritePrivateProfileStringW(LPCWSTR app, LPCWSTR key, LPCWSTR value, LPCWSTR file);

#endif  // !_WIN32

#endif  // CHARTCORE_PLATFORM_PROFILE_H_
