// What became of each action, configuration and project.
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <map>
#include <set>

namespace kx {

namespace {

void WriteCount(std::int64_t count, std::string_view icon, THtmlWriter& out) {
  out << "<td class=number>";
  if (count > 0) out << Icon(icon, "") << count;
}

void WriteRow(const TResultRow& row, THtmlWriter& out) {
  out << "<tr><td style=--d:" << std::to_string(row.Nesting) << ">" << row.Action << "<td>"
      << row.Configuration << "<td>" << Icon(IconOf(row.Result), "") << std::string_view(row.Word());
  WriteCount(row.Counts.Errors, "error", out);
  WriteCount(row.Counts.Warnings, "warning", out);
  out << "<td class=number>" << FormatElapsed(row.Elapsed) << "\n";
}

// A row a project, a column a configuration of the solution.
struct TProjectTable {
  std::vector<std::u16string> Columns = {};
  std::vector<std::u16string> Rows = {};
  std::map<std::pair<std::u16string, std::u16string>, TProjectResult> Cells = {};
};

// A loop comes to a project again with each one that needs it.
void Add(TProjectResult& known, const TProjectResult& again) {
  if (IsSuccess(known.Result)) known.Result = again.Result;
  known.Counts += again.Counts;
  known.Elapsed += again.Elapsed;
}

TProjectTable ProjectTableOf(const TRunReport& report) {
  TProjectTable table;
  const auto take = [](std::vector<std::u16string>& names, const std::u16string& name) {
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  };
  std::set<std::u16string> projects;
  for (const auto& action : report.Actions)
    for (const auto& configuration : action.Configurations)
      for (const auto& project : configuration.Projects) {
        take(table.Columns, configuration.Configuration);
        if (projects.insert(project.Project).second) table.Rows.push_back(project.Project);
        const auto [cell, isFirst] =
            table.Cells.try_emplace({project.Project, configuration.Configuration}, project);
        if (!isFirst) Add(cell->second, project);
      }
  return table;
}

void WriteCell(const TProjectResult& project, THtmlWriter& out) {
  out << Icon(IconOf(project.Result), WordOf(project.Result));
  if (project.Elapsed > std::chrono::milliseconds(0))
    out << FormatElapsed(project.Elapsed);
  else
    out << WordOf(project.Result);
  if (project.Counts.Errors > 0) out << " " << Icon("error", "errors") << project.Counts.Errors;
  if (project.Counts.Warnings > 0) out << " " << Icon("warning", "warnings") << project.Counts.Warnings;
}

void WriteProjects(const TRunReport& report, THtmlWriter& out) {
  const TProjectTable table = ProjectTableOf(report);
  if (table.Rows.empty()) return;
  out << "<h3>Projects</h3>\n<div class=wide tabindex=0 role=region aria-label=Projects><table "
         "class=projects><thead><tr><th scope=col>Project";
  for (const auto& column : table.Columns)
    out << "<th scope=col>" << column;
  out << "</thead><tbody>\n";
  for (const auto& row : table.Rows) {
    out << "<tr><th scope=row>" << row;
    for (const auto& column : table.Columns) {
      const auto cell = table.Cells.find({row, column});
      out << "<td>";
      if (cell != table.Cells.end()) WriteCell(cell->second, out);
    }
    out << "\n";
  }
  out << "</tbody></table></div>\n";
}

void WriteOtherFigures(std::span<const TFigure> figures, THtmlWriter& out) {
  if (figures.empty()) return;
  out << "<h3>Metrics</h3>\n<div class=wide tabindex=0 role=region aria-label=Metrics><table><thead><tr><th "
         "scope=col>Metric<th "
         "scope=col>Action<th scope=col>Configuration<th scope=col class=number>Value</thead><tbody>\n";
  for (const auto& figure : figures)
    out << "<tr><td>" << figure.Name << "<td>" << figure.Action << "<td>" << figure.Configuration
        << "<td class=number>" << figure.Value << "\n";
  out << "</tbody></table></div>\n";
}

} // namespace

std::int64_t ProjectCount(const TRunReport& report) {
  return std::ssize(ProjectTableOf(report).Rows);
}

void WriteResults(const THtmlPage& page, THtmlWriter& out) {
  out << "<p>" << std::string_view(TotalsText(page.Report))
      << "</p>\n<div class=wide tabindex=0 role=region aria-label=Results><table "
         "class=actions><thead><tr><th scope=col>Action<th scope=col>Configuration<th "
         "scope=col>Result<th scope=col class=number>Errors<th scope=col class=number>Warnings<th scope=col "
         "class=number>Time</thead><tbody>\n";
  for (const auto& row : ResultRows(page.Report.Actions))
    WriteRow(row, out);
  out << "</tbody></table></div>\n";
  WriteProjects(page.Report, out);
  WriteOtherFigures(page.Figures, out);
}

} // namespace kx
