// How fast results files are read, and what they become: results of the benchmark's own making, in memory.
#include "package/mstest/TestResultsFile.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace {

using namespace kx;

constexpr std::size_t FileBytes = 50'000'000;

// As test tools write it: every second test fails with a message and a long stack trace.
std::string MakeResultsFile() {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<TestRun xmlns=\"urn:test-results\">\n <Results>\n";
  for (int i = 0; xml.size() < FileBytes; ++i) {
    const bool failed = i % 2 == 0;
    xml += "  <UnitTestResult executionId=\"2bf7a97d-3afe-4f1c-9bb9-" + std::to_string(i) +
           "\" testName=\"Test" + std::to_string(i) +
           "\" computerName=\"BUILD3\" duration=\"00:00:00.0163561\" startTime=\"" +
           "2015-07-23T12:26:54.1245322+02:00\" endTime=\"2015-07-23T12:26:54.3455394+02:00\" outcome=\"" +
           (failed ? "Failed" : "Passed") + "\" testListId=\"8c84fa94-04c1-424b-9868-57a2d4851a1d\">\n";
    if (failed) {
      xml += "   <Output>\n    <ErrorInfo>\n     <Message>Test threw &lt;Timeout&gt;: no answer</Message>\n"
             "     <StackTrace>";
      for (int frame = 0; frame < 8; ++frame)
        xml += "   at App.Server.Session.Answer(Request request) in c:\\src\\Server\\Session.cs:line 812\n";
      xml += "</StackTrace>\n    </ErrorInfo>\n   </Output>\n";
    }
    xml += "  </UnitTestResult>\n";
  }
  return xml + " </Results>\n</TestRun>\n";
}

const std::string& ResultsFile() {
  static const std::string file = MakeResultsFile();
  return file;
}

void ReadResults(benchmark::State& state) {
  const std::string& file = ResultsFile();
  for ([[maybe_unused]] const auto step : state)
    benchmark::DoNotOptimize(InterpretMSTestBytes(file));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
}

void WriteTestRun(benchmark::State& state) {
  const TKxUnitTestRun run(InterpretMSTestBytes(ResultsFile()));
  for ([[maybe_unused]] const auto step : state)
    benchmark::DoNotOptimize(run.AsXmlString());
}

BENCHMARK(ReadResults)->Unit(benchmark::kMillisecond);
BENCHMARK(WriteTestRun)->Unit(benchmark::kMillisecond);

} // namespace
