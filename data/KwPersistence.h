// KwPersistence: binds member variables of any object to keys of the two settings files, so that an
// object loads its settings when it is made and saves them when it goes away.
//
// Use: register each variable by key and address (LoadINI(IDname, &variable)), then bind all
// registered variables to a section (LoadINI(scope, section)), which reads their values; before the
// variables go away, SaveINI(section, scope) writes them back and releases them. One object serves
// the whole application (KwWinApp::GetPersist) and keeps every bound variable in one chain; a second
// binding of a section and key already bound does not read the file but takes the value the first
// variable holds at that moment, and is then not kept (the first binding is the one that is saved).
//
// Files. A section belongs to the project file "CONFIG.INI" in the project folder exactly when its
// name is in the known-section list (IsIniProj, scope 2); every other section belongs to the user file
// "KwUser.INI" in the user folder (scope 1). Both names are taken from the folder service (GetFolders)
// by InitChain and InitUser. The files have the sectioned syntax of KwConfigData.
//
// Text forms of the values, by type code:
//   1 text object, 2 fixed buffer: as is; 3 int "%d"; 4 unsigned int "%u"; 5 long "%ld";
//   6 unsigned long "%u"; 7 float and 8 double "%-25.15g" (left-aligned in 25 characters, so saved
//   lines carry trailing blanks); 9 long long "%Id"; 10 unsigned long long "%Iu".
// Integers are read with GetInt and floating values with GetDoubleExp. Each code stores the full
// width of its variable's own type: where `long` is 64 bits wide (as on Linux), int64_t and uint64_t
// are `long` and `unsigned long` and so take codes 5 and 6 without loss. GetInt refuses magnitudes
// from about 2^63 on; such a value, written as a plain decimal, is read exactly, so that every value
// comes back as it was written.
//
// A fixed buffer (code 2) has no size of its own: its capacity is the length of the text it holds when
// it is bound. A longer stored value is cut to that length (a broken contract: trace and assertion), a
// shorter one is padded with blanks to it. Fill such a buffer to its full width before binding it.
//
// Section names are normalised (GetName): blanks and tabs around the name are dropped, and the name
// ends before the first "]" or line-end character, since a header "[name]" cannot hold them. Case is
// kept: sections and keys are matched exactly, as the reader of the file compares them.
//
// Writing changes only what it must. Saving values replaces the line of each key in place (the first
// line of the key in the section, as that is the one read); a key that is not there yet is added after
// the last non-blank line of its section; a missing section is added at the end of the file. Every
// other line keeps its bytes, the file keeps its encoding, byte-order mark and line ends (new lines
// take the file's first line end). Nothing is written when no line changes. The new contents go to a
// temporary file in the same folder that then replaces the file in one step, so that a failed write
// leaves the old file whole. A new file is written in UTF-8 with a byte-order mark and CR LF, as the
// settings store writes, and a missing folder is created.
//
// Whole sections (LoadData/SaveData) map to lines as follows: LoadData gives the section's entry lines
// whole, in file order, without the lines the reader ignores (shorter than two characters, comments
// "!..."); SaveData replaces the section's lines from its header to its last non-blank line by the
// given lines (the header stays where it is; an empty list removes the section with its header), or
// adds the section at the end of the file. A given line that starts with "[" would open a section and
// is left out; line ends inside a line or a text value are written as blanks.
//
// Lifetime: registering (scope 0) -> bound and loaded (scope 1 or 2) -> saved and released (SaveINI).
// The registering object owns its variables; it must save or release its sections before they go away.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/Types.h"

