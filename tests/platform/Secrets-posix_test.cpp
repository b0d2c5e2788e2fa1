#include "platform/System.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;

class Secrets : public testing::Test, protected tests::TTemporaryFolder {};

TEST_F(Secrets, ComeBackWithTheSameKeyOnly) {
  ASSERT_TRUE(ProtectSecret("x", Path("other")));
  for (const std::string& clear : {std::string(), std::string("s\0cret", 6), std::string(5000, 'x')}) {
    const Result<std::string> secret = ProtectSecret(clear, Path("conf/key"));
    EXPECT_EQ(UnprotectSecret(*secret, Path("conf/key")), clear);
    EXPECT_EQ(UnprotectSecret(*secret, Path("missing")), std::nullopt);
    EXPECT_EQ(UnprotectSecret(*secret, Path("other")), std::nullopt);
    EXPECT_NE(*secret, *ProtectSecret(clear, Path("conf/key"))) << "the same text looks the same twice";
  }
  EXPECT_FALSE(fs::exists(Native("missing"))) << "reading makes no key";
}

TEST_F(Secrets, GiveNothingWhenAnyByteChanged) {
  const std::string secret = *ProtectSecret("password", Path("key"));
  for (std::size_t i = 0; i < secret.size(); ++i) {
    std::string changed = secret;
    changed[i] = static_cast<char>(changed[i] ^ 1);
    EXPECT_EQ(UnprotectSecret(changed, Path("key")), std::nullopt) << i;
    EXPECT_EQ(UnprotectSecret(secret.substr(0, i), Path("key")), std::nullopt) << i;
  }
}

TEST_F(Secrets, UseAKeyFileOfTheOwnersOnly) {
  const std::string secret = *ProtectSecret("password", Path("key"));
  EXPECT_EQ(fs::status(Native("key")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(Native("key"), fs::perms::group_read, fs::perm_options::add);
  EXPECT_EQ(ProtectSecret("password", Path("key")).Message(),
            u"Cannot use file " + Path("key") + u". Others than its owner have access to it");
  EXPECT_EQ(UnprotectSecret(secret, Path("key")), std::nullopt);
}

} // namespace
} // namespace kx::platform
