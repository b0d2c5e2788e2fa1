#include "package/solution/VSNETSLN.Lines.h"

#include "contract/Process.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Exceptions.h"
#include "package/solution/VSNETSLN.Syntax.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace kx {

namespace {

// Small enough to stay in a processor's cache while its lines are looked at.
constexpr std::size_t BufferSize = std::size_t{128} << 10;
constexpr std::size_t LargestSpare = std::size_t{1} << 20;

struct TByteKinds {
  bool BeyondAscii = false;
  bool LoneReturn = false;
};

// Looks at `count` bytes and at the one behind them. The inner loop has a fixed length, so that the compiler
// makes vector instructions of it.
TByteKinds KindsOf(const char* bytes, std::size_t count) {
  constexpr std::size_t block = 64;
  unsigned char all = 0;
  unsigned char lone = 0;
  const auto look = [&](std::size_t i) {
    all = static_cast<unsigned char>(all | static_cast<unsigned char>(bytes[i]));
    lone = static_cast<unsigned char>(lone | ((bytes[i] == '\r') & (bytes[i + 1] != '\n')));
  };
  std::size_t at = 0;
  for (; count - at >= block; at += block) {
    for (std::size_t i = 0; i < block; ++i)
      look(at + i);
  }
  for (; at < count; ++at)
    look(at);
  return {all >= 0x80, lone != 0};
}

bool IsAscii(std::string_view bytes) {
  return std::ranges::none_of(bytes, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

platform::FileReader Open(std::u16string_view fileName) {
  auto file = platform::FileReader::Open(fileName);
  if (!file) throw EKxParseError(file.Message(), std::u16string(fileName));
  return *std::move(file);
}

// Whether all of the file is valid UTF-8, which its last byte may decide.
bool IsUtf8File(const std::u16string& fileName) {
  platform::FileReader file = Open(fileName);
  std::string bytes(BufferSize, '\0');
  std::size_t held = 0; // of a character that the end of the last piece cuts through
  for (;;) {
    const auto count = file.Read(bytes.data() + held, bytes.size() - held);
    if (!count) throw EKxParseError(count.Message(), fileName);
    if (*count == 0) return held == 0;
    const std::string_view piece(bytes.data(), held + *count);
    const std::size_t valid = text::ValidUtf8Prefix(piece);
    constexpr std::size_t longestCharacter = 4;
    if (piece.size() - valid >= longestCharacter) return false;
    const std::string_view cut = piece.substr(valid);
    std::ranges::copy(cut, bytes.begin()); // forwards: the two may overlap
    held = cut.size();
  }
}

} // namespace

TSolutionLines::TSolutionLines(std::u16string_view fileName, const TKxEvent* stop)
    : fileName_(fileName), stop_(stop), file_(Open(fileName)), lent_(SpareBuffers().Lend()),
      buffer_(std::exchange(*lent_, {})) {
  MakeRoom(BufferSize);
}

TSolutionLines::~TSolutionLines() {
  if (buffer_.Capacity <= LargestSpare) *lent_ = std::move(buffer_);
}

// Thousands of small solutions are read with one buffer.
platform::Spares<TSolutionLines::TBuffer>& TSolutionLines::SpareBuffers() {
  static platform::Spares<TBuffer> spares;
  return spares;
}

int TSolutionLines::LineNumber() const {
  constexpr std::int64_t most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(index_ + emptyAbove_ + 1, most));
}

bool TSolutionLines::Next() {
  ++index_;
  bool more = Step();
  for (; more && index_ == 0 && line_.empty(); more = Step())
    ++emptyAbove_;
  if (!more) line_ = {};
  return more;
}

void TSolutionLines::Rewind() {
  index_ = -1;
  emptyAbove_ = 0;
  begin_ = scanned_ = first_;
  if (!forgotten_) return;
  if (const auto done = file_.Rewind(); !done) throw EKxParseError(done.Message(), fileName_);
  utf16_.clear();
  first_ = begin_ = scanned_ = examined_ = end_ = 0;
  total_ = 0;
  started_ = atEnd_ = forgotten_ = false;
}

bool TSolutionLines::NextBeginningWith(char first) {
  do {
    if (!loneReturns_) PassLinesInBuffer(first);
    if (!Next()) return false;
  } while (!slnsyntax::Trim(line_).starts_with(first));
  return true;
}

// Stops in front of a line that begins so, or whose end is not in the buffer.
void TSolutionLines::PassLinesInBuffer(char first) {
  const char* bytes = buffer_.Bytes.get();
  for (;;) {
    const void* found = std::memchr(bytes + begin_, '\n', end_ - begin_);
    if (found == nullptr) return;
    const auto end = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
    std::size_t at = begin_;
    while (at < end && slnsyntax::IsBlank(bytes[at]))
      ++at;
    if (bytes[at] == first) return;
    begin_ = scanned_ = end + 1;
    ++index_;
  }
}

bool TSolutionLines::Step() {
  for (;;) {
    if (loneReturns_) return StepAtAnyLineEnd();
    const char* bytes = buffer_.Bytes.get();
    const void* found = std::memchr(bytes + scanned_, '\n', end_ - scanned_);
    if (found != nullptr) {
      const auto end = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
      Take(end > begin_ && bytes[end - 1] == '\r' ? end - 1 : end, end + 1);
      return true;
    }
    scanned_ = end_;
    if (!Fill()) return TakeRest();
  }
}

bool TSolutionLines::StepAtAnyLineEnd() {
  for (;;) {
    const char* bytes = buffer_.Bytes.get();
    while (scanned_ < end_ && bytes[scanned_] != '\n' && bytes[scanned_] != '\r')
      ++scanned_;
    const bool whole = scanned_ < end_ && (bytes[scanned_] == '\n' || scanned_ + 1 < end_ || atEnd_);
    if (whole) {
      const bool pair = bytes[scanned_] == '\r' && scanned_ + 1 < end_ && bytes[scanned_ + 1] == '\n';
      Take(scanned_, scanned_ + (pair ? 2 : 1));
      return true;
    }
    if (!Fill() && scanned_ == end_) return TakeRest();
  }
}

bool TSolutionLines::TakeRest() {
  if (begin_ == end_) return false;
  // Nothing follows that could make a pair of it.
  const bool ended = buffer_.Bytes[end_ - 1] == '\r';
  Take(ended ? end_ - 1 : end_, end_);
  return true;
}

void TSolutionLines::Take(std::size_t end, std::size_t next) {
  line_ = {buffer_.Bytes.get() + begin_, end - begin_};
  begin_ = scanned_ = next;
  if (beyondAscii_ && !IsAscii(line_) && IsAnsi()) {
    decoded_ = text::ToUtf8(platform::FromAnsi(line_));
    line_ = decoded_;
  }
}

bool TSolutionLines::IsAnsi() {
  if (!isAnsi_) isAnsi_ = mark_ == text::ByteOrderMark::None && !IsUtf8File(fileName_);
  return *isAnsi_;
}

bool TSolutionLines::Fill() {
  if (!started_) {
    Start();
    return end_ > begin_;
  }
  if (atEnd_) return false;
  RaiseIfStopped(stop_);
  const std::size_t before = end_ - begin_;
  if (begin_ > 0) {
    std::memmove(buffer_.Bytes.get(), buffer_.Bytes.get() + begin_, before);
    scanned_ -= begin_;
    examined_ -= std::min(examined_, begin_);
    end_ = before;
    first_ = begin_ = 0;
    forgotten_ = true;
  }
  if (mark_ == text::ByteOrderMark::Utf16LE || mark_ == text::ByteOrderMark::Utf16BE) {
    while (end_ == before && !atEnd_)
      FillFromUtf16();
  } else {
    if (end_ == buffer_.Capacity) MakeRoom(2 * buffer_.Capacity);
    end_ += Read(buffer_.Bytes.get() + end_, buffer_.Capacity - end_);
  }
  Examine();
  return end_ > before;
}

// The first bytes say what the others are.
void TSolutionLines::Start() {
  RaiseIfStopped(stop_);
  started_ = true;
  end_ = Read(buffer_.Bytes.get(), buffer_.Capacity);
  const std::string_view bytes(buffer_.Bytes.get(), end_);
  mark_ = text::DetectByteOrderMark(bytes);
  first_ = begin_ = scanned_ = examined_ = text::LengthOf(mark_);
  if (mark_ == text::ByteOrderMark::Utf16LE || mark_ == text::ByteOrderMark::Utf16BE) {
    utf16_ = bytes.substr(first_);
    first_ = begin_ = scanned_ = examined_ = end_ = 0;
    FillFromUtf16();
  }
  Examine();
}

void TSolutionLines::FillFromUtf16() {
  if (utf16_.size() < BufferSize) {
    const std::size_t held = utf16_.size();
    utf16_.resize(BufferSize);
    utf16_.resize(held + Read(utf16_.data() + held, BufferSize - held));
  }
  // A unit or a pair of surrogates that the end cuts through waits for its other half.
  const bool little = mark_ == text::ByteOrderMark::Utf16LE;
  std::size_t whole = utf16_.size();
  if (!atEnd_) {
    whole -= whole % 2;
    const bool high = whole >= 2 && (utf16_[whole - (little ? 1 : 2)] & 0xFC) == 0xD8;
    if (high) whole -= 2;
  }
  const std::string_view units(utf16_.data(), whole);
  Append(text::ToUtf8(little ? text::FromUtf16LE(units) : text::FromUtf16BE(units)));
  utf16_.erase(0, whole);
}

void TSolutionLines::Append(std::string_view bytes) {
  if (buffer_.Capacity - end_ < bytes.size()) MakeRoom(std::max(2 * buffer_.Capacity, end_ + bytes.size()));
  std::memcpy(buffer_.Bytes.get() + end_, bytes.data(), bytes.size());
  end_ += bytes.size();
}

void TSolutionLines::MakeRoom(std::size_t wanted) {
  if (wanted <= buffer_.Capacity) return;
  auto bytes = std::make_unique_for_overwrite<char[]>(wanted);
  if (end_ > 0) std::memcpy(bytes.get(), buffer_.Bytes.get(), end_);
  buffer_ = {std::move(bytes), wanted};
}

std::size_t TSolutionLines::Read(char* target, std::size_t size) {
  const auto count = file_.Read(target, size);
  if (!count) throw EKxParseError(count.Message(), fileName_);
  total_ += *count;
  // The size saves a last read of nothing; a file that tells none is read until it ends.
  atEnd_ = *count == 0 || (file_.Size() > 0 && total_ >= file_.Size());
  return *count;
}

void TSolutionLines::Examine() {
  const std::size_t known = std::max(examined_, begin_);
  if (known == end_) return;
  const std::size_t last = end_ - 1;
  const TByteKinds kinds = KindsOf(buffer_.Bytes.get() + known, last - known);
  // One at the end of what was there before has been passed over as part of a line.
  if (kinds.LoneReturn && !loneReturns_) scanned_ = begin_;
  loneReturns_ = loneReturns_ || kinds.LoneReturn;
  beyondAscii_ = beyondAscii_ || kinds.BeyondAscii || !IsAscii({buffer_.Bytes.get() + last, 1});
  examined_ = last; // a CR here is looked at together with what follows it
}

} // namespace kx
