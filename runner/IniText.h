// The text of an INI file, kept as it is: comments, order, blanks and line ends survive every change.
//
// "[Section]" begins a section, "Key = Value" sets a value, a line that begins with ";" or "#" is a comment.
// Section names and keys are compared without regard to letter case. Where a key stands twice, the first one
// counts. A value in double quotes keeps the blanks at its ends.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TIniText {
public:
  // Raises EKxParseError with the line and what is wrong with it; `fileName` is only named.
  void Parse(std::u16string_view text, std::u16string_view fileName);
  std::u16string Text() const; // exactly what was parsed, but for the changes made since

  std::optional<std::u16string> Get(std::u16string_view section, std::u16string_view key) const;
  // Changes the value where it stands, else adds it at the end of the section, else adds the section. Setting
  // the same value changes nothing. Raises EKxException for what one line cannot hold.
  void Set(std::u16string_view section, std::u16string_view key, std::u16string_view value);
  void Remove(std::u16string_view section, std::u16string_view key);

  std::vector<std::u16string> Sections() const; // each once, in the order of the file
  std::vector<std::u16string> Keys(std::u16string_view section) const;

private:
  struct TLine {
    std::u16string Text; // without the line end
    std::u16string End;  // empty for a last line that has none
    std::u16string Section;
    std::u16string Key;      // empty unless the line sets a value
    std::size_t ValueAt = 0; // where the value begins in Text
    std::u16string_view RawValue() const;
  };
  static const char16_t* Read(TLine& line, std::u16string& section);
  std::size_t Find(std::u16string_view section, std::u16string_view key) const; // lines_.size(): not there
  std::size_t EndOfSection(std::u16string_view section) const; // behind its last value; 0: no such section
  void Insert(std::size_t at, TLine line);
  void AddSection(std::u16string_view section);

  std::vector<TLine> lines_;
};

} // namespace kx
