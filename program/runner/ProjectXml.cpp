#include "program/runner/ProjectXml.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>

#include <algorithm>
#include <memory>

namespace kx {

namespace {

// No project that somebody wrote comes near; the tree of a larger one would fill the memory.
constexpr std::size_t MaximumSize = std::size_t{64} << 20;

struct TFree {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  void operator()(xmlChar* text) const { xmlFree(text); }
};
template <typename T>
using TOwned = std::unique_ptr<T, TFree>;

std::u16string FromXml(const xmlChar* text) {
  return text == nullptr ? std::u16string() : text::FromUtf8(reinterpret_cast<const char*>(text));
}

// Document types bring entities, which may be huge or lie elsewhere.
void RefuseDocumentType(void* context, const xmlChar* /*name*/, const xmlChar* /*publicId*/,
                        const xmlChar* /*systemId*/) {
  auto* parser = static_cast<xmlParserCtxtPtr>(context);
  parser->_private = parser;
  xmlStopParser(parser);
}

[[noreturn]] void RefuseDocument(xmlParserCtxt& parser, std::u16string_view fileName) {
  if (parser._private != nullptr)
    RefuseFile(fileName, parser.input == nullptr ? 1 : parser.input->line,
               u"A document type declaration is not allowed.");
  const xmlError* error = xmlCtxtGetLastError(&parser);
  if (error == nullptr || error->message == nullptr) RefuseFile(fileName, 1, u"The file is not well-formed.");
  RefuseFile(fileName, error->line, text::Trim(text::FromUtf8(error->message)));
}

void RequireEncoding(const xmlDoc& document, std::u16string_view fileName) {
  const std::u16string declared = FromXml(document.encoding);
  if (declared.empty() || text::EqualsIgnoreCase(declared, u"utf-8") ||
      text::EqualsIgnoreCase(declared, u"us-ascii"))
    return;
  RefuseFile(fileName, 1, u"The file must be in UTF-8, not in " + declared + u".");
}

TOwned<xmlDoc> ParseDocument(std::string_view xml, std::u16string_view fileName) {
  const TOwned<xmlParserCtxt> parser(xmlNewParserCtxt());
  parser->sax->internalSubset = RefuseDocumentType;
  TOwned<xmlDoc> document(
      xmlCtxtReadMemory(parser.get(), xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                        XML_PARSE_NONET | XML_PARSE_BIG_LINES | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (!document || parser->_private != nullptr) RefuseDocument(*parser, fileName);
  RequireEncoding(*document, fileName);
  return document;
}

// Depth is no danger: the parser gives up at 256 levels.
TProjectElement ToElement(xmlNode* node) {
  TProjectElement element;
  element.Name = FromXml(node->name);
  element.Line = static_cast<int>(xmlGetLineNo(node));
  for (xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
    const TOwned<xmlChar> value(xmlNodeGetContent(reinterpret_cast<xmlNode*>(attribute)));
    element.Attributes.push_back({FromXml(attribute->name), FromXml(value.get())});
  }
  for (xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) element.Children.push_back(ToElement(child));
    if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)
      element.Text += FromXml(child->content);
  }
  return element;
}

struct TElementSpan {
  TByteSpan Whole;
  TByteSpan Content;
  bool IsSelfClosing = false;
};

// Finds where elements begin and end. The XML parser has read the text before, so it is known to be
// well-formed and to hold no document type: markup is easy to tell apart.
class TSpanScanner {
public:
  explicit TSpanScanner(std::string_view bytes) : bytes_(bytes) {}

  // In the order of their start tags.
  std::vector<TElementSpan> Scan() {
    for (std::size_t at = bytes_.find('<'); at != std::string_view::npos; at = bytes_.find('<', at))
      at = Markup(at);
    return std::move(spans_);
  }

private:
  // Each returns the position behind what it has read.
  std::size_t Markup(std::size_t at) {
    const std::string_view rest = bytes_.substr(at);
    if (rest.starts_with("<!--")) return Behind("-->", at);
    if (rest.starts_with("<![CDATA[")) return Behind("]]>", at);
    if (rest.starts_with("<?")) return Behind("?>", at);
    return rest.starts_with("</") ? EndTag(at) : StartTag(at);
  }

  std::size_t Behind(std::string_view mark, std::size_t at) const {
    return std::min(bytes_.find(mark, at), bytes_.size() - mark.size()) + mark.size();
  }

  std::size_t StartTag(std::size_t at) {
    std::size_t end = at;
    for (char quote = '\0'; end < bytes_.size() && (quote != '\0' || bytes_[end] != '>'); ++end) {
      if (quote == '\0' && (bytes_[end] == '"' || bytes_[end] == '\'')) {
        quote = bytes_[end];
      } else if (bytes_[end] == quote) {
        quote = '\0';
      }
    }
    const bool selfClosing = bytes_[end - 1] == '/';
    spans_.push_back({{at, end + 1}, {end + 1, end + 1}, selfClosing});
    if (!selfClosing) open_.push_back(spans_.size() - 1);
    return end + 1;
  }

  std::size_t EndTag(std::size_t at) {
    TElementSpan& span = spans_[open_.back()];
    open_.pop_back();
    span.Content.End = at;
    span.Whole.End = Behind(">", at);
    return span.Whole.End;
  }

  std::string_view bytes_;
  std::vector<TElementSpan> spans_;
  std::vector<std::size_t> open_; // by index in spans_
};

void Place(TProjectElement& element, const std::vector<TElementSpan>& spans, std::size_t& next,
           std::size_t offset) {
  const TElementSpan& span = spans.at(next++);
  element.Whole = {span.Whole.Begin + offset, span.Whole.End + offset};
  element.Content = {span.Content.Begin + offset, span.Content.End + offset};
  element.IsSelfClosing = span.IsSelfClosing;
  for (auto& child : element.Children)
    Place(child, spans, next, offset);
}

} // namespace

const TProjectElement* TProjectElement::Child(std::u16string_view name) const {
  const auto found = std::ranges::find(Children, name, &TProjectElement::Name);
  return found == Children.end() ? nullptr : &*found;
}

std::optional<std::u16string> TProjectElement::Attribute(std::u16string_view name) const {
  const auto found = std::ranges::find(Attributes, name, &TAttribute::Name);
  return found == Attributes.end() ? std::nullopt : std::optional(found->Value);
}

const TProjectElement* TProjectElement::Named(std::u16string_view name) const {
  const auto found = std::ranges::find_if(Children, [&](const TProjectElement& child) {
    return text::EqualsIgnoreCase(child.Attribute(u"Name").value_or(u""), name);
  });
  return found == Children.end() ? nullptr : &*found;
}

TProjectElement ParseProjectXml(std::string_view bytes, std::u16string_view fileName) {
  if (bytes.size() > MaximumSize) RefuseFile(fileName, 0, u"The file is too large for a build project.");
  const std::string_view xml = RequireUtf8(bytes, fileName);
  if (xml.find_first_not_of(" \t\r\n") == xml.npos) RefuseFile(fileName, 1, u"The file is empty.");
  if (const std::size_t null = xml.find('\0'); null != std::string_view::npos)
    RefuseFile(fileName, LineOfByte(xml, null), u"The file holds a null character.");
  const TOwned<xmlDoc> document = ParseDocument(xml, fileName);
  TProjectElement root = ToElement(xmlDocGetRootElement(document.get()));
  std::size_t next = 0;
  Place(root, TSpanScanner(xml).Scan(), next, bytes.size() - xml.size());
  return root;
}

} // namespace kx
