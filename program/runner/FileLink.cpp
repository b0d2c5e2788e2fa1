#include "program/runner/FileLink.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr auto npos = std::u16string_view::npos;
constexpr std::u16string_view FileMark = u"{file}";
// What browsers show, fetch or run themselves.
constexpr auto Refused = std::to_array<std::u16string_view>(
    {u"about", u"blob", u"chrome", u"data", u"edge", u"file", u"filesystem", u"ftp", u"http", u"https",
     u"intent", u"mailto", u"javascript", u"vbscript", u"view-source", u"wss"});

bool IsSchemeCharacter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || text::IsDigit(c) || c == u'+' || c == u'-' ||
         c == u'.';
}

bool IsScheme(std::u16string_view scheme) {
  const bool isOne =
      !scheme.empty() && !text::IsDigit(scheme.front()) && std::ranges::all_of(scheme, IsSchemeCharacter);
  return isOne && std::ranges::none_of(Refused, [scheme](std::u16string_view one) {
           return text::EqualsIgnoreCase(one, scheme);
         });
}

bool IsAddress(std::u16string_view link) {
  return std::ranges::all_of(link, [](char16_t c) {
    return c > u' ' && c < u'\x7F' && c != u'"' && c != u'<' && c != u'>' && c != u'\\' && c != u'`';
  });
}

std::string Escaped(std::u16string_view file) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string escaped;
  for (const char byte : text::ToUtf8(text::ReplaceAll(file, u"\\", u"/"))) {
    const auto value = static_cast<unsigned char>(byte);
    const bool isPlain =
        value < 0x80 && (IsSchemeCharacter(value) || byte == '/' || byte == '_' || byte == '~');
    if (isPlain && byte != '+') {
      escaped += byte;
    } else {
      escaped += {'%', digits[value >> 4U], digits[value & 15U]};
    }
  }
  return escaped;
}

} // namespace

void RequireFileLink(std::u16string_view link) {
  const std::size_t colon = link.find(u':');
  const bool isLink = colon != npos && IsScheme(link.substr(0, colon)) && IsAddress(link) &&
                      link.find(FileMark, colon) != npos;
  if (!isLink)
    throw EKxException(
        u"The address of an editor looks like scheme://file/{file}:{line}:{column}, with a scheme that a "
        u"program on this machine has registered; not " +
        Quoted(link) + u".");
}

std::string FileLink(std::u16string_view link, std::u16string_view file, int line, int column) {
  RequireFileLink(link);
  std::string address = text::ToUtf8(link);
  const auto put = [&address](std::string_view mark, std::string_view value) {
    for (std::size_t at = address.find(mark); at != address.npos; at = address.find(mark, at + value.size()))
      address.replace(at, mark.size(), value);
  };
  std::string path = Escaped(file);
  // "/{file}" is one slash where the path begins with its own.
  if (path.starts_with('/') && address.find("/{file}") != address.npos) path.erase(0, 1);
  put("{line}", std::to_string(std::max(line, 1)));
  put("{column}", std::to_string(std::max(column, 1)));
  put("{file}", path); // last: a name may hold the other marks
  return address;
}

} // namespace kx
