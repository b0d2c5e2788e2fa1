// One thing that is wrong, whoever found it: a tool, a test, a rule of the verdict, a check of a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

enum class TFindingSeverity { Note, Warning, Error };

const char* WordOf(TFindingSeverity severity);               // "note", "warning", "error"
TFindingSeverity ReadFindingSeverity(std::string_view word); // the reverse; Error for another word

struct TFindingPlace {
  std::u16string File = {}; // as the tool wrote it, or the path that was checked; empty when none is known
  int Line = 0;             // from 1; 0 when only the file is known
  int Column = 0;           // from 1, in UTF-16 code units; 0 when unknown

  friend bool operator==(const TFindingPlace&, const TFindingPlace&) = default;
};

// One step of a finding that needs several places to be told, such as an edge of a circle.
struct TFindingStep {
  TFindingPlace Place;
  std::u16string Message;
};

struct TFinding {
  // Lower-case words with hyphens for rules of this program ("solution-cycle"), the tool's own code for what
  // a tool says ("CS0168"); never empty.
  std::u16string Rule = {};
  TFindingSeverity Severity = TFindingSeverity::Warning;
  std::u16string Message = {}; // one line, without place, severity and code
  TFindingPlace Place = {};
  std::u16string Code = {};          // that the tool gave it: "CS0168"; else empty
  std::u16string Project = {};       // the first that had it; so for the next two
  std::u16string Configuration = {}; // "Release|Any CPU"
  std::u16string Action = {};        // the user's name of it, with its pass
  int Occurrences = 1;               // in all projects, configurations and channels
  std::u16string Fingerprint = {};   // the same for the same finding in other runs, folders and machines
  std::u16string Advice = {};        // what to do about it; empty when the message says all
  std::vector<TFindingStep> Steps = {};
  std::int64_t Said = 0; // the message of the run that told it first, counted from 1; 0 for none
};

std::u16string OneLine(std::u16string_view text); // its lines, trimmed, with a blank between them

// "file(line,column): error CS0103: message", as compilers write it; places and codes that are not known are
// left out.
std::u16string TextOf(const TFinding& finding);

} // namespace kx
