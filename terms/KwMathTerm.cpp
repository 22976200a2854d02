#include "terms/KwMathTerm.h"

#include <algorithm>
#include <cmath>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace kw {

namespace {

bool IsLower(char16_t c) { return c >= u'a' && c <= u'z'; }
bool IsUpper(char16_t c) { return c >= u'A' && c <= u'Z'; }
bool IsBinary(char16_t c) {
  return c == u'+' || c == u'-' || c == u'*' || c == u'/' || c == u'^' || c == u'%';
}

}  // namespace

// The modulo of the terms: the result lies in [0, |right|) whatever the signs; a right side of
// (almost) zero keeps the left value.
double TermModulo(double left, double right) {
  const double b = std::fabs(right);
  if (!(b > 1e-12)) return left;
  double r = left >= 0 ? left - b * std::trunc(left / b) : left + b * (std::trunc(-left / b) + 1);
  // For huge quotients the formula loses every digit; bring such a remainder back into range at once
  // instead of stepping by b.
  if (r < -b || r > 2 * b) {
    r = std::fmod(r, b);
    if (r < 0) r += b;
  }
  for (int guard = 0; r < -1e-12 && guard < 4; ++guard) r += b;
  for (int guard = 0; r > b - 1e-12 && guard < 4; ++guard) r -= b;
  return r;
}

KwMathTerm::KwMathTerm() { m_HelpId = 2160; }

KwMathTerm::~KwMathTerm() {
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"MathTerm-Destructor:");
}

int KwMathTerm::Fail(int show, uint32_t id, const std::u16string& term) {
  m_Valid = 0;
  m_RefCount = 0;
  m_CompiledLen = 0;
  ShowMessage(show, id, term);
  return 0;
}

