// XML documents with XPath 1.0 (libxml2), read without document types, entities of their own or network
// access.
//
// A document may be in any encoding that Visual Studio wrote: UTF-8, UTF-16, ISO-8859-x and the Windows code
// pages under the names it used for them ("Windows-1252", "Shift_JIS" for page 932, "GB2312" for page 936,
// ...).
#pragma once

#include "foundation/platform/Result.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

// One element. Valid as long as a reference to its document lives; it holds one itself.
class TXmlElement {
public:
  std::u16string Name() const; // without a prefix
  std::u16string NamespaceUri() const;
  std::optional<std::u16string> GetAttribute(std::u16string_view name) const; // without a namespace
  std::u16string Text() const;                                                // of all its descendants
  int Line() const;
  // All descendant elements of this name, in document order.
  std::vector<TXmlElement> GetElementsByTagName(std::u16string_view name) const;
  std::vector<TXmlElement> SelectNodes(std::u16string_view xpath) const;

private:
  friend class TXmlDocument;
  TXmlElement(std::shared_ptr<void> document, void* node) : document_(std::move(document)), node_(node) {}
  std::shared_ptr<void> document_;
  void* node_;
};

class TXmlDocument {
public:
  // False leaves the document empty and ParseError says why. A missing file is a failure too.
  bool Load(std::u16string_view fileName);
  bool LoadBytes(std::string_view bytes);
  const std::u16string& ParseError() const { return error_; }

  std::optional<TXmlElement> DocumentElement() const; // nothing before a successful load
  // What XPath calls `prefix` from now on.
  void SetSelectionNamespace(std::u16string_view prefix, std::u16string_view uri);
  // Elements in document order. Raises EKxException for an expression that XPath does not know.
  std::vector<TXmlElement> SelectNodes(std::u16string_view xpath) const;
  std::optional<TXmlElement> SelectSingleNode(std::u16string_view xpath) const;

private:
  friend class TXmlElement;
  std::shared_ptr<void> state_;
  std::u16string error_;
};

// A new empty document.
std::shared_ptr<TXmlDocument> NewXMLDocument();
// The namespace of the root element, empty when it has none.
std::u16string GetNamespacesFromDocumentRootNode(const TXmlDocument& document);

// The text of a project file, for those who search it without parsing: by its byte-order mark, else by its
// XML declaration, else UTF-8 when it is valid, else the ANSI code page.
platform::Result<std::u16string> ReadProjectText(std::u16string_view fileName);

// Markup characters as entities, and characters that XML forbids left out.
std::u16string XmlEscape(std::u16string_view text);

} // namespace kx
