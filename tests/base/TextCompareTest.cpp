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

TEST(TextCase, LatinOneRangesAsTheyStand) {
  EXPECT_EQ(kw::ToUpper(u'a'), u'A');
  EXPECT_EQ(kw::ToUpper(u'\u00e0'), u'\u00c0');
  EXPECT_EQ(kw::ToUpper(u'\u00fe'), u'\u00de');
  EXPECT_EQ(kw::ToUpper(u'\u00f7'), u'\u00d7');  // division sign becomes multiplication sign
  EXPECT_EQ(kw::ToUpper(u'\u00ff'), u'\u00ff');
  EXPECT_EQ(kw::ToUpper(u'\u00df'), u'\u00df');
  EXPECT_EQ(kw::ToUpper(u'\u0101'), u'\u0101');  // nothing above U+00FF
  EXPECT_EQ(kw::ToLower(u'\u00d7'), u'\u00f7');
  EXPECT_EQ(kw::ToLower(u'\u00de'), u'\u00fe');
  EXPECT_EQ(kw::ToLower(u'\u00df'), u'\u00df');
  EXPECT_EQ(kw::ToCompare(u'x', 1), u'x');
  EXPECT_EQ(kw::ToCompare(u'x', 0), u'X');
}

TEST(TextCase, StringAndBufferRanges) {
  std::u16string s = u"abc\u00e4de";
  kw::ToUpper(s, 1, 4, nullptr);
  EXPECT_EQ(s, u"aBC\u00c4de");
  kw::ToUpper(s, 0, 0, nullptr);
  EXPECT_EQ(s, u"ABC\u00c4DE");
  kw::ToLower(s, 2, 100, nullptr);
  EXPECT_EQ(s, u"ABc\u00e4de");

  char16_t buf[] = u"hello world";
  kw::ToUpper(buf, 6, 0, nullptr);
  EXPECT_EQ(std::u16string(buf), u"hello WORLD");
  kw::ToLower(buf, 0, 7, nullptr);
  EXPECT_EQ(std::u16string(buf), u"hello wORLD");
}

TEST(TextCompare, PrimaryOrderIsCaseBlindAndCaseOnlyBreaksTies) {
  EXPECT_EQ(Cmp(u"a", u"B", 1), -1);
  EXPECT_EQ(Cmp(u"B", u"a", 1), 1);
  EXPECT_EQ(Cmp(u"a", u"A", 1), 1);
  EXPECT_EQ(Cmp(u"A", u"a", 1), -1);
  EXPECT_EQ(Cmp(u"a", u"A", 0), 0);
  EXPECT_EQ(Cmp(u"Abc", u"abd", 1), -1);  // primary difference wins over the earlier case difference
  EXPECT_EQ(Cmp(u"abC", u"Abc", 1), 1);   // first raw difference decides the tie: 'a' > 'A'
  EXPECT_EQ(Cmp(u"abc", u"abcd"), -1);
  EXPECT_EQ(Cmp(u"abcd", u"abc"), 1);
  EXPECT_EQ(Cmp(u"", u""), 0);
  EXPECT_EQ(Cmp(u"", u"a"), -1);
  EXPECT_EQ(Cmp(u"a", u""), 1);
  EXPECT_EQ(Cmp(u"\u0100", u"Z"), 1);  // above Latin-1 by code
}

TEST(TextCompare, UmlautsExpandAndRankAfterTheirExpansion) {
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Mueller"), 1);
  EXPECT_EQ(Cmp(u"Mueller", u"M\u00fcller"), -1);
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Mueller", 1), 1);
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Muellerx"), -1);  // primary: the expansion makes them equal so far
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Mufller"), -1);   // "ue" < "uf"
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Mudller"), 1);
  EXPECT_EQ(Cmp(u"M\u00fcller", u"Muller"), -1);    // "ue" vs "ul": 'E' < 'L'
  EXPECT_EQ(Cmp(u"\u00c4rger", u"Aerger"), 1);
  EXPECT_EQ(Cmp(u"\u00c4rger", u"\u00e4rger", 0), 0);
  EXPECT_EQ(Cmp(u"\u00c4rger", u"\u00e4rger", 1), -1);
  EXPECT_EQ(Cmp(u"\u00f6l", u"Oel", 0), 1);
  EXPECT_EQ(Cmp(u"\u00d6l", u"oel", 1), 1);  // tie from 'Ö' (U+00D6) against 'o' (U+006F)
  // The pending half of an expansion is compared against the other text's next character.
  EXPECT_EQ(Cmp(u"\u00fc", u"u!"), 1);  // 'E' > '!'
  EXPECT_EQ(Cmp(u"\u00fc", u"u"), 1);   // nothing left on either side: the tie-break decides
}

TEST(TextCompare, SharpSIsSz) {
  EXPECT_EQ(Cmp(u"Masse", u"Ma\u00dfe"), -1);
  EXPECT_EQ(Cmp(u"Ma\u00dfe", u"Masse"), 1);
  EXPECT_EQ(Cmp(u"Ma\u00dfe", u"Masze"), 1);  // primary equal, raw 'ß' above 'S'
  EXPECT_EQ(Cmp(u"Masze", u"Ma\u00dfe"), -1);
  EXPECT_EQ(Cmp(u"Ma\u00dfe", u"Mat"), -1);    // 's' < 't'
  EXPECT_EQ(Cmp(u"Ma\u00dfe", u"Masy"), 1);    // pending 'z' > 'y'
}

