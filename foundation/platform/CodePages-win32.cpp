#include "foundation/platform/CodePages-win32.h"

#include "foundation/platform/TextFiles.h"
#include "foundation/platform/Win32.h"

#include <algorithm>
#include <array>

namespace kx::platform {

namespace {

constexpr unsigned kUtf8 = CP_UTF8;
constexpr unsigned kWindows1252 = 1252;
constexpr unsigned kDos850 = 850;

// A machine may be set to UTF-8 for programs that know of no code pages. Files made before are not in it, and
// Windows-1252 at least gives every byte back as it was.
unsigned AnsiPage() {
  const unsigned page = GetACP();
  return page == kUtf8 ? kWindows1252 : page;
}

// A console set to UTF-8 says nothing about the tools that do not write it.
unsigned ConsolePage() {
  const unsigned page = GetConsoleOutputCP();
  return page == 0 || page == kUtf8 ? GetOEMCP() : page;
}

std::optional<std::u16string> Convert(std::string_view bytes, unsigned page, DWORD flags) {
  if (bytes.empty()) return std::u16string();
  const int size = static_cast<int>(bytes.size());
  const int needed = MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
  if (needed <= 0) return std::nullopt;
  std::wstring wide(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(page, flags, bytes.data(), size, wide.data(), needed);
  return win32::FromWide(wide);
}

// What a page leaves undefined the system reads as characters of the private use area.
bool IsUndefined(char16_t unit) {
  return unit >= u'\uF8C0' && unit <= u'\uF8FF';
}

} // namespace

std::u16string FromAnsi(std::string_view bytes) {
  const unsigned page = AnsiPage();
  if (page == kWindows1252) return text::FromSingleByte(bytes, text::SingleBytePage::Windows1252);
  return Convert(bytes, page, 0).value_or(u"");
}

std::optional<std::string> ToAnsi(std::u16string_view text) {
  const unsigned page = AnsiPage();
  if (page == kWindows1252) return text::ToSingleByte(text, text::SingleBytePage::Windows1252);
  if (text.empty()) return std::string();
  const std::wstring wide = win32::ToWide(text);
  std::string bytes(text.size() * 4, '\0');
  BOOL lost = FALSE;
  const int size = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()),
                                       bytes.data(), static_cast<int>(bytes.size()), nullptr, &lost);
  if (size <= 0 || lost != FALSE) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

std::optional<std::u16string> FromCodePage(std::string_view bytes, unsigned page) {
  if (page == kWindows1252) return text::FromSingleByte(bytes, text::SingleBytePage::Windows1252);
  if (page == kDos850) return text::FromSingleByte(bytes, text::SingleBytePage::Dos850);
  if (page == CP_ACP || page == CP_OEMCP || page == CP_MACCP || page == CP_THREAD_ACP || page == CP_SYMBOL)
    return std::nullopt; // no pages of their own
  auto text = Convert(bytes, page, MB_ERR_INVALID_CHARS);
  if (text && std::ranges::any_of(*text, IsUndefined)) return std::nullopt;
  return text;
}

namespace win32 {

namespace {

// The pages between which the guess by West European letters chooses; 437 has its letters where 850 has them.
bool IsWestEuropean(unsigned console, unsigned ansi) {
  constexpr std::array<unsigned, 4> consoles{437, 850, 858, kWindows1252};
  return ansi == kWindows1252 && std::ranges::find(consoles, console) != consoles.end();
}

std::size_t CountLetters(const std::optional<std::u16string>& text) {
  if (!text) return 0;
  return static_cast<std::size_t>(std::ranges::count_if(
      *text, [](char16_t unit) { return unit > 0x7F && IsCharAlphaW(static_cast<wchar_t>(unit)) != FALSE; }));
}

} // namespace

MachineOutputDecoder::MachineOutputDecoder() : console_(ConsolePage()), ansi_(AnsiPage()) {}

std::u16string MachineOutputDecoder::Decode(std::string_view line) {
  if (IsWestEuropean(console_, ansi_) || text::IsValidUtf8(line)) return westEuropean_.Decode(line);
  const auto fromConsole = FromCodePage(line, console_);
  const auto fromAnsi = FromCodePage(line, ansi_);
  consoleLetters_ += CountLetters(fromConsole);
  ansiLetters_ += CountLetters(fromAnsi);
  const auto& likely = consoleLetters_ > ansiLetters_ ? fromConsole : fromAnsi;
  return likely ? *likely : FromAnsi(line);
}

} // namespace win32

} // namespace kx::platform
