#include "program/editor/EventSpool.h"

#include "foundation/platform/Files.h"

#include <algorithm>
#include <filesystem>

namespace kx::editor {

TEventSpool::~TEventSpool() {
  file_.close(); // before its folder is removed
}

void TEventSpool::Append(std::string_view line) {
  if (!failure_.empty()) line = {}; // its number stays
  newest_ += line;
  ends_.push_back(written_ + newest_.size());
  if (newest_.size() >= MostInMemory) Write();
}

bool TEventSpool::Open() {
  if (file_.is_open()) return true;
  auto folder = platform::PrivateFolder::Create();
  if (!folder) {
    Fail(folder.Message());
    return false;
  }
  folder_ = *std::move(folder);
  const auto name = platform::CreateTemporaryFile(folder_->Path(), u"log-");
  if (!name) {
    Fail(name.Message());
    return false;
  }
  using std::ios;
  file_.open(std::filesystem::path(platform::ResolveForWriting(*name)),
             ios::in | ios::out | ios::binary | ios::trunc);
  return true;
}

void TEventSpool::Write() {
  if (!Open()) return;
  file_.seekp(0, std::ios::end);
  file_.write(newest_.data(), static_cast<std::streamsize>(newest_.size()));
  if (!file_.flush()) return Fail(u"The file for the lines of the log could not be written.");
  written_ += newest_.size();
  newest_.clear();
}

// What is on the disk stays; what is not is lost.
void TEventSpool::Fail(std::u16string reason) {
  failure_ = std::move(reason);
  newest_ = {};
  file_.clear();
  for (auto end = ends_.rbegin(); end != ends_.rend() && *end > written_; ++end)
    *end = written_;
}

std::string TEventSpool::Bytes(std::uint64_t begin, std::uint64_t end) {
  std::string bytes;
  if (begin < written_) {
    const std::uint64_t last = std::min(end, written_);
    bytes.resize(static_cast<std::size_t>(last - begin));
    file_.seekg(static_cast<std::streamoff>(begin));
    file_.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
    file_.clear();
  }
  const std::uint64_t first = std::max(begin, written_) - written_;
  if (end > written_)
    bytes.append(newest_, static_cast<std::size_t>(first), static_cast<std::size_t>(end - written_ - first));
  return bytes;
}

std::string TEventSpool::Lines(std::size_t from, std::size_t bytes, std::size_t& next) {
  from = std::min(from, Count());
  const std::uint64_t begin = BeginOf(from);
  const auto end =
      std::upper_bound(ends_.begin() + static_cast<std::ptrdiff_t>(from), ends_.end(), begin + bytes);
  next = std::min(std::max(static_cast<std::size_t>(end - ends_.begin()), from + 1), Count());
  const std::string text = Bytes(begin, BeginOf(next));
  std::string joined;
  joined.reserve(text.size() + next - from);
  for (std::size_t number = from; number < next; ++number) {
    const std::uint64_t at = BeginOf(number) - begin;
    const std::uint64_t size = ends_[number] - BeginOf(number);
    if (size == 0 || at + size > text.size()) continue;
    if (!joined.empty()) joined += ',';
    joined.append(text, static_cast<std::size_t>(at), static_cast<std::size_t>(size));
  }
  return joined;
}

std::optional<std::string> TEventSpool::Line(std::size_t number) {
  if (number >= Count()) return std::nullopt;
  std::string line = Bytes(BeginOf(number), ends_[number]);
  if (line.empty()) return std::nullopt;
  return line;
}

} // namespace kx::editor
