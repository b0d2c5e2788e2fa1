#include "program/runner/PluginLoader.h"

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
  EXPECT_NE(Host.Project().AddAction(u"plugged").FindProperty(u"Number"), nullptr);
  EXPECT_THAT(ErrorOf(text::FromUtf8(KX_TEST_PLUGIN)),
              AllOf(HasSubstr(KX_TEST_PLUGIN), HasSubstr("\"PLUGGED\" is registered already.")));
}

// What a plug-in throws is of the host's own classes, though each is compiled on its own.
TEST_F(PluginLoaderTest, LetsTheHostCatchWhatThePluginThrows) {
  struct TIgnoredErrors : IKxActionValidationError {
    void Add(std::u16string_view, std::u16string_view, TKxOptionsObject*) override {}
  } errors;
  LoadPlugin(text::FromUtf8(KX_TEST_PLUGIN), THeadlessContext());
  auto& step = static_cast<TStepAction&>(Host.Project().AddAction(u"plugged").Action());
  step.Text = u"throws";
  EXPECT_THROW(step.Validate(errors), EKxException);
}

TEST_F(PluginLoaderTest, NamesTheLibraryThatCannotBeUsed) {
  const auto withoutEntry = text::FromUtf8(KX_TEST_PLUGIN_WITHOUT_ENTRY);
  EXPECT_THAT(ErrorOf(u"/no/missing.so"), AllOf(HasSubstr("/no/missing.so"), HasSubstr("Plug-in not found")));
  EXPECT_THAT(ErrorOf(Host.Write("text.so", "no library")), HasSubstr("Cannot load library"));
  EXPECT_THAT(ErrorOf(withoutEntry), HasSubstr("WithoutEntry"));
}

} // namespace
} // namespace kx::tests
