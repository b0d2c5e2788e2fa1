// A build project in memory: variables, property sets and the tree of actions.
#pragma once

#include "contract/Iterator.h"
#include "foundation/text/Text.h"
#include "program/findings/Gates.h"
#include "program/runner/ActionTerms.h"
#include "program/runner/ServiceRegistry.h"
#include "program/runner/VerdictRules.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

template <typename T>
using TByName = std::unordered_map<std::u16string, T, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

struct TProjectVariable {
  std::u16string Name;
  std::u16string Value; // may hold references to others

  static TProjectVariable Parse(std::u16string_view assignment); // "NAME=VALUE"; raises EKxException
};

// In their order, and found by name without regard to letter case.
class TProjectVariables {
public:
  TProjectVariables() = default;
  TProjectVariables(std::initializer_list<TProjectVariable> variables);

  void Reserve(std::size_t count);
  void Set(TProjectVariable variable);                          // takes the place of one that has its name
  const TProjectVariable* Find(std::u16string_view name) const; // null when there is none

  std::size_t size() const { return variables_.size(); }
  auto begin() const { return variables_.begin(); }
  auto end() const { return variables_.end(); }
  const TProjectVariable& operator[](std::size_t index) const { return variables_[index]; }

private:
  std::vector<TProjectVariable> variables_;
  TByName<std::size_t> places_;
};

// Texts of a project are the host's own: their lines end with CR LF. XML and command lines give them with LF.
std::u16string WithHostLineEnds(std::u16string_view text);

class TProjectPropertySet : public IPropertySet {
public:
  TProjectPropertySet(std::u16string name, TPropertySetKind kind) : name_(std::move(name)), kind_(kind) {}
  std::u16string GetName() const override { return name_; }
  TPropertySetKind GetKind() const override { return kind_; }
  std::optional<std::u16string> GetValue(std::u16string_view name) const override;
  bool Add(std::u16string_view name, std::u16string_view value); // False when it has the name already
  const auto& Values() const { return values_; }                 // by name

private:
  std::u16string name_;
  TPropertySetKind kind_;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> values_;
};

class TProjectPropertySets : public IPropertySetService {
public:
  bool Add(std::shared_ptr<TProjectPropertySet> set); // False when the name is taken
  std::shared_ptr<const IPropertySet> Find(std::u16string_view name) const override;
  text::TStringList GetNames(TPropertySetKind kind) const override;
  const auto& All() const { return sets_; }

private:
  std::vector<std::shared_ptr<TProjectPropertySet>> sets_;
  TByName<std::shared_ptr<TProjectPropertySet>> byName_;
};

class TActionNode;

// Accepted where the user writes it, but only its encrypted twin is kept.
bool IsClearSecret(const TKxPublishedProperty& property);

// What follows for the run when an action fails.
enum class TOnFailure {
  Stop,
  Continue, // the run goes on, but does not succeed any more
  Ignore,   // the action counts as passed over
};

// Finds the actions of a project, however many they are.
class TActionIndex {
public:
  void Add(TActionNode& node);
  void ForgetNames() { byName_.clear(); }
  TActionNode* Find(const TCustomKxAction& action) const;
  // `roots` are the actions of the project.
  TActionNode* FindNamed(std::u16string_view name,
                         const std::vector<std::unique_ptr<TActionNode>>& roots) const;

private:
  std::unordered_map<const TCustomKxAction*, TActionNode*> nodes_;
  mutable TByName<TActionNode*> byName_; // empty: to be made
};

// One action of a project with what the project says about it. Owns the action and its children.
class TActionNode {
public:
  // Makes the action and attaches it to the host, which outlives it, as the index does.
  TActionNode(const TRegisteredAction& type, IKxActionHost& host, TActionIndex& index);
  TActionNode(const TActionNode&) = delete;
  TActionNode& operator=(const TActionNode&) = delete;

  const TRegisteredAction& Type() const { return type_; }
  TCustomKxAction& Action() const { return *action_; }
  TKxBaseIterator* Iterator() const { return iterator_; } // null unless the action is a loop
  const std::vector<std::unique_ptr<TActionNode>>& Children() const { return children_; }

  const std::u16string& Name() const { return name_; }
  void SetName(std::u16string_view name); // is the action's description too
  std::u16string DisplayName() const;     // the name, else that of the type
  TOnFailure OnFailure() const { return onFailure_; }
  void SetOnFailure(TOnFailure value) { onFailure_ = value; }
  const TActionTerms& Terms() const { return terms_; }
  void SetTerms(TActionTerms terms) { terms_ = std::move(terms); }
  const TActionGroup* Group() const { return group_; } // null: it stands in none
  void SetGroup(const TActionGroup* group) { group_ = group; }
  int Line() const { return line_; } // in the project's file; 0: it was not read from there
  void SetLine(int line) { line_ = line; }

  // The action's published properties in declaration order; a loop's own LoopVariable comes first.
  const std::vector<const TKxPublishedProperty*>& Properties() const { return properties_; }
  const TKxPublishedProperty* FindProperty(std::u16string_view name) const;
  // Raises EKxException for an unknown name (with the nearest one) and for one that cannot be set.
  const TKxPublishedProperty& RequireProperty(std::u16string_view name) const;
  // As RequireProperty and PropertyFromText.
  void Set(std::u16string_view property, std::u16string_view text);

private:
  friend class TProject;
  const TRegisteredAction& type_;
  TActionIndex& index_;
  std::unique_ptr<TCustomKxAction> action_;
  TKxBaseIterator* iterator_;
  std::vector<const TKxPublishedProperty*> properties_;
  std::vector<std::unique_ptr<TActionNode>> children_;
  std::u16string name_;
  TOnFailure onFailure_ = TOnFailure::Stop;
  TActionTerms terms_;
  const TActionGroup* group_ = nullptr;
  int line_ = 0;
};

// The registry and the host outlive the project. Actions stay where they are as long as the project lives.
class TProject {
public:
  TProject(const TServiceRegistry& services, IKxActionHost& host) : services_(services), host_(host) {}
  TProject(const TProject&) = delete;
  TProject& operator=(const TProject&) = delete;

  std::u16string Name;
  std::u16string FileName; // full path; empty for a project that was made in memory
  TProjectVariables Variables;
  TProjectPropertySets PropertySets;
  TRuleSettings Rules;
  TGateSettings Gates; // a file in it as a full path

  std::u16string Directory() const; // of the file; the current folder without one
  const TServiceRegistry& Services() const { return services_; }
  // Of the outermost level, in the order of the file; those of groups among them.
  const std::vector<std::unique_ptr<TActionNode>>& Actions() const { return actions_; }
  const std::vector<std::unique_ptr<TActionGroup>>& Groups() const { return groups_; } // in the same order
  const TActionGroup& AddGroup(TActionGroup group);

  // Adds an action at the end, inside `parent` when it is given. Raises EKxException for an unknown type and
  // for a parent that is no loop.
  TActionNode& AddAction(std::u16string_view type, TActionNode* parent = nullptr);

  TActionNode* FindNode(const TCustomKxAction& action) const; // null when it is not of this project
  TActionNode* FindNamed(std::u16string_view name) const; // the first of that name; null when there is none

private:
  const TServiceRegistry& services_;
  IKxActionHost& host_;
  TActionIndex index_;
  std::vector<std::unique_ptr<TActionGroup>> groups_;
  std::vector<std::unique_ptr<TActionNode>> actions_;
};

} // namespace kx
