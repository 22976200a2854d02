// A platform for tests: boxes are answered from a queue and every request is recorded, so that a
// test can check what the library showed, started, sent and traced. Install it with ScopedPlatform.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace kw {

class ScriptedPlatform : public Platform {
 public:
  // What the tests set.
  WindowId mainWindow = 1;      // 0 = no main window
  WindowId activeWindow = 1;
  bool ctrlDown = false;
  int scrollBarWidth = 17;
  std::deque<int> answers;      // results of the next boxes; empty queue: the box is cancelled (2)
  int stopProgressAtStep = -1;  // the n-th Step call (counted over all panes, from 1) returns 0
  intptr_t shellResult = 33;
  std::deque<intptr_t> shellResults;  // results of the next starts, before shellResult applies
  std::map<std::u16string, intptr_t> peers;  // reachable peers and their replies
  int peerHiddenSearches = 0;  // the first n FindPeer calls find nothing (a peer still starting)
  bool helpResult = true;
  bool registerResult = true;  // what RegisterDocumentType answers (a refused type is not recorded)
  uint32_t lastError = 0;
  std::map<uint32_t, std::u16string> errorTexts;

  // What the library did.
  std::vector<QueryBoxLayout> boxes;
  std::vector<BeepClass> beeps;
  std::vector<std::pair<std::u16string, std::u16string>> shellOpens;  // file, parameters
  std::vector<std::pair<std::u16string, std::u16string>> sent;        // peer, data
  std::vector<uint32_t> sentTags;                                     // the data tag of each send
  int peerSearches = 0;                                               // FindPeer calls
  std::vector<std::pair<std::u16string, std::u16string>> helpShown;   // file, keyword
  std::vector<DocumentType> registered;
  std::vector<std::u16string> debugOutput;
  std::vector<int> progressSteps;  // every percentage stepped, in order
  std::vector<std::u16string> progressTitles;
  int waitCursorDepth = 0;
  std::u16string clipboard;

  WindowId GetMainWindow() override { return mainWindow; }
  WindowId GetActiveWindow() override { return activeWindow; }
  int RunQueryBox(const QueryBoxLayout& box) override;
  void Beep(BeepClass beep) override { beeps.push_back(beep); }
  bool IsCtrlKeyDown() override { return ctrlDown; }
  int GetVScrollBarWidth() override { return scrollBarWidth; }
  void SetWaitCursor(bool on) override { waitCursorDepth += on ? 1 : -1; }
  std::unique_ptr<KwProgress> CreateProgress(const std::u16string& title) override;

  intptr_t ShellOpen(const std::u16string& file, const std::u16string& parameters) override;
  bool FindPeer(const std::u16string& title) override;
  intptr_t SendToPeer(const std::u16string& title, uint32_t tag, const std::u16string& data) override;
  bool ShowHelp(const std::u16string& helpFile, const std::u16string& keyword) override;
  bool RegisterDocumentType(const DocumentType& type) override;
  bool UnregisterDocumentType(const std::u16string& typeId) override;
  bool IsDocumentTypeRegistered(const std::u16string& typeId) override;

  void DebugOutput(const std::u16string& text) override { debugOutput.push_back(text); }
  uint32_t GetLastError() override { return lastError; }
  void SetLastError(uint32_t code) override { lastError = code; }
  std::u16string GetErrorText(uint32_t code) override;

  bool SetClipboardText(const std::u16string& text) override { clipboard = text; return true; }
  bool GetClipboardText(std::u16string& text) override { text = clipboard; return true; }

  int stepCalls = 0;  // Step calls so far, over all panes
};

// Installs a platform for the lifetime of the object and restores the previous one.
class ScopedPlatform {
 public:
  explicit ScopedPlatform(Platform& platform);
  ~ScopedPlatform();
  ScopedPlatform(const ScopedPlatform&) = delete;
  ScopedPlatform& operator=(const ScopedPlatform&) = delete;

 private:
  Platform* previous_;
};

}  // namespace kw
