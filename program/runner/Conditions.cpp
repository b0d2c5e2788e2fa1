#include "program/runner/Conditions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <compare>
#include <optional>
#include <utility>

namespace kx {

namespace {

constexpr int MostNested = 100;

enum class EKind { Value, Not, And, Or, Compare };

struct TOperator {
  std::u16string_view Text;
  bool (*Holds)(std::partial_ordering order);
};
// The longer ones first: "<=" begins as "<" does.
constexpr auto Operators = std::to_array<TOperator>({
    {u"==", [](std::partial_ordering order) { return std::is_eq(order); }},
    {u"!=", [](std::partial_ordering order) { return std::is_neq(order); }},
    {u"<=", [](std::partial_ordering order) { return std::is_lteq(order); }},
    {u">=", [](std::partial_ordering order) { return std::is_gteq(order); }},
    {u"<", [](std::partial_ordering order) { return std::is_lt(order); }},
    {u">", [](std::partial_ordering order) { return std::is_gt(order); }},
});

bool IsOperatorSign(char16_t c) {
  return c == u'=' || c == u'!' || c == u'<' || c == u'>';
}

std::optional<double> NumberIn(std::u16string_view text) {
  const std::string digits = text::ToUtf8(text::Trim(text));
  if (digits.empty() || digits.find_first_not_of("0123456789.-") != std::string::npos) return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return number;
}

// Build numbers and identifiers of digits alone are longer than a double is exact.
std::optional<std::partial_ordering> CompareWhole(std::u16string_view left, std::u16string_view right) {
  const auto digits = [](std::u16string_view text) {
    text = text::Trim(text);
    return !text.empty() && std::ranges::all_of(text, text::IsDigit) ? text : std::u16string_view();
  };
  std::u16string_view one = digits(left), other = digits(right);
  if (one.empty() || other.empty()) return std::nullopt;
  one.remove_prefix(std::min(one.find_first_not_of(u'0'), one.size()));
  other.remove_prefix(std::min(other.find_first_not_of(u'0'), other.size()));
  return one.size() != other.size() ? one.size() <=> other.size() : one.compare(other) <=> 0;
}

std::partial_ordering Compare(const std::u16string& left, const std::u16string& right) {
  if (const auto whole = CompareWhole(left, right)) return *whole;
  const auto one = NumberIn(left), other = NumberIn(right);
  if (one && other) return *one <=> *other;
  const std::u16string lower = text::ToLower(left), otherLower = text::ToLower(right);
  return lower.compare(otherLower) <=> 0;
}

bool TruthOf(const std::u16string& value) {
  const std::u16string_view word = text::Trim(value);
  const auto isOne = [word](auto... words) { return (text::EqualsIgnoreCase(word, words) || ...); };
  if (word.empty() || isOne(u"false", u"no")) return false;
  if (isOne(u"true", u"yes")) return true;
  if (const auto number = NumberIn(word)) return *number != 0;
  throw EExpressionError(Quoted(value) + u" is neither true nor false. Compare it: %Name% == " +
                         Quoted(value) + u".");
}

// One sign, word or text of a condition. Values keep what they are written with.
struct TToken {
  std::u16string Written; // for messages; of a word without references what it is
  std::vector<TTextPart> Value = {};
  bool IsWord = false; // bare and without references: may be "and"
  bool IsValue = false;
};

bool IsWord(const TToken& token, std::u16string_view word) {
  return token.IsWord && text::EqualsIgnoreCase(token.Written, word);
}

class TTokens {
public:
  explicit TTokens(std::u16string_view text) {
    for (auto& part : SplitReferences(text)) {
      if (part.Reference)
        TakeReference(std::move(part));
      else
        for (const char16_t c : part.Plain)
          TakeCharacter(c);
    }
    if (quote_ != u'\0')
      throw EExpressionError(u"The quote " + std::u16string(1, quote_) + u" is not closed.");
    EndToken();
  }
  std::vector<TToken> Take() { return std::move(tokens_); }

private:
  TToken& Open() {
    if (!open_) open_ = TToken{.Written = {}, .IsWord = true, .IsValue = true};
    return *open_;
  }
  void EndToken() {
    if (open_) tokens_.push_back(*std::exchange(open_, std::nullopt));
    wasQuote_ = false;
  }

  void TakeReference(TTextPart part) {
    TToken& token = Open();
    token.IsWord = false;
    token.Written += part.Reference->Written;
    token.Value.push_back(std::move(part));
    wasQuote_ = false;
  }

  void Append(char16_t c) {
    TToken& token = Open();
    wasQuote_ = false;
    token.Written += c;
    if (token.Value.empty() || token.Value.back().Reference) token.Value.push_back({});
    token.Value.back().Plain += c;
  }

  void TakeCharacter(char16_t c) {
    if (quote_ != u'\0')
      TakeQuoted(c);
    else if (c == u'"' || c == u'\'')
      OpenQuote(c);
    else if (text::IsBlank(c) || c == u'\n' || c == u'\r')
      EndToken();
    else if (c == u'(' || c == u')' || IsOperatorSign(c))
      TakeSign(c);
    else
      Append(c);
  }

  void TakeQuoted(char16_t c) {
    if (c != quote_) return Append(c);
    wasQuote_ = true;
    quote_ = u'\0';
  }

