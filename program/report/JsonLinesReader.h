// Logs of runs (JsonLinesSink.h), read to make of them what the runs themselves would have made.
#pragma once

#include "foundation/platform/Result.h"
#include "program/runner/Events.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace kx {

// Hands over the events of a log, the end of its run apart, and gives the run. `messages` is how many stand
// in front of its own where it is shown, and counts on. A log that ends before its run did (it was killed, or
// the disk was full) makes a failed run, with a finding that says so; what was open there has failed. Fails
// for what is no log of a run, with file and line.
platform::Result<TRunReport> ReadRunLog(std::u16string_view fileName, std::int64_t& messages,
                                        const std::function<void(const TRunEvent&)>& handle);

} // namespace kx
