#include "foundation/formats/DiagramText.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(DiagramText, LetsNothingBreakOut) {
  const std::tuple<std::u16string_view, std::string_view, std::string_view, std::string_view> rows[] = {
      {u"azAZ09 é", "azAZ09 é", "azAZ09 é", "azAZ09 é"},
      {u"a\\\"&", "a\\\\\\\"&", "a\\\\\\\"&amp;", "a#92;#34;#38;"},
      {u" a  b", " a  b", " a  b", "#32;a #32;b"},
      {u"@`[{/:", "@`[{/:", "@`[{/:", "#64;#96;#91;#123;#47;#58;"},
      {u"", "", "", "#160;"}};
  for (const auto& [text, name, label, mermaid] : rows) {
    EXPECT_EQ(DotText(text), name);
    EXPECT_EQ(DotLabel(text), label);
    EXPECT_EQ(MermaidText(text), mermaid);
  }
}

} // namespace
} // namespace kx
