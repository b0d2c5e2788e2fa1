#include "package/buildaction/VersionStamping.h"

#include "contract/Utilities.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/ProjectSelection.h"
#include "package/versioninfo/KxRCVersionInfo.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kx {

namespace {

// The places of the parts in a version.
constexpr std::size_t BuildPart = 2;
constexpr std::size_t RevisionPart = 3;

// The stored properties that an execution counts up.
constexpr std::array<std::u16string_view, 2> CountedVersions{u"AssemblyVersion", u"AssemblyFileVersion"};
constexpr std::array<std::u16string_view, 1> CountedBuild{u"BuildVersion"};

// The set of that name, or null with the reason in the log.
std::shared_ptr<const IPropertySet> FindPropertySet(TCustomKxAction& action, const std::u16string& name,
                                                    std::u16string_view blankMessage) {
  if (name.empty()) {
    action.SendMessage(blankMessage, TStatusTag::stError);
    return nullptr;
  }
  auto set = action.GetPropertySetService().Find(name);
  if (set == nullptr) action.SendMessage(u"Unable to find property set: " + name, TStatusTag::stError);
  return set;
}

// The ids of a selection of which nothing needs to be said.
text::TStringList IdsOf(TCustomKxAction& action, const IVSDotNetSolution& solution,
                        const text::TStringList& entries) {
  return ResolveSelection(solution, entries, [&](auto text) { return action.ExpandExpression(text); }).Ids;
}

bool HasProject(const IVSDotNetSolution& solution, const text::TStringList& ids) {
  const auto projects = solution.GetProjects();
  return std::any_of(ids.begin(), ids.end(),
                     [&](const std::u16string& id) { return projects->FindByID(id) != nullptr; });
}

void ReportEmptySelection(TCustomKxAction& action, std::u16string_view what, std::u16string_view property) {
  action.ReportBreach(KxVerdictRules::EmptySelection, u"No " + std::u16string(what) + u" was updated: " +
                                                          std::u16string(property) + u" means no project.");
}

void Increment(TVersionQuadruple& version, std::size_t part) {
  version.SetPart(part, text::FromInteger(std::int64_t{text::ToIntegerOr(version.Part(part), 0)} + 1));
}

// Counts the numbers and has them stored; False with the reason in the log.
bool Succeeds(TCustomKxAction& action, const std::function<void()>& count) {
  try {
    count();
    return true;
  } catch (const EKxException& error) {
    action.SendMessage(error.Message(), TStatusTag::stError);
    return false;
  }
}

// Which attributes are written, and from which text; in this order.
struct TAttributeRow {
  bool TAssemblyInfoSettings::*Flag;
  std::u16string_view Name;
  std::u16string TAssemblyInfoSettings::*Text;
};
constexpr std::array<TAttributeRow, 7> AttributeRows{
    {{&TAssemblyInfoSettings::UpdateTitle, u"AssemblyTitle", &TAssemblyInfoSettings::Title},
     {&TAssemblyInfoSettings::UpdateDescription, u"AssemblyDescription", &TAssemblyInfoSettings::Description},
     {&TAssemblyInfoSettings::UpdateComment, u"AssemblyComment", &TAssemblyInfoSettings::Comment},
     {&TAssemblyInfoSettings::UpdateCompany, u"AssemblyCompany", &TAssemblyInfoSettings::Company},
     {&TAssemblyInfoSettings::UpdateProductName, u"AssemblyProduct", &TAssemblyInfoSettings::ProductName},
     {&TAssemblyInfoSettings::UpdateCopyright, u"AssemblyCopyright", &TAssemblyInfoSettings::Copyright},
     {&TAssemblyInfoSettings::UpdateTradeMark, u"AssemblyTrademark", &TAssemblyInfoSettings::TradeMark}}};

} // namespace

void LoadDotNetVersionInfo(const IPropertySet& set, TAssemblyInfoSettings& values) {
  const struct {
    std::u16string_view Name;
    std::u16string& Text;
  } texts[] = {{u"Title", values.Title},         {u"Description", values.Description},
               {u"Company", values.Company},     {u"Product", values.ProductName},
               {u"Copyright", values.Copyright}, {u"Trademark", values.TradeMark}};
  for (const auto& row : texts)
    if (const auto value = set.GetValue(row.Name)) row.Text = *value;

  constexpr std::array<std::u16string_view, TVersionQuadruple::PartCount> parts{
      u"MajorVersion", u"MinorVersion", u"BuildVersion", u"RevisionVersion"};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (const auto value = set.GetValue(parts[i])) values.Version.SetPart(i, *value);
    if (const auto value = set.GetValue(u"File" + std::u16string(parts[i])))
      values.FileVersion.SetPart(i, *value);
  }
  if (const auto link = set.GetValue(u"LinkFileVersion"))
    values.LinkFileVersion = text::EqualsIgnoreCase(*link, u"true");
}

