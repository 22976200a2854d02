// kw calc: a column calculation. An arithmetic term is evaluated on each chosen line and its result
// written into a column range through a picture, as the editor's column calculation does it.
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"

namespace kwtool {

namespace {

// "rad", "deg", "gon" (or 0, 1, 2): the angle unit of the term's trigonometric functions.
int ParseAngleUnit(const std::string& text) {
  static const char* const kNames[] = {"rad", "deg", "gon"};
  for (int unit = 0; unit < 3; ++unit)
    if (text == kNames[unit] || text == std::to_string(unit)) return unit;
  return -1;
}

int RunCalc(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string term, into, picture, angle, error;
  const bool hasTerm = args.Option("term", term);
  const bool hasInto = args.Option("into", into);
  args.Option("picture", picture);
  const bool hasAngle = args.Option("angle", angle);
  const bool insert = args.Flag("insert");
  SessionOptions options;
  LineChoice choice;
  if (!TakeSessionOptions(args, options, error) || !TakeLineChoice(args, choice, true, true, error))
    return Fail("calc: " + error, 2);
  const std::vector<std::string> files = args.Positional();
  if (!args.error.empty()) return Fail("calc: " + args.error, 2);
  if (files.size() != 1) return Fail("calc needs exactly one FILE", 2);
  if (!hasTerm || !hasInto) return Fail("calc needs --term TERM and --into FROM-TO", 2);
  kw::KwColCalcEvent calc;
  if (!ParseRange(into, &calc.m_FirstCol, &calc.m_LastCol))
    return Fail("calc: --into wants FROM-TO, columns counted from 1", 2);
  if (hasAngle && (calc.m_AngleUnit = ParseAngleUnit(angle)) < 0) return Fail("calc: --angle wants rad, deg or gon", 2);
  calc.m_Term = kw::FromUtf8(term);
  calc.m_Picture = kw::FromUtf8(picture);
  calc.m_Insert = insert ? 1 : 0;

  EditSession session("calc");
  if (int rc = session.Open(files[0], options)) return rc;
  if (int rc = session.ChooseLines(choice, &calc.m_Area)) return rc;
  if (int rc = session.Run(calc)) return rc;
  session.Report("calc: " + session.Summary());
  return session.Finish();
}

}  // namespace

KW_COMMAND("calc",
           "kw calc FILE --term TERM --into FROM-TO [--picture P] [--insert] [--angle rad|deg|gon] "
           "[--lines A-B | --marked | --where LOGICAL] [-o OUT|-o -] [--record MACRO] [--encoding ENC]",
           "column calculation: TERM (e.g. \"[33-41]-100\") on each line, the result written into columns FROM-TO "
           "through picture P (e.g. \"####.###\"; --insert: as new columns); FILE is saved keeping FILE.BAK "
           "unless -o; lines too short for the term are skipped and counted; --marked: the lines an earlier "
           "step of a macro marked (a file just read has none)",
           &RunCalc);

}  // namespace kwtool
