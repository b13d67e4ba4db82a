#include "chartcore/platform/archive.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "chartcore/platform/file.h"
#include "chartcore/platform/text_codec.h"
#include "chartcore/platform/utf16_internal.h"

namespace {

constexpr int kMinBufferSize = 64;
// Long strings are read (and their storage grown) in steps of this many
// code units, so a corrupt length costs at most one step before the missing
// data shows up as endOfFile.
constexpr size_t kStringStep = 4096;
// Class names in files are identifiers; anything longer is not a class.
constexpr WORD kMaxClassNameLength = 255;

using chartcore::internal::Utf16Joiner;

WORD LoadWord(const BYTE* p) { return static_cast<WORD>(p[0] | (p[1] << 8)); }

void StoreWord(BYTE* p, WORD w) {
  p[0] = static_cast<BYTE>(w & 0xFF);
  p[1] = static_cast<BYTE>(w >> 8);
}

}  // namespace

// One numbering for classes and objects. Storing maps pointers to indexes;
// loading keeps what each index names (index 0 is the null tag).
struct CArchive::ObjectMaps {
  struct Loaded {
    bool isClass;
    CRuntimeClass* pClass;
    CObject* pObject;
    UINT schema;
  };
  std::unordered_map<const void*, DWORD> stored;
  DWORD nextStored = 1;
  std::vector<Loaded> loaded{Loaded{false, nullptr, nullptr, 0}};
};

// ---------------------------------------------------------------------------
// Construction and lifetime
// ---------------------------------------------------------------------------

CArchive::CArchive(CFile* pFile, UINT nMode, int nBufSize, void* lpBuf)
    : m_pFile(pFile),
      m_nMode(nMode),
      m_pBufStart(nullptr),
      m_pBufMax(nullptr),
      m_pCur(nullptr),
      m_pLoadEnd(nullptr),
      m_pStoreEnd(nullptr),
      m_pOwnedBuf(nullptr),
      m_nObjectSchema(0xFFFFFFFFu),
      m_pMaps(nullptr),
      m_pMemFile(nullptr) {
  if (pFile == nullptr) AfxThrowInvalidArgException();
  m_strFileName = pFile->GetFilePath();
  if (pFile->GetRuntimeClass() == RUNTIME_CLASS(CMemFile)) {
    // A plain memory file is used in place: its block is the buffer, so
    // every value is copied once, not through a second buffer.
    CMemFile* mem = static_cast<CMemFile*>(pFile);
    if (IsLoading() || mem->m_nPosition <= mem->m_nFileSize) {
      m_pMemFile = mem;
      m_pBufStart = mem->m_lpBuffer;
      m_pBufMax = m_pBufStart + mem->m_nBufferSize;
      m_pCur = m_pBufStart + std::min(mem->m_nPosition, mem->m_nFileSize);
      if (IsLoading()) {
        m_pLoadEnd = m_pBufStart + mem->m_nFileSize;
        m_pStoreEnd = m_pCur;
      } else {
        m_pLoadEnd = m_pCur;
        m_pStoreEnd = m_pBufMax;
      }
      return;
    }
  }
  if (lpBuf != nullptr && nBufSize >= kMinBufferSize) {
    m_pBufStart = static_cast<BYTE*>(lpBuf);
  } else {
    nBufSize = std::max(nBufSize, kMinBufferSize);
    m_pOwnedBuf = new BYTE[static_cast<size_t>(nBufSize)];
    m_pBufStart = m_pOwnedBuf;
  }
  m_pBufMax = m_pBufStart + nBufSize;
  m_pCur = m_pBufStart;
  m_pLoadEnd = m_pBufStart;
  m_pStoreEnd = IsStoring() ? m_pBufMax : m_pBufStart;
}

CArchive::~CArchive() {
  if (m_pFile != nullptr && IsStoring() && (m_nMode & bNoFlushOnDelete) == 0) {
    try {
      WriteBufferToFile();
    } catch (...) {
      // A destructor cannot report; the CFile remembers the failure.
    }
  }
  delete[] m_pOwnedBuf;
  delete m_pMaps;
}

