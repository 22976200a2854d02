// Searching with and without wildcards, whole-text matching, fixed-width tables and replacing.
#include <cstring>

#include "base/Assert.h"
#include "base/Text.h"

namespace kw {

namespace {

// Leftmost position p in [from, last] where the piece matches text[p..], "?" matching any one
// character when `wildcards`; -1 when there is none.
int64_t FindPiece(const char16_t* text, int64_t from, int64_t last, const char16_t* piece, int64_t len,
                  int caseSensitive, bool wildcards) {
  const char16_t first = ToCompare(piece[0], caseSensitive);
  const bool firstAny = wildcards && piece[0] == u'?';
  for (int64_t p = from; p <= last; ++p) {
    if (!firstAny && ToCompare(text[p], caseSensitive) != first) continue;
    int64_t k = 1;
    while (k < len && ((wildcards && piece[k] == u'?') ||
                       ToCompare(text[p + k], caseSensitive) == ToCompare(piece[k], caseSensitive)))
      ++k;
    if (k == len) return p;
  }
  return -1;
}

// wcsncmp, or _wcsnicmp in the C locale, over at most `width` characters.
int CompareRecord(const char16_t* x, const char16_t* y, int64_t width, int caseSensitive) {
  for (int64_t i = 0; i < width; ++i) {
    char16_t cx = x[i], cy = y[i];
    if (!caseSensitive) {
      if (cx >= u'A' && cx <= u'Z') cx = static_cast<char16_t>(cx + 32);
      if (cy >= u'A' && cy <= u'Z') cy = static_cast<char16_t>(cy + 32);
    }
    if (cx != cy) return cx < cy ? -1 : 1;
    if (cx == 0) return 0;
  }
  return 0;
}

}  // namespace

int64_t StrFind(const char16_t* text, int64_t start, int64_t count, const char16_t* pattern, int64_t patLen,
                int caseSensitive, int wildcards, int64_t* foundLen) {
  KW_ASSERT(text != nullptr && start >= 0);
  if (text == nullptr || start < 0) return -1;
  if (!wildcards) {
    if (foundLen) *foundLen = patLen;
    if (patLen < 1) return start;
    return FindPiece(text, start, start + count - patLen, pattern, patLen, caseSensitive, false);
  }
  if (patLen < 1) {
    if (foundLen) *foundLen = 0;
    return start;
  }
  const int64_t end = start + count;
  int64_t pos = start, result = -1;
  int64_t i = 0;
  while (i < patLen) {
    while (i < patLen && pattern[i] == u'*') ++i;
    if (i == patLen) break;
    int64_t j = i;
    while (j < patLen && pattern[j] != u'*') ++j;
    const int64_t len = j - i;
    const int64_t at = FindPiece(text, pos, end - len, pattern + i, len, caseSensitive, true);
    if (at < 0) return -1;
    if (result < 0) result = at;
    pos = at + len;
    i = j;
  }
  KW_ASSERT(result >= 0);  // a pattern of "*" only
  if (result < 0) return -1;
  if (foundLen) *foundLen = pos - result;
  return result;
}

int64_t StrFind(const std::u16string& text, const std::u16string& pattern, int caseSensitive, int wildcards,
                int64_t start, int64_t* foundLen) {
  KW_ASSERT(start >= 0);
  if (start < 0) return -1;
  const auto size = static_cast<int64_t>(text.size());
  return StrFind(text.c_str(), start, size - start, pattern.c_str(), static_cast<int64_t>(pattern.size()),
                 caseSensitive, wildcards, foundLen);
}

int StrMatch(const std::u16string& pattern, const std::u16string& text, int caseSensitive) {
  const size_t pl = pattern.size(), tl = text.size();
  size_t p = 0, t = 0;
  for (;;) {
    bool star = false;
    while (p < pl && pattern[p] == u'*') {
      ++p;
      star = true;
    }
    if (p == pl) return (star || t == tl) ? 1 : 0;
    // Compare the segment pattern[p..next "*" or end) at successive anchors.
    for (size_t anchor = t;; ++anchor) {
      size_t i = p, j = anchor;
      bool mismatch = false;
      while (i < pl && pattern[i] != u'*') {
        if (j >= tl) return 0;  // the text ran out inside the segment
        if (pattern[i] != u'?' && ToCompare(pattern[i], caseSensitive) != ToCompare(text[j], caseSensitive)) {
          mismatch = true;
          break;
        }
        ++i;
        ++j;
      }
      if (!mismatch) {
        if (i < pl) {  // reached the next "*": this segment is settled
          p = i;
          t = j;
          break;
        }
        if (j == tl) return 1;
      }
      if (!star) return 0;
    }
  }
}

int64_t SeekString(char16_t* const table, int64_t capacity, int64_t* count, const char16_t* key, int64_t width,
                   unsigned mode, int caseSensitive) {
  KW_ASSERT(table != nullptr && count != nullptr && key != nullptr && width >= 1);
  if (table == nullptr || count == nullptr || key == nullptr || width < 1) return 0;
  KW_ASSERT(mode == 1 || mode == 3 || mode == 4 || mode == 6);
  if (mode != 1 && mode != 3 && mode != 4 && mode != 6) return 0;
  KW_ASSERT(*count >= 0 && *count <= capacity);
  if (*count < 0 || *count > capacity) return 0;

  const int64_t n = *count;
  auto record = [&](int64_t r) { return table + (r - 1) * width; };
  int64_t insertAt;
  if (mode == 1 || mode == 3) {
    for (int64_t r = 1; r <= n; ++r)
      if (CompareRecord(record(r), key, width, caseSensitive) == 0) return r;
    if (mode == 1) return 0;
    insertAt = n + 1;
  } else {
    int64_t lo = 1, hi = n;
    while (lo <= hi) {
      const int64_t mid = lo + (hi - lo) / 2;
      const int c = CompareRecord(record(mid), key, width, caseSensitive);
      if (c == 0) return mid;
      if (c < 0)
        lo = mid + 1;
      else
        hi = mid - 1;
    }
    if (mode == 4) return 0;
    insertAt = lo;
  }

  KW_ASSERT(n < capacity);  // the table is full
  if (n >= capacity) return 0;
  std::memmove(record(insertAt + 1), record(insertAt),
               static_cast<size_t>((n - insertAt + 1) * width) * sizeof(char16_t));
  std::memcpy(record(insertAt), key, static_cast<size_t>(width) * sizeof(char16_t));
  *count = n + 1;
  return insertAt;
}

std::u16string StrReplace(const std::u16string& text, const std::u16string& find,
                          const std::u16string& replacement, int caseSensitive) {
  if (text.empty()) return {};
  KW_ASSERT(!find.empty());
  if (find.empty()) return {};
  std::u16string out;
  out.reserve(text.size());
  const size_t n = text.size(), m = find.size();
  size_t i = 0;
  while (i + m <= n) {
    size_t k = 0;
    while (k < m && ToCompare(text[i + k], caseSensitive) == ToCompare(find[k], caseSensitive)) ++k;
    if (k == m) {
      out += replacement;
      i += m;
    } else {
      out += text[i++];
    }
  }
  out.append(text, i, std::u16string::npos);
  return out;
}

}  // namespace kw
