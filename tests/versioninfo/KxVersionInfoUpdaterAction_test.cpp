#include "package/versioninfo/KxVersionInfoUpdaterAction.h"

#include "package/versioninfo/KxRCVersionInfo.h"
#include "tests/support/Properties.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using namespace testing;

class Updater : public Test {
protected:
  Updater() {
    action_.Attach(host_);
    action_.ResourceFile = u"%Folder%/app.rc";
    action_.PropertySetName = u"release";
    host_.Variables.emplace(u"Folder", folder_.Path());
    Set() = {{u"MajorVersion", u"3"}, {u"Comments", u"new"}, {u"SpecialBuildDetails", u"s"}};
    folder_.Write("app.rc",
                  "#include <winver.h>\n1 VERSIONINFO\nFILEVERSION 1,2,3,4\nFILETYPE 0x2\nBEGIN\n"
                  "BLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"040904e4\"\nBEGIN\nVALUE \"Comments\", \"old\"\n"
                  "VALUE \"CompanyName\", \"We\"\nEND\nEND\nEND\n");
  }

  TTexts& Set() { return host_.Sets.Sets[u"Release"]; }

  // What a reader finds in the script: the version, then the texts.
  std::string Script() const {
    const auto found = std::make_shared<TVersionInfoContainer>();
    GetVersionInfoParser(found, folder_.Path("app.rc"))->Parse();
    const TVersionInfoValues& v = found->Values();
    return std::to_string(v.MajorVersion) + "." + std::to_string(v.BuildVersion) +
           (v.IsDLL ? " dll " : " exe ") + text::ToUtf8(v.Strings.GetCommaText());
  }

  TRecordingHost host_;
  TTemporaryFolder folder_;
  TKxVersionInfoUpdaterAction action_;
};

TEST_F(Updater, ChangesWhatIsSelectedAndNothingElse) {
  action_.PropertiesToUpdate = {u"majorversion=True", u"BuildVersion=False",       u"Comments=1",
                                u"CompanyName",       u"SpecialBuildDetails=True", u"LegalCopyright=True",
                                u"Unknown=True"};
  Set().emplace(u"LegalCopyright", u"(c) \"us\" C:\\new");
  EXPECT_TRUE(action_.Execute());
  EXPECT_THAT(host_.Log(), ElementsAre("0 Updating property : MajorVersion - to : 3",
                                       "0 Updating property : Comments - to : new",
                                       "0 Updating property : LegalCopyright - to : (c) \"us\" C:\\new"));
  EXPECT_EQ(Script(), "3.4 dll Comments=new,CompanyName=We,\"LegalCopyright=(c) \"\"us\"\" C:\\new\"");
}

TEST_F(Updater, PrefersAProductVersionThatIsAskedForToTheFiles) {
  Set().emplace(u"AutoUpdateProductVersionString", u"True");
  Set().emplace(u"ProductVersion", u"2.0.0.0");
  for (const auto& [selected, expected] : {std::pair(u"ProductVersion=True", "2.0.0.0"),
                                           {u"ProductVersion=True", "2.0.0.0"},
                                           {u"", "1.2.3.4"}}) {
    action_.PropertiesToUpdate = {selected};
    EXPECT_TRUE(action_.Execute());
    EXPECT_EQ(Script(), std::string("1.4 dll Comments=old,CompanyName=We,ProductVersion=") + expected);
  }
}

TEST_F(Updater, SaysWhyNothingWasStamped) {
  const std::string before = Script();
  action_.PropertiesToUpdate = {u"BuildVersion=True"};
  Set().emplace(u"BuildVersion", u"4x");
  EXPECT_FALSE(action_.Execute());
  Set()[u"BuildVersion"] = u"70000";
  EXPECT_FALSE(action_.Execute());
  action_.PropertySetName = u"Debug";
  EXPECT_FALSE(action_.Execute());
  action_.PropertySetName = u"Release";
  action_.ResourceFile = u"/nowhere/app.rc";
  EXPECT_FALSE(action_.Execute());
  EXPECT_THAT(host_.Log(),
              ElementsAre("0 Updating property : BuildVersion - to : 4x",
                          "3 Error Parsing File : '4x' is not a valid integer value",
                          "0 Updating property : BuildVersion - to : 70000",
                          "3 Error Parsing File : BuildVersion 70000 does not fit into "
                          "a version resource, where numbers are 0 to 65535",
                          "3 Unable to find property set: Debug",
                          AllOf(StartsWith("3 Error Parsing File : "), HasSubstr("/nowhere/app.rc"))));
  EXPECT_EQ(Script(), before);
}

TEST_F(Updater, NamesAScriptThatItRefusesAndWhatItLoses) {
  folder_.Write("app.rc", "1 VERSIONINFO\nEND\n");
  EXPECT_FALSE(action_.Execute());
  EXPECT_THAT(host_.Log(),
              ElementsAre("3 Error Parsing File : Unexpected END",
                          AllOf(StartsWith("2 Warning : "), HasSubstr("app.rc is not stamped: line 2"))));
  host_.ClearLog();
  folder_.Write("app.rc", "#include <winver.h>\n1 VERSIONINFO\nFILETYPE 0x2L\nBEGIN\nEND\n");
  EXPECT_TRUE(action_.Execute());
  EXPECT_THAT(host_.Log(), ElementsAre(HasSubstr("app.rc: stamping changes FILETYPE 0x2L to 0x1L")));
  host_.ClearLog();
  folder_.Write("app.rc",
                "\xEF\xBB\xBF#include <winver.h>\n1 VERSIONINFO\nBEGIN\nEND\n// \xF0\x9F\x98\x80\n");
  EXPECT_TRUE(action_.Execute());
  EXPECT_THAT(host_.Log(), ElementsAre(StartsWith("2 Warning : 1 character of ")));
}

TEST_F(Updater, ForeseesWhatItWouldRefuse) {
  folder_.Write("bad.rc", "1 VERSIONINFO\nEND\n");
  const std::tuple<std::u16string, std::u16string, std::vector<std::string>> cases[] = {
      {u"release", u"%Folder%/app.rc", {}},
      {u"Debug", u"%Nobody%/app.rc", {"PropertySetName: Unable to find property set: Debug"}},
      {u"",
       u"",
       {"PropertySetName: The name of the property set is blank.", "ResourceFile: A value is required."}},
      {u"Release", u"%Folder%/bad.rc", {"ResourceFile: Error Parsing File : Unexpected END"}},
  };
  for (const auto& [set, file, entries] : cases) {
    action_.PropertySetName = set;
    action_.ResourceFile = file;
    TRecordingValidation errors;
    action_.LookAhead(errors);
    EXPECT_EQ(errors.Entries, entries) << text::ToUtf8(file);
  }
}

TEST(UpdaterProperties, AreEachTheirOwn) {
  EXPECT_EQ(tests::SideEffects<TKxVersionInfoUpdaterAction>(), "");
}

} // namespace
} // namespace kx::tests
