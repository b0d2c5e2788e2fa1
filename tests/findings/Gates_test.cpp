#include "program/findings/Gates.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/FindingList.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
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
  known.push_back({.Rule = u"C2",
                   .Severity = TFindingSeverity::Error,
                   .Message = std::u16string(300, u'm'),
                   .Place = {text::JoinPath(folder.Path(), u"b.c"), 7, 1},
                   .Code = u"c",
                   .Fingerprint = u"f"});
  known.push_back({.Severity = TFindingSeverity::Note, .Fingerprint = u"n"});
  ASSERT_TRUE(none && TBaseline(known, folder.Path()).Save(file));
  const std::string head = "# Findings that are known, written by kxhost --write-baseline.\n";
  const std::string saved = folder.Read("known.txt");
  EXPECT_EQ(saved, head + "05c35014b086eaa6 a.c: warning C1: old\nf b.c: error C2: " + std::string(185, 'm') +
                       "\nf2f3fa3230876672 a.c: warning C1: gone\n");
  folder.Write("known.txt", "\n" + saved + "# more\n\n f2 x\n");
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
  for (const TFailOn failOn :
       {TFailOn::Error, TFailOn::Warning, TFailOn::NewWarning}) // what is not kept may be an error, or new
    EXPECT_THAT(text::ToUtf8(CheckGates(now, 3, {file, failOn}, *baseline).Broken.front()),
                testing::StartsWith("3 findings more than are kept"));
  EXPECT_FALSE(TBaseline::Load(folder.Path())) << "a folder is no file that is still to come";
  const TGateResult result = CheckGates(now, 0, {file}, *baseline);
  ASSERT_EQ(result.New.size(), 1U);
  EXPECT_EQ(result.New[0].Message, u"new");
  EXPECT_EQ(std::pair(result.Known, result.Fixed), std::pair(std::int64_t{1}, std::int64_t{3}));
  now = {Found(TFindingSeverity::Error, u"e"), Found(TFindingSeverity::Error, u"f"),
         Found(TFindingSeverity::Warning, u"w")};
  EXPECT_EQ(broken(*baseline, TFailOn::Error, 1), "2 errors (fail on error);");
  EXPECT_EQ(broken(*baseline, TFailOn::Warning, {}), "2 errors and 1 warning (fail on warning);");
  EXPECT_EQ(broken(*baseline, {}, 0),
            "2 new errors and 1 new warning (fail on new-warning);1 warning, and no more "
            "than 0 are allowed;");
  const std::pair<TGateSettings, std::size_t> rows[] = {
      {{}, 0},           {{file}, 0},      {{file, TFailOn::NewWarning}, 0}, {{file, TFailOn::Error}, 2},
      {{u"", {}, 3}, 0}, {{u"", {}, 2}, 1}};
  for (const auto& [settings, count] : rows) // where nothing is known yet
    EXPECT_EQ(CheckGates(now, 2, settings, *none).Broken.size(), count);
  EXPECT_EQ(CheckGates(now, 1, {u"", TFailOn::Error}, *none).Broken.front(),
            u"1 finding more than are kept, of which nothing is known (fail on error)");
  EXPECT_TRUE(TBaseline::Load(u"") && TBaseline::Load(text::JoinPath(folder.Path(), u"no/known.txt")));
}

} // namespace
} // namespace kx
