#include "program/check/BuildProjectFacts.h"

#include "contract/Pages.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/ProjectReader.h"

#include <map>
#include <set>

namespace kx::check {

namespace {

using TNames = std::set<std::u16string, text::IgnoreCaseLess>;
using TNodes = std::vector<std::unique_ptr<TActionNode>>;

// The properties that no page of the action lets a user change as it is now. One that stands on no page is
// none of them, nor one that a page offers in another field.
TNames SwitchedOff(const TServiceRegistry& services, const TActionNode& node) {
  TNames off, on;
  for (const TRegisteredPages& registered : services.Pages()) {
    if (registered.Class != node.Type().Class) continue;
    for (const TKxPageClass* pageClass : registered.Pages) {
      const auto page = pageClass->Create();
      page->InitFrame();
      page->InitPage(node.Action());
      page->ReadActionData();
      for (const TKxPageField& field : page->Fields())
        if (!field.Property.empty()) (field.Enabled ? on : off).insert(field.Property);
    }
  }
  for (const std::u16string& name : on)
    off.erase(name);
  return off;
}

// Goes through the actions of the project and their elements side by side.
class TActionWalk {
public:
  TActionWalk(const TServiceRegistry& services, TBuildProjectFacts& facts)
      : services_(services), facts_(facts) {}

  void Visit(const TNodes& nodes, const TProjectElement& parent) {
    auto node = nodes.begin();
    for (const auto& [element, list] : ActionElementsOf(parent)) {
      if (node == nodes.end()) return;
      lines_[node->get()] = element->Line;
      LookAt(**node, *element);
      Visit((*node)->Children(), *element);
      ++node;
    }
  }

  int LineOf(const TActionNode* node) { return lines_[node]; } // 0 for one that was not visited

private:
  void LookAt(const TActionNode& node, const TProjectElement& element) {
    const TNames off = SwitchedOff(services_, node);
    const auto untouched = node.Type().Class->Create();
    for (const TProjectElement& stated : element.Children) {
      const TKxPublishedProperty* property = node.FindProperty(stated.Name);
      if (property == nullptr) continue;
      if (IsClearSecret(*property) && !stated.Text.empty())
        facts_.ClearSecrets.push_back(
            {stated.Line,
             node.DisplayName() + u": " + std::u16string(property->Name) + u" is in clear text"});
      if (off.contains(property->Name) && property->Get(*untouched) != property->Get(node.Action()))
        facts_.Ineffective.push_back({stated.Line, node.DisplayName() + u": " +
                                                       std::u16string(property->Name) +
                                                       u" has no effect with the other settings"});
    }
  }

  const TServiceRegistry& services_;
  TBuildProjectFacts& facts_;
  std::map<const TActionNode*, int> lines_;
};

void Load(std::string bytes, TBuildProjectFacts& facts, const TServiceRegistry& services, TKxEvent& stop,
          const TRunSettings& settings) {
  TProjectRunner runner(services, stop, settings);
  TProjectFile loaded(runner.Project());
  TProjectElement root = ParseProjectXml(bytes, facts.File);
  loaded.LoadBytes(std::move(bytes), facts.File);
  facts.Root = std::move(root);
  TActionWalk walk(services, facts);
  walk.Visit(runner.Project().Actions(), facts.Root);
  for (const TValidationEntry& entry : runner.Validate())
    facts.Settings.push_back(
        {entry.Node == nullptr ? facts.Root.Line : walk.LineOf(entry.Node),
         entry.Action + u": " + (entry.Page.empty() ? u"" : entry.Page + u": ") + entry.Message});
  for (const TValidationNote& note : runner.CheckFilesToChange())
    facts.Unchangeable.push_back({facts.Root.Line, note.Action + u": " + note.Message});
}

// What the reader of build projects puts before its reason, "file(12): ", is said by the finding's place.
std::u16string WithoutPlace(const EKxParseError& error, const std::u16string& file) {
  const std::u16string place = file + u"(" + text::FromInteger(error.Line()) + u"): ";
  return error.Message().starts_with(place) ? error.Message().substr(place.size()) : error.Message();
}

} // namespace

TBuildProjectFacts ReadBuildProjectFacts(const std::u16string& file, const TServiceRegistry& services,
                                         TKxEvent& stop, const TRunSettings& settings) {
  TBuildProjectFacts facts{
      .File = file, .Refused = {}, .Settings = {}, .Unchangeable = {}, .Ineffective = {}, .ClearSecrets = {}};
  auto bytes = platform::ReadFile(file);
  try {
    if (!bytes) throw EKxParseError(bytes.Message());
    Load(*std::move(bytes), facts, services, stop, settings);
  } catch (const EKxParseError& error) {
    facts.Refused.push_back({error.Line(), WithoutPlace(error, file)});
  }
  return facts;
}

} // namespace kx::check
