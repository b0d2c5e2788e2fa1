#include "foundation/platform/SpoolFile.h"

#include <algorithm>

namespace kx::platform {

namespace {

constexpr std::size_t BlockSize = std::size_t{256} * 1024;

} // namespace

Spool::Spool(std::u16string folder) : folder_(std::move(folder)) {}
Spool::~Spool() = default;

void Spool::Append(std::string_view bytes) {
  if (state_ && buffer_.size() >= BlockSize) Flush(); // before: bytes are taken, or nothing has changed
  if (state_) buffer_ += bytes;
}

void Spool::Flush() {
  if (!file_) {
    auto made = File::Make(folder_);
    if (made) {
      file_ = *std::move(made);
    } else {
      state_ = Failure{made.Message()};
    }
  }
  if (state_) state_ = file_->Append(buffer_);
  if (state_) written_ += buffer_.size();
  buffer_.clear();
}

Status Spool::CopyTo(const PutBytes& put, std::uint64_t begin, std::uint64_t end) const {
  end = std::min(end, Size());
  std::string block;
  for (const std::uint64_t onDisk = std::min(end, written_); begin < onDisk; begin += block.size()) {
    block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(onDisk - begin, BlockSize)));
    if (auto read = file_->Read(begin, block.data(), block.size()); !read) return read;
    if (auto done = put(block); !done) return done;
  }
  if (begin >= end) return Done{};
  return put(std::string_view(buffer_).substr(static_cast<std::size_t>(begin - written_),
                                              static_cast<std::size_t>(end - begin)));
}

} // namespace kx::platform
