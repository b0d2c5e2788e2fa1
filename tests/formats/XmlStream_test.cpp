#include "foundation/formats/XmlStream.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace kx {
namespace {

// The document as "<name a=value>text</>"; names with their namespace.
class TEcho : public IXmlEvents {
public:
  std::string Heard;
  std::string RaiseAt = {}; // the name of an element

  void StartElement(const IXmlStartTag& tag) override {
    if (tag.Name() == RaiseAt) throw EKxException(u"enough");
    const std::string space(tag.NamespaceUri());
    Heard += "<" + (space.empty() ? space : "{" + space + "}") + std::string(tag.Name());
    if (const auto value = tag.GetAttribute("a")) Heard += " a=" + text::ToUtf8(*value);
    Heard += ">";
  }
  void EndElement() override { Heard += "</>"; }
  void Text(std::string_view utf8) override { Heard += utf8; }
};

TEST(XmlStream, HandsTheDocumentOverInItsOrder) {
  using namespace std::string_literals;
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"elements and text", "<r>a<b>c</b>d<e/></r>", "<r>a<b>c</>d<e></></>"},
      {"namespaces", "<r xmlns='u' xmlns:p='v'><p:a/><b xmlns=''/></r>", "<{u}r><{v}a></><b></></>"},
      {"the attribute without a namespace", "<r xmlns:p='v' p:a='1' aa='2' a='3'/>", "<r a=3></>"},
      {"references", "<r a='&lt;&amp;&#233;&#x1F600;&quot;'>&lt;&amp;&#233;&#x1F600;</r>",
       "<r a=<&\xC3\xA9\xF0\x9F\x98\x80\"><&\xC3\xA9\xF0\x9F\x98\x80</>"},
      {"line ends", "<r a='1\r\n2\t3&#10;'>1\r\n2\r3&#13;</r>", "<r a=1 2 3\n>1\n2\n3\r</>"},
      {"sections, comments, instructions", "<?p?><!--c--><r>a<![CDATA[<&]]><!--c-->b<?p q?> </r><!--c-->",
       "<r>a<&b </>"},
      {"UTF-16, where each half of a character may be 0", "\xFF\xFE<\0r\0>\0\0\1<\0/\0r\0>\0"s,
       "<r>\xC4\x80</>"},
      {"the same without a mark", "\0<\0?\0p\0?\0>\0<\0r\0>\0a\1\0\0<\0/\0r\0>"s, "<r>a\xC4\x80</>"},
  };
  for (const auto& [what, xml, heard] : cases) {
    TEcho echo;
    TXmlStream stream(echo);
    EXPECT_TRUE(stream.LoadBytes(xml)) << what << text::ToUtf8(stream.ParseError());
    EXPECT_EQ(echo.Heard, heard) << what;
  }
}

TEST(XmlStream, SaysAsTheTreeWhyADocumentIsRefused) {
  const std::u16string type = u"A document type declaration (DTD) is not allowed.";
  const std::u16string zero = u"The document holds a character 0.";
  using namespace std::string_literals;
  const std::pair<std::string, std::u16string> cases[] = {
      {"<!DOCTYPE a [<!ENTITY x \"xxxxxxxx\"><!ENTITY y \"&x;&x;&x;&x;\">]><a>&y;</a>", type},
      {"<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a/>", type},
      {"<a>\n<b></a>", u"Opening and ending tag mismatch: b line 2 and a (line 2)"},
      {"", u"Document is empty (line 1)"},
      {"<?xml version='1.0' encoding='Shift_JIS'?><a>\x81</a>",
       u"The document is not valid in its encoding Shift_JIS."},
      {"<a>b\0c</a>"s, zero},
      {"\xFF\xFE<\0a\0>\0\0\0<\0/\0a\0>\0"s, zero},
      {"<a>" + std::string(300, ' ') + "</b>", u"Opening and ending tag mismatch: a line 1 and b (line 1)"},
  };
  TEcho echo;
  TXmlStream stream(echo);
  for (const auto& [xml, reason] : cases) {
    EXPECT_FALSE(stream.LoadBytes(xml)) << xml;
    EXPECT_EQ(stream.ParseError(), reason) << xml;
    TXmlDocument document;
    EXPECT_FALSE(document.LoadBytes(xml) || document.DocumentElement()) << xml;
    EXPECT_TRUE(reason == zero || document.ParseError() == reason) << xml;
  }
  EXPECT_FALSE(stream.Load(u"/no/such/file.xml"));
  EXPECT_NE(stream.ParseError().find(u"/no/such/file.xml"), std::u16string::npos);
  EXPECT_TRUE(stream.LoadBytes("<a/>"));
  EXPECT_EQ(stream.ParseError(), u"") << "a later document is judged by itself";
  for (const int count : {1000, 1001, 100'000}) {
    std::string xml = "<a";
    for (int i = 0; i < count; ++i)
      xml += " a" + std::to_string(i) + "='x'";
    EXPECT_EQ(stream.LoadBytes(xml + "/>"), count == 1000);
    EXPECT_EQ(stream.ParseError(), count == 1000 ? u"" : u"An element has more than 1000 attributes.");
  }
}

TEST(XmlStream, DoesNotGoDeeperThanATree) {
  const auto nested = [](int depth) {
    std::string xml;
    for (int i = 0; i < 2 * depth; ++i)
      xml += i < depth ? "<a>" : "</a>";
    return xml;
  };
  TEcho echo;
  TXmlStream stream(echo);
  EXPECT_TRUE(stream.LoadBytes(nested(250)));
  EXPECT_FALSE(stream.LoadBytes(nested(1'000'000)));
}

TEST(XmlStream, HandsNothingOverAfterWhatTheEventsRaise) {
  TEcho echo;
  echo.RaiseAt = "stop";
  EXPECT_THROW(static_cast<void>(TXmlStream(echo).LoadBytes("<r><a/><stop/><b/></r>")), EKxException);
  EXPECT_EQ(echo.Heard, "<r><a></>");
}

TEST(XmlStream, PiecesAreCutAtWholeCharactersOfAPage) {
  // Longer than a piece, and nowhere a character at which a piece may be cut.
  std::string xml = "<?xml version='1.0' encoding='GBK'?><r>";
  std::string expected = "<r>";
  for (int i = 0; i < 200'000; ++i) {
    xml += i % 3 == 0 ? "x" : "\xD6\xD0";
    expected += i % 3 == 0 ? "x" : "\xE4\xB8\xAD";
  }
  TEcho echo;
  TXmlStream stream(echo);
  EXPECT_TRUE(stream.LoadBytes(xml + "</r>"));
  EXPECT_TRUE(echo.Heard == expected + "</>");
}

} // namespace
} // namespace kx