namespace kw {

class KwConfigData;

// Scopes of an element.
inline constexpr int kPersistUnbound = 0;  // registered, not yet bound to a section
inline constexpr int kPersistUser = 1;     // "KwUser.INI" in the user folder
inline constexpr int kPersistProject = 2;  // "CONFIG.INI" in the project folder

// Type codes of the bound variables.
inline constexpr int kPersistText = 1;     // std::u16string
inline constexpr int kPersistBuffer = 2;   // char16_t[], zero-terminated, filled to its width
inline constexpr int kPersistInt = 3;      // int
inline constexpr int kPersistUInt = 4;     // unsigned int
inline constexpr int kPersistLong = 5;     // long
inline constexpr int kPersistULong = 6;    // unsigned long
inline constexpr int kPersistFloat = 7;    // float
inline constexpr int kPersistDouble = 8;   // double
inline constexpr int kPersistInt64 = 9;    // long long
inline constexpr int kPersistUInt64 = 10;  // unsigned long long

// One bound variable: an element of the chain.
struct tagPERSIST {
  tagPERSIST* pNext = nullptr;
  int Scope = kPersistUnbound;  // 0 registered, 1 user file, 2 project file
  std::u16string Section;       // normalised section name; empty while unbound
  std::u16string IDname;        // the key within the section
  int Loaded = 0;               // a value was read from the file
  int Type = 0;                 // type code 1..10
  void* pVariable = nullptr;    // the variable, owned by the registering object
  int Remove = 0;               // set while binding: shares an element already bound, to be released
};

class KwPersistence {
 public:
  static constexpr int kDefaultMaxElements = 4096;

  // The chain holds at most `maxElements` elements at once. The file names are taken from the
  // folder service (InitChain).
  explicit KwPersistence(int maxElements = kDefaultMaxElements);
  // Traces every element still in the chain: its object did not save or release it.
  ~KwPersistence();
  KwPersistence(const KwPersistence&) = delete;  // the chain holds addresses of other objects' members
  KwPersistence& operator=(const KwPersistence&) = delete;

  // ---- registering: one unbound element at the end of the chain; 1, or 0 when the chain is full ----
  int LoadINI(const std::u16string& IDname, std::u16string* value);
  int LoadINI(const std::u16string& IDname, char16_t* buffer);
  int LoadINI(const std::u16string& IDname, int* value);
  int LoadINI(const std::u16string& IDname, unsigned int* value);
  int LoadINI(const std::u16string& IDname, long* value);
  int LoadINI(const std::u16string& IDname, unsigned long* value);
  int LoadINI(const std::u16string& IDname, float* value);
  int LoadINI(const std::u16string& IDname, double* value);
  int LoadINI(const std::u16string& IDname, long long* value);
  int LoadINI(const std::u16string& IDname, unsigned long long* value);

  // Binds every unbound element to `section` and loads the values. `scope` must be the section's file
  // (1 user, 2 project; a broken contract otherwise: assertion, the unbound elements are dropped and
  // 0 returned). Returns 1 when every newly bound element was read from the file (or there was none),
  // 0 when at least one kept its default.
  int LoadINI(int scope, const std::u16string& section);
  // Writes the values of the section's elements to its file and releases them. 1 when written (or
  // nothing changed), 0 when the file could not be written or the section holds no element.
  int SaveINI(const std::u16string& section, int scope);

