#include "program/cli/PartRun.h"

#include "foundation/text/Encoding.h"
#include "program/cli/Output.h"
#include "program/cli/RunProject.h"
#include "program/cli/Usage.h"
#include "program/parts/PartTalk.h"
#include "program/plan/PartIds.h"
#include "program/runner/Messages.h"

#include <iostream>

namespace kx::cli {

namespace {

TRunChoice ChoiceOfPart(TPartFinder& parts, const std::u16string& id) {
  const auto part = parts.Find(id);
  if (!part) throw EUsage(u"--part: there is no part " + Quoted(id) + u"; \"kxhost plan\" lists them.");
  return {.Only = {{part->Place}}, .OnlyPass = part->Pass, .WithoutNeeds = true, .NumbersAreCounted = true};
}

// The gates and the history are not for a part.
void Prepare(TProjectRunner& runner, TCommonOptions& common) {
  runner.Project().Gates = {};
  common.NoHistory = true;
}

} // namespace

int RunPart(TProjectRunner& runner, THostSession& session, TCommonOptions common, const std::u16string& id) {
  Prepare(runner, common);
  TPartFinder parts(runner.Project());
  runner.Choose(ChoiceOfPart(parts, id));
  return RunProject(runner, session, common, {});
}

int TakeParts(TProjectRunner& runner, THostSession& session, TCommonOptions common) {
  Prepare(runner, common);
  TPartFinder parts(runner.Project());
  for (std::string line; std::getline(std::cin, line);) {
    const auto task = ReadTask(line);
    if (!task) throw EUsage(u"--take-parts is for processes that kxhost starts itself.");
    common.LogFile = text::ToUtf8(task->Log);
    runner.Choose(ChoiceOfPart(parts, task->Id));
    const int exitCode = RunProject(runner, session, common, {});
    session.SaveOptions(); // what it says is of this part
    PrintAnswer(AnswerLine(exitCode));
    if (session.Stop().IsRaised()) return ExitStopped;
  }
  return ExitSuccess;
}

} // namespace kx::cli
