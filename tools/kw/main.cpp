// kw: the command-line batch editor built on Kw_Base.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "Command.h"
#include "app/KwCommandLineInfo.h"
#include "app/KwWinApp.h"
#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/KwFolders.h"
#include "data/KwPersistence.h"

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

// The program's application object: the flight recorder, the settings files and the command line.
class KwApp : public kw::KwWinApp {
 public:
  std::u16string GetAppVersion() const override { return kw::Widen(KW_VERSION); }
};

void PrintHelp() {
  std::printf(
      "kw - batch editor for column-oriented text files (Kw_Base)\n\n"
      "Usage: kw [-T] [-V] [-L=FOLDER] [-R=FOLDER] COMMAND [ARGUMENTS]\n\n"
      "Commands:\n");
  for (const auto& c : kwtool::Commands()) std::printf("  %s\n      %s\n", c.usage, c.summary);
  std::printf(
      "\nOptions before the command:\n"
      "  -T         trace into the flight recorder AUTO.REC in the current folder\n"
      "  -V         show the version\n"
      "  -L=FOLDER  folder of the user settings file KwUser.INI\n"
      "  -R=FOLDER  project folder (its settings file CONFIG.INI)\n"
      "KwUser.INI, section [Kw]: Trace=1 traces every run as -T does.\n"
      "\nEncodings: ansi (code page 1252), utf-8, utf-16le, utf-16be, dos (code page 437).\n"
      "kw --help shows this text; kw COMMAND --help shows the usage of one command.\n");
}

// Switches of the application that come before the command: T, V, L=, R= and the framework's
// registration switches, each after one "-".
bool IsAppSwitch(const char* arg) {
  if (arg[0] != '-' || arg[1] == '-' || arg[1] == 0) return false;
  std::string s(arg + 1);
  for (char& c : s) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return s == "t" || s == "v" || s.rfind("l=", 0) == 0 || s.rfind("r=", 0) == 0 || s == "register" ||
         s == "regserver" || s == "unregister" || s == "unregserver";
}

// A settings switch names a folder; a file name in it must be the file that lives there.
bool UseFolder(const std::u16string& folder, const std::u16string& name, const char16_t* expected,
               void (kw::KwFolders::*set)(const std::u16string&)) {
  if (!name.empty() && kw::CompareFileNames(name, expected) != 0) return false;
  if (!folder.empty()) (kw::GetFolders().*set)(folder);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (!kw::HasString(kw::kIdsAppTitle)) kw::SetString(kw::kIdsAppTitle, u"KW");
  KwApp app;
  kw::KwCommandLineInfo info;
  int first = 1;
  for (; first < argc && IsAppSwitch(argv[first]); ++first)
    info.ParseParam(kw::FromUtf8(argv[first] + 1), true, first + 1 == argc);

  if (!UseFolder(info.m_strLFolder, info.m_strLName, u"KwUser.INI", &kw::KwFolders::SetUserFolder))
    return kwtool::Fail("-L= names the folder of KwUser.INI, not another file", 2);
  if (!UseFolder(info.m_strRFolder, info.m_strRName, u"CONFIG.INI", &kw::KwFolders::SetProjectFolder))
    return kwtool::Fail("-R= names the project folder of CONFIG.INI, not another file", 2);

  int traceSetting = 0;
  app.GetPersist()->LoadKey(kw::kPersistUser, u"Kw", u"Trace", &traceSetting);
  if (info.m_bTrace || traceSetting) app.StartInitalTrace();
  if (app.GetTraceMode()) {
    std::u16string line = u"kw:";
    for (int i = 1; i < argc; ++i) line += u" " + kw::FromUtf8(argv[i]);
    app.Trace(u"%s", line);
  }
  if (info.m_bV) std::printf("kw %s\n", KW_VERSION);
  if (!app.ProcessShellCommand(info)) return 0;

  if (first >= argc) {
    if (info.m_bV) return 0;
    PrintHelp();
    return 2;
  }
  const char* command = argv[first];
  if (!std::strcmp(command, "--help") || !std::strcmp(command, "-h") || !std::strcmp(command, "help")) {
    PrintHelp();
    return 0;
  }
  const std::string name = command;
  for (const auto& c : kwtool::Commands()) {
    if (name != c.name) continue;
    std::vector<std::string> args(argv + first + 1, argv + argc);
    if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
      std::printf("Usage: %s\n%s\n", c.usage, c.summary);
      return 0;
    }
    const int code = c.run(args);
    if (app.GetTraceMode()) app.Trace(u"kw: %s ended with %d", kw::FromUtf8(name), code);
    return code;
  }
  return kwtool::Fail("unknown command '" + name + "' (kw --help lists the commands)", 2);
}
