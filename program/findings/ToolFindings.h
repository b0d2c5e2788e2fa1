// What a tool's output says is wrong, gathered line by line.
#pragma once

#include "program/findings/FindingList.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

// "2>------ Build started: Project: App, Configuration: Release|Win32 ------" of devenv, in any language.
struct TToolHeading {
  std::u16string What = {}; // "Build started"
  std::u16string Project = {};
  std::u16string Configuration = {};
};
std::optional<TToolHeading> ReadToolHeading(std::u16string_view line);

class TToolFindings {
public:
  explicit TToolFindings(TFindingList& list) : list_(&list) {}

  void BeginTool() { headings_.clear(); } // another output begins
  // Headings of devenv name project and configuration of what comes; `complete` sets what else is known of
  // the finding that a line is. How severe that is; nothing for any other line.
  std::optional<TFindingSeverity> Read(std::u16string_view line,
                                       const std::function<void(TFinding&)>& complete = {});

private:
  TFindingList* list_;
  std::map<int, TToolHeading> headings_; // by the number of the build that their lines begin with
};

} // namespace kx
