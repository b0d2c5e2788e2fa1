#include "program/cli/HostSession.h"

#include "foundation/text/Exceptions.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/KnownOptions.h"
#include "program/runner/PluginLoader.h"

namespace kx::cli {

namespace {

std::u16string DefaultOptionsFile() {
  const std::u16string folder = platform::ConfigDirectory();
  return folder.empty() ? std::u16string()
                        : text::JoinPath(text::JoinPath(folder, u"kxhost"), u"options.ini");
}

} // namespace

void MapDrives(const std::vector<std::string>& drives) {
  for (const auto& drive : drives) {
    const std::u16string text = text::FromUtf8(drive);
    const bool letter =
        text.size() > 2 && text[1] == u'=' && ((text[0] | 0x20) >= u'a') && ((text[0] | 0x20) <= u'z');
    if (!letter) throw EUsage(u"--drive takes LETTER=FOLDER, such as C=/srv/c, not " + text + u".");
    platform::MapDrive(text[0], text.substr(2));
  }
}

THostSession::THostSession(const TCommonOptions& options, const TDesignServices& design)
    : commandLine_(options.CommandLine) {
  MaskOutput(secrets_);
  platform::PrivateFolder::RemoveAbandoned();
  MapDrives(options.Drives);
  store_.Patience.Say = [](const std::u16string& message) { WriteError(message); };
  store_.Load(options.OptionsFile.empty() ? DefaultOptionsFile() : text::FromUtf8(options.OptionsFile));
  for (const auto& assignment : options.Overrides) {
    try {
      store_.Override(text::FromUtf8(assignment));
    } catch (const EKxException& error) {
      throw EUsage(u"--option: " + error.Message());
    }
  }
  SetServices({.Actions = &registry_,
               .Scripting = &registry_,
               .Options = &registry_,
               .Design = design.Design,
               .PropertySetDesign = design.PropertySets,
               .DotNet = &dotNet_,
               .Directory = &webSites_});
  const THeadlessContext headless;
  const TDesignContext designing;
  const IKxRegistrationContext& context =
      design.Design == nullptr ? static_cast<const IKxRegistrationContext&>(headless) : designing;
  LoadPlugin(DefaultPluginFile(), context);
  for (const auto& plugin : options.Plugins)
    LoadPlugin(text::FromUtf8(plugin), context);
  CheckOverrides(options.Overrides);
}

// Only the plug-ins know what options there are.
void THostSession::CheckOverrides(const std::vector<std::string>& assignments) {
  if (assignments.empty()) return;
  const auto known = KnownOptions(registry_);
  bool changed = false;
  for (const auto& assignment : assignments) {
    const std::u16string text = text::FromUtf8(assignment);
    const std::size_t equals = text.find(u'=');
    try {
      const auto& option = RequireOption(known, TOptionName::Parse(text.substr(0, equals)));
      const std::u16string value = text.substr(equals + 1);
      const std::u16string stored = StoredText(option, value);
      if (stored == value) continue;
      store_.Override(option.Name, stored);
      changed = true;
    } catch (const EKxException& error) {
      throw EUsage(u"--option: " + error.Message());
    }
  }
  if (changed) registry_.ReloadOptions();
}

THostSession::~THostSession() {
  SetServices({});
}

std::u16string THostSession::KeyFile() const {
  const std::u16string& store = store_.FileName();
  return store.empty() ? std::u16string() : text::JoinPath(text::ExtractFileDir(store), u"secret.key");
}

void THostSession::SaveOptions() {
  if (store_.FileName().empty()) return;
  const auto saved = registry_.SaveOptions();
  if (!saved) WriteError(u"Warning : the options could not be saved. " + saved.Message());
}

} // namespace kx::cli
