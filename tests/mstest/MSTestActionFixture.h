// An MSTest action over the recording host, which plays MSTest.exe.
#pragma once

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "package/mstest/KxMSTestAction.h"
#include "tests/support/Properties.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx::tests {

// The options stand before the action is made, as in the host.
struct TMSTestServices : TFakeServices {
  TMSTestServices() {
    kx::RegisterOptions();
    VSDotNetOptions()->SetDefaultVSVersion(TVSDotNetVersion::vs2008);
    VSDotNetOptions()->SetDevEnv2008Location(u"C:\\VS9\\IDE");
  }
};

class TMSTestActionTest : public testing::Test {
protected:
  TMSTestActionTest() { action_.Attach(host_); }

  // "Name=value~Name=value"
  void Set(std::u16string_view settings) { TPropertyTexts(action_).Set(settings, u'~'); }

  // The parameters of the run that these settings make, with the random letters of a temporary file left out;
  // the last line of the log where nothing was run.
  std::string ParametersOf(std::u16string_view settings) {
    Set(settings);
    action_.Execute();
    if (host_.Runs().empty()) return host_.Log().back();
    std::string parameters = host_.Runs().back().Parameters;
    constexpr std::string_view resultsFile = "/resultsfile:";
    const std::size_t file = parameters.find(resultsFile) + resultsFile.size();
    const std::size_t end = std::min(parameters.find(' ', file), parameters.size());
    if (parameters.find("MSTRE", file) < end) parameters.replace(file, end - file, "TEMP");
    return parameters;
  }

  TMSTestServices services_;
  TRecordingHost host_;
  TKxMSTestAction action_;
};

} // namespace kx::tests
