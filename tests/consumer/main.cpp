// Links the installed library through find_package(KwBase) and uses it through the umbrella header.
#include <kwbase.h>

#include <cstdio>

int main() {
  const std::u16string text = kw::Format(kw::LoadString(1078), u"Consumer");
  std::puts(kw::ToUtf8(text).c_str());
  return text == u"Message from Consumer" ? 0 : 1;
}
