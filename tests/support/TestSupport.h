// Helpers shared by the tests: a recording assertion handler, a scripted platform that is installed
// for one test, and temporary folders with files in them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/KwFolders.h"
#include "platform/ScriptedPlatform.h"

namespace kwtest {

struct Assertion {
  std::string source;
  int line;
  std::string expression;
};

// Records every assertion while it lives, instead of the default handler.
class AssertionRecorder {
 public:
  AssertionRecorder();
  ~AssertionRecorder();
  const std::vector<Assertion>& fired() const;
  size_t count() const { return fired().size(); }
  // Whether an assertion with this source (and line, when nonzero) fired.
  bool Fired(const std::string& source, int line = 0) const;
  void Clear();

 private:
  kw::AssertionHandler previous_;
};

// A fixture with a scripted platform installed and a fresh temporary folder.
class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest();
  ~PlatformTest() override;
  std::filesystem::path Temp(const std::string& name) const { return dir_ / name; }
  std::u16string TempName(const std::string& name) const { return kw::FromUtf8(Temp(name).string()); }
  static void WriteBytes(const std::filesystem::path& path, const std::string& bytes);
  static std::string ReadBytes(const std::filesystem::path& path);

  // A run of the kw program: exit code, standard output, standard error.
  struct KwRun {
    int code = -1;
    std::string out;
    std::string err;
  };
  // Runs `kw ARGS` through the shell (quote names with Quote) in the temporary folder, with the user's
  // settings there too and an empty standard input. `mergeErr` sends standard error into `out`, in order.
  KwRun RunKw(const std::string& args, bool mergeErr = false) const;
  static std::string Sample(const std::string& name);  // the path of samples/NAME
  static std::string Quote(const std::string& text);   // single-quoted for the shell
  // Whether the library wrote this line (a trace line or an assertion) to the debug output.
  bool Traced(const std::u16string& line) const {
    for (const auto& written : platform_.debugOutput)
      if (written == line + u"\n") return true;
    return false;
  }

  kw::ScriptedPlatform platform_;
  kw::ScopedPlatform scope_{platform_};
  AssertionRecorder asserts_;
  std::filesystem::path dir_;
};

// Points the user and project folders at test folders, and makes `current` the current folder (where
// trace files go), while it lives; then puts back the folders as they were.
class ScopedFolders {
 public:
  ScopedFolders(const std::filesystem::path& user, const std::filesystem::path& project,
                const std::filesystem::path& current)
      : saved_(kw::GetFolders()), cwd_(std::filesystem::current_path()) {
    kw::GetFolders().SetUserFolder(kw::FromUtf8(user.string()));
    kw::GetFolders().SetProjectFolder(kw::FromUtf8(project.string()));
    std::filesystem::current_path(current);
  }
  ~ScopedFolders() {
    std::filesystem::current_path(cwd_);
    kw::GetFolders() = saved_;
  }

 private:
  kw::KwFolders saved_;
  std::filesystem::path cwd_;
};

}  // namespace kwtest
