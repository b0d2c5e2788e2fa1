#include "foundation/platform/Secrets.h"

#include "foundation/platform/Win32.h"

#include <wincrypt.h>

namespace kx::platform {

namespace {

DATA_BLOB BlobOf(std::string_view bytes) {
  // The functions that take it only read.
  return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

// What one of the functions below has made, wiped when it was taken.
std::string TakeBytes(const DATA_BLOB& blob) {
  std::string bytes(reinterpret_cast<const char*>(blob.pbData), blob.cbData);
  SecureZeroMemory(blob.pbData, blob.cbData);
  LocalFree(blob.pbData);
  return bytes;
}

} // namespace

Result<std::string> ProtectSecret(std::string_view clear, std::u16string_view /*keyFile*/) {
  DATA_BLOB in = BlobOf(clear);
  DATA_BLOB out{};
  if (CryptProtectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out) == FALSE)
    return Failure{u"The secret cannot be encrypted. " + win32::Reason(GetLastError())};
  return TakeBytes(out);
}

std::optional<std::string> UnprotectSecret(std::string_view secret, std::u16string_view /*keyFile*/) {
  DATA_BLOB in = BlobOf(secret);
  DATA_BLOB out{};
  if (CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out) == FALSE)
    return std::nullopt;
  return TakeBytes(out);
}

} // namespace kx::platform
