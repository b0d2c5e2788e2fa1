// What a request of the page says besides its operation.
#pragma once

#include "program/editor/SessionJson.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace kx::editor {

inline constexpr auto ShortWait = std::chrono::milliseconds(300); // in which a person notices nothing

// All raise EKxException when the request lacks it or has another kind of thing in its place.
std::u16string TextOf(const TJson& arguments, const char* name);
std::size_t IndexOf(const TJson& arguments, const char* name);
TActionPath PathOf(const TJson& arguments, const char* name = "id"); // of an action in the tree

std::optional<std::u16string> OptionalText(const TJson& arguments,
                                           const char* name); // missing or null: nothing
bool Flag(const TJson& arguments, const char* name);          // missing: false

} // namespace kx::editor
