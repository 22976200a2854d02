// File operations with their plain meanings, portable through std::filesystem. Names are UTF-16 and go
// to the operating system as UTF-8. Failures return false (or -1) and leave the system's error number
// in the platform's last error. Folder names returned here end with a separator ("/").
#pragma once

#include <cstdint>
#include <string>

namespace kw {

bool IsExisting(const std::u16string& name);   // a file or a folder of that name exists
bool IsDirectory(const std::u16string& name);
bool DeleteTheFile(const std::u16string& name);  // a file, not a folder; false when missing
// Renames or moves a file. An existing target is refused unless `replace` is true; with `replace` the
// target is replaced in one step (a reader sees the old or the new file, never none).
bool RenameTheFile(const std::u16string& from, const std::u16string& to, bool replace = false);
// Copies a file with its contents and times; an existing target is overwritten unless `failIfExists`.
bool CopyTheFile(const std::u16string& from, const std::u16string& to, bool failIfExists = false);
// Read-only means that nobody may write the file (no write permission bit).
bool IsReadOnly(const std::u16string& name);
bool SetReadOnly(const std::u16string& name, bool readOnly = true);
int64_t SizeOf(const std::u16string& name);  // bytes; -1 when missing or a folder
// Last write time as a KwTime value (days since 1899-12-30, local time); 0 when missing.
double GetLastWriteTime(const std::u16string& name);
// Whether the file lies on a network drive. This port has no notion of one: always false.
bool IsNetworkDrive(const std::u16string& name);
// Expands an environment placeholder "$NAME$" to the folder named by that variable, with a separator at
// the end. "$TEMP$" falls back to TMP, TMPDIR and the system's temporary folder. Empty when unknown.
std::u16string FolderByEnvironment(const std::u16string& placeholder);
// `name` with its extension (after the last "." of the last path part) replaced by `extension`, or with
// "." + extension appended when it has none: ReplaceExtension(u"a.txt", u"BAK") is u"a.BAK".
std::u16string ReplaceExtension(const std::u16string& name, const std::u16string& extension);
// Compares two file names without regard to case (ASCII and Latin-1 letters); <0, 0 or >0.
int CompareFileNames(const std::u16string& a, const std::u16string& b);

}  // namespace kw
