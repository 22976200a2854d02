// Running the `kw` program from the tests of its editing commands: each run gets the test's temporary
// folder as the folder of its user settings, so that no user setting leaks in.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/KwFile.h"
#include "support/TestSupport.h"

namespace kwtest {

struct KwResult {
  int exit;
  std::string out;
  std::string err;
};

class KwToolTest : public PlatformTest {
 protected:
  static std::string Q(const std::string& s) { return Quote(s); }
  static std::string Q(const std::filesystem::path& p) { return Quote(p.string()); }

  // Runs "kw -L=<temp folder> ARGS": the user settings file KwUser.INI is the temporary folder's.
  KwResult Kw(const std::string& args) const {
    const KwRun run = RunKw("-L=" + Q(dir_.string() + "/") + " " + args);
    return {run.code, run.out, run.err};
  }

  // A copy of a bundled sample in the temporary folder.
  std::filesystem::path CopySample(const std::string& name, const std::string& as) {
    const std::filesystem::path to = Temp(as);
    std::filesystem::copy_file(Sample(name), to, std::filesystem::copy_options::overwrite_existing);
    return to;
  }

  // The lines of bytes split at "\n" (a "\r" before it stays); the piece after the last "\n" only when
  // it is not empty.
  static std::vector<std::string> SplitLines(const std::string& bytes) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t nl; (nl = bytes.find('\n', start)) != std::string::npos; start = nl + 1)
      lines.push_back(bytes.substr(start, nl - start));
    if (start < bytes.size()) lines.push_back(bytes.substr(start));
    return lines;
  }

  // The lines of a file as the library reads them (encoding from the byte-order mark).
  static std::vector<std::u16string> ReadLines(const std::filesystem::path& path) {
    kw::KwFile file;
    std::vector<std::u16string> lines;
    EXPECT_TRUE(file.Open(kw::FromUtf8(path.string()), kw::KwFile::kRead, 13, 26, -1)) << path;
    for (std::u16string line; file.ReadLine(line);) lines.push_back(line);
    return lines;
  }
};

}  // namespace kwtest
