#include "data/KwCfgSection.h"

#include "base/Assert.h"

namespace kw {
namespace {

char16_t Fold(char16_t c) {
  if ((c >= u'a' && c <= u'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) return static_cast<char16_t>(c - 32);
  return c;
}

}  // namespace

KwCfgSection::KwCfgSection(const std::u16string& name, int index) : m_Name(name), m_Index(index) {}

std::u16string KwCfgSection::GetLineText(int64_t line) const {
  KW_ASSERT(line >= 0 && line < GetLineCount());
  if (line < 0 || line >= GetLineCount()) return {};
  return m_Lines[static_cast<size_t>(line)];
}

void KwCfgSection::RemoveLines() {
  m_Lines.clear();
  m_Keys.clear();
}

int KwCfgSection::AddLine(const std::u16string& line, int* duplicate) {
  const bool added = m_Keys.insert(ExtractKey(line)).second;
  if (added) m_Lines.push_back(line);
  if (duplicate != nullptr) *duplicate = added ? 0 : 1;
  return 1;
}

int KwCfgSection::SetLine(const std::u16string& line) {
  const int64_t at = FindKey(ExtractKey(line));
  if (at < 0) return AddLine(line);
  m_Lines[static_cast<size_t>(at)] = line;
  return 1;
}

int64_t KwCfgSection::FindKey(const std::u16string& key) const {
  if (!m_Keys.count(key)) return -1;
  for (size_t i = 0; i < m_Lines.size(); ++i)
    if (ExtractKey(m_Lines[i]) == key) return static_cast<int64_t>(i);
  return -1;
}

int KwCfgSection::GetValue(const std::u16string& key, std::u16string& value) const {
  const int64_t at = FindKey(key);
  if (at < 0) return 0;
  const std::u16string& line = m_Lines[static_cast<size_t>(at)];
  const size_t eq = line.find(u'=');
  value = eq == std::u16string::npos ? std::u16string() : line.substr(eq + 1);
  return 1;
}

std::u16string KwCfgSection::ExtractKey(const std::u16string& line) {
  const size_t eq = line.find(u'=');
  if (eq == std::u16string::npos || eq == 0) return {};
  return line.substr(0, eq);
}

int KwCfgSection::Search(const std::u16string& text, int64_t& line, int64_t& pos) const {
  if (line < 0 || pos < 0 || text.empty()) return 0;
  for (int64_t l = line; l < GetLineCount(); ++l) {
    const std::u16string& s = m_Lines[static_cast<size_t>(l)];
    for (size_t p = l == line ? static_cast<size_t>(pos) : 0; p + text.size() <= s.size(); ++p) {
      size_t k = 0;
      while (k < text.size() && Fold(s[p + k]) == Fold(text[k])) ++k;
      if (k == text.size()) {
        line = l;
        pos = static_cast<int64_t>(p);
        return 1;
      }
    }
  }
  return 0;
}

int KwCfgSection::CopyFrom(const KwCfgSection& other) {
  KW_ASSERT(other.m_Name == m_Name && m_Lines.empty());
  if (other.m_Name != m_Name || !m_Lines.empty()) return 0;
  m_Lines = other.m_Lines;
  m_Keys = other.m_Keys;
  return 1;
}

}  // namespace kw
