// Typed values into their internal form, input limits, and the forms on 8-bit ANSI text.
//
// The 8-bit forms convert through the ANSI code page (1252), run the wide function and convert
// back. The code page maps one byte to one unit and back, so positions and counts are the same on
// both sides. Temporary copies that cannot be allocated make them return 0 with the destination
// untouched.
#include <algorithm>
#include <cstring>
#include <new>

#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/Text.h"

namespace kw {

namespace {

// The sequence "<#...>" starting at `i`: the position after its ">", or 0 when s[i] does not open
// one that is closed before `end`.
size_t CodeSequenceEnd(const std::u16string& s, size_t i, size_t end) {
  if (s[i] != u'<' || i + 1 >= end || s[i + 1] != u'#') return 0;
  const size_t close = s.find(u'>', i + 2);
  return (close == std::u16string::npos || close >= end) ? 0 : close + 1;
}

// Copies the converted units [from, from+n) of `wide` back into `dst` as ANSI bytes.
void StoreAnsi(char* dst, const std::u16string& wide, size_t from, size_t n) {
  const std::string bytes = GetAnsiString(wide.substr(from, n));
  std::memcpy(dst + from, bytes.data(), std::min(n, bytes.size()));
}

}  // namespace

std::u16string StrConvert(const std::u16string& s, int* ok, int encoding, int unquote, int keepCase) {
  int okLocal = 1;
  if (ok == nullptr) ok = &okLocal;
  *ok = 1;
  std::u16string t = s;
  if (unquote && t.size() >= 3 && t.front() == u'"' && t.back() == u'"') t = t.substr(1, t.size() - 2);

  if (encoding >= 0) {
    const bool unicode = encoding >= kEncodingUtf8 && encoding <= kEncodingUtf16BE;
    const int64_t maxCode = unicode ? 65536 : 255;
    std::u16string out;
    out.reserve(t.size());
    size_t i = 0;
    while (i < t.size()) {
      if (t[i] != u'<' || i + 1 >= t.size() || t[i + 1] != u'#') {
        out += t[i++];
        continue;
      }
      size_t j = i + 2;
      int64_t code = 0;
      while (j < t.size() && t[j] >= u'0' && t[j] <= u'9') {
        code = std::min<int64_t>(code * 10 + (t[j] - u'0'), 1000000);  // beyond every valid code
        ++j;
      }
      if (j == i + 2 || j >= t.size() || t[j] != u'>') {  // not closed by ">": kept as typed
        *ok = 0;
        out += t[i++];
        continue;
      }
      const int ch = code <= maxCode ? GetUnicodeCodePoint(static_cast<int>(code), encoding) : -1;
      if (ch < 0) {  // out of range: the "<" is kept and the rest read as plain text
        *ok = 0;
        out += t[i++];
        continue;
      }
      out += static_cast<char16_t>(ch);
      i = j + 1;
    }
    t = std::move(out);
  }
  if (!keepCase) ToUpper(t, 0, 0, &encoding);
  return t;
}

int LimitInput(std::u16string& s, int maxVisible, int quoted) {
  KW_ASSERT(maxVisible >= 1);
  if (maxVisible < 1) return 0;
  const bool inQuotes = quoted && s.size() >= 2 && s.front() == u'"' && s.back() == u'"';
  const size_t begin = inQuotes ? 1 : 0;
  const size_t end = inQuotes ? s.size() - 1 : s.size();
  int visible = 0;
  for (size_t i = begin; i < end;) {
    if (visible == maxVisible) {
      s.erase(i, end - i);  // a closing quote after `end` stays
      return 1;
    }
    const size_t sequenceEnd = CodeSequenceEnd(s, i, end);
    i = sequenceEnd ? sequenceEnd : i + 1;
    ++visible;
  }
  return 0;
}

int64_t StrLenA(const char* s, int64_t len) {
  if (s == nullptr) return 0;
  try {
    const std::u16string wide = GetGenericString(len < 1 ? std::string(s) : std::string(s, static_cast<size_t>(len)));
    return wide.empty() ? 0 : StrLen(wide.data(), static_cast<int64_t>(wide.size()));
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

// A byte filled into a field stays the same byte through the code page and back, so no conversion.
void StrSetA(char* s, int64_t n, char ch) {
  KW_ASSERT(s != nullptr || n <= 0);
  if (s == nullptr || n <= 0) return;
  std::memset(s, static_cast<unsigned char>(ch), static_cast<size_t>(n));
}

int64_t StrCopyA(char* dst, const char* src, int64_t n, int64_t dstLimit) {
  KW_ASSERT(dst != nullptr && src != nullptr);
  if (dst == nullptr || src == nullptr) return 0;
  try {
    if (n > 0) {
      const int64_t count = dstLimit > 0 ? std::min(n, dstLimit) : n;
      const std::u16string wide = GetGenericString(std::string(src, static_cast<size_t>(count)));
      std::u16string out(static_cast<size_t>(count), u'\0');
      const int64_t written = StrCopy(out.data(), wide.c_str(), count, 0);
      StoreAnsi(dst, out, 0, static_cast<size_t>(written));
      return written;
    }
    if (n < 0) {
      std::u16string templ = GetGenericString(std::string(dst));
      const size_t offset = templ.find(u'*');
      const std::u16string wide = GetGenericString(std::string(src, static_cast<size_t>(-n)));
      templ.append(static_cast<size_t>(-n) + 1, u'\0');  // room for a copy past the template's end
      const int64_t written = StrCopy(templ.data(), wide.c_str(), n, dstLimit);
      if (written > 0) StoreAnsi(dst, templ, offset, static_cast<size_t>(written));
      return written;
    }
    const std::u16string wide = GetGenericString(std::string(src));
    std::u16string out(wide.size() + 1, u'\0');
    const int64_t written = StrCopy(out.data(), wide.c_str(), 0, dstLimit);
    StoreAnsi(dst, out, 0, static_cast<size_t>(written));
    return written;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

int64_t StrEntry(char16_t* field, int64_t width, const char* src, int64_t srcLen, int leftAligned,
                 int squeezeBlanks) {
  KW_ASSERT(field != nullptr && width >= 1);
  if (field == nullptr || width < 1) return 0;
  try {
    const std::u16string wide =
        src == nullptr ? std::u16string()
                       : GetGenericString(srcLen < 1 ? std::string(src) : std::string(src, static_cast<size_t>(srcLen)));
    if (wide.empty()) {
      StrSet(field, width, u' ');
      return 0;
    }
    return StrEntry(field, width, wide.c_str(), srcLen < 1 ? 0 : static_cast<int64_t>(wide.size()), leftAligned,
                    squeezeBlanks);
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // namespace kw
