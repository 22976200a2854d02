// kw replace: replaces every match of a text, or of each find text of a table, as the editor's
// replace-all and table replacement do.
#include <filesystem>
#include <string>
#include <vector>

#include "Command.h"
#include "EditSession.h"
#include "base/CodePages.h"
#include "base/FileOps.h"

namespace kwtool {

namespace {

int RunReplace(const std::vector<std::string>& argv) {
  Args args(argv);
  std::string table, error;
  const bool hasTable = args.Option("table", table);
  const bool matchCase = args.Flag("case");
  const bool wildcards = args.Flag("wildcards");
  SessionOptions options;
  if (!TakeSessionOptions(args, options, error)) return Fail("replace: " + error, 2);
  const std::vector<std::string> words = args.Positional();
  if (!args.error.empty()) return Fail("replace: " + args.error, 2);
  if (hasTable ? words.size() != 1 : words.size() != 3)
    return Fail("replace needs FILE FIND WITH, or FILE --table TABLE", 2);
  if (!hasTable && words[1].empty()) return Fail("replace: the text to find is empty", 2);

  EditSession session("replace");
  if (int rc = session.Open(words[0], options)) return rc;
  if (hasTable) {
    const std::u16string name = kw::FromUtf8(table);
    if (!kw::IsExisting(name) || kw::IsDirectory(name)) return session.Error(table + ": no such table file");
    std::error_code ec;
    const std::filesystem::path absolute =
        std::filesystem::absolute(std::filesystem::path(std::u8string(table.begin(), table.end())), ec);
    kw::KwTableRepEvent replace;
    replace.m_Area = 0;
    replace.m_MatchCase = matchCase ? 1 : 0;
    replace.m_Wildcards = wildcards ? 1 : 0;
    const std::u8string path = ec ? std::u8string(table.begin(), table.end()) : absolute.u8string();
    replace.SetMainFile(kw::FromUtf8(std::string(path.begin(), path.end())));
    // A recorded table is named relative to the macro's folder when it lies inside it.
    if (!options.record.empty()) {
      const std::filesystem::path macro = std::filesystem::absolute(
          std::filesystem::path(std::u8string(options.record.begin(), options.record.end())), ec);
      const std::u8string folder = macro.parent_path().u8string();
      if (!ec) replace.SetBaseFolder(kw::FromUtf8(std::string(folder.begin(), folder.end())));
    }
    if (int rc = session.Run(replace)) return rc;
  } else {
    kw::KwReplEvent replace;
    replace.m_Text = kw::FromUtf8(words[1]);
    replace.m_ReplText = kw::FromUtf8(words[2]);
    replace.m_Command = 1;  // every match of the text
    replace.m_Find.m_Options[0] = matchCase ? 1 : 0;
    replace.m_Find.m_Options[1] = wildcards ? 1 : 0;
    if (int rc = session.Run(replace)) return rc;
  }
  const int64_t replaced = session.View().GetLastExecute().changed;
  if (replaced == 0) return session.Error("nothing to replace; " + session.FileName() + " is left as it was");
  session.Report("replace: " + std::to_string(replaced) + " replaced");
  return session.Finish();
}

}  // namespace

KW_COMMAND("replace",
           "kw replace FILE FIND WITH | FILE --table TABLE [--case] [--wildcards] [-o OUT|-o -] [--record MACRO] "
           "[--encoding ENC]",
           "replaces every FIND by WITH, or every find text of TABLE by its replacement; FILE is saved keeping "
           "FILE.BAK unless -o",
           &RunReplace);

}  // namespace kwtool
