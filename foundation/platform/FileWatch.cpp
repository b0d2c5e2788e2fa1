#include "foundation/platform/FileWatch.h"

#include "foundation/platform/Files.h"

namespace kx::platform {

FileWatch::FileWatch(std::u16string_view path) : path_(path), found_(Look(path)), marked_(found_) {
  if (!found_) return;
  SetStamp(found_->Written - std::chrono::hours(24));
  marked_ = Look(path); // as the file system has rounded it
}

FileWatch::~FileWatch() {
  if (found_ && Look(path_) == marked_) SetStamp(found_->Written);
}

bool FileWatch::WasWritten() const {
  const auto now = Look(path_);
  return now && now != marked_;
}

std::optional<FileWatch::State> FileWatch::Look(std::u16string_view path) {
  const auto native = ResolveExisting(path);
  if (!native || !FileExists(path)) return std::nullopt;
  std::error_code gone; // in between: as if it had not been there
  const std::filesystem::path file(*native);
  const State state{std::filesystem::last_write_time(file, gone),
                    gone ? 0 : std::filesystem::file_size(file, gone)};
  return gone ? std::nullopt : std::optional(state);
}

void FileWatch::SetStamp(std::filesystem::file_time_type stamp) const {
  std::error_code refused; // another user's file
  if (const auto native = ResolveExisting(path_)) std::filesystem::last_write_time(*native, stamp, refused);
}

} // namespace kx::platform
