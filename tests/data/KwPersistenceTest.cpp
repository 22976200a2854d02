#include "data/KwPersistence.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "app/KwWinApp.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "data/KwConfigData.h"
#include "support/TestSupport.h"

namespace {

using kw::KwPersistence;
using kw::kPersistProject;
using kw::kPersistUser;

std::u16string U(const std::filesystem::path& p) { return kw::FromUtf8(p.string()); }

class TracingApp : public kw::KwWinApp {
 public:
  std::u16string GetAppVersion() const override { return u"1"; }
};

// User and project folders (and the current folder, where a trace file goes) in the temp folder.
class Persistence : public kwtest::PlatformTest {
 protected:
  Persistence() {
    std::filesystem::create_directories(Temp("user"));
    std::filesystem::create_directories(Temp("proj"));
  }
  std::filesystem::path UserIni() const { return Temp("user") / "KwUser.INI"; }
  std::filesystem::path ProjectIni() const { return Temp("proj") / "CONFIG.INI"; }
  // A file the library wrote as new: UTF-8 with its mark, CR LF after every line.
  std::string NewFile(const std::vector<std::string>& lines) const {
    std::string bytes = "\xEF\xBB\xBF";
    for (const auto& line : lines) bytes += line + "\r\n";
    return bytes;
  }

  kwtest::ScopedFolders folders_{Temp("user"), Temp("proj"), dir_};
};

// One variable of every type of the table.
struct AllTypes {
  std::u16string text = u"default";
  char16_t buffer[6] = u"     ";  // its width: five
  int i = 0;
  unsigned int u = 0;
  long l = 0;
  unsigned long ul = 0;
  float f = 0;
  double d = 0;
  long long ll = 0;
  unsigned long long ull = 0;
  bool operator==(const AllTypes&) const = default;

  void Register(KwPersistence& p) {
    EXPECT_EQ(p.LoadINI(u"T", &text) + p.LoadINI(u"B", buffer) + p.LoadINI(u"I", &i) + p.LoadINI(u"U", &u) +
                  p.LoadINI(u"L", &l) + p.LoadINI(u"UL", &ul) + p.LoadINI(u"F", &f) + p.LoadINI(u"D", &d) +
                  p.LoadINI(u"LL", &ll) + p.LoadINI(u"ULL", &ull),
              10);
  }
};

TEST_F(Persistence, TypeTableWrittenAndReadBack) {
  AllTypes out;
  KwPersistence p;
  out.Register(p);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Types"), 0) << "no file: every value keeps its default";
  EXPECT_EQ(out, AllTypes());
  out = {u"a=b; c", u"ABC  ", -7, 4000000000u, LONG_MIN, ULONG_MAX, 0.25f, 0.5, LLONG_MIN, ULLONG_MAX};
  EXPECT_EQ(p.SaveINI(u"Types", kPersistUser), 1);
  EXPECT_EQ(p.GetCount(), 0) << "saving releases the section";
  EXPECT_EQ(ReadBytes(UserIni()),
            NewFile({"[Types]", "T=a=b; c", "B=ABC  ", "I=-7", "U=4000000000", "L=" + std::to_string(LONG_MIN),
                     "UL=" + std::to_string(ULONG_MAX), "F=0.25" + std::string(21, ' '), "D=0.5" + std::string(22, ' '),
                     "LL=-9223372036854775808", "ULL=18446744073709551615"}));
  AllTypes in;
  in.Register(p);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Types"), 1);
  EXPECT_EQ(in, out);
  p.ResetChain();
}

TEST_F(Persistence, MissingFileSectionOrKeyKeepsDefaults) {
  KwPersistence p;
  int a = 1, b = 2;
  p.LoadINI(u"A", &a);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"S"), 0);
  EXPECT_EQ(a, 1);
  p.Release(u"S");
  // Sections match whole and with their case, and end at the next "[" line.
  WriteBytes(UserIni(), "[s]\nA=10\n[S2]\nA=20\n[S]\nA=30\n[Other]\nB=40\n");
  p.LoadINI(u"A", &a);
  p.LoadINI(u"B", &b);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"S"), 0) << "B is not in section S";
  EXPECT_EQ(a, 30);
  EXPECT_EQ(b, 2);
  p.LoadINI(u"A", &b);
  EXPECT_EQ(p.LoadINI(kPersistUser, u" S2 ]"), 1) << "the section name is normalised";
  EXPECT_EQ(b, 20);
  p.ResetChain();
}

