// What the Windows sources of this room share: owned handles, native paths, messages.
#pragma once

#include "foundation/platform/Result.h"
#include "foundation/platform/Shared.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// Names of ours that the header above has made macros of.
#undef WriteConsole

namespace kx::platform::win32 {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "the system's texts are UTF-16");

// Owns a kernel object.
class Handle {
public:
  explicit Handle(HANDLE handle = nullptr) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() { Close(); }

  HANDLE Get() const { return handle_; }
  bool IsOpen() const { return handle_ != nullptr; }
  void Close() noexcept {
    if (handle_ != nullptr) CloseHandle(std::exchange(handle_, nullptr));
  }

private:
  HANDLE handle_;
};

inline std::wstring ToWide(std::u16string_view text) {
  return {text.begin(), text.end()};
}
inline std::u16string FromWide(std::wstring_view text) {
  return {text.begin(), text.end()};
}

// What a function of the system gives that fills a buffer and returns the length, or the size it needs.
// Nothing when it fails (or when there is nothing to give).
template <typename Fill>
std::optional<std::wstring> TextOf(const Fill& fill) {
  std::wstring text(MAX_PATH, L'\0');
  for (;;) {
    const DWORD size = fill(text.data(), static_cast<DWORD>(text.size()));
    if (size == 0) return std::nullopt;
    const bool fits = size < text.size();
    text.resize(size);
    if (fits) return text;
  }
}

// Calls with each entry that the path names, in which "*" stands for anything. The error number, or 0.
template <typename TVisit>
DWORD ForEachEntry(const std::wstring& pattern, const TVisit& visit) {
  WIN32_FIND_DATAW found{};
  const HANDLE list = FindFirstFileW(pattern.c_str(), &found);
  if (list == INVALID_HANDLE_VALUE) return GetLastError();
  const std::unique_ptr<void, decltype(&FindClose)> closed(list, FindClose);
  do
    visit(found);
  while (FindNextFileW(list, &found) != FALSE);
  const DWORD error = GetLastError();
  return error == ERROR_NO_MORE_FILES ? 0 : error;
}

// Longer ago than any program needs between two steps.
inline bool IsOld(const FILETIME& time) {
  constexpr std::uint64_t minute = 600'000'000; // in steps of 100 ns
  const auto number = [](const FILETIME& value) {
    return std::uint64_t{value.dwHighDateTime} << 32U | value.dwLowDateTime;
  };
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  return number(now) > number(time) + minute;
}

// The system's words for an error number, without the full stop.
std::u16string Reason(DWORD error);

// All of it, in as many calls as it takes. Why it failed, or empty.
std::u16string WriteAll(HANDLE file, std::string_view bytes);

// The absolute path with "\" and without "." and ".." steps. A failure's message is the bare reason.
Result<std::u16string> FullPath(std::u16string_view path);
// The same, as functions of the system take it whatever its length.
Result<std::wstring> ToNative(std::u16string_view path);
// The same, and behind the link when it is one: where the file is that a writer replaces or makes.
Result<std::wstring> RealPathForWriting(std::u16string_view path);
std::wstring WithLongPrefix(std::u16string_view fullPath);
// "NUL", "CON", a pipe: a name that no file has, seen from a native path.
bool IsDevice(std::wstring_view native);
std::wstring WithoutLongPrefix(std::wstring_view native);
// The form with names of eight and three letters, for what takes no long paths; nothing where the volume has
// none, or when even it is too long. It keeps the prefix.
std::optional<std::wstring> ShortForm(const std::wstring& native);

} // namespace kx::platform::win32
