// The host's WebDAV client (libcurl).
#pragma once

#include "contract/Process.h"
#include "foundation/platform/PrivateFolder.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// One server, one user, over HTTP or HTTPS. Set the fields, then Connect. Operations return False on failure
// and leave the reason in LastErrorText: what was tried, the address (never the password) and the server's or
// the system's answer.
//
// HTTPS (TLS 1.2 or later) wants a certificate for the server's name that an authority of the system vouches
// for; SSL_CERT_FILE names a file (PEM) of authorities to take instead, as for other programs. No redirect
// leads to another server, scheme or port. The variables http_proxy, https_proxy and no_proxy hold, too.
//
// Remote names are plain text from the server's root, "/folder/a b.cs"; the client encodes them.
class TKxWebDavClient {
public:
  static std::unique_ptr<TKxWebDavClient> Create();
  virtual ~TKxWebDavClient() = default;

  std::u16string ServerName;
  bool IsSecure = false; // HTTPS
  std::int32_t ServerPort = 80;
  std::u16string UserName; // empty: no authentication
  std::u16string Password;
  const TKxEvent* StopEvent = nullptr; // ends a transfer early; outlives the client
  std::chrono::seconds ConnectTimeout{30};
  std::chrono::seconds StallTimeout{60};               // without a byte either way
  std::uint64_t MaximumSize = std::uint64_t{64} << 20; // of a download, in bytes

  // Whether the server answers at all and takes the user's name and password.
  virtual bool Connect() = 0;
  virtual bool Disconnect() = 0;
  // A remote name that ends in "/" is a folder: the file keeps its name. A dry run sends nothing.
  virtual bool UploadFile(std::u16string_view local, std::u16string_view remote) = 0;
  // The local file is written whole or not at all.
  virtual bool DownloadFile(std::u16string_view remote, std::u16string_view local) = 0;
  virtual std::u16string LastErrorText() const = 0;

  // Where this client's downloads lie: a folder that only this user gets into, made at the first call and
  // removed with the client. Raises EKxException when it cannot be made.
  const std::u16string& DownloadFolder();

private:
  std::optional<platform::PrivateFolder> downloads_;
};

} // namespace kx
