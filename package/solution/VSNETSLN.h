// The model of one Visual Studio solution (formats of Visual Studio 2002 to 2010) and the one way to get it.
//
// The model is complete when it is handed out and nothing of it is ever written back. Objects live as long as
// a reference to them; none refers back to its solution. A model is used on one thread at a time. A bad index
// gives null or empty text, never an error. Letter case counts unless an operation says otherwise.
#pragma once

#include "contract/Process.h"
#include "foundation/text/StringList.h"
#include "package/solution/VSDotNetVersions.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

class TVSDotNetObject; // base of the classes behind the interfaces

class IVSDotNetObject {
public:
  virtual ~IVSDotNetObject() = default;
  // The object behind the interface, for those who know its class; lives as long as the interface.
  virtual TVSDotNetObject* GetImplementation() = 0;
};

// The identifiers that one project names, as written, duplicates kept.
class IVSDotNetProjectDependancies : public IVSDotNetObject {
public:
  virtual const std::u16string& GetItem(int index) const = 0;
  virtual int GetCount() const = 0;
  virtual const text::TStringList& GetList() const = 0;
  virtual void Add(std::u16string_view id, int line) = 0;
  virtual int GetLine(int index) const = 0;                // of the file, from 1; 0 when no line says it
  virtual bool Contains(std::u16string_view id) const = 0; // letter case ignored
};

// One line of a project's configurations. The name ends at the first "=" of the line, so a solution
// configuration whose own name holds one is found under the part before it.
struct TVSDotNetProjectConfig {
  std::u16string_view Solution;
  std::u16string_view Project;
  bool Active = false; // an ActiveCfg line named the solution configuration
};

class IVSDotNetProject : public IVSDotNetObject {
public:
  virtual const std::u16string& GetName() const = 0;
  virtual const std::u16string& GetFileName() const = 0; // as the solution writes it; a URL for a web project
  virtual const std::u16string& GetProjectID() const = 0;
  virtual const std::u16string& GetProjectTypeID() const = 0;
  virtual std::shared_ptr<IVSDotNetProjectDependancies> GetDependancies() const = 0; // never null
  virtual bool IsVCProject() const = 0;
  // Full paths of the resource scripts that a C++ project compiles, in its order.
  virtual const text::TStringList& GetRCFiles() const = 0;
  // The first of them that holds a version resource, or empty.
  virtual const std::u16string& GetRCWithVersionInfo() const = 0;
  // The first project configuration recorded for a solution configuration stays; `flag` marks it as active.
  virtual void AddConfig(std::u16string_view solutionConfig, std::u16string_view projectConfig,
                         bool flag) = 0;
  // The project configuration for a solution configuration (letter case ignored), empty when there is none:
  // then the project is not built in it. The view lives as long as the project does not change.
  virtual std::u16string_view GetConfig(std::u16string_view solutionConfig) const = 0;
  virtual bool IsActiveConfig(std::u16string_view solutionConfig) const = 0;
  // All that AddConfig has recorded, in its order.
  virtual int GetConfigCount() const = 0;
  virtual TVSDotNetProjectConfig GetConfigItem(int index) const = 0;
};

class IVSDotNetProjects : public IVSDotNetObject {
public:
  virtual std::shared_ptr<IVSDotNetProject> GetItem(int index) const = 0; // in build order
  virtual int GetCount() const = 0;
  virtual std::shared_ptr<IVSDotNetProject> FindByID(std::u16string_view id) const = 0;
  virtual std::shared_ptr<IVSDotNetProject> FindByFileName(std::u16string_view fileName) const = 0;
  // Orders the projects so that each stands behind those it depends on. Raises EKxParseError for two projects
  // that depend on each other. A longer circle has no order: the search for one ends only when the stop
  // source that OpenSolution was given is raised, with EKxException "Action Terminated by User.".
  virtual void SortByDependancies() = 0;
  // The same projects in the order in which the file names them.
  virtual std::shared_ptr<IVSDotNetProject> GetItemInFileOrder(int index) const = 0;
};

