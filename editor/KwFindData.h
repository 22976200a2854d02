// KwFindData: the search parameters shared by every find dialog, replace dialog and find bar of the
// application (one object, owned by the application object: KwWinApp::GetFindData). A window that
// shows them registers as an observer and is told whenever another window changes them.
//
// Entries: one string holding the search entries separated by character 127, most recent first;
// entry 0 is the one searched for. Options: six flags, 0 match case, 1 wildcards, 2 code-page (ASCII)
// conversion of "<#n>" sequences; 3 to 5 are free for the dialogs' own switches (not saved).
// Entries and options 0-2 are kept in the user settings, section "FindDlg", keys "TEXT", "CASE",
// "JOKER" and "ASCII".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kw {

// A window showing the shared search parameters (a find dialog, a replace dialog, a find bar).
class KwFindObserver {
 public:
  virtual ~KwFindObserver() = default;
  // The entries or options were changed by another window (or reloaded from the settings).
  virtual void UpdateFindEntries(const std::u16string& entries, const int* options) = 0;
};

class KwFindData {
 public:
  static constexpr int kOptionCount = 6;
  static constexpr int kMatchCase = 0;
  static constexpr int kWildcards = 1;
  static constexpr int kAscii = 2;
  static constexpr char16_t kSeparator = 127;
  static constexpr const char16_t* kSection = u"FindDlg";

  // Loads the settings (LoadINI).
  KwFindData();
  KwFindData(const KwFindData&) = delete;
  KwFindData& operator=(const KwFindData&) = delete;

  // Registered windows are told of changes; they must be removed before they go away.
  void AddFindInst(KwFindObserver* window);
  void RemoveFindInst(KwFindObserver* window);
  void RemoveAllFindInst() { m_FindInst.clear(); }
  int64_t GetFindInstCount() const { return static_cast<int64_t>(m_FindInst.size()); }

  // Stores `text` (all entries) and the options whose `mask` entry is nonzero (`mask` null: all six),
  // when any of them differs from what is stored; then sets the changed flag, saves (SaveINI(0)) and
  // tells every registered window except `sender` (may be null). Returns 1 when something changed.
  int SetFindEntries(const std::u16string& text, const int* options, const int* mask, KwFindObserver* sender);
  // Copies the entries and the six options out (either may be null).
  void GetFindEntries(std::u16string* text, int* options) const;
  // Entry `index` (from 0) of the entries; empty beyond the last.
  std::u16string GetEntry(int64_t index) const;
  // Entry 0 made ready for searching: quotes removed and "<#n>" sequences converted by StrConvert,
  // through `codePage` when option 2 is set (else as Unicode code points); the case is kept. `options`
  // (may be null) receives the options. Returns 1; 0 when a sequence could not be converted, and 0
  // after message 1401 when the result is empty.
  int GetPreparedFindEntry(std::u16string* text, int* options, int codePage);
  // The same conversion of a replacement `entry`, which may be empty.
  int GetPreparedReplEntry(const std::u16string& entry, std::u16string* text, int codePage) const;
  // Whether there is an entry.
  int HasEntries() const { return m_Entries.empty() ? 0 : 1; }

  // A replacement or extra entry handed over between windows: set, then taken once.
  void SetOptionalEntry(const std::u16string& entry) { m_OptionalEntry = entry; }
  const std::u16string& GetOptionalEntry() const { return m_OptionalEntry; }
  // Moves the optional entry to `*entry` and clears it; returns 1, or 0 when there was none.
  int AcceptOptionalEntry(std::u16string* entry);

  // Reads the section; when the entries or options differ from before, every window is told.
  // Returns 1 when the section was read (an application object exists), else 0.
  int LoadINI();
  // Writes the section: `flag` 0 only when the changed flag is set, 1 always. Returns 1 when written.
  int SaveINI(int flag);
  // Tells every registered window except `sender`.
  void Broadcast(KwFindObserver* sender);

  int GetLoaded() const { return m_Loaded; }
  int GetChanged() const { return m_Changed; }
  void SetChanged(int changed) { m_Changed = changed; }

 private:
  int Prepare(const std::u16string& in, std::u16string* out, int codePage) const;

  std::vector<KwFindObserver*> m_FindInst;
  int m_Options[kOptionCount] = {0, 0, 0, 0, 0, 0};
  std::u16string m_Entries;
  std::u16string m_OptionalEntry;
  int m_Loaded = 0;
  int m_Changed = 1;
};

}  // namespace kw
