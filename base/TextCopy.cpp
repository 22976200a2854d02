// Copying into buffers and fixed fields, padding, justifying and wrapping.
#include <algorithm>
#include <cstring>
#include <utility>

#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/Text.h"

namespace kw {

namespace {

inline bool IsTrailingBlank(char16_t c) { return c == u' ' || c == u'\t' || c == 0; }

}  // namespace

int64_t StrSize(const char16_t* s) {
  if (s == nullptr) return 0;
  int64_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

int64_t StrLen(const char16_t* s, int64_t len) {
  if (s == nullptr) return 0;
  if (len < 1) len = StrSize(s);
  while (len > 0 && IsTrailingBlank(s[len - 1])) --len;
  return len;
}

int64_t StrLen(const std::u16string& s) {
  return s.empty() ? 0 : StrLen(s.data(), static_cast<int64_t>(s.size()));
}

void StrSet(char16_t* s, int64_t n, char16_t ch) {
  KW_ASSERT(s != nullptr || n <= 0);
  if (s == nullptr) return;
  for (int64_t i = 0; i < n; ++i) s[i] = ch;
}

int64_t StrCopy(char16_t* dst, const char16_t* src, int64_t n, int64_t dstLimit) {
  KW_ASSERT(dst != nullptr && src != nullptr);
  if (dst == nullptr || src == nullptr) return 0;
  if (n > 0) {
    if (dstLimit > 0) n = std::min(n, dstLimit);
    std::memmove(dst, src, static_cast<size_t>(n) * sizeof(char16_t));
    return n;
  }
  if (n < 0) {
    int64_t offset = 0;
    while (dst[offset] != 0 && dst[offset] != u'*' && (dstLimit <= 0 || offset < dstLimit)) ++offset;
    if (dst[offset] != u'*' || (dstLimit > 0 && offset >= dstLimit)) return 0;
    int64_t count = -n;
    if (dstLimit > 0) count = std::min(count, dstLimit - offset);
    std::memmove(dst + offset, src, static_cast<size_t>(count) * sizeof(char16_t));
    return count;
  }
  if (dstLimit >= 1) {
    for (int64_t i = 0; i < dstLimit; ++i) {
      dst[i] = src[i];
      if (src[i] == 0) return i + 1;
    }
  }
  // No limit, or the zero lay beyond it: the whole source with its zero, from the start.
  const int64_t all = StrSize(src) + 1;
  std::memmove(dst, src, static_cast<size_t>(all) * sizeof(char16_t));
  return all;
}

int64_t StrCopy(char16_t* dst, const std::u16string& src, int64_t n, int64_t dstLimit) {
  KW_ASSERT(dst != nullptr);
  if (dst == nullptr) return 0;
  const auto size = static_cast<int64_t>(src.size());
  if (n < 0) return StrCopy(dst, src.c_str(), -std::min(-n, size), dstLimit);
  // n = 0: the whole text. As in the buffer form, a limit the text does not fit in is disregarded.
  if (n == 0) {
    n = size;
    dstLimit = 0;
  }
  n = std::min(n, size);
  if (n == 0) return 0;
  return StrCopy(dst, src.c_str(), n, dstLimit);
}

int64_t StrCopy(char16_t* dst, unsigned id, int64_t size) {
  KW_ASSERT(dst != nullptr);
  if (dst == nullptr) return 0;
  std::u16string text = LoadString(id);
  if (size > 0 && static_cast<int64_t>(text.size()) > size - 1) text.resize(static_cast<size_t>(size - 1));
  std::memcpy(dst, text.c_str(), (text.size() + 1) * sizeof(char16_t));
  return static_cast<int64_t>(text.size()) + 1;
}

int64_t StrCopy(std::u16string& dst, const char16_t* src, int64_t n) {
  KW_ASSERT(src != nullptr && n >= 0);
  if (src == nullptr || n < 0) return 0;
  if (n == 0) n = StrSize(src);
  dst.assign(src, static_cast<size_t>(n));
  return n;
}

int64_t StrEntry(char16_t* field, int64_t width, const char16_t* src, int64_t srcLen, int leftAligned,
                 int squeezeBlanks) {
  KW_ASSERT(field != nullptr && width >= 1);
  if (field == nullptr || width < 1) return 0;
  StrSet(field, width, u' ');
  if (src == nullptr) return 0;
  if (srcLen < 1) srcLen = StrLen(src, 0);
  int64_t placed = 0;
  bool lastWasBlank = false;
  if (leftAligned) {
    for (int64_t i = 0; i < srcLen && placed < width; ++i) {
      const char16_t c = src[i];
      if (squeezeBlanks && c == u' ' && lastWasBlank) continue;
      lastWasBlank = c == u' ';
      field[placed++] = c;
    }
  } else {
    for (int64_t i = srcLen - 1; i >= 0 && placed < width; --i) {
      const char16_t c = src[i];
      if (squeezeBlanks && c == u' ' && lastWasBlank) continue;
      lastWasBlank = c == u' ';
      field[width - 1 - placed++] = c;
    }
  }
  return placed;
}

int64_t StrEntry(char16_t* field, int64_t width, const std::u16string& src, int from, int64_t srcLen,
                 int leftAligned, int squeezeBlanks) {
  KW_ASSERT(field != nullptr && width >= 1 && from >= 0);
  if (field == nullptr || width < 1) return 0;
  const auto size = static_cast<int64_t>(src.size());
  if (from < 0 || from >= size) {
    StrSet(field, width, u' ');
    return 0;
  }
  if (srcLen < 1 || srcLen > size - from) srcLen = size - from;
  return StrEntry(field, width, src.data() + from, srcLen, leftAligned, squeezeBlanks);
}

std::u16string StrLeft(const char16_t* s, int64_t len, int trimRight) {
  if (s == nullptr) return {};
  int64_t end = 0;
  if (len < 1)
    end = StrSize(s);
  else
    while (end < len && s[end] != 0) ++end;
  int64_t start = 0;
  while (start < end && s[start] == u' ') ++start;
  if (trimRight)
    while (end > start && s[end - 1] == u' ') --end;
  return std::u16string(s + start, static_cast<size_t>(end - start));
}

std::u16string StrLeft(const std::u16string& s, int trimRight) {
  size_t start = 0, end = s.size();
  while (start < end && s[start] == u' ') ++start;
  if (trimRight)
    while (end > start && s[end - 1] == u' ') --end;
  return s.substr(start, end - start);
}

std::u16string StrRight(int64_t width, const std::u16string& s) {
  KW_ASSERT(width >= 1);
  if (width < 1) return {};
  const std::u16string t = StrLeft(s, 1);
  const auto len = static_cast<int64_t>(t.size());
  if (len >= width) return t.substr(static_cast<size_t>(len - width));
  return std::u16string(static_cast<size_t>(width - len), u' ') + t;
}

std::u16string StrRight(int64_t width, const char16_t* s, int64_t len) {
  return StrRight(width, StrLeft(s, len, 1));
}

std::u16string StrCenter(int width, const std::u16string& s) {
  const int64_t pad = static_cast<int64_t>(width) - static_cast<int64_t>(s.size());
  if (pad <= 0) return s;
  const auto left = static_cast<int64_t>(static_cast<double>(pad) * 0.5);
  std::u16string out(static_cast<size_t>(left), u' ');
  out += s;
  out.append(static_cast<size_t>(pad - left), u' ');
  return out;
}

int64_t StrMove(char16_t* s, int64_t len, int toLeft) {
  if (s == nullptr || len < 1) return toLeft ? 1 : 0;
  if (toLeft) {
    int64_t first = 0;
    while (first < len && s[first] == u' ') ++first;
    if (first == len) return 1;
    if (first > 0) {
      std::memmove(s, s + first, static_cast<size_t>(len - first) * sizeof(char16_t));
      StrSet(s + len - first, first, u' ');
    }
    int64_t end = len;
    while (end > 0 && s[end - 1] == u' ') --end;
    return std::max<int64_t>(end, 1);
  }
  int64_t last = len - 1;
  while (last >= 0 && s[last] == u' ') --last;
  if (last < 0) return len - 1;
  const int64_t shift = len - 1 - last;
  if (shift > 0) {
    std::memmove(s + shift, s, static_cast<size_t>(last + 1) * sizeof(char16_t));
    StrSet(s, shift, u' ');
  }
  int64_t first = 0;
  while (s[first] == u' ') ++first;
  return first;
}

void StrWrap(std::u16string& s, const char16_t* breakAfter, int width, int indent, const char16_t* lineSep) {
  KW_ASSERT(width >= 1 && indent >= 0 && indent < width);
  if (width < 1 || indent < 0 || indent >= width) return;
  const auto n = static_cast<int64_t>(s.size());
  if (n <= width) return;
  const std::u16string sep = lineSep ? lineSep : u"\r\n";
  std::u16string out;
  out.reserve(s.size() + s.size() / static_cast<size_t>(width - indent) * (sep.size() + indent) + 8);
  int64_t lineStart = 0, candidate = -1, lineIndent = 0;
  for (int64_t i = 1; i <= n; ++i) {
    if (breakAfter != nullptr) {
      for (const char16_t* b = breakAfter; *b; ++b)
        if (*b == s[i - 1]) {
          candidate = i;
          break;
        }
    }
    if (i - lineStart >= width - lineIndent && i != n) {
      const int64_t cut = candidate > lineStart ? candidate : i;
      out.append(s, static_cast<size_t>(lineStart), static_cast<size_t>(cut - lineStart));
      out += sep;
      out.append(static_cast<size_t>(indent), u' ');
      lineStart = cut;
      candidate = -1;
      lineIndent = indent;
    }
  }
  out.append(s, static_cast<size_t>(lineStart), std::u16string::npos);
  s = std::move(out);
}

}  // namespace kw
