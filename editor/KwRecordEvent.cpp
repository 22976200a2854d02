// The base of the recorded command events, the template-driven line format of the kinds, and the
// two factories.
#include "editor/KwRecordEvent.h"

#include <algorithm>
#include <deque>
#include <typeinfo>

#include "base/Assert.h"
#include "base/Format.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace kw {

namespace {

bool IsSeparator(char16_t c) { return c == u'/' || c == u'\\'; }

bool IsAbsolute(const std::u16string& path) {
  if (!path.empty() && IsSeparator(path[0])) return true;
  return path.size() >= 2 && path[1] == u':' &&
         ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
}

// A remark never holds "|": it would split the button labels of a box that shows it.
std::u16string WithoutBars(std::u16string text) {
  std::replace(text.begin(), text.end(), u'|', u'!');
  return text;
}

// The template with DEL in every "%c" place and "%%" made "%": the format for the fields.
std::u16string ExpandTemplate(const char16_t* lineTemplate) {
  std::u16string out;
  for (const char16_t* p = lineTemplate; *p != 0; ++p) {
    if (p[0] == u'%' && p[1] == u'c') {
      out += kEventFieldSep;
      ++p;
    } else if (p[0] == u'%' && p[1] == u'%') {
      out += u'%';
      ++p;
    } else {
      out += *p;
    }
  }
  return out;
}

}  // namespace

// ---- KwRecordEvent ------------------------------------------------------------------------------

KwRecordEvent::KwRecordEvent(char type) : m_Type(type) {}

KwRecordEvent::~KwRecordEvent() = default;

std::u16string KwRecordEvent::Format() const {
  KW_ASSERT(!"Format of an event without a kind");
  return std::u16string();
}

int KwRecordEvent::Parse(const std::u16string& line) {
  KW_ASSERT(!line.empty());
  if (line.empty()) return 0;
  m_Remark = WithoutBars(StrPart(line, 1, kEventRemarkSep));
  return 1;
}

int KwRecordEvent::CopyTo(KwRecordEvent* event) const {
  KW_ASSERT(event != nullptr && event->m_Type == m_Type);
  if (event == nullptr || event->m_Type != m_Type) return 0;
  event->m_Remark = m_Remark;
  event->m_MainFile = m_MainFile;
  event->m_BaseFolder = m_BaseFolder;
  return 1;
}

int KwRecordEvent::ShowDialog() { return 0; }

int KwRecordEvent::SetRemark(const std::u16string& text) {
  if (text == m_Remark) return 0;
  m_Remark = WithoutBars(text);
  return 1;
}

void KwRecordEvent::SetMainFile(const std::u16string& name) {
  if (m_Type == 'V' || m_Type == 'I') m_MainFile = name;
}

void KwRecordEvent::AddRemark(std::u16string& line) const {
  if (m_Remark.empty()) return;
  line += kEventRemarkSep;
  line += m_Remark;
}

std::u16string KwRecordEvent::AddPath(const std::u16string& text, const std::u16string& baseFolder) {
  if (text.empty() || baseFolder.empty() || IsAbsolute(text)) return text;
  std::u16string out = baseFolder;
  if (!IsSeparator(out.back())) {
    const size_t last = out.find_last_of(u"/\\");
    out += last == std::u16string::npos ? u'/' : out[last];
  }
  return out + text;
}

std::u16string KwRecordEvent::RemovePath(const std::u16string& text, const std::u16string& baseFolder) {
  size_t n = baseFolder.size();
  while (n > 0 && IsSeparator(baseFolder[n - 1])) --n;  // the folder without its trailing separators
  if (baseFolder.empty() || text.size() <= n + 1 || !IsSeparator(text[n])) return text;
  for (size_t i = 0; i < n; ++i) {
    const bool same = text[i] == baseFolder[i] || (IsSeparator(text[i]) && IsSeparator(baseFolder[i]));
    if (!same) return text;
  }
  return text.substr(n + 1);
}

// ---- KwTemplateEvent ----------------------------------------------------------------------------

KwTemplateEvent::KwTemplateEvent(char type, const char16_t* keyword, const char16_t* lineTemplate)
    : KwRecordEvent(type), m_Kind(type), m_Keyword(keyword), m_Template(lineTemplate) {}

std::u16string KwTemplateEvent::Format() const {
  KW_ASSERT(m_Type == m_Kind);
  if (m_Type != m_Kind) return std::u16string();
  KwEventFields fields;
  // Binding only hands out the members' addresses; writing reads them and changes nothing.
  const_cast<KwTemplateEvent*>(this)->BindFields(fields);

  std::deque<std::u16string> files;  // relative forms of file references, alive while formatting
  std::vector<FormatArg> args;
  std::u16string extras;
  for (const KwEventFields::Field& f : fields.fields()) {
    if (f.extra) {
      extras += kEventFieldSep;
      extras += kw::Format(u"%d", *std::get<int*>(f.value));
    } else if (auto* i = std::get_if<int*>(&f.value)) {
      args.emplace_back(**i);
    } else if (auto* i64 = std::get_if<int64_t*>(&f.value)) {
      args.emplace_back(**i64);
    } else if (auto* d = std::get_if<double*>(&f.value)) {
      args.emplace_back(**d);
    } else {
      const std::u16string& text = *std::get<std::u16string*>(f.value);
      if (f.file) {
        files.push_back(RemovePath(text, m_BaseFolder));
        args.emplace_back(files.back());
      } else {
        args.emplace_back(text);
      }
    }
  }
  bool ok = true;
  std::u16string line = FormatArgs(ExpandTemplate(m_Template), args, &ok);
  KW_ASSERT(ok);  // the bound fields do not fit the template: a defect of the kind
  if (!ok) return std::u16string();
  line += extras;
  AddRemark(line);
  return line;
}

