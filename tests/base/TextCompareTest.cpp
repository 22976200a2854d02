#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/Text.h"
#include "base/Types.h"
#include "support/TestSupport.h"

using kw::StrCompare;

namespace {

int Cmp(const std::u16string& a, const std::u16string& b, int cs = 0, int numeric = 0, int skip = 0) {
  return StrCompare(a, b, cs, numeric, skip);
}

// The collation written out step by step as the rules state it, without tables or shortcuts;
// the library's fast loop must agree with it on every input.
int ReferenceCompare(const std::u16string& a, const std::u16string& b, int cs, int skip) {
  if (a.empty() && b.empty()) return 0;
  auto upper = [](char16_t c) -> char16_t {
    return ((c >= u'a' && c <= u'z') || (c >= 0xE0 && c <= 0xFE)) ? static_cast<char16_t>(c - 32) : c;
  };
  auto sign = [](char16_t x, char16_t y) { return x < y ? -1 : (x > y ? 1 : 0); };
  struct Stream {
    const std::u16string& s;
    size_t pos = 0;
    char16_t pending = 0;
    bool Exhausted() const { return pos >= s.size() && pending == 0; }
    void Next(char16_t* raw, char16_t* primary) {
      if (pending) {
        *raw = 0;
        *primary = pending;
        pending = 0;
        return;
      }
      *raw = s[pos++];
      *primary = *raw;
      switch (*raw) {
        case u'_': *primary = u' '; break;
        case u'\u00c4': *primary = u'A'; pending = u'E'; break;
        case u'\u00d6': *primary = u'O'; pending = u'E'; break;
        case u'\u00dc': *primary = u'U'; pending = u'E'; break;
        case u'\u00e4': *primary = u'a'; pending = u'e'; break;
        case u'\u00f6': *primary = u'o'; pending = u'e'; break;
        case u'\u00fc': *primary = u'u'; pending = u'e'; break;
        case u'\u00df': *primary = u's'; pending = u'z'; break;
        default: break;
      }
    }
  };
  Stream x{a}, y{b};
  if (skip) {
    while (x.pos < a.size() && a[x.pos] == u' ') ++x.pos;
    while (y.pos < b.size() && b[y.pos] == u' ') ++y.pos;
  }
  int tie = 0;
  while (!x.Exhausted() && !y.Exhausted()) {
    char16_t ra, pa, rb, pb;
    x.Next(&ra, &pa);
    y.Next(&rb, &pb);
    if (tie == 0 && ra != 0 && rb != 0) tie = cs ? sign(ra, rb) : sign(upper(ra), upper(rb));
    if (cs && tie == 0) tie = sign(pa, pb);
    if (upper(pa) != upper(pb)) return upper(pa) < upper(pb) ? -1 : 1;
  }
  const size_t leftA = a.size() - x.pos, leftB = b.size() - y.pos;
  if (leftA != leftB) return leftA > leftB ? 1 : -1;
  return tie;
}

}  // namespace

TEST(TextCompare, AgreesWithTheRulesStepByStepOnRandomTexts) {
  const std::u16string alphabet = u"aAuUeEsSzZ_ !\u00e4\u00c4\u00fc\u00dc\u00f6\u00d6\u00df\u00ff\u0101";
  std::mt19937 rng(20261123);
  auto randomText = [&] {
    std::u16string s(rng() % 7, u' ');
    for (auto& c : s) c = alphabet[rng() % alphabet.size()];
    return s;
  };
  for (int i = 0; i < 40000; ++i) {
    std::u16string a = randomText(), b = randomText();
    if (i % 3 == 0) b = a.substr(0, rng() % (a.size() + 1)) + b;  // long common prefixes
    const int cs = i & 1, skip = (i >> 1) & 1;
    ASSERT_EQ(Cmp(a, b, cs, 0, skip), ReferenceCompare(a, b, cs, skip))
        << kw::ToUtf8(a) << " | " << kw::ToUtf8(b) << " cs=" << cs << " skip=" << skip;
  }
}

