#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.h"

#include <map>
#include <set>

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

TJson ProjectToJson(const IVSDotNetProject& project) {
  TJson dependencies = TJson::array();
  for (const auto& id : project.GetDependancies()->GetList())
    dependencies.push_back(text::ToUtf8(id));
  TJson configurations = TJson::array();
  for (int i = 0; i < project.GetConfigCount(); ++i) {
    const TVSDotNetProjectConfig config = project.GetConfigItem(i);
    configurations.push_back({{"solution", text::ToUtf8(config.Solution)},
                              {"project", text::ToUtf8(config.Project)},
                              {"active", config.Active}});
  }
  TJson scripts = TJson::array();
  for (const auto& script : project.GetRCFiles())
    scripts.push_back(text::ToUtf8(script));
  return {{"name", text::ToUtf8(project.GetName())},
          {"fileName", text::ToUtf8(project.GetFileName())},
          {"id", text::ToUtf8(project.GetProjectID())},
          {"typeId", text::ToUtf8(project.GetProjectTypeID())},
          {"isVCProject", project.IsVCProject()},
          {"dependencies", std::move(dependencies)},
          {"configurations", std::move(configurations)},
          {"resourceScripts", std::move(scripts)},
          {"versionScript", text::ToUtf8(project.GetRCWithVersionInfo())}};
}

TJson ConfigurationsToJson(const IVSDotNetSolution& solution) {
  const auto configurations = solution.GetConfigurations();
  if (!configurations) return nullptr;
  TJson names = TJson::array();
  for (int i = 0; i < configurations->GetCount(); ++i)
    names.push_back(text::ToUtf8(configurations->GetItem(i)->GetName()));
  return names;
}

TJson NotFoundToJson(const IVSDotNetSolution& solution) {
  TJson projects = TJson::array();
  for (const auto& project : solution.GetProjectsNotFound()) {
    if (project.IsFolder()) continue;
    projects.push_back({{"name", text::ToUtf8(project.Name)},
                        {"fileName", text::ToUtf8(project.FileName)},
                        {"id", text::ToUtf8(project.ID)}});
  }
  return projects;
}

// The ways of the circles that the Global section of an old solution closes.
TJson CirclesToJson(const IVSDotNetProjects& projects) {
  TJson ways = TJson::array();
  for (const auto& circle : FindCircles(projects))
    ways.push_back(text::ToUtf8(DescribeCircle(circle)));
  return ways;
}

std::string TextOf(const TJson& object, const char* key) {
  return object[key].get<std::string>();
}

// What people want to know of identifiers.
class TProjectNames {
public:
  explicit TProjectNames(const TJson& solution) {
    for (const auto& project : solution["projectsNotFound"])
      notFound_.insert(TextOf(project, "fileName"));
    for (const char* list : {"projects", "projectsNotFound"})
      for (const auto& project : solution[list])
        names_.try_emplace(text::FromUtf8(TextOf(project, "id")),
                           TextOf(project, "name") + (IsFound(project) ? "" : " (not on disk)"));
  }

  // By its file: identifiers are shared now and then.
  bool IsFound(const TJson& project) const { return !notFound_.contains(TextOf(project, "fileName")); }
  std::string Describe(const std::u16string& id) const {
    const auto known = names_.find(id);
    return known == names_.end() ? text::ToUtf8(id) + " (no project of this solution)" : known->second;
  }

private:
  std::map<std::u16string, std::string, text::IgnoreCaseLess> names_;
  std::set<std::string> notFound_;
};

std::string LineOf(const TJson& project) {
  return "  " + TextOf(project, "name") + "  " + TextOf(project, "fileName") + "  " + TextOf(project, "id");
}

std::string DescribeProject(const TJson& project, const TProjectNames& names) {
  std::string out = LineOf(project) + (names.IsFound(project) ? "\n" : "  (not on disk)\n");
  std::set<std::u16string, text::IgnoreCaseLess> needed;
  for (const auto& id : project["dependencies"]) {
    const std::u16string wide = text::FromUtf8(id.get<std::string>());
    if (needed.insert(wide).second) out += "      needs " + names.Describe(wide) + "\n";
  }
  for (const auto& script : project["resourceScripts"])
    out += "      script " + script.get<std::string>() +
           (script == project["versionScript"] ? "  (version)" : "") + "\n";
  return out;
}

// Those that the list of projects leaves out.
std::string DescribeNotFound(const TJson& solution) {
  std::set<std::string> listed;
  for (const auto& project : solution["projects"])
    listed.insert(TextOf(project, "fileName"));
  std::string lines;
  int count = 0;
  for (const auto& project : solution["projectsNotFound"]) {
    if (listed.contains(TextOf(project, "fileName"))) continue;
    lines += LineOf(project) + "\n";
    ++count;
  }
  if (count == 0) return {};
  return "Projects not on disk     " + std::to_string(count) + "  (left out of every build)\n" + lines;
}

} // namespace

TJson InspectSolution(const std::u16string& file, const TInspectOptions& options) {
  const auto solution = LookAtSolution(file, options.AllProjects);
  const auto version = static_cast<std::size_t>(solution->GetVisualStudioVersion());
  TJson projects = TJson::array();
  for (int i = 0; i < solution->GetProjects()->GetCount(); ++i)
    projects.push_back(ProjectToJson(*solution->GetProjects()->GetItem(i)));
  return {{"version", text::ToUtf8(VSDotNetVersionNames[version])},
          {"configurations", ConfigurationsToJson(*solution)},
          {"projects", std::move(projects)},
          {"projectsNotFound", NotFoundToJson(*solution)},
          {"circles", CirclesToJson(*solution->GetProjects())}};
}

std::string DescribeSolution(const TJson& solution) {
  std::string out = "Format          " + TextOf(solution, "version") + "\n";
  const TJson& configurations = solution["configurations"];
  out +=
      "Configurations  " + (configurations.is_null() ? "none" : std::to_string(configurations.size())) + "\n";
  if (configurations.is_array())
    for (const auto& name : configurations)
      out += "  " + name.get<std::string>() + "\n";
  out += "Projects in build order  " + std::to_string(solution["projects"].size()) + "\n";
  const TProjectNames names(solution);
  for (const auto& project : solution["projects"])
    out += DescribeProject(project, names);
  out += DescribeNotFound(solution);
  for (const auto& way : solution["circles"])
    out += "Circle, passed over by the order: " + way.get<std::string>() + "\n";
  return ForTerminal(text::FromUtf8(out));
}

} // namespace kx::cli
