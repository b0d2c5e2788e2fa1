// What the browser is told about projects, pages and fields.
#pragma once

#include "program/editor/EditedProject.h"
#include "program/editor/FileChooser.h"
#include "program/editor/SourceLines.h"
#include "program/runner/ServiceRegistry.h"

#include <nlohmann/json.hpp>

namespace kx::editor {

using TJson = nlohmann::json;

// "2/0": how the browser names an action. Raises EKxException for anything else.
std::string PathText(const TActionPath& path);
TActionPath ParsePath(std::string_view text);
// The same for a row, which may be a group, by its id in the tree.
TRowPath RowOfId(const TProjectText& text, std::string_view id);
std::string IdOfRow(const TProjectText& text, const TRowPath& row);

// Secrets have no value here; nobody gets one out of the program.
TJson PageJson(const TKxPropertyPage& page);
// The fields of the pages of one action get the values ("default") that they have in `defaults`, its pages
// when nothing of it is set.
void AddDefaults(TJson& pages, const TPages& defaults);
// Pages of one name get their first heading behind it.
void TellApart(TJson& pages);
TJson OffersJson(const TKxFieldOffers& offers);
TKxButtonKind ParseButton(std::string_view name);

// How the action is run, an attribute each; without its value an attribute is empty.
TJson TermsJson(const TActionNode& node, bool isOutermost);
// What the page shows and sends of an action that needs nothing, which is not the same as nothing said.
inline constexpr std::u16string_view NoNeeds = u",";

// What the project consists of, as the page shows it: actions, and groups ("g0", the first) around theirs.
TJson TreeJson(const TProject& project, const TProjectText& text);
TJson VariablesJson(const TProject& project);
TJson PropertySetsJson(const TProjectText& text);
TJson ActionTypesJson(const TServiceRegistry& services);

// Each entry with its action ("id") and, where the words of its place fit one, the page and the field.
// The entries are of `validated`, a copy of the project.
TJson ValidationJson(const std::vector<TValidationEntry>& entries, const TEditedProject& validated,
                     TEditedProject& project);

TJson FolderJson(const TChooserFolder& folder);
TJson SourceJson(const TSourceLines& source);

} // namespace kx::editor
