#include "program/runner/ElementText.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

namespace kx {

namespace {

constexpr auto npos = std::string_view::npos;

std::string LineEndOf(std::string_view bytes) {
  const std::size_t feed = bytes.find('\n');
  return feed != npos && feed > 0 && bytes[feed - 1] == '\r' ? "\r\n" : "\n";
}

} // namespace

bool IsBlankText(std::string_view text) {
  return text.find_first_not_of(" \t\r") == npos;
}

std::string AttributeText(std::u16string_view name, std::u16string_view value) {
  std::u16string escaped = XmlEscape(value);
  for (const auto& [blank, reference] : {std::pair(u"\t", u"&#9;"), {u"\n", u"&#10;"}, {u"\r", u"&#13;"}})
    escaped = text::ReplaceAll(escaped, blank, reference);
  return " " + text::ToUtf8(name) + "=\"" + text::ToUtf8(escaped) + "\"";
}

std::optional<TByteSpan> FindAttribute(std::string_view bytes, const TProjectElement& element,
                                       std::string_view name) {
  std::size_t at = bytes.find_first_of(" \t\r\n/>", element.Whole.Begin);
  for (;;) {
    const std::size_t blanks = at;
    at = bytes.find_first_not_of(" \t\r\n", at);
    if (bytes[at] == '/' || bytes[at] == '>') return std::nullopt;
    const std::size_t end = bytes.find_first_of(" \t\r\n=", at);
    const std::size_t quote = bytes.find_first_of("\"'", end);
    const std::size_t close = bytes.find(bytes[quote], quote + 1) + 1;
    if (bytes.substr(at, end - at) == name) return TByteSpan{blanks, close};
    at = close;
  }
}

namespace {

// Reads the pieces of markup that a parser has accepted before.
class TPlacedReader {
public:
  TPlacedReader(std::string_view bytes, TByteSpan span)
      : bytes_(bytes.substr(0, span.End)), at_(span.Begin) {}

  TPlacedText Read() {
    while (at_ < bytes_.size())
      Next();
    return std::move(placed_);
  }

private:
  void Next() {
    const std::string_view rest = bytes_.substr(at_);
    if (rest.starts_with("<![CDATA[")) return Literal(at_ + 9, bytes_.find("]]>", at_));
    if (rest.starts_with("<!--")) return Skip("-->");
    if (rest.starts_with("<?")) return Skip("?>");
    if (rest.front() != '&') return Take(CharacterAt(at_), CharacterAt(at_));
    const std::string_view reference = rest.substr(0, rest.find(';') + 1);
    Take(reference, Meant(reference));
  }

  void Literal(std::size_t begin, std::size_t end) {
    for (at_ = begin; at_ < end;)
      Take(CharacterAt(at_), CharacterAt(at_));
    at_ = end + 3;
  }

  void Skip(std::string_view end) { at_ = bytes_.find(end, at_ + 2) + end.size(); }

  std::string_view CharacterAt(std::size_t at) const {
    std::size_t end = at + 1;
    while (end < bytes_.size() && (static_cast<unsigned char>(bytes_[end]) & 0xC0U) == 0x80)
      ++end;
    return bytes_.substr(at, end - at);
  }

  static std::u16string Meant(std::string_view reference) {
    static constexpr auto named = std::to_array<std::pair<std::string_view, char16_t>>(
        {{"&amp;", u'&'}, {"&lt;", u'<'}, {"&gt;", u'>'}, {"&quot;", u'"'}, {"&apos;", u'\''}});
    for (const auto& [name, character] : named)
      if (name == reference) return {character};
    const bool isHex = reference.starts_with("&#x");
    std::uint32_t code = 0;
    const std::string_view digits = reference.substr(isHex ? 3 : 2);
    std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
    if (code < 0x10000) return {static_cast<char16_t>(code)};
    code -= 0x10000;
    return {static_cast<char16_t>(0xD800 + (code >> 10U)), static_cast<char16_t>(0xDC00 + (code & 0x3FFU))};
  }

  void Take(std::string_view bytes, std::string_view character) { Take(bytes, text::FromUtf8(character)); }
  void Take(std::string_view bytes, const std::u16string& text) {
    placed_.Text += text;
    placed_.Places.insert(placed_.Places.end(), text.size(), {at_, at_ + bytes.size()});
    at_ += bytes.size();
  }

