#include "data/KwMapData.h"

#include "base/Assert.h"
#include "base/KwFile.h"

namespace kw {
namespace {

const std::u16string kHead = u"!KWMAP ";

KwMapRecords* RecordsOf(const KwDataSet& set) { return static_cast<KwMapRecords*>(set.GetData()); }

}  // namespace

KwMapData::KwMapData(const std::u16string& identification, int keyFields, int valueFields)
    : m_Identification(identification), m_KeyFields(keyFields), m_ValueFields(valueFields) {
  KW_ASSERT(keyFields >= 1 && valueFields >= 0);
  if (m_KeyFields < 1) m_KeyFields = 1;
  if (m_ValueFields < 0) m_ValueFields = 0;
}

KwMapData::~KwMapData() { RemoveAll(); }

KwMapRecords* KwMapData::GetRecords(const std::u16string& name, int scope) {
  return static_cast<KwMapRecords*>(GetData(name, scope));
}

KwMapRecords* KwMapData::MakeRecords(const std::u16string& name, int scope) {
  if (scope < 0 || scope >= kScopeCount) {
    KW_ASSERT(scope >= 0 && scope < kScopeCount);
    return nullptr;
  }
  if (KwMapRecords* records = GetRecords(name, scope)) return records;
  auto* records = new KwMapRecords;
  if (AddDataSet(name, scope, records, 0) == nullptr) {
    delete records;
    return nullptr;
  }
  return records;
}

int KwMapData::SetRecord(KwMapRecords& records, const KwMapFields& keys, const KwMapFields& values) const {
  if (static_cast<int>(keys.size()) != m_KeyFields) return 0;
  KwMapFields fitted = values;
  fitted.resize(static_cast<size_t>(m_ValueFields));
  records[keys] = std::move(fitted);
  return 1;
}

int KwMapData::LoadFile(const std::u16string& fileName) {
  RemoveAll();
  SetScopes(1 << kScopeGlobal);
  SetWrite(1 << kScopeGlobal);
  const std::u16string names[kFileScopeCount] = {u"", fileName, u"", u""};
  SetFileNames(names, 0);
  m_LoadResult = 0;
  LoadData(0);
  SetModified(0);
  return m_LoadResult;
}

int KwMapData::SaveFile(const std::u16string& fileName) {
  const std::u16string names[kFileScopeCount] = {u"", fileName, u"", u""};
  if (GetFileName(kScopeGlobal) != fileName) SetFileNames(names, 0);
  SetScopes(GetScopes() | (1 << kScopeGlobal));
  SetWrite(GetWrite() | (1 << kScopeGlobal));
  return SaveData();
}

std::u16string KwMapData::EscapeField(const std::u16string& field, bool lineStart) {
  std::u16string out;
  out.reserve(field.size());
  for (size_t i = 0; i < field.size(); ++i) {
    const char16_t c = field[i];
    switch (c) {
      case u'\\': out += u"\\\\"; break;
      case u'\t': out += u"\\t"; break;
      case u'\n': out += u"\\n"; break;
      case u'\r': out += u"\\r"; break;
      case u'[':
      case u'!':
        if (lineStart && i == 0) out += u'\\';
        out += c;
        break;
      default: out += c;
    }
  }
  return out;
}

KwMapFields KwMapData::SplitLine(const std::u16string& line) {
  KwMapFields fields(1);
  for (size_t i = 0; i < line.size(); ++i) {
    const char16_t c = line[i];
    if (c == u'\t') {
      fields.emplace_back();
    } else if (c == u'\\' && i + 1 < line.size()) {
      const char16_t n = line[++i];
      fields.back() += n == u't' ? u'\t' : n == u'n' ? u'\n' : n == u'r' ? u'\r' : n;
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

void KwMapData::DeleteData(void* data) { delete static_cast<KwMapRecords*>(data); }

void* KwMapData::CopyData(const void* data) {
  return data ? new KwMapRecords(*static_cast<const KwMapRecords*>(data)) : nullptr;
}

int KwMapData::CompareData(const void* a, const void* b) const {
  const auto* ra = static_cast<const KwMapRecords*>(a);
  const auto* rb = static_cast<const KwMapRecords*>(b);
  if (ra == nullptr || rb == nullptr) return ra == rb ? 0 : (ra == nullptr ? -1 : 1);
  if (ra->size() != rb->size()) return ra->size() < rb->size() ? -1 : 1;
  return *ra == *rb ? 0 : (*ra < *rb ? -1 : 1);
}

int64_t KwMapData::LoadComment(KwFile& file, int64_t line) {
  DropPushBack();
  std::u16string head;
  if (!file.ReadLine(head) || head != kHead + m_Identification) {
    m_LoadResult = -3;
    return -1;  // not a file of this kind: nothing is loaded
  }
  if (m_LoadResult == 0) m_LoadResult = 1;
  return line + 1;
}

int KwMapData::SaveComment(KwFile& file, int /*scope*/) { return file.WriteLine(kHead + m_Identification); }

int KwMapData::LoadDataSet(KwFile& file, KwDataSet& set, int64_t& line) {
  KwMapRecords* records = nullptr;
  std::u16string name;
  std::u16string text;
  for (;;) {
    if (!ReadDataLine(file, text)) {
      line = -1;
      break;
    }
    ++line;
    if (text.size() >= 2 && text.front() == u'[' && text.back() == u']') {
      if (records != nullptr) {
        PushBackLine(std::move(text));
        --line;
        break;
      }
      records = new KwMapRecords;
      name = text.substr(1, text.size() - 2);
      continue;
    }
    if (records == nullptr || text.empty() || text[0] == u'!') continue;
    KwMapFields fields = SplitLine(text);
    if (static_cast<int>(fields.size()) < m_KeyFields) {
      m_LoadResult = -2;
      continue;
    }
    KwMapFields keys(fields.begin(), fields.begin() + m_KeyFields);
    KwMapFields values(fields.begin() + m_KeyFields, fields.end());
    SetRecord(*records, keys, values);
  }
  if (records == nullptr) return 0;
  set.SetName(name);
  set.SetData(records);
  return 1;
}

int KwMapData::SaveDataSet(KwFile& file, const KwDataSet& set) {
  const KwMapRecords* records = RecordsOf(set);
  if (records == nullptr) return 0;
  if (!file.WriteLine(u"[" + set.GetName() + u"]")) return 0;
  for (const auto& [keys, values] : *records) {
    std::u16string line;
    bool first = true;
    for (const auto* part : {&keys, &values})
      for (const auto& field : *part) {
        if (!first) line += u'\t';
        line += EscapeField(field, first);
        first = false;
      }
    if (!file.WriteLine(line)) return 0;
  }
  return 1;
}

}  // namespace kw
