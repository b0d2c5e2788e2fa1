#include "package/assemblyinfo/AssemblyInfo.h"
#include "contract/FileUpdates.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "package/assemblyinfo/AssemblyInfoSharing.h"
#include "package/assemblyinfo/AssemblyInfoVersion.h"

#include <algorithm>

namespace kx {

namespace {

class TAttributes : public IAssemblyInfoAttributes {
public:
  TAssemblyInfoValues Values;

  void SetAttribute(std::u16string_view name, std::u16string_view given) override {
    const bool version = IsAssemblyVersionAttribute(name);
    if (const auto refused = version ? CheckAssemblyVersion(name, given) : std::nullopt)
      throw EKxException(*refused);
    const std::u16string value = version ? TrimAssemblyVersion(given) : std::u16string(given);
    const auto found = std::ranges::find(Values, name, &TAssemblyInfoValues::value_type::first);
    if (found != Values.end())
      found->second = value;
    else
      Values.emplace_back(name, value);
  }
};

// One file of an assembly on its way to its new content.
struct TFileRewrite {
  std::u16string File;
  std::string Old;
  TAssemblyInfoRewrite New;
};

TFileRewrite RewriteFile(const TAssemblyInfoShare& share) {
  const platform::Result<std::string> bytes = FileUpdates().Read(share.File);
  if (!bytes) throw EKxException(bytes.Message());
  try {
    return {.File = share.File,
            .Old = *bytes,
            .New = RewriteAssemblyInfo(*bytes, *AssemblyInfoLanguageOf(share.File), share.Values)};
  } catch (const EKxException& error) {
    throw EKxException(u"Unable to update " + share.File + u": " + error.Message());
  }
}

class TUpdater : public IBrannicAssemblyInfoUpdater {
public:
  void SetCallback(IAssemblyInfoCallback& callback) override { callback_ = &callback; }
  void SetUnits(IAssemblyInfoUnits* units, TAssemblyInfoHistory* history) override {
    units_ = units;
    history_ = history;
  }

  void ProcessFile(std::u16string_view fileName, bool write) override {
    if (callback_ == nullptr) return;
    if (!AssemblyInfoLanguageOf(fileName))
      return Warn(std::u16string(fileName), u"is not updated: its extension is of no known language");
    TAttributes attributes;
    callback_->OnProcessFile(fileName, attributes);
    if (!attributes.Values.empty()) Process(std::u16string(fileName), attributes.Values, write);
  }

private:
  // All files are known to take their values before the first is written.
  void Process(const std::u16string& fileName, const TAssemblyInfoValues& values, bool write) {
    const TAssemblyInfoShares shares = ShareAssemblyInfo(fileName, values, units_, inventories_);
    std::vector<TFileRewrite> files;
    for (const auto& share : shares.Files)
      files.push_back(RewriteFile(share));
    for (const auto& message : shares.Messages)
      Warn(fileName, message);
    for (const auto& file : files) {
      if (write) Write(file);
      Report(file, &file != &files.front());
    }
    for (const auto& file : files)
      for (const auto& [name, value] : file.New.Entries)
        callback_->AssemblyInfoProcessEntry(name, value);
  }

  void Write(const TFileRewrite& file) {
    if (file.New.Bytes == file.Old) return;
    inventories_.Forget(file.File);
    if (const auto status = FileUpdates().Replace(file.File, file.New.Bytes); !status)
      throw EKxException(status.Message());
  }

  void Report(const TFileRewrite& file, bool isOther) {
    for (const auto& message : file.New.Messages)
      Warn(file.File, message);
    if (units_ == nullptr) return;
    if (isOther && !file.New.Changed.empty()) ReportOtherSource(file);
    for (const auto& [name, value] : file.New.Entries)
      Remember(file.File, name, value);
  }

  // Which other assemblies a source is part of.
  std::u16string Sharers(std::u16string_view file) {
    std::vector<std::u16string> names;
    for (const TAssemblyInfoUnit* unit : units_->UnitsOf(file))
      if (unit != &units_->Current()) names.push_back(unit->Name);
    return text::Join(names, u", ");
  }

  void ReportOtherSource(const TFileRewrite& file) {
    const std::u16string& unit = units_->Current().Name;
    const std::u16string names = text::Join(file.New.Changed, u", ");
    const std::u16string sharers = Sharers(file.File);
    Warn(file.File, u"is changed for " + unit + u", whose AssemblyInfo file lacks " + names +
                        (sharers.empty() ? u""
                                         : u". It is also part of " + sharers + u"; to stamp " + unit +
                                               u" alone, move the attributes into its own file"));
  }

  // A value that takes the place of another project's is what that one will be built with, too.
  void Remember(const std::u16string& file, const std::u16string& name, const std::u16string& value) {
    if (history_ == nullptr) return;
    const std::u16string& unit = units_->Current().Name;
    const auto [found, isNew] =
        history_->Entries.try_emplace({text::ToLower(file), name}, TAssemblyInfoHistory::TEntry{value, unit});
    TAssemblyInfoHistory::TEntry& entry = found->second;
    if (entry.Value != value && entry.Unit != unit)
      Warn(file, name + u" was \"" + entry.Value + u"\" for " + entry.Unit +
                     u" earlier in this run and is \"" + value + u"\" for " + unit +
                     u" now; give each project its own, or all the same");
    entry = {.Value = value, .Unit = unit};
  }

  void Warn(const std::u16string& file, std::u16string_view message) const {
    callback_->AssemblyInfoProcessMessage(u"Warning : " + file + u": " + std::u16string(message));
  }

  IAssemblyInfoCallback* callback_ = nullptr;
  IAssemblyInfoUnits* units_ = nullptr;
  TAssemblyInfoHistory* history_ = nullptr;
  TAssemblyInfoInventories inventories_;
};

} // namespace

std::shared_ptr<IBrannicAssemblyInfoUpdater> TBrannicAssemblyInfo::Create() {
  return std::make_shared<TUpdater>();
}

} // namespace kx
