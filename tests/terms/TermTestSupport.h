// What the term tests of both kinds share: the text a failed compilation shows, and the fields that
// a compiled term's references read from a line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/StringTable.h"
#include "base/Format.h"

namespace kwtest {

// Message `id` as a term shows it: the term fills its "%s", with every "|" shown as U+00A6.
inline std::u16string TermMessage(uint32_t id, std::u16string term) {
  for (char16_t& c : term)
    if (c == u'|') c = u'\u00A6';
  const std::u16string raw = kw::LoadString(id);
  return raw.find(u"%s") != std::u16string::npos ? kw::Format(raw, term) : raw;
}

// The texts that references firsts[k]..lasts[k] (from 1) read from `line`: empty for a line variable
// (first column 0 or below) and beyond the line's end, cut at its end.
inline std::vector<std::u16string> FieldsOf(const std::u16string& line, const int64_t* firsts, const int64_t* lasts,
                                            int64_t count) {
  std::vector<std::u16string> fields;
  for (int64_t k = 0; k < count; ++k) {
    const size_t from = static_cast<size_t>(firsts[k] - 1);
    fields.push_back(firsts[k] > 0 && from < line.size()
                         ? line.substr(from, static_cast<size_t>(lasts[k] - firsts[k] + 1))
                         : std::u16string());
  }
  return fields;
}

}  // namespace kwtest
