#include "platform/PrivateFolder.h"

#include "platform/Files.h"
#include "platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <optional>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class PrivateFolderTest : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(PrivateFolderTest, IsItsUsersAloneAndGoesAwayWithAllThatIsInIt) {
  Write("elsewhere/kept.cs", "kept");
  std::optional<PrivateFolder> first = *PrivateFolder::Create();
  const PrivateFolder second = *PrivateFolder::Create();
  EXPECT_NE(first->Path(), second.Path());
  const fs::path path(first->Path());
  EXPECT_TRUE(IsWindows() || fs::status(path).permissions() == fs::perms::owner_all);
  fs::create_directories(path / "below");
  ASSERT_TRUE(SaveFile((path / "below" / "a.cs").u16string(), "x"));
  std::error_code error; // Windows makes links only for some users
  fs::create_directory_symlink(Native("elsewhere"), path / "link", error);
  PrivateFolder moved = *std::move(first);
  first.reset();
  EXPECT_TRUE(fs::exists(path)) << "the object that it was moved into owns it";
  { const PrivateFolder last = std::move(moved); }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(second.Path()));
  EXPECT_EQ(Read("elsewhere/kept.cs"), "kept");
}

} // namespace
} // namespace kx::platform
