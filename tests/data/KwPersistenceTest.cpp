#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "app/KwWinApp.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/KwFolders.h"
#include "data/KwConfigData.h"
#include "data/KwPersistence.h"
#include "support/TestSupport.h"

namespace {

using kw::KwPersistence;

std::u16string U(const std::string& s) { return kw::FromUtf8(s); }

// Points the user and project folders at two folders of the test's temp folder.
class Persistence : public kwtest::PlatformTest {
 protected:
  Persistence() : saved_(kw::GetFolders()) {
    kw::GetFolders().SetUserFolder(U(Temp("user").string()));
    kw::GetFolders().SetProjectFolder(U(Temp("proj").string()));
    std::filesystem::create_directories(Temp("user"));
    std::filesystem::create_directories(Temp("proj"));
  }
  ~Persistence() override { kw::GetFolders() = saved_; }

  std::filesystem::path UserIni() const { return Temp("user") / "KwUser.INI"; }
  std::filesystem::path ProjectIni() const { return Temp("proj") / "CONFIG.INI"; }
  // The lines of a file written by the library as new (UTF-8 with its mark, CR LF).
  static std::vector<std::string> NewFileLines(const std::filesystem::path& path) {
    std::string bytes = ReadBytes(path);
    EXPECT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF");
    bytes.erase(0, 3);
    std::vector<std::string> lines;
    for (size_t start = 0; start < bytes.size();) {
      const size_t end = bytes.find("\r\n", start);
      EXPECT_NE(end, std::string::npos) << "every line ends with CR LF";
      if (end == std::string::npos) break;
      lines.push_back(bytes.substr(start, end - start));
      start = end + 2;
    }
    return lines;
  }

  kw::KwFolders saved_;
};

// Every variable type of the table, for one section.
struct AllTypes {
  std::u16string text = u"default";
  char16_t buffer[6] = u"     ";  // five blanks: the buffer's width
  int i = 0;
  unsigned int u = 0;
  long l = 0;
  unsigned long ul = 0;
  float f = 0;
  double d = 0;
  long long ll = 0;
  unsigned long long ull = 0;

  void Register(KwPersistence& p) {
    p.LoadINI(u"T", &text);
    p.LoadINI(u"B", buffer);
    p.LoadINI(u"I", &i);
    p.LoadINI(u"U", &u);
    p.LoadINI(u"L", &l);
    p.LoadINI(u"UL", &ul);
    p.LoadINI(u"F", &f);
    p.LoadINI(u"D", &d);
    p.LoadINI(u"LL", &ll);
    p.LoadINI(u"ULL", &ull);
  }
};

TEST_F(Persistence, EveryTypeIsWrittenInItsFormAndReadBack) {
  AllTypes out;
  {
    KwPersistence p;
    out.Register(p);
    EXPECT_EQ(p.GetCount(), 10);
    EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Types"), 0) << "no file: every value keeps its default";
    EXPECT_EQ(out.text, u"default");
    out.text = u"a=b; c";
    std::copy_n(u"ABC  ", 5, out.buffer);
    out.i = -7;
    out.u = 4000000000u;
    out.l = LONG_MIN;
    out.ul = ULONG_MAX;
    out.f = 0.25f;
    out.d = 0.5;
    out.ll = LLONG_MIN;
    out.ull = ULLONG_MAX;
    EXPECT_EQ(p.SaveINI(u"Types", kw::kPersistUser), 1);
    EXPECT_EQ(p.GetCount(), 0) << "saving releases the section";
  }
  const std::vector<std::string> expected = {
      "[Types]",
      "T=a=b; c",
      "B=ABC  ",
      "I=-7",
      "U=4000000000",
      "L=" + std::to_string(LONG_MIN),
      "UL=" + std::to_string(ULONG_MAX),
      "F=0.25" + std::string(21, ' '),
      "D=0.5" + std::string(22, ' '),
      "LL=-9223372036854775808",
      "ULL=18446744073709551615",
  };
  EXPECT_EQ(NewFileLines(UserIni()), expected);

  AllTypes in;
  KwPersistence p;
  in.Register(p);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Types"), 1);
  EXPECT_EQ(in.text, out.text);
  EXPECT_EQ(std::u16string(in.buffer), u"ABC  ");
  EXPECT_EQ(in.i, out.i);
  EXPECT_EQ(in.u, out.u);
  EXPECT_EQ(in.l, out.l);
  EXPECT_EQ(in.ul, out.ul);
  EXPECT_EQ(in.f, out.f);
  EXPECT_EQ(in.d, out.d);
  EXPECT_EQ(in.ll, out.ll);
  EXPECT_EQ(in.ull, out.ull);
  p.ResetChain();
}

TEST_F(Persistence, NumbersWrittenByHandAreRead) {
  WriteBytes(UserIni(), "[N]\r\nD=1.5E3\r\nF=-0.1\r\nI=  42  \r\nE=\r\n");
  KwPersistence p;
  double d = 0;
  float f = 0;
  int i = 0, e = 5;
  p.LoadINI(u"D", &d);
  p.LoadINI(u"F", &f);
  p.LoadINI(u"I", &i);
  p.LoadINI(u"E", &e);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"N"), 1);
  EXPECT_DOUBLE_EQ(d, 1500.0);
  EXPECT_FLOAT_EQ(f, -0.1f);
  EXPECT_EQ(i, 42);
  EXPECT_EQ(e, 0) << "an empty value is read like any other";
  p.ResetChain();
}

