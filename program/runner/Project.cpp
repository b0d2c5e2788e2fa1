#include "program/runner/Project.h"

#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/Messages.h"

#include <algorithm>

namespace kx {

namespace {

// Part of every loop, whatever the properties of its own.
const TKxPublishedProperty& LoopVariableProperty() {
  static const auto rows =
      TKxPropertyRows<TKxBaseIterator>()
          .Accessors(u"LoopVariable", &TKxBaseIterator::GetLoopVariable, &TKxBaseIterator::SetLoopVariable,
                     u"The variable that holds the current value on each pass.")
          .Take();
  return rows.front();
}

std::vector<const TKxPublishedProperty*> CollectProperties(const TCustomKxAction& action, bool isLoop) {
  std::vector<const TKxPublishedProperty*> properties;
  const TKxPropertyTable& table = action.PublishedProperties();
  if (isLoop && table.Find(LoopVariableProperty().Name) == nullptr)
    properties.push_back(&LoopVariableProperty());
  for (const auto& row : table.Rows())
    properties.push_back(&row);
  return properties;
}

// In the order of the project; the first of a name is the one that is meant.
void CollectNames(const std::vector<std::unique_ptr<TActionNode>>& nodes, TByName<TActionNode*>& names) {
  for (const auto& node : nodes) {
    names.try_emplace(node->Name(), node.get());
    CollectNames(node->Children(), names);
  }
}

} // namespace

bool IsClearSecret(const TKxPublishedProperty& property) {
  return property.Secret && !property.Stored;
}

std::u16string WithHostLineEnds(std::u16string_view text) {
  std::u16string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r')) result += u'\r';
    result += text[i];
  }
  return result;
}

TProjectVariable TProjectVariable::Parse(std::u16string_view assignment) {
  const std::size_t equals = assignment.find(u'=');
  if (equals == std::u16string_view::npos || !IsVariableName(assignment.substr(0, equals)))
    throw EKxException(Quoted(assignment) + u" sets no variable: expected NAME=VALUE, the name of letters, "
                                            u"digits, \"_\" and \".\".");
  return {std::u16string(assignment.substr(0, equals)), WithHostLineEnds(assignment.substr(equals + 1))};
}

TProjectVariables::TProjectVariables(std::initializer_list<TProjectVariable> variables) {
  for (const auto& variable : variables)
    Set(variable);
}

void TProjectVariables::Reserve(std::size_t count) {
  variables_.reserve(count);
  places_.reserve(count);
}

void TProjectVariables::Set(TProjectVariable variable) {
  const auto [place, isNew] = places_.try_emplace(variable.Name, variables_.size());
  if (isNew) {
    variables_.push_back(std::move(variable));
  } else {
    variables_[place->second] = std::move(variable);
  }
}

const TProjectVariable* TProjectVariables::Find(std::u16string_view name) const {
  const auto found = places_.find(name);
  return found == places_.end() ? nullptr : &variables_[found->second];
}

std::optional<std::u16string> TProjectPropertySet::GetValue(std::u16string_view name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

bool TProjectPropertySet::Add(std::u16string_view name, std::u16string_view value) {
  return values_.emplace(name, value).second;
}

bool TProjectPropertySets::Add(std::shared_ptr<TProjectPropertySet> set) {
  const bool isNew = byName_.try_emplace(set->GetName(), set).second;
  if (isNew) sets_.push_back(std::move(set));
  return isNew;
}

std::shared_ptr<const IPropertySet> TProjectPropertySets::Find(std::u16string_view name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second;
}

text::TStringList TProjectPropertySets::GetNames(TPropertySetKind kind) const {
  text::TStringList names;
  for (const auto& set : sets_)
    if (set->GetKind() == kind) names.Add(set->GetName());
  return names;
}

void TActionIndex::Add(TActionNode& node) {
  nodes_.emplace(&node.Action(), &node);
  ForgetNames();
}

TActionNode* TActionIndex::Find(const TCustomKxAction& action) const {
  const auto found = nodes_.find(&action);
  return found == nodes_.end() ? nullptr : found->second;
}

TActionNode* TActionIndex::FindNamed(std::u16string_view name,
                                     const std::vector<std::unique_ptr<TActionNode>>& roots) const {
  if (byName_.empty()) CollectNames(roots, byName_);
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second;
}

TActionNode::TActionNode(const TRegisteredAction& type, IKxActionHost& host, TActionIndex& index)
    : type_(type), index_(index), action_(type.Class->Create()),
      iterator_(dynamic_cast<TKxBaseIterator*>(action_.get())) {
  action_->Attach(host);
  properties_ = CollectProperties(*action_, iterator_ != nullptr);
}

void TActionNode::SetName(std::u16string_view name) {
  name_ = name;
  index_.ForgetNames();
  action_->SetDescription(name);
}

std::u16string TActionNode::DisplayName() const {
  return name_.empty() ? action_->GetActionName() : name_;
}

const TKxPublishedProperty* TActionNode::FindProperty(std::u16string_view name) const {
  const auto found = std::ranges::find_if(
      properties_, [name](const auto* row) { return text::EqualsIgnoreCase(row->Name, name); });
  return found == properties_.end() ? nullptr : *found;
}

const TKxPublishedProperty& TActionNode::RequireProperty(std::u16string_view name) const {
  const auto* property = FindProperty(name);
  if (property == nullptr) {
    std::vector<std::u16string> names;
    for (const auto* row : properties_)
      names.emplace_back(row->Name);
    throw EKxException(u"The action " + type_.Identifier + u" has no property " + Quoted(name) + u"." +
                       DidYouMean(name, names));
  }
  if (property->ReadOnly)
    throw EKxException(u"The property " + Quoted(property->Name) + u" is computed and cannot be set.");
  return *property;
}

void TActionNode::Set(std::u16string_view property, std::u16string_view text) {
  const TKxPublishedProperty& row = RequireProperty(property);
  row.Set(*action_, PropertyFromText(row, WithHostLineEnds(text)));
}

std::u16string TProject::Directory() const {
  return FileName.empty() ? platform::CurrentDirectory() : text::ExtractFileDir(FileName);
}

TActionNode& TProject::AddAction(std::u16string_view type, TActionNode* parent) {
  const TRegisteredAction& registered = services_.RequireAction(type);
  if (parent != nullptr && parent->Iterator() == nullptr)
    throw EKxException(u"The action " + parent->Type().Identifier + u" is no loop and cannot hold actions.");
  auto& siblings = parent != nullptr ? parent->children_ : actions_;
  TActionNode& node = *siblings.emplace_back(std::make_unique<TActionNode>(registered, host_, index_));
  index_.Add(node);
  return node;
}

const TActionGroup& TProject::AddGroup(TActionGroup group) {
  return *groups_.emplace_back(std::make_unique<TActionGroup>(std::move(group)));
}

TActionNode* TProject::FindNode(const TCustomKxAction& action) const {
  return index_.Find(action);
}

TActionNode* TProject::FindNamed(std::u16string_view name) const {
  return index_.FindNamed(name, actions_);
}

} // namespace kx
