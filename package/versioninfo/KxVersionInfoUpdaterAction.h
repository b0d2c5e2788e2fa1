// The action VERSIONINFO: stamps the version block of one resource script with the values of a property set.
#pragma once

#include "contract/Actions.h"
#include "foundation/text/StringList.h"
#include "package/versioninfo/VersionInfo.h"

#include <memory>
#include <string>

namespace kx {

class IKxVersionInfoParser;

// Every failure is a message in the log; the script is then unchanged.
class TKxVersionInfoUpdaterAction : public TCustomKxAction {
public:
  static const TKxActionClass& Class();

  text::TStringList PropertiesToUpdate; // Name=True for each property that takes the value of the set
  std::u16string ResourceFile; // may hold references; a relative one is seen from the project's folder
  std::u16string PropertySetName;

  const TKxPropertyTable& PublishedProperties() const override;
  std::u16string GetActionName() const override { return u"Win32 Version Info Updater"; }
  std::u16string GetActionKeywords() const override { return u"RC resource File"; }
  void LookAhead(IKxActionValidationError& errors) override;
  bool Execute() override; // True once the script is written
  void GetFilesToChange(text::TStringList& files) override;

private:
  bool CanUpdateProperty(std::u16string_view name) const;
  void GetNewValue(std::u16string_view name, std::u16string_view oldValue, std::u16string& newValue,
                   bool selectable);
  void CheckProperties(TVersionInfoContainer& info);
  void CheckStrings(TVersionInfoContainer& info);
  bool Update(TVersionInfoContainer& info, IKxVersionInfoParser& script);
  bool Save(const TVersionInfoContainer& info, IKxVersionInfoParser& script);
  bool Refuse(std::u16string_view failure, const std::exception& error); // False

  std::shared_ptr<const IPropertySet> propertySet_; // during Execute
};

} // namespace kx
