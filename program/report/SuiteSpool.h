// The unit tests of a run, put aside until its end.
#pragma once

#include "foundation/platform/Spool.h"
#include "program/runner/TestSuites.h"

#include <functional>
#include <vector>

namespace kx {

class TSuiteSpool {
public:
  explicit TSuiteSpool(const std::u16string& folder) : xml_(folder) {}

  void Append(std::u16string_view suite); // XML; what is no suite is left out when it is read
  bool IsEmpty() const { return ends_.empty(); }
  std::size_t Count() const { return ends_.size(); }
  // One after the other, in their order: a run may have more tests than memory.
  platform::Status ForEach(const std::function<void(const TReportedSuite&)>& visit) const;

private:
  platform::Spool xml_;
  std::vector<std::uint64_t> ends_;
};

} // namespace kx
