#include "program/editor/UnsavedCopies.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

namespace kx::editor {

namespace {

std::u16string NameOfCopy(std::u16string_view projectFile, int number) {
  const std::u16string suffix = number == 1 ? u"" : u"-" + text::FromInteger(number);
  return text::ChangeFileExt(projectFile, u".unsaved" + suffix + u".kxproj");
}

} // namespace

// Somebody may have removed one of them, so that numbers are missing: a few more are tried.
std::vector<std::u16string> FindUnsavedCopies(std::u16string_view projectFile) {
  constexpr int gap = 10;
  std::vector<std::u16string> found;
  int last = 0;
  for (int number = 1; number <= last + gap; ++number) {
    std::u16string name = NameOfCopy(projectFile, number);
    if (!platform::FileExists(name)) continue;
    found.push_back(std::move(name));
    last = number;
  }
  return found;
}

// Another editor may end at the same time.
std::u16string KeepUnsavedCopy(std::u16string_view projectFile, std::string_view text) {
  for (int number = 1;; ++number) {
    std::u16string name = NameOfCopy(projectFile, number);
    const auto made = platform::SaveNewFile(name, text, projectFile);
    if (!made) throw EKxException(made.Message());
    if (*made) return name;
  }
}

} // namespace kx::editor