TEST_F(Persistence, SecondBindingSharesTheFirstValue) {
  WriteBytes(UserIni(), "[Terms]\nANGLEUNIT=2\n");
  KwPersistence p;
  int first = 0, second = 0;
  std::u16string asText;
  p.LoadINI(u"ANGLEUNIT", &first);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Terms"), 1);
  EXPECT_EQ(first, 2);
  first = 1;
  p.LoadINI(u"ANGLEUNIT", &second);
  p.LoadINI(u"ANGLEUNIT", &asText);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Terms"), 1);
  EXPECT_EQ(second, 1) << "the first variable's value, not the file's";
  EXPECT_EQ(asText, u"1");
  EXPECT_EQ(p.GetCount(), 1) << "only the first binding stays";
  EXPECT_EQ(p.GetPointer(u"Terms", u"ANGLEUNIT"), &first);
  EXPECT_EQ(p.SaveINI(u"Terms", kPersistUser), 1);
  EXPECT_EQ(p.SaveINI(u"Terms", kPersistUser), 0) << "already released";
  EXPECT_EQ(ReadBytes(UserIni()), "[Terms]\nANGLEUNIT=1\n");
}

TEST_F(Persistence, FixedBufferIsCutOrPaddedToItsWidth) {
  WriteBytes(UserIni(), "[Buf]\nLONG=ABCDEF\nSHORT=X\n");
  KwPersistence p;
  char16_t longer[8] = u"ABC", shorter[8] = u"ABC", once[3] = u"..";
  p.LoadINI(u"LONG", longer);
  p.LoadINI(u"SHORT", shorter);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Buf"), 1);
  EXPECT_EQ(std::u16string(longer), u"ABC");
  EXPECT_EQ(std::u16string(shorter), u"X  ");
  EXPECT_EQ(asserts_.count(), 1u) << "only the overflow is a broken contract";
  EXPECT_EQ(p.LoadKey(kPersistUser, u"Buf", u"LONG", once), 1);
  EXPECT_EQ(std::u16string(once), u"AB");
  p.ResetChain();
}

TEST_F(Persistence, UnsignedLongKeyIsKeptAsInt) {
  KwPersistence p;
  unsigned long bound = 4000000000ul, back = 0;
  const unsigned long single = 4000000000ul;
  long long wide = 0;
  p.LoadINI(u"BOUND", &bound);
  p.LoadINI(kPersistUser, u"UL");
  p.SaveINI(u"UL", kPersistUser);
  EXPECT_EQ(p.SaveKey(kPersistUser, u"UL", u"SINGLE", &single), 1);
  EXPECT_EQ(ReadBytes(UserIni()), NewFile({"[UL]", "BOUND=4000000000", "SINGLE=-294967296"}));
  EXPECT_EQ(p.LoadKey(kPersistUser, u"UL", u"SINGLE", &back), 1);
  EXPECT_EQ(back, 4000000000ul) << "the same 32 bits come back";
  EXPECT_EQ(p.LoadKey(kPersistUser, u"UL", u"SINGLE", &wide), 1);
  EXPECT_EQ(wide, -294967296);
  EXPECT_EQ(p.LoadKey(kPersistUser, u"UL", u"NONE", &wide), 0);
  EXPECT_EQ(wide, -294967296) << "a missing key leaves the variable alone";
}

TEST_F(Persistence, SectionsGoToTheirFile) {
  KwPersistence p;
  EXPECT_EQ(p.GetUserFile(), U(UserIni()));
  EXPECT_EQ(p.GetProjectFile(), U(ProjectIni()));
  int calc = 3;
  p.LoadINI(u"MODE", &calc);
  p.LoadINI(kPersistProject, u"ColumnCalc");
  EXPECT_EQ(p.SaveINI(u"ColumnCalc", kPersistProject), 1);
  EXPECT_EQ(ReadBytes(ProjectIni()), NewFile({"[ColumnCalc]", "MODE=3"}));
  EXPECT_FALSE(std::filesystem::exists(UserIni()));
  // The scope of another file is a broken contract: nothing is bound.
  p.LoadINI(u"MODE", &calc);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"ColumnCalc"), 0);
  EXPECT_EQ(p.GetCount(), 0);
  EXPECT_EQ(asserts_.count(), 1u);
}

// In the ANSI code page with LF line ends, comments, blank lines and no final line end.
const std::string kHandWritten =
    "! settings\n[First]\nK=1\nUmlaut=\xE4\xF6\xFC\n\n"
    "[Edit]\n!comment inside\nWIDTH=80\nOLD=keep\n\n"
    "[Last]\nZ=\x81\x8D end";

