// Sectioned settings files on the data-set store: every section of a scope file is one data set,
// named by the section, whose payload is a KwCfgSection.
//
// File syntax, line by line:
//  - "[" opens a section; its name runs up to the first "]" found at the third character or later,
//    so "[]" opens nothing. A "[" line without such a "]" is ignored.
//  - Lines shorter than two characters, comment lines ("!..."), and lines before the first section
//    are ignored.
//  - Every other line is an entry; its key is the text before its first "=" (see ExtractKey). A later
//    line of a key already in the section is dropped and counted (GetLoadCounter).
//  - A section without entries is dropped.
// Writing emits each section of a scope as "[name]" and its lines, in the store's order: sections of
// the known-section list first, in the list's order, then the others by name.
//
// A collection gathers many one-line sections (members) into one section of numbered keys
// ("COUNT=n", then prefix1=..., prefix2=...). In memory the members are sections of their own, named
// by their text; they are merged back into the collection when the store is saved.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/KwCfgSection.h"
#include "data/KwData.h"

namespace kw {

// A line the reader did not keep, for diagnostics (kw ini check).
struct KwCfgDropped {
  enum Reason { BeforeSection = 1, TooShort, Comment, BadHeader, DuplicateKey, EmptySection };
  int scope;
  int64_t line;  // from 1
  int reason;
  std::u16string text;  // the line, or the section name for EmptySection
};

class KwConfigData : public KwData {
 public:
  // `collectionName` null or empty: the store has no collection.
  explicit KwConfigData(const char16_t* collectionName = nullptr);
  ~KwConfigData() override;

  // Loads the four scope files (all four scopes enabled and writable, not project-bound). With a
  // collection, the collection is split into members; if the files held duplicate keys, they are
  // rewritten at once without them and read again. The store is then unmodified. Returns 1.
  int Load(const std::u16string (&fileNames)[kFileScopeCount]);
  // Merges the collection (if any), writes the files, and splits it again. The result of SaveData.
  int Save();

  // The section of the visible data set of `name`, or null.
  KwCfgSection* GetCfgSection(const std::u16string& name);
  KwCfgSection* GetCfgSection(const std::u16string& name, int scope);

  // Whether `line` opens a section; then `name` is the section's name.
  static int ParseHeader(const std::u16string& line, std::u16string& name);
  // The kind of a line that is not a section header and not an entry: a KwCfgDropped reason for
  // short lines, comments and "[" lines without a usable "]"; 0 for an entry line.
  static int ClassifyLine(const std::u16string& line);

  // The position of " NAME," in the known-section list, -1 when absent.
  static int GetIniProjIndex(const std::u16string& name);
  static const std::u16string& GetIniProjList();

  const std::u16string& GetCollectionName() const { return m_CollectionName; }
  const std::u16string& GetCollectionPrefix() const { return m_CollectionPrefix; }
  void SetCollectionPrefix(const std::u16string& prefix) { m_CollectionPrefix = prefix; }
  // Turns every member (index 9999) of each file scope into a numbered line of one collection
  // section of that scope. Returns the number of members merged. If a scope already holds a
  // section of the collection's name, its members stay single sections.
  int64_t MergeCollection(const std::u16string& name, const std::u16string& prefix);
  // Splits every collection section not in the known-section list into members named by the first
  // 127 characters of their text (kept as written, blanks included). Returns the number of members.
  int64_t SplitCollection(const std::u16string& name);

  // Collects the lines the reader drops from now on (null: stop).
  void SetDropLog(std::vector<KwCfgDropped>* log) { m_pDropLog = log; }

  // Store operations for sections.
  void DeleteData(void* data) override;
  void* CopyData(const void* data) override;
  int CompareDataSet(const KwDataSet& a, const KwDataSet& b, int full) const override;
  int CompareData(const void* a, const void* b) const override;
  int LoadDataSet(KwFile& file, KwDataSet& set, int64_t& line) override;
  int SaveDataSet(KwFile& file, const KwDataSet& set) override;
  void RenameData(void* data, const std::u16string& newName) override;
  // The collection's name is reserved: a section of that name would be taken for the collection.
  int IsReservedName(const std::u16string& name) const override;

 private:
  void Drop(int64_t line, int reason, const std::u16string& text);

  std::u16string m_CollectionName;
  std::u16string m_CollectionPrefix;
  int m_LoadingScope = 0;
  std::vector<KwCfgDropped>* m_pDropLog = nullptr;
};

}  // namespace kw
