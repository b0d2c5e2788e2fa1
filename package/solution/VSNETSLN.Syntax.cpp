#include "package/solution/VSNETSLN.Syntax.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::slnsyntax {

namespace {

constexpr std::size_t npos = std::string_view::npos;

std::string_view TrimLeft(std::string_view text) {
  while (!text.empty() && IsBlank(text.front()))
    text.remove_prefix(1);
  return text;
}

// The digits between "Format Version " and the ".": too many of them are no number, which no version has.
TVSDotNetVersion VersionOf(std::string_view digits) {
  const auto number = text::ToIntegerOr(text::FromAscii(digits), 0);
  const auto row = std::ranges::find(VSDotNetVersions, number, &TVSDotNetVersionRow::Format);
  return static_cast<TVSDotNetVersion>(row - VSDotNetVersions.begin()); // vsUnknown behind the last
}

// Takes the first item off the text.
void TakePlain(std::string_view& rest, std::string& item) {
  const auto ends = [](char c) { return IsBlank(c) || c == ','; };
  const auto length = static_cast<std::size_t>(std::ranges::find_if(rest, ends) - rest.begin());
  item.assign(rest.substr(0, length));
  rest.remove_prefix(length);
}

void TakeQuoted(std::string_view& rest, std::string& item) {
  item.clear();
  for (;;) {
    rest.remove_prefix(1);
    const std::size_t end = std::min(rest.find('"'), rest.size());
    item.append(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!rest.starts_with('"')) return;
    item.push_back('"');
  }
}

} // namespace

std::string_view Trim(std::string_view text) {
  text = TrimLeft(text);
  while (!text.empty() && IsBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

std::optional<TVSDotNetVersion> ReadHeader(std::string_view line) {
  constexpr std::string_view title = "Microsoft Visual Studio Solution File, Format Version ";
  for (std::size_t at = line.find(title); at != npos; at = line.find(title, at + 1)) {
    const std::string_view rest = line.substr(at + title.size());
    const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
    if (digits > 0 && rest.substr(digits).starts_with('.')) return VersionOf(rest.substr(0, digits));
  }
  return std::nullopt;
}

std::optional<TNameValue> SplitNameValue(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == npos) return std::nullopt;
  return TNameValue{line.substr(0, equals), line.substr(equals + 1)};
}

bool TIdentifierCut::Cut(std::string_view text) {
  if (bytes_.size() == Length && text.starts_with(bytes_)) {
    rest_ = text.substr(Length);
    return false;
  }
  const std::size_t length = std::min(text.size(), Length);
  unsigned char all = 0;
  for (std::size_t i = 0; i < length; ++i) {
    all = static_cast<unsigned char>(all | static_cast<unsigned char>(text[i]));
    ascii_[i] = static_cast<unsigned char>(text[i]);
  }
  if (all < 0x80) {
    identifier_ = {ascii_.data(), length};
    bytes_ = text.substr(0, length);
    rest_ = text.substr(length);
    return true;
  }
  bytes_.clear();
  wide_ = text::FromUtf8(text);
  identifier_ = std::u16string_view(wide_).substr(0, Length);
  decoded_ = text::ToUtf8(std::u16string_view(wide_).substr(identifier_.size()));
  rest_ = decoded_;
  return true;
}

std::size_t TCommaItems::Split(std::string_view text) {
  std::string_view rest = TrimLeft(text);
  std::size_t count = 0;
  while (!rest.empty() && count < Most) {
    std::string& item = items_[count++];
    rest.front() == '"' ? TakeQuoted(rest, item) : TakePlain(rest, item);
    rest = TrimLeft(rest);
    if (!rest.starts_with(',')) continue;
    rest.remove_prefix(1);
    // A comma at the very end has an empty item behind it.
    if (rest.empty() && count < Most) items_[count++].clear();
    rest = TrimLeft(rest);
  }
  return count;
}

std::optional<TProjectConfigLine> ReadProjectConfig(std::string_view text) {
  constexpr std::string_view active = ".ActiveCfg";
  constexpr std::string_view build = ".Build.0";
  constexpr std::string_view equals = " = ";
  // A later dot than the first can begin a match only where the first one can too, and the greedy group
  // behind it takes all up to the last place where the keyword fits.
  const std::size_t dot = text.find('.');
  if (dot == npos || text.size() < equals.size() + 1) return std::nullopt;
  for (std::size_t at = text.size() - equals.size() - 1; (at = text.rfind(equals, at)) != npos && at > dot;
       --at) {
    const std::string_view before = text.substr(0, at);
    const bool isActive = before.ends_with(active);
    if (!isActive && !before.ends_with(build)) continue;
    const std::size_t keyword = at - (isActive ? active.size() : build.size());
    // The group has one character at least.
    if (keyword < dot + 2) continue;
    return TProjectConfigLine{text.substr(dot + 1, keyword - dot - 1), text.substr(at + equals.size()),
                              isActive};
  }
  return std::nullopt;
}

bool IsFolderType(std::u16string_view typeId) {
  return text::EqualsIgnoreCase(typeId, u"{2150E333-8FDC-42A3-9474-1A3956D46DE8}");
}

} // namespace kx::slnsyntax
