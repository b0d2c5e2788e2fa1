#include "foundation/text/UnifiedDiff.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(UnifiedDiff, HasTheFormOfPatches) {
  const std::tuple<std::u16string, std::u16string, std::string> cases[] = {
      {u"a\nb\n", u"a\r\nb", ""},
      {u"", u"a\n", "@@ -0,0 +1,1 @@|+a"},
      {u"a\n", u"", "@@ -1,1 +0,0 @@|-a"},
      {u"1\n2\n3\n4\n5\n6\n7\n8\n9", u"1\n2\n3\n4\nx\n6\n7\n8\n9", "@@ -2,7 +2,7 @@| 2| 3| 4|-5|+x| 6| 7| 8"},
      {u"a\n1\n2\n3\n4\n5\n6\nb", u"1\n2\n3\n4\n5\n6", "@@ -1,8 +1,6 @@|-a| 1| 2| 3| 4| 5| 6|-b"},
      {u"a\n1\n2\n3\n4\n5\n6\n7\nb", u"1\n2\n3\n4\n5\n6\n7",
       "@@ -1,4 +1,3 @@|-a| 1| 2| 3|@@ -6,4 +5,3 @@| 5| 6| 7|-b"},
  };
  for (const auto& [before, after, lines] : cases)
    EXPECT_EQ(ToUtf8(Join(UnifiedDiff(before, after), u"|")), lines);
}

// Beyond so many differences nothing is looked for that both have.
TEST(UnifiedDiff, ReplacesAllWhereTooMuchIsDifferent) {
  for (const auto& [count, size] : {std::pair(1000, 2002U), {1001, 2005U}}) {
    std::u16string before, after;
    for (int i = 0; i < count; ++i) {
      before += u"a" + FromInteger(i) + u"\n";
      after += u"b" + FromInteger(i) + u"\n";
    }
    const auto lines = UnifiedDiff(before + u"c", after + u"c");
    EXPECT_EQ(lines.size(), size);
    EXPECT_EQ(lines[1] + lines.back(), size == 2002U ? u"-a0 c" : u"-a0+c");
  }
}

} // namespace
} // namespace kx::text
