#include "program/plan/PartCommand.h"

#include "foundation/text/CommandLine.h"
#include "program/plan/UniqueNames.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::size_t LongestName = 60;

constexpr bool IsPlain(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || text::IsDigit(c);
}

std::u16string NarrowName(std::u16string_view id) {
  std::u16string name;
  for (const char16_t c : id.substr(0, LongestName))
    if (IsPlain(c) || (!name.empty() && name.back() != u'_')) name += IsPlain(c) ? c : u'_';
  while (name.ends_with(u'_'))
    name.pop_back();
  return name.empty() ? u"part" : name;
}

std::u16string ForPosixShell(const std::u16string& argument) {
  constexpr std::u16string_view harmless = u"-_./:=,+@";
  const bool isPlain = !argument.empty() && std::ranges::all_of(argument, [harmless](char16_t c) {
    return IsPlain(c) || harmless.find(c) != harmless.npos;
  });
  return isPlain ? argument : u"'" + text::ReplaceAll(argument, u"'", u"'\\''") + u"'";
}

// What cmd.exe would take for itself is in quotation marks for both.
std::u16string ForWindowsShell(const std::u16string& argument) {
  const bool isPlain = argument.find_first_of(u"&|<>^()%!,;=") == argument.npos;
  return isPlain ? text::QuoteArgumentIfNeeded(argument) : text::QuoteArgument(argument);
}

} // namespace

std::vector<std::u16string> CommandOf(const TPart& part, const TRunWords& words, std::u16string_view log) {
  std::vector<std::u16string> command{u"kxhost", u"run", words.Project, u"--part", part.Id};
  command.insert(command.end(), words.Options.begin(), words.Options.end());
  if (!log.empty()) command.insert(command.end(), {u"--log", std::u16string(log)});
  return command;
}

std::vector<std::u16string> NarrowNames(const TPlan& plan) {
  std::vector<std::u16string> names;
  TUniqueNames taken;
  for (const TPart& part : plan.Parts)
    names.push_back(taken.Take(NarrowName(part.Id), u"_", u""));
  return names;
}

std::u16string LogOf(const TPlan& plan, std::size_t part, std::u16string_view narrowName) {
  const auto digits = [](std::size_t number) { return text::FromInteger(static_cast<std::int64_t>(number)); };
  std::u16string number = digits(part + 1);
  number.insert(0, digits(plan.Parts.size()).size() - number.size(), u'0');
  return u"part-" + number + u"-" + std::u16string(narrowName) + u".jsonl";
}

std::u16string ShellLine(std::span<const std::u16string> command, bool forWindows) {
  std::u16string line;
  for (const auto& argument : command)
    line += (line.empty() ? u"" : u" ") + (forWindows ? ForWindowsShell(argument) : ForPosixShell(argument));
  return line;
}

} // namespace kx