  // A quote right behind one that has closed stands for itself.
  void OpenQuote(char16_t c) {
    const bool isDoubled = wasQuote_ && c == last_;
    quote_ = last_ = c;
    wasQuote_ = false;
    Open().IsWord = false;
    if (isDoubled) Append(c);
  }

  void TakeSign(char16_t c) {
    EndToken();
    const bool goesOn = c == u'=' && !tokens_.empty() && !tokens_.back().IsValue &&
                        tokens_.back().Written.size() == 1 && IsOperatorSign(tokens_.back().Written.front());
    if (goesOn)
      tokens_.back().Written += c;
    else
      tokens_.push_back({.Written = std::u16string(1, c)});
  }

  std::vector<TToken> tokens_;
  std::optional<TToken> open_;
  char16_t quote_ = u'\0'; // inside which we are
  char16_t last_ = u'\0';
  bool wasQuote_ = false; // one has just closed
};

} // namespace

struct TCondition::TNode {
  EKind Kind = EKind::Value;
  std::vector<TTextPart> Value = {};
  const TOperator* Operator = nullptr;
  std::unique_ptr<TNode> Left = {};
  std::unique_ptr<TNode> Right = {};
};

class TCondition::TParser {
public:
  explicit TParser(std::u16string_view text) : tokens_(TTokens(text).Take()) {}

  std::unique_ptr<TNode> Parse() {
    auto node = Or();
    if (at_ < tokens_.size()) Refuse(u"an operator, \"and\" or \"or\"");
    return node;
  }

private:
  using TResult = std::unique_ptr<TNode>;

  [[noreturn]] void Refuse(std::u16string_view expected) const {
    std::u16string before;
    for (std::size_t i = at_ > 3 ? at_ - 3 : 0; i < std::min(at_, tokens_.size()); ++i)
      before += (before.empty() ? u"" : u" ") + tokens_[i].Written;
    throw EExpressionError(
        (before.empty() ? std::u16string(u"At the beginning") : u"Behind " + Quoted(before)) + u" " +
        std::u16string(expected) + u" is expected" +
        (at_ < tokens_.size() ? u", not " + Quoted(tokens_[at_].Written) : u"") + u".");
  }

  bool TakeWord(std::u16string_view word) {
    const bool isThere = at_ < tokens_.size() && IsWord(tokens_[at_], word);
    at_ += isThere ? 1 : 0;
    return isThere;
  }
  bool TakeSign(std::u16string_view sign) {
    const bool isThere = at_ < tokens_.size() && !tokens_[at_].IsValue && tokens_[at_].Written == sign;
    at_ += isThere ? 1 : 0;
    return isThere;
  }

  static TResult Made(EKind kind, TResult left, TResult right = nullptr) {
    auto node = std::make_unique<TNode>();
    node->Kind = kind;
    node->Left = std::move(left);
    node->Right = std::move(right);
    return node;
  }

  TResult Or() {
    auto node = And();
    while (TakeWord(u"or"))
      node = Made(EKind::Or, std::move(node), And());
    return node;
  }

  TResult And() {
    auto node = Not();
    while (TakeWord(u"and"))
      node = Made(EKind::And, std::move(node), Not());
    return node;
  }

  TResult Not() {
    if (++depth_ > MostNested) throw EExpressionError(u"The condition is nested too deeply.");
    auto node = TakeWord(u"not") ? Made(EKind::Not, Not()) : Comparison();
    --depth_;
    return node;
  }

  TResult Comparison() {
    if (TakeSign(u"(")) {
      auto node = Or();
      if (!TakeSign(u")")) Refuse(u"\")\"");
      return node;
    }
    auto node = Value();
    for (const TOperator& candidate : Operators) {
      if (!TakeSign(candidate.Text)) continue;
      node = Made(EKind::Compare, std::move(node), Value());
      node->Operator = &candidate;
      return node;
    }
    return node;
  }

  TResult Value() {
    if (at_ >= tokens_.size() || !tokens_[at_].IsValue || IsWord(tokens_[at_], u"and") ||
        IsWord(tokens_[at_], u"or"))
      Refuse(u"a value");
    auto node = std::make_unique<TNode>();
    node->Value = std::move(tokens_[at_++].Value);
    return node;
  }

  std::vector<TToken> tokens_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

TCondition::TCondition(std::u16string_view text) : text_(text), root_(TParser(text_).Parse()) {}
TCondition::~TCondition() = default;

std::u16string TCondition::ValueOf(const TNode& node, const TExpand& expand) {
  std::u16string value;
  for (const auto& part : node.Value)
    value += part.Reference ? expand(part.Reference->Written) : part.Plain;
  return value;
}

bool TCondition::Holds(const TNode& node, const TExpand& expand) {
  switch (node.Kind) {
  case EKind::Value:
    return TruthOf(ValueOf(node, expand));
  case EKind::Not:
    return !Holds(*node.Left, expand);
  case EKind::Compare:
    return node.Operator->Holds(Compare(ValueOf(*node.Left, expand), ValueOf(*node.Right, expand)));
  case EKind::And:
  case EKind::Or: {
    const bool left = Holds(*node.Left, expand), right = Holds(*node.Right, expand);
    return node.Kind == EKind::And ? left && right : left || right;
  }
  }
  return false;
}

bool TCondition::Holds(const TExpand& expand) const {
  return Holds(*root_, expand);
}

} // namespace kx
