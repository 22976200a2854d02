#include "support/TestSupport.h"

#include <fstream>
#include <random>
#include <sstream>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace kwtest {
namespace {

std::vector<Assertion>& Log() {
  static std::vector<Assertion> log;
  return log;
}

void Record(const char* source, int line, const char* expression) { Log().push_back({source, line, expression}); }

// The tests, and the kw runs they start, keep their user settings and desktop files in a folder of
// their own: a test must never change the settings of the person who runs it.
struct IsolatedUserFolders {
  std::filesystem::path root = std::filesystem::temp_directory_path() / ("kwtest-home-" + std::to_string(::getpid()));
  IsolatedUserFolders() {
    std::filesystem::create_directories(root);
    ::setenv("XDG_CONFIG_HOME", (root / "config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
  }
  ~IsolatedUserFolders() {
    std::error_code ec;
    std::filesystem::remove_all(root, ec);
  }
} isolatedUserFolders;

}  // namespace

AssertionRecorder::AssertionRecorder() : previous_(kw::SetAssertionHandler(&Record)) { Log().clear(); }
AssertionRecorder::~AssertionRecorder() { kw::SetAssertionHandler(previous_); }
const std::vector<Assertion>& AssertionRecorder::fired() const { return Log(); }
void AssertionRecorder::Clear() { Log().clear(); }

bool AssertionRecorder::Fired(const std::string& source, int line) const {
  for (const auto& a : Log())
    if (a.source == source && (line == 0 || a.line == line)) return true;
  return false;
}

PlatformTest::PlatformTest() {
  std::random_device rd;
  dir_ = std::filesystem::temp_directory_path() /
         ("kwtest-" + std::to_string(::getpid()) + "-" + std::to_string(rd()));
  std::filesystem::create_directories(dir_);
}

PlatformTest::~PlatformTest() {
  std::error_code ec;
  std::filesystem::permissions(dir_, std::filesystem::perms::owner_all, std::filesystem::perm_options::add, ec);
  std::filesystem::remove_all(dir_, ec);
}

void PlatformTest::WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string PlatformTest::ReadBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string PlatformTest::Quote(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string PlatformTest::Sample(const std::string& name) { return std::string(KW_SOURCE_DIR) + "/samples/" + name; }

PlatformTest::KwRun PlatformTest::RunKw(const std::string& args, bool mergeErr) const {
  const std::string out = (dir_ / ".kw-stdout").string(), err = (dir_ / ".kw-stderr").string();
  const std::string command = "cd " + Quote(dir_.string()) + " && XDG_CONFIG_HOME=" + Quote((dir_ / "config").string()) +
                              " " + Quote(KW_BINARY) + " " + args + " </dev/null >" + Quote(out) +
                              (mergeErr ? " 2>&1" : " 2>" + Quote(err));
  const int status = std::system(command.c_str());
  KwRun run;
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.out = ReadBytes(out);
  if (!mergeErr) run.err = ReadBytes(err);
  std::filesystem::remove(out);
  std::filesystem::remove(err);
  return run;
}

}  // namespace kwtest
