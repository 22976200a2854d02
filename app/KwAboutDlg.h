// KwAboutDlg: the texts of the common About box. A window system paints them; this class only makes
// them, so that every application shows the same lines.
#pragma once

#include <functional>
#include <string>

namespace kw {

class KwWinApp;

class KwAboutDlg {
 public:
  // `app` must outlive the dialog.
  explicit KwAboutDlg(KwWinApp& app);

  std::u16string GetAppName() const;
  // "Path: " and the executable's full path, shortened (ShortenPath) to the longest form from the full
  // length down to 6 characters that `fits` accepts; 6 characters when none fits.
  std::u16string GetPathLine(const std::function<bool(const std::u16string& line)>& fits) const;
  // "Version <version> (<module date>) / 64bit / UNICODE" and, after a blank, the free text.
  std::u16string GetVersionLine() const;
  // "mailto:<support address>?subject=Message%20from%20<app name>" (blanks as "%20").
  std::u16string GetMailLink() const;
  // "http:" and the web address.
  std::u16string GetWebLink() const;

  void SetFreeText(const std::u16string& text) { freeText_ = text; }
  void SetSupportAddress(const std::u16string& address) { supportAddress_ = address; }
  void SetWebAddress(const std::u16string& address) { webAddress_ = address; }  // after "http:"
  // For tests and other programs: the executable's path and date as shown (default: the running one).
  void SetModule(const std::u16string& path, const std::u16string& date) { modulePath_ = path, moduleDate_ = date; }

  // `path` cut to `n` characters (n >= 6): its start and end with "..." between them; unchanged when
  // it is not longer.
  static std::u16string ShortenPath(const std::u16string& path, size_t n);

 private:
  KwWinApp& app_;
  std::u16string freeText_;
  std::u16string supportAddress_ = u"support@example.org";
  std::u16string webAddress_ = u"//www.example.org/";
  std::u16string modulePath_, moduleDate_;
};

}  // namespace kw
