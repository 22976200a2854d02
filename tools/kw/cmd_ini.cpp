// kw ini: looks into and edits sectioned settings files with the library's settings store.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "Command.h"
#include "base/CodePages.h"
#include "base/KwFile.h"
#include "data/KwConfigData.h"

namespace {

using kw::KwCfgDropped;
using kw::KwCfgSection;
using kw::KwConfigData;

std::string Out(const std::u16string& text) { return kw::ToUtf8(text); }
std::u16string In(const std::string& text) { return kw::FromUtf8(text); }

bool Readable(const std::string& file) {
  std::error_code ec;
  return std::filesystem::is_regular_file(file, ec);
}

// Loads up to four files as the scopes 0, 1, 2, 3 (a single file is scope 0).
bool LoadFiles(KwConfigData& store, const std::vector<std::string>& files, std::vector<KwCfgDropped>* dropped) {
  std::u16string names[kw::kFileScopeCount];
  for (size_t i = 0; i < files.size(); ++i) {
    if (!Readable(files[i])) {
      kwtool::Fail("cannot read " + files[i]);
      return false;
    }
    names[i] = In(files[i]);
  }
  store.SetSilentMode(1);
  store.SetDropLog(dropped);
  store.Load(names);
  store.SetDropLog(nullptr);
  return true;
}

int RunList(const std::vector<std::string>& files) {
  if (files.empty() || files.size() > 4) return kwtool::Fail("usage: kw ini list FILE... (one to four files)", 2);
  KwConfigData store;
  if (!LoadFiles(store, files, nullptr)) return 1;
  const bool several = files.size() > 1;
  if (several) std::printf("  SCOPE     LINES  SECTION   (* visible)\n");
  else std::printf("SCOPE     LINES  SECTION\n");
  for (int scope = 0; scope < kw::kFileScopeCount; ++scope)
    if (several && scope < static_cast<int>(files.size()))
      std::printf("  %-9s %s\n", Out(KwConfigData::GetScopeName(scope)).c_str(), files[static_cast<size_t>(scope)].c_str());
  for (auto* set = store.GetNextDataSet(1, -1); set != nullptr; set = store.GetNextDataSet(0, -1)) {
    std::vector<kw::KwDataSet*> sets;
    store.GetDataSetsOfKey(set->GetName(), sets);
    for (const kw::KwDataSet* s : sets) {
      const auto* section = static_cast<const KwCfgSection*>(s->GetData());
      std::printf("%s%-9s %5lld  [%s]\n", several ? (s->IsVisible() ? "* " : "  ") : "",
                  Out(KwConfigData::GetScopeName(s->GetScope())).c_str(),
                  static_cast<long long>(section ? section->GetLineCount() : 0), Out(s->GetName()).c_str());
    }
  }
  return 0;
}

int RunGet(const std::vector<std::string>& args) {
  if (args.size() != 3) return kwtool::Fail("usage: kw ini get FILE SECTION KEY", 2);
  KwConfigData store;
  if (!LoadFiles(store, {args[0]}, nullptr)) return 1;
  const KwCfgSection* section = store.GetCfgSection(In(args[1]));
  if (section == nullptr) return kwtool::Fail("no section [" + args[1] + "] in " + args[0]);
  std::u16string value;
  if (!section->GetValue(In(args[2]), value)) return kwtool::Fail("no key " + args[2] + " in [" + args[1] + "]");
  std::printf("%s\n", Out(value).c_str());
  return 0;
}

// Edits the file line by line, so that comments and the order of everything else stay as they are:
// the first line of the key in the first section of that name is replaced; a new key goes after the
// section's last entry; a new section goes to the end. The file keeps its encoding and mark (a new
// file is UTF-8 with its mark).
int RunSet(const std::vector<std::string>& args) {
  if (args.size() != 4) return kwtool::Fail("usage: kw ini set FILE SECTION KEY VALUE", 2);
  const std::string& file = args[0];
  const std::u16string section = In(args[1]);
  const std::u16string key = In(args[2]);
  if (section.empty() || key.empty() || key.find(u'=') != std::u16string::npos)
    return kwtool::Fail("the section and the key must not be empty, and a key holds no '='", 2);
  if (key.size() + 1 + args[3].size() < 2 || key[0] == u'!' || key[0] == u'[')
    return kwtool::Fail("the key " + args[2] + " would not be read back as an entry", 2);
  const std::u16string entry = key + u"=" + In(args[3]);

  std::vector<std::u16string> lines;
  int encoding = 1;  // a new file: UTF-8 with its mark, as the store writes
  bool mark = true;
  std::error_code ec;
  const bool exists = std::filesystem::exists(file, ec);
  if (exists) {
    const auto perms = std::filesystem::status(file, ec).permissions();
    if ((perms & std::filesystem::perms::owner_write) == std::filesystem::perms::none)
      return kwtool::Fail(file + " is read-only; nothing changed");
    kw::KwFile in;
    if (!in.Open(In(file), 0, 13, 26, kw::KwData::GuessFileEncoding(In(file)))) return kwtool::Fail("cannot read " + file);
    std::u16string line;
    while (in.ReadLine(line)) lines.push_back(line);
    encoding = in.GetEncoding();
    mark = in.HasByteOrderMark();
    in.Close();
  }
  // Where the section is, where its last entry is, and the line of the key.
  size_t header = std::string::npos, lastEntry = std::string::npos, keyLine = std::string::npos;
  bool inside = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    std::u16string name;
    if (KwConfigData::ParseHeader(lines[i], name)) {
      if (inside) break;
      inside = name == section;
      if (inside) header = lastEntry = i;
      continue;
    }
    if (!inside || KwConfigData::ClassifyLine(lines[i]) != 0) continue;
    lastEntry = i;
    if (KwCfgSection::ExtractKey(lines[i]) == key) {
      keyLine = i;
      break;
    }
  }
  if (keyLine != std::string::npos) {
    lines[keyLine] = entry;
  } else if (header != std::string::npos) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(lastEntry + 1), entry);
  } else {
    lines.push_back(u"[" + section + u"]");
    lines.push_back(entry);
  }
  kw::KwFile out;
  if (!out.Open(In(file), 4, 13, 26)) return kwtool::Fail("cannot write " + file);
  out.SetEncoding(encoding, mark);
  for (const auto& line : lines)
    if (!out.WriteLine(line)) {
      out.Close();
      return kwtool::Fail("write error in " + file);
    }
  out.SetEOF();
  const bool lossy = out.UsedDefaultChar();
  out.Close();
  if (lossy) std::fprintf(stderr, "kw: warning: %s cannot hold every character of the value\n", file.c_str());
  return 0;
}