int KwTemplateEvent::Parse(const std::u16string& line) {
  KW_ASSERT(m_Type == m_Kind);
  m_Type = m_Kind;
  KW_ASSERT(!line.empty());
  if (line.empty()) return 0;
  const std::u16string command = StrPart(line, 0, kEventRemarkSep);
  if (StrPart(command, 0, kEventFieldSep) != m_Keyword) return 0;

  KwEventFields fields;
  BindFields(fields);
  // The template's parts behind the keyword: a conversion takes the next bound field, anything else
  // is a literal that is written but never read.
  const std::u16string expanded = ExpandTemplate(m_Template);
  const int64_t parts = StrCountOf(expanded, kEventFieldSep, 0) + 1;
  std::vector<int64_t> numbers;  // the line's field number for each bound field
  for (int64_t k = 1; k < parts; ++k)
    if (StrPart(expanded, k, kEventFieldSep).starts_with(u'%')) numbers.push_back(k);
  int64_t next = parts;
  for (const KwEventFields::Field& f : fields.fields())
    if (f.extra) numbers.push_back(next++);
  KW_ASSERT(numbers.size() == fields.fields().size());

  for (size_t n = 0; n < fields.fields().size() && n < numbers.size(); ++n) {
    const KwEventFields::Field& f = fields.fields()[n];
    const std::u16string text = StrPart(command, numbers[n], kEventFieldSep);
    if (auto* i = std::get_if<int*>(&f.value)) {
      **i = static_cast<int>(GetInt(text.c_str(), 0, 0));
    } else if (auto* i64 = std::get_if<int64_t*>(&f.value)) {
      **i64 = GetInt(text.c_str(), 0, 0);
    } else if (auto* d = std::get_if<double*>(&f.value)) {
      **d = GetDouble(text.c_str(), 0, 0, 0);
    } else {
      *std::get<std::u16string*>(f.value) = f.file ? AddPath(text, m_BaseFolder) : text;
    }
  }
  return KwRecordEvent::Parse(line);
}

int KwTemplateEvent::CopyTo(KwRecordEvent* event) const {
  KW_ASSERT(m_Type == m_Kind);
  KW_ASSERT(event != nullptr && typeid(*event) == typeid(*this) && event->GetType() == m_Kind);
  if (m_Type != m_Kind || event == nullptr || typeid(*event) != typeid(*this) || event->GetType() != m_Kind)
    return 0;
  KwEventFields from;
  KwEventFields to;
  const_cast<KwTemplateEvent*>(this)->BindFields(from);  // read only, as in Format
  static_cast<KwTemplateEvent*>(event)->BindFields(to);
  for (size_t n = 0; n < from.fields().size(); ++n) {
    std::visit(
        [&](auto* source) { *std::get<decltype(source)>(to.fields()[n].value) = *source; },
        from.fields()[n].value);
  }
  return KwRecordEvent::CopyTo(event);
}

// ---- Factories ----------------------------------------------------------------------------------

std::unique_ptr<KwRecordEvent> AllocRecordEvent(int letter) {
  KW_ASSERT(letter >= kEventFirstCode && letter <= kEventLastCode);
  switch (letter) {
    case kEventFind: return std::make_unique<KwFindEvent>();
    case kEventRepl: return std::make_unique<KwReplEvent>();
    case kEventBChar: return std::make_unique<KwBCharEvent>();
    case kEventXChar: return std::make_unique<KwXCharEvent>();
    case kEventAlign: return std::make_unique<KwAlignEvent>();
    case kEventTableRep: return std::make_unique<KwTableRepEvent>();
    case kEventColWrite: return std::make_unique<KwColWriteEvent>();
    case kEventColForm: return std::make_unique<KwColFormEvent>();
    case kEventSort: return std::make_unique<KwSortEvent>();
    case kEventUmf: return std::make_unique<KwUmfEvent>();
    case kEventLineBreak: return std::make_unique<KwLineBreakEvent>();
    case kEventLineSelect: return std::make_unique<KwLineSelectEvent>();
    case kEventLine2: return std::make_unique<KwLine2Event>();
    case kEventColCalc: return std::make_unique<KwColCalcEvent>();
    case kEventColSum: return std::make_unique<KwColSumEvent>();
    case kEventAutoInsert: return std::make_unique<KwAutoInsertEvent>();
    case kEventGotoSelectedLine: return std::make_unique<KwGotoSelectedLineEvent>();
    default: return nullptr;
  }
}

std::unique_ptr<KwRecordEvent> ParseRecordEvent(const std::u16string& line, const std::u16string& baseFolder) {
  if (line.empty()) return nullptr;
  // The order is part of the contract: the first kind that recognises the line wins.
  static constexpr char kOrder[] = {
      kEventFind,     kEventRepl,       kEventBChar,  kEventXChar,      kEventAlign,
      kEventTableRep, kEventColWrite,   kEventColForm, kEventColCalc,   kEventColSum,
      kEventSort,     kEventUmf,        kEventLineBreak, kEventLineSelect, kEventLine2,
      kEventAutoInsert, kEventGotoSelectedLine};
  for (const char letter : kOrder) {
    std::unique_ptr<KwRecordEvent> probe = AllocRecordEvent(letter);
    probe->SetBaseFolder(baseFolder);
    if (probe->Parse(line) == 0) continue;
    std::unique_ptr<KwRecordEvent> result = AllocRecordEvent(letter);
    probe->CopyTo(result.get());
    return result;
  }
  return nullptr;
}

}  // namespace kw
