// CArchive: exact bytes of the framework's formats, every reading form, the
// exception causes, and the bounds on what a corrupt file can make us
// allocate.
#include "chartcore/platform/archive.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/platform/file.h"

// Allocation probe: records the largest operator new request while a test
// has it switched on. (Only this file of the platform tests replaces
// the global operator new.)
namespace {
std::atomic<bool> g_trackAllocations{false};
std::atomic<size_t> g_largestAllocation{0};

struct AllocationProbe {
  AllocationProbe() { g_largestAllocation = 0, g_trackAllocations = true; }
  ~AllocationProbe() { g_trackAllocations = false; }
};
}  // namespace

void* operator new(std::size_t n) {
  if (g_trackAllocations.load(std::memory_order_relaxed)) {
    size_t seen = g_largestAllocation.load();
    while (n > seen && !g_largestAllocation.compare_exchange_weak(seen, n)) {
    }
  }
  void* p = std::malloc(n != 0 ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
// Released through a pointer the optimiser cannot see through, so it does
// not pair the inlined free with the operator new of the caller.
static void (*volatile g_release)(void*) = std::free;
void operator delete(void* p) noexcept { g_release(p); }
void operator delete(void* p, std::size_t) noexcept { g_release(p); }

namespace {

using Bytes = std::vector<BYTE>;

// A memory file the archive cannot use in place: it goes through the
// archive's own buffer, refills and all (the path every disk file takes).
class CArchTestBufferedFile : public CMemFile {
  DECLARE_DYNAMIC(CArchTestBufferedFile)
 public:
  using CMemFile::CMemFile;
};

// Stores through a plain memory file (used in place) or, with a buffer size
// other than the default, through the archive's own buffer of that size.
template <class F>
Bytes Store(F&& write, int bufSize = 4096) {
  std::unique_ptr<CMemFile> file(bufSize == 4096 ? new CMemFile : new CArchTestBufferedFile);
  CArchive ar(file.get(), CArchive::store, bufSize);
  write(ar);
  ar.Close();
  return Bytes(file->GetData(), file->GetData() + file->GetLength());
}

// A loading archive over a copy of the bytes (the memory file owns nothing);
// a buffer size other than the default reads through the archive's buffer.
struct Loader {
  explicit Loader(const Bytes& bytes, int bufSize = 4096)
      : data(bytes),
        file(bufSize == 4096 ? new CMemFile : new CArchTestBufferedFile),
        ar((file->Attach(data.empty() ? nullptr : data.data(), static_cast<UINT>(data.size())), file.get()),
           CArchive::load, bufSize) {}
  Bytes data;
  std::unique_ptr<CMemFile> file;
  CArchive ar;
};

Bytes Concat(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

Bytes Ascii(const char* s) { return Bytes(s, s + std::strlen(s)); }

// UTF-16LE bytes of n copies of 'a'.
Bytes RepeatA16(size_t n) {
  Bytes out(2 * n, 0);
  for (size_t i = 0; i < n; ++i) out[2 * i] = 'a';
  return out;
}

int CauseOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const CArchiveException& e) {
    return e.m_cause;
  }
  return -1;
}

class CArchTestNode : public CObject {
  DECLARE_SERIAL(CArchTestNode)
 public:
  explicit CArchTestNode(int n = 0) : m_n(n) {}
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_n;
    } else {
      m_schemaSeen = ar.GetObjectSchema();
      m_schemaSecond = ar.GetObjectSchema();
      ar >> m_n;
    }
  }
  int m_n = 0;
  UINT m_schemaSeen = 0;
  UINT m_schemaSecond = 0;
};

class CArchTestDerived : public CArchTestNode {
  DECLARE_SERIAL(CArchTestDerived)
 public:
  using CArchTestNode::CArchTestNode;
};

class CArchTestOther : public CObject {
  DECLARE_SERIAL(CArchTestOther)
 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_pChild;
    } else {
      ar >> m_pChild;
    }
  }
  ~CArchTestOther() override { delete m_pChild; }
  CArchTestNode* m_pChild = nullptr;
};

// Owns two objects read one after the other.
class CArchTestPair : public CObject {
  DECLARE_SERIAL(CArchTestPair)
 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_pFirst << m_pSecond;
    } else {
      ar >> m_pFirst >> m_pSecond;
    }
  }
  ~CArchTestPair() override {
    delete m_pFirst;
    delete m_pSecond;
  }
  CObject* m_pFirst = nullptr;
  CObject* m_pSecond = nullptr;
};

}  // namespace

