// The classes behind the solution's interfaces. Made by the reader, and by those who have read a solution
// by themselves and want its order.
#pragma once

#include "foundation/text/Text.h"
#include "package/solution/VSNETSLN.NameIndex.h"
#include "package/solution/VSNETSLN.Resources.h"
#include "package/solution/VSNETSLN.h"

#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kx {

class TVSDotNetObject {
public:
  virtual ~TVSDotNetObject() = default;
};

template <typename TInterface>
class TVSDotNetImplementation : public TVSDotNetObject, public TInterface {
public:
  TVSDotNetObject* GetImplementation() final { return this; }
};

// The item, or null behind either end.
template <typename T>
std::shared_ptr<T> ItemAt(const std::vector<std::shared_ptr<T>>& items, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < items.size() ? items[static_cast<std::size_t>(index)]
                                                                      : nullptr;
}

class TVSDotNetProjectDependancies final : public TVSDotNetImplementation<IVSDotNetProjectDependancies> {
public:
  const std::u16string& GetItem(int index) const override { return list_[static_cast<std::size_t>(index)]; }
  int GetCount() const override { return static_cast<int>(list_.Count()); }
  const text::TStringList& GetList() const override { return list_; }
  void Add(std::u16string_view id, int line) override {
    list_.Add(id);
    lines_.push_back(line);
  }
  int GetLine(int index) const override {
    return index >= 0 && index < GetCount() ? lines_[static_cast<std::size_t>(index)] : 0;
  }
  bool Contains(std::u16string_view id) const override { return list_.IndexOf(id).has_value(); }

private:
  text::TStringList list_;
  std::vector<int> lines_;
};

// Lines "solution configuration=project configuration", each with its flag, found by name without regard to
// letter case. The name of a line ends at its first "=".
class TProjectConfigList {
public:
  TProjectConfigList() = default;
  TProjectConfigList(const TProjectConfigList&) = delete;
  TProjectConfigList& operator=(const TProjectConfigList&) = delete;

  void Add(std::u16string_view solutionConfig, std::u16string_view projectConfig, bool flag);
  std::optional<TVSDotNetProjectConfig> Find(std::u16string_view solutionConfig) const;
  std::size_t Count() const { return lines_.size(); }
  TVSDotNetProjectConfig operator[](std::size_t index) const;

private:
  struct TLine {
    std::size_t Start;
    std::size_t Length;
    std::size_t NameLength;
    bool Flag;
  };
  std::u16string_view TextOf(const TLine& line) const {
    return std::u16string_view(text_).substr(line.Start, line.Length);
  }
  std::u16string_view NameOf(std::size_t line) const {
    return TextOf(lines_[line]).substr(0, lines_[line].NameLength);
  }
  std::optional<std::size_t> IndexOf(std::u16string_view name) const;
  void Index(std::size_t line);

  std::u16string text_; // of all lines: a text of its own for each would cost more than it says
  std::vector<TLine> lines_;
  std::unique_ptr<TNameIndex> index_; // once there are many lines
};

class TVSDotNetProject final : public TVSDotNetImplementation<IVSDotNetProject> {
public:
  TVSDotNetProject(std::u16string name, std::u16string fileName, std::u16string id, std::u16string typeId,
                   TProjectResources resources)
      : name_(std::move(name)), fileName_(std::move(fileName)), id_(std::move(id)),
        typeId_(std::move(typeId)), resources_(std::move(resources)) {}

  const std::u16string& GetName() const override { return name_; }
  const std::u16string& GetFileName() const override { return fileName_; }
  const std::u16string& GetProjectID() const override { return id_; }
  const std::u16string& GetProjectTypeID() const override { return typeId_; }
  std::shared_ptr<IVSDotNetProjectDependancies> GetDependancies() const override { return dependancies_; }
  bool IsVCProject() const override;
  const text::TStringList& GetRCFiles() const override { return resources_.Files; }
  const std::u16string& GetRCWithVersionInfo() const override { return resources_.WithVersionInfo; }
  void AddConfig(std::u16string_view solutionConfig, std::u16string_view projectConfig, bool flag) override;
  std::u16string_view GetConfig(std::u16string_view solutionConfig) const override;
  bool IsActiveConfig(std::u16string_view solutionConfig) const override;
  int GetConfigCount() const override { return static_cast<int>(configs_.Count()); }
  TVSDotNetProjectConfig GetConfigItem(int index) const override;

private:
  std::u16string name_;
  std::u16string fileName_;
  std::u16string id_;
  std::u16string typeId_;
  std::shared_ptr<TVSDotNetProjectDependancies> dependancies_ =
      std::make_shared<TVSDotNetProjectDependancies>();
  TProjectResources resources_;
  TProjectConfigList configs_;
};

