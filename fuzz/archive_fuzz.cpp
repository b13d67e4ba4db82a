// Fuzz target for the archive reader: strings in every length form and code
// page, counts, lines, scalars and the object stream (class tags, schemas,
// back references, cycles), read through a buffer of varying size from a file
// that hands out its bytes in small pieces, so every refill boundary is hit.
//
// Input: byte 0 picks the buffer size and the piece size, byte 1 the number
// of operation bytes that follow; the rest is the archive. Reading stops at
// the first framework exception. Checked: nothing but CException escapes; a
// string read writes and reads back equal; an object whose Serialize failed
// was deleted by the archive; every object graph read writes and reads back
// with the same shape and sharing.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/object.h"

namespace {

// ---------------------------------------------------------------------------
// A file that returns at most `piece` bytes per Read
// ---------------------------------------------------------------------------

class PieceFile : public CFile {
 public:
  PieceFile(const BYTE* data, size_t size, UINT piece) : m_data(data), m_size(size), m_pos(0), m_piece(piece) {}
  UINT Read(void* lpBuf, UINT nCount) override {
    size_t n = nCount < m_piece ? nCount : m_piece;
    if (n > m_size - m_pos) n = m_size - m_pos;
    if (n != 0) std::memcpy(lpBuf, m_data + m_pos, n);
    m_pos += n;
    return static_cast<UINT>(n);
  }
  void Write(const void*, UINT) override { AfxThrowFileException(CFileException::accessDenied); }
  ULONGLONG Seek(LONGLONG lOff, UINT nFrom) override {
    LONGLONG base = nFrom == begin ? 0 : (nFrom == current ? static_cast<LONGLONG>(m_pos) : static_cast<LONGLONG>(m_size));
    const LONGLONG to = base + lOff;
    if (to < 0) AfxThrowFileException(CFileException::badSeek);
    m_pos = static_cast<size_t>(to) > m_size ? m_size : static_cast<size_t>(to);
    return m_pos;
  }
  ULONGLONG GetLength() const override { return m_size; }
  ULONGLONG GetPosition() const override { return m_pos; }
  void Flush() override {}
  void Close() override {}
  void Abort() override {}
  BOOL IsOpen() const override { return TRUE; }

 private:
  const BYTE* m_data;
  size_t m_size;
  size_t m_pos;
  UINT m_piece;
};

// ---------------------------------------------------------------------------
// Serializable classes of the stream. They do not own what they point to:
// a file may share or cycle references freely, so every object lives in the
// registry and the harness frees them all at the end.
// ---------------------------------------------------------------------------

class FuzzObject;
std::set<FuzzObject*>& Registry() {
  static std::set<FuzzObject*> live;
  return live;
}

class FuzzObject : public CObject {
 public:
  FuzzObject() { Registry().insert(this); }
  ~FuzzObject() override { Registry().erase(this); }
  // Set while Serialize runs for loading, cleared when it completes: an
  // object left with it set survived a failed read.
  bool m_bReading = false;
};

// A node: a name, a number and two links to any objects (non-versionable,
// schema 1, so other schemas are refused).
class CFuzzNode : public FuzzObject {
  DECLARE_SERIAL(CFuzzNode)
 public:
  CString m_strName;
  int m_nValue = 0;
  CObject* m_pLeft = nullptr;
  CObject* m_pRight = nullptr;
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_strName << m_nValue << m_pLeft << m_pRight;
      return;
    }
    m_bReading = true;
    ar >> m_strName >> m_nValue >> m_pLeft >> m_pRight;
    m_bReading = false;
  }
};
IMPLEMENT_SERIAL(CFuzzNode, CObject, 1)

// A leaf of a versionable class: schema 2 adds a double, so the stored
// schema decides what is read.
class CFuzzLeaf : public FuzzObject {
  DECLARE_SERIAL(CFuzzLeaf)
 public:
  CString m_strText;
  double m_dValue = 0.0;
  UINT m_nSchema = 2;
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_strText;
      if (m_nSchema >= 2) ar << m_dValue;
      return;
    }
    m_bReading = true;
    m_nSchema = ar.GetObjectSchema();
    ar >> m_strText;
    if (m_nSchema >= 2) ar >> m_dValue;
    m_bReading = false;
  }
};
IMPLEMENT_SERIAL(CFuzzLeaf, CObject, VERSIONABLE_SCHEMA | 2)

