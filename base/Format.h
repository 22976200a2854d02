// The library's one printf-style formatter. It produces UTF-16 from a UTF-16 format and typed
// arguments, and refuses instead of guessing: an unknown conversion, a missing argument or an
// argument of the wrong kind (a text for %d, a number for %s, an integer for %f) makes the whole
// call fail, so that a caller such as the query box can fall back to the raw text.
//
// Conversions: %s %S %c %C %d %i %u %o %x %X %p %e %E %f %F %g %G %a %A %%; flags - + 0 # and blank;
// width and precision, each also as *; length modifiers h hh l ll L j z t q I I32 I64 (accepted for
// compatibility; integers are printed at the width of the argument's own type, h and hh truncate).
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace kw {

// One argument, captured by kind. Integers remember their size in bytes so that %u and %x of a
// negative value print as printf would for that type. Text arguments are borrowed: they must outlive
// the call.
class FormatArg {
 public:
  enum class Kind { Signed, Unsigned, Floating, Char, Text16, Text8, Pointer };

  template <class T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char16_t> &&
             !std::is_same_v<T, char> && !std::is_same_v<T, wchar_t>)
  FormatArg(T v)  // NOLINT(google-explicit-constructor)
      : kind_(std::is_signed_v<T> ? Kind::Signed : Kind::Unsigned), size_(sizeof(T)) {
    if constexpr (std::is_signed_v<T>) i_ = v; else u_ = v;
  }
  FormatArg(bool v) : kind_(Kind::Signed), size_(sizeof(int)) { i_ = v ? 1 : 0; }
  FormatArg(char16_t c) : kind_(Kind::Char), size_(2) { u_ = c; }
  FormatArg(char c) : kind_(Kind::Char), size_(1) { u_ = static_cast<unsigned char>(c); }
  FormatArg(wchar_t c) : kind_(Kind::Char), size_(2) { u_ = static_cast<uint64_t>(c) & 0xFFFF; }
  FormatArg(double v) : kind_(Kind::Floating), size_(8) { d_ = v; }
  FormatArg(float v) : kind_(Kind::Floating), size_(8) { d_ = v; }
  FormatArg(const char16_t* s) : kind_(Kind::Text16), size_(0) { s16_ = s ? std::u16string_view(s) : std::u16string_view(); null_ = !s; }
  FormatArg(const std::u16string& s) : kind_(Kind::Text16), size_(0) { s16_ = s; }
  FormatArg(std::u16string_view s) : kind_(Kind::Text16), size_(0) { s16_ = s; }
  FormatArg(const char* s) : kind_(Kind::Text8), size_(0) { s8_ = s ? std::string_view(s) : std::string_view(); null_ = !s; }
  FormatArg(const std::string& s) : kind_(Kind::Text8), size_(0) { s8_ = s; }
  FormatArg(const void* p) : kind_(Kind::Pointer), size_(sizeof(void*)) { u_ = reinterpret_cast<uintptr_t>(p); }
  FormatArg(std::nullptr_t) : kind_(Kind::Pointer), size_(sizeof(void*)) { u_ = 0; }

  Kind kind() const { return kind_; }
  int size() const { return size_; }
  int64_t AsSigned() const { return i_; }
  uint64_t AsUnsigned() const { return u_; }
  double AsDouble() const { return d_; }
  std::u16string_view AsText16() const { return s16_; }
  std::string_view AsText8() const { return s8_; }
  bool IsNullText() const { return null_; }

 private:
  Kind kind_;
  int size_;
  union { int64_t i_; uint64_t u_; double d_; };
  std::u16string_view s16_;
  std::string_view s8_;
  bool null_ = false;
};

// Formats into `out`. Returns true on success; on failure `out` is left empty.
bool TryFormatArgs(std::u16string& out, std::u16string_view format, std::span<const FormatArg> args);

// Formats; on failure returns an empty string and, when `ok` is given, sets it to false.
std::u16string FormatArgs(std::u16string_view format, std::span<const FormatArg> args, bool* ok = nullptr);

template <class... A>
std::u16string Format(std::u16string_view format, const A&... args) {
  const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
  return FormatArgs(format, std::span<const FormatArg>(list, sizeof...(A)));
}

template <class... A>
bool TryFormat(std::u16string& out, std::u16string_view format, const A&... args) {
  const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
  return TryFormatArgs(out, format, std::span<const FormatArg>(list, sizeof...(A)));
}

// Widens 7-bit ASCII text (numbers, keywords, texts of the standard library) to UTF-16; bytes above
// 127 are taken as Latin-1.
std::u16string Widen(std::string_view ascii);

}  // namespace kw
