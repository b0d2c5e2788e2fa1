// Unit-test results as the host keeps them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kx {

using TKxDateTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::milliseconds>;

struct TKxUnitTestResult {
  bool Passed = false;
  bool Executed = false;
  std::u16string TestName;
  std::u16string ErrorMessage;
  std::u16string StackTrace;
  std::int64_t Duration = 0; // milliseconds
  std::optional<TKxDateTime> StartTime;
  std::optional<TKxDateTime> EndTime;
};

} // namespace kx
