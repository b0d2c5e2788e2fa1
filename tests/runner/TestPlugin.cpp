// A plug-in with one action type. Its entry's name is set by the build.
#include "tests/runner/TestActions.h"

extern "C" void KX_TEST_ENTRY(const kx::IKxRegistrationContext& context) {
  if (context.HasDesignEnvironment()) return;
  kx::ActionService().RegisterAction(u"PLUGGED", u"Tests", kx::tests::TStepAction::Class());
}
