#include "chartcore/platform/profile.h"

#if !defined(_WIN32)

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "chartcore/platform/text_codec.h"

namespace {

class ProfileFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/chartcore_profile_XXXXXX";
    ASSERT_NE(::mkdtemp(tmpl), nullptr);
    dir_ = tmpl;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  // The path as the library writes it: with `\` separators.
  std::wstring PathOf(const std::string& name) const {
    std::wstring p = chartcore::Utf8ToWide(dir_ + "/" + name);
    for (auto& c : p)
      if (c == L'/') c = L'\\';
    return p;
  }
  void WriteBytes(const std::string& name, const std::string& bytes) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << bytes;
  }
  std::string ReadBytes(const std::string& name) const {
    std::ifstream in(dir_ + "/" + name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  std::wstring Get(const wchar_t* app, const wchar_t* key, const std::wstring& file, const wchar_t* def = L"<def>",
                   DWORD size = 100) const {
    wchar_t buf[100];
    const DWORD n = GetPrivateProfileStringW(app, key, def, buf, size, file.c_str());
    return std::wstring(buf, n);
  }

  std::string dir_;
};

// One file exercising every reading rule.
const char kRules[] =
    "Global=top\r\n"
    "[ System ]\r\n"
    "Count = 3\r\n"
    "Name0=\"Quoted\"\r\n"
    "Name1='single'\r\n"
    "Name2=\"a\"b\"\r\n"
    "Name3=\"unbalanced\r\n"
    ";Count=9\r\n"
    "v;x=semi;colon\r\n"
    "no equals line\r\n"
    "\r\n"
    "EMPTY=\r\n"
    "name0=later duplicate\r\n"
    "[system]\r\n"
    "Other=1\r\n"
    "[User]\n"
    "Count=0x10\n"
    "\tSpaces =   padded value   \n"
    "I1=  12abc\n"
    "I2=+5\n"
    "I3=abc\n"
    "I4=4294967298\n"
    "I5=-1\n"
    "I6=010\n"
    "I7=\"0x1F\"\n"
    "I8=0x\n";

}  // namespace

TEST_F(ProfileFiles, ReadsWithTheWindowsRules) {
  WriteBytes("rules.ini", kRules);
  const std::wstring f = PathOf("rules.ini");
  EXPECT_EQ(Get(L"System", L"Count", f), L"3");
  EXPECT_EQ(Get(L"  system\t", L" COUNT ", f), L"3");  // case and blanks ignored
  EXPECT_EQ(Get(L"System", L"Name0", f), L"Quoted");    // first of duplicate keys wins
  EXPECT_EQ(Get(L"System", L"Name1", f), L"single");
  EXPECT_EQ(Get(L"System", L"Name2", f), L"a\"b");
  EXPECT_EQ(Get(L"System", L"Name3", f), L"\"unbalanced");
  EXPECT_EQ(Get(L"System", L";Count", f), L"9");  // no comments
  EXPECT_EQ(Get(L"System", L"v;x", f), L"semi;colon");
  EXPECT_EQ(Get(L"System", L"no equals line", f), L"<def>");
  EXPECT_EQ(Get(L"System", L"EMPTY", f), L"");  // present but empty is not missing
  EXPECT_EQ(Get(L"System", L"Other", f), L"<def>");  // the duplicate section is not searched
  EXPECT_EQ(Get(L"", L"Global", f), L"top");  // keys before the first header
  EXPECT_EQ(Get(L"User", L"Spaces", f), L"padded value");
  EXPECT_EQ(Get(L"Nope", L"Count", f), L"<def>");
  EXPECT_EQ(Get(L"System", L"Count", PathOf("missing.ini"), nullptr), L"");
  // Truncation: size-1 characters; the default is cut, then loses trailing blanks.
  EXPECT_EQ(Get(L"System", L"Name0", f, L"", 4), L"Quo");
  EXPECT_EQ(Get(L"System", L"zz", f, L"abc   ", 10), L"abc");
  EXPECT_EQ(Get(L"System", L"zz", f, L"ab  cd", 4), L"ab");
  EXPECT_EQ(Get(L"System", L"zz", f, L"ab\t ", 10), L"ab\t");  // blanks go, tabs stay
  // A quoted value cut with its closing quote: 'single' in 7 keeps "singl".
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 7), L"singl");
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 8), L"single");
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 6), L"singl");
  wchar_t one[1] = {L'x'};
  EXPECT_EQ(GetPrivateProfileStringW(L"System", L"Count", L"", one, 1, f.c_str()), 0u);
  EXPECT_EQ(one[0], L'\0');
  EXPECT_EQ(GetPrivateProfileStringW(L"System", L"Count", L"", nullptr, 10, f.c_str()), 0u);
}

