// A resource script: what is written into its version block is read back, what stands around the block stays,
// and writing again changes nothing.
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "fuzz/FuzzTarget.h"
#include "package/versioninfo/VersionBlock.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

TVersionInfoContainer Read(const text::TStringList& lines) {
  TVersionInfoContainer info;
  ReadVersionBlock(lines, u"", info);
  return info;
}

std::size_t BeginOfBlock(const text::TStringList& lines) {
  return static_cast<std::size_t>(std::find_if(lines.begin(), lines.end(), OpensVersionBlock) -
                                  lines.begin());
}

void CheckSurroundings(const text::TStringList& before, const text::TStringList& after) {
  const std::size_t begin = BeginOfBlock(before);
  if (begin == before.Count()) return;
  for (std::size_t i = 0; i < begin; ++i)
    Require(before[i] == after[i], "the lines before the block stay");
  std::size_t end = FindEndOfBlock(before, begin, u"");
  for (std::size_t at = FindEndOfBlock(after, begin, u""); end < before.Count(); ++at, ++end)
    Require(before[end] == after[at], "the lines behind the block stay");
}

void Stamp(const text::TStringList& lines, std::u16string_view title) {
  auto info = Read(lines);
  info.Values().MajorVersion = 7;
  SetVersionText(info.Values(), u"FileDescription", title);
  const auto once = RewriteVersionBlock(lines, u"", info);
  const auto again = Read(once);
  Require(again.Values().MajorVersion == 7, "a number is read back");
  Require(again.Values().Strings == info.Values().Strings, "the texts are read back");
  CheckSurroundings(lines, once);
  static_cast<void>(FindLosses(lines, u"", info));
  // The translation is read wherever the script first names one: not always in what was written.
  const auto twice = RewriteVersionBlock(once, u"", again);
  Require(RewriteVersionBlock(twice, u"", Read(twice)) == twice, "writing again changes nothing");
  static_cast<void>(DefinesVersionName(once, [](std::u16string_view) { return u"#include \"a.h\""; }));
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  std::u16string title = text::FromUtf8(input.Line());
  // The reader takes no escapes apart.
  std::erase_if(title,
                [](char16_t c) { return c < u' ' || (c >= 0x7F && c < 0xA0) || c == u'"' || c == u'\\'; });
  text::TStringList lines;
  lines.SetText(platform::DecodeTextFile(input.Rest()));
  try {
    Stamp(lines, title);
  } catch (const EKxException&) {
  }
}

const TRegistration registration({"resource_script", Check});

} // namespace
} // namespace kx::fuzz
