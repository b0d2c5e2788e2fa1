#include "package/solution/VSNETSLN.Folders.h"

#include "foundation/text/Encoding.h"
#include "tests/solution/SolutionFolder.h"

namespace kx::tests {
namespace {

using SolutionFolders = SolutionFolder;

TEST_F(SolutionFolders, AreNamedFromTheOutermostOn) {
  const auto project = [](const std::string& type, const std::string& name) {
    return "Project(\"{" + type + "}\") = \"" + name + "\", \"" + name + "\", \"{" + name +
           "}\"\nEndProject\n";
  };
  const std::string folder = "2150E333-8FDC-42A3-9474-1A3956D46DE8";
  const std::string tool = "FAE04EC0-301F-11D3-BF4B-00C04F79EFBC";
  std::string text = "\nMicrosoft Visual Studio Solution File, Format Version 11.00\n";
  for (const std::string name : {"Outer \xC3\xA9", "Inner", "Empty", "Round", "About"})
    text += project(folder, name);
  for (const std::string name : {"A", "B", "C", "D", "E"})
    text += project(tool, name);
  text += "Global\n\tGlobalSection(NestedProjects) = preSolution\n";
  for (const auto& [child, parent] : {std::pair("Inner", "Outer \xC3\xA9"),
                                      {"A", "inner"},
                                      {"B", "OUTER \xC3\xA9"},
                                      {"D", "Gone"},
                                      {"Round", "About"},
                                      {"About", "Round"},
                                      {"E", "Round"}})
    text += std::string("\t\t{") + child + "} = {" + parent + "}\n";
  text += "\tEndGlobalSection\nEndGlobal\n";
  std::string shown;
  for (const auto& [id, folders] : ReadSolutionFolders(Write("a.sln", text), nullptr)) {
    shown += text::ToUtf8(id) + ":";
    for (const auto& name : folders)
      shown += " " + text::ToUtf8(name);
    shown += "; ";
  }
  EXPECT_EQ(shown.substr(0, shown.find("{E}")), "{A}: Outer \xC3\xA9 Inner; {B}: Outer \xC3\xA9; ");
  EXPECT_THAT(shown, testing::HasSubstr("{E}: ")) << "a circle has an end";
}

} // namespace
} // namespace kx::tests
