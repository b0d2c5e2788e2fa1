#include "program/parts/Resume.h"

#include "foundation/platform/FileTree.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Hash.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/parts/ProjectReach.h"
#include "program/runner/References.h"
#include "program/runner/Variables.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <utility>

namespace kx {

namespace {

using TTime = std::chrono::system_clock::time_point;

// Where tools put what they make, below the folder of a project, and what Visual Studio keeps beside it.
constexpr auto ProductFolders = std::to_array<std::u16string_view>(
    {u"bin", u"obj", u"debug", u"release", u"x64", u"win32", u"ipch", u"testresults"});
constexpr auto KeptByTools =
    std::to_array<std::u16string_view>({u".ncb", u".sdf", u".suo", u".user", u".aps", u".trx"});

// What a working copy keeps for itself.
constexpr auto NoSources = std::to_array<std::u16string_view>({u".git", u".svn", u".hg"});

// Tests are run with whatever lies beside them.
bool IsAssembly(std::u16string_view file) {
  return text::EndsWithIgnoreCase(file, u".dll") || text::EndsWithIgnoreCase(file, u".exe");
}

// Nothing when a project cannot be read.
std::optional<TReach> ReachOfPart(const TPart& part) {
  auto reach = ReachOf(*part.Inputs);
  if (!reach) return std::nullopt;
  for (const auto& input : *part.Inputs)
    if (IsAssembly(input)) reach->Folders.insert(text::ExtractFileDir(input));
  reach->Files.insert(part.Inputs->begin(), part.Inputs->end());
  reach->Files.insert(part.Outputs.begin(), part.Outputs.end());
  return reach;
}

// Those within others left out.
std::vector<std::u16string> Outermost(TPathSet folders, const TPathSet& more) {
  folders.insert(more.begin(), more.end());
  std::vector<std::u16string> outermost;
  for (const auto& folder : folders) // one that holds others stands in front of them
    if (outermost.empty() ||
        !text::StartsWithIgnoreCase(folder, text::IncludeTrailingPathDelimiter(outermost.back())))
      outermost.push_back(folder);
  return outermost;
}

struct TFileState {
  std::uint64_t Size;
  TTime Changed;
};
using TFiles = std::map<std::u16string, TFileState>;

// Nothing when one cannot be looked at, as a product that is gone.
std::optional<TFiles> FilesOf(const TReach& reach) {
  TFiles files;
  const auto take = [&files](const platform::FileStamp& stamp) {
    files.insert_or_assign(stamp.Path, TFileState{stamp.Size, stamp.Changed});
  };
  for (const auto& folder : Outermost(reach.ProjectFolders, reach.Folders)) {
    const auto found = platform::ListFileTree(folder, NoSources);
    if (!found) return std::nullopt;
    std::ranges::for_each(*found, take);
  }
  for (const auto& file : reach.Files) {
    const auto stamp = platform::StampOfFile(file);
    if (!stamp) return std::nullopt;
    take(*stamp);
  }
  return files;
}

std::u16string LineOf(const std::u16string& path, const TFileState& state) {
  const std::int64_t time = state.Changed.time_since_epoch().count();
  return text::FromInteger(static_cast<std::int64_t>(state.Size)) + u" " + text::FromInteger(time) + u" " +
         path + u"\n";
}

bool IsOneOf(std::span<const std::u16string_view> words, std::u16string_view text) {
  return std::ranges::any_of(words, [text](auto word) { return text::EqualsIgnoreCase(word, text); });
}

bool IsInProductFolder(std::u16string_view path, std::u16string_view folder, bool folderCounts) {
  if (!text::StartsWithIgnoreCase(path, text::IncludeTrailingPathDelimiter(folder))) return false;
  for (std::u16string below = text::ExtractFileDir(path);
       below.size() > folder.size() || (folderCounts && below.size() == folder.size());
       below = text::ExtractFileDir(below))
    if (IsOneOf(ProductFolders, text::ExtractFileName(below))) return true;
  return false;
}

// Whether a file that changed while the part ran is the part's own work. Another one may have been edited
// meanwhile, and nobody knows which of its contents was read.
bool IsProduct(const TPart& part, const TReach& reach, const std::u16string& path) {
  const auto isOutput = [&path](const auto& output) { return text::EqualsIgnoreCase(output, path); };
  const auto isIn = [&path](bool folderCounts) {
    return
        [&path, folderCounts](const auto& folder) { return IsInProductFolder(path, folder, folderCounts); };
  };
  return std::ranges::any_of(part.Outputs, isOutput) || IsOneOf(KeptByTools, text::ExtractFileExt(path)) ||
         std::ranges::any_of(reach.ProjectFolders, isIn(false)) ||
         std::ranges::any_of(reach.Folders, isIn(true));
}

// Everything that a run could take from outside of an action: one line each.
class TSettingsText {
public:
  explicit TSettingsText(const TProject& project) : project_(project) {
    for (const auto& variable : project.Variables)
      Add(variable.Name, variable.Value);
    for (const auto& set : project.PropertySets.All())
      for (const auto& [name, value] : set->Values())
        Add(set->GetName() + u"." + name, value);
  }