// Derived from the leaf, so a request for a leaf accepts it.
class CFuzzDerivedLeaf : public CFuzzLeaf {
  DECLARE_SERIAL(CFuzzDerivedLeaf)
 public:
  CFuzzNode* m_pOwnerNode = nullptr;
  void Serialize(CArchive& ar) override {
    CFuzzLeaf::Serialize(ar);
    if (ar.IsStoring()) {
      ar << m_pOwnerNode;
    } else {
      m_bReading = true;
      ar >> m_pOwnerNode;  // typed: only a node (or null) is accepted
      m_bReading = false;
    }
  }
};
IMPLEMENT_SERIAL(CFuzzDerivedLeaf, CFuzzLeaf, VERSIONABLE_SCHEMA | 2)

// The schema a leaf is written with must be the one it was read with, or a
// leaf read without its double would write one. Storing uses the class's own
// schema, so leaves of other schemas are compared but not rewritten.
bool Rewritable(const CObject* p) {
  const auto* leaf = dynamic_cast<const CFuzzLeaf*>(p);
  return leaf == nullptr || leaf->m_nSchema == 2;
}

// ---------------------------------------------------------------------------
// Checks
// ---------------------------------------------------------------------------

[[noreturn]] void Fault() { std::abort(); }

// A string read must come back equal after a write and a read.
void CheckStringRoundTrip(const CString& s) {
  CMemFile mem;
  {
    CArchive ar(&mem, CArchive::store);
    ar << s;
    ar.Close();
  }
  mem.SeekToBegin();
  CArchive ar(&mem, CArchive::load);
  CString back;
  ar >> back;
  if (back != s || !ar.IsBufferEmpty()) Fault();
}

// Structural equality of two graphs with a one-to-one map between their
// objects (sharing and cycles must correspond).
struct GraphMatcher {
  std::map<const CObject*, const CObject*> forward;
  std::map<const CObject*, const CObject*> backward;

  bool Same(const CObject* a, const CObject* b) {
    if (a == nullptr || b == nullptr) return a == b;
    const auto f = forward.find(a);
    const auto r = backward.find(b);
    if (f != forward.end() || r != backward.end()) return f != forward.end() && f->second == b && r != backward.end() && r->second == a;
    if (a->GetRuntimeClass() != b->GetRuntimeClass()) return false;
    forward[a] = b;
    backward[b] = a;
    if (const auto* na = dynamic_cast<const CFuzzNode*>(a)) {
      const auto* nb = static_cast<const CFuzzNode*>(b);
      return na->m_strName == nb->m_strName && na->m_nValue == nb->m_nValue && Same(na->m_pLeft, nb->m_pLeft) &&
             Same(na->m_pRight, nb->m_pRight);
    }
    const auto* la = dynamic_cast<const CFuzzLeaf*>(a);
    const auto* lb = dynamic_cast<const CFuzzLeaf*>(b);
    if (la == nullptr || lb == nullptr) return false;
    // Compared by bits: a NaN read from the file is still the same value.
    if (la->m_strText != lb->m_strText || std::memcmp(&la->m_dValue, &lb->m_dValue, sizeof(double)) != 0) return false;
    const auto* da = dynamic_cast<const CFuzzDerivedLeaf*>(a);
    if (da == nullptr) return true;
    return Same(da->m_pOwnerNode, static_cast<const CFuzzDerivedLeaf*>(b)->m_pOwnerNode);
  }
};

// Every object reachable from the roots.
void Reach(const CObject* p, std::set<const CObject*>& seen) {
  if (p == nullptr || !seen.insert(p).second) return;
  if (const auto* n = dynamic_cast<const CFuzzNode*>(p)) {
    Reach(n->m_pLeft, seen);
    Reach(n->m_pRight, seen);
  } else if (const auto* d = dynamic_cast<const CFuzzDerivedLeaf*>(p)) {
    Reach(d->m_pOwnerNode, seen);
  }
}

