// Loads plug-ins from shared libraries.
#pragma once

#include "contract/Services.h"

#include <string>
#include <string_view>

namespace kx {

// The package's own plug-in, beside the program.
std::u16string DefaultPluginFile();

// The entry bears the library's name without "lib" in front and without extension: "KxVisualStudioDotNET".
std::u16string PluginEntryName(std::u16string_view fileName);

// Loads the library and calls its entry, which registers with the services set before (SetServices). Raises
// EKxException that names the library: missing, unreadable, no plug-in, or what its entry threw.
void LoadPlugin(std::u16string_view fileName, const IKxRegistrationContext& context);

// A host without an editor.
class THeadlessContext : public IKxRegistrationContext {
public:
  bool HasDesignEnvironment() const override { return false; }
};

// A host with one.
class TDesignContext : public IKxRegistrationContext {
public:
  bool HasDesignEnvironment() const override { return true; }
};

} // namespace kx
