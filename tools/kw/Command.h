// The commands of `kw`. Each command lives in a file of its own and registers itself with
// KW_COMMAND; main() dispatches on the first argument.
#pragma once

#include <string>
#include <vector>

namespace kwtool {

struct Command {
  const char* name;
  const char* usage;    // one line: "kw detect FILE..."
  const char* summary;  // one line for `kw --help`
  int (*run)(const std::vector<std::string>& args);  // args after the command name; returns the exit code
};

// Registers a command; used through KW_COMMAND at namespace scope.
bool RegisterCommand(const Command& command);
const std::vector<Command>& Commands();

// Prints "kw: " + message to standard error and returns `code`, for one-line error exits.
int Fail(const std::string& message, int code = 1);

// The encoding number of a name given on the command line: ansi, utf-8, utf-16le, utf-16be, dos
// (case-blind) or 0..4; -1 for anything else.
int ParseEncoding(const std::string& name);

// Argument reading shared by the commands: "--name VALUE" and flags.
class Args {
 public:
  explicit Args(const std::vector<std::string>& args) : args_(args), used_(args.size(), false) {}
  // Takes "--name VALUE" (or "-n VALUE"); false when absent. Sets `error` when the value is missing.
  bool Option(const char* name, std::string& value, const char* shortName = nullptr);
  bool Flag(const char* name, const char* shortName = nullptr);
  // The remaining arguments, in order; an unknown "--option" among them sets `error`.
  std::vector<std::string> Positional();
  std::string error;

 private:
  const std::vector<std::string>& args_;
  std::vector<bool> used_;
};

}  // namespace kwtool

#define KW_COMMAND_CAT2(a, b) a##b
#define KW_COMMAND_CAT(a, b) KW_COMMAND_CAT2(a, b)
#define KW_COMMAND(...) \
  static const bool KW_COMMAND_CAT(kw_command_registered_, __LINE__) = ::kwtool::RegisterCommand({__VA_ARGS__})
