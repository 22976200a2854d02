// The area walk of KwEditBase, the selections kept by the document, the operations that overwrite units
// in place (LowerUpper, BlankOver, RemoveZeros) and the undo and redo of all area records.
#include "editor/KwEditBaseArea.h"

#include <algorithm>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/Text.h"
#include "editor/KwEditUndo.h"
#include "platform/Platform.h"

namespace kw {

namespace {

// The wait cursor for the whole of an operation.
class AreaWait {
 public:
  AreaWait() { GetPlatform().SetWaitCursor(true); }
  ~AreaWait() { GetPlatform().SetWaitCursor(false); }
  AreaWait(const AreaWait&) = delete;
  AreaWait& operator=(const AreaWait&) = delete;
};

bool Tracing() { return IsKwWinApp() && GetKwWinApp()->GetTraceMode(); }

// Units that LowerUpper may change: only these are handed to ToLower/ToUpper.
inline bool MaybeLetter(char16_t u) {
  const char16_t l = static_cast<char16_t>(u | 32);
  return (l >= u'a' && l <= u'z') || (u >= 0xC0 && u <= 0xFE);
}

inline bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

}  // namespace

// ---- The walk ---------------------------------------------------------------------------------------

int KwEditBase::WalkArea(AreaWalk& w) {
  KW_ASSERT(m_Head != nullptr);
  if (m_Head == nullptr) return 0;
  const unsigned area = w.area;
  bool ok = area == kAreaText || area == kAreaStream || area == kAreaColumn || area == kAreaMarked;
  if (ok && area != kAreaText) {
    ok = w.line1 >= 0 && w.line1 <= w.line2 && w.line2 <= m_LinesInDoc && w.column1 >= 0 && w.column2 >= 0;
    if (ok && (area == kAreaColumn || w.line1 == w.line2)) ok = w.column1 <= w.column2;
  }
  KW_ASSERT(ok);
  if (!ok) return 0;
  const Line first = area == kAreaText ? 0 : w.line1;
  const Line last = area == kAreaText ? m_LinesInDoc : w.line2;
  // Streams report progress by character index, line-wise areas by line.
  Index startIndex = 0, endIndex = m_TotalChars;
  if (area == kAreaStream) {
    startIndex = std::min(LineStart(first) + w.column1, m_TotalChars);
    endIndex = std::min(LineStart(last) + w.column2, m_TotalChars);
  }
  const bool stream = area == kAreaText || area == kAreaStream;
  AreaLine a;
  auto visitLine = [&](Line l) -> bool {
    const LinePos* p = StartOfLine(l);
    a.line = l;
    a.start = p->index;
    a.length = p->length;
    a.eolLength = p->eolLength;
    a.chunk = p->chunk;
    a.offset = p->offset;
    a.from = 0;
    a.to = a.length;
    a.eol = a.eolLength > 0;
    if (area == kAreaStream) {
      if (l == w.line1) {
        a.from = std::min(w.column1, a.length);
        a.eol = a.eol && w.column1 <= a.length;
      }
      if (l == w.line2) {
        a.to = std::min(w.column2, a.length);
        a.eol = a.eol && w.column2 >= a.length + a.eolLength;
      }
    } else if (area == kAreaColumn) {
      a.from = std::min(w.column1, a.length);
      a.to = std::min(w.column2, a.length);
      a.eol = false;
    }
    w.visit(a);
    if (w.steps == nullptr) return true;
    return stream ? w.steps->Step(a.start + a.to - startIndex, endIndex - startIndex)
                  : w.steps->Step(l - first, last - first + 1);
  };
  if (area == kAreaMarked) {
    for (Line l = GetNextLineMark(first - 1); l >= 0 && l <= last; l = GetNextLineMark(l))
      if (!visitLine(l)) return 2;
  } else {
    for (Line l = first; l <= last; ++l)
      if (!visitLine(l)) return 2;
  }
  return 1;
}

// ---- Selections ------------------------------------------------------------------------------------

int KwEditBase::InStickArea(Line line, int64_t column, int64_t length) {
  Line l1, l2;
  int64_t c1, c2;
  const int kind = GetStickSelection(&l1, &c1, &l2, &c2);
  KW_ASSERT(kind == kStickStream || kind == kStickColumn);
  if (kind != kStickStream && kind != kStickColumn) return 0;
  if (line < l1 || line > l2) return 0;
  if (kind == kStickColumn) return column >= c1 && column + length <= c2 ? 1 : 0;
  if (line == l1 && column < c1) return 0;
  if (column + length > LineLength(line, 1)) return 0;
  if (line == l2 && column + length > c2) return 0;
  return 1;
}

int KwEditBase::ReportStreamEnd(Line line1, int64_t /*column1*/, Line* line2, int64_t* column2) {
  KW_ASSERT(line2 != nullptr && column2 != nullptr);
  if (line2 == nullptr || column2 == nullptr) return 0;
  if (*column2 != 0 || *line2 <= line1 || *line2 > m_LinesInDoc) return 0;
  --*line2;
  *column2 = LineLength(*line2, 1);
  return 1;
}

unsigned KwEditBase::GetDocSelFlags() {
  unsigned flags = 0;
  const int kind = GetStickSelection(nullptr, nullptr, nullptr, nullptr);
  if (kind == kStickStream) flags |= kSelFixStream;
  if (kind == kStickColumn) flags |= kSelFixColumn;
  if (MinLineMark() >= 0 && MinLineMark() <= m_LinesInDoc) flags |= kSelMarkedLines;
  return flags;
}

// ---- Second pass and saving ----------------------------------------------------------------------------

int KwEditBase::FinishArea(tagUNDORECORD& r, const char16_t* warning, PaneSteps* steps) {
  if (r.data == nullptr) {  // no memory for the record: nothing was changed yet
    m_Undo->Clear(1);
    return 0;
  }
  bool stopped = false;
  int64_t applied = 0;
  int64_t expected = r.value2;
  if (r.type == kUndoSortLines) {
    applied = ApplySort(r, false);
  } else if (r.type == kUndoLowerUpper || r.type == kUndoBlankOver || r.type == kUndoCharOver ||
             r.type == kUndoRemoveZeros) {
    applied = ApplyUnits(r, false, steps, &stopped);
  } else {
    applied = ApplyEditList(r, false, steps, &stopped);
  }
  if (stopped || applied != expected) {
    std::free(r.data);
    r.data = nullptr;
    // The text is only partly changed: the earlier records no longer fit it.
    ResetUndoStack();
    if (!stopped && IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(warning);
    return 0;
  }
  m_Undo->SaveRecord(r.position, r.value1, r.value2, r.data, r.type);
  r.data = nullptr;
  return 1;
}

// ---- Units overwritten in place -----------------------------------------------------------------------

int64_t KwEditBase::ApplyUnits(const tagUNDORECORD& r, bool undo, PaneSteps* steps, bool* stopped) {
  const int64_t n = r.value2;
  const auto* idx = static_cast<const int64_t*>(r.data);
  const auto* old = reinterpret_cast<const char16_t*>(idx + n);
  const bool zeros = r.type == kUndoRemoveZeros;
  const bool lowerUpper = r.type == kUndoLowerUpper;
  const auto written = static_cast<char16_t>(r.value1);
  bool ff = written == kFormFeed;
  // Walk the chunks once; the indexes ascend.
  Index cs = 0;
  int64_t k = 0;
  for (tagTEXTDESC* c = m_Head; c != nullptr && k < n; c = c->next) {
    const Index ce = cs + c->used;
    for (; k < n && idx[k] < ce; ++k) {
      if (idx[k] < cs) return k;
      char16_t u;
      if (zeros) {
        u = undo ? u'0' : u' ';
      } else if (undo) {
        u = old[k];
      } else if (lowerUpper) {
        u = r.value1 ? ToLower(old[k]) : ToUpper(old[k]);
      } else {
        u = written;
      }
      if (!zeros && old[k] == kFormFeed) ff = true;
      c->text[idx[k] - cs] = u;
    }
    cs = ce;
    if (steps && !steps->Step(k, n)) {
      *stopped = true;
      break;
    }
  }
  const bool over = r.type == kUndoBlankOver || r.type == kUndoCharOver;
  if (over && (ff || !m_FFTable.empty())) BuildFFTable();
  return k;
}

int KwEditBase::LowerUpper(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, int toLower,
                           int encoding, KwProgress* progress) {
  AreaWait wait;
  int enc = encoding < 0 ? m_Encoding : encoding;
  int* encArg = enc == 4 ? &enc : nullptr;
  const bool tracing = Tracing();
  UnitChanges ch;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.ForPieces(a.from, a.to, [&](const char16_t* p, int64_t n, Index at) {
      for (int64_t i = 0; i < n; ++i) {
        const char16_t u = p[i];
        char16_t v;
        if (u < 0x80) {  // ASCII letters change case in every encoding
          if (static_cast<unsigned>((u | 32) - u'a') >= 26u) continue;
          v = toLower ? static_cast<char16_t>(u | 32) : static_cast<char16_t>(u & ~32);
        } else {
          if (!MaybeLetter(u)) continue;
          v = toLower ? ToLower(u, encArg) : ToUpper(u, encArg);
        }
        if (v == u) continue;
        ch.Add(at + i, u);
        if (tracing && IsKwWinApp() && GetKwWinApp()->GetTraceMode())
          GetKwWinApp()->Trace(u"EditBase.LowerUpper: Index=%Id", at + i);
      }
    });
  };
  if (WalkArea(w) == 0) return 0;
  if (ch.indexes.empty()) return 1;
  tagUNDORECORD r;
  r.position = static_cast<uint64_t>(ch.indexes[0]);
  r.value1 = toLower ? 1 : 0;
  r.value2 = static_cast<int64_t>(ch.indexes.size());
  r.data = ch.Block(true);
  r.type = kUndoLowerUpper;
  steps.SetRange(0, 100);
  return FinishArea(r, u"EditBase.LowerUpper: WARNING! Internal Error detected", &steps);
}

int KwEditBase::BlankOver(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2,
                          KwProgress* progress, char16_t character) {
  // The character must not make or break lines.
  const bool ok = character != m_EOLText[0] && !(m_EOLText[0] == 13 && character == 10);
  KW_ASSERT(ok);
  if (!ok) return 0;
  AreaWait wait;
  const bool tracing = Tracing();
  UnitChanges ch;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.ForPieces(a.from, a.to, [&](const char16_t* p, int64_t n, Index at) {
      for (int64_t i = 0; i < n; ++i) {
        if (p[i] == character) continue;
        ch.Add(at + i, p[i]);
        if (tracing && IsKwWinApp() && GetKwWinApp()->GetTraceMode())
          GetKwWinApp()->Trace(u"EditBase.BlankOver: Index=%Id", at + i);
      }
    });
  };
  if (WalkArea(w) == 0) return 0;
  if (ch.indexes.empty()) return 1;
  tagUNDORECORD r;
  r.position = static_cast<uint64_t>(ch.indexes[0]);
  r.value1 = character;
  r.value2 = static_cast<int64_t>(ch.indexes.size());
  r.data = ch.Block(true);
  r.type = character == u' ' ? kUndoBlankOver : kUndoCharOver;
  steps.SetRange(0, 100);
  return FinishArea(r, u"EditBase.BlankOver: WARNING! Internal Error detected", &steps);
}