  void Add(const TActionNode& node) {
    Add(u"action", node.Type().Identifier);
    Add(u"condition", node.Terms().Condition);
    for (const auto* property : node.Properties())
      if (property->Stored) Add(property->Name, PropertyToText(*property, property->Get(node.Action())));
    for (const auto& child : node.Children())
      Add(*child);
  }

  void Add(std::u16string_view name, std::u16string_view value) {
    text_.append(name).append(u"=").append(value).append(u"\n");
    for (const auto& part : SplitReferences(value))
      if (part.Reference) Take(*part.Reference);
  }

  std::u16string Text() && {
    // A function may ask any other action.
    if (hasCall_)
      for (const auto& node : project_.Actions())
        Add(*node);
    return std::move(text_);
  }

private:
  void Take(const TReference& reference) {
    hasCall_ = hasCall_ || reference.IsCall;
    if (const auto value = TVariables::FindInEnvironment(reference.Name))
      text_.append(reference.Name).append(u" ").append(*value).append(u"\n");
  }

  const TProject& project_;
  std::u16string text_;
  bool hasCall_ = false;
};

} // namespace

TResume::TResume(const TProject& project, const TPlan& plan, TResumeSettings settings)
    : project_(project), plan_(plan), settings_(std::move(settings)) {}

std::u16string TResume::SettingsOf(const TPart& part) const {
  TSettingsText settings(project_);
  settings.Add(*project_.Actions()[part.Place]);
  settings.Add(u"pass", part.PassValue);
  settings.Add(u"", settings_.Options);
  settings.Add(u"gate", settings_.FindingsCount ? u"1" : u"");
  return text::FromInteger(static_cast<std::int64_t>(text::StableHash(std::move(settings).Text()))) + u"\n";
}

std::set<std::size_t> TResume::MayPassOver(const history::TPassedParts& known) const {
  std::set<std::size_t> passed;
  for (const std::size_t part : InOrder(plan_)) {
    const auto state = known.find(plan_.Parts[part].Id);
    const bool needsAre = std::ranges::all_of(plan_.Parts[part].Needs,
                                              [&](const auto& need) { return passed.contains(need.Action); });
    if (needsAre && state != known.end() && IsUnchanged(plan_.Parts[part], text::FromUtf8(state->second)))
      passed.insert(part);
  }
  return passed;
}

bool TResume::IsUnchanged(const TPart& part, const std::u16string& state) const {
  const auto reach = ReachOfPart(part);
  const auto files = reach ? FilesOf(*reach) : std::nullopt;
  if (!files) return false;
  std::u16string now = SettingsOf(part);
  for (const auto& [path, file] : *files)
    now += LineOf(path, file);
  return now == state;
}

// Nothing for what may have changed behind the part.
std::optional<std::u16string> TResume::StateOf(const TPart& part, const TPartResult& result) const {
  const auto reach = ReachOfPart(part);
  const auto files = reach ? FilesOf(*reach) : std::nullopt;
  if (!files) return std::nullopt;
  std::u16string state = SettingsOf(part);
  for (const auto& [path, file] : *files) {
    if (file.Changed > result.Ended || (file.Changed >= result.Began && !IsProduct(part, *reach, path)))
      return std::nullopt;
    state += LineOf(path, file);
  }
  return state;
}

history::TPassedParts TResume::Remember(const std::vector<TPartResult>& results,
                                        const std::set<std::size_t>& passedOver,
                                        const history::TPassedParts& known) const {
  history::TPassedParts parts;
  for (std::size_t i = 0; i < results.size(); ++i) {
    const TPart& part = plan_.Parts[i];
    if (passedOver.contains(i)) {
      parts.insert(*known.find(part.Id));
    } else if (results[i].Kind && IsSuccess(*results[i].Kind) &&
               !(settings_.FindingsCount && results[i].HasFindings)) {
      if (const auto state = StateOf(part, results[i])) parts.emplace(part.Id, text::ToUtf8(*state));
    }
  }
  return parts;
}

} // namespace kx
