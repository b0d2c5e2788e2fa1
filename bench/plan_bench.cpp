// A plan of many actions, what is asked of it, and how it is written. The parts come three by three, as where
// each solution is stamped, built and tested.
#include "program/plan/PlanFormats.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>

namespace kx {
namespace {

class TFileAction : public TCustomKxAction {
public:
  std::u16string GetActionName() const override { return u"File"; }
  bool Execute() override { return true; }
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable table;
    return table;
  }
  void GetFilesToRead(text::TStringList& files) override { files.Add(u"C:\\src\\Product\\Product.sln"); }
  void GetFilesToWrite(text::TStringList& files) override { files.Add(u"C:\\out\\" + GetDescription()); }
};

const TKxActionClass& FileAction() {
  static const TKxActionClass fileClass{
      u"TFileAction", []() -> std::unique_ptr<TCustomKxAction> { return std::make_unique<TFileAction>(); }};
  return fileClass;
}

struct TLargeProject {
  explicit TLargeProject(std::int64_t count) : Runner(Services, Stop, {}) {
    Services.RegisterAction(u"FILE", u"Bench", FileAction());
    for (std::int64_t i = 0; i < count; ++i) {
      TActionNode& node = Runner.Project().AddAction(u"FILE");
      node.SetName(u"Solution " + text::FromInteger(i));
      TActionTerms terms;
      terms.Needs.emplace();
      if (i % 3 != 0) terms.Needs->push_back(u"Solution " + text::FromInteger(i - 1));
      node.SetTerms(terms);
      Places.push_back(static_cast<std::size_t>(i));
    }
  }
  TOptionsStore Store;
  TServiceRegistry Services{Store};
  TKxEvent Stop;
  TProjectRunner Runner;
  std::vector<std::size_t> Places;
};

void Make(benchmark::State& state) {
  TLargeProject project(state.range(0));
  for ([[maybe_unused]] const auto step : state)
    benchmark::DoNotOptimize(MakePlan(project.Runner, {}, project.Places));
}

void LookForClashes(benchmark::State& state) {
  TLargeProject project(state.range(0));
  const TPlan plan = MakePlan(project.Runner, {}, project.Places);
  for ([[maybe_unused]] const auto step : state)
    benchmark::DoNotOptimize(FindClashes(plan));
}

void Write(benchmark::State& state, std::u16string_view name) {
  TLargeProject project(3 * state.range(0));
  const TPlan plan = MakePlan(project.Runner, {}, project.Places);
  const auto format = std::ranges::find(PlanFormats(), name, &TPlanFormat::Name);
  for ([[maybe_unused]] const auto step : state) {
    std::size_t bytes = 0;
    format->Write(plan, {u"nightly.kxproj", {}}, [&bytes](std::string_view utf8) { bytes += utf8.size(); });
    benchmark::DoNotOptimize(bytes);
  }
}

BENCHMARK(Make)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(LookForClashes)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, Text, u"text")->Arg(3'333)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, Json, u"json")->Arg(3'333)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, Ninja, u"ninja")->Arg(3'333)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Write, GitHub, u"github")->Arg(3'333)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kx