class TVSDotNetProjects final : public TVSDotNetImplementation<IVSDotNetProjects> {
public:
  explicit TVSDotNetProjects(const TKxEvent* stop) : stop_(stop) {}
  void Add(std::shared_ptr<IVSDotNetProject> project);

  std::shared_ptr<IVSDotNetProject> GetItem(int index) const override { return ItemAt(projects_, index); }
  int GetCount() const override { return static_cast<int>(projects_.size()); }
  std::shared_ptr<IVSDotNetProject> FindByID(std::u16string_view id) const override;
  std::shared_ptr<IVSDotNetProject> FindByFileName(std::u16string_view fileName) const override;
  void SortByDependancies() override;
  bool SortUnlessCircular(); // False when there is a circle: the order is kept
  std::shared_ptr<IVSDotNetProject> GetItemInFileOrder(int index) const override {
    return ItemAt(inFileOrder_, index);
  }

private:
  const TKxEvent* stop_;
  std::vector<std::shared_ptr<IVSDotNetProject>> projects_;
  std::vector<std::shared_ptr<IVSDotNetProject>> inFileOrder_;
  // The first project with each identifier; made when first asked for. The keys point into the projects.
  mutable std::unordered_map<std::u16string_view, std::size_t> byId_;
};

class TVSDotNetSolutionConfiguration final : public TVSDotNetImplementation<IVSDotNetSolutionConfiguration> {
public:
  explicit TVSDotNetSolutionConfiguration(std::u16string_view name) : name_(name) {}
  const std::u16string& GetName() const override { return name_; }

private:
  std::u16string name_;
};

// The items live in one block of memory and as long as a reference to the list or to one of them.
class TVSDotNetSolutionConfigurations final
    : public TVSDotNetImplementation<IVSDotNetSolutionConfigurations> {
public:
  using TItems = std::vector<TVSDotNetSolutionConfiguration>;
  explicit TVSDotNetSolutionConfigurations(TItems items)
      : items_(std::make_shared<TItems>(std::move(items))) {}
  std::shared_ptr<IVSDotNetSolutionConfiguration> GetItem(int index) const override {
    if (index < 0 || index >= GetCount()) return nullptr;
    return {items_, &(*items_)[static_cast<std::size_t>(index)]};
  }
  int GetCount() const override { return static_cast<int>(items_->size()); }

private:
  std::shared_ptr<TItems> items_;
};

class TVSDotNetSolution final : public TVSDotNetImplementation<IVSDotNetSolution> {
public:
  TVSDotNetSolution(std::u16string_view fileName, TVSDotNetVersion version,
                    std::shared_ptr<IVSDotNetProjects> projects,
                    std::shared_ptr<IVSDotNetSolutionConfigurations> configurations,
                    std::vector<std::shared_ptr<IVSDotNetProject>> notFound, bool hasBuildOrder,
                    bool hasPassedOverCircle)
      : fileName_(fileName), version_(version), projects_(std::move(projects)),
        configurations_(std::move(configurations)), notFound_(std::move(notFound)),
        hasBuildOrder_(hasBuildOrder), hasPassedOverCircle_(hasPassedOverCircle) {}

  std::shared_ptr<IVSDotNetSolutionConfigurations> GetConfigurations() const override {
    return configurations_;
  }
  std::shared_ptr<IVSDotNetProjects> GetProjects() const override { return projects_; }
  const std::u16string& GetName() const override { return name_; }
  const std::u16string& GetDescription() const override { return description_; }
  const std::u16string& GetFileName() const override { return fileName_; }
  TVSDotNetVersion GetVisualStudioVersion() const override { return version_; }
  const std::vector<std::shared_ptr<IVSDotNetProject>>& GetProjectsNotFound() const override {
    return notFound_;
  }
  bool HasBuildOrder() const override { return hasBuildOrder_; }
  bool HasPassedOverCircle() const override { return hasPassedOverCircle_; }

private:
  std::u16string name_;
  std::u16string description_;
  std::u16string fileName_;
  TVSDotNetVersion version_;
  std::shared_ptr<IVSDotNetProjects> projects_;
  std::shared_ptr<IVSDotNetSolutionConfigurations> configurations_;
  std::vector<std::shared_ptr<IVSDotNetProject>> notFound_;
  bool hasBuildOrder_;
  bool hasPassedOverCircle_;
};

} // namespace kx
