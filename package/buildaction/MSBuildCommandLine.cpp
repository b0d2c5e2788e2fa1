#include "package/buildaction/MSBuildCommandLine.h"

#include "contract/Utilities.h"
#include "foundation/formats/RegEx.h"
#include "foundation/text/Text.h"

namespace kx {

namespace {

std::u16string_view TargetSwitch(TVSDotNetBuildAction buildAction) {
  switch (buildAction) {
  case TVSDotNetBuildAction::baBuild:
    return u"/t:Build";
  case TVSDotNetBuildAction::baRebuild:
    return u"/t:Rebuild";
  case TVSDotNetBuildAction::baClean:
    return u"/t:Clean";
  case TVSDotNetBuildAction::baDeploy:
    return u"/t:Deploy";
  }
  return {};
}

std::u16string_view VerbositySwitch(TMSLogLevel level) {
  switch (level) {
  case TMSLogLevel::llQuiet:
    return u" /v:quiet";
  case TMSLogLevel::llMinimal:
    return u" /v:minimal";
  case TMSLogLevel::llNormal:
    return u" /v:normal";
  case TMSLogLevel::llDetailed:
    return u" /v:detailed";
  case TMSLogLevel::llDiagnostic:
    return u" /v:diagnostic";
  }
  return {};
}

// With their quotation marks: these lines are passed on as they are.
std::u16string_view TargetFrameworkProperty(TVSDotNetTargetFx framework) {
  switch (framework) {
  case TVSDotNetTargetFx::fx20:
    return u"TargetFramework=\"v2.0\"";
  case TVSDotNetTargetFx::fx30:
    return u"TargetFramework=\"v3.0\"";
  case TVSDotNetTargetFx::fx35:
    return u"TargetFramework=\"v3.5\"";
  case TVSDotNetTargetFx::fx40:
    return u"TargetFramework=\"v4.0\"";
  }
  return {};
}

std::u16string LoggerSwitches(std::u16string_view assembly, TMSLogLevel level) {
  const std::u16string quoted = DoubleQuoteString(assembly);
  std::u16string switches = u" /logger:TandemorLogger," + quoted;
  if (level == TMSLogLevel::llQuiet) switches += u" /logger:NullLogger," + quoted;
  return switches + u" /noconlog";
}

// Line breaks of every system: a text may come from a variable.
std::u16string InOneLine(std::u16string_view lines) {
  text::TStringList list;
  list.SetText(text::Trim(lines));
  const std::u16string text = list.GetText();
  return text::ReplaceAll(text::TrimRight(text), u"\r\n", u";");
}

void AppendConstant(std::u16string& constants, std::u16string_view constant) {
  if (!constants.empty()) constants += u';';
  constants += constant;
}

void ValidateWarningList(std::u16string_view label, std::u16string_view list) {
  if (IsWarningList(list)) return;
  throw EFailAction(std::u16string(label) + u" list " + DoubleQuoteString(list) +
                    u" is not valid. Only warning numbers, separated by semicolons, can be specified.");
}

// Collects the lines Name=Value of the "/p:" switch; each step is one concern.
class TMSBuildProperties {
public:
  TMSBuildProperties(const TMSBuildSettings& settings, const TTextExpander& expander)
      : settings_(settings), expander_(expander) {}

  void AddConfiguration(const TMSBuildTarget& target);
  void AddCompiler();
  void AddWarnings();
  void AddTargetFramework();
  void AddReferencePaths();
  void AddUseEnv() { lines_.Add(u"useenv=1"); }
  void AddOutputDirectory();
  void AddExtraProperties();

  text::TStringList Take() { return std::move(lines_); }

private:
  void Add(std::u16string_view name, std::u16string_view value) {
    lines_.Add(std::u16string(name) + u"=" + QuoteMSBuildArg(value));
  }
  void AddFlag(std::u16string_view name, bool value) {
    lines_.Add(std::u16string(name) + u"=" + BooleanToString(value));
  }
  void AddWarningList(std::u16string_view name, std::u16string_view label, std::u16string_view list,
                      const std::u16string& failure);
  std::u16string Expand(std::u16string_view label, std::u16string_view text, const std::u16string& failure);

