// Fields of delimited lines, delimiter guessing, parts, numbered names and menu texts.
#include "base/Assert.h"
#include "base/Text.h"

namespace kw {

namespace {

bool IsIn(char16_t c, const char16_t* set) {
  if (c == 0) return false;
  for (; *set; ++set)
    if (*set == c) return true;
  return false;
}

}  // namespace

int LimitText(const char16_t* text, const char16_t* delimiters, int64_t field, int64_t* range, int exact,
              char16_t quote) {
  KW_ASSERT(text != nullptr && delimiters != nullptr && range != nullptr && field >= 0);
  if (text == nullptr || delimiters == nullptr || range == nullptr || field < 0) return 0;
  KW_ASSERT(!IsIn(quote, delimiters));
  if (IsIn(quote, delimiters)) quote = 0;

  if (exact) {
    int64_t k = 0, start = 0;
    bool inQuotes = false;
    for (int64_t i = 0;; ++i) {
      const char16_t c = text[i];
      if (c == 0 || (!inQuotes && IsIn(c, delimiters))) {
        if (k == field) {
          range[0] = start;
          range[1] = i;
          return 1;
        }
        if (c == 0) return 0;
        ++k;
        start = i + 1;
      } else if (quote != 0 && c == quote) {
        inQuotes = !inQuotes;
      }
    }
  }

  int64_t i = 0;
  for (int64_t k = 0;; ++k) {
    while (IsIn(text[i], delimiters)) ++i;
    if (text[i] == 0) return 0;
    const int64_t start = i;
    bool inQuotes = false;
    for (; text[i] != 0 && (inQuotes || !IsIn(text[i], delimiters)); ++i)
      if (quote != 0 && text[i] == quote) inQuotes = !inQuotes;
    if (k == field) {
      range[0] = start;
      range[1] = i;
      return 1;
    }
  }
}

size_t FindChar(const std::u16string& s, char16_t ch, int start) {
  KW_ASSERT(start >= 0);
  if (start < 0) return std::u16string::npos;
  for (size_t i = static_cast<size_t>(start); i < s.size(); ++i)
    if (s[i] == ch) return i;
  return std::u16string::npos;
}

int64_t StrCountOf(const std::u16string& s, char16_t ch, char16_t quote) {
  int64_t n = 0;
  bool inQuotes = false;
  for (const char16_t c : s) {
    if (quote != 0 && c == quote)
      inQuotes = !inQuotes;
    else if (c == ch && !inQuotes)
      ++n;
  }
  return n;
}

char16_t StrDelimOf(const std::u16string& s, const std::u16string& candidates, char16_t quote) {
  for (const char16_t c : candidates)
    if (StrCountOf(s, c, quote) > 0) return c;
  return 0;
}

int64_t SeekStart(const char16_t* const s, int64_t max) {
  KW_ASSERT(s != nullptr);
  if (s == nullptr) return -1;
  for (int64_t i = 0; i < max && s[i] != 0; ++i)
    if (s[i] == u'#' || s[i] == u'*') return i;
  return -1;
}

std::u16string RemoveAmpersAnd(const std::u16string& s, int stopAtTab) {
  std::u16string out;
  out.reserve(s.size());
  for (const char16_t c : s) {
    if (stopAtTab && c == u'\t') break;
    if (c != u'&') out += c;
  }
  return out;
}

int IsStrInArray(const std::u16string& s, const std::vector<std::u16string>& a) {
  for (const auto& e : a)
    if (e == s) return 1;
  return 0;
}

std::u16string StrPart(const std::u16string& text, int64_t n, char16_t separator) {
  KW_ASSERT(n >= 0);
  if (n < 0) return {};
  size_t start = 0;
  for (int64_t k = 0; k < n; ++k) {
    const size_t at = text.find(separator, start);
    if (at == std::u16string::npos) return {};
    start = at + 1;
  }
  const size_t end = text.find(separator, start);
  return text.substr(start, end == std::u16string::npos ? std::u16string::npos : end - start);
}

int StrSetPart(std::u16string& text, int64_t n, char16_t separator, const std::u16string& part) {
  KW_ASSERT(n >= 0);
  if (n < 0) return 0;
  size_t start = 0;
  for (int64_t k = 0; k < n; ++k) {
    const size_t at = text.find(separator, start);
    if (at == std::u16string::npos) {
      text.append(static_cast<size_t>(n - k), separator);
      text += part;
      return 1;
    }
    start = at + 1;
  }
  const size_t end = text.find(separator, start);
  text.replace(start, end == std::u16string::npos ? std::u16string::npos : end - start, part);
  return 1;
}

int IncrementName(std::u16string& name) {
  size_t digits = name.size();
  while (digits > 0 && name[digits - 1] >= u'0' && name[digits - 1] <= u'9') --digits;
  if (digits == name.size()) {
    name += u'1';
    return 0;
  }
  size_t i = name.size();
  while (i > digits) {
    --i;
    if (name[i] != u'9') {
      ++name[i];
      return 1;
    }
    name[i] = u'0';
  }
  name.insert(name.begin() + static_cast<std::ptrdiff_t>(digits), u'1');
  return 1;
}

}  // namespace kw
