#include "package/versioninfo/ProjectSources.h"

#include "foundation/formats/RegEx.h"
#include "foundation/formats/Xml.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

namespace kx {

namespace {

// A path that a project file names, or a list or pattern of them.
struct TItem {
  std::u16string Path;
  std::u16string Exclude;
  bool Compiled = false;
  bool Removes = false;
};

std::u16string Unescaped(std::u16string_view text) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digit = [](char16_t c) {
      static constexpr std::u16string_view digits = u"0123456789abcdef";
      return digits.find(text::FoldCase(c));
    };
    const bool escape =
        text[i] == u'%' && i + 2 < text.size() && digit(text[i + 1]) < 16 && digit(text[i + 2]) < 16;
    out += escape ? static_cast<char16_t>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
    if (escape) i += 2;
  }
  return out;
}

// The items of a project file and the properties that their paths may use.
class TProjectReader {
public:
  TProjectReader(std::u16string_view projectFile, std::u16string_view solutionFolder, bool withImports)
      : projectFile_(projectFile), folder_(text::ExtractFileDir(projectFile)), withImports_(withImports) {
    Define(u"MSBuildProjectDirectory", folder_);
    Define(u"ProjectDir", text::ExtractFilePath(projectFile));
    Define(u"SolutionDir", text::IncludeTrailingPathDelimiter(solutionFolder));
  }

  void Run() { Read(projectFile_, 0); }

  const std::vector<TItem>& Items() const { return items_; }
  const std::u16string& Folder() const { return folder_; }
  bool IsSdk() const { return sdk_; }
  std::u16string_view Property(std::u16string_view name) const {
    const auto found = properties_.find(name);
    return found == properties_.end() ? std::u16string_view() : found->second;
  }
  bool IsOff(std::u16string_view property) const {
    return text::EqualsIgnoreCase(Property(property), u"false");
  }

private:
  static constexpr int MostImports = 8; // inside each other

  void Define(std::u16string_view name, std::u16string_view value) {
    properties_.insert_or_assign(std::u16string(name), std::u16string(value));
  }

  void Read(const std::u16string& file, int depth) {
    if (depth > MostImports || !read_.insert(text::ToLower(file)).second) return;
    const auto bytes = platform::ReadFile(file);
    if (!bytes && depth == 0) throw EKxException(bytes.Message());
    if (!bytes || !text::TrimLeft(platform::DecodeTextFile(*bytes)).starts_with(u'<')) return;
    TXmlDocument document;
    if (!document.LoadBytes(*bytes)) throw EKxParseError(document.ParseError(), file);
    sdk_ = sdk_ || document.DocumentElement()->GetAttribute(u"Sdk");
    static constexpr std::u16string_view elements = u"//*[@Include or @Remove or @RelPath or @RelativePath "
                                                    u"or @Project]|//*[local-name()='PropertyGroup']/*";
    for (const TXmlElement& element : document.SelectNodes(elements))
      Take(element, file, depth);
  }

  void Take(const TXmlElement& element, const std::u16string& file, int depth) {
    const std::u16string name = element.Name();
    if (const auto path = element.GetAttribute(u"Include")) {
      AddItems(name, *path, Expanded(element.GetAttribute(u"Exclude").value_or(u""), file), file, false);
    } else if (const auto removed = element.GetAttribute(u"Remove")) {
      AddItems(name, *removed, {}, file, true);
    } else if (element.GetAttribute(u"RelPath")) {
      TakeOldItem(element);
    } else if (const auto relative = element.GetAttribute(u"RelativePath")) {
      items_.push_back({.Path = *relative, .Exclude = {}, .Compiled = IsCppSource(*relative)});
    } else if (const auto imported = element.GetAttribute(u"Project")) {
      if (withImports_ && name == u"Import") Import(Unescaped(Expanded(*imported, file)), file, depth);
    } else if (!element.GetAttribute(u"Condition") || Property(name).empty()) {
      Define(name, Expanded(element.Text(), file));
    }
  }

  void AddItems(std::u16string_view name, std::u16string_view paths, const std::u16string& exclude,
                const std::u16string& file, bool removes) {
    const bool compiled = name == u"Compile" || name == u"ClCompile";
    const std::u16string expanded = Expanded(paths, file);
    for (const auto path : text::Split(expanded, u';'))
      if (!text::Trim(path).empty())
        items_.push_back({.Path = Unescaped(text::Trim(path)),
                          .Exclude = exclude,
                          .Compiled = compiled,
                          .Removes = removes});
  }

