#include "foundation/formats/DiagramText.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

namespace kx {

std::string DotText(std::u16string_view name) {
  return text::ToUtf8(text::ReplaceAll(text::ReplaceAll(name, u"\\", u"\\\\"), u"\"", u"\\\""));
}

// What is shown knows entities, too.
std::string DotLabel(std::u16string_view text) {
  return DotText(text::ReplaceAll(text, u"&", u"&amp;"));
}

// Letters, digits and blanks stand for themselves, whatever else an editor of diagrams may read into them.
std::string MermaidText(std::u16string_view text) {
  std::string out;
  for (const char c : text::ToUtf8(text)) {
    const bool isPlain = c < 0 || text::IsDigit(static_cast<char16_t>(c)) || (c >= 'a' && c <= 'z') ||
                         (c >= 'A' && c <= 'Z') || (c == ' ' && !out.empty() && out.back() != ' ');
    out += isPlain ? std::string(1, c) : "#" + std::to_string(static_cast<unsigned char>(c)) + ";";
  }
  return out.empty() ? "#160;" : out;
}

} // namespace kx
