#include "base/Format.h"

#include <cstdio>
#include <cstring>

namespace kw {
namespace {

struct Conversion {
  bool left = false, plus = false, space = false, alt = false, zero = false;
  int width = -1;
  int precision = -1;
  int lengthBits = 0;  // 8 or 16 for hh and h; 0 = the argument's own size
  char16_t conv = 0;
};

void Pad(std::u16string& out, const std::u16string& body, const Conversion& s, bool numeric) {
  const size_t width = s.width > 0 ? static_cast<size_t>(s.width) : 0;
  if (body.size() >= width) {
    out += body;
    return;
  }
  const size_t fill = width - body.size();
  if (s.left) {
    out += body;
    out.append(fill, u' ');
  } else if (s.zero && numeric) {
    // Zeros go after a sign or a 0x prefix.
    size_t prefix = 0;
    if (!body.empty() && (body[0] == u'-' || body[0] == u'+' || body[0] == u' ')) prefix = 1;
    if (body.size() >= prefix + 2 && body[prefix] == u'0' && (body[prefix + 1] == u'x' || body[prefix + 1] == u'X'))
      prefix += 2;
    out.append(body, 0, prefix);
    out.append(fill, u'0');
    out.append(body, prefix, std::u16string::npos);
  } else {
    out.append(fill, u' ');
    out += body;
  }
}

// Integers and floating point go through snprintf with a narrow copy of the conversion.
std::string NarrowFormat(const Conversion& s, const char* length, char conv) {
  std::string f = "%";
  if (s.left) f += '-';
  if (s.plus) f += '+';
  if (s.space) f += ' ';
  if (s.alt) f += '#';
  if (s.zero) f += '0';
  if (s.width >= 0) f += std::to_string(s.width);
  if (s.precision >= 0) f += "." + std::to_string(s.precision);
  f += length;
  f += conv;
  return f;
}

template <class T>
std::u16string Snprintf(const std::string& narrowFormat, T value) {
  char stack[128];
  int n = std::snprintf(stack, sizeof stack, narrowFormat.c_str(), value);
  if (n < 0) return {};
  if (static_cast<size_t>(n) < sizeof stack) return Widen(std::string_view(stack, n));
  std::string big(static_cast<size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), narrowFormat.c_str(), value);
  big.resize(n);
  return Widen(big);
}

bool FormatInteger(std::u16string& out, const Conversion& s, const FormatArg& a) {
  if (a.kind() != FormatArg::Kind::Signed && a.kind() != FormatArg::Kind::Unsigned &&
      a.kind() != FormatArg::Kind::Char && a.kind() != FormatArg::Kind::Pointer)
    return false;
  const bool isSigned = a.kind() == FormatArg::Kind::Signed;
  int bits = a.size() * 8;
  if (s.lengthBits && s.lengthBits < bits) bits = s.lengthBits;
  uint64_t raw = isSigned ? static_cast<uint64_t>(a.AsSigned()) : a.AsUnsigned();
  if (bits < 64) raw &= (uint64_t{1} << bits) - 1;
  Conversion narrow = s;
  narrow.width = -1;  // padding is done here so that it counts UTF-16 units
  narrow.left = false;
  narrow.zero = false;
  std::u16string body;
  if (s.conv == u'd' || s.conv == u'i') {
    int64_t v;
    if (isSigned && bits < 64) {
      const uint64_t sign = uint64_t{1} << (bits - 1);
      v = static_cast<int64_t>((raw ^ sign) - sign);  // sign-extend from the argument's width
    } else {
      v = static_cast<int64_t>(raw);
    }
    body = Snprintf(NarrowFormat(narrow, "ll", 'd'), static_cast<long long>(v));
  } else {
    body = Snprintf(NarrowFormat(narrow, "ll", static_cast<char>(s.conv)), static_cast<unsigned long long>(raw));
  }
  Pad(out, body, s, s.precision < 0);
  return true;
}

bool FormatFloating(std::u16string& out, const Conversion& s, const FormatArg& a) {
  if (a.kind() != FormatArg::Kind::Floating) return false;
  Conversion narrow = s;
  narrow.width = -1;
  narrow.left = false;
  narrow.zero = false;
  Pad(out, Snprintf(NarrowFormat(narrow, "", static_cast<char>(s.conv)), a.AsDouble()), s, true);
  return true;
}

bool FormatText(std::u16string& out, const Conversion& s, const FormatArg& a) {
  std::u16string body;
  if (a.kind() == FormatArg::Kind::Text16) {
    body = a.IsNullText() ? std::u16string(u"(null)") : std::u16string(a.AsText16());
  } else if (a.kind() == FormatArg::Kind::Text8) {
    body = a.IsNullText() ? std::u16string(u"(null)") : Widen(a.AsText8());
  } else {
    return false;
  }
  if (s.precision >= 0 && body.size() > static_cast<size_t>(s.precision)) body.resize(s.precision);
  Pad(out, body, s, false);
  return true;
}

bool FormatChar(std::u16string& out, const Conversion& s, const FormatArg& a) {
  char16_t c;
  switch (a.kind()) {
    case FormatArg::Kind::Char:
    case FormatArg::Kind::Unsigned:
      c = static_cast<char16_t>(a.AsUnsigned());
      break;
    case FormatArg::Kind::Signed:
      c = static_cast<char16_t>(a.AsSigned());
      break;
    default:
      return false;
  }
  Pad(out, std::u16string(1, c), s, false);
  return true;
}

}  // namespace

