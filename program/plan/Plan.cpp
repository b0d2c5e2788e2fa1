#include "program/plan/Plan.h"

#include "contract/LookAhead.h"
#include "foundation/text/WindowsPath.h"
#include "program/plan/PartIds.h"

#include <algorithm>
#include <unordered_set>

namespace kx {

namespace {

// Adds those that are not there yet.
class TUniqueTexts {
public:
  void Add(const text::TStringList& texts) {
    for (const auto& text : texts)
      if (seen_.insert(text).second) texts_.push_back(text);
  }
  std::vector<std::u16string> Take() { return std::move(texts_); }

private:
  std::unordered_set<std::u16string> seen_;
  std::vector<std::u16string> texts_;
};

class TFacts {
public:
  // A loop's own and those of what it runs.
  explicit TFacts(const TActionNode& node) { Collect(node); }

  // `inputs`: those of the part before this one.
  void GiveTo(TPart& part, TFilePaths& inputs) {
    auto read = inputs_.Take();
    if (read != *inputs) inputs = std::make_shared<const std::vector<std::u16string>>(std::move(read));
    part.Inputs = inputs;
    part.Outputs = outputs_.Take();
    part.Capabilities = capabilities_.Take();
  }

private:
  void Collect(const TActionNode& node) {
    text::TStringList read;
    text::TStringList written;
    text::TStringList words;
    node.Action().GetFilesToRead(read);
    node.Action().GetFilesToChange(written);
    node.Action().GetFilesToWrite(written);
    node.Action().GetRequirements(words);
    inputs_.Add(read);
    outputs_.Add(written);
    capabilities_.Add(words);
    for (const auto& child : node.Children())
      Collect(*child);
  }

  TUniqueTexts inputs_;
  TUniqueTexts outputs_;
  TUniqueTexts capabilities_;
};

class TPlanMaker {
public:
  TPlanMaker(TProjectRunner& runner, const history::TUsualTimes& usual)
      : runner_(runner), project_(runner.Project()), graph_(project_), usual_(usual), ids_(project_) {}

  TPlan Make(std::span<const std::size_t> only) {
    const TKxAskingScope asking;
    plan_.File = project_.FileName;
    plan_.Name = InOneLine(project_.Name.empty() ? std::u16string(text::ExtractFileName(project_.FileName))
                                                 : project_.Name);
    partsOf_.resize(project_.Actions().size());
    for (const std::size_t place : only)
      AddAction(place);
    for (const std::size_t place : only)
      AddNeeds(place);
    return std::move(plan_);
  }

private:
  void AddAction(std::size_t place) {
    const TActionNode& node = *project_.Actions()[place];
    TPart part = PartOf(node, place);
    const auto passes = PassesOf(node);
    if (passes.empty()) {
      part.Usual = UsualTime(node.DisplayName());
      TFacts(node).GiveTo(part, inputs_);
      return Add(std::move(part));
    }
    for (std::size_t i = 0; i < passes.size(); ++i)
      AddPass(node, part, static_cast<int>(i) + 1, passes[i].Value);
    for (std::size_t i = 0; i < passes.size(); ++i)
      for (const std::size_t need : passes[i].Needs)
        PartsOf(place, i).Needs.push_back({partsOf_[place][need], true});
  }

  TPart PartOf(const TActionNode& node, std::size_t place) {
    TPart part;
    part.Action = node.DisplayName();
    part.Id = ids_.Of(place);
    part.Type = node.Type().Identifier;
    part.Place = place;
    part.OnFailure = node.OnFailure();
    if (const auto* group = node.Group()) part.Group = group->Name;
    return part;
  }

  void AddPass(const TActionNode& node, TPart part, int pass, const std::u16string& value) {
    part.Id = ids_.OfPass(part.Place, value);
    part.Pass = pass;
    part.PassValue = value;
    for (const auto& child : node.Children())
      if (const auto time = UsualTime(NameWithPass(child->DisplayName(), value)))
        part.Usual = part.Usual.value_or(std::chrono::milliseconds(0)) + *time;
    runner_.InPass(*node.Iterator(), value, [&] { TFacts(node).GiveTo(part, inputs_); });
    Add(std::move(part));
  }

  void Add(TPart part) {
    partsOf_[part.Place].push_back(plan_.Parts.size());
    plan_.Parts.push_back(std::move(part));
  }

  TPart& PartsOf(std::size_t place, std::size_t pass) { return plan_.Parts[partsOf_[place][pass]]; }

  void AddNeeds(std::size_t place) {
    for (const TActionNeed& need : graph_.NeedsOf(place))
      for (const std::size_t part : partsOf_[place])
        for (const std::size_t needed : partsOf_[need.Action])
          plan_.Parts[part].Needs.push_back({needed, need.MustSucceed});
  }

  std::optional<std::chrono::milliseconds> UsualTime(const std::u16string& name) const {
    const auto time = usual_.Actions.find(name);
    return time == usual_.Actions.end() ? std::nullopt : std::optional(time->second);
  }

  TProjectRunner& runner_;
  const TProject& project_;
  const TActionGraph graph_;
  const history::TUsualTimes& usual_;
  TPartIds ids_;
  TPlan plan_;
  std::vector<std::vector<std::size_t>> partsOf_; // by place
  TFilePaths inputs_ = TPart().Inputs;
};

} // namespace

TPlan MakePlan(TProjectRunner& runner, const history::TUsualTimes& usual, std::span<const std::size_t> only) {
  return TPlanMaker(runner, usual).Make(only);
}

bool MustSucceed(const TPlan& plan, const TActionNeed& need) {
  return need.MustSucceed || plan.Parts[need.Action].OnFailure == TOnFailure::Stop;
}

} // namespace kx
