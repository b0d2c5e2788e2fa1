// How fast solutions are read and ordered. Bytes per second of reading are to be seen beside BM_PlainRead,
// which only copies the same file into memory.
#include "package/solution/VSNETSLN.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <functional>
#include <string>

namespace kx {

namespace {

std::string Id(std::int64_t number) {
  char id[39];
  std::snprintf(id, sizeof id, "{%08X-1F1E-4A2B-9C3D-%012X}", static_cast<unsigned>(number),
                static_cast<unsigned>(number));
  return id;
}

// A solution of so many projects; `needs` gives the number of the project that one depends on, or -1.
std::string MakeSolution(std::int64_t projects, const std::function<std::int64_t(std::int64_t)>& needs) {
  std::string text = "\r\nMicrosoft Visual Studio Solution File, Format Version 11.00\r\n";
  std::string configs;
  for (std::int64_t p = 0; p < projects; ++p) {
    const std::string name = "Module" + std::to_string(p);
    text.append("Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"")
        .append(name)
        .append("\", \"src\\");
    text.append(name).append("\\").append(name).append(".csproj\", \"").append(Id(p)).append("\"\r\n");
    if (needs(p) >= 0)
      text += "\tProjectSection(ProjectDependencies) = postProject\r\n\t\t" + Id(needs(p)) + " = " +
              Id(needs(p)) + "\r\n\tEndProjectSection\r\n";
    text += "EndProject\r\n";
    for (const char* const config : {"Debug|Any CPU", "Release|Any CPU"}) {
      configs += "\t\t" + Id(p) + "." + config + ".ActiveCfg = " + config + "\r\n";
      configs += "\t\t" + Id(p) + "." + config + ".Build.0 = " + config + "\r\n";
    }
  }
  return text +
         "Global\r\n\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\r\n"
         "\t\tDebug|Any CPU = Debug|Any CPU\r\n\t\tRelease|Any CPU = Release|Any "
         "CPU\r\n\tEndGlobalSection\r\n"
         "\tGlobalSection(ProjectConfigurationPlatforms) = postSolution\r\n" +
         configs + "\tEndGlobalSection\r\nEndGlobal\r\n";
}

// A file that is gone when the benchmark ends.
class TSolutionFile {
public:
  explicit TSolutionFile(const std::string& text)
      : path_(*platform::CreateTemporaryFile(platform::TemporaryDirectory(), u"bench", u".sln")) {
    if (!platform::SaveFile(path_, text)) std::abort();
  }
  ~TSolutionFile() { static_cast<void>(platform::RemoveFile(path_)); }
  const std::u16string& Path() const { return path_; }

private:
  std::u16string path_;
};

void Read(benchmark::State& state, bool all) {
  const std::string text = MakeSolution(state.range(0), [](std::int64_t p) { return p % 4 - 1; });
  const TSolutionFile file(text);
  for (auto _ : state)
    benchmark::DoNotOptimize(OpenSolution(file.Path(), all));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void BM_PlainRead(benchmark::State& state) {
  const std::string text = MakeSolution(state.range(0), [](std::int64_t p) { return p % 4 - 1; });
  const TSolutionFile file(text);
  std::string buffer(std::size_t{128} << 10, '\0');
  for (auto _ : state) {
    auto reader = platform::FileReader::Open(file.Path());
    while (*reader->Read(buffer.data(), buffer.size()) > 0)
      benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(BM_PlainRead)->Arg(20)->Arg(50'000);

void BM_ReadWithoutProjects(benchmark::State& state) {
  Read(state, false);
}
BENCHMARK(BM_ReadWithoutProjects)->Arg(20)->Arg(50'000);

void BM_ReadAllProjects(benchmark::State& state) {
  Read(state, true);
}
BENCHMARK(BM_ReadAllProjects)->Arg(20)->Arg(50'000);

// Every project needs the one that the file names behind it, so that each has to pass all others.
void BM_OrderReversedChain(benchmark::State& state) {
  const std::int64_t last = state.range(0) - 1;
  const TSolutionFile file(
      MakeSolution(state.range(0), [last](std::int64_t p) { return p < last ? p + 1 : -1; }));
  for (auto _ : state)
    benchmark::DoNotOptimize(OpenSolution(file.Path(), true));
}
BENCHMARK(BM_OrderReversedChain)->Arg(100)->Arg(5'000)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace kx
