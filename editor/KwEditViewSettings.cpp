// The editor view's tab stops, view settings, file commands and the commands that are not available.
#include <algorithm>
#include <iterator>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "base/Format.h"
#include "data/KwPersistence.h"
#include "editor/KwEditView.h"
#include "platform/Platform.h"

namespace kw {

namespace {

constexpr const char16_t* kSender = u"EditView";
constexpr const char16_t* kSettingsSection = u"EditView";
constexpr uint32_t kIdsReloadUnmodified = 1902;
constexpr uint32_t kIdsReloadModified = 1903;
constexpr uint32_t kQuestionPicture = 1085;

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

}  // namespace

// ---- Tab stops ------------------------------------------------------------------------------------------

int KwEditView::AddTabStop(int64_t column) {
  if (column <= 0) return 0;
  const auto at = std::lower_bound(m_TabStops.begin(), m_TabStops.end(), column);
  if (at != m_TabStops.end() && *at == column) return 0;
  m_TabStops.insert(at, column);
  return 1;
}

int KwEditView::RemoveTabStop(int64_t column) {
  const auto at = std::lower_bound(m_TabStops.begin(), m_TabStops.end(), column);
  if (at == m_TabStops.end() || *at != column) return 0;
  m_TabStops.erase(at);
  return 1;
}

int64_t KwEditView::NextTabStop(int64_t column) const {
  const auto at = std::upper_bound(m_TabStops.begin(), m_TabStops.end(), column);
  if (at != m_TabStops.end()) return *at;
  // Beyond the last stop they follow every tab width, counted from the last stop.
  const int64_t base = m_TabStops.empty() ? 0 : m_TabStops.back();
  return base + ((column - base) / m_TabWidth + 1) * m_TabWidth;
}

int64_t KwEditView::PrevTabStop(int64_t column) const {
  if (column <= 0) return 0;
  const int64_t base = m_TabStops.empty() ? 0 : m_TabStops.back();
  // Beyond the last listed stop (or 0) the regular stops; the last listed stop is one of them.
  if (column > base) return base + ((column - 1 - base) / m_TabWidth) * m_TabWidth;
  const auto at = std::lower_bound(m_TabStops.begin(), m_TabStops.end(), column);
  return at == m_TabStops.begin() ? 0 : *std::prev(at);
}

void KwEditView::OnTabStop() {
  if (RemoveTabStop(m_CaretCol) == 0 && AddTabStop(m_CaretCol) == 0) Beep();
}

// ---- View settings ----------------------------------------------------------------------------------------

int KwEditView::OnViewBigger() {
  for (int size : kFontSizes) {
    if (size > m_Settings.fontSize) {
      m_Settings.fontSize = size;
      return 1;
    }
  }
  return 0;
}

int KwEditView::OnViewSmaller() {
  for (auto it = std::rbegin(kFontSizes); it != std::rend(kFontSizes); ++it) {
    if (*it < m_Settings.fontSize) {
      m_Settings.fontSize = *it;
      return 1;
    }
  }
  return 0;
}

void KwEditView::OnViewColors() { NotYetImplemented(kSender); }

int KwEditView::OnViewSet() {
  Settings edited = m_Settings;
  if (QueryViewSettings(&edited) == 0) return 0;
  edited.fontSize = std::clamp(edited.fontSize, kFontSizes[0], kFontSizes[std::size(kFontSizes) - 1]);
  edited.repaints = m_Settings.repaints + 1;  // new settings are a repaint
  m_Settings = edited;
  return 1;
}

int KwEditView::QueryGotoLine(Line* /*line*/) { return 0; }
int KwEditView::QueryFileName(int /*exportFile*/, std::u16string* /*name*/) { return 0; }
int KwEditView::QueryViewSettings(Settings* /*settings*/) { return 0; }

// ---- Files -------------------------------------------------------------------------------------------------

int KwEditView::OnFileImport() {
  std::u16string name;
  if (QueryFileName(0, &name) == 0 || name.empty()) return 0;
  m_FlyKind = 0;
  Line line = m_CaretLine;
  int64_t column = m_CaretCol;
  const int64_t length = m_Doc->LineLength(line);
  const bool group = m_Doc->StartUndoGroup(0) != 0;
  if (column > length) ReplaceAtPadded(line, column, 0, std::u16string());  // the file goes in at the caret
  const Index before = m_Doc->GetTotalChars();
  const int done = m_Doc->MergeFile(line, column, name, 0, -1, 1);
  if (group) m_Doc->CloseUndoGroup();
  if (done == 0) {
    QueryBox(kSender, 0, 1090, 1, u"%s|OK", name);
    return 0;
  }
  int64_t endColumn = 0;
  const Index end = m_Doc->LineStart(line) + column + (m_Doc->GetTotalChars() - before);
  const Line endLine = m_Doc->LineFromIndex(end, &endColumn);
  GotoLineCol(endLine, endColumn);
  return 1;
}

int KwEditView::OnFileExport() {
  std::u16string name;
  if (QueryFileName(1, &name) == 0 || name.empty()) return 0;
  Line l1 = 0, l2 = m_Doc->GetLinesInDoc();
  int64_t c1 = 0, c2 = m_Doc->LineLength(l2);
  std::u16string text;
  const int kind = CurrentSelection(&l1, &c1, &l2, &c2);
  if (kind == kStickColumn) {
    // The block's lines without the marker line of a column text.
    m_Doc->GetColumnText(l1, l2, c1, c2, &text, 0, nullptr);
    const size_t marker = std::char_traits<char16_t>::length(KwEditBase::kColumnMarker) +
                          static_cast<size_t>(m_Doc->GetEOLLength());
    text.erase(0, std::min(marker, text.size()));
  } else {
    const Index start = m_Doc->LineStart(l1) + c1;
    const Index end = m_Doc->LineStart(l2) + c2;
    text.resize(static_cast<size_t>(std::max<Index>(end - start, 0)));
    text.resize(static_cast<size_t>(std::max<int64_t>(m_Doc->GetText(start, text.data(), end - start), 0)));
  }
  KwEditBase out;
  out.InitEdit();
  out.SetEOLType(m_Doc->GetEOLType());
  out.AddText(text, 0, 0);
  out.SetEncoding(m_Doc->GetEncoding(), m_Doc->HasByteOrderMark() ? 0 : 2);
  out.SetInteractive(0);
  std::u16string error;
  if (out.WriteFile(name, 1, &error) == 0) {
    QueryBox(kSender, 0, 1090, 1, u"%s\n\n%s", name, error);
    return 0;
  }
  return 1;
}

int KwEditView::ReloadChangedDoc() {
  if (m_Doc->DidDocChange() == 0) return 0;
  m_Doc->ClearDocChange();
  const uint32_t id = m_Doc->GetModified() ? kIdsReloadModified : kIdsReloadUnmodified;
  if (QueryBox(kSender, 0, kQuestionPicture, 0, id, m_Doc->GetDocName()) != 1) return 0;
  int64_t state[kStateSize];
  RememberState(state, 0);
  const std::u16string name = m_Doc->GetDocName();
  int read = m_Doc->ReadFile(name, 1, nullptr);
  if (read == 2) {
    OnRepaint();
    read = m_Doc->ReadFile(name, 2, nullptr);
  }
  m_Doc->SetModified(0);
  m_Doc->ClearDocChange();
  RestoreState(state);
  OnRepaint();
  return read != 0 ? 1 : 0;
}

namespace {

KwPersistence* Persist() { return IsKwWinApp() ? GetKwWinApp()->GetPersist() : nullptr; }

}  // namespace

// The settings of one document are one value: font size, the switches as bits (1 binary, 2 EOL,
// 4 Unix, 8 max width, 16 tab line, 32 overwrite), tab width, indent width, caret line and column,
// then the tab stops, all separated by ";".
int KwEditView::SaveDocSettings() {
  KwPersistence* persist = Persist();
  if (persist == nullptr || m_Doc->GetDocName().empty()) return 0;
  const int flags = (m_Settings.showBinary ? 1 : 0) | (m_Settings.showEOL ? 2 : 0) | (m_Settings.unixMode ? 4 : 0) |
                    (m_Settings.showMaxWidth ? 8 : 0) | (m_ShowTabLine ? 16 : 0) | (m_InsertMode ? 0 : 32);
  std::u16string value = Format(u"%d;%d;%d;%d;%I64d;%I64d", m_Settings.fontSize, flags, m_TabWidth, m_IndentWidth,
                                m_CaretLine, m_CaretCol);
  for (int64_t stop : m_TabStops) value += Format(u";%I64d", stop);
  const int scope = KwPersistence::GetSectionScope(kSettingsSection);
  return persist->SaveKey(scope, kSettingsSection, m_Doc->GetDocName(), &value);
}

int KwEditView::LoadDocSettings() {
  KwPersistence* persist = Persist();
  if (persist == nullptr || m_Doc->GetDocName().empty()) return 0;
  std::u16string value;
  const int scope = KwPersistence::GetSectionScope(kSettingsSection);
  if (persist->LoadKey(scope, kSettingsSection, m_Doc->GetDocName(), &value) == 0) return 0;
  std::vector<int64_t> fields;
  int64_t number = 0;
  bool any = false, negative = false;
  for (size_t i = 0; i <= value.size(); ++i) {
    const char16_t c = i < value.size() ? value[i] : u';';
    if (c >= u'0' && c <= u'9') {
      number = number * 10 + (c - u'0');
      any = true;
    } else if (c == u'-' && !any) {
      negative = true;
    } else if (c == u';') {
      if (!any) return 0;  // not a value written by SaveDocSettings
      fields.push_back(negative ? -number : number);
      number = 0;
      any = negative = false;
    } else {
      return 0;
    }
  }
  if (fields.size() < 6) return 0;
  m_Settings.fontSize = std::clamp(static_cast<int>(fields[0]), kFontSizes[0], kFontSizes[std::size(kFontSizes) - 1]);
  const int64_t flags = fields[1];
  m_Settings.showBinary = (flags & 1) != 0;
  m_Settings.showEOL = (flags & 2) != 0;
  m_Settings.unixMode = (flags & 4) != 0;
  m_Settings.showMaxWidth = (flags & 8) != 0;
  m_ShowTabLine = (flags & 16) != 0;
  m_InsertMode = (flags & 32) != 0 ? 0 : 1;
  SetTabWidth(static_cast<int>(fields[2]));
  SetIndentWidth(static_cast<int>(fields[3]));
  m_TabStops.clear();
  for (size_t i = 6; i < fields.size(); ++i) AddTabStop(fields[i]);
  const Line line = ClampLine(fields[4]);
  GotoLineCol(line, std::min<int64_t>(fields[5], m_Doc->LineLength(line)));
  return 1;
}

void KwEditView::OnViewPrintPage() { NotYetImplemented(kSender); }
void KwEditView::DoFilePrint() { NotYetImplemented(kSender); }
void KwEditView::DoFilePrintPreview() { NotYetImplemented(kSender); }

}  // namespace kw
