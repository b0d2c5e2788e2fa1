// The settings of the Build action by concern: passive values, each member one published property.
#pragma once

#include "foundation/text/StringList.h"
#include "package/buildaction/MSBuildLogger.h"
#include "package/solution/VSNETSLN.h"
#include "package/versioninfo/VersionInfo.h"
#include "package/web/ProjLocDetectMethod.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kx {

// Stored as their ordinals.
enum class TVSDotNetBuildType : std::int32_t { btAllProjects, btSelectedProjects, btIncludeDisabledProjects };
enum class TVSDotNetBuildAction : std::int32_t { baBuild, baRebuild, baClean, baDeploy };
enum class TVSDotNetTargetFx : std::int32_t { fx20, fx30, fx35, fx40 };

const TKxEnumeration& VSDotNetBuildTypeEnumeration();
const TKxEnumeration& VSDotNetBuildActionEnumeration();
const TKxEnumeration& VSDotNetTargetFxEnumeration();

// Which solution, and what of it is built how.
struct TSolutionSettings {
  std::u16string Solution;
  std::u16string SolutionConfiguration;
  bool UseRegExOnConfigName = true;
  TVSDotNetBuildType BuildType = TVSDotNetBuildType::btAllProjects;
  TVSDotNetBuildAction BuildAction = TVSDotNetBuildAction::baBuild;
  text::TStringList SelectedProjects;
  TVSDotNetVersion VStudioVersion = TVSDotNetVersion::vs2005;
  bool UseEnv = false;
  std::u16string ExtraCmdLineParams;
};

struct TMSBuildSettings {
  bool UseMSBuild = true;
  bool StructuredOutput = true;
  TMSLogLevel LogLevel = TMSLogLevel::llNormal;
  std::int32_t MaxCPUs = 0;
  std::u16string OutputDirectory;
  bool OverrideReferencePaths = false;
  text::TStringList ReferencePaths;
  bool OverrideCompiler = false;
  std::u16string CompilerConstants;
  bool DebugConstant = false;
  bool TraceConstant = false;
  bool Optimize = false;
  bool AllowUnsafe = false;
  bool OverrideWarnings = false;
  std::int32_t WarningLevel = 4;
  bool AllWarningsAsErrors = false;
  bool SelectedWarningsAsErrors = false;
  std::u16string WarningsAsErrors;
  bool DisableSelectedWarnings = false;
  std::u16string DisableWarnings;
  bool OverrideTargetFramework = false;
  TVSDotNetTargetFx TargetFramework = TVSDotNetTargetFx::fx20;
  text::TStringList ExtraMSBuildProperties;
};

// A version as one text, its four parts (major, minor, build, revision) joined by bars. The text is kept as
// it was given; a part that is set afterwards rebuilds it.
class TVersionQuadruple {
public:
  static constexpr std::size_t PartCount = 4;

  const std::u16string& Text() const { return text_; }
  const std::u16string& Part(std::size_t index) const { return parts_[index]; }
  void SetText(std::u16string text); // missing parts are empty, those after the fourth are left out
  void SetPart(std::size_t index, std::u16string part);

private:
  std::u16string text_ = u"|||";
  std::array<std::u16string, PartCount> parts_;
};

// What is written into the AssemblyInfo files.
struct TAssemblyInfoSettings {
  bool UpdateAssemblyInfo = false;
  TVSDotNetBuildType ApplyTo = TVSDotNetBuildType::btAllProjects;
  text::TStringList SelectedProjects;
  bool UpdateTitle = false;
  bool UpdateComment = false;
  bool UpdateCompany = false;
  bool UpdateDescription = false;
  bool UpdateCopyright = false;
  bool UpdateTradeMark = false;
  bool UpdateProductName = false;
  bool UpdateFileVersion = false;
  bool UpdateVersion = false;
  bool AutoIncBuildNumber = false;
  bool AutoIncFileBuildNumber = false;
  bool AutoIncRevisionNo = false;
  bool AutoIncFileRevisionNo = false;
  bool LinkFileVersion = false;
  std::u16string Title;
  std::u16string Comment;
  std::u16string Company;
  std::u16string Description;
  std::u16string Copyright;
  std::u16string TradeMark;
  std::u16string ProductName;
  TVersionQuadruple FileVersion;
  TVersionQuadruple Version;
  bool UsePropertySet = false;
  std::u16string PropertySetName;
};

// What is written into the version resources of C++ projects; the values themselves are in a
// TVersionInfoContainer.
struct TWin32StampSettings {
  bool UpdateWin32Resource = false;
  TVSDotNetBuildType ApplyTo = TVSDotNetBuildType::btAllProjects;
  text::TStringList SelectedProjects;
  bool UsePropertySet = false;
  std::u16string PropertySetName;
};

// How the folders of web projects are found.
struct TWebProjectSettings {
  TProjLocDetectMethod DetectMethod = TProjLocDetectMethod::useWMI;
  std::int32_t WMIWebsiteNum = 1;
  std::u16string SharePath = u"wwwroot$";
  std::u16string WebDAVUsername;
  std::u16string EncryptedWebDAVPassword;
};

// The folder part of the solution's name, and what projects are seen from.
std::u16string SolutionDirectory(const IVSDotNetSolution& solution);
// Why MSBuild cannot be told this folder as the command line tells it (/p:solutionDir= without quotes); empty
// where it can.
std::u16string WhyFolderIsCut(const IVSDotNetSolution& solution);
// One blank behind a text that is neither empty nor ends in one.
void EnsureTrailingSpace(std::u16string& text);

} // namespace kx
