// The lines of a log that may be longer than memory should be: on disk but for the newest, found by number.
#pragma once

#include "foundation/platform/PrivateFolder.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

// Takes up MostInMemory and eight bytes a line, whatever the lines hold. The file lies in a folder that only
// this user gets into, and goes away with this object. When the disk takes no more, lines are lost, and only
// they: numbers go on. One thread at a time.
class TEventSpool {
public:
  static constexpr std::size_t MostInMemory = std::size_t{1} << 20;

  TEventSpool() = default;
  TEventSpool(const TEventSpool&) = delete;
  TEventSpool& operator=(const TEventSpool&) = delete;
  ~TEventSpool();

  void Append(std::string_view line);
  std::size_t Count() const { return ends_.size(); }
  // Why lines were lost; empty when none were.
  const std::u16string& Failure() const { return failure_; }

  // The lines from this number on, each behind a comma but the first: at least one if there is one, and not
  // more than about so many bytes. Lost ones are left out. `next` is the number behind the last of them.
  std::string Lines(std::size_t from, std::size_t bytes, std::size_t& next);
  std::optional<std::string> Line(std::size_t number); // nothing when it is lost, or not there

private:
  void Write();
  bool Open();
  void Fail(std::u16string reason);
  std::string Bytes(std::uint64_t begin, std::uint64_t end);
  std::uint64_t BeginOf(std::size_t number) const { return number == 0 ? 0 : ends_[number - 1]; }

  std::vector<std::uint64_t> ends_; // of each line, counted from the beginning
  std::uint64_t written_ = 0;       // bytes in the file
  std::string newest_;              // those behind them
  std::optional<platform::PrivateFolder> folder_;
  std::fstream file_;
  std::u16string failure_;
};

} // namespace kx::editor
