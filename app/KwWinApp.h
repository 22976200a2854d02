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
#include <vector>

#include "base/Format.h"
#include "platform/Platform.h"

namespace kw {

class KwCommandLineInfo;
class KwDocManager;
class KwFile;
class KwFindData;
class KwFolders;
class KwPersistence;

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

  // Edit parameters: loaded on first use from the user settings file (section "WinApp", keys
  // "MakeBackups", "EolDisplayChar" as the character's number, "EolDisplayOption"); written back when the
  // application object goes away if they were changed.
  const KwEditParams& GetEditParams();
  void SetEditParams(const KwEditParams& params);
  void LoadEditParams();
  void SaveEditParams();

  // --- Shared objects: made on first use, owned by the application object until its destructor ---
  // The process's folder set (the one GetFolders() of the folder service gives). Once asked for here,
  // its data, regional and project folders are saved to the user settings file (section "Folders",
  // keys "Data", "Regional", "Project") when the application object goes away.
  KwFolders* GetFolders();
  // Reads those folders back into the folder set; returns how many were found. It empties the
  // persistence table's chain (the project file moves with its folder), so an application calls it
  // at its start, before any object binds its settings.
  int LoadFolders();
  // The persistence table for the two settings files.
  KwPersistence* GetPersist();
  // The document types of the application.
  KwDocManager* GetDocManager();
  // The editor's search parameters shared by all find and replace windows.
  KwFindData* GetFindData();

  // Help: opens "QUORIX.CHM" of the executable folder at `topic` (0: the start page). The Ctrl key held
  // down also means the start page. Failures are reported with messages 1020 and 1021.
  void ShowHelp(WindowId window, uint32_t topic);
  // The keyword of a help topic as the help viewer receives it: the decimal digits as 8-bit characters
  // packed two to a unit (low byte first), a zero byte, a second zero byte when the number of digits is
  // odd, and the last unit filled up with zero.
  static std::u16string PackHelpKeyword(uint32_t topic);

  // Names of files to delete when the application object goes away; a name already listed is not
  // added twice. Returns 0 only when the list cannot be made.
  int AddFileToRemove(const std::u16string& name);
  const std::vector<std::u16string>* GetFilesToRemove() const { return filesToRemove_.get(); }

  // --- The auxiliary program QXADMIN: up to 32 instances, instance id (1..32) = slot bit id - 1 ---
  // The lowest free id; 33 when all are taken.
  int GetQXAdminID() const;
  // Takes or frees the id's slot (toggles); ids outside 1..32 change nothing.
  void UpdateQXAdminStatus(int id);
  uint32_t GetQXAdminMask() const { return qxAdminMask_; }
  // Starts "QXADMIN.EXE" of the executable folder with the id; takes the slot on success (1).
  // On failure reports message 1028 when `report` is non-zero and returns 0.
  int RunQXAdmin(int id, int report);
  // Sends `text` to the instance "QXADMIN<id>", looking for it for up to the search time (5 seconds)
  // without pausing. 1 when the instance answered 1; otherwise message 1029 and the slot is freed.
  int SendToQXAdmin(int id, const std::u16string& text);
  // The search time of SendToQXAdmin in seconds (5.0).
  void SetQXAdminSearchSeconds(double seconds) { qxAdminSearchSeconds_ = seconds; }
  // Starts "QUORIX_W.EXE" and "TOPRAX_W.EXE" of `folder` with "/RegServer"; 1 when both started,
  // otherwise message 1027 when `report` is non-zero, and 0.
  int RegisterApps(const std::u16string& folder, int report);

  // --- Command line ---
  // Handles the unregister command (removes the document types, asks Unregister, reports unless the
  // command line asked for silence, returns 0: the application ends). Other commands go to
  // OnShellCommand.
  int ProcessShellCommand(KwCommandLineInfo& info);
  // Whether unregistering the application succeeded; the base has nothing more to remove.
  virtual int Unregister() { return 1; }
  // The framework's handling of every other shell command: registering the document types (returns 0,
  // the application ends) and nothing for the rest (returns 1: go on). Applications override it to
  // open or print documents.
  virtual int OnShellCommand(KwCommandLineInfo& info);
  // The command line that ProcessShellCommand handled last; null before.
  const KwCommandLineInfo* GetCmdInfo() const { return cmdInfo_.get(); }

  // --- Date and time formats (KwTime conversions), from the user settings file (section "WinApp",
  // keys "DateFormat" and "TimeFormat"); by default "%d.%m.%Y" and "%2H:%2M:%S" ---
  void LoadDateTimeFormat();
  const std::u16string& GetDateFormatW();
  const std::u16string& GetTimeFormatW();
  // Order of the date fields: 0 month-day-year, 1 day-month-year, 2 year-month-day.
  int GetDateOrder();
  // 1 for a 24-hour clock, 0 for 12 hours (a format that has no %H).
  int GetTimeOrder();

  // --- Printer settings: plain values kept for the print dialogs ---
  const std::u16string& GetPrinterName() const { return printerName_; }
  void SetPrinterName(const std::u16string& name) { printerName_ = name; }
  const std::u16string& GetPortName() const { return portName_; }
  void SetPortName(const std::u16string& name) { portName_ = name; }
  int GetPrintingOrientation() const { return orientation_; }  // 1 portrait, 2 landscape
  void SetPrintingOrientation(int orientation) { orientation_ = orientation; }
  int GetPrintingDuplex() const { return duplex_; }  // 1 simplex, 2 vertical, 3 horizontal
  void SetPrintingDuplex(int duplex) { duplex_ = duplex; }
  int GetPrintingPaperSize() const { return paperSize_; }  // paper size number; 9 = A4
  void SetPrintingPaperSize(int size) { paperSize_ = size; }

 private:
  void SaveFolders();

  std::unique_ptr<KwFile> traceFile_;  // created by StartInitalTrace or the first SetTraceMode
  bool traceOn_ = false;               // set only when traceFile_ was opened; cleared when it is closed
  int64_t traceLines_ = 0;             // lines written to the trace file since construction
  double traceStart_ = 0;              // milliseconds of a monotonic clock at construction

  KwEditParams editParams_;
  bool editParamsLoaded_ = false;
  bool editParamsChanged_ = false;  // SetEditParams since loading: saved at the end

  KwFolders* folders_ = nullptr;  // the folder service's set, once asked for (not deleted here)
  std::unique_ptr<KwPersistence> persist_;
  std::unique_ptr<KwDocManager> docManager_;
  std::unique_ptr<KwFindData> findData_;
  std::unique_ptr<std::vector<std::u16string>> filesToRemove_;  // made on first use
  std::unique_ptr<KwCommandLineInfo> cmdInfo_;

  uint32_t qxAdminMask_ = 0;  // bit i set: instance i + 1 of QXADMIN runs
  double qxAdminSearchSeconds_ = 5.0;

  bool dateTimeLoaded_ = false;
  std::u16string dateFormat_, timeFormat_;

  std::u16string printerName_, portName_;
  int orientation_ = 1, duplex_ = 1, paperSize_ = 9;
};

// The current application object, or null when none exists.
KwWinApp* GetKwWinApp();
// True when an application object exists (and is, by construction, a KwWinApp).
bool IsKwWinApp();

}  // namespace kw
