#include "package/buildaction/BuildOutputAnalysis.h"

#include "foundation/text/BlockSearch.h"
#include "package/buildaction/SummaryLines.h"
#include "package/buildaction/ToolOutputWords.h"

namespace kx {

namespace {

TStatusTag StatusOf(unsigned findings) {
  if ((findings & HasError) != 0) return TStatusTag::stError;
  if ((findings & HasFailed) != 0 && (findings & HasZeroFailed) == 0) return TStatusTag::stError;
  if ((findings & HasWarning) != 0) return TStatusTag::stWarning;
  if ((findings & HasSucceeded) != 0 && (findings & HasZeroSucceeded) == 0) return TStatusTag::stSuccess;
  return TStatusTag::stNormal;
}

} // namespace

void TBuildOutputAnalysis::BeginRun(bool usingMSBuild) {
  options_.UsingMSBuild = usingMSBuild;
  failed_ = false;
  built_ = TBuiltProjects::Unsaid;
}

void TBuildOutputAnalysis::Feed(std::u16string_view chunk) {
  do {
    const std::size_t end = text::FindEither(chunk, u'\r', u'\n');
    ReadLine(chunk.substr(0, end));
    if (end == chunk.size()) return;
    const bool isPair = chunk[end] == u'\r' && chunk.substr(end + 1).starts_with(u'\n');
    chunk.remove_prefix(end + (isPair ? 2 : 1));
  } while (!chunk.empty());
}

void TBuildOutputAnalysis::ReadLine(std::u16string_view line) {
  if (options_.UsingMSBuild && options_.Structured) {
    sink_.StructuredLine(line);
    return;
  }
  const unsigned findings = FindOutputWords(line);
  NoteSummary(line, findings);
  const bool exitCodeHidesFailures = options_.Version <= TVSDotNetVersion::vs2003;
  if (exitCodeHidesFailures && (findings & HasSucceeded) != 0 && IsFailureSummary(line)) failed_ = true;
  if (options_.UsingMSBuild) {
    NoteBuilt(ReadProjectLine(line));
    if (ReadMSBuildCounts(line, findings)) return;
  } else {
    NoteBuilt(ReadBuildSummary(line));
    ReadDevEnvCounts(line, findings);
  }
  sink_.Line(line, StatusOf(findings));
}

void TBuildOutputAnalysis::NoteSummary(std::u16string_view line, unsigned findings) {
  if ((findings & MayHoldCounts) != 0) hasDevEnvSummary_ |= ReadCountSummary(line).has_value();
  if ((findings & (MayHoldErrorCount | MayHoldWarningCount)) != 0)
    hasMSBuildSummary_ |= ReadErrorCount(line) || ReadWarningCount(line);
}

void TBuildOutputAnalysis::NoteBuilt(std::optional<bool> some) {
  if (!some || built_ == TBuiltProjects::Some) return;
  built_ = *some ? TBuiltProjects::Some : TBuiltProjects::None;
}

void TBuildOutputAnalysis::ReadDevEnvCounts(std::u16string_view line, unsigned findings) {
  if ((findings & MayHoldCounts) == 0) return;
  const auto counts = ReadCountSummary(line);
  if (!counts) return;
  sink_.Count(TBuildCount::Errors, counts->Errors);
  sink_.Count(TBuildCount::Warnings, counts->Warnings);
}

// True when the line is a count, which says nothing else. One that holds both counts is sent once for each.
bool TBuildOutputAnalysis::ReadMSBuildCounts(std::u16string_view line, unsigned findings) {
  const auto report = [&](TBuildCount what, std::optional<std::int32_t> count) {
    if (!count) return false;
    if (*count > 0) sink_.Count(what, *count);
    sink_.Line(line, TStatusTag::stNormal);
    return true;
  };
  bool isCount = false;
  if ((findings & MayHoldErrorCount) != 0) isCount |= report(TBuildCount::Errors, ReadErrorCount(line));
  if ((findings & MayHoldWarningCount) != 0) isCount |= report(TBuildCount::Warnings, ReadWarningCount(line));
  return isCount;
}

} // namespace kx
