// Helpers of the text buffer's tests: a document filled in chunks of a given size, readable control
// characters, and a plain model of literal searches.
#pragma once

#include <string>
#include <vector>

#include "base/Text.h"
#include "editor/KwEditBase.h"

namespace kwtest {

// A document holding `text` in chunks of `units` (cut on the way in by AddText); tiny chunks make every
// walk and every edit cross chunk borders.
inline void FillDoc(kw::KwEditBase& doc, const std::u16string& text, int64_t units = 3, char16_t eol = 13) {
  doc.SetChunkUnits(units);
  doc.InitEdit();
  doc.SetEOLType(eol);
  doc.AddText(text, 0, 0);
}

// Control characters made readable for failure messages.
inline std::string Visible(const std::u16string& t) {
  std::string out;
  for (const char16_t c : t)
    out += c == 13 ? "<CR>" : c == 10 ? "<LF>" : c == 9 ? "<TAB>" : c == 12 ? "<FF>" : c < 128 ? std::string(1, char(c)) : "?";
  return out;
}

// Whether `pat` stands in `text` at `at`, by units or by their upper-case forms.
inline bool SameAt(const std::u16string& text, size_t at, const std::u16string& pat, bool matchCase) {
  if (at + pat.size() > text.size()) return false;
  for (size_t i = 0; i < pat.size(); ++i)
    if (matchCase ? text[at + i] != pat[i] : kw::ToUpper(text[at + i]) != kw::ToUpper(pat[i])) return false;
  return true;
}

// Every match without overlap inside [lo, hi) (hi -1: the end), forwards or backwards, in search order.
inline std::vector<int64_t> ModelAll(const std::u16string& text, const std::u16string& pat, bool matchCase,
                                     bool forward, int64_t lo = 0, int64_t hi = -1) {
  if (hi < 0) hi = static_cast<int64_t>(text.size());
  const auto m = static_cast<int64_t>(pat.size());
  std::vector<int64_t> out;
  if (forward) {
    for (int64_t i = lo; i + m <= hi;) {
      const bool hit = SameAt(text, static_cast<size_t>(i), pat, matchCase);
      if (hit) out.push_back(i);
      i += hit ? m : 1;
    }
  } else {
    for (int64_t end = hi; end - m >= lo;) {
      const bool hit = SameAt(text, static_cast<size_t>(end - m), pat, matchCase);
      if (hit) out.push_back(end - m);
      end -= hit ? m : 1;
    }
  }
  return out;
}

}  // namespace kwtest
