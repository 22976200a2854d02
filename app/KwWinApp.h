// KwWinApp: the application object. Each program built on the library derives its application object
// from this class and constructs exactly one of them; while it lives it is the process's current
// application (GetKwWinApp). It owns what the whole process shares, offers the services every
// application needs in the same form, and shuts them down in a fixed order.
//
// Library code writes a diagnostic line only through one pattern:
//   if (kw::IsKwWinApp() && kw::GetKwWinApp()->GetTraceMode()) kw::GetKwWinApp()->Trace(u"...", ...);
// so that the library also works in a program that has no application object.
//
// The flight recorder: a trace file written while tracing is on. Each line is the time since the
// application object was made, as a time of day "HH:MM:SS", two blanks and the text. Every traced text
// also goes to the platform's debug output (cut to 500 characters), whether tracing is on or not.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "base/Format.h"

namespace kw {

class KwFile;

// Editing options shared by every text document of the application.
struct KwEditParams {
  int makeBackups = 1;             // non-zero: saving a file first keeps the old one as *.BAK
  char16_t eolDisplayChar = u' ';  // character shown at the end of each line
  int eolDisplayOption = 0;        // 0 = the end of a line is not shown; otherwise shown with eolDisplayChar
};

class KwWinApp {
 public:
  // Registers the object as the current application. A second object while one lives is a programming
  // error (assertion); the newer one then becomes current until it is destroyed.
  KwWinApp();
  virtual ~KwWinApp();
  KwWinApp(const KwWinApp&) = delete;
  KwWinApp& operator=(const KwWinApp&) = delete;

  // The application's title (string 57344, set by the application with SetString), with "_W" appended
  // when `withSuffix` is non-zero. An empty title is an assertion failure (WINAPP 362).
  std::u16string GetAppName(int withSuffix) const;
  // Each application overrides this; the base asserts (WINAPP 372) and returns an empty text.
  virtual std::u16string GetAppVersion() const;

  // Flight recorder.
  bool GetTraceMode() const { return traceOn_; }
  // Starts tracing into "AUTO.REC" in the current folder without asking, unless a trace file exists.
  void StartInitalTrace();
  // Switches tracing off (closing the file) or on. Switching on for the first time in the process asks
  // with message 1023 and starts a fresh "<user folder><app name>.REC"; later it appends to the same file.
  void SetTraceMode();
  // Formats `format` with up to sixteen arguments (kw::Format; a format that does not fit its arguments
  // is written as it stands) and writes it as one trace line.
  template <class... A>
  void Trace(std::u16string_view format, const A&... args) {
    static_assert(sizeof...(A) <= 16, "Trace takes at most sixteen arguments");
    const FormatArg list[] = {FormatArg(args)..., FormatArg(0)};
    TraceArgs(format, std::span<const FormatArg>(list, sizeof...(A)));
  }
  void TraceArgs(std::u16string_view format, std::span<const FormatArg> args);
  // Trace lines written to the trace file in this process.
  int64_t GetTraceLines() const { return traceLines_; }
  // The open trace file's name; empty when there is no trace file.
  std::u16string GetTraceFileName() const;

  // Edit parameters: loaded on first use, saved when the application object goes away.
  const KwEditParams& GetEditParams();
  void SetEditParams(const KwEditParams& params);
  void LoadEditParams();
  void SaveEditParams();

 private:
  std::unique_ptr<KwFile> traceFile_;  // created by StartInitalTrace or the first SetTraceMode
  bool traceOn_ = false;               // set only when traceFile_ was opened; cleared when it is closed
  int64_t traceLines_ = 0;             // lines written to the trace file since construction
  double traceStart_ = 0;              // milliseconds of a monotonic clock at construction

  KwEditParams editParams_;
  bool editParamsLoaded_ = false;
};

// The current application object, or null when none exists.
KwWinApp* GetKwWinApp();
// True when an application object exists (and is, by construction, a KwWinApp).
bool IsKwWinApp();

}  // namespace kw
