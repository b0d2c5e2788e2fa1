#include "tests/runner/TestActions.h"

#include <array>
#include <functional>

namespace kx::tests {

namespace {

TRunSettings SettingsIn(const TTemporaryFolder& folder, bool dryRun, TRuleSettings rules) {
  return {{{u"FromCommandLine", u"set"}, {u"Both", u"command line"}, {u"Nested", u"<%FromCommandLine%>"}},
          folder.Path("keys"),
          dryRun,
          std::move(rules),
          u"kxhost run p.kxproj"};
}

} // namespace

const TKxEnumeration& ColourEnumeration() {
  static constexpr std::array<std::u16string_view, 3> names{u"Red", u"Green", u"Blue"};
  static const TKxEnumeration enumeration{u"TColour", names};
  return enumeration;
}

std::map<std::u16string, TStepAction::TDeed>& TStepAction::Deeds() {
  static std::map<std::u16string, TDeed> deeds;
  return deeds;
}

const TKxPropertyTable& TStepAction::PublishedProperties() const {
  using T = TStepAction;
  static const TKxPropertyTable table(
      TKxPropertyRows<T>()
          .Field(u"Text", std::mem_fn(&T::Text), u"What is sent.")
          .Field(u"Number", std::mem_fn(&T::Number), u"A number.")
          .Field(u"Flag", std::mem_fn(&T::Flag), u"A flag.")
          .Field(u"Colour", std::mem_fn(&T::Colour), ColourEnumeration(), u"A colour.")
          .Field(u"Lines", std::mem_fn(&T::Lines), u"Lines.")
          .Accessors(
              u"Password", [](T& a) { return a.DecryptString(a.Secret); },
              [](T& a, const std::u16string& clear) { a.Secret = a.EncryptString(clear); }, u"Clear text.")
          .NotStored()
          .Secret()
          .Field(u"_Password", std::mem_fn(&T::Secret), u"Encrypted.")
          .Secret()
          .Take());
  return table;
}

bool TStepAction::Validate(IKxActionValidationError& errors) {
  const auto deed = Deeds().find(u"validate " + Text);
  if (deed != Deeds().end()) return deed->second(*this);
  if (Text == u"throws") throw EKxException(u"cannot validate");
  if (Text.empty()) errors.Add(u"Text", u"A text has not been set");
  return !Text.empty();
}

bool TStepAction::Execute() {
  const auto deed = Deeds().find(Text);
  if (deed != Deeds().end()) return deed->second(*this);
  SendMessage(ExpandExpression(Text));
  return true;
}

void TStepAction::CountUp() {
  const auto deed = Deeds().find(u"count " + Text);
  if (deed != Deeds().end()) deed->second(*this);
}

bool TStepAction::GetLocalVariableValue(std::u16string_view name, std::u16string& value) const {
  if (!text::EqualsIgnoreCase(name, u"Local")) return false;
  value = u"100%Own%";
  return true;
}

const TKxPropertyTable& TLoopAction::PublishedProperties() const {
  static const TKxPropertyTable table(TKxPropertyRows<TLoopAction>()
                                          .Field(u"Values", std::mem_fn(&TLoopAction::Values), u"One a pass.")
                                          .Take());
  return table;
}

bool TLoopAction::BeforeFirstIteration() {
  SetIterationCount(static_cast<int>(Values.Count()));
  return true;
}

std::u16string TLoopAction::GetCurrentValue() {
  return Values[static_cast<std::size_t>(GetCurrentIteration() - 1)];
}

void TRecordingSink::On(const TRunEvent& event) {
  const auto number = [](TStatusTag status) { return std::to_string(static_cast<int>(status)); };
  if (std::holds_alternative<TRunEnded>(event.What)) return; // the runner gives the report itself
  std::string line(static_cast<std::size_t>(event.Depth) * 2, ' ');
  if (const auto* action = std::get_if<TActionStarted>(&event.What)) {
    const std::string pass = action->Pass.empty() ? "" : "[" + text::ToUtf8(action->Pass) + "] ";
    line += text::ToUtf8(action->Name) + " " + pass + "{";
  } else if (const auto* ended = std::get_if<TActionEnded>(&event.What)) {
    line += IsSuccess(ended->Result.Result) ? "} True" : "} False";
  } else if (const auto* message = std::get_if<TMessageSent>(&event.What)) {
    line += number(message->Status) + " " + text::ToUtf8(message->Text);
    if (message->TakesBack > 0) line += " <- " + std::to_string(message->TakesBack);
  } else if (const auto* sent = std::get_if<TMetricSent>(&event.What)) {
    const auto* value = std::get_if<std::u16string>(&sent->Metric.Value);
    line += "#";
    for (const auto& text : {sent->Metric.Category, sent->Metric.Name,
                             value != nullptr ? *value : std::u16string(), sent->Configuration})
      line += " " + text::ToUtf8(text);
    if (sent->Source) line += " of " + text::ToUtf8(sent->Source->Action);
  } else if (const auto* group = std::get_if<TGroupStarted>(&event.What)) {
    line += "> " + text::ToUtf8(group->Title);
  } else if (const auto* groupEnd = std::get_if<TGroupEnded>(&event.What)) {
    line += groupEnd->Status ? "< " + number(*groupEnd->Status) : "<";
  }
  Lines.push_back(std::move(line));
}

TEmbeddedHost::TEmbeddedHost(bool dryRun, TRuleSettings rules)
    : Services(Store), Runner(Services, Stop, SettingsIn(folder_, dryRun, std::move(rules))) {
  Services.RegisterAction(u"STEP", u"Tests", TStepAction::Class());
  Services.RegisterAction(u"LOOP", u"Tests", TLoopAction::Class());
  Services.RegisterEnumeration(ColourEnumeration());
  Services.RegisterFunction(TStepAction::Class(), u"Describe",
                            [](TCustomKxAction& action, std::u16string_view argument) {
                              return action.GetDescription() + u"<" + std::u16string(argument) + u">";
                            });
  Runner.AddSink(Sink);
}

TEmbeddedHost::~TEmbeddedHost() {
  TStepAction::Deeds().clear();
}

std::string TEmbeddedHost::Read(std::string_view name) const {
  return folder_.Read(name);
}

TStepAction& TEmbeddedHost::AddStep(std::u16string_view text, std::u16string_view name, TActionNode* parent) {
  TActionNode& node = Project().AddAction(u"STEP", parent);
  node.SetName(name);
  auto& step = static_cast<TStepAction&>(node.Action());
  step.Text = text;
  return step;
}

TActionNode& TEmbeddedHost::AddLoop(std::initializer_list<std::u16string_view> values, TActionNode* parent,
                                    std::u16string_view variable) {
  TActionNode& node = Project().AddAction(u"LOOP", parent);
  node.SetName(u"Loop");
  auto& loop = static_cast<TLoopAction&>(node.Action());
  loop.SetLoopVariable(std::u16string(variable));
  loop.Values = values;
  return node;
}

std::vector<std::string> TEmbeddedHost::Run() {
  Sink.Lines.clear();
  Report = Runner.Run();
  return Sink.Lines;
}

} // namespace kx::tests
