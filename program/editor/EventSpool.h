// The lines of a log that may be longer than memory should be: on disk but for the newest, found by number.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/platform/Spool.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx::editor {

// Takes up the buffer of a Spool and eight bytes a line, whatever the lines hold. When the disk takes no
// more, lines are lost, and only they: numbers go on. One thread at a time.
class TEventSpool {
public:
  explicit TEventSpool(std::u16string folder = platform::TemporaryDirectory()) : lines_(std::move(folder)) {}

  void Append(std::string_view line);
  std::size_t Count() const { return ends_.size(); }
  // Fails with the reason when lines were lost.
  const platform::Status& State() const { return lines_.State(); }

  // The lines from this number on, each behind a comma but the first: at least one if there is one, and not
  // more than about so many bytes. Lost ones are left out. `next` is the number behind the last of them.
  std::string Lines(std::size_t from, std::size_t bytes, std::size_t& next) const;
  std::optional<std::string> Line(std::size_t number) const; // nothing when it is lost, or not there

private:
  std::string Bytes(std::uint64_t begin, std::uint64_t end) const;
  std::uint64_t BeginOf(std::size_t number) const { return number == 0 ? 0 : ends_[number - 1]; }

  std::vector<std::uint64_t> ends_; // of each line, counted from the beginning
  platform::Spool lines_;
};

} // namespace kx::editor
