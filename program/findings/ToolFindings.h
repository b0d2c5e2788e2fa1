// What a tool's output says is wrong, gathered line by line.
#pragma once

#include "program/findings/FindingList.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kx {

class TToolFindings {
public:
  explicit TToolFindings(TFindingList& list) : list_(&list) {}

  void BeginTool() { headings_.clear(); } // another output begins
  // `context` says the configuration and action that the line belongs to, where they are known. devenv names
  // project and configuration in a heading, "2>------ ...: Project: App, Configuration: Release|Win32
  // ------". How severe the finding is that the line is; nothing for any other line.
  std::optional<TFindingSeverity> Read(std::u16string_view line, const TFinding& context = {});

private:
  struct THeading {
    std::u16string Project;
    std::u16string Configuration;
  };

  TFindingList* list_;
  std::map<int, THeading> headings_; // by the number of the build that their lines begin with
};

} // namespace kx
