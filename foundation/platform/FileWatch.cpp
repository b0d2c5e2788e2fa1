#include "foundation/platform/FileWatch.h"

#include "foundation/platform/Files.h"

namespace kx::platform {

FileWatch::FileWatch(std::u16string_view path) : path_(path), found_(Look()), marked_(found_) {
  if (!found_) return;
  native_ = *ResolveExisting(path);
  SetStamp(found_->Written - std::chrono::hours(24));
  marked_ = StateOf(native_); // as the file system has rounded it
}

FileWatch::~FileWatch() {
  if (found_ && StateOf(native_) == marked_) SetStamp(found_->Written);
}

bool FileWatch::WasWritten() const {
  const auto now = Look();
  return now && now != marked_;
}

std::optional<FileWatch::State> FileWatch::Look() const {
  const auto native = ResolveExisting(path_);
  return native && FileExists(path_) ? StateOf(*native) : std::nullopt;
}

std::optional<FileWatch::State> FileWatch::StateOf(const std::filesystem::path& native) noexcept {
  std::error_code gone; // in between: as if it had not been there
  const State state{std::filesystem::last_write_time(native, gone),
                    gone ? 0 : std::filesystem::file_size(native, gone)};
  return gone ? std::nullopt : std::optional(state);
}

void FileWatch::SetStamp(std::filesystem::file_time_type stamp) const noexcept {
  std::error_code refused; // another user's file
  std::filesystem::last_write_time(native_, stamp, refused);
}

} // namespace kx::platform
