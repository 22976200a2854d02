// KwCommandLineInfo: the command line as all the applications read it.
//
// A program hands each parameter to ParseParam (ParseCommandLine does it for argv). A parameter is a
// switch when it starts with "-", or with "/" when no further "/" comes before its "=" (or its end):
// "/T", "/L=/home/me/x.ini" and "-R=x" are switches, "/home/me/x.txt" is a file name. The switch
// character is removed before ParseParam sees it. Switches are compared without regard to case.
//
// First the framework's own reading: the first plain parameter is the file to open; the switches
// "p" (print), "pt" (print to), "dde", "Embedding", "Automation", "Register"/"RegServer" and
// "Unregister"/"UnregServer" set the shell command and the silence flags. Then the applications' own:
//   T       trace request
//   L=text  folder and file name of the left (first) settings file   (ParseInitFile(text, 1))
//   R=text  folder and file name of the right (second) settings file (ParseInitFile(text, 2))
//   V       the second flag
// Every other parameter, switch or not, is counted. The first decides the mode: the switch C gives
// mode 2, anything else mode 1 with itself as the first file name. The second and third fill the second
// and third file name (mode 1) or the two fields of mode 2. Later parameters are ignored.
#pragma once

#include <string>
#include <vector>

namespace kw {

class KwCommandLineInfo {
 public:
  // The framework's shell commands.
  enum ShellCommand { FileNew, FileOpen, FilePrint, FilePrintTo, FileDDE, AppRegister, AppUnregister, FileNothing };

  KwCommandLineInfo() = default;
  virtual ~KwCommandLineInfo() = default;

  // One parameter: `param` without its switch character when `isFlag`; `isLast` for the last one.
  virtual void ParseParam(const std::u16string& param, bool isFlag, bool isLast);
  // Reads a settings file's place: trimmed, double quotes removed; a text ending in a separator or
  // naming an existing folder is all folder (name empty), otherwise it is split after its last
  // separator. `which` 1 fills the L= pair, 2 the R= pair; any other is an assertion (WINAPP 2228).
  void ParseInitFile(const std::u16string& text, int which);
  // Every argument after the program's name, in order.
  void ParseCommandLine(const std::vector<std::u16string>& args);

  // The framework's part.
  ShellCommand m_nShellCommand = FileNew;
  std::u16string m_strFileName;
  bool m_bRunEmbedded = false;
  bool m_bRunAutomated = false;

  // The applications' part.
  bool m_bTrace = false;  // switch T
  bool m_bV = false;      // switch V
  int m_nParam = 0;       // parameters counted
  int m_nMode = 0;        // 0 none, 1 file names, 2 the C form
  std::u16string m_strFile1, m_strFile2, m_strFile3;  // mode 1
  std::u16string m_strC1, m_strC2;                    // mode 2
  std::u16string m_strLFolder, m_strLName;            // L=
  std::u16string m_strRFolder, m_strRName;            // R=

 private:
  void ParseFrameworkParam(const std::u16string& param, bool isFlag);
};

}  // namespace kw