int KwEditBase::RemoveZeros(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, int mode,
                            KwProgress* progress) {
  if (mode == 0) mode = kZerosLeading | kZerosTrailing;
  AreaWait wait;
  const bool tracing = Tracing();
  UnitChanges ch;
  std::u16string s;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.Copy(a.from, a.to, s);
    const auto n = static_cast<int64_t>(s.size());
    auto add = [&](int64_t i) {
      ch.Add(a.start + a.from + i, u'0');
      if (tracing && IsKwWinApp() && GetKwWinApp()->GetTraceMode())
        GetKwWinApp()->Trace(u"EditBase.RemoveZeros: Index=%Id", a.start + a.from + i);
    };
    for (int64_t i = 0; i < n;) {
      if (!IsDigit(s[static_cast<size_t>(i)])) {
        ++i;
        continue;
      }
      int64_t j = i;
      while (j < n && IsDigit(s[static_cast<size_t>(j)])) ++j;
      // A run behind "digit." or "digit," is a decimal fraction.
      const bool fraction = i >= 2 && (s[static_cast<size_t>(i - 1)] == u'.' || s[static_cast<size_t>(i - 1)] == u',') &&
                            IsDigit(s[static_cast<size_t>(i - 2)]);
      if (fraction && (mode & kZerosTrailing)) {
        int64_t k = j - 1;
        while (k > i && s[static_cast<size_t>(k)] == u'0') --k;
        for (int64_t z = k + 1; z < j; ++z) add(z);
      } else if (!fraction && (mode & kZerosLeading)) {
        for (int64_t z = i; z + 1 < j && s[static_cast<size_t>(z)] == u'0'; ++z) add(z);
      }
      i = j;
    }
  };
  if (WalkArea(w) == 0) return 0;
  if (ch.indexes.empty()) return 1;
  tagUNDORECORD r;
  r.position = static_cast<uint64_t>(ch.indexes[0]);
  r.value2 = static_cast<int64_t>(ch.indexes.size());
  r.data = ch.Block(false);
  r.type = kUndoRemoveZeros;
  steps.SetRange(0, 100);
  return FinishArea(r, u"EditBase.RemoveZeros: WARNING! Internal error detected", &steps);
}