TEST_F(Persistence, SavingChangesOnlyItsOwnLines) {
  WriteBytes(UserIni(), kHandWritten);
  KwPersistence p;
  int width = 0, z = 9;
  std::u16string added = u"neu \u00E4";
  p.LoadINI(u"WIDTH", &width);
  p.LoadINI(u"ADDED", &added);
  EXPECT_EQ(p.LoadINI(kPersistUser, u"Edit"), 0);
  EXPECT_EQ(width, 80);
  width = 132;
  EXPECT_EQ(p.SaveINI(u"Edit", kPersistUser), 1);
  std::string expected = kHandWritten;
  expected.replace(expected.find("WIDTH=80"), 8, "WIDTH=132");
  expected.insert(expected.find("OLD=keep\n") + 9, "ADDED=neu \xE4\n");
  EXPECT_EQ(ReadBytes(UserIni()), expected);
  // A new section goes at the end, after a line end for the last line.
  p.LoadINI(u"Z", &z);
  p.LoadINI(kPersistUser, u"New");
  EXPECT_EQ(p.SaveINI(u"New", kPersistUser), 1);
  EXPECT_EQ(ReadBytes(UserIni()), expected + "\n[New]\nZ=9\n");
}

TEST_F(Persistence, SavingKeepsEncodingAndLineEnds) {
  std::string bytes = "\xFF\xFE";  // UTF-16 little-endian with CR LF
  for (char16_t c : std::u16string(u"[A]\r\nX=1\r\n[B]\r\nY=\u20AC\r\n"))
    bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
  WriteBytes(UserIni(), bytes);
  KwPersistence p;
  int x = 2;
  EXPECT_EQ(p.SaveKey(kPersistUser, u"A", u"X", &x), 1);
  bytes[2 + 2 * 7] = '2';  // the digit of "X=1"
  EXPECT_EQ(ReadBytes(UserIni()), bytes);
}

TEST_F(Persistence, UnchangedOrProtectedFileIsNotRewritten) {
  WriteBytes(UserIni(), kHandWritten);
  ASSERT_TRUE(kw::SetReadOnly(U(UserIni())));
  KwPersistence p;
  int width = 80;
  EXPECT_EQ(p.SaveKey(kPersistUser, u"Edit", u"WIDTH", &width), 1) << "nothing changed, nothing to write";
  width = 1;
  EXPECT_EQ(p.SaveKey(kPersistUser, u"Edit", u"WIDTH", &width), 0);
  EXPECT_EQ(ReadBytes(UserIni()), kHandWritten);
  kw::SetReadOnly(U(UserIni()), false);
  EXPECT_EQ(std::filesystem::directory_iterator(Temp("user"))->path(), UserIni()) << "no temporary file is left";
}

TEST_F(Persistence, WholeSectionsAsLines) {
  WriteBytes(UserIni(), kHandWritten);
  KwPersistence p;
  kw::StringArray lines;
  EXPECT_EQ(p.LoadData(u"Edit", lines), 2);
  EXPECT_EQ(lines, (kw::StringArray{u"WIDTH=80", u"OLD=keep"})) << "comments are not entries";
  EXPECT_EQ(p.LoadData(u"None", lines), 0);
  EXPECT_EQ(p.SaveData(u"Edit", {u"A=1", u"B=2", u"C=3"}), 1);
  std::string expected = kHandWritten;
  expected.replace(expected.find("!comment inside\nWIDTH=80\nOLD=keep"), 33, "A=1\nB=2\nC=3");
  EXPECT_EQ(ReadBytes(UserIni()), expected);
  EXPECT_EQ(p.SaveData(u"First", {}), 1);
  expected.erase(expected.find("[First]"), expected.find("\n[Edit]") - expected.find("[First]"));
  EXPECT_EQ(ReadBytes(UserIni()), expected) << "an empty list removes the section";
  EXPECT_EQ(p.SaveData(u"Added", {u"Q=1", u"[X]", u"R=a\nb"}), 1);
  EXPECT_EQ(ReadBytes(UserIni()), expected + "\n[Added]\nQ=1\nR=a b\n") << "each line stays one entry";
}

TEST_F(Persistence, CollectionIsSplitIntoMembers) {
  WriteBytes(UserIni(), "[Recent]\nCOUNT=2\nF1=alpha\nF2=beta\n");
  std::unique_ptr<kw::KwConfigData> store = KwPersistence().CreateCollection(u"Recent");
  EXPECT_NE(store->GetCfgSection(u"alpha"), nullptr);
  EXPECT_NE(store->GetCfgSection(u"beta"), nullptr);
  EXPECT_EQ(store->GetCfgSection(u"Recent"), nullptr);
}