IMPLEMENT_DYNAMIC(CArchTestBufferedFile, CMemFile)
IMPLEMENT_SERIAL(CArchTestNode, CObject, 1)
IMPLEMENT_SERIAL(CArchTestDerived, CArchTestNode, VERSIONABLE_SCHEMA | 2)
IMPLEMENT_SERIAL(CArchTestOther, CObject, 0)
IMPLEMENT_SERIAL(CArchTestPair, CObject, 0)

TEST(ArchiveScalars, WriteLittleEndianFixedWidths) {
  const Bytes bytes = Store([](CArchive& ar) {
    ar << static_cast<BYTE>(0x01) << static_cast<WORD>(0x0203) << static_cast<int>(-2)
       << static_cast<DWORD>(0x04050607u) << static_cast<LONGLONG>(-3) << static_cast<ULONGLONG>(0x0102030405060708ull)
       << true << L'\xAC00' << 1.5 << 2.0f << static_cast<short>(-1) << static_cast<LONG>(0x11223344)
       << static_cast<long>(-5) << static_cast<unsigned long>(0x8899AABBul);
  });
  const Bytes expected = {
      0x01, 0x03, 0x02, 0xFE, 0xFF, 0xFF, 0xFF, 0x07, 0x06, 0x05, 0x04,  // BYTE, WORD, int -2, DWORD
      0xFD, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,                    // LONGLONG -3
      0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,                    // ULONGLONG
      0x01, 0x00, 0xAC,                                                  // bool: one byte; wchar_t: a WORD
      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF8, 0x3F, 0x00, 0x00, 0x00, 0x40,  // 1.5 double, 2.0f float
      0xFF, 0xFF, 0x44, 0x33, 0x22, 0x11,  // short -1; LONG: 4 bytes on every platform
      0xFB, 0xFF, 0xFF, 0xFF, 0xBB, 0xAA, 0x99, 0x88,  // long -5, unsigned long: 4 bytes too
  };
  EXPECT_EQ(bytes, expected);

  // Reading back and storing again gives the same bytes: every value survived.
  // (Each << is sequenced before the next, so the reads happen in order.)
  Loader in(bytes);
  const auto get = [&](auto v) {
    in.ar >> v;
    return v;
  };
  EXPECT_EQ(Store([&](CArchive& ar) {
              ar << get(BYTE()) << get(WORD()) << get(int()) << get(DWORD()) << get(LONGLONG()) << get(ULONGLONG())
                 << get(bool()) << get(wchar_t()) << get(double()) << get(float()) << get(short()) << get(LONG())
                 << get(long()) << get(static_cast<unsigned long>(0));
            }),
            bytes);
  EXPECT_THROW(get(BYTE()), CArchiveException);  // nothing left

  // The 4-byte long is sign-extended on reading, the unsigned one is not.
  Loader tail(Bytes(bytes.end() - 8, bytes.end()));
  long l = 0;
  unsigned long ul = 0;
  tail.ar >> l >> ul;
  EXPECT_EQ(l, -5L);
  EXPECT_EQ(ul, 0x8899AABBul);
}

TEST(ArchiveScalars, CountEscapesAtWordAndDwordLimits) {
  // 0xFFFE is the largest plain WORD; 0xFFFF escapes to FFFF + DWORD.
  const DWORD_PTR counts[] = {5, 0xFFFE, 0xFFFF, 0x10000};
  const Bytes bytes = Store([&](CArchive& ar) { for (DWORD_PTR c : counts) ar.WriteCount(c); });
  EXPECT_EQ(bytes, (Bytes{0x05, 0x00, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x01,
                          0x00}));
  Loader in(bytes);
  for (DWORD_PTR c : counts) EXPECT_EQ(in.ar.ReadCount(), c);
}

