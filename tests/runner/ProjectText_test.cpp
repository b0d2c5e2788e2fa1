#include "program/runner/ProjectText.h"

#include "foundation/text/Exceptions.h"

#include <gtest/gtest.h>

#include <functional>

namespace kx::tests {
namespace {

constexpr std::string_view Project = R"(<?xml version="1.0"?>
<BuildProject Name="p">
  <!-- all that is built -->
  <Actions>

    <Action Type="A" /> <!-- first -->
    <!-- why the loop is here,
         in two lines -->
    <Action Type="L" Name='Loop'>
      <Text>
    kept as it is</Text>
      <Actions>
        <Action Type="B">
          <Lines>
            <Line>x</Line>
          </Lines>
        </Action>
      </Actions>
    </Action>
    <Action Type="C"/><Action Type="D"/>
  </Actions>
</BuildProject>
)";
const std::string A = "    <Action Type=\"A\" /> <!-- first -->\n";
const std::string B = "    <Action Type=\"B\">\n      <Lines>\n        <Line>x</Line>\n      </Lines>\n"
                      "    </Action>\n";
const std::string InnerB = "        <Action Type=\"B\">\n          <Lines>\n            <Line>x</Line>\n"
                           "          </Lines>\n        </Action>\n";
const std::string Loop(Project.substr(Project.find("    <!-- why"),
                                      Project.find("    <Action Type=\"C\"") - Project.find("    <!-- why")));

// The project, or another text, with one part replaced.
std::string With(std::string_view before, const std::string& after, std::string text = std::string(Project)) {
  const std::size_t at = text.find(before);
  EXPECT_NE(at, std::string::npos) << before;
  return text.replace(at, before.size(), after);
}

TEST(ProjectText, ChangesWhatIsAskedForAndNothingElse) {
  using TEdit = std::function<void(TProjectText&)>;
  const auto move = [](const TActionPath& from, const TActionPath& to) -> TEdit {
    return [=](TProjectText& text) { text.MoveAction(from, to); };
  };
  const auto rename = [](std::size_t action, std::optional<std::u16string_view> name) -> TEdit {
    return [=](TProjectText& text) { text.SetActionAttribute({action}, u"Name", name); };
  };
  const std::string start = "<BuildProject Name=\"p\">\n";
  const std::tuple<const char*, TEdit, std::string> cases[] = {
      {"a loop takes along its comments and what it holds", move({1}, {0}),
       With(A, Loop + A, With(Loop, ""))},
      {"before itself", move({1}, {1}), std::string(Project)},
      {"behind itself", move({1}, {2}), std::string(Project)},
      {"into a loop, one step further in", move({0}, {1, 0}), With(InnerB, "    " + A + InnerB, With(A, ""))},
      {"out of a loop, to the front", move({1, 0}, {0}), With(A, B + A, With(InnerB, ""))},
      {"out of a loop, behind the last of a line", move({1, 0}, {4}),
       With("  </Actions>\n</", B + "  </Actions>\n</", With(InnerB, ""))},
      {"within a line", move({3}, {2}), With("\"C\"/><Action Type=\"D\"", "\"D\"/><Action Type=\"C\"")},
      {"an action goes, what is said above it stays", [](TProjectText& text) { text.RemoveAction({1}); },
       With(Loop.substr(Loop.find("    <Action Type=\"L\"")), "")},
      {"a copy beside the original", [](TProjectText& text) { text.CopyAction({0}, {1}); }, With(A, A + A)},
      {"another name", rename(1, u"a\"<b>\t\r\n"),
       With("Name='Loop'", "Name=\"a&quot;&lt;b&gt;&#9;&#13;&#10;\"")},
      {"no name", rename(1, std::nullopt), With(" Name='Loop'", "")},
      {"a first name", rename(0, u"é日本"), With("Type=\"A\"", "Type=\"A\" Name=\"é日本\"")},
      {"a variable where there are none", [](TProjectText& text) { text.SetVariable(u"Root", u"a & b"); },
       With(start, start + "  <Variables>\n    <Variable Name=\"Root\">a &amp; b</Variable>\n"
                           "  </Variables>\n")},
      {"a variable is changed and goes",
       [](TProjectText& text) {
         text.SetVariable(u"Root", u"");
         text.SetVariable(u"root", u"y");
         text.SetVariable(u"Root", std::nullopt);
       },
       With(start, start + "  <Variables>\n  </Variables>\n")},
      {"a property set with a value",
       [](TProjectText& text) {
         text.AddPropertySet(u"R", u"Win32");
         text.SetPropertySetValue(u"r", u"MajorVersion", u"3");
       },
       With(start, start + "  <PropertySets>\n    <PropertySet Name=\"R\" Kind=\"Win32\">\n"
                           "      <Value Name=\"MajorVersion\">3</Value>\n    </PropertySet>\n"
                           "  </PropertySets>\n")},
  };
  for (const auto& [name, edit, after] : cases) {
    TProjectText text{std::string(Project)};
    edit(text);
    EXPECT_EQ(text.Bytes(), after) << name;
  }
  const TEdit refused[] = {move({1}, {1, 0}),
                           move({9}, {0}),
                           move({0}, {0, 0, 1}),
                           move({0}, {}),
                           [](TProjectText& text) {
                             text.RemoveAction({1, 1});
                           },
                           [](TProjectText& text) { text.RemovePropertySet(u"R"); },
                           [](TProjectText& text) { text.SetVariable(u"V", std::nullopt); }};
  for (const auto& edit : refused) {
    TProjectText text{std::string(Project)};
    EXPECT_THROW(edit(text), EKxException);
    EXPECT_EQ(text.Bytes(), Project);
  }
}

} // namespace
} // namespace kx::tests
