#include "program/runner/ProjectReader.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace kx {

namespace {

constexpr std::u16string_view ActionsName = u"Actions";
constexpr std::u16string_view ActionName = u"Action";
constexpr std::u16string_view GroupName = u"Group";

using TNames = std::vector<std::u16string>;
using TKnownNames = std::vector<std::u16string_view>;

TNames ListOf(const TKnownNames& names) {
  return {names.begin(), names.end()};
}

bool NamesSecret(const TActionNode& node, const TProjectElement& element) {
  const auto* property = node.FindProperty(element.Name);
  return property != nullptr && IsClearSecret(*property);
}

class TProjectReader {
public:
  TProjectReader(std::u16string_view fileName, TProject& project) : fileName_(fileName), project_(project) {}

  void Read(const TProjectElement& root) {
    if (root.Name != u"BuildProject")
      Refuse(root, u"Not a build project: expected <BuildProject>, not <" + root.Name + u">.");
    CheckAttributes(root, {u"Name"});
    CheckChildren(root, {u"Variables", u"PropertySets", u"Rules", u"Gates", ActionsName});
    CheckOnce(root);
    project_.Name = root.Attribute(u"Name").value_or(u"");
    if (const auto* variables = root.Child(u"Variables")) ReadVariables(*variables);
    if (const auto* sets = root.Child(u"PropertySets")) ReadPropertySets(*sets);
    if (const auto* rules = root.Child(u"Rules")) ReadRules(*rules);
    if (const auto* gates = root.Child(u"Gates")) ReadGates(*gates);
    if (const auto* actions = root.Child(ActionsName)) ReadActions(*actions, nullptr);
  }

private:
  [[noreturn]] void Refuse(const TProjectElement& element, std::u16string_view message) const {
    RefuseFile(fileName_, element.Line, message);
  }

  void CheckAttributes(const TProjectElement& element, const TKnownNames& known) const {
    for (const auto& attribute : element.Attributes)
      if (std::ranges::find(known, attribute.Name) == known.end())
        Refuse(element, u"Unknown attribute " + Quoted(attribute.Name) + u" of <" + element.Name + u">." +
                            DidYouMean(attribute.Name, ListOf(known)));
  }

  void CheckNoText(const TProjectElement& element) const {
    const std::u16string_view text = text::Trim(element.Text);
    if (!text.empty())
      Refuse(element,
             u"Unexpected text in <" + element.Name + u">: " + Quoted(text.substr(0, text.find(u'\n'))));
  }

  void CheckChildren(const TProjectElement& element, const TKnownNames& known) const {
    CheckNoText(element);
    for (const auto& child : element.Children)
      if (std::ranges::find(known, child.Name) == known.end())
        Refuse(child, u"Unknown element <" + child.Name + u"> in <" + element.Name + u">." +
                          DidYouMean(child.Name, ListOf(known)));
  }

  void CheckOnce(const TProjectElement& element) const {
    std::set<std::u16string_view, text::IgnoreCaseLess> seen;
    for (const auto& child : element.Children)
      if (!seen.insert(child.Name).second)
        Refuse(child, u"<" + child.Name + u"> stands twice in <" + element.Name + u">.");
  }

  void CheckIsText(const TProjectElement& element) const {
    if (!element.Children.empty())
      Refuse(element.Children.front(), u"<" + element.Name + u"> holds text; the element <" +
                                           element.Children.front().Name + u"> cannot stand in it.");
  }

  std::u16string RequireAttribute(const TProjectElement& element, std::u16string_view name) const {
    auto value = element.Attribute(name);
    if (!value || value->empty())
      Refuse(element, u"<" + element.Name + u"> has no " + std::u16string(name) + u".");
    return *std::move(value);
  }

  void ReadVariables(const TProjectElement& list) {
    CheckAttributes(list, {});
    CheckChildren(list, {u"Variable"});
    project_.Variables.Reserve(list.Children.size());
    for (const auto& element : list.Children) {
      CheckAttributes(element, {u"Name"});
      CheckIsText(element);
      const std::u16string name = RequireAttribute(element, u"Name");
      if (!IsVariableName(name))
        Refuse(element,
               u"The variable name " + Quoted(name) + u" may hold only letters, digits, \"_\" and \".\".");
      if (project_.Variables.Find(name) != nullptr)
        Refuse(element, u"The variable " + Quoted(name) + u" stands twice.");
      project_.Variables.Set({name, WithHostLineEnds(element.Text)});
    }
  }

  void ReadRules(const TProjectElement& list) {
    CheckAttributes(list, {});
    CheckChildren(list, {u"Rule"});
    for (const auto& element : list.Children) {
      CheckAttributes(element, {u"Name"});
      CheckIsText(element);
      const std::u16string name = RequireAttribute(element, u"Name");
      if (project_.Rules.Find(name)) Refuse(element, u"The rule " + Quoted(name) + u" stands twice.");
      try {
        project_.Rules.Set(name, element.Text);
      } catch (const EKxException& error) {
        Refuse(element, error.Message());
      }
    }
  }

