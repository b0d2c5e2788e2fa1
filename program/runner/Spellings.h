// How tools write a text into something else: back to the text that was meant.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// A text, and for each of its characters where its spelling ends in the text that it was read from.
struct TDecodedText {
  std::u16string Text;
  std::vector<std::size_t> Ends;
};

// What is no escape stands for itself. Linear in the text.
struct TSpelling {
  char16_t Trigger; // without it the text has nothing to decode
  TDecodedText (*Decode)(std::u16string_view text);
};

// One behind the other: the first was written last.
using TSpellings = std::vector<const TSpelling*>;

// Addresses, forms, XML, JSON, command lines, and those of them that stand within another.
std::span<const TSpellings> KnownSpellings();

// Nothing to decode gives an empty text.
TDecodedText Decode(const TSpellings& spellings, std::u16string_view text);

} // namespace kx
