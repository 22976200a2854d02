#include "platform/Platform.h"

#include "platform/ConsolePlatform.h"

namespace kw {
namespace {
Platform* g_installed = nullptr;
}

Platform& GetPlatform() {
  if (g_installed) return *g_installed;
  static ConsolePlatform console;
  return console;
}

void SetPlatform(Platform* platform) { g_installed = platform; }

}  // namespace kw
