#include "program/runner/ToolProjects.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/Diagnostics.h"
#include "program/findings/ToolFindings.h"
#include "program/runner/EventLog.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace kx {

namespace {

std::u16string NameOf(std::u16string_view file) {
  std::u16string name = text::ExtractFileName(file);
  name.resize(std::min(name.rfind(u'.'), name.size()));
  return name.empty() ? text::ExtractFileName(text::ExtractFileDir(file))
                      : name; // a web site has but a folder
}

bool IsSolution(std::u16string_view file) {
  return text::FindIgnoreCase(file, u".sln") != file.npos || text::EndsWithIgnoreCase(file, u".metaproj");
}

bool StartsWithAny(std::u16string_view text, std::span<const std::u16string_view> beginnings) {
  return std::ranges::any_of(beginnings, [text](auto beginning) { return text.starts_with(beginning); });
}

// What stands between the last quotes of the line, and behind them.
struct TQuoted {
  std::u16string_view Text = {};
  std::u16string_view Behind = {};
};
TQuoted LastQuoted(std::u16string_view line) {
  const std::size_t close = line.rfind(u'"');
  const std::size_t open = close == line.npos || close == 0 ? line.npos : line.rfind(u'"', close - 1);
  if (open == line.npos) return {};
  return {line.substr(open + 1, close - open - 1), line.substr(close + 1)};
}

TProblemCounts CountsOf(const TFinding& finding) {
  return {finding.Severity == TFindingSeverity::Error ? 1 : 0,
          finding.Severity == TFindingSeverity::Warning ? 1 : 0};
}

} // namespace

TToolProjects::TProject* TToolProjects::Find(std::u16string_view file) {
  const auto found = places_.find(std::u16string(file));
  return found == places_.end() ? nullptr : &projects_[found->second];
}

TToolProjects::TProject& TToolProjects::Known(std::u16string_view file) {
  if (TProject* project = Find(file)) return *project;
  places_.emplace(file, projects_.size());
  TProject& project = projects_.emplace_back();
  project.File = file;
  project.Result.Project = NameOf(file);
  const auto waiting = unclaimed_.find(project.File);
  if (waiting != unclaimed_.end()) project.Result.Counts = waiting->second;
  return project;
}

void TToolProjects::Start(TProject& project, TTime now) {
  project.IsBuilt = true;
  project.TellsStarts = true;
  if (project.Open++ == 0) project.Start = now;
  begun_.push_back(static_cast<std::size_t>(&project - projects_.data()));
}

void TToolProjects::End(TProject& project, bool succeeded, TTime now) {
  project.IsFailed = project.IsFailed || !succeeded;
  if (project.Open > 0 && --project.Open > 0) return;
  if (project.Began != TTime() && now - project.Start <= project.Ended - project.Began) return;
  project.Began = project.Start;
  project.Ended = now;
}

void TToolProjects::Start(std::u16string_view file, TTime now) {
  Start(Known(file), now);
}

void TToolProjects::End(std::u16string_view file, bool succeeded, TTime now) {
  TProject& project = Known(file);
  if (project.Open == 0) project.Start = now;
  project.IsBuilt = true;
  const auto place = static_cast<std::size_t>(&project - projects_.data());
  const auto begun = std::find(begun_.rbegin(), begun_.rend(), place);
  if (begun != begun_.rend()) begun_.erase(std::prev(begun.base()));
  End(project, succeeded, now);
}

void TToolProjects::Read(std::u16string_view line, TTime now) {
  if (line.empty() || (line.back() == u'-' && ReadHeading(line, now))) return;
  if (!numbered_.empty()) {
    if (line.front() == u'=' || line.starts_with(u"--")) EndAllNumbered(); // the summary, or what precedes it
    const auto numbered = numbered_.find(BuildNumberOf(line));
    if (numbered != numbered_.end()) numbered->second.LastLine = now;
  }
  ReadMSBuildLine(line, now);
}

