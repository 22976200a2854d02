// The data-set store: named records ("data sets") kept per storage scope, one file per scope.
//
// A store holds an ordered map from (name, scope) to a data set. The same name may exist in several
// scopes at once; exactly one of them is the visible one (the one an application shows and uses).
// Scopes: 0 Standard (program folder, write protected), 1 Global (data folder), 2 Regional
// (department folder), 3 Local (project folder when the store is project-bound, else the user's
// folder), 4 Temporary (memory only). Subclasses supply the record format and the payload through
// the virtual operations; KwConfigData (sectioned settings files) is one of them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kw {

class KwData;
class KwFile;

inline constexpr int kScopeStandard = 0;
inline constexpr int kScopeGlobal = 1;
inline constexpr int kScopeRegional = 2;
inline constexpr int kScopeLocal = 3;
inline constexpr int kScopeTemporary = 4;
inline constexpr int kScopeCount = 5;
inline constexpr int kFileScopeCount = 4;  // scopes 0..3 have a file

// The map key: name and scope, ordered by the owner's key comparison and then by scope.
class KwDataKey {
 public:
  KwDataKey(const std::u16string& name, int scope, const KwData* owner);
  const std::u16string& GetName() const { return m_Name; }
  int GetScope() const { return m_Scope; }
  const KwData* GetOwner() const { return m_pOwner; }
  // -1, 0 or 1. A key without an owner is a programming error; it then compares by scope only.
  int CompareTo(const KwDataKey& other) const;
  bool operator==(const KwDataKey& o) const { return CompareTo(o) == 0; }
  bool operator!=(const KwDataKey& o) const { return CompareTo(o) != 0; }
  bool operator<(const KwDataKey& o) const { return CompareTo(o) < 0; }
  bool operator<=(const KwDataKey& o) const { return CompareTo(o) <= 0; }
  bool operator>(const KwDataKey& o) const { return CompareTo(o) > 0; }
  bool operator>=(const KwDataKey& o) const { return CompareTo(o) >= 0; }

 private:
  std::u16string m_Name;
  int m_Scope;
  const KwData* m_pOwner;
};

// The map value. The payload belongs to the owning store, which frees it with DeleteData.
class KwDataSet {
 public:
  explicit KwDataSet(KwData* owner, const std::u16string& name = {}, int scope = 0, void* data = nullptr);
  const std::u16string& GetName() const { return m_Name; }
  void SetName(const std::u16string& name) { m_Name = name; }
  int GetScope() const { return m_Scope; }
  void SetScope(int scope) { m_Scope = scope; }
  int IsVisible() const { return m_Visible; }
  void SetVisible(int visible) { m_Visible = visible; }
  void* GetData() const { return m_pData; }
  void SetData(void* data) { m_pData = data; }
  KwData* GetOwner() const { return m_pOwner; }
  // The owner's CompareDataSet; `full` also compares the payloads.
  int CompareTo(const KwDataSet& other, int full = 0) const;

 private:
  std::u16string m_Name;
  int m_Scope;
  int m_Visible = 0;
  void* m_pData;
  KwData* m_pOwner;
};

// Walks the data sets of one scope in map order, or the visible ones with scope -1. It remembers the
// last key it returned, so deleting that set (or others) between calls is safe.
class KwDataIterator {
 public:
  KwDataIterator(KwData* owner, int scope);
  KwDataSet* Next();  // null at the end
  void Reset() { m_Last.reset(); }

 private:
  KwData* m_pOwner;
  int m_Scope;
  std::optional<KwDataKey> m_Last;
};

class KwData {
 public:
  KwData();
  // Subclasses that own payloads call RemoveAll() in their own destructor, while DeleteData still
  // reaches their override.
  virtual ~KwData();
  KwData(const KwData&) = delete;
  KwData& operator=(const KwData&) = delete;

  // ---- virtual operations, in this order ----
  virtual int GetModified() const { return m_Modified; }
  virtual void SetModified(int modified = 1) { m_Modified = modified; }
  // Adds a set of scope 4 (memory only), replacing one of the same name there.
  virtual KwDataSet* AddTempDataSet(const std::u16string& name, void* data);
  // Adds the set (its payload passes to the store). Null when the scope is invalid or disabled, or a
  // set of that name and scope exists already; the caller keeps (and frees) the payload then.
  virtual KwDataSet* AddDataSet(const KwDataSet& set);
  // `replace` nonzero: an existing set of that name and scope gets the new payload (the old one is
  // freed); zero: an existing set makes the call fail as above.
  virtual KwDataSet* AddDataSet(const std::u16string& name, int scope, void* data, int replace);
  // The highest enabled and writable scope among 0..3 (0..4 with `includeTemp`); -1 when none.
  virtual int GetDefaultScope(int includeTemp = 0) const;
  virtual void DeleteData(void* data);
  virtual void* CopyData(const void* data);
  // Map order by default (name, then scope); with `full`, equal keys are compared by payload.
  virtual int CompareDataSet(const KwDataSet& a, const KwDataSet& b, int full) const;
  virtual int CompareData(const void* a, const void* b) const;
  // Reads one set from `file` starting at line `line`; sets `line` to -1 at the end of the file.
  // Returns nonzero when `set` was filled. The base has no format and must not be called.
  virtual int LoadDataSet(KwFile& file, KwDataSet& set, int64_t& line);
  virtual int SaveDataSet(KwFile& file, const KwDataSet& set);
  // Reads the head of a file; returns the line counter for the first LoadDataSet (the base reads
  // nothing and returns `line`).
  virtual int64_t LoadComment(KwFile& file, int64_t line);
  virtual int SaveComment(KwFile& file, int scope);
  // Called by CopyDataSet when the target scope already holds a set with the same payload. The base
  // accepts it silently and returns 1; the copy is then not made.
  virtual int ReportEqual(const KwDataSet& source, const KwDataSet& existing);
  // Keeps a payload that carries its own name in step with RenameDataSet. The base does nothing.
  virtual void RenameData(void* data, const std::u16string& newName);
  // Names that no data set may take (QueryNewDataSet answers them with message 3044). None here.
  virtual int IsReservedName(const std::u16string& name) const;
  virtual std::u16string GetOriginText(int scope, int width = 0) const;

