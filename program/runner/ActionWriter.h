// Writes actions into the text of a project file, in the style that the text has already.
#pragma once

#include "program/runner/ElementText.h"
#include "program/runner/Project.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// The texts of an action's properties. Values that are computed or that must not be written are left out.
class TPropertyTexts {
public:
  // Those of an untouched action of the node's type.
  explicit TPropertyTexts(const TActionNode& node);
  // Those of the node; what it has in common with `defaults` is kept there alone.
  TPropertyTexts(const TActionNode& node, const TPropertyTexts& defaults);

  const std::u16string* Find(const TKxPublishedProperty& property) const; // null for one that is left out
  void Put(const TKxPublishedProperty& property, std::u16string text) {
    texts_.insert_or_assign(&property, std::move(text));
  }

private:
  const TPropertyTexts* defaults_ = nullptr;
  std::map<const TKxPublishedProperty*, std::u16string> texts_;
};

// One action as it was read: its element, and the texts that its properties had then. The defaults outlive
// it.
struct TActionSource {
  TActionSource(const TActionNode& node, const TProjectElement& element, const TPropertyTexts& defaults)
      : Node(&node), Element(&element), Baseline(node, defaults) {}

  const TActionNode* Node;
  const TProjectElement* Element;
  TPropertyTexts Baseline;
  std::set<const TKxPublishedProperty*> Edited =
      {}; // by the user: lists, and texts without their references, count too
  std::set<const TKxPublishedProperty*> Untouched = {}; // what the file says of them stays, whatever they are
};

// What Update would write: stored properties, and others that the file states.
std::vector<const TKxPublishedProperty*> ChangedProperties(const TActionSource& source);

class TActionWriter {
public:
  // Both outlive the writer; `edits` receives what it writes.
  TActionWriter(std::string_view bytes, TTextEdits& edits);

  // Writes what has changed since, and the children that have no element yet (`added`). What the file did not
  // state it states only when it differs now.
  void Update(const TActionSource& source, const std::vector<const TActionNode*>& added);
  // Appends actions to the element that holds them, or makes one inside `parent`. They state what differs
  // from the defaults of their class.
  void Append(const TProjectElement& parent, const std::vector<const TActionNode*>& added);

private:
  std::string Property(const TActionNode& node, const TKxPublishedProperty& property,
                       const std::string& indent) const;
  std::string ListLines(const text::TStringList& list, const std::string& indent) const;
  std::string Action(const TActionNode& node, const std::string& indent) const;
  std::string Actions(const std::vector<const TActionNode*>& nodes, const std::string& indent) const;

  TElementText text_;
};

} // namespace kx
