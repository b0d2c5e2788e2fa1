// Resource scripts: the block of version information.
#pragma once

#include "host/VersionInfo.h"

#include <memory>
#include <string>

namespace kx {

// One script. Nothing is read before Parse, which reads the file anew each time. What was reported before a
// failure stays reported.
class IKxVersionInfoParser {
public:
  virtual ~IKxVersionInfoParser() = default;
  // Always False. Raises EKxParseError with the line that does not fit, or EKxException naming a file that
  // cannot be read. A script without a version block reports nothing.
  virtual bool Parse() = 0;
  virtual void SetCallback(std::shared_ptr<IKxVersionInfoCallback> callback) = 0;
};

std::shared_ptr<IKxVersionInfoParser> GetVersionInfoParser(std::shared_ptr<IKxVersionInfoCallback> callback,
                                                           std::u16string_view fileName);

} // namespace kx
