// Logical terms: a condition over the fields of a line, compiled once with SetTerm and evaluated per
// line to 1 (true) or 0 (false).
//
//   KwLogiTerm t;
//   if (t.SetTerm(u"[10-19]>500 AND [42-50]='X'", 1))
//     for (each line) if (t.CalculateResult(line, nullptr, 0)) keep(line);
//
// Besides the arithmetic of KwMathTerm it has texts ('...' compared literally and case-sensitively,
// "..." as a case-blind pattern with * and ?), the escape "<#n>" inside a text for the character of
// code n, the relations = == # != < > <= =< >= => $= (contains) $# (contains not), and the
// connectives & && AND, | || OR and the prefix ! NOT (any word beginning with the first, second or
// third pair of letters of string 2175). NOT binds tighter than every binary operator: NOT([1]=1).
// Blanks are dropped before words are read, so "OR NOT(" is the single word "ORNOT" and means OR;
// write "OR (NOT(...))" or "| !(...)".
// A comparison of a short field with a text widens the item to the text's length when the term is
// compiled with messages on ([5]='ABC' then reads columns 5 to 7).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "terms/KwTerm.h"

namespace kw {

// The kinds of a constant, and of a value on the evaluation stack (kind 0 is an item).
inline constexpr int kKindItem = 0;
inline constexpr int kKindNumber = 1;
inline constexpr int kKindSingleQuoted = 2;
inline constexpr int kKindDoubleQuoted = 3;

// A view of one field's characters. It borrows the line or the field text it was made from.
// A plain record (no initialisers) so that evaluation's fixed arrays of them cost nothing to set up.
struct TermField {
  const char16_t* text;
  int64_t length;
};

class KwLogiTerm : public KwTerm {
 public:
  KwLogiTerm();
  ~KwLogiTerm() override = default;

  // Compiles `term`. Returns 1 when compiled; 0 leaves the term invalid. An empty term always shows
  // message 2160; the other messages only when `show` is non-zero.
  int SetTerm(const std::u16string& term, int show);

  // Evaluates over one line (zero-terminated, any length: an item beyond the end of the line reads a
  // short or empty field). `values` holds the five caller values (may be null when none is needed).
  // A term with row references is refused (assertion, 0).
  int CalculateResult(const char16_t* line, const int64_t* values, int show) const;
  // The same over a line of `length` units, read in place (no zero needed): the items read no further.
  int CalculateResult(const char16_t* line, int64_t length, const int64_t* values, int show) const;
  // The same with one field text per item, in item order.
  int CalculateResult(const std::vector<std::u16string>& fields, const int64_t* values, int show) const;

  int NeedLineNo() const;
  int NeedLineLen() const;
  int NeedMarkLin() const;
  int HasDifferentRow() const;
  int64_t GetTextNumberAreas(int64_t* firsts, int64_t* lasts, int64_t* rowOffsets, int64_t* absRows) const;

  bool IsValid() const { return m_Valid != 0; }
  std::u16string GetCompiled() const { return std::u16string(m_Work.data(), m_WorkLen); }

 protected:
  // Compiles `source`; messages show `term`, the text as the user typed it.
  int Compile(const std::u16string& source, const std::u16string& term, int show);
  // The compile steps, in the order Compile calls them; each returns 0 (or -1) after its message.
  int PrepareTerm(const std::u16string& source, const std::u16string& term, int show);
  void EqualizeIdiomatics();
  int ParseConstants(const std::u16string& term, int show);  // the number of items, or -1
  int ParseItem(int64_t open, int64_t close, const std::u16string& term, int show);
  int CheckBadChars(const std::u16string& term, int show);
  int CheckFinal(int64_t items, const std::u16string& term, int show);

  // One operand or intermediate result on the value stack; a plain record, see TermField.
  struct Value {
    double number;  // an item's number is read from its field only when something needs it
    int kind;
    int pending;    // 1 while an item's number has not been read
    int64_t first;  // text: 1-based first position in the prepared copy; item: its index
    int64_t last;   // text: 1-based last position
  };

  // Evaluates over one field per item. While `widen` is non-null (the trial of CheckFinal) an item
  // compared with a longer text has its range in `widen` widened.
  int Evaluate(const int64_t* values, int show, const TermField* fields, TermReference* widen) const;
  // The items' fields in a line of `length` characters: the columns of each item, cut at the end.
  void LineFields(const char16_t* line, int64_t length, TermField* fields) const;
  Value EvaluateItem(int k, const int64_t* values) const;
  // The number of a value, reading an item's field the first time.
  double Number(Value& v, const TermField* fields) const;
  // Reads the items' numbers into the values when it needs them.
  int EvaluateRelation(Value& left, Value& right, const TermField* fields, int code, TermReference* widen) const;

  // Rules 4 and 5 of a relation: the field `f` against a quoted text (kind kKindSingleQuoted or
  // kKindDoubleQuoted) on its right.
  static int QuotedRelation(const TermField& f, const char16_t* text, int64_t textLen, int kind, int code);
  // A term of one relation between a column and a constant (m_OneItem >= 0) over a line.
  int EvaluateOneRelation(const char16_t* line, int64_t length) const;

  int Fail(int show, uint32_t id, const std::u16string& term);

  struct Constant {
    int64_t first = 0;  // 1-based positions in the prepared copy
    int64_t last = 0;
    int kind = kKindNumber;
    double number = 0.0;  // a number, read from the prepared copy when compiled (the copy never changes)
  };

  std::vector<char16_t> m_Work;      // working buffer, rewritten into postfix order and packed
  int64_t m_WorkLen = 0;
  std::vector<char16_t> m_Prepared;  // the term after preparation: texts intact; constants point into it
  int64_t m_PreparedLen = 0;
  Constant m_Const[kTermMaxConstants] = {};
  int m_ConstCount = 0;
  TermReference m_Item[kTermMaxReferences] = {};  // item k is written 'A'+k
  int64_t m_ItemCount = 0;
  int64_t m_MaxLast = 0;  // the largest last column, the most the line form reads of a line
  int m_Valid = 0;
  int m_OtherRows = 0;  // an item names another line than the one evaluated (set when compiled)
  // A term of one relation between a column item and a constant: the item, the constant and the
  // relation code with the constant on the right; m_OneItem -1 for any other term.
  int m_OneItem = -1;
  int m_OneConstant = 0;
  int m_OneCode = 0;
  int m_Need[4] = {};     // line number, line length, marked line, selected line and fifth value
};

}  // namespace kw
