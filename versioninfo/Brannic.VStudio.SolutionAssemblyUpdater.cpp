#include "versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"
#include "host/RegEx.h"
#include "host/Utilities.h"
#include "host/WebDav.h"
#include "host/Xml.h"
#include "platform/Files.h"
#include "text/Text.h"
#include "text/WindowsPath.h"
#include "web/KxResolveIISDirectory.h"

namespace kx {

namespace {

// Removes a web project's project file, which is only looked at; an empty path is none.
class TDownloadedFile {
public:
  explicit TDownloadedFile(std::u16string path) : path_(std::move(path)) {}
  ~TDownloadedFile() {
    if (!path_.empty()) static_cast<void>(platform::RemoveFile(path_));
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

  TKxWebDavClient* Client(const TKxWebProjectSettings& web) {
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

} // namespace

class TKxAssemblyInfoUpdater : public IKxAssemblyInfoUpdater {
public:
  TKxAssemblyInfoUpdater(std::shared_ptr<IVSDotNetSolution> solution, TCustomKxAction& action,
                         IAssemblyInfoCallback& callback, const TKxWebProjectSettings& web)
      : solution_(std::move(solution)), action_(action), callback_(callback),
        solutionPath_(text::ExtractFilePath(solution_->GetFileName())), web_(web),
        assemblyInfo_(TBrannicAssemblyInfo::Create()) {}

  void UpdateAllProjects() override {
    text::TStringList ids;
    const auto projects = solution_->GetProjects();
    for (int i = 0; i < projects->GetCount(); ++i)
      ids.Add(projects->GetItem(i)->GetProjectID());
    UpdateProjects(ids, nullptr);
  }

  void UpdateProjects(const text::TStringList& projectIDs, const text::TStringList* filter) override {
    text::TStringList ids;
    for (const auto& id : projectIDs)
      if (filter == nullptr || filter->IndexOf(id)) ids.Add(id);
    action_.SendMessage(text::FromInteger(static_cast<std::int64_t>(ids.Count())) + u" projects to process.");
    TConnection connection;
    for (const auto& id : ids) {
      if (const auto project = solution_->GetProjects()->FindByID(id))
        UpdateProject(project->GetFileName(), connection);
      else
        action_.SendMessage(u"ProjectID : " + id + u" - not found in solution");
    }
  }

private:
  void UpdateProject(const std::u16string& location, TConnection& connection) {
    const bool isWeb = text::ToLower(location).find(u"http://") != std::u16string::npos;
    const bool isWebDav = isWeb && web_.ProjLocDetectMethod == TProjLocDetectMethod::useWebDAV;
    const std::u16string path = ProjectFile(location, isWeb, connection);
    const TDownloadedFile copy(isWebDav ? path : std::u16string());
    if (!platform::FileExists(path)) throw EKxException(u"ERROR : Unable to find : " + path);
    action_.SendMessage(u"Processing Project File : " + path);
    const auto projectText = ReadProjectText(path);
    if (!projectText) throw EKxException(projectText.Message());
    const std::u16string_view name = FindAssemblyInfoName(*projectText);
    if (name.empty()) return;
    if (isWebDav)
      ProcessOnServer(name, connection.Client(web_));
    else
      Process(TPathUtils::ExpandRelativePath(name, text::ExtractFilePath(path)));
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

  void Process(std::u16string_view fileName) {
    assemblyInfo_->SetCallback(callback_);
    assemblyInfo_->ProcessFile(fileName, true);
  }

  void ProcessOnServer(std::u16string_view name, TKxWebDavClient* client) {
    const std::u16string folder = RemoteFolder(webDavProjectPath_, text::ExtractFilePath(name));
    const std::u16string local = GetFileUsingWebDAV(client, folder, text::ExtractFileName(name));
    Process(local);
    PutFileUsingWebDAV(client, local, folder);
    // After a failure it stays: the message names it, and the next run replaces it.
    static_cast<void>(platform::RemoveFile(local));
  }

  std::shared_ptr<IVSDotNetSolution> solution_;
  TCustomKxAction& action_;
  IAssemblyInfoCallback& callback_;
  std::u16string solutionPath_;
  TKxWebProjectSettings web_;
  std::u16string webDavProjectPath_; // the project's folder on the server
  std::shared_ptr<IBrannicAssemblyInfoUpdater> assemblyInfo_;
};

std::shared_ptr<IKxAssemblyInfoUpdater> GetAssemblyInfoUpdater(std::shared_ptr<IVSDotNetSolution> solution,
                                                               TCustomKxAction& action,
                                                               IAssemblyInfoCallback& callback,
                                                               const TKxWebProjectSettings& web) {
  return std::make_shared<TKxAssemblyInfoUpdater>(std::move(solution), action, callback, web);
}

// Meant are "((.*\\)?AssemblyInfo\.\w+)" and, where that is nowhere, "(.*AssemblyInfo[\w|\.]+)", quotation
// marks included. Searched for as they stand they try every quotation mark of a line with every place behind
// it. A match always begins at the first quotation mark of its line unless the name alone is quoted, so each
// line needs one try only.
std::u16string_view FindAssemblyInfoName(std::u16string_view projectText) {
  static constexpr TRegExOptions options = TRegExOptions::IgnoreCase;
  const auto find = [projectText](std::u16string_view pattern) {
    return RegEx::Match(projectText, pattern, options | TRegExOptions::MultiLine);
  };
  if (!find(u"AssemblyInfo")) return {}; // at once, also for texts that need more tries than are allowed
  const TRegExMatch withFolder = find(u"^[^\"\\r\\n]*+\"(.*\\\\AssemblyInfo\\.\\w+)\"");
  const TRegExMatch nameAlone = find(u"\"(AssemblyInfo\\.\\w+)\"");
  if (nameAlone && (!withFolder || nameAlone.Position() < withFolder.Position())) return nameAlone.GetItem(1);
  if (withFolder) return withFolder.GetItem(1);
  return find(u"^[^\"\\r\\n]*+\"((?:.*[^\\w|.\\r\\n])?(?>[\\w|.]*AssemblyInfo[\\w|.]+))\"").GetItem(1);
}

} // namespace kx
