#include <gtest/gtest.h>

#include <string>

#include "base/CodePages.h"
#include "data/KwMapData.h"
#include "support/TestSupport.h"

namespace {

using kw::KwMapData;
using kw::KwMapFields;

class MapData : public kwtest::PlatformTest {};

TEST_F(MapData, AwkwardFieldsRoundTripThroughAFile) {
  KwMapData out(u"POINTS", 2, 2);
  auto* records = out.MakeRecords(u"Survey [1]", kw::kScopeGlobal);
  ASSERT_NE(records, nullptr);
  EXPECT_EQ(out.SetRecord(*records, {u"[A]", u"tab\there"}, {u"back\\slash", u"line\nend\r"}), 1);
  EXPECT_EQ(out.SetRecord(*records, {u"!bang", u""}, {u"short"}), 1);  // padded to two values
  EXPECT_EQ(out.SetRecord(*records, {u"only one key"}, {}), 0);
  out.MakeRecords(u"Empty", kw::kScopeGlobal);
  const std::u16string file = TempName("x.ldx");
  ASSERT_EQ(out.SaveFile(file), 1);

  KwMapData in(u"POINTS", 2, 2);
  EXPECT_EQ(in.LoadFile(file), 1);
  EXPECT_EQ(in.GetCount(), 2);
  EXPECT_EQ(in.IsEqual(out), 1);
  const auto* loaded = in.GetRecords(u"Survey [1]");
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(loaded->at(KwMapFields{u"!bang", u""}), (KwMapFields{u"short", u""}));
  EXPECT_EQ(loaded->at(KwMapFields{u"[A]", u"tab\there"})[1], u"line\nend\r");
}

TEST_F(MapData, LoadResults) {
  WriteBytes(Temp("a.ldx"), "!KWMAP POINTS\n[S]\nk1\tk2\tv1\tv2\tsurplus\nlonely\nk3\tk4\n");
  KwMapData store(u"POINTS", 2, 2);
  EXPECT_EQ(store.LoadFile(TempName("a.ldx")), -2);  // "lonely" has too few key fields
  const auto* records = store.GetRecords(u"S");
  ASSERT_NE(records, nullptr);
  EXPECT_EQ(records->size(), 2u);
  EXPECT_EQ(records->at(KwMapFields{u"k1", u"k2"}), (KwMapFields{u"v1", u"v2"}));

  WriteBytes(Temp("b.ldx"), "!KWMAP OTHER\n[S]\nk1\tk2\tv\n");
  EXPECT_EQ(store.LoadFile(TempName("b.ldx")), -3);
  EXPECT_EQ(store.GetCount(), 0);
  EXPECT_EQ(store.LoadFile(TempName("none.ldx")), 0);
}

}  // namespace
