#include "package/assemblyinfo/AssemblyInfoSharing.h"
#include "contract/FileUpdates.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx {

namespace {

using enum TAssemblyInfoPresence;

// A project has many sources, and hardly any of them speaks of its assembly: the others are not taken apart.
bool MayHaveAttributes(std::string_view bytes) {
  if (text::DetectByteOrderMark(bytes) >= text::ByteOrderMark::Utf16LE) return true;
  static constexpr std::string_view word = "assembly";
  const auto same = [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b); };
  return std::search(bytes.begin(), bytes.end(), word.begin(), word.end(), same) != bytes.end();
}

class TSharing {
public:
  TSharing(const std::u16string& file, IAssemblyInfoUnits* units, TAssemblyInfoInventories& inventories)
      : file_(file), units_(units), inventories_(inventories) {
    shares_.Files.push_back({.File = file, .Values = {}});
  }

  TAssemblyInfoShares Run(const TAssemblyInfoValues& values) {
    for (const auto& [name, value] : values)
      for (const auto& file : Receivers(name))
        Share(file).Values.emplace_back(name, value);
    if (!added_.empty()) WarnOfMissingSources();
    return std::move(shares_);
  }

private:
  // Where an attribute stands that the file itself has not.
  std::vector<std::u16string> Holders(const TAssemblyInfoUnit& unit, std::u16string_view name) {
    std::vector<std::u16string> holders;
    for (const auto& source : unit.Sources)
      if (!text::EqualsIgnoreCase(source, file_) && inventories_.Of(source).Find(name) != Absent)
        holders.push_back(source);
    return holders;
  }

  std::vector<std::u16string> Receivers(const std::u16string& name) {
    if (units_ == nullptr || inventories_.Of(file_).Find(name) != Absent) return {file_};
    const TAssemblyInfoUnit& unit = units_->Current();
    std::vector<std::u16string> holders = Holders(unit, name);
    if (!holders.empty()) return holders;
    if (!IsFrameworkAttribute(name)) return {file_};
    if (!MayBeAdded(unit, name)) return {};
    added_.push_back(name);
    return {PlaceOfNew(unit, name)};
  }

  // What several projects have in common goes to the file that is all that some of them have.
  std::u16string PlaceOfNew(const TAssemblyInfoUnit& unit, std::u16string_view name) {
    for (const auto& source : unit.Sources)
      if (!text::EqualsIgnoreCase(source, file_) && units_->IsAssemblyInfoFile(source) &&
          std::ranges::none_of(units_->UnitsOf(source), [&](const TAssemblyInfoUnit* other) {
            return Generates(*other, name) || !Holders(*other, name).empty();
          }))
        return source;
    return file_;
  }

  // A source that the build makes by itself may bring the same attributes.
  void WarnOfMissingSources() {
    for (const auto& source : units_->Current().Sources) {
      const std::u16string name = text::ExtractFileName(source);
      const bool speaksOfVersions = text::FindIgnoreCase(name, u"AssemblyInfo") != std::u16string::npos ||
                                    text::FindIgnoreCase(name, u"Version") != std::u16string::npos;
      if (speaksOfVersions && !platform::FileExists(source))
        shares_.Messages.push_back(text::Join(added_, u", ") + u" added, although " + source +
                                   u", which the project compiles too, is not on disk: if the build makes it "
                                   u"with the same attributes, make it before the stamping");
    }
  }

  bool MayBeAdded(const TAssemblyInfoUnit& unit, const std::u16string& name) {
    if (Generates(unit, name)) {
      shares_.Messages.push_back(
          name + u" is not added: " + unit.Name +
          u" has it written by its build; set it in the project file, or set Generate" + name +
          u"Attribute to false there");
      return false;
    }
    for (const TAssemblyInfoUnit* other : units_->UnitsOf(file_)) {
      if (other == &unit) continue;
      const auto holders = Holders(*other, name);
      if (holders.empty() && !Generates(*other, name)) continue;
      shares_.Messages.push_back(name + u" is not added: " + other->Name +
                                 u", which is made of this file too, has it already" +
                                 (holders.empty() ? u"" : u" in " + holders.front()) + u"; give " +
                                 unit.Name + u" an AssemblyInfo file of its own");
      return false;
    }
    return true;
  }

  static bool Generates(const TAssemblyInfoUnit& unit, std::u16string_view name) {
    return std::ranges::find(unit.Generated, name) != unit.Generated.end();
  }

  TAssemblyInfoShare& Share(const std::u16string& file) {
    const auto found = std::ranges::find_if(
        shares_.Files, [&file](const auto& share) { return text::EqualsIgnoreCase(share.File, file); });
    if (found != shares_.Files.end()) return *found;
    shares_.Files.push_back({.File = file, .Values = {}});
    return shares_.Files.back();
  }

  std::u16string file_;
  IAssemblyInfoUnits* units_;
  TAssemblyInfoInventories& inventories_;
  TAssemblyInfoShares shares_;
  std::vector<std::u16string> added_;
};

} // namespace

const TAssemblyInfoInventory& TAssemblyInfoInventories::Of(const std::u16string& file) {
  const auto found = known_.find(file);
  if (found != known_.end()) return found->second;
  const auto language = AssemblyInfoLanguageOf(file);
  const auto bytes = language ? FileUpdates().Read(file) : platform::Result<std::string>(std::string());
  const bool any = bytes && MayHaveAttributes(*bytes);
  return known_.emplace(file, any ? TAssemblyInfoInventory(*bytes, *language) : TAssemblyInfoInventory())
      .first->second;
}

TAssemblyInfoShares ShareAssemblyInfo(const std::u16string& file, const TAssemblyInfoValues& values,
                                      IAssemblyInfoUnits* units, TAssemblyInfoInventories& inventories) {
  return TSharing(file, units, inventories).Run(values);
}

} // namespace kx
