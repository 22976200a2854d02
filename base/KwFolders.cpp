#include "base/KwFolders.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/CodePages.h"

namespace kw {

namespace fs = std::filesystem;

namespace {

std::u16string FolderOf(const fs::path& path) { return KwFolders::AsFolder(FromUtf8(path.string())); }

// $VARIABLE/kwbase/, else ~/fallback/kwbase/, else kwbase/ below the working folder.
std::u16string XdgFolder(const char* variable, const char* fallback) {
  if (const char* base = std::getenv(variable); base && *base) return FolderOf(fs::path(base) / "kwbase");
  if (const char* home = std::getenv("HOME"); home && *home) return FolderOf(fs::path(home) / fallback / "kwbase");
  std::error_code ec;
  return FolderOf(fs::current_path(ec) / "kwbase");
}

}  // namespace

KwFolders::KwFolders() { SetDefaults(); }

std::u16string KwFolders::AsFolder(const std::u16string& folder) {
  if (folder.empty() || folder.back() == u'/') return folder;
  return folder + u'/';
}

void KwFolders::SetDefaults() {
  std::error_code ec;
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  executable_ = ec ? FolderOf(fs::current_path(ec)) : FolderOf(exe.parent_path());
  program_ = executable_;
  data_ = XdgFolder("XDG_DATA_HOME", ".local/share");
  regional_ = data_;
  project_ = FolderOf(fs::current_path(ec));
  user_ = XdgFolder("XDG_CONFIG_HOME", ".config");
}

void KwFolders::SetAll(const std::u16string& folder) {
  program_ = executable_ = data_ = regional_ = project_ = user_ = AsFolder(folder);
}

KwFolders& GetFolders() {
  static KwFolders folders;
  return folders;
}

}  // namespace kw
