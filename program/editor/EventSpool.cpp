#include "program/editor/EventSpool.h"

#include <algorithm>

namespace kx::editor {

void TEventSpool::Append(std::string_view line) {
  // First: without an end, for want of memory, it would be part of the next line.
  ends_.push_back(lines_.Size());
  lines_.Append(line);
  ends_.back() = lines_.Size();
  // What the disk has not taken is lost, with lines before this one; their numbers stay.
  for (auto end = ends_.rbegin() + 1; end != ends_.rend() && *end > lines_.Size(); ++end)
    *end = lines_.Size();
}

std::string TEventSpool::Bytes(std::uint64_t begin, std::uint64_t end) const {
  std::string bytes;
  // What cannot be read is left out as what is lost.
  static_cast<void>(lines_.CopyTo(
      [&bytes](std::string_view piece) -> platform::Status {
        bytes += piece;
        return platform::Done{};
      },
      begin, end));
  return bytes;
}

std::string TEventSpool::Lines(std::size_t from, std::size_t bytes, std::size_t& next) const {
  from = std::min(from, Count());
  const std::uint64_t begin = BeginOf(from);
  const auto end =
      std::upper_bound(ends_.begin() + static_cast<std::ptrdiff_t>(from), ends_.end(), begin + bytes);
  next = std::min(std::max(static_cast<std::size_t>(end - ends_.begin()), from + 1), Count());
  const std::string text = Bytes(begin, BeginOf(next));
  std::string joined;
  joined.reserve(text.size() + next - from);
  for (std::size_t number = from; number < next; ++number) {
    const std::uint64_t at = BeginOf(number) - begin;
    const std::uint64_t size = ends_[number] - BeginOf(number);
    if (size == 0 || at + size > text.size()) continue;
    if (!joined.empty()) joined += ',';
    joined.append(text, static_cast<std::size_t>(at), static_cast<std::size_t>(size));
  }
  return joined;
}

std::optional<std::string> TEventSpool::Line(std::size_t number) const {
  if (number >= Count()) return std::nullopt;
  std::string line = Bytes(BeginOf(number), ends_[number]);
  if (line.empty()) return std::nullopt;
  return line;
}

} // namespace kx::editor
