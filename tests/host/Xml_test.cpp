#include "host/Xml.h"

#include "host/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace kx {
namespace {

TXmlDocument Loaded(const std::string& bytes) {
  TXmlDocument document;
  EXPECT_TRUE(document.LoadBytes(bytes))
      << std::string(document.ParseError().begin(), document.ParseError().end());
  return document;
}

TEST(Xml, ReadsTheEncodingsOfOldProjectFiles) {
  struct TCase {
    const char* Encoding;
    std::string Bytes;
    std::u16string Text;
  };
  const TCase cases[] = {
      {"UTF-8", "\xC3\xA9", u"é"},
      {"Windows-1252", "\xE9\x80", u"é€"},
      {"windows-1250", "\xE8", u"č"},
      {"Shift_JIS", "\x93\xFA\x96\x7B\\a", u"日本\\a"},
      {"shift_jis", "~", u"~"},
      {"GB2312", "\xD6\xD0", u"中"},
      {"ks_c_5601-1987", "\xB0\xA1", u"가"},
      {"iso-8859-1", "\xE9", u"é"},
  };
  for (const char* lie : {"Windows-1252", "utf-16"})
    EXPECT_EQ(Loaded(std::string("\xEF\xBB\xBF<?xml version='1.0' encoding='") + lie + "'?><a b='\xC3\xA9'/>")
                  .DocumentElement()
                  ->GetAttribute(u"b"),
              u"é")
        << "the mark holds, not " << lie;
  for (const auto& row : cases) {
    const std::string xml = std::string("<?xml version=\"1.0\" encoding='") + row.Encoding +
                            "'?>\r\n<a b=\"" + row.Bytes + "\"/>";
    const TXmlDocument document = Loaded(xml);
    ASSERT_TRUE(document.DocumentElement()) << row.Encoding;
    EXPECT_EQ(document.DocumentElement()->GetAttribute(u"b"), row.Text) << row.Encoding;
  }
}

// For those who look for words in a project file.
TEST(Xml, ReadsProjectFilesAsText) {
  const tests::TTemporaryFolder folder;
  const std::pair<std::string, std::u16string_view> cases[] = {
      {"<?xml version='1.0' encoding='Windows-1250'?><a>\xE8", u"č"},
      {"<?xml version='1.0' encoding=\"shift_jis\"?><a>\x93\xFA", u"日"},
      {"<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9", u"é"},
      {"<?xml version='1.0' encoding='utf-8'?><a>\xE9", u"é"}, // not what it declares
      {"<VisualStudioProject><a>\xC3\xA9", u"é"},
      {"<VisualStudioProject><a>\xE9", u"é"},
      {"\xEF\xBB\xBF<a>\xC3\xA9", u"é"},
  };
  for (const auto& [bytes, text] : cases) {
    folder.Write("a.csproj", bytes);
    const auto read = ReadProjectText(folder.Path("a.csproj"));
    ASSERT_TRUE(read) << bytes;
    EXPECT_EQ(read->substr(read->find(u"<a>") + 3), text) << bytes;
  }
  EXPECT_FALSE(ReadProjectText(folder.Path("missing.csproj")));
}

TEST(Xml, RefusesWhatCannotBeTrustedOrRead) {
  struct TCase {
    const char* What;
    std::string Bytes;
    std::u16string Reason;
  };
  const TCase cases[] = {
      {"a bomb of entities", "<!DOCTYPE a [<!ENTITY x \"xxxxxxxx\"><!ENTITY y \"&x;&x;&x;&x;\">]><a>&y;</a>",
       u"A document type declaration (DTD) is not allowed."},
      {"a file of the machine", "<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a/>",
       u"A document type declaration (DTD) is not allowed."},
      {"bytes outside the declared page", "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x81</a>",
       u"The document is not valid in its encoding Shift_JIS."},
      {"an unclosed element", "<a>\n<b></a>", u"Opening and ending tag mismatch: b line 2 and a (line 2)"},
      {"nothing", "", u"Document is empty (line 1)"},
  };
  for (const auto& row : cases) {
    TXmlDocument document;
    EXPECT_FALSE(document.LoadBytes(row.Bytes)) << row.What;
    EXPECT_EQ(document.ParseError(), row.Reason) << row.What;
    EXPECT_FALSE(document.DocumentElement()) << row.What;
  }
}

TEST(Xml, SelectsInDocumentOrderWithinABoundNamespace) {
  TXmlDocument document =
      Loaded("<p:Project xmlns:p='urn:x'><p:Group><p:Item Include='1'/></p:Group>"
             "<Item Include='other'/><p:Group><p:Item/><p:Item Include='2'/></p:Group></p:Project>");
  document.SetSelectionNamespace(u"def", u"urn:x");
  const auto items = document.SelectNodes(u"/def:Project/def:Group/def:Item");
  ASSERT_EQ(items.size(), 3U);
  EXPECT_EQ(items[0].GetAttribute(u"Include"), u"1");
  EXPECT_EQ(items[1].GetAttribute(u"Include"), std::nullopt);
  EXPECT_EQ(items[2].GetAttribute(u"Include"), u"2");
  EXPECT_EQ(items[2].NamespaceUri(), u"urn:x");
  EXPECT_EQ(GetNamespacesFromDocumentRootNode(document), u"urn:x");
  EXPECT_THROW(static_cast<void>(document.SelectNodes(u"/def:[")), EKxException);
  EXPECT_THROW(static_cast<void>(document.SelectNodes(u"/unbound:a")), EKxException);
}

TEST(Xml, FindsDescendantsByName) {
  const TXmlDocument document = Loaded("<Files><Filter><File n='1'/><Filter><File n='2'/></Filter></Filter>"
                                       "<File n='3'/><!-- <File/> --></Files>");
  std::u16string order;
  for (const auto& file : document.DocumentElement()->GetElementsByTagName(u"File"))
    order += *file.GetAttribute(u"n");
  EXPECT_EQ(order, u"123");
  const auto filter = document.SelectSingleNode(u"/Files/Filter");
  ASSERT_TRUE(filter);
  EXPECT_EQ(filter->GetElementsByTagName(u"File").size(), 2U);
  EXPECT_TRUE(filter->SelectNodes(u"Filter/File").size() == 1);
}

TEST(Xml, EscapesMarkupAndDropsWhatXmlForbids) {
  EXPECT_EQ(XmlEscape(u"a<b>&\"c\"\t\r\n"), u"a&lt;b&gt;&amp;&quot;c&quot;\t\r\n");
  EXPECT_EQ(XmlEscape(u"x\x01\x0By\xFFFF\xD800z\xDC00"), u"xyz");
  EXPECT_EQ(XmlEscape(u"\xD83D\xDE00"), u"\xD83D\xDE00");
}

} // namespace
} // namespace kx
