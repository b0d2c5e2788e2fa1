#include "foundation/platform/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(Files, AreFoundWithoutRegardToCase) {
  Write("Src/App/Main.cs");
  const std::pair<std::string_view, std::string_view> rows[] = {
      {"SRC/app/MAIN.CS", "Src/App/Main.cs"},
      {"src\\none\\..\\app/./main.cs", "Src/App/Main.cs"},
      {"src/app", "Src/App"},
  };
  for (const auto& [asked, found] : rows)
    EXPECT_EQ(ResolveExisting(Path(asked)), Path(found)) << asked;
  EXPECT_EQ(ResolveExisting(Path("src/app/none.cs")), std::nullopt);
  EXPECT_EQ(ResolveForWriting(Path("src\\APP\\New\\a.cs")), Path("Src/App/New/a.cs"));
}

TEST_F(Files, AreReadWholeAndInPieces) {
  std::string bytes;
  for (int i = 0; bytes.size() < 300'000; ++i)
    bytes += std::to_string(i);
  Write("big", bytes);
  EXPECT_TRUE(*ReadFile(Path("BIG")) == bytes);
  auto reader = FileReader::Open(Path("big"));
  ASSERT_TRUE(reader);
  for (int round = 0; round < 2; ++round) {
    std::string read;
    char block[7777];
    for (std::size_t count = 0; (count = *reader->Read(block, sizeof block)) > 0;)
      read.append(block, count);
    EXPECT_TRUE(read == bytes);
    EXPECT_TRUE(reader->Rewind());
  }
}

TEST_F(Files, AreMadeAndReplaced) {
  for (const std::string content : {"made", "new content that is longer", ""}) {
    ASSERT_TRUE(SaveFile(Path("TARGET.txt"), content));
    EXPECT_EQ(*ReadFile(Path("Target.txt")), content);
  }
  EXPECT_FALSE(SaveFile(Path(), "x") || SaveFile(Path("none/x"), "x"));
  EXPECT_EQ(std::distance(fs::directory_iterator(Native("")), {}), 1) << "a temporary file was left behind";
}

TEST_F(Files, AndFoldersAreMadeAndRemoved) {
  Write("Existing/file");
  EXPECT_TRUE(CreateDirectories(Path("existing\\a\\b")));
  EXPECT_TRUE(CreateDirectories(Path("Existing/a/b/")));
  EXPECT_TRUE(fs::is_directory(Native("Existing/a/b")));
  EXPECT_FALSE(CreateDirectories(Path("Existing/file/x")));
  EXPECT_TRUE(RemoveFile(Path("EXISTING/FILE")));
  EXPECT_FALSE(fs::exists(Native("Existing/file")));
  EXPECT_FALSE(RemoveFile(Path("gone")));
  EXPECT_FALSE(RemoveFile(Path("Existing")));
}

} // namespace
} // namespace kx::platform
