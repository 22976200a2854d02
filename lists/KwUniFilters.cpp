#include "lists/KwUniFilters.h"

#include "app/QueryBox.h"
#include "base/KwTime.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace kw {

namespace {

constexpr double kTolerance = 1e-20;

std::u16string Trim(const std::u16string& s) {
  const size_t first = s.find_first_not_of(u" \t");
  if (first == std::u16string::npos) return {};
  return s.substr(first, s.find_last_not_of(u" \t") - first + 1);
}

// A number of a text range: only blanks, digits, ".", "+" and "-", and GetDouble finds no fault.
bool PlainNumber(const std::u16string& s, double& value) {
  if (s.empty()) return false;
  for (const char16_t c : s)
    if (!(c == u' ' || (c >= u'0' && c <= u'9') || c == u'.' || c == u'+' || c == u'-')) return false;
  int error = 0;
  value = GetDouble(s.data(), 0, static_cast<int64_t>(s.size()), 0, &error);
  return error == kNumberOk;
}

// A cell or range end read as a number, the comma being a decimal point too.
bool CellNumber(const std::u16string& s, double& value) {
  if (s.empty()) return false;
  int error = 0;
  value = GetDouble(s.data(), 0, static_cast<int64_t>(s.size()), 1, &error);
  return error == kNumberOk;
}

int Collate(const std::u16string& a, const std::u16string& b) { return StrCompare(a, b, 0, 0, 0); }

}  // namespace

KwUniFilters::KwUniFilters(int type, const std::u16string& format, const std::u16string& filterText)
    : m_Type(type), m_Format(format) {
  size_t start = 0;
  for (int n = 0; n < kMaxParts && start <= filterText.size(); ++n) {
    size_t end = filterText.find(u';', start);
    if (end == std::u16string::npos) end = filterText.size();
    const std::u16string part = Trim(filterText.substr(start, end - start));
    start = end + 1;
    if (part.empty()) continue;
    if (!AddPart(part)) {
      m_Parts.clear();
      return;
    }
  }
  if (m_Parts.empty()) m_Parts.push_back(Part{});  // the empty text part
}

bool KwUniFilters::Refuse(uint32_t message) {
  m_Error = message;
  QueryBox(u"ListCore", 2810, 1090, 0, message);
  return false;
}

bool KwUniFilters::AddPart(const std::u16string& text) {
  Part part;
  if (text.find_first_of(u"*?") != std::u16string::npos) {
    part.kind = Part::kMask;
    part.from = text;
    m_Parts.push_back(part);
    return true;
  }
  // Date formats with a hyphen keep it; everywhere else it separates like the comma.
  const bool hyphenSeparates = !(m_Type == kTypeTime && m_Format.find(u'-') != std::u16string::npos);
  auto isSeparator = [&](char16_t c) { return c == u',' || (c == u'-' && hyphenSeparates); };
  if (isSeparator(text.front()) || isSeparator(text.back())) return Refuse(2814);
  size_t separator = std::u16string::npos;
  for (size_t i = 0; i < text.size(); ++i) {
    if (!isSeparator(text[i])) continue;
    if (separator != std::u16string::npos) return Refuse(2815);
    separator = i;
  }
  if (separator == std::u16string::npos) {
    part.from = part.to = text;
  } else {
    part.from = text.substr(0, separator);
    part.from.erase(part.from.find_last_not_of(u" \t") + 1);
    part.to = text.substr(separator + 1);
    part.to.erase(0, part.to.find_first_not_of(u" \t"));
  }

  double low = 0, high = 0;
  if (m_Type == kTypeNumber && CellNumber(part.from, low) && CellNumber(part.to, high)) {
    part.kind = Part::kNumber;
  } else if (m_Type == kTypeTime) {
    KwTime from, to;
    if (from.SetTime(part.from, m_Format) && to.SetTime(part.to, m_Format)) {
      part.kind = Part::kTime;
      low = from.GetTime();
      high = to.GetTime();
    }
  } else if (m_Type != kTypeNumber && PlainNumber(part.from, low) && PlainNumber(part.to, high)) {
    part.kind = Part::kNumber;
  }
  if (part.kind == Part::kText) {
    if (Collate(part.from, part.to) > 0) return Refuse(2816);
  } else {
    if (low > high) return Refuse(2816);
    // Text columns compare plain numbers exactly; number and time columns with the tolerance.
    const bool tolerant = m_Type == kTypeNumber || m_Type == kTypeTime;
    part.low = tolerant ? low - kTolerance : low;
    part.high = tolerant ? high + kTolerance : high;
  }
  m_Parts.push_back(part);
  return true;
}

bool KwUniFilters::Match(const std::u16string& cell) const {
  if (!IsValid()) return false;
  for (const Part& part : m_Parts) {
    switch (part.kind) {
      case Part::kMask:
        if (StrMatch(part.from, cell, 1)) return true;
        break;
      case Part::kText:
        if (Collate(part.from, cell) <= 0 && Collate(cell, part.to) <= 0) return true;
        break;
      case Part::kNumber: {
        double value = 0;
        if (CellNumber(Trim(cell), value) && part.low <= value && value <= part.high) return true;
        break;
      }
      case Part::kTime: {
        KwTime time;
        if (time.SetTime(Trim(cell), m_Format) && part.low <= time.GetTime() && time.GetTime() <= part.high)
          return true;
        break;
      }
    }
  }
  return false;
}

}  // namespace kw