TEST_F(Persistence, MissingFileSectionOrKeyKeepsDefaults) {
  int a = 1, b = 2;
  {
    KwPersistence p;
    p.LoadINI(u"A", &a);
    EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"S"), 0);
    EXPECT_EQ(a, 1);
    p.ResetChain();
  }
  // The section name must match whole and with its case; the section ends at the next "[" line.
  WriteBytes(UserIni(), "[s]\nA=10\n[S2]\nA=20\n[S]\nA=30\n[Other]\nB=40\n");
  {
    KwPersistence p;
    p.LoadINI(u"A", &a);
    p.LoadINI(u"B", &b);
    EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"S"), 0) << "B is not in section S";
    EXPECT_EQ(a, 30);
    EXPECT_EQ(b, 2);
    p.ResetChain();
  }
  {
    KwPersistence p;
    p.LoadINI(u"A", &a);
    EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"  S2 "), 1) << "the section name is normalised";
    EXPECT_EQ(a, 20);
    p.ResetChain();
  }
}

TEST_F(Persistence, SecondBindingSharesTheFirstValue) {
  WriteBytes(UserIni(), "[Terms]\nANGLEUNIT=2\n");
  KwPersistence p;
  int first = 0;
  p.LoadINI(u"ANGLEUNIT", &first);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Terms"), 1);
  EXPECT_EQ(first, 2);
  first = 1;  // changed since it was read

  int second = 0;
  std::u16string asText;
  p.LoadINI(u"ANGLEUNIT", &second);
  p.LoadINI(u"ANGLEUNIT", &asText);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Terms"), 1);
  EXPECT_EQ(second, 1) << "the first variable's value, not the file's";
  EXPECT_EQ(asText, u"1");
  EXPECT_EQ(p.GetCount(), 1) << "only the first binding stays in the chain";
  EXPECT_EQ(p.GetPointer(u"Terms", u"ANGLEUNIT"), &first);

  EXPECT_EQ(p.SaveINI(u"Terms", kw::kPersistUser), 1);
  EXPECT_EQ(p.SaveINI(u"Terms", kw::kPersistUser), 0) << "a second save finds the section released";
  EXPECT_NE(ReadBytes(UserIni()).find("ANGLEUNIT=1\n"), std::string::npos);
}

