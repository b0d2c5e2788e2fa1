#include "foundation/platform/Secrets.h"
#include "foundation/platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

class Secrets : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(Secrets, ComeBackAndNeverLookTheSame) {
  for (const std::string& clear : {std::string(), std::string("s\0cret", 6), std::string(5000, 'x')}) {
    const Result<std::string> secret = ProtectSecret(clear, Path("key"));
    EXPECT_EQ(UnprotectSecret(*secret, Path("key")), clear);
    EXPECT_NE(*secret, *ProtectSecret(clear, Path("key")));
  }
}

TEST_F(Secrets, GiveNothingWhenAnyByteChanged) {
  const std::string secret = *ProtectSecret("password", Path("key"));
  for (std::size_t i = 0; i < secret.size(); ++i) {
    std::string changed = secret;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    // Windows does not look at every byte around the secret.
    const auto opened = UnprotectSecret(changed, Path("key"));
    EXPECT_TRUE(!opened || (IsWindows() && opened == "password")) << i;
    EXPECT_EQ(UnprotectSecret(secret.substr(0, i), Path("key")), std::nullopt) << i;
  }
}

TEST_F(Secrets, ComeBackWithTheSameKeyFileOfTheOwnersOnly) {
  if (IsWindows()) GTEST_SKIP() << "the system keeps the key";
  namespace fs = std::filesystem;
  ASSERT_TRUE(ProtectSecret("x", Path("other")));
  const std::string secret = *ProtectSecret("password", Path("conf/key"));
  EXPECT_EQ(UnprotectSecret(secret, Path("missing")), std::nullopt);
  EXPECT_EQ(UnprotectSecret(secret, Path("other")), std::nullopt);
  EXPECT_FALSE(fs::exists(Native("missing"))) << "reading makes no key";
  EXPECT_EQ(fs::status(Native("conf/key")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(Native("conf/key"), fs::perms::group_read, fs::perm_options::add);
  EXPECT_EQ(ProtectSecret("password", Path("conf/key")).Message(),
            u"Cannot use file " + Path("conf/key") + u". Others than its owner have access to it");
  EXPECT_EQ(UnprotectSecret(secret, Path("conf/key")), std::nullopt);
}

} // namespace
} // namespace kx::platform
