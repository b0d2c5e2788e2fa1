// Files by their Windows paths.
//
// On Windows a path is used as it is, also one of more than 260 characters. Elsewhere a path that begins with
// "/" is the system's own, "\" in any path is a separator, drive letters are those given to MapDrive, and
// where the exact name is missing a file or folder is found without regard to letter case, since solutions
// written on Windows rely on it. Relative paths are seen from the current folder. Messages name the file and
// the system's reason.
#pragma once

#include "foundation/platform/Result.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

// From now on `letter` stands for the folder, in every path of this process (no effect on Windows).
void MapDrive(char16_t letter, std::u16string_view folder);

bool FileExists(std::u16string_view path); // anything but a folder: a file, or a device of that name
bool DirectoryExists(std::u16string_view path);
// The system's own spelling of an existing file or folder: separators, drive and letter case mended.
std::optional<std::u16string> ResolveExisting(std::u16string_view path);
// The system's own spelling of a path that need not exist (for a folder to start a process in, a file to be
// made).
std::u16string ResolveForWriting(std::u16string_view path);

// Answers many existence questions about one tree with few system calls: each folder is listed once. A
// listing is trusted again only while the folder's time stamp shows no change since (on Windows never, where
// many file systems do not keep it), so one object may be kept for long.
class FileLookup {
public:
  FileLookup();
  ~FileLookup();
  FileLookup(const FileLookup&) = delete;
  FileLookup& operator=(const FileLookup&) = delete;

  // Time stamps are looked at again (once a folder) after each call of this.
  void Refresh();
  bool FileExists(std::u16string_view path);

private:
  struct State;
  std::unique_ptr<State> state_;
};

// Only regular files are read: a device, a pipe or a folder is refused by name.
Result<std::string> ReadFile(std::u16string_view path);

// A regular file in pieces, for those that need not be in memory as a whole.
class FileReader {
public:
  static Result<FileReader> Open(std::u16string_view path);
  FileReader(FileReader&&) noexcept;
  FileReader& operator=(FileReader&&) noexcept;
  ~FileReader();

  std::uint64_t Size() const; // in bytes, when it was opened
  // Fills up to `size` bytes; 0 at the end.
  Result<std::size_t> Read(char* buffer, std::size_t size);
  Status Rewind();

private:
  struct State;
  explicit FileReader(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

// Replaces or makes a file so that a crash, a kill or a full disk leaves the old content or the new one: a
// temporary file beside the target, flushed, then renamed over it. A symbolic link is followed. Kept are
// owner, group and mode, access control lists and extended attributes of the old file (on Windows its
// attributes and access rules), at no moment is more granted than by them, and where one cannot be kept the
// file is not replaced. Neither is one of several names (hard links), which the new one would be parted from,
// nor one that is not writable, though a rename would succeed.
Status SaveFile(std::u16string_view path, std::string_view bytes);
// Why SaveFile would fail, as far as that can be told beforehand (a full disk cannot). Changes nothing.
Status CheckSaveFile(std::u16string_view path);

// Makes a file, whole or not at all. False, and nothing happens, when there is something of that name
// already, whoever has just made it. Whoever has access to `like` has the same to the new file; where this
// user cannot grant that, nobody else has any.
Result<bool> SaveNewFile(std::u16string_view path, std::string_view bytes, std::u16string_view like = {});
// The same with the content of a file and the time of its last change.
Result<bool> CopyToNewFile(std::u16string_view from, std::u16string_view path);

// What a folder holds, sorted by name without regard to letter case.
struct FolderEntry {
  std::u16string Name;
  bool IsDirectory = false;
};
Result<std::vector<FolderEntry>> ListDirectory(std::u16string_view path);

// Those that are not there yet. Nobody else gets into the last one (on Windows: whom the one above lets in).
Status CreateDirectories(std::u16string_view path);
Status RemoveFile(std::u16string_view path);
// Makes an empty file of a name not yet taken: prefix, random letters, extension. The caller removes it.
Result<std::u16string> CreateTemporaryFile(std::u16string_view folder, std::u16string_view prefix,
                                           std::u16string_view extension = u"");

std::u16string TemporaryDirectory();
std::u16string CurrentDirectory();
std::u16string ProgramFile();      // the running program
std::u16string ProgramDirectory(); // its folder
// The user's folders for settings, and for what programs remember by themselves; empty when the system names
// none.
std::u16string ConfigDirectory();
std::u16string StateDirectory();

// A program of this name on the search path; its full path. On Windows the extensions of PATHEXT are tried on
// a name that has none of them.
std::optional<std::u16string> FindProgram(std::u16string_view name);

} // namespace kx::platform
