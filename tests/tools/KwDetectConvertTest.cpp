// Runs the kw program on the bundled samples: detect and convert, round trips byte for byte.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;

class KwTool : public kwtest::PlatformTest {
 protected:
  KwRun Kw(const std::string& args) { return RunKw(args); }
};

const char* const kSamples[] = {"german-ansi.txt", "german-utf8.txt", "german-utf8-nobom.txt",
                                "german-utf16le.txt", "german-utf16be.txt", "german-dos.txt"};

}  // namespace

TEST_F(KwTool, DetectNamesEncodingAndLineEnd) {
  std::string args;
  for (const char* s : kSamples) args += Quote(Sample(s)) + " ";
  WriteBytes(Temp("lf.txt"), "a\nb\n");
  args += Quote(Temp("lf.txt").string());
  const KwRun r = Kw("detect " + args);
  EXPECT_EQ(r.code, 0) << r.err;
  const std::string expected = Sample("german-ansi.txt") + ": ANSI CR LF\n" +
                               Sample("german-utf8.txt") + ": UTF-8 CR LF\n" +
                               Sample("german-utf8-nobom.txt") + ": ANSI CR LF\n" +
                               Sample("german-utf16le.txt") + ": UTF-16 LE CR LF\n" +
                               Sample("german-utf16be.txt") + ": UTF-16 BE CR LF\n" +
                               Sample("german-dos.txt") + ": ANSI CR LF\n" +  // never guessed as DOS
                               Temp("lf.txt").string() + ": ANSI LF\n";
  EXPECT_EQ(r.out, expected);
}

TEST_F(KwTool, DetectReportsMissingFiles) {
  const KwRun r = Kw("detect " + Quote(Sample("german-ansi.txt")) + " " + Quote(Temp("none.txt").string()));
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.out, Sample("german-ansi.txt") + ": ANSI CR LF\n");
  EXPECT_NE(r.err.find("none.txt not found"), std::string::npos) << r.err;
  EXPECT_EQ(Kw("detect").code, 2);
  const KwRun folder = Kw("detect " + Quote(dir_.string()) + " " + Quote(Sample("german-utf8.txt")));
  EXPECT_EQ(folder.code, 0) << "a folder is skipped";
  EXPECT_EQ(folder.out, Sample("german-utf8.txt") + ": UTF-8 CR LF\n");
  EXPECT_NE(folder.err.find("folder"), std::string::npos);
}

TEST_F(KwTool, ConvertsEverySampleToEveryOtherByteForByte) {
  struct Form {
    const char* file;
    const char* encoding;
    const char* extra;
  };
  const Form forms[] = {
      {"german-ansi.txt", "ansi", ""},          {"german-utf8.txt", "utf-8", ""},
      {"german-utf8-nobom.txt", "UTF-8", " --no-bom"}, {"german-utf16le.txt", "utf-16le", ""},
      {"german-utf16be.txt", "3", ""},          {"german-dos.txt", "dos", ""},
  };
  for (const Form& from : forms) {
    for (const Form& to : forms) {
      const std::string out = Temp(std::string("to-") + to.file).string();
      fs::remove(out);
      const KwRun r = Kw("convert " + Quote(Sample(from.file)) + " --from " + from.encoding + " --to " +
                          to.encoding + to.extra + " -o " + Quote(out));
      ASSERT_EQ(r.code, 0) << from.file << " -> " << to.file << ": " << r.err;
      EXPECT_EQ(ReadBytes(out), ReadBytes(Sample(to.file))) << from.file << " -> " << to.file;
    }
  }
  // Without --from the mark decides; standard output gets the bytes when there is no -o.
  const KwRun r = Kw("convert " + Quote(Sample("german-utf16be.txt")) + " --to utf-8");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, ReadBytes(Sample("german-utf8.txt")));
}

TEST_F(KwTool, ConvertNeverOverwritesUnasked) {
  const std::string out = Temp("out.txt").string();
  WriteBytes(out, "keep me");
  KwRun r = Kw("convert " + Quote(Sample("german-ansi.txt")) + " --to utf-8 -o " + Quote(out));
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("already exists"), std::string::npos) << r.err;
  EXPECT_EQ(ReadBytes(out), "keep me");
  r = Kw("convert " + Quote(Sample("german-ansi.txt")) + " --to utf-8 --force -o " + Quote(out));
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(ReadBytes(out), ReadBytes(Sample("german-utf8.txt")));

  const std::string input = Temp("in.txt").string();
  WriteBytes(input, "x");
  r = Kw("convert " + Quote(input) + " --to utf-8 --force -o " + Quote(input));
  EXPECT_EQ(r.code, 1) << "its own input, even with --force";
  EXPECT_EQ(ReadBytes(input), "x");

  EXPECT_EQ(Kw("convert " + Quote(Temp("none.txt").string()) + " --to ansi").code, 1);
  EXPECT_EQ(Kw("convert " + Quote(input) + " --to ebcdic").code, 2);
  EXPECT_EQ(Kw("convert " + Quote(input)).code, 2);
  EXPECT_EQ(Kw("convert " + Quote(input) + " --to ansi --in-place -o " + Quote(out)).code, 2);
}

TEST_F(KwTool, InPlaceKeepsTheOldFileAsBackup) {
  const std::string file = Temp("text.txt").string();
  fs::copy_file(Sample("german-dos.txt"), file);
  KwRun r = Kw("convert " + Quote(file) + " --from dos --to utf-16le --in-place");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(ReadBytes(file), ReadBytes(Sample("german-utf16le.txt")));
  EXPECT_EQ(ReadBytes(Temp("text.BAK")), ReadBytes(Sample("german-dos.txt")));
  size_t entries = 0;
  for ([[maybe_unused]] const auto& e : fs::directory_iterator(dir_)) ++entries;
  EXPECT_EQ(entries, 2u) << "text.txt and text.BAK; no temporary file left";

  // And back again, the backup now holding the UTF-16 text.
  r = Kw("convert " + Quote(file) + " --to dos --in-place");
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(ReadBytes(file), ReadBytes(Sample("german-dos.txt")));
  EXPECT_EQ(ReadBytes(Temp("text.BAK")), ReadBytes(Sample("german-utf16le.txt")));

  const std::string bak = Temp("x.bak").string();
  WriteBytes(bak, "b");
  EXPECT_EQ(Kw("convert " + Quote(bak) + " --to utf-8 --in-place").code, 1) << "it would be its own backup";
  EXPECT_EQ(ReadBytes(bak), "b");
}

TEST_F(KwTool, ConvertWarnsAboutDefaultCharacters) {
  const std::string in = Temp("euro.txt").string(), out = Temp("euro-dos.txt").string();
  WriteBytes(in, "\xEF\xBB\xBF" "5 \xE2\x82\xAC\r\n");
  const KwRun r = Kw("convert " + Quote(in) + " --to dos -o " + Quote(out));
  EXPECT_EQ(r.code, 0);
  EXPECT_NE(r.err.find("'#'"), std::string::npos) << r.err;
  EXPECT_EQ(ReadBytes(out), "5 #\r\n");
}
