// The default platform: a terminal program. With an interactive terminal a message box is printed
// and answered on the terminal; without one the application has no main window, so the query box
// shows nothing and returns 2. A box is answered with a button's number, its mnemonic letter (the one
// after "&", case-blind), its label written out, or Enter for the default button; Escape or the end
// of input cancels it (2), anything else asks again.
//
// The operating system's services, done for real:
// - ShellOpen starts an executable file detached (its parameters split at blanks, double quotes
//   group); any other file goes to the desktop's opener "xdg-open". A missing file gives 2, a missing
//   opener 31, success 33.
// - Peers are local sockets named after the instance (PeerChannel.h).
// - ShowHelp opens the help file with "xdg-open"; the viewer cannot look up a keyword, so a lookup
//   reports failure and the caller shows the start page instead.
// - Document types are a desktop entry "applications/kwbase-<id>.desktop" and a shared-mime-info
//   package "mime/packages/kwbase-<id>.xml" (type "application/x-kwbase-<id in lower case>") in the
//   user's data folder ($XDG_DATA_HOME, or ~/.local/share). The desktop's caches are not refreshed
//   here (update-desktop-database, update-mime-database).
#pragma once

#include <cstdio>

#include "platform/Platform.h"

namespace kw {

class ConsolePlatform : public Platform {
 public:
  // `in` and `out` are the terminal; by default standard input and standard error.
  ConsolePlatform();
  ConsolePlatform(std::FILE* in, std::FILE* out, bool interactive);

  WindowId GetMainWindow() override;
  WindowId GetActiveWindow() override;
  int RunQueryBox(const QueryBoxLayout& box) override;
  void Beep(BeepClass beep) override;
  bool IsCtrlKeyDown() override { return false; }
  int GetVScrollBarWidth() override { return 17; }
  void SetWaitCursor(bool) override {}
  std::unique_ptr<KwProgress> CreateProgress(const std::u16string& title) override;

  intptr_t ShellOpen(const std::u16string& file, const std::u16string& parameters) override;
  bool FindPeer(const std::u16string& title) override;
  intptr_t SendToPeer(const std::u16string& title, uint32_t tag, const std::u16string& data) override;
  bool ShowHelp(const std::u16string& helpFile, const std::u16string& keyword) override;
  bool RegisterDocumentType(const DocumentType& type) override;
  bool UnregisterDocumentType(const std::u16string& typeId) override;
  bool IsDocumentTypeRegistered(const std::u16string& typeId) override;

  void DebugOutput(const std::u16string& text) override;
  uint32_t GetLastError() override { return lastError_; }
  void SetLastError(uint32_t code) override { lastError_ = code; }
  std::u16string GetErrorText(uint32_t code) override;

  bool SetClipboardText(const std::u16string& text) override;
  bool GetClipboardText(std::u16string& text) override;

  bool IsInteractive() const { return interactive_; }

 private:
  std::FILE* in_;
  std::FILE* out_;
  bool interactive_;
  uint32_t lastError_ = 0;
  std::u16string clipboard_;  // process-local: a terminal has no shared clipboard
};

}  // namespace kw
