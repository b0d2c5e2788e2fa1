#include "foundation/text/CommandLine.h"

namespace kx::text {

namespace {

bool Separates(char16_t c) {
  return c == u' ' || c == u'\t';
}

class Splitter {
public:
  explicit Splitter(std::u16string_view text) : text_(text) {}

  std::vector<std::u16string> Run() {
    std::vector<std::u16string> arguments;
    for (SkipBlanks(); at_ < text_.size(); SkipBlanks())
      arguments.push_back(ReadArgument());
    return arguments;
  }

private:
  void SkipBlanks() {
    while (at_ < text_.size() && Separates(text_[at_]))
      ++at_;
  }

  std::u16string ReadArgument() {
    std::u16string argument;
    bool quoted = false;
    while (at_ < text_.size() && (quoted || !Separates(text_[at_]))) {
      if (text_[at_] == u'\\') {
        ReadBackslashes(argument);
      } else if (text_[at_] != u'"') {
        argument.push_back(text_[at_++]);
      } else if (quoted && text_.substr(at_).starts_with(u"\"\"")) {
        argument.push_back(u'"');
        at_ += 2;
      } else {
        quoted = !quoted;
        ++at_;
      }
    }
    return argument;
  }

  void ReadBackslashes(std::u16string& argument) {
    std::size_t count = 0;
    for (; at_ < text_.size() && text_[at_] == u'\\'; ++at_)
      ++count;
    if (at_ == text_.size() || text_[at_] != u'"') {
      argument.append(count, u'\\');
      return;
    }
    argument.append(count / 2, u'\\');
    if (count % 2 == 0) return;
    argument.push_back(u'"');
    ++at_;
  }

  std::u16string_view text_;
  std::size_t at_ = 0;
};

} // namespace

std::vector<std::u16string> SplitCommandLine(std::u16string_view commandLine) {
  return Splitter(commandLine).Run();
}

std::u16string QuoteArgument(std::u16string_view argument) {
  std::u16string result = u"\"";
  std::size_t backslashes = 0;
  for (const char16_t c : argument) {
    if (c == u'"') result.append(backslashes + 1, u'\\');
    backslashes = c == u'\\' ? backslashes + 1 : 0;
    result.push_back(c);
  }
  return result.append(backslashes, u'\\').append(1, u'"');
}

std::u16string QuoteArgumentIfNeeded(std::u16string_view argument) {
  const bool needed = argument.empty() || argument.find_first_of(u" \t\r\n\v\"") != std::u16string_view::npos;
  return needed ? QuoteArgument(argument) : std::u16string(argument);
}

} // namespace kx::text