TEST(ArchiveStrings, LengthPrefixAtEveryEscapeBoundary) {
  struct Case { size_t length; Bytes header; };
  const Case cases[] = {
      {0, {0xFF, 0xFE, 0xFF, 0x00}},                                          // empty still has the marker
      {254, {0xFF, 0xFE, 0xFF, 0xFE}},                                        // last one-byte length
      {255, {0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0x00}},                            // FF + WORD 00FF
      {65533, {0xFF, 0xFE, 0xFF, 0xFF, 0xFD, 0xFF}},                          // last WORD length
      {65534, {0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}},  // FFFE would read as the marker
      {65535, {0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}},
      {70000, {0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0x70, 0x11, 0x01, 0x00}},  // 70000 = 0x11170
  };
  // The small-buffer runs below take the archive's own buffer, not the
  // in-place path of a plain memory file.
  ASSERT_EQ(RUNTIME_CLASS(CArchTestBufferedFile)->GetBaseClass(), RUNTIME_CLASS(CMemFile));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.length);
    const CString text(L'a', static_cast<int>(c.length));
    const Bytes bytes = Store([&](CArchive& ar) { ar << text; });
    EXPECT_EQ(bytes, Concat({c.header, RepeatA16(c.length)}));
    EXPECT_EQ(Store([&](CArchive& ar) { ar << text; }, 64), bytes);  // through a small buffer
    Loader in(bytes, 64);  // a small buffer: the text crosses many refills
    CString back(L"old");
    in.ar >> back;
    EXPECT_TRUE(back == text);
    EXPECT_TRUE(in.ar.IsBufferEmpty());
  }
}

TEST(ArchiveStrings, KoreanAndSupplementaryTextAsUtf16) {
  // "한국" is U+D55C U+AD6D; U+1F600 travels as the pair D83D DE00.
  EXPECT_EQ(Store([](CArchive& ar) { ar << CString(L"\xD55C\xAD6D"); }),
            (Bytes{0xFF, 0xFE, 0xFF, 0x02, 0x5C, 0xD5, 0x6D, 0xAD}));
  const std::wstring mixed =
      sizeof(wchar_t) == 4 ? std::wstring(L"x") + static_cast<wchar_t>(0x1F600) : L"x\xD83D\xDE00";
  const Bytes mBytes = Store([&](CArchive& ar) { ar << CString(mixed.c_str()); });
  EXPECT_EQ(mBytes, (Bytes{0xFF, 0xFE, 0xFF, 0x03, 'x', 0x00, 0x3D, 0xD8, 0x00, 0xDE}));
  for (int bufSize : {4096, 64}) {
    Loader in(Concat({Bytes(59, 0), mBytes}), bufSize);  // the pair straddles the first refill
    BYTE skip[59];
    in.ar.Read(skip, 59);
    CString back;
    in.ar >> back;
    EXPECT_EQ(back.str(), mixed);
  }
  // A lone high surrogate in the file survives as itself.
  Loader lone(Bytes{0xFF, 0xFE, 0xFF, 0x02, 0x3D, 0xD8, 'y', 0x00});
  CString back;
  lone.ar >> back;
  EXPECT_EQ(back.str(), std::wstring({static_cast<wchar_t>(0xD83D), L'y'}));
}

TEST(ArchiveStrings, NarrowCodePage949FormsReadAsWideText) {
  // Non-Unicode builds wrote the byte length without the FF FE FF marker.
  struct Case { Bytes bytes; CString text; };
  const Case cases[] = {
      {{0x04, 0xC7, 0xD1, 0xB1, 0xB9}, L"\xD55C\xAD6D"},                      // "한국" in four bytes
      {{0x02, 'o', 'k'}, L"ok"},                                              //
      {Concat({{0xFF, 0x2C, 0x01}, Bytes(300, 'x')}), CString(L'x', 300)},    // FF + WORD 012C
      {Concat({{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}, Bytes(65535, 'z')}),
       CString(L'z', 65535)},                                                 // FF FFFF + DWORD
      {{0x00}, L""},                                                          // empty: the single byte 00
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text.GetLength());
    Loader in(c.bytes);
    CString back(L"old");
    in.ar >> back;
    EXPECT_TRUE(back == c.text);
    BYTE rest;
    EXPECT_EQ(in.ar.Read(&rest, 1), 0u);  // the length counted every byte
  }
}

TEST(ArchiveStrings, CorruptLengthsEndInExceptionsWithoutHugeAllocations) {
  // 0x7FFFFFFF UTF-16 units announced, ten bytes present.
  const Bytes wide = Concat({{0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}, Bytes(10, 'q')});
  // The same length as narrow bytes.
  const Bytes narrow = Concat({{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}, Bytes(10, 'q')});
  for (int k = 0; k < 4; ++k) {
    Loader in(k % 2 == 0 ? wide : narrow, k < 2 ? 4096 : 64);  // in place, then through a small buffer
    CString target(L"untouched");
    AllocationProbe probe;
    EXPECT_EQ(CauseOf([&] { in.ar >> target; }), CArchiveException::endOfFile);
    // One read step (4096 units of wchar_t) at most, never the announced size.
    EXPECT_LE(g_largestAllocation.load(), 4096 * sizeof(wchar_t) + 64);
    EXPECT_TRUE(target == L"untouched");  // a failed read leaves the target alone
  }
  // A 64-bit length beyond what a CString holds is refused outright.
  Loader huge(Bytes{0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0,
                    0, 0, 0, 1, 0, 0, 0});
  CString s;
  EXPECT_EQ(CauseOf([&] { huge.ar >> s; }), CArchiveException::badIndex);
}

