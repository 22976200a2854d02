#include "app/KwAboutDlg.h"

#include <filesystem>

#include "app/KwWinApp.h"
#include "app/StringTable.h"
#include "base/FileOps.h"
#include "base/Format.h"
#include "base/KwTime.h"
#include "base/Text.h"

namespace kw {

KwAboutDlg::KwAboutDlg(KwWinApp& app) : app_(app) {
  std::error_code ec;
  const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    modulePath_ = exe.u16string();
    moduleDate_ = KwTime(GetLastWriteTime(modulePath_)).Format(u"%d.%m.%Y");
  }
}

std::u16string KwAboutDlg::GetAppName() const { return app_.GetAppName(0); }

std::u16string KwAboutDlg::ShortenPath(const std::u16string& path, size_t n) {
  if (n < 6) n = 6;
  if (path.size() <= n) return path;
  const size_t keep = n - 3, head = keep / 3, tail = keep - head;
  return path.substr(0, head) + u"..." + path.substr(path.size() - tail);
}

std::u16string KwAboutDlg::GetPathLine(const std::function<bool(const std::u16string&)>& fits) const {
  const std::u16string label = LoadString(1031);
  for (size_t n = modulePath_.size(); n >= 6; --n) {
    const std::u16string line = label + ShortenPath(modulePath_, n);
    if (fits(line)) return line;
  }
  return label + ShortenPath(modulePath_, 6);
}

std::u16string KwAboutDlg::GetVersionLine() const {
  std::u16string line = Format(LoadString(1032), app_.GetAppVersion(), moduleDate_);
  line += u" / " + StrPart(LoadString(1033), sizeof(void*) == 8 ? 1 : 0, u'|');
  line += u" / " + StrPart(LoadString(1034), 1, u'|');
  if (!freeText_.empty()) line += u" " + freeText_;
  return line;
}

std::u16string KwAboutDlg::GetMailLink() const {
  std::u16string subject = Format(LoadString(1035), GetAppName());
  subject = StrReplace(subject, u" ", u"%20", 0);
  return u"mailto:" + supportAddress_ + u"?subject=" + subject;
}

std::u16string KwAboutDlg::GetWebLink() const { return u"http:" + webAddress_; }

}  // namespace kw
