// kw convert -o OUT on a terminal: an existing OUT is overwritten, appended to or kept as the user
// answers the query box. The program runs on a pseudo-terminal so that it has a main window.
#include <gtest/gtest.h>

#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace {

struct TerminalRun {
  int exit = -1;
  std::string shown;  // everything the terminal showed, the echoed answer included
};

// Runs kw with `args` on a new pseudo-terminal, typing `typed` ahead.
TerminalRun RunOnTerminal(std::vector<std::string> args, const std::string& typed) {
  args.insert(args.begin(), KW_BINARY);
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  TerminalRun run;
  int terminal = -1;
  const pid_t pid = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (pid < 0) return run;
  if (pid == 0) {
    execv(KW_BINARY, argv.data());
    _exit(127);
  }
  if (!typed.empty() && write(terminal, typed.data(), typed.size()) < 0) return run;
  char buffer[1024];
  for (ssize_t n; (n = read(terminal, buffer, sizeof buffer)) != 0;) {
    if (n < 0) {
      if (errno == EINTR) continue;
      break;  // EIO: the program has ended and closed the terminal
    }
    run.shown.append(buffer, static_cast<size_t>(n));
  }
  close(terminal);
  int status = 0;
  waitpid(pid, &status, 0);
  run.exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

class KwConvertAsk : public kwtest::PlatformTest {
 protected:
  TerminalRun Convert(const std::string& typed) {
    WriteBytes(Temp("in.txt"), "abc\r\n");
    WriteBytes(Temp("out.txt"), "old\r\n");
    return RunOnTerminal({"convert", Temp("in.txt").string(), "--to", "ansi", "-o", Temp("out.txt").string()},
                         typed);
  }
};

TEST_F(KwConvertAsk, OverwriteAppendOrKeep) {
  struct Row {
    std::string typed;
    int exit;
    std::string out;
  };
  const Row rows[] = {
      {"o\n", 0, "abc\r\n"},         {"1\n", 0, "abc\r\n"},  {"A\n", 0, "old\r\nabc\r\n"},
      {"c\n", 1, "old\r\n"},         {"\n", 1, "old\r\n"},   // Cancel is the default
      {"\x1b\n", 1, "old\r\n"},      {"\x04", 1, "old\r\n"},  // Escape; end of input (Ctrl-D)
  };
  for (const auto& row : rows) {
    const TerminalRun run = Convert(row.typed);
    SCOPED_TRACE(row.typed);
    EXPECT_EQ(run.exit, row.exit) << run.shown;
    EXPECT_EQ(ReadBytes(Temp("out.txt")), row.out);
    EXPECT_NE(run.shown.find("Question from kw"), std::string::npos) << run.shown;
    EXPECT_NE(run.shown.find("[O]verwrite"), std::string::npos);
  }
}

}  // namespace
