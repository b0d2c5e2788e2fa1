// A solution file: two readings give the same model, its line ends do not matter, and the order of the build
// is that of the plain definition.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "package/solution/VSNETSLN.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <optional>

namespace kx::fuzz {
namespace {

using TProjects = std::vector<std::shared_ptr<IVSDotNetProject>>;

TProjects InFileOrder(const IVSDotNetSolution& solution) {
  TProjects projects;
  const auto all = solution.GetProjects();
  for (int i = 0; i < all->GetCount(); ++i)
    projects.push_back(all->GetItemInFileOrder(i));
  return projects;
}

void Describe(const IVSDotNetProject& project, std::u16string& text) {
  for (const auto& part :
       {project.GetName(), project.GetFileName(), project.GetProjectID(), project.GetProjectTypeID()})
    text += part + u"|";
  for (const auto& id : project.GetDependancies()->GetList())
    text += u" needs " + id;
  for (int i = 0; i < project.GetConfigCount(); ++i) {
    const auto config = project.GetConfigItem(i);
    text.append(u" ").append(config.Solution).append(u"=").append(config.Project);
    if (config.Active) text += u" active";
    Require(text::EqualsIgnoreCase(project.GetConfig(config.Solution), config.Project),
            "a configuration is found by its name");
  }
  text += u"\n";
}

std::u16string Describe(const IVSDotNetSolution& solution) {
  std::u16string text = text::FromInteger(static_cast<int>(solution.GetVisualStudioVersion())) + u"\n";
  if (const auto configurations = solution.GetConfigurations())
    for (int i = 0; i < configurations->GetCount(); ++i)
      text += configurations->GetItem(i)->GetName() + u"\n";
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i)
    Describe(*projects->GetItem(i), text);
  for (const auto& missing : solution.GetProjectsNotFound())
    text += missing->GetName() + u"|" + missing->GetFileName() + u"|" + missing->GetProjectID() + u"\n";
  return text;
}

// The exchanges as they are told; nothing when they do not end soon.
std::optional<TProjects> OrderedByPlainExchanges(TProjects projects) {
  int exchanges = 0;
  for (std::size_t i = 1; i < projects.size();) {
    const auto first = std::find_if(
        projects.begin(), projects.begin() + static_cast<std::ptrdiff_t>(i),
        [&](const auto& other) { return other->GetDependancies()->Contains(projects[i]->GetProjectID()); });
    if (first == projects.begin() + static_cast<std::ptrdiff_t>(i)) {
      ++i;
      continue;
    }
    if (++exchanges > 500) return std::nullopt;
    std::swap(*first, projects[i]);
    i = 1;
  }
  return projects;
}

std::optional<std::u16string> Read(std::string_view bytes) {
  static const tests::TTemporaryFolder folder;
  try {
    const auto solution = LookAtSolution(folder.Write("a.sln", bytes), true);
    const auto all = solution->GetProjects();
    const auto projects = InFileOrder(*solution);
    const auto expected =
        projects.size() <= 16 ? OrderedByPlainExchanges(projects) : std::optional<TProjects>();
    for (int i = 0; expected && i < all->GetCount(); ++i)
      Require(all->GetItem(i) == (*expected)[static_cast<std::size_t>(i)],
              "the order is that of the plain exchanges");
    return Describe(*solution);
  } catch (const EKxException&) {
    return std::nullopt;
  }
}

void Check(std::string_view input) {
  const auto model = Read(input);
  Require(Read(input) == model, "what is read twice is the same");
  // In UTF-16 a line feed is more than a byte.
  if (input.find('\r') != input.npos || input.starts_with("\xFF\xFE") || input.starts_with("\xFE\xFF"))
    return;
  std::string withReturns;
  for (const char c : input)
    withReturns += c == '\n' ? std::string("\r\n") : std::string(1, c);
  Require(Read(withReturns) == model, "line ends do not matter");
}

const TRegistration registration({"solution", Check});

} // namespace
} // namespace kx::fuzz
