// What became of many things in one run, in as few bytes as can be: hundreds of tests in each of thousands of
// runs are read at once.
#pragma once

#include "program/runner/Past.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
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

// Calls `on` for each in ascending order. Bytes that mean nothing end it.
void UnpackTests(std::string_view bytes, const std::function<void(TNumber, const TTestOutcome&)>& on);
std::set<TNumber> UnpackNumbers(std::string_view bytes);

} // namespace kx::history
