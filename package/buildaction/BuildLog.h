// Reads a whole build log, as a tool once wrote it.
#pragma once

#include "package/buildaction/BuildOutputAnalysis.h"

#include <array>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

struct TBuildLogVerdict {
  std::int64_t Errors = 0;
  std::int64_t Warnings = 0;
  bool HasDevEnvSummary = false;
  bool HasMSBuildSummary = false;
  bool Failed = false;                                       // as TBuildOutputAnalysis::HasFailed
  std::array<std::int64_t, 4> Statuses{};                    // messages by TStatusTag
  std::vector<std::pair<TBuildCount, std::int32_t>> Metrics; // in the order sent
};

// One log: feed it line by line, then read the verdict.
class TBuildLog : private IBuildOutputSink {
public:
  using TOnLine = std::function<void(TStatusTag status, std::u16string_view line)>;

  // `onLine`, if any, hears every message with its status.
  TBuildLog(bool isMSBuild, TVSDotNetVersion version, TOnLine onLine = {})
      : onLine_(std::move(onLine)), analysis_({isMSBuild, false, version}, *this) {}
  TBuildLog(const TBuildLog&) = delete;
  TBuildLog& operator=(const TBuildLog&) = delete;

  void Feed(std::u16string_view line) { analysis_.Feed(line); }
  TBuildLogVerdict Verdict() const;

private:
  void Count(TBuildCount what, std::int32_t number) override;
  void Line(std::u16string_view line, TStatusTag status) override;
  void StructuredLine(std::u16string_view /*line*/) override {} // a log is read as plain text

  TOnLine onLine_;
  TBuildLogVerdict verdict_;
  TBuildOutputAnalysis analysis_;
};

} // namespace kx