int KwMathTerm::SetTerm(const std::u16string& term, int keepBraces, int show) {
  // 1. Clear, copy without blanks and controls, upper-cased.
  m_Valid = 0;
  for (int& need : m_Need) need = 0;
  m_AnyNeed = 0;
  m_DifferentRow = 0;
  m_RefCount = 0;
  m_ConstCount = 0;
  m_MinLineLen = 0;
  m_MaxWidth = 0;
  m_StackNeed = 0;
  m_CompiledLen = 0;
  m_Compiled.assign(term.size() + 1, 0);
  char16_t* buf = m_Compiled.data();
  int64_t n = 0;
  for (char16_t c : term)
    if (c > 32) buf[n++] = ToUpper(c, nullptr);
  if (n == 0) return Fail(show, 2160, term);

  // 2. "=2*[1-3];" is the same term as "2*[1-3]".
  if (buf[0] == u'=') buf[0] = u' ';
  if (buf[n - 1] == u';') buf[n - 1] = u' ';

  // 3. Brackets (the check shows its own message).
  if (!CheckBrackets(buf, n, 0, show)) return Fail(0, 0, term);

  // 4. Spellings. This runs before references are read, so "[1,5]" becomes "[1.5]".
  for (int64_t i = 0; i < n; ++i) {
    char16_t& c = buf[i];
    if (c == u',') c = u'.';
    else if (c == u':') c = u'/';
    else if (c == u'*' && i + 1 < n && buf[i + 1] == u'*') { c = u'^'; buf[++i] = u' '; }
    else if (!keepBraces && c == u'{') c = u'(';
    else if (!keepBraces && c == u'}') c = u')';
  }

  // 5. Operands and functions become single characters.
  for (int64_t i = 0; i < n;) {
    const char16_t c = buf[i];
    if ((c >= u'0' && c <= u'9') || c == u'.') {
      const int64_t end = ScanNumber(buf, i, n);
      if (m_ConstCount >= kTermMaxConstants) return Fail(show, 2166, term);
      int error = 0;
      m_Const[m_ConstCount] = GetDoubleExp(buf, i, end - i, 0, &error);
      for (int64_t k = i; k < end; ++k) buf[k] = u' ';
      buf[i] = static_cast<char16_t>(u'a' + m_ConstCount++);
      i = end;
    } else if (IsUpper(c)) {
      int64_t end = i;
      const int code = FindFunction(buf, i, n, &end);
      if (!code) return Fail(show, 2168, term);
      for (int64_t k = i; k < end; ++k) buf[k] = u' ';
      buf[i] = static_cast<char16_t>(code);
      i = end;
    } else if (c == u'[') {
      int64_t close = i + 1;
      while (close < n && buf[close] != u']') ++close;
      if (close >= n) return Fail(show, 2168, term);  // a '[' after the last ']'
      if (m_RefCount >= kTermMaxReferences) return Fail(show, 2167, term);
      int lineVar = -1;
      const uint32_t error = ParseReference(buf, i, close, 0, m_Ref[m_RefCount], &lineVar);
      if (error) return Fail(show, error, term);
      if (lineVar >= 0) m_Need[lineVar] = m_AnyNeed = 1;
      for (int64_t k = i; k <= close; ++k) buf[k] = u' ';
      buf[i] = static_cast<char16_t>(u'A' + m_RefCount++);
      i = close + 1;
    } else {
      ++i;
    }
  }

  // 6. Nothing else may remain (relations and connectives belong to logical terms).
  for (int64_t i = 0; i < n; ++i) {
    const char16_t c = buf[i];
    if (!(IsLower(c) || IsUpper(c) || c == u'(' || c == u')' || IsBinary(c) || c < 14 || c == u' '))
      return Fail(show, 2168, term);
  }

  // 7. Postfix order.
  if (MakeRPN(buf, 0, n - 1) != 0) return Fail(show, 2171, term);

  // 8. The program must leave exactly one value and never take from an empty stack; the deepest
  // stack is kept so that evaluation can use a fixed array.
  int depth = 0, deepest = 0;
  bool broken = false;
  for (int64_t i = 0; i < n && !broken; ++i) {
    const char16_t c = buf[i];
    if (c == u' ') continue;
    if (IsLower(c) || IsUpper(c)) deepest = std::max(deepest, ++depth);
    else if (IsBinary(c)) broken = --depth < 1;
    else if (c < 14 || c == u'~') broken = depth < 1;
    else broken = true;  // a parenthesis left in a segment that had no operator
  }
  if (broken || depth != 1) {
    if (IsKwWinApp() && GetKwWinApp()->GetTraceMode())
      GetKwWinApp()->Trace(u"KwMathTerm.SetTerm: Term=%s (Stack-Order failed)", term);
    return Fail(show, 2169, term);
  }

  // 9. Ranges; the minimum line length and the widest field.
  for (int64_t k = 0; k < m_RefCount; ++k) {
    const TermReference& r = m_Ref[k];
    if (r.first < -4 || r.last < 0 || (r.last > 0 && (r.first <= 0 || r.first > r.last))) {
      if (IsKwWinApp() && GetKwWinApp()->GetTraceMode())
        GetKwWinApp()->Trace(u"MathTerm.SetTerm: Term=%s (From=%Id-To=%Id failed)", term, r.first, r.last);
      return Fail(show, 2170, term);
    }
    m_MinLineLen = std::max(m_MinLineLen, r.last);
    if (r.first > 0) m_MaxWidth = std::max(m_MaxWidth, r.last - r.first + 1);
  }

  // 10. Pack the program (blanks carry no meaning any more).
  int64_t packed = 0;
  for (int64_t i = 0; i < n; ++i)
    if (buf[i] != u' ') buf[packed++] = buf[i];
  buf[packed] = 0;
  m_CompiledLen = packed;
  m_StackNeed = deepest;
  m_DifferentRow = 0;
  for (int64_t k = 0; k < m_RefCount; ++k)
    if (m_Ref[k].rowOffset != 0 || m_Ref[k].absRow != 0) m_DifferentRow = 1;
  KW_ASSERT(m_StackNeed <= kTermStackSize);
  m_Valid = 1;
  return 1;
}

