#include "foundation/platform/Spool.h"

#include "foundation/platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kx::platform {
namespace {

TEST(Spool, GivesBackEveryPartOfWhatItWasGiven) {
  const tests::TTemporaryFolder folder;
  Spool spool(folder.Path());
  std::string wanted;
  for (int i = 0; i < 100'000; ++i) {
    const std::string piece = std::to_string(i) + ",";
    spool.Append(piece);
    wanted += piece;
  }
  ASSERT_EQ(spool.Size(), wanted.size());
  const std::uint64_t size = wanted.size();
  const std::pair<std::uint64_t, std::uint64_t> ranges[] = {{0, size},          {0, 0},
                                                            {size, size},       {1, 2},
                                                            {262'143, 262'150}, {size - 10, size + 5},
                                                            {5, size - 5},      {size + 1, size + 2}};
  for (const auto& [begin, end] : ranges) {
    std::string found;
    const auto append = [&found](std::string_view bytes) -> Status {
      found += bytes;
      return Done{};
    };
    EXPECT_TRUE(spool.CopyTo(append, begin, end));
    const auto from = static_cast<std::size_t>(std::min(begin, size));
    EXPECT_EQ(found, wanted.substr(from, static_cast<std::size_t>(end - begin)));
  }
}

TEST(Spool, SaysAtTheEndWhatStoppedIt) {
  Spool spool(u"/no/such/folder");
  for (int i = 0; i < 10; ++i)
    spool.Append(std::string(100'000, 'x'));
  const auto nobody = [](std::string_view) -> Status { return Done{}; };
  const auto copied = spool.CopyTo(nobody);
  ASSERT_FALSE(copied);
  EXPECT_NE(copied.Message().find(u"folder"), std::u16string::npos);
  EXPECT_EQ(spool.State().Message(), copied.Message());
  EXPECT_TRUE(spool.CopyTo(nobody, 0, 1000)) << "nothing of it is there";
}

// Half a content is as bad as none.
TEST(SaveFileInPieces, LeavesTheOldFileWhereItsContentFails) {
  const tests::TTemporaryFolder folder;
  const std::u16string file = folder.Path("report.html");
  const auto saved = SaveFileInPieces(
      file, [](const PutBytes& put) { return put("a") ? put("b") : Status(Failure{u"never"}); });
  ASSERT_TRUE(saved) << "new";
  const auto failed = SaveFileInPieces(file, [](const PutBytes& put) -> Status {
    EXPECT_TRUE(put("half"));
    return Failure{u"The source has run dry"};
  });
  ASSERT_FALSE(failed);
  EXPECT_NE(failed.Message().find(u"The source has run dry"), std::u16string::npos);
  EXPECT_EQ(*ReadFile(file), "ab");
  EXPECT_EQ(ListDirectory(folder.Path())->size(), 1U);
}

} // namespace
} // namespace kx::platform