TEST_F(Persistence, FixedBufferIsCutOrPaddedToItsWidth) {
  WriteBytes(UserIni(), "[Buf]\nLONG=ABCDEF\nSHORT=X\n");
  KwPersistence p;
  char16_t longer[8] = u"ABC";
  char16_t shorter[8] = u"ABC";
  p.LoadINI(u"LONG", longer);
  p.LoadINI(u"SHORT", shorter);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Buf"), 1);
  EXPECT_EQ(std::u16string(longer), u"ABC");
  EXPECT_EQ(std::u16string(shorter), u"X  ");
  EXPECT_EQ(longer[4], 0) << "nothing is written beyond the width";
  EXPECT_EQ(asserts_.count(), 1u) << "only the overflow is a broken contract";

  char16_t once[3] = u"..";
  EXPECT_EQ(p.LoadKey(kw::kPersistUser, u"Buf", u"LONG", once), 1);
  EXPECT_EQ(std::u16string(once), u"AB");
  p.ResetChain();
}

TEST_F(Persistence, UnsignedLongKeyIsKeptAsInt) {
  KwPersistence p;
  unsigned long bound = 4000000000ul;
  p.LoadINI(u"BOUND", &bound);
  p.LoadINI(kw::kPersistUser, u"UL");
  p.SaveINI(u"UL", kw::kPersistUser);
  const unsigned long single = 4000000000ul;
  EXPECT_EQ(p.SaveKey(kw::kPersistUser, u"UL", u"SINGLE", &single), 1);
  const std::vector<std::string> expected = {"[UL]", "BOUND=4000000000", "SINGLE=-294967296"};
  EXPECT_EQ(NewFileLines(UserIni()), expected);

  unsigned long back = 0;
  EXPECT_EQ(p.LoadKey(kw::kPersistUser, u"UL", u"SINGLE", &back), 1);
  EXPECT_EQ(back, 4000000000ul) << "the same 32 bits come back";
  EXPECT_EQ(p.LoadKey(kw::kPersistUser, u"UL", u"BOUND", &back), 1);
  EXPECT_EQ(back, 4000000000ul);
  long long wide = 0;
  EXPECT_EQ(p.LoadKey(kw::kPersistUser, u"UL", u"SINGLE", &wide), 1);
  EXPECT_EQ(wide, -294967296);
  EXPECT_EQ(p.LoadKey(kw::kPersistUser, u"UL", u"NONE", &wide), 0);
  EXPECT_EQ(wide, -294967296) << "a missing key leaves the variable alone";
}

TEST_F(Persistence, SectionsGoToTheirFile) {
  KwPersistence p;
  EXPECT_EQ(p.GetUserFile(), U(UserIni().string()));
  EXPECT_EQ(p.GetProjectFile(), U(ProjectIni().string()));
  EXPECT_TRUE(KwPersistence::IsIniProj(u"ColumnCalc"));
  EXPECT_FALSE(KwPersistence::IsIniProj(u"Terms"));
  EXPECT_FALSE(KwPersistence::IsIniProj(u"Column"));

  int calc = 3;
  p.LoadINI(u"MODE", &calc);
  p.LoadINI(kw::kPersistProject, u"ColumnCalc");
  EXPECT_EQ(p.SaveINI(u"ColumnCalc", kw::kPersistProject), 1);
  EXPECT_NE(ReadBytes(ProjectIni()).find("[ColumnCalc]\r\nMODE=3\r\n"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(UserIni()));

  // A scope that is not the section's file is a broken contract: nothing is bound.
  p.LoadINI(u"MODE", &calc);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"ColumnCalc"), 0);
  EXPECT_EQ(p.GetCount(), 0);
  EXPECT_EQ(asserts_.count(), 1u);
}

// A file in the ANSI code page with LF line ends, comments, blank lines and no final line end.
const std::string kHandWritten =
    "! settings\n"
    "[First]\n"
    "K=1\n"
    "Umlaut=\xE4\xF6\xFC\n"
    "\n"
    "[Edit]\n"
    "!comment inside\n"
    "WIDTH=80\n"
    "OLD=keep\n"
    "\n"
    "[Last]\n"
    "Z=\x81\x8D end";

