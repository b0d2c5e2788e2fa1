#include "program/history/Outcomes.h"

namespace kx::history {

using namespace packing;

namespace {

void Put(std::string& bytes, std::uint64_t value) {
  for (; value > Payload; value >>= 7)
    bytes += static_cast<char>((value & Payload) | More);
  bytes += static_cast<char>(value);
}

} // namespace

std::string PackTests(const std::map<TNumber, TTestOutcome>& tests) {
  std::string bytes;
  TNumber last = 0;
  for (const auto& [number, test] : tests) {
    const auto step = static_cast<std::uint64_t>(number - last);
    Put(bytes, (step << OutcomeBits) | static_cast<std::uint64_t>(test.Outcome));
    Put(bytes, static_cast<std::uint64_t>(std::max<std::int64_t>(test.Elapsed.count(), 0)));
    last = number;
  }
  return bytes;
}

std::string PackNumbers(const std::set<TNumber>& numbers) {
  std::string bytes;
  TNumber last = 0;
  for (const TNumber number : numbers) {
    Put(bytes, static_cast<std::uint64_t>(number - last));
    last = number;
  }
  return bytes;
}

std::set<TNumber> UnpackNumbers(std::string_view bytes) {
  std::set<TNumber> numbers;
  TNumber number = 0;
  while (!bytes.empty()) {
    const auto step = Get(bytes);
    if (!step) break;
    number += static_cast<TNumber>(*step);
    numbers.insert(numbers.end(), number);
  }
  return numbers;
}

} // namespace kx::history
