#include "program/runner/IniText.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

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

bool TIniText::TLine::IsOfSection() const {
  return !Key.empty() || text::TrimLeft(Text).starts_with(u'[');
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
  *this = {};
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
    Note(lines_.insert(lines_.end(), std::move(line)));
    text.remove_prefix(next);
  }
}

std::u16string TIniText::Text() const {
  std::u16string text;
  for (const TLine& line : lines_)
    text.append(line.Text).append(line.End);
  return text;
}

const TIniText::TSection* TIniText::FindSection(std::u16string_view name) const {
  const auto found = sections_.find(name);
  return found == sections_.end() ? nullptr : &found->second;
}

TIniText::TLines::iterator* TIniText::Find(std::u16string_view section, std::u16string_view key) {
  const auto in = sections_.find(section);
  if (in == sections_.end()) return nullptr;
  const auto found = in->second.ByKey.find(key);
  return found == in->second.ByKey.end() ? nullptr : &found->second;
}

void TIniText::Note(TLines::iterator line) {
  if (!line->IsOfSection()) return;
  const auto [section, isNew] = sections_.try_emplace(line->Section);
  if (isNew) names_.push_back(line->Section);
  section->second.Last = line;
  if (line->Key.empty()) return;
  section->second.Values.push_back(line);
  section->second.ByKey.try_emplace(line->Key, line);
}

std::optional<std::u16string> TIniText::Get(std::u16string_view section, std::u16string_view key) const {
  const TSection* in = FindSection(section);
  if (in == nullptr) return std::nullopt;
  const auto found = in->ByKey.find(key);
  if (found == in->ByKey.end()) return std::nullopt;
  const std::u16string_view value = found->second->RawValue();
  return std::u16string(IsQuoted(value) ? value.substr(1, value.size() - 2) : value);
}

TIniText::TLines::iterator TIniText::Insert(TLines::iterator before, TLine line) {
  const std::u16string end = lines_.empty() || lines_.front().End.empty() ? u"\n" : lines_.front().End;
  if (before != lines_.begin())
    if (auto& above = std::prev(before)->End; above.empty()) above = end;
  line.End = end;
  return lines_.insert(before, std::move(line));
}

void TIniText::AddSection(std::u16string_view section) {
  const std::u16string name(section);
  if (!lines_.empty() && !text::Trim(lines_.back().Text).empty())
    Insert(lines_.end(), {{}, {}, lines_.back().Section, {}, 0});
  Note(Insert(lines_.end(), {u"[" + name + u"]", {}, name, {}, 0}));
}

void TIniText::Set(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
  RequireWritable(section, key, value);
  if (Get(section, key) == value) return;
  if (const auto* found = Find(section, key)) {
    TLine& line = **found;
    line.Text = line.Text.substr(0, line.ValueAt) + Written(value);
    return;
  }
  if (FindSection(section) == nullptr) AddSection(section);
  TLine line;
  line.Section = section;
  line.Key = key;
  line.ValueAt = key.size() + 1;
  line.Text = line.Key + u"=" + Written(value);
  Note(Insert(std::next(FindSection(section)->Last), std::move(line)));
}

void TIniText::Remove(std::u16string_view section, std::u16string_view key) {
  const auto* found = Find(section, key);
  if (found == nullptr) return;
  const TLines::iterator line = *found;
  TSection& in = sections_.find(section)->second;
  in.ByKey.erase(in.ByKey.find(key));
  std::erase(in.Values, line);
  for (const TLines::iterator other : in.Values)
    if (text::EqualsIgnoreCase(other->Key, key)) in.ByKey.try_emplace(other->Key, other);
  // Its first header stands before all of its values.
  while (in.Last == line || !in.Last->IsOfSection() || !text::EqualsIgnoreCase(in.Last->Section, section))
    --in.Last;
  lines_.erase(line);
}

std::vector<std::u16string> TIniText::Keys(std::u16string_view section) const {
  std::vector<std::u16string> keys;
  const TSection* in = FindSection(section);
  if (in == nullptr) return keys;
  for (const TLines::iterator line : in->Values)
    if (in->ByKey.find(line->Key)->second == line) keys.push_back(line->Key);
  return keys;
}

} // namespace kx
