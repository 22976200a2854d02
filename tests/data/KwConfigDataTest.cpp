#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "data/KwConfigData.h"
#include "data/ScopeFiles.h"

namespace {

using kw::KwCfgSection;
using kw::KwConfigData;

class ConfigData : public kwtest::ScopeFilesTest {
 protected:
  // The lines of a section, joined by "\n".
  static std::string Lines(const KwCfgSection* section) {
    if (section == nullptr) return "<none>";
    std::string out;
    for (int64_t i = 0; i < section->GetLineCount(); ++i)
      out += (i ? "\n" : "") + kw::ToUtf8(section->GetLineText(i));
    return out;
  }
};

TEST(CfgSection, KeysAndLines) {
  for (const auto& [line, key] : {std::pair<const char16_t*, const char16_t*>{u"KEY=value=x", u"KEY"},
                                   {u"=value", u""}, {u"no equals", u""}, {u"A=", u"A"}})
    EXPECT_EQ(KwCfgSection::ExtractKey(line), key);

  KwCfgSection s(u"S", -1);
  int dup = -1;
  EXPECT_EQ(s.AddLine(u"X=1", &dup), 1);
  EXPECT_EQ(dup, 0);
  EXPECT_EQ(s.AddLine(u"X=2", &dup), 1);
  EXPECT_EQ(dup, 1);
  s.AddLine(u"plain line");
  s.AddLine(u"another plain", &dup);  // also the empty key
  EXPECT_EQ(dup, 1);
  EXPECT_EQ(s.GetLineCount(), 2);
  std::u16string v;
  EXPECT_EQ(s.GetValue(u"X", v), 1);
  EXPECT_EQ(v, u"1");
  s.SetLine(u"X=3");
  s.SetLine(u"Y=4");
  EXPECT_EQ(s.GetLineText(0), u"X=3");
  EXPECT_EQ(s.GetLineText(2), u"Y=4");
  EXPECT_EQ(s.GetValue(u"Z", v), 0);
}

TEST(CfgSection, SearchIgnoresCaseAndContinuesFromPosition) {
  KwCfgSection s(u"S", -1);
  s.AddLine(u"A=alpha beta");
  s.AddLine(u"B=BETA");
  int64_t line = 0, pos = 0;
  ASSERT_EQ(s.Search(u"Beta", line, pos), 1);
  EXPECT_EQ(line, 0);
  EXPECT_EQ(pos, 8);
  pos += 1;
  ASSERT_EQ(s.Search(u"beta", line, pos), 1);
  EXPECT_EQ(line, 1);
  EXPECT_EQ(pos, 2);
  pos += 1;
  EXPECT_EQ(s.Search(u"beta", line, pos), 0);
  EXPECT_EQ(line, 1);
  EXPECT_EQ(pos, 3);
}

TEST_F(ConfigData, SyntaxRules) {
  WriteBytes(Temp("g.ini"),
             "junk before any section\r\n"
             "[]\r\n"
             "[A]\r\n"
             "X=1\r\n"
             "!comment=1\r\n"
             "Q\r\n"
             "\r\n"
             "X=2\r\n"
             "first plain\r\n"
             "second plain\r\n"
             "[broken\r\n"
             "Y=after broken header\r\n"
             "[OnlyComments]\r\n"
             "! nothing here\r\n"
             "[B]x]\r\n"
             "K=v\r\n");
  KwConfigData store;
  std::vector<kw::KwCfgDropped> dropped;
  store.SetDropLog(&dropped);
  Load(store);
  EXPECT_EQ(Lines(store.GetCfgSection(u"A")), "X=1\nfirst plain\nY=after broken header");
  EXPECT_EQ(store.GetCfgSection(u"OnlyComments"), nullptr);
  EXPECT_EQ(store.GetCfgSection(u""), nullptr);
  EXPECT_EQ(Lines(store.GetCfgSection(u"B")), "K=v");  // the name ends at the first "]"
  EXPECT_EQ(store.GetCount(), 2);
  EXPECT_EQ(store.GetLoadCounter(), 2);  // X=2 and "second plain"
  int reasons[8] = {};
  for (const auto& d : dropped) ++reasons[d.reason];
  EXPECT_EQ(reasons[kw::KwCfgDropped::BeforeSection], 1);
  EXPECT_EQ(reasons[kw::KwCfgDropped::DuplicateKey], 2);
  EXPECT_EQ(reasons[kw::KwCfgDropped::BadHeader], 2);  // "[]" and "[broken"
  EXPECT_EQ(reasons[kw::KwCfgDropped::EmptySection], 1);
  EXPECT_GE(reasons[kw::KwCfgDropped::Comment], 2);

  // Comments, short lines and dropped lines do not come back.
  ASSERT_EQ(store.Save(), 1);
  EXPECT_EQ(ReadBytes(Temp("g.ini")),
            "\xEF\xBB\xBF[A]\r\nX=1\r\nfirst plain\r\nY=after broken header\r\n[B]\r\nK=v\r\n");
}

TEST_F(ConfigData, KnownSectionsAreWrittenFirstInListOrder) {
  ASSERT_GE(KwConfigData::GetIniProjIndex(u"Units"), 0);
  ASSERT_LT(KwConfigData::GetIniProjIndex(u"Project"), KwConfigData::GetIniProjIndex(u"Units"));
  EXPECT_EQ(KwConfigData::GetIniProjIndex(u"Unit"), -1);  // whole entries only
  EXPECT_EQ(KwConfigData::GetIniProjIndex(u"FindDlg"), -1);
  EXPECT_EQ(KwConfigData::GetIniProjIndex(u"Terms"), -1);
  EXPECT_EQ(KwConfigData::GetIniProjIndex(u""), -1);

  WriteBytes(Temp("l.ini"), "[Zeta]\nA=1\n[Units]\nB=2\n[Alpha]\nC=3\n[Project]\nD=4\n");
  KwConfigData store;
  Load(store);
  store.SetModified(1);
  ASSERT_EQ(store.Save(), 1);
  EXPECT_EQ(ReadBytes(Temp("l.ini")),
            "\xEF\xBB\xBF[Project]\r\nD=4\r\n[Units]\r\nB=2\r\n[Alpha]\r\nC=3\r\n[Zeta]\r\nA=1\r\n");
}

// Duplicates stay in the file until it is saved, unless the store keeps a collection: then the file is
// rewritten at load (and a second load finds none).
TEST_F(ConfigData, DuplicateKeysAreRewrittenAtLoadOnlyWithACollection) {
  const std::string text = "[S]\r\nX=1\r\nX=2\r\n[Recent]\r\nCOUNT=2\r\nF1=one\r\nF2=two\r\n";
  for (const bool collection : {false, true}) {
    WriteBytes(Temp("g.ini"), text);
    KwConfigData store(collection ? u"Recent" : nullptr);
    Load(store);
    EXPECT_EQ(Lines(store.GetCfgSection(u"S")), "X=1");
    EXPECT_EQ(store.GetLoadCounter(), collection ? 0 : 1);
    const std::string file = ReadBytes(Temp("g.ini"));
    EXPECT_EQ(file == text, !collection);
    EXPECT_EQ(file.find("X=2") == std::string::npos, collection);
    EXPECT_NE(file.find("[Recent]\r\nCOUNT=2\r\n"), std::string::npos);
    EXPECT_EQ(store.GetModified(), 0);
  }
}

TEST_F(ConfigData, CollectionsRoundTrip) {
  const std::string text =
      "\xEF\xBB\xBF[Other]\r\nA=1\r\n[Recent]\r\nCOUNT=3\r\nFile1=c:\\b.txt\r\nFile2=a.txt\r\nFile3= spaced \r\n"
      "File4=\r\n";
  WriteBytes(Temp("l.ini"), text);
  KwConfigData store(u"Recent");
  Load(store);
  EXPECT_EQ(store.GetCfgSection(u"Recent"), nullptr);
  EXPECT_EQ(store.GetCollectionPrefix(), u"File");
  const KwCfgSection* member = store.GetCfgSection(u"a.txt");
  ASSERT_NE(member, nullptr);
  EXPECT_EQ(member->GetIndex(), KwCfgSection::kMemberIndex);
  EXPECT_EQ(Lines(member), "a.txt");
  EXPECT_NE(store.GetCfgSection(u" spaced "), nullptr);  // kept as written
  EXPECT_EQ(store.GetCount(), 4);                        // "File4=" has no text and yields nothing
  EXPECT_EQ(store.QueryNewDataSet(u"Recent", 3), 0);     // the collection's name is reserved
  EXPECT_NE(platform_.boxes.back().text.find(u"is reserved"), std::u16string::npos);

  // A member added by the application joins the collection on save; members are numbered in order.
  auto* added = new KwCfgSection(u"new.txt", KwCfgSection::kMemberIndex);
  added->AddLine(u"new.txt");
  ASSERT_NE(store.AddDataSet(u"new.txt", 3, added, 0), nullptr);
  ASSERT_EQ(store.Save(), 1);
  EXPECT_EQ(ReadBytes(Temp("l.ini")),
            "\xEF\xBB\xBF[Other]\r\nA=1\r\n[Recent]\r\nCOUNT=4\r\nFile1= spaced \r\nFile2=a.txt\r\n"
            "File3=c:\\b.txt\r\nFile4=new.txt\r\n");
  EXPECT_NE(store.GetCfgSection(u"new.txt"), nullptr);  // split again after saving
  EXPECT_EQ(store.GetCfgSection(u"Recent"), nullptr);

  KwConfigData again(u"Recent");
  Load(again);
  EXPECT_EQ(again.GetCount(), 5);
  EXPECT_EQ(again.IsEqual(store), 1);
}

TEST_F(ConfigData, BadInputLoadsWhatIsValidAndLosesNoSection) {
  std::string text = "\x01\x02\xFF\xFE garbage\r\n[Bin]\r\nK=\x80\x81\xC3\r\n";
  text += "[Long]\r\nL=" + std::string(100000, 'x') + "\r\n";
  for (int i = 0; i < 3000; ++i) text += "[S" + std::to_string(i) + "]\nV=" + std::to_string(i) + "\n";
  text += "[Last]\r\nEnd=1";  // no line end at the end
  WriteBytes(Temp("g.ini"), text);
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.GetCount(), 3003);
  ASSERT_NE(store.GetCfgSection(u"Long"), nullptr);
  EXPECT_EQ(store.GetCfgSection(u"Long")->GetLineText(0).size(), 100002u);
  EXPECT_EQ(Lines(store.GetCfgSection(u"Last")), "End=1");
  store.SetModified(1);
  ASSERT_EQ(store.Save(), 1);
  KwConfigData again;
  Load(again);
  EXPECT_EQ(again.GetCount(), 3003);
  EXPECT_EQ(again.IsEqual(store), 1);
}

