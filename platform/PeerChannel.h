// A peer is a running program that other programs address by an instance name (the window title a
// window system would show, such as "QXADMIN3") and send one block of UTF-16 data with a numeric tag;
// the peer answers each block with one number. On this system a peer listens on a local (AF_UNIX)
// stream socket whose name is derived from the instance name:
//
//   $KW_PEER_DIR/<name>          when KW_PEER_DIR names a folder (tests use their own);
//   $XDG_RUNTIME_DIR/kwbase-peer-<name>   when XDG_RUNTIME_DIR names a folder (per user already);
//   /tmp/kwbase-peer-<uid>-<name>         otherwise.
//
// <name> is the instance name in UTF-8 with "/" replaced by "_". The socket path is limited to 107
// bytes; a longer one cannot be used and the peer is then never found.
//
// One exchange on a connection: the sender writes the tag (uint32), the data's length in bytes
// (uint32) and the data (UTF-16 in the machine's byte order, terminating zero included); the peer
// writes its answer (int64) and closes. A connection closed before a whole header arrives is only
// someone looking whether the peer is there, and gets no answer.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace kw {

// The socket path of the peer with this instance name; empty when the name does not fit.
std::string PeerSocketPath(const std::u16string& name);

// Whether a peer listens under this name now.
bool IsPeerListening(const std::u16string& name);

// Sends `data` (its terminating zero is added) with `tag` and returns the peer's answer; 0 when the
// peer is not there or the exchange broke off. Waits at most `timeoutMs` for the answer.
intptr_t SendToPeerSocket(const std::u16string& name, uint32_t tag, const std::u16string& data, int timeoutMs = 10000);

// The listening side, for a program that acts as a peer. Not copyable: it owns its socket and removes
// the socket's name when destroyed.
class PeerListener {
 public:
  // Answer for one block: tag and data (without the terminating zero).
  using Handler = std::function<intptr_t(uint32_t tag, const std::u16string& data)>;

  PeerListener() = default;
  ~PeerListener();
  PeerListener(const PeerListener&) = delete;
  PeerListener& operator=(const PeerListener&) = delete;

  // Starts listening under `name`; a stale socket of that name left by a dead peer is replaced.
  // False when the name is in use by a live peer or the socket cannot be made.
  bool Listen(const std::u16string& name);
  void Close();
  bool IsListening() const { return fd_ >= 0; }

  // Waits up to `timeoutMs` (negative: without limit) for one block, answers it with `handler` and
  // returns true; false when the time ran out or the socket failed. Probing connections are skipped.
  bool ServeOne(const Handler& handler, int timeoutMs);

 private:
  int fd_ = -1;
  std::string path_;
};

}  // namespace kw
