// The output of a build tool: how it was cut on its way changes nothing of what is made of it.
#include "foundation/platform/LineSplitter.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "package/buildaction/BuildOutputAnalysis.h"
#include "package/buildaction/MSBuildLogger.h"
#include "tests/support/BareAction.h"
#include "tests/support/RecordingHost.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

class TSink : public IBuildOutputSink {
public:
  std::u16string Sent;
  void Count(TBuildCount what, std::int32_t number) override {
    Sent += (what == TBuildCount::Errors ? u"errors " : u"warnings ") + text::FromInteger(number) + u"\n";
  }
  void Line(std::u16string_view line, TStatusTag status) override {
    Sent.append(text::FromInteger(static_cast<int>(status))).append(line).append(u"\n");
  }
  void StructuredLine(std::u16string_view line) override { Sent.append(u"~").append(line).append(u"\n"); }
};

class TBuilder : public tests::TBareAction<TCustomKxAction> {
public:
  bool Execute() override { return true; }
};

std::vector<std::string> CutIntoLines(std::string_view bytes, std::size_t block, std::size_t limit) {
  std::vector<std::string> lines;
  platform::LineSplitter splitter([&lines](std::string_view line) { lines.emplace_back(line); }, limit);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(block, bytes.size())))
    splitter.Feed(bytes.substr(0, block));
  splitter.Finish();
  return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines)
    text += line;
  return text;
}

void CheckAnalysis(const std::vector<std::string>& lines, const TBuildOutputOptions& options,
                   std::size_t many) {
  TSink single;
  TSink several;
  TBuildOutputAnalysis one(options, single);
  TBuildOutputAnalysis other(options, several);
  std::u16string chunk;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::u16string line = text::FromUtf8(lines[i]);
    one.Feed(line);
    chunk += line + u"\r\n";
    if (i + 1 == lines.size() || i % many == 0) other.Feed(std::exchange(chunk, {}));
  }
  Require(single.Sent == several.Sent, "lines mean the same alone and together");
  Require(one.HasFailed() == other.HasFailed() && one.BuiltProjects() == other.BuiltProjects(),
          "the run has ended in the same way");
}

void CheckStructured(const std::vector<std::string>& lines) {
  tests::TRecordingHost host;
  TBuilder action;
  action.Attach(host);
  TKxMSBuildStructuredOutputHelper helper(action);
  helper.Start(u"/src/App.sln", true);
  for (const auto& line : lines)
    helper.ProcessLine(text::FromUtf8(line));
  helper.EndRun();
  const auto count = [&host](char mark) {
    return std::ranges::count_if(host.Log(), [mark](const auto& line) { return line.front() == mark; });
  };
  Require(count('>') == count('<'), "every group that opens is closed");
  Require(helper.ErrorCount() <= count('3') && helper.WarningCount() <= count('2'), "every problem is shown");
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::size_t block = 1 + input.Below(16);
  const std::size_t many = 1 + input.Below(5);
  const TBuildOutputOptions options{input.Flag(), input.Flag(),
                                    static_cast<TVSDotNetVersion>(input.Below(5))};
  const std::string_view output = input.Rest();
  const auto lines = CutIntoLines(output, output.size() + 1, output.size() + 1);
  Require(CutIntoLines(output, block, output.size() + 1) == lines, "blocks give the same lines");
  Require(Joined(CutIntoLines(output, block, 4)) == Joined(CutIntoLines(output, output.size() + 1, 4)),
          "a long line comes in pieces without loss");
  // A lone CR is part of a line of the splitter, but ends one of the analysis.
  if (std::ranges::none_of(lines, [](const auto& line) { return line.find('\r') != line.npos; }))
    CheckAnalysis(lines, options, many);
  CheckStructured(lines);
}

const TRegistration registration({"build_output", Check});

} // namespace
} // namespace kx::fuzz
