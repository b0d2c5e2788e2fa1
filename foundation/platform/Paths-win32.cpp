#include "foundation/platform/Files.h"
#include "foundation/platform/Win32.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>

namespace kx::platform {

namespace win32 {

namespace {

// Folders may be twelve characters shorter than files, to leave room for a name.
constexpr std::size_t kLongestPlainPath = MAX_PATH - 13;
constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr std::wstring_view kLongNetworkPrefix = L"\\\\?\\UNC\\";

std::optional<DWORD> AttributesOf(const std::wstring& native) {
  const DWORD attributes = GetFileAttributesW(native.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) return attributes;
  // Somebody keeps the file to himself, but it is there.
  if (GetLastError() == ERROR_SHARING_VIOLATION) return FILE_ATTRIBUTE_NORMAL;
  return std::nullopt;
}

// With the letter case and the long names that the folders list, as far as they can be listed.
std::u16string Spelled(const std::u16string& full) {
  const std::u16string plain = text::ExcludeTrailingPathDelimiter(full);
  const std::u16string folder = text::ExtractFileDir(plain), name = text::ExtractFileName(plain);
  if (name.empty() || folder.empty() || folder.size() >= plain.size()) return full;
  const std::u16string parent = Spelled(folder);
  std::u16string written = text::JoinPath(parent, name);
  if (name.find_first_of(u"*?") != std::u16string::npos) return written; // they stand for other names here
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(WithLongPrefix(written).c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return written;
  FindClose(search);
  return text::JoinPath(parent, FromWide(found.cFileName));
}

} // namespace

std::u16string Reason(DWORD error) {
  switch (error) {
  case ERROR_SHARING_VIOLATION:
  case ERROR_LOCK_VIOLATION:
  case ERROR_USER_MAPPED_FILE:
    return u"It is being used by another process";
  default:
    break;
  }
  wchar_t* text = nullptr;
  constexpr DWORD flags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD size = FormatMessageW(flags, nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::u16string reason = FromWide({text == nullptr ? L"" : text, size});
  LocalFree(text);
  while (!reason.empty() && (text::IsBlank(reason.back()) || reason.back() == u'.'))
    reason.pop_back();
  return reason.empty() ? u"Error " + text::FromInteger(error) : reason;
}

Result<std::u16string> FullPath(std::u16string_view path) {
  if (path.empty()) return Failure{Reason(ERROR_FILE_NOT_FOUND)};
  if (path.find(u'\0') != std::u16string_view::npos) return Failure{Reason(ERROR_INVALID_NAME)};
  const std::wstring wide = ToWide(path);
  const auto full = TextOf(
      [&](wchar_t* buffer, DWORD size) { return GetFullPathNameW(wide.c_str(), size, buffer, nullptr); });
  return full ? Result(FromWide(*full)) : Failure{Reason(GetLastError())};
}

std::wstring WithLongPrefix(std::u16string_view fullPath) {
  std::wstring wide = ToWide(fullPath);
  const bool marked = wide.starts_with(kLongPrefix) || IsDevice(wide);
  if (marked || wide.size() <= kLongestPlainPath) return wide;
  if (wide.starts_with(L"\\\\")) return std::wstring(kLongNetworkPrefix).append(wide, 2);
  return std::wstring(kLongPrefix).append(wide);
}

Result<std::wstring> ToNative(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  return full ? Result(WithLongPrefix(*full)) : Failure{full.Message()};
}

bool IsDevice(std::wstring_view native) {
  return native.starts_with(L"\\\\.\\");
}

std::wstring WithoutLongPrefix(std::wstring_view native) {
  if (native.starts_with(kLongNetworkPrefix))
    return std::wstring(L"\\\\").append(native.substr(kLongNetworkPrefix.size()));
  return std::wstring(native.substr(native.starts_with(kLongPrefix) ? kLongPrefix.size() : 0));
}

std::optional<std::wstring> ShortForm(const std::wstring& native) {
  auto brief =
      TextOf([&](wchar_t* buffer, DWORD size) { return GetShortPathNameW(native.c_str(), buffer, size); });
  return brief && WithoutLongPrefix(*brief).size() <= kLongestPlainPath ? brief : std::nullopt;
}

} // namespace win32

using namespace win32;

void MapDrive(char16_t /*letter*/, std::u16string_view /*folder*/) {}

bool FileExists(std::u16string_view path) {
  const Result<std::wstring> native = ToNative(path);
  if (!native) return false;
  const auto attributes = AttributesOf(*native);
  return attributes && (*attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool DirectoryExists(std::u16string_view path) {
  const Result<std::wstring> native = ToNative(path);
  if (!native) return false;
  const auto attributes = AttributesOf(*native);
  return attributes && (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::optional<std::u16string> ResolveExisting(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  if (!full || !AttributesOf(WithLongPrefix(*full))) return std::nullopt;
  return Spelled(*full);
}

std::u16string ResolveForWriting(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  return full ? Spelled(*full) : std::u16string(path);
}

} // namespace kx::platform
