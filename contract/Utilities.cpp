#include "contract/Utilities.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

std::u16string TPathUtils::ExpandRelativePath(std::u16string_view path, std::u16string_view baseFolder,
                                              bool keepAbsent) {
  const bool isWebAddress = path.find(u"://") != std::u16string_view::npos;
  if (isWebAddress || (keepAbsent && path.empty())) return std::u16string(path);
  return text::ExpandPath(path, baseFolder);
}

std::u16string TPathUtils::GetAppPath() {
  return text::IncludeTrailingPathDelimiter(platform::ProgramDirectory());
}

std::u16string TPathUtils::GetTemporaryPath() {
  return text::IncludeTrailingPathDelimiter(platform::TemporaryDirectory());
}

std::u16string TFileReader::LoadFromFile(std::u16string_view fileName) {
  auto content = platform::ReadTextFile(fileName);
  if (!content) throw EKxException(content.Message());
  return *std::move(content);
}

std::u16string TFileInfo::GetTemporaryFileName(std::u16string_view folder, std::u16string_view prefix) {
  auto name = platform::CreateTemporaryFile(
      folder.empty() ? platform::TemporaryDirectory() : std::u16string(folder), prefix);
  if (!name) throw EKxException(name.Message());
  return *std::move(name);
}

std::u16string TWindowsUtils::MachineName() {
  return platform::MachineName();
}

std::u16string DoubleQuoteString(std::u16string_view text, bool escape) {
  return u'"' + (escape ? text::ReplaceAll(text, u"\"", u"\"\"") : std::u16string(text)) + u'"';
}

std::size_t FastPos(std::u16string_view wanted, std::u16string_view text, std::size_t from) {
  if (wanted.empty() || from == 0) return 0;
  const std::size_t found = text.find(wanted, from - 1);
  return found == std::u16string_view::npos ? 0 : found + 1;
}

std::u16string FastReplace(std::u16string_view text, std::u16string_view old, std::u16string_view replacement,
                           bool caseSensitive) {
  return text::ReplaceAll(text, old, replacement, caseSensitive ? text::Case::Respect : text::Case::Ignore);
}

std::u16string BooleanToString(bool value) {
  return value ? u"True" : u"False";
}

std::optional<bool> StringToBoolean(std::u16string_view text) {
  const auto is = [text](std::u16string_view word) { return text::EqualsIgnoreCase(text, word); };
  if (is(u"true") || is(u"yes")) return true;
  if (is(u"false") || is(u"no")) return false;
  const auto number = text::ToInteger(text);
  return number ? std::optional(*number != 0) : std::nullopt;
}

} // namespace kx