class IVSDotNetSolutionConfiguration : public IVSDotNetObject {
public:
  virtual const std::u16string& GetName() const = 0; // "Debug|Any CPU", or "Debug" in the oldest formats
};

class IVSDotNetSolutionConfigurations : public IVSDotNetObject {
public:
  virtual std::shared_ptr<IVSDotNetSolutionConfiguration> GetItem(int index) const = 0;
  virtual int GetCount() const = 0;
};

// A folder of the solution only groups projects; it has no file.
bool IsSolutionFolder(const IVSDotNetProject& project);

class IVSDotNetSolution : public IVSDotNetObject {
public:
  virtual std::shared_ptr<IVSDotNetSolutionConfigurations> GetConfigurations() const = 0; // may be null
  virtual std::shared_ptr<IVSDotNetProjects> GetProjects() const = 0;                     // never null
  virtual const std::u16string& GetName() const = 0;        // always empty: a solution file has no such text
  virtual const std::u16string& GetDescription() const = 0; // likewise
  virtual const std::u16string& GetFileName() const = 0;    // as given to OpenSolution
  virtual TVSDotNetVersion GetVisualStudioVersion() const = 0;
  // In the order of the file, whether or not the model keeps them.
  virtual const std::vector<std::shared_ptr<IVSDotNetProject>>& GetProjectsNotFound() const = 0;
  // False when a circle leaves the projects in the order of the file (OpenSolutionWithCircles).
  virtual bool HasBuildOrder() const = 0;
  // True when dependencies of an old Global section close a circle: the order was made without them.
  virtual bool HasPassedOverCircle() const = 0;
};

// Declared for those who name them; nothing implements them.
class IVSDotNetSolutionContext : public IVSDotNetObject {};
class IVSDotNetSolutionContexts : public IVSDotNetObject {};
class IVSDotNetProjectConfiguration : public IVSDotNetObject {};
class IVSDotNetProjectConfigurations : public IVSDotNetObject {};

// Projects that need each other: each needs the next one, the last one the first.
using TVSDotNetCircle = std::vector<std::shared_ptr<IVSDotNetProject>>;
// Circles of two projects or more, none sharing a project with another; there are some exactly when the
// projects have no order. A project that needs itself is no circle.
std::vector<TVSDotNetCircle> FindCircles(const IVSDotNetProjects& projects);
std::u16string DescribeCircle(const TVSDotNetCircle& circle); // "A needs B, B needs A"

// Reads a solution and the C++ projects that it names. A project whose file is missing is left out unless
// `includeProjectsNotFound` is set; a web project ("http://", "https://") is always there. Projects come out
// in the order of their dependencies; those that the Global section of the oldest formats adds count too,
// unless they close a circle.
//
// Raises EKxParseError for a file that cannot be read or is no solution, with the file and, where there is
// one, the line as extra fields; nothing is handed out then. `stop` is looked at now and then, and kept by
// the model for SortByDependancies: it must outlive the model. Once raised, the load ends with EKxException
// "Action Terminated by User.".
std::shared_ptr<IVSDotNetSolution> OpenSolution(std::u16string_view fileName, bool includeProjectsNotFound,
                                                const TKxEvent* stop = nullptr);
// The same for those who show a solution to a person: a circle, which OpenSolution would try to put in order
// until it is stopped, raises EKxParseError that names its way.
std::shared_ptr<IVSDotNetSolution> LookAtSolution(std::u16string_view fileName, bool includeProjectsNotFound,
                                                  const TKxEvent* stop = nullptr);
// The same for those who show circles themselves: they refuse nothing.
std::shared_ptr<IVSDotNetSolution> OpenSolutionWithCircles(std::u16string_view fileName,
                                                           bool includeProjectsNotFound,
                                                           const TKxEvent* stop = nullptr);

} // namespace kx
