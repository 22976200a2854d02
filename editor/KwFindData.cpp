#include "editor/KwFindData.h"

#include <algorithm>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "base/Assert.h"
#include "base/Text.h"
#include "data/KwPersistence.h"

namespace kw {

namespace {

constexpr const char16_t* kKeys[] = {u"CASE", u"JOKER", u"ASCII"};  // options 0 to 2

KwPersistence* Persist() { return IsKwWinApp() ? GetKwWinApp()->GetPersist() : nullptr; }

}  // namespace

KwFindData::KwFindData() { LoadINI(); }

void KwFindData::AddFindInst(KwFindObserver* window) {
  KW_ASSERT(window != nullptr);
  if (window && std::find(m_FindInst.begin(), m_FindInst.end(), window) == m_FindInst.end())
    m_FindInst.push_back(window);
}

void KwFindData::RemoveFindInst(KwFindObserver* window) {
  m_FindInst.erase(std::remove(m_FindInst.begin(), m_FindInst.end(), window), m_FindInst.end());
}

int KwFindData::SetFindEntries(const std::u16string& text, const int* options, const int* mask,
                               KwFindObserver* sender) {
  bool differs = text != m_Entries;
  for (int i = 0; i < kOptionCount && options; ++i)
    if ((mask == nullptr || mask[i]) && options[i] != m_Options[i]) differs = true;
  if (!differs) return 0;
  m_Entries = text;
  for (int i = 0; i < kOptionCount && options; ++i)
    if (mask == nullptr || mask[i]) m_Options[i] = options[i];
  m_Changed = 1;
  SaveINI(0);
  Broadcast(sender);
  return 1;
}

void KwFindData::GetFindEntries(std::u16string* text, int* options) const {
  if (text) *text = m_Entries;
  if (options) std::copy(m_Options, m_Options + kOptionCount, options);
}

std::u16string KwFindData::GetEntry(int64_t index) const {
  size_t from = 0;
  for (int64_t i = 0; i < index; ++i) {
    const size_t sep = m_Entries.find(kSeparator, from);
    if (sep == std::u16string::npos) return std::u16string();
    from = sep + 1;
  }
  const size_t sep = m_Entries.find(kSeparator, from);
  return m_Entries.substr(from, sep == std::u16string::npos ? std::u16string::npos : sep - from);
}

int KwFindData::Prepare(const std::u16string& in, std::u16string* out, int codePage) const {
  int ok = 1;
  // Without the code-page option a "<#n>" names a Unicode code point (encoding 2, UTF-16).
  *out = StrConvert(in, &ok, m_Options[kAscii] ? codePage : 2, 1, 1);
  return ok ? 1 : 0;
}

int KwFindData::GetPreparedFindEntry(std::u16string* text, int* options, int codePage) {
  KW_ASSERT(text != nullptr);
  if (text == nullptr) return 0;
  if (options) std::copy(m_Options, m_Options + kOptionCount, options);
  if (!Prepare(GetEntry(0), text, codePage)) return 0;
  if (text->empty()) {
    QueryBox(u"FindDlg", 0, 1090, 1, 1401u);
    return 0;
  }
  return 1;
}

int KwFindData::GetPreparedReplEntry(const std::u16string& entry, std::u16string* text, int codePage) const {
  KW_ASSERT(text != nullptr);
  if (text == nullptr) return 0;
  return Prepare(entry, text, codePage);
}

int KwFindData::AcceptOptionalEntry(std::u16string* entry) {
  if (m_OptionalEntry.empty()) return 0;
  if (entry) *entry = m_OptionalEntry;
  m_OptionalEntry.clear();
  return 1;
}

int KwFindData::LoadINI() {
  KwPersistence* persist = Persist();
  if (persist == nullptr) return 0;
  const int scope = KwPersistence::GetSectionScope(kSection);
  std::u16string entries = m_Entries;
  int options[kOptionCount];
  std::copy(m_Options, m_Options + kOptionCount, options);
  persist->LoadKey(scope, kSection, u"TEXT", &entries);
  for (int i = 0; i < 3; ++i) persist->LoadKey(scope, kSection, kKeys[i], &options[i]);
  const bool differs = entries != m_Entries || !std::equal(options, options + kOptionCount, m_Options);
  m_Entries = entries;
  std::copy(options, options + kOptionCount, m_Options);
  m_Loaded = 1;
  if (differs) Broadcast(nullptr);
  return 1;
}

int KwFindData::SaveINI(int flag) {
  KwPersistence* persist = Persist();
  if (persist == nullptr || (flag == 0 && !m_Changed)) return 0;
  const int scope = KwPersistence::GetSectionScope(kSection);
  int ok = persist->SaveKey(scope, kSection, u"TEXT", &m_Entries);
  for (int i = 0; i < 3; ++i) ok &= persist->SaveKey(scope, kSection, kKeys[i], &m_Options[i]);
  return ok ? 1 : 0;
}

void KwFindData::Broadcast(KwFindObserver* sender) {
  // A window may unregister itself while it is told: walk a copy.
  const std::vector<KwFindObserver*> windows = m_FindInst;
  for (KwFindObserver* w : windows)
    if (w != sender) w->UpdateFindEntries(m_Entries, m_Options);
}

}  // namespace kw
