// What a line of a tool's output says is wrong, told by the line's form.
#pragma once

#include "program/findings/Finding.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx {

// Reads the forms that compilers, linkers and build tools share:
//
//   file(line,column): [subcategory] category code: text [project]     with ranges, as MSBuild documents it
//   origin : category code: text                                       a file or a tool, "LINK", "cl"
//   file:line:column: category: text [-Woption]                        gcc and clang
//   category code: text
//   file(line): see declaration of 'x'                                 a note
//
// Before them may stand time stamps, colours, "12>" of a parallel build and what CI systems put before lines.
// The category is a word of one of many languages; one that is in none of them is an error where place and
// code stand around it. A tool's name in the place of a file is no place; a file is seen from the folder of
// the project that MSBuild names. Project, place, code, message and severity are set; the rule is the code,
// else "tool-error", "tool-warning" or "tool-note". Nothing for any other line. Linear; a line without such a
// colon costs a look at its characters.
std::optional<TFinding> ReadDiagnostic(std::u16string_view line);

// Whether a note says no more than where to look for the finding before it.
bool IsPartOfFindingBefore(const TFinding& note);

// "12" of a line that begins "12>"; 0 for none.
int BuildNumberOf(std::u16string_view line);

} // namespace kx