void CArchive::Flush() {
  if (m_pFile == nullptr) return;
  if (IsStoring()) {
    WriteBufferToFile();
  } else if (m_pMemFile != nullptr) {
    m_pMemFile->m_nPosition = static_cast<size_t>(m_pCur - m_pBufStart);
  } else if (m_pLoadEnd != m_pCur) {
    // Give the unread bytes back to the file, so its position is where
    // reading through the archive stopped.
    const LONGLONG unread = m_pLoadEnd - m_pCur;
    m_pCur = m_pLoadEnd = m_pBufStart;
    m_pFile->Seek(-unread, CFile::current);
  }
}

void CArchive::Close() {
  Flush();
  Abort();
}

void CArchive::Abort() {
  m_pFile = nullptr;
  // Both fast paths now fall through to the slow path, which reports the
  // closed archive.
  m_pCur = m_pLoadEnd = m_pStoreEnd = m_pBufStart;
}

// ---------------------------------------------------------------------------
// Buffer
// ---------------------------------------------------------------------------

void CArchive::Fail(int cause) const { AfxThrowArchiveException(cause, m_strFileName.GetString()); }

void CArchive::CheckLoading() const {
  if (m_pFile == nullptr) Fail(CArchiveException::genericException);
  if (!IsLoading()) Fail(CArchiveException::writeOnly);
}

void CArchive::CheckStoring() const {
  if (m_pFile == nullptr) Fail(CArchiveException::genericException);
  if (!IsStoring()) Fail(CArchiveException::readOnly);
}

void CArchive::WriteBufferToFile() {
  if (m_pMemFile != nullptr) {
    // The bytes are in the memory file's block already; make them its own.
    const size_t end = static_cast<size_t>(m_pCur - m_pBufStart);
    if (end > m_pMemFile->m_nFileSize) m_pMemFile->m_nFileSize = end;
    m_pMemFile->m_nPosition = end;
    return;
  }
  if (m_pCur == m_pBufStart) return;
  m_pFile->Write(m_pBufStart, static_cast<UINT>(m_pCur - m_pBufStart));
  m_pCur = m_pBufStart;
}

void CArchive::MakeRoom(size_t nBytes) {
  CheckStoring();
  WriteBufferToFile();
  if (m_pMemFile != nullptr) {
    // Grow the memory file's block (geometrically) and keep writing in it.
    const size_t end = static_cast<size_t>(m_pCur - m_pBufStart);
    m_pMemFile->GrowFile(end + nBytes);
    m_pBufStart = m_pMemFile->m_lpBuffer;
    m_pBufMax = m_pBufStart + m_pMemFile->m_nBufferSize;
    m_pCur = m_pBufStart + end;
    m_pLoadEnd = m_pCur;
    m_pStoreEnd = m_pBufMax;
  }
}

bool CArchive::TryFillBuffer(size_t nBytes) {
  CheckLoading();
  if (m_pMemFile != nullptr) {
    // Everything the memory file holds is visible already; look again in
    // case it was written to meanwhile.
    const size_t pos = static_cast<size_t>(m_pCur - m_pBufStart);
    m_pBufStart = m_pMemFile->m_lpBuffer;
    m_pBufMax = m_pBufStart + m_pMemFile->m_nBufferSize;
    m_pCur = m_pBufStart + std::min(pos, m_pMemFile->m_nFileSize);
    m_pLoadEnd = m_pBufStart + m_pMemFile->m_nFileSize;
    m_pStoreEnd = m_pCur;
    return static_cast<size_t>(m_pLoadEnd - m_pCur) >= nBytes;
  }
  const size_t kept = static_cast<size_t>(m_pLoadEnd - m_pCur);
  if (kept >= nBytes) return true;
  if (kept != 0 && m_pCur != m_pBufStart) std::memmove(m_pBufStart, m_pCur, kept);
  m_pCur = m_pBufStart;
  m_pLoadEnd = m_pBufStart + kept;
  while (static_cast<size_t>(m_pLoadEnd - m_pBufStart) < nBytes) {
    const UINT got = m_pFile->Read(m_pLoadEnd, static_cast<UINT>(m_pBufMax - m_pLoadEnd));
    if (got == 0) return false;
    m_pLoadEnd += got;
  }
  return true;
}

