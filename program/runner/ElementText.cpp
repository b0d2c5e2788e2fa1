#include "program/runner/ElementText.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>

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
