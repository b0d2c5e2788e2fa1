// Any bytes as text, and back: nothing fails, nothing is lost where the encoding can hold it.
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "fuzz/FuzzTarget.h"
#include "program/runner/Base64.h"

namespace kx::fuzz {
namespace {

void CheckUtf8(std::string_view bytes) {
  const bool isValid = text::IsValidUtf8(bytes);
  const std::string again = text::ToUtf8(text::FromUtf8(bytes));
  Require(text::IsValidUtf8(again), "what is written is UTF-8");
  Require((again == bytes) == isValid, "UTF-8 comes back as it was");
  const std::size_t prefix = text::ValidUtf8Prefix(bytes);
  Require((prefix == bytes.size()) == isValid, "all of a text is well-formed, or a part");
  Require(text::IsValidUtf8(bytes.substr(0, prefix)), "the well-formed part is well-formed");
}

void CheckUtf16(std::string_view bytes) {
  const std::u16string text = text::FromUtf16LE(bytes);
  Require(text.size() == (bytes.size() + 1) / 2, "two bytes are a unit");
  if (text.find(u'\uFFFD') == text.npos) // which stands for what is no text
    Require(text::ToUtf16LE(text) == bytes, "UTF-16 comes back as it was");
  std::string swapped(bytes);
  for (std::size_t i = 0; i + 1 < swapped.size(); i += 2)
    std::swap(swapped[i], swapped[i + 1]);
  Require(text::FromUtf16BE(swapped) == text, "both orders of bytes mean the same");
}

void CheckPages(std::string_view bytes) {
  for (const auto page : {text::SingleBytePage::Windows1252, text::SingleBytePage::Dos850})
    Require(text::ToSingleByte(text::FromSingleByte(bytes, page), page) == bytes,
            "a page comes back as it was");
  const auto ansi = platform::ToAnsi(text::FromUtf8(bytes));
  const auto lossy = platform::ToAnsiLossy(text::FromUtf8(bytes));
  Require(ansi.has_value() == (lossy.Lost == 0), "a loss is counted");
  if (ansi) Require(*ansi == lossy.Bytes, "without a loss both are the same");
}

void Check(std::string_view bytes) {
  CheckUtf8(bytes);
  CheckUtf16(bytes);
  CheckPages(bytes);
  Require(FromBase64(ToBase64(bytes)) == bytes, "Base64 comes back as it was");
  if (const auto decoded = FromBase64(text::FromUtf8(bytes)))
    Require(ToBase64(*decoded) == text::FromUtf8(bytes), "a text is Base64 in one way only");
  static_cast<void>(platform::DecodeTextFile(bytes));
  const std::u16string text = platform::DecodeUtf8OrAnsi(bytes);
  if (text::DetectByteOrderMark(bytes) == text::ByteOrderMark::None && text::IsValidUtf8(bytes))
    Require(text == text::FromUtf8(bytes), "UTF-8 is seen");
  TInput lines(bytes);
  text::ToolOutputDecoder decoder;
  while (!lines.IsEmpty()) {
    const std::string_view line = lines.Line();
    const std::u16string decoded = decoder.Decode(line);
    if (text::IsValidUtf8(line)) Require(decoded == text::FromUtf8(line), "a line in UTF-8 is read as that");
  }
}

const TRegistration registration({"encodings", Check});

} // namespace
} // namespace kx::fuzz
