#include "app/StringTable.h"

#include <gtest/gtest.h>

TEST(StringTable, HoldsTextsExactly) {
  EXPECT_EQ(kw::LoadString(1078), u"Message from %s");
  EXPECT_EQ(kw::LoadString(1002), u"|&Go on|&Cancel");
  EXPECT_EQ(kw::LoadString(1910), u"Search text is too long | Sorry");  // blanks around the bar kept
  EXPECT_EQ(kw::LoadString(2175), u"ANORNO");
  EXPECT_EQ(kw::LoadString(1148), u"ANSI|UTF-8|UTF-16 LE|UTF-16 BE|DOS|Mixed");
  const std::u16string t = kw::LoadString(3043);
  EXPECT_NE(t.find(u"!\n\nPlease change your input."), std::u16string::npos);
}

TEST(StringTable, MissingIdIsEmpty) {
  EXPECT_FALSE(kw::HasString(1));
  EXPECT_EQ(kw::LoadString(1), u"");
}

TEST(StringTable, ApplicationTextsOverrideAndRestore) {
  EXPECT_FALSE(kw::HasString(kw::kIdsAppTitle));
  kw::SetString(kw::kIdsAppTitle, u"QUORIX");
  EXPECT_EQ(kw::LoadString(kw::kIdsAppTitle), u"QUORIX");
  kw::SetString(1078, u"Meldung von %s");
  EXPECT_EQ(kw::LoadString(1078), u"Meldung von %s");
  kw::SetString(1078, u"");
  kw::SetString(kw::kIdsAppTitle, u"");
  EXPECT_EQ(kw::LoadString(1078), u"Message from %s");
  EXPECT_FALSE(kw::HasString(kw::kIdsAppTitle));
}
