// Internal tables of the converter (not part of the public interface).
#pragma once

namespace kw::detail {

// The UTF-16 unit of every byte of code page 1252 and 437 (256 entries each).
const char16_t* Table1252();
const char16_t* Table437();
// The ASCII character that stands in for `c` when a single-byte code page lacks it, or 0.
char BestFit(char16_t c);

}  // namespace kw::detail
