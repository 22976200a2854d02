// kw select: line selection with a logical term: print, delete or keep the lines it selects.
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"

namespace kwtool {

namespace {

int RunSelect(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string error;
  const bool print = args.Flag("print");
  const bool remove = args.Flag("delete");
  const bool keep = args.Flag("keep");
  SessionOptions options;
  LineChoice choice;
  if (!TakeSessionOptions(args, options, error) || !TakeLineChoice(args, choice, false, false, error))
    return Fail("select: " + error, 2);
  const std::vector<std::string> files = args.Positional();
  if (!args.error.empty()) return Fail("select: " + args.error, 2);
  if (files.size() != 1) return Fail("select needs exactly one FILE", 2);
  if (choice.kind != LineChoice::kWhere) return Fail("select needs --where LOGICAL", 2);
  if (int(print) + int(remove) + int(keep) > 1) return Fail("select: choose one of --print, --delete and --keep", 2);
  if (!remove && !keep && !options.output.empty()) return Fail("select --print writes no file: no -o", 2);

  EditSession session("select");
  if (int rc = session.Open(files[0], options)) return rc;
  if (!remove && !keep) {
    // Printing: the selected lines are marked (the steps a macro records) and written out.
    kw::KwEditBase& document = session.Document();
    int area = 0;
    if (int rc = session.ChooseLines(choice, &area)) return rc;
    if (!session.PrintLines([&document](kw::Line line) { return document.GetLineMark(line) != 0; }))
      return session.Error("cannot write to standard output");
    return session.AppendRecorded();
  }
  kw::KwLineSelectEvent select;
  select.m_Action = remove ? kw::kLineActionDelete : kw::kLineActionKeep;
  select.m_Area = 0;
  select.m_Term = choice.term;
  if (int rc = session.Run(select)) return rc;
  session.Report(std::string("select: ") + session.Summary() + (remove ? " deleted" : " kept"));
  return session.Finish();
}

}  // namespace

KW_COMMAND("select",
           "kw select FILE --where LOGICAL [--print | --delete | --keep] [-o OUT|-o -] [--record MACRO] [--encoding ENC]",
           "line selection: print the lines for which LOGICAL (e.g. \"[44-46]='GP' AND [33-41]>110\") holds "
           "(default), or delete them or keep only them, saving FILE with FILE.BAK unless -o",
           &RunSelect);

}  // namespace kwtool
