#include "program/runner/Validation.h"

#include "contract/LookAhead.h"
#include "foundation/platform/Files.h"
#include "program/runner/ActionGraph.h"
#include "program/runner/Conditions.h"
#include "program/runner/Messages.h"
#include "program/runner/References.h"

#include <algorithm>
#include <set>

namespace kx {

namespace {

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

class TValidationCollector : public IKxActionValidationError, public IKxForeseenRun {
public:
  TValidationCollector(const TServiceRegistry& services, const TActionNode& node, TValidationEntries& entries,
                       bool othersBefore = false)
      : services_(services), node_(node), entries_(entries), othersBefore_(othersBefore) {
    for (auto entry = entries.rbegin(); entry != entries.rend() && entry->Node == &node; ++entry)
      said_.emplace(entry->Page, entry->Message);
  }

  bool MayMakeFilesBefore() const override { return othersBefore_; }

  void Add(std::u16string_view page, std::u16string_view message, TKxOptionsObject* options) override {
    TValidationEntry entry{node_.DisplayName(), std::u16string(page), std::u16string(message),
                           ClassOf(options), &node_};
    if (said_.emplace(entry.Page, entry.Message).second) entries_.push_back(std::move(entry));
  }

private:
  const TKxOptionsClass* ClassOf(const TKxOptionsObject* options) const {
    const auto& all = services_.Options();
    const auto found = std::ranges::find_if(
        all, [options](const TRegisteredOptions& row) { return row.Object.get() == options; });
    return found == all.end() ? nullptr : found->Class;
  }

  const TServiceRegistry& services_;
  const TActionNode& node_;
  TValidationEntries& entries_;
  bool othersBefore_;
  std::set<std::pair<std::u16string, std::u16string>> said_; // of the node: page and message
};

void LookAheadOf(const TActionNode& node, TValidationCollector& errors) {
  try {
    node.Action().LookAhead(errors);
  } catch (const std::exception& error) {
    errors.Add({}, MessageOf(error), nullptr);
  }
}

class TProjectValidation {
public:
  TProjectValidation(const TProject& project, const TExpressionEngine& expressions)
      : project_(project), expressions_(expressions) {}

  TValidationEntries Run() {
    if (project_.Actions().empty())
      entries_.push_back({u"Project", u"Actions", u"The project holds no actions. Add one."});
    CheckVariables();
    CheckNeeds();
    CheckNodes(project_.Actions());
    return std::move(entries_);
  }

private:
  void CheckVariables() {
    TVariableNames loopVariables;
    CollectLoopVariables(project_.Actions(), loopVariables);
    const TForesight foresight(expressions_, std::move(loopVariables));
    TVariableNames circles;
    for (const auto& variable : project_.Variables) {
      try {
        static_cast<void>(expressions_.VariableValue(nullptr, variable.Name));
      } catch (const ESelfReference& error) {
        // Each circle once, whoever leads into it.
        if (!circles.contains(*error.Circle().begin()))
          entries_.push_back({u"Project", u"Variables", error.Message()});
        circles.insert(error.Circle().begin(), error.Circle().end());
      } catch (const std::exception&) {
        // Where the variable is used it is looked at with what is known there.
      }
    }
  }

  void CheckNeeds() {
    try {
      static_cast<void>(TActionGraph(project_));
    } catch (const EKxException& error) {
      entries_.push_back({u"Project", u"Needs", error.Message()});
    }
  }

  // What only a run knows is left to the run; all the rest of the condition is looked at all the same.
  void CheckCondition(const TActionNode& node, TValidationCollector& errors) const {
    const std::u16string& text = node.Terms().Condition;
    if (text::Trim(text).empty()) return;
    CheckText(node, u"Condition", text, errors);
    try {
      const TCondition condition(text);
      static_cast<void>(condition.Holds(
          [&](std::u16string_view reference) { return expressions_.Expand(node.Action(), reference); }));
    } catch (const EKnownInRunOnly&) {
      return;
    } catch (const std::exception& error) {
      errors.Add(u"Condition", MessageOf(error), nullptr);
    }
  }

  static void CollectLoopVariables(const TNodes& nodes, TVariableNames& names) {
    for (const auto& node : nodes) {
      if (node->Iterator() == nullptr) continue;
      names.insert(node->Iterator()->GetLoopVariable());
      CollectLoopVariables(node->Children(), names);
    }
  }

