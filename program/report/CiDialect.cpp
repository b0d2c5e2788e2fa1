#include "program/report/CiDialect.h"

#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/FindingList.h"
#include "program/findings/SourceFiles.h"
#include "program/report/CiGuard.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <set>
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

std::string Number(int number) {
  return std::to_string(number);
}

// Of a title that is shown as it stands.
constexpr std::array<TEscape, 1> NoLineEnds{{{u'\n', u" "}}};

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
  return Command("##[group]" + Escaped(title, NoLineEnds));
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
TCiCommand AzureSummary(std::u16string_view file) {
  return Command("##vso[task.uploadsummary]" + Escaped(file, AzureProperty));
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

using TTeamCityValue = std::pair<const char*, std::u16string>;

TCiCommand TeamCityMessage(const char* name, std::initializer_list<TTeamCityValue> values) {
  std::string line = std::string("##teamcity[") + name;
  for (const auto& [key, value] : values)
    line += std::string(" ") + key + "='" + TeamCityText(value) + "'";
  return Command(line + "]");
}

constexpr std::size_t LongestName = 255;         // that TeamCity takes
constexpr std::size_t LongestDescription = 3900; // with room for what escaping adds

// "1.250" as "1250".
std::u16string Milliseconds(std::u16string_view seconds) {
  const std::size_t dot = std::min(seconds.find(u'.'), seconds.size());
  const std::u16string_view fraction = dot < seconds.size() ? seconds.substr(dot + 1, 3) : u"";
  return text::FromInteger(std::int64_t{text::ToIntegerOr(seconds.substr(0, dot), 0)} * 1000 +
                           text::ToIntegerOr(fraction, 0));
}

std::vector<TCiCommand> TeamCityTests(const TReportedSuite& suite) {
  std::vector<TCiCommand> commands{TeamCityMessage("testSuiteStarted", {{"name", suite.Name}})};
  for (const auto& test : suite.Tests) {
    if (test.Skipped) {
      commands.push_back(TeamCityMessage("testIgnored", {{"name", test.Name}}));
      continue;
    }
    commands.push_back(TeamCityMessage("testStarted", {{"name", test.Name}}));
    if (test.Failed)
      commands.push_back(TeamCityMessage(
          "testFailed", {{"name", test.Name}, {"message", test.Message}, {"details", test.StackTrace}}));
    commands.push_back(
        TeamCityMessage("testFinished", {{"name", test.Name}, {"duration", Milliseconds(test.Seconds)}}));
  }
  commands.push_back(TeamCityMessage("testSuiteFinished", {{"name", suite.Name}}));
  return commands;
}

std::u16string TeamCitySeverity(TFindingSeverity severity) {
  switch (severity) {
  case TFindingSeverity::Note:
    return u"INFO";
  case TFindingSeverity::Warning:
    return u"WARNING";
  default:
    return u"ERROR";
  }
}

// What has a file is an inspection; an error without one a build problem.
std::vector<TCiCommand> TeamCityFindings(std::span<const TFinding> findings, std::u16string_view root) {
  std::vector<TCiCommand> commands;
  std::set<std::u16string> rules;
  for (const auto& finding : findings) {
    const std::u16string rule = finding.Rule.substr(0, LongestName);
    const std::u16string message = finding.Message.substr(0, LongestDescription);
    if (finding.Place.File.empty()) {
      if (finding.Severity == TFindingSeverity::Error)
        commands.push_back(TeamCityMessage(
            "buildProblem", {{"description", std::u16string(rule).append(u": ").append(message)},
                             {"identity", u"kx_" + text::ReplaceAll(finding.Fingerprint, u"-", u"_")}}));
      continue;
    }
    if (rules.insert(rule).second)
      commands.push_back(TeamCityMessage(
          "inspectionType", {{"id", rule}, {"name", rule}, {"category", u"kxhost"}, {"description", rule}}));
    commands.push_back(TeamCityMessage("inspection", {{"typeId", rule},
                                                      {"file", SeenFrom(root, finding.Place.File)},
                                                      {"line", text::FromInteger(finding.Place.Line)},
                                                      {"message", message},
                                                      {"SEVERITY", TeamCitySeverity(finding.Severity)}}));
  }
  return commands;
}

// --- GitLab ---

std::string GitLabSection(const char* kind, int id, std::int64_t time) {
  return std::string("\x1b[0Ksection_") + kind + ":" + std::to_string(time) + ":kxhost_" + Number(id) +
         "\r\x1b[0K";
}
TCiCommand GitLabStart(std::u16string_view title, int id, std::int64_t time) {
  return Command(GitLabSection("start", id, time) + Escaped(title, NoLineEnds));
}
TCiCommand GitLabEnd(std::u16string_view /*title*/, int id, std::int64_t time) {
  return Command(GitLabSection("end", id, time));
}
TCiCommand GitLabProblem(const TFinding& /*finding*/, std::u16string_view /*root*/) {
  return {};
}

constexpr std::array<TCiDialect, 4> Dialects{
    {{"github", u"GITHUB_ACTIONS", false, GitHubStart, GitHubEnd, GitHubProblem, u"GITHUB_WORKSPACE", 10,
      nullptr, nullptr, u"GITHUB_STEP_SUMMARY"},
     {"azure", u"TF_BUILD", false, AzureStart, AzureEnd, AzureProblem, u"BUILD_SOURCESDIRECTORY", 10, nullptr,
      nullptr, u"AGENT_TEMPDIRECTORY", AzureSummary},
     {"teamcity", u"TEAMCITY_VERSION", true, TeamCityStart, TeamCityEnd, TeamCityProblem, u"",
      std::numeric_limits<int>::max(), TeamCityTests, TeamCityFindings},
     {"gitlab", u"GITLAB_CI", true, GitLabStart, GitLabEnd, GitLabProblem, u""}}};

} // namespace

