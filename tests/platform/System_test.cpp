#include "foundation/platform/SharedLibrary.h"
#include "foundation/platform/System.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace kx::platform {
namespace {

const std::u16string plugin = text::JoinPath(ProgramDirectory(), KX_TEST_PLUGIN);

TEST(LoadLibraryEntry, GivesAnEntryThatCanBeCalledOrTheReason) {
  const Result<EntryPoint> entry = LoadLibraryEntry(plugin, "KxTestEntry");
  ASSERT_TRUE(entry) << text::ToUtf8(entry.Message());
  EXPECT_EXIT((*entry)(), testing::ExitedWithCode(77), "");

  const std::tuple<std::u16string, const char*, const char*> rows[] = {
      {plugin, "NoSuchEntry", "NoSuchEntry"},
      {plugin + u".missing", "KxTestEntry", "missing"},
      {u"Q:\\nowhere\\plugin.so", "KxTestEntry", IsWindows() ? "plugin.so" : "drive Q:"},
  };
  for (const auto& [path, name, reason] : rows) {
    const std::string message = text::ToUtf8(LoadLibraryEntry(path, name).Message());
    EXPECT_THAT(message, testing::StartsWith("Cannot load library " + text::ToUtf8(path) + ". "));
    EXPECT_THAT(message, testing::HasSubstr(reason));
  }
}

TEST(EnvironmentNames, AreThoseOfAllThatIsSet) {
  const auto names = EnvironmentNames();
  EXPECT_GE(names.size(), 2U);
  for (const auto& name : names)
    if (!name.starts_with(u'=')) { // a folder of a drive of Windows
      EXPECT_TRUE(EnvironmentVariable(name)) << text::ToUtf8(name);
    }
  EXPECT_TRUE(std::ranges::any_of(names, [](auto& name) { return text::EqualsIgnoreCase(name, u"PATH"); }));
  EXPECT_EQ(EnvironmentVariable(u"KX_NOBODY_SETS_THIS"), std::nullopt);
}

} // namespace
} // namespace kx::platform
