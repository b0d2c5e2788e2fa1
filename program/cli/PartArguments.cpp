#include "program/cli/PartArguments.h"

#include "foundation/platform/Files.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Usage.h"
#include "program/runner/ActionGraph.h"

#include <algorithm>
#include <chrono>
#include <iterator>

namespace kx::cli {

namespace {

// A part that is asked to end has a tool to end first, and its log to write.
constexpr std::chrono::seconds Grace{5};

bool IsFromInput(const TSecretArgument& secret) {
  return secret.Text.find('=') == std::string::npos;
}

// Of a secret that was read from standard input, which only one process can do.
std::u16string VariableOf(std::size_t secret) {
  return std::u16string(PassedSecret) + text::FromInteger(static_cast<std::int64_t>(secret + 1));
}

} // namespace

std::vector<std::size_t> PlacesOf(const TProject& project, const std::vector<std::string>& names) {
  if (names.empty()) return AllPlaces(project);
  std::vector<std::u16string> wide;
  std::ranges::transform(names, std::back_inserter(wide), text::FromUtf8);
  const TActionGraph graph(project);
  try {
    return graph.Select(wide);
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
}

void RequireNoClash(const TPlan& plan) {
  std::u16string message;
  for (const TClash& clash : FindClashes(plan))
    message += (message.empty() ? u"" : u"\n") + DescribeClash(plan, clash);
  if (!message.empty()) throw EKxParseError(plan.File + u": " + message);
}

TRunWords WordsOf(const std::u16string& project, const TRunArguments& run, const TCommonOptions& common) {
  TRunWords words{project, {}};
  const auto addAll = [&words](std::u16string_view option, const std::vector<std::string>& values) {
    for (const auto& value : values)
      words.Options.insert(words.Options.end(), {std::u16string(option), text::FromUtf8(value)});
  };
  addAll(u"--set", run.Variables);
  addAll(u"--rule", run.Rules);
  if (!common.OptionsFile.empty()) addAll(u"--options", {common.OptionsFile});
  addAll(u"--option", common.Overrides);
  addAll(u"--plugin", common.Plugins);
  addAll(u"--drive", common.Drives);
  for (const TSecretArgument& secret : run.Secrets)
    if (!IsFromInput(secret)) addAll(secret.IsVariable ? u"--set-secret" : u"--secret", {secret.Text});
  return words;
}

platform::ProcessRequest ProcessOfParts(TRunWords words, const TRunArguments& run,
                                        const TGivenSecrets& secrets) {
  platform::ProcessRequest request;
  request.Executable = platform::ProgramFile();
  request.Grace = Grace;
  for (std::size_t i = 0; i < run.Secrets.size(); ++i) {
    if (!IsFromInput(run.Secrets[i])) continue;
    words.Options.insert(words.Options.end(), {run.Secrets[i].IsVariable ? u"--set-secret" : u"--secret",
                                               secrets[i].Name + u"=" + VariableOf(i)});
    request.Environment.emplace_back(VariableOf(i), secrets[i].Value);
  }
  words.Options.insert(words.Options.end(),
                       {text::FromAscii(TakesParts), u"--verbosity", u"quiet", u"--color", u"never"});
  request.Arguments = u"run " + text::QuoteArgumentIfNeeded(words.Project);
  for (const auto& option : words.Options)
    request.Arguments += u" " + text::QuoteArgumentIfNeeded(option);
  return request;
}

} // namespace kx::cli
