// What was stamped, and what the run ran on and with.
#include "program/report/HtmlReport.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::u16string_view AssemblyInfoFile = u"Processing Assembly info in File : ";
constexpr std::u16string_view ResourceFile = u"Updating Version info in file : ";
constexpr std::u16string_view Separator = u" : ";

void WriteFact(const char* name, std::u16string_view value, THtmlWriter& out) {
  if (!value.empty()) out << "<dt>" << name << "<dd>" << value << "\n";
}

} // namespace

void TakeStamp(std::u16string_view message, std::vector<TStamp>& stamps) {
  for (const auto intro : {AssemblyInfoFile, ResourceFile})
    if (message.starts_with(intro)) {
      stamps.push_back({std::u16string(message.substr(intro.size()))});
      return;
    }
  const std::size_t at = message.find(Separator);
  if (stamps.empty() || at == message.npos || !message.starts_with(u"Assembly")) return;
  const std::u16string_view name = message.substr(0, at);
  if (std::ranges::any_of(name, text::IsBlank)) return;
  TStamp stamp{stamps.back().File, std::u16string(name),
               std::u16string(message.substr(at + Separator.size()))};
  if (stamps.back().Name.empty()) stamps.pop_back();
  stamps.push_back(std::move(stamp));
}

void WriteStamps(const THtmlPage& page, THtmlWriter& out) {
  if (page.Report.Result == TResultKind::WouldRun) out << "<p>A dry run: nothing was written.</p>\n";
  out << "<div class=wide tabindex=0 role=region aria-label=Versions><table><thead><tr><th scope=col>File<th "
         "scope=col>What<th scope=col>Value</thead><tbody>\n";
  const std::u16string folder = text::ExtractFileDir(page.Report.File);
  for (const auto& stamp : page.Stamps) {
    out << "<tr><td>" << SeenFrom(page.Report.Root.empty() ? folder : page.Report.Root, stamp.File) << "<td>";
    if (stamp.Name.empty())
      out << "version resource";
    else
      out << stamp.Name;
    out << "<td><code>" << stamp.Value << "</code>\n";
  }
  out << "</tbody></table></div>\n";
}

void WriteFacts(const THtmlPage& page, THtmlWriter& out) {
  const TRunReport& report = page.Report;
  const TRunSurroundings& around = report.Surroundings;
  out << "<dl class=facts>\n";
  if (report.Began != std::chrono::system_clock::time_point())
    out << "<dt>Started<dd>" << DayTime(report.Began) << "\n<dt>Ended<dd>"
        << DayTime(report.Began + report.Elapsed) << "\n";
  out << "<dt>Result<dd>" << WordOf(report.Result) << "\n";
  WriteFact("Build project", report.File, out);
  WriteFact("Machine", around.Machine, out);
  WriteFact("System", around.System, out);
  WriteFact("Commit", around.Commit, out);
  WriteFact("Branch", around.Branch, out);
  WriteFact("Tools", text::Join(around.Tools, u", "), out);
  if (!around.CommandLine.empty()) out << "<dt>Command line<dd><code>" << around.CommandLine << "</code>\n";
  out << "</dl>\n";
}

} // namespace kx
