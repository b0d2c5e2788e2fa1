#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.h"

#include <map>
#include <set>

namespace kx::cli {

namespace {

void WriteProject(const IVSDotNetProject& project, TJsonWriter& json) {
  json.Member("name", project.GetName());
  json.Member("fileName", project.GetFileName());
  json.Member("id", project.GetProjectID());
  json.Member("typeId", project.GetProjectTypeID());
  json.Member("isVCProject", project.IsVCProject());
  json.ValuesMember("dependencies", project.GetDependancies()->GetList());
  json.ArrayMember("configurations", [&] {
    for (int i = 0; i < project.GetConfigCount(); ++i)
      json.Object([&json, config = project.GetConfigItem(i)] {
        json.Member("solution", config.Solution);
        json.Member("project", config.Project);
        json.Member("active", config.Active);
      });
  });
  json.ValuesMember("resourceScripts", project.GetRCFiles());
  json.Member("versionScript", project.GetRCWithVersionInfo());
}

// What people want to know of identifiers.
class TProjectNames {
public:
  explicit TProjectNames(const IVSDotNetSolution& solution) {
    for (const auto& project : solution.GetProjectsNotFound())
      if (!IsSolutionFolder(*project)) notFound_.insert(project->GetFileName());
    const IVSDotNetProjects& projects = *solution.GetProjects();
    for (int i = 0; i < projects.GetCount(); ++i)
      Add(*projects.GetItem(i));
    for (const auto& project : solution.GetProjectsNotFound())
      if (!IsSolutionFolder(*project))
        names_.try_emplace(project->GetProjectID(), project->GetName() + u" (not on disk)");
  }

  // By its file: identifiers are shared now and then.
  bool IsFound(const IVSDotNetProject& project) const { return !notFound_.contains(project.GetFileName()); }
  std::u16string Describe(const std::u16string& id) const {
    const auto known = names_.find(id);
    return known == names_.end() ? id + u" (no project of this solution)" : known->second;
  }

private:
  void Add(const IVSDotNetProject& project) {
    names_.try_emplace(project.GetProjectID(),
                       project.GetName() + (IsFound(project) ? u"" : u" (not on disk)"));
  }

  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> names_;
  std::set<std::u16string> notFound_;
};

std::u16string LineOf(const std::u16string& name, const std::u16string& fileName, const std::u16string& id) {
  return u"  " + name + u"  " + fileName + u"  " + id;
}

std::u16string DescribeProject(const IVSDotNetProject& project, const TProjectNames& names) {
  std::u16string out = LineOf(project.GetName(), project.GetFileName(), project.GetProjectID()) +
                       (names.IsFound(project) ? u"\n" : u"  (not on disk)\n");
  std::set<std::u16string, text::IgnoreCaseLess> needed;
  for (const auto& id : project.GetDependancies()->GetList())
    if (needed.insert(id).second) out += u"      needs " + names.Describe(id) + u"\n";
  for (const auto& script : project.GetRCFiles())
    out +=
        u"      script " + script + (script == project.GetRCWithVersionInfo() ? u"  (version)" : u"") + u"\n";
  return out;
}

// Those that the list of projects leaves out.
std::u16string DescribeNotFound(const IVSDotNetSolution& solution) {
  std::set<std::u16string> listed;
  const IVSDotNetProjects& projects = *solution.GetProjects();
  for (int i = 0; i < projects.GetCount(); ++i)
    listed.insert(projects.GetItem(i)->GetFileName());
  std::u16string lines;
  std::int64_t count = 0;
  for (const auto& project : solution.GetProjectsNotFound()) {
    if (IsSolutionFolder(*project) || listed.contains(project->GetFileName())) continue;
    lines += LineOf(project->GetName(), project->GetFileName(), project->GetProjectID()) + u"\n";
    ++count;
  }
  if (count == 0) return {};
  return u"Projects not on disk     " + text::FromInteger(count) + u"  (left out of every build)\n" + lines;
}

std::u16string DescribeConfigurations(const IVSDotNetSolutionConfigurations* configurations) {
  if (configurations == nullptr) return u"Configurations  none\n";
  std::u16string out = u"Configurations  " + text::FromInteger(configurations->GetCount()) + u"\n";
  for (int i = 0; i < configurations->GetCount(); ++i)
    out += u"  " + configurations->GetItem(i)->GetName() + u"\n";
  return out;
}

class TInspectedSolution : public IInspected {
public:
  explicit TInspectedSolution(std::shared_ptr<IVSDotNetSolution> solution) : solution_(std::move(solution)) {
    if (solution_->HasPassedOverCircle()) circles_ = FindCircles(*solution_->GetProjects());
  }

  void WriteMembers(TJsonWriter& json) const override {
    json.Member("version", Version());
    WriteConfigurations(json);
    json.ArrayMember("projects", [&] {
      for (int i = 0; i < solution_->GetProjects()->GetCount(); ++i)
        json.Object([&] { WriteProject(*solution_->GetProjects()->GetItem(i), json); });
    });
    json.ArrayMember("projectsNotFound", [&] { WriteNotFound(json); });
    json.ArrayMember("circles", [&] {
      for (const auto& circle : circles_)
        json.Value(DescribeCircle(circle));
    });
  }

  void Describe(TOutput& output) const override {
    std::u16string out = u"Format          " + std::u16string(Version()) + u"\n" +
                         DescribeConfigurations(solution_->GetConfigurations().get());
    const IVSDotNetProjects& projects = *solution_->GetProjects();
    out += u"Projects in build order  " + text::FromInteger(projects.GetCount()) + u"\n";
    const TProjectNames names(*solution_);
    for (int i = 0; i < projects.GetCount(); ++i)
      out += DescribeProject(*projects.GetItem(i), names);
    out += DescribeNotFound(*solution_);
    for (const auto& circle : circles_)
      out += u"Circle, passed over by the order: " + DescribeCircle(circle) + u"\n";
    output.Write(ForTerminal(out));
  }

private:
  std::u16string_view Version() const {
    return VSDotNetVersionNames[static_cast<std::size_t>(solution_->GetVisualStudioVersion())];
  }

  void WriteConfigurations(TJsonWriter& json) const {
    json.Key("configurations");
    const auto configurations = solution_->GetConfigurations();
    if (!configurations) return json.Value(nullptr);
    json.Array([&] {
      for (int i = 0; i < configurations->GetCount(); ++i)
        json.Value(configurations->GetItem(i)->GetName());
    });
  }

  void WriteNotFound(TJsonWriter& json) const {
    for (const auto& project : solution_->GetProjectsNotFound()) {
      if (IsSolutionFolder(*project)) continue;
      json.Object([&] {
        json.Member("name", project->GetName());
        json.Member("fileName", project->GetFileName());
        json.Member("id", project->GetProjectID());
      });
    }
  }

  std::shared_ptr<IVSDotNetSolution> solution_;
  std::vector<TVSDotNetCircle> circles_; // those that the Global section of an old solution closes
};

} // namespace

TInspected InspectSolution(const std::u16string& file, const TInspectOptions& options) {
  return std::make_shared<TInspectedSolution>(LookAtSolution(file, options.AllProjects));
}

} // namespace kx::cli