  void ReadGates(const TProjectElement& element) {
    CheckAttributes(element, {u"Baseline", u"FailOn", u"MaxWarnings"});
    CheckChildren(element, {});
    TGateSettings& gates = project_.Gates;
    if (const auto file = element.Attribute(u"Baseline"); file && !file->empty())
      gates.Baseline = text::ExpandPath(*file, text::ExtractFileDir(fileName_));
    try {
      if (const auto word = element.Attribute(u"FailOn")) gates.FailOn = ReadFailOn(*word);
      if (const auto number = element.Attribute(u"MaxWarnings")) gates.MaxWarnings = ReadMaxWarnings(*number);
    } catch (const EKxException& error) {
      Refuse(element, error.Message());
    }
  }

  TPropertySetKind ReadKind(const TProjectElement& element) const {
    const std::u16string kind = RequireAttribute(element, u"Kind");
    if (text::EqualsIgnoreCase(kind, u"Win32")) return TPropertySetKind::Win32;
    if (text::EqualsIgnoreCase(kind, u"DotNet")) return TPropertySetKind::DotNet;
    Refuse(element, u"The kind of a property set is Win32 or DotNet, not " + Quoted(kind) + u".");
  }

  void ReadPropertySets(const TProjectElement& list) {
    CheckAttributes(list, {});
    CheckChildren(list, {u"PropertySet"});
    for (const auto& element : list.Children) {
      CheckAttributes(element, {u"Name", u"Kind"});
      CheckChildren(element, {u"Value"});
      const std::u16string name = RequireAttribute(element, u"Name");
      auto set = std::make_shared<TProjectPropertySet>(name, ReadKind(element));
      for (const auto& value : element.Children)
        ReadSetValue(value, *set);
      if (!project_.PropertySets.Add(std::move(set)))
        Refuse(element, u"The property set " + Quoted(name) + u" stands twice.");
    }
  }

  void ReadSetValue(const TProjectElement& element, TProjectPropertySet& set) const {
    CheckAttributes(element, {u"Name"});
    CheckIsText(element);
    const std::u16string name = RequireAttribute(element, u"Name");
    if (!set.Add(name, WithHostLineEnds(element.Text)))
      Refuse(element, u"The value " + Quoted(name) + u" stands twice.");
  }

  void ReadActions(const TProjectElement& list, TActionNode* parent) {
    CheckAttributes(list, {});
    if (parent == nullptr) {
      CheckChildren(list, {ActionName, GroupName});
    } else {
      const auto* group = list.Child(GroupName);
      if (group != nullptr) Refuse(*group, u"A <Group> stands in the outermost <Actions>, not in a loop.");
      CheckChildren(list, {ActionName});
    }
    for (const auto& element : list.Children) {
      if (IsGroup(element))
        ReadGroup(element);
      else
        ReadAction(element, parent);
    }
  }

  void ReadGroup(const TProjectElement& element) {
    CheckAttributes(element, {u"Name", u"Needs"});
    const auto* inner = element.Child(GroupName);
    if (inner != nullptr) Refuse(*inner, u"A <Group> holds actions; another <Group> cannot stand in it.");
    CheckChildren(element, {ActionName});
    TActionGroup group{.Name = RequireAttribute(element, u"Name"), .Needs = {}, .Line = element.Line};
    if (const auto needs = element.Attribute(u"Needs")) group.Needs = ReadNeeds(*needs);
    const TActionGroup& added = project_.AddGroup(std::move(group));
    for (const auto& action : element.Children)
      ReadAction(action, nullptr).SetGroup(&added);
  }

  TActionNode& AddAction(const TProjectElement& element, TActionNode* parent) const {
    try {
      return project_.AddAction(RequireAttribute(element, u"Type"), parent);
    } catch (const EKxParseError&) {
      throw;
    } catch (const std::bad_alloc&) {
      throw; // says nothing of the file
    } catch (const std::exception& error) {
      Refuse(element, MessageOf(error));
    }
  }

  TActionNode& ReadAction(const TProjectElement& element, TActionNode* parent) {
    CheckAttributes(element, KnownAttributes());
    CheckNoText(element);
    CheckOnce(element);
    TActionNode& node = AddAction(element, parent);
    if (const auto name = element.Attribute(u"Name")) node.SetName(*name);
    if (const auto value = element.Attribute(u"ContinueOnError"))
      node.SetOnFailure(ReadOnFailure(element, *value));
    node.SetLine(element.Line);
    node.SetTerms(ReadTerms(element, node, parent != nullptr));
    // A new secret in clear text replaces the encrypted one, wherever it stands.
    for (const bool secrets : {false, true})
      for (const auto& child : element.Children)
        if (child.Name != ActionsName && NamesSecret(node, child) == secrets) ReadProperty(child, node);
    if (const auto* actions = element.Child(ActionsName)) ReadNestedActions(*actions, node);
    return node;
  }

