#include "cli/Inspect.h"

#include "cli/Output.h"
#include "host/Exceptions.h"
#include "platform/Files.h"
#include "text/Encoding.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <algorithm>
#include <array>

namespace kx::cli {

namespace {

struct TInspector {
  std::u16string_view Extension;
  TJson (*Inspect)(const std::u16string& file, const TInspectOptions& options);
  std::string (*Describe)(const TJson& object);
};

constexpr std::array<TInspector, 1> Inspectors{{{u".sln", InspectSolution, DescribeSolution}}};
constexpr TInspector LogInspector{u"", InspectBuildLog, DescribeBuildLog};

const TInspector& InspectorFor(const std::u16string& file, const TInspectOptions& options) {
  if (options.MSBuild) return LogInspector;
  const std::u16string extension = text::ExtractFileExt(file);
  const auto found = std::find_if(Inspectors.begin(), Inspectors.end(), [&extension](const TInspector& row) {
    return text::EqualsIgnoreCase(row.Extension, extension);
  });
  if (found != Inspectors.end()) return *found;
  throw EKxException(u"Cannot tell what " + file +
                     u" is: solutions (.sln) are read by their extension; for a build log "
                     u"say --tool devenv or --tool msbuild.");
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
    TJson object = inspector.Inspect(text::ExpandPath(file, platform::CurrentDirectory()), options);
    if (options.Json && many) {
      TJson line{{"file", text::ToUtf8(file)}};
      line.update(object);
      object = std::move(line);
    }
    if (!options.Json && many) output.Write(text::ToUtf8(file) + "\n");
    output.Write(options.Json ? ToLine(object) : inspector.Describe(object));
    return true;
  } catch (const std::exception& error) {
    const std::u16string message = Shortened(MessageOf(error));
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
