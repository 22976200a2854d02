// The editor view's column tasks: column form (a number rewritten through a picture), column write,
// column align and auto insert. Each reads the lines of its area, collects the changed columns and
// applies them at the end as one undo step.
#include <algorithm>

#include "base/Numbers.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "platform/Platform.h"

namespace kw {

using execute::SpliceList;
using execute::TaskLines;

namespace {

// The target columns [*c0, *c1) of 1-based inclusive columns; false (after a beep) when empty.
bool TargetColumns(int64_t first, int64_t last, int64_t* c0, int64_t* c1) {
  *c0 = first - 1;
  *c1 = last;
  if (*c0 < 0 || *c1 <= *c0) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return false;
  }
  return true;
}

// Collects the change that makes columns [c0, c0 + field size) of a line of `length` units read
// `field`: overwrite (a short line is lengthened with blanks) or, with `insert`, put in front of c0.
// Returns whether the line changes.
bool PutField(SpliceList& changes, Index start, const char16_t* text, int64_t length, int64_t c0,
              const std::u16string& field, bool insert, std::u16string& scratch) {
  const auto width = static_cast<int64_t>(field.size());
  if (length < c0) {
    scratch.assign(static_cast<size_t>(c0 - length), u' ');
    scratch += field;
    changes.Add(start + length, 0, scratch);
    return true;
  }
  if (insert) {
    if (width == 0) return false;
    changes.Add(start + c0, 0, field);
    return true;
  }
  const int64_t removed = std::min(length, c0 + width) - c0;
  if (removed == width && std::u16string_view(text + c0, static_cast<size_t>(width)) == field) return false;
  changes.Add(start + c0, removed, field);
  return true;
}

}  // namespace

int KwEditView::ExecuteColForm(KwColFormEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwColFormEvent*>(GetDialogParams(kEventColForm));
  if (p == nullptr) return 0;
  int64_t c0 = 0, c1 = 0;
  if (!TargetColumns(p->m_FirstCol, p->m_LastCol, &c0, &c1)) return 0;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  KwExecuteResult& r = m_LastExecute;
  SpliceList changes;
  std::u16string field, scratch;
  execute::ForTaskLines(*m_Doc, lines, u"EditColForm", r.lines,
                        [&](KwLineWalker& line, int64_t) {
                          const char16_t* text = line.GetText();
                          const int64_t length = line.GetLength();
                          // A column without a number (empty, or not a number) is left alone.
                          const int64_t end = std::min(length, c1);
                          int error = kNumberEmpty;
                          const double value =
                              end > c0 ? GetDouble(text, c0, end - c0, 1, &error) : 0.0;
                          if (error != kNumberOk) {
                            ++r.skipped;
                            return;
                          }
                          const int decimals = execute::NumberDecimals(text + c0, end - c0);
                          if (!execute::FormatResult(value, p->m_Picture, c1 - c0, decimals, kRoundHalfUp, &field))
                            ++r.overflow;
                          if (PutField(changes, line.GetStart(), text, length, c0, field, false, scratch))
                            ++r.changed;
                        });
  if (changes.Apply(*m_Doc) < 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteColReplace(KwColWriteEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwColWriteEvent*>(GetDialogParams(kEventColWrite));
  if (p == nullptr) return 0;
  int64_t c0 = 0, c1 = 0;
  if (!TargetColumns(p->m_FirstCol, p->m_LastCol, &c0, &c1)) return 0;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  // The text cut or filled with blanks to the width of the columns.
  std::u16string field = p->m_Text.substr(0, static_cast<size_t>(c1 - c0));
  field.resize(static_cast<size_t>(c1 - c0), u' ');
  KwExecuteResult& r = m_LastExecute;
  SpliceList changes;
  std::u16string scratch;
  execute::ForTaskLines(*m_Doc, lines, u"EditColWrite", r.lines,
                        [&](KwLineWalker& line, int64_t) {
                          const char16_t* text = line.GetText();
                          const int64_t length = line.GetLength();
                          if (PutField(changes, line.GetStart(), text, length, c0, field, p->m_Insert != 0,
                                       scratch))
                            ++r.changed;
                        });
  if (changes.Apply(*m_Doc) < 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteColAlign(KwAlignEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwAlignEvent*>(GetDialogParams(kEventAlign));
  if (p == nullptr) return 0;
  int64_t c0 = 0, c1 = 0;
  if (!TargetColumns(p->m_FirstCol, p->m_LastCol, &c0, &c1)) return 0;
  if (p->m_Align < 0 || p->m_Align > 2) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  const int64_t width = c1 - c0;
  KwExecuteResult& r = m_LastExecute;
  SpliceList changes;
  std::u16string field;
  execute::ForTaskLines(*m_Doc, lines, u"EditAlign", r.lines,
                        [&](KwLineWalker& line, int64_t) {
                          const char16_t* text = line.GetText();
                          const int64_t length = line.GetLength();
                          if (length <= c0) return;  // nothing in the columns
                          const int64_t end = std::min(length, c1);
                          int64_t a = c0, b = end;
                          while (a < b && text[a] == u' ') ++a;
                          while (b > a && text[b - 1] == u' ') --b;
                          const int64_t free = width - (b - a);
                          const int64_t left = p->m_Align == 0 ? 0 : p->m_Align == 1 ? free : free / 2;
                          field.assign(static_cast<size_t>(left), u' ');
                          field.append(text + a, static_cast<size_t>(b - a));
                          // Where the columns reach the line's end, no blanks are added behind the text.
                          if (end == length)
                            field.erase(field.find_last_not_of(u' ') == std::u16string::npos
                                            ? 0
                                            : field.find_last_not_of(u' ') + 1);
                          else
                            field.resize(static_cast<size_t>(width), u' ');
                          if (std::u16string_view(text + c0, static_cast<size_t>(end - c0)) == field) return;
                          changes.Add(line.GetStart() + c0, end - c0, field);
                          ++r.changed;
                        });
  if (changes.Apply(*m_Doc) < 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteAutoInsert(KwAutoInsertEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwAutoInsertEvent*>(GetDialogParams(kEventAutoInsert));
  if (p == nullptr) return 0;
  const int64_t c0 = p->m_Column - 1;
  if (c0 < 0 || (p->m_Text.empty() && p->m_Picture.empty())) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  KwExecuteResult& r = m_LastExecute;
  SpliceList changes;
  std::u16string field, number, scratch;
  const auto pictureWidth = static_cast<int64_t>(p->m_Picture.size());
  execute::ForTaskLines(*m_Doc, lines, u"EditAutoInsert", r.lines,
                        [&](KwLineWalker& line, int64_t ordinal) {
                          const char16_t* text = line.GetText();
                          const int64_t length = line.GetLength();
                          field = p->m_Text;
                          if (pictureWidth > 0) {
                            // The running number: the start, one step further on each line of the task.
                            const double value =
                                static_cast<double>(p->m_Start) + static_cast<double>(p->m_Step) * (ordinal - 1);
                            if (!execute::FormatResult(value, p->m_Picture, pictureWidth, 0, kRoundHalfUp, &number))
                              ++r.overflow;
                            field += number;
                          }
                          if (PutField(changes, line.GetStart(), text, length, c0, field, true, scratch))
                            ++r.changed;
                        });
  if (changes.Apply(*m_Doc) < 0) return 0;
  RecordIfRecording(p);
  return 1;
}

}  // namespace kw
