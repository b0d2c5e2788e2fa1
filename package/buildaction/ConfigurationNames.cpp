#include "package/buildaction/ConfigurationNames.h"

#include "contract/Utilities.h"
#include "foundation/formats/RegEx.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <vector>

namespace kx {

namespace {

constexpr std::size_t MostOffered = 12;
constexpr std::size_t LongestName = 200; // what is longer is no misspelt name

std::u16string_view ConfigurationPart(std::u16string_view name) {
  return name.substr(0, name.find(u'|'));
}
std::u16string_view PlatformPart(std::u16string_view name) {
  const auto bar = name.find(u'|');
  return bar == std::u16string_view::npos ? std::u16string_view() : name.substr(bar + 1);
}

std::vector<std::u16string> NamesOf(const IVSDotNetSolution& solution) {
  std::vector<std::u16string> names;
  const auto known = solution.GetConfigurations();
  for (int i = 0; known && i < known->GetCount(); ++i)
    names.push_back(known->GetItem(i)->GetName());
  return names;
}

std::u16string InWords(std::span<const std::u16string> names) {
  if (names.size() <= MostOffered) return text::Join(names, u", ");
  return text::Join(names.first(MostOffered), u", ") + u" and " +
         text::FromInteger(static_cast<std::int64_t>(names.size() - MostOffered)) + u" more";
}

// The configuration that may have been meant; a platform that was left out is not a mistake to count.
std::u16string Nearest(std::u16string_view wanted, const std::vector<std::u16string>& names) {
  if (wanted.size() > LongestName) return {};
  if (std::u16string whole = text::NearestName(wanted, names); !whole.empty()) return whole;
  std::vector<std::u16string> parts;
  parts.reserve(names.size());
  for (const auto& name : names)
    parts.emplace_back(ConfigurationPart(name));
  const std::u16string part = text::NearestName(ConfigurationPart(wanted), parts);
  const auto found = std::ranges::find(parts, part);
  return found == parts.end() ? std::u16string() : names[static_cast<std::size_t>(found - parts.begin())];
}

std::u16string DidYouMean(std::u16string_view nearest) {
  return nearest.empty() ? std::u16string() : u" Did you mean " + DoubleQuoteString(nearest) + u"?";
}

// The pieces between the bars that stand in no group and in no class.
std::vector<std::u16string_view> Alternatives(std::u16string_view expression) {
  std::vector<std::u16string_view> pieces;
  int depth = 0;
  bool inClass = false;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < expression.size(); ++i) {
    const char16_t c = expression[i];
    if (c == u'\\') {
      ++i;
    } else if (inClass) {
      inClass = c != u']';
    } else if (c == u'[') {
      inClass = true;
    } else if (c == u'(') {
      ++depth;
    } else if (c == u')') {
      --depth;
    } else if (c == u'|' && depth == 0) {
      pieces.push_back(expression.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  pieces.push_back(expression.substr(std::min(begin, expression.size())));
  return pieces;
}

// A dot stands for itself unless something repeats it: names have dots.
bool IsPlain(std::u16string_view piece) {
  return piece.find_first_of(u"^$*+?()[]{}\\") == std::u16string_view::npos;
}

std::u16string_view WithoutAnchors(std::u16string_view piece) {
  if (piece.starts_with(u'^')) piece.remove_prefix(1);
  if (piece.ends_with(u'$')) piece.remove_suffix(1);
  return text::Trim(piece);
}

bool IsPlatform(std::u16string_view piece, std::span<const std::u16string> names) {
  for (const std::u16string_view usual :
       {u"Any CPU", u"AnyCPU", u"Mixed Platforms", u"x86", u"x64", u"Win32", u"Itanium", u"ARM"})
    if (text::EqualsIgnoreCase(piece, usual)) return true;
  return std::ranges::any_of(
      names, [piece](const auto& name) { return text::EqualsIgnoreCase(PlatformPart(name), piece); });
}

bool IsWholePart(std::u16string_view piece, std::u16string_view name) {
  return !piece.empty() && (piece == name || piece == ConfigurationPart(name) || piece == PlatformPart(name));
}

// Plain words: meant as an expression when each of them stands for a configuration or a platform as a whole.
bool AreChosenWords(const std::vector<std::u16string_view>& pieces, std::span<const std::u16string> names,
                    std::span<const std::u16string> matched) {
  const auto isKnown = [names](std::u16string_view piece) {
    return std::ranges::any_of(names, [piece](const auto& name) { return IsWholePart(piece, name); });
  };
  const auto isAsked = [&pieces](const std::u16string& name) {
    return std::ranges::any_of(pieces, [&name](auto piece) { return IsWholePart(piece, name); });
  };
  return std::ranges::all_of(pieces, isKnown) && std::ranges::all_of(matched, isAsked);
}

bool LooksLikeName(std::u16string_view wanted, std::span<const std::u16string> names,
                   std::span<const std::u16string> matched) {
  const auto pieces = Alternatives(wanted);
  if (pieces.size() > 1) {
    const bool endsInPlatform = IsPlatform(WithoutAnchors(pieces.back()), names);
    if (endsInPlatform && !IsPlatform(WithoutAnchors(pieces.front()), names)) return true;
  }
  return std::ranges::all_of(pieces, IsPlain) && !AreChosenWords(pieces, names, matched);
}

// The name as an expression that matches nothing else.
std::u16string ExactExpression(std::u16string_view name) {
  std::u16string expression = u"^";
  for (const char16_t c : name) {
    if (std::u16string_view(u"^$*+?()[]{}\\|.").find(c) != std::u16string_view::npos) expression += u'\\';
    expression += c;
  }
  return expression + u"$";
}

std::u16string Unknown(const IVSDotNetSolution& solution, std::u16string_view wanted) {
  return text::ExtractFileName(solution.GetFileName()) + u" has no configuration " +
         DoubleQuoteString(wanted);
}

} // namespace

std::u16string MissingConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted) {
  std::vector<std::u16string> names = NamesOf(solution);
  if (names.empty()) return Unknown(solution, wanted) + u": it has none at all.";
  const std::u16string nearest = Nearest(wanted, names);
  if (const auto found = std::ranges::find(names, nearest); found != names.end())
    std::rotate(names.begin(), found, found + 1);
  return Unknown(solution, wanted) + u"." + DidYouMean(nearest) + u" It has " + InWords(names) + u".";
}

std::u16string GuessedConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted,
                                    std::span<const std::u16string> matched) {
  const std::vector<std::u16string> names = NamesOf(solution);
  const bool isName =
      std::ranges::any_of(names, [wanted](const auto& name) { return text::EqualsIgnoreCase(name, wanted); });
  if (isName || matched.empty() || !LooksLikeName(wanted, names, matched)) return {};
  const std::u16string nearest = Nearest(wanted, names);
  return Unknown(solution, wanted) + u". Read as an expression, it matches " + InWords(matched) + u"." +
         DidYouMean(nearest) + u" To ask for one name alone, write it as " +
         ExactExpression(nearest.empty() ? matched.front() : nearest) +
         u" or set UseRegExOnConfigName to False.";
}

bool MayToolKnowConfiguration(const IVSDotNetSolution& solution, std::u16string_view wanted) {
  const std::vector<std::u16string> names = NamesOf(solution);
  return names.empty() || std::ranges::any_of(names, [wanted](const auto& name) {
           return text::EqualsIgnoreCase(ConfigurationPart(name), wanted);
         });
}

} // namespace kx