bool TAssemblyInfoStamping::Run() {
  TKxMessageGroup group(action_, u"Updating AssemblyInfo");
  return group.Close(TakeValues() && UpdateFiles());
}

bool TAssemblyInfoStamping::TakeValues() {
  if (!values_.UsePropertySet) {
    if (!IncrementNumbers()) return false;
    values_ = action_.AssemblyInfo();
    return true;
  }
  const auto set = FindPropertySet(action_, values_.PropertySetName, u"DotNet PropertySet name is blank");
  if (set != nullptr) LoadDotNetVersionInfo(*set, values_);
  return set != nullptr;
}

bool TAssemblyInfoStamping::IncrementNumbers() {
  return Succeeds(action_, [this] { CountUp(); });
}

// Two runs at once must not give out one number, and no file may bear one that a killed run has not stored.
void TAssemblyInfoStamping::CountUp() {
  TAssemblyInfoSettings& kept = action_.AssemblyInfo();
  const bool counts = kept.AutoIncRevisionNo || kept.AutoIncFileRevisionNo || kept.AutoIncBuildNumber ||
                      kept.AutoIncFileBuildNumber;
  if (!counts || kept.UsePropertySet) return;
  action_.ChangeStored(CountedVersions, [&kept] {
    if (kept.AutoIncRevisionNo) Increment(kept.Version, RevisionPart);
    if (kept.AutoIncFileRevisionNo) Increment(kept.FileVersion, RevisionPart);
    if (kept.AutoIncBuildNumber) Increment(kept.Version, BuildPart);
    if (kept.AutoIncFileBuildNumber) Increment(kept.FileVersion, BuildPart);
  });
}

bool TAssemblyInfoStamping::UpdateFiles() {
  const TWebProjectSettings& web = action_.WebProjects();
  try {
    const auto updater = GetAssemblyInfoUpdater(solution_, action_, *this,
                                                {.ProjLocDetectMethod = web.DetectMethod,
                                                 .WMIWebsiteNum = web.WMIWebsiteNum,
                                                 .SharePath = web.SharePath,
                                                 .WebDAVUsername = web.WebDAVUsername,
                                                 .WebDAVPassword = action_.GetWebDAVPassword(),
                                                 .IsWebDAVPasswordLost = action_.IsWebDAVPasswordLost(),
                                                 .StopEvent = &stop_},
                                                &action_.StampHistory());
    if (values_.ApplyTo == TVSDotNetBuildType::btAllProjects)
      updater->UpdateAllProjects();
    else
      UpdateSelected(*updater);
    return true;
  } catch (const std::exception& error) {
    action_.SendMessage(u"Error Updating Assembly Info : " + MessageOf(error), TStatusTag::stError);
    return false;
  }
}

// Of the selected projects those that are built; in a loop there may be none of them.
void TAssemblyInfoStamping::UpdateSelected(IKxAssemblyInfoUpdater& updater) {
  const text::TStringList selected =
      action_.ResolveProjects(u"AssemblySelectedProjects", values_.SelectedProjects, *solution_);
  if (!HasProject(*solution_, selected))
    ReportEmptySelection(action_, u"AssemblyInfo file", u"AssemblySelectedProjects");
  if (action_.Solution().BuildType == TVSDotNetBuildType::btAllProjects) {
    updater.UpdateProjects(selected, nullptr);
    return;
  }
  const text::TStringList built = IdsOf(action_, *solution_, action_.Solution().SelectedProjects);
  if (built.IsEmpty()) ReportEmptySelection(action_, u"AssemblyInfo file", u"SelectedProjects");
  updater.UpdateProjects(selected, &built);
}

