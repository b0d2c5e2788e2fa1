#include "contract/Process.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/Spares.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSNETSLN.Lines.h"
#include "package/solution/VSNETSLN.Model.h"
#include "package/solution/VSNETSLN.Names.h"
#include "package/solution/VSNETSLN.Paths.h"
#include "package/solution/VSNETSLN.Resources.h"
#include "package/solution/VSNETSLN.Syntax.h"

#include <array>

namespace kx {

namespace {

using slnsyntax::Trim;

// Solutions of one run mostly lie in the same folders.
platform::Spares<platform::FileLookup>& Lookups() {
  static platform::Spares<platform::FileLookup> lookups;
  return lookups;
}

std::u16string FullPath(std::u16string_view fileName) {
  return text::IsAbsolutePath(fileName) ? std::u16string(fileName)
                                        : text::ExpandPath(fileName, platform::CurrentDirectory());
}

// Reads one file. Each section reader is called in front of the section's first line and stops on its last
// one; the loop that called it steps over that.
class TSolutionReader {
public:
  enum class TCircles { Order, Refuse, Keep };

  TSolutionReader(std::u16string_view fileName, bool includeProjectsNotFound, const TKxEvent* stop)
      : fileName_(fileName), paths_(text::ExtractFileDir(FullPath(fileName))),
        includeNotFound_(includeProjectsNotFound), stop_(stop), files_(Lookups().Lend()),
        lines_(fileName, stop), projects_(std::make_shared<TVSDotNetProjects>(stop)) {
    files_->Refresh();
  }

  std::shared_ptr<IVSDotNetSolution> Run(TCircles circles) {
    const TVSDotNetVersion version = ReadVersion();
    ReadProjects();
    const bool hasBuildOrder = Sort(circles);
    ReadGlobal();
    const bool passedOver = globalDependencies_ && !projects_->SortUnlessCircular();
    return std::make_shared<TVSDotNetSolution>(fileName_, version, projects_, MakeConfigurations(),
                                               std::move(notFound_), hasBuildOrder, passedOver);
  }

private:
  [[noreturn]] void Fail(std::u16string message) const {
    throw EKxParseError(std::move(message), fileName_, lines_.LineNumber());
  }

  // For lines that must be there.
  void Step() {
    if (!lines_.Next()) FailBehindEnd();
  }
  [[noreturn]] void FailBehindEnd() const {
    Fail(u"List index out of bounds (" + text::FromInteger(lines_.Index()) + u")");
  }
  void SkipTo(std::string_view last) {
    do {
      if (!lines_.NextBeginningWith(last.front())) FailBehindEnd();
    } while (Trim(lines_.Line()) != last);
  }
  void StepTo(std::string_view last, const auto& read) {
    for (Step(); Trim(lines_.Line()) != last; Step())
      read();
  }

  TVSDotNetVersion ReadVersion() {
    Step();
    const auto version = slnsyntax::ReadHeader(lines_.Line());
    if (!version) Fail(u"Invalid Visual Studio Solution Header : " + text::FromUtf8(lines_.Line()));
    return *version;
  }

  bool Sort(TCircles circles) {
    if (circles == TCircles::Keep) return projects_->SortUnlessCircular();
    if (circles == TCircles::Refuse) RefuseCircles();
    projects_->SortByDependancies();
    return true;
  }

  void RefuseCircles() const {
    const auto circles = FindCircles(*projects_);
    if (circles.empty()) return;
    std::u16string ways;
    for (const TVSDotNetCircle& circle : circles)
      ways += (ways.empty() ? u"" : u"; ") + DescribeCircle(circle);
    throw EKxParseError(u"Solution has invalid circular dependancies between : " + ways, fileName_);
  }

  // Stops on the line "Global", which must be there.
  void ReadProjects() {
    while (lines_.Next() && lines_.Line() != "Global") {
      const std::string_view line = Trim(lines_.Line());
      if (line.starts_with("Project(\"")) {
        ReadProject(line.substr(9));
      } else if (line.starts_with("EndProject")) {
        // The end of a project's section looks the same. Dependencies behind any other section have always
        // been lost that way, and build orders rely on it.
        current_ = nullptr;
      } else if (current_ && line.starts_with("ProjectSection(ProjectDependencies)")) {
        ReadDependencies();
      }
    }
  }

  void ReadProject(std::string_view line) {
    cut_.Cut(line);
    const auto declared = slnsyntax::SplitNameValue(cut_.Rest());
    if (!declared || items_.Split(Trim(declared->Value)) < 3) Fail(u"Error parsing project string");
    current_ = nullptr;
    const std::u16string_view path = paths_.Expand(items_[1]);
    const bool onDisk = IsWebProject() || files_->FileExists(path);
    RaiseIfStopped(stop_); // a project may be anywhere, on a slow network too
    auto project = std::make_shared<TVSDotNetProject>(
        text::FromUtf8(items_[0]), text::FromUtf8(items_[1]), text::FromUtf8(items_[2]),
        std::u16string(cut_.Identifier()), onDisk ? ScanForResources(path, *files_) : TProjectResources());
    if (!onDisk) notFound_.push_back(project);
    if (!onDisk && !includeNotFound_) return;
    current_ = std::move(project);
    projects_->Add(current_);
  }

  // Nobody looks for a web project's file.
  bool IsWebProject() const {
    return items_[1].find("http://") != std::string::npos || items_[1].find("https://") != std::string::npos;
  }

  void ReadDependencies() {
    while (lines_.Next()) {
      const std::string_view line = Trim(lines_.Line());
      if (line == "EndProjectSection") return;
      if (const auto dependency = slnsyntax::SplitNameValue(line))
        AddDependency(*current_, dependency->Value);
    }
  }

