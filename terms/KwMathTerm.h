// Arithmetic terms: a one-line formula over numeric constants, columns of the current line (or of
// other lines) and the caller's line variables, compiled once with SetTerm and evaluated per line.
//
//   KwMathTerm t;
//   if (t.SetTerm(u"[10-19]*2+[21-30]", 0, 1)) {
//     for (each line) if (len >= t.GetMinLineLen()) sum += t.CalculateResult(line, nullptr, &bad, 0, 0);
//   }
//
// Source language: numbers (',' is a decimal point, an exponent with E, D or F), references "[5]",
// "[1-5]", "[-1.1-5]" (columns 1..5 of the line before), "[A3.1-5]" (of line 3), line variables
// "[LN]"/"[ZN]" line number, "[LL]"/"[ZL]" line length, "[LM]"/"[ZM]", "[LS]"/"[ZS]", "[ML]"/"[MZ]"
// further caller values; + - * / % ^ (also "**"), ':' for '/', the functions SIN COS TAN LOG EXP SQR
// ASI ACO ATA GMS GDD INT ABS (any longer word with those first three letters), parentheses and, unless
// kept, braces as parentheses. Blanks and case do not matter. All binary operators are
// left-associative (2^3^2 = 64); a minus is unary only first in a segment (2*(-3), not 2*-3).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "terms/KwTerm.h"

namespace kw {

// Indexes of the five caller values (line variables).
inline constexpr int kValLineNo = 0;
inline constexpr int kValLineLen = 1;
inline constexpr int kValMarked = 2;
inline constexpr int kValSelected = 3;
inline constexpr int kValFifth = 4;
inline constexpr int kTermCallerValues = 5;

// The modulo of all terms: the result lies in [0, |right|) and takes the sign of neither operand
// (7 % -3 = 1, -7 % 3 = 2); a right side within 1e-12 of zero keeps the left value (5 % 0 = 5).
double TermModulo(double left, double right);

class KwMathTerm : public KwTerm {
 public:
  KwMathTerm();
  ~KwMathTerm() override;

  // Compiles `term`. Returns 1 on success; 0 leaves the term invalid and, when `show` is non-zero,
  // has shown the reason. With `keepBraces` 0, '{' '}' are read as '(' ')'; otherwise they are refused.
  int SetTerm(const std::u16string& term, int keepBraces, int show);

  // Evaluates over one line (zero-terminated; at least GetMinLineLen characters). `values` holds the
  // five caller values (may be null when none is needed); `invalid` (may be null) receives 1 when the
  // result was not a finite number and was set to 0 (message 2174 when `show`). `forceGon` reads the
  // trigonometric functions in gon whatever the angle unit. A term with row references is refused.
  double CalculateResult(const char16_t* line, const int64_t* values, int* invalid, int show, int forceGon) const;
  // The same with one prepared field text per reference, in reference order.
  double CalculateResult(const std::vector<std::u16string>& fields, const int64_t* values, int* invalid, int show,
                         int forceGon) const;

  // Queries on a compiled term; on an invalid term they are broken contracts (assertion, 0).
  int64_t GetMinLineLen() const;  // the largest last column of all references
  int64_t GetMaxWidth() const;    // the widest column reference
  int NeedLineNo() const;
  int NeedLineLen() const;
  int NeedMarkLin() const;
  int NeedSelLin() const;
  int HasDifferentRow() const;    // 1 when a reference names another line

  // Copies the four fields of every reference into arrays of at least 26 entries; returns the count.
  int64_t GetTextNumberAreas(int64_t* firsts, int64_t* lasts, int64_t* rowOffsets, int64_t* absRows) const;

  bool IsValid() const { return m_Valid != 0; }
  // The compiled postfix program (operand letters, function codes, operators), for inspection.
  std::u16string GetCompiled() const { return std::u16string(m_Compiled.data(), m_CompiledLen); }

 private:
  int Fail(int show, uint32_t id, const std::u16string& term);
  template <class FieldReader>
  double Evaluate(const int64_t* values, int* invalid, int show, int forceGon, FieldReader read) const;

  // The compiled string, rewritten in place from the source and then packed: postfix order, no blanks.
  // Allocated at the source's length plus one on every SetTerm.
  std::vector<char16_t> m_Compiled;
  int64_t m_CompiledLen = 0;
  double m_Const[kTermMaxConstants] = {};        // constant k is written 'a'+k
  TermReference m_Ref[kTermMaxReferences] = {};  // reference k is written 'A'+k
  int64_t m_RefCount = 0;
  int m_ConstCount = 0;
  int m_Valid = 0;  // set only when the last SetTerm succeeded
  int m_Need[kTermCallerValues] = {};
  int m_AnyNeed = 0;       // any of m_Need
  int m_DifferentRow = 0;  // a reference names another line
  int64_t m_MinLineLen = 0;
  int64_t m_MaxWidth = 0;
  int m_StackNeed = 0;  // deepest stack of the compiled program; invariant: <= kTermStackSize
};

}  // namespace kw