void CArchive::FillBuffer(size_t nBytes) {
  if (!TryFillBuffer(nBytes)) Fail(CArchiveException::endOfFile);
}

// ---------------------------------------------------------------------------
// Raw bytes
// ---------------------------------------------------------------------------

UINT CArchive::Read(void* lpBuf, UINT nMax) {
  CheckLoading();
  BYTE* out = static_cast<BYTE*>(lpBuf);
  UINT done = 0;
  while (done < nMax) {
    if (m_pCur == m_pLoadEnd) {
      const UINT left = nMax - done;
      if (m_pMemFile == nullptr && left >= static_cast<UINT>(m_pBufMax - m_pBufStart)) {
        // Large reads bypass the buffer.
        const UINT got = m_pFile->Read(out + done, left);
        if (got == 0) break;
        done += got;
        continue;
      }
      if (!TryFillBuffer(1)) break;
    }
    const UINT take = std::min(nMax - done, static_cast<UINT>(m_pLoadEnd - m_pCur));
    std::memcpy(out + done, m_pCur, take);
    m_pCur += take;
    done += take;
  }
  return done;
}

void CArchive::Write(const void* lpBuf, UINT nMax) {
  CheckStoring();
  const BYTE* in = static_cast<const BYTE*>(lpBuf);
  if (m_pStoreEnd - m_pCur < static_cast<std::ptrdiff_t>(nMax) && m_pMemFile != nullptr) {
    MakeRoom(nMax);
  } else if (m_pStoreEnd - m_pCur < static_cast<std::ptrdiff_t>(nMax)) {
    WriteBufferToFile();
    if (nMax >= static_cast<UINT>(m_pBufMax - m_pBufStart)) {
      m_pFile->Write(in, nMax);
      return;
    }
  }
  if (nMax != 0) std::memcpy(m_pCur, in, nMax);
  m_pCur += nMax;
}

// ---------------------------------------------------------------------------
// Strings
// ---------------------------------------------------------------------------

void CArchive::WriteUtf16(const wchar_t* p, size_t n) {
  size_t i = 0;
  while (i < n) {
    if (m_pStoreEnd - m_pCur < 4) MakeRoom(4);
    // Encode as many characters as surely fit (4 bytes each at most).
    const size_t fit = static_cast<size_t>(m_pStoreEnd - m_pCur) / 4;
    const size_t end = std::min(n, i + fit);
    for (; i < end; ++i) {
      std::uint16_t units[2];
      const int count = chartcore::internal::EncodeUtf16(p[i], units);
      StoreWord(m_pCur, units[0]);
      m_pCur += 2;
      if (count == 2) {
        StoreWord(m_pCur, units[1]);
        m_pCur += 2;
      }
    }
  }
}

CArchive& CArchive::operator<<(const CString& str) {
  CheckStoring();
  const wchar_t* p = str.GetString();
  const size_t n = static_cast<size_t>(str.GetLength());
  const ULONGLONG units = chartcore::Utf16Length(p, n);
  Put<BYTE>(0xFF);
  Put<WORD>(0xFFFE);
  if (units < 0xFF) {
    Put<BYTE>(static_cast<BYTE>(units));
  } else {
    Put<BYTE>(0xFF);
    if (units < 0xFFFE) {
      Put<WORD>(static_cast<WORD>(units));
    } else {
      Put<WORD>(0xFFFF);
      if (units < 0xFFFFFFFFu) {
        Put<DWORD>(static_cast<DWORD>(units));
      } else {
        Put<DWORD>(0xFFFFFFFFu);
        Put<ULONGLONG>(units);
      }
    }
  }
  WriteUtf16(p, n);
  return *this;
}

