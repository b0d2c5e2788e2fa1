// The host's services. The host sets them before it calls a plug-in's entry and keeps them for the life of
// the process.
#pragma once

#include "contract/Actions.h"
#include "contract/FileUpdates.h"
#include "contract/Options.h"
#include "foundation/platform/DirectoryService.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

class TKxPropertyPage;

// A page or property editor as it is registered: what the design environment makes of it is its own business.
struct TKxPageClass {
  std::u16string_view ClassName;
  std::unique_ptr<TKxPropertyPage> (*Create)();
};
struct TKxPropertyEditorClass {
  std::u16string_view ClassName;
  std::u16string_view (*GetPage)(); // the page that edits the property
};

class IKxActionService {
public:
  virtual ~IKxActionService() = default;
  virtual void RegisterAction(std::u16string_view identifier, std::u16string_view category,
                              const TKxActionClass& actionClass) = 0;
  virtual void RegisterPropertyEditor(TKxPropertyKind kind, const TKxActionClass& actionClass,
                                      std::u16string_view property, const TKxPropertyEditorClass& editor) = 0;
  virtual void RegisterPropertyPages(const TKxActionClass& actionClass,
                                     std::span<const TKxPageClass* const> pages) = 0;
  // The picture of the actions and options that are registered under this name: SVG, which scales to every
  // size and needs no decoder of the plug-in's. The text outlives the host's use of the plug-in.
  virtual void RegisterImage(std::u16string_view name, std::string_view svg) = 0;
};

// A function of an action that expressions may call with one text. It never raises.
using TKxScriptFunction = std::u16string (*)(TCustomKxAction& action, std::u16string_view argument);

class IKxCoreScriptingService {
public:
  virtual ~IKxCoreScriptingService() = default;
  virtual void RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                                TKxScriptFunction function) = 0;
  virtual void RegisterConstant(std::u16string_view name, std::int32_t value) = 0;
  virtual void RegisterEnumeration(const TKxEnumeration& enumeration) = 0;
};

class IKxOptionsService {
public:
  virtual ~IKxOptionsService() = default;
  virtual void RegisterOptions(const TKxOptionsClass& optionsClass) = 0;
  virtual void RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) = 0;
  // The one loaded object; null when no such class is registered. Not owned by the caller.
  virtual TKxOptionsObject* GetOptions(std::u16string_view name, std::u16string_view category) = 0;
};

// What property pages ask of the design environment.
class IKxDesignService {
public:
  virtual ~IKxDesignService() = default;
  virtual text::TStringList GetVariableNames() = 0; // of the current project
  // The chosen folder or file, seen from the one given; nothing when the user gave up. A file is what
  // KxChosenFile makes of it: a page never looks at the disk, which may be slow, while the user waits.
  virtual std::optional<std::u16string> BrowseForDirectory(std::u16string_view title,
                                                           std::u16string_view start) = 0;
  virtual std::optional<std::u16string> BrowseForFile(std::u16string_view title, std::u16string_view start,
                                                      std::u16string_view filter,
                                                      std::u16string_view extension) = 0;
  virtual void ShowMessage(std::u16string_view text) = 0;
};

// Which frameworks are installed, by version text ("v2.0", "v3.5", "v4.0").
class IKxDotNetInfo {
public:
  virtual ~IKxDotNetInfo() = default;
  // The folder that holds MSBuild.exe; nothing when the framework is not installed.
  virtual std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view version) = 0;
};

// Where a web server publishes its folders, by the names of its directory service.
class IKxDirectoryService {
public:
  virtual ~IKxDirectoryService() = default;
  // "IIS://server/w3svc/1/ROOT/folder"; nothing when there is no such object.
  virtual std::optional<platform::DirectoryObject> FindObject(std::u16string_view path) = 0;
};

// The registration context that a plug-in's entry is given.
class IKxRegistrationContext {
public:
  virtual ~IKxRegistrationContext() = default;
  virtual bool HasDesignEnvironment() const = 0; // an editor is present
};

// What a plug-in exports under its own name, with C linkage. It registers and returns; it does not throw.
using TKxPluginEntry = void (*)(const IKxRegistrationContext& context);

struct TKxServices {
  IKxActionService* Actions = nullptr;
  IKxCoreScriptingService* Scripting = nullptr;
  IKxOptionsService* Options = nullptr;
  IKxDesignService* Design = nullptr;                        // null without a design environment
  IKxPropertySetDesignServices* PropertySetDesign = nullptr; // likewise
  IKxDotNetInfo* DotNet = nullptr;
  IKxFileUpdates* Files = nullptr;          // null: the files themselves
  IKxDirectoryService* Directory = nullptr; // null: the system's alone
};
// Null members make the accessor below raise EKxException that names the service.
void SetServices(const TKxServices& services);
const TKxServices& CurrentServices();

IKxActionService& ActionService();
IKxCoreScriptingService& CoreScriptingService();
IKxOptionsService& OptionsService();
IKxDesignService& DesignService();
IKxPropertySetDesignServices& KxPropertySetDesignServices();
IKxDotNetInfo& KxDotNetInfo();

} // namespace kx
