// A fixture for tests of the application object: scripted platform, temporary folder as every folder
// of the folder service and as the current folder, and a test title; all restored afterwards.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/KwWinApp.h"
#include "app/StringTable.h"
#include "base/KwFolders.h"
#include "support/TestSupport.h"

namespace kwtest {

// An application object as a program derives it.
class TestApp : public kw::KwWinApp {
 public:
  std::u16string GetAppVersion() const override { return u"1.2"; }
};

class AppTest : public PlatformTest {
 protected:
  AppTest() : savedFolders_(kw::GetFolders()), savedCwd_(std::filesystem::current_path()) {
    kw::GetFolders().SetAll(dir_.u16string());
    std::filesystem::current_path(dir_);
    kw::SetString(kw::kIdsAppTitle, u"TESTAPP");
  }
  ~AppTest() override {
    kw::SetString(kw::kIdsAppTitle, u"");
    std::filesystem::current_path(savedCwd_);
    kw::GetFolders() = savedFolders_;
  }

  // The lines of a file written with CR LF line ends (a UTF-8 mark skipped).
  std::vector<std::string> Lines(const std::filesystem::path& file) const {
    std::string bytes = ReadBytes(file);
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) bytes.erase(0, 3);
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = bytes.find("\r\n", start)) != std::string::npos; start = end + 2)
      lines.push_back(bytes.substr(start, end - start));
    EXPECT_EQ(start, bytes.size()) << "the last line has no line end";
    return lines;
  }
  // The texts of the trace lines of a trace file, without their time of day.
  std::vector<std::string> TraceTexts(const std::filesystem::path& file) const {
    std::vector<std::string> texts;
    for (const auto& line : Lines(file)) texts.push_back(line.size() >= 10 ? line.substr(10) : "?" + line);
    return texts;
  }
  std::u16string Folder() const { return dir_.u16string() + u"/"; }

 private:
  kw::KwFolders savedFolders_;
  std::filesystem::path savedCwd_;
};

}  // namespace kwtest
