#include "foundation/platform/Secrets.h"

#include "foundation/platform/Posix.h"

#include <array>
#include <sodium.h>

namespace kx::platform {

namespace {

// The form of what ProtectSecret gives: this byte, the nonce, the sealed box.
constexpr char kFormat = 1;
constexpr std::size_t kHeader = 1 + crypto_secretbox_NONCEBYTES;

const unsigned char* AsBytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* AsBytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

// A key in memory, wiped when it is no longer used.
struct Key {
  explicit Key(std::string bytes) : Bytes(std::move(bytes)) {}
  Key(Key&&) noexcept = default;
  Key(const Key&) = delete;
  Key& operator=(Key&&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() { sodium_memzero(Bytes.data(), Bytes.size()); }

  std::string Bytes;
};

Result<Key> ReadKey(std::u16string_view keyFile) {
  Result<std::string> bytes = posix::ReadPrivateFile(keyFile);
  if (!bytes) return Failure{bytes.Message()};
  if (bytes->size() != crypto_secretbox_KEYBYTES)
    return FileFailure(u"use file", keyFile, u"It holds no key");
  return Key(*std::move(bytes));
}

// Made when it is missing. Read back in any case, since another process may have made it at the same moment.
Result<Key> ReadOrMakeKey(std::u16string_view keyFile) {
  if (!posix::FindNative(keyFile)) {
    Key fresh(std::string(crypto_secretbox_KEYBYTES, '\0'));
    crypto_secretbox_keygen(AsBytes(fresh.Bytes));
    const Status made = posix::CreatePrivateFile(keyFile, fresh.Bytes);
    if (!made) return Failure{made.Message()};
  }
  return ReadKey(keyFile);
}

} // namespace

Result<std::string> ProtectSecret(std::string_view clear, std::u16string_view keyFile) {
  if (sodium_init() < 0) return Failure{u"The encryption library cannot be used"};
  Result<Key> key = ReadOrMakeKey(keyFile);
  if (!key) return Failure{key.Message()};
  std::string secret(kHeader + crypto_secretbox_MACBYTES + clear.size(), kFormat);
  unsigned char* nonce = AsBytes(secret) + 1;
  randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
  crypto_secretbox_easy(AsBytes(secret) + kHeader, AsBytes(clear), clear.size(), nonce, AsBytes(key->Bytes));
  return secret;
}

std::optional<std::string> UnprotectSecret(std::string_view secret, std::u16string_view keyFile) {
  if (sodium_init() < 0) return std::nullopt;
  if (secret.size() < kHeader + crypto_secretbox_MACBYTES || secret.front() != kFormat) return std::nullopt;
  Result<Key> key = ReadKey(keyFile);
  if (!key) return std::nullopt;
  const std::string_view box = secret.substr(kHeader);
  std::string clear(box.size() - crypto_secretbox_MACBYTES, '\0');
  const int opened = crypto_secretbox_open_easy(AsBytes(clear), AsBytes(box), box.size(), AsBytes(secret) + 1,
                                                AsBytes(key->Bytes));
  return opened == 0 ? std::optional(std::move(clear)) : std::nullopt;
}

} // namespace kx::platform
