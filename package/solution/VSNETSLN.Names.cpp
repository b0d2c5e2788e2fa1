#include "package/solution/VSNETSLN.Names.h"

#include "foundation/text/Encoding.h"
#include "package/solution/VSNETSLN.Syntax.h"

namespace kx {

namespace {

constexpr unsigned char LetterBit = 0x20;

} // namespace

void TNamedValues::Want(std::string_view name) {
  const std::u16string wide = text::FromUtf8(name);
  const auto known = NumberOf(wide);
  wanted_.push_back(known.value_or(static_cast<std::uint32_t>(names_.size())));
  if (known) return;
  index_.Add(wide, wanted_.back());
  names_.push_back(Keep(wide));
  values_.emplace_back();
  const std::string begins = std::string(name) + '=';
  bool anything = false;
  for (std::size_t i = 0; i < beginnings_.size(); ++i) {
    // Beyond ASCII the same name may have been written with other bytes.
    anything = anything || i >= begins.size() || static_cast<unsigned char>(begins[i]) >= 0x80;
    if (anything) {
      beginnings_[i].set();
    } else {
      beginnings_[i].set(static_cast<unsigned char>(begins[i]) | LetterBit);
    }
  }
}

bool TNamedValues::MayBeWanted(std::string_view line) const {
  const std::size_t count = std::min(line.size(), beginnings_.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (!beginnings_[i].test(static_cast<unsigned char>(line[i]) | LetterBit)) return false;
  }
  return true;
}

void TNamedValues::Offer(std::string_view line) {
  if (!MayBeWanted(line)) return;
  const auto split = slnsyntax::SplitNameValue(line);
  if (!split) return;
  const auto known = NumberOf(text::FromUtf8(split->Name));
  if (!known || values_[*known].IsThere()) return;
  values_[*known] = Keep(text::FromUtf8(slnsyntax::Trim(split->Value)));
  ++found_;
}

TNamedValues::TPiece TNamedValues::Keep(std::u16string_view piece) {
  const TPiece kept{text_.size(), piece.size()};
  text_.append(piece);
  return kept;
}

std::optional<std::uint32_t> TNamedValues::NumberOf(std::u16string_view name) const {
  return index_.Find(name, [this](std::uint32_t number) { return names_[number].In(text_); });
}

} // namespace kx
