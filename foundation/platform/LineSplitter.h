// Cuts what arrives in blocks into lines: LF or CR LF ends one, a lone CR does not. A line beyond the limit
// comes in pieces that never part the bytes of one character.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kx::platform {

class LineSplitter {
public:
  using Sink = std::function<void(std::string_view line)>; // the view lives for the call

  explicit LineSplitter(Sink sink, std::size_t limit = std::size_t{64} << 20);

  void Feed(std::string_view block);
  void Finish(); // delivers what has no line end

private:
  void Deliver(std::string_view line);
  void Keep(std::string_view part);

  Sink sink_;
  std::size_t limit_;
  std::string pending_;
};

} // namespace kx::platform
