// The one seam between the library and the operating system's window and process services.
// Everything the library takes from a window system goes through this class; the rules (box layout,
// results, questions) stay in the library and an implementation only shows and answers.
//
// Implementations: ConsolePlatform (the default; used by the command-line program) and
// ScriptedPlatform (answers from a queue and records everything; used by tests).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/KwProgress.h"

namespace kw {

using WindowId = uintptr_t;  // 0 = no window

struct BoxRect {
  int left = 0, top = 0, right = 0, bottom = 0;
};

enum class BeepClass { Asterisk, Exclamation, Stop };

// A fully computed message box. The library fills it; the platform draws it and returns the pressed
// button: 1 for the first, -(k+1) for the button at 0-based index k, 2 when the box was cancelled
// (Escape, end of input, the close box).
struct QueryBoxLayout {
  std::u16string caption;
  std::u16string text;        // the whole formatted text, labels included
  std::u16string message;     // the message part shown in the box
  std::vector<std::u16string> labels;  // button labels with their "&" mnemonics, one per button
  int defaultButton = 0;      // 0-based; -1 = no default button
  uint32_t pictureId = 0;     // 0 = none
  uint32_t helpId = 0;
  WindowId owner = 0;
  int wrapChars = 0;          // characters per text line that the layout allows
  BoxRect window;             // pixels, at (0, 0); the platform centres it over the owner
  BoxRect textRect;
  std::vector<BoxRect> buttonRects;
};

// A document file type for the desktop's file associations.
struct DocumentType {
  std::u16string typeId;       // registry-style identifier, no blanks
  std::u16string description;
  std::u16string extension;    // with the dot, e.g. ".txt"
  std::u16string command;      // program to open documents of the type
};

class Platform {
 public:
  virtual ~Platform() = default;

  // Windows.
  virtual WindowId GetMainWindow() = 0;    // 0 when the application has no main window
  virtual WindowId GetActiveWindow() = 0;  // 0 when none
  virtual int RunQueryBox(const QueryBoxLayout& box) = 0;
  virtual void Beep(BeepClass beep) = 0;
  virtual bool IsCtrlKeyDown() = 0;
  virtual int GetVScrollBarWidth() = 0;  // pixels
  virtual void SetWaitCursor(bool on) = 0;
  // A progress pane for a long operation; never null.
  virtual std::unique_ptr<KwProgress> CreateProgress(const std::u16string& title) = 0;

  // Programs and the auxiliary program.
  // Starts `file` with the verb "open" and `parameters`; a result above 32 is success.
  virtual intptr_t ShellOpen(const std::u16string& file, const std::u16string& parameters) = 0;
  // Whether a peer with this window title (instance name) is reachable now.
  virtual bool FindPeer(const std::u16string& title) = 0;
  // Sends UTF-16 data with a data tag to the peer (the platform adds the terminating zero, so the peer
  // receives (length + 1) * 2 bytes); returns the peer's reply, or 0 when it could not be delivered.
  virtual intptr_t SendToPeer(const std::u16string& title, uint32_t tag, const std::u16string& data) = 0;

  // Help: opens `helpFile` at the topic found by `keyword` (empty: the default topic); false when the
  // file or the topic could not be shown. The keyword comes as the help viewer takes it: 8-bit
  // characters packed two to a unit, low byte first, ending in a zero unit.
  virtual bool ShowHelp(const std::u16string& helpFile, const std::u16string& keyword) = 0;

  // Document types.
  virtual bool RegisterDocumentType(const DocumentType& type) = 0;
  virtual bool UnregisterDocumentType(const std::u16string& typeId) = 0;
  virtual bool IsDocumentTypeRegistered(const std::u16string& typeId) = 0;

  // Diagnostics.
  virtual void DebugOutput(const std::u16string& text) = 0;
  virtual uint32_t GetLastError() = 0;
  virtual void SetLastError(uint32_t code) = 0;
  virtual std::u16string GetErrorText(uint32_t code) = 0;

  // Clipboard (UTF-16 text).
  virtual bool SetClipboardText(const std::u16string& text) = 0;
  virtual bool GetClipboardText(std::u16string& text) = 0;
};

// The installed platform; a ConsolePlatform until SetPlatform is called. The library does not own an
// installed platform: the caller keeps it alive while it is installed. Null restores the console one.
Platform& GetPlatform();
void SetPlatform(Platform* platform);

}  // namespace kw
