#include "package/assemblyinfo/AssemblyInfoConditions.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <utility>

namespace kx {

using enum TAssemblyInfoLanguage;

namespace {

bool IsWordCharacter(char16_t c) {
  return c == u'_' || text::IsDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c >= 0x80;
}

std::u16string_view TakeWord(std::u16string_view& rest) {
  rest = text::TrimLeft(rest);
  const auto end = std::ranges::find_if_not(rest, IsWordCharacter);
  const std::u16string_view word = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(word.size());
  return word;
}

TTruth Not(TTruth truth) {
  return static_cast<TTruth>(2 - static_cast<int>(truth));
}

} // namespace

// Reads one condition. Anything beyond the plain logic of symbols (numbers compared, macros called) makes the
// whole unknown.
class TConditionReader {
public:
  TConditionReader(const TSourceConditions& conditions, std::u16string_view text)
      : conditions_(conditions), rest_(text) {}

  TTruth Run() {
    const TTruth truth = Or(0);
    return strange_ || !text::Trim(rest_).empty() ? TTruth::Unknown : truth;
  }

private:
  static constexpr int MaximumDepth = 64;

  bool Accept(std::u16string_view mark) {
    rest_ = text::TrimLeft(rest_);
    if (!rest_.starts_with(mark)) return false;
    rest_.remove_prefix(mark.size());
    return true;
  }
  bool AcceptBasic(std::initializer_list<std::u16string_view> words) {
    if (conditions_.language_ != VisualBasic) return false;
    std::u16string_view rest = rest_;
    const std::u16string_view word = TakeWord(rest);
    if (std::ranges::none_of(words, [word](auto w) { return text::EqualsIgnoreCase(w, word); })) return false;
    rest_ = rest;
    return true;
  }

  TTruth Or(int depth) {
    TTruth truth = And(depth);
    while (Accept(u"||") || AcceptBasic({u"Or", u"OrElse"}))
      truth = std::max(truth, And(depth));
    return truth;
  }
  TTruth And(int depth) {
    TTruth truth = Equal(depth);
    while (Accept(u"&&") || AcceptBasic({u"And", u"AndAlso"}))
      truth = std::min(truth, Equal(depth));
    return truth;
  }
  TTruth Equal(int depth) {
    TTruth truth = Single(depth);
    for (;;) {
      const bool same = Accept(u"==");
      if (!same && !Accept(u"!=")) return truth;
      // The other languages compare numbers here.
      strange_ = strange_ || conditions_.language_ == Cpp || conditions_.language_ == VisualBasic;
      const TTruth other = Single(depth);
      if (truth == TTruth::Unknown || other == TTruth::Unknown)
        truth = TTruth::Unknown;
      else
        truth = (truth == other) == same ? TTruth::True : TTruth::False;
    }
  }
  TTruth Single(int depth) {
    if (depth > MaximumDepth) strange_ = true;
    if (strange_) return TTruth::Unknown;
    rest_ = text::TrimLeft(rest_);
    if (AcceptBasic({u"Not"})) return Not(Single(depth + 1));
    if (!rest_.starts_with(u"!=") && Accept(u"!")) return Not(Single(depth + 1));
    if (Accept(u"(")) {
      const TTruth truth = Or(depth + 1);
      strange_ = strange_ || !Accept(u")");
      return truth;
    }
    return Symbol();
  }
  TTruth Symbol() {
    const std::u16string_view word = TakeWord(rest_);
    if (word.empty()) strange_ = true;
    if (conditions_.language_ == Cpp && word == u"defined") {
      const bool parenthesis = Accept(u"(");
      const TTruth truth = conditions_.Defined(TakeWord(rest_));
      strange_ = strange_ || (parenthesis && !Accept(u")"));
      return truth;
    }
    if (const auto number = text::ToInteger(word)) return *number != 0 ? TTruth::True : TTruth::False;
    const std::u16string key = conditions_.Key(word);
    if (key == u"true") return TTruth::True;
    if (key == u"false") return TTruth::False;
    const auto found = conditions_.values_.find(key);
    return found != conditions_.values_.end() ? found->second : TTruth::Unknown;
  }

