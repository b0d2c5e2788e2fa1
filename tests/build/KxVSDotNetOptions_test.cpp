#include "build/KxVSDotNetOptions.h"

#include "tests/support/RecordingHost.h"
#include "text/Encoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx::tests {
namespace {

using enum TVSDotNetVersion;

std::optional<std::u16string> EmptyRegistry(std::u16string_view /*key*/, std::u16string_view /*value*/) {
  return std::nullopt;
}
std::optional<std::u16string> Only2008(std::u16string_view key, std::u16string_view value) {
  if (key != u"SOFTWARE\\Microsoft\\VisualStudio\\9.0" || value != u"InstallDir") return std::nullopt;
  return u"C:\\VS9\\IDE\\";
}

TEST(VSDotNetOptions, FillsFromTheRegistryWhatTheStoreLacks) {
  // The registry, what is stored, the location of 2008 as stored, the default version, modified.
  const std::tuple<TVSDotNetOptions::TRegistryRead, std::pair<std::u16string, std::u16string>, std::u16string,
                   TVSDotNetVersion, bool>
      cases[] = {
          // A machine without Visual Studio.
          {EmptyRegistry, {}, u"", vs2005, false},
          // A machine with one version.
          {Only2008, {}, u"C:\\VS9\\IDE\\", vs2008, true},
          // The store wins.
          {Only2008, {u"MSDevPath2008", u" D:\\VS "}, u" D:\\VS ", vs2008, false},
          // Blanks are kept, and mean nothing.
          {Only2008, {u"MSDevPath2008", u"  "}, u"  ", vs2005, false},
          // The newest installed.
          {Only2008, {u"MSDevPath2010", u"E"}, u"C:\\VS9\\IDE\\", vs2010, true},
          // A stored default stays.
          {EmptyRegistry, {u"DefVSVersion", u"0"}, u"", vs2002, false},
      };
  for (const auto& [registry, stored, location, version, modified] : cases) {
    TFakeOptionsStore store;
    store.Values.insert(stored);
    TVSDotNetOptions options(registry);
    options.LoadOptions(store);
    EXPECT_EQ(options.GetDevEnv2008Location(), location) << text::ToUtf8(location);
    EXPECT_EQ(options.GetDevEnvLocation(vs2008), text::Trim(location)) << text::ToUtf8(location);
    EXPECT_EQ(options.GetDefaultVSVersion(), version) << text::ToUtf8(location);
    EXPECT_EQ(options.IsModified(), modified) << text::ToUtf8(location);
  }
}

TEST(VSDotNetOptions, AsksTheRegistryForEachVersion) {
  static std::vector<std::string> asked;
  asked.clear();
  TVSDotNetOptions options(
      [](std::u16string_view key, std::u16string_view value) -> std::optional<std::u16string> {
        asked.push_back(
            text::ToUtf8(std::u16string(key.substr(key.rfind(u'\\') + 1)) + u" " + std::u16string(value)));
        return std::nullopt;
      });
  options.LoadOptions(TFakeOptionsStore());
  EXPECT_THAT(asked, testing::ElementsAre("7.0 InstallDir", "7.1 InstallDir", "8.0 InstallDir",
                                          "9.0 InstallDir", "10.0 InstallDir"));
}

TEST(VSDotNetOptions, LoadsAllThatItSaves) {
  EXPECT_EQ(VSDotNetOptions(), nullptr) << "without a host there are none";
  const text::TStringList all{u"MSDevPath=a",          u"MSDevPath2003=b", u"MSDevPath2005=c",
                              u"MSDevPath2008=d",      u"MSDevPath2010=e", u"DefVSVersion=1",
                              u"StandaloneMSTestDir=f"};
  TFakeOptionsStore store;
  for (std::size_t i = 0; i < all.Count(); ++i)
    store.Values.emplace(all.NameOf(i), all.ValueOf(i));
  TVSDotNetOptions options(EmptyRegistry);
  options.LoadOptions(store);
  options.SaveOptions(store);
  EXPECT_EQ(store.Written, all);
  EXPECT_EQ(options.GetDevEnv2002Location() + options.GetDevEnv2003Location(), u"ab");
  EXPECT_EQ(options.GetDevEnvLocation(vs2005) + options.GetDevEnvLocation(vs2010), u"ce");
  EXPECT_EQ(options.GetDevEnvLocation(vsUnknown), u"");
  options.SetDevEnv2010Location(u"e");
  EXPECT_FALSE(options.IsModified()) << "nothing was changed";
  options.SetDevEnv2010Location(u"E");
  EXPECT_TRUE(options.IsModified()) << "letter case counts";
}

} // namespace
} // namespace kx::tests
