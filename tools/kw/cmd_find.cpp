// kw find: finds a text as the editor's find command does and prints where: line:column, both
// counted from 1, of the first match or (--all) of every match.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"

namespace kwtool {

namespace {

int RunFind(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string error;
  const bool matchCase = args.Flag("case");
  const bool wildcards = args.Flag("wildcards");
  const bool all = args.Flag("all");
  SessionOptions options;
  if (!TakeSessionOptions(args, options, error)) return Fail("find: " + error, 2);
  const std::vector<std::string> words = args.Positional();
  if (!args.error.empty()) return Fail("find: " + args.error, 2);
  if (words.size() < 2) return Fail("find needs FILE and TEXT", 2);
  if (!options.output.empty()) return Fail("find writes no file: no -o", 2);
  // The words after FILE are one search text, joined by single blanks as a shell would show them.
  std::string text = words[1];
  for (size_t i = 2; i < words.size(); ++i) text += " " + words[i];

  EditSession session("find");
  if (int rc = session.Open(words[0], options)) return rc;
  kw::KwFindEvent find;
  find.m_Text = kw::FromUtf8(text);
  find.m_Command = 2;  // the first match from the top
  find.m_Find.m_Options[0] = matchCase ? 1 : 0;
  find.m_Find.m_Options[1] = wildcards ? 1 : 0;
  ToolView& view = session.View();
  if (!view.ExecuteFind(&find)) {
    std::fprintf(stderr, "kw: find: \"%s\" not found in %s\n", text.c_str(), words[0].c_str());
    return 1;
  }
  // Only the first search is a step worth recording; the rest walks the matches.
  const int recordRc = session.AppendRecorded();
  view.SetRecording(0);
  find.m_Command = 0;  // from the caret, which stands behind the match
  kw::Line line = 0, endLine = 0, lastLine = -1;
  int64_t column = 0, endColumn = 0, lastColumn = -1;
  std::string out;
  for (;;) {
    view.GetSel(&line, &column, &endLine, &endColumn);
    // A search that wraps around to the top has found every match.
    if (line < lastLine || (line == lastLine && column <= lastColumn)) break;
    out += std::to_string(line + 1) + ":" + std::to_string(column + 1) + "\n";
    if (out.size() >= (size_t{1} << 16)) {
      std::fputs(out.c_str(), stdout);
      out.clear();
    }
    if (!all || !view.ExecuteFind(&find)) break;
    lastLine = line;
    lastColumn = column;
  }
  std::fputs(out.c_str(), stdout);
  if (std::fflush(stdout) != 0) return session.Error("cannot write to standard output");
  return recordRc;
}

}  // namespace

KW_COMMAND("find",
           "kw find FILE TEXT... [--case] [--wildcards] [--all] [--record MACRO] [--encoding ENC]",
           "prints line:column (from 1) of the first match of TEXT (the words joined by blanks), or of every "
           "match with --all; --case: exact case; --wildcards: ? is any character, * any run",
           &RunFind);

}  // namespace kwtool
