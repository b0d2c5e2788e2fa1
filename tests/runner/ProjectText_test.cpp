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

std::string With(std::string_view before, std::string_view after) {
  std::string text(Project);
  const std::size_t at = text.find(before);
  EXPECT_NE(at, std::string::npos) << before;
  return text.replace(at, before.size(), after);
}

std::string Without(std::string_view part) {
  return With(part, "");
}

constexpr std::size_t LoopBegin = Project.find("    <!-- why");
constexpr std::string_view Loop =
    Project.substr(LoopBegin, Project.find("    <Action Type=\"C\"") - LoopBegin);

TEST(ProjectText, ActionsChangeTheirPlacesAndNothingElseChanges) {
  const std::string inner = "        <Action Type=\"B\">\n          <Lines>\n            <Line>x</Line>\n"
                            "          </Lines>\n        </Action>\n";
  const std::string outer = "    <Action Type=\"B\">\n      <Lines>\n        <Line>x</Line>\n      </Lines>\n"
                            "    </Action>\n";
  std::string nested = Without("    <Action Type=\"A\" /> <!-- first -->\n");
  nested.replace(nested.find(inner), 0, "        <Action Type=\"A\" /> <!-- first -->\n");
  std::string taken = Without(inner);
  taken.replace(taken.find("    <Action Type=\"A\""), 0, outer);
  std::string first = Without(Loop);
  first.replace(first.find("    <Action Type=\"A\""), 0, Loop);
  std::string last = Without(inner);
  last.replace(
      last.find("\n  </Actions>\n</"), 0,
      "\n    <Action Type=\"B\">\n      <Lines>\n        <Line>x</Line>\n      </Lines>\n    </Action>");
  const struct {
    const char* Name;
    TActionPath From;
    TActionPath To;
    std::string After;
  } cases[] = {
      {"a loop takes along its comments and what it holds", {1}, {0}, first},
      {"before itself, and behind itself", {1}, {1}, std::string(Project)},
      {"behind itself", {1}, {2}, std::string(Project)},
      {"into a loop, one step further in", {0}, {1, 0}, nested},
      {"out of a loop, to the front", {1, 0}, {0}, taken},
      {"out of a loop, behind the last of a line", {1, 0}, {4}, last},
      {"within a line", {3}, {2}, With("\"C\"/><Action Type=\"D\"", "\"D\"/><Action Type=\"C\"")},
  };
  for (const auto& row : cases) {
    TProjectText text{std::string(Project)};
    text.MoveAction(row.From, row.To);
    EXPECT_EQ(text.Bytes(), row.After) << row.Name;
  }
}

TEST(ProjectText, OtherEdits) {
  using TEdit = std::function<void(TProjectText&)>;
  const std::string_view start = "<BuildProject Name=\"p\">\n";
  const struct {
    const char* Name;
    TEdit Edit;
    std::string After;
  } cases[] = {
      {"an action goes, what is said above it stays", [](auto& text) { text.RemoveAction({1}); },
       Without(Loop.substr(Loop.find("    <Action Type=\"L\"")))},
      {"a copy beside the original", [](auto& text) { text.CopyAction({0}, {1}); },
       With("<!-- first -->\n", "<!-- first -->\n    <Action Type=\"A\" /> <!-- first -->\n")},
      {"another name", [](auto& text) { text.SetActionAttribute({1}, u"Name", u"a\"<b>\t\r\n"); },
       With("Name='Loop'", "Name=\"a&quot;&lt;b&gt;&#9;&#13;&#10;\"")},
      {"no name", [](auto& text) { text.SetActionAttribute({1}, u"Name", std::nullopt); },
       With(" Name='Loop'", "")},
      {"a first name", [](auto& text) { text.SetActionAttribute({0}, u"Name", u"é日本"); },
       With("Type=\"A\"", "Type=\"A\" Name=\"é日本\"")},
      {"a variable where there are none", [](auto& text) { text.SetVariable(u"Root", u"a & b"); },
       With(start, std::string(start) + "  <Variables>\n    <Variable Name=\"Root\">a &amp; b</Variable>\n"
                                        "  </Variables>\n")},
      {"a variable is changed and goes",
       [](auto& text) {
         text.SetVariable(u"Root", u"");
         text.SetVariable(u"root", u"y");
         text.SetVariable(u"Root", std::nullopt);
       },
       With(start, std::string(start) + "  <Variables>\n  </Variables>\n")},
      {"a property set with a value",
       [](auto& text) {
         text.AddPropertySet(u"R", u"Win32");
         text.SetPropertySetValue(u"r", u"MajorVersion", u"3");
       },
       With(start,
            std::string(start) +
                "  <PropertySets>\n    <PropertySet Name=\"R\" Kind=\"Win32\">\n"
                "      <Value Name=\"MajorVersion\">3</Value>\n    </PropertySet>\n  </PropertySets>\n")},
  };
  for (const auto& row : cases) {
    TProjectText text{std::string(Project)};
    row.Edit(text);
    EXPECT_EQ(text.Bytes(), row.After) << row.Name;
  }
}

TEST(ProjectText, WhatIsNotThereIsRefusedAndNothingChanges) {
  const std::function<void(TProjectText&)> edits[] = {[](auto& text) { text.MoveAction({1}, {1, 0}); },
                                                      [](auto& text) { text.MoveAction({9}, {0}); },
                                                      [](auto& text) { text.MoveAction({0}, {0, 0, 1}); },
                                                      [](auto& text) { text.MoveAction({0}, {}); },
                                                      [](auto& text) { text.RemoveAction({1, 1}); },
                                                      [](auto& text) { text.RemovePropertySet(u"R"); },
                                                      [](auto& text) { text.SetVariable(u"V", std::nullopt); }};
  for (const auto& edit : edits) {
    TProjectText text{std::string(Project)};
    EXPECT_THROW(edit(text), EKxException);
    EXPECT_EQ(text.Bytes(), Project);
  }
}

} // namespace
} // namespace kx::tests
