// What became of many things in one run, in as few bytes as can be: hundreds of tests in each of thousands of
// runs are read at once.
#pragma once

#include "program/runner/Past.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace kx::history {

using TNumber = std::int64_t; // by which the file knows a test, a finding, a name

struct TTestOutcome {
  TPastTest Outcome = TPastTest::Absent;
  std::chrono::milliseconds Elapsed{0};
};

std::string PackTests(const std::map<TNumber, TTestOutcome>& tests);
std::string PackNumbers(const std::set<TNumber>& numbers);

std::set<TNumber> UnpackNumbers(std::string_view bytes); // bytes that mean nothing end it

namespace packing {

// Seven bits a byte, the lowest first; the eighth says that more follow. A number follows the last one by a
// small step, so that one byte is nearly always enough.
inline constexpr std::uint64_t Payload = 0x7F;
inline constexpr std::uint64_t More = 0x80;
inline constexpr int OutcomeBits = 2;
inline constexpr std::uint64_t OutcomeMask = (1U << OutcomeBits) - 1;

inline std::optional<std::uint64_t> Get(std::string_view& bytes) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; !bytes.empty() && shift < 64; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    value |= (byte & Payload) << shift;
    if ((byte & More) == 0) return value;
  }
  return std::nullopt;
}

} // namespace packing

// Calls `on` with number and outcome of each in ascending order; here, since millions of them are read at
// once.
template <typename TOn>
void UnpackTests(std::string_view bytes, const TOn& on) {
  TNumber number = 0;
  while (!bytes.empty()) {
    const auto step = packing::Get(bytes);
    const auto elapsed = packing::Get(bytes);
    if (!step || !elapsed) return;
    number += static_cast<TNumber>(*step >> packing::OutcomeBits);
    on(number, {static_cast<TPastTest>(*step & packing::OutcomeMask),
                std::chrono::milliseconds(static_cast<std::int64_t>(*elapsed))});
  }
}

} // namespace kx::history