ULONGLONG CArchive::ReadStringLength(bool& unicode) {
  unicode = false;
  BYTE b = Get<BYTE>();
  if (b < 0xFF) return b;
  WORD w = Get<WORD>();
  if (w == 0xFFFE) {
    // The marker of UTF-16 text; the length follows in the same escapes.
    unicode = true;
    b = Get<BYTE>();
    if (b < 0xFF) return b;
    w = Get<WORD>();
  }
  if (w < 0xFFFF) return w;
  const DWORD d = Get<DWORD>();
  if (d < 0xFFFFFFFFu) return d;
  return Get<ULONGLONG>();
}

CArchive& CArchive::operator>>(CString& str) {
  CheckLoading();
  bool unicode = false;
  const ULONGLONG length = ReadStringLength(unicode);
  if (length > 0x7FFFFFFFu) Fail(CArchiveException::badIndex);
  size_t remaining = static_cast<size_t>(length);
  std::wstring text;
  if (unicode) {
    // Storage is promised only a step at a time; a longer string grows as
    // its bytes actually arrive.
    text.reserve(std::min(remaining, kStringStep));
    Utf16Joiner joiner(text);
    while (remaining != 0) {
      if (m_pLoadEnd - m_pCur < 2) FillBuffer(2);
      const size_t avail = std::min(remaining, static_cast<size_t>(m_pLoadEnd - m_pCur) / 2);
      for (size_t k = 0; k < avail; ++k) joiner.Add(LoadWord(m_pCur + 2 * k));
      m_pCur += 2 * avail;
      remaining -= avail;
    }
    joiner.Finish();
  } else {
    std::string bytes;
    bytes.reserve(std::min(remaining, kStringStep));
    while (remaining != 0) {
      if (m_pLoadEnd == m_pCur) FillBuffer(1);
      const size_t avail = std::min(remaining, static_cast<size_t>(m_pLoadEnd - m_pCur));
      bytes.append(reinterpret_cast<const char*>(m_pCur), avail);
      m_pCur += avail;
      remaining -= avail;
    }
    // Text written by non-Unicode builds is in the system code page of the
    // original hosts.
    text = chartcore::Cp949ToWide(bytes.data(), bytes.size());
  }
  str = CString(std::move(text));
  return *this;
}

void CArchive::WriteString(const wchar_t* lpsz) {
  CheckStoring();
  if (lpsz == nullptr) return;
  WriteUtf16(lpsz, std::char_traits<wchar_t>::length(lpsz));
}

bool CArchive::ReadLineUnits(std::wstring& line, size_t maxChars) {
  bool any = false;
  bool lastWasCr = false;
  Utf16Joiner joiner(line);
  while (line.size() + joiner.Pending() < maxChars) {
    if (m_pLoadEnd - m_pCur < 2 && !TryFillBuffer(2)) break;
    const WORD u = LoadWord(m_pCur);
    m_pCur += 2;
    any = true;
    if (u == L'\n') {
      if (lastWasCr) line.pop_back();
      lastWasCr = false;
      break;
    }
    joiner.Add(u);
    lastWasCr = (u == L'\r');
  }
  joiner.Finish();
  return any;
}

BOOL CArchive::ReadString(CString& rString) {
  CheckLoading();
  std::wstring line;
  const bool any = ReadLineUnits(line, static_cast<size_t>(-1));
  rString = CString(std::move(line));
  return any ? TRUE : FALSE;
}

wchar_t* CArchive::ReadString(wchar_t* lpsz, UINT nMax) {
  CheckLoading();
  if (lpsz == nullptr || nMax == 0) return nullptr;
  std::wstring line;
  const bool any = ReadLineUnits(line, nMax - 1);
  if (!any) return nullptr;
  std::char_traits<wchar_t>::copy(lpsz, line.data(), line.size());
  lpsz[line.size()] = L'\0';
  return lpsz;
}

// ---------------------------------------------------------------------------
// Counts
// ---------------------------------------------------------------------------

void CArchive::WriteCount(DWORD_PTR dwCount) {
  const auto count = static_cast<ULONGLONG>(dwCount);
  if (count < 0xFFFF) {
    Put<WORD>(static_cast<WORD>(count));
    return;
  }
  Put<WORD>(0xFFFF);
  if (count < 0xFFFFFFFFu) {
    Put<DWORD>(static_cast<DWORD>(count));
    return;
  }
  Put<DWORD>(0xFFFFFFFFu);
  Put<ULONGLONG>(count);
}

