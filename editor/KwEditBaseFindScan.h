// The search texts of one find or replace request, prepared once: upper-cased when the case does not
// count, with the units that can start or end a match, and the tight loops that look for those units
// in a run of text. Used only by the find and replace operations of KwEditBase.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__SSE2__) && defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define KW_FIND_AVX2 1
#else
#define KW_FIND_AVX2 0
#endif

namespace kw::findscan {

// ToUpper of every unit, built once. Case-blind comparison is one table load per unit.
const char16_t* UpperTable();

// The units that upper-case to `key` (its forms when the case does not count): `*count` of them at the
// returned address. Built once for all units.
const char16_t* FormsOf(char16_t key, int* count);

// One literal search text and the kernel that finds it in a run of units. Two units of the text (the
// pair: normally its first and its last) are compared at once for 32 candidate positions with vector
// code, and only where both agree is the whole text compared. When the case does not count, a pair
// unit stands for all its forms; two forms that differ in one bit (as every upper/lower pair does)
// are compared as one by setting that bit in the text unit first. A text without such a pair, and
// builds without SSE2, use the portable kernel: Horspool with a 256-entry shift table on the low byte.
// On x86-64 built with GCC or Clang the vector kernel runs with 256-bit vectors when the processor has
// AVX2 (checked at run time; the build itself assumes SSE2 only).
class Literal {
 public:
  enum class Kernel { kScalar, kSse2, kAvx2, kBest };
  // Whether this build and processor can run the kernel.
  static bool Available(Kernel kernel);

  // `text` as compared: already upper-cased when the case does not count. An empty text never matches.
  void Prepare(const std::u16string& text, bool matchCase);
  int64_t Size() const { return static_cast<int64_t>(text_.size()); }
  const char16_t* Data() const { return text_.data(); }
  bool Vectored() const { return vector_; }
  // Start of the first (FindFirst) or the last (FindLast) occurrence lying wholly inside p[0, n); -1
  // when there is none.
  // `kernel` chooses the code (tests run each one); one that is not available, or a vector kernel for a
  // text without a usable pair, falls back to the portable one.
  int64_t FindFirst(const char16_t* p, int64_t n, Kernel kernel = Kernel::kBest) const;
  int64_t FindLast(const char16_t* p, int64_t n, Kernel kernel = Kernel::kBest) const;
  // Whether the whole text lies at p (Size() units readable).
  bool Same(const char16_t* p) const;

 private:
  // Whether both pair units agree at p: the vector kernels' test for one candidate.
  bool PairAt(const char16_t* p) const {
    return static_cast<char16_t>(p[a_] | aBit_) == aKey_ && static_cast<char16_t>(p[b_] | bBit_) == bKey_;
  }
  template <bool Blind>
  int64_t FirstHorspool(const char16_t* p, int64_t n) const;
  template <bool Blind>
  int64_t LastHorspool(const char16_t* p, int64_t n) const;
#if defined(__SSE2__)
  template <bool Fold>
  int64_t FirstVector(const char16_t* p, int64_t n) const;
  template <bool Fold>
  int64_t LastVector(const char16_t* p, int64_t n) const;
#endif
#if KW_FIND_AVX2
  template <bool Fold>
  int64_t FirstAvx2(const char16_t* p, int64_t n) const;
  template <bool Fold>
  int64_t LastAvx2(const char16_t* p, int64_t n) const;
#endif
  Kernel Choose(Kernel kernel, int64_t n) const;

  std::u16string text_;
  bool matchCase_ = true;
  bool vector_ = false;
  bool fold_ = false;                 // some pair unit has two forms
  int64_t a_ = 0, b_ = 0;             // offsets of the pair, a_ <= b_
  char16_t aKey_ = 0, aBit_ = 0;      // a unit u is a form of text_[a_] when (u | aBit_) == aKey_
  char16_t bKey_ = 0, bBit_ = 0;
  // Horspool: how far the window may move for the low byte of the unit under the text's last unit
  // (forwards) or under its first unit (backwards).
  uint16_t nextShift_[256] = {};
  uint16_t backShift_[256] = {};
};

// A set of units looked for: up to four are compared directly (vector code), more through a bit map.
class UnitSet {
 public:
  void Add(char16_t u);
  bool Contains(char16_t u) const { return (bits_[u >> 6] >> (u & 63)) & 1; }
  // Offset of the first unit of the set in p[0, n), or n.
  int64_t FindFirst(const char16_t* p, int64_t n) const;
  // Offset of the last unit of the set in p[0, n), or -1.
  int64_t FindLast(const char16_t* p, int64_t n) const;

 private:
  std::vector<char16_t> units_;
  std::vector<uint64_t> bits_ = std::vector<uint64_t>(1024, 0);
};

// The alternatives of a request.
struct Patterns {
  std::vector<std::u16string> texts;  // as compared: upper-cased unless matchCase
  bool matchCase = true;
  bool wildcards = false;             // at least one text holds "?" or "*" and wildcards were asked for
  int64_t shortest = 0, longest = 0;
  UnitSet first;                      // units of the text that can start a literal match
  UnitSet last;                       // units that can end one
  // With one alternative: its literal start (the whole text, or with wildcards the units before the
  // first "?" or "*", leading "*" skipped), which every match begins with; empty when there is none.
  Literal lead;

  // `texts` with cumulative `ends`, `count` alternatives. False when an alternative is empty.
  bool Prepare(const char16_t* all, const int64_t* ends, int64_t count, int caseFlag, int wildcardFlag);
  // The alternatives given as separate strings.
  bool Prepare(const std::vector<std::u16string>& alternatives, int caseFlag, int wildcardFlag);
  // Tries every alternative at text[0] (`avail` units readable there) in order; returns the index of
  // the first that matches and its length in `*length`, or -1.
  int64_t MatchAt(const char16_t* text, int64_t avail, int64_t* length) const;
};

// Wildcard matching of one pattern at text[0]: see KwEditBase::FindJoker.
int64_t Joker(const char16_t* pattern, int64_t patLen, const char16_t* text, int64_t avail, bool matchCase);

}  // namespace kw::findscan

namespace kw {

// One running search: what was asked and what was found so far.
struct KwEditBase::FindRequest {
  findscan::Patterns pat;
  bool forward = true;
  bool markedOnly = false;
  bool fixSel = false;
  Line line = 0;       // start
  int64_t column = 0;
  Index start = 0;
  std::vector<int64_t>* positions = nullptr;
  std::vector<int64_t>* lengths = nullptr;
  std::vector<int64_t>* alternatives = nullptr;  // collected with the positions, when given
  Index rangeEnd = -1;  // the stream search: matches end at or before it (-1: the text's end)
  char16_t* buffer = nullptr;  // line search: kFindSlice + 1 units
  // The first match.
  int64_t found = -1;  // alternative
  Index index = -1;
  int64_t length = 0;
  int64_t collected = 0;

  bool Collecting() const { return positions != nullptr; }
  // Takes a match; returns whether the search goes on.
  bool Hit(int64_t alternative, Index at, int64_t len) {
    if (found < 0) {
      found = alternative;
      index = at;
      length = len;
    }
    if (!Collecting()) return false;
    positions->push_back(at);
    if (lengths) lengths->push_back(len);
    if (alternatives) alternatives->push_back(alternative);
    ++collected;
    return true;
  }
};


}  // namespace kw
