#include "foundation/text/UnifiedDiff.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

#include <random>

namespace kx::text {
namespace {

std::string Shown(std::u16string_view before, std::u16string_view after) {
  return ToUtf8(Join(UnifiedDiff(before, after), u"|"));
}

TEST(UnifiedDiff, HasTheFormOfPatches) {
  const struct {
    std::u16string Before;
    std::u16string After;
    std::string Lines;
  } cases[] = {
      {u"a\nb\n", u"a\r\nb", ""},
      {u"", u"a\n", "@@ -0,0 +1,1 @@|+a"},
      {u"a\n", u"", "@@ -1,1 +0,0 @@|-a"},
      {u"1\n2\n3\n4\n5\n6\n7\n8\n9", u"1\n2\n3\n4\nx\n6\n7\n8\n9", "@@ -2,7 +2,7 @@| 2| 3| 4|-5|+x| 6| 7| 8"},
      {u"a\n1\n2\n3\n4\n5\n6\nb", u"1\n2\n3\n4\n5\n6", "@@ -1,8 +1,6 @@|-a| 1| 2| 3| 4| 5| 6|-b"},
      {u"a\n1\n2\n3\n4\n5\n6\n7\nb", u"1\n2\n3\n4\n5\n6\n7",
       "@@ -1,4 +1,3 @@|-a| 1| 2| 3|@@ -6,4 +5,3 @@| 5| 6| 7|-b"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(Shown(row.Before, row.After), row.Lines);
}

// Applying a difference to the old text gives the new one, however they differ.
TEST(UnifiedDiff, LeadsFromOneTextToTheOther) {
  std::mt19937 random(7);
  const auto text = [&random] {
    std::u16string lines;
    for (auto count = random() % 30; count > 0; --count)
      lines += std::u16string(1, static_cast<char16_t>(u'a' + random() % 4)) + u"\n";
    return lines;
  };
  for (int round = 0; round < 2000; ++round) {
    const std::u16string before = text();
    const std::u16string after = text();
    const auto old = SplitLines(before);
    std::u16string made;
    std::size_t at = 0;
    for (const auto& line : UnifiedDiff(before, after)) {
      if (line.starts_with(u"@@")) {
        std::size_t first = static_cast<std::size_t>(ToIntegerOr(line.substr(4, line.find(u',') - 4), 0));
        if (line.substr(line.find(u',') + 1, 2) != u"0 ") --first;
        for (; at < first; ++at)
          made += std::u16string(old[at]) + u"\n";
      } else if (line[0] == u'+') {
        made += line.substr(1) + u"\n";
      } else {
        ASSERT_EQ(std::u16string_view(line).substr(1), old[at]);
        if (line[0] == u' ') made += line.substr(1) + u"\n";
        ++at;
      }
    }
    for (; at < old.size(); ++at)
      made += std::u16string(old[at]) + u"\n";
    ASSERT_EQ(made, after);
  }
}

} // namespace
} // namespace kx::text
