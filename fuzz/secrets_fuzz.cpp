// Secrets in what a run sends: the first part are the secrets, a line each, then follows the text of a tool.
// Neither a secret nor a spelling of it that the tool adds is in what the sinks see.
#include "foundation/formats/Xml.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "program/runner/Base64.h"
#include "program/runner/EventLog.h"
#include "program/runner/SecretMask.h"

#include <algorithm>
#include <memory>

namespace kx::fuzz {
namespace {

class TSink : public IRunEventSink {
public:
  std::u16string Seen;
  void On(const TRunEvent& event) override {
    if (const auto* message = std::get_if<TMessageSent>(&event.What)) Seen += message->Text + u"\n";
    if (const auto* group = std::get_if<TGroupStarted>(&event.What)) Seen += group->Title + u"\n";
    if (const auto* group = std::get_if<TGroupEnded>(&event.What)) Seen += group->Title + u"\n";
  }
};

std::u16string ForAddresses(std::u16string_view text) {
  constexpr std::u16string_view digits = u"0123456789ABCDEF";
  std::u16string escaped;
  for (const char c : text::ToUtf8(text)) {
    const auto byte = static_cast<unsigned char>(c);
    escaped.append({u'%', digits[byte / 16], digits[byte % 16]});
  }
  return escaped;
}

std::vector<std::u16string> Spellings(std::u16string_view secret) {
  return {std::u16string(secret), XmlEscape(secret), text::QuoteArgument(secret),
          ToBase64(text::ToUtf8(secret)), ForAddresses(secret)};
}

std::vector<std::u16string> SecretsIn(std::u16string_view lines) {
  std::vector<std::u16string> secrets;
  for (const auto line : text::SplitLines(lines)) {
    // Asterisks stand in the place of a secret, and might make it up again. XML has no spelling of what is no
    // text.
    const bool isText =
        std::ranges::none_of(line, [](char16_t c) { return c < u' ' || c == u'*' || c >= u'\uFFFD'; });
    if (isText && line.size() >= TSecretMask::Shortest) secrets.emplace_back(line);
  }
  return secrets;
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const auto secrets = SecretsIn(text::FromUtf8(input.Part()));
  TSink sink;
  TEventLog log(std::make_shared<TSecretMask>());
  log.AddSink(sink);
  std::u16string text = text::FromUtf8(input.Rest());
  for (const auto& secret : secrets) {
    log.Secrets().Keep(secret);
    for (const auto& spelling : Spellings(secret))
      text += u" " + spelling;
  }
  log.Send(TMessageSent{text});
  log.StartGroup(text, TStatusTag::stNormal);
  log.EndGroup(std::nullopt);
  for (const auto& secret : secrets)
    for (const auto& spelling : Spellings(secret))
      Require(sink.Seen.find(spelling) == sink.Seen.npos, "no spelling of a secret is shown");
}

const TRegistration registration({"secrets", Check});

} // namespace
} // namespace kx::fuzz