  std::string_view bytes_;
  std::size_t at_;
  TPlacedText placed_;
};

} // namespace

TPlacedText ReadPlacedText(std::string_view bytes, TByteSpan span) {
  return TPlacedReader(bytes, span).Read();
}

TElementText::TElementText(std::string_view bytes, TTextEdits& edits)
    : bytes_(bytes), edits_(edits), lineEnd_(LineEndOf(bytes)),
      step_(bytes.find("\n\t") != npos ? "\t" : "  ") {}

std::string TElementText::Escaped(std::u16string_view text) const {
  // Quotation marks need no escape in the text of an element; a bare CR would be read as a line end.
  std::u16string escaped = text::ReplaceAll(XmlEscape(text), u"&quot;", u"\"");
  escaped = text::ReplaceAll(escaped, u"\r\n", u"\n");
  escaped = text::ReplaceAll(escaped, u"\r", u"&#13;");
  return text::ToUtf8(text::ReplaceAll(escaped, u"\n", text::FromAscii(lineEnd_)));
}

std::optional<std::size_t> TElementText::BlankLineStart(std::size_t at) const {
  const std::size_t last = at == 0 ? npos : bytes_.find_last_not_of(" \t\r", at - 1);
  if (last == npos) return 0;
  return bytes_[last] == '\n' ? std::optional(last + 1) : std::nullopt;
}

std::size_t TElementText::BehindBlanks(std::size_t at) const {
  return std::min(bytes_.find_first_not_of(" \t\r", at), bytes_.size());
}

std::string TElementText::IndentOf(const TProjectElement& element) const {
  const std::optional<std::size_t> line = BlankLineStart(element.Whole.Begin);
  return line ? std::string(bytes_.substr(*line, element.Whole.Begin - *line)) : std::string();
}

std::string TElementText::ChildIndent(const TProjectElement& parent) const {
  const std::string own = IndentOf(parent);
  const std::string first = parent.Children.empty() ? std::string() : IndentOf(parent.Children.front());
  return first.size() > own.size() ? first : own + step_;
}

void TElementText::Remove(const TProjectElement& element) {
  TByteSpan span = element.Whole;
  const auto line = BlankLineStart(span.Begin);
  const std::size_t next = BehindBlanks(span.End);
  if (line && *line > 0 && (next == bytes_.size() || bytes_[next] == '\n'))
    span.Begin = *line - (*line > 1 && bytes_[*line - 2] == '\r' ? 2 : 1);
  edits_.Replace(span, {});
}

std::size_t TElementText::EndOfLineBehind(const TProjectElement& element) const {
  const std::size_t at = element.Whole.End;
  const std::size_t comment = BehindBlanks(at);
  if (!bytes_.substr(comment).starts_with("<!--")) return at;
  const std::size_t end = bytes_.find("-->", comment);
  if (end == npos || bytes_.substr(comment, end - comment).find('\n') != npos) return at;
  const std::size_t behind = BehindBlanks(end + 3);
  return behind == bytes_.size() || bytes_[behind] == '\n' ? end + 3 : at;
}

void TElementText::InsertInto(const TProjectElement& parent, const TProjectElement* last,
                              const std::vector<std::string>& elements) {
  if (elements.empty()) return;
  std::string text;
  for (const auto& element : elements)
    text += lineEnd_ + ChildIndent(parent) + element;
  const std::string closing = lineEnd_ + IndentOf(parent);
  if (parent.IsSelfClosing) {
    const std::size_t slash = bytes_.find_last_not_of(" \t\r\n", parent.Whole.End - 3) + 1;
    const std::string tag = "</" + text::ToUtf8(parent.Name) + ">";
    edits_.Replace({slash, parent.Whole.End}, ">" + text + closing + tag);
    return;
  }
  const std::size_t at = last == nullptr ? parent.Content.Begin : EndOfLineBehind(*last);
  const std::string_view behind = bytes_.substr(at);
  const std::size_t next = behind.find_first_not_of(" \t\r");
  const bool lineGoesOn = next == npos || behind[next] != '\n';
  edits_.Insert(at, lineGoesOn ? text + closing : text);
}

} // namespace kx
