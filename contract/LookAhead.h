// What a host that looks ahead over a whole project knows of the run in which an action would stand.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace kx {

// A collector of validation entries may be one of these, too; an action asks it by a cast.
class IKxForeseenRun {
public:
  virtual ~IKxForeseenRun() = default;
  // Actions of other kinds run before this one: a build may make the files that are missing now.
  virtual bool MayMakeFilesBefore() const = 0;
};

// Held by a host that asks many actions what they would do, while nothing changes: what one of them has read
// for its answer, the next one need not read again. Is about the thread that made it, until it goes away.
class TKxAskingScope {
public:
  TKxAskingScope();
  ~TKxAskingScope();
  TKxAskingScope(const TKxAskingScope&) = delete;
  TKxAskingScope& operator=(const TKxAskingScope&) = delete;

  // What `read` gives; in a scope, what it gave the last time, when the key is the same. Raises what it
  // raises.
  static std::shared_ptr<void> Read(const std::u16string& key,
                                    const std::function<std::shared_ptr<void>()>& read);

private:
  TKxAskingScope* const around_;
  std::u16string key_;
  std::shared_ptr<void> last_;
};

} // namespace kx
