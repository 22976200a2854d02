// The editor view's column calculation and column sum: an arithmetic term evaluated on each line of
// the task's area. The calculation writes each result into a target column range through a picture;
// all lines are read first and the results applied at the end in one pass, as one undo step, so that
// a term naming other lines ("[-1.10-19]") reads them as they were before the task.
#include <algorithm>
#include <cmath>

#include "app/QueryBox.h"
#include "base/Numbers.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "platform/Platform.h"
#include "terms/KwMathTerm.h"

namespace kw {

using execute::FieldDecimals;
using execute::SpliceList;
using execute::TaskLines;
using execute::TaskPane;
using execute::TermInput;

namespace {

// Compiles the term of a task; a bad term has shown its message.
bool CompileMath(KwMathTerm& term, const std::u16string& text) { return term.SetTerm(text, 0, 1) != 0; }

// One pass of a term over the lines of a task: calls `use(line, value)` for each line whose value is
// valid; counts the lines visited and those too short or without a valid value.
template <class Use>
void EvaluateLines(KwEditBase& doc, const TaskLines& lines, const KwMathTerm& term, const char16_t* title,
                   KwExecuteResult& result, Use&& use) {
  TaskPane pane(title, lines.count);
  execute::TaskWalk walk(doc, lines);
  TermInput input = execute::MakeInput(doc, lines, term);
  // The term reads its columns up to this length, so the lines it reads are read in place.
  const int64_t minLength = term.GetMinLineLen();
  int64_t ordinal = 0;
  while (walk.Next()) {
    if (!pane.Step(ordinal)) break;  // stopped: what was done so far is kept
    ++ordinal;
    ++result.lines;
    KwLineWalker& line = walk.Current();
    const int64_t length = line.GetLength();
    if (length < minLength) {
      ++result.skipped;
      continue;
    }
    input.Prepare(line.GetLine(), length, ordinal);
    int invalid = 0;
    const double value = input.otherRows()
                             ? term.CalculateResult(input.fields(), input.values(), &invalid, 0, 0)
                             : term.CalculateResult(line.GetText(), input.values(), &invalid, 0, 0);
    if (invalid != 0 || !std::isfinite(value)) {
      ++result.skipped;
      continue;
    }
    use(line, value);
  }
}

}  // namespace

int KwEditView::ExecuteColCalc(KwColCalcEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwColCalcEvent*>(GetDialogParams(kEventColCalc));
  if (p == nullptr) return 0;
  const int64_t c0 = p->m_FirstCol - 1;  // target columns [c0, c1)
  const int64_t c1 = p->m_LastCol;
  if (c0 < 0 || c1 <= c0) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  KwMathTerm term;
  const execute::TaskAngleUnit unit(term, p->m_AngleUnit);
  if (!CompileMath(term, p->m_Term)) return 0;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;

  int64_t firsts[kTermMaxReferences], lasts[kTermMaxReferences], rows[kTermMaxReferences],
      abs[kTermMaxReferences];
  const int64_t references = term.GetTextNumberAreas(firsts, lasts, rows, abs);
  const int termDecimals = execute::TermDecimals(p->m_Term);
  const bool limited = p->m_Min < p->m_Max;
  const int64_t width = c1 - c0;
  KwExecuteResult& r = m_LastExecute;
  // One undo step, asked about once: the changes of a term that reads only its own line are applied
  // in parts behind the walk, so that a large text never holds a change for each of its lines.
  if (m_Doc->StartUndoGroup(lines.count) == 0) return 0;
  struct CloseGroup {
    KwEditBase* doc;
    ~CloseGroup() { doc->CloseUndoGroup(); }
  } closeGroup{m_Doc};
  const bool early = term.HasDifferentRow() == 0;
  bool failed = false;
  SpliceList changes;
  changes.Reserve(lines.count, lines.count * (width + 1));
  std::u16string field, padded;
  EvaluateLines(*m_Doc, lines, term, u"EditColCalc", r,
                [&](const KwLineWalker& line, double value) {
                  if (early && !changes.ApplyBefore(*m_Doc, line.GetChunkStart())) failed = true;
                  const char16_t* text = line.GetText();
                  const int64_t length = line.GetLength();
                  if (limited && (value < p->m_Min || value > p->m_Max)) {
                    ++r.skipped;
                    return;
                  }
                  // Without a picture a result keeps the most decimals of the term's constants and of
                  // the fields it read on this line.
                  const int decimals =
                      p->m_Picture.empty()
                          ? std::max(termDecimals, FieldDecimals(text, length, firsts, lasts, references))
                          : 0;
                  if (!execute::FormatResult(value, p->m_Picture, width, decimals, p->m_RoundMode, &field))
                    ++r.overflow;
                  const Index start = line.GetStart();
                  if (length < c0) {
                    // A line ending before the target is lengthened with blanks.
                    padded.assign(static_cast<size_t>(c0 - length), u' ');
                    padded += field;
                    changes.Add(start + length, 0, padded);
                  } else if (p->m_Insert != 0) {
                    changes.Add(start + c0, 0, field);
                  } else {
                    const int64_t removed = std::min(length, c1) - c0;
                    if (removed == width && std::u16string_view(text + c0, static_cast<size_t>(width)) == field)
                      return;  // already there
                    changes.Add(start + c0, removed, field);
                  }
                  ++r.changed;
                });
  if (changes.Apply(*m_Doc) < 0 || failed) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteColSum(KwColSumEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwColSumEvent*>(GetDialogParams(kEventColSum));
  if (p == nullptr) return 0;
  KwMathTerm term;
  if (!CompileMath(term, p->m_Term)) return 0;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;

  int64_t firsts[kTermMaxReferences], lasts[kTermMaxReferences], rows[kTermMaxReferences],
      abs[kTermMaxReferences];
  const int64_t references = term.GetTextNumberAreas(firsts, lasts, rows, abs);
  int decimals = execute::TermDecimals(p->m_Term);
  double sum = 0;
  KwExecuteResult& r = m_LastExecute;
  EvaluateLines(*m_Doc, lines, term, u"EditColSum", r, [&](const KwLineWalker& line, double value) {
    sum += value;
    decimals = std::max(decimals, FieldDecimals(line.GetText(), line.GetLength(), firsts, lasts, references));
    ++r.changed;
  });
  r.value = sum;
  // The sum is written with the most decimals of the fields it added.
  const std::u16string text = FormatDouble(sum, decimals);
  switch (p->m_Output) {
    case 0:
      QueryBox(u"EditView", 0, 0, 0, u"%s", text);
      break;
    case 1:
      GetPlatform().SetClipboardText(text);
      break;
    case 2: {
      // A line of its own after the area's last line.
      char16_t eol[3];
      const int eolLength = m_Doc->GetEOLText(eol, 0);
      const std::u16string eolText(eol, static_cast<size_t>(eolLength));
      const Line last = lines.last;
      const Index end = m_Doc->LineStart(last) + m_Doc->LineLength(last, 1);
      const bool terminated = m_Doc->LineLength(last, 1) > m_Doc->LineLength(last, 0);
      SpliceList changes;
      changes.Add(end, 0, terminated ? text + eolText : eolText + text);
      if (changes.Apply(*m_Doc) < 0) return 0;
      break;
    }
    default:  // 3: only reported in GetLastExecute().value
      break;
  }
  RecordIfRecording(p);
  return 1;
}

}  // namespace kw
