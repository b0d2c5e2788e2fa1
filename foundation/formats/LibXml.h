// What the two readers of XML share: the parser's set-up and the encodings of old files. Only files of this
// room that talk to libxml2 include this.
#pragma once

#include "foundation/text/Text.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kx::libxml {

struct TFree {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
  void operator()(xmlChar* text) const { xmlFree(text); }
};
template <typename T>
using TOwned = std::unique_ptr<T, TFree>;

// What went wrong first; what follows is mostly a consequence of it.
struct TFailure {
  std::u16string Reason;
  void Note(std::u16string reason) {
    if (Reason.empty()) Reason = std::move(reason);
  }
};

// A parser without document types (so without entities) and without the network, whose errors go into
// `failure`, which outlives it.
TOwned<xmlParserCtxt> NewParser(TFailure& failure);

// Once a document is parsed: a zero byte behind it, which ends the text for libxml2, is a failure as anything
// else there is.
void RequireEnd(const xmlParserCtxt& parser, TFailure& failure);

// The Windows code page that the document's declaration means by the name of its encoding; nothing where
// libxml2 knows the encoding by itself.
struct TDeclaredPage {
  std::u16string Name;
  unsigned Page;
};
constexpr std::size_t LongestDeclaration = 256;                    // bytes of the document to look at
std::optional<TDeclaredPage> DeclaredPage(std::string_view bytes); // the document's beginning

// Whether a mark says that the document is UTF-8. It holds against what the declaration behind it says:
// editors that write one do not look at the declaration.
inline bool IsMarkedUtf8(std::string_view bytes) {
  return bytes.starts_with("\xEF\xBB\xBF");
}

} // namespace kx::libxml