void TAssemblyInfoStamping::OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) {
  action_.SendMessage(u"Processing Assembly info in File : " + std::u16string(fileName));
  for (const auto& row : AttributeRows)
    if (values_.*row.Flag) updater.SetAttribute(row.Name, action_.ExpandExpression(values_.*row.Text));
  const auto version = [this](const TVersionQuadruple& quadruple) {
    return text::ReplaceAll(action_.ExpandExpression(quadruple.Text()), u"|", u".");
  };
  if (values_.UpdateFileVersion)
    updater.SetAttribute(u"AssemblyFileVersion",
                         version(values_.LinkFileVersion ? values_.Version : values_.FileVersion));
  if (values_.UpdateVersion) updater.SetAttribute(u"AssemblyVersion", version(values_.Version));
}

void TAssemblyInfoStamping::AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) {
  action_.SendMessage(std::u16string(name) + u" : " + std::u16string(value));
}

void TAssemblyInfoStamping::AssemblyInfoProcessMessage(std::u16string_view text) {
  action_.SendMessage(text, text.starts_with(u"Warning : ") ? TStatusTag::stWarning : TStatusTag::stNormal);
}

bool TWin32Stamping::Run() {
  TKxMessageGroup group(action_, u"Updating Win32 Version Info");
  return group.Close(TakeValues() && DoUpdateWin32VersionInfo());
}

bool TWin32Stamping::TakeValues() {
  const TWin32StampSettings& settings = action_.Win32Stamp();
  std::shared_ptr<const IPropertySet> set;
  if (settings.UsePropertySet) {
    set = FindPropertySet(action_, settings.PropertySetName, u"Win32 PropertySet name is blank");
    if (set == nullptr) return false;
  }
  if (!Attempt(u"", [&] { values_ = Wanted(set.get()); })) return false;
  if (!values_.AutoIncBuild) return ExpandTexts();
  if (!Succeeds(action_, [&] { CountBuild(set.get()); })) return false;
  values_.BuildVersion = action_.Win32Values().Values().BuildVersion; // whoever has counted it
  return ExpandTexts();
}

void TWin32Stamping::CountBuild(const IPropertySet* set) {
  action_.ChangeStored(CountedBuild, [&] {
    values_ = Wanted(set);
    action_.Win32Values().Values().BuildVersion = values_.BuildVersion;
  });
}

// What the stamping would refuse is not counted.
void TWin32Stamping::CountUp() {
  const TWin32StampSettings& settings = action_.Win32Stamp();
  const auto set =
      settings.UsePropertySet ? action_.GetPropertySetService().Find(settings.PropertySetName) : nullptr;
  if (settings.UsePropertySet && set == nullptr) return;
  try {
    if (!Wanted(set.get()).AutoIncBuild) return;
  } catch (const EKxException&) {
    return;
  }
  CountBuild(set.get());
}

TVersionInfoValues TWin32Stamping::Wanted(const IPropertySet* set) const {
  TVersionInfoContainer wanted;
  wanted.Values() = action_.Win32Values().Values();
  if (set != nullptr) TVersionInfo::LoadFromPropertySet(*set, wanted);
  TVersionInfoValues& values = wanted.Values();
  if (values.AutoIncBuild && values.BuildVersion < std::numeric_limits<std::int32_t>::max())
    ++values.BuildVersion;
  return values;
}

// A property set that is missing or holds no numbers is told of when the stamping takes it.
bool TWin32Stamping::CheckNumbers() {
  const TWin32StampSettings& settings = action_.Win32Stamp();
  const auto set =
      settings.UsePropertySet ? action_.GetPropertySetService().Find(settings.PropertySetName) : nullptr;
  std::optional<std::u16string> refused;
  try {
    refused = TVersionInfo::CheckNumbers(Wanted(set.get()));
  } catch (const EKxException&) {
    return true;
  }
  if (refused) action_.SendMessage(*refused, TStatusTag::stError);
  return !refused;
}

bool TWin32Stamping::ExpandTexts() {
  for (std::size_t i = 0; i < values_.Strings.Count(); ++i) {
    const std::u16string name(values_.Strings.NameOf(i));
    std::u16string value;
    if (!action_.TryExpandExpression(name, values_.Strings.ValueOf(i), false, value)) return false;
    if (!name.empty()) SetVersionText(values_, name, value);
  }
  return true;
}

