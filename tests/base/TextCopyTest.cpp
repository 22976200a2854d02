#include <gtest/gtest.h>

#include <string>

#include "app/StringTable.h"
#include "base/Text.h"
#include "support/TestSupport.h"

namespace {

// A destination buffer pre-filled with '~' so that untouched places are visible.
std::u16string Buffer(size_t n) { return std::u16string(n, u'~'); }

}  // namespace

TEST(TextLength, TrailingBlanksTabsAndZerosDoNotCount) {
  EXPECT_EQ(kw::StrSize(u"abc"), 3);
  EXPECT_EQ(kw::StrSize(nullptr), 0);
  EXPECT_EQ(kw::StrLen(std::u16string(u"ab \t ")), 2);
  EXPECT_EQ(kw::StrLen(std::u16string(u"ab \0\0", 5)), 2);
  EXPECT_EQ(kw::StrLen(std::u16string(u"   ")), 0);
  EXPECT_EQ(kw::StrLen(std::u16string(u" a")), 2);
  EXPECT_EQ(kw::StrLen(u"abc  x", 4), 3);
  EXPECT_EQ(kw::StrLen(u"abc  ", 0), 3);
}

TEST(TextCopy, CountedTemplateAndTerminatedModes) {
  std::u16string d = Buffer(8);
  EXPECT_EQ(kw::StrCopy(d.data(), u"abcdef", 3, 0), 3);
  EXPECT_EQ(d, u"abc~~~~~");
  d = Buffer(8);
  EXPECT_EQ(kw::StrCopy(d.data(), u"abcdef", 6, 4), 4);
  EXPECT_EQ(d, u"abcd~~~~");

  std::u16string t = u"Nr. *   ";
  EXPECT_EQ(kw::StrCopy(t.data(), u"12345", -3, 0), 3);
  EXPECT_EQ(t, u"Nr. 123 ");
  t = u"Nr. *   ";
  EXPECT_EQ(kw::StrCopy(t.data(), u"12345", -5, 6), 2);  // at most the limit minus the offset
  EXPECT_EQ(t, u"Nr. 12  ");
  t = u"no star";
  EXPECT_EQ(kw::StrCopy(t.data(), u"12", -2, 0), 0);
  EXPECT_EQ(t, u"no star");

  d = Buffer(8);
  EXPECT_EQ(kw::StrCopy(d.data(), u"abc", 0, 0), 4);
  EXPECT_EQ(d, std::u16string(u"abc\0~~~~", 8));
  d = Buffer(8);
  EXPECT_EQ(kw::StrCopy(d.data(), u"abc", 0, 4), 4);
  EXPECT_EQ(d, std::u16string(u"abc\0~~~~", 8));
}

TEST(TextCopy, ZeroNotWithinTheLimitCopiesTheWholeSourceAnyway) {
  std::u16string d = Buffer(10);
  EXPECT_EQ(kw::StrCopy(d.data(), u"abcdefg", 0, 3), 8);
  EXPECT_EQ(d, std::u16string(u"abcdefg\0~~", 10));
}

TEST(TextCopy, FromAString) {
  std::u16string d = Buffer(6);
  EXPECT_EQ(kw::StrCopy(d.data(), std::u16string(u"abc"), 0, 0), 3);
  EXPECT_EQ(d, u"abc~~~");  // no terminator
  d = Buffer(6);
  EXPECT_EQ(kw::StrCopy(d.data(), std::u16string(u"abc"), 2, 0), 2);
  EXPECT_EQ(d, u"ab~~~~");
  d = Buffer(6);
  EXPECT_EQ(kw::StrCopy(d.data(), std::u16string(u"abc"), 10, 0), 3);
  EXPECT_EQ(d, u"abc~~~");
  d = u"[*...]";
  EXPECT_EQ(kw::StrCopy(d.data(), std::u16string(u"xyz"), -2, 0), 2);
  EXPECT_EQ(d, u"[xy..]");

  std::u16string s = u"old";
  EXPECT_EQ(kw::StrCopy(s, u"abcdef", 4), 4);
  EXPECT_EQ(s, u"abcd");
  EXPECT_EQ(kw::StrCopy(s, u"xy", 0), 2);
  EXPECT_EQ(s, u"xy");
}

TEST(TextCopy, FromTheStringTable) {
  const unsigned id = 64001;
  kw::SetString(id, u"Hello table");
  std::u16string d = Buffer(16);
  EXPECT_EQ(kw::StrCopy(d.data(), id, 0), 12);
  EXPECT_EQ(d.substr(0, 12), std::u16string(u"Hello table\0", 12));
  d = Buffer(16);
  EXPECT_EQ(kw::StrCopy(d.data(), id, 6), 6);
  EXPECT_EQ(d.substr(0, 7), std::u16string(u"Hello\0~", 7));
  kw::SetString(id, u"");
  d = Buffer(4);
  EXPECT_EQ(kw::StrCopy(d.data(), 64002u, 4), 1);
  EXPECT_EQ(d[0], u'\0');
}

