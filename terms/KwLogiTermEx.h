// Two variants of the logical term, with the language, messages and results of KwLogiTerm.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "terms/KwLogiTerm.h"

namespace kw {

// A logical term over a piece of a line given by pointer and length, such as a line of the editor's
// chunked text inside a column block. It differs from KwLogiTerm only in its line form:
// - the line has `length` characters and needs no terminating zero;
// - item columns count from `fromCol` (1-based): [1] is the line's column `fromCol`;
// - fields end at column `toCol` of the line (inclusive; 0 or less: the end of the line), so no item
//   reads past the block; a field beyond it is short or empty, as at the end of a line.
// (fromCol 1, toCol 0 and the line's own length give exactly the answers of KwLogiTerm's line form.)
class KwLogiTermEx : public KwLogiTerm {
 public:
  using KwLogiTerm::CalculateResult;
  // A negative length, a fromCol below 1, a null line with characters, or row references in the
  // term are broken contracts (assertion, result 0).
  int CalculateResult(const char16_t* line, int64_t length, int64_t fromCol, int64_t toCol, const int64_t* values,
                      int show) const;
};

// The logical term language over the properties of a point (its name, code, coordinates, height, ...)
// instead of the columns of a line. It differs from KwLogiTerm in:
// - an item names a property: [CODE], [ h ] (TrimName: blanks around the name dropped, case
//   ignored), from the names given with SetPropertyNames in the order of the property texts;
// - an unknown name fails with message 2180 naming it; there are no column ranges and no row
//   references; the line variables ([LN], [LL], ...) keep their meaning unless a property has that name;
// - evaluation takes the texts of one point's properties (a missing text counts as empty), and a text
//   is compared with the whole property, so the widening of items does not apply.
class KwLogiTermPointSel : private KwLogiTerm {
 public:
  using KwLogiTerm::GetAngleUnit;
  using KwLogiTerm::IsValid;
  using KwLogiTerm::NeedLineLen;
  using KwLogiTerm::NeedLineNo;
  using KwLogiTerm::NeedMarkLin;
  using KwLogiTerm::SetAngleUnit;

  // The property names, in the order of the texts given to CalculateResult. Invalidates the term.
  void SetPropertyNames(const std::vector<std::u16string>& names);
  // Compiles `term`; returns 1 when compiled, 0 after the message (when `show`) otherwise.
  int SetTerm(const std::u16string& term, int show);
  // Evaluates for one point; 1 true, 0 false. On an invalid term: assertion, 0.
  int CalculateResult(const std::vector<std::u16string>& properties, const int64_t* values, int show) const;

  // A property name as it is compared: without blanks around it, upper-cased.
  static std::u16string TrimName(const std::u16string& name);

 private:
  std::vector<std::u16string> m_Names;  // trimmed property names
};

}  // namespace kw
