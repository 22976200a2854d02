#include "app/KwCommandLineInfo.h"

#include <algorithm>

#include "base/Assert.h"
#include "base/FileOps.h"

namespace kw {
namespace {

std::u16string Fold(const std::u16string& s) {
  std::u16string out(s);
  for (char16_t& c : out)
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
  return out;
}

bool IsSeparator(char16_t c) { return c == u'/' || c == u'\\'; }

// Whether `lower` (ASCII, lower case) starts `param` without regard to case.
bool StartsWith(const std::u16string& param, const std::u16string& lower) {
  return param.size() >= lower.size() && Fold(param.substr(0, lower.size())) == lower;
}

}  // namespace

void KwCommandLineInfo::ParseFrameworkParam(const std::u16string& param, bool isFlag) {
  if (!isFlag) {
    if (m_strFileName.empty()) {
      m_strFileName = param;
      if (m_nShellCommand == FileNew) m_nShellCommand = FileOpen;
    }
    return;
  }
  const std::u16string flag = Fold(param);
  if (flag == u"p") m_nShellCommand = FilePrint;
  else if (flag == u"pt") m_nShellCommand = FilePrintTo;
  else if (flag == u"dde") m_nShellCommand = FileDDE;
  else if (flag == u"embedding") m_bRunEmbedded = true, m_nShellCommand = FileNothing;
  else if (flag == u"automation") m_bRunAutomated = true, m_nShellCommand = FileNothing;
  else if (flag == u"register" || flag == u"regserver") m_nShellCommand = AppRegister;
  else if (flag == u"unregister" || flag == u"unregserver") m_nShellCommand = AppUnregister;
}

void KwCommandLineInfo::ParseParam(const std::u16string& param, bool isFlag, bool isLast) {
  (void)isLast;
  ParseFrameworkParam(param, isFlag);
  if (isFlag) {
    const std::u16string flag = Fold(param);
    if (flag == u"t") {
      m_bTrace = true;
      return;
    }
    if (StartsWith(param, u"l=")) {
      ParseInitFile(param.substr(2), 1);
      return;
    }
    if (StartsWith(param, u"r=")) {
      ParseInitFile(param.substr(2), 2);
      return;
    }
    if (flag == u"v") {
      m_bV = true;
      return;
    }
  }
  ++m_nParam;
  switch (m_nParam) {
    case 1:
      if (isFlag && Fold(param) == u"c") {
        m_nMode = 2;
      } else {
        m_nMode = 1;
        m_strFile1 = param;
      }
      break;
    case 2:
      (m_nMode == 1 ? m_strFile2 : m_strC1) = param;
      break;
    case 3:
      (m_nMode == 1 ? m_strFile3 : m_strC2) = param;
      break;
    default:
      break;  // later parameters are ignored
  }
}

void KwCommandLineInfo::ParseInitFile(const std::u16string& text, int which) {
  std::u16string s;
  for (char16_t c : text)
    if (c != u'"') s += c;
  const auto blank = [](char16_t c) { return c == u' ' || c == u'\t'; };
  while (!s.empty() && blank(s.back())) s.pop_back();
  const auto first = std::find_if_not(s.begin(), s.end(), blank);
  s.erase(s.begin(), first);

  std::u16string folder = s, name;
  if (!(!s.empty() && IsSeparator(s.back())) && !IsDirectory(s)) {
    size_t cut = s.size();
    while (cut > 0 && !IsSeparator(s[cut - 1])) --cut;
    folder = s.substr(0, cut);
    name = s.substr(cut);
  }
  if (which == 1) {
    m_strLFolder = folder;
    m_strLName = name;
  } else if (which == 2) {
    m_strRFolder = folder;
    m_strRName = name;
  } else {
    KW_ASSERT_AT("WINAPP", 2228, which == 1 || which == 2);
  }
}

void KwCommandLineInfo::ParseCommandLine(const std::vector<std::u16string>& args) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::u16string& a = args[i];
    bool isFlag = false;
    if (a.size() > 1 && a[0] == u'-') {
      isFlag = true;
    } else if (a.size() > 1 && a[0] == u'/') {
      const size_t end = std::min(a.find(u'='), a.size());
      isFlag = a.find(u'/', 1) >= end;
    }
    ParseParam(isFlag ? a.substr(1) : a, isFlag, i + 1 == args.size());
  }
}

}  // namespace kw
