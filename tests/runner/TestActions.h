// Small actions, and the embedded host with them registered.
#pragma once

#include "contract/Iterator.h"
#include "contract/Services.h"
#include "foundation/text/Encoding.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/Run.h"
#include "program/runner/ServiceRegistry.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <string>
#include <vector>

namespace kx::tests {

enum class TColour { Red, Green, Blue };

template <class TAction>
const TKxActionClass& ClassNamed(std::u16string_view name) {
  static const TKxActionClass actionClass{
      name, []() -> std::unique_ptr<TCustomKxAction> { return std::make_unique<TAction>(); }};
  return actionClass;
}

// Does what the test gave it; publishes one property of each kind.
class TStepAction : public TCustomKxAction {
public:
  std::u16string Text;
  std::int32_t Number = 7;
  bool Flag = false;
  TColour Colour = TColour::Green;
  text::TStringList Lines;
  std::u16string Secret; // as the host encrypted it

  static const TKxActionClass& Class() { return ClassNamed<TStepAction>(u"TStepAction"); }
  // By the text of the property Text; without an entry the action sends the expanded text and succeeds. With
  // "validate " or "count " before it: what Validate or CountUp does.
  using TDeed = std::function<bool(TStepAction&)>;
  static std::map<std::u16string, TDeed>& Deeds();

  const TKxPropertyTable& PublishedProperties() const override;
  std::u16string GetActionName() const override { return u"Step"; }
  using TCustomKxAction::Host;
  bool CanTerminate() const override { return true; }
  void TerminateAction() override { Terminated.Raise(); }
  bool Validate(IKxActionValidationError& errors) override;
  bool Execute() override;
  void CountUp() override;
  bool GetLocalVariableValue(std::u16string_view name, std::u16string& value) const override;

  TKxEvent Terminated;
};

// One pass for each value.
class TLoopAction : public TKxBaseIterator {
public:
  text::TStringList Values;
  static const TKxActionClass& Class() { return ClassNamed<TLoopAction>(u"TLoopAction"); }
  const TKxPropertyTable& PublishedProperties() const override;
  std::u16string GetActionName() const override { return u"Loop"; }

protected:
  bool BeforeFirstIteration() override;
  std::u16string GetCurrentValue() override;
};

const TKxEnumeration& ColourEnumeration();

// The log of a run as lines:
//   "Name {"  "} True"      an action begins and ends (with its pass behind the name: "Name [a] {")
//   "3 text"                a message with its status (behind it what it takes back: "2 text <- 3")
//   "# category name text configuration"  a metric (of an action that may have ended: "# ... of Name")
//   "> title"  "< 1"        a group opens and closes ("<" without a status)
// each indented by its depth.
class TRecordingSink : public IRunEventSink {
public:
  std::vector<std::string> Lines;
  void On(const TRunEvent& event) override;
};

// An embedded host over a folder of its own, which goes with it.
class TEmbeddedHost {
public:
  explicit TEmbeddedHost(bool dryRun = false, TRuleSettings rules = {});
  ~TEmbeddedHost();
  TEmbeddedHost(const TEmbeddedHost&) = delete;
  TEmbeddedHost& operator=(const TEmbeddedHost&) = delete;

  std::u16string Path(std::string_view name) const { return folder_.Path(name); } // of a file in the folder
  std::u16string Write(std::string_view name, std::string_view bytes) const {
    return folder_.Write(name, bytes);
  }
  std::string Read(std::string_view name) const;

  TProject& Project() { return Runner.Project(); }
  TStepAction& AddStep(std::u16string_view text, std::u16string_view name = u"",
                       TActionNode* parent = nullptr);
  TActionNode& AddLoop(std::initializer_list<std::u16string_view> values, TActionNode* parent = nullptr,
                       std::u16string_view variable = u"P");
  // Runs the project and gives the log.
  std::vector<std::string> Run();

private:
  TTemporaryFolder folder_;

public:
  TOptionsStore Store;
  TServiceRegistry Services;
  TKxEvent Stop;
  TRecordingSink Sink;
  TRunReport Report;
  TProjectRunner Runner;
};

} // namespace kx::tests
