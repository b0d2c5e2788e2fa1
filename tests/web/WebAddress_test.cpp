#include "web/WebAddress.h"

#include "host/Exceptions.h"
#include "text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

std::string PartsOf(std::u16string_view url) {
  try {
    const TWebAddress address = ParseWebAddress(url);
    return text::ToUtf8(address.Host + u" | " + address.Port + u" | " + address.Path + u" | " +
                        address.Document);
  } catch (const EKxException&) {
    return "refused";
  }
}

TEST(WebAddress, IsSplitAndDecodedOnce) {
  const std::pair<std::u16string_view, std::string_view> cases[] = {
      {u"http://H/MyWeb/MyWeb.csproj", "H |  | /MyWeb/ | MyWeb.csproj"},
      {u"HTTP://u:p@h:8080/a.cs?x/y#z", "h | 8080 | / | a.cs"},
      {u"http://[::1]:81\\Web\\a.cs", "[::1] | 81 | /Web/ | a.cs"},
      {u"http://h", "h |  |  | "},
      {u"http://h/a%20b/%C3%A9%2541%zz%", "h |  | /a b/ | \xC3\xA9%41%zz%"},
      {u"http:///a.cs", "refused"},
      {u"h/a.cs", "refused"},
      {u"http://./a.cs", "refused"},
      {u"http://h/../a.cs", "refused"},
      {u"http://h/%2e%2E/a.cs", "refused"},
      {u"http://h/w/..%2Fa.cs", "refused"},
      {u"http://h/w/..%5Ca.cs", "refused"},
      {u"http://h/w/a%00.cs", "refused"},
  };
  for (const auto& [url, parts] : cases)
    EXPECT_EQ(PartsOf(url), parts) << text::ToUtf8(url);
}

TEST(WebAddress, OnlyPlainFileNamesAreKept) {
  for (const auto name : {u"a.cs", u".x", u"a b é.cs", u"console.cs", u"COM.cs", u"com10.cs", u"nul1.cs"})
    EXPECT_TRUE(IsPlainFileName(name)) << text::ToUtf8(name);
  for (const auto name : {u"", u".", u"..", u"a/b", u"a\\b", u"C:a", u"a.cs:x", u"/a", u"NUL", u"nul.txt",
                          u"Con .cs", u"COM1.a", u"lpt\u00B2", u"a.", u"a ", u"a\n", u"a?"})
    EXPECT_FALSE(IsPlainFileName(name)) << text::ToUtf8(name);
}

} // namespace
} // namespace kx
