// Names for the numbers that travel through the library, so that a line number, a column and a
// character index are told apart at the declaration even though all are signed 64-bit.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kw {

using Line = int64_t;    // line number, counted from 0
using Column = int64_t;  // column of a line in UTF-16 units, counted from 0
using Index = int64_t;   // character index in a text stream, counted from 0

inline constexpr int64_t kNotFound = -1;

using StringArray = std::vector<std::u16string>;

// Encoding numbers shared by files, the text buffer and case mapping.
enum Encoding : int {
  kEncodingAnsi = 0,     // the ANSI code page (1252)
  kEncodingUtf8 = 1,
  kEncodingUtf16LE = 2,
  kEncodingUtf16BE = 3,
  kEncodingOem = 4,      // the OEM code page (437)
};

}  // namespace kw
