// A history of 10,000 runs of 500 tests, 20 findings and 30 projects each, and what is asked of it.
#include "program/history/HistoryFile.h"
#include "program/history/Questions.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <benchmark/benchmark.h>

#include <map>
#include <set>

namespace kx::history {
namespace {

constexpr int RunCount = 10'000;
constexpr int TestCount = 500;
constexpr int FindingCount = 20;
constexpr int PartCount = 30;

class THistoryFile {
public:
  THistoryFile() {
    TDatabase database = OpenToAdd(Name());
    TTransaction transaction(database);
    AddNames(database);
    for (int run = 1; run <= RunCount; ++run)
      AddRun(database, run);
    transaction.Commit();
  }
  std::u16string Name() const { return text::JoinPath(folder_.Path(), u"history.sqlite"); }

private:
  static std::u16string Numbered(const char16_t* name, int number) {
    return name + text::FromInteger(number);
  }

  static void AddNames(TDatabase& database) {
    TStatement test = database.Prepare("INSERT INTO tests VALUES(?, ?, ?)");
    for (int i = 1; i <= TestCount; ++i)
      test.With(std::int64_t{i}, Numbered(u"Suite/Company.Product.Component.Test", i), std::int64_t{RunCount})
          .Run();
    TStatement name = database.Prepare("INSERT INTO names VALUES(?, ?, ?)");
    for (int i = 1; i <= PartCount; ++i)
      name.With(std::int64_t{i}, Numbered(u"Project", i), std::int64_t{RunCount}).Run();
    TStatement finding = database.Prepare("INSERT INTO findings VALUES(?, ?, 'CS0168', 1, 'a message', "
                                          "'a.cs', 1, 1, 'CS0168', '', '', '', '', 1, 0, ?)");
    for (int i = 1; i <= FindingCount; ++i)
      finding.With(std::int64_t{i}, Numbered(u"f", i), std::int64_t{RunCount}).Run();
  }

  static void AddRun(TDatabase& database, std::int64_t run) {
    std::map<TNumber, TTestOutcome> tests;
    for (int i = 1; i <= TestCount; ++i)
      tests[i] = {(run * i) % 997 == 0 ? TPastTest::Failed : TPastTest::Passed,
                  std::chrono::milliseconds((run + i) % 900)};
    std::set<TNumber> findings;
    for (int i = 1; i <= FindingCount; ++i)
      findings.insert(i);
    static const std::string added = "INSERT INTO outcomes VALUES(?, ?, ?)";
    database.Prepare(added).With(run, TBytes(PackTests(tests)), TBytes(PackNumbers(findings))).Run();
    database
        .Prepare(
            "INSERT INTO runs VALUES(?, ?, 0, 60000, 0, 20, 500, 0, 0, 0, 0, 'machine', 'system', ?, 'main', "
            "'kxhost run nightly.kxproj', '')")
        .With(run, run * 3'600'000, Numbered(u"commit", static_cast<int>(run / 3)))
        .Run();
    TStatement part = database.Prepare("INSERT INTO parts VALUES(?, ?, 0, 1, 2, ?, 0, 0, ?, 0, 0)");
    for (int i = 1; i <= PartCount; ++i)
      part.With(run, std::int64_t{i}, std::int64_t{i}, (run * i) % 5'000).Run();
  }

  platform::PrivateFolder folder_ = *platform::PrivateFolder::Create();
};

// Each opens the file anew, as the program does.
template <typename TAsk>
void Ask(benchmark::State& state, const TAsk& ask) {
  static const THistoryFile file;
  for (auto _ : state) {
    THistory history(file.Name());
    benchmark::DoNotOptimize(ask(history));
  }
}

void Runs(benchmark::State& state) {
  Ask(state, [&](THistory& history) { return history.Runs(state.range(0)); });
}
void Details(benchmark::State& state) {
  Ask(state, [](THistory& history) { return history.Details(RunCount / 2); });
}
void Tests(benchmark::State& state) {
  Ask(state, [&](THistory& history) { return history.Tests(state.range(0)); });
}
void Findings(benchmark::State& state) {
  Ask(state, [](THistory& history) { return history.Findings(); });
}
void Times(benchmark::State& state) {
  Ask(state, [&](THistory& history) { return history.Times(state.range(0)); });
}
// What a run costs that is added.
void AddRun(benchmark::State& state) {
  static const THistoryFile file;
  for (auto _ : state) {
    TRunRecorder recorder({.File = file.Name()}, u"nightly.kxproj",
                          {.Runs = RunCount, .Age = std::chrono::days(40'000)});
    TRunReport report;
    benchmark::DoNotOptimize(recorder.Finish(report));
  }
}

BENCHMARK(Runs)->Arg(20)->Arg(RunCount)->Unit(benchmark::kMillisecond);
BENCHMARK(Details)->Unit(benchmark::kMillisecond);
BENCHMARK(Tests)->Arg(100)->Arg(1'000)->Arg(RunCount)->Unit(benchmark::kMillisecond);
BENCHMARK(Findings)->Unit(benchmark::kMillisecond);
BENCHMARK(Times)->Arg(100)->Arg(1'000)->Arg(RunCount)->Unit(benchmark::kMillisecond);
BENCHMARK(AddRun)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kx::history