  // ---- scopes and files ----
  void SetScopes(int mask);  // bit n enables scope n
  int GetScopes() const;
  void SetWrite(int mask);   // bit n makes scope n writable
  int GetWrite() const;
  int IsScopeEnabled(int scope) const;
  int IsScopeWritable(int scope) const;
  // Builds the four file names: `fileName` in the program, data, regional and (project-bound) project
  // or user folder of the folder service. `createFolders` nonzero lets SaveData create a missing
  // folder of a scope file; otherwise a missing folder is a write failure (message 3020).
  void SetFileNames(const std::u16string& fileName, int projectBound, int createFolders = 0);
  void SetFileNames(const std::u16string (&names)[kFileScopeCount], int projectBound = 0, int createFolders = 0);
  // Two scopes naming one file would load every set twice and write the file twice: the lower scope
  // gives its name up and is no longer writable. Empty names are left alone.
  void CheckFileNames();
  std::u16string GetFileName(int scope) const;  // empty for scope 4 and for scopes without a file
  void GetFileNames(std::u16string (&names)[kFileScopeCount]) const;
  int IsProjectBound() const { return m_ProjectBound; }
  // The encoding to read a scope file with: the one its byte-order mark names; without a mark, UTF-8
  // when its bytes are valid UTF-8 with at least one non-ASCII character (the store writes UTF-8, and
  // editors that drop the mark must not make the next save double-encode the file), else -1 (ANSI).
  static int GuessFileEncoding(const std::u16string& name);
  // The scope's name from string 3032 ("Standard" ... "Temporary").
  static std::u16string GetScopeName(int scope);

  // ---- state ----
  void SetIgnoreCase(int ignore) { m_IgnoreCase = ignore; }
  int GetIgnoreCase() const { return m_IgnoreCase; }
  void SetSilentMode(int silent) { m_Silent = silent; }
  int GetSilentMode() const { return m_Silent; }
  void SetInfoText(const std::u16string& text) { m_InfoText = text; }
  const std::u16string& GetInfoText() const { return m_InfoText; }
  int64_t GetLoadCounter() const { return m_LoadCounter; }

  // ---- loading and saving ----
  // Loads every enabled file scope. A positive `progressKind` shows a progress pane; when the user
  // stops it, loading ends and 0 is returned. The modified flag is left as it was.
  int LoadData(int progressKind = 0);
  // Writes every enabled writable file scope. 0 when a file could not be written or the user
  // cancelled the question about an externally changed file; else 1 (and the store is unmodified).
  int SaveData();
  // When modified: asks 3021 (silent mode: saves without asking). Yes saves, No keeps the files as
  // they are and returns 1, Cancel (or no box) returns 0.
  int SaveModified();
  // 1 when both stores hold the same keys with equal payloads (compared with this store's
  // CompareDataSet, so both must be of the same kind).
  int IsEqual(const KwData& other) const;
  // Makes this store a copy of `other`: its scopes, files, flags and copies of all its sets.
  int Copy(const KwData& other);

  // ---- sets ----
  // Copies the set `name` of `fromScope` into `toScope`. Message 3022 when `toScope` is not
  // writable; an equal set there goes to ReportEqual; a different one is overwritten only after
  // question 3033 (silent mode: overwritten). Returns the set in `toScope`, or null.
  KwDataSet* CopyDataSet(const std::u16string& name, int fromScope, int toScope);
  int DeleteDataSet(const std::u16string& name, int scope);
  int DeleteDataSet(KwDataSet* set);
  int DeleteDataSetsOfKey(const std::u16string& name);  // returns the number deleted
  int DeleteDataSetsOfScope(int scope);                 // returns the number deleted
  void RemoveAll();                                     // frees every payload; not a modification
  // Gives the set a new payload (the old one is freed). Returns 0 for a null set.
  int UpdateDataSet(KwDataSet* set, void* data);
  // Renames the set in its scope. Fails (message 3043) when the new name is taken in that scope.
  KwDataSet* RenameDataSet(const std::u16string& name, int scope, const std::u16string& newName);
  // The set of `name` in `scope` or, when there is none, in the nearest lower scope; null if none.
  KwDataSet* SearchDataSet(const std::u16string& name, int scope);
  // Moves a set to another scope: a copy as CopyDataSet, then the source is deleted. Both scopes must
  // be writable (message 3022 otherwise). Returns the moved set or null.
  KwDataSet* ChangeScope(const std::u16string& name, int fromScope, int toScope);

