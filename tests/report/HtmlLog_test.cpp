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

// What ends badly stands open; the lines of one kind share an element, and each second that passes is noted.
TEST(HtmlLog, FoldsGroupsAndSharesElements) {
  THtmlLog log(u"");
  const auto at = [](int seconds) {
    return std::chrono::sys_days(std::chrono::year(2026) / 11 / 4) + std::chrono::seconds(seconds);
  };
  log.Add({u"a<"}, at(0));
  log.Add({u"b"}, at(0));
  log.Add({u"c"}, at(2));
  log.OpenGroup(u"Good");
  log.Add({u"d", TStatusTag::stWarning}, at(3));
  log.CloseGroup(TStatusTag::stSuccess, "succeeded", milliseconds(1500));
  log.OpenGroup(u"Outer");
  log.OpenGroup(u"Inner");
  log.Add({u"e"}, at(3));
  log.CloseGroup(TStatusTag::stError, "failed", milliseconds(0));
  log.Add({u"f"}, at(4));
  log.CloseGroup(TStatusTag::stNormal, "done", milliseconds(0));
  log.CloseGroup(TStatusTag::stError, "failed", milliseconds(0)); // of a group that nobody opened
  for (int i = 0; i < 201; ++i)
    log.Add({u"g"}, at(5));
  log.End();
  EXPECT_EQ(log.Lines(), 207);
  const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
  const std::size_t many = markup.find("g\n");
  EXPECT_EQ(markup.substr(0, many), R"x(<pre data-n=1 data-t=00:00:00 data-s="2:2" style=--n:3>
a&lt;
b
c
</pre>
<details class=bad><summary><i class="i done" role=img aria-label="succeeded"></i><span>Good</span><span class=time>1.50 s</span></summary>
<pre class=warning data-n=4 data-t=00:00:03>
<b id=L4>d</b>
</pre>
</details>
<details class=bad open><summary><i class="i plain" role=img aria-label="done"></i><span>Outer</span><span class=time>0.00 s</span></summary>
<details class=bad open><summary><i class="i error" role=img aria-label="failed"></i><span>Inner</span><span class=time>0.00 s</span></summary>
<pre data-n=5 data-t=00:00:03>
e
</pre>
</details>
<pre data-n=6 data-t=00:00:04>
f
</pre>
</details>
<pre data-n=7 data-t=00:00:05 style=--n:200>
)x");
  EXPECT_EQ(markup.substr(markup.find("</pre>", many)),
            "</pre>\n<pre data-n=207 data-t=00:00:05>\ng\n</pre>\n");
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
