#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/Text.h"
#include "support/TestSupport.h"

using kw::LimitText;

namespace {

// The field as text, or "<none>" when LimitText reports it absent (range then must be untouched).
std::u16string Field(const char16_t* text, const char16_t* delims, int64_t field, int exact, char16_t quote = 0) {
  int64_t range[2] = {-7, -7};
  if (!LimitText(text, delims, field, range, exact, quote)) {
    EXPECT_EQ(range[0], -7);
    EXPECT_EQ(range[1], -7);
    return u"<none>";
  }
  return std::u16string(text + range[0], static_cast<size_t>(range[1] - range[0]));
}

}  // namespace

TEST(TextLimitText, ColumnsWordsAndQuotes) {
  struct Row {
    const char16_t* text;
    const char16_t* delims;
    int64_t field;
    int exact;
    char16_t quote;
    const char16_t* expected;
  };
  const Row rows[] = {
      // Column mode counts empty fields; after the last delimiter there is always one more.
      {u"a;;b", u";", 0, 1, 0, u"a"},    {u"a;;b", u";", 2, 1, 0, u"b"},      {u"a;;b", u";", 3, 1, 0, u"<none>"},
      {u"a;b;", u";", 2, 1, 0, u""},     {u"", u";", 0, 1, 0, u""},           {u"", u";", 1, 1, 0, u"<none>"},
      {u";x", u";", 0, 1, 0, u""},       {u"a,b;c", u";,", 2, 1, 0, u"c"},
      // Word mode skips runs of delimiters.
      {u"  one   two ", u" ", 0, 0, 0, u"one"}, {u"  one   two ", u" ", 1, 0, 0, u"two"},
      {u"  one   two ", u" ", 2, 0, 0, u"<none>"}, {u"", u" ", 0, 0, 0, u"<none>"}, {u" \t ", u" \t", 0, 0, 0, u"<none>"},
      // Quotes hide delimiters and stay in the field; an open quote runs to the end.
      {u"a;\"b;c\";d", u";", 1, 1, u'"', u"\"b;c\""}, {u"a;\"b;c\";d", u";", 2, 1, u'"', u"d"},
      {u"a;\"b;c\";d", u";", 2, 1, 0, u"c\""},  // quoting off
      {u"x  'a b'  y", u" ", 1, 0, u'\'', u"'a b'"}, {u"x  'a b'  y", u" ", 2, 0, u'\'', u"y"},
      {u"x 'a b", u" ", 1, 0, u'\'', u"'a b"},       {u"x 'a b", u" ", 2, 0, u'\'', u"<none>"},
  };
  for (const Row& r : rows)
    EXPECT_EQ(Field(r.text, r.delims, r.field, r.exact, r.quote), r.expected)
        << kw::ToUtf8(r.text) << " field " << r.field << " exact " << r.exact;
  // Where an empty field stands, and where a word mode field starts.
  int64_t range[2] = {0, 0};
  EXPECT_EQ(LimitText(u"a;;b", u";", 1, range, 1, 0), 1);
  EXPECT_EQ(std::vector<int64_t>(range, range + 2), (std::vector<int64_t>{2, 2}));
  EXPECT_EQ(LimitText(u"a;;b", u";", 1, range, 0, 0), 1);
  EXPECT_EQ(std::vector<int64_t>(range, range + 2), (std::vector<int64_t>{3, 4}));

  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(Field(u"a;b", u";", 1, 1, u';'), u"b");  // a quote that is a delimiter: quoting off
  EXPECT_EQ(asserts.count(), 1u);
  EXPECT_EQ(Field(u"a;b", u";", -1, 1), u"<none>");
  EXPECT_EQ(asserts.count(), 2u);
}

TEST(TextDelimiters, CountsOutsideQuotesAndGuessesTheDelimiter) {
  EXPECT_EQ(kw::StrCountOf(u"a;b;\"c;d\";e", u';', u'"'), 3);
  EXPECT_EQ(kw::StrCountOf(u"a;b;\"c;d\";e", u';', 0), 4);
  EXPECT_EQ(kw::StrCountOf(u"", u';', 0), 0);
  EXPECT_EQ(kw::StrDelimOf(u"a,b;c", u"\t;,", 0), u';');
  EXPECT_EQ(kw::StrDelimOf(u"a,b;c", u"\t,;", 0), u',');
  EXPECT_EQ(kw::StrDelimOf(u"\"a;b\",c", u"\t;,", u'"'), u',');
  EXPECT_EQ(kw::StrDelimOf(u"abc", u"\t;,", 0), 0);
}

