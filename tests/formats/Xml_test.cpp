#include "foundation/formats/Xml.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace kx {
namespace {

TXmlDocument Loaded(const std::string& bytes) {
  TXmlDocument document;
  EXPECT_TRUE(document.LoadBytes(bytes)) << text::ToUtf8(document.ParseError());
  return document;
}

TEST(Xml, ReadsTheEncodingsOfOldProjectFiles) {
  const std::tuple<const char*, const char*, std::string, std::u16string> cases[] = {
      {"", "UTF-8", "\xC3\xA9", u"é"},
      {"", "Windows-1252", "\xE9\x80", u"é€"},
      {"", "windows-1250", "\xE8", u"č"},
      {"", "Shift_JIS", "\x93\xFA\x96\x7B\\a", u"日本\\a"},
      {"", "shift_jis", "~", u"~"},
      {"", "GB2312", "\xD6\xD0", u"中"},
      {"", "ks_c_5601-1987", "\xB0\xA1", u"가"},
      {"", "iso-8859-1", "\xE9", u"é"},
      {"\xEF\xBB\xBF", "Windows-1252", "\xC3\xA9", u"é"}, // the mark holds
      {"\xEF\xBB\xBF", "utf-16", "\xC3\xA9", u"é"},
  };
  for (const auto& [mark, encoding, bytes, text] : cases) {
    const std::string begin = std::string(mark) + "<?xml version='1.0' encoding='" + encoding + "'?>\r\n";
    EXPECT_EQ(Loaded(begin + "<a b='" + bytes + "'/>").DocumentElement()->GetAttribute(u"b"), text)
        << encoding;
  }
}

TEST(Xml, SelectsInDocumentOrderWithinABoundNamespace) {
  TXmlDocument document =
      Loaded("<p:Project xmlns:p='urn:x'><p:Group><p:Item Include='1'/></p:Group>"
             "<Item Include='other'/><p:Group><p:Item/><p:Item Include='2'/></p:Group></p:Project>");
  document.SetSelectionNamespace(u"def", u"urn:x");
  std::u16string items;
  for (const auto& item : document.SelectNodes(u"/def:Project/def:Group/def:Item"))
    items += item.NamespaceUri() + u" " + item.GetAttribute(u"Include").value_or(u"-") + u"\n";
  EXPECT_EQ(items, u"urn:x 1\nurn:x -\nurn:x 2\n");
  EXPECT_EQ(GetNamespacesFromDocumentRootNode(document), u"urn:x");
  EXPECT_THROW(static_cast<void>(document.SelectNodes(u"/def:[")), EKxException);
  EXPECT_THROW(static_cast<void>(document.SelectNodes(u"/unbound:a")), EKxException);
}

TEST(Xml, FindsDescendantsByName) {
  const TXmlDocument document = Loaded("<Files><Filter><File n='1'/><Filter><File n='2'/></Filter></Filter>"
                                       "<File n='3'/><!-- <File/> --></Files>");
  const auto below = [](const std::optional<TXmlElement>& element) {
    std::u16string order;
    for (const auto& file : element->GetElementsByTagName(u"File"))
      order += *file.GetAttribute(u"n");
    return order;
  };
  EXPECT_EQ(below(document.DocumentElement()), u"123");
  EXPECT_EQ(below(document.SelectSingleNode(u"/Files/Filter")), u"12");
  EXPECT_EQ(document.SelectSingleNode(u"/Files/Filter")->SelectNodes(u"Filter/File").size(), 1U);
}

TEST(Xml, EscapesMarkupAndDropsWhatXmlForbids) {
  EXPECT_EQ(XmlEscape(u"a<b>&\"c\"\t\r\n"), u"a&lt;b&gt;&amp;&quot;c&quot;\t\r\n");
  EXPECT_EQ(XmlEscape(u"x\x01\x0By\xFFFF\xD800z\xDC00"), u"xyz");
  EXPECT_EQ(XmlEscape(u"\xD83D\xDE00"), u"\xD83D\xDE00");
}

} // namespace
} // namespace kx
