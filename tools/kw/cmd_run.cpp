// kw run: replays a macro file of recorded steps on files, as the editor replays recorded commands.
// Every line is read before any file is touched: a line that is no recorded step stops the run.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"
#include "editor/KwEditView.h"

namespace kwtool {

namespace {

// The line as the user sees it in a message: the field separator as "|", the remark's as " # ".
std::string ShowLine(const std::u16string& line) {
  std::string out;
  for (char16_t c : line) {
    if (c == kw::kEventFieldSep) out += '|';
    else if (c == kw::kEventRemarkSep) out += " # ";
    else out += kw::ToUtf8(std::u16string(1, c));
  }
  return out.size() > 100 ? out.substr(0, 100) + "..." : out;
}

// Reads the macro's steps. Returns 0, or an exit code after a message.
int ReadMacro(const std::string& name, std::vector<std::unique_ptr<kw::KwRecordEvent>>& steps) {
  const std::filesystem::path path(std::u8string(name.begin(), name.end()));
  std::ifstream in(path, std::ios::binary);
  if (!in) return Fail("run: cannot read the macro file " + name);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  std::error_code ec;
  const std::u8string folder = std::filesystem::absolute(path, ec).parent_path().u8string();
  const std::u16string base = ec ? std::u16string() : kw::FromUtf8(std::string(folder.begin(), folder.end()));
  size_t start = 0;
  for (int number = 1; start < bytes.size(); ++number) {
    size_t end = bytes.find('\n', start);
    if (end == std::string::npos) end = bytes.size();
    std::string text = bytes.substr(start, end - start);
    start = end + 1;
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (text.find_first_not_of(" \t") == std::string::npos) continue;  // blank lines separate steps
    const std::u16string line = kw::FromUtf8(text);
    std::unique_ptr<kw::KwRecordEvent> step = kw::KwEditView::ParseRecordEvent(line, base);
    if (!step)
      return Fail("run: line " + std::to_string(number) + " of " + name + " is no recorded step: " + ShowLine(line) +
                  " (no file was touched)", 2);
    steps.push_back(std::move(step));
  }
  if (steps.empty()) return Fail("run: the macro file " + name + " holds no step", 2);
  return 0;
}

int RunMacro(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string error;
  SessionOptions options;
  if (!TakeSessionOptions(args, options, error)) return Fail("run: " + error, 2);
  const std::vector<std::string> names = args.Positional();
  if (!args.error.empty()) return Fail("run: " + args.error, 2);
  if (names.size() < 2) return Fail("run needs MACRO and at least one FILE", 2);
  if (!options.output.empty() && names.size() != 2) return Fail("run: -o takes one FILE only", 2);
  if (!options.record.empty()) return Fail("run replays; it records nothing: no --record", 2);
  std::vector<std::unique_ptr<kw::KwRecordEvent>> steps;
  if (int rc = ReadMacro(names[0], steps)) return rc;

  int result = 0;
  for (size_t f = 1; f < names.size(); ++f) {
    EditSession session("run");
    int rc = session.Open(names[f], options);
    session.SetReplaying();
    for (size_t s = 0; s < steps.size() && rc == 0; ++s) rc = session.Run(*steps[s]);
    if (rc == 0) rc = session.Finish();
    if (rc == 0) session.Report("run: " + names[f] + ": " + std::to_string(steps.size()) + " steps");
    if (rc != 0 && result == 0) result = rc;
  }
  return result;
}

}  // namespace

KW_COMMAND("run",
           "kw run MACRO FILE... [-o OUT|-o -] [--encoding ENC]",
           "replays the steps of MACRO (lines recorded with --record) on each FILE and saves it keeping FILE.BAK; "
           "a FILE whose step fails is left as it was",
           &RunMacro);

}  // namespace kwtool
