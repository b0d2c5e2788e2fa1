#include "program/runner/FileLink.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kx::tests {
namespace {

TEST(FileLink, SaysThePlaceAndNothingElse) {
  const std::tuple<const char16_t*, const char16_t*, int, int, const char*> cases[] = {
      {u"vscode://file/{file}:{line}:{column}", u"/src/a b/é#?%.cs", 7, 3,
       "vscode://file/src/a%20b/%C3%A9%23%3F%25.cs:7:3"},
      {u"idea://open?file={file}&line={line}", u"/src/a&b=+;'.cs", 0, 0,
       "idea://open?file=/src/a%26b%3D%2B%3B%27.cs&line=1"},
      {u"azAZ09+-.:!~{file}", u"/_~x.cs", 1, 1, "azAZ09+-.:!~/_~x.cs"},
      {u"x-ed.1:{column},{line},{file}", u"C:\\a\\{line}\n.cs", 2, 0, "x-ed.1:1,2,C%3A/a/%7Bline%7D%0A.cs"},
  };
  for (const auto& [link, file, line, column, expected] : cases)
    EXPECT_EQ(FileLink(link, file, line, column), expected);
}

TEST(FileLink, LeadsToNothingThatABrowserOpensItself) {
  for (const auto link :
       text::Split(u"http://x/{file}|HTTPS://x/{file}|javascript:alert(1)//"
                   u"{file}|JavaScript:{file}|data:text/html,{file}|"
                   u"file:///{file}|java\tscript:{file}| "
                   u"javascript:{file}|vbscript:{file}|blob:{file}|{file}|//x/{file}|1x:{file}|"
                   u":{file}|ed://open|ed://{file}\n|ed://{file}\"onclick=|ed://{file}<|ed://{file}>|ed://"
                   u"{file}\\|ed://{file}`|"
                   u"ed://{file}\x7F|ed_:{file}|{file}://x",
                   u'|'))
    EXPECT_THROW(RequireFileLink(link), EKxException) << text::ToUtf8(link);
}

} // namespace
} // namespace kx::tests
