#include "package/pages/KxVSDotNetFrames.h"

#include "package/buildaction/KxVSDotNetOptions.h"
#include "package/pages/PageSupport.h"
#include "package/pages/SolutionOffers.h"

#include <array>

namespace kx {

namespace {

constexpr std::u16string_view ConfigurationsTitle = u"Configurations of the solution";
constexpr std::u16string_view ProjectsTitle = u"Choose from the solution";
constexpr std::u16string_view SetsTitle = u"Property sets of the project";
constexpr std::u16string_view SelectedOnly = u"btSelectedProjects";

constexpr std::u16string_view SolutionPlaces[] = {u"Solution file"};
// The version picks the tool, whose folder the options or the machine name.
constexpr std::u16string_view ToolPlaces[] = {u"VisualStudio.NET Options", u".NET Framework Settings"};
// Which are edited by their parts.
constexpr std::u16string_view VersionPlaces[] = {u"AssemblyVersion"};
constexpr std::u16string_view FileVersionPlaces[] = {u"AssemblyFileVersion"};

constexpr TKxTableField ProjectFields[] = {
    {.Property = u"Solution",
     .Kind = TKxFieldKind::FilePath,
     .Filter = u"Solution Files (*.sln)|*.sln",
     .Places = SolutionPlaces},
    {.Property = u"SolutionConfiguration", .OffersTitle = ConfigurationsTitle},
    {.Property = u"UseRegExOnConfigName"},
    {.Heading = u"Projects"},
    {.Property = u"BuildType"},
    {.Property = u"SelectedProjects",
     .EnabledBy = u"BuildType",
     .EnabledAt = SelectedOnly,
     .OffersTitle = ProjectsTitle},
    {.Heading = u"Build"},
    {.Property = u"BuildAction"},
    {.Property = u"VStudioVersion", .Places = ToolPlaces},
    {.Property = u"UseMSBuild"},
};

// What the tool is told as it stands is seen from the folder of each project that it builds.
constexpr TKxTableField PathsFields[] = {
    {.Property = u"OutputDirectory", .Kind = TKxFieldKind::FolderPath, .IsSeenFromProject = false},
    {.Property = u"OverrideReferencePaths"},
    {.Property = u"ReferencePaths", .EnabledBy = u"OverrideReferencePaths"},
    {.Property = u"UseEnv"},
};

constexpr TKxTableField BuildFields[] = {
    {.Property = u"ExtraCmdLineParams"},
    {.Heading = u"MSBuild"},
    {.Property = u"StructuredOutput"},
    {.Property = u"LogLevel"},
    {.Property = u"MaxCPUs"},
    {.Property = u"ExtraMSBuildProperties"},
    {.Heading = u"Compiler"},
    {.Property = u"OverrideCompiler"},
    {.Property = u"CompilerConstants", .EnabledBy = u"OverrideCompiler"},
    {.Property = u"DebugConstant", .EnabledBy = u"OverrideCompiler"},
    {.Property = u"TraceConstant", .EnabledBy = u"OverrideCompiler"},
    {.Property = u"Optimize", .EnabledBy = u"OverrideCompiler"},
    {.Property = u"AllowUnsafe", .EnabledBy = u"OverrideCompiler"},
    {.Heading = u"Warnings"},
    {.Property = u"OverrideWarnings"},
    {.Property = u"WarningLevel", .EnabledBy = u"OverrideWarnings"},
    {.Property = u"AllWarningsAsErrors", .EnabledBy = u"OverrideWarnings"},
    {.Property = u"SelectedWarningsAsErrors", .EnabledBy = u"OverrideWarnings"},
    {.Property = u"WarningsAsErrors", .EnabledBy = u"SelectedWarningsAsErrors"},
    {.Property = u"DisableSelectedWarnings", .EnabledBy = u"OverrideWarnings"},
    {.Property = u"DisableWarnings", .EnabledBy = u"DisableSelectedWarnings"},
    {.Heading = u"Target Framework"},
    {.Property = u"OverrideTargetFramework"},
    {.Property = u"TargetFramework", .EnabledBy = u"OverrideTargetFramework"},
};

constexpr TKxTableField AssemblyFields[] = {
    {.Property = u"UpdateAssemblyInfo"},
    {.Property = u"ApplyAssemblyInfoTo"},
    {.Property = u"AssemblySelectedProjects",
     .EnabledBy = u"ApplyAssemblyInfoTo",
     .EnabledAt = SelectedOnly,
     .OffersTitle = ProjectsTitle},
    {.Property = u"UseDotNetPropertySet"},
    {.Property = u"DotNetVersionInfoPropertySetName",
     .EnabledBy = u"UseDotNetPropertySet",
     .OffersTitle = SetsTitle},
    {.Heading = u"Attributes"},
    {.Property = u"UpdateAssemblyTitle"},
    {.Property = u"AssemblyTitle", .EnabledBy = u"UpdateAssemblyTitle"},
    {.Property = u"UpdateAssemblyComment"},
    {.Property = u"AssemblyComment", .EnabledBy = u"UpdateAssemblyComment"},
    {.Property = u"UpdateAssemblyCompany"},
    {.Property = u"AssemblyCompany", .EnabledBy = u"UpdateAssemblyCompany"},
    {.Property = u"UpdateAssemblyDescription"},
    {.Property = u"AssemblyDescription", .EnabledBy = u"UpdateAssemblyDescription"},
    {.Property = u"UpdateAssemblyCopyright"},
    {.Property = u"AssemblyCopyright", .EnabledBy = u"UpdateAssemblyCopyright"},
    {.Property = u"UpdateAssemblyTradeMark"},
    {.Property = u"AssemblyTradeMark", .EnabledBy = u"UpdateAssemblyTradeMark"},
    {.Property = u"UpdateAssemblyProductName"},
    {.Property = u"AssemblyProductName", .EnabledBy = u"UpdateAssemblyProductName"},
    {.Heading = u"Assembly Version"},
    {.Property = u"UpdateAssemblyVersion"},
    {.Property = u"AssemblyVersionMajor", .EnabledBy = u"UpdateAssemblyVersion", .Places = VersionPlaces},
    {.Property = u"AssemblyVersionMinor", .EnabledBy = u"UpdateAssemblyVersion"},
    {.Property = u"AssemblyVersionBuild", .EnabledBy = u"UpdateAssemblyVersion"},
    {.Property = u"AssemblyVersionRevision", .EnabledBy = u"UpdateAssemblyVersion"},
    {.Property = u"AutoIncAssemblyBuildNumber", .EnabledBy = u"UpdateAssemblyVersion"},
    {.Property = u"AutoIncAssemblyRevisionNo", .EnabledBy = u"UpdateAssemblyVersion"},
    {.Heading = u"File Version"},
    {.Property = u"UpdateAssemblyFileVersion"},
    {.Property = u"LinkAssemblyFileVersionInfo", .EnabledBy = u"UpdateAssemblyFileVersion"},
    {.Property = u"AssemblyFileVersionMajor",
     .EnabledBy = u"UpdateAssemblyFileVersion",
     .Places = FileVersionPlaces},
    {.Property = u"AssemblyFileVersionMinor", .EnabledBy = u"UpdateAssemblyFileVersion"},
    {.Property = u"AssemblyFileVersionBuild", .EnabledBy = u"UpdateAssemblyFileVersion"},
    {.Property = u"AssemblyFileVersionRevision", .EnabledBy = u"UpdateAssemblyFileVersion"},
    {.Property = u"AutoIncAssemblyFileBuildNumber", .EnabledBy = u"UpdateAssemblyFileVersion"},
    {.Property = u"AutoIncAssemblyFileRevisionNo", .EnabledBy = u"UpdateAssemblyFileVersion"},
};

constexpr TKxTableField VersionInfoFields[] = {
    {.Property = u"UpdateWin32Resource"},
    {.Property = u"ApplyResourceInfoTo"},
    {.Property = u"ResourceSelectedProjects",
     .EnabledBy = u"ApplyResourceInfoTo",
     .EnabledAt = SelectedOnly,
     .OffersTitle = ProjectsTitle},
    {.Property = u"UseWin32PropertySet"},
    {.Property = u"Win32VersionInfoPropertySetName",
     .EnabledBy = u"UseWin32PropertySet",
     .OffersTitle = SetsTitle},
    {.Heading = u"Version"},
    {.Property = u"MajorVersion"},
    {.Property = u"MinorVersion"},
    {.Property = u"ReleaseVersion"},
    {.Property = u"BuildVersion"},
    {.Property = u"AutoIncBuild"},
    {.Property = u"AutoUpdateFileVersion"},
    {.Property = u"AutoUpdateProductVersion"},
    {.Property = u"LinkFileAndProductVersion"},
    {.Heading = u"Flags"},
    {.Property = u"IsDebug"},
    {.Property = u"IsPreRelease"},
    {.Property = u"IsSpecial"},
    {.Property = u"IsPrivate"},
    {.Property = u"IsDLL"},
    {.Heading = u"Texts"},
    {.Property = u"Locale"},
    {.Property = u"CodePage"},
    {.Property = u"IncludeCompileDate"},
    {.Property = u"VersionInfoKeys", .Kind = TKxFieldKind::List},
};

constexpr auto OptionsFields = [] {
  std::array<TKxTableField, VSDotNetVersions.size() + 4> fields;
  auto next = fields.begin();
  *next++ = {.Heading = u"Folders"};
  for (const TVSDotNetVersionRow& version : VSDotNetVersions)
    *next++ = {.Property = version.Property, .Kind = TKxFieldKind::FolderPath};
  *next++ = {.Property = u"StandaloneMSTestDir", .Kind = TKxFieldKind::FolderPath};
  *next++ = {.Heading = u"Version"};
  *next = {.Property = u"DefaultVSVersion"};
  return fields;
}();

} // namespace

TVSDotNetProjectFrame::TVSDotNetProjectFrame()
    : TVSDotNetActionPage(TSolutionEditor::GetPage(), ProjectFields) {}
TVSDotNetPathsFrame::TVSDotNetPathsFrame() : TVSDotNetActionPage(u"Paths", PathsFields) {}
TVSDotNetBuildFrame::TVSDotNetBuildFrame() : TVSDotNetActionPage(u"Build", BuildFields) {}
TVSDotNetAssemblyFrame::TVSDotNetAssemblyFrame() : TVSDotNetActionPage(u"Assembly Info", AssemblyFields) {}
TVC7VersionInfoFrame::TVC7VersionInfoFrame()
    : TVSDotNetActionPage(u"Win32 Version Info", VersionInfoFields) {}
TVSDotNetOptionsFrame::TVSDotNetOptionsFrame()
    : TVSDotNetTablePage(TVSDotNetOptions::GetName(), OptionsFields) {}

const TKxPageClass& TVSDotNetProjectFrame::Class() {
  return PageClassOf<TVSDotNetProjectFrame>(u"TVSDotNetProjectFrame");
}
const TKxPageClass& TVSDotNetPathsFrame::Class() {
  return PageClassOf<TVSDotNetPathsFrame>(u"TVSDotNetPathsFrame");
}
const TKxPageClass& TVSDotNetBuildFrame::Class() {
  return PageClassOf<TVSDotNetBuildFrame>(u"TVSDotNetBuildFrame");
}
const TKxPageClass& TVSDotNetAssemblyFrame::Class() {
  return PageClassOf<TVSDotNetAssemblyFrame>(u"TVSDotNetAssemblyFrame");
}
const TKxPageClass& TVC7VersionInfoFrame::Class() {
  return PageClassOf<TVC7VersionInfoFrame>(u"TVC7VersionInfoFrame");
}
const TKxPageClass& TVSDotNetOptionsFrame::Class() {
  return PageClassOf<TVSDotNetOptionsFrame>(u"TVSDotNetOptionsFrame");
}

std::u16string TVSDotNetTablePage::ItemText(const TKxEnumeration& enumeration, std::size_t ordinal) const {
  if (&enumeration == &VSDotNetVersionEnumeration) return GetVSName(static_cast<TVSDotNetVersion>(ordinal));
  if (&enumeration != &VSDotNetTargetFxEnumeration()) return TKxTablePage::ItemText(enumeration, ordinal);
  const std::u16string_view digits = enumeration.Values[ordinal].substr(2); // "fx35"
  return u".NET Framework " + std::u16string(digits.substr(0, 1)) + u"." + std::u16string(digits.substr(1));
}

TKxFieldOffers TVSDotNetActionPage::OfferOf(const TKxPageField& field, const TKxEvent* stop) {
  auto& action = static_cast<TKxVSDotNetAction&>(Edited());
  const std::u16string& name = field.Name;
  if (name == u"Win32VersionInfoPropertySetName")
    return OfferPropertySets(GetWin32PropertySetsStrs(action.GetPropertySetService()), field.Value);
  if (name == u"DotNetVersionInfoPropertySetName")
    return OfferPropertySets(GetDotNetPropertySetStrs(action.GetPropertySetService()), field.Value);
  const bool here = name == u"SolutionConfiguration" || name == u"SelectedProjects";
  const auto solution = OpenSolutionOf(action, here ? Value(u"Solution") : action.Solution().Solution, stop);
  if (name == u"SolutionConfiguration")
    return OfferConfigurations(*solution, action, field.Value, IsChecked(u"UseRegExOnConfigName"));
  text::TStringList selected;
  selected.SetText(field.Value);
  const auto& settings = action.Solution();
  const std::u16string& configuration =
      here ? Value(u"SolutionConfiguration") : settings.SolutionConfiguration;
  const bool asExpression = here ? IsChecked(u"UseRegExOnConfigName") : settings.UseRegExOnConfigName;
  return OfferProjects(*solution, action, selected, configuration, asExpression, stop);
}

TKxFieldOffers TVSDotNetActionPage::Offers(std::u16string_view name, const TKxEvent* stop) {
  const TKxPageField& field = Field(name);
  if (field.OffersTitle.empty()) return {};
  try {
    return OfferOf(field, stop);
  } catch (const std::exception& error) {
    return {.Items = {}, .Error = MessageOf(error)};
  }
}

} // namespace kx
