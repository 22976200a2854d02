#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/Text.h"
#include "support/TestSupport.h"

using kw::SeekString;
using kw::StrFind;
using kw::StrMatch;

TEST(TextFind, PlainSearchWithinTheCountedRange) {
  const std::u16string text = u"one Two three two";
  int64_t len = -1;
  EXPECT_EQ(StrFind(text, u"two", 1, 0, 0, &len), 14);
  EXPECT_EQ(len, 3);
  EXPECT_EQ(StrFind(text, u"two", 0, 0, 0, nullptr), 4);
  EXPECT_EQ(StrFind(text, u"two", 0, 0, 5, nullptr), 14);
  EXPECT_EQ(StrFind(text, u"TWO", 0, 0, 15, nullptr), -1);
  EXPECT_EQ(StrFind(text, u"", 0, 0, 3, &len), 3);
  EXPECT_EQ(len, 0);
  // The counted form looks only at text[start .. start+count-1].
  const char16_t* p = text.c_str();
  EXPECT_EQ(StrFind(p, 0, 7, u"Two", 3, 1, 0, nullptr), 4);
  EXPECT_EQ(StrFind(p, 0, 6, u"Two", 3, 1, 0, nullptr), -1);
  EXPECT_EQ(StrFind(p, 5, 12, u"?wo", 3, 1, 0, nullptr), -1);  // "?" is literal without wildcards
  EXPECT_EQ(StrFind(u"a\u00e4b", 0, 3, u"\u00c4", 1, 0, 0, nullptr), 1);
}

TEST(TextFind, WildcardPiecesFoundInOrder) {
  int64_t len = -1;
  EXPECT_EQ(StrFind(u"xxabbbcx", u"a*c", 0, 1, 0, &len), 2);
  EXPECT_EQ(len, 5);
  EXPECT_EQ(StrFind(u"xxabbbcx", u"**a*c**", 0, 1, 0, &len), 2);
  EXPECT_EQ(len, 5);
  EXPECT_EQ(StrFind(u"xxabbbcx", u"b?c", 0, 1, 0, &len), 4);
  EXPECT_EQ(len, 3);
  EXPECT_EQ(StrFind(u"xxabbbcx", u"c*a", 0, 1, 0, &len), -1);
  EXPECT_EQ(StrFind(u"ab-ab-cd", u"ab*c", 0, 1, 0, &len), 0);  // first piece leftmost
  EXPECT_EQ(len, 7);
  EXPECT_EQ(StrFind(u"aXbXc", u"x*X", 0, 1, 0, &len), 1);  // case-sensitive pieces
  EXPECT_EQ(len, 3);
  EXPECT_EQ(StrFind(u"aXbXc", u"x*x", 1, 1, 0, &len), -1);
  // Pieces must end before start + count.
  EXPECT_EQ(StrFind(u"abcdef", 0, 4, u"b*e", 3, 0, 1, &len), -1);
  EXPECT_EQ(StrFind(u"abcdef", 0, 5, u"b*e", 3, 0, 1, &len), 1);
  EXPECT_EQ(len, 4);
}

TEST(TextFind, StarOnlyPatternIsAContractError) {
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(StrFind(u"abc", u"**", 0, 1, 0, nullptr), -1);
  EXPECT_EQ(asserts.count(), 1u);
  EXPECT_EQ(StrFind(u"abc", u"b", 0, 0, -1, nullptr), -1);
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

TEST(TextSeekString, FullTableRefusesInsertion) {
  kwtest::AssertionRecorder asserts;
  Table t(2);
  EXPECT_EQ(t.Seek(u"bbb", 6), 1);
  EXPECT_EQ(t.Seek(u"aaa", 6), 1);
  const std::u16string before = t.cells;
  EXPECT_EQ(t.Seek(u"ccc", 6), 0);
  EXPECT_EQ(t.Seek(u"ccc", 3), 0);
  EXPECT_EQ(t.count, 2);
  EXPECT_EQ(t.cells, before);
  EXPECT_EQ(asserts.count(), 2u);
  EXPECT_EQ(t.Seek(u"ccc", 2), 0);  // unknown mode
  EXPECT_EQ(asserts.count(), 3u);
}

TEST(TextSeekString, InsertAtTheFrontMovesEveryRecord) {
  Table t(4);
  t.Seek(u"kkk", 6);
  t.Seek(u"mmm", 6);
  t.Seek(u"zzz", 6);
  EXPECT_EQ(t.Seek(u"aaa", 6), 1);
  EXPECT_EQ(t.Records(), u"aaa|kkk|mmm|zzz");
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
