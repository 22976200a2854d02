#include "base/Format.h"

#include <gtest/gtest.h>

#include <cstdint>

using kw::Format;

TEST(Format, IntegersAtTheWidthOfTheirType) {
  EXPECT_EQ(Format(u"%d|%i|%u", 42, -7, 7u), u"42|-7|7");
  EXPECT_EQ(Format(u"%u", -1), u"4294967295");
  EXPECT_EQ(Format(u"%u", int64_t{-1}), u"18446744073709551615");
  EXPECT_EQ(Format(u"%Id %I64d %lld %ld", int64_t{1} << 40, int64_t{-5}, 3LL, 4L), u"1099511627776 -5 3 4");
  EXPECT_EQ(Format(u"%x %X %#x", 255, 255, 255), u"ff FF 0xff");
  EXPECT_EQ(Format(u"%x", -1), u"ffffffff");
  EXPECT_EQ(Format(u"%hd", 70000), u"4464");  // h truncates as printf does
  EXPECT_EQ(Format(u"%Iu", uint64_t{18446744073709551615ULL}), u"18446744073709551615");
}

TEST(Format, FlagsWidthAndPrecision) {
  EXPECT_EQ(Format(u"[%5d][%-5d][%05d][%+d][% d]", 42, 42, -42, 42, 42), u"[   42][42   ][-0042][+42][ 42]");
  EXPECT_EQ(Format(u"[%*d][%-*d]", 4, 7, 3, 7), u"[   7][7  ]");
  EXPECT_EQ(Format(u"[%.3d]", 7), u"[007]");
  EXPECT_EQ(Format(u"[%6s][%-6s][%.2s]", u"ab", u"ab", u"abcdef"), u"[    ab][ab    ][ab]");
  EXPECT_EQ(Format(u"[%3c]", u'x'), u"[  x]");
}

TEST(Format, FloatingConversions) {
  EXPECT_EQ(Format(u"%f", 0.5), u"0.500000");
  EXPECT_EQ(Format(u"%.2f|%.*f", 3.14159, 1, 2.25), u"3.14|2.2");
  EXPECT_EQ(Format(u"%lf", 1.5), u"1.500000");
  EXPECT_EQ(Format(u"%-25.15g|", 0.5), u"0.5                      |");
  EXPECT_EQ(Format(u"%e", 12345.0), u"1.234500e+04");
  EXPECT_EQ(Format(u"%g", 1e100), u"1e+100");
  EXPECT_EQ(Format(u"%08.3f", -3.5), u"-003.500");
}

TEST(Format, TextsAndCharacters) {
  const std::u16string name = u"M\u00fcller";
  EXPECT_EQ(Format(u"Message from %s", name), u"Message from M\u00fcller");
  EXPECT_EQ(Format(u"%s/%s", "narrow", u"wide"), u"narrow/wide");
  EXPECT_EQ(Format(u"%c%c%c", u'\u00df', 'A', 66), u"\u00dfAB");
  EXPECT_EQ(Format(u"100%% of %s", u"it"), u"100% of it");
  EXPECT_EQ(Format(u"%s", static_cast<const char16_t*>(nullptr)), u"(null)");
  EXPECT_EQ(Format(u"no placeholders", 1, u"x"), u"no placeholders");  // extra arguments are ignored
}

TEST(Format, RefusesWhatItCannotFormatExactly) {
  std::u16string out = u"stale";
  EXPECT_FALSE(kw::TryFormat(out, u"%d", u"text"));  // a text for a number
  EXPECT_TRUE(out.empty());
  EXPECT_FALSE(kw::TryFormat(out, u"%s", 5));        // a number for a text
  EXPECT_FALSE(kw::TryFormat(out, u"%f", 5));        // an integer for a floating conversion
  EXPECT_FALSE(kw::TryFormat(out, u"%d %d", 5));     // too few arguments
  EXPECT_FALSE(kw::TryFormat(out, u"%y", 5));        // unknown conversion
  EXPECT_FALSE(kw::TryFormat(out, u"50%", 5));       // a lone % at the end
  EXPECT_FALSE(kw::TryFormat(out, u"%*d", u"w", 5)); // a text as width
  bool ok = true;
  EXPECT_EQ(kw::FormatArgs(u"%d", {}, &ok), u"");
  EXPECT_FALSE(ok);
}

TEST(Format, PointersForHexAndP) {
  const void* p = reinterpret_cast<const void*>(uintptr_t{0x1234});
  EXPECT_EQ(Format(u"%x", p), u"1234");
  EXPECT_EQ(Format(u"%p", p).size(), 2 * sizeof(void*));
}