TEST(ArchiveStrings, LineFormsWithoutLengthPrefix) {
  const Bytes bytes = Store([](CArchive& ar) {
    ar.WriteString(L"ab\r\n");
    ar.WriteString(L"\xD55C\n");
    ar.WriteString(L"tail");
  });
  EXPECT_EQ(bytes.size(), 2u * 10);  // ten UTF-16 units, no prefix, no terminator
  Loader in(bytes);
  CString line, next;
  EXPECT_TRUE(in.ar.ReadString(line) && in.ar.ReadString(next));
  EXPECT_EQ(line + L"|" + next, L"ab|\xD55C");  // "\r\n" and "\n" dropped
  wchar_t buf[3];
  EXPECT_EQ(in.ar.ReadString(buf, 3), buf);  // at most nMax-1 units
  EXPECT_STREQ(buf, L"ta");
  EXPECT_EQ(in.ar.ReadString(buf, 3), buf);
  EXPECT_STREQ(buf, L"il");
  EXPECT_FALSE(in.ar.ReadString(line));
  EXPECT_TRUE(line.IsEmpty());
  EXPECT_EQ(in.ar.ReadString(buf, 3), nullptr);
}

TEST(ArchiveObjects, TagsForNewClassLaterObjectRepeatAndNull) {
  CArchTestNode a(7), b(8);
  const Bytes bytes = Store([&](CArchive& ar) { ar << &a << &b << &a << static_cast<const CObject*>(nullptr); });
  const Bytes expected = Concat({
      {0xFF, 0xFF, 0x01, 0x00, 0x0D, 0x00},  // new class, schema 1, name length 13
      Ascii("CArchTestNode"),
      {0x07, 0x00, 0x00, 0x00},              // a's Serialize
      {0x01, 0x80, 0x08, 0x00, 0x00, 0x00},  // class 1 again (8001), then b
      {0x02, 0x00},                          // a is object 2 (class 1, a 2, b 3)
      {0x00, 0x00},                          // null
  });
  EXPECT_EQ(bytes, expected);

  Loader in(bytes);
  CObject *p1 = nullptr, *p2 = nullptr, *p3 = nullptr, *p4 = &a;
  in.ar >> p1 >> p2 >> p3 >> p4;
  ASSERT_TRUE(p1 != nullptr && p2 != nullptr);
  EXPECT_EQ(p3, p1);  // the same object, not a copy
  EXPECT_EQ(p4, nullptr);
  ASSERT_TRUE(p1->IsKindOf(RUNTIME_CLASS(CArchTestNode)));
  const auto* n1 = static_cast<CArchTestNode*>(p1);
  EXPECT_EQ(n1->m_n, 7);
  EXPECT_EQ(static_cast<CArchTestNode*>(p2)->m_n, 8);
  EXPECT_EQ(n1->m_schemaSeen, 1u);
  EXPECT_EQ(n1->m_schemaSecond, 0xFFFFFFFFu);  // handed out once
  delete p1;
  delete p2;
}

TEST(ArchiveObjects, VersionableSchemaAndTypedExtraction) {
  CArchTestDerived d(3);
  const Bytes bytes = Store([&](CArchive& ar) { ar << &d; });
  // VERSIONABLE_SCHEMA | 2 writes 0002: the flag itself is never stored.
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 4), (Bytes{0xFF, 0xFF, 0x02, 0x00}));

  // A derived object through the base class's typed operator.
  Loader in(bytes);
  CArchTestNode* node = nullptr;
  in.ar >> node;
  ASSERT_NE(node, nullptr);
  EXPECT_TRUE(node->IsKindOf(RUNTIME_CLASS(CArchTestDerived)));
  EXPECT_EQ(node->m_n, 3);
  delete node;

  // Stored schema 5 loads into the versionable class and is reported.
  Bytes v5 = bytes;
  v5[2] = 0x05;
  Loader in5(v5);
  CArchTestDerived* derived = nullptr;
  in5.ar >> derived;
  ASSERT_NE(derived, nullptr);
  EXPECT_EQ(derived->m_schemaSeen, 5u);
  delete derived;

  // Nested objects: the child comes back owned by its parent.
  CArchTestOther parent;
  parent.m_pChild = new CArchTestNode(42);
  Loader nestedIn(Store([&](CArchive& ar) { ar << &parent; }));
  CArchTestOther* back = nullptr;
  nestedIn.ar >> back;
  ASSERT_TRUE(back != nullptr && back->m_pChild != nullptr);
  EXPECT_EQ(back->m_pChild->m_n, 42);
  delete back;
  // The base class's typed operator refuses an unrelated class.
  Loader wrong(Store([&](CArchive& ar) { ar << &parent; }));
  EXPECT_EQ(CauseOf([&] { wrong.ar >> node; }), CArchiveException::badClass);
}

