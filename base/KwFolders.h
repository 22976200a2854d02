// KwFolders: the folders where the applications find their files. Every folder name ends with "/".
//   program     the program's own files (write-protected standard data); default: executable folder
//   executable  the folder of the running program; default: the folder of /proc/self/exe
//   data        data shared by all projects; default: $XDG_DATA_HOME/kwbase/ or ~/.local/share/kwbase/
//   regional    data shared by a department; default: the data folder
//   project     the current project; default: the current working folder
//   user        the user's own settings; default: $XDG_CONFIG_HOME/kwbase/ or ~/.config/kwbase/
// The process has one instance, GetFolders(); callers (and tests) may set any folder on it.
#pragma once

#include <string>

namespace kw {

class KwFolders {
 public:
  KwFolders();  // the defaults above
  void SetDefaults();

  const std::u16string& GetProgramFolder() const { return program_; }
  const std::u16string& GetExecutableFolder() const { return executable_; }
  const std::u16string& GetDataFolder() const { return data_; }
  const std::u16string& GetRegionalFolder() const { return regional_; }
  const std::u16string& GetProjectFolder() const { return project_; }
  const std::u16string& GetUserFolder() const { return user_; }

  // A separator is added when missing; an empty name leaves the folder empty (not configured).
  void SetProgramFolder(const std::u16string& folder) { program_ = AsFolder(folder); }
  void SetExecutableFolder(const std::u16string& folder) { executable_ = AsFolder(folder); }
  void SetDataFolder(const std::u16string& folder) { data_ = AsFolder(folder); }
  void SetRegionalFolder(const std::u16string& folder) { regional_ = AsFolder(folder); }
  void SetProjectFolder(const std::u16string& folder) { project_ = AsFolder(folder); }
  void SetUserFolder(const std::u16string& folder) { user_ = AsFolder(folder); }
  // Points every folder at one folder, as tests do with a temporary folder.
  void SetAll(const std::u16string& folder);

  static std::u16string AsFolder(const std::u16string& folder);

 private:
  std::u16string program_, executable_, data_, regional_, project_, user_;
};

// The process-wide folder set, created with the defaults on first use.
KwFolders& GetFolders();

}  // namespace kw