TEST_F(Persistence, ChainSpotsAndListings) {
  KwPersistence p(3);
  int a = 0, b = 0, c = 0, d = 0;
  EXPECT_EQ(p.LoadINI(u"A", &a) + p.LoadINI(u"B", &b), 2);
  EXPECT_EQ(p.GetPointer(u"S", u"A"), nullptr) << "not bound yet";
  p.LoadINI(kPersistUser, u"S");
  EXPECT_EQ(p.LoadINI(u"C", &c), 1);
  EXPECT_EQ(p.LoadINI(u"D", &d), 0) << "the chain is full";
  p.LoadINI(kPersistUser, u"T");
  EXPECT_EQ(p.GetPointer(u"S", u"B"), &b);
  EXPECT_EQ(p.GetPointer(u"T", u"A"), nullptr);
  EXPECT_EQ(p.Release(u"S"), 2);
  EXPECT_EQ(p.LoadINI(u"D", &d), 1) << "released spots are used again";
  p.LoadINI(kPersistUser, u"U");
  EXPECT_EQ(p.GetElement(u"U", u"D")->Scope, kPersistUser);
  EXPECT_EQ(p.Table(u"now").find(u"================== Persistence-Table with a maximum of 3 elements - now\n"
                                 u"Element  pSpot   pNext   Scope Section  IDname Type Pointer\n====="),
            0u);
  EXPECT_NE(p.ShowSections().find(u"Section=T Scope=1 Elements=1"), std::u16string::npos);
  EXPECT_EQ(platform_.debugOutput.size(), 2u);
  EXPECT_EQ(p.ResetChain(), 2);
}

TEST_F(Persistence, TraceLines) {
  TracingApp app;
  app.StartInitalTrace();
  ASSERT_TRUE(app.GetTraceMode());
  WriteBytes(UserIni(), "[Buf]\nB=ABCDEF\n");
  {
    KwPersistence p;
    char16_t buffer[4] = u"ABC";
    p.LoadINI(u"B", buffer);
    p.GetPointer(u"Buf", u"B");
    EXPECT_TRUE(Traced(u"Persist.GetPointer: WARNING! Only constant Scope in Section Buf allowed"));
    p.LoadINI(kPersistUser, u"Buf");
    EXPECT_TRUE(Traced(u"Persist.LoadINI: Section=Buf IDname=B"));
    EXPECT_TRUE(Traced(u"Persist.StringToValue: WARNING! Buffer-Overflow OldLen=3 NewLen=6"));
    p.GetPointer(u"Buf", u"X");
    EXPECT_TRUE(Traced(u"Persist.GetPointer: WARNING! Pointer of Section=Buf IDname=X not found"));
    p.GetElement(u"Buf", u"Y");
    EXPECT_TRUE(Traced(u"Persist.GetElement: List Element section=Buf Key=Y not found"));
    p.SaveINI(u"Buf", kPersistUser);
    EXPECT_FALSE(Traced(u"Persist.SaveINI: WARNING! Section Buf was already released earlier!"));
    p.SaveINI(u"Buf", kPersistUser);
    EXPECT_TRUE(Traced(u"Persist.SaveINI: WARNING! Section Buf was already released earlier!"));
    p.LoadINI(u"K", buffer);
    p.LoadINI(kPersistUser, u"Left");
  }
  EXPECT_TRUE(Traced(u"Persis.Destructor: Element Section=Left IDname=K was still allocated"));
  // The settings store traces its files.
  const std::u16string local = U(Temp("l.ini"));
  kw::KwConfigData store;
  const std::u16string names[4] = {u"", local, local, local};  // one file named three times
  WriteBytes(Temp("l.ini"), "[A]\nX=1\n");
  store.Load(names);
  EXPECT_TRUE(Traced(u"Data.CheckFileNames: i=1 j=2 Filename=" + local));
  EXPECT_TRUE(Traced(u"Persist.Load: Scopes=31"));
  EXPECT_TRUE(Traced(u"KwData.Load(): From file " + local));
  EXPECT_TRUE(Traced(u"Persist.Load: Finished"));
  store.SetModified();
  store.SaveData();
  EXPECT_TRUE(Traced(u"Data.SaveData: i=3 file=" + local));
  app.SetTraceMode();  // off
  const size_t before = platform_.debugOutput.size();
  KwPersistence().GetPointer(u"Buf", u"X");
  EXPECT_EQ(platform_.debugOutput.size(), before) << "nothing is traced while tracing is off";
}

}  // namespace
