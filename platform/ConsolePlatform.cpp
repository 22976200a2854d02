#include "platform/ConsolePlatform.h"

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "platform/PeerChannel.h"

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


// The console box. A label is shown without its blanks and with its mnemonic in brackets:
// "&Overwrite" as "[O]verwrite"; "&&" is a literal "&".
std::u16string ShowLabel(const std::u16string& label, char16_t* mnemonic) {
  std::u16string out;
  *mnemonic = 0;
  for (size_t i = 0; i < label.size(); ++i) {
    if (label[i] != u'&') {
      out += label[i];
    } else if (i + 1 < label.size() && label[i + 1] == u'&') {
      out += u'&';
      ++i;
    } else if (i + 1 < label.size() && *mnemonic == 0) {
      *mnemonic = label[++i];
      out += u'[';
      out += label[i];
      out += u']';
    }
  }
  const size_t first = out.find_first_not_of(u' ');
  if (first == std::u16string::npos) return {};
  return out.substr(first, out.find_last_not_of(u' ') - first + 1);
}

// The label as a user would type it: no mnemonic marker, no blanks around it.
std::u16string PlainLabel(const std::u16string& label) {
  std::u16string out;
  for (size_t i = 0; i < label.size(); ++i) {
    if (label[i] == u'&' && i + 1 < label.size()) ++i;
    out += label[i];
  }
  return out;
}

std::u16string Trim(const std::u16string& text) {
  const size_t first = text.find_first_not_of(u" \t\r");
  if (first == std::u16string::npos) return {};
  return text.substr(first, text.find_last_not_of(u" \t\r") - first + 1);
}

// Case folding for answers: ASCII and the Latin-1 letters.
char16_t FoldCase(char16_t c) {
  if ((c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7)) return static_cast<char16_t>(c + 32);
  return c;
}

std::u16string FoldText(std::u16string text) {
  for (auto& c : text) c = FoldCase(c);
  return Trim(text);
}

// Lines of the message at `width` characters: "\n" breaks, otherwise at the last blank that fits;
// a word longer than a line is cut.
std::vector<std::u16string> WrapMessage(const std::u16string& message, int width) {
  std::vector<std::u16string> lines;
  const size_t w = width > 0 ? static_cast<size_t>(width) : 80;
  size_t start = 0;
  for (;;) {
    const size_t nl = message.find(u'\n', start);
    std::u16string para = message.substr(start, nl == std::u16string::npos ? std::u16string::npos : nl - start);
    if (!para.empty() && para.back() == u'\r') para.pop_back();
    const bool wraps = para.size() > w;
    while (para.size() > w) {
      size_t cut = para.rfind(u' ', w);
      size_t next = cut + 1;
      if (cut == std::u16string::npos || cut == 0) cut = next = w;
      lines.push_back(para.substr(0, cut));
      para.erase(0, next);
    }
    if (!para.empty() || !wraps) lines.push_back(para);
    if (nl == std::u16string::npos) break;
    start = nl + 1;
  }
  return lines;
}

// Children started by ShellOpen and not yet reaped.
std::vector<pid_t>& Children() {
  static std::vector<pid_t> children;
  return children;
}

void ReapChildren() {
  auto& children = Children();
  std::erase_if(children, [](pid_t pid) { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
}

// Starts args[0] (searched in PATH when it has no "/") with the arguments; 0 or the error number.
int Spawn(const std::vector<std::string>& args) {
  std::vector<std::string> copy(args);
  std::vector<char*> argv;
  for (auto& a : copy) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid;
  const int rc = ::posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ);
  if (rc == 0) Children().push_back(pid);
  return rc;
}

// A parameter string as a shell's command line gives it: split at blanks, double quotes group.
std::vector<std::u16string> SplitParameters(const std::u16string& parameters) {
  std::vector<std::u16string> out;
  std::u16string current;
  bool quoted = false, any = false;
  for (char16_t c : parameters) {
    if (c == u'"') {
      quoted = !quoted;
      any = true;
    } else if ((c == u' ' || c == u'\t') && !quoted) {
      if (any) out.push_back(current);
      current.clear();
      any = false;
    } else {
      current += c;
      any = true;
    }
  }
  if (any) out.push_back(current);
  return out;
}

// Where the desktop's file associations live: desktop entries and shared-mime-info packages in the
// user's data folder ($XDG_DATA_HOME, or ~/.local/share).
struct DocumentTypeFiles {
  std::string desktop, mime, mimeType;  // empty when there is no data folder or no usable id
};

DocumentTypeFiles DocumentTypePaths(const std::u16string& typeId) {
  DocumentTypeFiles files;
  std::string base;
  if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) base = data;
  else if (const char* home = std::getenv("HOME"); home && *home) base = std::string(home) + "/.local/share";
  std::string id = ToUtf8(typeId);
  if (base.empty() || id.empty()) return files;
  for (char& c : id)
    if (c == '/' || c == ' ') c = '_';
  std::string lower;
  for (char c : id) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  files.desktop = base + "/applications/kwbase-" + id + ".desktop";
  files.mime = base + "/mime/packages/kwbase-" + id + ".xml";
  files.mimeType = "application/x-kwbase-" + lower;
  return files;
}

