// Where web servers publish their folders: the system's directory service, else the configuration file of an
// IIS that the option WebSites.ApplicationHostConfig names.
#pragma once

#include "contract/Services.h"
#include "program/runner/OptionsStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx {

inline TOptionName ApplicationHostConfigOption() {
  return {u"WebSites", u"ApplicationHostConfig"};
}

// The file is an applicationHost.config (IIS 7 and later): sites/site[@id]/application[@path]/
// virtualDirectory[@path and @physicalPath]. It stands for the server of every address. Applications and
// virtual directories are objects of the class "IIsWebVirtualDir"; what lies below one is an
// "IIsWebDirectory", whether or not the folder exists, since the server's disk need not be this machine's.
class TWebSites : public IKxDirectoryService {
public:
  explicit TWebSites(const TOptionsStore& store); // which outlives it
  // Raises EKxException for a file that cannot be read.
  std::optional<platform::DirectoryObject> FindObject(std::u16string_view path) override;

private:
  const TOptionsStore& store_;
};

} // namespace kx
