// The console platform's services done for real on this system: starting programs, the local-socket
// peers, help through the desktop's opener and the desktop's file associations.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include "app/AppFixture.h"
#include "base/CodePages.h"
#include "platform/ConsolePlatform.h"
#include "platform/PeerChannel.h"

namespace {

// Sets an environment variable (null: removes it) for the lifetime of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    if (value) ::setenv(name, value, 1);
    else ::unsetenv(name);
  }
  ~ScopedEnv() {
    if (old_) ::setenv(name_.c_str(), old_->c_str(), 1);
    else ::unsetenv(name_.c_str());
  }

 private:
  std::string name_;
  std::optional<std::string> old_;
};

// Waits until `file` exists (a started program writes it); false after ten seconds.
bool WaitForFile(const std::filesystem::path& file) {
  for (int i = 0; i < 500; ++i) {
    if (std::filesystem::exists(file) && std::filesystem::file_size(file) > 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return false;
}

class ConsoleServices : public kwtest::AppTest {
 protected:
  ConsoleServices() : console_(stdin, stderr, false), peerDir_("KW_PEER_DIR", dir_.c_str()) {}

  // A shell script in the temporary folder, executable.
  std::filesystem::path Script(const std::string& name, const std::string& body) {
    const auto path = dir_ / name;
    WriteBytes(path, "#!/bin/sh\n" + body + "\n");
    ::chmod(path.c_str(), 0755);
    return path;
  }

  kw::ConsolePlatform console_;  // no terminal: no main window, boxes return 2
  ScopedEnv peerDir_;
};

TEST_F(ConsoleServices, PeerSocketNamesFollowTheInstanceName) {
  EXPECT_EQ(kw::PeerSocketPath(u"QXADMIN3"), dir_.string() + "/QXADMIN3");
  EXPECT_EQ(kw::PeerSocketPath(u"a/b"), dir_.string() + "/a_b");
  EXPECT_EQ(kw::PeerSocketPath(std::u16string(200, u'x')), "");  // longer than a socket name may be
  {
    ScopedEnv noDir("KW_PEER_DIR", nullptr);
    ScopedEnv run("XDG_RUNTIME_DIR", dir_.c_str());
    EXPECT_EQ(kw::PeerSocketPath(u"QXADMIN1"), dir_.string() + "/kwbase-peer-QXADMIN1");
    ScopedEnv noRun("XDG_RUNTIME_DIR", (dir_ / "missing").c_str());
    EXPECT_EQ(kw::PeerSocketPath(u"QXADMIN1"), "/tmp/kwbase-peer-" + std::to_string(::getuid()) + "-QXADMIN1");
  }
}

TEST_F(ConsoleServices, PeerAnswersOneBlockAndIgnoresProbes) {
  kw::PeerListener listener;
  ASSERT_TRUE(listener.Listen(u"Peer7"));
  kw::PeerListener second;
  EXPECT_FALSE(second.Listen(u"Peer7"));  // the name is taken by a live peer
  EXPECT_TRUE(kw::IsPeerListening(u"Peer7"));  // a probe: connects and goes

  uint32_t gotTag = 0;
  std::u16string gotData;
  bool served = false;
  std::thread peer([&] {
    served = listener.ServeOne(
        [&](uint32_t tag, const std::u16string& data) -> intptr_t {
          gotTag = tag;
          gotData = data;
          return 42;
        },
        10000);
  });
  using namespace std::string_literals;
  const std::u16string text = u"\u00C4rger mit \U0001F600 und Null\0danach"s;
  EXPECT_EQ(kw::SendToPeerSocket(u"Peer7", 5, text), 42);
  peer.join();
  EXPECT_TRUE(served);
  EXPECT_EQ(gotTag, 5u);
  EXPECT_EQ(gotData, text);

  listener.Close();
  EXPECT_FALSE(kw::IsPeerListening(u"Peer7"));
  EXPECT_EQ(kw::SendToPeerSocket(u"Peer7", 0, u"x"), 0);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "Peer7"));
  EXPECT_FALSE(listener.ServeOne([](uint32_t, const std::u16string&) -> intptr_t { return 1; }, 10));
}

