// A data-set store whose payloads are key-to-value maps: each data set is a table of records, a
// record being a fixed number of key fields and a fixed number of value fields (list exchange files
// map a list's key columns and value columns this way).
//
// File format, one file per scope, written as UTF-8:
//   !KWMAP <identification>          the first line; a file without it loads nothing (result -3)
//   [set name]                        opens a data set
//   key1<TAB>key2<TAB>value1<TAB>...  one record per line: the key fields, then the value fields
// In fields, "\" is written "\\", a tab "\t", a line end "\n" and "\r", and a leading "[" or "!"
// of a line "\[" / "\!", so that any text goes through a file and comes back unchanged.
// A record with fewer fields than keys is dropped (result -2); missing value fields are empty and
// surplus ones are dropped. A later record with the same keys replaces an earlier one.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "data/KwData.h"

namespace kw {

using KwMapFields = std::vector<std::u16string>;
using KwMapRecords = std::map<KwMapFields, KwMapFields>;  // key fields -> value fields

class KwMapData : public KwData {
 public:
  KwMapData(const std::u16string& identification, int keyFields, int valueFields);
  ~KwMapData() override;

  const std::u16string& GetIdentification() const { return m_Identification; }
  int GetKeyFieldCount() const { return m_KeyFields; }
  int GetValueFieldCount() const { return m_ValueFields; }

  // The records of a set (`scope` -1: the visible one), or null.
  KwMapRecords* GetRecords(const std::u16string& name, int scope = -1);
  // The records of the set, created empty in `scope` when absent. Null for an invalid scope.
  KwMapRecords* MakeRecords(const std::u16string& name, int scope);
  // Sets one record; the key must have the store's number of key fields (else 0). Values are
  // padded or cut to the number of value fields.
  int SetRecord(KwMapRecords& records, const KwMapFields& keys, const KwMapFields& values) const;

  // Reads one file as the global scope (other scopes off, nothing written back). 1 success; 0 the
  // file could not be read; -2 a record had too few key fields (the others are loaded); -3 the
  // file does not carry this store's identification (nothing is loaded).
  int LoadFile(const std::u16string& fileName);
  // Writes the global scope to one file. 1 success, 0 failure (reported as the store reports).
  int SaveFile(const std::u16string& fileName);
  // The result of the last load as LoadFile gives it.
  int GetLoadResult() const { return m_LoadResult; }

  static std::u16string EscapeField(const std::u16string& field, bool lineStart);
  static KwMapFields SplitLine(const std::u16string& line);

  void DeleteData(void* data) override;
  void* CopyData(const void* data) override;
  int CompareData(const void* a, const void* b) const override;
  int LoadDataSet(KwFile& file, KwDataSet& set, int64_t& line) override;
  int SaveDataSet(KwFile& file, const KwDataSet& set) override;
  int64_t LoadComment(KwFile& file, int64_t line) override;
  int SaveComment(KwFile& file, int scope) override;

 private:
  std::u16string m_Identification;
  int m_KeyFields;
  int m_ValueFields;
  int m_LoadResult = 1;
};

}  // namespace kw
