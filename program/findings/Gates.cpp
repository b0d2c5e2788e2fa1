#include "program/findings/Gates.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/FindingList.h"
#include "program/findings/SourceFiles.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr std::size_t LongestRemark = 200;
constexpr auto Words = std::to_array<std::u16string_view>({u"never", u"error", u"warning", u"new-warning"});
constexpr std::string_view Head = "# Findings that are known, written by kxhost --write-baseline.\n";

bool IsCounted(const TFinding& finding) {
  return finding.Severity != TFindingSeverity::Note;
}

// Without numbers of lines, which move.
std::u16string RemarkOf(const TFinding& finding, std::u16string_view root) {
  TFinding seen = finding;
  seen.Place = {SeenFrom(root, finding.Place.File), 0, 0};
  seen.Code = finding.Rule;
  return TextOf(seen).substr(0, LongestRemark);
}

std::u16string Counted(std::int64_t count, std::u16string_view what) {
  return text::FromInteger(count) + u" " + std::u16string(what) + (count == 1 ? u"" : u"s");
}

std::u16string Joined(std::int64_t errors, std::int64_t warnings, std::u16string_view kind) {
  const std::u16string prefix(kind);
  std::u16string text;
  if (errors > 0) text = Counted(errors, prefix + u"error");
  if (warnings > 0) text += (text.empty() ? u"" : u" and ") + Counted(warnings, prefix + u"warning");
  return text;
}

// Nothing for a file that nobody has written yet; why one that is there, or may be, cannot be read.
std::u16string WhyNoBaseline(std::u16string_view fileName) {
  const std::u16string folder = text::ExtractFileDir(fileName);
  if (!platform::DirectoryExists(folder)) return {};
  const auto entries = platform::ListDirectory(folder);
  if (!entries) return entries.Message();
  const std::u16string name(text::ExtractFileName(fileName));
  const bool isThere = std::ranges::any_of(
      *entries, [&](const auto& entry) { return text::EqualsIgnoreCase(entry.Name, name); });
  return isThere ? platform::ReadFile(fileName).Message() : std::u16string();
}

} // namespace

std::span<const std::u16string_view> FailOnWords() {
  return Words;
}

TFailOn ReadFailOn(std::u16string_view word) {
  const auto* const found = std::ranges::find_if(
      Words, [word](std::u16string_view known) { return text::EqualsIgnoreCase(known, word); });
  if (found != Words.end()) return static_cast<TFailOn>(found - Words.begin());
  throw EKxException(u"A gate is never, error, warning or new-warning, not " + std::u16string(word) + u".");
}

std::int64_t ReadMaxWarnings(std::u16string_view text) {
  const auto number = text::ToInteger(text::Trim(text));
  if (number && *number >= 0) return *number;
  throw EKxException(u"The most warnings are a number from 0, not " + std::u16string(text) + u".");
}

TGateSettings TGateSettings::Or(const TGateSettings& other) const {
  return {Baseline.empty() ? other.Baseline : Baseline, FailOn ? FailOn : other.FailOn,
          MaxWarnings ? MaxWarnings : other.MaxWarnings};
}

TBaseline::TBaseline(std::span<const TFinding> findings, std::u16string_view root) {
  for (const auto& finding : findings)
    if (IsCounted(finding)) remarks_.emplace(finding.Fingerprint, RemarkOf(finding, root));
}

platform::Result<TBaseline> TBaseline::Load(std::u16string_view fileName) {
  TBaseline baseline;
  if (fileName.empty()) return baseline;
  if (!platform::FileExists(fileName)) {
    const std::u16string trouble = WhyNoBaseline(fileName);
    return trouble.empty() ? platform::Result<TBaseline>(baseline) : platform::Failure{trouble};
  }
  const auto bytes = platform::ReadFile(fileName);
  if (!bytes) return platform::Failure{bytes.Message()};
  baseline.wasThere_ = true;
  const std::u16string content = text::FromUtf8(*bytes);
  for (auto line : text::SplitLines(content)) {
    line = text::Trim(line);
    if (line.empty() || line.front() == u'#') continue;
    const std::size_t blank = std::min(line.find(u' '), line.size());
    baseline.remarks_.emplace(line.substr(0, blank), text::Trim(line.substr(blank)));
  }
  return baseline;
}

platform::Status TBaseline::Save(std::u16string_view fileName) const {
  std::string content(Head);
  for (const auto& [fingerprint, remark] : remarks_)
    content.append(text::ToUtf8(fingerprint)).append(" ").append(text::ToUtf8(remark)).append("\n");
  return platform::SaveFile(fileName, content);
}

TGateResult CheckGates(std::span<const TFinding> findings, std::int64_t more, const TGateSettings& settings,
                       const TBaseline& baseline) {
  const bool hasBaseline = !settings.Baseline.empty() && baseline.WasThere();
  TGateResult result;
  for (const auto& finding : findings) {
    if (!IsCounted(finding)) continue;
    if (hasBaseline && baseline.Holds(finding))
      ++result.Known;
    else
      result.New.push_back(finding);
  }
  result.Fixed = static_cast<std::int64_t>(baseline.Size()) - result.Known;
  const TFindingCounts all = CountOf(findings);
  const TFindingCounts fresh = CountOf(result.New);
  const TFailOn failOn =
      settings.FailOn.value_or(settings.Baseline.empty() ? TFailOn::Never : TFailOn::NewWarning);
  const bool needsAll = failOn != TFailOn::Never && (failOn != TFailOn::NewWarning || hasBaseline);
  if (needsAll && more > 0)
    result.Broken.push_back(Counted(more, u"finding") +
                            u" more than are kept, of which nothing is known (fail on " +
                            std::u16string(Words.at(static_cast<std::size_t>(failOn))) + u")");
  if (failOn == TFailOn::Error && all.Errors > 0)
    result.Broken.push_back(Joined(all.Errors, 0, u"") + u" (fail on error)");
  if (failOn == TFailOn::Warning && all.Errors + all.Warnings > 0)
    result.Broken.push_back(Joined(all.Errors, all.Warnings, u"") + u" (fail on warning)");
  if (failOn == TFailOn::NewWarning && hasBaseline && !result.New.empty())
    result.Broken.push_back(Joined(fresh.Errors, fresh.Warnings, u"new ") + u" (fail on new-warning)");
  if (settings.MaxWarnings && all.Warnings + more > *settings.MaxWarnings)
    result.Broken.push_back(Counted(all.Warnings + more, u"warning") + u", and no more than " +
                            text::FromInteger(*settings.MaxWarnings) + u" are allowed");
  return result;
}

} // namespace kx