int RunCheck(const std::vector<std::string>& args) {
  if (args.size() != 1) return kwtool::Fail("usage: kw ini check FILE", 2);
  KwConfigData store;
  std::vector<KwCfgDropped> dropped;
  if (!LoadFiles(store, args, &dropped)) return 1;
  int64_t problems = 0, comments = 0;
  for (const auto& d : dropped) {
    const std::string text = Out(d.text);
    switch (d.reason) {
      case KwCfgDropped::Comment:
        ++comments;
        continue;
      case KwCfgDropped::TooShort:
        if (d.text.empty()) continue;  // blank lines are fine
        std::printf("%s:%lld: ignored, too short: %s\n", args[0].c_str(), static_cast<long long>(d.line), text.c_str());
        break;
      case KwCfgDropped::BadHeader:
        std::printf("%s:%lld: ignored, no section name: %s\n", args[0].c_str(), static_cast<long long>(d.line), text.c_str());
        break;
      case KwCfgDropped::BeforeSection:
        std::printf("%s:%lld: ignored, before the first section: %s\n", args[0].c_str(), static_cast<long long>(d.line),
                    text.c_str());
        break;
      case KwCfgDropped::DuplicateKey:
        std::printf("%s:%lld: dropped duplicate key '%s': %s\n", args[0].c_str(), static_cast<long long>(d.line),
                    Out(KwCfgSection::ExtractKey(d.text)).c_str(), text.c_str());
        break;
      case KwCfgDropped::EmptySection:
        std::printf("%s:%lld: section [%s] has no entries and is dropped\n", args[0].c_str(),
                    static_cast<long long>(d.line), text.c_str());
        break;
      default:
        break;
    }
    ++problems;
  }
  int64_t lines = 0;
  for (auto* set = store.GetNextDataSet(1, 0); set != nullptr; set = store.GetNextDataSet(0, 0))
    lines += static_cast<const KwCfgSection*>(set->GetData())->GetLineCount();
  std::printf("%s: %lld sections, %lld entries, %lld comment lines, %lld problems\n", args[0].c_str(),
              static_cast<long long>(store.GetCount(0)), static_cast<long long>(lines),
              static_cast<long long>(comments), static_cast<long long>(problems));
  return problems > 0 ? 1 : 0;
}

int RunIni(const std::vector<std::string>& args) {
  if (args.empty()) return kwtool::Fail("usage: kw ini list|get|set|check ...", 2);
  const std::vector<std::string> rest(args.begin() + 1, args.end());
  if (args[0] == "list") return RunList(rest);
  if (args[0] == "get") return RunGet(rest);
  if (args[0] == "set") return RunSet(rest);
  if (args[0] == "check") return RunCheck(rest);
  return kwtool::Fail("unknown ini command '" + args[0] + "' (list, get, set, check)", 2);
}

}  // namespace

KW_COMMAND("ini", "kw ini list FILE... | get FILE SECTION KEY | set FILE SECTION KEY VALUE | check FILE",
            "lists, reads, sets and checks sectioned settings files (several files: scopes 0..3)", &RunIni);