TEST(TextCase, LatinOneRangesAsTheyStandAndRanges) {
  const char16_t upper[][2] = {{u'a', u'A'}, {u'\u00e0', u'\u00c0'}, {u'\u00fe', u'\u00de'},
                               {u'\u00f7', u'\u00d7'},  // division sign becomes multiplication sign
                               {u'\u00ff', u'\u00ff'}, {u'\u00df', u'\u00df'}, {u'\u0101', u'\u0101'}};
  for (const auto& pair : upper) {
    EXPECT_EQ(kw::ToUpper(pair[0]), pair[1]) << int(pair[0]);
    EXPECT_EQ(kw::ToLower(pair[1]), pair[0] == u'\u00ff' || pair[0] == u'\u00df' ? pair[1] : pair[0]) << int(pair[1]);
  }
  EXPECT_EQ(kw::ToCompare(u'x', 1), u'x');
  EXPECT_EQ(kw::ToCompare(u'x', 0), u'X');
  std::u16string s = u"abc\u00e4de";
  kw::ToUpper(s, 1, 4, nullptr);
  EXPECT_EQ(s, u"aBC\u00c4de");
  kw::ToLower(s, 2, 100, nullptr);  // a range beyond the end stops there; 0 means to the end
  EXPECT_EQ(s, u"aBc\u00e4de");
  char16_t buf[] = u"hello world";
  kw::ToUpper(buf, 6, 0, nullptr);
  EXPECT_EQ(std::u16string(buf), u"hello WORLD");
}

