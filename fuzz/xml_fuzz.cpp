// Any bytes as XML: the tree and the stream take the same documents and find the same in them; a text that is
// escaped reads back.
#include "foundation/formats/Xml.h"
#include "foundation/formats/XmlStream.h"
#include "foundation/text/Encoding.h"
#include "fuzz/FuzzTarget.h"

namespace kx::fuzz {
namespace {

constexpr const char16_t* AttributeName = u"Name";

void Describe(std::u16string_view name, std::u16string_view uri,
              const std::optional<std::u16string>& attribute, std::u16string& to) {
  to.append(name).append(u" ").append(uri).append(u" ").append(attribute.value_or(u"-")).append(u"\n");
}

class TCollector : public IXmlEvents {
public:
  std::u16string Tags;
  std::string Content;
  int Depth = 0;

  void StartElement(const IXmlStartTag& tag) override {
    Describe(text::FromUtf8(tag.Name()), text::FromUtf8(tag.NamespaceUri()),
             tag.GetAttribute(text::ToUtf8(AttributeName)), Tags);
    ++Depth;
  }
  void EndElement() override { --Depth; }
  void Text(std::string_view utf8) override {
    Require(text::IsValidUtf8(utf8), "no character is parted");
    Content += utf8;
  }
};

void CheckDocument(std::string_view bytes) {
  TXmlDocument document;
  TCollector collector;
  TXmlStream stream(collector);
  const bool isDocument = document.LoadBytes(bytes);
  Require(stream.LoadBytes(bytes) == isDocument, "tree and stream take the same documents");
  Require(isDocument == document.ParseError().empty(), "what is refused has a reason");
  if (!isDocument) return;
  Require(collector.Depth == 0, "what opens is closed");
  std::u16string tags;
  for (const auto& element : document.SelectNodes(u"//*"))
    Describe(element.Name(), element.NamespaceUri(), element.GetAttribute(AttributeName), tags);
  Require(tags == collector.Tags, "tree and stream hold the same elements");
  Require(document.DocumentElement()->Text() == text::FromUtf8(collector.Content),
          "tree and stream hold the same text");
}

void CheckEscape(std::u16string_view text) {
  std::u16string expected;
  for (const char16_t c : text)
    if ((c >= u' ' || c == u'\t' || c == u'\n') && c < u'\uFFFE') expected += c;
  TXmlDocument document;
  const bool isRead = document.LoadBytes("<a b=\"" + text::ToUtf8(XmlEscape(text)) + "\">" +
                                         text::ToUtf8(XmlEscape(expected)) + "</a>");
  Require(isRead, "a text that is escaped is XML");
  Require(document.DocumentElement()->Text() == expected, "a text that is escaped reads back");
}

void Check(std::string_view bytes) {
  CheckDocument(bytes);
  CheckEscape(text::FromUtf8(bytes));
}

const TRegistration registration({"xml", Check});

} // namespace
} // namespace kx::fuzz
