// Lists of lines in their written forms, numbers, and differences of two texts: what is written reads back.
#include "foundation/text/Encoding.h"
#include "foundation/text/StringList.h"
#include "foundation/text/Text.h"
#include "foundation/text/UnifiedDiff.h"
#include "fuzz/FuzzTarget.h"

namespace kx::fuzz {
namespace {

using text::TStringList;

void CheckLists(std::u16string_view text) {
  TStringList lines;
  lines.SetText(text);
  TStringList again;
  again.SetText(lines.GetText());
  Require(again == lines, "lines read back");
  again.SetCommaText(lines.GetCommaText());
  Require(again == lines, "a comma text reads back");
  again.SetDelimitedText(lines.GetDelimitedText(u'|'), u'|');
  Require(again == lines, "a delimited text reads back");
  lines.SetCommaText(text);
  again.SetCommaText(lines.GetCommaText());
  Require(again == lines, "the items of any comma text read back");
}

void CheckNumbers(std::u16string_view text) {
  const auto number = text::ToInteger(text);
  if (number) Require(text::ToInteger(text::FromInteger(*number)) == number, "a number reads back");
  Require(text::EqualsIgnoreCase(text, text::ToLower(text)), "letter case does not matter");
  Require(text::FindIgnoreCase(text, text::ToLower(text)) == 0, "a text is found in itself");
}

// "-12,3": the number behind the mark.
std::size_t FirstLine(std::u16string_view hunk) {
  const std::size_t begin = hunk.find(u'-') + 1;
  const std::size_t comma = hunk.find(u',', begin);
  const auto first = static_cast<std::size_t>(text::ToIntegerOr(hunk.substr(begin, comma - begin), 0));
  return hunk.substr(comma).starts_with(u",0 ") ? first : first - 1;
}

std::vector<std::u16string> Patched(std::u16string_view before, const std::vector<std::u16string>& patch) {
  const auto old = text::SplitLines(before);
  std::vector<std::u16string> lines;
  std::size_t at = 0;
  const auto keepUpTo = [&](std::size_t end) {
    Require(end <= old.size() && at <= end, "a hunk stands in the text");
    for (; at < end; ++at)
      lines.emplace_back(old[at]);
  };
  for (const auto& line : patch) {
    if (line.starts_with(u"@@")) {
      keepUpTo(FirstLine(line));
    } else if (line.front() == u'+') {
      lines.push_back(line.substr(1));
    } else {
      Require(at < old.size() && line.substr(1) == old[at], "a hunk holds the lines of the text");
      if (line.front() == u' ') lines.emplace_back(old[at]);
      ++at;
    }
  }
  keepUpTo(old.size());
  return lines;
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::u16string before = text::FromUtf8(input.Part());
  const std::u16string after = text::FromUtf8(input.Rest());
  CheckLists(before);
  CheckNumbers(before);
  const auto lines = text::SplitLines(after);
  Require(Patched(before, text::UnifiedDiff(before, after)) ==
              std::vector<std::u16string>(lines.begin(), lines.end()),
          "the difference leads from one text to the other");
}

const TRegistration registration({"texts", Check});

} // namespace
} // namespace kx::fuzz
