// A stand-in for the auxiliary program QXADMIN in tests: started with its instance id, it listens as
// "QXADMIN<id>", takes one block, writes "<tag>|<text>" in UTF-8 to "<KW_PEER_DIR>/received-<id>.txt",
// answers 1 (0 when the text starts with "fail") and ends. Exit code 0 when a block came, 3 when none
// came within 20 seconds, 2 on a bad start.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/CodePages.h"
#include "platform/PeerChannel.h"

int main(int argc, char** argv) {
  const char* dir = std::getenv("KW_PEER_DIR");
  if (argc != 2 || !dir) return 2;
  const std::string id = argv[1];
  kw::PeerListener listener;
  if (!listener.Listen(kw::FromUtf8("QXADMIN" + id))) return 2;
  const bool served = listener.ServeOne(
      [&](uint32_t tag, const std::u16string& text) -> intptr_t {
        const std::string line = std::to_string(tag) + "|" + kw::ToUtf8(text);
        if (std::FILE* f = std::fopen((std::string(dir) + "/received-" + id + ".txt").c_str(), "wb")) {
          std::fwrite(line.data(), 1, line.size(), f);
          std::fclose(f);
        }
        return text.rfind(u"fail", 0) == 0 ? 0 : 1;
      },
      20000);
  return served ? 0 : 3;
}