  // One-off reads and writes of a single value, not kept in the chain. LoadKey returns 1 when the key
  // was found (the variable keeps its value otherwise), SaveKey 1 when written. The unsigned long
  // forms store through an int (code 3), as these keys have always been kept: values above 2^31-1 are
  // written negative and read back to the same 32 bits; wider values are cut to 32 bits. Use the
  // unsigned long long form for 64-bit values.
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, long long* value);
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, unsigned long long* value);
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, int* value);
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, unsigned long* value);
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, char16_t* buffer);
  int LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, std::u16string* value);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const long long* value);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const unsigned long long* value);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const int* value);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const unsigned long* value);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const char16_t* buffer);
  int SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const std::u16string* value);

  // The address of the bound variable of section and key, or null (traced). Only bound elements, whose
  // scope is settled, may be asked for.
  void* GetPointer(const std::u16string& section, const std::u16string& IDname);
  // The element of section and key, or null (traced).
  const tagPERSIST* GetElement(const std::u16string& section, const std::u16string& IDname) const;

  // Removes the section's elements from the chain without saving. Returns the number removed.
  int Release(const std::u16string& section);
  // Removes every element without saving. Returns the number removed.
  int ResetChain();
  // Empties the chain and takes both file names from the folder service.
  void InitChain();
  // Takes the user file's name from the folder service again (after the user folder changed).
  void InitUser();
  const std::u16string& GetUserFile() const { return m_UserFile; }
  const std::u16string& GetProjectFile() const { return m_ProjectFile; }
  // The file of a scope (1 or 2); empty otherwise.
  const std::u16string& GetFile(int scope) const;

  // A settings store with the collection `name` whose local scope is the file of that section,
  // loaded. The caller owns it.
  std::unique_ptr<KwConfigData> CreateCollection(const std::u16string& name);

  // Whole sections as lines (see the header comment). LoadData returns the number of lines (0 when
  // the section or file is missing); SaveData 1 when written.
  int LoadData(const std::u16string& section, StringArray& lines);
  int SaveData(const std::u16string& section, const StringArray& lines);

  // Debug listings, also written to the platform's debug output: the sections in the chain with their
  // file and element count, and the whole chain.
  std::u16string ShowSections() const;
  std::u16string Table(const std::u16string& title) const;

  // Whether the section belongs to the project file.
  static bool IsIniProj(const std::u16string& section);
  // The scope of a section's file: 2 for the project file, 1 for the user file.
  static int GetSectionScope(const std::u16string& section) { return IsIniProj(section) ? kPersistProject : kPersistUser; }
  // The normalised section name.
  static std::u16string GetName(const std::u16string& section);

  // Text form of a variable of type `type`; empty for an unknown type (assertion).
  static std::u16string ValueToString(int type, const void* variable);
  // Reads `text` into a variable of type `type`. 0 for an unknown type (assertion; nothing changed).
  static int StringToValue(int type, void* variable, const std::u16string& text);

  // Reads the elements of `section` in the chain that are not loaded yet from `file`. 1 when every
  // element of the section is loaded afterwards, 0 otherwise (also for a missing file or section).
  int LoadProfileStrings(const std::u16string& file, const std::u16string& section);
  // Writes key=value lines into `section` of `file` as described above. 1 when written or unchanged.
  static int SaveProfileStrings(const std::u16string& file, const std::u16string& section,
                                const std::vector<std::pair<std::u16string, std::u16string>>& values);

  // Number of elements in the chain; the first element (null when empty).
  int GetCount() const { return m_Count; }
  const tagPERSIST* GetFirst() const { return m_pFirst; }
  int GetMaxElements() const { return m_MaxElements; }
  // The section bound last (normalised).
  const std::u16string& GetLastSection() const { return m_LastSection; }

 private:
  int Register(const std::u16string& IDname, int type, void* variable);
  tagPERSIST* Find(const std::u16string& section, const std::u16string& IDname) const;
  // Unlinks the elements for which `drop` is true and returns them to the free spots.
  template <class Pred>
  int RemoveIf(Pred drop);
  int LoadOne(int scope, const std::u16string& section, const std::u16string& IDname, int type, void* variable);
  int SaveOne(int scope, const std::u16string& section, const std::u16string& IDname, int type, const void* variable);
  bool CheckScope(int scope, const std::u16string& section) const;

  int m_MaxElements;
  std::unique_ptr<tagPERSIST[]> m_Spots;  // the elements' storage; a spot is free when pVariable is null
  tagPERSIST* m_pFirst = nullptr;
  tagPERSIST* m_pLast = nullptr;
  int m_Count = 0;
  int m_NextSpot = 0;  // where the search for a free spot starts
  std::set<std::u16string> m_Released;  // sections saved and released, for the warning of a second save
  std::u16string m_LastSection;         // the section bound last
  std::u16string m_UserFile;
  std::u16string m_ProjectFile;
};

}  // namespace kw