  const TMSBuildSettings& settings_;
  const TTextExpander& expander_;
  text::TStringList lines_;
};

std::u16string TMSBuildProperties::Expand(std::u16string_view label, std::u16string_view text,
                                          const std::u16string& failure) {
  std::u16string result;
  if (!expander_.TryExpand(label, text, result)) throw EFailAction(failure);
  return result;
}

void TMSBuildProperties::AddConfiguration(const TMSBuildTarget& target) {
  const auto bar = target.Configuration.find(u'|');
  Add(u"Configuration", target.Configuration.substr(0, bar));
  if (bar == std::u16string_view::npos) return;
  Add(u"Platform", target.AnyCPU ? u"AnyCPU" : target.Configuration.substr(bar + 1));
}

void TMSBuildProperties::AddCompiler() {
  std::u16string constants =
      Expand(u"Define Constants", settings_.CompilerConstants, u"Failed to expand compiler constants.");
  if (constants.find_first_of(u"\r\n") != std::u16string::npos) constants = InOneLine(constants);
  if (settings_.DebugConstant) AppendConstant(constants, u"DEBUG");
  if (settings_.TraceConstant) AppendConstant(constants, u"TRACE");
  Add(u"DefineConstants", constants);
  AddFlag(u"Optimize", settings_.Optimize);
  AddFlag(u"AllowUnsafeBlocks", settings_.AllowUnsafe);
}

void TMSBuildProperties::AddWarnings() {
  lines_.Add(u"WarningLevel=" + text::FromInteger(settings_.WarningLevel));
  AddFlag(u"TreatWarningsAsErrors", settings_.AllWarningsAsErrors);
  if (!settings_.AllWarningsAsErrors && settings_.SelectedWarningsAsErrors)
    AddWarningList(u"WarningsAsErrors", u"Warnings As Errors", settings_.WarningsAsErrors,
                   u"Unable to expand list of warnings to treat as errors.");
  if (settings_.DisableSelectedWarnings)
    AddWarningList(u"NoWarn", u"Disabled Warnings", settings_.DisableWarnings,
                   u"Unable to expand list of disabled warnings");
}

void TMSBuildProperties::AddWarningList(std::u16string_view name, std::u16string_view label,
                                        std::u16string_view list, const std::u16string& failure) {
  const std::u16string numbers = Expand(label, list, failure);
  ValidateWarningList(label, numbers);
  if (!numbers.empty()) Add(name, numbers);
}

void TMSBuildProperties::AddTargetFramework() {
  lines_.Add(TargetFrameworkProperty(settings_.TargetFramework));
}

void TMSBuildProperties::AddReferencePaths() {
  Add(u"ReferencePath", InOneLine(Expand(u"Reference Paths", settings_.ReferencePaths.GetText(),
                                         u"Failed to expand Reference Paths list")));
}

void TMSBuildProperties::AddOutputDirectory() {
  std::u16string folder =
      Expand(u"Output Directory", settings_.OutputDirectory, u"Failed to expand output directory");
  if (folder.empty()) return;
  // A backslash on every system: MSBuild wants it and turns it into the system's own separator.
  if (folder.back() != u'\\') folder += u'\\';
  Add(u"OutDir", folder);
}

void TMSBuildProperties::AddExtraProperties() {
  text::TStringList extra;
  try {
    extra.SetText(expander_.Expand(settings_.ExtraMSBuildProperties.GetText()));
  } catch (const std::exception& error) {
    throw EFailAction(u"Failed to Extra MSBuild Properties: " + MessageOf(error));
  }
  for (std::size_t i = 0; i < extra.Count(); ++i)
    if (!text::Trim(extra[i]).empty()) Add(extra.NameOf(i), extra.ValueOf(i));
}

} // namespace

// "$" would match before a final line break too, which ends the command line.
bool IsWarningList(std::u16string_view list) {
  return RegEx::IsMatch(list, u"^[\\d;]*\\z");
}

TMSBuildCommandLine MSBuildCommandLine(const TSolutionSettings& solution, const TMSBuildSettings& settings,
                                       const TMSBuildTarget& target, const TTextExpander& expander) {
  const bool since2008 = solution.VStudioVersion >= TVSDotNetVersion::vs2008;
  TMSBuildProperties properties(settings, expander);
  properties.AddConfiguration(target);
  if (settings.OverrideCompiler) properties.AddCompiler();
  if (settings.OverrideWarnings) properties.AddWarnings();
  if (since2008 && settings.OverrideTargetFramework) properties.AddTargetFramework();
  if (settings.OverrideReferencePaths) properties.AddReferencePaths();
  if (solution.UseEnv) properties.AddUseEnv();
  properties.AddOutputDirectory();
  properties.AddExtraProperties();

  TMSBuildCommandLine line;
  line.Properties = properties.Take();
  line.Text = TargetSwitch(target.BuildAction);
  if (settings.StructuredOutput) line.Text += LoggerSwitches(target.LoggerAssembly, settings.LogLevel);
  line.Text += u" /p:" + InOneLine(line.Properties.GetText());
  line.Text += VerbositySwitch(settings.LogLevel);
  if (since2008) line.Text += settings.MaxCPUs == 0 ? u" /m" : u" /m:" + text::FromInteger(settings.MaxCPUs);
  return line;
}

} // namespace kx
