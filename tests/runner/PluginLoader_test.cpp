#include "program/runner/PluginLoader.h"

#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

TEST(PluginLoader, CallsTheEntryThatBearsTheLibrarysNameOrNamesTheLibrary) {
  TEmbeddedHost host;
  SetServices({.Actions = &host.Services, .Scripting = &host.Services});
  const auto errorOf = [](std::u16string_view file) {
    return FailureOf([file] { LoadPlugin(file, THeadlessContext()); });
  };
  EXPECT_EQ(errorOf(text::FromUtf8(KX_TEST_PLUGIN)), "");
  auto& step = static_cast<TStepAction&>(host.Project().AddAction(u"plugged").Action());
  EXPECT_THAT(errorOf(text::FromUtf8(KX_TEST_PLUGIN)),
              AllOf(HasSubstr(KX_TEST_PLUGIN), HasSubstr("\"PLUGGED\" is registered already.")));
  EXPECT_THAT(errorOf(u"/no/missing.so"), AllOf(HasSubstr("/no/missing.so"), HasSubstr("Plug-in not found")));
  EXPECT_THAT(errorOf(host.Write("text.so", "no library")), HasSubstr("Cannot load library"));
  EXPECT_THAT(errorOf(text::FromUtf8(KX_TEST_PLUGIN_WITHOUT_ENTRY)), HasSubstr("WithoutEntry"));

  // What a plug-in throws is of the host's own classes, though each is compiled on its own.
  struct TIgnoredErrors : IKxActionValidationError {
    void Add(std::u16string_view, std::u16string_view, TKxOptionsObject*) override {}
  } errors;
  step.Text = u"throws";
  EXPECT_THROW(step.Validate(errors), EKxException);
  SetServices({});
}

} // namespace
} // namespace kx::tests
