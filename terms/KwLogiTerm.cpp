#include "terms/KwLogiTerm.h"

#include <algorithm>
#include <cmath>

#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "terms/KwMathTerm.h"

namespace kw {

namespace {

constexpr char16_t kEmpty[] = u"";
// Stands in the working buffer for a character written with "<#n>" inside a text, so that an escaped
// quote cannot end the text early; the prepared copy holds the character itself.
constexpr char16_t kEscapeMark = u'_';

bool IsLower(char16_t c) { return c >= u'a' && c <= u'z'; }
bool IsUpper(char16_t c) { return c >= u'A' && c <= u'Z'; }
bool IsArithmetic(char16_t c) {
  return c == u'+' || c == u'-' || c == u'*' || c == u'/' || c == u'^' || c == u'%';
}

// The relation code of a postfix character: 1 '=', 2 '#', 3 '<', 4 '>', 5 less-or-equal,
// 6 greater-or-equal, 7 contains, 8 contains-not; 0 for anything else.
int RelationCode(char16_t c) {
  switch (c) {
    case u'=': return 1;
    case u'#': return 2;
    case u'<': return 3;
    case u'>': return 4;
    case kRelLessEqual: return 5;
    case kRelGreaterEqual: return 6;
    case kRelContains: return 7;
    case kRelContainsNot: return 8;
    default: return 0;
  }
}

// A numeric relation on the difference of its two sides, with the tolerance 1e-12.
inline int NumericRelation(double d, int code) {
  switch (code) {
    case 1: return std::fabs(d) < 1e-12;
    case 2: return std::fabs(d) >= 1e-12;
    case 3: return d < 0;
    case 4: return d > 0;
    case 5: return d < 1e-12;
    default: return d > -1e-12;
  }
}

// -1, 0 or 1 for the first `n` characters of `text` against the field at `at`; a field that ends
// first is the smaller.
int CompareText(const char16_t* field, int64_t fieldLen, const char16_t* text, int64_t n) {
  for (int64_t k = 0; k < n; ++k) {
    if (k >= fieldLen) return -1;
    if (field[k] != text[k]) return field[k] < text[k] ? -1 : 1;
  }
  return 0;
}

// The leftmost place of `pattern` in `text`, or -1: StrFind with case and without wildcards. It runs
// once per line on a field of a few columns: a plain loop on the first unit beats a general search.
int64_t FindLiteral(const char16_t* text, int64_t length, const char16_t* pattern, int64_t patLen) {
  if (patLen == 0) return 0;
  const char16_t first = pattern[0];
  for (int64_t at = 0; at + patLen <= length; ++at) {
    if (text[at] != first) continue;
    int64_t k = 1;
    while (k < patLen && text[at + k] == pattern[k]) ++k;
    if (k == patLen) return at;
  }
  return -1;
}

// The field of an item in a line of `length` characters: its columns, cut at the end of the line; empty
// for a line variable.
inline TermField FieldOf(const TermReference& r, const char16_t* line, int64_t length) {
  const int64_t from = r.first - 1;
  const int64_t to = std::min(r.last, length);
  return r.first <= 0 || to <= from ? TermField{kEmpty, 0} : TermField{line + from, to - from};
}

}  // namespace

KwLogiTerm::KwLogiTerm() { m_HelpId = 2170; }

int KwLogiTerm::Fail(int show, uint32_t id, const std::u16string& term) {
  m_Valid = 0;
  m_ItemCount = 0;
  m_WorkLen = 0;
  if (id) ShowMessage(show, id, term);
  return 0;
}

int KwLogiTerm::SetTerm(const std::u16string& term, int show) { return Compile(term, term, show); }

int KwLogiTerm::Compile(const std::u16string& source, const std::u16string& term, int show) {
  if (!PrepareTerm(source, term, show)) return 0;
  EqualizeIdiomatics();
  const int items = ParseConstants(term, show);
  if (items < 0) return 0;
  if (!CheckBadChars(term, show)) return 0;
  if (MakeRPN(m_Work.data(), 0, m_WorkLen - 1) != 0) return Fail(show, 2171, term);
  return CheckFinal(items, term, show);
}

int KwLogiTerm::PrepareTerm(const std::u16string& source, const std::u16string& term, int show) {
  m_Valid = 0;
  m_OneItem = -1;
  for (int& need : m_Need) need = 0;
  m_ConstCount = 0;
  m_ItemCount = 0;
  m_MaxLast = 0;
  m_Work.assign(source.size() + 1, 0);
  m_Prepared.assign(source.size() + 1, 0);
  char16_t* work = m_Work.data();
  char16_t* prep = m_Prepared.data();
  const int64_t size = static_cast<int64_t>(source.size());
  int64_t n = 0;
  char16_t quote = 0;
  for (int64_t i = 0; i < size; ++i) {
    const char16_t c = source[i];
    if (quote) {
      if (c == quote) quote = 0;
      if (c == u'<' && i + 2 < size && source[i + 1] == u'#') {
        int64_t k = i + 2;
        uint32_t code = 0;
        while (k < size && k < i + 8 && source[k] >= u'0' && source[k] <= u'9') code = code * 10 + (source[k++] - u'0');
        if (k > i + 2 && k < size && source[k] == u'>' && code <= 0xFFFF) {
          work[n] = kEscapeMark;
          prep[n++] = static_cast<char16_t>(code);
          i = k;
          continue;
        }
      }
      work[n] = prep[n] = c;
      ++n;
      continue;
    }
    if (c == u'\'' || c == u'"') {
      quote = c;
      work[n] = prep[n] = c;
      ++n;
      continue;
    }
    if (c <= 32) continue;
    work[n] = prep[n] = ToUpper(c, nullptr);
    ++n;
  }
  m_WorkLen = m_PreparedLen = n;
  if (n == 0) return Fail(1, 2160, term);  // shown whatever the show flag
  if (work[0] == u'=') work[0] = prep[0] = u' ';
  if (work[n - 1] == u';') work[n - 1] = prep[n - 1] = u' ';
  if (!CheckBrackets(work, n, 1, show)) return Fail(0, 0, term);
  if (quote) return Fail(show, 2173, term);
  return 1;
}

void KwLogiTerm::EqualizeIdiomatics() {
  const std::u16string words = LoadString(2175);  // "ANORNO": the pairs for and, or, not
  static const char16_t kConnectives[] = u"&|!";
  char16_t* w = m_Work.data();
  const int64_t n = m_WorkLen;
  auto two = [&](int64_t i, char16_t code) {
    w[i] = code;
    w[i + 1] = u' ';
  };
  for (int64_t i = 0; i < n; ++i) {
    const char16_t c = w[i];
    const char16_t next = i + 1 < n ? w[i + 1] : 0;
    if (c == u',') w[i] = u'.';
    else if (c == u':') w[i] = u'/';
    else if (c == u'*' && next == u'*') two(i++, u'^');
    else if (c == u'!' && next == u'=') two(i++, u'#');
    else if (c == u'=' && next == u'=') two(i++, u'=');
    else if ((c == u'=' && next == u'<') || (c == u'<' && next == u'=')) two(i++, kRelLessEqual);
    else if ((c == u'=' && next == u'>') || (c == u'>' && next == u'=')) two(i++, kRelGreaterEqual);
    else if (c == u'$' && next == u'=') two(i++, kRelContains);
    else if (c == u'$' && next == u'#') two(i++, kRelContainsNot);
    else if (c == u'&' && next == u'&') two(i++, u'&');
    else if (c == u'|' && next == u'|') two(i++, u'|');
    else if (c == u'{') w[i] = u'(';  // braces group as in arithmetic terms
    else if (c == u'}') w[i] = u')';
    else if (IsUpper(c) && (i == 0 || !IsUpper(w[i - 1]))) {
      int64_t end = i;
      while (end < n && IsUpper(w[end])) ++end;
      for (size_t k = 0; end - i >= 2 && k < 3 && 2 * k + 1 < words.size(); ++k) {
        if (c == words[2 * k] && next == words[2 * k + 1]) {
          w[i] = kConnectives[k];
          for (int64_t j = i + 1; j < end; ++j) w[j] = u' ';
          break;
        }
      }
      i = end - 1;
    }
  }
}

int KwLogiTerm::ParseConstants(const std::u16string& term, int show) {
  char16_t* w = m_Work.data();
  const int64_t n = m_WorkLen;
  for (int64_t i = 0; i < n;) {
    const char16_t c = w[i];
    if ((c >= u'0' && c <= u'9') || c == u'.' || c == u'\'' || c == u'"') {
      int64_t end, first, last;
      int kind;
      if (c == u'\'' || c == u'"') {
        int64_t close = i + 1;
        while (close < n && w[close] != c) ++close;
        if (close >= n) return Fail(show, 2173, term) - 1;
        kind = c == u'\'' ? kKindSingleQuoted : kKindDoubleQuoted;
        first = i + 2;  // 1-based: the character after the opening quote
        last = close;   // 1-based: the character before the closing quote
        end = close + 1;
      } else {
        end = ScanNumber(w, i, n);
        kind = kKindNumber;
        first = i + 1;
        last = end;
      }
      if (m_ConstCount >= kTermMaxConstants) return Fail(show, 2166, term) - 1;
      Constant& k = m_Const[m_ConstCount];
      k.first = first;
      k.last = last;
      k.kind = kind;
      int error = 0;
      // The prepared copy still has the comma where the working buffer has a point.
      k.number = kind == kKindNumber ? GetDoubleExp(m_Prepared.data(), i, end - i, 1, &error) : 0.0;
      for (int64_t j = i; j < end; ++j) w[j] = u' ';
      w[i] = static_cast<char16_t>(u'a' + m_ConstCount++);
      i = end;
    } else if (IsUpper(c)) {
      int64_t end = i;
      const int code = FindFunction(w, i, n, &end);
      if (!code) return Fail(show, 2168, term) - 1;
      for (int64_t j = i; j < end; ++j) w[j] = u' ';
      w[i] = static_cast<char16_t>(code);
      i = end;
    } else if (c == u'[') {
      int64_t close = i + 1;
      while (close < n && w[close] != u']') ++close;
      if (close >= n) return Fail(show, 2168, term) - 1;
      if (!ParseItem(i, close, term, show)) return -1;
      i = close + 1;
    } else {
      ++i;
    }
  }
  return static_cast<int>(m_ItemCount);
}

int KwLogiTerm::ParseItem(int64_t open, int64_t close, const std::u16string& term, int show) {
  if (m_ItemCount >= kTermMaxReferences) return Fail(show, 2167, term);
  char16_t* w = m_Work.data();
  int lineVar = -1;
  const uint32_t error = ParseReference(w, open, close, 1, m_Item[m_ItemCount], &lineVar);
  if (error) return Fail(show, error, term);
  if (lineVar >= 0) m_Need[std::min(lineVar, 3)] = 1;  // the selected line and the fifth value share one
  for (int64_t j = open; j <= close; ++j) w[j] = u' ';
  w[open] = static_cast<char16_t>(u'A' + m_ItemCount++);
  return 1;
}

int KwLogiTerm::CheckBadChars(const std::u16string& term, int show) {
  static const std::u16string kAllowed = u"(){}+-*/^%&|!=#<> ";
  const char16_t* w = m_Work.data();
  for (int64_t i = 0; i < m_WorkLen; ++i) {
    const char16_t c = w[i];
    const bool ok = IsLower(c) || IsUpper(c) || c < 14 || (c >= kRelContains && c <= kRelLessEqual) ||
                    kAllowed.find(c) != std::u16string::npos;
    if (!ok) return Fail(show, 2168, term);
  }
  return 1;
}

int KwLogiTerm::CheckFinal(int64_t items, const std::u16string& term, int show) {
  char16_t* w = m_Work.data();
  // 1. One relation more than connectives.
  int64_t balance = -1;
  for (int64_t i = 0; i < m_WorkLen; ++i) {
    if (RelationCode(w[i])) ++balance;
    else if (w[i] == u'&' || w[i] == u'|') --balance;
  }
  if (balance != 0) return Fail(show, 2169, term);
  // The program must also never take from an empty stack ("NOT [1]=1" negates before any relation)
  // and end with one truth, so that evaluation can use fixed arrays.
  int values = 0, truths = 0;
  bool broken = false;
  for (int64_t i = 0; i < m_WorkLen && !broken; ++i) {
    const char16_t c = w[i];
    if (c == u' ') continue;
    if (IsLower(c) || IsUpper(c)) ++values;
    else if (c < 14 || c == u'~') broken = values < 1;
    else if (IsArithmetic(c)) broken = --values < 1;
    else if (RelationCode(c)) { broken = values < 2; values = 0; ++truths; }
    else if (c == u'!') broken = truths < 1;
    else if (c == u'&' || c == u'|') broken = --truths < 1;
    else broken = true;
  }
  if (broken || truths != 1 || values != 0) return Fail(show, 2169, term);

  // 2. Ranges (a first column of 0 is accepted here).
  for (int64_t k = 0; k < items; ++k) {
    const TermReference& r = m_Item[k];
    if (r.first < -4 || r.last < 0 || (r.last > 0 && (r.first < 0 || r.first > r.last)))
      return Fail(show, 2170, term);
  }

  int64_t packed = 0;
  for (int64_t i = 0; i < m_WorkLen; ++i)
    if (w[i] != u' ') w[packed++] = w[i];
  w[packed] = 0;
  m_WorkLen = packed;

  // 3. A trial over fields of "1"; with messages on it widens items compared with longer texts.
  m_Valid = 1;
  std::vector<std::u16string> trial;
  for (int64_t k = 0; k < items; ++k) {
    const TermReference& r = m_Item[k];
    trial.emplace_back(static_cast<size_t>(r.first > 0 ? std::max<int64_t>(0, r.last - r.first + 1) : 1), u'1');
  }
  static const int64_t kOnes[kTermCallerValues] = {1, 1, 1, 1, 1};
  TermField fields[kTermMaxReferences];
  for (int64_t k = 0; k < items; ++k) fields[k] = TermField{trial[k].c_str(), static_cast<int64_t>(trial[k].size())};
  Evaluate(kOnes, show, fields, show ? m_Item : nullptr);
  m_OtherRows = 0;
  for (int64_t k = 0; k < items; ++k) {
    m_MaxLast = std::max(m_MaxLast, m_Item[k].last);
    if (m_Item[k].rowOffset != 0 || m_Item[k].absRow != 0) m_OtherRows = 1;
  }
  // The commonest selection, one column of the line against one constant, is evaluated without the
  // stacks; the constant is put on the right, turning the order relations round as rule 2 does.
  m_OneItem = -1;
  if (m_WorkLen == 3 && RelationCode(w[2]) != 0 && m_OtherRows == 0) {
    const bool itemFirst = IsUpper(w[0]) && IsLower(w[1]);
    const bool itemSecond = IsLower(w[0]) && IsUpper(w[1]);
    const int item = itemFirst ? w[0] - u'A' : w[1] - u'A';
    if ((itemFirst || itemSecond) && m_Item[item].first > 0) {
      static const int kSwapped[9] = {0, 1, 2, 4, 3, 6, 5, 7, 8};
      m_OneItem = item;
      m_OneConstant = itemFirst ? w[1] - u'a' : w[0] - u'a';
      m_OneCode = itemFirst ? RelationCode(w[2]) : kSwapped[RelationCode(w[2])];
    }
  }
  return 1;
}

// Both run for every item of every line: inline, so that the shared library does not call them
// through its procedure table.
inline KwLogiTerm::Value KwLogiTerm::EvaluateItem(int k, const int64_t* values) const {
  Value v;
  v.kind = kKindItem;
  v.first = k;
  v.last = 0;
  const TermReference& r = m_Item[k];
  v.pending = r.first > 0;
  v.number = r.first > 0 ? 0.0 : static_cast<double>(values[-r.first]);
  return v;
}

inline double KwLogiTerm::Number(Value& v, const TermField* fields) const {
  if (v.pending) {
    const TermField& f = fields[v.first];
    int error = 0;
    v.number = f.length > 0 ? GetDouble(f.text, 0, f.length, 1, &error) : 0.0;
    v.pending = 0;
  }
  return v.number;
}

int KwLogiTerm::EvaluateRelation(Value& leftValue, Value& rightValue, const TermField* fields, int code,
                                 TermReference* widen) const {
  // 1. Items and numbers compare as numbers.
  if (leftValue.kind < kKindSingleQuoted && rightValue.kind < kKindSingleQuoted && code < 7) {
    return NumericRelation(Number(leftValue, fields) - Number(rightValue, fields), code);
  }
  // 2. A text on the left goes to the right, and the order relations turn round with it.
  const Value* left = &leftValue;
  const Value* right = &rightValue;
  if (left->kind >= kKindSingleQuoted) {
    std::swap(left, right);
    static const int kSwapped[9] = {0, 1, 2, 4, 3, 6, 5, 7, 8};
    code = kSwapped[code];
  }
  if (left->kind != kKindItem || right->kind == kKindNumber) return 0;
  const TermField& f = fields[left->first];

  // 3. Item against item: one contains the other.
  if (right->kind == kKindItem) {
    const TermField& g = fields[right->first];
    bool found;
    if (f.length != g.length) {
      const TermField& longer = f.length > g.length ? f : g;
      const TermField& shorter = f.length > g.length ? g : f;
      found = FindLiteral(longer.text, longer.length, shorter.text, shorter.length) >= 0;
    } else {
      found = std::char_traits<char16_t>::compare(f.text, g.text, static_cast<size_t>(f.length)) == 0;
    }
    if (code == 7) return found;
    if (code == 8) return !found;
    return 0;
  }

  const char16_t* text = m_Prepared.data() + right->first - 1;
  const int64_t textLen = std::max<int64_t>(0, right->last - right->first + 1);
  // 6. The trial widens a short item to the text it is compared with.
  if (widen && f.length < textLen && m_Item[left->first].first > 0) {
    const bool star = std::char_traits<char16_t>::find(text, static_cast<size_t>(textLen), u'*') != nullptr;
    TermReference& r = widen[left->first];
    r.last = r.first + textLen - 1 + (right->kind == kKindDoubleQuoted && star ? 10 : 0);
  }

  return QuotedRelation(f, text, textLen, right->kind, code);
}

int KwLogiTerm::QuotedRelation(const TermField& f, const char16_t* text, int64_t textLen, int kind, int code) {
  // 4. Double quotes: a case-blind pattern with wildcards, found or not.
  if (kind == kKindDoubleQuoted) {
    bool found = true;  // a pattern of stars only matches every field
    for (int64_t k = 0; k < textLen; ++k) {
      if (text[k] != u'*') {
        found = StrFind(f.text, 0, f.length, text, textLen, 0, 1, nullptr) >= 0;
        break;
      }
    }
    if (code == 1 || code == 7) return found;
    if (code == 2 || code == 8) return !found;
    return 0;
  }

  // 5. Single quotes: compared literally, at the place where a longer field holds the text (there it
  // is equal); a field no longer than the text is compared from its start.
  const bool equality = code == 1 || code == 2 || code == 7 || code == 8;
  if (equality && f.length == textLen && textLen > 0) {
    // Equal or not, field and text of one width (a code column): every unit compared, no early way
    // out whose branch the lines' random answers would keep mispredicting.
    unsigned differ = 0;
    for (int64_t i = 0; i < textLen; ++i) differ |= static_cast<unsigned>(f.text[i] ^ text[i]);
    return (differ == 0) == (code == 1 || code == 7);
  }
  bool has = f.length > 0;
  int cmp = 0;
  if (has && f.length > textLen) has = FindLiteral(f.text, f.length, text, textLen) >= 0;
  else if (has) cmp = CompareText(f.text, f.length, text, textLen);
  switch (code) {
    case 1: case 7: return has && cmp == 0;
    case 2: case 8: return !(has && cmp == 0);
    case 3: return has && cmp < 0;
    case 4: return has && cmp > 0;
    case 5: return has && cmp <= 0;
    default: return has && cmp >= 0;
  }
}

int KwLogiTerm::EvaluateOneRelation(const char16_t* line, int64_t length) const {
  const TermField f = FieldOf(m_Item[m_OneItem], line, length);
  const Constant& k = m_Const[m_OneConstant];
  if (k.kind == kKindNumber) {
    if (m_OneCode >= 7) return 0;  // a number is no text to contain
    int error = 0;
    const double number = f.length > 0 ? GetDouble(f.text, 0, f.length, 1, &error) : 0.0;
    return NumericRelation(number - k.number, m_OneCode);
  }
  const char16_t* text = m_Prepared.data() + k.first - 1;
  const int64_t textLen = std::max<int64_t>(0, k.last - k.first + 1);
  return QuotedRelation(f, text, textLen, k.kind, m_OneCode);
}

int KwLogiTerm::Evaluate(const int64_t* values, int show, const TermField* fields, TermReference* widen) const {
  static const int64_t kNoValues[kTermCallerValues] = {-1, -1, -1, -1, -1};
  if (!values) values = kNoValues;
  const bool valuesOk = (!m_Need[0] || values[kValLineNo] > 0) && (!m_Need[1] || values[kValLineLen] >= 0) &&
                        (!m_Need[2] || values[kValMarked] >= 0) &&
                        (!m_Need[3] || (values[kValSelected] >= 0 && values[kValFifth] >= 0));
  KW_ASSERT(valuesOk);
  if (!valuesOk) return 0;
  double factor = 0.0;  // of the angle unit, found at the first function that needs it

  // Invariants, checked when compiling: neither stack is ever taken from when empty, and neither holds
  // more than every operand of the term.
  Value stack[kTermStackSize];
  int top = 0;
  int truth[kTermStackSize];
  int truths = 0;
  const char16_t* prog = m_Work.data();
  for (int64_t i = 0; i < m_WorkLen; ++i) {
    const char16_t c = prog[i];
    if (IsLower(c)) {
      const Constant& k = m_Const[c - u'a'];
      Value& v = stack[top++];
      v.number = k.number;
      v.kind = k.kind;
      v.pending = 0;
      v.first = k.first;
      v.last = k.last;
    } else if (IsUpper(c)) {
      stack[top] = EvaluateItem(c - u'A', values);
      ++top;
    } else if (c < 14 || c == u'~') {
      Number(stack[top - 1], fields);
      double& x = stack[top - 1].number;
      stack[top - 1].kind = kKindNumber;
      if (c != u'~' && factor == 0.0) factor = AngleFactor(GetAngleUnit());
      x = c == u'~' ? -x : ApplyFunction(c, x, factor);
    } else if (IsArithmetic(c)) {
      const double b = Number(stack[--top], fields);
      Value& a = stack[top - 1];
      Number(a, fields);
      a.kind = kKindNumber;
      switch (c) {
        case u'+': a.number += b; break;
        case u'-': a.number -= b; break;
        case u'*': a.number *= b; break;
        case u'/': a.number /= b; break;
        case u'^': a.number = std::pow(a.number, b); break;
        default: a.number = TermModulo(a.number, b); break;
      }
    } else if (const int code = RelationCode(c)) {
      Value& right = stack[--top];
      Value& left = stack[--top];
      if (left.kind < kKindSingleQuoted && right.kind < kKindSingleQuoted && code < 7) {
        // Numbers and items compare as numbers (the first rule of EvaluateRelation, kept inline).
        const double d = Number(left, fields) - Number(right, fields);
        truth[truths++] = NumericRelation(d, code);
      } else {
        truth[truths++] = EvaluateRelation(left, right, fields, code, widen);
      }
      top = 0;
      const bool mixed = (left.kind == kKindNumber && right.kind >= kKindSingleQuoted) ||
                         (right.kind == kKindNumber && left.kind >= kKindSingleQuoted);
      if (show && mixed) {
        ShowMessage(show, 2172);
        return 0;
      }
    } else if (c == u'!') {
      truth[truths - 1] = !truth[truths - 1];
    } else if (c == u'&') {
      --truths;
      truth[truths - 1] = truth[truths - 1] && truth[truths];
    } else if (c == u'|') {
      --truths;
      truth[truths - 1] = truth[truths - 1] || truth[truths];
    }
  }
  return truths > 0 ? (truth[truths - 1] != 0) : 0;
}

int KwLogiTerm::CalculateResult(const std::vector<std::u16string>& fields, const int64_t* values, int show) const {
  const bool ok = m_Valid && static_cast<int64_t>(fields.size()) >= m_ItemCount;
  KW_ASSERT(ok);
  if (!ok) return 0;
  TermField views[kTermMaxReferences];
  for (int64_t k = 0; k < m_ItemCount; ++k)
    views[k] = TermField{fields[k].c_str(), static_cast<int64_t>(fields[k].size())};
  return Evaluate(values, show, views, nullptr);
}

void KwLogiTerm::LineFields(const char16_t* line, int64_t length, TermField* fields) const {
  for (int64_t k = 0; k < m_ItemCount; ++k) fields[k] = FieldOf(m_Item[k], line, length);
}

int KwLogiTerm::CalculateResult(const char16_t* line, const int64_t* values, int show) const {
  if (!line) line = kEmpty;
  // The line's length, as far as any item reads; four characters a round, never past the zero.
  int64_t len = 0;
  while (len + 4 <= m_MaxLast && line[len] && line[len + 1] && line[len + 2] && line[len + 3]) len += 4;
  while (len < m_MaxLast && line[len]) ++len;
  return CalculateResult(line, len, values, show);
}

int KwLogiTerm::CalculateResult(const char16_t* line, int64_t length, const int64_t* values, int show) const {
  const bool ok = m_Valid && !m_OtherRows && length >= 0 && (line || length == 0);
  KW_ASSERT(ok);
  if (!ok) return 0;
  if (m_OneItem >= 0) return EvaluateOneRelation(line, length);
  TermField fields[kTermMaxReferences];
  LineFields(line, length, fields);
  return Evaluate(values, show, fields, nullptr);
}

int KwLogiTerm::NeedLineNo() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[0] : 0;
}

int KwLogiTerm::NeedLineLen() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[1] : 0;
}

int KwLogiTerm::NeedMarkLin() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_Need[2] : 0;
}

int KwLogiTerm::HasDifferentRow() const {
  KW_ASSERT(m_Valid);
  return m_Valid ? m_OtherRows : 0;
}

int64_t KwLogiTerm::GetTextNumberAreas(int64_t* firsts, int64_t* lasts, int64_t* rowOffsets, int64_t* absRows) const {
  KW_ASSERT(firsts && lasts && rowOffsets && absRows);
  if (!firsts || !lasts || !rowOffsets || !absRows) return 0;
  for (int64_t k = 0; k < m_ItemCount; ++k) {
    firsts[k] = m_Item[k].first;
    lasts[k] = m_Item[k].last;
    rowOffsets[k] = m_Item[k].rowOffset;
    absRows[k] = m_Item[k].absRow;
  }
  return m_ItemCount;
}

}  // namespace kw
