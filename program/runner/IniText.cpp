#include "program/runner/IniText.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::size_t MostGoneThrough = 16; // values of a section

bool IsQuoted(std::u16string_view value) {
  return value.size() >= 2 && value.front() == u'"' && value.back() == u'"';
}

// As the value stands in its line: in quotes where reading would take something away.
std::u16string Written(std::u16string_view value) {
  const bool needsQuotes = IsQuoted(value) || text::Trim(value).size() != value.size();
  return needsQuotes ? Quoted(value) : std::u16string(value);
}

std::u16string_view LineEnd(std::size_t length) {
  return std::u16string_view(u"\r\n").substr(2 - length);
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

std::optional<TIniText::TLines::iterator> TIniText::TSection::Find(std::u16string_view key) const {
  if (Index != nullptr) {
    const auto found = Index->find(key);
    return found == Index->end() ? std::nullopt : std::optional(found->second);
  }
  const auto found = std::ranges::find_if(
      Values, [key](const TLines::iterator line) { return text::EqualsIgnoreCase(line->Key, key); });
  return found == Values.end() ? std::nullopt : std::optional(*found);
}

void TIniText::TSection::Add(TLines::iterator line) {
  Values.push_back(line);
  if (Index != nullptr) {
    Index->try_emplace(line->Key, line);
  } else if (Values.size() > MostGoneThrough) {
    Index = std::make_unique<TIndex>();
    for (const TLines::iterator value : Values)
      Index->try_emplace(value->Key, value);
  }
}

void TIniText::TSection::Remove(TLines::iterator line) {
  std::erase(Values, line);
  if (Index == nullptr) return;
  Index->erase(line->Key);
  for (const TLines::iterator other : Values)
    if (text::EqualsIgnoreCase(other->Key, line->Key)) Index->try_emplace(other->Key, other);
}

// What is wrong with the line, or null.
const char16_t* TIniText::Read(TLine& line, TSection*& section) {
  const std::u16string_view content = text::Trim(line.Text);
  if (content.empty() || content.front() == u';' || content.front() == u'#') {
    line.Section = section;
    return nullptr;
  }
  if (content.front() == u'[') {
    if (content.back() != u']') return u"The section's name has no closing bracket.";
    const std::u16string_view name = text::Trim(content.substr(1, content.size() - 2));
    if (name.empty()) return u"The section has no name.";
    line.Section = section = AddSection(name);
    return nullptr;
  }
  const std::size_t equals = line.Text.find(u'=');
  if (equals == std::u16string::npos) return u"Expected [Section], Key=Value or a comment.";
  if (section == nullptr) return u"The value stands before the first [Section].";
  line.Section = section;
  line.Key = text::Trim(std::u16string_view(line.Text).substr(0, equals));
  const std::size_t value = line.Text.find_first_not_of(u" \t", equals + 1);
  line.ValueAt = value == std::u16string::npos ? line.Text.size() : value;
  return line.Key.empty() ? u"The value has no key." : nullptr;
}

void TIniText::Parse(std::u16string_view text, std::u16string_view fileName) {
  *this = {};
  sections_.reserve(static_cast<std::size_t>(std::ranges::count(text, u'[')));
  TSection* section = nullptr;
  while (!text.empty()) {
    const std::size_t feed = text.find(u'\n');
    const std::size_t next = feed == std::u16string_view::npos ? text.size() : feed + 1;
    const std::size_t end =
        feed == std::u16string_view::npos ? next : feed - (feed > 0 && text[feed - 1] == u'\r' ? 1 : 0);
    TLine line;
    line.Text = text.substr(0, end);
    line.End = LineEnd(next - end);
    if (const char16_t* wrong = Read(line, section))
      RefuseFile(fileName, static_cast<int>(lines_.size()) + 1, wrong);
    const auto added = lines_.insert(lines_.end(), std::move(line));
    if (section != nullptr) Note(added, *section);
    text.remove_prefix(next);
  }
}

std::u16string TIniText::Text() const {
  std::u16string text;
  for (const TLine& line : lines_)
    text.append(line.Text).append(line.End);
  return text;
}

TIniText::TSection* TIniText::FindSection(std::u16string_view name) {
  const auto found = sections_.find(name);
  return found == sections_.end() ? nullptr : &found->second;
}

// Or the one that it has been in.
TIniText::TSection* TIniText::AddSection(std::u16string_view name) {
  if (TSection* known = FindSection(name)) return known;
  const auto added = sections_.try_emplace(std::u16string(name)).first;
  names_.push_back(added->first);
  return &added->second;
}

std::optional<TIniText::TLines::iterator> TIniText::Find(std::u16string_view section,
                                                         std::u16string_view key) const {
  const auto in = sections_.find(section);
  return in == sections_.end() ? std::nullopt : in->second.Find(key);
}

void TIniText::Note(TLines::iterator line, TSection& section) {
  if (!line->IsOfSection()) return;
  section.Last = line;
  if (!line->Key.empty()) section.Add(line);
}

std::optional<std::u16string> TIniText::Get(std::u16string_view section, std::u16string_view key) const {
  const auto found = Find(section, key);
  if (!found) return std::nullopt;
  const std::u16string_view value = (*found)->RawValue();
  return std::u16string(IsQuoted(value) ? value.substr(1, value.size() - 2) : value);
}

TIniText::TLines::iterator TIniText::Insert(TLines::iterator before, TLine line) {
  const std::u16string_view end =
      lines_.empty() || lines_.front().End.empty() ? LineEnd(1) : lines_.front().End;
  if (before != lines_.begin())
    if (auto& above = std::prev(before)->End; above.empty()) above = end;
  line.End = end;
  return lines_.insert(before, std::move(line));
}

TIniText::TSection& TIniText::WriteHeader(std::u16string_view section) {
  if (!lines_.empty() && !text::Trim(lines_.back().Text).empty())
    Insert(lines_.end(), {{}, {}, lines_.back().Section, {}, 0});
  TSection& added = *AddSection(section);
  Note(Insert(lines_.end(), {u"[" + std::u16string(section) + u"]", {}, &added, {}, 0}), added);
  return added;
}

void TIniText::Set(std::u16string_view section, std::u16string_view key, std::u16string_view value) {
  RequireWritable(section, key, value);
  if (Get(section, key) == value) return;
  if (const auto found = Find(section, key)) {
    TLine& line = **found;
    line.Text = line.Text.substr(0, line.ValueAt) + Written(value);
    return;
  }
  TSection* known = FindSection(section);
  TSection& in = known != nullptr ? *known : WriteHeader(section);
  TLine line;
  line.Section = &in;
  line.Key = key;
  line.ValueAt = key.size() + 1;
  line.Text = line.Key + u"=" + Written(value);
  Note(Insert(std::next(in.Last), std::move(line)), in);
}

void TIniText::Remove(std::u16string_view section, std::u16string_view key) {
  const auto found = Find(section, key);
  if (!found) return;
  const TLines::iterator line = *found;
  TSection& in = *FindSection(section);
  in.Remove(line);
  // Its first header stands before all of its values.
  while (in.Last == line || !in.Last->IsOfSection() || in.Last->Section != &in)
    --in.Last;
  lines_.erase(line);
}

std::vector<std::u16string> TIniText::Keys(std::u16string_view section) const {
  std::vector<std::u16string> keys;
  const auto in = sections_.find(section);
  if (in == sections_.end()) return keys;
  for (const TLines::iterator line : in->second.Values)
    if (in->second.Find(line->Key) == line) keys.push_back(line->Key);
  return keys;
}

} // namespace kx