std::u16string Widen(std::string_view ascii) {
  std::u16string out(ascii.size(), u'\0');
  for (size_t i = 0; i < ascii.size(); ++i) out[i] = static_cast<unsigned char>(ascii[i]);
  return out;
}

bool TryFormatArgs(std::u16string& out, std::u16string_view f, std::span<const FormatArg> args) {
  out.clear();
  size_t next = 0;
  auto take = [&](const FormatArg*& a) {
    if (next >= args.size()) return false;
    a = &args[next++];
    return true;
  };
  auto takeInt = [&](int& v) {
    const FormatArg* a;
    if (!take(a)) return false;
    if (a->kind() == FormatArg::Kind::Signed) v = static_cast<int>(a->AsSigned());
    else if (a->kind() == FormatArg::Kind::Unsigned) v = static_cast<int>(a->AsUnsigned());
    else return false;
    return true;
  };
  size_t i = 0;
  while (i < f.size()) {
    const char16_t c = f[i++];
    if (c != u'%') {
      out += c;
      continue;
    }
    if (i >= f.size()) { out.clear(); return false; }
    if (f[i] == u'%') { out += u'%'; ++i; continue; }
    Conversion s;
    for (; i < f.size(); ++i) {
      const char16_t g = f[i];
      if (g == u'-') s.left = true;
      else if (g == u'+') s.plus = true;
      else if (g == u' ') s.space = true;
      else if (g == u'#') s.alt = true;
      else if (g == u'0') s.zero = true;
      else break;
    }
    if (i < f.size() && f[i] == u'*') {
      ++i;
      if (!takeInt(s.width)) { out.clear(); return false; }
      if (s.width < 0) { s.left = true; s.width = -s.width; }
    } else {
      while (i < f.size() && f[i] >= u'0' && f[i] <= u'9') s.width = (s.width < 0 ? 0 : s.width) * 10 + (f[i++] - u'0');
    }
    if (i < f.size() && f[i] == u'.') {
      ++i;
      s.precision = 0;
      if (i < f.size() && f[i] == u'*') {
        ++i;
        if (!takeInt(s.precision)) { out.clear(); return false; }
        if (s.precision < 0) s.precision = -1;
      } else {
        while (i < f.size() && f[i] >= u'0' && f[i] <= u'9') s.precision = s.precision * 10 + (f[i++] - u'0');
      }
    }
    // Length modifiers.
    auto at = [&](std::u16string_view m) { return f.substr(i, m.size()) == m; };
    if (at(u"I64")) i += 3;
    else if (at(u"I32")) i += 3;
    else if (at(u"hh")) { s.lengthBits = 8; i += 2; }
    else if (at(u"ll")) i += 2;
    else if (i < f.size() && f[i] == u'h') { s.lengthBits = 16; ++i; }
    else if (i < f.size() && (f[i] == u'l' || f[i] == u'L' || f[i] == u'j' || f[i] == u'z' || f[i] == u't' ||
                              f[i] == u'q' || f[i] == u'I'))
      ++i;
    if (i >= f.size()) { out.clear(); return false; }
    s.conv = f[i++];
    const FormatArg* a = nullptr;
    bool ok = false;
    switch (s.conv) {
      case u'd': case u'i': case u'u': case u'o': case u'x': case u'X':
        ok = take(a) && FormatInteger(out, s, *a);
        break;
      case u'p':
        s.conv = u'X';
        if (s.width < 0) { s.width = 2 * static_cast<int>(sizeof(void*)); s.zero = true; }
        ok = take(a) && a->kind() == FormatArg::Kind::Pointer && FormatInteger(out, s, *a);
        break;
      case u'e': case u'E': case u'f': case u'F': case u'g': case u'G': case u'a': case u'A':
        ok = take(a) && FormatFloating(out, s, *a);
        break;
      case u's': case u'S':
        ok = take(a) && FormatText(out, s, *a);
        break;
      case u'c': case u'C':
        ok = take(a) && FormatChar(out, s, *a);
        break;
      default:
        ok = false;
    }
    if (!ok) { out.clear(); return false; }
  }
  return true;
}

std::u16string FormatArgs(std::u16string_view format, std::span<const FormatArg> args, bool* ok) {
  std::u16string out;
  const bool good = TryFormatArgs(out, format, args);
  if (ok) *ok = good;
  return out;
}

}  // namespace kw
