#include "platform/PeerChannel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/CodePages.h"

namespace kw {
namespace {

bool IsFolder(const char* path) {
  struct stat st;
  return path && *path && ::stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

bool MakeAddress(const std::string& path, sockaddr_un& addr) {
  if (path.empty() || path.size() >= sizeof(addr.sun_path)) return false;
  std::memset(&addr, 0, sizeof(addr));
  addr.sun_family = AF_UNIX;
  std::memcpy(addr.sun_path, path.c_str(), path.size() + 1);
  return true;
}

// A connected stream socket to `path`, or -1.
int Connect(const std::string& path) {
  sockaddr_un addr;
  if (!MakeAddress(path, addr)) return -1;
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (::connect(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof(addr)) != 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

using Clock = std::chrono::steady_clock;

// Milliseconds left until `deadline`; -1 (no limit) when there is none.
int Remaining(bool limited, Clock::time_point deadline) {
  if (!limited) return -1;
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left < 0 ? 0 : static_cast<int>(left);
}

// Reads exactly `size` bytes unless the peer closes, an error happens or the time runs out.
bool ReadAll(int fd, void* buffer, size_t size, bool limited, Clock::time_point deadline) {
  char* p = static_cast<char*>(buffer);
  while (size > 0) {
    pollfd pfd{fd, POLLIN, 0};
    const int ready = ::poll(&pfd, 1, Remaining(limited, deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    const ssize_t n = ::read(fd, p, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    p += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

bool WriteAll(int fd, const void* buffer, size_t size) {
  const char* p = static_cast<const char*>(buffer);
  while (size > 0) {
    const ssize_t n = ::send(fd, p, size, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    p += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

// The largest block a peer accepts: more is taken for garbage, not data.
constexpr uint32_t kMaxBlockBytes = 64u << 20;

}  // namespace

std::string PeerSocketPath(const std::u16string& name) {
  std::string file = ToUtf8(name);
  for (char& c : file)
    if (c == '/') c = '_';
  std::string path;
  if (const char* dir = std::getenv("KW_PEER_DIR"); IsFolder(dir)) {
    path = std::string(dir) + "/" + file;
  } else if (const char* run = std::getenv("XDG_RUNTIME_DIR"); IsFolder(run)) {
    path = std::string(run) + "/kwbase-peer-" + file;
  } else {
    path = "/tmp/kwbase-peer-" + std::to_string(::getuid()) + "-" + file;
  }
  sockaddr_un addr;
  return MakeAddress(path, addr) ? path : std::string();
}

bool IsPeerListening(const std::u16string& name) {
  const int fd = Connect(PeerSocketPath(name));
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

intptr_t SendToPeerSocket(const std::u16string& name, uint32_t tag, const std::u16string& data, int timeoutMs) {
  const int fd = Connect(PeerSocketPath(name));
  if (fd < 0) return 0;
  std::vector<char16_t> units(data.begin(), data.end());
  units.push_back(0);
  const uint32_t header[2] = {tag, static_cast<uint32_t>(units.size() * sizeof(char16_t))};
  int64_t answer = 0;
  const bool ok = WriteAll(fd, header, sizeof(header)) && WriteAll(fd, units.data(), header[1]) &&
                  ReadAll(fd, &answer, sizeof(answer), timeoutMs >= 0,
                          Clock::now() + std::chrono::milliseconds(timeoutMs));
  ::close(fd);
  return ok ? static_cast<intptr_t>(answer) : 0;
}

PeerListener::~PeerListener() { Close(); }

bool PeerListener::Listen(const std::u16string& name) {
  Close();
  const std::string path = PeerSocketPath(name);
  sockaddr_un addr;
  if (!MakeAddress(path, addr)) return false;
  if (IsPeerListening(name)) return false;  // a live peer has the name
  ::unlink(path.c_str());                   // a dead one's socket
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return false;
  if (::bind(fd, reinterpret_cast<const sockaddr*>(&addr), sizeof(addr)) != 0 || ::listen(fd, 8) != 0) {
    ::close(fd);
    return false;
  }
  fd_ = fd;
  path_ = path;
  return true;
}

void PeerListener::Close() {
  if (fd_ < 0) return;
  ::close(fd_);
  ::unlink(path_.c_str());
  fd_ = -1;
  path_.clear();
}

bool PeerListener::ServeOne(const Handler& handler, int timeoutMs) {
  if (fd_ < 0) return false;
  const bool limited = timeoutMs >= 0;
  const auto deadline = Clock::now() + std::chrono::milliseconds(limited ? timeoutMs : 0);
  for (;;) {
    pollfd pfd{fd_, POLLIN, 0};
    const int ready = ::poll(&pfd, 1, Remaining(limited, deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    const int conn = ::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
    if (conn < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      return false;
    }
    // A sender writes its block at once; a second is plenty even under load.
    const auto blockDeadline = Clock::now() + std::chrono::seconds(2);
    uint32_t header[2];
    std::vector<char16_t> units;
    bool ok = ReadAll(conn, header, sizeof(header), true, blockDeadline) && header[1] <= kMaxBlockBytes &&
              header[1] % 2 == 0;
    if (ok) {
      units.resize(header[1] / 2);
      ok = ReadAll(conn, units.data(), header[1], true, blockDeadline);
    }
    if (!ok) {  // a probe, or garbage: no answer
      ::close(conn);
      continue;
    }
    std::u16string data(units.begin(), units.end());
    if (!data.empty() && data.back() == u'\0') data.pop_back();
    const int64_t answer = handler(header[0], data);
    WriteAll(conn, &answer, sizeof(answer));
    ::close(conn);
    return true;
  }
}

}  // namespace kw
