#include "program/check/ProjectFacts.h"

#include "foundation/formats/XmlStream.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <optional>

namespace kx::check {

namespace {

constexpr std::array<std::string_view, 6> UsedItems{
    "Compile", "EmbeddedResource", "ClCompile", "ResourceCompile", "Midl", "Page"};
constexpr std::array<std::u16string_view, 6> UsedExtensions{u".c", u".cpp", u".cxx", u".cc", u".rc", u".idl"};

// A path that only a build can tell.
bool IsComputed(std::u16string_view path) {
  return path.empty() || path.find_first_of(u"$@%*?") != std::u16string_view::npos;
}

// "Debug|AnyCPU" of "'$(Configuration)|$(Platform)' == 'Debug|AnyCPU'"; empty for any other condition.
std::u16string ConfigurationOf(std::u16string_view condition) {
  constexpr std::u16string_view variables = u"$(Configuration)|$(Platform)";
  const std::size_t at = condition.find(variables);
  if (at == std::u16string_view::npos) return {};
  const std::u16string_view rest = condition.substr(at + variables.size());
  const std::size_t equals = rest.find(u"==");
  const std::size_t open = equals == rest.npos ? rest.npos : rest.find(u'\'', equals);
  const std::size_t close = open == rest.npos ? rest.npos : rest.find(u'\'', open + 1);
  if (close == rest.npos || condition.find(u"!=") != condition.npos) return {};
  return std::u16string(text::Trim(rest.substr(open + 1, close - open - 1)));
}

// Some generators write identifiers without them.
std::u16string WithBraces(std::u16string id) {
  return id.empty() || id.starts_with(u'{') ? std::move(id) : u"{" + id + u"}";
}

bool NamesConfigurations(std::u16string_view condition) {
  return condition.find(u"$(Configuration)") != std::u16string_view::npos ||
         condition.find(u"$(Platform)") != std::u16string_view::npos;
}

class TProjectEvents : public IXmlEvents {
public:
  explicit TProjectEvents(TProjectFacts& facts) : facts_(facts) {}

  void StartElement(const IXmlStartTag& tag) override {
    const std::string_view name = tag.Name();
    if (open_.empty()) BeginDocument(name, tag);
    line_ = tag.Line();
    const auto condition = tag.GetAttribute("Condition");
    conditions_ += condition ? 1 : 0;
    open_.push_back({std::string(name), condition.has_value()});
    text_.clear();
    switch (facts_.Form) {
    case TProjectForm::MSBuild:
      return TakeMSBuild(name, tag, condition.value_or(u""));
    case TProjectForm::Cpp:
      return TakeCpp(name, tag);
    case TProjectForm::Old:
      return TakeOld(name, tag);
    case TProjectForm::None:
      return;
    }
  }

  void EndElement() override {
    if (facts_.Form == TProjectForm::MSBuild) TakeMSBuildText(open_.back().Name);
    if (open_.back().IsItem) isInItem_ = false;
    conditions_ -= open_.back().IsConditional ? 1 : 0;
    open_.pop_back();
    text_.clear();
  }

  void Text(std::string_view utf8) override {
    constexpr std::size_t enough = 4096; // of a path
    if (text_.size() < enough) text_ += utf8;
  }

  // Configurations that other files may add to are not known.
  void Finish() {
    if (!listed_.empty()) {
      facts_.Configurations = std::move(listed_);
    } else if (hasOpenConditions_ || facts_.IsSdkStyle) {
      facts_.Configurations.clear();
    }
  }

private:
  struct TOpen {
    std::string Name;
    bool IsConditional;
    bool IsItem = false;
  };

  void BeginDocument(std::string_view name, const IXmlStartTag& tag) {
    if (name == "Project") {
      facts_.Form = TProjectForm::MSBuild;
      facts_.IsSdkStyle = tag.GetAttribute("Sdk").has_value();
    } else if (name == "VisualStudioProject") {
      facts_.Form = tag.GetAttribute("ProjectType") ? TProjectForm::Cpp : TProjectForm::Old;
    }
  }

  void AddSource(std::u16string path, std::u16string kind, const IXmlStartTag& tag, bool isUsed) {
    if (!IsComputed(path)) facts_.Sources.push_back({std::move(path), std::move(kind), tag.Line(), isUsed});
  }

  void TakeMSBuild(std::string_view name, const IXmlStartTag& tag, const std::u16string& condition) {
    if (auto configuration = ConfigurationOf(condition); !configuration.empty()) {
      facts_.Configurations.insert(std::move(configuration));
    } else if (NamesConfigurations(condition) && name == "PropertyGroup" && !IsDefault(condition)) {
      hasOpenConditions_ = true;
    }
    if (name == "Sdk") facts_.IsSdkStyle = true;
    if (name == "Import") TakeImport(tag);
    const auto include = tag.GetAttribute("Include");
    if (!include || open_.size() < 2 || open_[open_.size() - 2].Name != "ItemGroup") return;
    if (name == "ProjectConfiguration") listed_.insert(*include);
    if (std::ranges::find(UsedItems, name) != UsedItems.end()) {
      for (const auto path : text::Split(*include, u';'))
        AddSource(std::u16string(text::Trim(path)), text::FromUtf8(name), tag, conditions_ == 0);
      open_.back().IsItem = isInItem_ = true;
    }
    if (name == "ProjectReference" && !IsComputed(*include))
      facts_.References.push_back({*include, {}, tag.Line()});
  }

