// Version resources as the host knows them.
#pragma once

#include "contract/PropertySets.h"
#include "foundation/text/StringList.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

// Receives what a reader of resource scripts finds.
class IKxVersionInfoCallback {
public:
  virtual ~IKxVersionInfoCallback() = default;
  virtual void SetMajorVersion(std::int32_t value) = 0;
  virtual void SetMinorVersion(std::int32_t value) = 0;
  virtual void SetReleaseVersion(std::int32_t value) = 0;
  virtual void SetBuildVersion(std::int32_t value) = 0;
  virtual void SetProductVersion(std::u16string_view value) = 0;
  virtual void SetDebugBuild(bool value) = 0;
  virtual void SetPrivateBuild(bool value) = 0;
  virtual void SetPreReleaseBuild(bool value) = 0;
  virtual void SetSpecialBuild(bool value) = 0;
  virtual void SetDLL(bool value) = 0;
  virtual void SetLocale(std::int32_t value) = 0;
  virtual void SetCodePage(std::int32_t value) = 0;
  virtual void SetStringValues(std::u16string_view lines) = 0; // Name=Value, one a line
};

// The version texts that have a meaning of their own
// (https://learn.microsoft.com/windows/win32/menurc/versioninfo-resource). In a script SpecialBuildDetails
// stands under the key SpecialBuild.
inline constexpr std::array<std::u16string_view, 11> VSWin32VersionInfoNames{
    u"Comments",     u"CompanyName",    u"FileDescription",     u"FileVersion",
    u"InternalName", u"LegalCopyright", u"LegalTrademarks",     u"OriginalFilename",
    u"ProductName",  u"ProductVersion", u"SpecialBuildDetails",
};

// The values of one version resource. Those of a new one: numbers 0, flags False, no texts, US English in the
// Windows-1252 code page.
struct TVersionInfoValues {
  std::int32_t MajorVersion = 0;
  std::int32_t MinorVersion = 0;
  std::int32_t ReleaseVersion = 0;
  std::int32_t BuildVersion = 0;
  bool IsDebug = false;
  bool IsPreRelease = false;
  bool IsSpecial = false;
  bool IsPrivate = false;
  bool IsDLL = false;
  std::int32_t Locale = 1033;
  std::int32_t CodePage = 1252;
  std::u16string
      ProductVersion; // the numbers of PRODUCTVERSION, as 1.2.3.4; empty: those of the text, else of the file
  text::TStringList Strings; // Name=Value
  text::TStringList AsRead;  // the strings as a script spelled them; one that stays is written like this
  bool AutoIncBuild = false;
  bool IncludeCompileDate = false;
  bool LinkFileAndProductVersion = false;
  bool AutoUpdateFileVersion = false;
  bool AutoUpdateProductVersion = false;
};

// Replaces the text of this name in its place, or adds it behind the others.
void SetVersionText(TVersionInfoValues& values, std::u16string_view name, std::u16string_view text);

// One value by the name that property sets use, as text.
struct TKxVersionProperty {
  std::u16string_view Name;
  bool Selectable; // a user chooses whether it is updated; the others always come from the property set
  std::u16string (*Get)(const TVersionInfoValues& values);
  // Raises EKxException for what is no number where one is needed; what is no Boolean counts as False.
  void (*Set)(TVersionInfoValues& values, std::u16string_view text);
};
// In the order in which they are updated. The names of VSWin32VersionInfoNames come behind them.
std::span<const TKxVersionProperty> Win32VersionProperties();

// What a writer of resource scripts asks.
class IVersionInformation {
public:
  virtual ~IVersionInformation() = default;
  virtual const TVersionInfoValues& Values() const = 0;
  virtual TVersionInfoValues& Values() = 0;
};

// Gives the new value of a property; `newValue` comes in as the old one.
using TKxVersionValueHook = std::function<void(std::u16string_view name, std::u16string_view oldValue,
                                               std::u16string& newValue, bool selectable)>;

// The line that opens a version block.
inline constexpr std::u16string_view VersionBlockHeader = u"VS_VERSION_INFO VERSIONINFO";

class TVersionInfo {
public:
  // Takes every value that the set has. A product or file version without a text of its own is the text too.
  // Raises EKxException that names the set and the value that is no number.
  static void LoadFromPropertySet(const IPropertySet& set, IVersionInformation& info);

  // Lets `script`, as it was read, take the numbers, flags, language and switches of `wanted`, and the texts
  // that `wanted` names; its other texts stay.
  static void Merge(const TVersionInfoValues& wanted, IVersionInformation& script);

  // Which of the numbers a version resource, in which each has 16 bits, cannot hold, as text for the user;
  // nothing where all fit. `isWanted` chooses by the names of Win32VersionProperties.
  static std::optional<std::u16string>
  CheckNumbers(const TVersionInfoValues& values,
               const std::function<bool(std::u16string_view name)>& isWanted = {});

  // Appends the block to the lines: the statements of its head, then from its first BEGIN to its last END;
  // with `withHeader` the line that opens it before them. The automatic updates are made first. With a hook
  // each text is asked for. Every value is spelled so that the reader of scripts reports it again.
  static void GenerateVersionInfoRC(const IVersionInformation& info, text::TStringList& lines,
                                    bool withHeader, const TKxVersionValueHook& hook = {});
};

// Keeps the values: a reader fills it, a writer asks it. Texts are kept decoded: a doubled backslash or
// quotation mark of the script stands for one. What a reader reports shows in values asked for after it.
class TVersionInfoContainer : public IKxVersionInfoCallback, public IVersionInformation {
public:
  TVersionInfoContainer() = default;
  // `names` are the texts that may be updated; the hook is asked for each new value.
  TVersionInfoContainer(std::span<const std::u16string_view> names, TKxVersionValueHook hook)
      : names_(names), hook_(std::move(hook)) {}

  bool HasName(std::u16string_view name) const; // letter case ignored
  // The hook's answer; without a hook the value stays.
  std::u16string NewValue(std::u16string_view name, std::u16string_view oldValue, bool selectable) const;

  const TVersionInfoValues& Values() const override;
  TVersionInfoValues& Values() override;

  void SetMajorVersion(std::int32_t value) override { values_.MajorVersion = value; }
  void SetMinorVersion(std::int32_t value) override { values_.MinorVersion = value; }
  void SetReleaseVersion(std::int32_t value) override { values_.ReleaseVersion = value; }
  void SetBuildVersion(std::int32_t value) override { values_.BuildVersion = value; }
  void SetProductVersion(std::u16string_view value) override;
  void SetDebugBuild(bool value) override { values_.IsDebug = value; }
  void SetPrivateBuild(bool value) override { values_.IsPrivate = value; }
  void SetPreReleaseBuild(bool value) override { values_.IsPreRelease = value; }
  void SetSpecialBuild(bool value) override { values_.IsSpecial = value; }
  void SetDLL(bool value) override { values_.IsDLL = value; }
  void SetLocale(std::int32_t value) override { values_.Locale = value; }
  void SetCodePage(std::int32_t value) override { values_.CodePage = value; }
  void SetStringValues(std::u16string_view lines) override { reported_ = lines; }

private:
  std::span<const std::u16string_view> names_;
  TKxVersionValueHook hook_;
  void TakeStrings() const;

  mutable TVersionInfoValues values_;
  // A reader reports the growing list with every line, so it is taken when somebody looks at the values.
  mutable std::optional<std::u16string> reported_;
};

} // namespace kx
