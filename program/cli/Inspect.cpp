#include "program/cli/Inspect.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Memory.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/FileKinds.h"
#include "program/cli/Output.h"

#include <algorithm>
#include <array>
#include <concepts>

namespace kx::cli {

namespace {

struct TInspector {
  std::u16string_view Extension;
  TInspected (*Inspect)(const std::u16string& file, const TInspectOptions& options);
};

constexpr std::array<TInspector, 4> Inspectors{{{u".sln", InspectSolution},
                                                {u".rc", InspectResourceScript},
                                                {u".rc2", InspectResourceScript},
                                                {u".trx", InspectTestResults}}};
constexpr TInspector LogInspector{u"", InspectBuildLog};

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
class TInspection {
public:
  explicit TInspection(const TInspectOptions& options) : options_(options) {}

  bool Take(const std::u16string& file) {
    try {
      if (options_.MSBuild && options_.Lines) {
        PrintBuildLogLines(file, options_, output_);
      } else {
        Write(file, InspectorFor(file, options_));
      }
      return true;
    } catch (const std::exception& error) {
      WriteReason(file, ReasonOf(error));
      return false;
    }
  }

private:
  static std::u16string FullPath(const std::u16string& file) {
    return text::ExpandPath(file, platform::CurrentDirectory());
  }

  bool AreMany() const { return options_.Files.size() > 1; }

  void WriteLine(const std::u16string& file, const std::invocable auto& writeMembers) {
    json_.Object([&] {
      if (AreMany()) json_.Member("file", file);
      writeMembers();
    });
    json_.EndLine();
    json_.Flush();
  }

  void Write(const std::u16string& file, const TInspector& inspector) {
    if (!options_.Json && AreMany()) output_.Write(text::ToUtf8(file) + "\n");
    const TInspected inspected = inspector.Inspect(FullPath(file), options_);
    if (options_.Json) {
      WriteLine(file, [&] { inspected->WriteMembers(json_); });
    } else {
      inspected->Describe(output_);
    }
  }

  void WriteReason(const std::u16string& file, const std::u16string& reason) {
    if (options_.Json && AreMany()) return WriteLine(file, [&] { json_.Member("error", reason); });
    WriteError(AreMany() ? file + u": " + reason : reason);
  }

  const TInspectOptions& options_;
  TOutput output_;
  TJsonWriter json_{[this](std::string_view utf8) { output_.Write(utf8); }};
};

} // namespace

std::u16string ReasonOf(const std::exception& error) {
  const std::u16string place = PlaceOf(error);
  return Shortened(MessageOf(error)) + (place.empty() ? u"" : u" (" + place + u")");
}

int RunInspect(const TInspectOptions& options) {
  if (options.Files.size() > 1) platform::KeepFreedMemory();
  TInspection inspection(options);
  bool succeeded = true;
  for (const auto& file : options.Files)
    succeeded = inspection.Take(file) && succeeded;
  return succeeded ? 0 : 1;
}

} // namespace kx::cli
