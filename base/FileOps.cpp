#include "base/FileOps.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/CodePages.h"
#include "base/KwTime.h"
#include "platform/Platform.h"

namespace kw {

namespace fs = std::filesystem;

namespace {

fs::path PathOf(const std::u16string& name) { return fs::path(ToUtf8(name)); }

bool Fail(const std::error_code& ec) {
  GetPlatform().SetLastError(static_cast<uint32_t>(ec ? ec.value() : EIO));
  return false;
}

bool Fail(int error) {
  GetPlatform().SetLastError(static_cast<uint32_t>(error));
  return false;
}

std::u16string AsFolder(const fs::path& path) {
  std::u16string folder = FromUtf8(path.string());
  if (!folder.empty() && folder.back() != u'/') folder += u'/';
  return folder;
}

char16_t Fold(char16_t c) {
  if (c >= u'A' && c <= u'Z') return static_cast<char16_t>(c + 32);
  if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
  return c;
}

const fs::perms kWriteBits = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

}  // namespace

bool IsExisting(const std::u16string& name) {
  std::error_code ec;
  return !name.empty() && fs::exists(PathOf(name), ec);
}

bool IsDirectory(const std::u16string& name) {
  std::error_code ec;
  return !name.empty() && fs::is_directory(PathOf(name), ec);
}

bool DeleteTheFile(const std::u16string& name) {
  std::error_code ec;
  const fs::path path = PathOf(name);
  if (fs::is_directory(path, ec)) return Fail(EISDIR);
  if (!fs::remove(path, ec)) return Fail(ec ? ec : std::make_error_code(std::errc::no_such_file_or_directory));
  return true;
}

bool RenameTheFile(const std::u16string& from, const std::u16string& to, bool replace) {
  std::error_code ec;
  const fs::path target = PathOf(to);
  if (!fs::exists(PathOf(from), ec)) return Fail(ENOENT);
  if (!replace && fs::exists(target, ec)) return Fail(EEXIST);
  fs::rename(PathOf(from), target, ec);
  return ec ? Fail(ec) : true;
}

bool CopyTheFile(const std::u16string& from, const std::u16string& to, bool failIfExists) {
  std::error_code ec;
  const auto options = failIfExists ? fs::copy_options::none : fs::copy_options::overwrite_existing;
  const fs::path target = PathOf(to);
  if (!fs::copy_file(PathOf(from), target, options, ec)) return Fail(ec ? ec : std::make_error_code(std::errc::file_exists));
  const auto time = fs::last_write_time(PathOf(from), ec);
  if (!ec) fs::last_write_time(target, time, ec);
  return true;
}

bool IsReadOnly(const std::u16string& name) {
  std::error_code ec;
  const auto status = fs::status(PathOf(name), ec);
  if (ec || !fs::exists(status)) return false;
  return (status.permissions() & kWriteBits) == fs::perms::none;
}

bool SetReadOnly(const std::u16string& name, bool readOnly) {
  std::error_code ec;
  if (readOnly) fs::permissions(PathOf(name), kWriteBits, fs::perm_options::remove, ec);
  else fs::permissions(PathOf(name), fs::perms::owner_write, fs::perm_options::add, ec);
  return ec ? Fail(ec) : true;
}

int64_t SizeOf(const std::u16string& name) {
  std::error_code ec;
  const auto size = fs::file_size(PathOf(name), ec);
  if (ec) {
    Fail(ec);
    return -1;
  }
  return static_cast<int64_t>(size);
}

double GetLastWriteTime(const std::u16string& name) {
  std::error_code ec;
  const auto time = fs::last_write_time(PathOf(name), ec);
  if (ec) {
    Fail(ec);
    return 0;
  }
  return KwTime::FromFileTime(time).GetTime();
}

bool IsNetworkDrive(const std::u16string&) { return false; }

std::u16string FolderByEnvironment(const std::u16string& placeholder) {
  if (placeholder.size() < 3 || placeholder.front() != u'$' || placeholder.back() != u'$') return {};
  const std::string variable = ToUtf8(placeholder.substr(1, placeholder.size() - 2));
  if (const char* value = std::getenv(variable.c_str()); value && *value) return AsFolder(fs::path(value));
  if (variable == "TEMP") {
    for (const char* other : {"TMP", "TMPDIR"})
      if (const char* value = std::getenv(other); value && *value) return AsFolder(fs::path(value));
    std::error_code ec;
    const fs::path temp = fs::temp_directory_path(ec);
    if (!ec) return AsFolder(temp);
  }
  return {};
}

std::u16string ReplaceExtension(const std::u16string& name, const std::u16string& extension) {
  const size_t slash = name.find_last_of(u"/\\");
  const size_t partStart = slash == std::u16string::npos ? 0 : slash + 1;
  const size_t dot = name.rfind(u'.');
  // A leading dot (".profile") names the file, it does not start an extension.
  if (dot == std::u16string::npos || dot <= partStart) return name + u"." + extension;
  return name.substr(0, dot + 1) + extension;
}

int CompareFileNames(const std::u16string& a, const std::u16string& b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const char16_t x = Fold(a[i]), y = Fold(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

}  // namespace kw
