#include "package/buildaction/MSBuildLogger.h"

#include "contract/Utilities.h"
#include "foundation/platform/System.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr std::array<std::u16string_view, 5> LogLevelNames{u"llQuiet", u"llMinimal", u"llNormal",
                                                           u"llDetailed", u"llDiagnostic"};
constexpr std::u16string_view Prefix = u"TandemorLogger|";

int HexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  return -1;
}

std::u16string Unescape(std::u16string_view value) {
  std::u16string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool escape = value[i] == u'%' && i + 2 < value.size() && HexDigit(value[i + 1]) >= 0 &&
                        HexDigit(value[i + 2]) >= 0;
    if (escape) {
      text += static_cast<char16_t>(HexDigit(value[i + 1]) * 16 + HexDigit(value[i + 2]));
      i += 2;
    } else {
      text += value[i];
    }
  }
  return text;
}

} // namespace

const TKxEnumeration& MSLogLevelEnumeration() {
  static constexpr TKxEnumeration enumeration{u"TMSLogLevel", LogLevelNames};
  return enumeration;
}

std::u16string QuoteMSBuildArg(std::u16string_view value, TCommandLineReader reader) {
  const bool keepsSemicolons = reader == TCommandLineReader::MSBuildItself;
  const std::u16string escaped =
      keepsSemicolons ? std::u16string(value) : text::ReplaceAll(value, u";", u"%3B");
  const bool needsQuotes =
      escaped.find_first_of(keepsSemicolons ? u" \t\";" : u" \t\"") != std::u16string::npos;
  return needsQuotes ? text::QuoteArgument(escaped) : escaped;
}

std::u16string QuoteMSBuildArg(std::u16string_view value) {
  return QuoteMSBuildArg(value, platform::IsWindows() ? TCommandLineReader::MSBuildItself
                                                      : TCommandLineReader::SplitArguments);
}

bool IsProjectOfItsOwn(std::u16string_view file) {
  const auto endsIn = [&file](std::u16string_view end) {
    return file.size() >= end.size() && text::EqualsIgnoreCase(file.substr(file.size() - end.size()), end);
  };
  const bool isWrapper = endsIn(u".metaproj");
  if (isWrapper) file.remove_suffix(std::u16string_view(u".metaproj").size());
  if (endsIn(u".sln") || endsIn(u".sln.proj")) return false;
  return !isWrapper || !endsIn(u"proj"); // a web site has no project file but its wrapper
}

// One line of the logger, read.
struct TKxMSBuildStructuredOutputHelper::TEvent {
  std::u16string Kind;
  std::vector<std::pair<std::u16string, std::u16string>> Fields;

  std::u16string_view operator[](std::u16string_view name) const {
    const auto found =
        std::find_if(Fields.begin(), Fields.end(), [name](const auto& field) { return field.first == name; });
    return found == Fields.end() ? std::u16string_view() : std::u16string_view(found->second);
  }
};

TKxMSBuildStructuredOutputHelper::TKxMSBuildStructuredOutputHelper(TCustomKxAction& action)
    : action_(action) {}

std::u16string
TKxMSBuildStructuredOutputHelper::GetLoggerAssembly(std::u16string_view /*frameworkVersion*/) const {
  return u"TandemorLogger.dll";
}

void TKxMSBuildStructuredOutputHelper::Start(std::u16string_view solutionFile, bool structured) {
  solutionFolder_ = text::ExtractFilePath(solutionFile);
  structured_ = structured;
  ResetCounts();
}

void TKxMSBuildStructuredOutputHelper::ResetCounts() {
  errors_ = 0;
  warnings_ = 0;
}

void TKxMSBuildStructuredOutputHelper::ProcessLine(std::u16string_view line) {
  TEvent event;
  if (structured_ && Read(line, event)) {
    Handle(event);
  } else {
    action_.SendMessage(line);
  }
}

bool TKxMSBuildStructuredOutputHelper::Read(std::u16string_view line, TEvent& event) {
  if (!line.starts_with(Prefix)) return false;
  const auto parts = text::Split(line.substr(Prefix.size()), u'|');
  event.Kind = parts.front();
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const std::size_t equals = parts[i].find(u'=');
    if (equals == std::u16string_view::npos) return false;
    event.Fields.emplace_back(parts[i].substr(0, equals), Unescape(parts[i].substr(equals + 1)));
  }
  return true;
}

