// What the file of a project says, with the line of everything: projects of Visual Studio 2002 and 2003, C++
// projects and those of MSBuild.
#pragma once

#include "foundation/text/Text.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kx::check {

enum class TProjectForm { None, MSBuild, Cpp, Old }; // the last: C#, Visual Basic and J# of 2002 and 2003

struct TListedFile {
  std::u16string Path; // as the project writes it
  std::u16string Kind; // "Compile", "ClCompile", ...; lower-case extension in C++ projects before 2010
  int Line = 0;
  bool IsUsed = true; // whatever the configuration: under no condition, left out of none
};

struct TProjectReference {
  std::u16string Path; // empty where only the identifier is known
  std::u16string Id;
  int Line = 0;
};

struct TProjectFacts {
  std::u16string File;   // the full path
  std::u16string Folder; // of it
  std::u16string Error;  // why it cannot be read
  int ErrorLine = 0;
  TProjectForm Form = TProjectForm::None;
  bool IsSdkStyle = false; // of the newer tools, which find sources by themselves
  // "Debug|AnyCPU", "Debug" in the oldest formats. Empty where the file does not name them all.
  std::set<std::u16string, text::IgnoreCaseLess> Configurations;
  std::vector<TListedFile> Sources; // what is compiled or embedded; no wildcards, nothing with variables
  std::vector<TListedFile> Hints;   // the places of referenced assemblies
  std::vector<TProjectReference> References;
  std::u16string Framework; // "v3.5"; empty where it says none
  int FrameworkLine = 0;

  bool IsManaged() const; // C#, Visual Basic, J#, F#
};

// Reads the file once. What is no XML, and XML of another kind, has the form None; only a file that its name
// makes a project of XML has an error then.
TProjectFacts ReadProjectFacts(const std::u16string& file);

} // namespace kx::check
