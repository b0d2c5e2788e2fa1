#include "program/cli/ShellWords.h"

#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::cli {

namespace {

constexpr bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\n';
}

// bash ends words there, as COMP_WORDBREAKS has it.
constexpr bool IsBreak(char16_t c) {
  return c == u'=' || c == u':';
}

class TSplitter {
public:
  explicit TSplitter(TShell shell) : escape_(shell == TShell::PowerShell ? u'`' : u'\\') {
    typed_.Words.emplace_back();
  }

  TTypedLine Split(std::u16string_view line) {
    for (const char16_t c : line)
      Take(c);
    return std::move(typed_);
  }

private:
  void Take(char16_t c) {
    if (isEscaped_) {
      Add(c);
      isEscaped_ = false;
    } else if (c == escape_ && typed_.Quote != u'\'') {
      isEscaped_ = true;
    } else if (typed_.Quote != u'\0') {
      c == typed_.Quote ? void(typed_.Quote = u'\0') : Add(c);
    } else if (c == u'"' || c == u'\'') {
      typed_.Quote = c;
      typed_.Kept = typed_.Words.back().size();
    } else if (IsBlank(c)) {
      if (!typed_.Words.back().empty()) typed_.Words.emplace_back();
      typed_.Kept = 0;
    } else {
      Add(c);
      if (IsBreak(c)) typed_.Kept = typed_.Words.back().size();
    }
  }

  void Add(char16_t c) { typed_.Words.back().push_back(c); }

  char16_t escape_;
  bool isEscaped_ = false;
  TTypedLine typed_;
};

// With what follows a whole word; behind "=" its value is to come.
std::u16string ForBash(std::u16string_view word, const TTypedLine& typed) {
  const std::u16string_view rest = word.substr(std::min(typed.Kept, word.size()));
  const std::u16string_view end = word.ends_with(u'=') ? u"" : u" ";
  if (typed.Quote != u'\0')
    return std::u16string(rest) + (end.empty() ? u"" : std::u16string(1, typed.Quote)) + std::u16string(end);
  constexpr std::u16string_view special = u" \t\"'\\|&;()<>$`*?[]{}!#~";
  std::u16string out;
  for (const char16_t c : rest) {
    if (special.find(c) != special.npos) out += u'\\';
    out += c;
  }
  return out.append(end);
}

std::u16string ForPowerShell(std::u16string_view word) {
  constexpr std::u16string_view special = u" \t\"'|&;(){}<>$`@#,";
  if (word.find_first_of(special) == word.npos) return std::u16string(word);
  return u"'" + text::ReplaceAll(word, u"'", u"''") + u"'";
}

} // namespace

TTypedLine SplitTyped(std::u16string_view line, TShell shell) {
  return TSplitter(shell).Split(line);
}

std::u16string CompletedWord(std::u16string_view word, const TTypedLine& typed, TShell shell) {
  if (shell == TShell::Bash) return ForBash(word, typed);
  return shell == TShell::PowerShell ? ForPowerShell(word) : std::u16string(word); // the others quote it
}

} // namespace kx::cli
