// A host that includes only the umbrella header and links the shared library
// reaches every exported name. Each module adds the names it exports here.
#include "chartcore/chartcore.h"

#include <cstring>

#include <gtest/gtest.h>

TEST(Umbrella, PlatformNamesAreExported) {
  EXPECT_STREQ(chartcore::GetLibraryVersion(), "0.1.0");
  CString s(L"abc");
  s += L"def";
  EXPECT_EQ(s.Find(L"cd"), 2);
  EXPECT_THROW(s.GetAt(10), CInvalidArgException);
  EXPECT_TRUE(chartcore::IsAlnumW(L'\xD55C'));
}
