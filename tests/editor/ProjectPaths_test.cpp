#include "program/editor/ProjectPaths.h"

#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx::editor {
namespace {

TEST(ProjectPaths, AreRelativeWhereTheProjectCanBeMovedWithTheFile) {
  const std::tuple<std::u16string_view, std::u16string_view, const char*, const char*> rows[] = {
      {u"/a/b/c/x.sln", u"/a/b/c", "x.sln", "%ProjectDir%/x.sln"},
      {u"/a/b/c/d/x.sln", u"/a/b//c/", "d/x.sln", "%ProjectDir%/d/x.sln"},
      {u"/a/b/x.sln", u"/a/b/c", "../x.sln", "%ProjectDir%/../x.sln"},
      {u"/a/x.sln", u"/a/b/c", "../../x.sln", "%ProjectDir%/../../x.sln"},
      {u"/a/x/y.sln", u"/a/b/c/d", "/a/x/y.sln", "/a/x/y.sln"},
      {u"/x/y.sln", u"/a", "/x/y.sln", "/x/y.sln"}, // all that they share is the root
      {u"/a/b", u"/a/b", ".", "%ProjectDir%"},
      {u"/a/y:z", u"/a", "/a/y:z", "/a/y:z"}, // would be read as a drive
      {u"C:\\a\\x.sln", u"C:\\a", "x.sln", "%ProjectDir%\\x.sln"},
      {u"C:\\a\\x.sln", u"C:\\a\\b\\c", "..\\..\\x.sln", "%ProjectDir%\\..\\..\\x.sln"},
      {u"C:\\x.sln", u"C:\\", "x.sln", "%ProjectDir%\\x.sln"},
      {u"C:\\x.sln", u"C:\\a", "C:\\x.sln", "C:\\x.sln"},
      {u"D:\\a\\x.sln", u"C:\\a", "D:\\a\\x.sln", "D:\\a\\x.sln"},
      {u"\\\\s\\share\\a\\x", u"\\\\s\\share\\a\\b", "..\\x", "%ProjectDir%\\..\\x"},
      {u"\\\\s\\share\\x", u"\\\\s\\share\\b", "\\\\s\\share\\x", "\\\\s\\share\\x"},
      {u"\\\\s\\other\\x", u"\\\\s\\share", "\\\\s\\other\\x", "\\\\s\\other\\x"},
      {u"/a/x.sln", u"C:\\a", "/a/x.sln", "/a/x.sln"},
      {u"/a/50%/$(b)/%c%", u"/a", "50%/$$(b)/%%c%", "%ProjectDir%/50%/$$(b)/%%c%"},
  };
  for (const auto& [path, folder, seen, unseen] : rows) {
    EXPECT_EQ(text::ToUtf8(PathForProject(path, folder, true)), seen) << text::ToUtf8(folder);
    EXPECT_EQ(text::ToUtf8(PathForProject(path, folder, false)), unseen) << text::ToUtf8(folder);
  }
  EXPECT_EQ(PathForProject(u"C:\\A\\x", u"C:\\a", true), platform::IsWindows() ? u"x" : u"C:\\A\\x");
}

TEST(ProjectPaths, KnowTextsThatOnlyARunCanRead) {
  for (const auto* text : {u"%a%", u"x$(a)y", u"a%b.c%"})
    EXPECT_TRUE(HasReferences(text)) << text::ToUtf8(text);
  for (const auto* text : {u"", u"a", u"100%", u"$(a", u"%%a", u"$$(a)"})
    EXPECT_FALSE(HasReferences(text)) << text::ToUtf8(text);
}

} // namespace
} // namespace kx::editor