TEST_F(Persistence, SavingChangesOnlyItsOwnLines) {
  WriteBytes(UserIni(), kHandWritten);
  KwPersistence p;
  int width = 0;
  std::u16string added = u"neu \u00E4";
  p.LoadINI(u"WIDTH", &width);
  p.LoadINI(u"ADDED", &added);
  EXPECT_EQ(p.LoadINI(kw::kPersistUser, u"Edit"), 0);
  EXPECT_EQ(width, 80);
  width = 132;
  EXPECT_EQ(p.SaveINI(u"Edit", kw::kPersistUser), 1);
  std::string expected = kHandWritten;
  expected.replace(expected.find("WIDTH=80"), 8, "WIDTH=132");
  expected.insert(expected.find("OLD=keep\n") + 9, "ADDED=neu \xE4\n");
  EXPECT_EQ(ReadBytes(UserIni()), expected);

  // A new section goes at the end, after a line end for the last line.
  int z = 9;
  p.LoadINI(u"Z", &z);
  p.LoadINI(kw::kPersistUser, u"New");
  EXPECT_EQ(p.SaveINI(u"New", kw::kPersistUser), 1);
  EXPECT_EQ(ReadBytes(UserIni()), expected + "\n[New]\nZ=9\n");
}

TEST_F(Persistence, SavingKeepsEncodingAndLineEnds) {
  // UTF-16 little-endian with its mark and CR LF.
  std::u16string text = u"[A]\r\nX=1\r\n[B]\r\nY=\u20AC\r\n";
  std::string bytes = "\xFF\xFE";
  for (char16_t c : text) bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
  WriteBytes(UserIni(), bytes);
  KwPersistence p;
  int x = 0;
  p.LoadINI(u"X", &x);
  p.LoadINI(kw::kPersistUser, u"A");
  x = 2;
  p.SaveINI(u"A", kw::kPersistUser);
  bytes[2 + 2 * 7] = '2';  // the digit of "X=1"
  EXPECT_EQ(ReadBytes(UserIni()), bytes);
}

TEST_F(Persistence, UnchangedOrProtectedFileIsNotRewritten) {
  WriteBytes(UserIni(), kHandWritten);
  ASSERT_TRUE(kw::SetReadOnly(U(UserIni().string())));
  KwPersistence p;
  int width = 0;
  p.LoadINI(u"WIDTH", &width);
  p.LoadINI(kw::kPersistUser, u"Edit");
  EXPECT_EQ(p.SaveINI(u"Edit", kw::kPersistUser), 1) << "nothing changed, nothing to write";
  p.LoadINI(u"WIDTH", &width);
  p.LoadINI(kw::kPersistUser, u"Edit");
  width = 1;
  EXPECT_EQ(p.SaveINI(u"Edit", kw::kPersistUser), 0);
  EXPECT_EQ(ReadBytes(UserIni()), kHandWritten);
  kw::SetReadOnly(U(UserIni().string()), false);
  EXPECT_EQ(std::filesystem::directory_iterator(Temp("user"))->path(), UserIni()) << "no temporary file is left";
}

TEST_F(Persistence, WholeSectionsAsLines) {
  WriteBytes(UserIni(), kHandWritten);
  KwPersistence p;
  kw::StringArray lines;
  EXPECT_EQ(p.LoadData(u"Edit", lines), 2);
  EXPECT_EQ(lines, (kw::StringArray{u"WIDTH=80", u"OLD=keep"})) << "comments are not entries";
  EXPECT_EQ(p.LoadData(u"None", lines), 0);
  EXPECT_TRUE(lines.empty());

  EXPECT_EQ(p.SaveData(u"Edit", {u"A=1", u"B=2", u"C=3"}), 1);
  std::string expected = kHandWritten;
  expected.replace(expected.find("!comment inside\nWIDTH=80\nOLD=keep"), 33, "A=1\nB=2\nC=3");
  EXPECT_EQ(ReadBytes(UserIni()), expected);
  EXPECT_EQ(p.LoadData(u"Edit", lines), 3);

  EXPECT_EQ(p.SaveData(u"First", {}), 1);
  expected.erase(expected.find("[First]"), expected.find("\n[Edit]") - expected.find("[First]"));
  EXPECT_EQ(ReadBytes(UserIni()), expected) << "an empty list removes the section";
  EXPECT_EQ(p.SaveData(u"Added", {u"Q=1"}), 1);
  EXPECT_EQ(ReadBytes(UserIni()), expected + "\n[Added]\nQ=1\n");
}

