// What the lines of a solution file say, taken apart one line at a time. Lines are UTF-8; all that gives them
// their structure is ASCII. Pure functions; blanks are all characters at or below U+0020.
#pragma once

#include "package/solution/VSNETSLN.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kx::slnsyntax {

constexpr bool IsBlank(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}
std::string_view Trim(std::string_view text);

bool IsFolderType(std::u16string_view typeId); // what has it groups projects, and has no file

// The version that the header names, wherever it stands in the line; nothing when it is no header.
std::optional<TVSDotNetVersion> ReadHeader(std::string_view line);

// The text before the first "=" and behind it, not trimmed; nothing when there is none.
struct TNameValue {
  std::string_view Name;
  std::string_view Value;
};
std::optional<TNameValue> SplitNameValue(std::string_view line);

// The first 38 characters (UTF-16 units) of a text, which are an identifier in braces in most of them, and
// the rest. Both views live until the next cut or as long as the text.
class TIdentifierCut {
public:
  // False when the identifier is known to be that of the cut before.
  bool Cut(std::string_view text);
  std::u16string_view Identifier() const { return identifier_; }
  std::string_view Rest() const { return rest_; }

private:
  static constexpr std::size_t Length = 38;
  std::array<char16_t, Length> ascii_{};
  std::string bytes_; // those of an identifier that is all ASCII, else empty
  std::u16string wide_;
  std::string decoded_;
  std::u16string_view identifier_;
  std::string_view rest_;
};

// The first items of a comma text, by the rules of text::TStringList. One object is used for many lines, so
// that it need not ask for memory each time.
class TCommaItems {
public:
  static constexpr std::size_t Most = 3;
  std::size_t Split(std::string_view text); // how many of the first three there are
  const std::string& operator[](std::size_t index) const { return items_[index]; }

private:
  std::array<std::string, Most> items_;
};

// What is behind the identifier in a line "{id}.Debug|Any CPU.ActiveCfg = Debug|Any CPU".
struct TProjectConfigLine {
  std::string_view Solution;
  std::string_view Project;
  bool Active = false; // ActiveCfg, else Build.0
};
// Finds what the expression \.(.+)\.(ActiveCfg|Build\.0) = (.+) finds in a text that is one line; it is done
// by hand because it is done for most lines of large solutions.
std::optional<TProjectConfigLine> ReadProjectConfig(std::string_view text);

} // namespace kx::slnsyntax