DWORD_PTR CArchive::ReadCount() {
  const WORD w = Get<WORD>();
  if (w != 0xFFFF) return w;
  const DWORD d = Get<DWORD>();
  if (d != 0xFFFFFFFFu) return d;
  return static_cast<DWORD_PTR>(Get<ULONGLONG>());
}

// ---------------------------------------------------------------------------
// Objects and classes
// ---------------------------------------------------------------------------

CArchive::ObjectMaps& CArchive::Maps() {
  if (m_pMaps == nullptr) m_pMaps = new ObjectMaps;
  return *m_pMaps;
}

void CArchive::WriteTag(DWORD index, bool isClass) {
  if (index < wBigObjectTag) {
    Put<WORD>(static_cast<WORD>(isClass ? (wClassTag | index) : index));
  } else {
    Put<WORD>(wBigObjectTag);
    Put<DWORD>(isClass ? (dwBigClassTag | index) : index);
  }
}

DWORD CArchive::NextStoreIndex(const void* key) {
  ObjectMaps& maps = Maps();
  if (maps.nextStored > nMaxMapCount) Fail(CArchiveException::badIndex);
  const DWORD index = maps.nextStored++;
  maps.stored.emplace(key, index);
  return index;
}

void CArchive::WriteClass(const CRuntimeClass* pClassRef) {
  CheckStoring();
  if (pClassRef == nullptr) AfxThrowInvalidArgException();
  if (!pClassRef->IsSerializable()) Fail(CArchiveException::badClass);
  ObjectMaps& maps = Maps();
  const auto found = maps.stored.find(pClassRef);
  if (found != maps.stored.end()) {
    WriteTag(found->second, true);
    return;
  }
  const size_t nameLength = std::char_traits<char>::length(pClassRef->m_lpszClassName);
  if (nameLength == 0 || nameLength > kMaxClassNameLength) Fail(CArchiveException::badClass);
  NextStoreIndex(pClassRef);
  Put<WORD>(wNewClassTag);
  Put<WORD>(static_cast<WORD>(pClassRef->m_wSchema & ~VERSIONABLE_SCHEMA));
  Put<WORD>(static_cast<WORD>(nameLength));
  Write(pClassRef->m_lpszClassName, static_cast<UINT>(nameLength));
}

void CArchive::WriteObject(const CObject* pOb) {
  CheckStoring();
  if (pOb == nullptr) {
    Put<WORD>(wNullTag);
    return;
  }
  ObjectMaps& maps = Maps();
  const auto found = maps.stored.find(pOb);
  if (found != maps.stored.end()) {
    WriteTag(found->second, false);
    return;
  }
  WriteClass(pOb->GetRuntimeClass());
  // Numbered before its fields, so an object that refers back to itself
  // writes a reference.
  NextStoreIndex(pOb);
  const_cast<CObject*>(pOb)->Serialize(*this);
}

