// Expressions over variables that refer to each other: they end, they stay within their limit, and what holds
// no reference stays as it is. The first part are lines NAME=VALUE, then follows the text.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "fuzz/FuzzTarget.h"
#include "program/runner/References.h"
#include "tests/runner/TestActions.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

constexpr std::size_t LongestText = std::size_t{16} << 20;

void CheckGrammar(std::u16string_view text) {
  Require(KeepsReferences(text, text), "a text holds the references that it holds");
  std::size_t length = 0;
  for (const auto& part : SplitReferences(text)) {
    length += part.Reference ? part.Reference->Written.size() : part.Plain.size();
    if (!part.Reference) continue;
    const auto again = ReadReference(part.Reference->Written);
    Require(again && again->Written == part.Reference->Written && again->Name == part.Reference->Name,
            "a reference reads the same alone");
  }
  Require(length <= text.size(), "the parts are parts of the text");
}

void Check(std::string_view bytes) {
  static tests::TEmbeddedHost host;
  static tests::TStepAction& step = host.AddStep(u"", u"Build");
  TInput input(bytes);
  host.Project().Variables = {};
  TInput variables(input.Part());
  while (!variables.IsEmpty()) {
    try {
      host.Project().Variables.Set(TProjectVariable::Parse(text::FromUtf8(variables.Line())));
    } catch (const EKxException&) {
    }
  }
  const std::u16string text = text::FromUtf8(input.Rest());
  CheckGrammar(text);
  try {
    const std::u16string expanded = host.Runner.Expand(step, text);
    Require(expanded.size() <= LongestText, "the expanded text is within its limit");
    if (text.find_first_of(u"%$") == text.npos) Require(expanded == text, "a text without references stays");
    Require(host.Runner.Expand(step, text) == expanded, "expanding again gives the same");
  } catch (const EExpressionError&) {
  }
}

const TRegistration registration({"expressions", Check});

} // namespace
} // namespace kx::fuzz
