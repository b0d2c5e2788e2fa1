// What a tool's output says is wrong, gathered line by line.
#pragma once

#include "program/findings/FindingList.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

class TToolFindings {
public:
  explicit TToolFindings(TFindingList& list) : list_(&list) {}

  void BeginTool() { headings_.clear(); } // another output begins
  // devenv names project and configuration in a heading, "2>------ ...: Project: App, Configuration:
  // Release|Win32 ------"; `complete` sets what else is known of the finding that a line is. How severe that
  // is; nothing for any other line.
  std::optional<TFindingSeverity> Read(std::u16string_view line,
                                       const std::function<void(TFinding&)>& complete = {});

private:
  struct THeading {
    std::u16string Project;
    std::u16string Configuration;
  };

  TFindingList* list_;
  std::map<int, THeading> headings_; // by the number of the build that their lines begin with
};

} // namespace kx
