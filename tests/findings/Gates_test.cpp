#include "program/findings/Gates.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/FindingList.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TFinding Found(TFindingSeverity severity, const char16_t* message) {
  return {.Rule = u"C1", .Severity = severity, .Message = message, .Place = {u"a.c", 3, 1}};
}

TEST(Gates, StopWhatIsNewOrTooMuch) {
  const tests::TTemporaryFolder folder;
  const std::u16string file = text::JoinPath(folder.Path(), u"known.txt");
  std::vector<TFinding> known{Found(TFindingSeverity::Warning, u"old"),
                              Found(TFindingSeverity::Warning, u"gone")};
  SetFingerprints(known, folder.Path());
  const auto none = TBaseline::Load(file);
  ASSERT_TRUE(none && TBaseline(known, folder.Path()).Save(file));
  const auto baseline = TBaseline::Load(file);
  ASSERT_TRUE(baseline);
  std::vector<TFinding> now{known[0], Found(TFindingSeverity::Warning, u"new"),
                            Found(TFindingSeverity::Note, u"n")};
  SetFingerprints(now, folder.Path());
  const auto broken = [&](const TBaseline& with, std::optional<TFailOn> failOn,
                          std::optional<std::int64_t> most) {
    std::u16string all;
    for (const auto& sentence : CheckGates(now, 0, {file, failOn, most}, with).Broken)
      all += sentence + u";";
    return text::ToUtf8(all);
  };
  EXPECT_EQ(broken(*baseline, {}, {}), "1 new warning (fail on new-warning);");
  EXPECT_EQ(broken(*none, {}, 2), "") << "the first run is held up by nothing";
  EXPECT_EQ(broken(*baseline, TFailOn::Warning, 1),
            "2 warnings (fail on warning);2 warnings, and no more than 1 are allowed;");
  EXPECT_EQ(broken(*baseline, TFailOn::Error, {}), "");
  const TGateResult result = CheckGates(now, 0, {file}, *baseline);
  ASSERT_EQ(result.New.size(), 1U);
  EXPECT_EQ(result.New[0].Message, u"new");
  EXPECT_EQ(std::pair(result.Known, result.Fixed), std::pair(std::int64_t{1}, std::int64_t{1}));
}

} // namespace
} // namespace kx