TEST(TextFindChar, FromAStartPosition) {
  EXPECT_EQ(kw::FindChar(u"abcabc", u'b', 0), 1u);
  EXPECT_EQ(kw::FindChar(u"abcabc", u'b', 2), 4u);
  EXPECT_EQ(kw::FindChar(u"abc", u'a', 10), std::u16string::npos);
  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(kw::FindChar(u"abc", u'a', -1), std::u16string::npos);
  EXPECT_EQ(asserts.count(), 1u);
}

TEST(TextSeekStart, FirstDigitPositionOfAPicture) {
  EXPECT_EQ(kw::SeekStart(u"Sum: ###.##", 100), 5);
  EXPECT_EQ(kw::SeekStart(u"x*#", 100), 1);
  EXPECT_EQ(kw::SeekStart(u"ab#", 2), -1);  // beyond max
  EXPECT_EQ(kw::SeekStart(u"abc", 100), -1);
  EXPECT_EQ(kw::SeekStart(u"ab\0#", 100), -1);  // the zero ends the picture
}

TEST(TextMenu, RemoveAmpersAnd) {
  EXPECT_EQ(kw::RemoveAmpersAnd(u"Save && &Exit\tCtrl+&Q", 0), u"Save  Exit\tCtrl+Q");
  EXPECT_EQ(kw::RemoveAmpersAnd(u"Save && &Exit\tCtrl+&Q", 1), u"Save  Exit");
}

TEST(TextParts, ReadAndReplaceParts) {
  const std::u16string parts[] = {u"a", u"bb", u"", u"d", u""};  // the fifth is beyond the end
  for (int i = 0; i < 5; ++i) EXPECT_EQ(kw::StrPart(u"a|bb||d", i, u'|'), parts[i]) << i;
  EXPECT_EQ(kw::StrPart(u"", 0, u'|'), u"");

  std::u16string s = u"a|bb||d";
  EXPECT_EQ(kw::StrSetPart(s, 1, u'|', u"X"), 1);
  EXPECT_EQ(s, u"a|X||d");
  kw::StrSetPart(s, 0, u'|', u"");
  EXPECT_EQ(s, u"|X||d");
  kw::StrSetPart(s, 3, u'|', u"last");
  EXPECT_EQ(s, u"|X||last");
  kw::StrSetPart(s, 6, u'|', u"far");
  EXPECT_EQ(s, u"|X||last|||far");
  EXPECT_EQ(kw::StrPart(s, 6, u'|'), u"far");
  std::u16string e;
  kw::StrSetPart(e, 2, u';', u"z");
  EXPECT_EQ(e, u";;z");

  kwtest::AssertionRecorder asserts;
  EXPECT_EQ(kw::StrSetPart(e, -1, u';', u"z"), 0);
  EXPECT_EQ(e, u";;z");
  EXPECT_EQ(kw::StrPart(e, -1, u';'), u"");
  EXPECT_EQ(asserts.count(), 2u);
}

TEST(TextIncrementName, TrailingNumberKeepsItsWidthAndCarries) {
  struct Row {
    const char16_t* before;
    const char16_t* after;
    int result;
  };
  const Row rows[] = {{u"Plan009", u"Plan010", 1}, {u"A99", u"A100", 1}, {u"Plan", u"Plan1", 0},
                      {u"", u"1", 0},              {u"7", u"8", 1},       {u"x0999", u"x1000", 1},
                      {u"v2.9", u"v2.10", 1},      {u"Copy 1a", u"Copy 1a1", 0}};
  for (const Row& r : rows) {
    std::u16string name = r.before;
    EXPECT_EQ(kw::IncrementName(name), r.result);
    EXPECT_EQ(name, r.after);
  }
}
