// A build log in any encoding: its lines are those of its text.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "fuzz/FuzzTarget.h"
#include "program/cli/LogReader.h"
#include "tests/support/TemporaryFolder.h"

#include <array>

namespace kx::fuzz {
namespace {

constexpr std::array<std::u16string_view, 10> Encodings{u"",    u"utf-8", u"utf-16le", u"utf-16be", u"1252",
                                                        u"850", u"932",   u"65001",    u"oem",      u"x"};

std::u16string WithoutMark(std::u16string text) {
  return text.starts_with(u'\uFEFF') ? text.substr(1) : text;
}

// Each line ends at a line feed; a CR right before it belongs to the end.
std::u16string LinesOf(std::u16string_view text) {
  std::u16string lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(u'\n'), text.size());
    std::u16string_view line = text.substr(0, end);
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    lines.append(line).append(u"\n");
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

void Check(std::string_view bytes) {
  static const tests::TTemporaryFolder folder;
  TInput input(bytes);
  const auto encoding = Encodings[input.Below(Encodings.size())];
  const std::string_view log = input.Rest();
  std::u16string lines;
  try {
    cli::ForEachLogLine(folder.Write("a.log", log), encoding,
                        [&lines](std::u16string_view line) { lines.append(line).append(u"\n"); });
  } catch (const EKxException&) {
    return;
  }
  const bool isWide = log.starts_with("\xFF\xFE") || log.starts_with("\xFE\xFF");
  if (encoding.empty() && !isWide && text::IsValidUtf8(log))
    Require(lines == LinesOf(WithoutMark(text::FromUtf8(log))), "the lines are those of the text");
}

const TRegistration registration({"build_log", Check});

} // namespace
} // namespace kx::fuzz
