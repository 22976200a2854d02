#include "base/FileOps.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

#include "base/KwFolders.h"
#include "base/KwTime.h"
#include "support/TestSupport.h"

using namespace kw;

using FileOpsTest = kwtest::PlatformTest;

TEST_F(FileOpsTest, ExistenceSizeAndDeletion) {
  WriteBytes(Temp("a.txt"), "12345");
  EXPECT_TRUE(IsExisting(TempName("a.txt")));
  EXPECT_FALSE(IsDirectory(TempName("a.txt")));
  EXPECT_TRUE(IsDirectory(dir_.u16string()));
  EXPECT_TRUE(IsExisting(dir_.u16string()));
  EXPECT_EQ(SizeOf(TempName("a.txt")), 5);
  EXPECT_EQ(SizeOf(TempName("none.txt")), -1);
  EXPECT_FALSE(IsExisting(TempName("none.txt")));
  EXPECT_FALSE(IsExisting(u""));
  EXPECT_FALSE(DeleteTheFile(dir_.u16string())) << "a folder is not deleted as a file";
  EXPECT_TRUE(DeleteTheFile(TempName("a.txt")));
  EXPECT_FALSE(IsExisting(TempName("a.txt")));
  EXPECT_FALSE(DeleteTheFile(TempName("a.txt")));
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(ENOENT));
}

TEST_F(FileOpsTest, RenameAndCopyRespectExistingTargets) {
  WriteBytes(Temp("a.txt"), "A");
  WriteBytes(Temp("b.txt"), "B");
  EXPECT_FALSE(RenameTheFile(TempName("a.txt"), TempName("b.txt")));
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(EEXIST));
  EXPECT_TRUE(RenameTheFile(TempName("a.txt"), TempName("b.txt"), true));
  EXPECT_EQ(ReadBytes(Temp("b.txt")), "A");
  EXPECT_FALSE(IsExisting(TempName("a.txt")));
  EXPECT_FALSE(RenameTheFile(TempName("a.txt"), TempName("c.txt")));
  EXPECT_TRUE(CopyTheFile(TempName("b.txt"), TempName("c.txt")));
  EXPECT_EQ(ReadBytes(Temp("c.txt")), "A");
  EXPECT_EQ(GetLastWriteTime(TempName("c.txt")), GetLastWriteTime(TempName("b.txt")));
  WriteBytes(Temp("d.txt"), "D");
  EXPECT_FALSE(CopyTheFile(TempName("b.txt"), TempName("d.txt"), true));
  EXPECT_EQ(ReadBytes(Temp("d.txt")), "D");
  EXPECT_TRUE(CopyTheFile(TempName("d.txt"), TempName("c.txt")));
  EXPECT_EQ(ReadBytes(Temp("c.txt")), "D");
}

TEST_F(FileOpsTest, ReadOnlyAttribute) {
  WriteBytes(Temp("r.txt"), "x");
  EXPECT_FALSE(IsReadOnly(TempName("r.txt")));
  EXPECT_TRUE(SetReadOnly(TempName("r.txt")));
  EXPECT_TRUE(IsReadOnly(TempName("r.txt")));
  EXPECT_TRUE(SetReadOnly(TempName("r.txt"), false));
  EXPECT_FALSE(IsReadOnly(TempName("r.txt")));
  EXPECT_FALSE(SetReadOnly(TempName("none.txt")));
  EXPECT_FALSE(IsReadOnly(TempName("none.txt")));
}

TEST_F(FileOpsTest, LastWriteTimeIsNow) {
  WriteBytes(Temp("t.txt"), "x");
  const double written = GetLastWriteTime(TempName("t.txt"));
  const double now = KwTime::Now().GetTime();
  EXPECT_NEAR(written, now, 5.0 / 86400) << "within five seconds";
  EXPECT_EQ(GetLastWriteTime(TempName("none.txt")), 0);
  EXPECT_FALSE(IsNetworkDrive(TempName("t.txt")));
}

TEST_F(FileOpsTest, NamesAndPlaceholders) {
  EXPECT_EQ(ReplaceExtension(u"a.txt", u"BAK"), u"a.BAK");
  EXPECT_EQ(ReplaceExtension(u"dir.d/a", u"BAK"), u"dir.d/a.BAK");
  EXPECT_EQ(ReplaceExtension(u"x/a.b.c", u"BAK"), u"x/a.b.BAK");
  EXPECT_EQ(ReplaceExtension(u"x/.profile", u"BAK"), u"x/.profile.BAK");
  EXPECT_EQ(CompareFileNames(u"Stra\u00DFe/\u00C4.TXT", u"stra\u00DFe/\u00E4.txt"), 0);
  EXPECT_LT(CompareFileNames(u"a.txt", u"B.txt"), 0);
  EXPECT_GT(CompareFileNames(u"ab", u"A"), 0);
  ::setenv("KWTEST_FOLDER", "/some/where", 1);
  EXPECT_EQ(FolderByEnvironment(u"$KWTEST_FOLDER$"), u"/some/where/");
  ::unsetenv("KWTEST_FOLDER");
  EXPECT_EQ(FolderByEnvironment(u"$KWTEST_FOLDER$"), u"");
  EXPECT_EQ(FolderByEnvironment(u"TEMP"), u"");
  const std::u16string temp = FolderByEnvironment(u"$TEMP$");
  ASSERT_FALSE(temp.empty());
  EXPECT_EQ(temp.back(), u'/');
  EXPECT_TRUE(IsDirectory(temp));
}

