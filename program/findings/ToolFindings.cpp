#include "program/findings/ToolFindings.h"

#include "foundation/text/Text.h"
#include "program/findings/Diagnostics.h"

namespace kx {

namespace {

constexpr std::u16string_view Dashes = u"------";

} // namespace

// What stands before the first colon, behind the second one up to a comma, and behind the third one.
std::optional<TToolHeading> ReadToolHeading(std::u16string_view line) {
  line = text::Trim(line);
  const std::size_t start = line.find(Dashes);
  if (start == line.npos || start > 8 || !line.ends_with(Dashes) || line.size() < start + 2 * Dashes.size())
    return std::nullopt;
  line = line.substr(start + Dashes.size(), line.size() - start - 2 * Dashes.size());
  const std::size_t first = line.find(u':');
  const std::size_t second = first == line.npos ? first : line.find(u':', first + 1);
  const std::size_t comma = second == line.npos ? second : line.find(u',', second + 1);
  const std::size_t third = comma == line.npos ? comma : line.find(u':', comma + 1);
  if (third == line.npos) return std::nullopt;
  TToolHeading heading{std::u16string(text::Trim(line.substr(0, first))),
                       std::u16string(text::Trim(line.substr(second + 1, comma - second - 1))),
                       std::u16string(text::Trim(line.substr(third + 1)))};
  if (heading.Project.empty()) return std::nullopt;
  return heading;
}

std::optional<TFindingSeverity> TToolFindings::Read(std::u16string_view line,
                                                    const std::function<void(TFinding&)>& complete) {
  if (line.ends_with(Dashes.back())) {
    if (auto heading = ReadToolHeading(line)) headings_[BuildNumberOf(line)] = *std::move(heading);
    return std::nullopt;
  }
  auto finding = ReadDiagnostic(line);
  if (!finding) return std::nullopt;
  const auto heading = headings_.find(BuildNumberOf(line));
  if (heading != headings_.end()) {
    if (finding->Project.empty()) finding->Project = heading->second.Project;
    finding->Configuration = heading->second.Configuration;
  }
  if (complete) complete(*finding);
  const TFindingSeverity severity = finding->Severity;
  list_->Add(*std::move(finding));
  return severity;
}

} // namespace kx
