// Named sets of values that a build project keeps for several actions (version information, above all).
#pragma once

#include "foundation/text/StringList.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

enum class TPropertySetKind { Win32, DotNet };

// One set. Names are compared without regard to letter case. The host owns it; it lives as long as the
// project.
class IPropertySet {
public:
  virtual ~IPropertySet() = default;
  virtual std::u16string GetName() const = 0;
  virtual TPropertySetKind GetKind() const = 0;
  virtual std::optional<std::u16string> GetValue(std::u16string_view name) const = 0;
};

class IPropertySetService {
public:
  virtual ~IPropertySetService() = default;
  virtual std::shared_ptr<const IPropertySet>
  Find(std::u16string_view name) const = 0; // null when there is none
  virtual text::TStringList GetNames(TPropertySetKind kind) const = 0;
};

// What editors of actions ask of the design environment about property sets.
class IKxPropertySetDesignServices {
public:
  virtual ~IKxPropertySetDesignServices() = default;
  virtual bool EditPropertySet(std::u16string_view name) = 0; // False when the user gave up
};

// The names of the project's version property sets, for editors.
text::TStringList GetWin32PropertySetsStrs(const IPropertySetService& service);
text::TStringList GetDotNetPropertySetStrs(const IPropertySetService& service);

} // namespace kx
