// Logs of runs (JsonLinesSink.h), read to make of them what the runs themselves would have made.
#pragma once

#include "foundation/platform/Result.h"
#include "program/runner/Events.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kx {

// Reads logs one after the other and makes one run of them: what failed in one has failed, what was found in
// two is one finding, and the time is from the first beginning to the last end.
class TRunLogs {
public:
  // Hands over the events of a log, the end of its run apart. A log that ends before its run did (it was
  // killed, or the disk was full) makes a failed run, with a finding that says so. Fails for what is no log
  // of a run, with file and line.
  platform::Status Read(std::u16string_view fileName, const std::function<void(const TRunEvent&)>& handle);
  TRunReport Take(); // once something was read; then the logs are done with

private:
  void Merge(TRunReport run);

  std::optional<TRunReport> merged_;
  std::unordered_map<std::u16string, std::size_t> places_; // of its findings, by fingerprint
  std::int64_t messages_ = 0;                              // in all logs so far
};

} // namespace kx
