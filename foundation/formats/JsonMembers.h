// Members of JSON objects that programs have written: what is missing, or is of another type, counts as
// nothing. For files that an older or a newer version may have left.
#pragma once

#include "foundation/text/Encoding.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace kx {

// Null when there is none, and for what is no object.
inline const nlohmann::json* FindMember(const nlohmann::json& object, const char* name) {
  if (!object.is_object()) return nullptr;
  const auto found = object.find(name);
  return found == object.end() ? nullptr : &*found;
}

// Lives as long as the object.
inline std::string_view Utf8Member(const nlohmann::json& object, const char* name) {
  const auto* member = FindMember(object, name);
  if (member == nullptr || !member->is_string()) return {};
  return member->get_ref<const std::string&>();
}

inline std::u16string TextMember(const nlohmann::json& object, const char* name) {
  return text::FromUtf8(Utf8Member(object, name));
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
