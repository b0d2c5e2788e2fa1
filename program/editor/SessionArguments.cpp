#include "program/editor/SessionArguments.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/editor/ProjectPaths.h"

namespace kx::editor {

std::u16string TextOf(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  if (found == arguments.end() || !found->is_string())
    throw EKxException(u"The request has no text \"" + text::FromAscii(name) + u"\".");
  return text::FromUtf8(found->get_ref<const std::string&>());
}

std::optional<std::u16string> OptionalText(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  return found == arguments.end() || found->is_null() ? std::nullopt : std::optional(TextOf(arguments, name));
}

bool Flag(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  return found != arguments.end() && found->is_boolean() && found->get<bool>();
}

std::size_t IndexOf(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  if (found == arguments.end() || !found->is_number_integer() || *found < 0)
    throw EKxException(u"The request has no number \"" + text::FromAscii(name) + u"\".");
  return found->get<std::size_t>();
}

TActionPath PathOf(const TJson& arguments, const char* name) {
  return ParsePath(text::ToUtf8(TextOf(arguments, name)));
}

} // namespace kx::editor
