#include "package/KxVSDotNetReg.h"

#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

class TContext : public IKxRegistrationContext {
public:
  explicit TContext(bool design) : design_(design) {}
  bool HasDesignEnvironment() const override { return design_; }

private:
  bool design_;
};

TEST(Registration, AnnouncesEverythingInOrderAndConstantsOnlyToAnEditor) {
  const std::vector<std::string> always{
      "image DEVENV",
      "image MSTEST",
      "image VERSIONINFO",
      "image SOLUTIONITERATOR",
      "action DEVENV Compilers TKxVSDotNetAction",
      "function TKxVSDotNetAction GetProjectID",
      "function TKxVSDotNetAction GetProjectName",
      "function TKxVSDotNetAction GetProjectPath",
      "options DEVENV Compilers Visual Studio.Net",
      "enumeration TVSDotNetVersion",
      "action MSTEST Testing Tools TKxMSTestAction",
      "action VERSIONINFO Compilers TKxVersionInfoUpdaterAction",
      "action SOLUTIONITERATOR Compilers TKxVSSolutionIterator",
  };
  const std::vector<std::string> forEditors{"constant baBuild 0", "constant baRebuild 1",
                                            "constant baClean 2", "constant baDeploy 3"};
  for (const bool design : {false, true}) {
    TFakeServices services;
    RegisterVisualStudioDotNet(TContext(design));
    std::vector<std::string> expected = always;
    if (design) expected.insert(expected.end(), forEditors.begin(), forEditors.end());
    EXPECT_EQ(services.Registered, expected) << (design ? "with" : "without") << " a design environment";
  }
}

} // namespace
} // namespace kx::tests
