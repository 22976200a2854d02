#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/CodePages.h"
#include "base/Text.h"
#include "support/TestSupport.h"

using kw::SeekString;
using kw::StrFind;
using kw::StrMatch;

namespace {

// StrFind's position and found length (-9 when not set).
std::pair<int64_t, int64_t> Find(const std::u16string& text, const std::u16string& pattern, int cs, int wild,
                                 int64_t start = 0) {
  int64_t len = -9;
  const int64_t at = StrFind(text, pattern, cs, wild, start, &len);
  return {at, at < 0 ? -9 : len};
}
std::pair<int64_t, int64_t> FindIn(const char16_t* text, int64_t start, int64_t count, const char16_t* pattern,
                                   int cs, int wild) {
  int64_t len = -9;
  const int64_t at = StrFind(text, start, count, pattern, kw::StrSize(pattern), cs, wild, &len);
  return {at, at < 0 ? -9 : len};
}
using Hit = std::pair<int64_t, int64_t>;
const Hit kNone{-1, -9};

}  // namespace

TEST(TextFind, PlainSearchWithinTheCountedRange) {
  const std::u16string text = u"one Two three two";
  EXPECT_EQ(Find(text, u"two", 1, 0), Hit(14, 3));
  EXPECT_EQ(Find(text, u"two", 0, 0), Hit(4, 3));
  EXPECT_EQ(Find(text, u"two", 0, 0, 5), Hit(14, 3));
  EXPECT_EQ(Find(text, u"TWO", 0, 0, 15), kNone);
  EXPECT_EQ(Find(text, u"", 0, 0, 3), Hit(3, 0));
  // The counted form looks only at text[start .. start+count-1].
  EXPECT_EQ(FindIn(text.c_str(), 0, 7, u"Two", 1, 0), Hit(4, 3));
  EXPECT_EQ(FindIn(text.c_str(), 0, 6, u"Two", 1, 0), kNone);
  EXPECT_EQ(FindIn(text.c_str(), 5, 12, u"?wo", 1, 0), kNone);  // "?" is literal without wildcards
  EXPECT_EQ(FindIn(u"a\u00e4b", 0, 3, u"\u00c4", 0, 0), Hit(1, 1));
}

TEST(TextFind, WildcardPiecesFoundInOrder) {
  EXPECT_EQ(Find(u"xxabbbcx", u"a*c", 0, 1), Hit(2, 5));
  EXPECT_EQ(Find(u"xxabbbcx", u"**a*c**", 0, 1), Hit(2, 5));
  EXPECT_EQ(Find(u"xxabbbcx", u"b?c", 0, 1), Hit(4, 3));
  EXPECT_EQ(Find(u"xxabbbcx", u"c*a", 0, 1), kNone);
  EXPECT_EQ(Find(u"ab-ab-cd", u"ab*c", 0, 1), Hit(0, 7));  // first piece leftmost
  EXPECT_EQ(Find(u"aXbXc", u"x*X", 0, 1), Hit(1, 3));
  EXPECT_EQ(Find(u"aXbXc", u"x*x", 1, 1), kNone);  // case-sensitive pieces
  EXPECT_EQ(FindIn(u"abcdef", 0, 4, u"b*e", 0, 1), kNone);  // pieces must end before start + count
  EXPECT_EQ(FindIn(u"abcdef", 0, 5, u"b*e", 0, 1), Hit(1, 4));
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(Find(u"abc", u"**", 0, 1), kNone);  // a star-only pattern is a contract error
  EXPECT_EQ(Find(u"abc", u"b", 0, 0, -1), kNone);
  EXPECT_EQ(asserts.count(), 2u);
}

TEST(TextMatch, WholeTextWildcards) {
  struct Row {
    const char16_t* pattern;
    const char16_t* text;
    int cs;
    int expected;
  };
  const Row rows[] = {
      {u"*.TXT", u"a.txt", 0, 1},   {u"*.TXT", u"a.txt", 1, 0},  {u"a?c", u"ac", 0, 0},
      {u"a?c", u"abc", 0, 1},       {u"*", u"", 0, 1},           {u"", u"", 0, 1},
      {u"", u"a", 0, 0},            {u"a*", u"a", 0, 1},         {u"*a", u"ba", 0, 1},
      {u"*a", u"ab", 0, 0},         {u"a*b*c", u"aXbYbZc", 0, 1}, {u"a*b*c", u"aXbYbZ", 0, 0},
      {u"*ab", u"aab", 0, 1},       {u"*ab", u"abab", 0, 1},     {u"*aab", u"aaab", 0, 1},
      {u"a*?", u"a", 0, 0},         {u"a*?", u"ab", 0, 1},       {u"?*?", u"ab", 0, 1},
      {u"abc", u"abcd", 0, 0},      {u"abcd", u"abc", 0, 0},     {u"*x*", u"abxcd", 0, 1},
      {u"*x*", u"abcd", 0, 0},      {u"\u00e4*", u"\u00c4rger", 0, 1}, {u"?", u"", 0, 0},
  };
  for (const Row& r : rows)
    EXPECT_EQ(StrMatch(r.pattern, r.text, r.cs), r.expected)
        << "pattern=" << kw::ToUtf8(r.pattern) << " text=" << kw::ToUtf8(r.text);
}

