// The shared base of the arithmetic and logical terms: the angle unit, the bracket check and the
// translation of a term buffer into postfix order.
//
// A term is compiled once from the text the user typed and then evaluated once per line. Compiling
// rewrites a working buffer in place: every operand becomes one letter ('a'..'z' a constant, 'A'..'Z'
// a column reference), every function one code character below 14, and MakeRPN reorders the buffer
// into postfix order with blanks where characters were removed. Evaluation walks that buffer with a
// fixed-size stack, so nothing is allocated per line.
#pragma once

#include <cstdint>
#include <string>

namespace kw {

class KwWinApp;

// Angle units of the trigonometric functions.
inline constexpr int kTermRadians = 0;
inline constexpr int kTermDegrees = 1;
inline constexpr int kTermGon = 2;

// Limits of a compiled term: operands are single letters, so there are 26 of each kind.
inline constexpr int kTermMaxConstants = 26;
inline constexpr int kTermMaxReferences = 26;
// Operands bound the evaluation stack: at most every constant and every reference on it at once.
inline constexpr int kTermStackSize = kTermMaxConstants + kTermMaxReferences;

// Codes written into the postfix buffer for the relations that take two characters in the source.
inline constexpr char16_t kRelContains = 240;     // "$="
inline constexpr char16_t kRelContainsNot = 241;  // "$#"
inline constexpr char16_t kRelGreaterEqual = 242; // ">=" "=>"
inline constexpr char16_t kRelLessEqual = 243;    // "<=" "=<"

// Function codes (1..13), in the order of the name table "SINCOSTANLOGEXPSQRASIACOATAGMSGDDINTABS".
inline constexpr char16_t kFuncCount = 13;

// One reference ("[From-To]", "[dR.From-To]", "[A-row.From-To]", or a line variable).
// A first column of 0..-4 is the code of a line variable (values[0..4] of the caller); otherwise it is
// a 1-based column and the field runs from `first` to `last` inclusive.
struct TermReference {
  int64_t first = 0;
  int64_t last = 0;
  int64_t rowOffset = 0;  // relative line, may be negative; 0 = the current line
  int64_t absRow = 0;     // absolute line (1-based); 0 = none
};

class KwTerm {
 public:
  KwTerm();
  virtual ~KwTerm();
  KwTerm(const KwTerm&) = delete;             // a compiled term owns its buffers and settings binding
  KwTerm& operator=(const KwTerm&) = delete;

  // 0 radians, 1 degrees, 2 gon. A value outside 0..2 is a broken contract: assertion, unit unchanged.
  int GetAngleUnit() const { return m_AngleUnit; }
  void SetAngleUnit(int unit);

 protected:
  // Applies function code 1..13 (SIN COS TAN LOG EXP SQR ASI ACO ATA GMS GDD INT ABS) to x; the
  // trigonometric ones take and give angles in the unit whose factor (units per radian) is given.
  static double ApplyFunction(char16_t code, double x, double factor);

  // Counts '(' against ')' and '[' against ']' over `len` characters (only the totals matter). With
  // `honourQuotes`, characters inside '...' or "..." are not counted and an unclosed quote fails.
  // Returns 1 when balanced; otherwise shows the first failing message (2161..2165) when `show`.
  int CheckBrackets(const char16_t* text, int64_t len, int honourQuotes, int show);

  // Rewrites buf[first..last] in place into postfix order. Returns 0 on success.
  int MakeRPN(char16_t* buf, int64_t first, int64_t last);

  // Shows message `id` through the query box with the sender "Terms", this term's help id and the
  // message's picture and style. `term` (the text as typed) fills a "%s", with every '|' shown as
  // U+00A6 so that it cannot split the button labels. Nothing happens when `show` is 0.
  void ShowMessage(int show, uint32_t id, const std::u16string& term = std::u16string()) const;

  // The angle factor of the trigonometric functions for a unit.
  static double AngleFactor(int unit);

  // Compile steps shared by both kinds of term, all on an upper-cased working buffer of `len` units.
  // The end (exclusive) of the numeric constant starting at `i`: digits and points, an exponent letter
  // E, D or F with an optional sign after it.
  static int64_t ScanNumber(const char16_t* buf, int64_t i, int64_t len);
  // The function code (1..13) of the name starting at `i`, 0 when its first three letters name none;
  // `end` receives the end of the word of uppercase letters.
  static int FindFunction(const char16_t* buf, int64_t i, int64_t len, int64_t* end);
  // Reads the reference buf[open] == '[' .. buf[close] == ']'. Returns 0 or the message id (2170,
  // 2178, 2179). `lineVar` receives the caller value a line-variable name stands for, or -1.
  // With `emptyLastIsZero`, "[5-]" is columns 5..0; otherwise it is a bad range.
  static uint32_t ParseReference(const char16_t* buf, int64_t open, int64_t close, int emptyLastIsZero,
                                 TermReference& ref, int* lineVar);

  uint32_t m_HelpId = 2160;  // the help topic of this kind of term's messages

 private:
  int MakeRPNAt(char16_t* buf, int64_t first, int64_t last, int depth);
  // The one place where the angle unit is read from the settings and written back: bound in the
  // application's persistence table to section "Terms", key "ANGLEUNIT", when the term is made, and
  // saved (which releases the section) when it goes away. Terms alive at the same time share the
  // value of the first (see KwPersistence). Without an application object the unit stays radians.
  void LoadAngleUnit();
  void SaveAngleUnit() const;

  int m_AngleUnit = kTermRadians;  // invariant: 0..2
  KwWinApp* m_pApp = nullptr;      // the application whose persistence table bound m_AngleUnit; not owned
};

}  // namespace kw