TEST(ArchiveObjects, BadClassSchemaAndIndexCauses) {
  const Bytes node = Concat({{0xFF, 0xFF, 0x01, 0x00, 0x0D, 0x00}, Ascii("CArchTestNode"), {1, 0, 0, 0}});
  Bytes schema2 = node;
  schema2[2] = 0x02;  // schema 2 for a class of schema 1 that is not versionable
  struct Case {
    const char* what;
    Bytes bytes;
    int goodFirst;  // objects read fine before the bad one
    const CRuntimeClass* requested;
    int cause;
  };
  const Case cases[] = {
      {"unknown class name", Concat({{0xFF, 0xFF, 0x01, 0x00, 0x0C, 0x00}, Ascii("CNoSuchClass"), {1, 0, 0, 0}}), 0,
       nullptr, CArchiveException::badClass},
      {"schema", schema2, 0, nullptr, CArchiveException::badSchema},
      {"object not read yet", {0x05, 0x00}, 0, nullptr, CArchiveException::badIndex},
      {"class not read yet", {0x05, 0x80}, 0, nullptr, CArchiveException::badIndex},
      {"class tag naming an object", Concat({node, {0x02, 0x80}}), 1, nullptr, CArchiveException::badIndex},
      {"requested class", node, 0, RUNTIME_CLASS(CArchTestOther), CArchiveException::badClass},
      // Truncated inside the object's own fields: the half-read object is freed.
      {"truncated", Bytes(node.begin(), node.end() - 2), 0, nullptr, CArchiveException::endOfFile},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Loader in(c.bytes);
    for (int i = 0; i < c.goodFirst; ++i) delete in.ar.ReadObject(nullptr);
    EXPECT_EQ(CauseOf([&] { in.ar.ReadObject(c.requested); }), c.cause);
  }

  // A pair whose second object fails frees the first one with it, so a later
  // reference to that first one (object 4: class 1, pair 2, class 3) is bad.
  CArchTestPair pair;
  pair.m_pFirst = new CArchTestNode(42);
  Bytes failing = Store([&](CArchive& ar) { ar << &pair; });
  ASSERT_EQ(Bytes(failing.end() - 2, failing.end()), (Bytes{0x00, 0x00}));  // the null second object
  failing.resize(failing.size() - 2);
  failing = Concat({failing, {0x09, 0x00}, {0x04, 0x00}});  // a reference ahead, then the freed one
  Loader in(failing);
  EXPECT_EQ(CauseOf([&] { in.ar.ReadObject(nullptr); }), CArchiveException::badIndex);
  EXPECT_EQ(CauseOf([&] { in.ar.ReadObject(nullptr); }), CArchiveException::badIndex);
  // A class that is not serializable cannot be written.
  CMemFile notSerializable;
  EXPECT_EQ(CauseOf([&] { Store([&](CArchive& ar) { ar << &notSerializable; }); }), CArchiveException::badClass);
}