TEST_F(ConfigData, RenameKeepsTheSectionNameInStep) {
  WriteBytes(Temp("g.ini"), "[Old]\nA=1\n[Taken]\nB=2\n");
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.RenameDataSet(u"Old", 1, u"Taken"), nullptr);
  EXPECT_NE(platform_.boxes.back().text.find(u"-Taken- already exists at the location -Global-"), std::u16string::npos);
  ASSERT_NE(store.RenameDataSet(u"Old", 1, u"New"), nullptr);
  EXPECT_EQ(store.GetCfgSection(u"New")->GetName(), u"New");
  EXPECT_EQ(store.GetCfgSection(u"Old"), nullptr);
  ASSERT_EQ(store.Save(), 1);
  EXPECT_NE(ReadBytes(Temp("g.ini")).find("[New]\r\nA=1"), std::string::npos);
}

// The same settings in each of the five encodings (UTF-8 with and without its byte-order mark).
TEST_F(ConfigData, EveryEncodingLoadsAndIsWrittenBackAsUtf8) {
  const std::u16string text = u"[Maße]\r\nStraße=Größe\r\nX=1\r\n";
  auto utf16 = [&](bool big) {
    std::string out = big ? "\xFE\xFF" : "\xFF\xFE";
    for (char16_t c : text) {
      const char hi = static_cast<char>(c >> 8), lo = static_cast<char>(c & 0xFF);
      out += big ? std::string{hi, lo} : std::string{lo, hi};
    }
    return out;
  };
  std::string ansi;
  for (char16_t c : text) ansi += static_cast<char>(c);  // Latin-1 range: the same bytes in 1252
  const std::string variants[] = {ansi, "\xEF\xBB\xBF" + kw::ToUtf8(text), kw::ToUtf8(text), utf16(false),
                                  utf16(true)};
  for (const std::string& bytes : variants) {
    WriteBytes(Temp("g.ini"), bytes);
    KwConfigData store;
    Load(store);
    const KwCfgSection* section = store.GetCfgSection(u"Maße");
    ASSERT_NE(section, nullptr) << bytes;
    EXPECT_EQ(section->GetLineText(0), u"Straße=Größe");
    store.SetModified(1);
    ASSERT_EQ(store.Save(), 1);
    EXPECT_EQ(ReadBytes(Temp("g.ini")), "\xEF\xBB\xBF" + kw::ToUtf8(text));
  }
  // Code page 437 is never guessed: its umlauts come out as other characters, but nothing is lost.
  WriteBytes(Temp("g.ini"), "[OEM]\r\nK=Gr\x94\xe1" "e\r\n[Next]\r\nA=1\r\n");
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.GetCount(), 2);
  ASSERT_NE(store.GetCfgSection(u"OEM"), nullptr);
  EXPECT_EQ(store.GetCfgSection(u"OEM")->GetLineText(0).size(), 7u);
}

TEST_F(ConfigData, SectionNamesCountCaseUnlessTheStoreIgnoresIt) {
  WriteBytes(Temp("g.ini"), "[Units]\nA=1\n[UNITS]\nB=2\n[Straße]\nC=3\n[Strasse]\nD=4\n");
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.GetCount(), 4);
  EXPECT_EQ(store.GetCfgSection(u"units"), nullptr);
  EXPECT_EQ(store.GetCfgSection(u"Strasse")->GetLineText(0), u"D=4");

  KwConfigData blind;
  blind.SetIgnoreCase(1);
  Load(blind);
  EXPECT_EQ(blind.GetCount(), 3);  // the second of two names that differ in case only is dropped
  ASSERT_NE(blind.GetCfgSection(u"units"), nullptr);
  EXPECT_EQ(blind.GetCfgSection(u"units")->GetLineText(0), u"A=1");
}

}  // namespace
