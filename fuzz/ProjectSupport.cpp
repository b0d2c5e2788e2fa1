#include "fuzz/ProjectSupport.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/ProjectReader.h"
#include "tests/runner/TestActions.h"

namespace kx::fuzz {

TQuietHost::TQuietHost() {
  Services.RegisterAction(u"STEP", u"Tests", tests::TStepAction::Class());
  Services.RegisterAction(u"LOOP", u"Tests", tests::TLoopAction::Class());
}

TQuietHost& QuietHost() {
  static TQuietHost host;
  return host;
}

bool IsProject(std::string_view bytes) {
  TProject project(QuietHost().Services, QuietHost().Host);
  try {
    ReadProject(ParseProjectXml(bytes, u"a.kxproj"), u"a.kxproj", project);
    return true;
  } catch (const EKxParseError&) {
    return false;
  }
}

std::u16string StorableText(std::string_view utf8) {
  std::u16string text;
  for (const char16_t c : text::FromUtf8(utf8)) {
    const bool isForbidden = (c < u' ' && c != u'\t' && c != u'\n') || c == u'\uFFFE' || c == u'\uFFFF';
    if (!isForbidden) text += c;
  }
  return WithHostLineEnds(text);
}

} // namespace kx::fuzz
