// How fast resource scripts are read and stamped. A script of so many dialogs carries its version block
// behind them, as resource editors write it.
#include "package/versioninfo/VersionBlock.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <string>

namespace kx {

namespace {

text::TStringList MakeScript(std::int64_t dialogs) {
  text::TStringList lines{u"#include <winver.h>"};
  for (std::int64_t i = 0; i < dialogs; ++i)
    for (const auto line :
         {u"IDD_PAGE DIALOGEX 0, 0, 250, 140", u"STYLE DS_SETFONT | WS_CHILD", u"BEGIN",
          u"    LTEXT           \"Where the files are kept:\",IDC_STATIC,7,7,236,8", u"END", u""})
      lines.Add(line);
  TVersionInfoContainer info;
  info.SetStringValues(u"CompanyName=Ours\r\nFileDescription=What it does\r\nFileVersion=1.2.3.4\r\n"
                       u"LegalCopyright=Copyright 2010\r\nProductName=Product\r\nProductVersion=1.2.3.4\r\n");
  return RewriteVersionBlock(lines, u"", info);
}

void CountBytes(benchmark::State& state, const text::TStringList& lines) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(lines.GetText().size()));
}

void BM_Read(benchmark::State& state) {
  const text::TStringList lines = MakeScript(state.range(0));
  for (auto _ : state) {
    TVersionInfoContainer info;
    ReadVersionBlock(lines, u"", info);
    benchmark::DoNotOptimize(info.Values());
  }
  CountBytes(state, lines);
}
BENCHMARK(BM_Read)->Arg(0)->Arg(20)->Arg(2'000);

void BM_Rewrite(benchmark::State& state) {
  const text::TStringList lines = MakeScript(state.range(0));
  TVersionInfoContainer info;
  ReadVersionBlock(lines, u"", info);
  for (auto _ : state)
    benchmark::DoNotOptimize(RewriteVersionBlock(lines, u"", info));
  CountBytes(state, lines);
}
BENCHMARK(BM_Rewrite)->Arg(0)->Arg(20)->Arg(2'000);

} // namespace

} // namespace kx