  static bool IsDefault(std::u16string_view condition) { // "'$(Configuration)' == ''"
    return condition.find(u"== ''") != condition.npos || condition.find(u"==''") != condition.npos;
  }

  void TakeImport(const IXmlStartTag& tag) {
    const std::u16string file = tag.GetAttribute("Project").value_or(u"");
    if (!file.starts_with(u"$(MSBuild") && !file.starts_with(u"$(VCTargetsPath)") &&
        !file.starts_with(u"$(UserRootDir)"))
      hasOpenConditions_ = true;
  }

  void TakeMSBuildText(const std::string& name) {
    const std::string_view parent =
        open_.size() < 2 ? std::string_view() : std::string_view(open_[open_.size() - 2].Name);
    const auto text = [this] { return std::u16string(text::Trim(text::FromUtf8(text_))); };
    if (name == "TargetFrameworkVersion" && conditions_ == 0) {
      facts_.Framework = text();
      facts_.FrameworkLine = line_;
    } else if (name == "HintPath") {
      if (auto path = text(); !IsComputed(path))
        facts_.Hints.push_back({std::move(path), u"Reference", line_, conditions_ == 0});
    } else if (name == "Project" && parent == "ProjectReference" && !facts_.References.empty()) {
      facts_.References.back().Id = WithBraces(text());
    } else if (isInItem_ && name == "ExcludedFromBuild" && !facts_.Sources.empty()) {
      facts_.Sources.back().IsUsed = false;
    }
  }

  void TakeCpp(std::string_view name, const IXmlStartTag& tag) {
    if (name == "Configuration") {
      if (const auto configuration = tag.GetAttribute("Name")) facts_.Configurations.insert(*configuration);
    } else if (name == "File") {
      const std::u16string path = tag.GetAttribute("RelativePath").value_or(u"");
      std::u16string extension = text::ToLower(text::ExtractFileExt(path));
      lastIsUsed_ = std::ranges::find(UsedExtensions, extension) != UsedExtensions.end() && !IsComputed(path);
      if (lastIsUsed_) AddSource(path, std::move(extension), tag, true);
    } else if (name == "FileConfiguration" && lastIsUsed_) {
      if (text::EqualsIgnoreCase(tag.GetAttribute("ExcludedFromBuild").value_or(u""), u"true"))
        facts_.Sources.back().IsUsed = false;
    } else if (name == "ProjectReference") {
      facts_.References.push_back(
          {{}, tag.GetAttribute("ReferencedProjectIdentifier").value_or(u""), tag.Line()});
    }
  }

  void TakeOld(std::string_view name, const IXmlStartTag& tag) {
    if (name == "Config") {
      if (const auto configuration = tag.GetAttribute("Name")) facts_.Configurations.insert(*configuration);
    } else if (name == "File") {
      std::u16string action = tag.GetAttribute("BuildAction").value_or(u"");
      const std::u16string link = tag.GetAttribute("Link").value_or(u"");
      if (action == u"Compile" || action == u"EmbeddedResource")
        AddSource(link.empty() ? tag.GetAttribute("RelPath").value_or(u"") : link, std::move(action), tag,
                  true);
    } else if (name == "Reference") {
      if (auto id = tag.GetAttribute("Project"))
        facts_.References.push_back({{}, std::move(*id), tag.Line()});
      if (auto path = tag.GetAttribute("HintPath"); path && !IsComputed(*path))
        facts_.Hints.push_back({std::move(*path), u"Reference", tag.Line()});
    }
  }

  TProjectFacts& facts_;
  std::vector<TOpen> open_;
  std::string text_; // of the innermost element
  int line_ = 0;
  int conditions_ = 0;                                    // elements around that have one
  std::set<std::u16string, text::IgnoreCaseLess> listed_; // the configurations of a C++ project
  bool isInItem_ = false;
  bool lastIsUsed_ = false;
  bool hasOpenConditions_ = false;
};

// The reader of XML says it behind its reason: "... (line 12)".
int LineOfReason(std::u16string_view reason) {
  constexpr std::u16string_view word = u"(line ";
  const std::size_t at = reason.rfind(word);
  if (at == std::u16string_view::npos) return 0;
  const std::u16string_view number = reason.substr(at + word.size());
  return text::ToIntegerOr(number.substr(0, number.find(u')')), 0);
}

bool IsNamedAsProject(std::u16string_view file) {
  return text::EndsWithIgnoreCase(text::ExtractFileExt(file), u"proj") && // a setup project is no XML
         !text::EndsWithIgnoreCase(file, u".vdproj");
}

} // namespace

bool TProjectFacts::IsManaged() const {
  return Form == TProjectForm::Old ||
         (Form == TProjectForm::MSBuild &&
          std::ranges::any_of(Sources, [](const auto& source) { return source.Kind == u"Compile"; }));
}

TProjectFacts ReadProjectFacts(const std::u16string& file) {
  TProjectFacts facts;
  facts.File = file;
  facts.Folder = text::ExtractFileDir(file);
  TProjectFacts read = facts;
  TProjectEvents events(read);
  TXmlStream stream(events);
  if (stream.Load(file)) {
    events.Finish();
    return read;
  }
  if (IsNamedAsProject(file)) facts.Error = stream.ParseError();
  facts.ErrorLine = LineOfReason(facts.Error);
  return facts;
}

} // namespace kx::check
