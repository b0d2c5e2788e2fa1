#include "program/check/VersionFacts.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/StringList.h"
#include "foundation/text/WindowsPath.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "package/assemblyinfo/AssemblyInfoSource.h"
#include "package/versioninfo/VersionBlock.h"

#include <algorithm>

namespace kx::check {

namespace {

int LineOf(std::u16string_view text, std::size_t position) {
  return 1 + static_cast<int>(std::ranges::count(text.substr(0, position), u'\n'));
}

// A literal as it stands, without what is around it.
std::u16string WithoutQuotes(std::u16string_view literal) {
  const std::size_t open = literal.find(u'"');
  const std::size_t close = literal.rfind(u'"');
  return open >= close || close == literal.npos ? std::u16string(literal)
                                                : std::u16string(literal.substr(open + 1, close - open - 1));
}

void ReadAttributes(const std::u16string& file, TAssemblyInfoLanguage language, TVersionFacts& facts) {
  const auto bytes = platform::ReadFile(file);
  if (!bytes) return;
  const std::u16string text = platform::DecodeUtf8OrAnsi(*bytes);
  const TAssemblyInfoSource source = ParseAssemblyInfo(text, language, ScanAssemblyInfo(text, language));
  for (const TSourceSection& section : source.Sections)
    for (const TSourceAttribute& attribute : section.Attributes)
      if (section.Certain && attribute.Certain && attribute.IsLiteral && IsFrameworkAttribute(attribute.Name))
        facts.Attributes.push_back(
            {attribute.Name,
             WithoutQuotes(std::u16string_view(text).substr(
                 attribute.Argument.Begin, attribute.Argument.End - attribute.Argument.Begin)),
             file, LineOf(text, attribute.NameRange.Begin)});
}

std::u16string VersionOf(const TVersionInfoValues& values) {
  std::u16string version;
  for (const std::int32_t number :
       {values.MajorVersion, values.MinorVersion, values.ReleaseVersion, values.BuildVersion})
    version += (version.empty() ? u"" : u".") + text::FromInteger(number);
  return version;
}

// A name other than VS_VERSION_INFO is for the script to choose. What stands in headers that are not there
// nobody can say.
bool IsSeenByWindows(const text::TStringList& lines, std::u16string_view opening,
                     const std::u16string& file) {
  if (!text::StartsWithIgnoreCase(text::TrimLeft(opening), u"VS_VERSION_INFO")) return true;
  const std::u16string folder = text::ExtractFileDir(file);
  bool isKnown = true;
  const auto readInclude = [&](std::u16string_view name) -> std::optional<std::u16string> {
    auto content = platform::ReadTextFile(text::ExpandPath(name, folder));
    isKnown = isKnown && content;
    return content ? std::optional(*std::move(content)) : std::nullopt;
  };
  return DefinesVersionName(lines, readInclude) || !isKnown;
}

void ReadScript(const std::u16string& file, TVersionFacts& facts) {
  const auto bytes = platform::ReadFile(file);
  if (!bytes) return;
  text::TStringList lines;
  lines.SetText(platform::DecodeTextFile(*bytes));
  const auto opening = std::ranges::find_if(lines, OpensVersionBlock);
  if (opening == lines.end()) return;
  TScriptFacts& script = facts.Scripts.emplace_back();
  script.File = file;
  script.Line = 1 + static_cast<int>(opening - lines.begin());
  try {
    TVersionInfoContainer values;
    ReadVersionBlock(lines, file, values);
    script.FileVersion = VersionOf(values.Values());
    script.TooLarge = TVersionInfo::CheckNumbers(values.Values());
    script.IsSeen = IsSeenByWindows(lines, *opening, file);
    for (const auto& loss : FindLosses(lines, file, values))
      script.Losses.push_back(loss);
  } catch (const EKxParseError& error) {
    script.Error = error.Message();
    if (error.Line() > 0) script.Line = error.Line();
  }
}

// "AssemblyInfo.cs", "GlobalAssemblyInfo.cs", "Version.vb": those that hold attributes by custom.
bool MayStateVersions(std::u16string_view name) {
  return text::FindIgnoreCase(name, u"AssemblyInfo") != name.npos ||
         text::FindIgnoreCase(name, u"Version") != name.npos;
}

} // namespace

TVersionFacts ReadVersionFacts(const TProjectFacts& project, TDiskNames& disk) {
  TVersionFacts facts;
  for (const TListedFile& source : project.Sources) {
    if (!source.IsUsed) continue;
    const std::u16string name = text::ExtractFileName(source.Path);
    const auto language = AssemblyInfoLanguageOf(name);
    const bool isScript = text::EqualsIgnoreCase(text::ExtractFileExt(name), u".rc");
    const bool isInfo = language && source.Kind == u"Compile" && MayStateVersions(name);
    if ((!isScript && !isInfo) || !disk.Find(project.Folder, source.Path).Exists) continue;
    const std::u16string file = text::ExpandPath(source.Path, project.Folder);
    if (isScript) {
      ReadScript(file, facts);
    } else {
      ReadAttributes(file, *language, facts);
    }
  }
  for (const TListedFile& source : project.Sources)
    if (source.Kind == u"Compile" &&
        text::StartsWithIgnoreCase(text::ExtractFileName(source.Path), u"AssemblyInfo."))
      facts.AssemblyInfos.push_back(text::ExpandPath(source.Path, project.Folder));
  return facts;
}

} // namespace kx::check
