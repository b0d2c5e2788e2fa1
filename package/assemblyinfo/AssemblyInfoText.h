// The bytes of a source file as text, and back, so that every byte that is not part of an edit stays what it
// was, even where it is malformed in the file's encoding.
#pragma once

#include "foundation/text/Encoding.h"
#include "package/assemblyinfo/AssemblyInfoSource.h"

namespace kx {

// Replaces a range of the text; an empty range inserts.
struct TSourceEdit {
  TSourceRange Range;
  std::u16string Text;
};

// A byte-order mark says the encoding; without one it is UTF-8 where the bytes are, else the ANSI code page.
class TSourceText {
public:
  explicit TSourceText(std::string_view bytes); // which outlive the object

  const std::u16string& Text() const { return text_; } // without the byte-order mark
  // Neither binary nor in an encoding that is not known here.
  bool IsText() const;
  std::u16string_view EncodingName() const;
  bool IsAnsi() const { return encoding_ == TEncoding::Ansi; }

  // The file's new bytes. Nothing when the encoding cannot hold an edit's text. Edits are in the order of
  // their ranges, which do not overlap; those at one place are inserted in their order.
  std::optional<std::string> Apply(const std::vector<TSourceEdit>& edits) const;

private:
  enum class TEncoding : std::uint8_t { Utf8, Utf16LE, Utf16BE, Ansi };

  void DecodeUtf8(std::string_view bytes);
  std::size_t BytesOf(std::size_t begin, std::size_t end) const;
  std::optional<std::string> Encode(std::u16string_view text) const;

  std::string_view bytes_;
  std::size_t markLength_ = 0;
  TEncoding encoding_ = TEncoding::Utf8;
  std::u16string text_;
};

} // namespace kx
