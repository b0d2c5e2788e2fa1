#include "foundation/text/Encoding.h"
#include "package/buildaction/ConfigurationNames.h"
#include "package/buildaction/ProjectSearch.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx::tests {
namespace {

class ConfigurationNames : public testing::Test {
protected:
  void Offer(std::initializer_list<const char*> names) {
    std::string text = "Microsoft Visual Studio Solution File, Format Version "
                       "10.00\nGlobal\n\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\n";
    for (const auto* name : names)
      text += std::string("\t\t") + name + " = " + name + "\n";
    folder_.Write("App.sln", text + "\tEndGlobalSection\nEndGlobal\n");
    solution_ = OpenSolution(folder_.Path("App.sln"), false);
  }
  std::string Guess(std::u16string_view wanted) {
    std::u16string error;
    return text::ToUtf8(
        GuessedConfiguration(*solution_, wanted, MatchConfigurations(*solution_, wanted, true, error)));
  }

  TTemporaryFolder folder_;
  std::shared_ptr<IVSDotNetSolution> solution_;
};

TEST_F(ConfigurationNames, AreToldFromExpressions) {
  Offer({"Debug|Any CPU", "Debug|x64", "Release|Any CPU", "Release (Static)|Any CPU", "Debug.NET|x64"});
  const std::pair<std::u16string_view, bool> cases[] = {
      {u"debug|x64", false}, // there is one
      {u"^(Debug|Release)\\|Any CPU$", false},
      {u"^Debug|^Release", false},
      {u"Any CPU|x64", false},
      {u"Debug\\|.*", false},
      {u"[D|R]e", false},
      {u"Debug[(]?|x64", true}, // no group opens in a class
      {u"nothing", false},      // it matches none
      {u"Relase|Any CPU", true},
      {u"^Release|x64$", true},
      {u"(Debug|Release)|Any CPU", true},
      {u"Debug|Relase", true},  // one of them stands for nothing
      {u"Debug|Release", true}, // more than these two: Release (Static)
      {u"Rel", true},
      {u"Debug.NET|Any CPU", true},
      {u"Release (Statik)|Any CPU", true},
  };
  for (const auto& [wanted, isGuess] : cases)
    EXPECT_EQ(!Guess(wanted).empty(), isGuess) << text::ToUtf8(wanted);
  Offer({"Debug|Any CPU", "Debug|x64", "Release|Any CPU", "Profile|x64"});
  EXPECT_EQ(Guess(u"Debug|Release"), "") << "each word is a configuration as a whole";
  EXPECT_EQ(Guess(u"Release|x64"),
            "App.sln has no configuration \"Release|x64\". Read as an expression, it matches Debug|x64, "
            "Release|Any CPU, Profile|x64. Did you mean \"Release|Any CPU\"? To ask for one name alone, "
            "write it as ^Release\\|Any CPU$ or set UseRegExOnConfigName to False.");
}

} // namespace
} // namespace kx::tests
