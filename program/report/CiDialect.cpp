#include "program/report/CiDialect.h"

#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/report/CiGuard.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace kx {

struct TCiCommands {
  static TCiCommand Line(std::string line) { return TCiCommand(std::move(line)); }
};

namespace {

TCiCommand Command(std::string line) {
  return TCiCommands::Line(std::move(line));
}

struct TEscape {
  char16_t Character;
  std::u16string_view Text;
};

std::string Escaped(std::u16string_view text, std::span<const TEscape> escapes) {
  std::u16string out;
  for (const char16_t c : HarmlessForCi(text)) {
    const auto found = std::ranges::find(escapes, c, &TEscape::Character);
    if (found == escapes.end())
      out += c;
    else
      out += found->Text;
  }
  return text::ToUtf8(out);
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

// Of a title that is shown as it stands.
constexpr std::array<TEscape, 1> OneLine{{{u'\n', u" "}}};

// --- GitHub Actions ---

constexpr std::array<TEscape, 3> GitHubText{{{u'%', u"%25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}}};
constexpr std::array<TEscape, 5> GitHubProperty{
    {{u'%', u"%25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}, {u':', u"%3A"}, {u',', u"%2C"}}};

TCiCommand GitHubStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return Command("::group::" + Escaped(title, GitHubText));
}
TCiCommand GitHubEnd(std::u16string_view /*title*/, int /*id*/, std::int64_t /*time*/) {
  return Command("::endgroup::");
}
TCiCommand GitHubProblem(const TFinding& finding, std::u16string_view root) {
  std::string properties;
  const auto add = [&properties](const char* name, const std::string& value) {
    properties += (properties.empty() ? " " : ",") + std::string(name) + "=" + value;
  };
  const TFindingPlace& place = finding.Place;
  if (!place.File.empty()) add("file", Escaped(SeenFrom(root, place.File), GitHubProperty));
  if (place.Line > 0) add("line", Number(place.Line));
  if (place.Column > 0) add("col", Number(place.Column));
  if (!finding.Code.empty()) add("title", Escaped(finding.Code, GitHubProperty));
  return Command(std::string("::") + WordOf(finding.Severity) + properties +
                 "::" + Escaped(finding.Message, GitHubText));
}
// --- Azure Pipelines ---

constexpr std::array<TEscape, 5> AzureProperty{
    {{u'%', u"%AZP25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}, {u';', u"%3B"}, {u']', u"%5D"}}};

// Such a line is shown as it stands, nothing in it is decoded.
TCiCommand AzureStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return Command("##[group]" + Escaped(title, OneLine));
}
TCiCommand AzureEnd(std::u16string_view /*title*/, int /*id*/, std::int64_t /*time*/) {
  return Command("##[endgroup]");
}
TCiCommand AzureProblem(const TFinding& finding, std::u16string_view root) {
  std::string command = std::string("##vso[task.logissue type=") + WordOf(finding.Severity) + ";";
  const TFindingPlace& place = finding.Place;
  if (!place.File.empty())
    command += "sourcepath=" + Escaped(SeenFrom(root, place.File), AzureProperty) + ";";
  if (place.Line > 0) command += "linenumber=" + Number(place.Line) + ";";
  if (place.Column > 0) command += "columnnumber=" + Number(place.Column) + ";";
  if (!finding.Code.empty()) command += "code=" + Escaped(finding.Code, AzureProperty) + ";";
  constexpr std::array<TEscape, 3> message{{{u'%', u"%AZP25"}, {u'\r', u"%0D"}, {u'\n', u"%0A"}}};
  return Command(command + "]" + Escaped(finding.Message, message));
}
// --- TeamCity ---

constexpr std::array<TEscape, 7> TeamCityValue{{{u'|', u"||"},
                                                {u'\'', u"|'"},
                                                {u'\n', u"|n"},
                                                {u'\r', u"|r"},
                                                {u'[', u"|["},
                                                {u']', u"|]"},
                                                {u'\t', u"\t"}}};

// The agent reads in a code page that nobody knows here, so only ASCII goes out: all else as "|0xNNNN".
std::string TeamCityText(std::u16string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string out;
  for (const char16_t c : text) {
    const auto escape = std::ranges::find(TeamCityValue, c, &TEscape::Character);
    if (escape != TeamCityValue.end()) {
      out += text::ToUtf8(escape->Text);
    } else if (c >= u' ' && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      out += "|0x";
      for (const int shift : {12, 8, 4, 0})
        out += digits[(static_cast<unsigned>(c) >> static_cast<unsigned>(shift)) & 0xFU];
    }
  }
  return out;
}

TCiCommand TeamCityStart(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return Command("##teamcity[blockOpened name='" + TeamCityText(title) + "']");
}
TCiCommand TeamCityEnd(std::u16string_view title, int /*id*/, std::int64_t /*time*/) {
  return Command("##teamcity[blockClosed name='" + TeamCityText(title) + "']");
}
TCiCommand TeamCityProblem(const TFinding& finding, std::u16string_view root) {
  TFinding seen = finding;
  seen.Place.File = SeenFrom(root, seen.Place.File);
  return Command("##teamcity[message text='" + TeamCityText(TextOf(seen)) + "' status='" +
                 (finding.Severity == TFindingSeverity::Error ? "ERROR" : "WARNING") + "']");
}

// --- GitLab ---

std::string GitLabSection(const char* kind, int id, std::int64_t time) {
  return std::string("\x1b[0Ksection_") + kind + ":" + std::to_string(time) + ":kxhost_" + Number(id) +
         "\r\x1b[0K";
}
TCiCommand GitLabStart(std::u16string_view title, int id, std::int64_t time) {
  return Command(GitLabSection("start", id, time) + Escaped(title, OneLine));
}
TCiCommand GitLabEnd(std::u16string_view /*title*/, int id, std::int64_t time) {
  return Command(GitLabSection("end", id, time));
}
TCiCommand GitLabProblem(const TFinding& /*finding*/, std::u16string_view /*root*/) {
  return {};
}

constexpr std::array<TCiDialect, 4> Dialects{
    {{"github", u"GITHUB_ACTIONS", false, GitHubStart, GitHubEnd, GitHubProblem, u"GITHUB_WORKSPACE"},
     {"azure", u"TF_BUILD", false, AzureStart, AzureEnd, AzureProblem, u"BUILD_SOURCESDIRECTORY"},
     {"teamcity", u"TEAMCITY_VERSION", true, TeamCityStart, TeamCityEnd, TeamCityProblem, u""},
     {"gitlab", u"GITLAB_CI", true, GitLabStart, GitLabEnd, GitLabProblem, u""}}};

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
