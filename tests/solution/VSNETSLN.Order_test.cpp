#include "solution/VSNETSLN.Order.h"

#include "solution/VSNETSLN.Model.h"
#include "tests/solution/SolutionFolder.h"
#include "text/Text.h"

#include <random>

namespace kx::tests {

namespace {

using Projects = std::vector<std::shared_ptr<IVSDotNetProject>>;

std::u16string Name(std::size_t number) {
  return u"P" + text::FromInteger(static_cast<std::int64_t>(number));
}

std::shared_ptr<IVSDotNetProject> NewProject(std::u16string name, std::u16string id) {
  platform::FileLookup none;
  return std::make_shared<TVSDotNetProject>(u"C:\\a.sln", std::move(name), u"", std::move(id), u"", none);
}

std::u16string NamesInOrder(const Projects& projects, std::span<const std::size_t> order) {
  std::u16string names;
  for (const std::size_t position : order)
    names += projects[position]->GetName() + u" ";
  return names;
}

std::u16string Ordered(const Projects& projects) {
  try {
    return NamesInOrder(projects, OrderByDependancies(projects, nullptr));
  } catch (const EKxParseError& error) {
    return error.Message();
  }
}

// The exchanges as they are told; nothing when they do not end soon.
std::optional<std::u16string> OrderedByPlainExchanges(const Projects& given) {
  Projects projects = given;
  const auto depends = [](const auto& a, const auto& b) {
    return a->GetDependancies()->Contains(b->GetProjectID());
  };
  int exchanges = 0;
  for (std::size_t i = 0; i < projects.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!depends(projects[j], projects[i])) continue;
      if (depends(projects[i], projects[j])) {
        return u"Solution has invalid circular dependancies between : " + projects[i]->GetName() + u" and " +
               projects[j]->GetName();
      }
      if (++exchanges > 2'000) return std::nullopt;
      std::swap(projects[i], projects[j]);
      i = 0;
      break;
    }
  }
  std::u16string names;
  for (const auto& project : projects)
    names += project->GetName() + u" ";
  return names;
}

TEST(SolutionOrder, MovesProjectsBehindWhatTheyNeed) {
  const struct {
    const char* What;
    std::u16string_view Edges; // each project's needs, by letters
    std::u16string_view Expected;
  } cases[] = {
      {"none", u"", u""},
      {"one that needs itself", u"a", u"A "},
      {"an application before its library", u"b,", u"B A "},
      {"two need the last", u"c,c,", u"C B A "},
      {"unknown needs", u"z,y", u"A B "},
      {"two that need each other", u"b,a", u"Solution has invalid circular dependancies between : B and A"},
      {"a pair that stands apart", u"c,,ad,a",
       u"Solution has invalid circular dependancies between : C and A"},
  };
  for (const auto& row : cases) {
    Projects projects;
    const auto needs = text::Split(row.Edges, u',');
    const std::size_t count = row.Edges.empty() ? 0 : needs.size();
    for (std::size_t p = 0; p < count; ++p) {
      const auto letter = static_cast<char16_t>(u'A' + p);
      projects.push_back(NewProject(std::u16string(1, letter), std::u16string(1, letter)));
      for (const char16_t need : needs[p])
        projects.back()->GetDependancies()->Add(std::u16string(1, need)); // in the other letter case
    }
    EXPECT_EQ(Ordered(projects), row.Expected) << row.What;
  }
}

// Circles, pairs, needs of oneself, identifiers used twice.
TEST(SolutionOrder, IsThatOfThePlainExchangesForRandomGraphs) {
  std::mt19937 random(5);
  int ended = 0;
  for (int graph = 0; graph < 6'000; ++graph) {
    const std::size_t count = 2 + random() % 10;
    const std::size_t ids = random() % 4 == 0 ? 1 + count / 2 : count;
    const std::size_t edges = random() % (2 * count);
    const bool upwards = random() % 2 == 0; // without circles
    Projects projects;
    std::vector<std::size_t> rank;
    for (std::size_t p = 0; p < count; ++p)
      rank.push_back(p);
    std::ranges::shuffle(rank, random);
    for (std::size_t p = 0; p < count; ++p)
      projects.push_back(NewProject(Name(p), Name(p % ids)));
    for (std::size_t e = 0; e < edges; ++e) {
      const std::size_t from = random() % count;
      const std::size_t to = random() % count;
      if (!upwards || rank[from] > rank[to]) projects[from]->GetDependancies()->Add(Name(to));
    }
    const auto expected = OrderedByPlainExchanges(projects);
    if (!expected) continue; // a long circle, for which there is no order
    ++ended;
    ASSERT_EQ(Ordered(projects), *expected) << "graph " << graph;
  }
  EXPECT_GT(ended, 4'000);
}

TEST(SolutionOrder, TurnsAReversedChainOfThousandsRound) {
  constexpr std::size_t count = 3'000;
  Projects projects;
  std::u16string expected;
  for (std::size_t p = 0; p < count; ++p) {
    projects.push_back(NewProject(Name(p), Name(p)));
    projects.back()->GetDependancies()->Add(Name(p + 1));
    expected.insert(0, Name(p) + u" ");
  }
  EXPECT_EQ(Ordered(projects), expected);
}

TEST(SolutionOrder, OfALongCircleEndsWithTheStop) {
  Projects projects;
  for (std::size_t p = 0; p < 3; ++p) {
    projects.push_back(NewProject(Name(p), Name(p)));
    projects.back()->GetDependancies()->Add(Name((p + 1) % 3));
  }
  TKxEvent stop;
  stop.Raise();
  EXPECT_EQ(Raised([&] { OrderByDependancies(projects, &stop); }), "Action Terminated by User.");
}

} // namespace

} // namespace kx::tests
