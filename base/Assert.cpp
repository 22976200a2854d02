#include "base/Assert.h"

#include <cstring>
#include <string>

#include "platform/Platform.h"

namespace kw {
namespace {

void DefaultHandler(const char* source, int line, const char* expression) {
  std::string text = std::string("Assertion failed: ") + source + " line " + std::to_string(line) + ": " +
                     expression;
  std::u16string wide(text.begin(), text.end());
  GetPlatform().DebugOutput(wide);
}

AssertionHandler g_handler = &DefaultHandler;

}  // namespace

AssertionHandler SetAssertionHandler(AssertionHandler handler) {
  AssertionHandler old = g_handler;
  g_handler = handler ? handler : &DefaultHandler;
  return old;
}

AssertionHandler GetAssertionHandler() { return g_handler; }

void ReportAssertion(const char* file, int line, const char* expression) {
  std::string source(file ? file : "");
  const char* dot = std::strrchr(source.c_str(), '.');
  if (dot && dot != source.c_str() && std::strchr(dot, '/') == nullptr) source.resize(dot - source.c_str());
  g_handler(source.c_str(), line, expression ? expression : "");
}

}  // namespace kw