  // `scope` -1: the visible set of the name.
  KwDataSet* GetDataSet(const std::u16string& name, int scope = -1);
  void* GetData(const std::u16string& name, int scope = -1);
  int GetDataSetsOfKey(const std::u16string& name, std::vector<KwDataSet*>& sets);  // ordered by scope
  int GetScopesOfKey(const std::u16string& name) const;  // bit mask
  int64_t GetCount(int scope = -1) const;                 // -1: all scopes
  // The visible set of exactly this name, else the set whose name is most similar (GetCompareCount),
  // the first in map order among equals; null when no name shares anything with `name`.
  KwDataSet* SeekBestDataSet(const std::u16string& name);
  // Similarity of two names: the number of leading characters they share without regard to case.
  static int64_t GetCompareCount(const std::u16string& a, const std::u16string& b);

  // Iteration in map order over one scope, or over the visible sets with scope -1. `first` nonzero
  // restarts. Null at the end.
  KwDataSet* GetNextDataSet(int first, int scope);
  void* GetNextData(int first, int scope);
  KwDataIterator GetIterator(int scope) { return KwDataIterator(this, scope); }

  // StrCompare with case counting unless the ignore-case flag is set.
  int CompareKeys(const std::u16string& a, const std::u16string& b) const;

  // ---- user dialogs (through the query box) ----
  // Offers "Copy to <scope>" (the default scope, or for a set already there the next writable scope
  // below it), "Remove" (writable scopes only) and "Cancel / ESC" for the set, with its origin text
  // (string 3031). Copy asks 3033 before overwriting; Remove asks 3034. Returns 1 copied, 2 removed,
  // 0 nothing done.
  int EditLocation(const std::u16string& name, int scope);
  // Checks a name the user typed for a new set in `scope`: message 3044 for a reserved or empty name,
  // 3043 when the name exists in that scope. 1 when the name can be used. (The text entry itself is
  // the application window's.)
  int QueryNewDataSet(const std::u16string& name, int scope);

  // ---- visibility ----
  // The visible set of a name is the one in the highest enabled scope (temporary over local over
  // regional over global over standard). A choice of a lower set is made lasting by copying it into
  // the default scope, where it then wins: MakeVisibilityPersistent asks 3030 (silent mode: does
  // it), copies, deletes the temporary set of the name if any, and returns 1 when done.
  int MakeVisibilityPersistent(const std::u16string& name, int scope);
  void UpdateVisibility();
  void UpdateVisibilityOfKey(const std::u16string& name);

 protected:
  // Line reading for a subclass's LoadDataSet, with one line of look-ahead: the header that ends a
  // data set is pushed back and read first by the next call. DropPushBack starts a new file.
  bool ReadDataLine(KwFile& file, std::u16string& text);
  void PushBackLine(std::u16string&& text) {
    m_PushBack = std::move(text);
    m_HasPushBack = true;
  }
  void DropPushBack() { m_HasPushBack = false; }

  // Shows message `id` of this store (sender "Data", help id 3040) with up to two texts for its
  // "%s" places, each "|" in them made a "¦". Returns 2 (no box) in silent mode.
  int64_t Report(uint32_t id, uint32_t pictureId, uint32_t style, const std::vector<std::u16string>& args = {}) const;
  // The stamps of a file now: last write time and size; zeros when there is no file.
  static void GetFileStamps(const std::u16string& name, double stamps[2]);
  std::map<KwDataKey, KwDataSet>& GetMap() { return m_Map; }
  const std::map<KwDataKey, KwDataSet>& GetMap() const { return m_Map; }
  KwDataSet* NextOf(std::optional<KwDataKey>& last, int scope);
  int64_t m_LoadCounter = 0;  // for subclasses while loading; reset by every load

 private:
  std::u16string m_PushBack;  // a line read ahead by LoadDataSet
  bool m_HasPushBack = false;
  friend class KwDataIterator;
  int SaveScope(int scope);

  std::map<KwDataKey, KwDataSet> m_Map;
  int m_Enabled[kScopeCount] = {1, 1, 1, 1, 1};
  int m_Writable[kScopeCount] = {0, 1, 1, 1, 1};
  std::u16string m_FileNames[kFileScopeCount];
  int m_ProjectBound = 0;
  int m_CreateFolders = 0;
  double m_Stamps[kFileScopeCount][2] = {};
  int m_Modified = 0;
  int m_IgnoreCase = 0;
  int m_Silent = 0;
  std::u16string m_InfoText;
  std::optional<KwDataKey> m_Cursor;
};

}  // namespace kw
