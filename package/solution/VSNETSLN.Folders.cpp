#include "package/solution/VSNETSLN.Folders.h"

#include "package/solution/VSNETSLN.Lines.h"
#include "package/solution/VSNETSLN.Syntax.h"

#include <set>

namespace kx {

namespace {

using slnsyntax::Trim;

class TFolderReader {
public:
  TFolderReader(std::u16string_view fileName, const TKxEvent* stop) : lines_(fileName, stop) {}

  TSolutionFolders Read() {
    while (lines_.Next()) {
      const std::string_view line = Trim(lines_.Line());
      if (line.starts_with("Project(\""))
        ReadProject(line.substr(9));
      else if (line.starts_with("GlobalSection(NestedProjects)"))
        ReadNesting();
    }
    TSolutionFolders folders;
    for (const auto& [id, parent] : parents_)
      if (!names_.contains(id)) AddWay(parent, folders[id]);
    std::erase_if(folders, [](const auto& entry) { return entry.second.empty(); });
    return folders;
  }

private:
  using TNames = std::map<std::u16string, std::u16string, text::IgnoreCaseLess>;

  void ReadProject(std::string_view line) {
    cut_.Cut(line);
    if (!slnsyntax::IsFolderType(cut_.Identifier())) return;
    const auto declared = slnsyntax::SplitNameValue(cut_.Rest());
    if (declared && items_.Split(Trim(declared->Value)) == slnsyntax::TCommaItems::Most)
      names_.emplace(text::FromUtf8(items_[2]), text::FromUtf8(items_[0]));
  }

  void ReadNesting() {
    while (lines_.Next() && Trim(lines_.Line()) != "EndGlobalSection")
      if (const auto line = slnsyntax::SplitNameValue(lines_.Line()))
        parents_.emplace(text::FromUtf8(Trim(line->Name)), text::FromUtf8(Trim(line->Value)));
  }

  // Folders in a circle have no outermost one: each is named once.
  void AddWay(std::u16string folder, std::vector<std::u16string>& way) const {
    std::set<std::u16string, text::IgnoreCaseLess> named;
    while (named.insert(folder).second) {
      const auto name = names_.find(folder);
      if (name == names_.end()) break;
      way.insert(way.begin(), name->second);
      const auto parent = parents_.find(folder);
      if (parent == parents_.end()) break;
      folder = parent->second;
    }
  }

  TSolutionLines lines_;
  slnsyntax::TIdentifierCut cut_;
  slnsyntax::TCommaItems items_;
  TNames names_;   // of folders
  TNames parents_; // of what stands in a folder
};

} // namespace

TSolutionFolders ReadSolutionFolders(std::u16string_view fileName, const TKxEvent* stop) {
  return TFolderReader(fileName, stop).Read();
}

} // namespace kx
