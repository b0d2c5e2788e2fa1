// The form of project files as an XML Schema (XSD 1.0), for editors that complete and check what is typed.
#pragma once

#include "program/runner/Project.h"

#include <string>

namespace kx {

// UTF-8. The properties of all action types that are registered, with their help. `scratch` is a project
// without actions; afterwards it holds one of each type. The schema is stricter than the program where letter
// case does not count, and knows no property by the type of its action: that needs more than XSD 1.0.
std::string ProjectSchema(TProject& scratch);

} // namespace kx
