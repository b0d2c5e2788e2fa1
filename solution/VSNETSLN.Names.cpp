#include "solution/VSNETSLN.Names.h"

#include "solution/VSNETSLN.Syntax.h"
#include "text/Encoding.h"

namespace kx {

namespace {

constexpr unsigned char LetterBit = 0x20;

} // namespace

void TNamedValues::Want(std::string_view name) {
  const auto [known, isNew] = names_.try_emplace(text::FromUtf8(name), values_.size());
  wanted_.push_back(known->second);
  if (!isNew) return;
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
  const auto known = names_.find(text::FromUtf8(split->Name));
  if (known == names_.end() || values_[known->second]) return;
  values_[known->second] = text::FromUtf8(slnsyntax::Trim(split->Value));
  ++found_;
}

std::u16string TNamedValues::ValueOf(std::size_t index) const {
  return values_[wanted_[index]].value_or(std::u16string());
}

} // namespace kx
