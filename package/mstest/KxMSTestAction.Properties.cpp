#include "package/mstest/KxMSTestAction.h"

#include <array>

namespace kx {

namespace {

using TRows = TKxPropertyRows<TKxMSTestAction>;

// Where a row's value is: a member of one of the action's groups of settings.
template <auto Member>
auto& Input(TKxMSTestAction& action) {
  return action.Input().*Member;
}
template <auto Member>
auto& Run(TKxMSTestAction& action) {
  return action.RunSettings().*Member;
}
template <auto Member>
auto& Team(TKxMSTestAction& action) {
  return action.Team().*Member;
}

void AddToolRows(TRows& rows) {
  rows.Field(u"AssemblyFileName", Input<&TMSTestInput::AssemblyFileName>,
             u"The test containers (assemblies) to run: one a line, or separated by bars.")
      .Field(u"ConfigFileName", Run<&TMSTestRunSettings::ConfigFileName>,
             u"The run configuration file (.testrunconfig); empty: none.")
      .Field(u"OutputFileName", Run<&TMSTestRunSettings::OutputFileName>,
             u"The results file (.trx), which must not exist: MSTest does not write over one. A relative "
             u"path is seen from the project's folder; empty: a temporary file.")
      .Field(u"VisualStudioVer", Run<&TMSTestRunSettings::VisualStudioVer>, VSDotNetVersionEnumeration,
             u"The Visual Studio whose MSTest runs (Visual Studio 2005 and later).")
      .DefaultVaries()
      .Field(u"UseStandaloneMSTest", Run<&TMSTestRunSettings::UseStandaloneMSTest>,
             u"Run the stand-alone MSTest instead of that of a Visual Studio.");
}

void AddInputRows(TRows& rows) {
  rows.Field(u"UseMetadataFile", Input<&TMSTestInput::UseMetadataFile>,
             u"Run what a test metadata file names instead of test containers.")
      .Field(u"MetadataFile", Input<&TMSTestInput::MetadataFile>, u"The test metadata file (.vsmdi).")
      .Field(u"SpecifyTestList", Input<&TMSTestInput::SpecifyTestList>,
             u"Run only the test lists below (with a test metadata file).")
      .Field(u"TestList", Input<&TMSTestInput::TestList>,
             u"The names of the test lists, separated by commas; names with blanks in double quotes.")
      .Field(u"SpecifyTests", Input<&TMSTestInput::SpecifyTests>, u"Run only the tests below.")
      .Field(u"Tests", Input<&TMSTestInput::Tests>,
             u"The names of the tests, separated by commas; names with blanks in double quotes.")
      .Field(u"ShowBanner", Run<&TMSTestRunSettings::ShowBanner>, u"Let MSTest print its banner.");
}

void AddPublishRows(TRows& rows) {
  rows.Field(
          u"PublishMode", [](TKxMSTestAction & action) -> auto& { return action.PublishMode(); },
          MSTestPublishModeEnumeration(),
          u"Publish the results to a Team Build server: never, when running under Team Build, or to the "
          u"build "
          u"named below.")
      .Field(u"TeamServer", Team<&TTeamBuild::Server>, u"The Team Foundation server to publish to.")
      .Field(u"TeamProject", Team<&TTeamBuild::Project>, u"The team project to publish to.")
      .Field(u"BuildId", Team<&TTeamBuild::BuildId>, u"The build that the results belong to.")
      .Field(u"BuildPlatform", Team<&TTeamBuild::Platform>, u"The platform that was built.")
      .Field(u"BuildFlavor", Team<&TTeamBuild::Flavor>, u"The configuration that was built.")
      .Field(u"StartingDirectory", Run<&TMSTestRunSettings::StartingDirectory>,
             u"The folder in which MSTest runs; empty: that of the first container or of the metadata file, "
             u"or the project's where that does not exist.");
}

} // namespace

const TKxEnumeration& MSTestPublishModeEnumeration() {
  static constexpr std::array<std::u16string_view, 3> names{u"pbNone", u"pbAuto", u"pbSpecify"};
  static constexpr TKxEnumeration enumeration{u"TMSTestPublishMode", names};
  return enumeration;
}

// In the order in which the properties are declared, saved and listed.
const TKxPropertyTable& TKxMSTestAction::PublishedProperties() const {
  static const TKxPropertyTable table = [] {
    TRows rows;
    AddToolRows(rows);
    AddInputRows(rows);
    AddPublishRows(rows);
    return TKxPropertyTable(rows.Take());
  }();
  return table;
}

} // namespace kx
