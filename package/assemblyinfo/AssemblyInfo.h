// Rewriting of AssemblyInfo source files: attributes of the assembly in C#, Visual Basic, C++/CLI, J# and F#.
//
// Sources of the rules: the language references of the five, and for J# "/** @assembly Name(arguments) */".
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

// Sets attributes of the file that is being processed; they are written when OnProcessFile returns. The name
// is that of the attribute without "Attribute"; the last value set for a name counts. Versions lose their
// empty parts at the end; one that no compiler takes (CheckAssemblyVersion) raises EKxException.
class IAssemblyInfoAttributes {
public:
  virtual ~IAssemblyInfoAttributes() = default;
  virtual void SetAttribute(std::u16string_view name, std::u16string_view value) = 0;
};

// The action that stamps, as the processor sees it.
class IAssemblyInfoCallback {
public:
  virtual ~IAssemblyInfoCallback() = default;
  virtual void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) = 0;
  // For each attribute that has its value in the file now, in the order of setting. Called once the file is
  // written.
  virtual void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) = 0;
  // What the user should know; a text that begins "Warning : " tells of something not done, or not as the
  // author of the file may expect.
  virtual void AssemblyInfoProcessMessage(std::u16string_view text) = 0;
};

// One assembly: a project and the sources that are compiled into it.
struct TAssemblyInfoUnit {
  std::u16string Name;
  std::vector<std::u16string> Sources;   // full paths
  std::vector<std::u16string> Generated; // attributes that its build writes by itself
};

// The assemblies that may share sources. What is handed out lives as long as the object.
class IAssemblyInfoUnits {
public:
  virtual ~IAssemblyInfoUnits() = default;
  virtual const TAssemblyInfoUnit& Current() = 0; // the one whose AssemblyInfo file is processed
  // All that the source is part of.
  virtual std::vector<const TAssemblyInfoUnit*> UnitsOf(std::u16string_view source) = 0;
  // Whether it is the AssemblyInfo file of one that is stamped.
  virtual bool IsAssemblyInfoFile(std::u16string_view source) = 0;
};

// What was written for whom. Kept over a whole run, it lets somebody be told that a source which several
// projects share gets one value after the other.
struct TAssemblyInfoHistory {
  struct TEntry {
    std::u16string Value;
    std::u16string Unit;
  };
  std::map<std::pair<std::u16string, std::u16string>, TEntry>
      Entries; // by file, in lower case, and attribute
};

// Changes the value of each attribute that is set, however it is spelled, and leaves every other byte alone:
// encoding, byte-order mark, line ends, indentation. A file that has the values already is not touched.
//
// - An argument that is not one string literal is replaced as a whole, with a message.
// - Text in comments, in strings and in blocks that a condition switches off is none of its business. An
//   attribute under a condition that depends on symbols of the project stays as it is, with a message, and
//   is not added once more.
// - Where the assemblies are known, an attribute that the file lacks but another source of the same assembly
//   has is changed there, with a message.
// - A missing attribute of System.Reflection is added to the file, or, where the assembly shares a source
// that
//   is the AssemblyInfo file of others, to that one: else they would have it twice. It comes on a line of its
//   own behind the last attribute of the assembly, in that one's style, with the import that it needs; in a
//   file without any import it is written with its namespace.
// - Other attributes (AssemblyComment, which is none of the .NET framework's) are changed where the file has
//   them. Where it has not they are not added, since the file would no longer compile; a message says so.
// - A file in ASCII that gets other characters becomes UTF-8. A value that the file's encoding cannot hold
//   is an error and the file stays.
class IBrannicAssemblyInfoUpdater {
public:
  virtual ~IBrannicAssemblyInfoUpdater() = default;
  virtual void SetCallback(IAssemblyInfoCallback& callback) = 0; // which outlives the updater
  // Both may be null; else they live until others are set. Without units a file is all there is.
  virtual void SetUnits(IAssemblyInfoUnits* units, TAssemblyInfoHistory* history) = 0;
  // Asks the callback for the values, and with `write` changes the file (the old or the new content stands,
  // whatever happens); without, all is reported as if it had. The language goes by the extension; a file of
  // another gives a message only. Raises EKxException that names the file and the reason.
  virtual void ProcessFile(std::u16string_view fileName, bool write) = 0;
};

class TBrannicAssemblyInfo {
public:
  static std::shared_ptr<IBrannicAssemblyInfoUpdater> Create();
};

} // namespace kx
