#include "platform/System.h"

#include "platform/Files.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kx::platform {
namespace {

constexpr std::u16string_view kPlugin = KX_TEST_PLUGIN;

TEST(LoadLibraryEntry, GivesAnEntryThatCanBeCalled) {
  const std::u16string path = text::JoinPath(ProgramDirectory(), kPlugin);
  const Result<EntryPoint> entry = LoadLibraryEntry(path, "KxTestEntry");
  ASSERT_TRUE(entry) << testing::PrintToString(entry.Message());
  EXPECT_EXIT((*entry)(), testing::ExitedWithCode(77), "");
}

TEST(LoadLibraryEntry, NamesTheLibraryThatCannotBeLoaded) {
  const std::u16string plugin = text::JoinPath(ProgramDirectory(), kPlugin);
  const struct {
    std::u16string Path;
    std::string_view Entry;
    std::u16string_view Named;
  } rows[] = {
      {plugin, "NoSuchEntry", u"NoSuchEntry"},
      {plugin + u".missing", "KxTestEntry", u"missing"},
      {u"Q:\\nowhere\\plugin.so", "KxTestEntry", u"Q:"},
  };
  for (const auto& row : rows) {
    const Result<EntryPoint> entry = LoadLibraryEntry(row.Path, row.Entry);
    ASSERT_FALSE(entry);
    EXPECT_TRUE(entry.Message().starts_with(u"Cannot load library " + row.Path + u". "));
    EXPECT_NE(entry.Message().rfind(row.Named), std::u16string::npos)
        << testing::PrintToString(entry.Message());
  }
}

TEST(Environment, NamesWhatItGives) {
  const auto names = EnvironmentNames();
  EXPECT_NE(std::ranges::find(names, u"PATH"), names.end());
  for (const auto& name : names)
    EXPECT_TRUE(EnvironmentVariable(name)) << testing::PrintToString(name);
  EXPECT_EQ(EnvironmentVariable(u"KX_SURELY_NOT_SET"), std::nullopt);
}

} // namespace
} // namespace kx::platform
