#include "package/versioninfo/VersionInfo.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/RecordingHost.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

std::string Lines(const TVersionInfoContainer& info, std::u16string_view word) {
  text::TStringList block;
  TVersionInfo::GenerateVersionInfoRC(info, block, true);
  std::string out;
  for (const auto& line : block)
    if (line.find(word) != std::u16string::npos) out += text::ToUtf8(text::Trim(line)) + "\n";
  return out;
}

TEST(VersionInfo, UpdatesVersionTextsAndProductNumbers) {
  static constexpr struct {
    const char* Name;
    std::u16string_view Strings;
    void (*Prepare)(TVersionInfoValues& values);
    const char* Block;
  } cases[] = {
      {"nothing asked: the product's numbers follow its text", u"ProductVersion=5, 6\r\nFileVersion=x",
       [](TVersionInfoValues&) {},
       "5,6,0,0\nVALUE \"ProductVersion\", \"5, 6\"\nVALUE \"FileVersion\", \"x\"\n"},
      {"a text without numbers", u"ProductVersion=2010 R2", [](TVersionInfoValues&) {},
       "1,2,0,0\nVALUE \"ProductVersion\", \"2010 R2\"\n"},
      {"both automatic", u"ProductVersion=5.6",
       [](TVersionInfoValues& v) { v.AutoUpdateFileVersion = v.AutoUpdateProductVersion = true; },
       "1,2,0,0\nVALUE \"ProductVersion\", \"1.2.0.0\"\nVALUE \"FileVersion\", \"1.2.0.0\"\n"},
      {"linked", u"FileVersion=1.2 beta\r\nProductVersion=5.6",
       [](TVersionInfoValues& v) { v.LinkFileAndProductVersion = true; },
       "1,2,0,0\nVALUE \"FileVersion\", \"1.2 beta\"\nVALUE \"ProductVersion\", \"1.2 beta\"\n"},
  };
  for (const auto& row : cases) {
    TVersionInfoContainer info;
    info.SetMajorVersion(1);
    info.SetMinorVersion(2);
    info.SetStringValues(row.Strings);
    row.Prepare(info.Values());
    EXPECT_EQ(Lines(info, u"PRODUCTVERSION") + Lines(info, u"Version\""),
              "PRODUCTVERSION " + std::string(row.Block))
        << row.Name;
  }
}

// Whoever lists the properties can read and write each.
TEST(VersionInfo, PropertiesKeepWhatTheyAreGiven) {
  TVersionInfoValues values;
  for (const auto& property : Win32VersionProperties()) {
    const bool isFlag = property.Get(values) == u"False";
    const std::u16string_view given = isFlag ? u"True" : u"7";
    property.Set(values, given);
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
  EXPECT_EQ(Lines(script, u"VALUE"), "VALUE \"Comments\", \"\\251 us\"\n"
                                     "VALUE \"CompanyName\", \"A \\042B\\042 \\\\C\"\n"
                                     "VALUE \"SpecialBuild\", \"mine\"\n"
                                     "VALUE \"Translation\", 0x409, 1252\n");
  EXPECT_EQ(Lines(script, u"FILE"), "FILEVERSION 7,0,0,0\nFILEFLAGSMASK 0x3fL\nFILEFLAGS 0x00\n"
                                    "FILEOS 0x40004L\nFILETYPE 0x2\nFILESUBTYPE 0x0L\n");
  EXPECT_THROW(
      TVersionInfo::LoadFromPropertySet(tests::TFakePropertySet(u"x", {{u"CodePage", u"utf"}}), wanted),
      EKxException);
}

} // namespace
} // namespace kx
