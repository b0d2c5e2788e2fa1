// What makes one text of another.
#pragma once

#include <cstddef>
#include <string>

namespace kx::editor {

// One place that is replaced: as large as what differs, not as the texts.
struct TTextChange {
  std::size_t Begin = 0;
  std::size_t Size = 0; // of what stood there
  std::string Text = {};

  static TTextChange Between(const std::string& from, const std::string& to);
  // Both for the text that it was made for.
  std::string AppliedTo(const std::string& from) const;
  TTextChange ReversedFor(const std::string& from) const;
};

} // namespace kx::editor
