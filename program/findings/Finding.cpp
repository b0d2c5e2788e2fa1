#include "program/findings/Finding.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

namespace kx {

const char* WordOf(TFindingSeverity severity) {
  switch (severity) {
  case TFindingSeverity::Note:
    return "note";
  case TFindingSeverity::Warning:
    return "warning";
  default:
    return "error";
  }
}

TFindingSeverity ReadFindingSeverity(std::string_view word) {
  for (const auto severity : {TFindingSeverity::Note, TFindingSeverity::Warning})
    if (word == WordOf(severity)) return severity;
  return TFindingSeverity::Error;
}

std::u16string OneLine(std::u16string_view text) {
  std::u16string line;
  for (const auto part : text::SplitLines(text)) {
    const std::u16string_view trimmed = text::Trim(part);
    if (!line.empty() && !trimmed.empty()) line += u' ';
    line += trimmed;
  }
  return line;
}

std::u16string TextOf(const TFinding& finding) {
  const TFindingPlace& place = finding.Place;
  std::u16string text = place.File;
  if (place.Line > 0) {
    text += u"(" + text::FromInteger(place.Line);
    if (place.Column > 0) text += u"," + text::FromInteger(place.Column);
    text += u")";
  }
  if (!text.empty()) text += u": ";
  text += text::FromAscii(WordOf(finding.Severity));
  if (!finding.Code.empty()) text += u" " + finding.Code;
  return text + u": " + finding.Message;
}

} // namespace kx
