// The editing commands of `kw` (calc, select, sum, find, replace, run) share one way of working: the
// file is read into a document, each step runs as a recordable task of an editor view, and the result
// is saved as the editor saves it (encoding, byte-order mark and line end kept, the old file kept as
// its backup when the edit parameters ask for one). A step that fails leaves the file as it was.
//
// Options that every editing command takes besides its own:
//   -o OUT         the result goes to OUT (FILE stays as it is); "-o -" writes it to standard output
//   --record MACRO the steps that ran are appended to the macro file MACRO (UTF-8, one line each),
//                  only when the whole command succeeded; `kw run MACRO FILE` replays them
//   --encoding ENC how to read a file without a byte-order mark (default: as the library detects)
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "Command.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditView.h"
#include "editor/KwRecordEvent.h"
#include "platform/ConsolePlatform.h"

namespace kwtool {

struct SessionOptions {
  std::string output;  // empty: save FILE itself; "-": standard output; else another file
  std::string record;  // macro file; empty: nothing is recorded
  int encoding = -1;   // for a file without a byte-order mark; -1 detect
};

// Takes -o/--output, --record and --encoding. Returns false with `error` set for a bad value.
bool TakeSessionOptions(Args& args, SessionOptions& options, std::string& error);

// Which lines a task works on, as the command line chose them.
struct LineChoice {
  enum Kind { kAll, kRange, kMarked, kWhere } kind = kAll;
  int64_t first = 0;  // kRange: lines counted from 1, inclusive
  int64_t last = 0;
  std::u16string term;  // kWhere: the logical term
};

// Takes --lines A-B, --marked and --where LOGICAL (at most one of them; `withLines` and `withMarked`
// say whether the command offers those two). Returns false with `error` set.
bool TakeLineChoice(Args& args, LineChoice& choice, bool withLines, bool withMarked, std::string& error);

// "FROM-TO", counted from 1, FROM <= TO; false for anything else.
bool ParseRange(const std::string& text, int64_t* from, int64_t* to);

// The console platform for `kw`: with a terminal its boxes are asked there; without one, where the
// console platform would show nothing, a box's message is printed on standard error instead (and
// the box counts as cancelled), so that a bad term or a refused save still tells the user why.
class ToolPlatform : public kw::ConsolePlatform {
 public:
  ToolPlatform();
  kw::WindowId GetMainWindow() override { return 1; }
  kw::WindowId GetActiveWindow() override { return 1; }
  int RunQueryBox(const kw::QueryBoxLayout& box) override;

 private:
  bool interactive_;
};

// The view of a command: records every executed step as its line.
class ToolView : public kw::KwEditView {
 public:
  using kw::KwEditView::KwEditView;
  void RecordEvent(kw::KwRecordEvent* event, int flags) override;
  const std::vector<std::u16string>& Recorded() const { return recorded_; }

 private:
  std::vector<std::u16string> recorded_;  // formatted lines, in the order the steps ran
};

class EditSession {
 public:
  // `command` names the command in messages ("calc").
  explicit EditSession(const char* command);
  ~EditSession();
  EditSession(const EditSession&) = delete;
  EditSession& operator=(const EditSession&) = delete;

  // Reads `file`. Returns 0, or an exit code after a message (missing, unreadable, a folder).
  int Open(const std::string& file, const SessionOptions& options);
  kw::KwEditBase& Document() { return document_; }
  ToolView& View() { return *view_; }
  // Replays recorded events: they are run as they are and not recorded again.
  void SetReplaying() { view_->SetReplaying(1); }

  // Runs one step through the view (ExecuteRecordEvent). Returns 0, or an exit code after a message
  // when the task failed or found nothing to work on (the file will then not be saved).
  int Run(kw::KwRecordEvent& event);
  // Runs the steps that mark the chosen lines and sets `*area` to the area kind the task then takes
  // (0 every line, 16 the marked lines). Returns 0 or an exit code after a message.
  int ChooseLines(const LineChoice& choice, int* area);
  // What the last step did, as one line for the user ("48 lines changed, 2 skipped (too short)").
  std::string Summary() const;
  // Prints a report line: on standard output, or on standard error when the text goes there.
  void Report(const std::string& line) const;

  // Saves the result as the options say (FILE in place only when it was changed) and then appends
  // the recorded steps to the macro file. Returns 0 or an exit code after a message.
  int Finish();
  // Appends the recorded steps to the macro file (Finish does it; commands that save nothing call it).
  int AppendRecorded();
  // Writes the lines for which `wanted(line)` holds to standard output in the document's encoding
  // and line end (with its byte-order mark when it has one). False when the output failed.
  template <class Wanted>
  bool PrintLines(Wanted wanted);

  // Writes units in the document's encoding to a stream.
  bool WriteEncoded(std::FILE* out, const char16_t* text, size_t units);
  const std::string& FileName() const { return file_; }

  // Prints "kw: COMMAND: message" on standard error and returns `code`.
  int Error(const std::string& message, int code = 1) const;

 private:
  bool WriteMark(std::FILE* out);
  int SaveTo(const std::string& output);
  int WriteToStandardOutput();

  std::string command_;
  std::string file_;
  SessionOptions options_;
  ToolPlatform platform_;
  kw::KwEditBase document_;
  std::unique_ptr<ToolView> view_;
};

template <class Wanted>
bool EditSession::PrintLines(Wanted wanted) {
  char16_t eol[3];
  const int eolLength = document_.GetEOLText(eol, 0);
  std::u16string block;
  constexpr size_t kBlock = size_t{1} << 20;
  bool ok = WriteMark(stdout);
  const kw::Line last = document_.GetLinesInDoc();
  for (kw::Line line = 0; line <= last && ok; ++line) {
    if (!wanted(line)) continue;
    block += document_.GetLineText(line);
    // The last line keeps its state: with an end of line only when the file had one.
    if (line < last) block.append(eol, static_cast<size_t>(eolLength));
    if (block.size() >= kBlock) {
      ok = WriteEncoded(stdout, block.data(), block.size());
      block.clear();
    }
  }
  ok = ok && WriteEncoded(stdout, block.data(), block.size());
  return std::fflush(stdout) == 0 && ok;
}

}  // namespace kwtool