TEST_F(Persistence, CollectionIsSplitIntoMembers) {
  WriteBytes(UserIni(), "[Recent]\nCOUNT=2\nF1=alpha\nF2=beta\n");
  KwPersistence p;
  std::unique_ptr<kw::KwConfigData> store = p.CreateCollection(u"Recent");
  ASSERT_NE(store, nullptr);
  EXPECT_EQ(store->GetCollectionName(), u"Recent");
  EXPECT_NE(store->GetCfgSection(u"alpha"), nullptr);
  EXPECT_NE(store->GetCfgSection(u"beta"), nullptr);
  EXPECT_EQ(store->GetCfgSection(u"Recent"), nullptr);
}

TEST_F(Persistence, ChainBookkeeping) {
  KwPersistence p(3);
  int a = 0, b = 0, c = 0, d = 0;
  EXPECT_EQ(p.LoadINI(u"A", &a), 1);
  EXPECT_EQ(p.LoadINI(u"B", &b), 1);
  EXPECT_EQ(p.GetPointer(u"S", u"A"), nullptr) << "not bound yet";
  p.LoadINI(kw::kPersistUser, u"S");
  EXPECT_EQ(p.LoadINI(u"C", &c), 1);
  EXPECT_EQ(p.LoadINI(u"D", &d), 0) << "the chain is full";
  EXPECT_EQ(p.LoadINI(u"E", static_cast<int*>(nullptr)), 0);
  p.LoadINI(kw::kPersistUser, u"T");
  EXPECT_EQ(p.GetPointer(u"S", u"B"), &b);
  EXPECT_EQ(p.GetPointer(u"T", u"C"), &c);
  EXPECT_EQ(p.GetPointer(u"T", u"A"), nullptr);
  ASSERT_NE(p.GetElement(u"S", u"B"), nullptr);
  EXPECT_EQ(p.GetElement(u"S", u"B")->Type, kw::kPersistInt);
  EXPECT_EQ(p.GetElement(u"S", u"B")->Scope, kw::kPersistUser);

  EXPECT_EQ(p.Release(u"S"), 2);
  EXPECT_EQ(p.GetCount(), 1);
  EXPECT_EQ(p.LoadINI(u"D", &d), 1) << "released spots are used again";
  EXPECT_EQ(p.LoadINI(u"A", &a), 1);
  p.LoadINI(kw::kPersistUser, u"U");
  EXPECT_EQ(p.GetPointer(u"U", u"D"), &d);
  EXPECT_EQ(p.ResetChain(), 3);
  EXPECT_EQ(p.GetFirst(), nullptr);
}

TEST_F(Persistence, Listings) {
  KwPersistence p(7);
  int a = 0;
  p.LoadINI(u"A", &a);
  p.LoadINI(kw::kPersistUser, u"Sec");
  const std::u16string table = p.Table(u"now");
  EXPECT_EQ(table.find(u"================== Persistence-Table with a maximum of 7 elements - now\n"
                       u"Element  pSpot   pNext   Scope Section  IDname Type Pointer\n===="),
            0u);
  EXPECT_NE(table.find(u"Sec  A    3"), std::u16string::npos);
  EXPECT_NE(p.ShowSections().find(u"Section=Sec Scope=1 Elements=1"), std::u16string::npos);
  EXPECT_EQ(platform_.debugOutput.size(), 2u);
  p.ResetChain();
}

// An application object that traces, so that the persistence table's trace lines can be seen.
class TracingApp : public kw::KwWinApp {
 public:
  std::u16string GetAppVersion() const override { return u"1"; }
};

