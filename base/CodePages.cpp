#include "base/CodePages.h"

namespace kw {

// Provisional UTF-8 forms; replaced by the table-driven converter.
std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00);
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

std::u16string FromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const unsigned char b = text[i];
    uint32_t c;
    int n;
    if (b < 0x80) { c = b; n = 0; }
    else if ((b & 0xE0) == 0xC0) { c = b & 0x1F; n = 1; }
    else if ((b & 0xF0) == 0xE0) { c = b & 0x0F; n = 2; }
    else if ((b & 0xF8) == 0xF0) { c = b & 0x07; n = 3; }
    else { out += u'\uFFFD'; ++i; continue; }
    bool ok = true;
    for (int k = 1; k <= n; ++k) {
      if (i + k >= text.size() || (static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) { ok = false; break; }
      c = (c << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
    }
    if (!ok) { out += u'\uFFFD'; ++i; continue; }
    i += n + 1;
    if (c >= 0x10000) {
      c -= 0x10000;
      out += static_cast<char16_t>(0xD800 + (c >> 10));
      out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      out += static_cast<char16_t>(c);
    }
  }
  return out;
}

}  // namespace kw
