#include "foundation/text/StringList.h"

#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::text {

namespace {

// Items of delimited text. The rules are those that saved lists have always been read by: a delimiter or a
// blank ends an item, blanks around a delimiter vanish, and what follows a closing quote begins a new item.
class ItemReader {
public:
  ItemReader(std::u16string_view text, char16_t delimiter, char16_t quote)
      : rest_(TrimLeft(text)), delimiter_(delimiter), quote_(quote) {}

  std::vector<std::u16string> Run() {
    while (!rest_.empty()) {
      items_.push_back(rest_.front() == quote_ ? ReadQuoted() : ReadPlain());
      rest_ = TrimLeft(rest_);
      if (rest_.starts_with(delimiter_)) SkipDelimiter();
    }
    return std::move(items_);
  }

private:
  std::u16string ReadPlain() {
    const auto ends = [this](char16_t c) { return IsBlank(c) || c == delimiter_; };
    const auto end = std::ranges::find_if(rest_, ends);
    std::u16string item(rest_.begin(), end);
    rest_.remove_prefix(item.size());
    return item;
  }

  std::u16string ReadQuoted() {
    std::u16string item;
    rest_.remove_prefix(1);
    for (;;) {
      const std::size_t end = std::min(rest_.find(quote_), rest_.size());
      item.append(rest_.substr(0, end));
      rest_.remove_prefix(std::min(end + 1, rest_.size()));
      if (!rest_.starts_with(quote_)) return item;
      item.push_back(quote_);
      rest_.remove_prefix(1);
    }
  }

  void SkipDelimiter() {
    rest_.remove_prefix(1);
    if (rest_.empty()) items_.emplace_back();
    rest_ = TrimLeft(rest_);
  }

  std::u16string_view rest_;
  char16_t delimiter_;
  char16_t quote_;
  std::vector<std::u16string> items_;
};

void AppendItem(std::u16string& text, std::u16string_view item, char16_t delimiter, char16_t quote) {
  const auto special = [&](char16_t c) { return IsBlank(c) || c == delimiter || c == quote; };
  if (std::ranges::none_of(item, special)) {
    text.append(item);
    return;
  }
  const std::u16string one(1, quote);
  text.append(one).append(ReplaceAll(item, one, one + one)).append(one);
}

} // namespace

TStringList::TStringList(std::initializer_list<std::u16string_view> lines)
    : lines_(lines.begin(), lines.end()) {}

const std::u16string& TStringList::operator[](std::size_t index) const {
  static const std::u16string none;
  return index < lines_.size() ? lines_[index] : none;
}

void TStringList::Add(std::u16string_view line) {
  lines_.emplace_back(line);
}

void TStringList::Set(std::size_t index, std::u16string_view line) {
  if (index < lines_.size()) lines_[index] = line;
}

void TStringList::Delete(std::size_t index) {
  if (index < lines_.size()) lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(index));
}

void TStringList::Clear() {
  lines_.clear();
}

std::optional<std::size_t> TStringList::IndexOf(std::u16string_view line) const {
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (EqualsIgnoreCase(lines_[i], line)) return i;
  }
  return std::nullopt;
}

std::u16string_view TStringList::NameOf(std::size_t index) const {
  const std::u16string_view line = (*this)[index];
  const std::size_t equals = line.find(u'=');
  return equals == std::u16string_view::npos ? std::u16string_view() : line.substr(0, equals);
}

std::u16string_view TStringList::ValueOf(std::size_t index) const {
  const std::u16string_view line = (*this)[index];
  const std::size_t equals = line.find(u'=');
  return equals == std::u16string_view::npos ? std::u16string_view() : line.substr(equals + 1);
}

std::optional<std::size_t> TStringList::IndexOfName(std::u16string_view name) const {
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const std::u16string_view line = lines_[i];
    const bool named = line.size() > name.size() && line[name.size()] == u'=';
    if (named && NameOf(i).size() == name.size() && StartsWithIgnoreCase(line, name)) return i;
  }
  return std::nullopt;
}

std::u16string_view TStringList::Value(std::u16string_view name) const {
  const auto index = IndexOfName(name);
  return index ? ValueOf(*index) : std::u16string_view();
}

std::u16string TStringList::GetText() const {
  std::u16string text;
  for (const std::u16string& line : lines_)
    text.append(line).append(u"\r\n");
  return text;
}

void TStringList::SetText(std::u16string_view text) {
  const auto lines = SplitLines(text);
  lines_ = {lines.begin(), lines.end()};
}

std::u16string TStringList::GetCommaText() const {
  return GetDelimitedText(u',');
}

void TStringList::SetCommaText(std::u16string_view text) {
  SetDelimitedText(text, u',');
}

std::u16string TStringList::GetDelimitedText(char16_t delimiter, char16_t quote) const {
  // A single empty item would otherwise look like an empty list.
  if (lines_.size() == 1 && lines_.front().empty()) return std::u16string(2, quote);
  std::u16string text;
  for (const std::u16string& line : lines_) {
    if (&line != lines_.data()) text.push_back(delimiter);
    AppendItem(text, line, delimiter, quote);
  }
  return text;
}

void TStringList::SetDelimitedText(std::u16string_view text, char16_t delimiter, char16_t quote) {
  lines_ = ItemReader(text, delimiter, quote).Run();
}

} // namespace kx::text
