// One section of a sectioned settings file: its name, its place in the known-section list and its
// entry lines ("key=value"), each kept whole and in file order. A key counts once per section.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace kw {

class KwCfgSection {
 public:
  // Index of a one-line member of a collection (see KwConfigData).
  static constexpr int kMemberIndex = 9999;

  KwCfgSection(const std::u16string& name, int index);
  const std::u16string& GetName() const { return m_Name; }
  void SetName(const std::u16string& name) { m_Name = name; }
  // The place in the known-section list, -1 for other sections, kMemberIndex for collection members.
  int GetIndex() const { return m_Index; }
  int64_t GetLineCount() const { return static_cast<int64_t>(m_Lines.size()); }
  // The line `line` (from 0); empty when out of range.
  std::u16string GetLineText(int64_t line) const;
  void RemoveLines();

  // Appends the line unless its key is present already; then `*duplicate` (when given) is 1 and the
  // line is dropped: the first line of a key wins. Returns 1 in both cases.
  int AddLine(const std::u16string& line, int* duplicate = nullptr);
  // Replaces the line of the same key where it stands, or appends it. Returns 1.
  int SetLine(const std::u16string& line);
  // The line number holding `key`, or -1. Keys compare exactly.
  int64_t FindKey(const std::u16string& key) const;
  // The text after the first "=" of the line of `key`; 0 when the key is absent.
  int GetValue(const std::u16string& key, std::u16string& value) const;

  // The text before the first "=" when that "=" stands after the first character; else empty
  // (a line without "=", or starting with "=", has the empty key).
  static std::u16string ExtractKey(const std::u16string& line);

  // Finds `text` without regard to case from (`line`, `pos`) on. On success stores where it stands
  // and returns 1; else 0 and leaves both as they were.
  int Search(const std::u16string& text, int64_t& line, int64_t& pos) const;

  // Copies the lines of a section of the same name into this empty one. Another name or a
  // non-empty target is a programming error (returns 0).
  int CopyFrom(const KwCfgSection& other);

 private:
  std::u16string m_Name;
  int m_Index;
  std::vector<std::u16string> m_Lines;
  std::set<std::u16string> m_Keys;
};

}  // namespace kw
