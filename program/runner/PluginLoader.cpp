#include "program/runner/PluginLoader.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/SharedLibrary.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

std::u16string DefaultPluginFile() {
  return platform::LibraryBesideProgram(u"KxVisualStudioDotNET");
}

std::u16string PluginEntryName(std::u16string_view fileName) {
  const std::u16string name = text::ChangeFileExt(text::ExtractFileName(fileName), u"");
  return name.starts_with(u"lib") ? name.substr(3) : name;
}

void LoadPlugin(std::u16string_view fileName, const IKxRegistrationContext& context) {
  const std::u16string file(fileName);
  if (!platform::FileExists(file)) throw EKxException(u"Plug-in not found : " + file);
  const auto entry = platform::LoadLibraryEntry(file, text::ToUtf8(PluginEntryName(file)));
  if (!entry) throw EKxException(entry.Message());
  try {
    reinterpret_cast<TKxPluginEntry> (*entry)(context);
  } catch (const std::exception& error) {
    throw EKxException(u"The plug-in " + file + u" cannot be used : " + MessageOf(error));
  } catch (...) {
    throw EKxException(u"The plug-in " + file + u" cannot be used : its entry failed without a message.");
  }
}

} // namespace kx
