#include "package/versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"
#include "contract/Utilities.h"
#include "foundation/formats/Xml.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/assemblyinfo/AssemblyInfoSharing.h"
#include "package/versioninfo/ProjectSources.h"
#include "package/web/KxResolveIISDirectory.h"
#include "package/web/WebAddress.h"
#include "package/web/WebDav.h"

#include <map>
#include <new>
#include <optional>
#include <set>
#include <unordered_set>

namespace kx {

namespace {

using TNames = std::unordered_set<std::u16string, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

// Removes a web project's project file, which is only looked at; an empty path is none.
class TDownloadedFile {
public:
  explicit TDownloadedFile(std::u16string path) : path_(std::move(path)) {}
  ~TDownloadedFile() {
    try {
      if (!path_.empty()) static_cast<void>(platform::RemoveFile(path_));
    } catch (const std::bad_alloc&) { // it goes with its folder
    }
  }
  TDownloadedFile(const TDownloadedFile&) = delete;
  TDownloadedFile& operator=(const TDownloadedFile&) = delete;

private:
  std::u16string path_;
};

// One server connection for all web projects of a run.
class TConnection {
public:
  TConnection() = default;
  ~TConnection() {
    if (client_) client_->Disconnect();
  }
  TConnection(const TConnection&) = delete;
  TConnection& operator=(const TConnection&) = delete;

  // Raises EKxException for a password that cannot be had: an empty one in its place would be sent to the
  // server as this user's.
  TKxWebDavClient* Client(const TKxWebProjectSettings& web) {
    if (web.IsWebDAVPasswordLost) throw EKxException(std::u16string(LostWebDAVPassword));
    if (!client_) {
      client_ = TKxWebDavClient::Create();
      client_->UserName = web.WebDAVUsername;
      client_->Password = web.WebDAVPassword;
      client_->StopEvent = web.StopEvent;
    }
    return client_.get();
  }

private:
  std::unique_ptr<TKxWebDavClient> client_;
};

// The folder of a file that is named from another folder on the server.
std::u16string RemoteFolder(std::u16string_view folder, std::u16string_view below) {
  const std::u16string_view rest = below.substr(0, below.find_last_not_of(u"\\/") + 1);
  return std::u16string(folder) + (folder.empty() || rest.empty() ? u"" : u"/") + std::u16string(rest);
}

// The projects of a solution and their sources, read when somebody asks for them.
class TSolutionUnits : public IAssemblyInfoUnits {
public:
  TSolutionUnits(const IVSDotNetSolution& solution, std::u16string solutionPath)
      : projects_(solution.GetProjects()), solutionPath_(std::move(solutionPath)) {}

  void Stamp(const text::TStringList& ids) { stamped_ = ids; }
  void Enter(const IVSDotNetProject& project, std::u16string_view file) {
    project_ = &project;
    file_ = file;
  }

  const TAssemblyInfoUnit& Current() override { return UnitOf(*project_, file_); }

  std::vector<const TAssemblyInfoUnit*> UnitsOf(std::u16string_view source) override {
    if (bySource_.empty()) ReadAll();
    const auto [first, last] = bySource_.equal_range(text::ToLower(source));
    std::vector<const TAssemblyInfoUnit*> units;
    for (auto at = first; at != last; ++at)
      units.push_back(at->second);
    return units;
  }

  bool IsAssemblyInfoFile(std::u16string_view source) override {
    if (!assemblyInfoFiles_) FindAssemblyInfoFiles();
    return assemblyInfoFiles_->contains(source);
  }

private:
  void FindAssemblyInfoFiles() {
    assemblyInfoFiles_.emplace();
    for (const auto& id : stamped_) {
      const auto project = projects_->FindByID(id);
      if (!project || IsWebAddress(project->GetFileName())) continue;
      const std::u16string path = TPathUtils::ExpandRelativePath(project->GetFileName(), solutionPath_);
      try {
        const std::u16string name = FindAssemblyInfoName(path, solutionPath_);
        const std::u16string file = TPathUtils::ExpandRelativePath(name, text::ExtractFilePath(path));
        if (!name.empty() && platform::FileExists(file)) assemblyInfoFiles_->insert(file);
      } catch (const EKxException&) {
        continue; // said when it is that project's turn
      }
    }
  }

