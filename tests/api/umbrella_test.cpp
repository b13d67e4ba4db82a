// A host that includes only the umbrella header and links the shared library
// reaches every exported name. Each module adds the names it exports here.
#include "chartcore/chartcore.h"

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

TEST(Umbrella, PlatformNamesAreExported) {
  EXPECT_STREQ(chartcore::GetLibraryVersion(), "0.1.0");
  CString s(L"abc");
  s += L"def";
  EXPECT_EQ(s.Find(L"cd"), 2);
  EXPECT_THROW(s.GetAt(10), CInvalidArgException);
  EXPECT_TRUE(chartcore::IsAlnumW(L'\xD55C'));
}

TEST(Umbrella, LogicAndPropertyNamesAreExported) {
  CDBSubINDICA ind;
  CDBSubINDICA_VAR period;
  period.strText = L"Period";
  period.dValue = 20;
  ind.m_arrVariable.Add(period);
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    ar << static_cast<const CObject*>(&ind);
    ar.Close();
  }
  file.SeekToBegin();
  CArchive ar(&file, CArchive::load);
  std::unique_ptr<CDBSubBase> back = chartcore::ReadRecordObject(ar);
  ASSERT_TRUE(back->IsKindOf(RUNTIME_CLASS(CDBSubINDICA)));
  const auto& read = static_cast<const CDBSubINDICA&>(*back);
  EXPECT_EQ(read.m_arrVariable[0].dValue, 20.0);
  std::unique_ptr<CObject> made(CRuntimeClass::CreateObject("CDBSubOPTIMIZE"));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(static_cast<CDBSubOPTIMIZE*>(made.get())->m_nVersion, 1);

  CProperty_INDICA prop;
  prop.BuildFromDefinition(L"MA", read);
  EXPECT_EQ(prop.m_arrParam[0].strText, L"Period");
  CProperty_VOLUME vol;
  EXPECT_EQ(vol.GetName(), L"\uAC70\uB798\uB7C9");
}

TEST(Umbrella, EditorWindowNamesAreExported) {
  CCrystalTextBuffer buf;
  buf.InitNew();
  CCrystalEditWnd edit;
  ASSERT_TRUE(edit.Create(nullptr, L"", WS_POPUP, CRect(0, 0, 160, 64), nullptr, 1));
  edit.AttachToBuffer(&buf);
  edit.OnChar(L'(', 1, 0);
  edit.OnChar(VK_LEFT, 1, CCrystalEditWnd::CHARFLAG_VIRTKEY);
  EXPECT_EQ(buf.GetLineText(0), L"(");
  EXPECT_EQ(edit.GetCursorPos(), CPoint(0, 0));
  EXPECT_TRUE(edit.Undo());
  EXPECT_EQ(buf.GetLineLength(0), 0);
  edit.SetTimer(1, 3000);
  EXPECT_TRUE(chartcore::GetHeadlessPortFactory().IsTimerRunning(&edit, 1));
  EXPECT_EQ(chartcore::GetHeadlessPortFactory().AdvanceClock(3000), 1);
  edit.DestroyWindow();
  EXPECT_EQ(chartcore::GetHeadlessPort(&edit), nullptr);
}

TEST(Umbrella, PlatformTextNamesAreExported) {
  CString s;
  s.Format(L"%.f|%02s|%ld", 2.5, L"5", static_cast<LONG>(7));  // %ld is 32 bits
  EXPECT_EQ(s, L"3|05|7");
  wchar_t buf[8];
  EXPECT_EQ(chartcore::FormatToBuffer(buf, 8, L"%.2f", 0.125), 4);
  EXPECT_EQ(chartcore::Cp949ToWide("\xC7\xD1", 2), L"\xD55C");
  EXPECT_EQ(chartcore::WideToUtf8(L"\xD55C"), "\xED\x95\x9C");
  EXPECT_EQ(MulDiv(13, 72, 96), 10);
  EXPECT_EQ(chartcore::GetScreenPixelsPerInchY(), 96);
  SYSTEMTIME st = {};
  EXPECT_TRUE(VariantTimeToSystemTime(2.5, &st));
  EXPECT_EQ(st.wDay, 1);  // 1900-01-01 12:00
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"K", 5, L"/nonexistent/x.ini"), 5u);
}

TEST(Umbrella, FoundationDateFormatMarketNamesAreExported) {
  EXPECT_EQ(GetYear(20240115093000.0), 2024);
  EXPECT_EQ(GetCompMinute(20240115093059.0), 930);
  EXPECT_EQ(GetNextYearMonthDay(20241231), 20250101);
  EXPECT_THROW(GetNextCycleTime(235500, 0, 10), CAtlException);
  EXPECT_EQ(GetYPacketStringOfFormat(1234.5, 1, 1), L"1,234.5");
  EXPECT_EQ(GetXPacketTimeString(20240115093000.0, 0), L"09:30:00");
  EXPECT_EQ(GetPriceValueOfFormat(L"101`16", 75), 101.5);
  EXPECT_EQ(IsNightMarket(14, 1, 0), 1);
  EXPECT_EQ(GetMarketCateInfo(1089), L"-[AMEX]");
}

