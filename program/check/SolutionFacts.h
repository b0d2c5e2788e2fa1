// All that a solution file says, with the line of everything: what the package's reader passes over, too.
#pragma once

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kx::check {

struct TLineText {
  std::u16string Text;
  int Line = 0; // from 1
};

// "{id}.Debug|Any CPU.ActiveCfg = Debug|x86"
struct TMapping {
  std::u16string Solution;
  std::u16string Project;
  bool IsActive = false; // ActiveCfg; else Build.0
  int Line = 0;
};

struct TSolutionProject {
  std::u16string Name;
  std::u16string Path; // as the solution writes it
  std::u16string Id;
  std::u16string TypeId;
  int Line = 0;
  std::vector<TLineText> Needs = {};   // the identifiers of its own section
  std::vector<TMapping> Mappings = {}; // those of the Global section, in its order
  std::u16string Folder = {};          // the identifier of the solution folder that it lies in

  bool IsFolder() const;  // only groups others
  bool IsWebSite() const; // a folder or an address, without a project file
  bool IsFile() const { return !IsFolder() && !IsWebSite(); }
};

// A line of the Global section of the oldest formats: "{owner}.0 = {needed}".
struct TOldNeed {
  std::u16string Owner;
  std::u16string Needed;
  int Line = 0;
};

// Bytes that are no UTF-8; UTF-8 that nothing says to be that; letters that some program has lost.
enum class TTextDoubt { None, Ansi, Unmarked, Lost };

struct TSolutionFacts {
  std::u16string File;   // the full path
  std::u16string Folder; // of it
  std::u16string Error;  // why it cannot be read; then all else is empty
  text::ByteOrderMark Mark = text::ByteOrderMark::None;
  TTextDoubt Doubt = TTextDoubt::None;
  int DoubtLine = 0;

  std::vector<TLineText> Headers; // the numbers of the formats: "11.00"
  TLineText Product;              // "Visual Studio 2010", of the comment behind the header
  std::vector<TSolutionProject> Projects;
  std::vector<TLineText> BadProjects; // lines that begin one and say too little
  std::vector<TLineText> Configurations;
  std::vector<TLineText> NotClosed;  // what was opened there: "Project App"
  std::vector<TLineText> NotOpened;  // "EndProject"
  std::vector<TLineText> MergeMarks; // "<<<<<<< mine"
  std::vector<TOldNeed> OldNeeds;
  // By identifier: the first project that has it.
  std::unordered_map<std::u16string, std::size_t, text::IgnoreCaseHash, text::IgnoreCaseEqual> Places;
  int GlobalLine = 0;    // of the first Global section; 0 where there is none
  int LineBehindEnd = 0; // of the first text behind EndGlobal

  std::int32_t Format() const;                                // 11; 0 where no header says it
  const TSolutionProject* Find(std::u16string_view id) const; // the first; letter case is ignored
};

TSolutionFacts ReadSolutionFacts(const std::u16string& file);

} // namespace kx::check
