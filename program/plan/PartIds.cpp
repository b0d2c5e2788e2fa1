#include "program/plan/PartIds.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx {

namespace {

// "Lib" of "C:\src\Lib\Lib.csproj".
std::u16string ShortOf(const std::u16string& value) {
  if (value.find_first_of(u"\\/") == value.npos) return value;
  const std::u16string file(text::ExtractFileName(value));
  return file.substr(0, file.rfind(u'.'));
}

} // namespace

std::vector<TKxPass> PassesOf(const TActionNode& node) {
  if (!node.Terms().IsParallel || node.Iterator() == nullptr) return {};
  return node.Iterator()->Passes().value_or(std::vector<TKxPass>());
}

std::u16string InOneLine(std::u16string text) {
  std::ranges::replace_if(
      text, [](char16_t c) { return c < u' ' || (c >= u'\x7F' && c < u'\xA0'); }, u' ');
  return text;
}

TPartIds::TPartIds(const TProject& project) {
  for (const auto& node : project.Actions())
    ofActions_.push_back(Take(InOneLine(node->DisplayName())));
}

std::u16string TPartIds::OfPass(std::size_t place, const std::u16string& value) {
  return Take(Of(place) + u"/" + InOneLine(ShortOf(value)));
}

TPartFinder::TPartFinder(const TProject& project) : project_(project), ids_(project) {
  for (std::size_t place = 0; place < project.Actions().size(); ++place)
    actions_.emplace(ids_.Of(place), place);
}

std::optional<TPartOfRun> TPartFinder::Find(const std::u16string& id) {
  for (std::size_t end = id.find(u'/'); end != id.npos; end = id.find(u'/', end + 1))
    AddPartsOf(id.substr(0, end));
  AddPartsOf(id);
  const auto part = parts_.find(id);
  return part == parts_.end() ? std::nullopt : std::optional(part->second);
}

void TPartFinder::AddPartsOf(const std::u16string& action) {
  const auto known = actions_.extract(action);
  if (known.empty()) return;
  const std::size_t place = known.mapped();
  const auto passes = PassesOf(*project_.Actions()[place]);
  if (passes.empty()) parts_.emplace(known.key(), TPartOfRun{.Place = place});
  for (std::size_t i = 0; i < passes.size(); ++i)
    parts_.emplace(ids_.OfPass(place, passes[i].Value),
                   TPartOfRun{.Place = place, .Pass = static_cast<int>(i) + 1});
}

} // namespace kx
