#include "foundation/platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class PosixSecrets : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(PosixSecrets, ComeBackWithTheSameKeyOnly) {
  ASSERT_TRUE(ProtectSecret("x", Path("other")));
  const Result<std::string> secret = ProtectSecret("x", Path("conf/key"));
  EXPECT_EQ(UnprotectSecret(*secret, Path("missing")), std::nullopt);
  EXPECT_EQ(UnprotectSecret(*secret, Path("other")), std::nullopt);
  EXPECT_FALSE(fs::exists(Native("missing"))) << "reading makes no key";
}

TEST_F(PosixSecrets, UseAKeyFileOfTheOwnersOnly) {
  const std::string secret = *ProtectSecret("password", Path("key"));
  EXPECT_EQ(fs::status(Native("key")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(Native("key"), fs::perms::group_read, fs::perm_options::add);
  EXPECT_EQ(ProtectSecret("password", Path("key")).Message(),
            u"Cannot use file " + Path("key") + u". Others than its owner have access to it");
  EXPECT_EQ(UnprotectSecret(secret, Path("key")), std::nullopt);
}

} // namespace
} // namespace kx::platform
