#include "program/runner/KnownOptions.h"

#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/DotNetInfo.h"
#include "program/runner/FileLink.h"
#include "program/runner/Messages.h"
#include "program/runner/WebSites.h"

#include <algorithm>

namespace kx {

namespace {

using TKind = TKnownOption::TKind;

// The keys that an options object saves.
class TKeys : public IKxOptionsWriter {
public:
  TKeys(std::u16string_view section, std::vector<TKnownOption>& options)
      : section_(section), options_(options) {}
  void WriteString(std::u16string_view key, std::u16string_view /*value*/) override { Add(key, TKind::Text); }
  void WriteInteger(std::u16string_view key, std::int32_t /*value*/) override { Add(key, TKind::Number); }

private:
  void Add(std::u16string_view key, TKind kind) {
    options_.push_back({{section_, std::u16string(key)}, kind, nullptr});
  }

  std::u16string section_;
  std::vector<TKnownOption>& options_;
};

void AddOptionsOf(const TKxOptionsClass& optionsClass, std::vector<TKnownOption>& options) {
  const auto object = optionsClass.Create();
  TKeys keys(optionsClass.OptionKey, options);
  object->SaveOptions(keys);
  for (const TKxOptionDescription& row : object->DescribeOptions())
    for (TKnownOption& option : options) {
      if (option.Name.Section != optionsClass.OptionKey || option.Name.Key != row.Key) continue;
      if (row.IsFolder) option.Kind = TKind::Folder;
      option.Enumeration = row.Enumeration;
    }
}

std::u16string NameOf(const TKnownOption& option) {
  return option.Name.Section + u"." + option.Name.Key;
}

} // namespace

std::vector<TKnownOption> KnownOptions(const TServiceRegistry& services) {
  std::vector<TKnownOption> options;
  for (const auto& row : services.Options())
    AddOptionsOf(*row.Class, options);
  for (const std::u16string_view version : DotNetVersions())
    options.push_back({{std::u16string(DotNetSection), std::u16string(version)}, TKind::Folder, nullptr});
  options.push_back({ApplicationHostConfigOption(), TKind::File, nullptr});
  options.push_back({OpenFileOption(), TKind::Link, nullptr});
  return options;
}

const TKnownOption* FindOption(std::span<const TKnownOption> known, const TOptionName& name) {
  const auto found = std::ranges::find_if(known, [&name](const TKnownOption& option) {
    return text::EqualsIgnoreCase(option.Name.Section, name.Section) &&
           text::EqualsIgnoreCase(option.Name.Key, name.Key);
  });
  return found == known.end() ? nullptr : &*found;
}

const TKnownOption& RequireOption(std::span<const TKnownOption> known, const TOptionName& name) {
  if (const auto* found = FindOption(known, name)) return *found;
  std::vector<std::u16string> names;
  for (const TKnownOption& option : known)
    names.push_back(NameOf(option));
  const std::u16string wanted = name.Section + u"." + name.Key;
  throw EKxException(u"Unknown option " + Quoted(wanted) + u"." + DidYouMean(wanted, names));
}

std::u16string StoredText(const TKnownOption& option, std::u16string_view value) {
  if (option.Kind != TKind::Number) return std::u16string(value);
  const auto ordinal = option.Enumeration == nullptr ? std::nullopt : option.Enumeration->OrdinalOf(value);
  if (ordinal) return text::FromInteger(*ordinal);
  const auto number = text::ToInteger(value);
  if (option.Enumeration == nullptr) {
    if (!number) throw EKxException(NameOf(option) + u" takes a number, not " + Quoted(value) + u".");
    return std::u16string(value);
  }
  const auto& names = option.Enumeration->Values;
  if (number && *number >= 0 && static_cast<std::size_t>(*number) < names.size())
    return std::u16string(value);
  const std::vector<std::u16string> all(names.begin(), names.end());
  throw EKxException(NameOf(option) + u" takes " + text::Join(all, u", ") + u"; not " + Quoted(value) + u"." +
                     DidYouMean(value, all));
}

std::u16string ShownText(const TKnownOption& option, std::u16string_view stored) {
  const auto number = option.Enumeration == nullptr ? std::nullopt : text::ToInteger(stored);
  const bool isNamed =
      number && *number >= 0 && static_cast<std::size_t>(*number) < option.Enumeration->Values.size();
  return std::u16string(isNamed ? option.Enumeration->Values[static_cast<std::size_t>(*number)] : stored);
}

std::optional<std::u16string> CheckPlace(const TKnownOption& option, std::u16string_view value) {
  if (option.Kind == TKind::Link && !text::Trim(value).empty()) RequireFileLink(text::Trim(value));
  const bool isFolder = option.Kind == TKind::Folder;
  const std::u16string path(text::Trim(value));
  if ((!isFolder && option.Kind != TKind::File) || path.empty()) return std::nullopt;
  const std::u16string_view what = isFolder ? u"folder" : u"file";
  if (!text::IsAbsolutePath(path))
    throw EKxException(NameOf(option) + u" takes the full path of a " + std::u16string(what) + u", not " +
                       Quoted(path) + u".");
  if (isFolder && platform::FileExists(path))
    throw EKxException(NameOf(option) + u" takes a folder; " + path + u" is a file. Its folder is " +
                       text::ExtractFileDir(path) + u".");
  if (isFolder ? platform::DirectoryExists(path) : platform::FileExists(path)) return std::nullopt;
  return u"There is no " + std::u16string(what) + u" " + path + u" on this machine.";
}

} // namespace kx
