// What stamping an AssemblyInfo file costs: in memory, and with the safe writing of the file.
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfo.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "package/versioninfo/ProjectSources.h"

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace kx {

namespace {

// As Visual Studio makes it, comments included; `repeats` blocks of comments make it longer.
std::string MakeSource(std::int64_t repeats) {
  std::string source = "using System.Reflection;\r\nusing System.Runtime.InteropServices;\r\n\r\n";
  for (std::int64_t i = 0; i < repeats; ++i)
    source += "// Setting \"ComVisible\" to false makes the types in this assembly not visible\r\n";
  for (const char* name : {"Title", "Description", "Company", "Product", "Copyright", "Trademark"})
    source += "[assembly: Assembly" + std::string(name) + "(\"old\")]\r\n";
  return source + "[assembly: AssemblyVersion(\"1.0.0.0\")]\r\n";
}

TAssemblyInfoValues MakeValues(std::int64_t build) {
  const std::u16string version = u"1.2.3." + text::FromInteger(build);
  return {{u"AssemblyTitle", u"App"}, {u"AssemblyFileVersion", version}, {u"AssemblyVersion", version}};
}

void BM_Rewrite(benchmark::State& state) {
  const std::string source = MakeSource(state.range(0));
  const TAssemblyInfoValues values = MakeValues(4);
  for (auto _ : state)
    benchmark::DoNotOptimize(RewriteAssemblyInfo(source, TAssemblyInfoLanguage::CSharp, values));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(source.size()));
}
BENCHMARK(BM_Rewrite)->Arg(20)->Arg(50'000);

class TStamp : public IAssemblyInfoCallback {
public:
  std::int64_t Build = 0;
  void OnProcessFile(std::u16string_view /*fileName*/, IAssemblyInfoAttributes& updater) override {
    for (const auto& [name, value] : MakeValues(Build))
      updater.SetAttribute(name, value);
  }
  void AssemblyInfoProcessEntry(std::u16string_view /*name*/, std::u16string_view /*value*/) override {}
  void AssemblyInfoProcessMessage(std::u16string_view /*text*/) override {}
};

// A new number each time, so that the file is really written and flushed.
void BM_Stamp(benchmark::State& state) {
  const std::u16string path =
      *platform::CreateTemporaryFile(platform::TemporaryDirectory(), u"kxbench", u".cs");
  if (!platform::SaveFile(path, MakeSource(20))) std::abort();
  TStamp stamp;
  const auto updater = TBrannicAssemblyInfo::Create();
  updater->SetCallback(stamp);
  for (auto _ : state) {
    ++stamp.Build;
    updater->ProcessFile(path, true);
  }
  static_cast<void>(platform::RemoveFile(path));
}
BENCHMARK(BM_Stamp);

// A project file whose items all stand in one line.
void BM_FindNameInOneLine(benchmark::State& state) {
  std::string project = "<Project>";
  while (project.size() < static_cast<std::size_t>(state.range(0)))
    project += "<Compile Include=\"Folder\\AssemblyInfoReader.cs\" />";
  project += "</Project>";
  const std::u16string path =
      *platform::CreateTemporaryFile(platform::TemporaryDirectory(), u"kxbench", u".csproj");
  if (!platform::SaveFile(path, project)) std::abort();
  for (auto _ : state)
    benchmark::DoNotOptimize(FindAssemblyInfoName(path, platform::TemporaryDirectory()));
  static_cast<void>(platform::RemoveFile(path));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(project.size()));
}
BENCHMARK(BM_FindNameInOneLine)->Arg(100'000)->Arg(5'000'000)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace kx
