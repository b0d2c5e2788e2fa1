#include "foundation/platform/LineSplitter.h"

#include <algorithm>
#include <utility>

namespace kx::platform {

LineSplitter::LineSplitter(Sink sink, std::size_t limit) : sink_(std::move(sink)), limit_(limit) {}

void LineSplitter::Feed(std::string_view block) {
  while (!block.empty()) {
    const std::size_t end = block.find('\n');
    if (end == std::string_view::npos) return Keep(block);
    if (pending_.empty() && end <= limit_) {
      Deliver(block.substr(0, end));
    } else {
      Keep(block.substr(0, end));
      Deliver(pending_);
      pending_.clear();
    }
    block.remove_prefix(end + 1);
  }
}

void LineSplitter::Finish() {
  if (!pending_.empty()) sink_(pending_);
  pending_.clear();
}

void LineSplitter::Deliver(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  sink_(line);
}

void LineSplitter::Keep(std::string_view part) {
  pending_.append(part);
  while (pending_.size() > limit_) {
    std::size_t cut = limit_;
    const std::size_t least = cut - std::min<std::size_t>(cut - 1, 3);
    while (cut > least && (static_cast<unsigned char>(pending_[cut]) & 0xC0U) == 0x80U)
      --cut;
    sink_(std::string_view(pending_).substr(0, cut));
    pending_.erase(0, cut);
  }
}

} // namespace kx::platform
