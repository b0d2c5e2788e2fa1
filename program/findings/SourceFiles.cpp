#include "program/findings/SourceFiles.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <map>

namespace kx {

namespace {

constexpr std::uint64_t LargestFile = 16U * 1024 * 1024;
constexpr std::size_t HashedUnits = 100;
constexpr std::uint64_t Factor = 37;

constexpr std::uint64_t FactorOfOldest() { // of the unit that leaves what is hashed
  std::uint64_t factor = 1;
  for (std::size_t i = 0; i < HashedUnits; ++i)
    factor *= Factor;
  return factor;
}

// What is hashed of a file: without blanks and tabs, each line end as LF, an end mark and as many zeros as
// the last line needs. `starts` gets where each line begins in it.
std::u16string HashedForm(std::u16string_view content, std::vector<std::size_t>& starts) {
  std::u16string units;
  bool startsLine = true;
  const auto take = [&](char16_t unit) {
    if (startsLine) starts.push_back(units.size());
    startsLine = unit == u'\n';
    units += unit;
  };
  for (std::size_t i = 0; i < content.size(); ++i) {
    const bool endsPair = content[i] == u'\n' && i > 0 && content[i - 1] == u'\r';
    if (content[i] == u' ' || content[i] == u'\t' || endsPair) continue;
    take(content[i] == u'\r' ? u'\n' : content[i]);
  }
  take(u'\uFFFF');
  units.append(HashedUnits, u'\0');
  return units;
}

std::string Hex(std::uint64_t number) {
  std::array<char, 16> digits{};
  return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr};
}

} // namespace

std::vector<std::string> LineHashesOf(std::u16string_view content) {
  std::vector<std::size_t> starts;
  const std::u16string units = HashedForm(content, starts);
  std::vector<std::string> hashes;
  std::map<std::string, int> seen;
  std::uint64_t hash = 0;
  auto next = starts.begin();
  for (std::size_t i = 0; i < units.size() && next != starts.end(); ++i) {
    hash = hash * Factor + units[i];
    if (i >= HashedUnits) hash -= FactorOfOldest() * units[i - HashedUnits];
    if (i + 1 != *next + HashedUnits) continue;
    const std::string text = Hex(hash);
    hashes.push_back(text + ":" + std::to_string(++seen[text]));
    ++next;
  }
  return hashes;
}

std::u16string FindSourceRoot(std::u16string_view folder) {
  for (std::u16string at(folder); !at.empty();) {
    for (const std::u16string_view mark : {u".git", u".hg", u".svn"}) {
      const std::u16string name = text::JoinPath(at, mark);
      if (platform::DirectoryExists(name) || platform::FileExists(name)) return at;
    }
    const std::u16string above = text::ExtractFileDir(at);
    if (above.size() >= at.size()) break;
    at = above;
  }
  return std::u16string(folder);
}

std::u16string SeenFrom(std::u16string_view root, std::u16string_view file) {
  std::u16string path = text::ReplaceAll(file, u"\\", u"/");
  std::u16string folder = text::ReplaceAll(root, u"\\", u"/");
  if (!folder.empty() && !folder.ends_with(u'/')) folder += u'/';
  if (!folder.empty() && text::StartsWithIgnoreCase(path, folder)) path.erase(0, folder.size());
  while (path.starts_with(u"./"))
    path.erase(0, 2);
  return path;
}

const TSourceFile* TSourceFiles::Open(const std::u16string& file) {
  if (file.empty()) return nullptr;
  if (file == name_) return file_.get();
  name_ = file;
  file_.reset();
  const std::u16string path = root_.empty() ? file : text::ExpandPath(file, root_);
  if (!platform::FileExists(path)) return nullptr;
  const auto reader = platform::FileReader::Open(path);
  if (!reader || reader->Size() > LargestFile) return nullptr;
  const auto bytes = platform::ReadFile(path);
  if (!bytes) return nullptr;
  const std::u16string content = platform::DecodeUtf8OrAnsi(*bytes);
  file_ = std::make_unique<TSourceFile>();
  for (const auto line : text::SplitLines(content))
    file_->Lines.emplace_back(line);
  file_->LineHashes = LineHashesOf(content);
  return file_.get();
}

std::u16string TSourceFiles::LineText(const std::u16string& file, int line) {
  const TSourceFile* source = line > 0 ? Open(file) : nullptr;
  const auto at = static_cast<std::size_t>(line - 1);
  return source == nullptr || at >= source->Lines.size() ? std::u16string() : source->Lines[at];
}

std::string TSourceFiles::LineHash(const std::u16string& file, int line) {
  const TSourceFile* source = line > 0 ? Open(file) : nullptr;
  const auto at = static_cast<std::size_t>(line - 1);
  return source == nullptr || at >= source->LineHashes.size() ? std::string() : source->LineHashes[at];
}

} // namespace kx