TEST(Umbrella, ScriptEditorNamesAreExported) {
  CScriptEdit edit;
  edit.InitWindow();
  edit.InitBasicFunctionList(L"/nonexistent-workspace", L"", L"", 2);
  EXPECT_EQ(edit.GetIntelliList().GetItemCount(), 88);  // the built-in function words
  edit.OnChar(L's', 1, 0);
  edit.OnChar(L'u', 1, 0);
  EXPECT_TRUE(edit.IsListShown());  // "su" begins "sum"
  EXPECT_EQ(edit.GetIntelliList().GetSelectedText(), CString(L"sum"));
  std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
  edit.OnChar(L'm', 1, 0);
  edit.GetLineBlocks(0, blocks);
  ASSERT_EQ(blocks.size(), 2u);
  EXPECT_EQ(blocks[1].m_nColorIndex, 12);  // a built-in function word
  int pos = 0;
  EXPECT_EQ(edit.GetNextWord(L"sum(", pos), CString(L"sum"));
  CIntelliTip tip;
  ASSERT_TRUE(tip.Create(&edit));
  CStringArray none;
  tip.SetFunction(L"A\nB", none);
  EXPECT_EQ(tip.GetNumParams(), 2);
}

TEST(Umbrella, PacketClassesAreExported) {
  CPacket close;
  for (double c : {101.0, 102.5, 101.75}) close.Add(c);
  double hi = 0, lo = 0;
  EXPECT_EQ(close.GetMaxMinValue(0, 2, hi, lo, 1), 1.5);
  EXPECT_EQ((close + 1.0).GetValue(2), 102.75);
  EXPECT_EQ(close.GetValue(3), chartcore::kPacketEmptyValue);
  CPacketMemory bars;
  bars.SetPacketStructType(PST_OHLCV);
  tagPacketCoreData bar;
  bar.m_dDate = 20240102;
  bar.m_dClose = 104;
  EXPECT_EQ(bars.AddBasic(bar), 1);
  EXPECT_EQ(bars.GetLastBasic().m_dClose, 104);
  EXPECT_EQ(bars.GetPacketIndex(PDT_DATE, 20240101, 1), 0);
}

namespace {
// A host's own serializable class, built against the exported framework.
class CUmbrellaRecord : public CObject {
  DECLARE_SERIAL(CUmbrellaRecord)
 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_text;
    } else {
      ar >> m_text;
    }
  }
  CString m_text;
};
}  // namespace
IMPLEMENT_SERIAL(CUmbrellaRecord, CObject, VERSIONABLE_SCHEMA | 0)

TEST(Umbrella, PlatformObjectArchiveAndFileNamesAreExported) {
  CStringArray names;
  names.Add(L"RSI");
  CUmbrellaRecord record;
  record.m_text = names[0];
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    ar << &record;
    ar.Close();
  }
  EXPECT_EQ(file.GetLength(), 6u + 15u + 10u);  // tag, schema, name length, name, then FF FE FF 03 "RSI"
  file.SeekToBegin();
  CArchive ar(&file, CArchive::load);
  CUmbrellaRecord* back = nullptr;
  ar >> back;
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(back->m_text, L"RSI");
  delete back;
  EXPECT_EQ(CRuntimeClass::FromName("CMemFile"), RUNTIME_CLASS(CMemFile));
  EXPECT_TRUE(chartcore::MatchFileMask(L"x.dat", L"*.*"));
  EXPECT_EQ(GetFileAttributesW(L"/nonexistent-workspace\\x"), INVALID_FILE_ATTRIBUTES);
  CFileException error;
  EXPECT_FALSE(CFile().Open(L"/nonexistent-workspace\\x", CFile::modeRead, &error));
}

TEST(Umbrella, FoundationPathStringColourLogNamesAreExported) {
  EXPECT_EQ(GetPath_Local_Data(L"C:\\Root", L"_u01"), L"C:\\Root\\Local_u01\\Data\\");
  EXPECT_EQ(ChangeVariableFileName(L" a:b ", L"_"), L"a_b");
  CString none;
  EXPECT_EQ(MakeDirectory(none), 0);
  EXPECT_EQ(WildCmp(L"*.bic", L"MACD.bic"), 1);
  wchar_t text[] = L"abc=def";
  wchar_t head[8];
  wchar_t key[] = L"=";
  EXPECT_EQ(CutStringUntilKey(text, head, key), head + 3);
  EXPECT_EQ(MakeUniqueColor(0x0000FF, 1), 0x0A0AF5u);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(50, 4)), ANAL_DIRECT_SHALLOW);
  EXPECT_EQ(GetFontPointFromHeight(-13), 10);
  WriteLog(L"/nonexistent-dir/x.log", L"skipped");  // an unopenable log is skipped silently
}
