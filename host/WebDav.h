// The host's WebDAV client. It comes with web projects; until then nothing makes one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kx {

// One server, one user. Set the fields, then Connect. Operations return False on failure and leave the reason
// in LastErrorText.
class TKxWebDavClient {
public:
  static std::unique_ptr<TKxWebDavClient> Create();
  virtual ~TKxWebDavClient() = default;

  std::u16string ServerName;
  std::int32_t ServerPort = 80;
  std::u16string UserName;
  std::u16string Password;

  virtual bool Connect() = 0;
  virtual bool Disconnect() = 0;
  // A remote name that ends in "/" is a folder: the file keeps its name.
  virtual bool UploadFile(std::u16string_view local, std::u16string_view remote) = 0;
  virtual bool DownloadFile(std::u16string_view remote, std::u16string_view local) = 0;
  virtual std::u16string LastErrorText() const = 0;
};

} // namespace kx
