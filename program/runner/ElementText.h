// Edits of the elements in a text, in the style of indentation and line ends that it has.
#pragma once

#include "program/runner/ProjectXml.h"
#include "program/runner/TextEdits.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TElementText {
public:
  // Both outlive this object; `edits` receives what it does.
  TElementText(std::string_view bytes, TTextEdits& edits);

  const std::string& LineEnd() const { return lineEnd_; }
  const std::string& Step() const { return step_; } // one level of indentation
  // The blanks in front of an element that begins its line; nothing for one that does not.
  std::string IndentOf(const TProjectElement& element) const;
  std::string ChildIndent(const TProjectElement& parent) const;
  std::size_t EndOfLineBehind(const TProjectElement& element) const; // a comment there belongs to the element

  void Replace(const TProjectElement& element, std::string text) {
    edits_.Replace(element.Whole, std::move(text));
  }
  void Remove(const TProjectElement& element);
  // Adds the elements behind `last` (null: at the beginning), each on a line of its own.
  void InsertInto(const TProjectElement& parent, const TProjectElement* last,
                  const std::vector<std::string>& elements);

  // A text as the content of an element. Quotation marks stay; line ends become those of the file.
  std::string Escaped(std::u16string_view text) const;

private:
  // Where the line begins whose blanks end at `at`; nothing where something else stands in front of it. Looks
  // no further than at blanks: a whole file may be one line.
  std::optional<std::size_t> BlankLineStart(std::size_t at) const;
  std::size_t BehindBlanks(std::size_t at) const;

  std::string_view bytes_;
  TTextEdits& edits_;
  std::string lineEnd_;
  std::string step_;
};

// An attribute as a start tag has it, with a blank in front. Tabs and line ends stay, which readers would
// take for blanks.
std::string AttributeText(std::u16string_view name, std::u16string_view value);

// From the blanks in front of the attribute to its closing quote; nothing when the tag lacks it.
std::optional<TByteSpan> FindAttribute(std::string_view bytes, const TProjectElement& element,
                                       std::string_view name);

// What markup without elements says, the content of an element or the value of an attribute: its text, and
// the bytes that each of its characters stands on.
struct TPlacedText {
  std::u16string Text;
  std::vector<TByteSpan> Places;
};
TPlacedText ReadPlacedText(std::string_view bytes, TByteSpan span);

// Whether the text is blanks and nothing else, none of them a line feed.
bool IsBlankText(std::string_view text);

} // namespace kx
