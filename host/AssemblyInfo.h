// Rewriting of AssemblyInfo source files, as the actions see it.
#pragma once

#include <string_view>

namespace kx {

// Sets attributes of one AssemblyInfo file; what is set is written when the callback returns.
class IAssemblyInfoAttributes {
public:
  virtual ~IAssemblyInfoAttributes() = default;
  virtual void SetAttribute(std::u16string_view name, std::u16string_view value) = 0;
};

// What the updater tells the action that stamps.
class IAssemblyInfoCallback {
public:
  virtual ~IAssemblyInfoCallback() = default;
  virtual void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) = 0;
  virtual void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) = 0;
  virtual void AssemblyInfoProcessMessage(std::u16string_view text) = 0;
};

} // namespace kx
