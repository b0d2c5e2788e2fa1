#include "package/web/WebAddress.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace kx {

namespace {

constexpr std::array<std::u16string_view, 6> Devices{u"CON", u"PRN", u"AUX", u"NUL", u"CONIN$", u"CONOUT$"};

// "%" and two hexadecimal digits are one byte; any other "%" stands for itself.
std::u16string Decode(std::u16string_view text) {
  const std::string bytes = text::ToUtf8(text);
  std::string decoded;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    unsigned char byte = 0;
    const char* const digits = bytes.data() + i + 1;
    const bool escaped = bytes[i] == '%' && bytes.size() - i > 2 &&
                         std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    decoded += escaped ? static_cast<char>(byte) : bytes[i];
    if (escaped) i += 2;
  }
  return text::FromUtf8(decoded);
}

bool StaysInItsFolder(std::u16string_view segment) {
  return segment != u"." && segment != u".." &&
         std::ranges::none_of(segment, [](char16_t c) { return c < u' ' || c == u'/' || c == u'\\'; });
}

std::u16string DecodeSegments(std::u16string_view path, std::u16string_view url) {
  std::u16string decoded;
  for (const auto segment : text::Split(path, u'/')) {
    const std::u16string name = Decode(segment);
    if (!StaysInItsFolder(name))
      throw EKxException(u"The address " + std::u16string(url) + u" cannot be used: \"" +
                         std::u16string(segment) + u"\" is not the name of a folder or file.");
    decoded += name + u"/";
  }
  decoded.pop_back();
  return decoded;
}

bool IsServerName(std::u16string_view host) {
  return std::ranges::any_of(host, [](char16_t c) { return c != u'.'; }) &&
         std::ranges::none_of(host, text::IsBlank);
}

// Host and port, what stands before "@" left out.
void SplitServer(std::u16string_view server, TWebAddress& address) {
  server.remove_prefix(server.rfind(u'@') + 1); // npos + 1 is 0
  const auto bracket = server.rfind(u']');
  const auto colon = server.find(u':', bracket == std::u16string_view::npos ? 0 : bracket);
  address.Host = server.substr(0, colon);
  if (colon != std::u16string_view::npos) address.Port = server.substr(colon + 1);
}

} // namespace

bool IsWebAddress(std::u16string_view location) {
  return text::FindIgnoreCase(location, u"http://") != std::u16string_view::npos ||
         text::FindIgnoreCase(location, u"https://") != std::u16string_view::npos;
}

TWebAddress ParseWebAddress(std::u16string_view url) {
  const auto scheme = url.find(u"://");
  std::u16string rest(scheme == std::u16string_view::npos ? u"" : url.substr(scheme + 3));
  rest.resize(std::min(rest.size(), rest.find_first_of(u"?#")));
  std::ranges::replace(rest, u'\\', u'/');
  TWebAddress address;
  address.IsSecure = scheme != url.npos && text::EndsWithIgnoreCase(url.substr(0, scheme), u"https");
  const auto path = std::min(rest.size(), rest.find(u'/'));
  SplitServer(std::u16string_view(rest).substr(0, path), address);
  if (!IsServerName(address.Host))
    throw EKxException(u"\"" + std::u16string(url) + u"\" is not a web address: it names no server.");
  if (path == rest.size()) return address;
  const std::u16string decoded = DecodeSegments(std::u16string_view(rest).substr(path), url);
  const auto document = decoded.rfind(u'/') + 1;
  address.Path = decoded.substr(0, document);
  address.Document = decoded.substr(document);
  return address;
}

bool IsPlainFileName(std::u16string_view name) {
  if (name.empty() || !StaysInItsFolder(name) || name.back() == u'.' || name.back() == u' ') return false;
  if (name.find_first_of(u":*?\"<>|") != std::u16string_view::npos) return false;
  const std::u16string_view stem = text::TrimRight(name.substr(0, name.find(u'.')));
  const bool numbered = stem.size() == 4 && (text::StartsWithIgnoreCase(stem, u"COM") ||
                                             text::StartsWithIgnoreCase(stem, u"LPT"));
  if (numbered &&
      std::u16string_view(u"0123456789\u00B9\u00B2\u00B3").find(stem[3]) != std::u16string_view::npos)
    return false;
  return std::ranges::none_of(Devices, [stem](auto device) { return text::EqualsIgnoreCase(device, stem); });
}

std::u16string AddTrailingSlash(std::u16string_view text) {
  return std::u16string(text) + (text.empty() || text.ends_with(u'/') ? u"" : u"/");
}

std::u16string RemoveTrailingSlash(std::u16string_view text) {
  if (text.ends_with(u'/')) text.remove_suffix(1);
  return std::u16string(text);
}

std::u16string TrimSlashes(std::u16string_view text) {
  if (text.starts_with(u'/')) text.remove_prefix(1);
  return RemoveTrailingSlash(text);
}

std::u16string SplitLastSegment(std::u16string& path) {
  path = RemoveTrailingSlash(path);
  const auto slash = path.rfind(u'/');
  if (slash == std::u16string::npos) return {};
  std::u16string tail = path.substr(slash + 1);
  path.resize(slash);
  return tail;
}

} // namespace kx
