#include "program/runner/ActionTerms.h"

#include "contract/PublishedProperties.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/Messages.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

using std::chrono::seconds;

constexpr std::int32_t MostRetries = 100;
// A year. Nothing that a clock counts in comes near its end with it.
constexpr seconds LongestLimit{366 * 24 * 3600};

struct TUnit {
  char16_t Letter;
  std::int32_t Seconds;
};
constexpr auto Units = std::to_array<TUnit>({{u'h', 3600}, {u'm', 60}, {u's', 1}});

std::optional<seconds> LimitOf(std::u16string_view text) {
  std::int32_t factor = 1;
  const auto unit =
      std::ranges::find_if(Units, [text](const TUnit& row) { return text.ends_with(row.Letter); });
  if (unit != Units.end()) {
    factor = unit->Seconds;
    text.remove_suffix(1);
  }
  const bool isNumber = !text.empty() && std::ranges::all_of(text, text::IsDigit);
  const auto count = isNumber ? text::ToInteger(text) : std::nullopt;
  if (!count || *count > LongestLimit.count() / factor) return std::nullopt;
  return seconds(*count) * factor;
}

seconds ReadLimit(std::u16string_view name, std::u16string_view text) {
  if (const auto limit = LimitOf(text::Trim(text))) return *limit;
  throw EKxException(std::u16string(name) + u" takes a time of up to a year, such as 90s, 30m or 2h, not " +
                     Quoted(text) + u".");
}

int ReadRetries(std::u16string_view text) {
  const auto count = text::ToInteger(text::Trim(text));
  if (!count || *count < 0 || *count > MostRetries)
    throw EKxException(u"Retries takes a number from 0 to " + text::FromInteger(MostRetries) + u", not " +
                       Quoted(text) + u".");
  return *count;
}

bool ReadParallel(std::u16string_view text) {
  TKxPublishedProperty attribute;
  attribute.Name = u"Parallel";
  attribute.Kind = TKxPropertyKind::Boolean;
  return std::get<bool>(PropertyFromText(attribute, text));
}

using TText = std::optional<std::u16string>;

TText StatedLimit(seconds limit) {
  return limit.count() == 0 ? std::nullopt : TText(LimitText(limit));
}

constexpr auto Attributes = std::to_array<TTermAttribute>({
    {u"Needs",
     u"The actions and groups, with commas between them, that must have succeeded before; empty: none. "
     u"Without it the action needs the one before it.",
     "xs:string", true, false,
     [](const TActionTerms& terms) { return terms.Needs ? TText(NeedsText(*terms.Needs)) : std::nullopt; },
     [](TActionTerms& terms, std::u16string_view text) { terms.Needs = ReadNeeds(text); }},
    {u"Condition",
     u"The action is passed over unless this holds, such as %Branch% == \"main\" and not %Quick%.",
     "xs:string", false, false,
     [](const TActionTerms& terms) {
       return terms.Condition.empty() ? std::nullopt : TText(terms.Condition);
     },
     [](TActionTerms& terms, std::u16string_view text) { terms.Condition = text; }},
    {u"Retries", u"How often a failed action is tried again.", "Retries", false, false,
     [](const TActionTerms& terms) {
       return terms.Retries == 0 ? std::nullopt : TText(text::FromInteger(terms.Retries));
     },
     [](TActionTerms& terms, std::u16string_view text) { terms.Retries = ReadRetries(text); }},
    {u"TimeLimit", u"An attempt that takes longer is ended and has failed: 90s, 30m, 2h.", "TimeSpan", false,
     false, [](const TActionTerms& terms) { return StatedLimit(terms.TimeLimit); },
     [](TActionTerms& terms, std::u16string_view text) { terms.TimeLimit = ReadLimit(u"TimeLimit", text); }},
    {u"IdleLimit", u"An attempt that says nothing for so long is ended and has failed: 90s, 30m, 2h.",
     "TimeSpan", false, false, [](const TActionTerms& terms) { return StatedLimit(terms.IdleLimit); },
     [](TActionTerms& terms, std::u16string_view text) { terms.IdleLimit = ReadLimit(u"IdleLimit", text); }},
    {u"Parallel",
     u"The passes of this loop may run at the same time, as far as they do not depend on each other.",
     "Boolean", true, true,
     [](const TActionTerms& terms) { return terms.IsParallel ? TText(u"true") : std::nullopt; },
     [](TActionTerms& terms, std::u16string_view text) { terms.IsParallel = ReadParallel(text); }},
});

} // namespace

TNeededNames ReadNeeds(std::u16string_view text) {
  TNeededNames needs;
  for (const auto name : text::Split(text, u','))
    if (!text::Trim(name).empty()) needs.emplace_back(text::Trim(name));
  return needs;
}

std::u16string NeedsText(const TNeededNames& needs) {
  std::u16string text;
  for (const auto& name : needs)
    text += (text.empty() ? u"" : u",") + name;
  return text;
}

std::u16string LimitText(seconds limit) {
  const auto fits = [limit](const TUnit& unit) { return limit.count() % unit.Seconds == 0; };
  const TUnit& unit = *std::ranges::find_if(Units, fits);
  return text::FromInteger(limit.count() / unit.Seconds) + unit.Letter;
}

std::span<const TTermAttribute> TermAttributes() {
  return Attributes;
}

const TTermAttribute* FindTermAttribute(std::u16string_view name) {
  const auto found = std::ranges::find(Attributes, name, &TTermAttribute::Name);
  return found == Attributes.end() ? nullptr : &*found;
}

} // namespace kx
