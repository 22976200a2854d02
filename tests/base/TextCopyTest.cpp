#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "app/StringTable.h"
#include "base/Text.h"
#include "support/TestSupport.h"

namespace {

// A call's result and its buffer afterwards; buffers start filled with '~' so that untouched places show.
using Out = std::pair<int64_t, std::u16string>;

template <class Fn>
Out Into(std::u16string buffer, Fn fn) {
  const int64_t r = fn(buffer.data());
  return {r, buffer};
}

std::u16string Tildes(size_t n) { return std::u16string(n, u'~'); }
std::u16string Z(const char16_t* s, size_t n) { return std::u16string(s, n); }  // with zeros inside

}  // namespace

TEST(TextLength, TrailingBlanksTabsAndZerosDoNotCount) {
  EXPECT_EQ(kw::StrSize(u"abc"), 3);
  EXPECT_EQ(kw::StrSize(nullptr), 0);
  for (const auto& [text, len] : {std::pair<std::u16string, int64_t>{u"ab \t ", 2}, {Z(u"ab \0\0", 5), 2},
                                  {u"   ", 0}, {u" a", 2}})
    EXPECT_EQ(kw::StrLen(text), len);
  EXPECT_EQ(kw::StrLen(u"abc  x", 4), 3);
  EXPECT_EQ(kw::StrLen(u"abc  ", 0), 3);
}

TEST(TextCopy, CountedTemplateAndTerminatedModes) {
  auto copy = [](std::u16string dst, const char16_t* src, int64_t n, int64_t limit) {
    return Into(dst, [&](char16_t* d) { return kw::StrCopy(d, src, n, limit); });
  };
  EXPECT_EQ(copy(Tildes(8), u"abcdef", 3, 0), Out(3, u"abc~~~~~"));
  EXPECT_EQ(copy(Tildes(8), u"abcdef", 6, 4), Out(4, u"abcd~~~~"));
  EXPECT_EQ(copy(u"Nr. *   ", u"12345", -3, 0), Out(3, u"Nr. 123 "));
  EXPECT_EQ(copy(u"Nr. *   ", u"12345", -5, 6), Out(2, u"Nr. 12  "));  // at most the limit minus the offset
  EXPECT_EQ(copy(u"no star", u"12", -2, 0), Out(0, u"no star"));
  EXPECT_EQ(copy(Tildes(8), u"abc", 0, 0), Out(4, Z(u"abc\0~~~~", 8)));
  EXPECT_EQ(copy(Tildes(8), u"abc", 0, 4), Out(4, Z(u"abc\0~~~~", 8)));
  // The zero not within the limit: the whole source is copied anyway.
  EXPECT_EQ(copy(Tildes(10), u"abcdefg", 0, 3), Out(8, Z(u"abcdefg\0~~", 10)));
}

TEST(TextCopy, FromAStringAndTheStringTable) {
  auto copy = [](std::u16string dst, int64_t n) {
    return Into(dst, [&](char16_t* d) { return kw::StrCopy(d, std::u16string(u"abc"), n, 0); });
  };
  EXPECT_EQ(copy(Tildes(6), 0), Out(3, u"abc~~~"));  // no terminator
  EXPECT_EQ(copy(Tildes(6), 2), Out(2, u"ab~~~~"));
  EXPECT_EQ(copy(Tildes(6), 10), Out(3, u"abc~~~"));
  EXPECT_EQ(copy(u"[*...]", -2), Out(2, u"[ab..]"));
  std::u16string s = u"old";
  EXPECT_EQ(kw::StrCopy(s, u"abcdef", 4), 4);
  EXPECT_EQ(s, u"abcd");
  EXPECT_EQ(kw::StrCopy(s, u"xy", 0), 2);
  EXPECT_EQ(s, u"xy");

  const unsigned id = 64001;
  kw::SetString(id, u"Hello table");
  auto load = [](unsigned which, int64_t size) {
    return Into(Tildes(16), [&](char16_t* d) { return kw::StrCopy(d, which, size); });
  };
  EXPECT_EQ(load(id, 0), Out(12, Z(u"Hello table\0~~~~", 16)));
  EXPECT_EQ(load(id, 6), Out(6, Z(u"Hello\0~~~~~~~~~~", 16)));
  kw::SetString(id, u"");
  EXPECT_EQ(load(64002u, 4), Out(1, std::u16string(1, u'\0') + Tildes(15)));
}

