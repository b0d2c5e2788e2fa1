#include "package/buildaction/KxVSDotNetOptions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/RecordingHost.h"

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
  const struct {
    const char* Case;
    TVSDotNetOptions::TRegistryRead Registry;
    std::u16string Key, Value; // as stored
    std::u16string Location2008;
    TVSDotNetVersion Default;
    bool IsModified;
  } cases[] = {
      {"no Visual Studio", EmptyRegistry, u"", u"", u"", vs2005, false},
      {"one version", Only2008, u"", u"", u"C:\\VS9\\IDE\\", vs2008, true},
      {"the store wins", Only2008, u"MSDevPath2008", u" D:\\VS ", u" D:\\VS ", vs2008, false},
      {"blanks are kept, and mean nothing", Only2008, u"MSDevPath2008", u"  ", u"  ", vs2005, false},
      {"the newest installed", Only2008, u"MSDevPath2010", u"E", u"C:\\VS9\\IDE\\", vs2010, true},
      {"a stored default stays", EmptyRegistry, u"DefVSVersion", u"0", u"", vs2002, false},
  };
  for (const auto& row : cases) {
    TFakeOptionsStore store;
    store.Values.emplace(row.Key, row.Value);
    TVSDotNetOptions options(row.Registry);
    options.LoadOptions(store);
    EXPECT_EQ(options.GetDevEnv2008Location(), row.Location2008) << row.Case;
    EXPECT_EQ(options.GetDevEnvLocation(vs2008), text::Trim(row.Location2008)) << row.Case;
    EXPECT_EQ(options.GetDefaultVSVersion(), row.Default) << row.Case;
    EXPECT_EQ(options.IsModified(), row.IsModified) << row.Case;
  }
  static std::u16string asked;
  TVSDotNetOptions([](std::u16string_view key, std::u16string_view /*value*/) {
    asked.append(key.substr(key.rfind(u'\\')));
    return std::optional<std::u16string>();
  }).LoadOptions(TFakeOptionsStore());
  EXPECT_EQ(asked, u"\\7.0\\7.1\\8.0\\9.0\\10.0");
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
