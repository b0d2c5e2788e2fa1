#include "package/buildaction/KxVSDotNetAction.h"

#include "foundation/text/Text.h"
#include "package/buildaction/KxVSDotNetAction.Run.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "package/buildaction/VersionStamping.h"

#include <array>

namespace kx {

namespace {

constexpr std::u16string_view ConfigVariable = u"CURRENTCONFIGNAME";
constexpr std::u16string_view PlatformVariable = u"CURRENTPLATFORMNAME";

// What the pages of the action edit, and generic editors do not show. The first names no property of this
// action; saved layouts of the host still know it.
constexpr auto HiddenProperties = std::to_array<std::u16string_view>({u"UpdateVersionComment",
                                                                      u"UpdateAssemblyTitle",
                                                                      u"UpdateAssemblyComment",
                                                                      u"UpdateAssemblyCompany",
                                                                      u"UpdateAssemblyDescription",
                                                                      u"UpdateAssemblyCopyright",
                                                                      u"UpdateAssemblyTradeMark",
                                                                      u"UpdateAssemblyProductName",
                                                                      u"UpdateAssemblyVersion",
                                                                      u"UpdateAssemblyFileVersion",
                                                                      u"AssemblyTitle",
                                                                      u"AssemblyComment",
                                                                      u"AssemblyCompany",
                                                                      u"AssemblyDescription",
                                                                      u"AssemblyCopyright",
                                                                      u"AssemblyTradeMark",
                                                                      u"AssemblyProductName",
                                                                      u"AssemblyVersion",
                                                                      u"AssemblyFileVersion",
                                                                      u"UpdateWin32Resource",
                                                                      u"UpdateAssemblyInfo",
                                                                      u"BuildType",
                                                                      u"BuildAction",
                                                                      u"SelectedProjects",
                                                                      u"ApplyAssemblyInfoTo",
                                                                      u"ApplyResourceInfoTo",
                                                                      u"AssemblySelectedProjects",
                                                                      u"ResourceSelectedProjects",
                                                                      u"UseEnv",
                                                                      u"AutoIncAssemblyBuildNumber",
                                                                      u"AutoIncAssemblyFileBuildNumber",
                                                                      u"AutoIncAssemblyRevisionNo",
                                                                      u"AutoIncAssemblyFileRevisionNo",
                                                                      u"LinkAssemblyFileVersionInfo",
                                                                      u"AssemblyVersionMajor",
                                                                      u"AssemblyVersionMinor",
                                                                      u"AssemblyVersionBuild",
                                                                      u"AssemblyVersionRevision",
                                                                      u"AssemblyFileVersionMajor",
                                                                      u"AssemblyFileVersionMinor",
                                                                      u"AssemblyFileVersionBuild",
                                                                      u"AssemblyFileVersionRevision",
                                                                      u"AutoIncBuild",
                                                                      u"MajorVersion",
                                                                      u"MinorVersion",
                                                                      u"ReleaseVersion",
                                                                      u"BuildVersion",
                                                                      u"IsDebug",
                                                                      u"IsPreRelease",
                                                                      u"IsSpecial",
                                                                      u"IsPrivate",
                                                                      u"IsDLL",
                                                                      u"Locale",
                                                                      u"CodePage",
                                                                      u"VersionInfoKeys",
                                                                      u"IncludeCompileDate",
                                                                      u"Win32VersionInfoPropertySetName",
                                                                      u"DotNetVersionInfoPropertySetName",
                                                                      u"_WebDAVPassword"});

// Is known to the action while it goes on.
class TCurrentRun {
public:
  TCurrentRun(TBuildRun*& place, TBuildRun& run) : place_(place) { place_ = &run; }
  ~TCurrentRun() { place_ = nullptr; }
  TCurrentRun(const TCurrentRun&) = delete;
  TCurrentRun& operator=(const TCurrentRun&) = delete;

private:
  TBuildRun*& place_;
};

} // namespace

TKxCustomVSDotNetAction::TKxCustomVSDotNetAction() {
  if (const auto* options = VSDotNetOptions()) solution_.VStudioVersion = options->GetDefaultVSVersion();
  win32Values_.Values().AutoUpdateFileVersion = true;
  win32Values_.Values().AutoUpdateProductVersion = true;
}

TKxCustomVSDotNetAction::~TKxCustomVSDotNetAction() = default;

bool TKxCustomVSDotNetAction::UsingMSBuild() const {
  return msbuild_.UseMSBuild && solution_.VStudioVersion >= TVSDotNetVersion::vs2005;
}

void TKxCustomVSDotNetAction::SetAutoIncrement(bool& flag, bool value, bool partner,
                                               std::u16string_view property) {
  if (flag == value) return;
  flag = value;
  if (value) {
    RegisterDynamicProperty(property);
  } else if (!partner) {
    UnRegisterDynamicProperty(property);
  }
}

void TKxCustomVSDotNetAction::SetAutoIncAssemblyRevisionNo(bool value) {
  SetAutoIncrement(assemblyInfo_.AutoIncRevisionNo, value, assemblyInfo_.AutoIncBuildNumber,
                   u"AssemblyVersion");
}

// The host's projects know the build number under its own name, unlike the other three.
void TKxCustomVSDotNetAction::SetAutoIncAssemblyBuildNumber(bool value) {
  SetAutoIncrement(assemblyInfo_.AutoIncBuildNumber, value, assemblyInfo_.AutoIncRevisionNo,
                   u"AssemblyVersionBuild");
}

void TKxCustomVSDotNetAction::SetAutoIncAssemblyFileRevisionNo(bool value) {
  SetAutoIncrement(assemblyInfo_.AutoIncFileRevisionNo, value, assemblyInfo_.AutoIncFileBuildNumber,
                   u"AssemblyFileVersion");
}

void TKxCustomVSDotNetAction::SetAutoIncAssemblyFileBuildNumber(bool value) {
  SetAutoIncrement(assemblyInfo_.AutoIncFileBuildNumber, value, assemblyInfo_.AutoIncFileRevisionNo,
                   u"AssemblyFileVersion");
}

void TKxCustomVSDotNetAction::SetAutoIncBuild(bool value) {
  SetAutoIncrement(win32Values_.Values().AutoIncBuild, value, false, u"BuildVersion");
}

void TKxCustomVSDotNetAction::SetCodePage(std::int32_t value) {
  win32Values_.Values().CodePage = value == 0 ? 1252 : value;
}

std::u16string TKxCustomVSDotNetAction::GetWebDAVPassword() const {
  const std::u16string& encrypted = webProjects_.EncryptedWebDAVPassword;
  return encrypted.empty() || !IsAttached() ? std::u16string() : DecryptString(encrypted);
}

bool TKxCustomVSDotNetAction::IsWebDAVPasswordLost() const {
  return !webProjects_.EncryptedWebDAVPassword.empty() && GetWebDAVPassword().empty();
}

void TKxCustomVSDotNetAction::SetWebDAVPassword(std::u16string_view clear) {
  if (clear != GetWebDAVPassword()) webProjects_.EncryptedWebDAVPassword = EncryptString(clear);
}

std::u16string TKxCustomVSDotNetAction::GetFormattedDescription() const {
  return GetDescription() + u" [ " + solution_.Solution + u" ]";
}

void TKxCustomVSDotNetAction::GetHiddenProperties(text::TStringList& names) const {
  TKxMultiExecAction::GetHiddenProperties(names);
  for (const auto name : HiddenProperties)
    names.Add(name);
}

void TKxCustomVSDotNetAction::GetPropertyAlias(text::TStringList& aliases) const {
  TKxMultiExecAction::GetPropertyAlias(aliases);
  for (const std::u16string_view line :
       {u"[Solution]", u"Solution=Solution", u"SolutionConfiguration=SolutionConfiguration",
        u"VStudioVersion=Visual Studio Version", u"UseMSBuild=Use MSBuild", u"[MSBuild]",
        u"ExtraMSBuildProperties=Extra MSBuild Properties"})
    aliases.Add(line);
}

void TKxCustomVSDotNetAction::GetPropertyHelp(text::TStringList& help) const {
  TKxMultiExecAction::GetPropertyHelp(help);
  help.Add(u"ExtraMSBuildProperties=Properties in this list will be passed to MSBuild. Use the syntax "
           u"<PropertyName>=<PropertyValue> for each entry. Do not quote entries (they will be quoted "
           u"automatically.)");
}

void TKxCustomVSDotNetAction::CollectLocalVariables(text::TStringList& names, bool withTypes,
                                                    bool withDescriptions) const {
  if (withTypes) {
    names.Add(u"CURRENTCONFIGNAME=btString");
    names.Add(u"CURRENTPLATFORMNAME=btString");
  } else if (withDescriptions) {
    names.Add(u"CURRENTCONFIGNAME=The currently building configuration name");
    // Hosts have always been told so, type and all.
    names.Add(u"CURRENTPLATFORMNAME=btString=The currently building platform name");
  } else {
    names.Add(ConfigVariable);
    names.Add(PlatformVariable);
  }
  TKxMultiExecAction::CollectLocalVariables(names, withTypes, withDescriptions);
}

bool TKxCustomVSDotNetAction::GetLocalVariableValue(std::u16string_view name, std::u16string& value) const {
  if (text::EqualsIgnoreCase(name, ConfigVariable)) {
    value = progress_.ConfigName;
  } else if (text::EqualsIgnoreCase(name, PlatformVariable)) {
    value = progress_.PlatformName;
  } else {
    return TKxMultiExecAction::GetLocalVariableValue(name, value);
  }
  return true;
}

std::u16string TKxCustomVSDotNetAction::ActionExpandExpression(std::u16string_view text) const {
  std::u16string result(text);
  const auto replace = [&result](std::u16string_view name, std::u16string_view value) {
    const std::u16string word(name);
    result = text::ReplaceAll(result, u"%" + word + u"%", value, text::Case::Ignore);
    result = text::ReplaceAll(result, u"$(" + word + u")", value, text::Case::Ignore);
  };
  replace(ConfigVariable, progress_.ConfigName);
  replace(PlatformVariable, progress_.PlatformName);
  return result;
}

bool TKxCustomVSDotNetAction::Execute() {
  if (!TKxMultiExecAction::Execute()) return false;
  terminate_.Clear();
  TBuildRun run(*this, Host(), progress_, terminate_);
  const TCurrentRun current(run_, run);
  return run.Execute();
}

void TKxCustomVSDotNetAction::CountUp() {
  if (assemblyInfo_.UpdateAssemblyInfo) TAssemblyInfoStamping(*this, nullptr, Host().Stop()).CountUp();
  if (Win32Stamp().UpdateWin32Resource) TWin32Stamping(*this, nullptr).CountUp();
}

void TKxCustomVSDotNetAction::OnStdOutData(IKxProcess& /*process*/, std::u16string_view text) {
  if (run_ != nullptr) run_->ReadOutput(text);
}

const TKxActionClass& TKxVSDotNetAction::Class() {
  static constexpr TKxActionClass actionClass{u"TKxVSDotNetAction", []() -> std::unique_ptr<TCustomKxAction> {
                                                return std::make_unique<TKxVSDotNetAction>();
                                              }};
  return actionClass;
}

const TKxPropertyEditorClass& TSolutionEditor::Class() {
  static constexpr TKxPropertyEditorClass editorClass{u"TSolutionEditor", &TSolutionEditor::GetPage};
  return editorClass;
}

} // namespace kx
