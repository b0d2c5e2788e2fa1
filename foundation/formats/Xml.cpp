#include "foundation/formats/Xml.h"

#include "foundation/formats/LibXml.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <libxml/xpathInternals.h>

#include <climits>

namespace kx {

namespace {

using libxml::NewParser;
using libxml::TFailure;
using libxml::TOwned;

struct TState {
  TOwned<xmlDoc> Document;
  std::vector<std::pair<std::string, std::string>> Namespaces; // prefix, address
};

TState& StateOf(const std::shared_ptr<void>& state) {
  return *static_cast<TState*>(state.get());
}

std::u16string FromXml(const xmlChar* text) {
  return text == nullptr ? std::u16string() : text::FromUtf8(reinterpret_cast<const char*>(text));
}

const xmlChar* ToXml(const std::string& utf8) {
  return reinterpret_cast<const xmlChar*>(utf8.c_str());
}

TOwned<xmlDoc> Parse(std::string_view bytes, const char* encoding, std::u16string& error) {
  if (bytes.size() > static_cast<std::size_t>(INT_MAX)) {
    error = u"The document is too large.";
    return nullptr;
  }
  TFailure failure;
  const auto parser = NewParser(failure);
  // What was converted is no longer in the encoding that it declares.
  const bool isKnown = encoding != nullptr || libxml::IsMarkedUtf8(bytes);
  const int options = XML_PARSE_NONET | (isKnown ? XML_PARSE_IGNORE_ENC : 0);
  TOwned<xmlDoc> document(xmlCtxtReadMemory(parser.get(), bytes.data(), static_cast<int>(bytes.size()),
                                            nullptr, encoding, options));
  RequireEnd(*parser, failure);
  if (!failure.Reason.empty()) document.reset();
  if (!document) error = failure.Reason.empty() ? u"The document is not well-formed." : failure.Reason;
  return document;
}

xmlNode* NodeOf(void* node) {
  return static_cast<xmlNode*>(node);
}

template <typename TVisit>
void VisitElements(xmlNode* first, const TVisit& visit) {
  // Without recursion: the depth of a document is its author's choice.
  for (xmlNode* node = first; node != nullptr;) {
    if (node->type == XML_ELEMENT_NODE) visit(node);
    if (node->children != nullptr && node->type == XML_ELEMENT_NODE) {
      node = node->children;
      continue;
    }
    while (node != nullptr && node->next == nullptr) {
      node = node->parent;
      if (node == nullptr || node == first->parent) return;
    }
    node = node->next;
  }
}

} // namespace

std::u16string TXmlElement::Name() const {
  return FromXml(NodeOf(node_)->name);
}

std::u16string TXmlElement::NamespaceUri() const {
  const xmlNs* space = NodeOf(node_)->ns;
  return space == nullptr ? std::u16string() : FromXml(space->href);
}

std::optional<std::u16string> TXmlElement::GetAttribute(std::u16string_view name) const {
  const std::string key = text::ToUtf8(name);
  const TOwned<xmlChar> value(xmlGetNoNsProp(NodeOf(node_), ToXml(key)));
  return value ? std::optional(FromXml(value.get())) : std::nullopt;
}

std::u16string TXmlElement::Text() const {
  const TOwned<xmlChar> value(xmlNodeGetContent(NodeOf(node_)));
  return FromXml(value.get());
}

int TXmlElement::Line() const {
  return static_cast<int>(xmlGetLineNo(NodeOf(node_)));
}

std::vector<TXmlElement> TXmlElement::GetElementsByTagName(std::u16string_view name) const {
  std::vector<TXmlElement> found;
  const std::string wanted = text::ToUtf8(name);
  VisitElements(NodeOf(node_)->children, [&](xmlNode* node) {
    if (xmlStrEqual(node->name, ToXml(wanted)) != 0) found.push_back(TXmlElement(document_, node));
  });
  return found;
}

bool TXmlDocument::Load(std::u16string_view fileName) {
  const auto bytes = platform::ReadFile(fileName);
  if (bytes) return LoadBytes(*bytes);
  state_.reset();
  error_ = bytes.Message();
  return false;
}

bool TXmlDocument::LoadBytes(std::string_view bytes) {
  auto state = std::make_shared<TState>();
  error_.clear();
  state_.reset();
  if (const auto declared = libxml::DeclaredPage(bytes)) {
    const auto decoded = platform::FromCodePage(bytes, declared->Page);
    if (!decoded) {
      error_ = u"The document is not valid in its encoding " + declared->Name + u".";
      return false;
    }
    state->Document = Parse(text::ToUtf8(*decoded), "UTF-8", error_);
  } else {
    state->Document = Parse(bytes, nullptr, error_);
  }
  if (!state->Document) return false;
  state_ = std::move(state);
  return true;
}

std::optional<TXmlElement> TXmlDocument::DocumentElement() const {
  if (!state_) return std::nullopt;
  return TXmlElement(state_, xmlDocGetRootElement(StateOf(state_).Document.get()));
}

void TXmlDocument::SetSelectionNamespace(std::u16string_view prefix, std::u16string_view uri) {
  if (state_) StateOf(state_).Namespaces.emplace_back(text::ToUtf8(prefix), text::ToUtf8(uri));
}

namespace {

std::vector<xmlNode*> Select(TState& state, xmlNode* from, std::u16string_view xpath) {
  const TOwned<xmlXPathContext> context(xmlXPathNewContext(state.Document.get()));
  context->error = [](void*, xmlErrorPtr) {}; // what is wrong is raised, not printed
  for (const auto& [prefix, uri] : state.Namespaces)
    xmlXPathRegisterNs(context.get(), ToXml(prefix), ToXml(uri));
  context->node = from;
  const std::string expression = text::ToUtf8(xpath);
  const TOwned<xmlXPathObject> result(xmlXPathEvalExpression(ToXml(expression), context.get()));
  if (!result) throw EKxException(u"Invalid XPath expression : " + std::u16string(xpath));
  std::vector<xmlNode*> nodes;
  if (result->type != XPATH_NODESET || result->nodesetval == nullptr) return nodes;
  xmlXPathNodeSetSort(result->nodesetval);
  for (int i = 0; i < result->nodesetval->nodeNr; ++i)
    if (result->nodesetval->nodeTab[i]->type == XML_ELEMENT_NODE)
      nodes.push_back(result->nodesetval->nodeTab[i]);
  return nodes;
}

} // namespace

std::vector<TXmlElement> TXmlElement::SelectNodes(std::u16string_view xpath) const {
  std::vector<TXmlElement> found;
  for (xmlNode* node : Select(StateOf(document_), NodeOf(node_), xpath))
    found.push_back(TXmlElement(document_, node));
  return found;
}

std::vector<TXmlElement> TXmlDocument::SelectNodes(std::u16string_view xpath) const {
  std::vector<TXmlElement> found;
  if (!state_) return found;
  auto* top = reinterpret_cast<xmlNode*>(StateOf(state_).Document.get());
  for (xmlNode* node : Select(StateOf(state_), top, xpath))
    found.push_back(TXmlElement(state_, node));
  return found;
}

std::optional<TXmlElement> TXmlDocument::SelectSingleNode(std::u16string_view xpath) const {
  const auto found = SelectNodes(xpath);
  return found.empty() ? std::nullopt : std::optional(found.front());
}

std::shared_ptr<TXmlDocument> NewXMLDocument() {
  return std::make_shared<TXmlDocument>();
}

std::u16string GetNamespacesFromDocumentRootNode(const TXmlDocument& document) {
  const auto root = document.DocumentElement();
  return root ? root->NamespaceUri() : std::u16string();
}

platform::Result<std::u16string> ReadProjectText(std::u16string_view fileName) {
  const auto bytes = platform::ReadFile(fileName);
  if (!bytes) return platform::Failure{bytes.Message()};
  const auto declared = libxml::DeclaredPage(*bytes);
  auto decoded = declared ? platform::FromCodePage(*bytes, declared->Page) : std::nullopt;
  return decoded ? *std::move(decoded) : platform::DecodeUtf8OrAnsi(*bytes);
}

std::u16string XmlEscape(std::u16string_view text) {
  std::u16string escaped;
  escaped.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const bool high = c >= 0xD800 && c < 0xDC00;
    const bool low = c >= 0xDC00 && c < 0xE000;
    const bool pair = high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    const bool forbidden =
        (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || c >= 0xFFFE || low || (high && !pair);
    if (forbidden) continue;
    switch (c) {
    case u'&':
      escaped += u"&amp;";
      break;
    case u'<':
      escaped += u"&lt;";
      break;
    case u'>':
      escaped += u"&gt;";
      break;
    case u'"':
      escaped += u"&quot;";
      break;
    default:
      escaped += c;
      if (pair) escaped += text[++i];
    }
  }
  return escaped;
}

} // namespace kx