TEST(TextEntry, LeftRightAndSqueezed) {
  auto entry = [](const char16_t* src, int64_t len, int left, int squeeze) {
    return Into(Tildes(6), [&](char16_t* f) { return kw::StrEntry(f, 6, src, len, left, squeeze); });
  };
  EXPECT_EQ(entry(u"ab", 0, 1, 0), Out(2, u"ab    "));
  EXPECT_EQ(entry(u"ab", 0, 0, 0), Out(2, u"    ab"));
  EXPECT_EQ(entry(u"abcdefgh", 0, 1, 0), Out(6, u"abcdef"));
  EXPECT_EQ(entry(u"abcdefgh", 0, 0, 0), Out(6, u"cdefgh"));  // a long source keeps its tail
  EXPECT_EQ(entry(u"a   b  ", 0, 1, 1), Out(3, u"a b   "));    // trimmed length, squeezed
  EXPECT_EQ(entry(u"a   b  ", 0, 1, 0), Out(5, u"a   b "));
  EXPECT_EQ(entry(u"a   b  ", 7, 0, 1), Out(4, u"  a b "));    // explicit length keeps one blank
  auto fromString = [](const std::u16string& src, int from, int64_t len, int left) {
    return Into(Tildes(6), [&](char16_t* f) { return kw::StrEntry(f, 6, src, from, len, left, 0); });
  };
  EXPECT_EQ(fromString(u"xxHELLO", 2, 3, 1), Out(3, u"HEL   "));
  EXPECT_EQ(fromString(u"xxHELLO", 2, 0, 0), Out(5, u" HELLO"));
  EXPECT_EQ(fromString(u"", 0, 0, 0), Out(0, u"      "));
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(Into(Tildes(2), [](char16_t* f) { return kw::StrEntry(f, 0, u"ab", 0, 1, 0); }), Out(0, u"~~"));
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
  auto move = [](const std::u16string& field, int64_t len, int toLeft) {
    return Into(field, [&](char16_t* f) { return kw::StrMove(f, len, toLeft); });
  };
  EXPECT_EQ(move(u"  ab c  ", 8, 1), Out(4, u"ab c    "));
  EXPECT_EQ(move(u"ab c    ", 8, 0), Out(4, u"    ab c"));
  EXPECT_EQ(move(u"    ab c", 8, 0), Out(4, u"    ab c"));
  EXPECT_EQ(move(u"    ", 4, 1), Out(1, u"    "));
  EXPECT_EQ(move(u"    ", 4, 0), Out(3, u"    "));
  EXPECT_EQ(move(u"    ", 0, 1), Out(1, u"    "));
}

TEST(TextWrap, HardOrAfterTheLastBreakCharacter) {
  auto wrap = [](std::u16string s, const char16_t* breaks, int width, int indent, const char16_t* sep) {
    kw::StrWrap(s, breaks, width, indent, sep);
    return s;
  };
  EXPECT_EQ(wrap(u"abcdefghijklmnopqrstuvwxy", nullptr, 10, 2, nullptr), u"abcdefghij\r\n  klmnopqr\r\n  stuvwxy");
  EXPECT_EQ(wrap(u"abcdefghij", nullptr, 10, 2, nullptr), u"abcdefghij");
  EXPECT_EQ(wrap(u"abcdefghijk", nullptr, 5, 0, u"|"), u"abcde|fghij|k");
  EXPECT_EQ(wrap(u"one two three four", u" ", 9, 0, u"\n"), u"one two \nthree \nfour");  // the blank stays
  EXPECT_EQ(wrap(u"aa-bb-cc-dd", u"-", 7, 1, u"/"), u"aa-bb-/ cc-dd");
  EXPECT_EQ(wrap(u"abcdefghij klm", u" ", 5, 0, u"/"), u"abcde/fghij/ klm");  // no break character: hard cut
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(wrap(u"unchanged text", nullptr, 4, 4, nullptr), u"unchanged text");
  EXPECT_EQ(wrap(u"unchanged text", nullptr, 0, 0, nullptr), u"unchanged text");
  EXPECT_EQ(asserts.count(), 2u);
}
