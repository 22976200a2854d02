#include "data/KwConfigData.h"

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/Format.h"
#include "base/KwFile.h"
#include "base/Text.h"

namespace kw {
namespace {

// Sections that belong to a project (the instrument formats of the surveying side, the column and
// line layouts of the editor, and the dialogs whose choices depend on the project's data). Every
// entry is " NAME," so that a name is found only as a whole entry. The order is the order in which
// the sections are written. User preferences ("FindDlg", "Terms", window placements) are not here:
// they live in the user's file.
const std::u16string kIniProjList =
    u" Project, Units, Coordinates, Projection, Tolerances, PointCodes, LineCodes, Layers, Symbols,"
    u" GSI8, GSI16, REC500, IDEX, SDR33, M5, GRE, TOPCON, SOKKIA, NIKON, TRIMBLE, PENTAX, GEODIMETER,"
    u" ColumnLayout, ColumnCalc, LineSelect, PointSelect, Transformation, ImportFormat, ExportFormat,"
    u" ListColumns, ListFilter, PrintLayout, PageHeader,";

constexpr size_t kMemberNameLength = 127;

KwCfgSection* SectionOf(const KwDataSet& set) { return static_cast<KwCfgSection*>(set.GetData()); }

}  // namespace

KwConfigData::KwConfigData(const char16_t* collectionName)
    : m_CollectionName(collectionName != nullptr ? collectionName : u"") {}

KwConfigData::~KwConfigData() { RemoveAll(); }

const std::u16string& KwConfigData::GetIniProjList() { return kIniProjList; }

int KwConfigData::GetIniProjIndex(const std::u16string& name) {
  if (name.empty()) return -1;
  const size_t at = kIniProjList.find(u" " + name + u",");
  return at == std::u16string::npos ? -1 : static_cast<int>(at);
}

int KwConfigData::ParseHeader(const std::u16string& line, std::u16string& name) {
  if (line.size() < 3 || line[0] != u'[') return 0;
  const size_t close = line.find(u']', 2);
  if (close == std::u16string::npos) return 0;
  name = line.substr(1, close - 1);
  return 1;
}

int KwConfigData::ClassifyLine(const std::u16string& line) {
  if (line.size() < 2) return KwCfgDropped::TooShort;
  if (line[0] == u'[') return KwCfgDropped::BadHeader;  // not a header, and not an entry either
  if (line[0] == u'!') return KwCfgDropped::Comment;
  return 0;
}

void KwConfigData::Drop(int64_t line, int reason, const std::u16string& text) {
  if (m_pDropLog != nullptr) m_pDropLog->push_back({m_LoadingScope, line, reason, text});
}

int KwConfigData::Load(const std::u16string (&fileNames)[kFileScopeCount]) {
  SetScopes(GetScopes() | 0xF);
  SetWrite(GetWrite() | 0xF);
  SetFileNames(fileNames, 0);
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"Persist.Load: Scopes=%d", GetScopes());
  LoadData(0);
  if (!m_CollectionName.empty()) {
    SplitCollection(m_CollectionName);
    if (m_LoadCounter > 0) {
      // Duplicates were dropped: write the files without them now, so that a collection that was
      // grown by appending does not keep growing, and read them back.
      Save();
      RemoveAll();
      LoadData(0);
      SplitCollection(m_CollectionName);
    }
  }
  SetModified(0);
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"Persist.Load: Finished");
  return 1;
}

int KwConfigData::Save() {
  if (m_CollectionName.empty()) return SaveData();
  MergeCollection(m_CollectionName, m_CollectionPrefix);
  const int result = SaveData();
  const int modified = GetModified();
  SplitCollection(m_CollectionName);
  SetModified(modified);
  return result;
}

KwCfgSection* KwConfigData::GetCfgSection(const std::u16string& name) {
  return static_cast<KwCfgSection*>(GetData(name, -1));
}

KwCfgSection* KwConfigData::GetCfgSection(const std::u16string& name, int scope) {
  return static_cast<KwCfgSection*>(GetData(name, scope));
}

int64_t KwConfigData::MergeCollection(const std::u16string& name, const std::u16string& prefix) {
  int64_t total = 0;
  for (int scope = 0; scope < kFileScopeCount; ++scope) {
    if (GetDataSet(name, scope) != nullptr) continue;
    std::vector<std::u16string> members;
    std::vector<std::u16string> lines;
    KwDataIterator it = GetIterator(scope);  // not the store's own cursor: a caller may be using it
    for (KwDataSet* set = it.Next(); set != nullptr; set = it.Next()) {
      const KwCfgSection* section = SectionOf(*set);
      if (section == nullptr || section->GetIndex() != KwCfgSection::kMemberIndex) continue;
      KW_ASSERT(section->GetLineCount() == 1);
      if (section->GetLineCount() < 1) continue;
      members.push_back(set->GetName());
      lines.push_back(Format(u"%s%Id=%s", prefix, static_cast<int64_t>(lines.size() + 1), section->GetLineText(0)));
    }
    if (members.empty()) continue;
    for (const auto& member : members) DeleteDataSet(member, scope);
    auto* collection = new KwCfgSection(name, -1);
    collection->AddLine(Format(u"COUNT=%Id", static_cast<int64_t>(lines.size())));
    for (const auto& line : lines) collection->AddLine(line);
    if (!AddDataSet(name, scope, collection, 0)) delete collection;
    total += static_cast<int64_t>(members.size());
  }
  return total;
}