std::string CiSummary(const TRunReport& report) {
  constexpr std::size_t mostRows = 500; // GitHub takes a mebibyte of a step
  constexpr std::size_t longestCell = 500;
  const auto rows = MostSevere(report.Findings, mostRows);
  const TFindingCounts counts = CountOf(report.Findings);
  const auto all = static_cast<std::size_t>(counts.Errors + counts.Warnings + report.MoreFindings);
  const auto cell = [](std::u16string_view text) {
    constexpr std::array<TEscape, 8> escapes{{{u'|', u"\\|"},
                                              {u'<', u"&lt;"},
                                              {u'>', u"&gt;"},
                                              {u'&', u"&amp;"},
                                              {u'`', u"\\`"},
                                              {u'[', u"\\["},
                                              {u'*', u"\\*"},
                                              {u'_', u"\\_"}}};
    return Escaped(OneLine(text).substr(0, longestCell), escapes);
  };
  std::string page =
      std::string("### kxhost: ") + WordOf(report.Result) + "\n\n" + TotalsText(report) + "\n\n";
  if (rows.empty()) return page;
  page += "| | Place | |\n|---|---|---|\n";
  for (const auto* finding : rows) {
    std::u16string place = SeenFrom(report.Root, finding->Place.File);
    if (finding->Place.Line > 0) place += u":" + text::FromInteger(finding->Place.Line);
    page += "| " + std::string(WordOf(finding->Severity)) + " " + cell(finding->Rule) + " | " + cell(place) +
            " | " + cell(finding->Message) + " |\n";
  }
  if (all > rows.size()) page += "\nand " + std::to_string(all - rows.size()) + " more\n";
  return page;
}

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

const TCiDialect* ChooseCiDialect(std::string_view name) {
  return name == "auto" ? DetectCiDialect() : FindCiDialect(name);
}

std::u16string CiRootOf(const TCiDialect& dialect) {
  return dialect.RootVariable.empty() ? std::u16string()
                                      : platform::EnvironmentVariable(dialect.RootVariable).value_or(u"");
}

} // namespace kx
