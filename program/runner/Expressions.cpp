#include "program/runner/Expressions.h"

#include "program/runner/Messages.h"
#include "program/runner/References.h"

#include <algorithm>

namespace kx {

namespace {

// A handful of variables that double each other could fill any memory.
constexpr std::size_t MaximumLength = std::size_t{16} << 20;
constexpr std::size_t MaximumDepth = 100;
constexpr int MaximumCalls = 16;
// A second or two; each unknown name is compared with all that are known.
constexpr std::size_t MostNamesCompared = 1'000'000;

class TCallGuard {
public:
  explicit TCallGuard(int& calls) : calls_(++calls) {}
  ~TCallGuard() { --calls_; }
  TCallGuard(const TCallGuard&) = delete;
  TCallGuard& operator=(const TCallGuard&) = delete;

private:
  int& calls_;
};

// The expansion of one text.
class TExpansion {
public:
  // `loopVariables`: null in a run.
  TExpansion(const TProject& project, const TVariables& variables, TCustomKxAction* action,
             TExpressionTally& tally, const TVariableNames* loopVariables)
      : project_(project), variables_(variables), action_(action), tally_(tally),
        loopVariables_(loopVariables) {}

  std::u16string Expand(std::u16string_view text) {
    std::u16string result;
    for (const TTextPart& part : SplitReferences(text)) {
      result += part.Reference ? Value(*part.Reference) : part.Plain;
      if (result.size() > MaximumLength) throw EExpressionError(u"The expanded text is too long.");
    }
    return result;
  }

  std::optional<std::u16string> Variable(std::u16string_view name) {
    if (const auto done = expanded_.find(name); done != expanded_.end()) return done->second;
    if (loopVariables_ != nullptr && loopVariables_->contains(name)) RefuseBeforeRun(name);
    auto value = variables_.Find(name);
    if (!value) return std::nullopt;
    if (!value->MayHoldReferences) return std::move(value->Text);
    Enter(name);
    const bool isPlain = value->Text.find_first_of(u"%$") == value->Text.npos;
    if (!isPlain) value->Text = Expand(value->Text);
    under_.pop_back();
    if (isPlain) return std::move(value->Text);
    return expanded_.emplace(name, std::move(value->Text)).first->second;
  }

private:
  std::u16string Value(const TReference& reference) {
    if (reference.IsCall) return Call(reference);
    if (auto own = OwnValue(reference)) return *own;
    if (auto variable = Variable(reference.Name)) return *variable;
    if (const auto constant = project_.Services().FindConstant(reference.Name))
      return text::FromInteger(*constant);
    if (auto environment = TVariables::FindInEnvironment(reference.Name)) return *environment;
    throw EExpressionError(u"Unknown name " + Quoted(reference.Name) + u"." + Suggestion(reference.Name));
  }

  std::u16string Suggestion(std::u16string_view name) {
    if (tally_.NamesCompared >= MostNamesCompared) return {};
    const auto known = KnownNames();
    tally_.NamesCompared += known.size();
    return DidYouMean(name, known);
  }

  // What the action itself makes of the reference.
  std::optional<std::u16string> OwnValue(const TReference& reference) const {
    if (action_ == nullptr) return std::nullopt;
    auto hooked = action_->ActionExpandExpression(reference.Written);
    if (hooked != reference.Written) return hooked;
    std::u16string value;
    if (!action_->GetLocalVariableValue(reference.Name, value)) return std::nullopt;
    if (loopVariables_ != nullptr) RefuseBeforeRun(reference.Name);
    return value;
  }

  [[noreturn]] static void RefuseBeforeRun(std::u16string_view name) {
    throw EKnownInRunOnly(u"Only a run knows the value of " + Quoted(name) + u".");
  }

  void Enter(std::u16string_view name) {
    const auto same = [name](std::u16string_view other) { return text::EqualsIgnoreCase(other, name); };
    const auto first = std::ranges::find_if(under_, same);
    if (first == under_.end() && under_.size() < MaximumDepth) {
      under_.emplace_back(name);
      return;
    }
    if (first == under_.end()) throw EExpressionError(u"The variables refer to each other too deeply.");
    std::u16string chain;
    for (auto step = first; step != under_.end(); ++step)
      chain += *step + u", ";
    throw ESelfReference({first, under_.end()},
                         u"The variable " + Quoted(*first) + u" refers to itself: " + chain + *first + u".");
  }

  const TActionNode& CalledNode(const TReference& reference) const {
    if (reference.Action.empty()) {
      const TActionNode* own = action_ == nullptr ? nullptr : project_.FindNode(*action_);
      if (own == nullptr)
        throw EExpressionError(u"There is no action here to call " + Quoted(reference.Name) + u" of.");
      return *own;
    }
    if (const TActionNode* named = project_.FindNamed(reference.Action)) return *named;
    throw EExpressionError(u"No action is named " + Quoted(reference.Action) + u".");
  }

  std::u16string Call(const TReference& reference) {
    const TActionNode& node = CalledNode(reference);
    const TServiceRegistry& services = project_.Services();
    const auto* function = services.FindFunction(*node.Type().Class, reference.Name);
    if (function == nullptr)
      throw EExpressionError(u"The action " + node.Type().Identifier + u" has no function " +
                             Quoted(reference.Name) + u"." +
                             DidYouMean(reference.Name, services.FunctionNames(*node.Type().Class)));
    const std::u16string argument = Expand(reference.Argument);
    const TCallGuard guard(tally_.Calls);
    if (tally_.Calls > MaximumCalls)
      throw EExpressionError(u"The function " + Quoted(reference.Name) + u" calls itself without end.");
    return function->Function(node.Action(), argument);
  }

  std::vector<std::u16string> KnownNames() const {
    std::vector<std::u16string> names = variables_.Names();
    const auto constants = project_.Services().ConstantNames();
    names.insert(names.end(), constants.begin(), constants.end());
    text::TStringList local;
    if (action_ != nullptr) action_->CollectLocalVariables(local, false, false);
    names.insert(names.end(), local.begin(), local.end());
    if (loopVariables_ != nullptr) names.insert(names.end(), loopVariables_->begin(), loopVariables_->end());
    return names;
  }

  const TProject& project_;
  const TVariables& variables_;
  TCustomKxAction* action_;
  TExpressionTally& tally_;
  const TVariableNames* loopVariables_;
  std::vector<std::u16string> under_; // the variables whose values are being expanded
  TByName<std::u16string> expanded_;  // the values that held references
};

} // namespace

TExpressionEngine::TExpressionEngine(const TProject& project, const TVariables& variables)
    : project_(project), variables_(variables) {}

std::u16string TExpressionEngine::Expand(TCustomKxAction& action, std::u16string_view text) const {
  return TExpansion(project_, variables_, &action, tally_, loopVariables_).Expand(text);
}

std::optional<std::u16string> TExpressionEngine::VariableValue(TCustomKxAction* action,
                                                               std::u16string_view name) const {
  TExpansion expansion(project_, variables_, action, tally_, loopVariables_);
  if (auto value = expansion.Variable(name)) return value;
  return TVariables::FindInEnvironment(name);
}

TForesight::TForesight(const TExpressionEngine& expressions, TVariableNames loopVariables)
    : expressions_(expressions), loopVariables_(std::move(loopVariables)) {
  expressions_.loopVariables_ = &loopVariables_;
}

TForesight::~TForesight() {
  expressions_.loopVariables_ = nullptr;
}

} // namespace kx