std::string XmlEscape(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      default: out += c;
    }
  }
  return out;
}

bool WriteWholeFile(const std::string& path, const std::string& contents) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << contents;
  out.close();
  return static_cast<bool>(out);
}

}  // namespace

ConsolePlatform::ConsolePlatform()
    : ConsolePlatform(stdin, stderr, isatty(STDIN_FILENO) && isatty(STDERR_FILENO)) {}

ConsolePlatform::ConsolePlatform(std::FILE* in, std::FILE* out, bool interactive)
    : in_(in), out_(out), interactive_(interactive) {}

WindowId ConsolePlatform::GetMainWindow() { return interactive_ ? 1 : 0; }
WindowId ConsolePlatform::GetActiveWindow() { return interactive_ ? 1 : 0; }

int ConsolePlatform::RunQueryBox(const QueryBoxLayout& box) {
  if (!interactive_) return 2;
  const int count = static_cast<int>(box.labels.size());
  if (count == 0) return 2;
  const bool hasDefault = box.defaultButton >= 0 && box.defaultButton < count;

  std::vector<char16_t> mnemonics;
  std::vector<std::u16string> shown;
  for (const auto& label : box.labels) {
    char16_t mnemonic = 0;
    shown.push_back(ShowLabel(label, &mnemonic));
    mnemonics.push_back(FoldCase(mnemonic));
  }

  std::string text = "\n== " + ToUtf8(box.caption) + " ==\n";
  for (const auto& line : WrapMessage(box.message, box.wrapChars)) text += ToUtf8(line) + "\n";
  text += " ";
  for (int i = 0; i < count; ++i) {
    const std::string button = std::to_string(i + 1) + " " + ToUtf8(shown[static_cast<size_t>(i)]);
    text += i == box.defaultButton ? " <" + button + ">" : "  " + button + " ";
  }
  text += "\n";
  std::string prompt = "Answer 1-" + std::to_string(count) + " or a letter in [ ]";
  if (hasDefault) prompt += ", Enter = " + std::to_string(box.defaultButton + 1);
  prompt += ", Escape = cancel: ";
  std::fputs(text.c_str(), out_);

  for (;;) {
    std::fputs(prompt.c_str(), out_);
    std::fflush(out_);
    std::string line;
    int ch;
    while ((ch = std::fgetc(in_)) != EOF && ch != '\n') line += static_cast<char>(ch);
    if (ch == EOF && line.empty()) return 2;  // end of input: cancelled
    if (line.find('\x1b') != std::string::npos) return 2;
    const std::u16string answer = Trim(FromUtf8(line));
    int chosen = -1;
    if (answer.empty()) {
      chosen = hasDefault ? box.defaultButton : -1;
    } else if (std::all_of(answer.begin(), answer.end(), [](char16_t c) { return c >= u'0' && c <= u'9'; })) {
      if (answer.size() <= 2) {
        const int n = std::stoi(ToUtf8(answer));
        if (n >= 1 && n <= count) chosen = n - 1;
      }
    } else {
      // A mnemonic letter, or a label written out; case-blind. The first button that matches wins.
      for (int i = 0; i < count && chosen < 0; ++i) {
        const size_t k = static_cast<size_t>(i);
        if ((answer.size() == 1 && mnemonics[k] != 0 && FoldCase(answer[0]) == mnemonics[k]) ||
            FoldText(answer) == FoldText(PlainLabel(box.labels[k])))
          chosen = i;
      }
    }
    if (chosen >= 0) return chosen == 0 ? 1 : -(chosen + 1);
    if (ch == EOF) return 2;
  }
}

void ConsolePlatform::Beep(BeepClass) {
  if (interactive_) std::fputc('\a', out_), std::fflush(out_);
}

std::unique_ptr<KwProgress> ConsolePlatform::CreateProgress(const std::u16string& title) {
  if (isatty(fileno(out_))) return std::make_unique<TerminalProgress>(out_, title);
  return std::make_unique<SilentProgress>();
}

