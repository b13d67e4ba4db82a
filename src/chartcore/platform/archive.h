// CArchive: the framework's binary serialisation stream over a CFile.
//
// Definition records and function files are written through an archive, so
// the bytes here are the files users already have: scalars are little-endian
// raw bytes of their fixed width, strings carry the framework's length prefix
// and UTF-16LE text, and objects are tagged with their class name and schema.
// Storing collects bytes in a buffer written to the file when full, on Flush
// and on Close; loading fills the buffer from the file. Every failure is a
// CArchiveException (or the CFileException of the file underneath); a length
// read from a file is never trusted for an allocation before the data for it
// has actually arrived.
//
//   CMemFile file;
//   CArchive ar(&file, CArchive::store);
//   ar << 7 << CString(L"RSI") << 70.0;      // 04 bytes, FF FE FF 03 R S I, 8 bytes
//   ar.Close();
#ifndef CHARTCORE_PLATFORM_ARCHIVE_H_
#define CHARTCORE_PLATFORM_ARCHIVE_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/object.h"
#include "chartcore/platform/types.h"

class CFile;
class CMemFile;

#if !defined(_WIN32)
typedef std::uintptr_t DWORD_PTR;
#endif

class CHARTCORE_API CArchive {
 public:
  // Mode flags: load and store pick the direction; bNoFlushOnDelete keeps the
  // destructor from writing what is still buffered.
  enum Mode { store = 0, load = 1, bNoFlushOnDelete = 2 };

  // Object tags as they appear in files.
  enum : WORD { wNullTag = 0, wNewClassTag = 0xFFFF, wClassTag = 0x8000, wBigObjectTag = 0x7FFF };
  enum : DWORD { dwBigClassTag = 0x80000000u, nMaxMapCount = 0x3FFFFFFEu };

  // -------------------------------------------------------------------------
  // Construction and lifetime
  // -------------------------------------------------------------------------
  // CArchive: an archive over pFile (which must stay open while the archive
  // is used; a null file throws CInvalidArgException). nBufSize is the
  // buffer size (at least 64 is used); lpBuf, when given with nBufSize >= 64,
  // is used as the buffer instead of an allocated one.
  CArchive(CFile* pFile, UINT nMode, int nBufSize = 4096, void* lpBuf = nullptr);
  // ~CArchive: a storing archive not yet closed writes its buffer (unless
  // bNoFlushOnDelete); errors are swallowed here, so call Close to see them.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  BOOL IsLoading() const { return (m_nMode & load) != 0; }
  BOOL IsStoring() const { return (m_nMode & load) == 0; }
  // IsBufferEmpty: TRUE when a loading archive holds no unread buffered bytes.
  BOOL IsBufferEmpty() const { return m_pCur == m_pLoadEnd; }
  // GetFile: the file underneath (nullptr after Close or Abort).
  CFile* GetFile() const { return m_pFile; }

  // Flush: storing writes the buffered bytes to the file; loading moves the
  // file position back over the bytes buffered but not yet read.
  void Flush();
  // Close: Flush, then detach from the file (which stays open).
  void Close();
  // Abort: detaches from the file without writing anything still buffered.
  void Abort();

  // -------------------------------------------------------------------------
  // Raw bytes
  // -------------------------------------------------------------------------
  // Read: copies up to nMax bytes; returns the count read, fewer only at the
  // end of the file (no exception there). Throws writeOnly when storing.
  UINT Read(void* lpBuf, UINT nMax);
  // Write: appends nMax bytes. Throws readOnly when loading.
  void Write(const void* lpBuf, UINT nMax);

  // -------------------------------------------------------------------------
  // Scalars: raw little-endian bytes of the type's width (bool and char one
  // byte, wchar_t a 16-bit WORD, int/LONG/long 4, LONGLONG and double 8). Reading
  // past the end throws endOfFile; the wrong direction throws readOnly or
  // writeOnly.
  // -------------------------------------------------------------------------
  CArchive& operator<<(bool b) { Put(static_cast<BYTE>(b ? 1 : 0)); return *this; }
  CArchive& operator<<(char v) { Put(v); return *this; }
  CArchive& operator<<(signed char v) { Put(v); return *this; }
  CArchive& operator<<(unsigned char v) { Put(v); return *this; }
  CArchive& operator<<(short v) { Put(v); return *this; }
  CArchive& operator<<(unsigned short v) { Put(v); return *this; }
  CArchive& operator<<(int v) { Put(v); return *this; }
  CArchive& operator<<(unsigned int v) { Put(v); return *this; }
  // long and unsigned long differ in width between systems; the archive
  // keeps them at 4 bytes so a file reads the same everywhere.
  CArchive& operator<<(long v) { Put(static_cast<LONG>(v)); return *this; }
  CArchive& operator<<(unsigned long v) { Put(static_cast<DWORD>(v)); return *this; }
  CArchive& operator<<(long long v) { Put(v); return *this; }
  CArchive& operator<<(unsigned long long v) { Put(v); return *this; }
  CArchive& operator<<(float v) { Put(v); return *this; }
  CArchive& operator<<(double v) { Put(v); return *this; }
  CArchive& operator<<(wchar_t v) { Put(static_cast<WORD>(v)); return *this; }

