#include "program/cli/Inspect.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/FileKinds.h"
#include "program/cli/Output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace kx::cli {

namespace {

// Files that become one object.
template <auto Inspect, auto Describe>
void PrintObject(const TInspectedFile& file, const TInspectOptions& options, TOutput& output) {
  TJson object = Inspect(file.Path, options);
  if (options.Json && !file.Name.empty()) {
    TJson line{{"file", file.Name}};
    line.update(object);
    object = std::move(line);
  }
  output.Write(options.Json ? ToLine(object) : Describe(object));
}

struct TInspector {
  std::u16string_view Extension;
  void (*Print)(const TInspectedFile& file, const TInspectOptions& options, TOutput& output);
};

constexpr std::array<TInspector, 4> Inspectors{
    {{u".sln", PrintObject<InspectSolution, DescribeSolution>},
     {u".rc", PrintObject<InspectResourceScript, DescribeResourceScript>},
     {u".rc2", PrintObject<InspectResourceScript, DescribeResourceScript>},
     {u".trx", PrintTestResults}}};
constexpr TInspector LogInspector{u"", PrintObject<InspectBuildLog, DescribeBuildLog>};

const TInspector* FindInspector(std::u16string_view extension) {
  const auto* found = std::ranges::find_if(Inspectors, [extension](const TInspector& row) {
    return text::EqualsIgnoreCase(row.Extension, extension);
  });
  return found == Inspectors.end() ? nullptr : found;
}

// By its name; a file of any other name by what it holds.
const TInspector& InspectorFor(const std::u16string& file, const TInspectOptions& options) {
  if (options.MSBuild) return LogInspector;
  if (platform::DirectoryExists(file)) throw EKxException(file + u" is a folder; inspect takes files.");
  if (!platform::FileExists(file)) throw EKxException(NoSuchFile(file));
  if (const auto* named = FindInspector(text::ExtractFileExt(file))) return *named;
  if (const auto* held = FindInspector(ExtensionOfKind(file))) return *held;
  const std::u16string kind = DescribeFileKind(file);
  if (!kind.empty()) throw EKxException(kind);
  throw EKxException(u"Cannot tell what " + file +
                     u" is: solutions (.sln), resource scripts (.rc, .rc2) and test results (.trx) are known "
                     u"by their extension; for a build log say --tool devenv or --tool msbuild.");
}

// Many files give one line each, so that the output of a whole tree can be read line by line.
bool InspectOne(const std::u16string& file, const TInspectOptions& options, TOutput& output) {
  const bool many = options.Files.size() > 1;
  try {
    if (options.MSBuild && options.Lines) {
      PrintBuildLogLines(file, options, output);
      return true;
    }
    const TInspector& inspector = InspectorFor(file, options);
    if (!options.Json && many) output.Write(text::ToUtf8(file) + "\n");
    inspector.Print(
        {text::ExpandPath(file, platform::CurrentDirectory()), many ? text::ToUtf8(file) : std::string()},
        options, output);
    return true;
  } catch (const std::exception& error) {
    const std::u16string place = PlaceOf(error);
    const std::u16string message = Shortened(MessageOf(error)) + (place.empty() ? u"" : u" (" + place + u")");
    if (options.Json && many) {
      output.Write(ToLine({{"file", text::ToUtf8(file)}, {"error", text::ToUtf8(message)}}));
    } else {
      WriteError(many ? file + u": " + message : message);
    }
    return false;
  }
}

} // namespace

int RunInspect(const TInspectOptions& options) {
  TOutput output;
  bool succeeded = true;
  for (const auto& file : options.Files)
    succeeded = InspectOne(file, options, output) && succeeded;
  return succeeded ? 0 : 1;
}

} // namespace kx::cli