// Programs are started detached: the platform keeps no handle on them. Those that ended are reaped
// at the next start, so that a long-running program leaves no zombies behind.
intptr_t ConsolePlatform::ShellOpen(const std::u16string& file, const std::u16string& parameters) {
  ReapChildren();
  const std::string path = ToUtf8(file);
  struct stat st;
  if (path.empty() || ::stat(path.c_str(), &st) != 0) {
    lastError_ = ENOENT;
    return 2;  // file not found, as the shell reports it
  }
  std::vector<std::string> args;
  if (S_ISREG(st.st_mode) && ::access(path.c_str(), X_OK) == 0) {
    args.push_back(path);
    for (auto& p : SplitParameters(parameters)) args.push_back(ToUtf8(p));
  } else {
    // A document (or a folder): the desktop's opener chooses the program. Parameters belong to programs.
    args = {"xdg-open", path};
  }
  const int rc = Spawn(args);
  if (rc == 0) return 33;
  lastError_ = static_cast<uint32_t>(rc);
  if (rc == ENOENT) return args[0] == "xdg-open" ? 31 : 2;  // 31: no program is associated
  if (rc == EACCES) return 5;                                 // access denied
  return 0;
}

bool ConsolePlatform::FindPeer(const std::u16string& title) { return IsPeerListening(title); }

intptr_t ConsolePlatform::SendToPeer(const std::u16string& title, uint32_t tag, const std::u16string& data) {
  return SendToPeerSocket(title, tag, data);
}

// The system's viewer opens the help file at its start page; it cannot look up a keyword, so a lookup
// fails and the caller falls back to the default topic.
bool ConsolePlatform::ShowHelp(const std::u16string& helpFile, const std::u16string& keyword) {
  if (!keyword.empty()) return false;
  const std::string path = ToUtf8(helpFile);
  if (::access(path.c_str(), R_OK) != 0) return false;
  ReapChildren();
  return Spawn({"xdg-open", path}) == 0;
}

bool ConsolePlatform::RegisterDocumentType(const DocumentType& type) {
  const DocumentTypeFiles files = DocumentTypePaths(type.typeId);
  if (files.desktop.empty()) return false;
  std::error_code ec;
  std::filesystem::create_directories(std::filesystem::path(files.desktop).parent_path(), ec);
  std::filesystem::create_directories(std::filesystem::path(files.mime).parent_path(), ec);
  std::string command = ToUtf8(type.command);
  if (command.find_first_of(" \t\"") != std::string::npos) {
    std::string quoted = "\"";
    for (char c : command) quoted += (c == '"' || c == '\\' || c == '`' || c == '$') ? std::string("\\") + c : std::string(1, c);
    command = quoted + "\"";
  }
  const std::string desktop = "[Desktop Entry]\nType=Application\nName=" + ToUtf8(type.description) +
                              "\nExec=" + command + " %f\nMimeType=" + files.mimeType +
                              ";\nNoDisplay=true\n";
  std::string glob;
  if (!type.extension.empty()) glob = "    <glob pattern=\"*" + XmlEscape(ToUtf8(type.extension)) + "\"/>\n";
  const std::string mime = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
                           "  <mime-type type=\"" + files.mimeType + "\">\n"
                           "    <comment>" + XmlEscape(ToUtf8(type.description)) + "</comment>\n" + glob +
                           "  </mime-type>\n</mime-info>\n";
  return WriteWholeFile(files.desktop, desktop) && WriteWholeFile(files.mime, mime);
}

bool ConsolePlatform::UnregisterDocumentType(const std::u16string& typeId) {
  const DocumentTypeFiles files = DocumentTypePaths(typeId);
  if (files.desktop.empty()) return false;
  std::error_code ec;
  const bool desktop = std::filesystem::remove(files.desktop, ec);
  const bool mime = std::filesystem::remove(files.mime, ec);
  return desktop || mime;
}

bool ConsolePlatform::IsDocumentTypeRegistered(const std::u16string& typeId) {
  const DocumentTypeFiles files = DocumentTypePaths(typeId);
  return !files.desktop.empty() && ::access(files.desktop.c_str(), R_OK) == 0 &&
         ::access(files.mime.c_str(), R_OK) == 0;
}

void ConsolePlatform::DebugOutput(const std::u16string& text) {
  // The debugger's output of a terminal program: shown only when asked for.
  static const bool enabled = std::getenv("KW_DEBUG_OUTPUT") != nullptr;
  // One line per call; a text that brings its own line end gets no second one.
  if (!enabled) return;
  const bool ended = !text.empty() && text.back() == u'\n';
  std::fputs((ToUtf8(text) + (ended ? "" : "\n")).c_str(), stderr);
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
