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

} // namespace
} // namespace kx::platform
