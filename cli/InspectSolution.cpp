#include "cli/Inspect.h"

#include "solution/VSNETSLN.h"
#include "text/Encoding.h"

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

} // namespace

TJson InspectSolution(const std::u16string& file, const TInspectOptions& options) {
  const auto solution = OpenSolution(file, options.AllProjects);
  const auto version = static_cast<std::size_t>(solution->GetVisualStudioVersion());
  TJson projects = TJson::array();
  for (int i = 0; i < solution->GetProjects()->GetCount(); ++i)
    projects.push_back(ProjectToJson(*solution->GetProjects()->GetItem(i)));
  return {{"version", text::ToUtf8(VSDotNetVersionNames[version])},
          {"configurations", ConfigurationsToJson(*solution)},
          {"projects", std::move(projects)}};
}

std::string DescribeSolution(const TJson& solution) {
  std::string out = "Format          " + solution["version"].get<std::string>() + "\n";
  const TJson& configurations = solution["configurations"];
  out +=
      "Configurations  " + (configurations.is_null() ? "none" : std::to_string(configurations.size())) + "\n";
  if (configurations.is_array())
    for (const auto& name : configurations)
      out += "  " + name.get<std::string>() + "\n";
  out += "Projects in build order  " + std::to_string(solution["projects"].size()) + "\n";
  for (const auto& project : solution["projects"]) {
    out += "  " + project["name"].get<std::string>() + "  " + project["fileName"].get<std::string>() + "  " +
           project["id"].get<std::string>() + "\n";
    for (const auto& id : project["dependencies"])
      out += "      needs " + id.get<std::string>() + "\n";
    for (const auto& script : project["resourceScripts"])
      out += "      script " + script.get<std::string>() +
             (script == project["versionScript"] ? "  (version)" : "") + "\n";
  }
  return out;
}

} // namespace kx::cli