void TKxMSBuildStructuredOutputHelper::Handle(const TEvent& event) {
  if (event.Kind == u"error") {
    ++errors_;
    SendDiagnostic(event, TStatusTag::stError);
  } else if (event.Kind == u"warning") {
    ++warnings_;
    SendDiagnostic(event, TStatusTag::stWarning);
  } else if (event.Kind == u"projectStarted" || event.Kind == u"projectBegun") {
    if (event.Kind == u"projectStarted") OpenProject(event);
    if (IsProjectOfItsOwn(event[u"project"])) action_.StartProject(ShortName(event[u"project"]));
  } else if (event.Kind == u"projectFinished") {
    CloseProject(event);
    const bool isOwn = IsProjectOfItsOwn(event[u"project"]);
    if (isOwn) action_.EndProject(ShortName(event[u"project"]), event[u"succeeded"] == u"true");
    built_ = built_.value_or(0) + (isOwn ? 1 : 0);
  } else if (event.Kind == u"targetStarted") {
    action_.SendMessage(u"Target " + std::u16string(event[u"target"]) + u":");
  } else if (event.Kind == u"message") {
    action_.SendMessage(event[u"text"]);
  }
  // The ends of targets and of the build say nothing that the exit code and the counts do not.
}

// In the form that compilers use, so that people and programs find the place, wherever the log is read:
// file(line,column): error CS0103: text
void TKxMSBuildStructuredOutputHelper::SendDiagnostic(const TEvent& event, TStatusTag status) {
  std::u16string place(event[u"file"]);
  const std::u16string_view line = event[u"line"];
  const std::u16string_view column = event[u"column"];
  if (!place.empty() && !line.empty() && line != u"0") {
    place += u"(" + std::u16string(line);
    if (!column.empty() && column != u"0") place += u"," + std::u16string(column);
    place += u")";
  }
  std::u16string message = place.empty() ? event.Kind : place + u": " + event.Kind;
  if (!event[u"code"].empty()) message += u" " + std::u16string(event[u"code"]);
  message += u": " + std::u16string(event[u"text"]);
  if (!event[u"project"].empty()) message += u" [" + ShortName(event[u"project"]) + u"]";
  action_.SendMessage(message, status);
}

// Projects that are built side by side end in any order, but groups nest: a group is closed once all that
// were opened inside it are.
void TKxMSBuildStructuredOutputHelper::OpenProject(const TEvent& event) {
  std::u16string title = u"Project " + ShortName(event[u"project"]);
  if (!event[u"targets"].empty()) title += u" (" + std::u16string(event[u"targets"]) + u")";
  action_.StartMessageGroup(title);
  open_.push_back({std::u16string(event[u"project"])});
}

void TKxMSBuildStructuredOutputHelper::CloseProject(const TEvent& event) {
  const auto found = std::find_if(open_.rbegin(), open_.rend(), [&event](const TOpenProject& project) {
    return !project.Finished && project.File == event[u"project"];
  });
  if (found == open_.rend()) return;
  found->Finished = true;
  found->Succeeded = event[u"succeeded"] == u"true";
  while (!open_.empty() && open_.back().Finished) {
    action_.EndMessageGroup(open_.back().Succeeded ? TStatusTag::stSuccess : TStatusTag::stError);
    open_.pop_back();
  }
}

void TKxMSBuildStructuredOutputHelper::EndRun() {
  for (; !open_.empty(); open_.pop_back())
    action_.EndMessageGroup(open_.back().Finished && open_.back().Succeeded ? TStatusTag::stSuccess
                                                                            : TStatusTag::stError);
}

// Names below the solution's folder are shown as the solution would write them.
std::u16string TKxMSBuildStructuredOutputHelper::ShortName(std::u16string_view file) const {
  const bool below = !solutionFolder_.empty() && text::StartsWithIgnoreCase(file, solutionFolder_);
  return std::u16string(below ? file.substr(solutionFolder_.size()) : file);
}

} // namespace kx
