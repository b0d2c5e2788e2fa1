// How a project names files: so that it can be moved with what lies around it.
#pragma once

#include <string>
#include <string_view>

namespace kx::editor {

// What to write for `path`, a full path, into a field of a project that stands in `folder`: relative to the
// folder when the path lies in it, or in one that is at most two folders above; else the full path. A field
// whose relative paths mean something else (`isSeenFromProject` is False) gets %ProjectDir% in front. "%" and
// "$" of names stand for themselves.
std::u16string PathForProject(std::u16string_view path, std::u16string_view folder, bool isSeenFromProject);

// Whether the text refers to a variable, so that only a run knows its path.
bool HasReferences(std::u16string_view text);

} // namespace kx::editor
