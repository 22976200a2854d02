#include "terms/KwLogiTermEx.h"

#include <algorithm>

#include "base/Assert.h"
#include "base/Format.h"
#include "base/Text.h"

namespace kw {

int KwLogiTermEx::CalculateResult(const char16_t* line, int64_t length, int64_t fromCol, int64_t toCol,
                                  const int64_t* values, int show) const {
  const bool ok = IsValid() && length >= 0 && fromCol >= 1 && (line || length == 0) && !HasDifferentRow();
  KW_ASSERT(ok);
  if (!ok) return 0;
  const int64_t end = toCol > 0 ? std::min(toCol, length) : length;  // columns 1..end of the line are seen
  const int64_t visible = std::max<int64_t>(0, end - fromCol + 1);
  TermField fields[kTermMaxReferences];
  LineFields(visible > 0 ? line + fromCol - 1 : line, visible, fields);
  return Evaluate(values, show, fields, nullptr);
}

std::u16string KwLogiTermPointSel::TrimName(const std::u16string& name) {
  size_t from = 0, to = name.size();
  while (from < to && name[from] <= u' ') ++from;
  while (to > from && name[to - 1] <= u' ') --to;
  std::u16string trimmed = name.substr(from, to - from);
  for (char16_t& c : trimmed) c = ToUpper(c, nullptr);
  return trimmed;
}

void KwLogiTermPointSel::SetPropertyNames(const std::vector<std::u16string>& names) {
  m_Names.clear();
  for (const std::u16string& name : names) m_Names.push_back(TrimName(name));
  m_Valid = 0;
}

int KwLogiTermPointSel::SetTerm(const std::u16string& term, int show) {
  static const std::u16string kLineVariables[] = {u"LN", u"ZN", u"LL", u"ZL", u"LM",
                                                  u"ZM", u"LS", u"ZS", u"ML", u"MZ"};
  // Each "[name]" outside quotes becomes "[k]", the 1-based number of the property; the compiled
  // items then read property k.
  std::u16string source;
  char16_t quote = 0;
  for (size_t i = 0; i < term.size(); ++i) {
    const char16_t c = term[i];
    if (quote || c == u'\'' || c == u'"') {
      if (quote == c) quote = 0;
      else if (!quote) quote = c;
      source += c;
      continue;
    }
    const size_t close = c == u'[' ? term.find(u']', i) : std::u16string::npos;
    if (close == std::u16string::npos) {
      source += c;  // a bracket without its partner is left to the bracket check
      continue;
    }
    const std::u16string name = TrimName(term.substr(i + 1, close - i - 1));
    const auto found = std::find(m_Names.begin(), m_Names.end(), name);
    if (found != m_Names.end()) {
      source += u"[" + std::u16string(Format(u"%d", static_cast<int>(found - m_Names.begin()) + 1)) + u"]";
    } else if (std::find(std::begin(kLineVariables), std::end(kLineVariables), name) != std::end(kLineVariables)) {
      source += u"[" + name + u"]";
    } else {
      m_Valid = 0;
      ShowMessage(show, 2180, name);
      return 0;
    }
    i = close;
  }
  return Compile(source, term, show);
}

int KwLogiTermPointSel::CalculateResult(const std::vector<std::u16string>& properties, const int64_t* values,
                                        int show) const {
  KW_ASSERT(IsValid());
  if (!IsValid()) return 0;
  static const char16_t kNone[] = u"";
  TermField fields[kTermMaxReferences];
  for (int64_t k = 0; k < m_ItemCount; ++k) {
    const size_t p = static_cast<size_t>(m_Item[k].first - 1);
    fields[k] = m_Item[k].first > 0 && p < properties.size()
                    ? TermField{properties[p].c_str(), static_cast<int64_t>(properties[p].size())}
                    : TermField{kNone, 0};
  }
  return Evaluate(values, show, fields, nullptr);
}

}  // namespace kw
