// Resource scripts: the block of version information.
#pragma once

#include "foundation/text/StringList.h"
#include "package/versioninfo/VersionInfo.h"

#include <exception>
#include <memory>
#include <optional>
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
  // What Save would change or leave out though `info` does not ask for it: whole messages ("Warning : ..."),
  // for the log before the file is written. Raises as Parse does.
  virtual text::TStringList FindLosses(const IVersionInformation& info) = 0;
  // Replaces the version block, or adds one at the end; all other lines stay. True when the file is written:
  // with CR LF, in the ANSI code page whatever it was before, but in UTF-8 where a pragma of the script says
  // so and all of it is that. The file as it was before the first Save is kept beside it with ".orig" behind
  // its name; one of which Save loses something, in ".orig2" and so on where that is another. Raises as Parse
  // does; then the file is unchanged.
  virtual bool Save(const IVersionInformation& info) = 0;
  virtual void SetCallback(std::shared_ptr<IKxVersionInfoCallback> callback) = 0;
  // What the user should know about the file that the last Save wrote: whole messages ("Warning : ..."), for
  // the log once the step is over.
  virtual const text::TStringList& GetWarnings() const = 0;
};

// Where a script that is refused is, and why, as a message ("Warning : ...") beside the error's; nothing for
// errors that say it themselves.
std::optional<std::u16string> WhereRefused(const std::exception& error);

std::shared_ptr<IKxVersionInfoParser> GetVersionInfoParser(std::shared_ptr<IKxVersionInfoCallback> callback,
                                                           std::u16string_view fileName);

} // namespace kx
