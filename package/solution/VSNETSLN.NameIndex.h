// Finds names by their numbers in large lists, without regard to letter case.
#pragma once

#include "foundation/text/Text.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

// The names stay where they are, with the caller, who gives `nameOf(number)`; an entry costs a few bytes
// here, however many there are in a file.
class TNameIndex {
public:
  std::optional<std::uint32_t> Find(std::u16string_view name, const auto& nameOf) const {
    if (slots_.empty()) return std::nullopt;
    const std::uint32_t hash = HashOf(name);
    for (std::size_t at = hash & Mask(); slots_[at].Number != Free; at = (at + 1) & Mask()) {
      if (slots_[at].Hash == hash && text::EqualsIgnoreCase(nameOf(slots_[at].Number), name))
        return slots_[at].Number;
    }
    return std::nullopt;
  }

  // A name that is not there yet.
  void Add(std::u16string_view name, std::uint32_t number) {
    if (4 * count_ >= 3 * slots_.size()) Grow();
    Put({HashOf(name), number});
    ++count_;
  }

private:
  static constexpr std::uint32_t Free = UINT32_MAX;
  struct TSlot {
    std::uint32_t Hash = 0;
    std::uint32_t Number = Free;
  };

  static std::uint32_t HashOf(std::u16string_view name) {
    return static_cast<std::uint32_t>(text::IgnoreCaseHash()(name));
  }
  std::size_t Mask() const { return slots_.size() - 1; }

  void Put(const TSlot& slot) {
    std::size_t at = slot.Hash & Mask();
    while (slots_[at].Number != Free)
      at = (at + 1) & Mask();
    slots_[at] = slot;
  }

  void Grow() {
    const std::vector<TSlot> old =
        std::exchange(slots_, std::vector<TSlot>(slots_.empty() ? 32 : 2 * slots_.size()));
    for (const TSlot& slot : old) {
      if (slot.Number != Free) Put(slot);
    }
  }

  std::vector<TSlot> slots_; // a power of two
  std::size_t count_ = 0;
};

} // namespace kx
