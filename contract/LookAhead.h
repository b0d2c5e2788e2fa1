// What a host that looks ahead over a whole project knows of the run in which an action would stand.
#pragma once

namespace kx {

// A collector of validation entries may be one of these, too; an action asks it by a cast.
class IKxForeseenRun {
public:
  virtual ~IKxForeseenRun() = default;
  // Actions of other kinds run before this one: a build may make the files that are missing now.
  virtual bool MayMakeFilesBefore() const = 0;
};

} // namespace kx
