// What the loaded plug-ins have registered.
#pragma once

#include "contract/Services.h"
#include "program/runner/OptionsStore.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

struct TRegisteredAction {
  std::u16string Identifier; // "DEVENV"
  std::u16string Category;
  const TKxActionClass* Class = nullptr;
};

struct TRegisteredImage {
  std::u16string Name;
  std::string_view Svg;
};

struct TRegisteredFunction {
  const TKxActionClass* Class = nullptr;
  std::u16string Name;
  TKxScriptFunction Function = nullptr;
};

struct TRegisteredOptions {
  const TKxOptionsClass* Class = nullptr;
  std::unique_ptr<TKxOptionsObject> Object; // loaded
  const TKxPageClass* Page = nullptr;       // null without a design environment
};

struct TRegisteredEditor {
  const TKxActionClass* Class = nullptr;
  std::u16string Property;
  const TKxPropertyEditorClass* Editor = nullptr;
};

struct TRegisteredPages {
  const TKxActionClass* Class = nullptr;
  std::vector<const TKxPageClass*> Pages; // in the order registered
};

// The services behind ActionService(), CoreScriptingService() and OptionsService(). Identifiers are compared
// without regard to letter case; registering one twice raises EKxException. Keeps the one object of each
// options class, loaded from the store when it is registered. What is registered points into the plug-ins,
// which stay loaded to the end.
class TServiceRegistry : public IKxActionService, public IKxCoreScriptingService, public IKxOptionsService {
public:
  explicit TServiceRegistry(TOptionsStore& store); // which outlives the registry

  // Lookups; null when there is none.
  const std::vector<TRegisteredAction>& Actions() const { return actions_; }
  const TRegisteredAction* FindAction(std::u16string_view identifier) const;
  // Raises EKxException that says the nearest identifier.
  const TRegisteredAction& RequireAction(std::u16string_view identifier) const;
  std::string_view FindImage(std::u16string_view name) const; // SVG; empty when there is none
  const TRegisteredFunction* FindFunction(const TKxActionClass& actionClass, std::u16string_view name) const;
  std::vector<std::u16string> FunctionNames(const TKxActionClass& actionClass) const;
  // A registered constant, or a name of an enumeration that is registered or that an action's properties
  // take: its ordinal.
  std::optional<std::int32_t> FindConstant(std::u16string_view name) const;
  std::vector<std::u16string> ConstantNames() const; // those of enumerations too
  const std::vector<TRegisteredOptions>& Options() const { return options_; }
  const std::vector<TRegisteredPages>& Pages() const { return pages_; }
  const std::vector<TRegisteredEditor>& Editors() const { return editors_; }

  TOptionsStore& Store() const { return store_; }
  // The options objects read the store again.
  void ReloadOptions();
  // Writes what the options objects filled in by themselves into the store, and the store into its file. What
  // this run overrides is not written, nor what an object derived from it.
  platform::Status SaveOptions();

  void RegisterAction(std::u16string_view identifier, std::u16string_view category,
                      const TKxActionClass& actionClass) override;
  void RegisterPropertyEditor(TKxPropertyKind kind, const TKxActionClass& actionClass,
                              std::u16string_view property, const TKxPropertyEditorClass& editor) override;
  void RegisterPropertyPages(const TKxActionClass& actionClass,
                             std::span<const TKxPageClass* const> pages) override;
  void RegisterImage(std::u16string_view name, std::string_view svg) override;
  void RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                        TKxScriptFunction function) override;
  void RegisterConstant(std::u16string_view name, std::int32_t value) override;
  void RegisterEnumeration(const TKxEnumeration& enumeration) override;
  void RegisterOptions(const TKxOptionsClass& optionsClass) override;
  void RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) override;
  TKxOptionsObject* GetOptions(std::u16string_view name, std::u16string_view category) override;

private:
  struct TConstant {
    std::u16string Name;
    std::int32_t Value;
  };
  const std::vector<const TKxEnumeration*>& Enumerations() const;

  TOptionsStore& store_;
  std::vector<TRegisteredAction> actions_;
  std::vector<TRegisteredImage> images_;
  std::vector<TRegisteredFunction> functions_;
  std::vector<TConstant> constants_;
  std::vector<const TKxEnumeration*> enumerations_; // those registered
  // With those of the actions' properties behind them; empty until somebody asks after a registration.
  mutable std::vector<const TKxEnumeration*> knownEnumerations_;
  std::vector<TRegisteredOptions> options_;
  std::vector<TRegisteredPages> pages_;
  std::vector<TRegisteredEditor> editors_;
};

} // namespace kx
