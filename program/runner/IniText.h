// The text of an INI file, kept as it is: comments, order, blanks and line ends survive every change.
//
// "[Section]" begins a section, "Key = Value" sets a value, a line that begins with ";" or "#" is a comment.
// Section names and keys are compared without regard to letter case. Where a key stands twice, the first one
// counts. A value in double quotes keeps the blanks at its ends.
#pragma once

#include "foundation/text/Text.h"

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

class TIniText {
public:
  TIniText() = default;
  TIniText(TIniText&&) = default; // the sections point into the lines, which keep their places
  TIniText& operator=(TIniText&&) = default;

  // Raises EKxParseError with the line and what is wrong with it; `fileName` is only named.
  void Parse(std::u16string_view text, std::u16string_view fileName);
  std::u16string Text() const; // exactly what was parsed, but for the changes made since

  std::optional<std::u16string> Get(std::u16string_view section, std::u16string_view key) const;
  // Changes the value where it stands, else adds it at the end of the section, else adds the section. Setting
  // the same value changes nothing. Raises EKxException for what one line cannot hold.
  void Set(std::u16string_view section, std::u16string_view key, std::u16string_view value);
  void Remove(std::u16string_view section, std::u16string_view key);

  // Each once, in the order of the file.
  const std::vector<std::u16string>& Sections() const { return names_; }
  std::vector<std::u16string> Keys(std::u16string_view section) const;

private:
  struct TLine {
    std::u16string Text; // without the line end
    std::u16string End;  // empty for a last line that has none
    std::u16string Section;
    std::u16string Key;      // empty unless the line sets a value
    std::size_t ValueAt = 0; // where the value begins in Text
    std::u16string_view RawValue() const;
    bool IsOfSection() const; // its header or one of its values
  };
  using TLines = std::list<TLine>;
  template <typename T>
  using TByName = std::unordered_map<std::u16string, T, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

  // What a section's headers hold together, so that neither a reader nor a writer goes through all lines.
  struct TSection {
    TLines::iterator Last;                // its last value or header
    std::vector<TLines::iterator> Values; // in the order of the file
    TByName<TLines::iterator> ByKey;      // the first of each key
  };

  static const char16_t* Read(TLine& line, std::u16string& section);
  const TSection* FindSection(std::u16string_view name) const;
  TLines::iterator* Find(std::u16string_view section, std::u16string_view key);
  void Note(TLines::iterator line); // in its section
  TLines::iterator Insert(TLines::iterator before, TLine line);
  void AddSection(std::u16string_view section);

  TLines lines_;
  TByName<TSection> sections_;
  std::vector<std::u16string> names_; // of the sections, in the order of the file
};

} // namespace kx
