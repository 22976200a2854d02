#include "terms/KwTerm.h"

#include <cmath>
#include <string>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "base/Assert.h"
#include "base/Numbers.h"
#include "data/KwPersistence.h"

namespace kw {

namespace {

// Deeper nesting than this (of parentheses, functions or unary signs) is refused rather than
// risking the machine stack; no hand-typed term comes near it.
constexpr int kMaxNesting = 2000;

// The settings section of every term's angle unit (key "ANGLEUNIT").
constexpr const char16_t* kTermSection = u"Terms";

struct MessageStyle {
  uint32_t id;
  uint32_t picture;
  uint32_t style;
  bool takesTerm;
};

constexpr MessageStyle kMessages[] = {
    {2160, 1085, 0, false}, {2161, 1085, 0, false}, {2162, 1085, 0, false}, {2163, 1085, 0, false},
    {2164, 1085, 0, false}, {2165, 1085, 0, false}, {2166, 1105, 1, true},  {2167, 1105, 1, true},
    {2168, 1085, 0, true},  {2169, 1085, 1, true},  {2170, 1085, 0, true},  {2171, 1085, 1, true},
    {2172, 1085, 1, false}, {2173, 1090, 1, true},  {2174, 1090, 1, false}, {2178, 1105, 1, true},
    {2179, 1105, 1, true},  {2180, 1085, 1, true},
};

bool IsBlank(char16_t c) { return c == u' '; }

// Binding strength of a binary operator, loosest first; 0 for anything else.
int Rank(char16_t c) {
  switch (c) {
    case u'|': return 1;
    case u'&': return 2;
    case u'=': case u'#': return 3;
    case u'<': case u'>': case kRelContains: case kRelContainsNot: case kRelGreaterEqual: case kRelLessEqual:
      return 4;
    case u'+': case u'-': return 5;
    case u'*': case u'/': case u'%': return 6;
    case u'^': return 7;
    default: return 0;
  }
}

bool IsOperand(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

// Moves buf[from+1..to] one place left and writes `c` at `to`.
void MoveToEnd(char16_t* buf, int64_t from, int64_t to, char16_t c) {
  for (int64_t i = from; i < to; ++i) buf[i] = buf[i + 1];
  buf[to] = c;
}

}  // namespace

KwTerm::KwTerm() {
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"Term.Constructor");
  LoadAngleUnit();
}

KwTerm::~KwTerm() {
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"Term.Destructor");
  SaveAngleUnit();
}

void KwTerm::LoadAngleUnit() {
  m_pApp = IsKwWinApp() ? GetKwWinApp() : nullptr;
  KwPersistence* persist = m_pApp != nullptr ? m_pApp->GetPersist() : nullptr;
  if (persist == nullptr) return;  // without an application the unit stays radians
  persist->LoadINI(u"ANGLEUNIT", &m_AngleUnit);
  persist->LoadINI(KwPersistence::GetSectionScope(kTermSection), kTermSection);
  // The file is the user's to edit; a unit it does not know is read as radians.
  if (m_AngleUnit < kTermRadians || m_AngleUnit > kTermGon) m_AngleUnit = kTermRadians;
}

void KwTerm::SaveAngleUnit() const {
  // Only the application whose table bound the unit may save it; a term that outlives its
  // application (or was made before one existed) saves nothing.
  if (m_pApp == nullptr || !IsKwWinApp() || GetKwWinApp() != m_pApp) return;
  KwPersistence* persist = m_pApp->GetPersist();
  if (persist != nullptr) persist->SaveINI(kTermSection, KwPersistence::GetSectionScope(kTermSection));
}

void KwTerm::SetAngleUnit(int unit) {
  KW_ASSERT(unit >= kTermRadians && unit <= kTermGon);
  if (unit >= kTermRadians && unit <= kTermGon) m_AngleUnit = unit;
}

double KwTerm::AngleFactor(int unit) {
  switch (unit) {
    case kTermDegrees: return 57.29577951308232;
    case kTermGon: return 63.66197723675813;
    default: return 1.0;
  }
}

