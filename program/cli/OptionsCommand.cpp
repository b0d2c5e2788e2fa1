// kxhost options: the options store, with what the registered options classes make of it.
#include "foundation/platform/Console.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/runner/KnownOptions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace kx::cli {

namespace {

struct TEntry {
  std::u16string Section;
  std::u16string Key;
  std::u16string Value;
};

// Collects what an options object would store.
class TCollector : public IKxOptionsWriter {
public:
  TCollector(std::u16string_view section, std::vector<TEntry>& entries)
      : section_(section), entries_(entries) {}
  void WriteString(std::u16string_view key, std::u16string_view value) override {
    entries_.push_back({section_, std::u16string(key), std::u16string(value)});
  }
  void WriteInteger(std::u16string_view key, std::int32_t value) override {
    WriteString(key, text::FromInteger(value));
  }

private:
  std::u16string section_;
  std::vector<TEntry>& entries_;
};

// What is stored for an option, or stands for it; nothing when there is neither.
std::optional<std::u16string> ValueOf(THostSession& session, const std::vector<TEntry>& entries,
                                      const TOptionName& name) {
  const auto found = std::ranges::find_if(entries, [&name](const TEntry& entry) {
    return text::EqualsIgnoreCase(entry.Section, name.Section) && text::EqualsIgnoreCase(entry.Key, name.Key);
  });
  return found != entries.end() ? std::optional(found->Value) : session.Store().Get(name);
}

// The values of the options objects, filled-in defaults included.
std::vector<TEntry> EntriesOf(THostSession& session) {
  std::vector<TEntry> entries;
  for (const auto& options : session.Services().Options()) {
    TCollector collector(options.Class->OptionKey, entries);
    options.Object->SaveOptions(collector);
  }
  return entries;
}

TOptionName ParseName(const std::string& text) {
  try {
    return TOptionName::Parse(text::FromUtf8(text));
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
}

// Raises EUsage for what nothing reads.
TKnownOption RequireKnown(THostSession& session, const std::string& key) {
  const TOptionName name = ParseName(key);
  try {
    return RequireOption(KnownOptions(session.Services()), name);
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
}

std::string LineOf(const TOptionName& name, std::u16string_view value) {
  return ForTerminal(name.Section + u"." + name.Key + u"=" + std::u16string(value)) + "\n";
}

// All that is read, and what is stored beside it.
int List(const TCommonOptions& common) {
  THostSession session(common);
  const auto known = KnownOptions(session.Services());
  const auto entries = EntriesOf(session);
  TOutput output;
  for (const auto& option : known)
    output.Write(
        LineOf(option.Name, ShownText(option, ValueOf(session, entries, option.Name).value_or(u""))));
  for (const auto& name : session.Store().StoredNames()) {
    if (FindOption(known, name) != nullptr) continue;
    output.Write(LineOf(name, session.Store().Get(name).value_or(u"")));
    WriteError(u"Warning : nothing reads the option " + name.Section + u"." + name.Key +
               u"; \"kxhost options unset\" removes it.");
  }
  return ExitSuccess;
}

int NotSet(const std::string& key) {
  WriteError(u"The option " + text::FromUtf8(key) + u" is not set.");
  return ExitFailed;
}

int Get(const std::string& key, const TCommonOptions& common) {
  THostSession session(common);
  const TOptionName name = ParseName(key);
  if (session.Store().Get(name) && FindOption(KnownOptions(session.Services()), name) == nullptr) {
    Print(ForTerminal(*session.Store().Get(name)) + "\n");
    return ExitSuccess;
  }
  const TKnownOption option = RequireKnown(session, key);
  const auto value = ValueOf(session, EntriesOf(session), name);
  if (!value) return NotSet(key);
  Print(ForTerminal(ShownText(option, *value)) + "\n");
  return ExitSuccess;
}

int Save(THostSession& session) {
  const auto saved = session.Store().Save();
  if (saved) return ExitSuccess;
  WriteError(saved.Message());
  return ExitFailed;
}

int Set(const std::string& key, const std::string& value, const TCommonOptions& common) {
  THostSession session(common);
  const TKnownOption option = RequireKnown(session, key);
  try {
    const std::u16string text = text::FromUtf8(value);
    if (const auto doubt = CheckPlace(option, text)) WriteError(u"Warning : " + *doubt);
    session.Store().Set(option.Name, StoredText(option, text));
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
  return Save(session);
}

int Unset(const std::string& key, const TCommonOptions& common) {
  THostSession session(common);
  const TOptionName name = ParseName(key);
  if (!session.Store().GetStored(name)) {
    RequireKnown(session, key);
    return NotSet(key);
  }
  session.Store().Remove(name);
  return Save(session);
}

} // namespace

void DefineOptions(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  command.require_subcommand(0, 1);
  CLI::App* list = command.add_subcommand("list", "Print all options as SECTION.KEY=VALUE (the default)");
  CLI::App* get = command.add_subcommand("get", "Print one option");
  CLI::App* set = command.add_subcommand("set", "Store one option");
  CLI::App* unset = command.add_subcommand("unset", "Remove one option from the store");
  const auto key = std::make_shared<std::string>();
  const auto value = std::make_shared<std::string>();
  for (CLI::App* one : {get, set, unset})
    one->add_option("KEY", *key, "SECTION.KEY, such as VisualStudioDotNet.MSDevPath2008")->required();
  set->add_option("VALUE", *value, "The new value")->required();
  command.callback([=, &common, &exitCode] {
    if (get->parsed()) {
      exitCode = Get(*key, common);
    } else if (set->parsed()) {
      exitCode = Set(*key, *value, common);
    } else if (unset->parsed()) {
      exitCode = Unset(*key, common);
    } else {
      exitCode = List(common);
    }
  });
  static_cast<void>(list);
}

} // namespace kx::cli
