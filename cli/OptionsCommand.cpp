// kxhost options: the options store, with what the registered options classes make of it.
#include "cli/Common.h"
#include "platform/Console.h"
#include "text/Encoding.h"
#include "text/Text.h"

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

bool SameKey(const TEntry& entry, const TOptionName& name) {
  return text::EqualsIgnoreCase(entry.Section, name.Section) && text::EqualsIgnoreCase(entry.Key, name.Key);
}

// What holds: the values of the options objects, filled-in defaults included, then everything else that is
// stored.
std::vector<TEntry> EntriesOf(THostSession& session) {
  std::vector<TEntry> entries;
  for (const auto& options : session.Services().Options()) {
    TCollector collector(options.Class->OptionKey, entries);
    options.Object->SaveOptions(collector);
  }
  for (const auto& name : session.Store().StoredNames()) {
    const bool known = std::any_of(entries.begin(), entries.end(),
                                   [&name](const TEntry& entry) { return SameKey(entry, name); });
    if (!known) entries.push_back({name.Section, name.Key, session.Store().Get(name).value_or(u"")});
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

int List(const TCommonOptions& common) {
  THostSession session(common);
  TOutput output;
  for (const auto& entry : EntriesOf(session))
    output.Write(ForTerminal(entry.Section + u"." + entry.Key + u"=" + entry.Value) + "\n");
  return ExitSuccess;
}

int Get(const std::string& key, const TCommonOptions& common) {
  THostSession session(common);
  const TOptionName name = ParseName(key);
  const auto entries = EntriesOf(session);
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&name](const TEntry& entry) { return SameKey(entry, name); });
  const auto value = found != entries.end() ? std::optional(found->Value) : session.Store().Get(name);
  if (!value) {
    WriteError(u"The option " + text::FromUtf8(key) + u" is not set.");
    return ExitFailed;
  }
  platform::WriteConsole(platform::ConsoleStream::Output, ForTerminal(*value) + "\n");
  return ExitSuccess;
}

int Set(const std::string& key, const std::string& value, const TCommonOptions& common) {
  THostSession session(common);
  const TOptionName name = ParseName(key);
  session.Store().Set(name, text::FromUtf8(value));
  const auto saved = session.Store().Save();
  if (saved) return ExitSuccess;
  WriteError(saved.Message());
  return ExitFailed;
}

} // namespace

void DefineOptions(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  command.require_subcommand(0, 1);
  CLI::App* list = command.add_subcommand("list", "Print all options as SECTION.KEY=VALUE (the default)");
  CLI::App* get = command.add_subcommand("get", "Print one option");
  CLI::App* set = command.add_subcommand("set", "Store one option");
  const auto key = std::make_shared<std::string>();
  const auto value = std::make_shared<std::string>();
  get->add_option("KEY", *key, "SECTION.KEY, such as VisualStudioDotNet.MSDevPath2008")->required();
  set->add_option("KEY", *key, "SECTION.KEY, such as VisualStudioDotNet.MSDevPath2008")->required();
  set->add_option("VALUE", *value, "The new value")->required();
  command.callback([=, &common, &exitCode] {
    if (get->parsed()) {
      exitCode = Get(*key, common);
    } else if (set->parsed()) {
      exitCode = Set(*key, *value, common);
    } else {
      exitCode = List(common);
    }
  });
  static_cast<void>(list);
}

} // namespace kx::cli
