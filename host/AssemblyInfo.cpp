#include "host/AssemblyInfo.h"
#include "host/AssemblyInfoRewriter.h"
#include "host/AssemblyInfoVersion.h"
#include "host/Exceptions.h"
#include "host/FileUpdates.h"

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

class TUpdater : public IBrannicAssemblyInfoUpdater {
public:
  void SetCallback(IAssemblyInfoCallback& callback) override { callback_ = &callback; }

  void ProcessFile(std::u16string_view fileName, bool write) override {
    if (callback_ == nullptr) return;
    const auto language = AssemblyInfoLanguageOf(fileName);
    if (!language) {
      callback_->AssemblyInfoProcessMessage(u"Warning : " + std::u16string(fileName) +
                                            u" is not updated: its extension is of no known language");
      return;
    }
    TAttributes attributes;
    callback_->OnProcessFile(fileName, attributes);
    if (attributes.Values.empty()) return;
    const platform::Result<std::string> bytes = FileUpdates().Read(fileName);
    if (!bytes) throw EKxException(bytes.Message());
    const TAssemblyInfoRewrite rewrite = Rewrite(fileName, *bytes, *language, attributes.Values);
    if (write && rewrite.Bytes != *bytes) {
      const platform::Status status = FileUpdates().Replace(fileName, rewrite.Bytes);
      if (!status) throw EKxException(status.Message());
    }
    Report(rewrite);
  }

private:
  static TAssemblyInfoRewrite Rewrite(std::u16string_view fileName, std::string_view bytes,
                                      TAssemblyInfoLanguage language, const TAssemblyInfoValues& values) {
    try {
      return RewriteAssemblyInfo(bytes, language, values);
    } catch (const EKxException& error) {
      throw EKxException(u"Unable to update " + std::u16string(fileName) + u": " + error.Message());
    }
  }

  void Report(const TAssemblyInfoRewrite& rewrite) const {
    for (const auto& message : rewrite.Messages)
      callback_->AssemblyInfoProcessMessage(message);
    for (const auto& [name, value] : rewrite.Entries)
      callback_->AssemblyInfoProcessEntry(name, value);
  }

  IAssemblyInfoCallback* callback_ = nullptr;
};

} // namespace

std::shared_ptr<IBrannicAssemblyInfoUpdater> TBrannicAssemblyInfo::Create() {
  return std::make_shared<TUpdater>();
}

} // namespace kx
