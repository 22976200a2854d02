#include "platform/ConsolePlatform.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "base/CodePages.h"

extern char** environ;

namespace kw {
namespace {

// A bar on the terminal: "title [#####     ]  42%". Redrawn only when the percentage changes.
class TerminalProgress : public KwProgress {
 public:
  TerminalProgress(std::FILE* out, std::u16string title) : out_(out), title_(std::move(title)) {}
  ~TerminalProgress() override {
    if (drawn_) std::fputs("\r\033[K", out_), std::fflush(out_);
  }
  int Step(int percent) override {
    if (percent < 0) percent = 0;
    if (percent > 100) percent = 100;
    if (percent != percent_ || !drawn_) {
      percent_ = percent;
      const int width = 30, filled = percent * width / 100;
      std::string bar = "\r" + ToUtf8(title_) + " [" + std::string(filled, '#') + std::string(width - filled, ' ') +
                        "] " + std::to_string(percent) + "%";
      std::fputs(bar.c_str(), out_);
      std::fflush(out_);
      drawn_ = true;
    }
    return 1;
  }
  int GetPercent() const override { return percent_; }
  void SetTitle(const std::u16string& title) override { title_ = title; }

 private:
  std::FILE* out_;
  std::u16string title_;
  int percent_ = 0;
  bool drawn_ = false;
};

// Without a terminal nothing is shown; the percentage is still kept for callers that read it.
class SilentProgress : public KwProgress {
 public:
  int Step(int percent) override {
    percent_ = percent;
    return 1;
  }
  int GetPercent() const override { return percent_; }

 private:
  int percent_ = 0;
};

}  // namespace

ConsolePlatform::ConsolePlatform()
    : ConsolePlatform(stdin, stderr, isatty(STDIN_FILENO) && isatty(STDERR_FILENO)) {}

ConsolePlatform::ConsolePlatform(std::FILE* in, std::FILE* out, bool interactive)
    : in_(in), out_(out), interactive_(interactive) {}

WindowId ConsolePlatform::GetMainWindow() { return interactive_ ? 1 : 0; }
WindowId ConsolePlatform::GetActiveWindow() { return interactive_ ? 1 : 0; }

int ConsolePlatform::RunQueryBox(const QueryBoxLayout& box) {
  if (!interactive_) return 2;
  std::string text = "\n== " + ToUtf8(box.caption) + " ==\n" + ToUtf8(box.message) + "\n";
  for (size_t i = 0; i < box.labels.size(); ++i)
    text += "  [" + std::to_string(i + 1) + "] " + ToUtf8(box.labels[i]) +
            (static_cast<int>(i) == box.defaultButton ? " (default)" : "") + "\n";
  std::fputs(text.c_str(), out_);
  std::fputs("> ", out_);
  std::fflush(out_);
  char line[256];
  if (!std::fgets(line, sizeof line, in_)) return 2;
  const int count = static_cast<int>(box.labels.size());
  int chosen = box.defaultButton;
  if (line[0] >= '1' && line[0] <= '9') chosen = line[0] - '1';
  if (chosen < 0 || chosen >= count) return 2;
  return chosen == 0 ? 1 : -(chosen + 1);
}

void ConsolePlatform::Beep(BeepClass) {
  if (interactive_) std::fputc('\a', out_), std::fflush(out_);
}

std::unique_ptr<KwProgress> ConsolePlatform::CreateProgress(const std::u16string& title) {
  if (isatty(fileno(out_))) return std::make_unique<TerminalProgress>(out_, title);
  return std::make_unique<SilentProgress>();
}

intptr_t ConsolePlatform::ShellOpen(const std::u16string& file, const std::u16string& parameters) {
  std::string program = ToUtf8(file);
  std::vector<std::string> args{program};
  if (!parameters.empty()) args.push_back(ToUtf8(parameters));
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid;
  const int rc = posix_spawnp(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ);
  if (rc != 0) {
    lastError_ = static_cast<uint32_t>(rc);
    return rc == ENOENT ? 2 : 0;  // 2: file not found, as the shell reports it
  }
  return 33;
}

bool ConsolePlatform::FindPeer(const std::u16string&) { return false; }
intptr_t ConsolePlatform::SendToPeer(const std::u16string&, uint32_t, const std::u16string&) { return 0; }
bool ConsolePlatform::ShowHelp(const std::u16string&, const std::u16string&) { return false; }
bool ConsolePlatform::RegisterDocumentType(const DocumentType&) { return false; }
bool ConsolePlatform::UnregisterDocumentType(const std::u16string&) { return false; }
bool ConsolePlatform::IsDocumentTypeRegistered(const std::u16string&) { return false; }

void ConsolePlatform::DebugOutput(const std::u16string& text) {
  // The debugger's output of a terminal program: shown only when asked for.
  static const bool enabled = std::getenv("KW_DEBUG_OUTPUT") != nullptr;
  if (enabled) std::fputs((ToUtf8(text) + "\n").c_str(), stderr);
}

std::u16string ConsolePlatform::GetErrorText(uint32_t code) {
  return FromUtf8(std::strerror(static_cast<int>(code)));
}

bool ConsolePlatform::SetClipboardText(const std::u16string& text) {
  clipboard_ = text;
  return true;
}

bool ConsolePlatform::GetClipboardText(std::u16string& text) {
  text = clipboard_;
  return true;
}

}  // namespace kw
