// The text of a project file under the hands of an editor: actions, variables and property sets come and go
// in place, and everything else keeps its bytes.
#pragma once

#include "program/runner/ProjectXml.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TElementText;
class TTextEdits;

// Where an action stands: the positions from 0 of the loops around it and its own. {2, 0} is the first action
// inside the third.
using TActionPath = std::vector<std::size_t>;

// A text that has been read as a project before, so that its elements are those of one. Each operation makes
// a new text; names and places that are not there raise EKxException, and nothing has changed then.
class TProjectText {
public:
  explicit TProjectText(std::string bytes); // raises EKxParseError
  const std::string& Bytes() const { return bytes_; }

  // An action takes along what it holds, a comment behind it and the comments right above it. `to` is where
  // it shall stand among the others, as they stand before the move.
  void MoveAction(const TActionPath& from, const TActionPath& to);
  void CopyAction(const TActionPath& from, const TActionPath& to);
  void RemoveAction(const TActionPath& path); // comments above stay
  // Nothing: without the attribute.
  void SetActionAttribute(const TActionPath& path, std::u16string_view name,
                          std::optional<std::u16string_view> value);

  struct TNamedText {
    std::u16string Name;
    std::u16string Value;
  };
  struct TSetText {
    std::u16string Name;
    std::u16string Kind;
    std::vector<TNamedText> Values;
  };
  std::vector<TSetText> PropertySets() const; // with their values, in the order of the file

  // Makes the variable, or gives it another value; nothing removes it.
  void SetVariable(std::u16string_view name, std::optional<std::u16string_view> value);
  void AddPropertySet(std::u16string_view name, std::u16string_view kind);
  void RemovePropertySet(std::u16string_view name);
  void SetPropertySetValue(std::u16string_view set, std::u16string_view name,
                           std::optional<std::u16string_view> value);

private:
  const TProjectElement* ListAt(std::span<const std::size_t> path) const; // null: the holder has none
  const TProjectElement& HolderAt(std::span<const std::size_t> path) const;
  const TProjectElement& ActionAt(std::span<const std::size_t> path) const;
  bool StandsOnLines(const TProjectElement& element) const;
  TByteSpan Lines(const TProjectElement& element, bool withComments) const;
  std::string Indented(const TProjectElement& element, TByteSpan text, std::size_t from,
                       const std::string& to) const;
  void CollectLineStarts(const TProjectElement& element, std::vector<std::size_t>& starts) const;
  void InsertText(TElementText& layout, TTextEdits& edits, const TActionPath& at,
                  const TProjectElement& copied) const;
  void SetNamed(const TProjectElement& list, std::u16string_view element, std::u16string_view name,
                std::optional<std::u16string_view> value);
  const TProjectElement& RequireSet(std::u16string_view name) const;
  const TProjectElement& ListNamed(std::u16string_view name);
  void Apply(const TTextEdits& edits);

  std::string bytes_;
  TProjectElement root_;
};

} // namespace kx
