// kw detect FILE...: the encoding (from the byte-order mark) and line end of each file.
#include <cstdio>
#include <string>
#include <vector>

#include "Command.h"
#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/Format.h"

namespace kwtool {

namespace {

// The names of the encoding numbers, from the string table ("ANSI|UTF-8|...").
std::string EncodingName(int encoding) {
  const std::u16string names = kw::LoadString(1148);
  size_t start = 0;
  for (int k = 0; k < encoding; ++k) {
    start = names.find(u'|', start);
    if (start == std::u16string::npos) return std::to_string(encoding);
    ++start;
  }
  return kw::ToUtf8(names.substr(start, names.find(u'|', start) - start));
}

int RunDetect(const std::vector<std::string>& args) {
  Args a(args);
  const std::vector<std::string> files = a.Positional();
  if (!a.error.empty()) return Fail(a.error, 2);
  if (files.empty()) return Fail("detect: no file given (kw detect FILE...)", 2);
  int result = 0;
  for (const std::string& file : files) {
    const std::u16string name = kw::FromUtf8(file);
    if (!kw::IsExisting(name)) {
      result = Fail(kw::ToUtf8(kw::Format(kw::LoadString(1102).c_str(), name)));
      continue;
    }
    if (kw::IsDirectory(name)) {  // skipped without failing, so that "kw detect samples/*" works
      std::fprintf(stderr, "kw: %s is a folder; skipped\n", file.c_str());
      continue;
    }
    unsigned char lineEnd = 13;
    const int encoding = kw::GetFileEncoding(name, &lineEnd);
    std::printf("%s: %s %s\n", file.c_str(), EncodingName(encoding).c_str(), lineEnd == 13 ? "CR LF" : "LF");
  }
  return result;
}

}  // namespace

KW_COMMAND("detect", "kw detect FILE...",
            "print each file's encoding (from its byte-order mark) and line end", &RunDetect);

}  // namespace kwtool
