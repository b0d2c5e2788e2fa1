#include "program/cli/FileKinds.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Usage.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace kx::cli {

namespace {

struct TFileKind {
  std::u16string_view What;
  std::array<std::u16string_view, 2> Extensions;
  std::u16string_view Beginning; // a word that stands near the beginning of every such file
  std::u16string_view Commands;  // FILE stands for the file
  bool IsByHand = true;          // somebody has written it, so nothing that a run leaves replaces it
};

constexpr std::u16string_view BuildProject = u"a build project";

// The first that fits counts.
constexpr std::array<TFileKind, 8> Kinds{{
    {BuildProject,
     {u".kxproj"},
     u"<BuildProject",
     u"\"kxhost run FILE\" runs it, \"kxhost validate FILE\" checks it, \"kxhost edit FILE\" changes it."},
    {u"a solution",
     {u".sln"},
     u"Microsoft Visual Studio Solution File",
     u"\"kxhost inspect FILE\" shows it, \"kxhost do DEVENV Solution=FILE SolutionConfiguration=NAME\" "
     u"builds it."},
    {u"a file of test results", {u".trx"}, u"<TestRun", u"\"kxhost inspect FILE\" shows it.", false},
    {u"a resource script",
     {u".rc", u".rc2"},
     u"",
     u"\"kxhost inspect FILE\" shows its version, \"kxhost do VERSIONINFO ResourceFile=FILE\" stamps it."},
    {u"a project of Visual Studio",
     {u"proj"},
     u"<VisualStudioProject",
     u"Commands take the solution that names it: \"kxhost inspect\" shows that one, \"kxhost do DEVENV\" "
     u"builds "
     u"it."},
    // By its name alone: projects hold words that begin as its root does.
    {u"a solution in XML, of a newer Visual Studio",
     {u".slnx"},
     u"",
     u"Commands take solutions of the older form; Visual Studio saves it as a .sln."},
    {u"a compiled resource",
     {u".res"},
     u"",
     u"Commands take the script that it is made of: \"kxhost inspect\" shows the version in that one."},
    {u"a log",
     {u".log"},
     u"",
     u"\"kxhost inspect FILE --tool devenv\" (or msbuild) shows what is read in the log of a build.",
     false},
}};

// Of other files that a build reads.
constexpr auto SourceExtensions = std::to_array<std::u16string_view>(
    {u".cs",    u".vb",      u".jsl",      u".fs",   u".c",    u".cc",    u".cpp",           u".cxx",
     u".h",     u".hh",      u".hpp",      u".hxx",  u".inl",  u".idl",   u".def",           u".asm",
     u".resx",  u".config",  u".xaml",     u".aspx", u".asax", u".ascx",  u".asmx",          u".targets",
     u".props", u".vsprops", u".settings", u".snk",  u".pfx",  u".vsmdi", u".testrunconfig", u".testsettings",
     u".ico"});

std::u16string BeginningOf(std::u16string_view file) {
  constexpr std::size_t enough = 4096;
  auto reader = platform::FileReader::Open(file);
  if (!reader) return {};
  std::string bytes(enough, '\0');
  const auto count = reader->Read(bytes.data(), bytes.size());
  bytes.resize(count ? *count : 0);
  return platform::DecodeUtf8OrAnsi(bytes);
}

const TFileKind* KindOf(std::u16string_view file, std::u16string_view beginning) {
  const auto begins = [&](const TFileKind& kind) {
    return !kind.Beginning.empty() && beginning.find(kind.Beginning) != std::u16string::npos;
  };
  const std::u16string extension = text::ExtractFileExt(file);
  const auto named = [&](const TFileKind& kind) {
    return std::ranges::any_of(kind.Extensions, [&](std::u16string_view end) {
      return !end.empty() && text::EndsWithIgnoreCase(extension, end);
    });
  };
  const auto* found = std::ranges::find_if(Kinds, begins);
  if (found == Kinds.end()) found = std::ranges::find_if(Kinds, named);
  return found == Kinds.end() ? nullptr : found;
}

std::u16string Describe(const TFileKind& kind, std::u16string_view file) {
  if (!platform::FileExists(file))
    return NoSuchFile(file) + u" By its name it would be " + std::u16string(kind.What) + u".";
  return std::u16string(file) + u" is " + std::u16string(kind.What) + u". " +
         text::ReplaceAll(kind.Commands, u"FILE", file);
}

// What a run itself leaves may quote anything.
bool IsOutputOfRuns(std::u16string_view beginning) {
  const std::u16string_view text = text::Trim(beginning);
  return text.starts_with(u'{') || text.starts_with(u"<!DOCTYPE html") ||
         text.find(u"<testsuites") != std::u16string_view::npos;
}

// Where links end, in the system's own spelling, as far as there is something.
std::filesystem::path RealPath(std::u16string_view file) {
  const std::filesystem::path path(platform::ResolveForWriting(file));
  std::error_code error;
  auto real = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  return error ? path : real;
}

} // namespace