  // A link stands elsewhere than its place in the project.
  void TakeOldItem(const TXmlElement& element) {
    const auto link = element.GetAttribute(u"Link");
    items_.push_back({.Path = link ? *link : *element.GetAttribute(u"RelPath"),
                      .Exclude = {},
                      .Compiled = element.GetAttribute(u"BuildAction").value_or(u"Compile") == u"Compile"});
  }

  static bool IsCppSource(std::u16string_view path) {
    static constexpr std::array<std::u16string_view, 4> extensions{u".cpp", u".cxx", u".cc", u".c"};
    return std::ranges::any_of(
        extensions, [&](auto extension) { return text::EndsWithIgnoreCase(text::Trim(path), extension); });
  }

  void Import(const std::u16string& path, const std::u16string& importer, int depth) {
    if (path.empty()) return;
    try {
      Read(text::ExpandPath(path, text::ExtractFileDir(importer)), depth + 1);
    } catch (const EKxParseError&) {
      return; // the tool will say it
    }
  }

  // With the values of properties; of one that is not known here nothing is left.
  std::u16string Expanded(std::u16string_view text, const std::u16string& file) const {
    std::u16string out;
    for (;;) {
      const std::size_t open = text.find(u"$(");
      const std::size_t close = text.find(u')', std::min(open, text.size()));
      if (close == std::u16string_view::npos) return out.append(text);
      out += text.substr(0, open);
      const std::u16string_view name = text.substr(open + 2, close - open - 2);
      out +=
          name == u"MSBuildThisFileDirectory" ? text::ExtractFilePath(file) : std::u16string(Property(name));
      text.remove_prefix(close + 1);
    }
  }

  std::u16string projectFile_;
  std::u16string folder_;
  bool withImports_;
  bool sdk_ = false;
  std::vector<TItem> items_;
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> properties_;
  std::set<std::u16string> read_;
};