TEST_F(ProfileFiles, IntegersLikeC) {
  WriteBytes("rules.ini", kRules);
  const std::wstring f = PathOf("rules.ini");
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"Count", 7, f.c_str()), 3u);
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"Count", 7, f.c_str()), 16u);
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I1", 7, f.c_str()), 12u);
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I2", 7, f.c_str()), 5u);
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I3", 7, f.c_str()), 0u);  // present, no digits: 0
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I4", 7, f.c_str()), 2u);  // 2^32 + 2 wraps to 2
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I5", 7, f.c_str()), 0xFFFFFFFFu);
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I6", 7, f.c_str()), 10u);  // a leading zero is no octal
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I7", 7, f.c_str()), 31u);  // quotes go first
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"I8", 7, f.c_str()), 0u);   // "0x" alone reads the 0
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"EMPTY", 7, f.c_str()), 7u);  // empty: default
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"Missing", -2, f.c_str()), static_cast<UINT>(-2));
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"Count", 4, PathOf("missing.ini").c_str()), 4u);
}

TEST_F(ProfileFiles, ListsSectionAndKeyNames) {
  WriteBytes("rules.ini", kRules);
  const std::wstring f = PathOf("rules.ini");
  wchar_t buf[64];
  // Every section in file order, the duplicate [system] too, double-terminated.
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 64, f.c_str()), 19u);
  EXPECT_EQ(std::wstring(buf, 20), std::wstring(L"System\0system\0User\0", 19) + L'\0');
  // Keys in file order, duplicates too, but ";Count" is no listed name.
  EXPECT_EQ(GetPrivateProfileStringW(L"System", nullptr, L"", buf, 64, f.c_str()), 46u);
  EXPECT_EQ(std::wstring(buf, 47), std::wstring(L"Count\0Name0\0Name1\0Name2\0Name3\0v;x\0EMPTY\0name0\0", 46) + L'\0');
  // The keys of a missing section: the default, as for a missing key.
  EXPECT_EQ(GetPrivateProfileStringW(L"Nope", nullptr, L"dflt", buf, 64, f.c_str()), 4u);
  EXPECT_EQ(std::wstring(buf), L"dflt");
  // Cut lists end with two terminators and return size-2.
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 8, f.c_str()), 6u);
  EXPECT_EQ(std::wstring(buf, 8), std::wstring(L"System\0\0", 8));
  // Keys of the first "User" section in order.
  EXPECT_EQ(GetPrivateProfileStringW(L"user", nullptr, L"", buf, 64, f.c_str()), 37u);
  EXPECT_EQ(std::wstring(buf, 6), std::wstring(L"Count\0", 6));
  // A missing file gives an empty list.
  buf[0] = buf[1] = L'x';
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 64, PathOf("none.ini").c_str()), 0u);
  EXPECT_EQ(buf[0], L'\0');
  EXPECT_EQ(buf[1], L'\0');
}

TEST_F(ProfileFiles, ReadsTheThreeEncodings) {
  // [함수] 이름="한글", in UTF-16LE with mark, UTF-8 with mark, UTF-8 without,
  // and code page 949 without.
  const std::wstring text = L"[\xD568\xC218]\r\n\xC774\xB984=\"\xD55C\xAE00\"\r\nCount=2\r\n";
  const std::string utf16 = std::string("\xFF\xFE") + chartcore::WideToUtf16LE(text.data(), text.size());
  const std::string utf8 = chartcore::WideToUtf8(text);
  const std::string cp949 = chartcore::WideToCp949(text.data(), text.size());
  ASSERT_NE(cp949, utf8);
  WriteBytes("u16.ini", utf16);
  WriteBytes("u8bom.ini", "\xEF\xBB\xBF" + utf8);
  WriteBytes("u8.ini", utf8);
  WriteBytes("cp949.ini", cp949);
  for (const char* name : {"u16.ini", "u8bom.ini", "u8.ini", "cp949.ini"}) {
    SCOPED_TRACE(name);
    const std::wstring f = PathOf(name);
    EXPECT_EQ(Get(L"\xD568\xC218", L"\xC774\xB984", f), L"\xD55C\xAE00");
    EXPECT_EQ(GetPrivateProfileIntW(L"\xD568\xC218", L"count", 0, f.c_str()), 2u);
  }
}

TEST_F(ProfileFiles, WritesEditsAndDeletes) {
  const std::wstring f = PathOf("New_Function.dat");
  // A new file: UTF-8, \r\n.
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Count", L"1", f.c_str()));
  EXPECT_EQ(ReadBytes("New_Function.dat"), "[System]\r\nCount=1\r\n");
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"Count", L"0", f.c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"system", L"Name0", L"\xD55C", f.c_str()));  // joins the section
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"count", L"2", f.c_str()));        // replaces the line
  EXPECT_EQ(ReadBytes("New_Function.dat"), "[System]\r\ncount=2\r\nName0=\xED\x95\x9C\r\n[User]\r\nCount=0\r\n");
  EXPECT_EQ(Get(L"System", L"Name0", f), L"\xD55C");
  // Deleting a key, a missing key, a section.
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Name0", nullptr, f.c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Nothing", nullptr, f.c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", nullptr, nullptr, f.c_str()));
  EXPECT_EQ(ReadBytes("New_Function.dat"), "[User]\r\nCount=0\r\n");
  // Bad arguments and unwritable places.
  EXPECT_FALSE(WritePrivateProfileStringW(nullptr, L"k", L"v", f.c_str()));
  EXPECT_FALSE(WritePrivateProfileStringW(L"A", L"k", L"v", nullptr));
  EXPECT_TRUE(WritePrivateProfileStringW(nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(WritePrivateProfileStringW(L"A", L"k", L"v", PathOf("no_dir/x.ini").c_str()));
  // Nothing but the file is left in the folder (the temporary was renamed).
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_), std::filesystem::directory_iterator()), 1);
}

