// The document, view and save of the editing commands of `kw`.
#include "EditSession.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "base/CodePages.h"
#include "base/FileOps.h"
#include "editor/KwEditUndo.h"
#include "platform/Platform.h"

namespace kwtool {

namespace {

constexpr int64_t kProgressBytes = int64_t{1} << 24;  // smaller files load too fast for a progress bar

// Messages of boxes as one line: the box's line breaks become blanks.
std::string OneLine(const std::u16string& text) {
  std::string out = kw::ToUtf8(text);
  for (char& c : out)
    if (c == '\n' || c == '\r') c = ' ';
  return out;
}

}  // namespace

bool ParseRange(const std::string& text, int64_t* from, int64_t* to) {
  const size_t dash = text.find('-');
  if (dash == std::string::npos || dash == 0 || dash + 1 >= text.size()) return false;
  for (size_t i = 0; i < text.size(); ++i)
    if (i != dash && (text[i] < '0' || text[i] > '9')) return false;
  if (dash > 12 || text.size() - dash - 1 > 12) return false;  // no overflow
  *from = std::stoll(text.substr(0, dash));
  *to = std::stoll(text.substr(dash + 1));
  return *from >= 1 && *from <= *to;
}

bool TakeSessionOptions(Args& args, SessionOptions& options, std::string& error) {
  std::string encoding;
  args.Option("output", options.output, "-o");
  args.Option("record", options.record);
  if (args.Option("encoding", encoding) && (options.encoding = ParseEncoding(encoding)) < 0) {
    error = "unknown encoding '" + encoding + "' (ansi, utf-8, utf-16le, utf-16be, dos)";
    return false;
  }
  return true;
}

bool TakeLineChoice(Args& args, LineChoice& choice, bool withLines, bool withMarked, std::string& error) {
  std::string lines, where;
  const bool hasLines = withLines && args.Option("lines", lines);
  const bool hasMarked = withMarked && args.Flag("marked");
  const bool hasWhere = args.Option("where", where);
  if (int(hasLines) + int(hasMarked) + int(hasWhere) > 1) {
    error = withMarked ? "choose the lines with one of --lines, --marked and --where" : "--lines and --where exclude each other";
    return false;
  }
  if (hasLines) {
    if (!ParseRange(lines, &choice.first, &choice.last)) {
      error = "--lines wants A-B, lines counted from 1";
      return false;
    }
    choice.kind = LineChoice::kRange;
  } else if (hasMarked) {
    choice.kind = LineChoice::kMarked;
  } else if (hasWhere) {
    choice.kind = LineChoice::kWhere;
    choice.term = kw::FromUtf8(where);
    if (choice.term.find_first_not_of(u" \t") == std::u16string::npos) {
      error = "--where wants a logical term, e.g. \"[44-46]='GP'\"";
      return false;
    }
  }
  return true;
}

// ---- The platform ---------------------------------------------------------------------------------

ToolPlatform::ToolPlatform() : interactive_(isatty(STDIN_FILENO) && isatty(STDERR_FILENO)) {}

int ToolPlatform::RunQueryBox(const kw::QueryBoxLayout& box) {
  if (interactive_) return ConsolePlatform::RunQueryBox(box);
  std::fprintf(stderr, "kw: %s\n", OneLine(box.message).c_str());
  return 2;
}

// ---- The view -------------------------------------------------------------------------------------

void ToolView::RecordEvent(kw::KwRecordEvent* event, int /*flags*/) {
  if (event) recorded_.push_back(event->Format());
}

// ---- The session ----------------------------------------------------------------------------------

EditSession::EditSession(const char* command) : command_(command) {
  kw::SetPlatform(&platform_);
  document_.SetInteractive(0);  // a batch run asks no questions: a refused save is an error
  document_.DetectDocChange(1);
  // Nothing is undone in a batch run: a large step goes on without building its undo record.
  document_.GetUndo()->SetConfirmAnswer(2);
  view_ = std::make_unique<ToolView>(&document_);
}

EditSession::~EditSession() {
  view_.reset();
  kw::SetPlatform(nullptr);
}

int EditSession::Error(const std::string& message, int code) const {
  std::fprintf(stderr, "kw: %s: %s\n", command_.c_str(), message.c_str());
  return code;
}

int EditSession::Open(const std::string& file, const SessionOptions& options) {
  file_ = file;
  options_ = options;
  const std::u16string name = kw::FromUtf8(file);
  if (!kw::IsExisting(name)) return Error(file + ": no such file");
  if (kw::IsDirectory(name)) return Error(file + " is a folder, not a file");
  if (options.encoding >= 0) document_.SetReadEncoding(options.encoding);
  std::unique_ptr<kw::KwProgress> progress;
  if (kw::SizeOf(name) >= kProgressBytes) progress = kw::GetPlatform().CreateProgress(u"Read");
  if (document_.ReadFile(name, 0, progress.get()) != 1) return Error("cannot read " + file);
  if (!options.record.empty()) view_->SetRecording(1);
  return 0;
}

int EditSession::Run(kw::KwRecordEvent& event) {
  if (view_->ExecuteRecordEvent(&event) != 0) return 0;
  const std::string step = kw::ToUtf8(event.Format());
  const std::string keyword = step.substr(0, step.find('\x7f'));
  const std::string what = view_->GetLastExecute().lines > 0 ? " (" + Summary() + ")" : "";
  return Error(keyword + " did nothing" + what + "; " + file_ + " is left as it was");
}

int EditSession::ChooseLines(const LineChoice& choice, int* area) {
  *area = choice.kind == LineChoice::kAll ? 0 : kw::kAreaMarked;
  if (choice.kind == LineChoice::kAll) return 0;
  if (choice.kind == LineChoice::kMarked) {
    if (document_.MinLineMark() < 0)
      return Error("no line of " + file_ + " is marked (a file just read has no marks; --marked serves "
                   "macros whose earlier steps mark lines)");
    return 0;
  }
  // The old marks go first, so that only the chosen lines are marked; both steps are recorded, and a
  // macro made of them chooses the same lines again.
  kw::KwLineSelectEvent unmark;
  unmark.m_Action = kw::kLineActionUnmark;
  unmark.m_Area = 0;
  if (int rc = Run(unmark)) return rc;
  kw::KwLineSelectEvent mark;
  mark.m_Action = kw::kLineActionMark;
  mark.m_Area = 0;
  if (choice.kind == LineChoice::kRange) {
    mark.m_FirstLine = choice.first;
    mark.m_LastLine = choice.last;
  } else {
    mark.m_Term = choice.term;
  }
  if (int rc = Run(mark)) return rc;
  if (document_.MinLineMark() < 0)
    return Error(choice.kind == LineChoice::kRange ? "the file has no line in the range " +
                                                         std::to_string(choice.first) + "-" + std::to_string(choice.last)
                                                   : "no line matches the term");
  return 0;
}

std::string EditSession::Summary() const {
  const kw::KwExecuteResult& r = view_->GetLastExecute();
  std::string text = std::to_string(r.changed) + " of " + std::to_string(r.lines) + " lines";
  if (r.skipped) text += ", " + std::to_string(r.skipped) + " skipped (too short or no number)";
  if (r.overflow) text += ", " + std::to_string(r.overflow) + " too wide for the picture (marked)";
  return text;
}

void EditSession::Report(const std::string& line) const {
  std::FILE* out = options_.output == "-" ? stderr : stdout;
  std::fprintf(out, "%s\n", line.c_str());
}

int EditSession::Finish() {
  int rc = 0;
  if (options_.output == "-")
    rc = WriteToStandardOutput();
  else if (!options_.output.empty())
    rc = SaveTo(options_.output);
  else if (document_.GetModified())
    rc = SaveTo(std::string());
  return rc ? rc : AppendRecorded();
}

int EditSession::SaveTo(const std::string& output) {
  const std::u16string name = document_.GetDocName();
  if (output.empty()) {
    // The file is written back only when it is still the one that was read.
    if (!kw::IsExisting(name)) return Error(file_ + " vanished while it was edited; nothing saved");
    if (document_.DidDocChange())
      return Error(file_ + " was changed by someone else while it was edited; nothing saved");
  }
  std::u16string reason;
  const std::u16string target = output.empty() ? std::u16string() : kw::FromUtf8(output);
  if (!document_.WriteFile(target, output.empty() ? 0 : 1, &reason)) {
    std::string why = OneLine(reason);
    if (why.empty()) why = "refused";
    return Error("cannot save " + (output.empty() ? file_ : output) + ": " + why +
                 (output.empty() ? " (the file is as it was)" : ""));
  }
  return 0;
}

bool EditSession::WriteMark(std::FILE* out) {
  const int encoding = document_.GetEncoding();
  if (!document_.HasByteOrderMark() || encoding < 1 || encoding > 3) return true;
  const char16_t mark = 0xFEFF;
  return WriteEncoded(out, &mark, 1);
}

bool EditSession::WriteEncoded(std::FILE* out, const char16_t* text, size_t units) {
  const unsigned codePage = static_cast<unsigned>(kw::GetCodePageID(document_.GetEncoding()));
  char bytes[1 << 16];
  while (units > 0) {
    int64_t used = 0, written = 0;
    const uint32_t rc = kw::EncodeUnits(codePage, text, static_cast<int64_t>(units), bytes, sizeof bytes, 0, nullptr,
                                        nullptr, true, &used, &written);
    if ((rc != 0 && rc != kw::kErrorInsufficientBuffer) || used == 0) return false;
    if (std::fwrite(bytes, 1, static_cast<size_t>(written), out) != static_cast<size_t>(written)) return false;
    text += used;
    units -= static_cast<size_t>(used);
  }
  return true;
}

int EditSession::WriteToStandardOutput() {
  bool ok = WriteMark(stdout);
  for (const kw::tagTEXTDESC* chunk = document_.GetHead(); chunk && ok; chunk = chunk->next)
    ok = WriteEncoded(stdout, chunk->text, chunk->used);
  if (std::fflush(stdout) != 0 || !ok) return Error("cannot write to standard output");
  return 0;
}

int EditSession::AppendRecorded() {
  if (options_.record.empty() || view_->Recorded().empty()) return 0;
  std::ofstream macro(std::filesystem::path(std::u8string(options_.record.begin(), options_.record.end())),
                      std::ios::binary | std::ios::app);
  for (const std::u16string& line : view_->Recorded()) macro << kw::ToUtf8(line) << '\n';
  macro.close();
  if (!macro) return Error("cannot append to the macro file " + options_.record);
  return 0;
}

}  // namespace kwtool
