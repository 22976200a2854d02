// kw sum: the column sum of the editor: adds up the numbers of a column range over the chosen lines.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"

namespace kwtool {

namespace {

// The sum with six decimals at most and without trailing zeros: "1234.5", "-3", "0.000125".
std::string SumText(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6f", value);
  std::string out = text;
  while (out.back() == '0') out.pop_back();
  if (out.back() == '.') out.pop_back();
  if (out == "-0") out = "0";
  return out;
}

int RunSum(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string column, term, error;
  const bool hasColumn = args.Option("column", column);
  const bool hasTerm = args.Option("term", term);
  SessionOptions options;
  LineChoice choice;
  if (!TakeSessionOptions(args, options, error) || !TakeLineChoice(args, choice, true, true, error))
    return Fail("sum: " + error, 2);
  const std::vector<std::string> files = args.Positional();
  if (!args.error.empty()) return Fail("sum: " + args.error, 2);
  if (files.size() != 1) return Fail("sum needs exactly one FILE", 2);
  if (hasColumn == hasTerm) return Fail("sum needs --column FROM-TO (or --term TERM)", 2);
  if (!options.output.empty()) return Fail("sum writes no file: no -o", 2);
  kw::KwColSumEvent sum;
  if (hasColumn) {
    int64_t from = 0, to = 0;
    if (!ParseRange(column, &from, &to)) return Fail("sum: --column wants FROM-TO, columns counted from 1", 2);
    sum.m_Term = kw::FromUtf8("[" + std::to_string(from) + "-" + std::to_string(to) + "]");
  } else {
    sum.m_Term = kw::FromUtf8(term);
  }
  sum.m_Output = 3;  // only into the task's result: printed here

  EditSession session("sum");
  if (int rc = session.Open(files[0], options)) return rc;
  if (int rc = session.ChooseLines(choice, &sum.m_Area)) return rc;
  if (int rc = session.Run(sum)) return rc;
  std::printf("%s\n", SumText(session.View().GetLastExecute().value).c_str());
  std::fprintf(stderr, "sum: %s\n", session.Summary().c_str());
  return session.AppendRecorded();
}

}  // namespace

KW_COMMAND("sum",
           "kw sum FILE --column FROM-TO | --term TERM [--lines A-B | --marked | --where LOGICAL] [--record MACRO] [--encoding ENC]",
           "column sum: prints the sum of the numbers in columns FROM-TO (or of --term TERM) over the lines",
           &RunSum);

}  // namespace kwtool
