// kxhost explain: the rules of kxhost check.
#include "program/cli/Commands.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/check/CheckRule.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace kx::cli {

namespace {

using check::CheckRules;
using check::LevelName;
using check::TCheckRule;

struct TExplainArguments {
  std::string Rule;
  bool Markdown = false;
};

// What a file has that breaks the rule, each line behind `indent`.
std::u16string ExampleOf(const TCheckRule& rule, std::u16string_view indent) {
  std::u16string text;
  for (const auto line : text::SplitLines(rule.Example))
    text += std::u16string(indent) + text::ReplaceAll(line, u"\t", u"    ") + u"\n";
  return text;
}

std::u16string ListRules() {
  std::size_t widest = 0;
  for (const TCheckRule& rule : CheckRules())
    widest = std::max(widest, rule.Name.size());
  std::u16string list;
  for (const TCheckRule& rule : CheckRules()) {
    constexpr std::size_t severityWidth = 7;
    const std::u16string_view severity = LevelName(rule.Default);
    list += std::u16string(rule.Name) + std::u16string(widest + 2 - rule.Name.size(), u' ') +
            std::u16string(severity) + std::u16string(severityWidth + 2 - severity.size(), u' ') +
            std::u16string(rule.Summary) + u"\n";
  }
  return list;
}

std::u16string Explain(const TCheckRule& rule) {
  return std::u16string(rule.Name) + u" (" + std::u16string(LevelName(rule.Default)) + u")\n" +
         std::u16string(rule.Summary) + u".\n\n" + std::u16string(rule.Why) + u"\n" +
         std::u16string(rule.Advice) + u"\n\nFor example:\n" + ExampleOf(rule, u"    ");
}

std::u16string RulesPage() {
  std::u16string page =
      u"# Rules of kxhost check\n\n`kxhost explain --markdown` writes this page; `kxhost explain RULE` says "
      u"the same "
      u"of one rule. `--rule NAME=error`, `warning`, `note` or `off`\nchanges how severe one is.\n";
  for (const TCheckRule& rule : CheckRules())
    page += u"\n## " + std::u16string(rule.Name) + u"\n\n**" + std::u16string(rule.Summary) + u"** (" +
            std::u16string(LevelName(rule.Default)) + u").\n\n" + std::u16string(rule.Why) + u"\n" +
            std::u16string(rule.Advice) + u"\n\n" + ExampleOf(rule, u"    ");
  return page;
}

std::u16string TextOf(const TExplainArguments& arguments) {
  if (arguments.Markdown) return RulesPage();
  if (arguments.Rule.empty()) return ListRules();
  try {
    return Explain(check::RequireCheckRule(text::FromUtf8(arguments.Rule)));
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
}

} // namespace

void DefineExplain(CLI::App& command, const TCommonOptions& /*common*/, int& exitCode) {
  const auto arguments = std::make_shared<TExplainArguments>();
  command.add_option("RULE", arguments->Rule, "One of the rules; without one all are listed");
  command.add_flag("--markdown", arguments->Markdown, "Write the page of all rules");
  command.callback([arguments, &exitCode] {
    Print(text::ToUtf8(TextOf(*arguments)));
    exitCode = ExitSuccess;
  });
}

} // namespace kx::cli
