#include "build/KxVSDotNetOptions.h"

#include "tests/support/RecordingHost.h"
#include "text/Encoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;

std::optional<std::u16string> EmptyRegistry(std::u16string_view /*key*/, std::u16string_view /*value*/) {
  return std::nullopt;
}
std::optional<std::u16string> Only2008(std::u16string_view key, std::u16string_view value) {
  if (key != u"SOFTWARE\\Microsoft\\VisualStudio\\9.0" || value != u"InstallDir") return std::nullopt;
  return u"C:\\VS9\\IDE\\";
}

struct TLoadCase {
  const char* What;
  TVSDotNetOptions::TRegistryRead Registry;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> Store;
  const char16_t* Location2008; // as stored
  TVSDotNetVersion Default;
  bool Modified;
};

TEST(VSDotNetOptions, FillsFromTheRegistryWhatTheStoreLacks) {
  using enum TVSDotNetVersion;
  const TLoadCase cases[] = {
      {"a machine without Visual Studio", EmptyRegistry, {}, u"", vs2005, false},
      {"a machine with one version", Only2008, {}, u"C:\\VS9\\IDE\\", vs2008, true},
      {"the store wins", Only2008, {{u"MSDevPath2008", u" D:\\VS "}}, u" D:\\VS ", vs2008, false},
      {"blanks are kept, and mean nothing", Only2008, {{u"MSDevPath2008", u"  "}}, u"  ", vs2005, false},
      {"the newest installed", Only2008, {{u"MSDevPath2010", u"E"}}, u"C:\\VS9\\IDE\\", vs2010, true},
      {"a stored default stays", EmptyRegistry, {{u"DefVSVersion", u"0"}}, u"", vs2002, false},
      {"a stored default of -1", EmptyRegistry, {{u"DefVSVersion", u"-1"}}, u"", vs2005, false},
  };
  for (const auto& row : cases) {
    TFakeOptionsStore store;
    store.Values = row.Store;
    TVSDotNetOptions options(row.Registry);
    options.LoadOptions(store);
    EXPECT_EQ(options.GetDevEnv2008Location(), row.Location2008) << row.What;
    EXPECT_EQ(options.GetDevEnvLocation(vs2008), text::Trim(row.Location2008)) << row.What;
    EXPECT_EQ(options.GetDefaultVSVersion(), row.Default) << row.What;
    EXPECT_EQ(options.IsModified(), row.Modified) << row.What;
  }
}

TEST(VSDotNetOptions, SavesAllInOneOrder) {
  TVSDotNetOptions options(EmptyRegistry);
  options.SetDevEnv2002Location(u"a");
  options.SetDevEnv2003Location(u"b");
  options.SetDevEnv2005Location(u"c");
  options.SetDevEnv2008Location(u"d");
  options.SetDevEnv2010Location(u"e");
  options.SetDefaultVSVersion(TVSDotNetVersion::vs2003);
  options.SetStandaloneMSTestDir(u"f");
  EXPECT_TRUE(options.IsModified());
  TFakeOptionsStore store;
  options.SaveOptions(store);
  EXPECT_THAT(store.Written,
              ElementsAre("MSDevPath=a", "MSDevPath2003=b", "MSDevPath2005=c", "MSDevPath2008=d",
                          "MSDevPath2010=e", "DefVSVersion=1", "StandaloneMSTestDir=f"));
  TVSDotNetOptions loaded(EmptyRegistry);
  loaded.LoadOptions(store);
  EXPECT_EQ(loaded.GetDevEnvLocation(TVSDotNetVersion::vs2002), u"a");
  EXPECT_EQ(loaded.GetDevEnvLocation(TVSDotNetVersion::vs2010), u"e");
  EXPECT_EQ(loaded.GetDevEnvLocation(TVSDotNetVersion::vsUnknown), u"");
  EXPECT_EQ(loaded.GetDefaultVSVersion(), TVSDotNetVersion::vs2003);
  EXPECT_EQ(loaded.GetStandaloneMSTestDir(), u"f");
  loaded.SetDevEnv2010Location(u"e");
  loaded.SetDefaultVSVersion(TVSDotNetVersion::vs2003);
  loaded.SetStandaloneMSTestDir(u"f");
  EXPECT_FALSE(loaded.IsModified()) << "nothing was changed";
  loaded.SetDevEnv2010Location(u"E");
  EXPECT_TRUE(loaded.IsModified()) << "letter case counts";
}

TEST(VSDotNetOptions, AreOneObjectOfTheHost) {
  EXPECT_EQ(VSDotNetOptions(), nullptr) << "without a host there are none";
  TFakeServices services;
  EXPECT_EQ(VSDotNetOptions(), nullptr);
  RegisterOptions();
  EXPECT_THAT(services.Registered,
              ElementsAre("options DEVENV Compilers Visual Studio.Net", "enumeration TVSDotNetVersion"));
  ASSERT_NE(VSDotNetOptions(), nullptr);
  EXPECT_EQ(VSDotNetOptions(), VSDotNetOptions());
  EXPECT_EQ(TVSDotNetOptions::Class().OptionKey, u"VisualStudioDotNet");
}

TEST(VSDotNetOptions, NameTheVersions) {
  const char16_t* names[] = {u"Visual Studio 2002",     u"Visual Studio.NET 2003", u"Visual Studio.NET 2005",
                             u"Visual Studio.NET 2008", u"Visual Studio.NET 2010", u"Visual Studio"};
  for (std::int32_t i = 0; i < 6; ++i)
    EXPECT_EQ(GetVSName(static_cast<TVSDotNetVersion>(i)), names[i]);
}

} // namespace
} // namespace kx::tests
