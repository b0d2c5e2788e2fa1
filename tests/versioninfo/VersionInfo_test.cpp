#include "package/versioninfo/VersionInfo.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/RecordingHost.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// The lines of the block that hold one of the words.
std::string Lines(const TVersionInfoContainer& info, std::initializer_list<std::u16string_view> words) {
  text::TStringList block;
  TVersionInfo::GenerateVersionInfoRC(info, block, true);
  std::string out;
  for (const auto word : words)
    for (const auto& line : block)
      if (line.find(word) != std::u16string::npos) out += text::ToUtf8(text::Trim(line)) + "\n";
  return out;
}

TEST(VersionInfo, UpdatesVersionTextsAndProductNumbers) {
  const std::tuple<const char*, std::u16string, std::u16string, std::string> cases[] = {
      {"the product's numbers follow its text", u"ProductVersion=5, 6\r\nFileVersion=x", u"",
       "5,6,0,0\nVALUE \"ProductVersion\", \"5, 6\"\nVALUE \"FileVersion\", \"x\"\n"},
      {"no numbers", u"ProductVersion=2010 R2", u"", "1,2,0,0\nVALUE \"ProductVersion\", \"2010 R2\"\n"},
      {"both automatic", u"ProductVersion=5.6", u"AutoUpdateFileVersionString AutoUpdateProductVersionString",
       "1,2,0,0\nVALUE \"ProductVersion\", \"1.2.0.0\"\nVALUE \"FileVersion\", \"1.2.0.0\"\n"},
      {"linked", u"FileVersion=1.2 beta\r\nProductVersion=5.6", u"LinkProductVersion",
       "1,2,0,0\nVALUE \"FileVersion\", \"1.2 beta\"\nVALUE \"ProductVersion\", \"1.2 beta\"\n"},
  };
  for (const auto& [name, strings, flags, expected] : cases) {
    TVersionInfoContainer info;
    info.SetMajorVersion(1);
    info.SetMinorVersion(2);
    info.SetStringValues(strings);
    for (const auto& property : Win32VersionProperties())
      if (flags.find(property.Name) != flags.npos) property.Set(info.Values(), u"True");
    EXPECT_EQ(Lines(info, {u"PRODUCTVERSION", u"Version\""}), "PRODUCTVERSION " + expected) << name;
  }
}

// Whoever lists the properties can read and write each.
TEST(VersionInfo, PropertiesKeepWhatTheyAreGiven) {
  TVersionInfoValues values;
  for (const auto& property : Win32VersionProperties()) {
    const bool isFlag = property.Get(values) == u"False";
    const std::u16string_view given = isFlag ? u"True" : u"7";
    property.Set(values, given);
    const bool isRule = property.Name.starts_with(u"AutoUpdate") || property.Name.starts_with(u"Link");
    EXPECT_EQ(property.Selectable, !isRule) << text::ToUtf8(property.Name);
    EXPECT_EQ(property.Get(values), given) << text::ToUtf8(property.Name);
    if (!isFlag) continue;
    property.Set(values, u"no");
    EXPECT_EQ(property.Get(values), u"False") << text::ToUtf8(property.Name);
  }
}

TEST(VersionInfo, AsksForEachTextThatItMayUpdate) {
  constexpr std::array<std::u16string_view, 1> names{u"Comments"};
  const TVersionInfoContainer info(names, [](std::u16string_view name, std::u16string_view oldValue,
                                             std::u16string& newValue, bool selectable) {
    newValue = std::u16string(name) + u"=" + std::u16string(oldValue) + (selectable ? u"?" : u"!");
  });
  EXPECT_TRUE(info.HasName(u"comments") && !info.HasName(u"Comment"));
  EXPECT_EQ(info.NewValue(u"A", u"b", true) + info.NewValue(u"A", u"b", false), u"A=b?A=b!");
  EXPECT_EQ(TVersionInfoContainer().NewValue(u"A", u"b", true), u"b");
}

TEST(VersionInfo, NamesNumbersThatAResourceCannotHold) {
  TVersionInfoContainer info;
  info.SetMajorVersion(65535);
  EXPECT_EQ(TVersionInfo::CheckNumbers(info.Values()), std::nullopt);
  info.SetProductVersion(u"1, 65536");
  EXPECT_TRUE(TVersionInfo::CheckNumbers(info.Values())->starts_with(u"ProductVersion 1, 65536 "));
  info.SetBuildVersion(-1);
  EXPECT_TRUE(TVersionInfo::CheckNumbers(info.Values())->starts_with(u"BuildVersion -1 "));
  EXPECT_EQ(TVersionInfo::CheckNumbers(info.Values(), [](auto name) { return name == u"Locale"; }),
            std::nullopt);
}

TEST(VersionInfo, MergesWhatABuildAsksForIntoAScript) {
  const tests::TFakePropertySet set(u"Release", {{u"MajorVersion", u"7"},
                                                 {u"dll", u"true"},
                                                 {u"CompanyName", u"A \"B\" \\C"},
                                                 {u"SpecialBuildDetails", u"mine"}});
  TVersionInfoContainer wanted;
  TVersionInfo::LoadFromPropertySet(set, wanted);
  TVersionInfoContainer script;
  script.SetStringValues(u"Comments=\\251 us\r\ncompanyname=x\r\nSpecialBuild=old");
  TVersionInfo::Merge(wanted.Values(), script);
  EXPECT_EQ(Lines(script, {u"VALUE", u"FILE"}), R"(VALUE "Comments", "\251 us"
VALUE "CompanyName", "A \042B\042 \\C"
VALUE "SpecialBuild", "mine"
VALUE "Translation", 0x409, 1252
FILEVERSION 7,0,0,0
FILEFLAGSMASK 0x3fL
FILEFLAGS 0x00
FILEOS 0x40004L
FILETYPE 0x2
FILESUBTYPE 0x0L
)");
  EXPECT_THROW(
      TVersionInfo::LoadFromPropertySet(tests::TFakePropertySet(u"x", {{u"CodePage", u"utf"}}), wanted),
      EKxException);
}

} // namespace
} // namespace kx