namespace {

constexpr int64_t kWidth = 3;

// A table of fixed records; Records() shows records 1..count joined by '|'.
struct Table {
  explicit Table(int64_t capacity) : cells(static_cast<size_t>(capacity * kWidth), u'#'), capacity(capacity) {}
  int64_t Seek(const char16_t* key, unsigned mode, int cs = 1) {
    return SeekString(cells.data(), capacity, &count, key, kWidth, mode, cs);
  }
  std::u16string Records() const {
    std::u16string out;
    for (int64_t r = 0; r < count; ++r) {
      if (r) out += u'|';
      out.append(cells, static_cast<size_t>(r * kWidth), kWidth);
    }
    return out;
  }
  std::u16string cells;
  int64_t capacity;
  int64_t count = 0;
};

}  // namespace

TEST(TextSeekString, LinearModesFindOrAppend) {
  Table t(4);
  EXPECT_EQ(t.Seek(u"cat", 1), 0);
  EXPECT_EQ(t.count, 0);
  EXPECT_EQ(t.Seek(u"cat", 3), 1);
  EXPECT_EQ(t.Seek(u"ant", 3), 2);
  EXPECT_EQ(t.Seek(u"cat", 3), 1);
  EXPECT_EQ(t.Seek(u"ant", 1), 2);
  EXPECT_EQ(t.Seek(u"ANT", 1), 0);
  EXPECT_EQ(t.Seek(u"ANT", 1, 0), 2);
  EXPECT_EQ(t.Records(), u"cat|ant");
  EXPECT_EQ(t.count, 2);
}

TEST(TextSeekString, BinaryModesKeepTheTableSorted) {
  Table t(5);
  for (const char16_t* key : {u"dog", u"ant", u"emu", u"cat", u"bee"}) EXPECT_GT(t.Seek(key, 6), 0);
  EXPECT_EQ(t.Records(), u"ant|bee|cat|dog|emu");
  for (int64_t r = 1; r <= 5; ++r) EXPECT_EQ(t.Seek(t.cells.substr((r - 1) * kWidth, kWidth).c_str(), 4), r);
  EXPECT_EQ(t.Seek(u"cow", 4), 0);
  EXPECT_EQ(t.Seek(u"DOG", 4, 0), 4);
  EXPECT_EQ(t.Seek(u"DOG", 4, 1), 0);
  EXPECT_EQ(t.Seek(u"emu", 6), 5);  // found: no insertion into the full table
  EXPECT_EQ(t.count, 5);
}

TEST(TextSeekString, InsertAtTheFrontAndFullTable) {
  kwtest::AssertionRecorder asserts;
  Table t(3);
  for (const char16_t* key : {u"kkk", u"zzz", u"aaa"}) t.Seek(key, 6);
  EXPECT_EQ(t.Records(), u"aaa|kkk|zzz");  // the front insertion moved every record
  const std::u16string before = t.cells;
  EXPECT_EQ(t.Seek(u"ccc", 6), 0);
  EXPECT_EQ(t.Seek(u"ccc", 3), 0);
  EXPECT_EQ(t.count, 3);
  EXPECT_EQ(t.cells, before);
  EXPECT_EQ(asserts.count(), 2u);
  EXPECT_EQ(t.Seek(u"ccc", 2), 0);  // unknown mode
  EXPECT_EQ(asserts.count(), 3u);
}

TEST(TextReplace, LeftToRightWithoutRescanning) {
  EXPECT_EQ(kw::StrReplace(u"aaaa", u"aa", u"b", 1), u"bb");
  EXPECT_EQ(kw::StrReplace(u"aaa", u"aa", u"b", 1), u"ba");
  EXPECT_EQ(kw::StrReplace(u"abAB", u"ab", u"x", 0), u"xx");
  EXPECT_EQ(kw::StrReplace(u"abAB", u"ab", u"x", 1), u"xAB");
  EXPECT_EQ(kw::StrReplace(u"a.b", u".", u"..", 1), u"a..b");
  EXPECT_EQ(kw::StrReplace(u"abc", u"abcd", u"x", 1), u"abc");
  EXPECT_EQ(kw::StrReplace(u"", u"a", u"x", 1), u"");
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(kw::StrReplace(u"abc", u"", u"x", 1), u"");
  EXPECT_EQ(asserts.count(), 1u);
}
