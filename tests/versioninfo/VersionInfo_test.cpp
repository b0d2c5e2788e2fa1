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
