// The literal search kernel (vector and portable) against a naive search, and the document searches
// built on it: matches straddling chunk borders, slices, the lead of a wildcard text.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/Text.h"
#include "editor/KwEditBase.h"
#include "editor/EditTestSupport.h"
#include "editor/KwEditBaseFindScan.h"

namespace {

using kw::KwEditBase;
using kwtest::ModelAll;
using kw::findscan::Literal;

std::u16string Upper(std::u16string s) {
  for (char16_t& u : s) u = kw::ToUpper(u);
  return s;
}

// The first match searching forwards, or backwards; -1 when there is none.
int64_t NaiveFirst(const std::u16string& text, const std::u16string& pat, bool matchCase, bool forward = true) {
  const auto all = ModelAll(text, pat, matchCase, forward);
  return all.empty() ? -1 : all.front();
}

int64_t NaiveLast(const std::u16string& text, const std::u16string& pat, bool matchCase) {
  return NaiveFirst(text, pat, matchCase, false);
}

// Units that test the case forms (umlauts, sharp s, the pair U+00F7 / U+00D7), low-byte collisions of
// the portable kernel's shift table (U+0161, U+0141 share their low bytes with "a" and "A") and ends
// of line.
const std::u16string kAlphabet = u"aAbBxäÄßöÖ\u00F7\u00D7\u0161\u0141 \r\n";

std::u16string RandomText(std::mt19937& rng, size_t n, size_t letters = kAlphabet.size()) {
  std::u16string t;
  for (size_t i = 0; i < n; ++i) t += kAlphabet[rng() % letters];
  return t;
}

// `lines` lines of random length below `longest`, each with CR LF.
std::u16string RandomLines(std::mt19937& rng, int lines, unsigned longest, size_t letters) {
  std::u16string t;
  for (int l = 0; l < lines; ++l) t += RandomText(rng, rng() % longest, letters) + u"\r\n";
  return t;
}

// A pattern taken from the text (so that it occurs) with the case of some units flipped, or random.
std::u16string RandomPattern(std::mt19937& rng, const std::u16string& text, size_t m) {
  std::u16string p;
  if (text.size() >= m && rng() % 3 != 0) {
    p = text.substr(rng() % (text.size() - m + 1), m);
    for (char16_t& u : p)
      if (rng() % 2) u = kw::ToUpper(u) == u ? kw::ToLower(u) : kw::ToUpper(u);
  } else {
    p = RandomText(rng, m, 4);
  }
  return p;
}

// The kernels this build and processor can run; each test runs all of them.
std::vector<Literal::Kernel> Kernels() {
  std::vector<Literal::Kernel> out;
  for (const Literal::Kernel k : {Literal::Kernel::kScalar, Literal::Kernel::kSse2, Literal::Kernel::kAvx2})
    if (Literal::Available(k)) out.push_back(k);
  return out;
}

TEST(FindKernel, EveryKernelAgreesWithNaiveSearch) {
  std::mt19937 rng(11);
  int vectored = 0;
  for (int round = 0; round < 3000; ++round) {
    const size_t lengths[] = {1, 2, 3, 16, 17, 1 + rng() % 40};
    const size_t m = lengths[round % 6];
    const std::u16string text = RandomText(rng, rng() % 200, round % 2 ? 4 : kAlphabet.size());
    const std::u16string pat = RandomPattern(rng, text, m);
    for (int matchCase = 0; matchCase <= 1; ++matchCase) {
      Literal lit;
      lit.Prepare(matchCase ? pat : Upper(pat), matchCase != 0);
      vectored += lit.Vectored();
      const auto n = static_cast<int64_t>(text.size());
      const int64_t first = NaiveFirst(text, pat, matchCase), last = NaiveLast(text, pat, matchCase);
      // A window inside the text: occurrences must lie wholly inside it.
      const size_t from = n ? rng() % text.size() : 0;
      const std::u16string part = text.substr(from, rng() % (text.size() - from + 1));
      const auto k = static_cast<int64_t>(part.size());
      const int64_t partFirst = NaiveFirst(part, pat, matchCase), partLast = NaiveLast(part, pat, matchCase);
      for (const Literal::Kernel kernel : Kernels()) {
        SCOPED_TRACE(testing::Message() << "round " << round << " m " << m << " case " << matchCase << " kernel "
                                        << static_cast<int>(kernel));
        EXPECT_EQ(lit.FindFirst(text.data(), n, kernel), first);
        EXPECT_EQ(lit.FindLast(text.data(), n, kernel), last);
        EXPECT_EQ(lit.FindFirst(text.data() + from, k, kernel), partFirst);
        EXPECT_EQ(lit.FindLast(text.data() + from, k, kernel), partLast);
      }
    }
  }
#if defined(__SSE2__)
  EXPECT_GT(vectored, 5000);  // the vector kernels really ran
  EXPECT_GE(Kernels().size(), 2u);
#else
  EXPECT_EQ(vectored, 0);
#endif
}

TEST(FindKernel, CaseFormsUmlautsAndSharpS) {
  // Hits far apart so that the vector kernel's blocks of 32 candidates run, not only its tail.
  const std::u16string gap(100, u'.');
  const std::u16string text = gap + u"STRASSE" + gap + u"Straße" + gap + u"ÄPFEL äpfel" + gap + u"x\u00F7y";
  struct Row {
    std::u16string pattern;
    int matchCase;
    int64_t first, last;
  } rows[] = {
      {u"straße", 0, 207, 207},  // sharp s has no upper form: "SS" does not match it
      {u"STRAßE", 1, -1, -1},
      {u"äpfel", 0, 313, 319},
      {u"äpfel", 1, 319, 319},
      {u"ÄPFEL", 1, 313, 313},
      {u"X\u00D7Y", 0, 424, 424},  // U+00F7 upper-cases to U+00D7
      {u"x\u00D7y", 1, -1, -1},
      {u".", 1, 0, 423},
      {u"....", 1, 0, 420},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(r.first, NaiveFirst(text, r.pattern, r.matchCase));  // the table itself is right
    EXPECT_EQ(r.last, NaiveLast(text, r.pattern, r.matchCase));
    Literal lit;
    lit.Prepare(r.matchCase ? r.pattern : Upper(r.pattern), r.matchCase != 0);
    const auto n = static_cast<int64_t>(text.size());
    for (const Literal::Kernel kernel : Kernels()) {
      SCOPED_TRACE(testing::Message() << std::string(r.pattern.begin(), r.pattern.end()) << " kernel "
                                      << static_cast<int>(kernel));
      EXPECT_EQ(lit.FindFirst(text.data(), n, kernel), r.first);
      EXPECT_EQ(lit.FindLast(text.data(), n, kernel), r.last);
    }
  }
}

std::vector<int64_t> Collect(KwEditBase& doc, kw::Index at, const std::u16string& pat, int forward, int matchCase,
                             int marked = 0, int wild = 0, int fixSel = 0) {
  int64_t column = 0, length = 0;
  int64_t line = doc.LineFromIndex(at, &column);
  std::vector<int64_t> positions;
  const auto end = static_cast<int64_t>(pat.size());
  doc.FindTextW(&line, &column, pat.data(), &end, 1, forward, matchCase, fixSel, marked, wild, &length, &positions);
  return positions;
}

TEST(FindKernel, StreamSearchAcrossChunkBordersBothDirections) {
  std::mt19937 rng(23);
  for (int round = 0; round < 60; ++round) {
    // Runs of "a" make many overlapping candidates; long patterns span several tiny chunks.
    std::u16string text = RandomText(rng, 400 + rng() % 600, round % 3 ? 6 : kAlphabet.size());
    KwEditBase doc;
    kwtest::FillDoc(doc, text, 3 + round % 20);
    // More text appended in pieces leaves chunks of uneven fill.
    for (int k = 0; k < 3; ++k) {
      const std::u16string more = RandomText(rng, rng() % 50, 6);
      doc.AddText(more, 0, 0);
      text += more;
    }
    ASSERT_EQ(doc.GetAllText(), text);
    ASSERT_GT(doc.GetChunkCount(), 10);
    const size_t lengths[] = {1, 2, 3, 16, 17};
    for (const size_t m : lengths) {
      const std::u16string pat = RandomPattern(rng, text, m);
      for (int matchCase = 0; matchCase <= 1; ++matchCase) {
        SCOPED_TRACE(testing::Message() << "round " << round << " m " << m << " case " << matchCase);
        const auto n = static_cast<int64_t>(text.size());
        EXPECT_EQ(Collect(doc, 0, pat, 1, matchCase), ModelAll(text, pat, matchCase, true));
        EXPECT_EQ(Collect(doc, n, pat, 0, matchCase), ModelAll(text, pat, matchCase, false));
        // From a position that is not a line start; the model starts where the document puts it.
        int64_t col = 0;
        const int64_t line = doc.LineFromIndex(rng() % (n + 1), &col);
        const kw::Index from = doc.LineStart(line) + col;
        for (const int forward : {1, 0}) {
          const auto want = forward ? ModelAll(text, pat, matchCase, true, from) : ModelAll(text, pat, matchCase, false, 0, from);
          EXPECT_EQ(Collect(doc, from, pat, forward, matchCase), want);
          // A single find from there stops at the first of them, given as line and column.
          int64_t l = line, c = col, length = 0;
          const auto end = static_cast<int64_t>(pat.size());
          const int64_t r = doc.FindTextW(&l, &c, pat.data(), &end, 1, forward, matchCase, 0, 0, 0, &length);
          EXPECT_EQ(r < 0 ? -1 : doc.LineStart(l) + c, want.empty() ? -1 : want.front()) << "forward " << forward;
        }
      }
    }
  }
}

TEST(FindKernel, StreamSearchInsideTheFixSelection) {
  std::mt19937 rng(5);
  const std::u16string text = RandomText(rng, 3000, 4) + u"\r\n" + RandomText(rng, 3000, 4);
  KwEditBase doc;
  kwtest::FillDoc(doc, text, 7);
  for (int round = 0; round < 40; ++round) {
    int64_t c1 = 0, c2 = 0;
    const int64_t l1 = doc.LineFromIndex(rng() % text.size(), &c1);
    const int64_t l2 = doc.LineFromIndex(rng() % text.size(), &c2);
    doc.SetStickSelection(1, l1, c1, l2, c2);
    int64_t lo = doc.LineStart(l1) + c1, hi = doc.LineStart(l2) + c2;
    if (lo > hi) std::swap(lo, hi);
    const std::u16string pat = RandomPattern(rng, text, 1 + round % 4);
    for (int forward = 0; forward <= 1; ++forward) {
      int64_t line = forward ? 0 : 1, column = forward ? 0 : 5000, length = 0;
      std::vector<int64_t> positions;
      const auto end = static_cast<int64_t>(pat.size());
      doc.FindTextW(&line, &column, pat.data(), &end, 1, forward, 0, 1, 0, 0, &length, &positions);
      EXPECT_EQ(positions, ModelAll(text, pat, false, forward != 0, lo, hi)) << round;
    }
  }
}

// Wildcard matches of one line by FindJoker at every position, without overlap.
std::vector<int64_t> JokerModel(KwEditBase& doc, const std::u16string& pat, bool matchCase) {
  std::vector<int64_t> out;
  for (int64_t l = 0; l <= doc.GetLinesInDoc(); ++l) {
    const std::u16string line = doc.GetLineText(l);
    for (size_t p = 0; p < line.size();) {
      const int64_t len = KwEditBase::FindJoker(pat.data(), static_cast<int64_t>(pat.size()), line.data() + p,
                                                static_cast<int64_t>(line.size() - p), matchCase);
      if (len > 0) {
        out.push_back(doc.LineStart(l) + static_cast<int64_t>(p));
        p += static_cast<size_t>(len);
      } else {
        ++p;
      }
    }
  }
  return out;
}

TEST(FindKernel, LineSearchUsesTheLeadOfLiteralsAndWildcards) {
  std::mt19937 rng(9);
  const std::u16string text = RandomLines(rng, 60, 120, 6);
  KwEditBase doc;
  kwtest::FillDoc(doc, text, 64);
  // A column fix selection over every line and column: the line search runs for literals too.
  doc.SetStickSelection(2, 0, 0, doc.GetLinesInDoc(), 1000);
  const auto n = static_cast<int64_t>(text.size());
  for (int round = 0; round < 40; ++round) {
    const std::u16string lit = RandomPattern(rng, text, 1 + round % 5);
    if (lit.find_first_of(u"\r\n") != std::u16string::npos) continue;  // the line search stops at line ends
    for (int matchCase = 0; matchCase <= 1; ++matchCase) {
      EXPECT_EQ(Collect(doc, 0, lit, 1, matchCase, 0, 0, 1), ModelAll(text, lit, matchCase, true)) << round;
      EXPECT_EQ(Collect(doc, n, lit, 0, matchCase, 0, 0, 1), ModelAll(text, lit, matchCase, false)) << round;
    }
  }
  doc.UnstickSelection();
  doc.InvertLineMark();  // all lines marked
  // The lead is what comes before the first wildcard, leading "*" skipped.
  for (const std::u16string pat : {u"aB?b", u"*ab*b", u"a?", u"bA*a*B", u"?a", u"**b"}) {
    for (int matchCase = 0; matchCase <= 1; ++matchCase) {
      const std::vector<int64_t> want = JokerModel(doc, pat, matchCase != 0);
      EXPECT_FALSE(want.empty());
      EXPECT_EQ(Collect(doc, 0, pat, 1, matchCase, 1, 1), want) << std::string(pat.begin(), pat.end());
      EXPECT_EQ(Collect(doc, 0, pat, 1, matchCase, 0, 1), want) << std::string(pat.begin(), pat.end());
    }
  }
}

TEST(FindKernel, MarkedLinesPassOverUnmarkedOnes) {
  std::mt19937 rng(31);
  const std::u16string text = RandomLines(rng, 200, 60, 5);
  KwEditBase doc;
  kwtest::FillDoc(doc, text, 16);
  for (int64_t l = 0; l <= doc.GetLinesInDoc(); ++l) doc.SetLineMark(l, rng() % 4 == 0);
  const auto n = static_cast<int64_t>(text.size());
  auto marked = [&](std::vector<int64_t> all) {
    std::vector<int64_t> out;
    for (const int64_t p : all)
      if (doc.GetLineMark(doc.LineFromIndex(p, nullptr))) out.push_back(p);
    return out;
  };
  for (int round = 0; round < 60; ++round) {
    const std::u16string lit = RandomPattern(rng, text, 1 + round % 4);
    const int matchCase = round % 2;
    const int64_t from = rng() % (n + 1);
    int64_t col = 0;
    const kw::Index at = doc.LineStart(doc.LineFromIndex(from, &col)) + col;
    if (lit.find_first_of(u"\r\n") != std::u16string::npos) {
      EXPECT_TRUE(Collect(doc, 0, lit, 1, matchCase, 1).empty());  // never across a line end
      continue;
    }
    SCOPED_TRACE(testing::Message() << "round " << round << " from " << at);
    EXPECT_EQ(Collect(doc, 0, lit, 1, matchCase, 1), marked(ModelAll(text, lit, matchCase, true)));
    EXPECT_EQ(Collect(doc, n, lit, 0, matchCase, 1), marked(ModelAll(text, lit, matchCase, false)));
    EXPECT_EQ(Collect(doc, at, lit, 1, matchCase, 1), marked(ModelAll(text, lit, matchCase, true, at)));
    EXPECT_EQ(Collect(doc, at, lit, 0, matchCase, 1), marked(ModelAll(text, lit, matchCase, false, 0, at)));
  }
}

}  // namespace
