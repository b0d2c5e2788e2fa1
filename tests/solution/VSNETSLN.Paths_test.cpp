#include "solution/VSNETSLN.Paths.h"

#include "host/Utilities.h"
#include "text/Encoding.h"

#include <gtest/gtest.h>
#include <random>

namespace kx::tests {

namespace {

TEST(ProjectPaths, AreThoseOfThePathUtilities) {
  std::mt19937 random(4);
  const std::string_view pieces[] = {"\\", "/", "src", "a b", "..", ".", "C:", "\xC3\xA9", "x.csproj"};
  for (const std::u16string_view folder :
       {u"/srv/a", u"/", u"/srv/../b//c", u"C:\\", u"C:\\a\\b", u"\\\\server\\share", u"C:/x/./y"}) {
    TProjectPaths paths(folder);
    for (int i = 0; i < 3'000; ++i) {
      std::string path;
      for (std::size_t count = random() % 7; count > 0; --count)
        path += pieces[random() % std::size(pieces)];
      ASSERT_EQ(paths.Expand(path), TPathUtils::ExpandRelativePath(text::FromUtf8(path), folder))
          << path << " in " << text::ToUtf8(folder);
    }
  }
}

} // namespace

} // namespace kx::tests
