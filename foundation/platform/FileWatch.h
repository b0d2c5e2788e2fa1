// Whether a file is written in the meantime.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

// Tells whether the file is made or written while this object lives, by whomever and with whatever content.
// Time stamps alone cannot: some file systems tell only seconds apart, and a tool may keep those of what it
// copies. So a file that is there already bears an older stamp for that time; it gets its own back unless it
// was written. Where the stamp cannot be set, stamp and size are compared as they are.
class FileWatch {
public:
  explicit FileWatch(std::u16string_view path);
  ~FileWatch();
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;

  bool WasWritten() const; // False, too, for a file that is gone

private:
  struct State {
    std::filesystem::file_time_type Written;
    std::uintmax_t Size = 0;
    bool operator==(const State&) const = default;
  };
  std::optional<State> Look() const; // nothing where no file is
  static std::optional<State> StateOf(const std::filesystem::path& native) noexcept;
  void SetStamp(std::filesystem::file_time_type stamp) const noexcept;

  std::u16string path_;
  std::filesystem::path native_; // where it was found; the stamp is given back without memory
  std::optional<State> found_;
  std::optional<State> marked_;
};

} // namespace kx::platform
