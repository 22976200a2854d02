// kw: the command-line batch editor built on Kw_Base.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Command.h"

namespace kwtool {

namespace {
std::vector<Command>& Registry() {
  static std::vector<Command> commands;
  return commands;
}
}  // namespace

bool RegisterCommand(const Command& command) {
  Registry().push_back(command);
  return true;
}

const std::vector<Command>& Commands() { return Registry(); }

int Fail(const std::string& message, int code) {
  std::fprintf(stderr, "kw: %s\n", message.c_str());
  return code;
}

int ParseEncoding(const std::string& name) {
  std::string lower;
  for (char c : name) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  static const char* const kNames[] = {"ansi", "utf-8", "utf-16le", "utf-16be", "dos"};
  for (int e = 0; e < 5; ++e)
    if (lower == kNames[e] || lower == std::to_string(e)) return e;
  return -1;
}

bool Args::Option(const char* name, std::string& value, const char* shortName) {
  for (size_t i = 0; i < args_.size(); ++i) {
    if (used_[i]) continue;
    const std::string& a = args_[i];
    const std::string longForm = std::string("--") + name;
    if (a == longForm || (shortName && a == shortName)) {
      if (i + 1 >= args_.size()) {
        error = "option " + a + " needs a value";
        used_[i] = true;
        return false;
      }
      value = args_[i + 1];
      used_[i] = used_[i + 1] = true;
      return true;
    }
    if (a.rfind(longForm + "=", 0) == 0) {
      value = a.substr(longForm.size() + 1);
      used_[i] = true;
      return true;
    }
  }
  return false;
}

bool Args::Flag(const char* name, const char* shortName) {
  for (size_t i = 0; i < args_.size(); ++i) {
    if (used_[i]) continue;
    if (args_[i] == std::string("--") + name || (shortName && args_[i] == shortName)) {
      used_[i] = true;
      return true;
    }
  }
  return false;
}

std::vector<std::string> Args::Positional() {
  std::vector<std::string> out;
  for (size_t i = 0; i < args_.size(); ++i) {
    if (used_[i]) continue;
    if (args_[i].size() > 1 && args_[i][0] == '-' && error.empty()) error = "unknown option " + args_[i];
    out.push_back(args_[i]);
  }
  return out;
}

}  // namespace kwtool

namespace {

void PrintHelp() {
  std::printf(
      "kw - batch editor for column-oriented text files (Kw_Base)\n\n"
      "Usage: kw COMMAND [ARGUMENTS]\n\n"
      "Commands:\n");
  for (const auto& c : kwtool::Commands()) std::printf("  %s\n      %s\n", c.usage, c.summary);
  std::printf(
      "\nEncodings: ansi (code page 1252), utf-8, utf-16le, utf-16be, dos (code page 437).\n"
      "kw --help shows this text; kw COMMAND --help shows the usage of one command.\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h") || !std::strcmp(argv[1], "help")) {
    PrintHelp();
    return argc < 2 ? 2 : 0;
  }
  const std::string name = argv[1];
  for (const auto& c : kwtool::Commands()) {
    if (name != c.name) continue;
    std::vector<std::string> args(argv + 2, argv + argc);
    if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
      std::printf("Usage: %s\n%s\n", c.usage, c.summary);
      return 0;
    }
    return c.run(args);
  }
  return kwtool::Fail("unknown command '" + name + "' (kw --help lists the commands)", 2);
}
