// The grammar of references in texts; what they stand for is the expression engine's business.
#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// One reference; views into the text it was read from.
struct TReference {
  std::u16string_view Written; // the whole of it: "%Name%", "$(Name)", "$(Build.F(\"x\"))"
  std::u16string_view Name;    // of the variable or the function
  bool IsCall = false;
  std::u16string_view Action; // in front of a function's name; empty: the current action
  std::u16string Argument;    // as it is, its quotes undone
};

// The reference at the very start of the text; nothing when its "%" or "$" stands for itself.
std::optional<TReference> ReadReference(std::u16string_view text);

// The parts of a text in their order: plain text ("%%" and "$$" undone) and references.
struct TTextPart {
  std::u16string Plain;
  std::optional<TReference> Reference; // else Plain counts
};
std::vector<TTextPart> SplitReferences(std::u16string_view text);
template <std::same_as<std::u16string> T>
std::vector<TTextPart> SplitReferences(T&& text) = delete; // the parts would outlive what they point into

// Where the text names the variable or, in front of a function, the action: the positions of the name, in the
// arguments of functions too. Letter case does not count.
enum class TNameKind { Variable, Action };
std::vector<std::size_t> PlacesOfName(std::u16string_view text, TNameKind kind, std::u16string_view name);

// Every reference that `was` holds is in `is` too.
bool KeepsReferences(std::u16string_view was, std::u16string_view is);

} // namespace kx