std::u16string NoSuchFile(std::u16string_view file) {
  return u"There is no file " + (file.empty() ? u"without a name" : std::u16string(file)) + u".";
}

std::u16string DescribeFileKind(std::u16string_view file) {
  const auto* kind = KindOf(file, BeginningOf(file));
  return kind == nullptr ? std::u16string() : Describe(*kind, file);
}

std::u16string_view ExtensionOfKind(std::u16string_view file) {
  const auto* kind = KindOf(file, BeginningOf(file));
  return kind == nullptr ? std::u16string_view() : kind->Extensions.front();
}

void RequireBuildProject(std::u16string_view file) {
  if (text::Trim(file).empty()) throw EUsage(u"The name of the build project is empty.");
  if (platform::DirectoryExists(file))
    throw EUsage(std::u16string(file) + u" is a folder; a build project is a file.");
  const std::u16string beginning = BeginningOf(file);
  const auto* kind = KindOf(file, beginning);
  if (kind != nullptr && kind->What != BuildProject) throw EUsage(Describe(*kind, file));
  const std::u16string_view text = text::Trim(beginning);
  if (kind == nullptr && !text.empty() && !text.starts_with(u'<'))
    throw EUsage(std::u16string(file) +
                 u" is no build project, which is XML: <BuildProject>...</BuildProject>.");
}

void RequireNotWrittenByHand(std::u16string_view option, std::u16string_view file) {
  if (!platform::FileExists(file)) return;
  const std::u16string real = RealPath(file).u16string();
  const std::u16string beginning = BeginningOf(real);
  const auto* kind = KindOf(real, IsOutputOfRuns(beginning) ? std::u16string() : beginning);
  std::u16string what = kind != nullptr && kind->IsByHand ? std::u16string(kind->What) : std::u16string();
  const std::u16string extension = text::ExtractFileExt(real);
  if (std::ranges::any_of(SourceExtensions, [&](auto end) { return text::EqualsIgnoreCase(end, extension); }))
    what = u"a source";
  if (!what.empty())
    throw EUsage(std::u16string(option) + u": " + real + u" is " + what + u" and would be replaced.");
}

bool IsSameFile(std::u16string_view one, std::u16string_view other) {
  const auto path = RealPath(one), otherPath = RealPath(other);
  std::error_code error;
  // A new file is found in every letter case once it is there.
  return text::EqualsIgnoreCase(path.u16string(), otherPath.u16string()) ||
         std::filesystem::equivalent(path, otherPath, error);
}

bool IsLeftByRun(std::u16string_view file) {
  const std::u16string beginning = BeginningOf(file);
  return text::Trim(beginning).empty() || IsOutputOfRuns(beginning);
}

bool IsRegularFile(std::u16string_view file) {
  std::error_code error;
  return std::filesystem::is_regular_file(RealPath(file), error);
}

} // namespace kx::cli
