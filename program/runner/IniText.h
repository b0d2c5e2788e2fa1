// The text of an INI file, kept as it is: comments, order, blanks and line ends survive every change.
//
// "[Section]" begins a section, "Key = Value" sets a value, a line that begins with ";" or "#" is a comment.
// Section names and keys are compared without regard to letter case. Where a key stands twice, the first one
// counts. A value in double quotes keeps the blanks at its ends.
#pragma once

#include "foundation/text/Text.h"

#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kx {

class TIniText {
public:
  TIniText() = default;
  TIniText(TIniText&&) = default; // lines and sections point to each other and keep their places
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
  const std::vector<std::u16string_view>& Sections() const { return names_; }
  std::vector<std::u16string> Keys(std::u16string_view section) const;

private:
  // What a section's headers hold together, so that neither a reader nor a writer goes through all lines.
  struct TSection;
  struct TLine {
    std::u16string Text;               // without the line end
    std::u16string_view End;           // empty for a last line that has none
    const TSection* Section = nullptr; // null before the first header
    std::u16string Key;                // empty unless the line sets a value
    std::size_t ValueAt = 0;           // where the value begins in Text
    std::u16string_view RawValue() const;
    bool IsOfSection() const; // its header or one of its values
  };
  using TLines = std::list<TLine>;
  // The first line of each key. A file of many sections has few keys in each: a table for each of them, or
  // one for all, would be several times as large as the file.
  using TIndex =
      std::unordered_map<std::u16string_view, TLines::iterator, text::IgnoreCaseHash, text::IgnoreCaseEqual>;
  struct TSection {
    TLines::iterator Last;                // its last value or header
    std::vector<TLines::iterator> Values; // in the order of the file
    std::unique_ptr<TIndex> Index;        // of a section that is too large to be gone through
    std::optional<TLines::iterator> Find(std::u16string_view key) const;
    void Add(TLines::iterator line);
    void Remove(TLines::iterator line);
  };

  const char16_t* Read(TLine& line, TSection*& section);
  TSection* FindSection(std::u16string_view name);
  TSection* AddSection(std::u16string_view name);
  std::optional<TLines::iterator> Find(std::u16string_view section, std::u16string_view key) const;
  static void Note(TLines::iterator line, TSection& section);
  TLines::iterator Insert(TLines::iterator before, TLine line);
  TSection& WriteHeader(std::u16string_view section);

  TLines lines_;
  std::unordered_map<std::u16string, TSection, text::IgnoreCaseHash, text::IgnoreCaseEqual> sections_;
  std::vector<std::u16string_view> names_; // of the sections, in the order of the file
};

} // namespace kx
