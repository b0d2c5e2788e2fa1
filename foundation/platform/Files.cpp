#include "foundation/platform/Files.h"
#include "foundation/platform/Shared.h"
#include "foundation/platform/Spool.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <random>
#include <set>

namespace kx::platform {

Failure FileFailure(std::u16string_view action, std::u16string_view path, std::u16string_view reason) {
  return {std::u16string(u"Cannot ").append(action).append(u" ").append(path).append(u". ").append(reason)};
}

std::u16string SeveralNames(std::uint64_t count) {
  return u"It has " + text::FromInteger(static_cast<std::int64_t>(count)) +
         u" names (hard links), and only one of them would lead to the new content";
}

static constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
static constexpr std::size_t kPassingLetters = 12;

std::string RandomLetters(std::size_t count) {
  std::random_device random;
  std::uniform_int_distribution<std::size_t> pick(0, kLetters.size() - 1);
  std::string name(count, ' ');
  std::ranges::generate(name, [&] { return kLetters[pick(random)]; });
  return name;
}

std::string PassingNames::New() const {
  return std::string(Start).append(RandomLetters(kPassingLetters)).append(End);
}

bool PassingNames::Has(std::string_view name) const {
  return name.size() == Start.size() + kPassingLetters + End.size() && name.starts_with(Start) &&
         name.ends_with(End) &&
         name.substr(Start.size(), kPassingLetters).find_first_not_of(kLetters) == std::string_view::npos;
}

bool IsFirstVisit(const std::string& folder) {
  static std::mutex guard;
  static std::set<std::string> visited;
  const std::lock_guard lock(guard);
  return visited.insert(folder).second;
}

Result<std::string> ReadFile(std::u16string_view path) {
  Result<FileReader> reader = FileReader::Open(path);
  if (!reader) return Failure{reader.Message()};
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(reader->Size()));
  std::array<char, 65536> block; // appending blocks spares the zeroing of a large text
  for (;;) {
    const Result<std::size_t> count = reader->Read(block.data(), block.size());
    if (!count) return Failure{count.Message()};
    if (*count == 0) return bytes;
    bytes.append(block.data(), *count);
  }
}

Status SaveFile(std::u16string_view path, std::string_view bytes) {
  return SaveFileInPieces(path, [bytes](const PutBytes& put) { return put(bytes); });
}

Status CheckSaveFile(std::u16string_view path) {
  return SaveFileInPieces(path, {});
}

Result<bool> SaveNewFile(std::u16string_view path, std::string_view bytes, std::u16string_view like) {
  return SaveNew(path, bytes, like, false);
}

Result<bool> CopyToNewFile(std::u16string_view from, std::u16string_view path) {
  const Result<std::string> bytes = ReadFile(from);
  if (!bytes) return Failure{bytes.Message()};
  return SaveNew(path, *bytes, from, true);
}

Result<std::vector<FolderEntry>> ListDirectory(std::u16string_view path) {
  auto entries = ListUnsorted(path);
  if (entries) std::ranges::sort(*entries, text::LessIgnoreCase, &FolderEntry::Name);
  return entries;
}

std::u16string ProgramDirectory() {
  return text::ExtractFileDir(ProgramFile());
}

} // namespace kx::platform
