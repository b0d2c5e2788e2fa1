#include "program/report/HtmlLog.h"

#include "tests/support/FailingMemory.h"
#include "tests/support/Failure.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>

#include <functional>

namespace kx {
namespace {

using std::chrono::milliseconds;

std::string Written(const std::function<void(THtmlWriter&)>& write) {
  return tests::Written([&](const platform::PutBytes& put) {
    THtmlWriter out(put);
    write(out);
    return out.Finish();
  });
}

TEST(HtmlLog, AGroupThatThereIsNoMemoryForIsNone) {
  bool hasFailed = true;
  for (long allocation = 1; hasFailed; ++allocation) {
    THtmlLog log(u"");
    {
      const tests::TFailingMemory failing(allocation);
      const std::string failure = tests::FailureOf([&] { log.OpenGroup(u"a title that needs memory"); });
      hasFailed = !failure.empty();
    }
    log.CloseGroup(TStatusTag::stNormal, "done", milliseconds(0));
    const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
    EXPECT_EQ(tests::CountOf("<summary>", markup), hasFailed ? 0U : 1U) << allocation;
    EXPECT_EQ(tests::CountOf("</details>", markup), hasFailed ? 0U : 1U) << allocation;
    EXPECT_TRUE(hasFailed || allocation > 3) << "some have failed";
  }
}

TEST(HtmlLog, MarksOnlySoManyLines) {
  const tests::TTemporaryFolder folder;
  THtmlLog log(folder.Path());
  for (int i = 0; i < 10'001; ++i)
    log.Add({u"w", i % 2 == 0 ? TStatusTag::stWarning : TStatusTag::stError}, {});
  log.End();
  const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
  EXPECT_NE(markup.find("<b id=L10000>"), markup.npos);
  EXPECT_EQ(markup.find("<b id=L10001>"), markup.npos);
}

} // namespace
} // namespace kx
