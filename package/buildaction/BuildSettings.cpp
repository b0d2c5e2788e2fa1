#include "package/buildaction/BuildSettings.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

const TKxEnumeration& VSDotNetBuildTypeEnumeration() {
  static constexpr std::array<std::u16string_view, 3> names{u"btAllProjects", u"btSelectedProjects",
                                                            u"btIncludeDisabledProjects"};
  static constexpr TKxEnumeration enumeration{u"TVSDotNetBuildType", names};
  return enumeration;
}

const TKxEnumeration& VSDotNetBuildActionEnumeration() {
  static constexpr std::array<std::u16string_view, 4> names{u"baBuild", u"baRebuild", u"baClean",
                                                            u"baDeploy"};
  static constexpr TKxEnumeration enumeration{u"TVSDotNetBuildAction", names};
  return enumeration;
}

const TKxEnumeration& VSDotNetTargetFxEnumeration() {
  static constexpr std::array<std::u16string_view, 4> names{u"fx20", u"fx30", u"fx35", u"fx40"};
  static constexpr TKxEnumeration enumeration{u"TVSDotNetTargetFx", names};
  return enumeration;
}

void TVersionQuadruple::SetText(std::u16string text) {
  text_ = std::move(text);
  const auto given = text::Split(text_, u'|');
  for (std::size_t i = 0; i < PartCount; ++i)
    parts_[i] = i < given.size() ? std::u16string(given[i]) : std::u16string();
}

void TVersionQuadruple::SetPart(std::size_t index, std::u16string part) {
  parts_[index] = std::move(part);
  text_ = text::Join(parts_, u"|");
}

std::u16string SolutionDirectory(const IVSDotNetSolution& solution) {
  return text::ExtractFilePath(solution.GetFileName());
}

std::u16string WhyFolderIsCut(const IVSDotNetSolution& solution) {
  const std::u16string folder = SolutionDirectory(solution);
  const auto cut = folder.find_first_of(u" \t;");
  if (cut == std::u16string::npos) return {};
  return u"The solution's folder \"" + folder + u"\" has a " +
         (folder[cut] == u';' ? u"semicolon" : u"blank") +
         u", where MSBuild takes /p:solutionDir to end: it will refuse the command line. Move the solution "
         u"to a "
         u"folder without one, or build the whole solution (BuildType btAllProjects).";
}

void EnsureTrailingSpace(std::u16string& text) {
  if (!text.empty() && text.back() != u' ') text += u' ';
}

} // namespace kx
