// Reading a record allocates once per string and once per array growth step:
// elements are read in place, never copied through temporaries. Counted by
// replacing the global allocation functions of this test program.
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "chartcore/logic/indica.h"
#include "logic/record_bytes.h"

namespace {
bool g_counting = false;
int g_allocations = 0;
}  // namespace

// The replacements pair malloc with free themselves; GCC cannot see that
// across the replaced operators.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

void* operator new(std::size_t size) {
  if (g_counting) ++g_allocations;
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

TEST(RecordAllocations, ReadingAllocatesOncePerStringAndGrowthStep) {
  const CString longText(L'x', 40);  // beyond any small-string buffer
  CDBSubINDICA source;
  source.m_strText1 = source.m_strText2 = source.m_strText3 = longText;
  source.m_arrElement.SetSize(5);
  for (CDBSubINDICA_ELM& e : source.m_arrElement) e.strE00 = e.strE11 = longText;
  source.m_arrVariable.SetSize(3);
  for (CDBSubINDICA_VAR& v : source.m_arrVariable) v.strText = longText;
  source.m_arrBase.SetSize(2);
  const testing_records::Bytes bytes = testing_records::Store(source);
  CDBSubINDICA target;
  const auto countedRead = [&target](CArchive& ar) { g_counting = true; target.Serialize(ar); g_counting = false; };
  EXPECT_EQ(testing_records::ReadCause(bytes, countedRead), -1);  // the file and archive are made before counting
  // 16 strings (3 texts, 2 per element, 1 per variable); growth steps: the
  // elements 2 (room for 4, then 6), the variables 1, the bases 1.
  EXPECT_LE(g_allocations, 16 + 4);
  EXPECT_EQ(testing_records::Store(target), bytes);
}
