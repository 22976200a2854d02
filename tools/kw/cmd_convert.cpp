// kw convert FILE --to ENC: re-encodes a text file through KwFile, keeping its line ends. An existing
// output file is overwritten or appended to only when the user says so on the terminal, or with --force.
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "Command.h"
#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/Format.h"
#include "base/KwFile.h"
#include "platform/Platform.h"

namespace kwtool {

namespace {

constexpr int64_t kBlockUnits = 1 << 16;

// "ansi", "utf-8", "utf-16le", "utf-16be", "dos" or the numbers 0..4, case-blind; -1 when unknown.
std::string LastErrorText() {
  kw::Platform& platform = kw::GetPlatform();
  return kw::ToUtf8(platform.GetErrorText(platform.GetLastError()));
}

std::string NotFound(const std::u16string& name) {
  return kw::ToUtf8(kw::Format(kw::LoadString(1102).c_str(), name));
}

// Writes the text to standard output in the encoding, the way KwFile writes it to a file.
bool WriteToStdout(const std::u16string& text, int encoding, bool mark, bool& usedDefault) {
  static const char* const kMarks[] = {"", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", ""};
  const std::string_view bom = mark ? kMarks[encoding] : "";
  if (!bom.empty() && std::fwrite(bom.data(), 1, bom.size(), stdout) != bom.size()) return false;
  std::vector<char> bytes(3 * static_cast<size_t>(kBlockUnits) + 3);
  int used = 0;
  const unsigned codePage = static_cast<unsigned>(kw::GetCodePageID(encoding));
  const bool utf8 = encoding == kw::kEncodingUtf8;
  for (size_t at = 0; at < text.size();) {
    int64_t read = 0, written = 0;
    const int64_t n = std::min<int64_t>(kBlockUnits, static_cast<int64_t>(text.size() - at));
    const bool final = at + static_cast<size_t>(n) == text.size();
    if (kw::EncodeUnits(codePage, text.data() + at, n, bytes.data(), static_cast<int64_t>(bytes.size()), 0,
                        utf8 ? nullptr : "#", utf8 ? nullptr : &used, final, &read, &written) != kw::kErrorSuccess)
      return false;
    if (std::fwrite(bytes.data(), 1, static_cast<size_t>(written), stdout) != static_cast<size_t>(written))
      return false;
    at += static_cast<size_t>(read);
  }
  usedDefault = used != 0;
  return std::fflush(stdout) == 0;
}

// `mode` is KwFile::kWrite or KwFile::kAppend (no byte-order mark in the middle of a file).
bool WriteFile(const std::u16string& name, const std::u16string& text, int encoding, bool mark, bool& usedDefault,
               int mode = kw::KwFile::kWrite) {
  kw::KwFile out;
  if (!out.Open(name, mode, 13, 26, encoding) || !out.SetEncoding(encoding, mark)) return false;
  if (!out.Write(text.data(), static_cast<int64_t>(text.size())) || !out.SetEOF()) {
    out.Close();
    return false;
  }
  usedDefault = out.UsedDefaultChar();
  return out.Close();
}

int RunConvert(const std::vector<std::string>& args) {
  Args a(args);
  std::string to, from, output;
  const bool hasTo = a.Option("to", to);
  const bool hasFrom = a.Option("from", from);
  const bool hasOutput = a.Option("output", output, "-o");
  const bool noBom = a.Flag("no-bom");
  const bool inPlace = a.Flag("in-place");
  const bool force = a.Flag("force");
  const std::vector<std::string> files = a.Positional();
  if (!a.error.empty()) return Fail("convert: " + a.error, 2);
  if (files.size() != 1) return Fail("convert: give exactly one input file (kw convert FILE --to ENC)", 2);
  if (!hasTo) return Fail("convert: --to ENC is required (ansi, utf-8, utf-16le, utf-16be, dos)", 2);
  const int target = ParseEncoding(to);
  if (target < 0) return Fail("convert: unknown encoding '" + to + "' (ansi, utf-8, utf-16le, utf-16be, dos)", 2);
  const int source = hasFrom ? ParseEncoding(from) : -1;
  if (hasFrom && source < 0)
    return Fail("convert: unknown encoding '" + from + "' (ansi, utf-8, utf-16le, utf-16be, dos)", 2);
  if (inPlace && hasOutput) return Fail("convert: --in-place and -o exclude each other", 2);

  const std::u16string input = kw::FromUtf8(files[0]);
  if (!kw::IsExisting(input) || kw::IsDirectory(input)) return Fail(NotFound(input));

  // Refuse to overwrite anything before reading, so that nothing is half done.
  std::u16string outName;
  bool append = false;  // the user chose to append to an existing output file
  if (hasOutput) {
    outName = kw::FromUtf8(output);
    std::error_code ec;
    if (std::filesystem::equivalent(files[0], output, ec))
      return Fail("convert: " + output + " is the input file; use --in-place to convert it in place");
    if (kw::IsExisting(outName) && !force) {
      // Asked on a terminal, Cancel the default; without a terminal the box returns 2 and the file is kept.
      const int64_t answer = kw::QueryBox(u"kw", 0, 1090, 21, 1104, outName);
      if (answer == -2) {
        append = true;
      } else if (answer != 1) {
        return Fail("convert: the output file " + output + " already exists (use --force to overwrite it)");
      }
    }
  }
  std::u16string backup;
  if (inPlace) {
    backup = kw::ReplaceExtension(input, u"BAK");
    if (kw::CompareFileNames(backup, input) == 0)
      return Fail("convert: " + files[0] + " has the backup extension itself; convert it to another name with -o");
  }

  kw::KwFile in;
  if (!in.Open(input, kw::KwFile::kRead, 13, 26, source))
    return Fail("convert: cannot read " + files[0] + ": " + LastErrorText());
  std::u16string text;
  std::vector<char16_t> block(kBlockUnits);
  for (int64_t n; (n = in.ReadBlock(block.data(), kBlockUnits)) > 0;) text.append(block.data(), static_cast<size_t>(n));
  in.Close();

  const bool mark = !noBom;
  bool usedDefault = false;
  if (!hasOutput && !inPlace) {
    if (!WriteToStdout(text, target, mark, usedDefault)) return Fail("convert: cannot write to standard output");
  } else if (hasOutput) {
    if (!WriteFile(outName, text, target, mark, usedDefault, append ? kw::KwFile::kAppend : kw::KwFile::kWrite))
      return Fail("convert: cannot write " + output + ": " + LastErrorText());
  } else {
    // The new text goes to a temporary file beside the input, which replaces it only when complete; the
    // old file stays as the backup.
    std::random_device random;
    const std::u16string temp = input + kw::FromUtf8(".kw" + std::to_string(random() % 1000000) + ".tmp");
    if (!WriteFile(temp, text, target, mark, usedDefault)) {
      const std::string why = LastErrorText();
      kw::DeleteTheFile(temp);
      return Fail("convert: cannot write the new text beside " + files[0] + ": " + why);
    }
    std::error_code ec;
    std::filesystem::permissions(kw::ToUtf8(temp), std::filesystem::status(files[0], ec).permissions(), ec);
    if (!kw::CopyTheFile(input, backup)) {
      const std::string why = LastErrorText();
      kw::DeleteTheFile(temp);
      return Fail("convert: cannot keep the backup " + kw::ToUtf8(backup) + ": " + why);
    }
    if (!kw::RenameTheFile(temp, input, true)) {
      const std::string why = LastErrorText();
      kw::DeleteTheFile(temp);
      return Fail("convert: cannot replace " + files[0] + ": " + why);
    }
  }
  if (usedDefault)
    std::fprintf(stderr, "kw: convert: warning: characters without a place in %s were written as '#'\n",
                 to.c_str());
  return 0;
}

}  // namespace

KW_COMMAND("convert", "kw convert FILE --to ENC [--from ENC] [-o OUT|--in-place]",
            "re-encode a text file to stdout, to OUT (--force: overwrite) or in place keeping FILE.BAK; "
            "--no-bom: no byte-order mark",
            &RunConvert);

}  // namespace kwtool
