// Finds the AssemblyInfo file of each project of a solution and has its attributes rewritten.
#pragma once

#include "contract/Actions.h"
#include "package/assemblyinfo/AssemblyInfo.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "package/solution/VSNETSLN.h"
#include "package/web/ProjLocDetectMethod.h"

#include <functional>
#include <memory>
#include <string>

namespace kx {

// For whoever listens to messages.
using TSendMessageProc = std::function<void(std::u16string_view text)>;

inline constexpr std::u16string_view LostWebDAVPassword =
    u"The stored WebDAV password cannot be decrypted by this user on this machine, so no server is connected "
    u"to; "
    u"store it again (WebDAVPassword)";

// How the action reaches the files of web projects. Copied once; what the action changes later is not seen.
struct TKxWebProjectSettings {
  TProjLocDetectMethod ProjLocDetectMethod = TProjLocDetectMethod::useWMI;
  std::int32_t WMIWebsiteNum = 1;
  std::u16string SharePath = {};
  std::u16string WebDAVUsername = {};
  std::u16string WebDAVPassword = {};  // in clear
  bool IsWebDAVPasswordLost = false;   // one is stored that cannot be read here: no server is asked
  const TKxEvent* StopEvent = nullptr; // ends a transfer early; outlives the updater
};

// The file is the one that FindAssemblyInfoName finds; an attribute that another source of the project has is
// changed there. Projects without such a file are passed over silently, projects that are not in the solution
// and those whose file is not on disk with a message. Everything else that fails raises EKxException, and the
// projects behind it are not updated: a project file that does not exist ("ERROR : Unable to find : " and its
// path), a transfer, a file that cannot be written.
class IKxAssemblyInfoUpdater {
public:
  virtual ~IKxAssemblyInfoUpdater() = default;
  virtual void UpdateAllProjects() = 0; // in the solution's order
  // Of the identifiers those that `filter` has too; with a null filter all of them.
  virtual void UpdateProjects(const text::TStringList& projectIDs, const text::TStringList* filter) = 0;
};

// The action takes the messages, `callback` gives the values; both outlive the updater. So does `history`,
// which may be null: with it, a source that was stamped for several projects one after the other is told of.
std::shared_ptr<IKxAssemblyInfoUpdater> GetAssemblyInfoUpdater(std::shared_ptr<IVSDotNetSolution> solution,
                                                               TCustomKxAction& action,
                                                               IAssemblyInfoCallback& callback,
                                                               const TKxWebProjectSettings& web,
                                                               TAssemblyInfoHistory* history = nullptr);

// The files that stamping these attributes of the projects would change; projects on web servers are left
// out. Never raises.
void CollectAssemblyInfoFiles(const IVSDotNetSolution& solution,
                              const std::vector<const IVSDotNetProject*>& projects,
                              const TAssemblyInfoValues& values, text::TStringList& files);

} // namespace kx
