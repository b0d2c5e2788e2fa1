// Version resources as the host knows them.
#pragma once

#include "host/PropertySets.h"
#include "text/StringList.h"

#include <cstdint>
#include <functional>
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
  text::TStringList Strings; // Name=Value
  bool AutoIncBuild = false;
  bool IncludeCompileDate = false;
  bool LinkFileAndProductVersion = false;
  bool AutoUpdateFileVersion = false;
  bool AutoUpdateProductVersion = false;
};

// What a writer of resource scripts asks.
class IVersionInformation {
public:
  virtual ~IVersionInformation() = default;
  virtual const TVersionInfoValues& Values() const = 0;
};

// Keeps the values: a reader fills it, a writer asks it.
class TVersionInfoContainer : public IKxVersionInfoCallback, public IVersionInformation {
public:
  const TVersionInfoValues& Values() const override { return values_; }
  TVersionInfoValues& Values() { return values_; }

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
  void SetStringValues(std::u16string_view lines) override { values_.Strings.SetText(lines); }

private:
  TVersionInfoValues values_;
};

} // namespace kx
