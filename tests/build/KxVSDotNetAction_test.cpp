#include "tests/build/BuildActionFixture.h"

#include <map>
#include <set>

namespace kx::tests {
namespace {

class BuildAction : public TBuildActionTest {};

TEST_F(BuildAction, PublishesEachPropertyOnceWithHelpAndKnownNames) {
  std::set<std::u16string, text::IgnoreCaseLess> names;
  for (const auto& row : action_.PublishedProperties().Rows()) {
    const std::string name = text::ToUtf8(row.Name);
    EXPECT_TRUE(names.emplace(row.Name).second) << name;
    EXPECT_TRUE(row.Help.ends_with(u'.')) << name;
    EXPECT_EQ(row.Kind == TKxPropertyKind::Enumeration, row.Enumeration != nullptr) << name;
    EXPECT_FALSE(row.ReadOnly && row.Stored) << name;
  }
  EXPECT_EQ(names.size(), 100U);
  text::TStringList lists;
  action_.GetHiddenProperties(lists);
  EXPECT_EQ(lists.Count(), 59U);
  for (const auto& hidden : lists)
    EXPECT_TRUE(names.contains(hidden) || hidden == u"UpdateVersionComment") << text::ToUtf8(hidden);
  lists.Clear();
  action_.GetPropertyAlias(lists);
  EXPECT_EQ(lists.GetText(),
            u"[Solution]\r\nSolution=Solution\r\nSolutionConfiguration=SolutionConfiguration\r\n"
            u"VStudioVersion=Visual Studio Version\r\nUseMSBuild=Use MSBuild\r\n[MSBuild]\r\n"
            u"ExtraMSBuildProperties=Extra MSBuild Properties\r\n");
  for (std::size_t i = 0; i < lists.Count(); ++i)
    EXPECT_TRUE(lists[i].starts_with(u'[') || names.contains(lists.NameOf(i))) << text::ToUtf8(lists[i]);
}

// A value other than the default, as a project file holds it.
TKxPropertyValue Changed(const TKxPublishedProperty& row, const TKxPropertyValue& value) {
  switch (row.Kind) {
  case TKxPropertyKind::Boolean:
    return !std::get<bool>(value);
  case TKxPropertyKind::StringList:
    return PropertyFromText(row, u"{1}\r\n{2}\r\n");
  case TKxPropertyKind::String:
    return u"a=b\r\n";
  default:
    return std::get<std::int32_t>(value) == 0 ? 1 : 0;
  }
}

TEST_F(BuildAction, SavesAndLoadsEveryStoredPropertyIntoAPlaceOfItsOwn) {
  TKxVSDotNetAction fresh;
  std::map<std::u16string, std::u16string> saved;
  for (const auto& row : action_.PublishedProperties().Rows())
    if (row.Stored && row.Name != u"CodePage") {
      row.Set(action_, Changed(row, row.Get(fresh)));
      saved.emplace(row.Name, PropertyToText(row, row.Get(action_)));
    }
  TKxVSDotNetAction loaded;
  loaded.Attach(host_);
  for (const auto& row : loaded.PublishedProperties().Rows()) {
    if (!saved.contains(std::u16string(row.Name))) continue;
    const auto& text = saved[std::u16string(row.Name)];
    EXPECT_NE(PropertyToText(row, row.Get(loaded)), text) << text::ToUtf8(row.Name) << " shares a place";
    row.Set(loaded, PropertyFromText(row, text));
  }
  for (const auto& row : loaded.PublishedProperties().Rows())
    if (saved.contains(std::u16string(row.Name))) {
      EXPECT_EQ(PropertyToText(row, row.Get(loaded)), saved[std::u16string(row.Name)])
          << text::ToUtf8(row.Name);
    }
}

TEST_F(BuildAction, BeginsWithItsDefaults) {
  VSDotNetOptions()->SetDefaultVSVersion(TVSDotNetVersion::vs2010);
  TKxVSDotNetAction fresh;
  const std::map<std::u16string, std::u16string> special{{u"LogLevel", u"llNormal"},
                                                         {u"WarningLevel", u"4"},
                                                         {u"AssemblyInfo", u"Assembly Info"},
                                                         {u"AssemblyVersion", u"|||"},
                                                         {u"AssemblyFileVersion", u"|||"},
                                                         {u"Locale", u"1033"},
                                                         {u"CodePage", u"1252"},
                                                         {u"AutoUpdateFileVersion", u"True"},
                                                         {u"AutoUpdateProductVersion", u"True"},
                                                         {u"WMIWebsiteNum", u"1"},
                                                         {u"SharePath", u"wwwroot$"},
                                                         {u"UseMSBuild", u"True"},
                                                         {u"StructuredOutput", u"True"},
                                                         {u"UseRegExOnConfigName", u"True"},
                                                         {u"VStudioVersion", u"vs2010"},
                                                         {u"TargetFramework", u"fx20"},
                                                         {u"BuildType", u"btAllProjects"},
                                                         {u"BuildAction", u"baBuild"},
                                                         {u"ApplyAssemblyInfoTo", u"btAllProjects"},
                                                         {u"ApplyResourceInfoTo", u"btAllProjects"},
                                                         {u"ProjLocationDetectMethod", u"useWMI"}};
  std::size_t found = 0;
  for (const auto& row : fresh.PublishedProperties().Rows()) {
    const auto text = PropertyToText(row, row.Get(fresh));
    if (const auto expected = special.find(std::u16string(row.Name)); expected != special.end()) {
      EXPECT_EQ(text, expected->second) << text::ToUtf8(row.Name);
      ++found;
    } else {
      EXPECT_TRUE(text.empty() || text == u"0" || text == u"False") << text::ToUtf8(row.Name);
    }
  }
  EXPECT_EQ(found, special.size());
}

TEST_F(BuildAction, KeepsVersionsAsTextAndInParts) {
  struct TCase {
    const char16_t* Text;
    const char* Parts;
  };
  for (const std::u16string prefix : {u"AssemblyVersion", u"AssemblyFileVersion"})
    for (const auto& row : {TCase{u"1|2|3|4", "1,2,3,4"}, TCase{u"1.0", "1.0,,,"}, TCase{u"1|2", "1,2,,"},
                            TCase{u"1|2|3|4|5", "1,2,3,4"}, TCase{u"", ",,,"}}) {
      Set({{prefix, row.Text}});
      EXPECT_EQ(Get(prefix + u"Major") + "," + Get(prefix + u"Minor") + "," + Get(prefix + u"Build") + "," +
                    Get(prefix + u"Revision"),
                row.Parts);
      EXPECT_EQ(Get(prefix), text::ToUtf8(row.Text)) << "the text stays as it was given";
    }
  Set({{u"AssemblyVersion", u"1|2|3|4|5"}, {u"AssemblyVersionBuild", u"9"}});
  EXPECT_EQ(Get(u"AssemblyVersion"), "1|2|9|4");
  EXPECT_EQ(Get(u"AssemblyFileVersion"), "");
}

TEST_F(BuildAction, RegistersWhatAnExecutionChanges) {
  struct TStep {
    const char16_t* Property;
    const char16_t* Value;
    std::vector<std::u16string> Dynamic;
  };
  const TStep steps[] = {
      {u"AutoIncAssemblyRevisionNo", u"True", {u"AssemblyVersion"}},
      {u"AutoIncAssemblyBuildNumber", u"True", {u"AssemblyVersion", u"AssemblyVersionBuild"}},
      {u"AutoIncAssemblyRevisionNo", u"False", {u"AssemblyVersion", u"AssemblyVersionBuild"}},
      {u"AutoIncAssemblyBuildNumber", u"False", {u"AssemblyVersion"}},
      {u"AutoIncAssemblyRevisionNo", u"True", {u"AssemblyVersion"}},
      {u"AutoIncAssemblyRevisionNo", u"False", {}},
      {u"AutoIncAssemblyFileBuildNumber", u"True", {u"AssemblyFileVersion"}},
      {u"AutoIncAssemblyFileRevisionNo", u"True", {u"AssemblyFileVersion"}},
      {u"AutoIncAssemblyFileBuildNumber", u"False", {u"AssemblyFileVersion"}},
      {u"AutoIncAssemblyFileRevisionNo", u"False", {}},
      {u"AutoIncBuild", u"True", {u"BuildVersion"}},
      {u"AutoIncBuild", u"False", {}},
  };
  for (const auto& step : steps) {
    Set({{step.Property, step.Value}});
    std::vector<std::u16string> dynamic;
    for (const auto name :
         {u"AssemblyVersion", u"AssemblyVersionBuild", u"AssemblyFileVersion", u"BuildVersion"})
      if (action_.IsDynamicProperty(name)) dynamic.emplace_back(name);
    EXPECT_EQ(dynamic, step.Dynamic) << text::ToUtf8(step.Property) << " " << text::ToUtf8(step.Value);
  }
}

TEST_F(BuildAction, TakesNoCodePageZeroAndNoNewLabel) {
  Set({{u"CodePage", u"932"}});
  EXPECT_EQ(Get(u"CodePage"), "932");
  Set({{u"CodePage", u"0"}, {u"AssemblyInfo", u"other"}});
  EXPECT_EQ(Get(u"CodePage"), "1252");
  EXPECT_EQ(Get(u"AssemblyInfo"), "Assembly Info");
}

TEST_F(BuildAction, KeepsThePasswordEncrypted) {
  Set({{u"WebDAVPassword", u"secret"}});
  EXPECT_EQ(Get(u"_WebDAVPassword"), "enc(secret)");
  EXPECT_EQ(Get(u"WebDAVPassword"), "secret");
  Set({{u"_WebDAVPassword", u"made elsewhere"}});
  EXPECT_EQ(Get(u"WebDAVPassword"), "");
  Set({{u"WebDAVPassword", u""}});
  EXPECT_EQ(Get(u"_WebDAVPassword"), "made elsewhere") << "saving what was read must not lose it";
  Set({{u"WebDAVPassword", u"new"}});
  EXPECT_EQ(Get(u"_WebDAVPassword"), "enc(new)");
  EXPECT_TRUE(Row(u"WebDAVPassword").Secret && !Row(u"WebDAVPassword").Stored);
  EXPECT_TRUE(Row(u"_WebDAVPassword").Secret && Row(u"_WebDAVPassword").Stored);
}

TEST_F(BuildAction, ListsItsVariables) {
  const auto list = [this](bool withTypes, bool withDescriptions) {
    text::TStringList names;
    action_.CollectLocalVariables(names, withTypes, withDescriptions);
    return names.GetText();
  };
  EXPECT_EQ(list(true, true), u"CURRENTCONFIGNAME=btString\r\nCURRENTPLATFORMNAME=btString\r\n");
  EXPECT_EQ(list(false, true), u"CURRENTCONFIGNAME=The currently building configuration name\r\n"
                               u"CURRENTPLATFORMNAME=btString=The currently building platform name\r\n");
  EXPECT_EQ(list(false, false), u"CURRENTCONFIGNAME\r\nCURRENTPLATFORMNAME\r\n");
}

TEST_F(BuildAction, ExpandsItsVariablesInAnyTextAndCase) {
  Set({{u"UseMSBuild", u"False"}});
  ASSERT_EQ(Execute(), "succeeded");
  std::u16string value;
  EXPECT_TRUE(action_.GetLocalVariableValue(u"currentConfigName", value));
  EXPECT_EQ(value, u"Debug");
  EXPECT_FALSE(action_.GetLocalVariableValue(u"Other", value));
  EXPECT_EQ(action_.ActionExpandExpression(u"a %currentconfigname%$(CURRENTCONFIGNAME)-%CurrentPlatformName%/"
                                           u"$(currentplatformname)%other% CURRENTCONFIGNAME"),
            u"a DebugDebug-Any CPU/Any CPU%other% CURRENTCONFIGNAME");
}

TEST_F(BuildAction, TellsWhatItsSettingsLack) {
  struct TCase {
    TSettings Settings;
    std::vector<std::string> Entries;
  };
  const TCase cases[] = {
      {{}, {}},
      {{{u"Solution", u""}, {u"VStudioVersion", u"vs2010"}},
       {"Solution file: A solution file has not been set",
        ".NET Framework Settings: The selected version of the .NET Framework was not found."}},
      {{{u"Solution", u"App.sln"}, {u"VStudioVersion", u"vs2003"}},
       {"VisualStudio.NET Options: Path to devenv.com has not been set [options]"}},
      {{{u"VStudioVersion", u"vsUnknown"}},
       {".NET Framework Settings: The selected version of the .NET Framework was not found."}},
      {{{u"VStudioVersion", u"vs2008"}, {u"UseMSBuild", u"False"}}, {}},
  };
  for (const auto& row : cases) {
    Set(row.Settings);
    TRecordingValidation validation;
    EXPECT_EQ(action_.Validate(validation), row.Entries.empty());
    EXPECT_EQ(validation.Entries, row.Entries);
  }
}

TEST_F(BuildAction, FindsDevEnvWhereTheOptionsSay) {
  host_.Variables[u"Tools"] = u"C:\\VS";
  VSDotNetOptions()->SetDevEnv2008Location(u" %Tools%\\IDE ");
  EXPECT_EQ(action_.GetExecutable(false), u"C:\\VS\\IDE\\devenv.com");
  VSDotNetOptions()->SetDevEnv2008Location(u"%Nowhere%");
  EXPECT_EQ(action_.GetExecutable(false), u"");
  EXPECT_EQ(Log(), "3 devenv.com location : Unknown name: Nowhere\n");
}

TEST_F(BuildAction, DescribesItself) {
  EXPECT_EQ(action_.GetFormattedDescription(), u"Build VS.Net Solution [ App.sln ]");
  EXPECT_EQ(TKxVSDotNetAction::Class().Create()->GetActionName(), u"Build VS.Net Solution");
  EXPECT_EQ(TSolutionEditor::Class().GetPage(), u"Solution");
}

} // namespace
} // namespace kx::tests