template <class FieldReader>
double KwMathTerm::Evaluate(const int64_t* values, int* invalid, int show, int forceGon, FieldReader read) const {
  static const int64_t kNoValues[kTermCallerValues] = {-1, -1, -1, -1, -1};
  if (!values) values = kNoValues;
  const bool valuesOk = !m_AnyNeed || ((!m_Need[kValLineNo] || values[kValLineNo] > 0) &&
                                       (!m_Need[kValLineLen] || values[kValLineLen] >= 0) &&
                                       (!m_Need[kValMarked] || values[kValMarked] >= 0) &&
                                       (!m_Need[kValSelected] || values[kValSelected] >= 0) &&
                                       (!m_Need[kValFifth] || values[kValFifth] >= 0));
  KW_ASSERT(valuesOk);
  if (!valuesOk) {
    if (invalid) *invalid = 1;
    return 0.0;
  }
  const double factor = AngleFactor(forceGon ? kTermGon : GetAngleUnit());
  double stack[kTermStackSize];
  int top = 0;  // invariant: the compiled program keeps 0 < top <= m_StackNeed after each operand
  const char16_t* prog = m_Compiled.data();
  for (int64_t i = 0; i < m_CompiledLen; ++i) {
    const char16_t c = prog[i];
    if (c >= u'a' && c <= u'z') {
      stack[top++] = m_Const[c - u'a'];
    } else if (c >= u'A' && c <= u'Z') {
      const TermReference& r = m_Ref[c - u'A'];
      stack[top++] = r.first <= 0 ? static_cast<double>(values[-r.first]) : read(c - u'A');
    } else if (c < 14) {
      double& x = stack[top - 1];
      x = ApplyFunction(c, x, factor);
    } else if (c == u'~') {
      stack[top - 1] = -stack[top - 1];
    } else {
      const double b = stack[--top];
      double& a = stack[top - 1];
      switch (c) {
        case u'+': a += b; break;
        case u'-': a -= b; break;
        case u'*': a *= b; break;
        case u'/': a /= b; break;
        case u'^': a = std::pow(a, b); break;
        default: a = TermModulo(a, b); break;
      }
    }
  }
  double result = stack[0];
  const bool bad = !std::isfinite(result);
  if (bad) {
    result = 0.0;
    ShowMessage(show, 2174);
  }
  if (invalid) *invalid = bad ? 1 : 0;
  return result;
}

double KwMathTerm::CalculateResult(const std::vector<std::u16string>& fields, const int64_t* values, int* invalid,
                                   int show, int forceGon) const {
  KW_ASSERT(m_Valid);
  KW_ASSERT(static_cast<int64_t>(fields.size()) >= m_RefCount);
  if (!m_Valid || static_cast<int64_t>(fields.size()) < m_RefCount) {
    if (invalid) *invalid = 1;
    return 0.0;
  }
  return Evaluate(values, invalid, show, forceGon, [&fields](int k) {
    int error = 0;
    return GetDouble(fields[k].c_str(), 0, 0, 1, &error);
  });
}

double KwMathTerm::CalculateResult(const char16_t* line, const int64_t* values, int* invalid, int show,
                                   int forceGon) const {
  bool ok = m_Valid && !m_DifferentRow && (line || m_MinLineLen < 1);
  // The line must reach the last column read; a zero before it is a short line. Four characters a
  // round, never reading past the zero.
  int64_t len = 0;
  if (ok) {
    while (len + 4 <= m_MinLineLen && line[len] && line[len + 1] && line[len + 2] && line[len + 3]) len += 4;
    while (len < m_MinLineLen && line[len]) ++len;
    ok = len == m_MinLineLen;
  }
  KW_ASSERT(ok);
  if (!ok) {
    if (invalid) *invalid = 1;
    return 0.0;
  }
  return Evaluate(values, invalid, show, forceGon, [this, line](int k) {
    const TermReference& r = m_Ref[k];
    const int64_t width = r.last - r.first + 1;
    if (width <= 0) return 0.0;  // an empty field, as in the array form
    int error = 0;
    return GetDouble(line, r.first - 1, width, 1, &error);
  });
}

int64_t KwMathTerm::GetMinLineLen() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_MinLineLen : 0;
}

int64_t KwMathTerm::GetMaxWidth() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_MaxWidth : 0;
}

int KwMathTerm::NeedLineNo() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[kValLineNo] : 0;
}

int KwMathTerm::NeedLineLen() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[kValLineLen] : 0;
}

int KwMathTerm::NeedMarkLin() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[kValMarked] : 0;
}

int KwMathTerm::NeedSelLin() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[kValSelected] : 0;
}

int KwMathTerm::HasDifferentRow() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_DifferentRow : 0;
}

int64_t KwMathTerm::GetTextNumberAreas(int64_t* firsts, int64_t* lasts, int64_t* rowOffsets, int64_t* absRows) const {
  KW_ASSERT(firsts && lasts && rowOffsets && absRows);
  if (!firsts || !lasts || !rowOffsets || !absRows) return 0;
  for (int64_t k = 0; k < m_RefCount; ++k) {
    firsts[k] = m_Ref[k].first;
    lasts[k] = m_Ref[k].last;
    rowOffsets[k] = m_Ref[k].rowOffset;
    absRows[k] = m_Ref[k].absRow;
  }
  return m_RefCount;
}

}  // namespace kw
