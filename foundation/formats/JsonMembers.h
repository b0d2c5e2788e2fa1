// Members of JSON objects that programs have written: what is missing, or is of another type, counts as
// nothing. For files that an older or a newer version may have left.
#pragma once

#include "foundation/text/Encoding.h"

#include <nlohmann/json.hpp>

#include <string>

namespace kx {

// Null when there is none, and for what is no object.
inline const nlohmann::json* FindMember(const nlohmann::json& object, const char* name) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(name);
  return found == object.end() ? nullptr : &*found;
}

inline std::u16string TextMember(const nlohmann::json& object, const char* name) {
  const auto* member = FindMember(object, name);
  if (member == nullptr || !member->is_string()) return {};
  return text::FromUtf8(member->get_ref<const std::string&>());
}

template <typename T>
T NumberMember(const nlohmann::json& object, const char* name) {
  const auto* member = FindMember(object, name);
  return member != nullptr && member->is_number_integer() ? member->get<T>() : T{0};
}

inline bool FlagMember(const nlohmann::json& object, const char* name) {
  const auto* member = FindMember(object, name);
  return member != nullptr && member->is_boolean() && member->get<bool>();
}

// An empty array when there is none.
inline const nlohmann::json& ArrayMember(const nlohmann::json& object, const char* name) {
  static const nlohmann::json nothing = nlohmann::json::array();
  const auto* member = FindMember(object, name);
  return member != nullptr && member->is_array() ? *member : nothing;
}

} // namespace kx
