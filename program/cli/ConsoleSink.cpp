#include "program/cli/ConsoleSink.h"

#include "contract/Actions.h"
#include "foundation/platform/Console.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Output.h"
#include "program/findings/Diagnostics.h"

#include <array>
#include <ctime>

namespace kx::cli {

namespace {

constexpr int IndentWidth = 2;
constexpr std::size_t LongestValue = 200; // of a metric; that of a test run is a whole document

std::string TimeStamp(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
  std::array<char, 16> clock{};
  std::strftime(clock.data(), clock.size(), "%H:%M:%S", std::localtime(&seconds));
  std::string fraction = std::to_string(milliseconds);
  fraction.insert(0, 3 - fraction.size(), '0');
  return std::string(clock.data()) + "." + fraction + "  ";
}

std::string ValueText(const TKxMetric& metric) {
  const auto* number = std::get_if<std::int64_t>(&metric.Value);
  if (number != nullptr) return std::to_string(*number);
  const auto& value = std::get<std::u16string>(metric.Value);
  return value.size() > LongestValue ? "(" + std::to_string(value.size()) + " characters)"
                                     : ForTerminal(value);
}

// "project 3 of 17".
std::string ProgressText(const std::optional<TLoopPosition>& position) {
  if (!position) return {};
  return text::ToUtf8(position->Unit) + " " + std::to_string(position->Number) + " of " +
         std::to_string(position->Count);
}

} // namespace

TConsoleSink::TConsoleSink(TVerbosity verbosity, TPalette palette, const TCiDialect* ci,
                           history::TUsualTimes usual)
    : verbosity_(verbosity), palette_(palette), usual_(std::move(usual)),
      status_(verbosity != TVerbosity::Quiet && ci == nullptr && CanSteerTerminal(), palette, usual_.Run),
      ci_(ci) {
  if (ci_ != nullptr) ciRoot_ = CiRootOf(*ci_);
}

void TConsoleSink::On(const TRunEvent& event) {
  if (verbosity_ == TVerbosity::Diagnostic) stamp_ = TimeStamp(event.Time);
  seconds_ = std::chrono::floor<std::chrono::seconds>(event.Time).time_since_epoch().count();
  status_.SetCounts(event.SoFar);
  suiteNames_.On(event);
  std::visit([this, &event](const auto& what) { Show(event.Depth, what); }, event.What);
}

void TConsoleSink::ExpectParts(std::size_t count) {
  parts_ = count;
  status_.SetProgress("0 of " + CountText(static_cast<std::int64_t>(count), "part"));
}

void TConsoleSink::Begin(const TPart& part) {
  partKeys_[part.Id] =
      status_.Push({.Title = NameForTerminal(part.Id), .IsAction = true, .Usual = part.Usual});
}

void TConsoleSink::End(const TPart& part) {
  status_.Remove(partKeys_[part.Id]);
  partKeys_.erase(part.Id);
  status_.SetProgress(std::to_string(++partsEnded_) + " of " +
                      CountText(static_cast<std::int64_t>(parts_), "part"));
}

// What is under way now.
void TConsoleSink::Push(TUnderWay what) {
  if (parts_ == 0) status_.Push(std::move(what));
}

void TConsoleSink::Pop() {
  if (parts_ == 0) status_.Pop();
}

// Commands of a CI system stand at the start of their lines.
void TConsoleSink::Title(int depth, std::u16string_view title, const std::string& painted) {
  if (ci_ == nullptr) {
    Line(depth, painted);
    return;
  }
  const bool asGroup = ci_->NestedGroups || ciGroups_.empty();
  ciGroups_.emplace_back(asGroup ? ++ciGroupCount_ : 0, text::VisibleControls(title));
  if (asGroup)
    PrintCommand(ci_->GroupStart(ciGroups_.back().second, ciGroups_.back().first, seconds_));
  else
    Line(depth, painted);
}

void TConsoleSink::EndTitle() {
  if (ci_ == nullptr || ciGroups_.empty()) return;
  const auto [id, title] = std::move(ciGroups_.back());
  ciGroups_.pop_back();
  if (id != 0) PrintCommand(ci_->GroupEnd(title, id, seconds_));
}

bool TConsoleSink::Annotate(std::u16string_view text, TStatusTag status) {
  if (ci_ == nullptr || (status != TStatusTag::stError && status != TStatusTag::stWarning)) return false;
  const std::u16string visible = text::VisibleControls(text);
  auto finding = ReadDiagnostic(visible);
  if (!finding) finding = TFinding{.Message = visible};
  finding->Severity = status == TStatusTag::stError ? TFindingSeverity::Error : TFindingSeverity::Warning;
  return Annotate(*finding);
}

bool TConsoleSink::Annotate(const TFinding& finding) {
  const TCiCommand command = ci_->Problem(finding, ciRoot_);
  int& marked = ciProblems_[finding.Severity];
  if (command.IsEmpty() || marked >= ci_->MostProblems || !ciMarked_.insert(TextOf(finding)).second)
    return false;
  ++marked;
  PrintCommand(command);
  return true;
}

// Below the normal verbosity only what went wrong is shown, without the groups around it.
bool TConsoleSink::Shows(TStatusTag status) const {
  switch (verbosity_) {
  case TVerbosity::Quiet:
    return status == TStatusTag::stError;
  case TVerbosity::Minimal:
    return status == TStatusTag::stError || status == TStatusTag::stWarning;
  default:
    return true;
  }
}

// What would have been done is what a dry run is for.
bool TConsoleSink::Shows(const TMessageSent& message) const {
  return Shows(message.Status) || (message.IsDryRun && verbosity_ != TVerbosity::Quiet);
}

void TConsoleSink::Line(int depth, std::string_view text) {
  const int shownDepth = verbosity_ < TVerbosity::Normal ? 0 : depth;
  status_.Print(palette_.Dim(stamp_) + std::string(static_cast<std::size_t>(shownDepth * IndentWidth), ' ') +
                std::string(text) + "\n");
}

void TConsoleSink::Show(int depth, const TActionStarted& event) {
  const std::u16string name = NameWithPass(event.Name, event.Pass);
  const auto usual = usual_.Actions.find(name);
  Push({NameForTerminal(name), ProgressText(event.Position), true,
        usual == usual_.Actions.end() ? std::nullopt : std::optional(usual->second)});
  if (!Shows(TStatusTag::stNormal)) return;
  const std::u16string title = event.Description + (event.Pass.empty() ? u"" : u"  (" + event.Pass + u")");
  Title(depth, title, palette_.Bold(NameForTerminal(title)));
}

void TConsoleSink::Show(int depth, const TActionEnded& event) {
  Pop();
  const TStatusTag status = StatusOf(event.Result.Result);
  if (Shows(status))
    Line(depth,
         palette_.Paint(NameForTerminal(event.Result.Name) + " " + WordOf(event.Result.Result), status) +
             palette_.Dim(" (" + FormatElapsed(event.Result.Elapsed) + ")"));
  if (Shows(TStatusTag::stNormal)) EndTitle();
}

void TConsoleSink::Show(int depth, const TMessageSent& event) {
  if (!Shows(event) || Annotate(event.Text, event.Status)) return;
  const auto lines = text::SplitLines(event.Text);
  for (const auto line : lines)
    Line(depth, palette_.Paint(ForTerminal(line), event.Status));
  if (lines.empty()) Line(depth, "");
}

void TConsoleSink::Show(int depth, const TGroupStarted& event) {
  Push({NameForTerminal(event.Title)});
  if (Shows(TStatusTag::stNormal))
    Title(depth, event.Title, palette_.Bold(palette_.Paint(NameForTerminal(event.Title), event.Status)));
}

void TConsoleSink::Show(int depth, const TGroupEnded& event) {
  Pop();
  if (!Shows(TStatusTag::stNormal)) return;
  const TStatusTag status = event.Status.value_or(TStatusTag::stNormal);
  Line(depth,
       palette_.Paint(GroupWord(status), status) + palette_.Dim(" (" + FormatElapsed(event.Elapsed) + ")"));
  EndTitle();
}

void TConsoleSink::ShowTests(const TMetricSent& event) {
  const std::u16string* xml = TestSuiteXml(event.Metric);
  const auto suite = xml != nullptr ? ReadTestSuite(suiteNames_.Rename(*xml)) : std::nullopt;
  if (!suite) return;
  for (const auto& command : ci_->Tests(*suite))
    PrintCommand(command);
}

void TConsoleSink::Show(int /*depth*/, const TRunEnded& event) {
  if (ci_ == nullptr) return;
  if (ci_->Findings == nullptr) {
    // What no message of the log has shown as a problem: lines of tools that the log shows as they are.
    for (const auto& finding : event.Report.Findings)
      if (finding.Severity != TFindingSeverity::Note &&
          (!finding.Code.empty() || !finding.Place.File.empty()))
        Annotate(finding);
    return;
  }
  for (const auto& command : ci_->Findings(event.Report.Findings, event.Report.Root))
    PrintCommand(command);
}

void TConsoleSink::Show(int depth, const TMetricSent& event) {
  if (ci_ != nullptr && ci_->Tests != nullptr) ShowTests(event);
  if (verbosity_ < TVerbosity::Detailed) return;
  const TKxMetric& metric = event.Metric;
  Line(depth, palette_.Dim("metric " + NameForTerminal(metric.Category + u"." + metric.Name) + " = " +
                           ValueText(metric)));
}

} // namespace kx::cli
