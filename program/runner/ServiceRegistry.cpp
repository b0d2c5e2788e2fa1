#include "program/runner/ServiceRegistry.h"

#include "program/runner/Messages.h"

#include <algorithm>

namespace kx {

namespace {

template <typename TRows, typename TSame>
auto FindRow(TRows& rows, const TSame& same) -> decltype(rows.data()) {
  const auto found = std::ranges::find_if(rows, same);
  return found == rows.end() ? nullptr : &*found;
}

void LoadInto(TKxOptionsObject& object, const TOptionsStore& store, std::u16string_view section,
              TOptionsStore::EOverrides overrides) {
  object.LoadOptions(*store.Reader(section, overrides));
}

} // namespace

TServiceRegistry::TServiceRegistry(TOptionsStore& store) : store_(store) {}

const TRegisteredAction* TServiceRegistry::FindAction(std::u16string_view identifier) const {
  return FindRow(actions_, [&](const TRegisteredAction& row) {
    return text::EqualsIgnoreCase(row.Identifier, identifier);
  });
}

const TRegisteredAction& TServiceRegistry::RequireAction(std::u16string_view identifier) const {
  if (const auto* found = FindAction(identifier)) return *found;
  std::vector<std::u16string> names;
  for (const auto& action : actions_)
    names.push_back(action.Identifier);
  throw EKxException(u"Unknown action type " + Quoted(identifier) + u"." + DidYouMean(identifier, names));
}

std::string_view TServiceRegistry::FindImage(std::u16string_view name) const {
  const auto* found =
      FindRow(images_, [&](const TRegisteredImage& row) { return text::EqualsIgnoreCase(row.Name, name); });
  return found == nullptr ? std::string_view() : found->Svg;
}

const TRegisteredFunction* TServiceRegistry::FindFunction(const TKxActionClass& actionClass,
                                                          std::u16string_view name) const {
  return FindRow(functions_, [&](const TRegisteredFunction& row) {
    return row.Class == &actionClass && text::EqualsIgnoreCase(row.Name, name);
  });
}

std::vector<std::u16string> TServiceRegistry::FunctionNames(const TKxActionClass& actionClass) const {
  std::vector<std::u16string> names;
  for (const auto& function : functions_)
    if (function.Class == &actionClass) names.push_back(function.Name);
  return names;
}

std::optional<std::int32_t> TServiceRegistry::FindConstant(std::u16string_view name) const {
  const auto* found = FindRow(
      constants_, [&](const TConstant& constant) { return text::EqualsIgnoreCase(constant.Name, name); });
  if (found != nullptr) return found->Value;
  for (const auto* enumeration : Enumerations())
    if (const auto ordinal = enumeration->OrdinalOf(name)) return ordinal;
  return std::nullopt;
}

std::vector<std::u16string> TServiceRegistry::ConstantNames() const {
  std::vector<std::u16string> names;
  for (const auto& constant : constants_)
    names.push_back(constant.Name);
  for (const auto* enumeration : Enumerations())
    names.insert(names.end(), enumeration->Values.begin(), enumeration->Values.end());
  return names;
}

// Only an action itself can show its properties, and it may look at options, which are registered after it:
// so one of each is made no sooner than somebody asks.
const std::vector<const TKxEnumeration*>& TServiceRegistry::Enumerations() const {
  if (!knownEnumerations_.empty()) return knownEnumerations_;
  knownEnumerations_ = enumerations_;
  for (const auto& action : actions_) {
    const auto example = action.Class->Create();
    for (const auto& property : example->PublishedProperties().Rows())
      if (property.Enumeration != nullptr) knownEnumerations_.push_back(property.Enumeration);
  }
  return knownEnumerations_;
}

void TServiceRegistry::ReloadOptions() {
  for (const auto& options : options_)
    LoadInto(*options.Object, store_, options.Class->OptionKey, TOptionsStore::EOverrides::Apply);
}

platform::Status TServiceRegistry::SaveOptions() {
  for (const auto& options : options_) {
    const std::u16string_view section = options.Class->OptionKey;
    std::unique_ptr<TKxOptionsObject> stored;
    if (store_.HasOverrides(section)) {
      // What the object derived from an override must not be stored, so one that never saw it is saved.
      stored = options.Class->Create();
      LoadInto(*stored, store_, section, TOptionsStore::EOverrides::Ignore);
    }
    TKxOptionsObject& object = stored ? *stored : *options.Object;
    if (object.IsModified()) object.SaveOptions(*store_.Writer(section));
  }
  return store_.Save();
}

void TServiceRegistry::RegisterAction(std::u16string_view identifier, std::u16string_view category,
                                      const TKxActionClass& actionClass) {
  if (FindAction(identifier) != nullptr)
    throw EKxException(u"The action type " + Quoted(identifier) + u" is registered already.");
  actions_.push_back({std::u16string(identifier), std::u16string(category), &actionClass});
  knownEnumerations_.clear();
}

void TServiceRegistry::RegisterPropertyEditor(TKxPropertyKind /*kind*/, const TKxActionClass& actionClass,
                                              std::u16string_view property,
                                              const TKxPropertyEditorClass& editor) {
  editors_.push_back({&actionClass, std::u16string(property), &editor});
}

void TServiceRegistry::RegisterPropertyPages(const TKxActionClass& actionClass,
                                             std::span<const TKxPageClass* const> pages) {
  pages_.push_back({&actionClass, {pages.begin(), pages.end()}});
}

void TServiceRegistry::RegisterImage(std::u16string_view name, std::string_view svg) {
  images_.push_back({std::u16string(name), svg});
}

void TServiceRegistry::RegisterFunction(const TKxActionClass& actionClass, std::u16string_view name,
                                        TKxScriptFunction function) {
  functions_.push_back({&actionClass, std::u16string(name), function});
}

void TServiceRegistry::RegisterConstant(std::u16string_view name, std::int32_t value) {
  constants_.push_back({std::u16string(name), value});
}

void TServiceRegistry::RegisterEnumeration(const TKxEnumeration& enumeration) {
  enumerations_.push_back(&enumeration);
  knownEnumerations_.clear();
}

void TServiceRegistry::RegisterOptions(const TKxOptionsClass& optionsClass) {
  if (GetOptions(optionsClass.Name, optionsClass.Category) != nullptr)
    throw EKxException(u"The options " + Quoted(optionsClass.Name) + u" are registered already.");
  auto object = optionsClass.Create();
  LoadInto(*object, store_, optionsClass.OptionKey, TOptionsStore::EOverrides::Apply);
  options_.push_back({&optionsClass, std::move(object), nullptr});
}

void TServiceRegistry::RegisterOptionsPage(const TKxOptionsClass& optionsClass, const TKxPageClass& page) {
  for (auto& options : options_)
    if (options.Class == &optionsClass) options.Page = &page;
}

TKxOptionsObject* TServiceRegistry::GetOptions(std::u16string_view name, std::u16string_view category) {
  const auto* found = FindRow(options_, [&](const TRegisteredOptions& row) {
    return text::EqualsIgnoreCase(row.Class->Name, name) &&
           text::EqualsIgnoreCase(row.Class->Category, category);
  });
  return found == nullptr ? nullptr : found->Object.get();
}

} // namespace kx
