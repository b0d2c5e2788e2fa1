// The door in front of what a continuous-integration system reads.
#pragma once

#include <string>
#include <string_view>

namespace kx {

// Lets text through and breaks what any of the systems that kxhost knows would obey: the same for the eye,
// with a thin blank (U+200A, which no comparison of theirs skips) inside the command's first characters.
//
// - GitHub: "::" where only blanks stand before it in its line; blanks are those of Unicode, and what has no
//   width counts as one. "##[" anywhere.
// - Azure Pipelines: "##vso[" and "##[" anywhere. TeamCity: "##teamcity[" anywhere.
// - GitLab: its commands need control characters. Of these only tabs and line ends pass, and the colours of
//   kxhost's own ("ESC [ ... m"); the others become their pictures (U+2400...). A CR becomes a LF.
//
// A line begins behind whatever one of the systems, or a program between, takes for a line end. The state is
// that of the stream, so a command cannot be put together from several writes. Linear in the text.
class TCiGuard {
public:
  std::string Pass(std::string_view utf8);
  bool IsAtLineStart() const { return isEmptyLine_; } // nothing stands in the line yet

private:
  enum class EColons { Possible, One, Over }; // at the start of a line

  void Take(char32_t character, std::string_view rest, std::string& out);
  void StartLine();

  EColons colons_ = EColons::Possible;
  int hashes_ = 0;          // directly before
  bool isEmptyLine_ = true; // as the stream's reader sees it
};

// The same for a text that becomes part of a command.
std::u16string HarmlessForCi(std::u16string_view text);

} // namespace kx