  CArchive& operator>>(bool& b) { b = Get<BYTE>() != 0; return *this; }
  CArchive& operator>>(char& v) { v = Get<char>(); return *this; }
  CArchive& operator>>(signed char& v) { v = Get<signed char>(); return *this; }
  CArchive& operator>>(unsigned char& v) { v = Get<unsigned char>(); return *this; }
  CArchive& operator>>(short& v) { v = Get<short>(); return *this; }
  CArchive& operator>>(unsigned short& v) { v = Get<unsigned short>(); return *this; }
  CArchive& operator>>(int& v) { v = Get<int>(); return *this; }
  CArchive& operator>>(unsigned int& v) { v = Get<unsigned int>(); return *this; }
  CArchive& operator>>(long& v) { v = Get<LONG>(); return *this; }
  CArchive& operator>>(unsigned long& v) { v = Get<DWORD>(); return *this; }
  CArchive& operator>>(long long& v) { v = Get<long long>(); return *this; }
  CArchive& operator>>(unsigned long long& v) { v = Get<unsigned long long>(); return *this; }
  CArchive& operator>>(float& v) { v = Get<float>(); return *this; }
  CArchive& operator>>(double& v) { v = Get<double>(); return *this; }
  CArchive& operator>>(wchar_t& v) { v = static_cast<wchar_t>(Get<WORD>()); return *this; }

  // -------------------------------------------------------------------------
  // Strings
  // -------------------------------------------------------------------------
  // operator<<(CString): FF FE FF, the UTF-16 length (1 byte below 0xFF;
  // FF + WORD below 0xFFFE; FF FFFF + DWORD; beyond that FFFFFFFF + 64 bits),
  // then the UTF-16LE code units. An empty string is FF FE FF 00.
  CArchive& operator<<(const CString& str);
  CArchive& operator<<(const wchar_t* psz) { return *this << CString(psz); }
  // Other pointers would silently become a bool; they do not compile.
  template <class T, class = typename std::enable_if<!std::is_convertible<T*, const CObject*>::value &&
                                                     !std::is_same<typename std::remove_cv<T>::type, wchar_t>::value>::type>
  CArchive& operator<<(T* p) = delete;

  // operator>>(CString): reads every form the framework writes: UTF-16 after
  // the FF FE FF marker, or without it narrow text of code page 949 whose
  // length counts bytes. The target keeps its old text if the read fails.
  // A length above 0x7FFFFFFF throws badIndex.
  CArchive& operator>>(CString& str);

  // WriteString: the text's UTF-16 code units without length or terminator
  // (the line form; add L"\r\n" to end a line).
  void WriteString(const wchar_t* lpsz);
  // ReadString: reads UTF-16 code units up to the end of a line; the line end
  // ("\n" or "\r\n") is dropped. Returns FALSE when nothing was left to read.
  BOOL ReadString(CString& rString);
  // ReadString: reads at most nMax - 1 code units of a line into lpsz and
  // terminates it; the line end is dropped. Returns nullptr when nothing was
  // left to read (or nMax is 0).
  wchar_t* ReadString(wchar_t* lpsz, UINT nMax);

  // -------------------------------------------------------------------------
  // Counts
  // -------------------------------------------------------------------------
  // WriteCount: a WORD below 0xFFFF; else FFFF + DWORD below 0xFFFFFFFF; else
  // FFFF FFFFFFFF + 64 bits.
  void WriteCount(DWORD_PTR dwCount);
  // ReadCount: the count as written; callers must not trust it for an
  // allocation before the elements have arrived.
  DWORD_PTR ReadCount();

  // -------------------------------------------------------------------------
  // Objects and classes
  // -------------------------------------------------------------------------
  // WriteObject: a null object is WORD 0000; an object already written in
  // this archive is its index (WORD, or 7FFF + DWORD above 0x7FFE); a new
  // object writes its class (WriteClass) and then its Serialize output.
  // Classes and objects share one numbering from 1 in order of first
  // appearance. A class that is not serializable throws badClass.
  void WriteObject(const CObject* pOb);
  // ReadObject: reads what WriteObject wrote and returns the object (created
  // by its class, owned by the caller; the same pointer again for a later
  // reference to it; nullptr for the null tag). With pClassRefRequested the
  // object must be of that class or derived from it (else badClass). Unknown
  // class name: badClass; schema mismatch of a class that is not versionable:
  // badSchema; an index not yet read: badIndex. If the object's Serialize
  // throws, the half-read object is deleted.
  CObject* ReadObject(const CRuntimeClass* pClassRefRequested);

