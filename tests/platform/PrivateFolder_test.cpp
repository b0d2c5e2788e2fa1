#include "foundation/platform/PrivateFolder.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
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

TEST_F(PrivateFolderTest, OfKilledProgramsIsRemovedByTheNext) {
  PrivateFolder kept = *PrivateFolder::Create(), living = *PrivateFolder::Create();
  const fs::path keptPath(kept.Path()), below = keptPath.parent_path();
  kept.Keep();
  const struct {
    const char* Name;
    fs::path Path;
    fs::perms Mode;
    bool IsRemoved;
  } rows[] = {
      {"abandoned", below / "kx-0abandoned00", fs::perms::owner_all, true},
      {"open to others", below / "kx-open0to0them", fs::perms(0755), IsWindows()},
      {"another name", below / "kx-another", fs::perms::owner_all, false},
      {"kept to be looked at", keptPath, fs::perms::owner_all, false},
      {"its owner lives", living.Path(), fs::perms::owner_all, false},
  };
  std::error_code young; // the library of mingw-w64 cannot give a folder another time
  for (const auto& row : rows) {
    fs::create_directories(row.Path / "below");
    fs::permissions(row.Path, row.Mode);
    fs::last_write_time(row.Path, fs::file_time_type::clock::now() - std::chrono::hours(1), young);
  }
  ASSERT_TRUE(!young || IsWindows()) << young.message();
  PrivateFolder::RemoveAbandoned();
  for (const auto& row : rows) {
    EXPECT_EQ(fs::exists(row.Path), young || !row.IsRemoved) << row.Name;
    std::error_code error;
    if (row.Path != living.Path()) fs::remove_all(row.Path, error);
  }
}

} // namespace
} // namespace kx::platform