void KwTerm::ShowMessage(int show, uint32_t id, const std::u16string& term) const {
  if (!show) return;
  const MessageStyle* m = nullptr;
  for (const MessageStyle& s : kMessages)
    if (s.id == id) m = &s;
  KW_ASSERT(m != nullptr);
  if (!m) return;
  if (m->takesTerm) {
    std::u16string shown = term;
    for (char16_t& c : shown)
      if (c == u'|') c = u'\u00A6';
    QueryBox(u"Terms", m_HelpId, m->picture, m->style, id, shown);
  } else {
    QueryBox(u"Terms", m_HelpId, m->picture, m->style, id);
  }
}

int KwTerm::CheckBrackets(const char16_t* text, int64_t len, int honourQuotes, int show) {
  KW_ASSERT(text != nullptr || len == 0);
  int64_t round = 0, square = 0;
  char16_t quote = 0;  // the open quote character, 0 outside a quoted text
  for (int64_t i = 0; text && i < len; ++i) {
    const char16_t c = text[i];
    if (honourQuotes && (c == u'\'' || c == u'"')) {
      if (quote == 0) quote = c;
      else if (quote == c) quote = 0;
      continue;
    }
    if (quote) continue;
    if (c == u'(') ++round;
    else if (c == u')') --round;
    else if (c == u'[') ++square;
    else if (c == u']') --square;
  }
  uint32_t failure = 0;
  if (round > 0) failure = 2161;
  else if (round < 0) failure = 2162;
  else if (square > 0) failure = 2163;
  else if (square < 0) failure = 2164;
  else if (quote) failure = 2165;
  if (!failure) return 1;
  ShowMessage(show, failure);
  return 0;
}

int KwTerm::MakeRPN(char16_t* buf, int64_t first, int64_t last) {
  KW_ASSERT(buf != nullptr && first >= 0);
  if (!buf || first < 0) return 1;
  return MakeRPNAt(buf, first, last, 0);
}

int KwTerm::MakeRPNAt(char16_t* buf, int64_t first, int64_t last, int depth) {
  if (depth > kMaxNesting) return 1;
  int64_t f = first, l = last;
  for (;;) {
    while (f <= l && IsBlank(buf[f])) ++f;
    while (l >= f && IsBlank(buf[l])) --l;
    if (f > l || buf[f] != u'(') break;
    // Strip the pair only when the parenthesis that closes the first one is the last character.
    int64_t level = 0, close = -1;
    for (int64_t i = f; i <= l; ++i) {
      if (buf[i] == u'(') ++level;
      else if (buf[i] == u')' && --level == 0) { close = i; break; }
    }
    if (close != l) break;
    buf[f] = u' ';
    buf[l] = u' ';
  }
  if (f > l) return 1;
  if (f == l) return IsOperand(buf[f]) ? 0 : 1;

  // The loosest operator at parenthesis depth 0; the rightmost of equals, so all are left-associative.
  int64_t level = 0, pos = -1;
  int best = 99;
  for (int64_t i = f; i <= l; ++i) {
    const char16_t c = buf[i];
    if (c == u'(') { ++level; continue; }
    if (c == u')') { --level; continue; }
    if (level != 0 || (c == u'-' && i == f)) continue;
    const int r = Rank(c);
    if (r > 0 && r <= best) { best = r; pos = i; }
  }
  if (pos >= 0) {
    const char16_t op = buf[pos];
    if (MakeRPNAt(buf, f, pos - 1, depth + 1) != 0) return 1;
    if (MakeRPNAt(buf, pos + 1, l, depth + 1) != 0) return 1;
    MoveToEnd(buf, pos, l, op);
    return 0;
  }
  const char16_t head = buf[f];
  if ((head >= 1 && head <= kFuncCount) || head == u'-' || head == u'!') {
    buf[f] = u' ';
    if (MakeRPNAt(buf, f + 1, l, depth + 1) != 0) return 1;
    MoveToEnd(buf, f, l, head == u'-' ? u'~' : head);
    return 0;
  }
  return 0;  // two operands side by side are found by the stack check
}

