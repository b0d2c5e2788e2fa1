// The versions that the sources of a project state, and what is special about its resource scripts.
#pragma once

#include "program/check/DiskNames.h"
#include "program/check/ProjectFacts.h"

#include <optional>
#include <string>
#include <vector>

namespace kx::check {

struct TStatedAttribute {
  std::u16string Name; // "AssemblyVersion"
  std::u16string Value;
  std::u16string File; // the full path
  int Line = 0;
};

struct TScriptFacts {
  std::u16string File; // the full path
  int Line = 0;        // of the version block
  std::u16string Error = {};
  std::u16string FileVersion = {};             // "1.2.3.4"
  std::optional<std::u16string> TooLarge = {}; // which numbers a version resource cannot hold
  bool IsSeen = true;                          // by Windows, as the version of the file
  std::vector<std::u16string> Losses = {};     // by a rewriting of the block that asks for nothing
};

struct TVersionFacts {
  std::vector<TStatedAttribute> Attributes;  // of System.Reflection, those that are compiled for certain
  std::vector<std::u16string> AssemblyInfos; // the full paths of the files of that name that are compiled
  std::vector<TScriptFacts> Scripts;         // those with a version block
};

// Reads the AssemblyInfo files and the resource scripts of a project, where they are there.
TVersionFacts ReadVersionFacts(const TProjectFacts& project, TDiskNames& disk);

} // namespace kx::check