class PersistenceTrace : public Persistence {
 protected:
  PersistenceTrace() : cwd_(std::filesystem::current_path()) { std::filesystem::current_path(dir_); }
  ~PersistenceTrace() override { std::filesystem::current_path(cwd_); }
  // Whether the text was traced, as a whole line.
  bool Traced(const std::u16string& text) const {
    for (const auto& line : platform_.debugOutput)
      if (line == text + u"\n") return true;
    return false;
  }
  std::filesystem::path cwd_;
};

TEST_F(PersistenceTrace, TraceLinesNameClassFunctionAndValues) {
  TracingApp app;
  app.StartInitalTrace();
  ASSERT_TRUE(app.GetTraceMode());
  WriteBytes(UserIni(), "[Buf]\nB=ABCDEF\n");
  {
    KwPersistence p;
    char16_t buffer[4] = u"ABC";
    int kept = 0;
    p.LoadINI(u"B", buffer);
    EXPECT_EQ(p.GetPointer(u"Buf", u"B"), nullptr);
    EXPECT_TRUE(Traced(u"Persist.GetPointer: WARNING! Only constant Scope in Section Buf allowed"));
    p.LoadINI(kw::kPersistUser, u"Buf");
    EXPECT_TRUE(Traced(u"Persist.LoadINI: Section=Buf IDname=B"));
    EXPECT_TRUE(Traced(u"Persist.StringToValue: WARNING! Buffer-Overflow OldLen=3 NewLen=6"));
    EXPECT_EQ(p.GetPointer(u"Buf", u"X"), nullptr);
    EXPECT_TRUE(Traced(u"Persist.GetPointer: WARNING! Pointer of Section=Buf IDname=X not found"));
    EXPECT_EQ(p.GetElement(u"Buf", u"Y"), nullptr);
    EXPECT_TRUE(Traced(u"Persist.GetElement: List Element section=Buf Key=Y not found"));
    p.SaveINI(u"Buf", kw::kPersistUser);
    EXPECT_FALSE(Traced(u"Persist.SaveINI: WARNING! Section Buf was already released earlier!"));
    p.SaveINI(u"Buf", kw::kPersistUser);
    EXPECT_TRUE(Traced(u"Persist.SaveINI: WARNING! Section Buf was already released earlier!"));
    p.LoadINI(u"K", &kept);
    p.LoadINI(kw::kPersistUser, u"Left");
  }
  EXPECT_TRUE(Traced(u"Persis.Destructor: Element Section=Left IDname=K was still allocated"));
  app.SetTraceMode();  // off

  const size_t before = platform_.debugOutput.size();
  KwPersistence p;
  EXPECT_EQ(p.GetPointer(u"Buf", u"X"), nullptr);
  EXPECT_EQ(platform_.debugOutput.size(), before) << "nothing is traced while tracing is off";
}

TEST_F(PersistenceTrace, SettingsStoreTracesItsFiles) {
  TracingApp app;
  app.StartInitalTrace();
  const std::u16string local = U(Temp("l.ini").string());
  WriteBytes(Temp("l.ini"), "[A]\nX=1\n");
  kw::KwConfigData store;
  const std::u16string names[4] = {u"", local, local, local};  // one file named three times
  store.Load(names);
  EXPECT_TRUE(Traced(u"Data.CheckFileNames: i=1 j=2 Filename=" + local));
  EXPECT_TRUE(Traced(u"Data.CheckFileNames: i=2 j=3 Filename=" + local));
  EXPECT_TRUE(Traced(u"Persist.Load: Scopes=31"));
  EXPECT_TRUE(Traced(u"KwData.Load(): From file " + local));
  EXPECT_TRUE(Traced(u"Persist.Load: Finished"));
  store.SetModified();
  EXPECT_EQ(store.SaveData(), 1);
  EXPECT_TRUE(Traced(u"Data.SaveData: i=3 file=" + local));
}

}  // namespace
