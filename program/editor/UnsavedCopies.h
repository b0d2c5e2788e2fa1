// What was not saved when the editor ended: kept beside the project ("nightly.unsaved.kxproj",
// "nightly.unsaved-2.kxproj"), and offered when the project is edited again.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

// Full paths, in the order in which they were kept.
std::vector<std::u16string> FindUnsavedCopies(std::u16string_view projectFile);
// Of a name that no file has yet, for those alone who have access to the project. Raises EKxException.
std::u16string KeepUnsavedCopy(std::u16string_view projectFile, std::string_view text);

} // namespace kx::editor
