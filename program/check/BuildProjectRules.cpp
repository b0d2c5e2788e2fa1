#include "program/check/BuildProjectRules.h"

#include "foundation/text/Text.h"
#include "program/runner/References.h"

#include <algorithm>
#include <array>
#include <set>

namespace kx::check {

namespace {

using TNames = std::set<std::u16string, text::IgnoreCaseLess>;

// All that the texts of a project name: by references, and as a whole text or line.
struct TMentions {
  TNames Names;
  bool AnyComputed = false; // a text that holds references may name anything

  explicit TMentions(const TProjectElement& root) { Collect(root); }

private:
  void Collect(const TProjectElement& element) {
    CollectText(element.Text);
    for (const auto& attribute : element.Attributes)
      if (attribute.Name != u"Name") CollectText(attribute.Value); // that one names the element itself
    for (const TProjectElement& child : element.Children)
      Collect(child);
  }

  void CollectText(std::u16string_view text) {
    for (const auto line : text::SplitLines(text))
      Names.emplace(text::Trim(line));
    for (const TTextPart& part : SplitReferences(text))
      if (part.Reference) {
        Names.emplace(part.Reference->Name);
        AnyComputed = true;
      }
  }
};

// The elements of this name in a list of the project, each with the name it bears.
template <typename TVisit>
void ForEachNamed(const TProjectElement& root, std::u16string_view list, std::u16string_view name,
                  const TVisit& visit) {
  const TProjectElement* elements = root.Child(list);
  if (elements == nullptr) return;
  for (const TProjectElement& element : elements->Children)
    if (const auto own = element.Attribute(u"Name"); element.Name == name && own) visit(element, *own);
}

void SayAll(const std::vector<TBuildProblem>& problems, TRuleReport& report) {
  for (const TBuildProblem& problem : problems)
    report.Say(problem.Line, problem.Message);
}

// Whether a variable is called as secrets are.
bool SoundsSecret(std::u16string_view name) {
  static constexpr std::array<std::u16string_view, 6> words{u"password", u"passwd", u"secret",
                                                            u"token",    u"apikey", u"credential"};
  return std::ranges::any_of(words, [name](std::u16string_view word) {
    return text::FindIgnoreCase(name, word) != std::u16string_view::npos;
  });
}

} // namespace

void FindRefusedBuildProject(const TBuildProjectFacts& project, TRuleReport& report) {
  SayAll(project.Refused, report);
}

void FindInvalidSettings(const TBuildProjectFacts& project, TRuleReport& report) {
  SayAll(project.Settings, report);
}

void FindUnchangeableFiles(const TBuildProjectFacts& project, TRuleReport& report) {
  SayAll(project.Unchangeable, report);
}

void FindIneffectiveSettings(const TBuildProjectFacts& project, TRuleReport& report) {
  SayAll(project.Ineffective, report);
}

void FindUnusedVariables(const TBuildProjectFacts& project, TRuleReport& report) {
  const TMentions mentions(project.Root);
  ForEachNamed(project.Root, u"Variables", u"Variable",
               [&](const TProjectElement& element, const std::u16string& name) {
                 if (!mentions.Names.contains(name))
                   report.Say(element.Line, u"Nothing refers to the variable " + name);
               });
}

void FindUnusedPropertySets(const TBuildProjectFacts& project, TRuleReport& report) {
  const TMentions mentions(project.Root);
  if (mentions.AnyComputed) return; // the name of the set may be among what is computed
  ForEachNamed(project.Root, u"PropertySets", u"PropertySet",
               [&](const TProjectElement& element, const std::u16string& name) {
                 if (!mentions.Names.contains(name))
                   report.Say(element.Line, u"No action takes the property set " + name);
               });
}

void FindClearSecrets(const TBuildProjectFacts& project, TRuleReport& report) {
  SayAll(project.ClearSecrets, report);
  ForEachNamed(project.Root, u"Variables", u"Variable",
               [&](const TProjectElement& element, const std::u16string& name) {
                 const auto parts = SplitReferences(element.Text);
                 const bool isLiteral = std::ranges::none_of(
                     parts, [](const TTextPart& part) { return part.Reference.has_value(); });
                 if (SoundsSecret(name) && isLiteral && !text::Trim(element.Text).empty())
                   report.Say(element.Line, u"The variable " + name + u" holds its value in clear text");
               });
}

} // namespace kx::check
