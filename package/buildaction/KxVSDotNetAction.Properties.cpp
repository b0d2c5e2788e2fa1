#include "package/buildaction/KxVSDotNetAction.h"

#include <utility>

namespace kx {

namespace {

using TRows = TKxPropertyRows<TKxVSDotNetAction>;

// Where a row's value is: a member of one of the action's groups of settings.
template <auto Member>
auto& Solution(TKxVSDotNetAction& action) {
  return action.Solution().*Member;
}
template <auto Member>
auto& MSBuild(TKxVSDotNetAction& action) {
  return action.MSBuild().*Member;
}
template <auto Member>
auto& AssemblyInfo(TKxVSDotNetAction& action) {
  return action.AssemblyInfo().*Member;
}
template <auto Member>
auto& Win32Stamp(TKxVSDotNetAction& action) {
  return action.Win32Stamp().*Member;
}
template <auto Member>
auto& Win32Value(TKxVSDotNetAction& action) {
  return action.Win32Values().Values().*Member;
}
template <auto Member>
auto& Web(TKxVSDotNetAction& action) {
  return action.WebProjects().*Member;
}

std::u16string AssemblyInfoLabel(TKxVSDotNetAction& /*action*/) {
  return u"Assembly Info";
}
void IgnoreLabel(TKxVSDotNetAction& /*action*/, const std::u16string& /*text*/) {}

std::u16string VersionInfoKeys(TKxVSDotNetAction& action) {
  return action.Win32Values().Values().Strings.GetText();
}
void SetVersionInfoKeys(TKxVSDotNetAction& action, const std::u16string& lines) {
  action.Win32Values().Values().Strings.SetText(lines); // as they are: not in the spelling of scripts
}

template <auto Version>
std::u16string VersionText(TKxVSDotNetAction& action) {
  return AssemblyInfo<Version>(action).Text();
}
template <auto Version>
void SetVersionText(TKxVSDotNetAction& action, std::u16string text) {
  AssemblyInfo<Version>(action).SetText(std::move(text));
}
template <auto Version, std::size_t Index>
std::u16string VersionPart(TKxVSDotNetAction& action) {
  return AssemblyInfo<Version>(action).Part(Index);
}
template <auto Version, std::size_t Index>
void SetVersionPart(TKxVSDotNetAction& action, std::u16string part) {
  AssemblyInfo<Version>(action).SetPart(Index, std::move(part));
}

void AddMSBuildRows(TRows& rows) {
  rows.Field(u"OverrideReferencePaths", MSBuild<&TMSBuildSettings::OverrideReferencePaths>,
             u"Pass the reference paths to MSBuild.")
      .Field(u"ReferencePaths", MSBuild<&TMSBuildSettings::ReferencePaths>,
             u"Folders in which MSBuild looks for referenced assemblies, one a line.")
      .Field(u"LogLevel", MSBuild<&TMSBuildSettings::LogLevel>, MSLogLevelEnumeration(),
             u"How much MSBuild tells; llQuiet also silences its own console logger.")
      .Field(u"MaxCPUs", MSBuild<&TMSBuildSettings::MaxCPUs>,
             u"How many processors MSBuild uses; 0 means all of them (Visual Studio 2008 and later).")
      .Field(u"OverrideCompiler", MSBuild<&TMSBuildSettings::OverrideCompiler>,
             u"Pass the constants, optimization and unsafe-code settings below to MSBuild.")
      .Field(u"CompilerConstants", MSBuild<&TMSBuildSettings::CompilerConstants>,
             u"Conditional-compilation constants, separated by semicolons.")
      .Field(u"DebugConstant", MSBuild<&TMSBuildSettings::DebugConstant>, u"Add the constant DEBUG.")
      .Field(u"TraceConstant", MSBuild<&TMSBuildSettings::TraceConstant>, u"Add the constant TRACE.")
      .Field(u"Optimize", MSBuild<&TMSBuildSettings::Optimize>, u"Let the compiler optimize.")
      .Field(u"AllowUnsafe", MSBuild<&TMSBuildSettings::AllowUnsafe>, u"Let the compiler accept unsafe code.")
      .Field(u"OverrideWarnings", MSBuild<&TMSBuildSettings::OverrideWarnings>,
             u"Pass the warning settings below to MSBuild.")
      .Field(u"WarningLevel", MSBuild<&TMSBuildSettings::WarningLevel>,
             u"The compiler's warning level, 0 to 4.")
      .Field(u"AllWarningsAsErrors", MSBuild<&TMSBuildSettings::AllWarningsAsErrors>,
             u"Treat every warning as an error.")
      .Field(u"SelectedWarningsAsErrors", MSBuild<&TMSBuildSettings::SelectedWarningsAsErrors>,
             u"Treat the warnings listed in WarningsAsErrors as errors.")
      .Field(u"WarningsAsErrors", MSBuild<&TMSBuildSettings::WarningsAsErrors>,
             u"Warning numbers, separated by semicolons.")
      .Field(u"DisableSelectedWarnings", MSBuild<&TMSBuildSettings::DisableSelectedWarnings>,
             u"Suppress the warnings listed in DisableWarnings.")
      .Field(u"DisableWarnings", MSBuild<&TMSBuildSettings::DisableWarnings>,
             u"Warning numbers, separated by semicolons.")
      .Field(u"OverrideTargetFramework", MSBuild<&TMSBuildSettings::OverrideTargetFramework>,
             u"Build for the framework named in TargetFramework (Visual Studio 2008 and later).")
      .Field(u"TargetFramework", MSBuild<&TMSBuildSettings::TargetFramework>, VSDotNetTargetFxEnumeration(),
             u"The .NET Framework to build for.")
      .Field(u"ExtraMSBuildProperties", MSBuild<&TMSBuildSettings::ExtraMSBuildProperties>,
             u"Further MSBuild properties, one Name=Value a line; values are quoted automatically.");
}

void AddSolutionRows(TRows& rows) {
  rows.Field(u"Solution", Solution<&TSolutionSettings::Solution>,
             u"The solution file to build; a relative name is seen from the folder of the build project.")
      .Field(u"SolutionConfiguration", Solution<&TSolutionSettings::SolutionConfiguration>,
             u"The solution configuration to build. What is no name of the solution is read as an expression "
             u"that may match several; in it the bar means \"or\" (Release\\|Any CPU is one).")
      .Computed(u"AllSolutionConfigurations", &TKxVSDotNetAction::GetAllSolutionConfigurations,
                u"The configurations that the solution offers, one a line.")
      .Field(u"UpdateWin32Resource", Win32Stamp<&TWin32StampSettings::UpdateWin32Resource>,
             u"Write the Win32 version information into resource scripts before building.")
      .Field(u"UpdateAssemblyInfo", AssemblyInfo<&TAssemblyInfoSettings::UpdateAssemblyInfo>,
             u"Write the assembly information into AssemblyInfo files before building.")
      .Field(u"BuildType", Solution<&TSolutionSettings::BuildType>, VSDotNetBuildTypeEnumeration(),
             u"What is built: the whole solution, the selected projects, or all projects one by one.")
      .Field(u"BuildAction", Solution<&TSolutionSettings::BuildAction>, VSDotNetBuildActionEnumeration(),
             u"What is done: build, rebuild, clean or deploy.")
      // As the user wrote them: the action's getter is for those who build, and makes ids of them.
      .Field(u"SelectedProjects", Solution<&TSolutionSettings::SelectedProjects>,
             u"The projects to build, one a line: id, file, path or name.")
      .Field(
          u"UseEnv", Solution<&TSolutionSettings::UseEnv>,
          u"Take include, library and program paths from the environment instead of Visual Studio's options.")
      .Field(u"VStudioVersion", Solution<&TSolutionSettings::VStudioVersion>, VSDotNetVersionEnumeration,
             u"The Visual Studio, or the MSBuild of its time, that builds.")
      .DefaultVaries();
}

void AddStampRows(TRows& rows) {
  rows.Field(u"ApplyAssemblyInfoTo", AssemblyInfo<&TAssemblyInfoSettings::ApplyTo>,
             VSDotNetBuildTypeEnumeration(), u"Which projects get the assembly information.")
      .Field(u"ApplyResourceInfoTo", Win32Stamp<&TWin32StampSettings::ApplyTo>,
             VSDotNetBuildTypeEnumeration(), u"Which projects get the Win32 version information.")
      .Field(u"AssemblySelectedProjects", AssemblyInfo<&TAssemblyInfoSettings::SelectedProjects>,
             u"The projects that get the assembly information, one a line.")
      .Field(u"ResourceSelectedProjects", Win32Stamp<&TWin32StampSettings::SelectedProjects>,
             u"The projects that get the Win32 version information, one a line.")
      .Accessors(u"AssemblyInfo", AssemblyInfoLabel, IgnoreLabel,
                 u"A label for editors that leads to the assembly information.")
      .NotStored()
      .Field(u"UpdateAssemblyTitle", AssemblyInfo<&TAssemblyInfoSettings::UpdateTitle>,
             u"Write the attribute AssemblyTitle.")
      .Field(u"UpdateAssemblyComment", AssemblyInfo<&TAssemblyInfoSettings::UpdateComment>,
             u"Write the attribute AssemblyComment.")
      .Field(u"UpdateAssemblyCompany", AssemblyInfo<&TAssemblyInfoSettings::UpdateCompany>,
             u"Write the attribute AssemblyCompany.")
      .Field(u"UpdateAssemblyDescription", AssemblyInfo<&TAssemblyInfoSettings::UpdateDescription>,
             u"Write the attribute AssemblyDescription.")
      .Field(u"UpdateAssemblyCopyright", AssemblyInfo<&TAssemblyInfoSettings::UpdateCopyright>,
             u"Write the attribute AssemblyCopyright.")
      .Field(u"UpdateAssemblyTradeMark", AssemblyInfo<&TAssemblyInfoSettings::UpdateTradeMark>,
             u"Write the attribute AssemblyTrademark.")
      .Field(u"UpdateAssemblyProductName", AssemblyInfo<&TAssemblyInfoSettings::UpdateProductName>,
             u"Write the attribute AssemblyProduct.")
      .Field(u"UpdateAssemblyFileVersion", AssemblyInfo<&TAssemblyInfoSettings::UpdateFileVersion>,
             u"Write the attribute AssemblyFileVersion.")
      .Field(u"UpdateAssemblyVersion", AssemblyInfo<&TAssemblyInfoSettings::UpdateVersion>,
             u"Write the attribute AssemblyVersion.");
}

void AddAssemblyValueRows(TRows& rows) {
  rows.Accessors(u"AutoIncAssemblyBuildNumber", AssemblyInfo<&TAssemblyInfoSettings::AutoIncBuildNumber>,
                 &TKxVSDotNetAction::SetAutoIncAssemblyBuildNumber,
                 u"Add one to the build part of the assembly version on every execution.")
      .Accessors(u"AutoIncAssemblyFileBuildNumber",
                 AssemblyInfo<&TAssemblyInfoSettings::AutoIncFileBuildNumber>,
                 &TKxVSDotNetAction::SetAutoIncAssemblyFileBuildNumber,
                 u"Add one to the build part of the file version on every execution.")
      .Accessors(u"AutoIncAssemblyRevisionNo", AssemblyInfo<&TAssemblyInfoSettings::AutoIncRevisionNo>,
                 &TKxVSDotNetAction::SetAutoIncAssemblyRevisionNo,
                 u"Add one to the revision part of the assembly version on every execution.")
      .Accessors(u"AutoIncAssemblyFileRevisionNo",
                 AssemblyInfo<&TAssemblyInfoSettings::AutoIncFileRevisionNo>,
                 &TKxVSDotNetAction::SetAutoIncAssemblyFileRevisionNo,
                 u"Add one to the revision part of the file version on every execution.")
      .Field(u"LinkAssemblyFileVersionInfo", AssemblyInfo<&TAssemblyInfoSettings::LinkFileVersion>,
             u"Let the file version follow the assembly version.")
      .Field(u"AssemblyTitle", AssemblyInfo<&TAssemblyInfoSettings::Title>,
             u"The value of the attribute AssemblyTitle.")
      .Field(u"AssemblyComment", AssemblyInfo<&TAssemblyInfoSettings::Comment>,
             u"The value of the attribute AssemblyComment.")
      .Field(u"AssemblyCompany", AssemblyInfo<&TAssemblyInfoSettings::Company>,
             u"The value of the attribute AssemblyCompany.")
      .Field(u"AssemblyDescription", AssemblyInfo<&TAssemblyInfoSettings::Description>,
             u"The value of the attribute AssemblyDescription.")
      .Field(u"AssemblyCopyright", AssemblyInfo<&TAssemblyInfoSettings::Copyright>,
             u"The value of the attribute AssemblyCopyright.")
      .Field(u"AssemblyTradeMark", AssemblyInfo<&TAssemblyInfoSettings::TradeMark>,
             u"The value of the attribute AssemblyTrademark.")
      .Field(u"AssemblyProductName", AssemblyInfo<&TAssemblyInfoSettings::ProductName>,
             u"The value of the attribute AssemblyProduct.");
}

void AddVersionRows(TRows& rows) {
  rows.Accessors(u"AssemblyFileVersion", VersionText<&TAssemblyInfoSettings::FileVersion>,
                 SetVersionText<&TAssemblyInfoSettings::FileVersion>,
                 u"The file version: major, minor, build and revision, joined by bars; 3|1|4|0 is 3.1.4.0, "
                 u"3|1|| is 3.1.")
      .Accessors(
          u"AssemblyVersion", VersionText<&TAssemblyInfoSettings::Version>,
          SetVersionText<&TAssemblyInfoSettings::Version>,
          u"The assembly version: major, minor, build and revision, joined by bars; 3|1|4|0 is 3.1.4.0, "
          u"3|1|| is 3.1.")
      .Accessors(u"AssemblyVersionMajor", VersionPart<&TAssemblyInfoSettings::Version, 0>,
                 SetVersionPart<&TAssemblyInfoSettings::Version, 0>,
                 u"The major part of the assembly version.")
      .NotStored()
      .Accessors(u"AssemblyVersionMinor", VersionPart<&TAssemblyInfoSettings::Version, 1>,
                 SetVersionPart<&TAssemblyInfoSettings::Version, 1>,
                 u"The minor part of the assembly version.")
      .NotStored()
      .Accessors(u"AssemblyVersionBuild", VersionPart<&TAssemblyInfoSettings::Version, 2>,
                 SetVersionPart<&TAssemblyInfoSettings::Version, 2>,
                 u"The build part of the assembly version.")
      .NotStored()
      .Accessors(u"AssemblyVersionRevision", VersionPart<&TAssemblyInfoSettings::Version, 3>,
                 SetVersionPart<&TAssemblyInfoSettings::Version, 3>,
                 u"The revision part of the assembly version.")
      .NotStored()
      .Accessors(u"AssemblyFileVersionMajor", VersionPart<&TAssemblyInfoSettings::FileVersion, 0>,
                 SetVersionPart<&TAssemblyInfoSettings::FileVersion, 0>,
                 u"The major part of the file version.")
      .NotStored()
      .Accessors(u"AssemblyFileVersionMinor", VersionPart<&TAssemblyInfoSettings::FileVersion, 1>,
                 SetVersionPart<&TAssemblyInfoSettings::FileVersion, 1>,
                 u"The minor part of the file version.")
      .NotStored()
      .Accessors(u"AssemblyFileVersionBuild", VersionPart<&TAssemblyInfoSettings::FileVersion, 2>,
                 SetVersionPart<&TAssemblyInfoSettings::FileVersion, 2>,
                 u"The build part of the file version.")
      .NotStored()
      .Accessors(u"AssemblyFileVersionRevision", VersionPart<&TAssemblyInfoSettings::FileVersion, 3>,
                 SetVersionPart<&TAssemblyInfoSettings::FileVersion, 3>,
                 u"The revision part of the file version.")
      .NotStored()
      .Computed(u"CompilerErrorCount", &TKxVSDotNetAction::GetCompilerErrorCount,
                u"The errors that the last execution counted.")
      .Computed(u"CompilerWarningCount", &TKxVSDotNetAction::GetCompilerWarningCount,
                u"The warnings that the last execution counted.");
}

void AddWin32VersionRows(TRows& rows) {
  rows.Accessors(u"AutoIncBuild", Win32Value<&TVersionInfoValues::AutoIncBuild>,
                 &TKxVSDotNetAction::SetAutoIncBuild, u"Add one to BuildVersion on every execution.")
      .Field(u"MajorVersion", Win32Value<&TVersionInfoValues::MajorVersion>,
             u"The major number of the Win32 version.")
      .Field(u"MinorVersion", Win32Value<&TVersionInfoValues::MinorVersion>,
             u"The minor number of the Win32 version.")
      .Field(u"ReleaseVersion", Win32Value<&TVersionInfoValues::ReleaseVersion>,
             u"The release number of the Win32 version.")
      .Field(u"BuildVersion", Win32Value<&TVersionInfoValues::BuildVersion>,
             u"The build number of the Win32 version.")
      .Field(u"IsDebug", Win32Value<&TVersionInfoValues::IsDebug>, u"Mark the file as a debug build.")
      .Field(u"IsPreRelease", Win32Value<&TVersionInfoValues::IsPreRelease>,
             u"Mark the file as a pre-release.")
      .Field(u"IsSpecial", Win32Value<&TVersionInfoValues::IsSpecial>, u"Mark the file as a special build.")
      .Field(u"IsPrivate", Win32Value<&TVersionInfoValues::IsPrivate>, u"Mark the file as a private build.")
      .Field(u"IsDLL", Win32Value<&TVersionInfoValues::IsDLL>,
             u"Mark the file as a library instead of a program.")
      .Field(u"Locale", Win32Value<&TVersionInfoValues::Locale>,
             u"The language of the version texts, by its Windows number (1033: US English).")
      .Accessors(u"CodePage", Win32Value<&TVersionInfoValues::CodePage>, &TKxVSDotNetAction::SetCodePage,
                 u"The code page of the version texts (1252: Western European).")
      .Accessors(u"VersionInfoKeys", VersionInfoKeys, SetVersionInfoKeys,
                 u"Version texts to write, one Name=Value a line.")
      .Field(u"IncludeCompileDate", Win32Value<&TVersionInfoValues::IncludeCompileDate>,
             u"Write the date of the build into the version texts.")
      .Field(u"LinkFileAndProductVersion", Win32Value<&TVersionInfoValues::LinkFileAndProductVersion>,
             u"Let the product version follow the file version.")
      .Field(u"AutoUpdateFileVersion", Win32Value<&TVersionInfoValues::AutoUpdateFileVersion>,
             u"Write the four version numbers as the text FileVersion.")
      .Field(u"AutoUpdateProductVersion", Win32Value<&TVersionInfoValues::AutoUpdateProductVersion>,
             u"Write the four version numbers as the text ProductVersion.");
}

void AddToolRows(TRows& rows) {
  rows.Field(u"ProjLocationDetectMethod", Web<&TWebProjectSettings::DetectMethod>,
             ProjLocDetectMethodEnumeration, u"How the folders of web projects are found.")
      .Field(u"WMIWebsiteNum", Web<&TWebProjectSettings::WMIWebsiteNum>,
             u"The number of the IIS web site that holds the web projects.")
      .Field(u"SharePath", Web<&TWebProjectSettings::SharePath>,
             u"The network share that holds the web projects.")
      .Field(u"WebDAVUsername", Web<&TWebProjectSettings::WebDAVUsername>,
             u"The user under whose name web projects are reached by WebDAV.")
      .Accessors(u"WebDAVPassword", &TKxVSDotNetAction::GetWebDAVPassword,
                 &TKxVSDotNetAction::SetWebDAVPassword, u"The WebDAV user's password; it is kept encrypted.")
      .NotStored()
      .Secret()
      .Field(u"_WebDAVPassword", Web<&TWebProjectSettings::EncryptedWebDAVPassword>,
             u"The WebDAV user's password as the host encrypted it.")
      .Secret()
      .Field(u"UseMSBuild", MSBuild<&TMSBuildSettings::UseMSBuild>,
             u"Build with MSBuild (Visual Studio 2005 and later).")
      .Field(u"StructuredOutput", MSBuild<&TMSBuildSettings::StructuredOutput>,
             u"Read MSBuild's events through a logger instead of its printed lines.")
      .Field(u"Win32VersionInfoPropertySetName", Win32Stamp<&TWin32StampSettings::PropertySetName>,
             u"The property set that holds the Win32 version information.")
      .Field(u"UseWin32PropertySet", Win32Stamp<&TWin32StampSettings::UsePropertySet>,
             u"Take the Win32 version information from a property set; what the set lacks comes from the "
             u"action.")
      .Field(u"DotNetVersionInfoPropertySetName", AssemblyInfo<&TAssemblyInfoSettings::PropertySetName>,
             u"The property set that holds the assembly information.")
      .Field(u"UseDotNetPropertySet", AssemblyInfo<&TAssemblyInfoSettings::UsePropertySet>,
             u"Take the assembly information from a property set; what the set lacks comes from the action.")
      .Field(u"ExtraCmdLineParams", Solution<&TSolutionSettings::ExtraCmdLineParams>,
             u"Text put in front of the parameters of devenv.com or MSBuild.")
      .Field(u"OutputDirectory", MSBuild<&TMSBuildSettings::OutputDirectory>,
             u"The folder into which MSBuild writes what it builds; empty: each project's own.")
      .Field(u"UseRegExOnConfigName", Solution<&TSolutionSettings::UseRegExOnConfigName>,
             u"Let SolutionConfiguration match configurations as a regular expression.");
}

} // namespace

// In the order in which the properties are declared, saved and listed.
const TKxPropertyTable& TKxVSDotNetAction::PublishedProperties() const {
  static const TKxPropertyTable table = [] {
    TRows rows;
    AddMSBuildRows(rows);
    AddSolutionRows(rows);
    AddStampRows(rows);
    AddAssemblyValueRows(rows);
    AddVersionRows(rows);
    AddWin32VersionRows(rows);
    AddToolRows(rows);
    return TKxPropertyTable(rows.Take());
  }();
  return table;
}

} // namespace kx