  const TAssemblyInfoUnit& UnitOf(const IVSDotNetProject& project, std::u16string_view file) {
    const auto found = units_.find(project.GetProjectID());
    if (found != units_.end()) return found->second;
    return units_.emplace(project.GetProjectID(), ReadProjectSources(project.GetName(), file, solutionPath_))
        .first->second;
  }

  // A web project is known only while it is stamped.
  void ReadAll() {
    for (int i = 0; i < projects_->GetCount(); ++i) {
      const auto project = projects_->GetItem(i);
      const bool current = project.get() == project_;
      if (!current && IsWebAddress(project->GetFileName())) continue;
      const std::u16string file =
          current ? file_ : TPathUtils::ExpandRelativePath(project->GetFileName(), solutionPath_);
      const TAssemblyInfoUnit& unit = UnitOf(*project, file);
      for (const auto& source : unit.Sources)
        bySource_.emplace(text::ToLower(source), &unit);
    }
  }

  std::shared_ptr<IVSDotNetProjects> projects_;
  std::u16string solutionPath_;
  const IVSDotNetProject* project_ = nullptr;
  std::u16string file_;
  text::TStringList stamped_;
  std::optional<std::set<std::u16string, text::IgnoreCaseLess>> assemblyInfoFiles_;
  std::map<std::u16string, TAssemblyInfoUnit> units_; // by the project's id
  std::multimap<std::u16string, const TAssemblyInfoUnit*> bySource_;
};

} // namespace

class TKxAssemblyInfoUpdater : public IKxAssemblyInfoUpdater {
public:
  TKxAssemblyInfoUpdater(std::shared_ptr<IVSDotNetSolution> solution, TCustomKxAction& action,
                         IAssemblyInfoCallback& callback, const TKxWebProjectSettings& web,
                         TAssemblyInfoHistory* history)
      : solution_(std::move(solution)), action_(action), callback_(callback),
        solutionPath_(text::ExtractFilePath(solution_->GetFileName())), web_(web), history_(history),
        units_(*solution_, solutionPath_), assemblyInfo_(TBrannicAssemblyInfo::Create()) {}

  void UpdateAllProjects() override {
    text::TStringList ids;
    const auto projects = solution_->GetProjects();
    for (int i = 0; i < projects->GetCount(); ++i)
      ids.Add(projects->GetItem(i)->GetProjectID());
    UpdateProjects(ids, nullptr);
  }

  void UpdateProjects(const text::TStringList& projectIDs, const text::TStringList* filter) override {
    text::TStringList ids;
    const TNames wanted = filter == nullptr ? TNames() : TNames(filter->begin(), filter->end());
    for (const auto& id : projectIDs)
      if (filter == nullptr || wanted.contains(id)) ids.Add(id);
    action_.SendMessage(text::FromInteger(static_cast<std::int64_t>(ids.Count())) + u" projects to process.");
    units_.Stamp(ids);
    TConnection connection;
    for (const auto& id : ids) {
      if (const auto project = solution_->GetProjects()->FindByID(id))
        UpdateProject(*project, connection);
      else
        action_.SendMessage(u"ProjectID : " + id + u" - not found in solution");
    }
  }

private:
  void UpdateProject(const IVSDotNetProject& project, TConnection& connection) {
    const std::u16string& location = project.GetFileName();
    const bool isWeb = IsWebAddress(location);
    const bool isWebDav = isWeb && web_.ProjLocDetectMethod == TProjLocDetectMethod::useWebDAV;
    const std::u16string path = ProjectFile(location, isWeb, connection);
    const TDownloadedFile copy(isWebDav ? path : std::u16string());
    if (!platform::FileExists(path)) throw EKxException(u"ERROR : Unable to find : " + path);
    action_.SendMessage(u"Processing Project File : " + path);
    const auto name = AssemblyInfoName(path);
    if (!name || name->empty()) return;
    if (isWebDav) return ProcessOnServer(*name, connection.Client(web_));
    const std::u16string file = TPathUtils::ExpandRelativePath(*name, text::ExtractFilePath(path));
    if (!platform::FileExists(file))
      return Warn(path + u" names " + file + u", which does not exist: the project is not stamped");
    units_.Enter(project, path);
    Process(file, &units_);
  }

