#include "runner/IniText.h"

#include "host/Exceptions.h"
#include "runner/Messages.h"
#include "text/Text.h"

#include <algorithm>

namespace kx {

namespace {

bool IsQuoted(std::u16string_view value) {
  return value.size() >= 2 && value.front() == u'"' && value.back() == u'"';
}

// As the value stands in its line: in quotes where reading would take something away.
std::u16string Written(std::u16string_view value) {
  const bool needsQuotes = IsQuoted(value) || text::Trim(value).size() != value.size();
  return needsQuotes ? Quoted(value) : std::u16string(value);
}

void RequireWritable(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
  const auto refuse = [](std::u16string_view what, std::u16string_view text) {
    throw EKxException(std::u16string(what) + Quoted(text) + u" cannot be kept in the options store.");
  };
  const auto holdsLineBreak = [](std::u16string_view text) {
    return text.find_first_of(u"\r\n") != std::u16string_view::npos;
  };
  const auto hasBlankEnds = [](std::u16string_view text) { return text::Trim(text).size() != text.size(); };
  if (section.empty() || hasBlankEnds(section) || section.find(u']') != section.npos ||
      holdsLineBreak(section))
    refuse(u"The section name ", section);
  if (key.empty() || hasBlankEnds(key) || key.find(u'=') != key.npos || holdsLineBreak(key) ||
      std::u16string_view(u"[;#").find(key.front()) != std::u16string_view::npos)
    refuse(u"The key ", key);
  if (holdsLineBreak(value)) refuse(u"A line break in the value ", value);
}

} // namespace

std::u16string_view TIniText::TLine::RawValue() const {
  return text::Trim(std::u16string_view(Text).substr(ValueAt));
}

// What is wrong with the line, or null.
const char16_t* TIniText::Read(TLine& line, std::u16string& section) {
  const std::u16string_view content = text::Trim(line.Text);
  if (content.empty() || content.front() == u';' || content.front() == u'#') {
    line.Section = section;
    return nullptr;
  }
  if (content.front() == u'[') {
    if (content.back() != u']') return u"The section's name has no closing bracket.";
    section = text::Trim(content.substr(1, content.size() - 2));
    line.Section = section;
    return section.empty() ? u"The section has no name." : nullptr;
  }
  const std::size_t equals = line.Text.find(u'=');
  if (equals == std::u16string::npos) return u"Expected [Section], Key=Value or a comment.";
  if (section.empty()) return u"The value stands before the first [Section].";
  line.Section = section;
  line.Key = text::Trim(std::u16string_view(line.Text).substr(0, equals));
  const std::size_t value = line.Text.find_first_not_of(u" \t", equals + 1);
  line.ValueAt = value == std::u16string::npos ? line.Text.size() : value;
  return line.Key.empty() ? u"The value has no key." : nullptr;
}

void TIniText::Parse(std::u16string_view text, std::u16string_view fileName) {
  lines_.clear();
  std::u16string section;
  while (!text.empty()) {
    const std::size_t feed = text.find(u'\n');
    const std::size_t next = feed == std::u16string_view::npos ? text.size() : feed + 1;
    const std::size_t end =
        feed == std::u16string_view::npos ? next : feed - (feed > 0 && text[feed - 1] == u'\r' ? 1 : 0);
    TLine line;
    line.Text = text.substr(0, end);
    line.End = text.substr(end, next - end);
    if (const char16_t* wrong = Read(line, section))
      RefuseFile(fileName, static_cast<int>(lines_.size()) + 1, wrong);
    lines_.push_back(std::move(line));
    text.remove_prefix(next);
  }
}

std::u16string TIniText::Text() const {
  std::u16string text;
  for (const TLine& line : lines_)
    text.append(line.Text).append(line.End);
  return text;
}

std::size_t TIniText::Find(std::u16string_view section, std::u16string_view key) const {
  const auto found = std::ranges::find_if(lines_, [&](const TLine& line) {
    return !line.Key.empty() && text::EqualsIgnoreCase(line.Section, section) &&
           text::EqualsIgnoreCase(line.Key, key);
  });
  return static_cast<std::size_t>(found - lines_.begin());
}

std::optional<std::u16string> TIniText::Get(std::u16string_view section, std::u16string_view key) const {
  const std::size_t at = Find(section, key);
  if (at == lines_.size()) return std::nullopt;
  const std::u16string_view value = lines_[at].RawValue();
  return std::u16string(IsQuoted(value) ? value.substr(1, value.size() - 2) : value);
}

std::size_t TIniText::EndOfSection(std::u16string_view section) const {
  std::size_t end = 0;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const bool counts = !lines_[i].Key.empty() || text::Trim(lines_[i].Text).starts_with(u'[');
    if (counts && text::EqualsIgnoreCase(lines_[i].Section, section)) end = i + 1;
  }
  return end;
}

void TIniText::Insert(std::size_t at, TLine line) {
  const std::u16string end = lines_.empty() || lines_.front().End.empty() ? u"\n" : lines_.front().End;
  if (at > 0 && lines_[at - 1].End.empty()) lines_[at - 1].End = end;
  line.End = end;
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), std::move(line));
}

void TIniText::AddSection(std::u16string_view section) {
  const std::u16string name(section);
  if (!lines_.empty() && !text::Trim(lines_.back().Text).empty())
    Insert(lines_.size(), {{}, {}, lines_.back().Section, {}, 0});
  Insert(lines_.size(), {u"[" + name + u"]", {}, name, {}, 0});
}

void TIniText::Set(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
  RequireWritable(section, key, value);
  if (Get(section, key) == value) return;
  if (const std::size_t at = Find(section, key); at != lines_.size()) {
    TLine& line = lines_[at];
    line.Text = line.Text.substr(0, line.ValueAt) + Written(value);
    return;
  }
  if (EndOfSection(section) == 0) AddSection(section);
  TLine line;
  line.Section = section;
  line.Key = key;
  line.ValueAt = key.size() + 1;
  line.Text = line.Key + u"=" + Written(value);
  Insert(EndOfSection(section), std::move(line));
}

void TIniText::Remove(std::u16string_view section, std::u16string_view key) {
  if (const std::size_t at = Find(section, key); at != lines_.size())
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(at));
}

std::vector<std::u16string> TIniText::Sections() const {
  std::vector<std::u16string> names;
  for (const TLine& line : lines_) {
    const auto same = [&line](std::u16string_view name) {
      return text::EqualsIgnoreCase(name, line.Section);
    };
    if (!line.Section.empty() && std::ranges::none_of(names, same)) names.push_back(line.Section);
  }
  return names;
}

std::vector<std::u16string> TIniText::Keys(std::u16string_view section) const {
  std::vector<std::u16string> keys;
  for (const TLine& line : lines_) {
    const auto same = [&line](std::u16string_view key) { return text::EqualsIgnoreCase(key, line.Key); };
    if (line.Key.empty() || !text::EqualsIgnoreCase(line.Section, section)) continue;
    if (std::ranges::none_of(keys, same)) keys.push_back(line.Key);
  }
  return keys;
}

} // namespace kx
