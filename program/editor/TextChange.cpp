#include "program/editor/TextChange.h"

#include <algorithm>

namespace kx::editor {

TTextChange TTextChange::Between(const std::string& from, const std::string& to) {
  const auto begin = std::ranges::mismatch(from, to);
  const auto most = std::min(from.end() - begin.in1, to.end() - begin.in2);
  const auto end = std::mismatch(from.rbegin(), from.rbegin() + most, to.rbegin());
  return {static_cast<std::size_t>(begin.in1 - from.begin()),
          static_cast<std::size_t>(end.first.base() - begin.in1), std::string(begin.in2, end.second.base())};
}

std::string TTextChange::AppliedTo(const std::string& from) const {
  return std::string(from).replace(Begin, Size, Text);
}

TTextChange TTextChange::ReversedFor(const std::string& from) const {
  return {Begin, Text.size(), from.substr(Begin, Size)};
}

} // namespace kx::editor