int64_t KwTerm::ScanNumber(const char16_t* buf, int64_t i, int64_t len) {
  while (i < len) {
    const char16_t c = buf[i];
    if ((c >= u'0' && c <= u'9') || c == u'.') {
      ++i;
    } else if (c == u'E' || c == u'D' || c == u'F') {
      ++i;
      if (i < len && (buf[i] == u'+' || buf[i] == u'-')) ++i;
    } else {
      break;
    }
  }
  return i;
}

int KwTerm::FindFunction(const char16_t* buf, int64_t i, int64_t len, int64_t* end) {
  static const char16_t kNames[] = u"SINCOSTANLOGEXPSQRASIACOATAGMSGDDINTABS";
  int code = 0;
  if (i + 3 <= len) {
    for (int k = 0; k < kFuncCount && !code; ++k)
      if (buf[i] == kNames[3 * k] && buf[i + 1] == kNames[3 * k + 1] && buf[i + 2] == kNames[3 * k + 2])
        code = k + 1;
  }
  int64_t e = i;
  while (e < len && buf[e] >= u'A' && buf[e] <= u'Z') ++e;
  if (end) *end = e;
  return code;
}

namespace {

// The integer in buf[from..to] inclusive; 0 for an empty part (GetInt would read to the end).
int64_t IntPart(const char16_t* buf, int64_t from, int64_t to) {
  if (to < from) return 0;
  int error = 0;
  return GetInt(buf, from, to - from + 1, &error);
}

struct LineVariable {
  char16_t name[5];
  int value;  // index of the caller value; the first column holds -value
};

constexpr LineVariable kLineVariables[] = {
    {u"[LN]", 0}, {u"[ZN]", 0}, {u"[LL]", 1}, {u"[ZL]", 1}, {u"[LM]", 2},
    {u"[ZM]", 2}, {u"[LS]", 3}, {u"[ZS]", 3}, {u"[ML]", 4}, {u"[MZ]", 4},
};

}  // namespace

uint32_t KwTerm::ParseReference(const char16_t* buf, int64_t open, int64_t close, int emptyLastIsZero,
                                TermReference& ref, int* lineVar) {
  ref = TermReference();
  if (lineVar) *lineVar = -1;
  int64_t point = -1, sep = -1;
  for (int64_t i = open + 1; i < close; ++i) {
    if (buf[i] == u'.') point = i;
    else if (buf[i] == u'-' || buf[i] == u',') sep = i;
  }
  if (sep < 0 && point >= 0) return 2179;
  if (sep < 0) {
    const int64_t v = IntPart(buf, open + 1, close - 1);
    ref.first = ref.last = v;
    if (v < 1 && close == open + 3) {
      for (const LineVariable& var : kLineVariables) {
        if (std::char_traits<char16_t>::compare(buf + open, var.name, 4) == 0) {
          ref.first = -var.value;
          if (lineVar) *lineVar = var.value;
          break;
        }
      }
    }
    return 0;
  }
  if (sep == close - 1 && !emptyLastIsZero) return 2170;
  if (point >= 0) {
    if (point > sep) return 2178;
    ref.first = IntPart(buf, point + 1, sep - 1);
    ref.last = IntPart(buf, sep + 1, close - 1);
    if (buf[open + 1] == u'A') {
      ref.absRow = IntPart(buf, open + 2, point - 1);
      if (ref.absRow < 1) ref.absRow = 0;
    } else {
      ref.rowOffset = IntPart(buf, open + 1, point - 1);
    }
    return 0;
  }
  ref.first = IntPart(buf, open + 1, sep - 1);
  ref.last = IntPart(buf, sep + 1, close - 1);
  return 0;
}

double KwTerm::ApplyFunction(char16_t code, double x, double factor) {
  switch (code) {
    case 1: return std::sin(x / factor);
    case 2: return std::cos(x / factor);
    case 3: return std::tan(x / factor);
    case 4: return std::log(x);
    case 5: return std::exp(x);
    case 6: return std::sqrt(x);
    case 7: return std::asin(x) * factor;
    case 8: return std::acos(x) * factor;
    case 9: return std::atan(x) * factor;
    case 10: return DecToHex(x, 2, 9, 360.0);
    case 11: return HexToDec(x, 2, nullptr);
    case 12: return std::trunc(x);
    default: return std::fabs(x);
  }
}

}  // namespace kw
