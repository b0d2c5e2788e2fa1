#include "program/cli/PartRun.h"

#include "foundation/text/Encoding.h"
#include "program/cli/Output.h"
#include "program/cli/RunProject.h"
#include "program/cli/Usage.h"
#include "program/parts/PartTalk.h"
#include "program/plan/Plan.h"
#include "program/runner/Messages.h"

#include <iostream>

namespace kx::cli {

namespace {

TRunChoice ChoiceOfPart(TProjectRunner& runner, const std::u16string& id) {
  const auto part = FindPart(runner, id);
  if (!part) throw EUsage(u"--part: there is no part " + Quoted(id) + u"; \"kxhost plan\" lists them.");
  return {.Only = {{part->Place}}, .OnlyPass = part->Pass, .WithoutNeeds = true, .NumbersAreCounted = true};
}

} // namespace

int RunPart(TProjectRunner& runner, THostSession& session, TCommonOptions common, const std::u16string& id) {
  runner.Choose(ChoiceOfPart(runner, id));
  runner.Project().Gates = {};
  common.NoHistory = true;
  return RunProject(runner, session, common, {});
}

int TakeParts(TProjectRunner& runner, THostSession& session, TCommonOptions common) {
  for (std::string line; std::getline(std::cin, line);) {
    const auto task = ReadTask(line);
    if (!task) throw EUsage(u"--take-parts is for processes that kxhost starts itself.");
    common.LogFile = text::ToUtf8(task->Log);
    const int exitCode = RunPart(runner, session, common, task->Id);
    session.SaveOptions(); // what it says is of this part
    PrintAnswer(AnswerLine(exitCode));
    if (session.Stop().IsRaised()) return ExitStopped;
  }
  return ExitSuccess;
}

} // namespace kx::cli
