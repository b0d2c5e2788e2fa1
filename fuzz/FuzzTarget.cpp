#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace kx::fuzz {

namespace {

std::vector<TTarget>& Registered() {
  static std::vector<TTarget> targets;
  return targets;
}

} // namespace

TRegistration::TRegistration(TTarget target) {
  Registered().push_back(target);
}

const std::vector<TTarget>& Targets() {
  return Registered();
}

void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "This does not hold: %s\n", property);
  std::abort();
}

unsigned TInput::Below(unsigned limit) {
  if (rest_.empty()) return 0;
  const auto byte = static_cast<unsigned char>(rest_.front());
  rest_.remove_prefix(1);
  return (byte >= '0' && byte <= '9' ? byte - '0' : byte) % limit;
}

std::string_view TInput::Until(std::string_view mark) {
  const std::size_t end = std::min(rest_.find(mark), rest_.size());
  const std::string_view part = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + mark.size(), rest_.size()));
  return part;
}

} // namespace kx::fuzz
