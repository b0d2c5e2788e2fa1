#include "program/history/Outcomes.h"

#include <optional>

namespace kx::history {

namespace {

// Seven bits a byte, the lowest first; the eighth says that more follow. A number follows the last one by a
// small step, so that one byte is nearly always enough.
constexpr std::uint64_t Payload = 0x7F;
constexpr std::uint64_t More = 0x80;
constexpr int OutcomeBits = 2;
constexpr std::uint64_t OutcomeMask = (1U << OutcomeBits) - 1;

void Put(std::string& bytes, std::uint64_t value) {
  for (; value > Payload; value >>= 7)
    bytes += static_cast<char>((value & Payload) | More);
  bytes += static_cast<char>(value);
}

std::optional<std::uint64_t> Get(std::string_view& bytes) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; !bytes.empty() && shift < 64; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    value |= (byte & Payload) << shift;
    if ((byte & More) == 0) return value;
  }
  return std::nullopt;
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

void UnpackTests(std::string_view bytes, const std::function<void(TNumber, const TTestOutcome&)>& on) {
  TNumber number = 0;
  while (!bytes.empty()) {
    const auto step = Get(bytes);
    const auto elapsed = Get(bytes);
    if (!step || !elapsed) return;
    number += static_cast<TNumber>(*step >> OutcomeBits);
    on(number, {static_cast<TPastTest>(*step & OutcomeMask),
                std::chrono::milliseconds(static_cast<std::int64_t>(*elapsed))});
  }
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
