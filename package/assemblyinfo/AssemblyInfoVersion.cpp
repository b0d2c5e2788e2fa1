#include "package/assemblyinfo/AssemblyInfoVersion.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view FileVersion = u"AssemblyFileVersion";

constexpr std::size_t MostParts = 4;
constexpr std::size_t FirstWildcard = 2; // the build number

std::u16string Quoted(std::u16string_view text) {
  return u"\"" + std::u16string(text) + u"\"";
}

std::optional<std::u16string> CheckPart(std::u16string_view part, std::int32_t most) {
  if (part.empty()) return u"a part in the middle is empty";
  if (!std::ranges::all_of(part, text::IsDigit)) return Quoted(part) + u" is no number";
  if (text::ToIntegerOr(part, most + 1) <= most) return std::nullopt;
  return std::u16string(part) + u" is more than " + text::FromInteger(most);
}

} // namespace

std::u16string TrimAssemblyVersion(std::u16string_view version) {
  const std::size_t last = version.find_last_not_of(u'.');
  return std::u16string(version.substr(0, last == std::u16string_view::npos ? 0 : last + 1));
}

bool IsAssemblyVersionAttribute(std::u16string_view attribute) {
  return attribute == u"AssemblyVersion" || attribute == FileVersion;
}

std::optional<std::u16string> CheckAssemblyVersion(std::u16string_view attribute,
                                                   std::u16string_view version) {
  const std::u16string trimmed = TrimAssemblyVersion(version);
  const auto parts = text::Split(trimmed, u'.');
  const bool ofFile = attribute == FileVersion;
  const auto refused = [&](const std::u16string& reason) {
    return std::u16string(attribute) + u" " + Quoted(trimmed) + u" is no version that compilers take: " +
           reason;
  };
  if (trimmed.empty()) return refused(u"it is empty");
  if (parts.size() > MostParts) return refused(u"it has more than four parts");
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const bool wildcard = parts[i] == u"*" && i + 1 == parts.size() && i >= FirstWildcard;
    const auto reason = wildcard ? std::nullopt : CheckPart(parts[i], ofFile ? 65535 : 65534);
    if (reason) return refused(*reason);
  }
  return std::nullopt;
}

} // namespace kx
