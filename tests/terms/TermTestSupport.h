// What the term tests of both kinds share: the text a failed compilation shows, and the fields that
// a compiled term's references read from a line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/Format.h"
#include "platform/ScriptedPlatform.h"

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

// Whether the platform showed exactly one box, with this text, picture and help id.
inline ::testing::AssertionResult OneBox(const kw::ScriptedPlatform& platform, const std::u16string& text,
                                         uint32_t picture, uint32_t help) {
  if (platform.boxes.size() != 1) return ::testing::AssertionFailure() << platform.boxes.size() << " boxes";
  const kw::QueryBoxLayout& box = platform.boxes[0];
  if (box.text == text && box.pictureId == picture && box.helpId == help) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "box \"" << kw::ToUtf8(box.text) << "\" picture " << box.pictureId
                                       << " help " << box.helpId << ", expected \"" << kw::ToUtf8(text) << "\"";
}

}  // namespace kwtest