  void CheckNodes(const TNodes& nodes) {
    for (const auto& node : nodes) {
      {
        const TForesight foresight(expressions_, {loopVariables_.begin(), loopVariables_.end()});
        CheckNode(*node);
      }
      if (node->Iterator() == nullptr) continue;
      loopVariables_.push_back(node->Iterator()->GetLoopVariable());
      CheckNodes(node->Children());
      loopVariables_.pop_back();
    }
  }

  void CheckNode(const TActionNode& node) {
    ValidateAction(project_.Services(), node, entries_);
    const std::size_t sameBefore = before_.count(node.Type().Class);
    TValidationCollector errors(project_.Services(), node, entries_, before_.size() > sameBefore);
    if (node.Iterator() == nullptr) before_.insert(node.Type().Class);
    CheckLoop(node, errors);
    CheckCondition(node, errors);
    for (const auto* property : node.Properties())
      CheckTexts(node, *property, errors);
    LookAheadOf(node, errors);
  }

  static void CheckLoop(const TActionNode& node, TValidationCollector& errors) {
    const bool isEmpty = node.Iterator() != nullptr && node.Children().empty();
    if (isEmpty) errors.Add(u"Actions", u"The loop holds no actions. Add one.", nullptr);
  }

  void CheckTexts(const TActionNode& node, const TKxPublishedProperty& property,
                  TValidationCollector& errors) const {
    if (property.Secret || !property.Stored) return; // what is not stored shows a part of what is
    const TKxPropertyValue value = property.Get(node.Action());
    if (const auto* text = std::get_if<std::u16string>(&value)) CheckText(node, property.Name, *text, errors);
    if (const auto* lines = std::get_if<text::TStringList>(&value))
      for (const auto& line : *lines)
        CheckText(node, property.Name, line, errors);
  }

  // Reference by reference: behind one whose value only a run has, others can still mean nothing.
  void CheckText(const TActionNode& node, std::u16string_view page, std::u16string_view text,
                 TValidationCollector& errors) const {
    for (const auto& part : SplitReferences(text)) {
      if (!part.Reference) continue;
      try {
        static_cast<void>(expressions_.Expand(node.Action(), part.Reference->Written));
      } catch (const EKnownInRunOnly&) {
        continue;
      } catch (const std::exception& error) {
        errors.Add(page, MessageOf(error), nullptr);
      }
    }
  }

  const TProject& project_;
  const TExpressionEngine& expressions_;
  TValidationEntries entries_;
  std::vector<std::u16string> loopVariables_; // of the loops around
  std::set<const TKxActionClass*> before_;    // of the actions, loops apart, that run earlier
};

using TFileVisitor = std::function<void(const TActionNode& node, const std::u16string& file)>;

// Several actions may change one file; it is named once for each.
void VisitFilesToChange(const TNodes& nodes, const TFileVisitor& visit) {
  for (const auto& node : nodes) {
    text::TStringList files;
    node->Action().GetFilesToChange(files);
    for (const auto& file : files)
      visit(*node, file);
    VisitFilesToChange(node->Children(), visit);
  }
}

} // namespace

void ValidateAction(const TServiceRegistry& services, const TActionNode& node, TValidationEntries& entries) {
  TValidationCollector collector(services, node, entries);
  const std::size_t before = entries.size();
  try {
    if (!node.Action().Validate(collector) && entries.size() == before)
      collector.Add({}, u"The settings are not valid.", nullptr);
  } catch (const std::exception& error) {
    collector.Add({}, MessageOf(error), nullptr);
  }
}

TValidationEntries ValidateProject(const TProject& project, const TExpressionEngine& expressions) {
  return TProjectValidation(project, expressions).Run();
}

std::vector<TValidationNote> CheckFilesToChange(const TProject& project) {
  std::vector<TValidationNote> notes;
  VisitFilesToChange(project.Actions(), [&notes](const TActionNode& node, const std::u16string& file) {
    if (const auto allowed = platform::CheckSaveFile(file); !allowed)
      notes.push_back({node.DisplayName(), allowed.Message()});
  });
  return notes;
}

text::TStringList FilesToChange(const TProject& project) {
  text::TStringList files;
  VisitFilesToChange(project.Actions(),
                     [&files](const TActionNode&, const std::u16string& file) { files.Add(file); });
  return files;
}

} // namespace kx
