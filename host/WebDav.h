// The host's WebDAV client.
#pragma once

#include <string>
#include <string_view>

namespace kx {

// One server, one user. Operations return False on failure and leave the reason in GetLastError.
class IKxWebDavClient {
public:
  virtual ~IKxWebDavClient() = default;
  virtual bool Connect(std::u16string_view server, int port, std::u16string_view user,
                       std::u16string_view password) = 0;
  virtual void Disconnect() = 0;
  // A remote name that ends in "/" is a folder: the file keeps its name.
  virtual bool UploadFile(std::u16string_view local, std::u16string_view remote) = 0;
  virtual bool DownloadFile(std::u16string_view remote, std::u16string_view local) = 0;
  virtual std::u16string GetLastError() const = 0;
};

} // namespace kx
