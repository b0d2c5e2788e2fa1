// The file of a build project (*.kxproj): XML in UTF-8, written by hand or edited in place.
#pragma once

#include "foundation/platform/Result.h"
#include "program/runner/Project.h"
#include "program/runner/SaveLock.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

// Fills a project from its file and writes changes back into the text of that file: everything that did not
// change keeps its bytes (comments, order, indentation, byte-order mark, line ends).
//
// Changed values are written where they stand; those that the file did not state behind the present elements,
// in declaration order. An action that was added states what differs from the defaults of its class, and what
// those of another machine may not be. A run never replaces a text that refers to variables by what the
// references gave; lists are written only when the user edited them, since reading them may normalise them. A
// clear-text secret in the file is taken out when its action is saved, which stores the encrypted form.
//
// Others may write the file meanwhile: another run, an editor. Whatever is saved goes into the file as it is
// then, one writer at a time (platform::FileLock). An action of that file is known by its type and name, by
// its place when all of them are the same.
class TProjectFile {
public:
  explicit TProjectFile(TProject& project); // empty; it outlives this object
  ~TProjectFile();
  TProjectFile(const TProjectFile&) = delete;
  TProjectFile& operator=(const TProjectFile&) = delete;

  // Raises EKxParseError; its message begins with file and line: "C:\nightly.kxproj(12): ...".
  void Load(std::u16string_view fileName);
  // The same from bytes; `fileName` is where the project stands, and where Save writes. `stored` is what that
  // file holds when the bytes are changed ones that nobody has saved.
  void LoadBytes(std::string bytes, std::u16string_view fileName,
                 std::optional<std::string> stored = std::nullopt);

  // The user has given a stored property of an action another value: it is compared with what was read even
  // where it is a list, or a text that has lost its references.
  void NoteEdited(const TActionNode& node, const TKxPublishedProperty& property);
  // Neither Text nor Save changes what the file says of it: the value is this run's own.
  void KeepAsItStands(const TActionNode& node, const TKxPublishedProperty& property);

  // The text of the file with the changes in it; the bytes that were read when nothing changed.
  std::string Text() const;
  // Another text of the project with the changed values of actions in it. Raises EKxException when it cannot
  // take them: an action is not in it, or one of these values is another there than it was in the file.
  std::string TextWithChanges(std::string_view other) const;

  // Writes the file, safely, when something has changed.
  platform::Status Save(const TSavePatience& patience = {});
  // For numbers that are counted up: nobody else can save the project from before `change` is called until
  // the new values are in the file. Before that the action gets those that others have stored since. A
  // project that no file holds, and an action that was never in it, have their values in memory only. When it
  // fails, the action has its values of before.
  platform::Status Change(const TActionNode& node, std::span<const std::u16string_view> properties,
                          const std::function<void()>& change, const TSavePatience& patience = {});

private:
  struct TState;
  std::unique_ptr<TState> state_;
};

} // namespace kx
