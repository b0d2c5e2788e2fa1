// The text of a project file under the hands of an editor: actions, variables and property sets come and go
// in place, and everything else keeps its bytes.
#pragma once

#include "program/runner/ProjectXml.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TElementText;
class TTextEdits;

// Where an action stands: the positions from 0 of the loops around it and its own. {2, 0} is the first action
// inside the third. Actions of groups count among those outside: groups have no place of their own.
using TActionPath = std::vector<std::size_t>;
// The same of a row of the text, which is an action or a group: a group is around its actions as a loop is.
using TRowPath = std::vector<std::size_t>;

// A text that has been read as a project before, so that its elements are those of one. Each operation makes
// a new text; names and places that are not there raise EKxException, and nothing has changed then.
class TProjectText {
public:
  explicit TProjectText(std::string bytes); // raises EKxParseError
  const std::string& Bytes() const { return bytes_; }

  TRowPath RowOfAction(const TActionPath& path) const;
  TRowPath RowOfGroup(std::size_t group) const;                   // by its position among the groups
  std::optional<TActionPath> ActionAt(const TRowPath& row) const; // nothing: it is a group
  std::size_t RowsIn(const TRowPath& row) const;                  // of a loop or a group; {}: of the project

  // A row takes along what it holds, a comment behind it and the comments right above it. `to` is where it
  // shall stand among the others, as they stand before the move.
  void MoveRow(const TRowPath& from, const TRowPath& to);
  void CopyRow(const TRowPath& from, const TRowPath& to);
  void RemoveRow(const TRowPath& row); // comments above stay
  // Nothing: without the attribute.
  void SetAttribute(const TRowPath& row, std::u16string_view name, std::optional<std::u16string_view> value);
  // Gives the row another name; what needed it or called it by the old one does so by the new one, unless
  // something else has the old name too. Empty: none, which a group cannot have.
  void Rename(const TRowPath& row, std::u16string_view name);

  void AddGroup(std::u16string_view name, const TRowPath& at); // without actions
  void DissolveGroup(const TRowPath& row);                     // its actions stay in its place

  struct TGroupText {
    std::u16string Name;
    std::optional<std::u16string> Needs; // as written; nothing: without it
    std::size_t Row;                     // in the project
    std::size_t Actions;                 // how many it holds
  };
  std::vector<TGroupText> Groups() const; // in the order of the file

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
  // Everything that refers to the variable, and loops that set it, follow; gives their number. Raises
  // EKxException for a name that something in the project stands for already.
  std::size_t RenameVariable(std::u16string_view name, std::u16string_view to);
  void AddPropertySet(std::u16string_view name, std::u16string_view kind);
  void RemovePropertySet(std::u16string_view name);
  void SetPropertySetValue(std::u16string_view set, std::u16string_view name,
                           std::optional<std::u16string_view> value);

private:
  const TProjectElement& HolderAt(std::span<const std::size_t> row) const; // {}: the project
  const TProjectElement& RowAt(std::span<const std::size_t> row) const;
  bool StandsOnLines(const TProjectElement& element) const;
  TByteSpan Lines(const TProjectElement& element, bool withComments) const;
  std::string Indented(const TProjectElement& element, TByteSpan text, std::size_t from,
                       const std::string& to) const;
  void CollectLineStarts(const TProjectElement& element, std::vector<std::size_t>& starts) const;
  // Puts in front of the row at this place, or at the end of the list, what `text` makes for an indentation.
  void InsertAt(TElementText& layout, TTextEdits& edits, const TRowPath& at,
                const std::function<std::string(const std::string&)>& text) const;
  void InsertCopy(TElementText& layout, TTextEdits& edits, const TRowPath& at,
                  const TProjectElement& copied) const;
  bool IsNeedable(std::u16string_view name) const;
  void RenameNeeds(std::u16string_view was, std::u16string_view name);
  void RenameReferences(std::u16string_view was, std::u16string_view name);
  [[noreturn]] static void RefuseMissing(std::u16string_view kind, std::u16string_view name);
  void SetNamed(const TProjectElement& list, std::u16string_view element, std::u16string_view name,
                std::optional<std::u16string_view> value);
  const TProjectElement& RequireSet(std::u16string_view name) const;
  const TProjectElement& ListNamed(std::u16string_view name);
  void Apply(const TTextEdits& edits);

  std::string bytes_;
  TProjectElement root_;
};

} // namespace kx