// ---- Replacement lists ----------------------------------------------------------------------------------

int64_t KwEditBase::ApplyEditList(const tagUNDORECORD& r, bool undo, PaneSteps* steps, bool* stopped) {
  const int64_t n = r.value2;
  const auto* e = static_cast<const int64_t*>(r.data);
  const auto* units = reinterpret_cast<const char16_t*>(e + 3 * n);
  auto fits = [&](Index at, int64_t count) { return at >= 0 && count >= 0 && at + count <= m_TotalChars; };
  if (!undo) {
    int64_t u = 0;
    for (int64_t k = 0; k < n; ++k) {
      const Index at = e[3 * k];
      const int64_t nr = e[3 * k + 1], ni = e[3 * k + 2];
      if (!fits(at, nr)) return k;
      ReplaceText(at, nr, units + u + nr, ni);
      u += nr + ni;
      if (steps && !steps->Step(k + 1, n)) {
        *stopped = true;
        return k + 1;
      }
    }
    return n;
  }
  int64_t u = 0;
  for (int64_t k = 0; k < n; ++k) u += e[3 * k + 1] + e[3 * k + 2];
  for (int64_t k = n - 1; k >= 0; --k) {
    const Index at = e[3 * k];
    const int64_t nr = e[3 * k + 1], ni = e[3 * k + 2];
    u -= nr + ni;
    if (!fits(at, ni)) return n - 1 - k;
    ReplaceText(at, ni, units + u, nr);
  }
  return n;
}

// ---- Undo and redo ---------------------------------------------------------------------------------------

// Undo and redo of an area record apply the same stored changes, backwards or forwards.
int64_t KwEditBase::ApplyArea(tagUNDORECORD& r, bool undo) {
  KW_ASSERT(r.data != nullptr);
  if (r.data == nullptr) return -1;
  bool stopped = false;
  int64_t done;
  if (r.type == kUndoSortLines)
    done = ApplySort(r, undo);
  else if (r.type == kUndoLowerUpper || r.type == kUndoBlankOver || r.type == kUndoCharOver ||
           r.type == kUndoRemoveZeros)
    done = ApplyUnits(r, undo, nullptr, &stopped);
  else
    done = ApplyEditList(r, undo, nullptr, &stopped);
  KW_ASSERT(done == r.value2);
  return done == r.value2 ? static_cast<int64_t>(r.position) : -1;
}

int64_t KwEditBase::UndoArea(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) { return ApplyArea(r, true); }

int64_t KwEditBase::RedoArea(tagUNDORECORD& r, Line /*line*/, KwProgress* /*progress*/) { return ApplyArea(r, false); }

}  // namespace kw
