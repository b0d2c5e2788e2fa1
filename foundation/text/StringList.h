// An ordered list of text lines with the conventions of the host's string lists: lines of the form
// Name=Value, comma text, delimited text. Comparisons ignore letter case. A bad index gives empty text, never
// an error.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::text {

class TStringList {
public:
  TStringList() = default;
  TStringList(std::initializer_list<std::u16string_view> lines);

  std::size_t Count() const { return lines_.size(); }
  bool IsEmpty() const { return lines_.empty(); }
  const std::u16string& operator[](std::size_t index) const;
  auto begin() const { return lines_.begin(); }
  auto end() const { return lines_.end(); }
  bool operator==(const TStringList&) const = default; // letter case counts

  void Add(std::u16string_view line);
  void Set(std::size_t index, std::u16string_view line); // a bad index changes nothing
  void Delete(std::size_t index);
  void Clear();

  std::optional<std::size_t> IndexOf(std::u16string_view line) const;

  // Name and value: the text before and after the first "=". A line without one has neither.
  std::u16string_view NameOf(std::size_t index) const;
  std::u16string_view ValueOf(std::size_t index) const;
  std::optional<std::size_t> IndexOfName(std::u16string_view name) const;
  std::u16string_view Value(std::u16string_view name) const; // empty when the name is missing

  // All lines, each followed by CR LF. Reading takes CR LF, LF and CR.
  std::u16string GetText() const;
  void SetText(std::u16string_view text);

  // Comma text: items separated by commas and, outside double quotes, also by blanks; a quoted item loses its
  // quotes and a doubled quote inside it stands for one. Written with quotes where an item needs them.
  std::u16string GetCommaText() const;
  void SetCommaText(std::u16string_view text);

  // Delimited text: the same with `delimiter` in place of the comma; blanks separate here too.
  std::u16string GetDelimitedText(char16_t delimiter, char16_t quote = u'"') const;
  void SetDelimitedText(std::u16string_view text, char16_t delimiter, char16_t quote = u'"');

private:
  std::vector<std::u16string> lines_;
};

} // namespace kx::text
