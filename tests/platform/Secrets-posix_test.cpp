#include "platform/System.h"
#include "tests/platform/TestFolder.h"

namespace kx::platform {
namespace {

namespace fs = std::filesystem;
using Secrets = TestFolder;

TEST_F(Secrets, ComeBackWithTheSameKeyOnly) {
  for (const std::string& clear : {std::string(), std::string("s\0cret", 6), std::string(5000, 'x')}) {
    const Result<std::string> secret = ProtectSecret(clear, Path("conf/key"));
    ASSERT_TRUE(secret);
    EXPECT_EQ(UnprotectSecret(*secret, Path("conf/key")), clear);
    EXPECT_EQ(UnprotectSecret(*secret, Path("missing")), std::nullopt);
    ASSERT_TRUE(ProtectSecret("x", Path("other")));
    EXPECT_EQ(UnprotectSecret(*secret, Path("other")), std::nullopt);
    EXPECT_NE(*secret, *ProtectSecret(clear, Path("conf/key")))
        << "the same text must not look the same twice";
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
  const std::string secret = *ProtectSecret("password", Path("conf/key"));
  const std::string key = Read("conf/key");
  EXPECT_EQ(fs::status(Native("conf/key")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(std::distance(fs::directory_iterator(Native("conf")), {}), 1)
      << "a temporary file was left behind";

  fs::permissions(Native("conf/key"), fs::perms::group_read, fs::perm_options::add);
  const Result<std::string> refused = ProtectSecret("password", Path("conf/key"));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Message(),
            u"Cannot use file " + Path("conf/key") + u". Others than its owner have access to it");
  EXPECT_EQ(UnprotectSecret(secret, Path("conf/key")), std::nullopt);
  EXPECT_EQ(Read("conf/key"), key);

  fs::permissions(Native("conf/key"), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(UnprotectSecret(secret, Path("conf/key")), "password");
  fs::resize_file(Native("conf/key"), 31);
  EXPECT_FALSE(ProtectSecret("password", Path("conf/key")));
}

TEST_F(Secrets, SayWhyNoKeyCanBeMade) {
  Write("file");
  const Result<std::string> secret = ProtectSecret("x", Path("file/key"));
  ASSERT_FALSE(secret);
  EXPECT_EQ(secret.Message(), u"Cannot create file " + Path("file/key") + u". Not a directory");
}

} // namespace
} // namespace kx::platform