TEST(TextCompare, UnderscoreIsABlank) {
  EXPECT_EQ(Cmp(u"a_b", u"a b"), 1);  // primary equal; raw '_' (0x5F) above ' '
  EXPECT_EQ(Cmp(u"a b", u"a_b"), -1);
  EXPECT_EQ(Cmp(u"a_b", u"a!b"), -1);  // blank sorts before '!'
  EXPECT_EQ(Cmp(u"a_z", u"a!b"), -1);
  EXPECT_EQ(Cmp(u"a_b", u"aab"), -1);
}

TEST(TextCompare, SkipLeadingBlanks) {
  EXPECT_EQ(Cmp(u"   b", u"a", 0, 0, 1), 1);
  EXPECT_EQ(Cmp(u"   b", u"a", 0, 0, 0), -1);
  EXPECT_EQ(Cmp(u"  abc", u"abc", 0, 0, 1), 0);
  EXPECT_EQ(Cmp(u"\tabc", u"abc", 0, 0, 1), -1);  // only U+0020 is skipped
}

TEST(TextCompare, CountedBuffersStopAtTheirLength) {
  const char16_t* a = u"abcX";
  const char16_t* b = u"abcY";
  EXPECT_EQ(StrCompare(a, 3, b, 3, 0, 0, 0), 0);
  EXPECT_EQ(StrCompare(a, 4, b, 4, 0, 0, 0), -1);
  EXPECT_EQ(StrCompare(a, 0, b, -5, 0, 0, 0), 0);
  EXPECT_EQ(StrCompare(a, 1, b, 0, 0, 0, 0), 1);
}

// A sort with the collation must give a total order consistent with itself.
TEST(TextCompare, IsAntisymmetricAndTransitiveOnAMixedSet) {
  const std::vector<std::u16string> words = {
      u"Mueller", u"M\u00fcller", u"m\u00fcller", u"Muller", u"Masse",  u"Ma\u00dfe", u"Masze",
      u"a b",     u"a_b",         u"A_b",         u"ab",     u"\u00c4", u"Ae",        u"ae",
      u"AE",      u"\u00e4",      u"",            u"_",      u" ",      u"z",         u"Z"};
  for (int cs = 0; cs <= 1; ++cs) {
    for (const auto& x : words)
      for (const auto& y : words) {
        EXPECT_EQ(Cmp(x, y, cs), -Cmp(y, x, cs)) << "cs=" << cs;
        for (const auto& z : words)
          if (Cmp(x, y, cs) <= 0 && Cmp(y, z, cs) <= 0) {
            EXPECT_LE(Cmp(x, z, cs), 0);
          }
      }
  }
}

TEST(TextCompare, NumericModeSortsNumbersFirstAndByValue) {
  EXPECT_EQ(Cmp(u"10", u"9", 0, 1), 1);
  EXPECT_EQ(Cmp(u"10", u"9", 0, 0), -1);  // as text '1' < '9'
  EXPECT_EQ(Cmp(u"-3", u"2", 0, 1), -1);
  EXPECT_EQ(Cmp(u"1,5", u"1.4", 0, 1), 1);  // the comma is a decimal point
  EXPECT_EQ(Cmp(u"12-", u"-11", 0, 1), -1);  // "12-" reads as -12
  EXPECT_EQ(Cmp(u"abc", u"99999", 0, 1), 1);
  EXPECT_EQ(Cmp(u"99999", u"abc", 0, 1), -1);
  EXPECT_EQ(Cmp(u"1 2", u"5", 0, 1), 1);      // a blank inside: not a number
  EXPECT_EQ(Cmp(u"", u"-1", 0, 1), 1);        // empty reads as the number 0
  EXPECT_EQ(Cmp(u"   ", u"0.5", 0, 1), -1);
  EXPECT_EQ(Cmp(u"x", u"", 0, 1), 1);
  // Equal within 1e-7: the text order decides.
  EXPECT_EQ(Cmp(u"1.00000001", u"1", 0, 1), 1);
  EXPECT_EQ(Cmp(u"1", u"1.00000001", 0, 1), -1);
  EXPECT_EQ(Cmp(u"1.0", u"1", 0, 1), 1);
  EXPECT_EQ(Cmp(u"1.0000002", u"1", 0, 1), 1);
  EXPECT_EQ(Cmp(u"0.9999998", u"1", 0, 1), -1);  // by value, though as text "0" < "1" anyway
  EXPECT_EQ(Cmp(u"2.0", u"10", 0, 1), -1);       // as text "2" > "1"
  EXPECT_EQ(Cmp(u"abc", u"abd", 0, 1), -1);       // neither is a number
  // A counted buffer is read only within its length.
  EXPECT_EQ(StrCompare(u"12x", 2, u"9", 1, 0, 1, 0), 1);
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
