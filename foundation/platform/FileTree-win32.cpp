#include "foundation/platform/FileTree.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Shared.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/WindowsPath.h"

namespace kx::platform {

using namespace win32;

namespace {

constexpr std::int64_t Epoch = 116'444'736'000'000'000; // 1970, in the system's units of 100 ns since 1601

std::uint64_t Joined(DWORD high, DWORD low) {
  return (std::uint64_t{high} << 32U) | low;
}

FileStamp StampFrom(std::u16string path, std::uint64_t size, const FILETIME& changed) {
  const auto units = static_cast<std::int64_t>(Joined(changed.dwHighDateTime, changed.dwLowDateTime)) - Epoch;
  using Units = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
  return {std::move(path), size,
          std::chrono::system_clock::time_point(
              std::chrono::duration_cast<std::chrono::system_clock::duration>(Units(units)))};
}

class FindHandle {
public:
  explicit FindHandle(HANDLE handle) : handle_(handle) {}
  ~FindHandle() {
    if (handle_ != INVALID_HANDLE_VALUE) FindClose(handle_);
  }
  FindHandle(const FindHandle&) = delete;
  FindHandle& operator=(const FindHandle&) = delete;
  HANDLE Get() const { return handle_; }

private:
  HANDLE handle_;
};

class TreeReader {
public:
  TreeReader(std::span<const std::u16string_view> without, std::vector<FileStamp>& files)
      : without_(without), files_(files) {}

  // The system's error code, or 0.
  DWORD Read(const std::u16string& folder) {
    WIN32_FIND_DATAW entry{};
    const FindHandle found(FindFirstFileExW(ToWide(text::JoinPath(folder, u"*")).c_str(), FindExInfoBasic,
                                            &entry, FindExSearchNameMatch, nullptr, 0));
    if (found.Get() == INVALID_HANDLE_VALUE) return GetLastError();
    do {
      if (const DWORD error = Take(folder, entry); error != 0) return error;
    } while (FindNextFileW(found.Get(), &entry) != 0);
    const DWORD end = GetLastError();
    return end == ERROR_NO_MORE_FILES ? 0 : end;
  }

private:
  DWORD Take(const std::u16string& folder, const WIN32_FIND_DATAW& entry) {
    const std::u16string name = FromWide(entry.cFileName);
    const std::u16string path = text::JoinPath(folder, name);
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      files_.push_back(
          StampFrom(path, Joined(entry.nFileSizeHigh, entry.nFileSizeLow), entry.ftLastWriteTime));
      return 0;
    }
    const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return isLink || name == u"." || name == u".." || IsLeftOut(name, without_) ? 0 : Read(path);
  }

  std::span<const std::u16string_view> without_;
  std::vector<FileStamp>& files_;
};

} // namespace

Result<std::vector<FileStamp>> ListTreeUnsorted(std::u16string_view folder,
                                                std::span<const std::u16string_view> without) {
  const auto path = ResolveExisting(folder);
  if (!path) return FileFailure(u"list folder", folder, Reason(ERROR_PATH_NOT_FOUND));
  std::vector<FileStamp> files;
  if (const DWORD error = TreeReader(without, files).Read(*path); error != 0)
    return FileFailure(u"list folder", folder, Reason(error));
  return files;
}

Result<FileStamp> StampOfFile(std::u16string_view path) {
  const auto found = ResolveExisting(path);
  WIN32_FILE_ATTRIBUTE_DATA info{};
  if (!found || GetFileAttributesExW(ToWide(*found).c_str(), GetFileExInfoStandard, &info) == 0)
    return FileFailure(u"read", path, Reason(found ? GetLastError() : ERROR_FILE_NOT_FOUND));
  return StampFrom(*found, Joined(info.nFileSizeHigh, info.nFileSizeLow), info.ftLastWriteTime);
}

} // namespace kx::platform
