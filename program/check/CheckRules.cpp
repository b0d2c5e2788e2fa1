// The table: a new rule is a row here and the function that looks.
#include "program/check/BuildProjectRules.h"
#include "program/check/CheckRule.h"
#include "program/check/Configurations.h"
#include "program/check/ProjectRules.h"
#include "program/check/SolutionRules.h"

#include <array>

namespace kx::check {

namespace {

constexpr TCheckLevel Error = TFindingSeverity::Error;
constexpr TCheckLevel Warning = TFindingSeverity::Warning;
constexpr TCheckLevel Note = TFindingSeverity::Note;
constexpr TCheckLevel Off = std::nullopt;

constexpr std::array Rules{
    TCheckRule{u"solution-unreadable", Error, u"A file that is no solution, or one that no tool can read",
               u"Nothing of it can be built.",
               u"Restore the file from version control, or let Visual Studio save it anew.",
               u"Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"App\"", FindUnreadableSolution},
    TCheckRule{u"solution-header", Warning, u"A header that contradicts itself",
               u"The number of the format decides which tool is taken, the comment behind it which Visual "
               u"Studio opens the file with a double click. Where they differ, people and builds use "
               u"different tools.",
               u"Make the comment and the number those of one product.",
               u"Microsoft Visual Studio Solution File, Format Version 10.00\n# Visual Studio 2010",
               FindContradictingHeaders},
    TCheckRule{u"solution-format", Note, u"A format newer than Visual Studio 2010",
               u"The build chooses its tool by the format; for this one none is known, so the action has to "
               u"name the version, and that tool has to understand the file.",
               u"Name the version of Visual Studio in the action that builds the solution.",
               u"Microsoft Visual Studio Solution File, Format Version 12.00", FindNewFormat},
    TCheckRule{u"solution-encoding", Warning, u"Letters that are not read alike on all machines",
               u"Without a byte-order mark Visual Studio and MSBuild take the machine's code page, which "
               u"differs from one machine to another: projects with such names are not found.",
               u"Save the file as UTF-8 with a byte-order mark.",
               u"Project(\"{...}\") = \"Büro\", \"Büro\\Büro.csproj\", \"{...}\"", FindDoubtfulEncoding},
    TCheckRule{u"solution-merge", Error, u"Marks of a merge that was not finished",
               u"Both versions are in the file: projects and configurations are there twice, or contradict "
               u"each other.",
               u"Finish the merge: keep what is meant and take out the marks.",
               u"<<<<<<< mine\nProject(\"{...}\") = \"App\", \"App.csproj\", \"{A}\"", FindMergeMarks},
    TCheckRule{u"solution-section", Error, u"Sections and projects that are not closed, or closed twice",
               u"A reader passes over what follows, or takes it for something else: projects and "
               u"configurations get lost. It is mostly what a merge has left.",
               u"Add the line that closes it, or take the one out that closes nothing.",
               u"Project(\"{...}\") = \"App\", \"App.csproj\", \"{...}\"\nGlobal", FindOpenSections},
    TCheckRule{u"solution-end", Warning, u"Text behind the end of the solution",
               u"Nobody reads it. It is mostly what a merge has left of another version of the file.",
               u"Take it out, or move it to where it belongs.",
               u"EndGlobal\n\tGlobalSection(ProjectConfigurationPlatforms) = postSolution",
               FindTextBehindEnd},
    TCheckRule{u"solution-cycle", Error, u"Projects that need each other",
               u"They have no build order: the build is refused, or searches for an order until it is "
               u"stopped.",
               u"Take one of these dependencies out; \"kxhost graph\" draws them.",
               u"\tProjectSection(ProjectDependencies) = postProject\n"
               u"\t\t{the identifier of a project that needs this one} = {...}\n\tEndProjectSection",
               FindCycles},
    TCheckRule{u"dependency-unknown", Warning, u"Dependencies on projects that the solution does not have",
               u"They are passed over, so the project may be built before what it needs.",
               u"Add the project to the solution, or take the dependency out.",
               u"\tProjectSection(ProjectDependencies) = postProject\n"
               u"\t\t{an identifier that no project has} = {...}\n\tEndProjectSection",
               FindUnknownNeeds},
    TCheckRule{u"dependency-old", Warning, u"Dependencies of the old form that change the build order",
               u"Visual Studio 2002 wrote dependencies into the Global section. Later ones do not read them "
               u"there, so they build in another order than this program.",
               u"Move them into sections ProjectDependencies of the projects.",
               u"\tGlobalSection(ProjectDependencies) = postSolution\n\t\t{App}.0 = {Lib}\n"
               u"\tEndGlobalSection",
               FindOldNeeds},
    TCheckRule{u"project-id-twice", Error, u"Projects that share an identifier",
               u"Dependencies and configurations name projects by it: those of one are taken for those of "
               u"the other.",
               u"Give one of them a new identifier, in its project file and in the solution.",
               u"Project(\"{...}\") = \"App\", \"App.csproj\", \"{A}\"\n"
               u"Project(\"{...}\") = \"Copy of App\", \"Copy.csproj\", \"{A}\"",
               FindSharedIds},
    TCheckRule{u"project-name-twice", Warning, u"Projects of one solution folder that share a name",
               u"Visual Studio refuses to load the second one, and MSBuild names its targets by it: one "
               u"cannot be built alone.",
               u"Rename one of them.",
               u"Project(\"{...}\") = \"App\", \"a\\App.csproj\", \"{A}\"\n"
               u"Project(\"{...}\") = \"App\", \"b\\App.csproj\", \"{B}\"",
               FindSharedNames},
    TCheckRule{u"project-file-twice", Warning, u"A project file that is in the solution more than once",
               u"It is built twice, the second time over the output of the first.",
               u"Take one of the entries out, with the configurations of its identifier.",
               u"Project(\"{...}\") = \"App\", \"App.csproj\", \"{A}\"\n"
               u"Project(\"{...}\") = \"App2\", \"App.csproj\", \"{B}\"",
               FindSharedFiles},
    TCheckRule{u"project-missing", Error, u"Projects whose file is not there",
               u"The build fails, or leaves them out without a word.",
               u"Add the file to version control, mend the path, or take the project out of the solution.",
               u"Project(\"{...}\") = \"App\", \"gone\\App.csproj\", \"{A}\"", FindMissingProjects},
    TCheckRule{u"projects-missing", Warning, u"A solution without any of its project files",
               u"The solution stands alone: it was copied without them, or it is looked at in another folder "
               u"than its own.",
               u"Get the projects beside it; what they hold cannot be checked without them.",
               u"Project(\"{...}\") = \"App\", \"gone\\App.csproj\", \"{A}\"", FindNoProjects},
    TCheckRule{u"path-case", Warning, u"Paths of projects that differ in letter case from the disk",
               u"Windows finds the file all the same; tools on other systems do not.",
               u"Write the path as the disk has it.",
               u"Project(\"{...}\") = \"App\", \"app\\app.csproj\", \"{A}\"", FindOtherSpellings},
    TCheckRule{u"project-kind", Warning, u"Projects of a kind that no tool here builds",
               u"MSBuild refuses the project or passes over it; so does Visual Studio where what belongs to "
               u"it is not installed.",
               u"Build it by an action of its own, or take it out of the configurations that are built.",
               u"Project(\"{...}\") = \"Queries\", \"Queries.dbp\", \"{A}\"", FindStrangeProjects},
    TCheckRule{u"project-unmapped", Warning, u"Projects without a configuration",
               u"No configuration of the solution builds them, and nothing says so.",
               u"Open the configuration manager of Visual Studio and give the project its configurations, or "
               u"take it out of the solution.",
               u"\tGlobalSection(ProjectConfigurationPlatforms) = postSolution\n"
               u"\t\t(no line that begins with the project's identifier)",
               FindUnmapped},
    TCheckRule{u"project-half-mapped", Warning, u"Projects without a configuration in some of the solution's",
               u"In those the project is not built, and what needs it takes an old output or fails.",
               u"Open the configuration manager of Visual Studio and choose a configuration for each.",
               u"\t\tDebug|Win32 = Debug|Win32\n\t\tRelease|Win32 = Release|Win32\n"
               u"...\n\t\t{A}.Debug|Win32.ActiveCfg = Debug|Win32\n\t\t(no line {A}.Release|Win32)",
               FindHalfMapped},
    TCheckRule{u"project-never-built", Note, u"Projects that no configuration of the solution builds",
               u"They have configurations, but none is marked to be built: their output is what somebody "
               u"left there.",
               u"Mark the project in the configuration manager of Visual Studio, or let it be if it is "
               u"meant so.",
               u"\t\t{A}.Debug|Win32.ActiveCfg = Debug|Win32\n\t\t(no line {A}.Debug|Win32.Build.0)",
               FindNeverBuilt},
    TCheckRule{u"configuration-unknown", Warning, u"Configurations that the project does not have",
               u"Visual Studio leaves the project out; MSBuild builds it with settings that nobody has made, "
               u"or fails for want of an output path.",
               u"Open the configuration manager of Visual Studio and choose one that the project has.",
               u"\t\t{A}.Debug|Win32.ActiveCfg = Debug|Win32\n\t\t(the project knows Debug|x64 alone)",
               FindUnknownMappings},
    TCheckRule{u"reference-outside", Note, u"References to projects that are not in the solution",
               u"MSBuild builds them as well, in a configuration that the solution does not choose; Visual "
               u"Studio takes the output that happens to be there.",
               u"Add the project to the solution, or reference its assembly.",
               u"<ProjectReference Include=\"..\\Lib\\Lib.csproj\">", FindReferencesOutside},
    TCheckRule{
        u"reference-order", Off, u"References to projects that are built later",
        u"Only dependencies that the solution states order its projects here. MSBuild and Visual Studio "
        u"follow references by themselves; what builds or stamps one project after the other does not.",
        u"State the dependency in the solution (Project Dependencies in Visual Studio).",
        u"<ProjectReference Include=\"..\\Lib\\Lib.csproj\">", FindReferencesNotOrdered},
    TCheckRule{u"framework-new", Warning,
               u"Projects for a newer .NET than the solution's Visual Studio knows",
               u"The MSBuild that belongs to the solution's format refuses the framework, or builds for "
               u"another one.",
               u"Convert the solution, or let the project target an older framework.",
               u"<TargetFrameworkVersion>v4.0</TargetFrameworkVersion>", FindNewFrameworks},
    TCheckRule{
        u"versions-differ", Note, u"Native and managed versions of one solution that have nothing in common",
        u"What is delivered together bears different versions: resource scripts and AssemblyInfo files "
        u"are stamped by different steps, and one was forgotten.",
        u"Stamp both in the build, from one property set or variable.",
        u" FILEVERSION 1,2,0,0\n[assembly: AssemblyVersion(\"1.1.0.0\")]", FindDifferentVersions},
    TCheckRule{u"project-unreadable", Error, u"Project files that are no well-formed XML",
               u"No tool can build the project.", u"Mend the file in the line that is named.",
               u"<Project><ItemGroup></Project>", FindUnreadableProject},
    TCheckRule{u"source-missing", Error, u"Sources that the project lists and that are not there",
               u"The compiler stops at them.",
               u"Add the file to version control, or take it out of the project.",
               u"<Compile Include=\"Gone.cs\" />", FindMissingSources},
    TCheckRule{u"source-case", Warning, u"Sources that differ in letter case from the disk",
               u"Windows finds the file all the same; tools on other systems do not.",
               u"Write the path as the disk has it.", u"<Compile Include=\"PROGRAM.CS\" />",
               FindSourcesSpelledOtherwise},
    TCheckRule{u"source-twice", Warning, u"Sources that the project lists twice",
               u"The compiler warns, or takes the second one for another file of the same name.",
               u"Take one of them out.", u"<Compile Include=\"A.cs\" />\n<Compile Include=\".\\A.cs\" />",
               FindSourcesListedTwice},
    TCheckRule{u"hint-missing", Note, u"Referenced assemblies that are not where the project says",
               u"The compiler looks for an assembly of that name elsewhere, and takes what it finds.",
               u"Add the assembly to version control, restore the packages first, or mend the path.",
               u"<HintPath>..\\lib\\Parser.dll</HintPath>", FindMissingHints},
    TCheckRule{u"assembly-info-missing", Note, u"Managed projects without an AssemblyInfo file",
               u"Their assemblies have the version 0.0.0.0, and stamping passes them over.",
               u"Add Properties\\AssemblyInfo.cs to the project.", u"(no item AssemblyInfo.cs)",
               FindNoAssemblyInfo},
    TCheckRule{
        u"assembly-info-several", Note, u"Projects that compile several AssemblyInfo files",
        u"Stamping takes the first one; what the others state stays as it is.",
        u"Keep one, and share the rest under another name.",
        u"<Compile Include=\"AssemblyInfo.cs\" />\n<Compile Include=\"Properties\\AssemblyInfo.cs\" />",
        FindSeveralAssemblyInfos},
    TCheckRule{u"attribute-twice", Error, u"Attributes of an assembly that are stated twice",
               u"The compiler refuses the second one.", u"Take one of them out.",
               u"[assembly: AssemblyVersion(\"1.0.0.0\")]\n[assembly: AssemblyVersion(\"1.1.0.0\")]",
               FindAttributesTwice},
    TCheckRule{u"version-impossible", Error, u"Versions beyond what their form can hold",
               u"A part has 16 bits: the compiler refuses a larger one, or cuts it off.",
               u"Choose smaller numbers.", u"[assembly: AssemblyVersion(\"1.0.70000.0\")]",
               FindImpossibleVersions},
    TCheckRule{u"script-refused", Warning, u"Resource scripts whose version block cannot be read",
               u"They cannot be stamped: the build ends with an error when it tries.",
               u"Write the block as resource editors do, one statement a line, BEGIN and END on lines of "
               u"their own.",
               u"VALUE \"FileVersion\",\n      \"1.0\"", FindRefusedScripts},
    TCheckRule{u"script-unseen", Warning, u"Version resources that Windows does not see",
               u"Where no header defines VS_VERSION_INFO, the resource gets that word for a name instead of "
               u"the number 1, under which Windows looks for versions.",
               u"Include winver.h before the block.", u"(no #include)\nVS_VERSION_INFO VERSIONINFO",
               FindUnseenScripts},
    TCheckRule{
        u"script-loss", Note, u"What stamping would change in a resource script without being asked",
        u"Stamping writes the version block anew, and not all that may stand in one can be kept. Numbers, "
        u"flags and the file's type come from the action: what is named of them is what a step changes "
        u"that does not state them.",
        u"Let it be where it does not matter; else set the version by other means.",
        u"#ifdef _DEBUG\n FILEFLAGS VS_FF_DEBUG\n#endif", FindLossesOfScripts},
    TCheckRule{u"configuration-none", Error,
               u"A solution without the configuration that --configuration asks for",
               u"An action that builds it fails, or builds nothing.",
               u"Choose one that the solution has; a name counts before an expression.",
               u"kxhost check App.sln --configuration \"Relaese|Any CPU\"", FindNoConfiguration},
    TCheckRule{u"build-project", Error, u"Build projects that cannot be loaded",
               u"\"kxhost run\" refuses them.", u"Mend the file in the line that is named.",
               u"<Action Type=\"DEVENF\">", FindRefusedBuildProject},
    TCheckRule{u"settings-invalid", Error, u"Settings of actions that a run would stumble over",
               u"The run ends at that action: a file or a project that is not there, a name that means "
               u"nothing, a choice that is missing.",
               u"Mend the setting; \"kxhost edit\" shows it on its page.",
               u"<Solution>%Rooot%\\App.sln</Solution>", FindInvalidSettings},
    TCheckRule{u"file-unchangeable", Note, u"Files that a run would change and cannot",
               u"Stamping fails: the file is read-only, or belongs to somebody else.",
               u"Check it out, or give the user of the build the right to write it.",
               u"(AssemblyInfo.cs, read-only)", FindUnchangeableFiles},
    TCheckRule{u"setting-ineffective", Note, u"Settings that others switch off",
               u"Whoever reads the project believes in them; the build does not use them.",
               u"Take them out, or choose what they belong to.",
               u"<BuildType>btAllProjects</BuildType>\n<SelectedProjects><Line>App</Line></SelectedProjects>",
               FindIneffectiveSettings},
    TCheckRule{u"variable-unused", Note, u"Variables that nothing refers to",
               u"A change of their value changes nothing.", u"Take them out, or use them.",
               u"<Variable Name=\"Old\">1</Variable>", FindUnusedVariables},
    TCheckRule{u"property-set-unused", Note, u"Property sets that no action takes",
               u"What they say is stamped nowhere.", u"Take them out, or name them in an action.",
               u"<PropertySet Name=\"Old\" Kind=\"Win32\">", FindUnusedPropertySets},
    TCheckRule{u"secret-clear", Warning, u"Passwords and the like in clear text",
               u"Everybody who can read the file, and everybody with its history, knows them.",
               u"Change the password; give it by --secret or --set-secret, or from the CI system's store.",
               u"<Variable Name=\"DeployPassword\">abc123</Variable>", FindClearSecrets},
};

} // namespace

std::span<const TCheckRule> CheckRules() {
  return Rules;
}

} // namespace kx::check