bool TWin32Stamping::DoUpdateWin32VersionInfo() {
  const auto projects = solution_->GetProjects();
  const auto stamp = [this](const IVSDotNetProject* project) {
    return project == nullptr || project->GetRCWithVersionInfo().empty() ||
           ApplyVersionInfo(project->GetRCWithVersionInfo());
  };
  if (action_.Win32Stamp().ApplyTo == TVSDotNetBuildType::btAllProjects) {
    for (int i = 0; i < projects->GetCount(); ++i)
      if (!stamp(projects->GetItem(i).get())) return false;
    return true;
  }
  const text::TStringList selected =
      action_.ResolveProjects(u"ResourceSelectedProjects", action_.Win32Stamp().SelectedProjects, *solution_);
  if (!HasProject(*solution_, selected))
    ReportEmptySelection(action_, u"version resource", u"ResourceSelectedProjects");
  for (const auto& id : selected)
    if (!stamp(projects->FindByID(id).get())) return false;
  return true;
}

bool TWin32Stamping::ApplyVersionInfo(const std::u16string& file) {
  const auto info = std::make_shared<TVersionInfoContainer>();
  std::shared_ptr<IKxVersionInfoParser> script;
  const bool read =
      Attempt(u"Error loading resource file : ", [&] { script = GetVersionInfoParser(info, file); }) &&
      Attempt(u"Error Parsing File : ", [&] {
        script->Parse();
        TVersionInfo::Merge(values_, *info);
      });
  if (!read) return false;
  action_.SendMessage(u"Updating Version info in file : " + file);
  const auto warn = [this](const text::TStringList& warnings) {
    for (const auto& warning : warnings)
      action_.SendMessage(warning, TStatusTag::stWarning);
  };
  return Attempt(u"Error saving resource file : ", [&] {
    warn(script->FindLosses(*info));
    script->Save(*info);
    warn(script->GetWarnings());
  });
}

bool TWin32Stamping::Attempt(std::u16string_view failure, const std::function<void()>& step) {
  try {
    step();
    return true;
  } catch (const std::exception& error) {
    action_.SendMessage(std::u16string(failure) + MessageOf(error), TStatusTag::stError);
    if (const auto where = WhereRefused(error)) action_.SendMessage(*where, TStatusTag::stWarning);
    return false;
  }
}

namespace {

using TProjectVisitor = std::function<void(const IVSDotNetProject& project)>;

void VisitProjects(TKxCustomVSDotNetAction& action, const IVSDotNetSolution& solution,
                   TVSDotNetBuildType applyTo, const text::TStringList& entries,
                   const TProjectVisitor& visit) {
  const TProjectIds selected = SetOf(IdsOf(action, solution, entries));
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = projects->GetItem(i);
    if (applyTo == TVSDotNetBuildType::btAllProjects || selected.contains(project->GetProjectID()))
      visit(*project);
  }
}

// Of the attributes only the names count.
TAssemblyInfoValues AttributesToStamp(const TAssemblyInfoSettings& settings) {
  TAssemblyInfoValues attributes;
  for (const auto& row : AttributeRows)
    if (settings.*row.Flag) attributes.emplace_back(row.Name, u"");
  if (settings.UpdateFileVersion) attributes.emplace_back(u"AssemblyFileVersion", u"");
  if (settings.UpdateVersion) attributes.emplace_back(u"AssemblyVersion", u"");
  return attributes;
}

} // namespace

void CollectFilesToStamp(TKxCustomVSDotNetAction& action, const IVSDotNetSolution& solution,
                         text::TStringList& files) {
  const TAssemblyInfoSettings& assemblyInfo = action.AssemblyInfo();
  if (assemblyInfo.UpdateAssemblyInfo) {
    std::vector<const IVSDotNetProject*> projects;
    VisitProjects(action, solution, assemblyInfo.ApplyTo, assemblyInfo.SelectedProjects,
                  [&](const IVSDotNetProject& project) { projects.push_back(&project); });
    CollectAssemblyInfoFiles(solution, projects, AttributesToStamp(assemblyInfo), files);
  }
  const TWin32StampSettings& win32 = action.Win32Stamp();
  if (win32.UpdateWin32Resource)
    VisitProjects(action, solution, win32.ApplyTo, win32.SelectedProjects,
                  [&, known = SetOf(files)](const IVSDotNetProject& project) mutable {
                    const std::u16string& file = project.GetRCWithVersionInfo();
                    if (!file.empty() && known.insert(file).second) files.Add(file);
                  });
}

} // namespace kx