TEST(ArchiveObjects, IndexesAbove7FFEUseTheBigTag) {
  // Number 0x7FFE objects first, so the class becomes 0x7FFF and the
  // objects after it 0x8000 and 0x8001.
  std::vector<CArchTestNode> filler(0x7FFE);
  CArchTestNode x(1), y(2);
  const Bytes bytes = Store([&](CArchive& ar) {
    for (CArchTestNode& f : filler) ar.MapObject(&f);
    ar << &x << &y << &x << &filler[0];
  });
  const Bytes expected = Concat({
      {0xFF, 0xFF, 0x01, 0x00, 0x0D, 0x00},
      Ascii("CArchTestNode"),
      {1, 0, 0, 0},
      {0xFF, 0x7F, 0xFF, 0x7F, 0x00, 0x80},  // class 0x7FFF: 7FFF + 0x80007FFF
      {2, 0, 0, 0},
      {0xFF, 0x7F, 0x00, 0x80, 0x00, 0x00},  // x is object 0x8000
      {0x01, 0x00},                          // the first mapped object
  });
  EXPECT_EQ(bytes, expected);

  Loader in(bytes);
  for (CArchTestNode& f : filler) in.ar.MapObject(&f);
  CObject* px = in.ar.ReadObject(nullptr);
  CObject* py = in.ar.ReadObject(nullptr);
  EXPECT_EQ(in.ar.ReadObject(nullptr), px);
  EXPECT_EQ(in.ar.ReadObject(nullptr), &filler[0]);
  EXPECT_EQ(static_cast<CArchTestNode*>(py)->m_n, 2);
  delete px;
  delete py;
}

TEST(ArchiveModes, WrongDirectionEndOfFileAndClosedArchive) {
  CMemFile file;
  CArchive storing(&file, CArchive::store);
  int i = 0;
  CString s;
  EXPECT_EQ(CauseOf([&] { storing >> i; }), CArchiveException::writeOnly);
  EXPECT_EQ(CauseOf([&] { storing >> s; }), CArchiveException::writeOnly);
  EXPECT_EQ(CauseOf([&] { storing.ReadObject(nullptr); }), CArchiveException::writeOnly);
  storing << 1;
  storing.Close();
  EXPECT_EQ(storing.GetFile(), nullptr);
  EXPECT_EQ(CauseOf([&] { storing << 2; }), CArchiveException::genericException);

  Loader in(Bytes{1, 2, 3});
  EXPECT_EQ(CauseOf([&] { in.ar << 1; }), CArchiveException::readOnly);
  EXPECT_EQ(CauseOf([&] { in.ar << CString(L"x"); }), CArchiveException::readOnly);
  EXPECT_EQ(CauseOf([&] { in.ar.WriteObject(nullptr); }), CArchiveException::readOnly);
  EXPECT_EQ(CauseOf([&] { in.ar >> i; }), CArchiveException::endOfFile);  // 3 bytes for a 4-byte int
  // Raw reads stop at the end without an exception.
  BYTE raw[8];
  EXPECT_EQ(in.ar.Read(raw, 8), 3u);
  EXPECT_EQ(in.ar.Read(raw, 8), 0u);

  EXPECT_THROW(CArchive(nullptr, CArchive::load), CInvalidArgException);
}

TEST(ArchiveModes, BufferingFlushAndDestructor) {
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    ar << 0x01020304;
    EXPECT_EQ(file.GetLength(), 0u);  // still buffered
    ar.Flush();
    EXPECT_EQ(file.GetLength(), 4u);
    ar << static_cast<BYTE>(9);
  }  // the destructor writes the rest
  EXPECT_EQ(file.GetLength(), 5u);
  {
    CMemFile dropped;
    CArchive ar(&dropped, CArchive::store | CArchive::bNoFlushOnDelete);
    ar << 1;
    ar.Abort();
    EXPECT_EQ(dropped.GetLength(), 0u);
  }
  // Loading Flush gives unread bytes back to the file.
  file.SeekToBegin();
  CArchive in(&file, CArchive::load);
  BYTE b = 0;
  in >> b;
  EXPECT_EQ(b, 0x04);
  in.Flush();
  EXPECT_EQ(file.GetPosition(), 1u);

  // Large raw writes and reads bypass a small buffer and stay in order.
  std::vector<BYTE> big(1000);
  for (size_t k = 0; k < big.size(); ++k) big[k] = static_cast<BYTE>(k * 7);
  const Bytes stored = Store(
      [&](CArchive& ar) {
        ar << static_cast<BYTE>(0xAA);
        ar.Write(big.data(), static_cast<UINT>(big.size()));
        ar << static_cast<BYTE>(0xBB);
      },
      64);
  EXPECT_EQ(stored, Concat({{0xAA}, big, {0xBB}}));
  Loader back(stored, 64);
  std::vector<BYTE> got(1000);
  back.ar >> b;
  EXPECT_EQ(back.ar.Read(got.data(), 1000), 1000u);
  EXPECT_EQ(got, big);
  back.ar >> b;
  EXPECT_EQ(b, 0xBB);
}