// The documented orders, one row each: a, b, case tie-break, numeric, skip blanks, StrCompare(a, b).
// Each pair appears in one direction; the differential test above covers the mirror images.
TEST(TextCompare, DocumentedOrders) {
  struct Row {
    const char16_t* a;
    const char16_t* b;
    int cs, numeric, skip, expected;
  };
  const Row rows[] = {
      // Primary order is case-blind; case only breaks ties, from the first raw difference.
      {u"a", u"B", 1, 0, 0, -1}, {u"a", u"A", 1, 0, 0, 1}, {u"a", u"A", 0, 0, 0, 0},
      {u"Abc", u"abd", 1, 0, 0, -1}, {u"abC", u"Abc", 1, 0, 0, 1},
      {u"abc", u"abcd", 0, 0, 0, -1}, {u"", u"", 0, 0, 0, 0}, {u"", u"a", 0, 0, 0, -1},
      {u"\u0100", u"Z", 0, 0, 0, 1},  // above Latin-1 by code
      // Umlauts expand and, raw, rank after their expansion.
      {u"M\u00fcller", u"Mueller", 0, 0, 0, 1}, {u"M\u00fcller", u"Mueller", 1, 0, 0, 1},
      {u"M\u00fcller", u"Muellerx", 0, 0, 0, -1}, {u"M\u00fcller", u"Mufller", 0, 0, 0, -1},
      {u"M\u00fcller", u"Muller", 0, 0, 0, -1},  // "ue" vs "ul"
      {u"\u00c4rger", u"\u00e4rger", 0, 0, 0, 0}, {u"\u00c4rger", u"\u00e4rger", 1, 0, 0, -1},
      {u"\u00d6l", u"oel", 1, 0, 0, 1},  // tie from U+00D6 against 'o'
      {u"\u00fc", u"u!", 0, 0, 0, 1},   // the pending 'E' against the other text's next character
      {u"\u00fc", u"u", 0, 0, 0, 1},    // nothing left on either side: the tie-break decides
      // Sharp s is "sz".
      {u"Masse", u"Ma\u00dfe", 0, 0, 0, -1}, {u"Ma\u00dfe", u"Masze", 0, 0, 0, 1},
      {u"Ma\u00dfe", u"Mat", 0, 0, 0, -1}, {u"Ma\u00dfe", u"Masy", 0, 0, 0, 1},
      // "_" is a blank, raw above ' '; a blank sorts before '!'.
      {u"a_b", u"a b", 0, 0, 0, 1}, {u"a_z", u"a!b", 0, 0, 0, -1}, {u"a_b", u"aab", 0, 0, 0, -1},
      // Only U+0020 is skipped as a leading blank.
      {u"   b", u"a", 0, 0, 1, 1}, {u"   b", u"a", 0, 0, 0, -1}, {u"  abc", u"abc", 0, 0, 1, 0},
      {u"\tabc", u"abc", 0, 0, 1, -1},
      // Numeric mode: numbers first and by value ("12-" is -12, the comma a point, empty is 0) ...
      {u"10", u"9", 0, 1, 0, 1}, {u"10", u"9", 0, 0, 0, -1}, {u"-3", u"2", 0, 1, 0, -1},
      {u"1,5", u"1.4", 0, 1, 0, 1}, {u"12-", u"-11", 0, 1, 0, -1}, {u"abc", u"99999", 0, 1, 0, 1},
      {u"1 2", u"5", 0, 1, 0, 1}, {u"", u"-1", 0, 1, 0, 1}, {u"   ", u"0.5", 0, 1, 0, -1},
      {u"x", u"", 0, 1, 0, 1}, {u"abc", u"abd", 0, 1, 0, -1},
      // ... and equal within 1e-7 leaves it to the text.
      {u"1.00000001", u"1", 0, 1, 0, 1}, {u"1", u"1.00000001", 0, 1, 0, -1}, {u"1.0000002", u"1", 0, 1, 0, 1},
      {u"0.9999998", u"1", 0, 1, 0, -1}, {u"2.0", u"10", 0, 1, 0, -1},
  };
  for (const Row& r : rows)
    EXPECT_EQ(Cmp(r.a, r.b, r.cs, r.numeric, r.skip), r.expected)
        << kw::ToUtf8(r.a) << " | " << kw::ToUtf8(r.b) << " cs=" << r.cs << " numeric=" << r.numeric
        << " skip=" << r.skip;
  // A counted buffer is read only within its length.
  EXPECT_EQ(StrCompare(u"12x", 2, u"9", 1, 0, 1, 0), 1);
}

TEST(TextCompare, CountedBuffersStopAtTheirLength) {
  const char16_t* a = u"abcX";
  const char16_t* b = u"abcY";
  EXPECT_EQ(StrCompare(a, 3, b, 3, 0, 0, 0), 0);
  EXPECT_EQ(StrCompare(a, 4, b, 4, 0, 0, 0), -1);
  EXPECT_EQ(StrCompare(a, 0, b, -5, 0, 0, 0), 0);
  EXPECT_EQ(StrCompare(a, 1, b, 0, 0, 0, 0), 1);
}

TEST(TextCase, OemCodePageRefusesCapitalsItCannotHold) {
  int oem = kw::kEncodingOem, ansi = kw::kEncodingAnsi;
  EXPECT_EQ(kw::ToUpper(u'\u00e4', &oem), u'\u00c4');  // both in code page 437
  EXPECT_EQ(kw::ToUpper(u'\u00e0', &oem), u'\u00e0');  // no capital A grave in 437
  EXPECT_EQ(kw::ToUpper(u'\u00e0', &ansi), u'\u00c0');
  EXPECT_EQ(kw::ToUpper(u'q', &oem), u'Q');
  EXPECT_EQ(kw::ToLower(u'\u00c3', &oem), u'\u00c3');  // no small a tilde in 437
  EXPECT_EQ(kw::ToLower(u'\u00ca', &oem), u'\u00ea');
  std::u16string s = u"\u00e0\u00e4b";
  kw::ToUpper(s, 0, 0, &oem);
  EXPECT_EQ(s, u"\u00e0\u00c4B");
}