TEST_F(ConsoleServices, ShellOpenStartsProgramsAndOpensDocuments) {
  kw::ScopedPlatform scope(console_);
  kw::Platform& platform = kw::GetPlatform();
  EXPECT_EQ(platform.ShellOpen((dir_ / "missing").u16string(), u""), 2);

  const auto program = Script("prog.sh", "printf '%s|' \"$@\" >\"$0.out\"");
  EXPECT_GT(platform.ShellOpen(program.u16string(), u"1 \"two words\" three"), 32);
  ASSERT_TRUE(WaitForFile(dir_ / "prog.sh.out"));
  EXPECT_EQ(ReadBytes(dir_ / "prog.sh.out"), "1|two words|three|");

  // A document goes to the desktop's opener; a stand-in for it on the path records what it got.
  std::filesystem::create_directories(dir_ / "bin");
  WriteBytes(dir_ / "bin" / "xdg-open", "#!/bin/sh\nprintf '%s' \"$1\" >\"" + dir_.string() + "/opened\"\n");
  ::chmod((dir_ / "bin" / "xdg-open").c_str(), 0755);
  WriteBytes(dir_ / "notes.txt", "text");
  {
    ScopedEnv path("PATH", (dir_ / "bin").c_str());
    EXPECT_GT(platform.ShellOpen((dir_ / "notes.txt").u16string(), u"ignored"), 32);
    ASSERT_TRUE(WaitForFile(dir_ / "opened"));
    EXPECT_EQ(ReadBytes(dir_ / "opened"), (dir_ / "notes.txt").string());

    std::filesystem::remove(dir_ / "opened");
    WriteBytes(dir_ / "QUORIX.CHM", "help");
    EXPECT_FALSE(platform.ShowHelp((dir_ / "QUORIX.CHM").u16string(), kw::KwWinApp::PackHelpKeyword(12)));
    EXPECT_FALSE(platform.ShowHelp((dir_ / "NONE.CHM").u16string(), u""));
    EXPECT_TRUE(platform.ShowHelp((dir_ / "QUORIX.CHM").u16string(), u""));
    ASSERT_TRUE(WaitForFile(dir_ / "opened"));
    EXPECT_EQ(ReadBytes(dir_ / "opened"), (dir_ / "QUORIX.CHM").string());
  }
  {
    ScopedEnv path("PATH", (dir_ / "nothing-here").c_str());
    EXPECT_EQ(platform.ShellOpen((dir_ / "notes.txt").u16string(), u""), 31);  // no opener at all
  }
}

TEST_F(ConsoleServices, DocumentTypesAreDesktopEntriesAndMimePackages) {
  ScopedEnv data("XDG_DATA_HOME", (dir_ / "share").c_str());
  kw::Platform& platform = console_;
  const kw::DocumentType type{u"Kw.Text", u"Kw text & data", u".kwt", u"/opt/kw base/kw"};
  EXPECT_FALSE(platform.IsDocumentTypeRegistered(u"Kw.Text"));
  ASSERT_TRUE(platform.RegisterDocumentType(type));
  EXPECT_TRUE(platform.IsDocumentTypeRegistered(u"Kw.Text"));
  EXPECT_FALSE(platform.IsDocumentTypeRegistered(u"Kw.Other"));

  const std::string desktop = ReadBytes(dir_ / "share/applications/kwbase-Kw.Text.desktop");
  EXPECT_NE(desktop.find("Exec=\"/opt/kw base/kw\" %f\n"), std::string::npos) << desktop;
  EXPECT_NE(desktop.find("MimeType=application/x-kwbase-kw.text;\n"), std::string::npos) << desktop;
  const std::string mime = ReadBytes(dir_ / "share/mime/packages/kwbase-Kw.Text.xml");
  EXPECT_NE(mime.find("<mime-type type=\"application/x-kwbase-kw.text\">"), std::string::npos) << mime;
  EXPECT_NE(mime.find("<comment>Kw text &amp; data</comment>"), std::string::npos) << mime;
  EXPECT_NE(mime.find("<glob pattern=\"*.kwt\"/>"), std::string::npos) << mime;

  EXPECT_TRUE(platform.UnregisterDocumentType(u"Kw.Text"));
  EXPECT_FALSE(platform.IsDocumentTypeRegistered(u"Kw.Text"));
  EXPECT_FALSE(platform.UnregisterDocumentType(u"Kw.Text"));
  EXPECT_FALSE(std::filesystem::exists(dir_ / "share/applications/kwbase-Kw.Text.desktop"));
}

// The application starts the stand-in QXADMIN program from its executable folder and hands it a task
// over the local socket.
TEST_F(ConsoleServices, AuxiliaryProgramForReal) {
  std::filesystem::create_symlink(KW_QXADMIN_PEER, dir_ / "QXADMIN.EXE");
  kw::ScopedPlatform scope(console_);
  kwtest::TestApp app;
  const int id = app.GetQXAdminID();
  ASSERT_EQ(app.RunQXAdmin(id, 1), 1);
  EXPECT_EQ(app.GetQXAdminMask(), 1u << (id - 1));
  EXPECT_EQ(app.SendToQXAdmin(id, u"copy \u00E4 \u20AC"), 1);
  ASSERT_TRUE(WaitForFile(dir_ / ("received-" + std::to_string(id) + ".txt")));
  EXPECT_EQ(ReadBytes(dir_ / ("received-" + std::to_string(id) + ".txt")), "0|copy \xC3\xA4 \xE2\x82\xAC");
  EXPECT_EQ(app.GetQXAdminMask(), 1u << (id - 1));  // still running its task

  const int second = app.GetQXAdminID();
  ASSERT_EQ(app.RunQXAdmin(second, 0), 1);
  EXPECT_EQ(app.SendToQXAdmin(second, u"fail please"), 0);  // the peer answers 0
  EXPECT_EQ(app.GetQXAdminMask(), 1u << (id - 1));          // the failed one's slot is free again
}

}  // namespace