  const TSourceConditions& conditions_;
  std::u16string_view rest_;
  bool strange_ = false;
};

bool TSourceConditions::Take(std::u16string_view directive) {
  const std::u16string guard = std::exchange(guard_, {});
  const std::u16string word = Key(TakeWord(directive));
  const bool basic = language_ == VisualBasic;
  if (word == u"if") {
    if (basic && text::EndsWithIgnoreCase(text::Trim(directive), u"then"))
      directive = text::Trim(directive).substr(0, text::Trim(directive).size() - 4);
    OpenBlock(Evaluate(directive));
  } else if (language_ == Cpp && word == u"ifdef") {
    OpenBlock(Defined(TakeWord(directive)));
  } else if (language_ == Cpp && word == u"ifndef") {
    const std::u16string symbol(TakeWord(directive));
    OpenBlock(Not(Defined(symbol)));
    if (blocks_.size() == 1) guard_ = symbol;
  } else if (word == u"elif" || word == u"elseif") {
    if (basic && text::EndsWithIgnoreCase(text::Trim(directive), u"then"))
      directive = text::Trim(directive).substr(0, text::Trim(directive).size() - 4);
    NextBranch(Evaluate(directive));
  } else if (word == u"else") {
    NextBranch(TTruth::True);
  } else if (word == u"endif" || (word == u"end" && Key(TakeWord(directive)) == u"if")) {
    if (!blocks_.empty()) blocks_.pop_back();
  } else {
    if (word == u"define" || word == u"undef" || word == u"const") Define(directive, word != u"undef");
    // A header that guards itself against being read twice is read once.
    if (word == u"define" && !guard.empty() && TakeWord(directive) == guard) {
      blocks_.back().Now = TTruth::True;
      return true;
    }
    return false;
  }
  return true;
}

void TSourceConditions::OpenBlock(TTruth condition) {
  const TTruth outer = Now();
  blocks_.push_back({.Outer = outer, .Taken = condition, .Now = std::min(outer, condition)});
}

void TSourceConditions::NextBranch(TTruth condition) {
  if (blocks_.empty()) return;
  TBlock& block = blocks_.back();
  block.Now = std::min({block.Outer, condition, Not(block.Taken)});
  block.Taken = std::max(block.Taken, condition);
}

void TSourceConditions::Define(std::u16string_view rest, bool defined) {
  const TTruth now = Now();
  if (now == TTruth::False) return;
  const std::u16string key = Key(TakeWord(rest));
  const auto known = [now](TTruth truth) { return now == TTruth::True ? truth : TTruth::Unknown; };
  defined_[key] = known(defined ? TTruth::True : TTruth::False);
  TTruth value = defined ? TTruth::True : TTruth::False;
  if (language_ == VisualBasic) {
    rest = text::Trim(rest);
    value = rest.starts_with(u'=') ? Evaluate(rest.substr(1)) : TTruth::Unknown;
  } else if (language_ == Cpp && defined) {
    const auto number = text::ToInteger(text::Trim(rest));
    value = !number ? TTruth::Unknown : *number != 0 ? TTruth::True : TTruth::False;
  }
  values_[key] = known(value);
}

std::u16string TSourceConditions::Key(std::u16string_view symbol) const {
  return language_ == VisualBasic ? text::ToLower(symbol) : std::u16string(symbol);
}

TTruth TSourceConditions::Defined(std::u16string_view symbol) const {
  const auto found = defined_.find(Key(symbol));
  return found != defined_.end() ? found->second : TTruth::Unknown;
}

TTruth TSourceConditions::Evaluate(std::u16string_view expression) const {
  return TConditionReader(*this, expression).Run();
}

} // namespace kx
