#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/solution/VSNETSLN.h"
#include "program/cli/FileKinds.h"
#include "program/cli/Graph.h"
#include "program/runner/Messages.h"

#include <set>
#include <unordered_map>

namespace kx::cli {

namespace {

void RequireSolution(const std::u16string& file) {
  if (platform::DirectoryExists(file)) throw EKxException(file + u" is a folder; graph takes a solution.");
  if (!platform::FileExists(file)) throw EKxException(NoSuchFile(file));
  const std::u16string_view extension = ExtensionOfKind(file);
  if (!extension.empty() && extension != u".sln") throw EKxException(DescribeFileKind(file));
}

class TGraphMaker {
public:
  explicit TGraphMaker(const IVSDotNetSolution& solution) : solution_(solution) {
    graph_.Solution = solution.GetFileName();
    FindFiles();
    AddProjects();
    for (std::size_t node = 0; node < projects_.size(); ++node)
      AddNeeds(node);
    AddCircles();
    MarkCircles(graph_);
  }

  TGraph Make(const std::u16string& around) {
    return around.empty() ? std::move(graph_) : CutAround(graph_, NodesCalled(around));
  }

private:
  using TPlace = std::pair<std::u16string, std::u16string>; // file and identifier, which may be shared

  static TPlace PlaceOf(const IVSDotNetProject& project) {
    return {project.GetFileName(), project.GetProjectID()};
  }

  void FindFiles() {
    for (const auto& project : solution_.GetProjectsNotFound())
      (IsSolutionFolder(*project) ? folders_ : notFound_).insert(PlaceOf(*project));
  }

  // Without folders, of which nothing is built, unless one takes part in dependencies.
  void AddProjects() {
    const IVSDotNetProjects& projects = *solution_.GetProjects();
    std::set<std::u16string, text::IgnoreCaseLess> needed;
    for (int i = 0; i < projects.GetCount(); ++i)
      for (const auto& id : projects.GetItem(i)->GetDependancies()->GetList())
        needed.insert(id);
    for (int i = 0; i < projects.GetCount(); ++i) {
      auto project = projects.GetItem(i);
      const bool isBuilt = !folders_.contains(PlaceOf(*project));
      if (isBuilt || needed.contains(project->GetProjectID()) || project->GetDependancies()->GetCount() > 0)
        AddProject(std::move(project), isBuilt);
    }
  }

  void AddProject(std::shared_ptr<IVSDotNetProject> project, bool isBuilt) {
    nodeOfId_.try_emplace(project->GetProjectID(), projects_.size());
    nodeOf_[project.get()] = projects_.size();
    TGraphNode& node = graph_.Nodes.emplace_back();
    node.Name = project->GetName();
    node.Id = project->GetProjectID();
    node.Path = project->GetFileName();
    if (notFound_.contains(PlaceOf(*project))) node.Kind = TGraphNodeKind::NotOnDisk;
    if (isBuilt && solution_.HasBuildOrder()) node.Order = ++built_;
    projects_.push_back(std::move(project));
  }

  // Of projects that share an identifier the first one is meant.
  std::size_t NodeOfId(const std::u16string& id) {
    const auto [known, isNew] = nodeOfId_.try_emplace(id, graph_.Nodes.size());
    if (isNew) graph_.Nodes.push_back({.Name = id, .Id = id, .Path = {}, .Kind = TGraphNodeKind::Unknown});
    return known->second;
  }

  void AddNeeds(std::size_t node) {
    std::set<std::size_t> known;
    const auto ids = projects_[node]->GetDependancies();
    for (int i = 0; i < ids->GetCount(); ++i) {
      const std::size_t needed = NodeOfId(ids->GetItem(i));
      if (known.insert(needed).second) graph_.Nodes[node].Needs.push_back({needed, ids->GetLine(i)});
    }
  }

  void AddCircles() {
    for (const TVSDotNetCircle& circle : FindCircles(*solution_.GetProjects())) {
      auto& nodes = graph_.Circles.emplace_back();
      for (const auto& project : circle)
        nodes.push_back(nodeOf_.at(project.get()));
    }
  }

  std::vector<std::size_t> NodesCalled(const std::u16string& name) const {
    std::vector<std::size_t> nodes;
    for (const auto& project : TProjectFinder(solution_).Find(name))
      if (const auto known = nodeOf_.find(project.get()); known != nodeOf_.end())
        nodes.push_back(known->second);
    if (!nodes.empty()) return nodes;
    std::vector<std::u16string> names;
    for (const TGraphNode& node : graph_.Nodes)
      names.insert(names.end(), {node.Name, node.Path});
    throw EKxException(solution_.GetFileName() + u" has no project " + Quoted(name) + u"." +
                       DidYouMean(name, names));
  }

  const IVSDotNetSolution& solution_;
  TGraph graph_;
  std::set<TPlace> folders_;
  std::set<TPlace> notFound_;
  std::vector<std::shared_ptr<IVSDotNetProject>> projects_; // the first nodes
  std::unordered_map<const IVSDotNetProject*, std::size_t> nodeOf_;
  std::unordered_map<std::u16string, std::size_t, text::IgnoreCaseHash, text::IgnoreCaseEqual> nodeOfId_;
  std::int64_t built_ = 0;
};

} // namespace

TGraph GraphOfSolution(const std::u16string& file, const std::u16string& around) {
  RequireSolution(file);
  const auto solution = OpenSolutionWithCircles(text::ExpandPath(file, platform::CurrentDirectory()), true);
  return TGraphMaker(*solution).Make(around);
}

} // namespace kx::cli