  // WriteClass: FFFF, the schema WORD (without VERSIONABLE_SCHEMA), the name
  // length WORD and the narrow name; a class already written is WORD
  // 0x8000|index (or 7FFF + DWORD 0x80000000|index above 0x7FFE).
  void WriteClass(const CRuntimeClass* pClassRef);
  // ReadClass: reads a class tag. Returns nullptr for an object tag, whose
  // value goes to *pObTag (throws badIndex when pObTag is null). *pSchema
  // receives the stored schema.
  CRuntimeClass* ReadClass(const CRuntimeClass* pClassRefRequested = nullptr, UINT* pSchema = nullptr,
                           DWORD* pObTag = nullptr);
  // SerializeClass: WriteClass when storing, ReadClass(pClassRef) when loading.
  void SerializeClass(const CRuntimeClass* pClassRef);

  // GetObjectSchema: inside the Serialize of an object being read, the schema
  // stored with it; the value is handed out once, later calls give
  // 0xFFFFFFFF (as do calls outside such a read).
  UINT GetObjectSchema();
  void SetObjectSchema(UINT nSchema) { m_nObjectSchema = nSchema; }

  // MapObject: numbers an object as WriteObject or ReadObject would, without
  // writing or reading it (so later references to it are indexes).
  void MapObject(const CObject* pOb);

  CArchive& operator<<(const CObject* pOb) { WriteObject(pOb); return *this; }
  CArchive& operator>>(CObject*& pOb) { pOb = ReadObject(nullptr); return *this; }
  CArchive& operator>>(const CObject*& pOb) { pOb = ReadObject(nullptr); return *this; }

  // The path of the file underneath, as exceptions report it.
  CString m_strFileName;

 private:
  struct ObjectMaps;

  template <class T>
  static T FromLittleEndian(T v) {
#if defined(__BYTE_ORDER__) && defined(__ORDER_BIG_ENDIAN__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    unsigned char b[sizeof(T)];
    std::memcpy(b, &v, sizeof(T));
    for (size_t i = 0; i < sizeof(T) / 2; ++i) {
      unsigned char t = b[i];
      b[i] = b[sizeof(T) - 1 - i];
      b[sizeof(T) - 1 - i] = t;
    }
    std::memcpy(&v, b, sizeof(T));
#endif
    return v;
  }

  // The fast paths: one comparison, one copy. A loading archive's store limit
  // (and a storing archive's load limit) is the buffer start, so the wrong
  // direction always takes the slow path, which throws.
  template <class T>
  void Put(T v) {
    if (m_pStoreEnd - m_pCur < static_cast<std::ptrdiff_t>(sizeof(T))) MakeRoom(sizeof(T));
    v = FromLittleEndian(v);
    std::memcpy(m_pCur, &v, sizeof(T));
    m_pCur += sizeof(T);
  }
  template <class T>
  T Get() {
    if (m_pLoadEnd - m_pCur < static_cast<std::ptrdiff_t>(sizeof(T))) FillBuffer(sizeof(T));
    T v;
    std::memcpy(&v, m_pCur, sizeof(T));
    m_pCur += sizeof(T);
    return FromLittleEndian(v);
  }

  // MakeRoom: writes the buffer out (or grows a memory file in place) so
  // nBytes fit (readOnly when loading).
  void MakeRoom(size_t nBytes);
  // FillBuffer: reads from the file until nBytes are buffered (writeOnly
  // when storing, endOfFile when the file ends first). TryFillBuffer
  // returns false instead of throwing endOfFile.
  void FillBuffer(size_t nBytes);
  bool TryFillBuffer(size_t nBytes);
  void WriteBufferToFile();
  [[noreturn]] void Fail(int cause) const;
  void CheckLoading() const;
  void CheckStoring() const;
  void WriteUtf16(const wchar_t* p, size_t n);
  ULONGLONG ReadStringLength(bool& unicode);
  bool ReadLineUnits(std::wstring& line, size_t maxChars);
  void WriteTag(DWORD index, bool isClass);
  DWORD NextStoreIndex(const void* key);
  ObjectMaps& Maps();

  CFile* m_pFile;
  UINT m_nMode;
  BYTE* m_pBufStart;
  BYTE* m_pBufMax;
  BYTE* m_pCur;
  BYTE* m_pLoadEnd;
  BYTE* m_pStoreEnd;
  BYTE* m_pOwnedBuf;
  UINT m_nObjectSchema;
  ObjectMaps* m_pMaps;
  // Set when the file is a plain CMemFile, whose block then serves as the
  // buffer (no second copy of every byte).
  CMemFile* m_pMemFile;
};

#endif  // CHARTCORE_PLATFORM_ARCHIVE_H_