// Writes the roots in order through one archive, reads them back and
// compares the graphs.
void CheckObjectRoundTrip(const std::vector<CObject*>& roots) {
  std::set<const CObject*> all;
  for (const CObject* r : roots) Reach(r, all);
  for (const CObject* p : all) {
    if (!Rewritable(p)) return;
  }
  CMemFile mem;
  {
    CArchive ar(&mem, CArchive::store);
    for (const CObject* r : roots) ar << r;
    ar.Close();
  }
  mem.SeekToBegin();
  std::vector<CObject*> back;
  {
    CArchive ar(&mem, CArchive::load);
    for (size_t i = 0; i < roots.size(); ++i) back.push_back(ar.ReadObject(nullptr));
    if (!ar.IsBufferEmpty()) Fault();
  }
  GraphMatcher matcher;
  for (size_t i = 0; i < roots.size(); ++i) {
    if (!matcher.Same(roots[i], back[i])) Fault();
  }
}

// ---------------------------------------------------------------------------
// The operations
// ---------------------------------------------------------------------------

void RunOperations(CArchive& ar, const std::uint8_t* ops, size_t opCount, std::vector<CObject*>& roots) {
  for (size_t k = 0; k < opCount; ++k) {
    const unsigned op = ops[k] & 7u;
    const unsigned arg = ops[k] >> 3;  // 0 .. 31
    switch (op) {
      case 0: {
        CString s(L"kept");
        ar >> s;
        CheckStringRoundTrip(s);
        break;
      }
      case 1: {
        CObject* p = ar.ReadObject(nullptr);
        if (p != nullptr) roots.push_back(p);
        break;
      }
      case 2: {
        CFuzzLeaf* leaf = nullptr;
        ar >> leaf;
        if (leaf != nullptr) {
          if (!leaf->IsKindOf(RUNTIME_CLASS(CFuzzLeaf))) Fault();
          roots.push_back(leaf);
        }
        break;
      }
      case 3:
        ar.ReadCount();
        break;
      case 4: {
        CString line;
        const BOOL more = ar.ReadString(line);
        if (!more && !line.IsEmpty()) Fault();
        break;
      }
      case 5: {
        wchar_t buf[33];
        const UINT nMax = arg + 1;
        buf[nMax - 1] = L'\x7F';
        if (wchar_t* got = ar.ReadString(buf, nMax)) {
          if (got != buf || std::char_traits<wchar_t>::length(buf) >= nMax) Fault();
        }
        break;
      }
      case 6: {
        int i = 0;
        double d = 0;
        WORD w = 0;
        LONGLONG ll = 0;
        if (arg & 1) ar >> i;
        if (arg & 2) ar >> d;
        if (arg & 4) ar >> w;
        if (arg & 8) ar >> ll;
        if (arg & 16) {
          BYTE b = 0;
          ar >> b;
        }
        break;
      }
      default: {
        BYTE raw[32];
        if (ar.Read(raw, arg) > arg) Fault();
        break;
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  static const int kBufferSizes[4] = {64, 100, 4096, 0};
  static const UINT kPieces[8] = {1, 2, 3, 5, 64, 4096, 1u << 20, 1u << 20};
  const int bufSize = kBufferSizes[data[0] & 3];
  const UINT piece = kPieces[(data[0] >> 2) & 7];
  const bool memoryFile = (data[0] & 0x20) != 0;
  const size_t opCount = std::min<size_t>(data[1], size - 2);
  const std::uint8_t* ops = data + 2;
  const BYTE* stream = data + 2 + opCount;
  const size_t streamSize = size - 2 - opCount;

  std::vector<BYTE> copy(stream, stream + streamSize);
  copy.push_back(0);  // a valid block even for an empty stream
  std::vector<CObject*> roots;
  {
    PieceFile pieces(stream, streamSize, piece);
    CMemFile mem(copy.data(), static_cast<UINT>(streamSize));
    CFile* file = memoryFile ? static_cast<CFile*>(&mem) : static_cast<CFile*>(&pieces);
    try {
      CArchive ar(file, CArchive::load, bufSize);
      RunOperations(ar, ops, opCount, roots);
      ar.Close();
    } catch (const CException&) {
      // Reading stops at the first failure, as a loader would.
    }
  }
  // An object whose own read failed must have been deleted by the archive.
  for (const FuzzObject* p : Registry()) {
    if (p->m_bReading) Fault();
  }
  // Objects returned before a failure are whole (a failing read never
  // touches them), so they are checked too.
  if (!roots.empty()) CheckObjectRoundTrip(roots);
  while (!Registry().empty()) delete *Registry().begin();
  return 0;
}