  std::optional<std::u16string> AssemblyInfoName(const std::u16string& projectFile) const {
    try {
      return FindAssemblyInfoName(projectFile, solutionPath_);
    } catch (const EKxParseError& error) {
      Warn(projectFile + u" cannot be read, so the project is not stamped: " + error.Message());
      return std::nullopt;
    }
  }

  void Warn(const std::u16string& message) const {
    action_.SendMessage(u"Warning : " + message, TStatusTag::stWarning);
  }

  std::u16string ProjectFile(const std::u16string& location, bool isWeb, TConnection& connection) {
    if (!isWeb) return TPathUtils::ExpandRelativePath(location, solutionPath_);
    switch (web_.ProjLocDetectMethod) {
    case TProjLocDetectMethod::useWMI:
      return GetPhysicalDirFromIISDir(location, web_.WMIWebsiteNum);
    case TProjLocDetectMethod::useShare:
      return BuildShareName(location, web_.SharePath);
    case TProjLocDetectMethod::useWebDAV:
      break;
    }
    return GetProjectFileUsingWebDAV(connection.Client(web_), location, webDavProjectPath_);
  }

  void Process(std::u16string_view fileName, IAssemblyInfoUnits* units) {
    assemblyInfo_->SetCallback(callback_);
    assemblyInfo_->SetUnits(units, history_);
    assemblyInfo_->ProcessFile(fileName, true);
  }

  void ProcessOnServer(std::u16string_view name, TKxWebDavClient* client) {
    const std::u16string folder = RemoteFolder(webDavProjectPath_, text::ExtractFilePath(name));
    const std::u16string local = GetFileUsingWebDAV(client, folder, text::ExtractFileName(name));
    Process(local, nullptr); // the other sources stay on the server
    PutFileUsingWebDAV(client, local, folder);
    static_cast<void>(platform::RemoveFile(local));
  }

  std::shared_ptr<IVSDotNetSolution> solution_;
  TCustomKxAction& action_;
  IAssemblyInfoCallback& callback_;
  std::u16string solutionPath_;
  TKxWebProjectSettings web_;
  TAssemblyInfoHistory* history_;
  TSolutionUnits units_;
  std::u16string webDavProjectPath_; // the project's folder on the server
  std::shared_ptr<IBrannicAssemblyInfoUpdater> assemblyInfo_;
};

std::shared_ptr<IKxAssemblyInfoUpdater> GetAssemblyInfoUpdater(std::shared_ptr<IVSDotNetSolution> solution,
                                                               TCustomKxAction& action,
                                                               IAssemblyInfoCallback& callback,
                                                               const TKxWebProjectSettings& web,
                                                               TAssemblyInfoHistory* history) {
  return std::make_shared<TKxAssemblyInfoUpdater>(std::move(solution), action, callback, web, history);
}

void CollectAssemblyInfoFiles(const IVSDotNetSolution& solution,
                              const std::vector<const IVSDotNetProject*>& projects,
                              const TAssemblyInfoValues& values, text::TStringList& files) {
  const std::u16string folder = text::ExtractFilePath(solution.GetFileName());
  TSolutionUnits units(solution, folder);
  TAssemblyInfoInventories inventories;
  text::TStringList ids;
  for (const IVSDotNetProject* project : projects)
    ids.Add(project->GetProjectID());
  units.Stamp(ids);
  TNames known(files.begin(), files.end());
  for (const IVSDotNetProject* project : projects) {
    if (IsWebAddress(project->GetFileName())) continue;
    const std::u16string path = TPathUtils::ExpandRelativePath(project->GetFileName(), folder);
    try {
      const std::u16string name = FindAssemblyInfoName(path, folder);
      const std::u16string file = TPathUtils::ExpandRelativePath(name, text::ExtractFilePath(path));
      if (name.empty() || !platform::FileExists(file)) continue;
      units.Enter(*project, path);
      for (const auto& share : ShareAssemblyInfo(file, values, &units, inventories).Files)
        if (!share.Values.empty() && known.insert(share.File).second) files.Add(share.File);
    } catch (const EKxException&) {
      // the stamping will say it
    }
  }
}

} // namespace kx
