// The search texts of one find or replace request, prepared once: upper-cased when the case does not
// count, with the units that can start or end a match, and the tight loops that look for those units
// in a run of text. Used only by the find and replace operations of KwEditBase.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kw::findscan {

// ToUpper of every unit, built once. Case-blind comparison is one table load per unit.
const char16_t* UpperTable();

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
