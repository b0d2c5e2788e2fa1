// How fast the output of build tools is read: logs of the benchmark's own making, in memory.
#include "package/buildaction/BuildLog.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kx;

constexpr std::size_t LogBytes = 50'000'000;

// What compilers print: paths, switches, now and then a diagnostic.
constexpr std::array<std::u16string_view, 8> English{
    u"  cl.exe /c /nologo /W4 /Od /D WIN32 /D _DEBUG /Fo\"Debug\\\\\" /Gd /TP ..\\src\\server\\session.cpp",
    u"  session.cpp",
    u"c:\\src\\server\\session.cpp(812): warning C4996: 'strcpy': This function or variable may be unsafe.",
    u"Target \"GenerateTargetFrameworkMonikerAttribute\" skipped, because all its inputs are up-to-date.",
    u"  Copying file from \"obj\\Debug\\App.Core.dll\" to \"..\\..\\bin\\Debug\\App.Core.dll\".",
    u"c:\\src\\server\\store.cpp(31): error C2065: 'frame' : undeclared identifier",
    u"========== Build: 12 succeeded, 0 failed, 3 up-to-date, 0 skipped ==========",
    u"    2 Error(s)"};
constexpr std::array<std::u16string_view, 4> French{
    u"c:\\src\\serveur\\session.cpp(812): warning C4996: 'strcpy' a été déclaré déconseillé",
    u"La cible \"CoreCompile\" est ignorée, car tous les fichiers de sortie sont à jour.",
    u"========== Génération : 2 a réussi, 1 a échoué, 0 mis à jour, 0 a été ignoré ==========",
    u"    1 Erreur(s)"};

template <std::size_t Count>
std::vector<std::u16string> MakeLog(const std::array<std::u16string_view, Count>& lines) {
  std::vector<std::u16string> log;
  for (std::size_t bytes = 0; bytes < LogBytes; bytes += log.back().size() + 2)
    log.emplace_back(lines[log.size() % Count]);
  return log;
}

template <std::size_t Count>
void ReadLog(benchmark::State& state, const std::array<std::u16string_view, Count>& lines, bool isMSBuild) {
  const auto log = MakeLog(lines);
  for (auto _ : state) {
    TBuildLog reader(isMSBuild, TVSDotNetVersion::vs2003);
    for (const auto& line : log)
      reader.Feed(line);
    benchmark::DoNotOptimize(reader.Verdict().Statuses);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(LogBytes));
}

void EnglishMSBuildLog(benchmark::State& state) {
  ReadLog(state, English, true);
}
void FrenchDevEnvLog(benchmark::State& state) {
  ReadLog(state, French, false);
}
// No word to stop at: what a quiet compiler's paths cost.
void OneLongLine(benchmark::State& state) {
  std::u16string line;
  while (line.size() < LogBytes)
    line += English[0];
  for (auto _ : state) {
    TBuildLog reader(false, TVSDotNetVersion::vs2008);
    reader.Feed(line);
    benchmark::DoNotOptimize(reader.Verdict().Statuses);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(LogBytes));
}

BENCHMARK(EnglishMSBuildLog)->Unit(benchmark::kMillisecond);
BENCHMARK(FrenchDevEnvLog)->Unit(benchmark::kMillisecond);
BENCHMARK(OneLongLine)->Unit(benchmark::kMillisecond);

} // namespace
