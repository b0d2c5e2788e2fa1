// Resource scripts: the block of version information.
#pragma once

#include "host/VersionInfo.h"
#include "text/StringList.h"

#include <memory>
#include <string>

namespace kx {

// One script. Nothing is read before Parse and Save, which read the file anew each time. What was reported
// before a failure stays reported.
class IKxVersionInfoParser {
public:
  virtual ~IKxVersionInfoParser() = default;
  // Always False. Raises EKxParseError with the line that does not fit, or EKxException naming a file that
  // cannot be read. A script without a version block reports nothing.
  virtual bool Parse() = 0;
  // Replaces the version block, or adds one at the end; all other lines stay. True when the file is written:
  // in the ANSI code page, with CR LF, whatever it was before. The file as it was before the first Save is
  // kept beside it with ".orig" behind its name. Raises as Parse does; then the file is unchanged.
  virtual bool Save(const IVersionInformation& info) = 0;
  virtual void SetCallback(std::shared_ptr<IKxVersionInfoCallback> callback) = 0;
  // What the user should know about the file that the last Save wrote: whole messages ("Warning : ..."), for
  // the log once the step is over.
  virtual const text::TStringList& GetWarnings() const = 0;
};

std::shared_ptr<IKxVersionInfoParser> GetVersionInfoParser(std::shared_ptr<IKxVersionInfoCallback> callback,
                                                           std::u16string_view fileName);

} // namespace kx
