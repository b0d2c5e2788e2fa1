#include "program/runner/Messages.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

std::u16string Quoted(std::u16string_view text) {
  return u'"' + std::u16string(text) + u'"';
}

std::u16string NeedNotMet(std::u16string_view other) {
  return u"Skipped: " + Quoted(other) + u", which it needs, has not succeeded.";
}

std::u16string DidYouMean(std::u16string_view name, std::span<const std::u16string> candidates) {
  // Comparing takes the product of both lengths; what is this long is no misspelt name.
  constexpr std::size_t LongestName = 200;
  if (name.size() > LongestName) return {};
  const std::u16string nearest = text::NearestName(name, candidates);
  return nearest.empty() ? std::u16string() : u" Did you mean " + Quoted(nearest) + u"?";
}

void RefuseFile(std::u16string_view fileName, int line, std::u16string_view message) {
  std::u16string text(fileName);
  if (line > 0) text += u"(" + text::FromInteger(line) + u")";
  throw EKxParseError(text + u": " + std::u16string(message), {}, line);
}

int LineOfByte(std::string_view bytes, std::size_t position) {
  return 1 + static_cast<int>(std::ranges::count(bytes.substr(0, position), '\n'));
}

std::string_view RequireUtf8(std::string_view bytes, std::u16string_view fileName) {
  const auto mark = text::DetectByteOrderMark(bytes);
  if (mark == text::ByteOrderMark::Utf8) bytes.remove_prefix(text::LengthOf(mark));
  const std::size_t valid = text::ValidUtf8Prefix(bytes);
  if (valid != bytes.size())
    RefuseFile(fileName, LineOfByte(bytes, valid), u"The file must be in UTF-8; this line is not.");
  return bytes;
}

} // namespace kx
