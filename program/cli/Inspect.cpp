#include "program/cli/Inspect.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Memory.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/FileKinds.h"
#include "program/cli/OrderedOutput.h"
#include "program/cli/Output.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <concepts>
#include <span>

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

// Raises what is wrong with the name itself.
void RequireFile(const std::u16string& file) {
  if (platform::DirectoryExists(file)) throw EKxException(file + u" is a folder; inspect takes files.");
  if (!platform::FileExists(file)) throw EKxException(NoSuchFile(file));
}

// By its name; a file of any other name by what it holds.
const TInspector& InspectorFor(const std::u16string& file, const TInspectOptions& options) {
  if (options.MSBuild) return LogInspector;
  if (const auto* named = FindInspector(text::ExtractFileExt(file))) return *named;
  RequireFile(file);
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
  using TPut = TOutput::TPut;

  // `output` gets what was read, `error` why a file was refused.
  TInspection(const TInspectOptions& options, TPut output, TPut error)
      : options_(options), output_(std::move(output)), error_(std::move(error)) {}

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
  // Of many files nearly all are there, so that one is asked for only when it could not be read.
  TInspected Read(const std::u16string& file, const TInspector& inspector) {
    try {
      return inspector.Inspect(text::ExpandPath(file, folder_), options_);
    } catch (const EKxException&) {
      RequireFile(file);
      throw;
    }
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
    const TInspected inspected = Read(file, inspector);
    if (!options_.Json && AreMany()) output_.Write(text::ToUtf8(file) + "\n");
    if (options_.Json) {
      WriteLine(file, [&] { inspected->WriteMembers(json_); });
    } else {
      inspected->Describe(output_);
    }
  }

  void WriteReason(const std::u16string& file, const std::u16string& reason) {
    if (options_.Json && AreMany()) return WriteLine(file, [&] { json_.Member("error", reason); });
    output_.Flush();
    error_(ForTerminal(AreMany() ? file + u": " + reason : reason) + "\n");
  }

  const TInspectOptions& options_;
  const std::u16string folder_ = platform::CurrentDirectory();
  TOutput output_;
  TPut error_;
  TJsonWriter json_{[this](std::string_view utf8) { output_.Write(utf8); }};
};

constexpr std::size_t AtOnce = 16; // files of one piece of work: most are small

// A log may be large and takes all there is while it is read, so logs are read one after the other.
bool InspectMany(const TInspectOptions& options) {
  platform::KeepFreedMemory();
  const std::size_t each = options.MSBuild ? options.Files.size() : AtOnce;
  TOrderedOutput ordered(Print, PrintError);
  std::atomic<bool> succeeded = true;
  DoInOrder((options.Files.size() + each - 1) / each, ordered, [&](std::size_t number) {
    TInspection inspection(
        options, [&](std::string_view utf8) { ordered.Say(number, utf8); },
        [&](std::string_view utf8) { ordered.SayError(number, utf8); });
    const auto files = std::span(options.Files).subspan(number * each);
    for (const auto& file : files.first(std::min(each, files.size())))
      if (!inspection.Take(file)) succeeded = false;
  });
  return succeeded;
}

} // namespace

std::u16string ReasonOf(const std::exception& error) {
  const std::u16string place = PlaceOf(error);
  return Shortened(MessageOf(error)) + (place.empty() ? u"" : u" (" + place + u")");
}

int RunInspect(const TInspectOptions& options) {
  if (options.Files.size() > 1) return InspectMany(options) ? 0 : 1;
  return TInspection(options, Print, PrintError).Take(options.Files.front()) ? 0 : 1;
}

} // namespace kx::cli
