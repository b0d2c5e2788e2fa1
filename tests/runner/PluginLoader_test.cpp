#include "runner/PluginLoader.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class PluginLoaderTest : public testing::Test {
protected:
  PluginLoaderTest() { SetServices({.Actions = &Host.Services, .Scripting = &Host.Services}); }
  ~PluginLoaderTest() override { SetServices({}); }

  std::string ErrorOf(std::u16string_view file) {
    try {
      LoadPlugin(file, THeadlessContext());
      return "no error";
    } catch (const EKxException& error) {
      return error.what();
    }
  }

  TEmbeddedHost Host;
};

TEST_F(PluginLoaderTest, CallsTheEntryThatBearsTheLibrarysName) {
  LoadPlugin(text::FromUtf8(KX_TEST_PLUGIN), THeadlessContext());
  const auto& node = Host.Project().AddAction(u"plugged");
  EXPECT_EQ(node.Type().Category, u"Tests");
  EXPECT_NE(node.FindProperty(u"Number"), nullptr);
  EXPECT_THAT(ErrorOf(text::FromUtf8(KX_TEST_PLUGIN)),
              AllOf(HasSubstr(KX_TEST_PLUGIN), HasSubstr("\"PLUGGED\" is registered already.")));
}

TEST_F(PluginLoaderTest, NamesTheLibraryThatCannotBeUsed) {
  const struct {
    std::u16string File;
    const char* Reason;
  } cases[] = {
      {Host.Path("missing.so"), "Plug-in not found"},
      {Host.Path(""), "Plug-in not found"},
      {Host.Write("text.so", "no library"), "Cannot load library"},
      {text::FromUtf8(KX_TEST_PLUGIN_WITHOUT_ENTRY), "WithoutEntry"},
  };
  for (const auto& row : cases)
    EXPECT_THAT(ErrorOf(row.File), AllOf(HasSubstr(text::ToUtf8(row.File)), HasSubstr(row.Reason)));
}

TEST(PluginEntryName, IsTheBareFileName) {
  const struct {
    std::u16string_view File, Entry;
  } cases[] = {{u"/opt/kx/KxVisualStudioDotNET.so", u"KxVisualStudioDotNET"},
               {u"C:\\kx\\KxVisualStudioDotNET.dll", u"KxVisualStudioDotNET"},
               {u"plugins/libMine.so", u"Mine"},
               {u"Bare", u"Bare"}};
  for (const auto& row : cases)
    EXPECT_EQ(PluginEntryName(row.File), row.Entry) << text::ToUtf8(row.File);
}

} // namespace
} // namespace kx::tests
