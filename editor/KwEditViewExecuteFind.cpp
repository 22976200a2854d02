// The editor view's find, replace and table replacement tasks. A task takes its search from its event,
// from the view's dialog parameters, or, when neither holds a search text, from the application's
// shared find data (entry 0, the optional entry as replacement, the options).
#include <algorithm>
#include <vector>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "base/KwFile.h"
#include "base/Text.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "editor/KwFindData.h"
#include "platform/Platform.h"

namespace kw {

namespace {

// Converts the "<#n>" sequences of a typed text (through the document's code page when `ascii`, else
// as code points) and drops enclosing quotes. False when a sequence could not be converted.
bool PrepareText(const std::u16string& typed, int ascii, int encoding, std::u16string* out) {
  int ok = 1;
  *out = StrConvert(typed, &ok, ascii != 0 ? (encoding == 4 ? 4 : 0) : 2, 1, 1);
  return ok != 0;
}

// Fills an empty search from the application's shared find data.
void TakeSharedSearch(std::u16string* text, KwFindEventOptions* options, std::u16string* replacement) {
  if (!text->empty() || !IsKwWinApp() || GetKwWinApp()->GetFindData() == nullptr) return;
  KwFindData* data = GetKwWinApp()->GetFindData();
  int shared[KwFindData::kOptionCount];
  data->GetFindEntries(nullptr, shared);
  *text = data->GetEntry(0);
  std::copy(shared, shared + KwFindData::kOptionCount, options->m_Options);
  if (replacement != nullptr && replacement->empty()) *replacement = data->GetOptionalEntry();
}

// The prepared search text, or 0 after message 1401 (empty) or for a bad sequence.
bool SearchText(const std::u16string& typed, const KwFindEventOptions& options, int encoding, std::u16string* out) {
  if (!PrepareText(typed, options.m_Options[2], encoding, out)) return false;
  if (out->empty()) {
    QueryBox(u"FindDlg", 0, 1090, 1, 1401u);
    return false;
  }
  return true;
}

}  // namespace

int KwEditView::FindFrom(const std::u16string& text, const KwFindEventOptions& options, int command, Line* line,
                         int64_t* column, int64_t* length) {
  const int64_t ends[1] = {static_cast<int64_t>(text.size())};
  Line l = 0;
  int64_t c = 0;
  int direction = 1;
  Line s1 = 0, s2 = 0;
  int64_t c1 = 0, c2 = 0;
  GetSel(&s1, &c1, &s2, &c2);
  switch (command) {
    case 1:  // previous: ending at or before the selection's start
      l = s1;
      c = c1;
      direction = 0;
      break;
    case 2:  // first
      break;
    case 3:  // last
      l = m_Doc->GetLinesInDoc();
      c = m_Doc->LineLength(l);
      direction = 0;
      break;
    default:  // next: from the caret, which stands behind the last match
      l = m_CaretLine;
      c = m_CaretCol;
      break;
  }
  c = std::min(c, m_Doc->LineLength(l));
  const int64_t found = m_Doc->FindTextW(&l, &c, text.data(), ends, 1, direction, options.m_Options[0],
                                         options.m_InSelection, options.m_MarkedOnly, options.m_Options[1], length);
  if (found < 0) return 0;
  *line = l;
  *column = c;
  return 1;
}

// Selects the match at (line, column) of `length` units, the caret behind it.
void KwEditView::SelectMatch(Line line, int64_t column, int64_t length) {
  int64_t endColumn = 0;
  const Line endLine = m_Doc->LineFromIndex(m_Doc->LineStart(line) + column + length, &endColumn);
  SetSel(line, column, endLine, endColumn, 1, 1);
}

int KwEditView::ExecuteFind(KwFindEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwFindEvent*>(GetDialogParams(kEventFind));
  if (p == nullptr) return 0;
  KwFindEvent shared;
  if (event == nullptr && p->m_Text.empty()) {
    p->CopyTo(&shared);
    p = &shared;
    TakeSharedSearch(&p->m_Text, &p->m_Find, nullptr);
  }
  std::u16string text;
  if (!SearchText(p->m_Text, p->m_Find, m_Doc->GetEncoding(), &text)) return 0;
  if (p->m_Find.m_InSelection != 0 && CheckSelection(kSelMaskFix) == 0) return 0;
  KwExecuteResult& r = m_LastExecute;
  if (p->m_Find.m_Options[3] != 0) {
    // Count every match of the text.
    std::vector<int64_t> positions, lengths;
    Line l = 0;
    int64_t c = 0, length = 0;
    const int64_t ends[1] = {static_cast<int64_t>(text.size())};
    const int64_t n = m_Doc->FindTextW(&l, &c, text.data(), ends, 1, 1, p->m_Find.m_Options[0],
                                       p->m_Find.m_InSelection, p->m_Find.m_MarkedOnly, p->m_Find.m_Options[1],
                                       &length, &positions, &lengths);
    r.changed = std::max<int64_t>(n, 0);
  }
  Line line = 0;
  int64_t column = 0, length = 0;
  const int found = FindFrom(text, p->m_Find, p->m_Command, &line, &column, &length);
  RecordIfRecording(p);
  if (found == 0) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  r.lines = 1;
  SelectMatch(line, column, length);
  return 1;
}

int KwEditView::ExecuteReplace(KwReplEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwReplEvent*>(GetDialogParams(kEventRepl));
  if (p == nullptr) return 0;
  KwReplEvent shared;
  if (event == nullptr && p->m_Text.empty()) {
    p->CopyTo(&shared);
    p = &shared;
    TakeSharedSearch(&p->m_Text, &p->m_Find, &p->m_ReplText);
  }
  std::u16string text, replacement;
  if (!SearchText(p->m_Text, p->m_Find, m_Doc->GetEncoding(), &text)) return 0;
  if (!PrepareText(p->m_ReplText, p->m_Find.m_Options[2], m_Doc->GetEncoding(), &replacement)) return 0;
  if (p->m_Find.m_InSelection != 0 && CheckSelection(kSelMaskFix) == 0) return 0;
  KwExecuteResult& r = m_LastExecute;
  if (p->m_Command == 1) {
    // Every match of the text, as one undo step.
    int options = 0;
    if (p->m_Find.m_Options[0] != 0) options |= KwEditBase::kFindMatchCase;
    if (p->m_Find.m_Options[1] != 0) options |= KwEditBase::kFindWildcards;
    if (p->m_Find.m_MarkedOnly != 0) options |= KwEditBase::kFindMarkedOnly;
    if (p->m_Find.m_InSelection != 0) options |= KwEditBase::kFindFixSelection;
    const int64_t n = m_Doc->ReplaceAll(0, m_Doc->GetLinesInDoc(), text, replacement, options);
    if (n < 0) return 0;
    r.changed = n;
    r.lines = m_Doc->GetLinesInDoc() + 1;
    const Line caret = ClampLine(m_CaretLine);
    SetSel(caret, m_CaretCol, caret, m_CaretCol, 0, 1);
    RecordIfRecording(p);
    return 1;
  }
  // The next match from the selection's start is replaced; the one after it is selected.
  Line s1 = 0, s2 = 0;
  int64_t c1 = 0, c2 = 0;
  GetSel(&s1, &c1, &s2, &c2);
  SetSel(s1, c1, s1, c1, 0, 0);
  Line line = 0;
  int64_t column = 0, length = 0;
  const int found = FindFrom(text, p->m_Find, 0, &line, &column, &length);
  RecordIfRecording(p);
  if (found == 0) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  const Index at = m_Doc->LineStart(line) + column;
  if (m_Doc->SelReplaceAt(at, at + length, replacement.data(), static_cast<int64_t>(replacement.size()), 1) == 0)
    return 0;
  r.changed = 1;
  r.lines = 1;
  int64_t endColumn = 0;
  const Line endLine = m_Doc->LineFromIndex(at + static_cast<int64_t>(replacement.size()), &endColumn);
  SetSel(endLine, endColumn, endLine, endColumn, 0, 1);
  if (FindFrom(text, p->m_Find, 0, &line, &column, &length) != 0) SelectMatch(line, column, length);
  return 1;
}

int KwEditView::ExecuteTableRep(KwTableRepEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwTableRepEvent*>(GetDialogParams(kEventTableRep));
  if (p == nullptr) return 0;
  // The table: one pair per line, the find text, a tab and the replacement (none: the text is removed).
  // Empty lines are skipped; the file's encoding is detected.
  KwFile file;
  if (p->GetMainFile().empty() || !file.Open(p->GetMainFile(), KwFile::kRead, 13, 26, -1)) {
    QueryBox(u"EditView", 0, 1090, 1, 1102u, p->GetMainFile());
    return 0;
  }
  std::u16string texts, line, find, replacement;
  std::vector<int64_t> ends;
  while (file.ReadLine(line)) {
    if (line.empty()) continue;
    const size_t tab = line.find(u'\t');
    const std::u16string rawFind = line.substr(0, tab);
    const std::u16string rawRepl = tab == std::u16string::npos ? std::u16string() : line.substr(tab + 1);
    if (p->m_Convert != 0) {
      if (!PrepareText(rawFind, 1, m_Doc->GetEncoding(), &find) ||
          !PrepareText(rawRepl, 1, m_Doc->GetEncoding(), &replacement))
        continue;
    } else {
      find = rawFind;
      replacement = rawRepl;
    }
    if (find.empty()) continue;
    texts += find;
    ends.push_back(static_cast<int64_t>(texts.size()));
    texts += replacement;
    ends.push_back(static_cast<int64_t>(texts.size()));
  }
  file.Close();
  if (ends.empty()) {
    QueryBox(u"FindDlg", 0, 1090, 1, 1401u);
    return 0;
  }
  execute::TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  int options = 0;
  if (p->m_MatchCase != 0) options |= KwEditBase::kFindMatchCase;
  if (p->m_Wildcards != 0) options |= KwEditBase::kFindWildcards;
  if (lines.markedOnly) options |= KwEditBase::kFindMarkedOnly;
  // A column range (or a column block) limits the matches through a fix column selection over the
  // task's lines, put back afterwards.
  int64_t col1 = p->m_FirstCol - 1, col2 = p->m_LastCol;
  if (p->m_FirstCol <= 0 && p->m_LastCol <= 0 && lines.area == kAreaColumn) {
    Line l1 = 0, l2 = 0;
    GetArea(kAreaColumn, &l1, &col1, &l2, &col2);
  }
  const bool columns = col1 >= 0 && col2 > col1;
  Line k1 = 0, k2 = 0;
  int64_t kc1 = 0, kc2 = 0;
  const int stickKind = m_Doc->GetStickSelection(&k1, &kc1, &k2, &kc2);
  if (columns) {
    m_Doc->SetStickSelection(kStickColumn, lines.first, col1, lines.last, col2);
    options |= KwEditBase::kFindFixSelection;
  }
  const int64_t n = m_Doc->ReplaceAllByTable(lines.first, lines.last, texts.data(), ends.data(),
                                             static_cast<int64_t>(ends.size() / 2), options);
  if (columns) {
    if (stickKind != kStickNone)
      m_Doc->SetStickSelection(stickKind, k1, kc1, k2, kc2);
    else
      m_Doc->UnstickSelection();
  }
  if (n < 0) return 0;
  m_LastExecute.changed = n;
  m_LastExecute.lines = lines.count;
  RecordIfRecording(p);
  return 1;
}

}  // namespace kw