  static const TKnownNames& KnownAttributes() {
    static const auto known = [] {
      TKnownNames names{u"Type", u"Name", u"ContinueOnError"};
      std::ranges::transform(TermAttributes(), std::back_inserter(names), &TTermAttribute::Name);
      return names;
    }();
    return known;
  }

  TActionTerms ReadTerms(const TProjectElement& element, const TActionNode& node, bool isInLoop) const {
    TActionTerms terms;
    for (const TTermAttribute& attribute : TermAttributes()) {
      const auto text = element.Attribute(attribute.Name);
      if (!text) continue;
      if (isInLoop && attribute.IsOutermostOnly)
        Refuse(element,
               std::u16string(attribute.Name) +
                   u" has no meaning inside a loop, whose actions run one after the other on each pass.");
      if (attribute.IsOfLoopsOnly && node.Iterator() == nullptr)
        Refuse(element, std::u16string(attribute.Name) + u" is for loops, and the action " +
                            node.Type().Identifier + u" is none.");
      try {
        attribute.Read(terms, *text);
      } catch (const EKxException& error) {
        Refuse(element, error.Message());
      }
    }
    return terms;
  }

  void ReadNestedActions(const TProjectElement& list, TActionNode& node) {
    if (node.Iterator() == nullptr)
      Refuse(list, u"The action " + node.Type().Identifier + u" is no loop and cannot hold actions.");
    ReadActions(list, &node);
  }

  TOnFailure ReadOnFailure(const TProjectElement& element, std::u16string_view text) const {
    if (text::EqualsIgnoreCase(text::Trim(text), u"ignore")) return TOnFailure::Ignore;
    TKxPublishedProperty attribute;
    attribute.Kind = TKxPropertyKind::Boolean;
    try {
      return std::get<bool>(PropertyFromText(attribute, text)) ? TOnFailure::Continue : TOnFailure::Stop;
    } catch (const std::exception&) {
      Refuse(element, u"ContinueOnError takes true, false or ignore, not " + Quoted(text) + u".");
    }
  }

  void ReadProperty(const TProjectElement& element, TActionNode& node) const {
    try {
      const TKxPublishedProperty& property = node.RequireProperty(element.Name);
      property.Set(node.Action(), ReadValue(element, property));
    } catch (const EKxParseError&) {
      throw;
    } catch (const std::bad_alloc&) {
      throw; // says nothing of the file
    } catch (const std::exception& error) {
      Refuse(element, MessageOf(error));
    }
  }

  TKxPropertyValue ReadValue(const TProjectElement& element, const TKxPublishedProperty& property) const {
    if (property.Kind == TKxPropertyKind::StringList) return ReadList(element);
    CheckIsText(element);
    if (property.Kind == TKxPropertyKind::Enumeration) return ReadEnumeration(element, property);
    CheckAttributes(element, {});
    return PropertyFromText(property, WithHostLineEnds(element.Text));
  }

  // The ordinal counts; the name stands beside it for the reader, and alone when the ordinal is left out.
  TKxPropertyValue ReadEnumeration(const TProjectElement& element,
                                   const TKxPublishedProperty& property) const {
    CheckAttributes(element, {u"Name"});
    const auto name = element.Attribute(u"Name");
    if (!name) return PropertyFromText(property, element.Text);
    auto named = PropertyFromText(property, *name);
    if (text::Trim(element.Text).empty()) return named;
    auto value = PropertyFromText(property, element.Text);
    if (value != named)
      Refuse(element, std::u16string(property.Name) + u" says " + Quoted(*name) + u" and " +
                          Quoted(text::Trim(element.Text)) + u", which are not the same.");
    return value;
  }

  // One <Line> an entry; bare lines of text are read too, without the indentation of the file.
  TKxPropertyValue ReadList(const TProjectElement& element) const {
    CheckAttributes(element, {});
    text::TStringList lines;
    if (element.Children.empty()) {
      for (const auto line : text::SplitLines(element.Text))
        if (!text::Trim(line).empty()) lines.Add(text::Trim(line));
      return lines;
    }
    CheckChildren(element, {u"Line"});
    for (const auto& line : element.Children) {
      CheckAttributes(line, {});
      CheckIsText(line);
      lines.Add(line.Text);
    }
    return lines;
  }

  std::u16string_view fileName_;
  TProject& project_;
};

} // namespace

void ReadProject(const TProjectElement& root, std::u16string_view fileName, TProject& project) {
  TProjectReader(fileName, project).Read(root);
}

const TProjectElement* ActionsOf(const TProjectElement& element) {
  return element.Child(ActionsName);
}

bool IsGroup(const TProjectElement& element) {
  return element.Name == GroupName;
}

std::vector<TActionElement> ActionElementsOf(const TProjectElement& element) {
  std::vector<TActionElement> elements;
  const TProjectElement* list = ActionsOf(element);
  if (list == nullptr) return elements;
  for (const auto& child : list->Children) {
    if (!IsGroup(child))
      elements.push_back({&child, list});
    else
      for (const auto& action : child.Children)
        elements.push_back({&action, &child});
  }
  return elements;
}

} // namespace kx
