#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace kx::platform {

namespace posix {

namespace {

// Kept in the environment as well (KX_DRIVE_C=/srv/c), so that programs of ours that this one starts see the
// same.
class DriveMap {
public:
  DriveMap() {
    for (std::size_t drive = 0; drive < folders_.size(); ++drive)
      if (const char* folder = std::getenv(VariableOf(drive).c_str())) folders_[drive] = folder;
  }

  void Set(std::size_t drive, std::string folder) {
    const std::lock_guard lock(mutex_);
    setenv(VariableOf(drive).c_str(), folder.c_str(), 1);
    folders_[drive] = std::move(folder);
  }

  std::string Get(std::size_t drive) {
    const std::lock_guard lock(mutex_);
    return folders_[drive];
  }

private:
  static std::string VariableOf(std::size_t drive) {
    return std::string("KX_DRIVE_") + static_cast<char>('A' + drive);
  }

  std::mutex mutex_;
  std::array<std::string, 26> folders_;
};

DriveMap& Drives() {
  static DriveMap drives;
  return drives;
}

std::optional<std::size_t> DriveIndex(char16_t letter) {
  const char16_t folded = text::FoldCase(letter);
  if (folded < u'a' || folded > u'z') return std::nullopt;
  return folded - u'a';
}

std::string WithSlashes(std::u16string_view path) {
  std::string native = text::ToUtf8(path);
  std::ranges::replace(native, '\\', '/');
  return native;
}

bool Exists(const std::string& native) {
  struct stat info {};
  return stat(native.c_str(), &info) == 0;
}

bool IsFolder(const std::string& native) {
  struct stat info {};
  return stat(native.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// The steps of a native path, with "." and ".." resolved as on Windows: without looking at the disk.
std::vector<std::string_view> StepsOf(std::string_view native) {
  std::vector<std::string_view> steps;
  for (std::size_t start = 0; start < native.size();) {
    const std::size_t end = std::min(native.find('/', start), native.size());
    const std::string_view step = native.substr(start, end - start);
    start = end + 1;
    if (step.empty() || step == ".") continue;
    const bool up = step == "..";
    if (up && !steps.empty() && steps.back() != "..") {
      steps.pop_back();
    } else if (!up || !native.starts_with('/')) {
      steps.push_back(step);
    }
  }
  return steps;
}

// The entry of a folder that differs from `wanted` in letter case only, else one of the name that Windows
// makes of it; of several the smallest, so that the answer does not depend on the order in which the file
// system lists them.
std::optional<std::string> MatchIgnoringCase(const std::string& folder, std::string_view wanted) {
  FolderWalk walk(folder.empty() ? "." : folder);
  const std::u16string name = text::FromUtf8(wanted);
  std::optional<std::u16string> best;
  while (const dirent* entry = walk.Next()) {
    const std::string_view bytes = entry->d_name;
    if (!text::IsValidUtf8(bytes)) continue;
    std::u16string candidate = text::FromUtf8(bytes);
    if (text::EqualsIgnoreCase(candidate, name) && (!best || candidate < *best)) best = std::move(candidate);
  }
  if (best) return text::ToUtf8(*best);
  const std::u16string_view onWindows = NameOnWindows(name);
  return onWindows.size() < name.size() ? MatchIgnoringCase(folder, text::ToUtf8(onWindows)) : std::nullopt;
}

struct Walked {
  std::string Path;
  bool Complete = true; // every step exists
};

Walked WalkIgnoringCase(std::string_view native) {
  Walked walked{native.starts_with('/') ? "/" : "", true};
  for (const std::string_view step : StepsOf(native)) {
    const std::string folder = walked.Path;
    if (!walked.Path.empty() && walked.Path.back() != '/') walked.Path.push_back('/');
    const std::size_t start = walked.Path.size();
    walked.Path.append(step);
    if (!walked.Complete || Exists(walked.Path)) continue;
    const auto match = MatchIgnoringCase(folder, step);
    walked.Complete = match.has_value();
    if (match) walked.Path.replace(start, std::string::npos, *match);
  }
  return walked;
}

} // namespace

std::u16string Reason(int error) {
  return text::FromUtf8(std::system_category().message(error));
}

std::u16string_view NameOnWindows(std::u16string_view name) {
  const std::size_t last = name.find_last_not_of(u" .");
  return last == std::u16string_view::npos ? name : name.substr(0, last + 1);
}

Result<std::string> ToNative(std::u16string_view path) {
  if (path.empty()) return Failure{Reason(ENOENT)};
  if (path.find(u'\0') != std::u16string_view::npos) return Failure{Reason(EINVAL)};
  if (path.size() > 1 && text::IsPathSeparator(path[0]) && text::IsPathSeparator(path[1])) {
    return Failure{u"Network paths are not available on this system"};
  }
  const auto drive = path.size() > 1 && path[1] == u':' ? DriveIndex(path[0]) : std::nullopt;
  if (!drive) return WithSlashes(path);
  std::string folder = Drives().Get(*drive);
  if (folder.empty()) return Failure{u"No folder stands for drive " + std::u16string(path.substr(0, 2))};
  const bool separated = path.size() > 2 && text::IsPathSeparator(path[2]);
  if (folder.back() == '/') folder.pop_back();
  return folder.append(separated ? "" : "/").append(WithSlashes(path.substr(2)));
}

std::optional<std::string> FindNative(std::u16string_view path) {
  Result<std::string> native = ToNative(path);
  if (!native) return std::nullopt;
  if (Exists(*native)) return *std::move(native);
  Walked walked = WalkIgnoringCase(*native);
  return walked.Complete && Exists(walked.Path) ? std::optional(std::move(walked.Path)) : std::nullopt;
}

Result<std::string> NativeForWriting(std::u16string_view path) {
  Result<std::string> native = ToNative(path);
  if (!native || Exists(*native)) return native;
  Walked walked = WalkIgnoringCase(*native);
  return walked.Path.empty() ? native : Result(std::move(walked.Path));
}

} // namespace posix

void MapDrive(char16_t letter, std::u16string_view folder) {
  const auto drive = posix::DriveIndex(letter);
  if (drive) posix::Drives().Set(*drive, text::ToUtf8(folder.empty() ? u"" : ResolveForWriting(folder)));
}

bool FileExists(std::u16string_view path) {
  const auto native = posix::FindNative(path);
  return native && !posix::IsFolder(*native);
}

bool DirectoryExists(std::u16string_view path) {
  const auto native = posix::FindNative(path);
  return native && posix::IsFolder(*native);
}

std::optional<std::u16string> ResolveExisting(std::u16string_view path) {
  const auto native = posix::FindNative(path);
  return native ? std::optional(text::FromUtf8(*native)) : std::nullopt;
}

std::u16string ResolveForWriting(std::u16string_view path) {
  const auto native = posix::NativeForWriting(path);
  return native ? text::FromUtf8(*native) : std::u16string(path);
}

} // namespace kx::platform