// "*" and "?" inside one name.
bool MatchesName(std::u16string_view name, std::u16string_view pattern) {
  std::size_t star = std::u16string_view::npos;
  std::size_t at = 0;
  std::size_t retry = 0;
  std::size_t p = 0;
  while (at < name.size()) {
    if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      retry = at;
    } else if (p < pattern.size() &&
               (pattern[p] == u'?' || text::FoldCase(pattern[p]) == text::FoldCase(name[at]))) {
      ++p;
      ++at;
    } else if (star != std::u16string_view::npos) {
      p = star + 1;
      at = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', p) == std::u16string_view::npos;
}

bool IsPattern(std::u16string_view path) {
  return path.find_first_of(u"*?") != std::u16string_view::npos;
}

// The files that a pattern stands for; "**" is any number of folders.
class TPattern {
public:
  explicit TPattern(std::u16string_view fullPattern) {
    const std::size_t wild = fullPattern.find_first_of(u"*?");
    const std::size_t cut = fullPattern.find_last_of(u"\\/", wild) + 1;
    folder_ = fullPattern.substr(0, cut);
    const std::u16string rest = text::ReplaceAll(fullPattern.substr(cut), u"/", u"\\");
    for (const auto part : text::Split(rest, u'\\'))
      parts_.emplace_back(part);
  }

  void Find(std::vector<std::u16string>& files) const { Find(folder_, 0, 0, files); }

private:
  static constexpr int DeepestFolder = 32;
  static constexpr std::size_t MostFiles = 50'000;

  void Find(const std::u16string& folder, std::size_t part, int depth,
            std::vector<std::u16string>& files) const {
    const auto entries = platform::ListDirectory(folder);
    if (!entries || depth > DeepestFolder) return;
    const bool any = parts_[part] == u"**";
    if (any && part + 1 < parts_.size()) Find(folder, part + 1, depth, files);
    for (const auto& entry : *entries) {
      const bool last = part + 1 == parts_.size();
      if (files.size() >= MostFiles || !(any || MatchesName(entry.Name, parts_[part]))) continue;
      const std::u16string path = text::JoinPath(folder, entry.Name);
      if (entry.IsDirectory && (any || !last)) Find(path, any ? part : part + 1, depth + 1, files);
      if (!entry.IsDirectory && last) files.push_back(path);
    }
  }

  std::u16string folder_;
  std::vector<std::u16string> parts_;
};

// The sources in their order, each once.
class TSourceList {
public:
  explicit TSourceList(std::u16string folder) : folder_(std::move(folder)) {}

  void Add(const TItem& item) {
    std::set<std::u16string> excluded;
    const std::u16string exclude = Unescaped(item.Exclude);
    for (const auto path : text::Split(exclude, u';'))
      for (const auto& file : Files(text::Trim(path)))
        excluded.insert(text::ToLower(file));
    for (const auto& file : Files(item.Path))
      if (!excluded.contains(text::ToLower(file)) && known_.insert(text::ToLower(file)).second)
        files_.push_back(file);
  }
  void Remove(const TItem& item) {
    for (const auto& file : Files(item.Path))
      if (known_.erase(text::ToLower(file)) != 0)
        std::erase_if(files_, [&file](const auto& other) { return text::EqualsIgnoreCase(file, other); });
  }
  std::vector<std::u16string> Take() { return std::move(files_); }

private:
  std::vector<std::u16string> Files(std::u16string_view path) const {
    if (path.empty()) return {};
    const std::u16string full = text::ExpandPath(path, folder_);
    if (!IsPattern(path)) return {full};
    std::vector<std::u16string> files;
    TPattern(full).Find(files);
    return files;
  }

  std::u16string folder_;
  std::set<std::u16string> known_;
  std::vector<std::u16string> files_;
};

// The projects of the .NET SDK compile what lies beside them.
std::optional<TItem> ImplicitItem(const TProjectReader& reader, std::u16string_view projectFile) {
  const std::u16string extension = text::ToLower(text::ExtractFileExt(projectFile));
  const bool basic = extension == u".vbproj";
  const bool on =
      reader.IsSdk() && !reader.IsOff(u"EnableDefaultItems") && !reader.IsOff(u"EnableDefaultCompileItems");
  if (!on || (!basic && extension != u".csproj")) return std::nullopt;
  return TItem{.Path = basic ? u"**\\*.vb" : u"**\\*.cs", .Exclude = u"bin\\**;obj\\**", .Compiled = true};
}

// The attributes that the .NET SDK writes for a project, and the property whose text it needs for it.
std::vector<std::u16string> GeneratedAttributes(const TProjectReader& reader) {
  static constexpr std::pair<std::u16string_view, std::u16string_view> attributes[] = {
      {u"AssemblyCompany", u""},
      {u"AssemblyConfiguration", u""},
      {u"AssemblyFileVersion", u""},
      {u"AssemblyInformationalVersion", u""},
      {u"AssemblyProduct", u""},
      {u"AssemblyTitle", u""},
      {u"AssemblyVersion", u""},
      {u"AssemblyCopyright", u"Copyright"},
      {u"AssemblyDescription", u"Description"}};
  std::vector<std::u16string> generated;
  if (!reader.IsSdk() || reader.IsOff(u"GenerateAssemblyInfo")) return generated;
  for (const auto& [name, property] : attributes)
    if (!reader.IsOff(u"Generate" + std::u16string(name) + u"Attribute") &&
        (property.empty() || !reader.Property(property).empty()))
      generated.emplace_back(name);
  return generated;
}

} // namespace

std::u16string FindAssemblyInfoName(std::u16string_view projectFile, std::u16string_view solutionFolder) {
  static const std::shared_ptr<const IRegularExpression> expressions[] = {
      RegEx::NewRegularExpression(u"^(?:.*[\\\\/])?AssemblyInfo\\.\\w+$", TRegExOptions::IgnoreCase),
      RegEx::NewRegularExpression(u"AssemblyInfo[\\w|.]+$", TRegExOptions::IgnoreCase)};
  TProjectReader reader(projectFile, solutionFolder, false);
  reader.Run();
  for (const bool compiled : {true, false})
    for (const auto& expression : expressions)
      for (const TItem& item : reader.Items())
        if (item.Compiled == compiled && !item.Removes && !IsPattern(item.Path) &&
            expression->IsMatch(item.Path))
          return item.Path;
  return {};
}

TAssemblyInfoUnit ReadProjectSources(std::u16string_view name, std::u16string_view projectFile,
                                     std::u16string_view solutionFolder) {
  TAssemblyInfoUnit unit{.Name = std::u16string(name), .Sources = {}, .Generated = {}};
  TProjectReader reader(projectFile, solutionFolder, true);
  try {
    reader.Run();
  } catch (const EKxException&) {
    return unit;
  }
  TSourceList sources(reader.Folder());
  if (const auto implicit = ImplicitItem(reader, projectFile)) sources.Add(*implicit);
  for (const TItem& item : reader.Items())
    if (item.Compiled) item.Removes ? sources.Remove(item) : sources.Add(item);
  unit.Sources = sources.Take();
  unit.Generated = GeneratedAttributes(reader);
  return unit;
}

} // namespace kx
