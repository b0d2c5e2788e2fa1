#include "package/solution/VSNETSLN.Order.h"

#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.Model.h"
#include "tests/solution/SolutionFolder.h"

#include <random>

namespace kx::tests {

namespace {

using Projects = std::vector<std::shared_ptr<IVSDotNetProject>>;

std::u16string Name(std::size_t number) {
  return u"P" + text::FromInteger(static_cast<std::int64_t>(number));
}

std::string NamesOf(const Projects& projects) {
  std::string names;
  for (const auto& project : projects)
    names += text::ToUtf8(project->GetName()) + " ";
  return names;
}

// The exchanges as they are told; nothing when they do not end soon.
std::optional<std::string> OrderedByPlainExchanges(const Projects& given) {
  Projects projects = given;
  const auto depends = [](const auto& a, const auto& b) {
    return a->GetDependancies()->Contains(b->GetProjectID());
  };
  int exchanges = 0;
  for (std::size_t i = 0; i < projects.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!depends(projects[j], projects[i])) continue;
      if (depends(projects[i], projects[j]))
        return "Solution has invalid circular dependancies between : " +
               text::ToUtf8(projects[i]->GetName() + u" and " + projects[j]->GetName());
      if (++exchanges > 2'000) return std::nullopt;
      std::swap(projects[i], projects[j]);
      i = 0;
      break;
    }
  }
  return NamesOf(projects);
}

// Circles, pairs, needs of oneself, identifiers used twice.
TEST(SolutionOrder, IsThatOfThePlainExchangesForRandomGraphs) {
  std::mt19937 random(5);
  TKxEvent stop;
  stop.Raise();
  int ended = 0;
  for (int graph = 0; graph < 6'000; ++graph) {
    const std::size_t count = 2 + random() % 10;
    const std::size_t ids = random() % 4 == 0 ? 1 + count / 2 : count;
    const std::size_t edges = random() % (2 * count);
    Projects projects;
    for (std::size_t p = 0; p < count; ++p)
      projects.push_back(
          std::make_shared<TVSDotNetProject>(Name(p), u"", Name(p % ids), u"", TProjectResources()));
    for (std::size_t e = 0; e < edges; ++e) {
      const std::size_t from = random() % count;
      const std::size_t to = random() % count;
      // Every second graph has no circles.
      if (graph % 2 == 0 || from > to) projects[from]->GetDependancies()->Add(text::ToLower(Name(to)), 0);
    }
    for (std::size_t p = 1; p < count && graph % 6 == 1; ++p) // one order only
      projects[p]->GetDependancies()->Add(Name(p - 1), 0);
    std::ranges::shuffle(projects, random);
    const auto expected = OrderedByPlainExchanges(projects);
    const bool circular = !expected || expected->starts_with("Solution");
    ASSERT_EQ(!CirclesAmong(projects).empty(), circular) << "graph " << graph;
    if (!expected) { // a long circle, for which there is no order
      EXPECT_EQ(FailureOf([&] { OrderByDependancies(projects, &stop); }), "Action Terminated by User.");
      continue;
    }
    ++ended;
    Projects ordered;
    const std::string refused = FailureOf([&] {
      for (const std::size_t position : OrderByDependancies(projects, nullptr))
        ordered.push_back(projects[position]);
    });
    ASSERT_EQ(NamesOf(ordered) + refused, *expected) << "graph " << graph;
  }
  EXPECT_GT(ended, 4'000);
}

} // namespace

} // namespace kx::tests
