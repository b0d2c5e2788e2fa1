// The file of a build project (*.kxproj): XML in UTF-8, written by hand or edited in place.
#pragma once

#include "platform/Result.h"
#include "runner/Project.h"

#include <memory>
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
class TProjectFile {
public:
  explicit TProjectFile(TProject& project); // empty; it outlives this object
  ~TProjectFile();
  TProjectFile(const TProjectFile&) = delete;
  TProjectFile& operator=(const TProjectFile&) = delete;

  // Raises EKxParseError; its message begins with file and line: "C:\nightly.kxproj(12): ...".
  void Load(std::u16string_view fileName);
  // The same from bytes; `fileName` is where the project stands, and where Save writes.
  void LoadBytes(std::string bytes, std::u16string_view fileName);

  // The user has given a stored property of an action another value: it is compared with what was read even
  // where it is a list, or a text that has lost its references.
  void NoteEdited(const TActionNode& node, const TKxPublishedProperty& property);

  // The text of the file with the changes in it; the bytes that were read when nothing changed.
  std::string Text() const;
  // Writes the file, safely, when something has changed.
  platform::Status Save();

private:
  struct TState;
  std::unique_ptr<TState> state_;
};

} // namespace kx
