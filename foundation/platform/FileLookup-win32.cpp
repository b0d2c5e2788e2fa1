#include "foundation/platform/Files.h"
#include "foundation/platform/Win32.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace kx::platform {

using namespace win32;

namespace {

using Names = std::unordered_set<std::u16string, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

// The files of a folder.
Names FilesIn(std::u16string_view folder) {
  Names names;
  WIN32_FIND_DATAW found;
  const HANDLE search =
      FindFirstFileExW(WithLongPrefix(text::JoinPath(folder, u"*")).c_str(), FindExInfoBasic, &found,
                       FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) names.insert(FromWide(found.cFileName));
  } while (FindNextFileW(search, &found) != FALSE);
  FindClose(search);
  return names;
}

// Names that may be a file's without being listed so: short ones (PROGRA~1), streams, letters whose case only
// the file system knows.
bool IsDoubtful(std::u16string_view name) {
  return std::ranges::any_of(name, [](char16_t c) { return c == u'~' || c == u':' || c > 0x7F; });
}

} // namespace

// Folders whose time stamps do not follow changes (FAT, some shares) are common here, so that a listing holds
// for one round only.
struct FileLookup::State {
  std::unordered_map<std::u16string, Names, text::IgnoreCaseHash, text::IgnoreCaseEqual> Listings;
};

FileLookup::FileLookup() : state_(std::make_unique<State>()) {}
FileLookup::~FileLookup() = default;

void FileLookup::Refresh() {
  state_->Listings.clear();
}

bool FileLookup::FileExists(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  if (!full) return false;
  const std::u16string name = text::ExtractFileName(*full);
  if (name.empty()) return false;
  if (IsDevice(ToWide(*full))) return platform::FileExists(path);
  const std::u16string folder = text::ExtractFileDir(*full);
  auto known = state_->Listings.find(folder);
  if (known == state_->Listings.end()) known = state_->Listings.emplace(folder, FilesIn(folder)).first;
  return known->second.contains(name) || (IsDoubtful(name) && platform::FileExists(path));
}

} // namespace kx::platform