CRuntimeClass* CArchive::ReadClass(const CRuntimeClass* pClassRefRequested, UINT* pSchema, DWORD* pObTag) {
  CheckLoading();
  ObjectMaps& maps = Maps();
  const WORD wTag = Get<WORD>();
  CRuntimeClass* pClass = nullptr;
  UINT schema = 0;
  if (wTag == wNewClassTag) {
    schema = Get<WORD>();
    const WORD nameLength = Get<WORD>();
    if (nameLength == 0 || nameLength > kMaxClassNameLength) Fail(CArchiveException::badClass);
    char name[kMaxClassNameLength + 1];
    if (Read(name, nameLength) != nameLength) Fail(CArchiveException::endOfFile);
    name[nameLength] = '\0';
    pClass = CRuntimeClass::FromName(name);
    if (pClass == nullptr || !pClass->IsSerializable()) Fail(CArchiveException::badClass);
    if ((pClass->m_wSchema & ~VERSIONABLE_SCHEMA) != schema && (pClass->m_wSchema & VERSIONABLE_SCHEMA) == 0)
      Fail(CArchiveException::badSchema);
    if (maps.loaded.size() > nMaxMapCount) Fail(CArchiveException::badIndex);
    maps.loaded.push_back(ObjectMaps::Loaded{true, pClass, nullptr, schema});
  } else {
    const DWORD obTag = wTag == wBigObjectTag
                            ? Get<DWORD>()
                            : ((static_cast<DWORD>(wTag & wClassTag) << 16) | static_cast<DWORD>(wTag & ~wClassTag));
    if ((obTag & dwBigClassTag) == 0) {
      // An object tag: the caller resolves it.
      if (pObTag == nullptr) Fail(CArchiveException::badIndex);
      *pObTag = obTag;
      return nullptr;
    }
    const DWORD index = obTag & ~dwBigClassTag;
    if (index == 0 || index >= maps.loaded.size() || !maps.loaded[index].isClass) Fail(CArchiveException::badIndex);
    pClass = maps.loaded[index].pClass;
    schema = maps.loaded[index].schema;
  }
  if (pClassRefRequested != nullptr && !pClass->IsDerivedFrom(pClassRefRequested)) Fail(CArchiveException::badClass);
  if (pSchema != nullptr) *pSchema = schema;
  return pClass;
}

void CArchive::SerializeClass(const CRuntimeClass* pClassRef) {
  if (IsStoring()) {
    WriteClass(pClassRef);
  } else {
    ReadClass(pClassRef);
  }
}

CObject* CArchive::ReadObject(const CRuntimeClass* pClassRefRequested) {
  CheckLoading();
  UINT schema = 0;
  DWORD obTag = 0;
  CRuntimeClass* pClass = ReadClass(pClassRefRequested, &schema, &obTag);
  ObjectMaps& maps = Maps();
  if (pClass == nullptr) {
    if (obTag == 0) return nullptr;
    if (obTag >= maps.loaded.size() || maps.loaded[obTag].isClass || maps.loaded[obTag].pObject == nullptr)
      Fail(CArchiveException::badIndex);
    CObject* pOb = maps.loaded[obTag].pObject;
    if (pClassRefRequested != nullptr && !pOb->IsKindOf(pClassRefRequested)) Fail(CArchiveException::badClass);
    return pOb;
  }
  CObject* pOb = pClass->CreateObject();
  if (pOb == nullptr) Fail(CArchiveException::badClass);
  if (maps.loaded.size() > nMaxMapCount) {
    delete pOb;
    Fail(CArchiveException::badIndex);
  }
  const size_t slot = maps.loaded.size();
  try {
    maps.loaded.push_back(ObjectMaps::Loaded{false, nullptr, pOb, 0});
  } catch (...) {
    delete pOb;
    throw;
  }
  const UINT outerSchema = m_nObjectSchema;
  m_nObjectSchema = schema;
  try {
    pOb->Serialize(*this);
  } catch (...) {
    // Forget the object and everything numbered while reading it: what it
    // read is freed by its destructor, so no later reference may reach it.
    maps.loaded.resize(slot);
    m_nObjectSchema = outerSchema;
    delete pOb;
    throw;
  }
  m_nObjectSchema = outerSchema;
  return pOb;
}

UINT CArchive::GetObjectSchema() {
  const UINT schema = m_nObjectSchema;
  m_nObjectSchema = 0xFFFFFFFFu;
  return schema;
}

void CArchive::MapObject(const CObject* pOb) {
  if (pOb == nullptr) return;
  if (m_pFile == nullptr) Fail(CArchiveException::genericException);
  ObjectMaps& maps = Maps();
  if (IsStoring()) {
    if (maps.stored.find(pOb) == maps.stored.end()) NextStoreIndex(pOb);
  } else {
    if (maps.loaded.size() > nMaxMapCount) Fail(CArchiveException::badIndex);
    maps.loaded.push_back(ObjectMaps::Loaded{false, nullptr, const_cast<CObject*>(pOb), 0});
  }
}
