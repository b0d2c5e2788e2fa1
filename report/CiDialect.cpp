#include "report/CiDialect.h"

#include "platform/System.h"
#include "report/SourceLocation.h"
#include "text/Encoding.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace kx {

namespace {

constexpr char16_t Invisible = u'\u200B';

struct TEscape {
  char16_t Character;
  std::u16string_view Text;
};

std::string Escaped(std::u16string_view text, std::span<const TEscape> escapes) {
  std::u16string out;
  for (const char16_t c : text) {
    const auto found = std::ranges::find(escapes, c, &TEscape::Character);
    if (found == escapes.end())
      out += c;
    else
      out += found->Text;
  }
  return text::ToUtf8(out);
}

// Breaks every `marker` of the line after its first `keep` characters.
std::u16string Broken(std::u16string_view line, std::u16string_view marker, std::size_t keep) {
  const std::u16string replacement =
      std::u16string(marker.substr(0, keep)) + Invisible + std::u16string(marker.substr(keep));
  return text::ReplaceAll(line, marker, replacement, text::Case::Ignore);
}

// The path as seen from `root`, with the separators that these systems use.
std::u16string SeenFrom(std::u16string_view root, std::u16string_view file) {
  std::u16string path = text::ReplaceAll(file, u"\\", u"/");
  const std::u16string folder = text::ReplaceAll(root, u"\\", u"/") + u"/";
  return folder.size() > 1 && text::StartsWithIgnoreCase(path, folder) ? path.substr(folder.size()) : path;
}

std::string Number(int number) {
  return std::to_string(number);
}

// --- GitHub Actions ---

constexpr std::array<TEscape, 3> GitHubText{{{u'%', u"%25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}}};
constexpr std::array<TEscape, 5> GitHubProperty{
    {{u'%', u"%25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}, {u':', u"%3A"}, {u',', u"%2C"}}};

std::string GitHubStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return "::group::" + Escaped(title, GitHubText);
}
std::string GitHubEnd(std::u16string_view /*title*/, int /*id*/, std::int64_t /*time*/) {
  return "::endgroup::";
}
std::string GitHubProblem(std::u16string_view text, bool isError, std::u16string_view root) {
  std::string command = isError ? "::error" : "::warning";
  const auto location = FindSourceLocation(text);
  if (location) {
    command += " file=" + Escaped(SeenFrom(root, location->File), GitHubProperty) +
               ",line=" + Number(location->Line);
    if (location->Column > 0) command += ",col=" + Number(location->Column);
  }
  return command + "::" + Escaped(location ? location->Rest : text, GitHubText);
}
// Its older form of commands counts anywhere in a line.
std::u16string GitHubHarmless(std::u16string_view line) {
  std::u16string shown = Broken(line, u"##[", 2);
  const std::size_t start = shown.size() - text::TrimLeft(shown).size();
  if (std::u16string_view(shown).substr(start).starts_with(u"::")) shown.insert(start + 1, 1, Invisible);
  return shown;
}

// --- Azure Pipelines ---

constexpr std::array<TEscape, 5> AzureProperty{
    {{u'%', u"%AZP25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}, {u';', u"%3B"}, {u']', u"%5D"}}};

std::string AzureStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return "##[group]" + Escaped(title, GitHubText);
}
std::string AzureEnd(std::u16string_view /*title*/, int /*id*/, std::int64_t /*time*/) {
  return "##[endgroup]";
}
std::string AzureProblem(std::u16string_view text, bool isError, std::u16string_view root) {
  std::string command = std::string("##vso[task.logissue type=") + (isError ? "error" : "warning") + ";";
  const auto location = FindSourceLocation(text);
  if (location) {
    command += "sourcepath=" + Escaped(SeenFrom(root, location->File), AzureProperty) +
               ";linenumber=" + Number(location->Line) + ";";
    if (location->Column > 0) command += "columnnumber=" + Number(location->Column) + ";";
  }
  constexpr std::array<TEscape, 3> message{{{u'%', u"%AZP25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}}};
  return command + "]" + Escaped(location ? location->Rest : text, message);
}
std::u16string AzureHarmless(std::u16string_view line) {
  return Broken(Broken(line, u"##[", 2), u"##vso[", 2);
}

// --- TeamCity ---

constexpr std::array<TEscape, 9> TeamCityValue{{{u'|', u"||"},
                                                {u'\'', u"|'"},
                                                {u'\n', u"|n"},
                                                {u'\r', u"|r"},
                                                {u'[', u"|["},
                                                {u']', u"|]"},
                                                {u'\u0085', u"|x"},
                                                {u'\u2028', u"|l"},
                                                {u'\u2029', u"|p"}}};

std::string TeamCityStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return "##teamcity[blockOpened name='" + Escaped(title, TeamCityValue) + "']";
}
std::string TeamCityEnd(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return "##teamcity[blockClosed name='" + Escaped(title, TeamCityValue) + "']";
}
std::string TeamCityProblem(std::u16string_view text, bool isError, std::u16string_view /*root*/) {
  return "##teamcity[message text='" + Escaped(text, TeamCityValue) + "' status='" +
         (isError ? "ERROR" : "WARNING") + "']";
}
std::u16string TeamCityHarmless(std::u16string_view line) {
  return Broken(line, u"##teamcity[", 2);
}

// --- GitLab ---

// Its commands begin with an escape character, which no line that is shown keeps.
std::string GitLabSection(const char* kind, int id, std::int64_t time) {
  return std::string("\x1b[0Ksection_") + kind + ":" + std::to_string(time) + ":kxhost_" + Number(id) +
         "\r\x1b[0K";
}
std::string GitLabStart(std::u16string_view title, int id, std::int64_t time) {
  return GitLabSection("start", id, time) + text::ToUtf8(title);
}
std::string GitLabEnd(std::u16string_view /*title*/, int id, std::int64_t time) {
  return GitLabSection("end", id, time);
}
std::string GitLabProblem(std::u16string_view /*text*/, bool /*isError*/, std::u16string_view /*root*/) {
  return {};
}
std::u16string GitLabHarmless(std::u16string_view line) {
  return std::u16string(line);
}

constexpr std::array<TCiDialect, 4> Dialects{
    {{"github", u"GITHUB_ACTIONS", false, GitHubStart, GitHubEnd, GitHubProblem, GitHubHarmless,
      u"GITHUB_WORKSPACE"},
     {"azure", u"TF_BUILD", false, AzureStart, AzureEnd, AzureProblem, AzureHarmless,
      u"BUILD_SOURCESDIRECTORY"},
     {"teamcity", u"TEAMCITY_VERSION", true, TeamCityStart, TeamCityEnd, TeamCityProblem, TeamCityHarmless,
      u""},
     {"gitlab", u"GITLAB_CI", true, GitLabStart, GitLabEnd, GitLabProblem, GitLabHarmless, u""}}};

} // namespace

const TCiDialect* FindCiDialect(std::string_view name) {
  const auto* const found = std::ranges::find(Dialects, name, &TCiDialect::Name);
  return found == Dialects.end() ? nullptr : found;
}

const TCiDialect* DetectCiDialect() {
  const auto* const found = std::ranges::find_if(Dialects, [](const TCiDialect& dialect) {
    return !platform::EnvironmentVariable(dialect.Variable).value_or(u"").empty();
  });
  return found == Dialects.end() ? nullptr : found;
}

} // namespace kx
