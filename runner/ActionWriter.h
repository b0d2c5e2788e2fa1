// Writes actions into the text of a project file, in the style that the text has already.
#pragma once

#include "runner/Project.h"
#include "runner/ProjectXml.h"
#include "runner/TextEdits.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// One action as it was read: its element, and the texts that its properties had then. Lists are left out,
// since reading one may normalise it; so are values that are computed or that must not be written.
struct TActionSource {
  TActionSource(const TActionNode& node, const TProjectElement& element);

  const TActionNode* Node;
  const TProjectElement* Element;
  std::map<const TKxPublishedProperty*, std::u16string> Baseline;
};

class TActionWriter {
public:
  // Both outlive the writer; `edits` receives what it writes.
  TActionWriter(std::string_view bytes, TTextEdits& edits);

  // Writes what has changed since, and the children that have no element yet (`added`).
  void Update(const TActionSource& source, const std::vector<const TActionNode*>& added);
  // Appends actions to the element that holds them, or makes one inside `parent`.
  void Append(const TProjectElement& parent, const std::vector<const TActionNode*>& added);

private:
  std::string Property(const TActionNode& node, const TKxPublishedProperty& property,
                       const std::string& indent) const;
  std::string ListLines(const text::TStringList& list, const std::string& indent) const;
  std::string Escaped(std::u16string_view text) const;
  std::string Action(const TActionNode& node, const std::string& indent) const;
  std::string Actions(const std::vector<const TActionNode*>& nodes, const std::string& indent) const;

  std::string IndentOf(const TProjectElement& element) const;
  std::string ChildIndent(const TProjectElement& parent) const;
  void Remove(const TProjectElement& element);
  // Adds the elements behind `last` (null: at the beginning), each on a line of its own.
  void InsertInto(const TProjectElement& parent, const TProjectElement* last,
                  const std::vector<std::string>& elements);
  std::size_t EndOfLineBehind(const TProjectElement& element) const;

  std::string_view bytes_;
  TTextEdits& edits_;
  std::string lineEnd_;
  std::string step_; // one level of indentation
};

} // namespace kx
