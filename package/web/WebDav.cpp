#include "package/web/WebDav.h"

#include "foundation/platform/SharedLibrary.h"
#include "foundation/text/Exceptions.h"

namespace kx {

// The HTTP library brings some thirty others with it, which would take most of the time that the program
// needs to start: they are loaded with the first client.
std::unique_ptr<TKxWebDavClient> TKxWebDavClient::Create() {
  const auto entry =
      platform::LoadLibraryEntry(platform::LibraryBesideProgram(u"kxwebdav"), "KxNewWebDavClient");
  if (!entry) throw EKxException(entry.Message());
  return std::unique_ptr<TKxWebDavClient>(reinterpret_cast<TKxWebDavClient* (*)()>(*entry)());
}

const std::u16string& TKxWebDavClient::DownloadFolder() {
  if (!downloads_) {
    auto made = platform::PrivateFolder::Create();
    if (!made) throw EKxException(made.Message());
    downloads_ = *std::move(made);
  }
  return downloads_->Path();
}

} // namespace kx