int64_t KwConfigData::SplitCollection(const std::u16string& name) {
  int64_t total = 0;
  bool found = true;
  while (found) {
    found = false;
    for (int scope = 0; scope < kScopeCount && !found; ++scope) {
      KwDataSet* set = GetDataSet(name, scope);
      if (set == nullptr || SectionOf(*set) == nullptr || SectionOf(*set)->GetIndex() >= 0) continue;
      found = true;
      const KwCfgSection* collection = SectionOf(*set);
      std::vector<KwCfgSection*> members;
      for (int64_t i = collection->GetLineCount() - 1; i >= 0; --i) {
        const std::u16string line = collection->GetLineText(i);
        if (line.compare(0, 5, u"COUNT") == 0) continue;
        const size_t eq = line.find(u'=');
        if (eq == std::u16string::npos || eq + 1 >= line.size()) continue;
        const std::u16string text = line.substr(eq + 1);
        auto* member = new KwCfgSection(text.substr(0, kMemberNameLength), KwCfgSection::kMemberIndex);
        member->AddLine(text);
        members.push_back(member);
        std::u16string key = line.substr(0, eq);
        while (!key.empty() && key.back() >= u'0' && key.back() <= u'9') key.pop_back();
        m_CollectionPrefix = key;
      }
      DeleteDataSet(name, scope);
      // Visited from the last line to the first and added with replacement: of two members with the
      // same name, the one written first in the file stays.
      for (KwCfgSection* member : members)
        if (!AddDataSet(member->GetName(), scope, member, 1)) delete member;
      total += static_cast<int64_t>(members.size());
    }
  }
  return total;
}

void KwConfigData::DeleteData(void* data) { delete static_cast<KwCfgSection*>(data); }

void* KwConfigData::CopyData(const void* data) {
  if (data == nullptr) return nullptr;
  const auto* section = static_cast<const KwCfgSection*>(data);
  auto* copy = new KwCfgSection(section->GetName(), section->GetIndex());
  copy->CopyFrom(*section);
  return copy;
}

int KwConfigData::CompareDataSet(const KwDataSet& a, const KwDataSet& b, int full) const {
  const KwCfgSection* sa = SectionOf(a);
  const KwCfgSection* sb = SectionOf(b);
  const int ia = sa != nullptr ? sa->GetIndex() : -1;
  const int ib = sb != nullptr ? sb->GetIndex() : -1;
  if ((ia >= 0) != (ib >= 0)) return ia >= 0 ? -1 : 1;
  if (ia >= 0 && ia != ib) return ia < ib ? -1 : 1;
  return KwData::CompareDataSet(a, b, full);
}

int KwConfigData::CompareData(const void* a, const void* b) const {
  const auto* sa = static_cast<const KwCfgSection*>(a);
  const auto* sb = static_cast<const KwCfgSection*>(b);
  if (sa == nullptr || sb == nullptr) return sa == sb ? 0 : (sa == nullptr ? -1 : 1);
  const int64_t diff = sa->GetLineCount() - sb->GetLineCount();
  if (diff != 0) return diff < 0 ? -1 : 1;
  for (int64_t i = 0; i < sa->GetLineCount(); ++i) {
    const int c = sa->GetLineText(i).compare(sb->GetLineText(i));
    if (c != 0) return c < 0 ? -1 : 1;
  }
  return 0;
}

int KwConfigData::LoadDataSet(KwFile& file, KwDataSet& set, int64_t& line) {
  if (line == 0) DropPushBack();  // a new file
  m_LoadingScope = set.GetScope();
  KwCfgSection* section = nullptr;
  int64_t headerLine = 0;
  std::u16string text;
  for (;;) {
    if (!ReadDataLine(file, text)) {
      line = -1;
      break;
    }
    ++line;
    std::u16string name;
    if (ParseHeader(text, name)) {
      if (section != nullptr) {  // the next section: read this header again on the next call
        PushBackLine(std::move(text));
        --line;
        break;
      }
      section = new KwCfgSection(name, GetIniProjIndex(name));
      headerLine = line;
      continue;
    }
    if (const int reason = ClassifyLine(text)) {
      Drop(line, reason, text);
    } else if (section == nullptr) {
      Drop(line, KwCfgDropped::BeforeSection, text);
    } else {
      int duplicate = 0;
      if (!section->AddLine(text, &duplicate)) break;
      if (duplicate) {
        ++m_LoadCounter;
        Drop(line, KwCfgDropped::DuplicateKey, text);
      }
    }
  }
  if (section == nullptr) return 0;
  if (section->GetLineCount() == 0) {
    Drop(headerLine, KwCfgDropped::EmptySection, section->GetName());
    delete section;
    return 0;
  }
  set.SetName(section->GetName());
  set.SetData(section);
  return 1;
}

int KwConfigData::SaveDataSet(KwFile& file, const KwDataSet& set) {
  const KwCfgSection* section = SectionOf(set);
  if (section == nullptr) return 0;
  if (!file.WriteLine(u"[" + set.GetName() + u"]")) return 0;
  for (int64_t i = 0; i < section->GetLineCount(); ++i)
    if (!file.WriteLine(section->GetLineText(i))) return 0;
  return 1;
}

void KwConfigData::RenameData(void* data, const std::u16string& newName) {
  if (data != nullptr) static_cast<KwCfgSection*>(data)->SetName(newName);
}

int KwConfigData::IsReservedName(const std::u16string& name) const {
  return !m_CollectionName.empty() && CompareKeys(name, m_CollectionName) == 0;
}

}  // namespace kw
