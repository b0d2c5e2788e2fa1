// The one symbol that the plug-in shows to the world; what else it holds is kept inside by the linker.
#include "package/registration/KxVSDotNetReg.h"

extern "C" void KxVisualStudioDotNET(const kx::IKxRegistrationContext& context) {
  kx::RegisterVisualStudioDotNet(context);
}
