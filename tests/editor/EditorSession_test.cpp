#include "program/editor/Assets.h"
#include "program/editor/FileChooser.h"
#include "tests/editor/SessionFixture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <set>
#include <thread>

namespace kx::editor {
namespace {

using testing::HasSubstr;
using testing::Not;
using tests::TStepAction;

class EditorSession : public TSessionFixture {
protected:
  ~EditorSession() override { TStepAction::Deeds().clear(); }
};

constexpr const char* Tests =
    "    <Action Type=\"MSTEST\">\n      <AssemblyFileName>a.dll</AssemblyFileName>\n"
    "    </Action> <!-- slow -->\n";

TEST_F(EditorSession, AFieldIsWrittenAtOnceAndUndoneAsOneStep) {
  Open(Tests);
  EXPECT_EQ(Do("state")["dirty"], false);
  Set("0", 1, "txtConfigFileName", "a");
  TJson answer = Set("0", 1, "txtConfigFileName", "%Root%\\é日本.testrunconfig");
  EXPECT_EQ(answer["dirty"], true);
  EXPECT_EQ(Field(answer, 3, "ConfigFileName")["value"], "%Root%\\é日本.testrunconfig")
      << "the other pages show it too";
  EXPECT_EQ(Do("undo")["canUndo"], false);
  EXPECT_EQ(Do("redo")["dirty"], true);
  // A text without its variables is what the user wants here.
  Set("0", 1, "txtConfigFileName", "plain.testrunconfig");
  const std::string saved = Saved();
  EXPECT_THAT(saved, HasSubstr("<ConfigFileName>plain.testrunconfig</ConfigFileName>"));
  EXPECT_THAT(saved, HasSubstr("<!-- kept -->"));
  EXPECT_THAT(saved, HasSubstr("    </Action> <!-- slow -->\n"));
}

TEST_F(EditorSession, EnableRulesActAndDisabledFieldsRefuse) {
  Open(Tests);
  EXPECT_EQ(Field(Do("action", {{"id", "0"}}), 0, "edtTestMetadata")["enabled"], false);
  EXPECT_THAT(Refusal("set", {{"id", "0"}, {"page", 0}, {"field", "edtTestMetadata"}, {"value", "x"}}),
              HasSubstr("disabled"));
  TJson answer = Set("0", 0, "rbUseTestMetadata", "True");
  EXPECT_EQ(Field(answer, 0, "edtTestMetadata")["enabled"], true);
  EXPECT_EQ(Field(answer, 0, "RadioButton1")["value"], "False");
}

TEST_F(EditorSession, AnEntryThatWasTypedAndNotAcceptedIsNotLost) {
  Open(Tests);
  TJson typed = Set("0", 0, "txtAssemblyFilename", "b.dll");
  EXPECT_EQ(typed["dirty"], false) << "it awaits its button";
  EXPECT_EQ(Field(typed, 0, "MemoAssemblies")["value"], "a.dll\r\n");
  EXPECT_THAT(Saved(), HasSubstr("\"a.dll\"|\"b.dll\""));
  Set("0", 0, "txtAssemblyFilename", "c.dll");
  TJson clicked =
      Do("click", {{"id", "0"}, {"page", 0}, {"field", "txtAssemblyFilename"}, {"button", "accept"}});
  EXPECT_THAT(Field(clicked, 0, "MemoAssemblies")["value"], "a.dll\r\nb.dll\r\nc.dll\r\n");
  TJson browsed = Do("click", {{"id", "0"},
                               {"page", 1},
                               {"field", "txtOutputFileName"},
                               {"button", "browse"},
                               {"choice", "/r/out.trx"}});
  EXPECT_EQ(Field(browsed, 1, "txtOutputFileName")["value"], "/r/out.trx");
}

TEST_F(EditorSession, ThePasswordNeverLeavesAndStaysWhereItIsNotTouched) {
  Open("    <Action Type=\"DEVENV\">\n      <WebDAVPassword>geheim!</WebDAVPassword>\n    </Action>\n");
  TJson shown = Do("action", {{"id", "0"}});
  const std::size_t page = 5;
  EXPECT_EQ(Field(shown, page, "edtPassword")["isSet"], true);
  EXPECT_THAT(shown.dump() + Do("state").dump(), Not(HasSubstr("geheim")));
  const auto secretOf = [](const std::string& text) {
    const std::size_t begin = text.find("<_WebDAVPassword>");
    return text.substr(begin, text.find("</", begin) - begin);
  };
  const std::string first = Saved();
  EXPECT_THAT(first, Not(HasSubstr("geheim")));
  Set("0", page, "edtUser", "u");
  EXPECT_EQ(secretOf(Saved()), secretOf(first));
  TJson given = Set("0", page, "edtPassword", "neu-geheim");
  EXPECT_THAT(given.dump(), Not(HasSubstr("neu-geheim")));
  EXPECT_NE(secretOf(Saved()), secretOf(first));
  EXPECT_EQ(Field(Set("0", page, "edtPassword", ""), page, "edtPassword")["isSet"], false);
}

TEST_F(EditorSession, ActionsComeGoAndMove) {
  Open(Tests);
  EXPECT_EQ(Do("add", {{"type", "LOOP"}, {"to", "0"}})["id"], "0");
  EXPECT_EQ(Do("move", {{"id", "1"}, {"to", "0/0"}})["id"], "0/0");
  EXPECT_EQ(Do("add", {{"type", "STEP"}, {"to", "0/1"}})["id"], "0/1");
  EXPECT_EQ(Do("move", {{"id", "0/0"}, {"to", "1"}})["id"], "1");
  EXPECT_EQ(Do("move", {{"id", "0"}, {"to", "2"}})["id"], "1");
  Do("attribute", {{"id", "1"}, {"name", "Name"}, {"value", "Schleife"}});
  Do("attribute", {{"id", "1"}, {"name", "ContinueOnError"}, {"value", "ignore"}});
  TJson tree = Do("attribute", {{"id", "1"}, {"name", "LoopVariable"}, {"value", "Item"}})["tree"];
  EXPECT_EQ(tree[0]["type"], "MSTEST");
  EXPECT_EQ(tree[1]["name"], "Schleife");
  EXPECT_EQ(Do("action", {{"id", "1"}})["continueOnError"], "ignore");
  EXPECT_EQ(tree[1]["children"][0]["type"], "STEP");
  EXPECT_EQ(Do("remove", {{"id", "1/0"}})["tree"][1]["children"].size(), 0U);
  EXPECT_THAT(Saved(), HasSubstr("<LoopVariable>Item</LoopVariable>"));
  for (const auto& [operation, arguments] : std::initializer_list<std::pair<const char*, TJson>>{
           {"add", {{"type", "STEP"}, {"to", "0/0"}}},
           {"add", {{"type", "NONE"}, {"to", "0"}}},
           {"remove", {{"id", "7"}}},
           {"remove", {{"id", "../0"}}},
           {"move", {{"id", "1"}, {"to", "1/0"}}},
           {"variable", {{"name", "a b"}, {"value", "x"}}},
           {"action", {{"id", ""}}},
           {"set", {{"id", "0"}, {"page", 99}, {"field", "x"}, {"value", ""}}},
           {"attribute", {{"id", "0"}, {"name", "Type"}, {"value", "STEP"}}},
           {"nothing", TJson::object()}})
    EXPECT_NE(Refusal(operation, arguments), "") << operation << arguments;
  EXPECT_EQ(Do("state")["dirty"], false) << "what is refused changes nothing";
  EXPECT_THAT(Refusal("remove", {{"id", "0"}, {"generation", 1}}), HasSubstr("another window"));
}

// Words are all that holds the session and its page together.
TEST_F(EditorSession, KnowsWhatItsPageAsksForAndSaysWhatItReads) {
  std::string scripts;
  for (const TAsset& asset : Assets)
    if (asset.Name.ends_with(".js")) scripts += asset.Bytes;
  Open(Tests + std::string("    <Action Type=\"LOOP\"/>\n"));
  std::set<std::string> operations;
  for (const std::string asks : {"call(\"", "callUnlessRunning(\"", "look(\"", "edit(\"", "send(\""})
    for (std::size_t at = scripts.find(asks); at != std::string::npos; at = scripts.find(asks, at + 1))
      operations.insert(
          scripts.substr(at + asks.size(), scripts.find('"', at + asks.size()) - at - asks.size()));
  EXPECT_EQ(operations.size(), 26U);
  for (const std::string& operation : operations)
    EXPECT_THAT(Refusal(operation, {{"id", "9"}}), Not(HasSubstr("no operation"))) << operation;

  Open(Tests + std::string("    <Action Type=\"LOOP\"/>\n"));
  Do("variable", {{"name", "V"}, {"value", "1"}});
  Do("propertySet", {{"name", "S"}, {"kind", "Win32"}});
  host_.Write("App.sln", "");
  TJson answers = {Do("state"),
                   Do("action", {{"id", "0"}}),
                   Do("validate"),
                   Do("list", {{"path", ""}}),
                   Do("offers", {{"id", "0"}, {"page", 0}, {"field", "MemoAssemblies"}}),
                   Do("runs")};
  std::set<std::string> words;
  std::string word;
  for (const char c : scripts + "\n") {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      word += c;
    } else if (!word.empty()) {
      words.insert(std::exchange(word, {}));
    }
  }
  std::set<std::string> unread;
  const std::function<void(const TJson&)> look = [&](const TJson& value) {
    for (const auto& [name, item] : value.items()) {
      if (value.is_object() && !words.contains(name)) unread.insert(name);
      if (item.is_structured()) look(item);
    }
  };
  look(answers);
  EXPECT_THAT(unread, testing::IsEmpty());
}

TEST_F(EditorSession, ANewActionStatesWhatDiffersFromItsDefaults) {
  Open("");
  Do("add", {{"type", "STEP"}, {"to", "0"}});
  Do("add", {{"type", "DEVENV"}, {"to", "1"}});
  Set("1", 2, "MaxCPUs", "4");
  Set("1", 2, "LogLevel", "Diagnostic");
  Set("1", 2, "LogLevel", "Normal"); // the default
  // Which Visual Studio is the default differs from machine to machine.
  EXPECT_EQ(Saved(), Project("    <Action Type=\"STEP\"/>\n    <Action Type=\"DEVENV\">\n"
                             "      <VStudioVersion Name=\"vs2005\">2</VStudioVersion>\n"
                             "      <MaxCPUs>4</MaxCPUs>\n    </Action>\n"));
}

TEST_F(EditorSession, AnotherEditorsFileIsNotOverwritten) {
  Open(Tests);
  Do("variable", {{"name", "Mine"}, {"value", "1"}});
  host_.Write("p.kxproj", Project("    <Action Type=\"STEP\"/>\n"));
  EXPECT_EQ(Do("save")["saved"], false);
  EXPECT_THAT(host_.Read("p.kxproj"), HasSubstr("STEP"));
  EXPECT_EQ(Do("reload")["tree"][0]["type"], "STEP");
  EXPECT_EQ(Do("undo")["variables"][0]["name"], "Mine") << "nothing is lost by loading";
  EXPECT_EQ(Do("save", {{"overwrite", true}})["saved"], true);
  EXPECT_THAT(host_.Read("p.kxproj"), HasSubstr("Mine"));
  Do("propertySet", {{"name", "R"}, {"kind", "Win32"}});
  Do("propertySetValue", {{"set", "R"}, {"name", "MajorVersion"}, {"value", "3"}});
  EXPECT_EQ(Do("quit")["ended"], false);
  EXPECT_THAT(text::ToUtf8(session_->KeepUnsaved()), HasSubstr("p.unsaved.kxproj"));
  EXPECT_THAT(host_.Read("p.unsaved.kxproj"), HasSubstr("<Value Name=\"MajorVersion\">3</Value>"));
}

// A run beside the editor counts numbers in the file; only what else is changed in it is a matter for the
// user.
TEST_F(EditorSession, NumbersThatARunHasCountedAreTakenOver) {
  const auto step = [](const char* number) {
    return "    <Action Type=\"STEP\">\n      <Number>" + std::string(number) + "</Number>\n    </Action>\n";
  };
  const struct {
    const char* Name;
    std::function<void()> Edit;
    std::string Theirs;
    bool Saved;
    std::string Number;
  } rows[] = {
      {"counted", [] {}, Project(step("8")), true, "8"},
      {"counted, and a comment", [] {}, Project("    <!-- theirs -->\n" + step("8")), false, "8"},
      {"counted what the user has changed", [this] { Set("0", 0, "Number", "30"); }, Project(step("8")),
       false, "8"},
      {"changed to the same", [this] { Set("0", 0, "Number", "8"); }, Project(step("8")), true, "8"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Name);
    Open(step("5"));
    Do("variable", {{"name", "Mine"}, {"value", "1"}});
    row.Edit();
    host_.Write("p.kxproj", row.Theirs);
    EXPECT_EQ(Do("save")["saved"], row.Saved);
    EXPECT_THAT(host_.Read("p.kxproj"), HasSubstr("<Number>" + row.Number + "</Number>"));
    EXPECT_EQ(host_.Read("p.kxproj").find("Mine") != std::string::npos, row.Saved);
    EXPECT_EQ(Do("ping")["dirty"], !row.Saved);
  }
}

TEST_F(EditorSession, WhatWasNotSavedIsOfferedAgainUntilItIsSaved) {
  const auto variable = [this](const char* name) { Do("variable", {{"name", name}, {"value", "1"}}); };
  const auto offered = [this] {
    std::vector<std::string> names;
    const TJson files = Do("state")["unsaved"];
    for (const auto& file : files)
      names.push_back(std::filesystem::path(file.get<std::string>()).filename().string());
    return names;
  };
  Open(Tests);
  variable("First");
  session_->KeepUnsaved();
  Open();
  EXPECT_THAT(offered(), testing::ElementsAre("p.unsaved.kxproj"));
  variable("Second"); // somebody who does not care about the first
  session_->KeepUnsaved();
  EXPECT_THAT(host_.Read("p.unsaved.kxproj"), HasSubstr("First"));
  Open();
  EXPECT_THAT(offered(), testing::ElementsAre("p.unsaved.kxproj", "p.unsaved-2.kxproj"));
  const TJson files = Do("state")["unsaved"];
  EXPECT_EQ(Do("unsaved", {{"file", files[0]}, {"take", true}})["variables"][0]["name"], "First");
  EXPECT_EQ(Do("undo")["variables"].size(), 0U) << "it is a change like any other";
  Do("redo");
  EXPECT_THAT(offered(), testing::ElementsAre("p.unsaved-2.kxproj"));
  EXPECT_THAT(host_.Read("p.unsaved.kxproj"), HasSubstr("First")) << "nothing is saved yet";
  EXPECT_THAT(Saved(), HasSubstr("First"));
  EXPECT_EQ(host_.Read("p.unsaved.kxproj"), "");
  EXPECT_EQ(Do("unsaved", {{"file", files[1]}})["unsaved"].size(), 0U);
  EXPECT_NE(Refusal("unsaved", {{"file", text::ToUtf8(host_.Path("p.kxproj"))}}), "");
}

TEST_F(EditorSession, ANewProjectHasNoFileUntilItIsSaved) {
  Open();
  EXPECT_EQ(Do("ping")["hasFile"], false);
  EXPECT_EQ(Do("ping")["dirty"], false) << "nobody misses it";
  EXPECT_THAT(Saved(), HasSubstr("<BuildProject>"));
  EXPECT_EQ(Do("ping")["hasFile"], true);
}

// What an action finds wrong leads to the field where it is mended: every entry of the package, by its words.
TEST_F(EditorSession, ProblemsStandBesideTheirFields) {
  const struct {
    const char* Type;
    const char* Properties;
    const char* Place;
    int Page;
    const char* Field;
  } rows[] = {
      {"STEP", "", "Text", 0, "Text"},
      {"DEVENV", "", "Solution file", 0, "Solution"},
      {"DEVENV", "<VStudioVersion>vs2002</VStudioVersion>", "VisualStudio.NET Options", 0, "VStudioVersion"},
      {"DEVENV", "<VStudioVersion>vs2010</VStudioVersion>", ".NET Framework Settings", 0, "VStudioVersion"},
      {"MSTEST", "", "Assembly Filename", 0, "MemoAssemblies"},
      {"MSTEST", "<UseMetadataFile>True</UseMetadataFile>", "Metadata File", 0, "edtTestMetadata"},
      {"MSTEST", "", "VisualStudio.NET Options", 1, "cmbVSVer"},
      {"MSTEST", "<UseStandaloneMSTest>True</UseStandaloneMSTest>", "Standalone MSTest Path", 1, "cmbVSVer"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Type + std::string(" ") + row.Place);
    Open(std::string("    <Action Type=\"STEP\"/>\n    <Action Type=\"") + row.Type + "\">" + row.Properties +
         "</Action>\n");
    TJson found;
    const TJson entries = Do("validate")["entries"];
    for (const auto& entry : entries)
      if (entry["id"] == "1" && entry["place"] == row.Place) found = entry;
    ASSERT_FALSE(found.is_null());
    EXPECT_EQ(found["page"], row.Page);
    EXPECT_EQ(found["field"], row.Field);
  }
}

// A text that no run can expand is named by its property: all of them have a field to go to.
TEST_F(EditorSession, EveryPropertyThatCanBeWrongHasItsField) {
  for (const auto& type : services_.Actions()) {
    const auto action = type.Class->Create();
    std::string elements;
    std::size_t wrong = 0;
    for (const auto& property : action->PublishedProperties().Rows()) {
      const bool isList = property.Kind == TKxPropertyKind::StringList;
      if (!property.Stored || property.Secret || (!isList && property.Kind != TKxPropertyKind::String))
        continue;
      const std::string name = text::ToUtf8(property.Name);
      const char* const value = isList ? "<Line>%No.where%</Line>" : "%No.where%";
      elements.append("<").append(name).append(">").append(value).append("</").append(name).append(">");
      ++wrong;
    }
    Open("    <Action Type=\"" + text::ToUtf8(type.Identifier) + "\">" + elements + "</Action>\n");
    const TJson entries = Do("validate")["entries"];
    std::size_t found = 0;
    for (const auto& entry : entries) {
      if (entry["message"].get<std::string>().find("No.where") == std::string::npos) continue;
      ++found;
      EXPECT_TRUE(entry.contains("field")) << entry;
    }
    EXPECT_GE(found, wrong) << text::ToUtf8(type.Identifier) << entries;
  }
}

TEST_F(EditorSession, PagesOfOneNameAreToldApart) {
  Open(Tests);
  std::vector<std::string> names;
  const TJson pages = Do("action", {{"id", "0"}})["pages"];
  for (const auto& page : pages)
    names.push_back(page["name"]);
  EXPECT_THAT(names, testing::ElementsAre("Settings: Test Source", "Settings: MSTest Options",
                                          "Publish Results", "All Properties"));
}

// A project can be moved with what lies around it; what is far away keeps its full path.
TEST_F(EditorSession, ChosenFilesAreSeenFromTheProject) {
  for (const char* file : {"Sub/App.sln", "Near/50%off%.sln", "Sub/out/x"})
    host_.Write(file, "");
  const std::string folder = text::ToUtf8(host_.Path(""));
  const std::string parent = std::filesystem::path(folder).parent_path().parent_path().string();
  const auto slashed = [](const TJson& value) { return tests::Generic(value.get<std::string>()); };
  const struct {
    const char* Type;
    int Page;
    const char* Field;
    std::string Chosen;
    std::string Written;
  } rows[] = {
      {"DEVENV", 0, "Solution", folder + "Sub/App.sln", "Sub/App.sln"},
      {"DEVENV", 0, "Solution", "Sub/App.sln", "Sub/App.sln"}, // typed
      {"DEVENV", 0, "Solution", "%Root%/App.sln", "%Root%/App.sln"},
      {"DEVENV", 0, "Solution", folder + "Near/50%off%.sln", "Near/50%%off%.sln"},
      {"DEVENV", 0, "Solution", parent + "/Near/App.sln", "../Near/App.sln"},
      {"DEVENV", 0, "Solution", "/far/away/App.sln", "/far/away/App.sln"},
      // The tool sees a relative folder from each project that it builds.
      {"DEVENV", 1, "OutputDirectory", folder + "Sub/out", "%ProjectDir%/Sub/out"},
      {"SOLUTIONITERATOR", 0, "txtSolution", folder + "Sub/New", "Sub/New.sln"},
      {"MSTEST", 1, "RzButtonEditStartingDirectory", folder, "."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Chosen);
    Open(std::string("    <Action Type=\"") + row.Type + "\"/>\n");
    const TJson click = {
        {"id", "0"}, {"page", row.Page}, {"field", row.Field}, {"button", "browse"}, {"choice", row.Chosen}};
    EXPECT_EQ(slashed(Field(Do("click", click), static_cast<std::size_t>(row.Page), row.Field)["value"]),
              row.Written);
  }
  EXPECT_THAT(Refusal("click", {{"id", "0"},
                                {"page", 1},
                                {"field", "txtConfigFileName"},
                                {"button", "browse"},
                                {"choice", "Sub"}}),
              HasSubstr("is a folder"));
}

TEST_F(EditorSession, SelectionsStayAsTheyAreWritten) {
  host_.Write("A.sln",
              "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n"
              "Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"Lib\", \"http://h/Lib\", \"{L}\"\n"
              "EndProject\nGlobal\nEndGlobal\n");
  Open("    <Action Type=\"DEVENV\">\n      <Solution>A.sln</Solution>\n    </Action>\n");
  Set("0", 0, "BuildType", "Selected Projects");
  EXPECT_EQ(Do("offers", {{"id", "0"}, {"page", 0}, {"field", "SelectedProjects"}})["items"][0]["value"],
            "Lib");
  Set("0", 0, "SelectedProjects", "Lib");
  EXPECT_THAT(Saved(), HasSubstr("<Line>Lib</Line>"));
  EXPECT_EQ(Field(Do("action", {{"id", "0"}}), 0, "SelectedProjects")["value"], "Lib\r\n");
}

TEST_F(EditorSession, ACircleOfProjectsIsNamedAndHoldsNobodyUp) {
  std::string solution = "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n";
  for (const char* pair : {"AB", "BC", "CA"})
    solution += std::string("Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"") + pair[0] +
                "\", \"http://h/" + pair[0] + "\", \"{" + pair[0] +
                "}\"\nProjectSection(ProjectDependencies) = postProject\n{" + pair[1] + "} = {" + pair[1] +
                "}\nEndProjectSection\nEndProject\n";
  host_.Write("A.sln", solution + "Global\nEndGlobal\n");
  Open("    <Action Type=\"DEVENV\">\n      <Solution>A.sln</Solution>\n"
       "      <SelectedProjects><Line>A</Line></SelectedProjects>\n    </Action>\n"
       "    <Action Type=\"SOLUTIONITERATOR\">\n      <Solution>A.sln</Solution>\n    </Action>\n");
  Set("0", 0, "BuildType", "Selected Projects");
  EXPECT_THAT(
      Do("offers", {{"id", "0"}, {"page", 0}, {"field", "SelectedProjects"}})["error"].get<std::string>(),
      HasSubstr("A needs B, B needs C, C needs A"));
  Do("validate");
  EXPECT_EQ(Do("quit", {{"discard", true}})["ended"], true);
  EXPECT_TRUE(session_->HasEnded());
}

// One after the other on one project: what the page asks for, and what it is answered, as far as it is named.
TEST_F(EditorSession, WhatIsAskedIsAnswered) {
  Open("    <Action Type=\"STEP\" Name=\"a\"/>\n");
  const TJson root = {{"name", "Root"}, {"value", "x"}};
  const TJson numbers = {{"name", "P"}, {"kind", "DotNet"}, {"values", TJson::array()}};
  TJson filled = numbers;
  filled["values"].push_back({{"name", "Title"}, {"value", "é"}});
  const TJson none = TJson::array();
  const struct {
    const char* Operation;
    TJson Arguments;
    TJson Answer;
  } rows[] = {
      {"ping",
       TJson::object(),
       {{"dirty", false}, {"running", false}, {"canUndo", false}, {"hasFile", true}}},
      {"variable", root, {{"dirty", true}, {"canUndo", true}, {"variables", {root}}}},
      {"variable", {{"name", "Root"}, {"value", nullptr}}, {{"variables", none}}},
      {"undo", TJson::object(), {{"variables", {root}}, {"canRedo", true}}},
      {"redo", TJson::object(), {{"variables", none}, {"canRedo", false}}},
      {"redo", TJson::object(), {{"variables", none}}},
      {"propertySet", {{"name", "P"}, {"kind", "DotNet"}}, {{"propertySets", {numbers}}}},
      {"propertySetValue", {{"set", "P"}, {"name", "Title"}, {"value", "é"}}, {{"propertySets", {filled}}}},
      {"propertySetValue",
       {{"set", "P"}, {"name", "Title"}, {"value", nullptr}},
       {{"propertySets", {numbers}}}},
      {"propertySet", {{"name", "P"}, {"kind", nullptr}}, {{"propertySets", none}}},
      {"copy", {{"id", "0"}, {"to", "1"}}, {{"id", "1"}}},
      {"attribute", {{"id", "1"}, {"name", "Name"}, {"value", "b"}}, {{"dirty", true}}},
      {"action", {{"id", "1"}}, {{"id", "1"}, {"name", "b"}, {"typeName", "Step"}, {"continueOnError", ""}}},
      {"set",
       {{"id", "1"}, {"page", 0}, {"field", "Number"}, {"value", "none"}},
       {{"id", "1"}}}, // with its error
      {"offers", {{"id", "1"}, {"page", 0}, {"field", "Text"}}, {{"items", none}, {"error", ""}}},
      {"offers", {{"id", "options"}, {"page", 0}, {"field", "x"}}, {{"items", none}}},
      {"list",
       {{"path", "missing/x"}},
       {{"isThere", false}, {"more", 0}, {"error", ""}, {"files", {"p.kxproj"}}}},
      {"runs", TJson::object(), {{"runs", none}}},
      {"stop", TJson::object(), {{"running", false}}},
      {"quit", TJson::object(), {{"ended", false}, {"dirty", true}}},
      {"save", TJson::object(), {{"saved", true}, {"dirty", false}}},
      {"remove", {{"id", "1"}}, {{"dirty", true}}},
      {"reload", TJson::object(), {{"dirty", false}, {"canUndo", true}}},
      {"quit", TJson::object(), {{"ended", true}}},
  };
  std::uint64_t newest = 0;
  for (const auto& row : rows) {
    const TJson answer = Do(row.Operation, row.Arguments);
    for (const auto& [name, value] : row.Answer.items())
      EXPECT_EQ(answer.value(name, TJson()), value) << row.Operation << row.Arguments << name;
    EXPECT_GT(answer["answer"].get<std::uint64_t>(), newest) << "answers may overtake one another";
    newest = answer["answer"].get<std::uint64_t>();
  }
}

TEST_F(EditorSession, WhatTakesItsTimeHoldsNobodyUp) {
  Open("    <Action Type=\"STEP\">\n      <Text>slow</Text>\n    </Action>\n");
  TKxEvent began;
  TKxEvent goOn;
  TStepAction::Deeds()[u"validate slow"] = [&](TStepAction&) {
    began.Raise();
    return goOn.WaitFor(std::chrono::seconds(60));
  };
  TKxEvent stop;
  TJson found;
  std::thread checking([&] { found = session_->Handle("validate", TJson::object(), stop); });
  ASSERT_TRUE(began.WaitFor(std::chrono::seconds(60)));
  EXPECT_EQ(Do("variable", {{"name", "V"}, {"value", "1"}})["dirty"], true);
  EXPECT_EQ(Do("save")["saved"], true);
  EXPECT_EQ(Do("offers", {{"id", "0"}, {"page", 0}, {"field", "Text"}})["error"], "");
  EXPECT_FALSE(stop.IsRaised());
  // Who reads the options is sent away before they change; whoever does not go keeps them as they are.
  EXPECT_THAT(
      Refusal("set", {{"id", "options"}, {"page", 1}, {"field", "DotNetFramework.v4.0"}, {"value", ""}}),
      HasSubstr("in a moment"));
  EXPECT_TRUE(stop.IsRaised());
  Do("variable", {{"name", "W"}, {"value", "1"}});
  EXPECT_THAT(text::ToUtf8(session_->KeepUnsaved()), HasSubstr("p.unsaved.kxproj")) << "as at the end";
  goOn.Raise();
  checking.join();
  EXPECT_EQ(found["isOutdated"], true);
  EXPECT_EQ(Do("validate")["entries"].size(), 0U);
}

TEST_F(EditorSession, TheEndStopsWhatTakesItsTime) {
  Open("    <Action Type=\"STEP\">\n      <Text>slow</Text>\n    </Action>\n");
  TKxEvent began;
  TStepAction::Deeds()[u"validate slow"] = [&](TStepAction& action) {
    began.Raise();
    return action.Host().Stop().WaitFor(std::chrono::seconds(600));
  };
  std::thread checking([&] { Do("validate"); });
  ASSERT_TRUE(began.WaitFor(std::chrono::seconds(60)));
  session_->End(std::chrono::seconds(60));
  checking.join();
  Do("validate"); // which begins after the end
}

TEST_F(EditorSession, ALongLogIsGivenInPieces) {
  Open("    <Action Type=\"STEP\">\n      <Text>talk</Text>\n    </Action>\n");
  constexpr int count = 25000;
  host_.Write("late.cs", std::string(70000, '\n') + "here\r\nthere");
  TStepAction::Deeds()[u"talk"] = [](TStepAction& action) {
    for (int i = 0; i < count; ++i)
      action.SendMessage(u"line " + text::FromInteger(i));
    action.SendMessage(u"late.cs(70001,1): error CS0103: no", TStatusTag::stError);
    return true;
  };
  Do("run");
  std::size_t next = 0;
  int lines = 0;
  int answers = 0;
  for (bool goesOn = true; goesOn; ++answers) {
    const TJson piece = TJson::parse(session_->Runs().Events(1, next, std::chrono::seconds(10), stop_));
    EXPECT_EQ(piece["from"], next);
    for (const auto& event : piece["events"])
      if (event["event"] == "message" && event["text"] == "line " + std::to_string(lines)) ++lines;
    next = piece["next"];
    goesOn = piece["running"];
  }
  EXPECT_EQ(lines, count);
  EXPECT_GT(answers, 1);
  EXPECT_EQ(next, std::size_t{count} + 4);
  const TJson source = Do("source", {{"event", count + 1}});
  EXPECT_EQ(source["first"], 69993);
  EXPECT_EQ(source["lines"][8], "here");
  EXPECT_EQ(source["lines"].back(), "there");
  EXPECT_NE(Refusal("source", {{"event", 1}}), "");
  EXPECT_NE(Refusal("source", {{"event", count + 100}}), "");
}

TEST_F(EditorSession, ARunLogsShowsPlacesAndGivesItsNumbersBack) {
  Open("    <Action Type=\"STEP\">\n      <Text>count</Text>\n      <Number>1</Number>\n    </Action>\n");
  host_.Write("src/a.cs", "one\ntwo\n");
  TStepAction::Deeds()[u"count"] = [](TStepAction& action) {
    action.SendMessage(u"src\\a.cs(2,1): error CS0103: no", TStatusTag::stError);
    action.SendMetricInt(u"Compiler", u"Warnings", ++action.Number);
    return true;
  };
  TJson events = RunToTheEnd();
  ASSERT_EQ(events.size(), 5U);
  EXPECT_EQ(events[4]["errors"], 1) << "the end says what the run's summary says";
  EXPECT_EQ(Do("runs")["runs"][0]["errors"], 1);
  EXPECT_EQ(events[1]["line"], 2);
  TJson source = Do("source", {{"event", 1}});
  EXPECT_EQ(source["lines"][1], "two");
  EXPECT_NE(Refusal("source", {{"event", 0}}), "");
  EXPECT_THAT(host_.Read("p.kxproj"), HasSubstr("<Number>2</Number>")) << "as kxhost run does";
  EXPECT_EQ(Do("runs")["runs"][0]["metrics"][0]["value"], 2);
  RunToTheEnd({{"dryRun", true}});
  EXPECT_THAT(host_.Read("p.kxproj"), HasSubstr("<Number>2</Number>"));
}

TEST_F(EditorSession, ARunIsStoppedAndNothingIsEditedMeanwhile) {
  Open("    <Action Type=\"STEP\">\n      <Text>wait</Text>\n    </Action>\n");
  TKxEvent started;
  TStepAction::Deeds()[u"wait"] = [&](TStepAction& action) {
    started.Raise();
    return action.Terminated.WaitFor(std::chrono::seconds(60));
  };
  Do("run");
  ASSERT_TRUE(started.WaitFor(std::chrono::seconds(60)));
  EXPECT_THAT(Refusal("remove", {{"id", "0"}}), HasSubstr("running"));
  EXPECT_THAT(Refusal("run", TJson::object()), HasSubstr("running"));
  EXPECT_THAT(Refusal("quit", TJson::object()), HasSubstr("running"));
  Do("stop");
  EndOfRun();
  EXPECT_EQ(Do("runs")["runs"][0]["stopped"], true);
}

TEST_F(EditorSession, OptionsAreSavedInTheStore) {
  Open(Tests);
  TJson pages = Do("action", {{"id", "options"}});
  TJson text;
  for (const auto& candidate : pages["pages"][0]["fields"])
    if (candidate["kind"] == "folder") text = candidate;
  ASSERT_FALSE(text.is_null());
  Set("options", 0, text["name"].get<std::string>().c_str(), "/opt/vs");
  EXPECT_THAT(host_.Read("options.ini"), HasSubstr("/opt/vs"));
  // The host's own, which no package has a page for.
  const auto folder = text::ToUtf8(host_.Path("fx"));
  Set("options", 1, "DotNetFramework.v4.0", folder.c_str());
  EXPECT_THAT(host_.Read("options.ini"), HasSubstr("v4.0=" + folder));
  EXPECT_THAT(
      Refusal("set", {{"id", "options"}, {"page", 1}, {"field", "DotNetFramework.v4.0"}, {"value", "fx"}}),
      HasSubstr("takes the full path of a folder"));
  Set("options", 1, "DotNetFramework.v4.0", "");
  EXPECT_THAT(host_.Read("options.ini"), Not(HasSubstr("v4.0")));
}

TEST_F(EditorSession, TheChooserListsNamesThatFitTheFilter) {
  host_.Write("Sub/App.sln", "");
  host_.Write("Sub/App.SLN.txt", "");
  const auto folder = ListChooserFolder(u"Sub\\missing\\x.sln", host_.Path(""), u"*.txt2; *.sln");
  EXPECT_THAT(folder.Files, testing::ElementsAre(u"App.sln"));
  EXPECT_FALSE(folder.IsThere);
  EXPECT_TRUE(ListChooserFolder(u"Sub\\", host_.Path(""), u"").IsThere);
  EXPECT_FALSE(ListChooserFolder(u"", host_.Path(""), u"").IsThere);
  EXPECT_FALSE(ListChooserFolder(u"Sub/App.sln", host_.Path(""), u"").IsThere);
  EXPECT_TRUE(folder.Parent.size() < folder.Path.size());
  EXPECT_THAT(ListChooserFolder(u"Sub", host_.Path(""), u"").Files, testing::SizeIs(2));
  for (std::size_t i = 0; i <= MostNamesListed; ++i)
    host_.Write("Many/" + std::to_string(i), "");
  const auto many = ListChooserFolder(u"Many", host_.Path(""), u"");
  EXPECT_EQ(many.Files.size(), MostNamesListed);
  EXPECT_EQ(many.More, 1U);
  EXPECT_THROW(ListChooserFolder(std::u16string_view(u"a\0b", 3), u"/", u""), EKxException);
  Open("");
  const TJson listed = Do("list", {{"path", "Sub/"}, {"patterns", "*.sln"}});
  EXPECT_EQ(std::pair(listed["files"].dump(), listed["isThere"]),
            std::pair(std::string("[\"App.sln\"]"), TJson(true)));
  for (const auto& [name, pattern, expected] :
       std::initializer_list<std::tuple<std::u16string_view, std::u16string_view, bool>>{
           {u"a.SLN", u"*.sln", true},
           {u"a.sln.txt", u"*.sln", false},
           {u"ab", u"a?", true},
           {u"a", u"a?", false},
           {u"xaxb", u"*a*b", true}})
    EXPECT_EQ(MatchesPattern(name, pattern), expected) << text::ToUtf8(name);
}

} // namespace
} // namespace kx::editor
