#include "program/history/Place.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Hash.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kx::history {

namespace {

std::u16string Hashed(std::u16string_view text) {
  const std::uint64_t hash = text::StableHash(text);
  std::u16string digits;
  for (int shift = 60; shift >= 0; shift -= 4)
    digits += u"0123456789abcdef"[(hash >> shift) & 0xFU];
  return digits;
}

// What every file system takes, and a person still reads.
std::u16string Readable(std::u16string name) {
  constexpr std::size_t longest = 60;
  name.resize(std::min(name.size(), longest));
  std::ranges::replace_if(
      name,
      [](char16_t c) {
        const char16_t lower = c | 0x20U;
        return (lower < u'a' || lower > u'z') && (c < u'0' || c > u'9') && c != u'-' && c != u'_' &&
               c != u'.';
      },
      u'_');
  return name;
}

} // namespace

std::u16string TPlace::FileFor(const std::u16string& project) const {
  if (Off || project.empty()) return {};
  if (!File.empty()) return text::ExpandPath(File, platform::CurrentDirectory());
  const std::u16string state = platform::StateDirectory();
  if (state.empty()) return {};
  const std::u16string full = text::ExpandPath(project, platform::CurrentDirectory());
  std::u16string path = platform::ResolveExisting(full).value_or(full);
  if (platform::IsWindows()) path = text::ToLower(path);
  const std::u16string stem = text::ChangeFileExt(text::ExtractFileName(full), u"");
  const std::u16string folder = text::JoinPath(text::JoinPath(state, u"kxhost"), u"history");
  return text::JoinPath(folder, Readable(stem) + u"-" + Hashed(path) + u".sqlite");
}

} // namespace kx::history
