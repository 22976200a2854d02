// A selection filter over the cells of one list column, built from one filter text such as
// "1,5;10" (numbers 1 to 5, and 10), "a-c" (texts from a to c) or "K*" (a wildcard mask).
//
// The text is split at ";" into at most 50 parts; a cell matches when it matches any part. Each part
// is trimmed; one with "*" or "?" is a mask (StrMatch, case counting). Otherwise it may hold one range
// separator, a comma or a hyphen: "from,to" or "from-to", blanks around the separator ignored. A part
// that begins or ends with a separator, holds two, or runs from a greater to a smaller value is
// refused with a message, and so is the whole filter. Since a hyphen always separates, a negative
// number cannot be entered; this is kept so that "3-7" means the same in every column type.
//
// By column type:
// - text (any type but 3 and 4): when from and to are both plain numbers (digits, blanks, ".", "+",
//   "-") the range is numeric and only cells that are numbers match; otherwise cells from <= cell <= to
//   in the library collation, case ignored.
// - numbers (3): from - 1e-20 <= cell <= to + 1e-20 for cells that read as numbers (comma or point
//   as the decimal point). A from or to that is not a number makes the part a text range.
// - date and time (4): from and to are read with the column's format (KwTime::SetTime); the hyphen
//   separates only when the format has none. Cells that read as times match within the range. A from
//   or to that does not read makes the part a text range.
// Empty parts between ";" are skipped; an empty filter text is one text part with an empty text,
// which matches empty cells.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kw {

class KwUniFilters {
 public:
  static constexpr int kMaxParts = 50;
  static constexpr int kTypeNumber = 3;
  static constexpr int kTypeTime = 4;

  // Builds the filter; a refused part shows its message (sender "ListCore", help 2810, picture 1090)
  // and leaves the filter invalid.
  KwUniFilters(int type, const std::u16string& format, const std::u16string& filterText);

  bool IsValid() const { return m_Error == 0; }
  // The message number of the refusal (2814, 2815, 2816), 0 when valid.
  uint32_t GetError() const { return m_Error; }
  int GetPartCount() const { return static_cast<int>(m_Parts.size()); }
  // Whether the cell matches any part; false for an invalid filter.
  bool Match(const std::u16string& cell) const;

 private:
  struct Part {
    enum Kind { kMask, kText, kNumber, kTime } kind = kText;
    std::u16string from, to;  // kMask: the mask in `from`
    double low = 0, high = 0;  // kNumber, kTime: the closed range
  };
  bool AddPart(const std::u16string& text);
  bool Refuse(uint32_t message);

  int m_Type;
  std::u16string m_Format;
  std::vector<Part> m_Parts;
  uint32_t m_Error = 0;
};

}  // namespace kw