TEST(TextEntry, LeftRightAndSqueezed) {
  std::u16string f = Buffer(6);
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"ab", 0, 1, 0), 2);
  EXPECT_EQ(f, u"ab    ");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"ab", 0, 0, 0), 2);
  EXPECT_EQ(f, u"    ab");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"abcdefgh", 0, 1, 0), 6);
  EXPECT_EQ(f, u"abcdef");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"abcdefgh", 0, 0, 0), 6);
  EXPECT_EQ(f, u"cdefgh");  // a long source keeps its tail
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"a   b  ", 0, 1, 1), 3);  // trimmed length, squeezed
  EXPECT_EQ(f, u"a b   ");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"a   b  ", 0, 1, 0), 5);
  EXPECT_EQ(f, u"a   b ");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, u"a   b  ", 7, 0, 1), 4);  // explicit length keeps one blank
  EXPECT_EQ(f, u"  a b ");

  EXPECT_EQ(kw::StrEntry(f.data(), 6, std::u16string(u"xxHELLO"), 2, 3, 1, 0), 3);
  EXPECT_EQ(f, u"HEL   ");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, std::u16string(u"xxHELLO"), 2, 0, 0, 0), 5);
  EXPECT_EQ(f, u" HELLO");
  EXPECT_EQ(kw::StrEntry(f.data(), 6, std::u16string(), 0, 0, 0, 0), 0);
  EXPECT_EQ(f, u"      ");

  kwtest::AssertionRecorder asserts;
  f = Buffer(2);
  EXPECT_EQ(kw::StrEntry(f.data(), 0, u"ab", 0, 1, 0), 0);
  EXPECT_EQ(f, u"~~");
  EXPECT_EQ(asserts.count(), 1u);
}

TEST(TextPadding, LeftRightCenter) {
  EXPECT_EQ(kw::StrLeft(u"  ab  cd  ", 0, 0), u"ab  cd  ");
  EXPECT_EQ(kw::StrLeft(u"  ab  cd  ", 0, 1), u"ab  cd");
  EXPECT_EQ(kw::StrLeft(u"  ab  cd  ", 5, 1), u"ab");
  EXPECT_EQ(kw::StrLeft(std::u16string(u"   "), 1), u"");
  EXPECT_EQ(kw::StrRight(6, u" ab ", 0), u"    ab");
  EXPECT_EQ(kw::StrRight(3, u"abcdef", 0), u"def");
  EXPECT_EQ(kw::StrRight(3, std::u16string(u"abc")), u"abc");
  EXPECT_EQ(kw::StrCenter(7, u"ab"), u"  ab   ");  // 5 * 0.5 truncated to 2
  EXPECT_EQ(kw::StrCenter(6, u"ab"), u"  ab  ");
  EXPECT_EQ(kw::StrCenter(2, u"abc"), u"abc");
}

TEST(TextMove, JustifiesAFixedField) {
  std::u16string f = u"  ab c  ";
  EXPECT_EQ(kw::StrMove(f.data(), 8, 1), 4);
  EXPECT_EQ(f, u"ab c    ");
  EXPECT_EQ(kw::StrMove(f.data(), 8, 0), 4);
  EXPECT_EQ(f, u"    ab c");
  EXPECT_EQ(kw::StrMove(f.data(), 8, 0), 4);
  f = u"    ";
  EXPECT_EQ(kw::StrMove(f.data(), 4, 1), 1);
  EXPECT_EQ(kw::StrMove(f.data(), 4, 0), 3);
  EXPECT_EQ(f, u"    ");
  EXPECT_EQ(kw::StrMove(f.data(), 0, 1), 1);
}

TEST(TextWrap, HardWrapWithIndent) {
  std::u16string s = u"abcdefghijklmnopqrstuvwxy";  // 25 characters
  kw::StrWrap(s, nullptr, 10, 2, nullptr);
  EXPECT_EQ(s, u"abcdefghij\r\n  klmnopqr\r\n  stuvwxy");
  std::u16string exact = u"abcdefghij";
  kw::StrWrap(exact, nullptr, 10, 2, nullptr);
  EXPECT_EQ(exact, u"abcdefghij");
  std::u16string eleven = u"abcdefghijk";
  kw::StrWrap(eleven, nullptr, 5, 0, u"|");
  EXPECT_EQ(eleven, u"abcde|fghij|k");
}

TEST(TextWrap, BreaksAfterTheLastBreakCharacter) {
  std::u16string s = u"one two three four";
  kw::StrWrap(s, u" ", 9, 0, u"\n");
  EXPECT_EQ(s, u"one two \nthree \nfour");  // the blank stays at the end of its line
  s = u"aa-bb-cc-dd";
  kw::StrWrap(s, u"-", 7, 1, u"/");
  EXPECT_EQ(s, u"aa-bb-/ cc-dd");
  s = u"abcdefghij klm";  // no break character in the first line: hard cut
  kw::StrWrap(s, u" ", 5, 0, u"/");
  EXPECT_EQ(s, u"abcde/fghij/ klm");

  kwtest::AssertionRecorder asserts;
  s = u"unchanged text";
  kw::StrWrap(s, nullptr, 4, 4, nullptr);
  kw::StrWrap(s, nullptr, 0, 0, nullptr);
  EXPECT_EQ(s, u"unchanged text");
  EXPECT_EQ(asserts.count(), 2u);
}