TEST(KwTime, CalendarAndComparableValues) {
  EXPECT_EQ(KwTime::FromDate(1899, 12, 30).GetTime(), 0);
  EXPECT_EQ(KwTime::FromDate(1900, 1, 1).GetTime(), 2);
  EXPECT_EQ(KwTime::FromDate(2000, 1, 1, 12).GetTime(), 36526.5);
  EXPECT_EQ(KwTime::FromDate(1899, 12, 29).GetTime(), -1);
  EXPECT_LT(KwTime::FromDate(2024, 2, 29, 23, 59, 59), KwTime::FromDate(2024, 3, 1));
  EXPECT_TRUE(KwTime::IsValidDate(2024, 2, 29));
  EXPECT_FALSE(KwTime::IsValidDate(2023, 2, 29));
  EXPECT_FALSE(KwTime::IsValidDate(1900, 2, 29));
  EXPECT_TRUE(KwTime::IsValidDate(2000, 2, 29));
}

TEST(KwTime, FormatWithWidths) {
  const KwTime t = KwTime::FromDate(2024, 3, 5, 7, 8, 9);
  EXPECT_EQ(t.Format(u"%d.%m.%Y %H:%M:%S"), u"05.03.2024 07:08:09");
  EXPECT_EQ(t.Format(u"%1d.%1m.%y"), u"5.3.24");
  EXPECT_EQ(t.Format(u"%2H:%2M:%S 100%%"), u"07:08:09 100%");
  // A trace clock: milliseconds since start as a time of day.
  EXPECT_EQ(KwTime(3723004.0 / 1000 / 60 / 60 / 24).Format(u"%2H:%2M:%S"), u"01:02:03");
  EXPECT_EQ(KwTime(0.999999).Format(u"%d.%m.%Y %H:%M:%S"), u"31.12.1899 00:00:00") << "rounds to the next day";
}

TEST(KwTime, ParseWithFormat) {
  KwTime t;
  EXPECT_TRUE(t.SetTime(u"05.03.2024", u"%d.%m.%Y"));
  EXPECT_EQ(t, KwTime::FromDate(2024, 3, 5));
  EXPECT_TRUE(t.SetTime(u"5.3.24 7:08", u"%d.%m.%y %H:%M"));
  EXPECT_EQ(t, KwTime::FromDate(2024, 3, 5, 7, 8));
  EXPECT_TRUE(t.SetTime(u"20240305", u"%4Y%2m%2d"));
  EXPECT_EQ(t, KwTime::FromDate(2024, 3, 5));
  EXPECT_TRUE(t.SetTime(u"12:00:00 ", u"%H:%M:%S"));
  EXPECT_EQ(t.GetTime(), 0.5);
  EXPECT_TRUE(t.SetTime(u"3/99", u"%m/%y"));
  EXPECT_EQ(t, KwTime::FromDate(1999, 3, 1));
  const KwTime before = t;
  for (const char16_t* bad : {u"31.02.2024", u"5.3.", u"05-03-2024", u"25:00:00", u"05.03.2024x"}) {
    EXPECT_FALSE(t.SetTime(bad, bad[2] == u':' ? u"%H:%M:%S" : u"%d.%m.%Y")) << std::string(bad, bad + 3);
    EXPECT_EQ(t, before);
  }
}

TEST(KwFolders, DefaultsAndSettings) {
  KwFolders folders;
  EXPECT_FALSE(folders.GetExecutableFolder().empty());
  EXPECT_EQ(folders.GetExecutableFolder().back(), u'/');
  EXPECT_EQ(folders.GetProgramFolder(), folders.GetExecutableFolder());
  EXPECT_NE(folders.GetUserFolder().find(u"kwbase/"), std::u16string::npos);
  folders.SetUserFolder(u"/tmp/x");
  EXPECT_EQ(folders.GetUserFolder(), u"/tmp/x/");
  folders.SetAll(u"/tmp/y/");
  EXPECT_EQ(folders.GetDataFolder(), u"/tmp/y/");
  EXPECT_EQ(folders.GetRegionalFolder(), u"/tmp/y/");
  EXPECT_EQ(folders.GetProjectFolder(), u"/tmp/y/");
}
