#include "program/editor/SourceLines.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/LineSplitter.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::editor {

namespace {

constexpr int Around = 8;
constexpr std::size_t LongestLine = 4000; // of what is shown
constexpr std::size_t BlockSize = std::size_t{64} << 10;

std::u16string Shown(std::string_view line) {
  line = line.substr(0, LongestLine);
  const std::u16string text = text::IsValidUtf8(line)
                                  ? text::FromUtf8(line)
                                  : text::FromSingleByte(line, text::SingleBytePage::Windows1252);
  return text::VisibleControls(text);
}

} // namespace

TSourceLines ReadSourceLines(std::u16string_view file, int line, const TKxEvent& stop) {
  TSourceLines source{.File = std::u16string(file), .Line = line, .First = std::max(1, line - Around)};
  auto reader = platform::FileReader::Open(file);
  if (!reader) throw EKxException(reader.Message());
  int number = 0;
  platform::LineSplitter splitter([&](std::string_view text) {
    if (++number >= source.First && number <= line + Around) source.Lines.push_back(Shown(text));
  });
  std::string block(BlockSize, '\0');
  while (number < line + Around && !stop.IsRaised()) {
    const auto size = reader->Read(block.data(), block.size());
    if (!size) throw EKxException(size.Message());
    if (*size == 0) {
      splitter.Finish();
      break;
    }
    splitter.Feed(std::string_view(block).substr(0, *size));
  }
  return source;
}

} // namespace kx::editor
