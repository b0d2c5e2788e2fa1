#include "program/cli/LogReader.h"

#include "foundation/platform/TextFiles.h"
#include "foundation/text/BlockSearch.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/cli/Usage.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace kx::cli {

namespace {

constexpr std::size_t BlockSize = 1024 * 1024;

using TDecode = std::function<std::u16string(std::string_view)>;

struct TEncoding {
  TDecode Decode;
  std::size_t UnitBytes = 1; // 2 for UTF-16
  bool BigEndian = false;
};

// The file in blocks that end at a line end, the last one aside.
class TBlocks {
public:
  TBlocks(const std::u16string& file, std::size_t unitBytes, bool bigEndian)
      : reader_(Opened(file)), unit_(unitBytes), bigEndian_(bigEndian) {}

  // An empty block is the end.
  std::string_view Next() {
    pending_.erase(0, used_);
    for (used_ = 0;;) {
      const std::size_t searched = pending_.size();
      const std::size_t got = Fill();
      if (got == 0) return Take(pending_.size());
      if (const std::size_t end = LastLineEnd(searched)) return Take(end);
    }
  }

private:
  static platform::FileReader Opened(const std::u16string& file) {
    auto reader = platform::FileReader::Open(file);
    if (!reader) throw EKxException(reader.Message());
    return *std::move(reader);
  }

  std::size_t Fill() {
    const std::size_t size = pending_.size();
    // A line longer than a block doubles the buffer, so that it is not copied again for each block.
    const std::size_t wanted = std::max(BlockSize, size);
    pending_.resize(size + wanted);
    const auto got = reader_.Read(pending_.data() + size, wanted);
    if (!got) throw EKxException(got.Message());
    pending_.resize(size + *got);
    return *got;
  }

  // One past the last line feed at or after `from`; 0 when there is none.
  std::size_t LastLineEnd(std::size_t from) const {
    if (unit_ == 1) {
      const std::size_t found = pending_.rfind('\n');
      return found == std::string::npos || found < from ? 0 : found + 1;
    }
    const std::string_view feed = bigEndian_ ? std::string_view("\0\n", 2) : std::string_view("\n\0", 2);
    for (std::size_t found = pending_.rfind(feed); found != std::string::npos;
         found = pending_.rfind(feed, found - 1)) {
      if (found % 2 == 0) return found + 2;
      if (found == 0) break;
    }
    return 0;
  }

  std::string_view Take(std::size_t size) {
    used_ = size;
    return std::string_view(pending_).substr(0, size);
  }

  platform::FileReader reader_;
  std::size_t unit_;
  bool bigEndian_;
  std::string pending_;
  std::size_t used_ = 0;
};

TEncoding SingleByte(text::SingleBytePage page) {
  return {[page](std::string_view bytes) { return text::FromSingleByte(bytes, page); }};
}

TEncoding CodePage(unsigned number) {
  return {[number](std::string_view bytes) {
    auto decoded = platform::FromCodePage(bytes, number);
    if (!decoded)
      throw EKxException(u"The log is not valid in code page " + text::FromInteger(number) + u".");
    return *std::move(decoded);
  }};
}

TEncoding Utf8() {
  return {text::FromUtf8};
}
TEncoding Utf16(bool bigEndian) {
  return {bigEndian ? text::FromUtf16BE : text::FromUtf16LE, 2, bigEndian};
}

// Until `handle` gives False.
void ForEachBlock(const std::u16string& file, const std::function<bool(std::string_view block)>& handle) {
  TBlocks blocks(file, 1, false);
  for (std::string_view block = blocks.Next(); !block.empty(); block = blocks.Next())
    if (!handle(block)) return;
}

// Names as users write them; a bare number is a code page too.
TEncoding NamedEncoding(std::u16string_view name) {
  if (text::EqualsIgnoreCase(name, u"utf-8") || text::EqualsIgnoreCase(name, u"utf8")) return Utf8();
  if (text::EqualsIgnoreCase(name, u"utf-16le") || text::EqualsIgnoreCase(name, u"utf-16"))
    return Utf16(false);
  if (text::EqualsIgnoreCase(name, u"utf-16be")) return Utf16(true);
  for (const std::u16string_view prefix : {u"windows-", u"cp", u"ibm", u""}) {
    if (!text::StartsWithIgnoreCase(name, prefix)) continue;
    const auto number = text::ToInteger(name.substr(prefix.size()));
    if (number && *number > 0) return CodePage(static_cast<unsigned>(*number));
  }
  throw EUsage(u"Unknown encoding " + std::u16string(name) +
               u": say utf-8, utf-16le, utf-16be, or a code page such as windows-1252 or cp850.");
}

// Reads the file a second time only for the guess, since nearly all logs are well-formed.
TEncoding FoundEncoding(const std::u16string& file) {
  bool wellFormed = true;
  ForEachBlock(file, [&](std::string_view block) { return wellFormed = text::IsValidUtf8(block); });
  if (wellFormed) return Utf8();
  text::SingleByteGuess guess;
  ForEachBlock(file, [&](std::string_view block) {
    guess.Feed(block);
    return true;
  });
  return SingleByte(guess.Result());
}

text::ByteOrderMark MarkOf(const std::u16string& file) {
  auto reader = platform::FileReader::Open(file);
  if (!reader) throw EKxException(reader.Message());
  std::array<char, 3> start{};
  const auto got = reader->Read(start.data(), start.size());
  if (!got) throw EKxException(got.Message());
  return text::DetectByteOrderMark(std::string_view(start.data(), *got));
}

TEncoding EncodingOf(const std::u16string& file, std::u16string_view name, text::ByteOrderMark mark) {
  if (!name.empty()) return NamedEncoding(name);
  switch (mark) {
  case text::ByteOrderMark::Utf8:
    return Utf8();
  case text::ByteOrderMark::Utf16LE:
    return Utf16(false);
  case text::ByteOrderMark::Utf16BE:
    return Utf16(true);
  case text::ByteOrderMark::None:
    break;
  }
  return FoundEncoding(file);
}

void SplitBlock(std::u16string_view block, const std::function<void(std::u16string_view)>& handle) {
  while (!block.empty()) {
    const std::size_t end = text::FindEither(block, u'\n', u'\n');
    std::u16string_view line = block.substr(0, end);
    if (!line.empty() && line.back() == u'\r') line.remove_suffix(1);
    handle(line);
    block.remove_prefix(std::min(end + 1, block.size()));
  }
}

} // namespace

void RequireEncoding(std::u16string_view name) {
  static_cast<void>(NamedEncoding(name));
}

void ForEachLogLine(const std::u16string& file, std::u16string_view encoding,
                    const std::function<void(std::u16string_view line)>& handle) {
  const text::ByteOrderMark mark = MarkOf(file);
  const TEncoding found = EncodingOf(file, encoding, mark);
  TBlocks blocks(file, found.UnitBytes, found.BigEndian);
  std::size_t skip = text::LengthOf(mark);
  for (std::string_view block = blocks.Next(); !block.empty(); block = blocks.Next()) {
    const std::u16string decoded = found.Decode(block.substr(skip));
    skip = 0;
    SplitBlock(decoded, handle);
  }
}

} // namespace kx::cli
