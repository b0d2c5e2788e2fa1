#include "program/runner/References.h"

#include "foundation/text/Text.h"
#include "program/runner/Project.h"

#include <algorithm>

namespace kx {

namespace {

constexpr auto npos = std::u16string_view::npos;

std::optional<TReference> Variable(std::u16string_view text, std::size_t nameAt, char16_t closing) {
  // As far as a name reaches: a text may be all signs that open something.
  std::size_t end = nameAt;
  while (end < text.size() && IsVariableName(text.substr(end, 1)))
    ++end;
  if (end == nameAt || end == text.size() || text[end] != closing) return std::nullopt;
  TReference reference;
  reference.Written = text.substr(0, end + 1);
  reference.Name = text.substr(nameAt, end - nameAt);
  return reference;
}

// The text in quotes at `at`; moves behind it. A doubled quote inside stands for one.
std::optional<std::u16string> ReadQuoted(std::u16string_view text, std::size_t& at) {
  std::u16string value;
  while (++at < text.size()) {
    if (text[at] == u'"') {
      ++at;
      if (at >= text.size() || text[at] != u'"') return value;
    }
    value += text[at];
  }
  return std::nullopt;
}

// "$(Name("x"))" or "$(Action.Name("x"))". The name of an action is the user's own, so it may hold blanks.
std::optional<TReference> Call(std::u16string_view text) {
  const std::size_t open = text.find_first_of(u"(\"%$\r\n", 2);
  if (open == npos || text[open] != u'(') return std::nullopt;
  const std::u16string_view callee = text.substr(2, open - 2);
  const std::size_t dot = callee.rfind(u'.');
  TReference reference;
  reference.IsCall = true;
  reference.Name = dot == npos ? callee : callee.substr(dot + 1);
  reference.Action = dot == npos ? std::u16string_view() : callee.substr(0, dot);
  if (!IsVariableName(reference.Name)) return std::nullopt;
  std::size_t at = open + 1;
  if (text.substr(at).starts_with(u'"')) {
    auto argument = ReadQuoted(text, at);
    if (!argument) return std::nullopt;
    reference.Argument = std::move(*argument);
  }
  if (!text.substr(at).starts_with(u"))")) return std::nullopt;
  reference.Written = text.substr(0, at + 2);
  return reference;
}

// The argument of a call with its quotes undone, and where each of its characters stands.
struct TArgument {
  std::u16string Text;
  std::vector<std::size_t> At;
};

TArgument ArgumentOf(std::u16string_view call) {
  TArgument argument;
  const std::size_t open = call.find(u'"');
  if (open == npos) return argument;
  for (std::size_t at = open + 1; at < call.size(); ++at) {
    if (call[at] == u'"' && call.substr(at + 1, 1) != u"\"") break;
    argument.Text += call[at];
    argument.At.push_back(at);
    if (call[at] == u'"') ++at;
  }
  return argument;
}

std::u16string_view NamedBy(const TReference& reference, TNameKind kind) {
  if (kind == TNameKind::Action) return reference.Action;
  return reference.IsCall ? std::u16string_view() : reference.Name;
}

} // namespace

std::vector<std::size_t> PlacesOfName(std::u16string_view text, TNameKind kind, std::u16string_view name) {
  std::vector<std::size_t> places;
  for (std::size_t at = text.find_first_of(u"%$"); at != npos; at = text.find_first_of(u"%$", at)) {
    const auto reference = ReadReference(text.substr(at));
    if (text.substr(at + 1, 1) == text.substr(at, 1) || !reference) {
      at += text.substr(at + 1, 1) == text.substr(at, 1) ? 2 : 1; // it stands for itself
      continue;
    }
    const std::u16string_view named = NamedBy(*reference, kind);
    if (!named.empty() && text::EqualsIgnoreCase(named, name))
      places.push_back(static_cast<std::size_t>(named.data() - text.data()));
    if (reference->IsCall) {
      const auto argument = ArgumentOf(reference->Written);
      for (const std::size_t inside : PlacesOfName(argument.Text, kind, name))
        places.push_back(at + argument.At[inside]);
    }
    at += reference->Written.size();
  }
  return places;
}

std::optional<TReference> ReadReference(std::u16string_view text) {
  if (text.starts_with(u'%')) return Variable(text, 1, u'%');
  if (!text.starts_with(u"$(")) return std::nullopt;
  auto variable = Variable(text, 2, u')');
  return variable ? variable : Call(text);
}

std::vector<TTextPart> SplitReferences(std::u16string_view text) {
  std::vector<TTextPart> parts;
  std::u16string plain;
  while (!text.empty()) {
    const std::size_t mark = text.find_first_of(u"%$");
    plain += text.substr(0, mark);
    if (mark == npos) break;
    text.remove_prefix(mark);
    if (text.size() > 1 && text[1] == text[0]) {
      plain += text[0];
      text.remove_prefix(2);
    } else if (auto reference = ReadReference(text)) {
      if (!plain.empty()) parts.push_back({std::exchange(plain, {}), std::nullopt});
      text.remove_prefix(reference->Written.size());
      parts.push_back({{}, std::move(reference)});
    } else {
      plain += text[0];
      text.remove_prefix(1);
    }
  }
  if (!plain.empty()) parts.push_back({std::move(plain), std::nullopt});
  return parts;
}

bool KeepsReferences(std::u16string_view was, std::u16string_view is) {
  const auto parts = SplitReferences(was);
  return std::ranges::all_of(parts, [is](const TTextPart& part) {
    return !part.Reference || is.find(part.Reference->Written) != npos;
  });
}

} // namespace kx
