#include "program/runner/RunFindings.h"

#include "foundation/text/Encoding.h"
#include "program/runner/VerdictRules.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(RunFindings, TakeTheFirstPlaceThatAStackTraceNames) {
  const std::u16string none =
      u"at A.B()\n at A() in b.cs:line 0\n at A() in b.cs:line\n in b.cs:line 3\n x: y (a) b 5\n"
      u" at A() :line 3\n";
  EXPECT_EQ(PlaceOfTrace(none).File, u"");
  for (const auto& [trace, file, line] :
       {std::tuple(u"  at A() in C:\\a b\\t.cs:line 12", u"C:\\a b\\t.cs", 12),
        {u" bei A(Int32 i) in /t.cs:Zeile 1\n at B() in /u.cs:line 2", u"/t.cs", 1}}) {
    const TFindingPlace place = PlaceOfTrace(none + trace);
    EXPECT_EQ(place.File, file);
    EXPECT_EQ(std::pair(place.Line, place.Column), std::pair(line, 0));
  }
}

TEST(RunFindings, ExplainTheirRules) {
  EXPECT_EQ(ExplainRunRule(u"test-failed"), u"A unit test failed.");
  EXPECT_EQ(ExplainRunRule(u"No-Tests"), u"A run of tests executed none");
  EXPECT_EQ(ExplainRunRule(u"CS0103"), u"");
}

} // namespace
} // namespace kx::tests