// A heading that says of a project that it is not built has a word of its own.
bool TToolProjects::ReadHeading(std::u16string_view line, TTime now) {
  constexpr auto notBuilt = std::to_array<std::u16string_view>({u"skipped", u"ignor", u"übersprungen"});
  const auto heading = ReadToolHeading(line);
  if (!heading) return false;
  const int number = BuildNumberOf(line);
  if (const auto before = numbered_.extract(number)) EndNumbered(before.mapped());
  TProject& project = Known(heading->Project);
  project.Result.Project = heading->Project;
  project.Result.Configuration = heading->Configuration;
  if (std::ranges::any_of(notBuilt, [&heading](auto word) {
        return text::FindIgnoreCase(heading->What, word) != heading->What.npos;
      })) {
    project.Start = project.IsBuilt ? project.Start : now;
    return true;
  }
  Start(project, now);
  numbered_[number] = {begun_.back(), now};
  return true;
}

void TToolProjects::EndNumbered(const TNumbered& numbered) {
  TProject& project = projects_[numbered.Place];
  std::erase(begun_, numbered.Place);
  End(project, project.Result.Counts.Errors == 0, numbered.LastLine);
}

void TToolProjects::EndAllNumbered() {
  for (const auto& [number, numbered] : std::exchange(numbered_, {}))
    EndNumbered(numbered);
}

// Project "App.sln" (1) is building "App.csproj" (2) on node 1 (default targets).
// Done Building Project "App.csproj" (default targets) -- FAILED.
void TToolProjects::ReadMSBuildLine(std::u16string_view line, TTime now) {
  constexpr auto begins = std::to_array<std::u16string_view>({u"Project \"", u"Projet \""});
  constexpr auto ends = std::to_array<std::u16string_view>({u"Done ", u"Génération "});
  const auto isPrefix = [](char16_t c) {
    return text::IsBlank(c) || text::IsDigit(c) || c == u':' || c == u'>';
  };
  while (!line.empty() && isPrefix(line.front()))
    line.remove_prefix(1);
  if (line.empty()) return;
  if (line.front() != u'P' && line.front() != u'D' && line.front() != u'G') return;
  const bool isEnd = StartsWithAny(line, ends);
  if (!isEnd && !StartsWithAny(line, begins)) return;
  const TQuoted quoted = LastQuoted(text::TrimRight(line));
  const std::u16string_view file = quoted.Text;
  const std::u16string_view behind = quoted.Behind;
  if (file.empty() || IsSolution(file)) return;
  if (!isEnd && (behind.ends_with(u")") || behind.ends_with(u").") || behind.ends_with(u"):")))
    return Start(file, now);
  if (!isEnd) return;
  // The oldest tool ends a project by its bare name.
  const auto begun = std::find_if(begun_.rbegin(), begun_.rend(), [&](std::size_t place) {
    return text::EndsWithIgnoreCase(projects_[place].File, file);
  });
  if (begun != begun_.rend())
    End(std::u16string(projects_[*begun].File), behind.find(u"-- ") == behind.npos, now);
}

TToolProjects::TProject* TToolProjects::FindCounted(std::u16string_view line, const TFinding& finding) {
  const auto numbered = numbered_.find(BuildNumberOf(line));
  if (numbered != numbered_.end()) return &projects_[numbered->second.Place];
  if (finding.Project.empty()) return begun_.empty() ? nullptr : &projects_[begun_.back()];
  TProject* project = Find(finding.Project);
  return project != nullptr && (project->Open > 0 || !project->TellsStarts) ? project : nullptr;
}

void TToolProjects::Count(std::u16string_view line, const TFinding& finding) {
  if (TProject* project = FindCounted(line, finding))
    project->Result.Counts += CountsOf(finding);
  else if (!finding.Project.empty() && Find(finding.Project) == nullptr)
    unclaimed_[finding.Project] += CountsOf(finding);
}

std::vector<TProjectResult> TToolProjects::Take(TTime runStart, TResultKind unfinished) {
  std::vector<TProjectResult> results;
  for (auto& project : projects_) {
    TResultKind kind = project.IsBuilt ? TResultKind::Succeeded : TResultKind::NothingToDo;
    if (project.Open > 0) kind = IsSuccess(unfinished) ? TResultKind::Failed : unfinished;
    if (project.IsFailed) kind = TResultKind::Failed;
    if (project.Began == TTime()) project.Began = project.Ended = project.Start;
    project.Result.Result = kind;
    project.Result.Began = TimeBetween(runStart, project.Began);
    project.Result.Elapsed = TimeBetween(project.Began, project.Ended);
    results.push_back(std::move(project.Result));
  }
  return results;
}

} // namespace kx