  void AddDependency(const IVSDotNetProject& project, std::string_view id) const {
    project.GetDependancies()->Add(text::FromUtf8(Trim(id)), lines_.LineNumber());
  }

  void ReadGlobal() {
    if (lines_.Line() != "Global") FailBehindEnd();
    StepTo("EndGlobal", [this] { ReadSection(Trim(lines_.Line())); });
  }

  // A name without its closing bracket would begin the longer ones too.
  void ReadSection(std::string_view line) {
    struct TSection {
      std::string_view Beginning;
      void (TSolutionReader::*Read)();
    };
    static constexpr std::array<TSection, 5> sections{{
        {"GlobalSection(SolutionConfiguration)", &TSolutionReader::ReadSolutionConfigs},
        {"GlobalSection(SolutionConfigurationPlatforms)", &TSolutionReader::ReadSolutionConfigs},
        {"GlobalSection(ProjectConfiguration)", &TSolutionReader::ReadProjectConfigs},
        {"GlobalSection(ProjectConfigurationPlatforms)", &TSolutionReader::ReadProjectConfigs},
        {"GlobalSection(ProjectDependencies)", &TSolutionReader::ReadOldDependencies},
    }};
    for (const TSection& section : sections) {
      if (line.starts_with(section.Beginning)) return (this->*section.Read)();
    }
  }

  // Of several such sections the last one counts.
  void ReadSolutionConfigs() {
    configs_.emplace();
    StepTo("EndGlobalSection", [this] {
      const auto line = slnsyntax::SplitNameValue(lines_.Line());
      if (line && Trim(line->Name) != "Description") configs_->Want(line->Name);
    });
  }

  // A configuration is called what the first line of that name in the whole file says, wherever it stands.
  std::shared_ptr<IVSDotNetSolutionConfigurations> MakeConfigurations() {
    if (!configs_) return nullptr;
    lines_.Rewind();
    while (!configs_->IsComplete() && lines_.Next())
      configs_->Offer(lines_.Line());
    TVSDotNetSolutionConfigurations::TItems items;
    items.reserve(configs_->Count());
    for (std::size_t i = 0; i < configs_->Count(); ++i)
      items.emplace_back(configs_->ValueOf(i));
    return std::make_shared<TVSDotNetSolutionConfigurations>(std::move(items));
  }

  void ReadProjectConfigs() {
    if (projects_->GetCount() == 0) return SkipTo("EndGlobalSection");
    StepTo("EndGlobalSection", [this] {
      IVSDotNetProject* project = CutOwner(Trim(lines_.Line()));
      if (project == nullptr) return;
      const auto config = slnsyntax::ReadProjectConfig(ownerCut_.Rest());
      if (!config) return;
      text::AssignUtf8(solutionConfig_, config->Solution);
      text::AssignUtf8(projectConfig_, config->Project);
      project->AddConfig(solutionConfig_, projectConfig_, config->Active);
    });
  }

  void ReadOldDependencies() {
    StepTo("EndGlobalSection", [this] {
      const IVSDotNetProject* project = CutOwner(Trim(lines_.Line()));
      const auto dependency =
          project != nullptr ? slnsyntax::SplitNameValue(Trim(lines_.Line())) : std::nullopt;
      if (!dependency) return;
      AddDependency(*project, dependency->Value);
      globalDependencies_ = true;
    });
  }

  // The project whose identifier a line begins with; what follows it is the cut's rest. Lines about one
  // project mostly stand together.
  IVSDotNetProject* CutOwner(std::string_view line) {
    if (ownerCut_.Cut(line)) owner_ = projects_->FindByID(ownerCut_.Identifier());
    return owner_.get();
  }

  std::u16string fileName_;
  TProjectPaths paths_;
  bool includeNotFound_;
  const TKxEvent* stop_;
  platform::Spares<platform::FileLookup>::Loan files_;
  TSolutionLines lines_;

  std::shared_ptr<TVSDotNetProjects> projects_;
  std::vector<std::shared_ptr<IVSDotNetProject>> notFound_;
  std::shared_ptr<IVSDotNetProject> current_;
  std::optional<TNamedValues> configs_;
  bool globalDependencies_ = false; // the Global section named some

  slnsyntax::TIdentifierCut cut_;
  slnsyntax::TCommaItems items_;
  slnsyntax::TIdentifierCut
      ownerCut_; // of the latest line in the Global section, and the project it is about
  std::shared_ptr<IVSDotNetProject> owner_;
  std::u16string solutionConfig_; // of the latest line of configurations
  std::u16string projectConfig_;
};

} // namespace

std::shared_ptr<IVSDotNetSolution> OpenSolution(std::u16string_view fileName, bool includeProjectsNotFound,
                                                const TKxEvent* stop) {
  return TSolutionReader(fileName, includeProjectsNotFound, stop).Run(TSolutionReader::TCircles::Order);
}

std::shared_ptr<IVSDotNetSolution> LookAtSolution(std::u16string_view fileName, bool includeProjectsNotFound,
                                                  const TKxEvent* stop) {
  return TSolutionReader(fileName, includeProjectsNotFound, stop).Run(TSolutionReader::TCircles::Refuse);
}

std::shared_ptr<IVSDotNetSolution>
OpenSolutionWithCircles(std::u16string_view fileName, bool includeProjectsNotFound, const TKxEvent* stop) {
  return TSolutionReader(fileName, includeProjectsNotFound, stop).Run(TSolutionReader::TCircles::Keep);
}

} // namespace kx