TEST_F(ProfileFiles, WritingKeepsEncodingLineEndsAndOtherLines) {
  // UTF-16LE stays UTF-16LE with its mark.
  const std::wstring text = L"[S]\r\nA=1\r\n";
  WriteBytes("u16.ini", std::string("\xFF\xFE") + chartcore::WideToUtf16LE(text.data(), text.size()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"B", L"\xD55C", PathOf("u16.ini").c_str()));
  const std::wstring expected16 = L"[S]\r\nA=1\r\nB=\xD55C\r\n";
  EXPECT_EQ(ReadBytes("u16.ini"), std::string("\xFF\xFE") + chartcore::WideToUtf16LE(expected16.data(), expected16.size()));
  // Code page 949 stays 949; \n line ends stay \n; odd lines keep their bytes;
  // the new key goes after the section's last line, before the blank line.
  WriteBytes("cp.ini", "[S]\n  A = \xC7\xD1  \n\n[T]\nX=1");
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"B", L"\xAE00", PathOf("cp.ini").c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"T", L"Y", L"2", PathOf("cp.ini").c_str()));
  EXPECT_EQ(ReadBytes("cp.ini"), "[S]\n  A = \xC7\xD1  \nB=\xB1\xDB\n\n[T]\nX=1\nY=2\n");
  // Replacing an unterminated last line keeps it unterminated.
  WriteBytes("last.ini", "[S]\r\nA=1");
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"A", L"22", PathOf("last.ini").c_str()));
  EXPECT_EQ(ReadBytes("last.ini"), "[S]\r\nA=22");
  // A key of the section "" goes before the first header.
  EXPECT_TRUE(WritePrivateProfileStringW(L"", L"Top", L"1", PathOf("last.ini").c_str()));
  EXPECT_EQ(ReadBytes("last.ini"), "Top=1\r\n[S]\r\nA=22");
  // An unterminated last line ending in a bare \r keeps it in its value: the
  // line gets \r\n even in a \n file, so the \r is not read as a line end.
  WriteBytes("cr.ini", "[S]\nA=v\r");
  EXPECT_EQ(Get(L"S", L"A", PathOf("cr.ini")), L"v\r");
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"B", L"2", PathOf("cr.ini").c_str()));
  EXPECT_EQ(ReadBytes("cr.ini"), "[S]\nA=v\r\r\nB=2\n");
  EXPECT_EQ(Get(L"S", L"A", PathOf("cr.ini")), L"v\r");
  // A UTF-16 file cut at an odd byte: the lines added after it start on a
  // code unit, so they read back.
  const std::wstring cut = L"[S]\r\nA=1";
  WriteBytes("odd.ini", std::string("\xFF\xFE") + chartcore::WideToUtf16LE(cut.data(), cut.size()) + "x");
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"B", L"2", PathOf("odd.ini").c_str()));
  EXPECT_EQ(Get(L"S", L"B", PathOf("odd.ini")), L"2");
  EXPECT_EQ(Get(L"S", L"A", PathOf("odd.ini")), L"1\xFFFD");
  // A read-only file is not replaced (by its permission bits, even for root).
  WriteBytes("ro.ini", "[S]\nA=1\n");
  ASSERT_EQ(::chmod((dir_ + "/ro.ini").c_str(), 0444), 0);
  EXPECT_FALSE(WritePrivateProfileStringW(L"S", L"A", L"2", PathOf("ro.ini").c_str()));
  EXPECT_EQ(ReadBytes("ro.ini"), "[S]\nA=1\n");
}

TEST_F(ProfileFiles, SeesChangesMadeBehindItsBack) {
  // A same-size rewrite right after a read must not be served from memory.
  WriteBytes("c.ini", "[S]\nA=1\n");
  const std::wstring f = PathOf("c.ini");
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f.c_str()), 1u);
  WriteBytes("c.ini", "[S]\nA=2\n");
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f.c_str()), 2u);
  // An old file is remembered, and a change of its time is noticed.
  const std::string native = dir_ + "/c.ini";
  struct timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, native.c_str(), times, 0), 0);
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f.c_str()), 2u);
  WriteBytes("c.ini", "[S]\nA=3\n");
  times[0].tv_sec = times[1].tv_sec = 1000000001;
  ASSERT_EQ(::utimensat(AT_FDCWD, native.c_str(), times, 0), 0);
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f.c_str()), 3u);
}

#endif  // !_WIN32
