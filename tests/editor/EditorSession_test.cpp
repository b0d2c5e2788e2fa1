#include "program/editor/Assets.h"
#include "program/editor/FileChooser.h"
#include "tests/editor/SessionFixture.h"

#include <filesystem>
#include <regex>
#include <set>
#include <thread>

namespace kx::editor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tests::TStepAction;

constexpr auto Long = std::chrono::seconds(60);

using EditorSession = TSessionFixture;

constexpr const char* Tests =
    "    <Action Type=\"MSTEST\">\n      <AssemblyFileName>a.dll</AssemblyFileName>\n"
    "    </Action> <!-- slow -->\n";

TEST_F(EditorSession, AFieldIsWrittenAtOnceAndUndoneAsOneStep) {
  Open(Tests);
  EXPECT_EQ(Do("state")["dirty"], false);
  Set("0", 1, "txtConfigFileName", "a");
  const TJson answer = Set("0", 1, "txtConfigFileName", "%Root%\\é日本.testrunconfig");
  EXPECT_EQ(answer["dirty"], true);
  EXPECT_EQ(Field(answer, 3, "ConfigFileName")["value"], "%Root%\\é日本.testrunconfig")
      << "the other pages show it too";
  EXPECT_EQ(Do("undo")["canUndo"], false);
  EXPECT_EQ(Do("redo")["dirty"], true);
  // A text without its variables is what the user wants here.
  Set("0", 1, "txtConfigFileName", "plain.testrunconfig");
  const std::string saved = Saved();
  for (const char* kept :
       {"<ConfigFileName>plain.testrunconfig</", "<!-- kept -->", "</Action> <!-- slow -->\n"})
    EXPECT_THAT(saved, HasSubstr(kept));
}

TEST_F(EditorSession, RemembersWhatFitsIntoItsMemory) {
  Open("");
  const auto value = [](char letter) { return std::string(3 << 20, letter); };
  for (const char letter : {'a', 'b', 'c'})
    Do("variable", {{"name", "V"}, {"value", value(letter)}});
  const TJson oldest = Do("undo");
  EXPECT_EQ(oldest["canUndo"], false);
  EXPECT_EQ(oldest["variables"][0]["value"], value('b'));
  EXPECT_EQ(Do("redo")["variables"][0]["value"], value('c'));
}

TEST_F(EditorSession, ThePasswordNeverLeavesAndStaysWhereItIsNotTouched) {
  constexpr int page = 5;
  const auto secretOf = [](const std::string& text) {
    EXPECT_THAT(text, Not(HasSubstr("geheim")));
    const std::size_t begin = text.find("<_WebDAVPassword>");
    return text.substr(begin, text.find("</", begin) - begin);
  };
  Open(Action("DEVENV", "WebDAVPassword", "geheim!"));
  const TJson shown = Do("action", {{"id", "0"}});
  EXPECT_EQ(Field(shown, page, "edtPassword")["isSet"], true);
  EXPECT_THAT(shown.dump() + Do("state").dump(), Not(HasSubstr("geheim")));
  const std::string first = secretOf(Saved());
  Set("0", page, "edtUser", "u");
  EXPECT_EQ(secretOf(Saved()), first);
  EXPECT_THAT(Set("0", page, "edtPassword", "neu-geheim").dump(), Not(HasSubstr("neu-geheim")));
  EXPECT_NE(secretOf(Saved()), first);
  EXPECT_EQ(Field(Set("0", page, "edtPassword", ""), page, "edtPassword")["isSet"], false);
}

TEST_F(EditorSession, ActionsComeGoAndMove) {
  Open(Tests);
  EXPECT_EQ(Do("add", {{"type", "LOOP"}, {"to", "0"}})["id"], "0");
  EXPECT_EQ(Do("move", {{"id", "1"}, {"to", "0/0"}})["id"], "0/0");
  EXPECT_EQ(Do("add", {{"type", "STEP"}, {"to", "0/1"}})["id"], "0/1");
  EXPECT_EQ(Do("move", {{"id", "0/0"}, {"to", "1"}})["id"], "1");
  EXPECT_EQ(Do("move", {{"id", "0"}, {"to", "2"}})["id"], "1");
  for (const auto& [name, value] :
       {std::pair("Name", "Schleife"), {"ContinueOnError", "ignore"}, {"LoopVariable", "Item"}})
    Do("attribute", {{"id", "1"}, {"name", name}, {"value", value}});
  const TJson tree = Do("state")["tree"];
  EXPECT_EQ(tree[0]["type"], "MSTEST");
  EXPECT_EQ(tree[1]["name"], "Schleife");
  EXPECT_EQ(tree[1]["children"][0]["type"], "STEP");
  EXPECT_EQ(Do("action", {{"id", "1"}})["continueOnError"], "ignore");
  EXPECT_EQ(Do("remove", {{"id", "1/0"}})["tree"][1]["children"].size(), 0U);
  EXPECT_THAT(Saved(), HasSubstr("<LoopVariable>Item</LoopVariable>"));
  const std::tuple<const char*, const char*, const char*> refused[] = {
      {"add", R"({"type":"STEP","to":"0/0"})", "The action MSTEST is no loop and cannot hold actions."},
      {"add", R"({"type":"NONE","to":"0"})", "Unknown action type \"NONE\"."},
      {"add", R"({"type":"STEP","to":""})", "There is no such place for an action."},
      {"add", R"({"to":"0"})", "The request has no text \"type\"."},
      {"remove", R"({"id":"7"})", "The project has no such action any more."},
      {"remove", R"({"id":"../0"})", "That names no action."},
      {"remove", R"({"id":"0/"})", "That names no action."},
      {"remove", R"({"id":"0","generation":1})",
       "The project has been changed in another window. Nothing was done; here is how it is now."},
      {"move", R"({"id":"1","to":"1/0"})", "What holds actions cannot be moved into itself."},
      {"variable", R"({"name":"a b","value":"x"})",
       "DIR/p.kxproj(3): The variable name \"a b\" may hold only letters, digits, \"_\" and \".\"."},
      {"action", R"({"id":""})", "No action is named."},
      {"set", R"({"id":"0","page":99,"field":"x","value":""})", "The action has no such page."},
      {"set", R"({"id":"0","page":"0","field":"x","value":""})", "The request has no number \"page\"."},
      {"set", R"({"id":"0","page":-1,"field":"x","value":""})", "The request has no number \"page\"."},
      {"set", R"({"id":"0","page":0,"field":"edtTestMetadata","value":"x"})",
       "The field \"Test Metadata File:\" is disabled."},
      {"attribute", R"({"id":"0","name":"Type","value":"STEP"})", "An action has no attribute Type."},
      {"source", R"({"event":0})", "The message names no place."},
      {"nothing", "{}", "There is no operation nothing."},
      {"state", "[]", "A request is an object."}};
  for (const auto& [operation, arguments, reason] : refused)
    EXPECT_EQ(folder_.Plain(Refusal(operation, TJson::parse(arguments))), reason) << arguments;
  EXPECT_EQ(Do("state")["dirty"], false) << "what is refused changes nothing";
}

TEST_F(EditorSession, GroupsAndTheirActionsAreEditedWhereTheyStand) {
  const auto action = [](const std::string& name, const std::string& more = "") {
    return "    <Action Type=\"STEP\" Name=\"" + name + "\"" + more + "/>\n";
  };
  Open("    <Group Name=\"G\" Needs=\"\">\n  " + action("A") + "    </Group> <!-- all -->\n" +
       action("B", " Needs=\"G\""));
  const TJson group = Do("state")["tree"][0];
  EXPECT_EQ(group["name"], "G");
  EXPECT_EQ(group["needs"], ",");
  EXPECT_EQ(group["children"][0]["id"], "0");
  EXPECT_EQ(Do("copy", {{"id", "1"}, {"to", "0"}})["id"], "0");
  EXPECT_EQ(Do("remove", {{"id", "0"}})["tree"].size(), 2U);
  const std::tuple<TJson, const char*, const char*> attributes[] = {
      {group["id"], "Name", "Tools"}, {group["id"], "Needs", "C"},
      {group["id"], "Needs", ""},     {"0", "Needs", ","},
      {"0", "Retries", "2"},          {"0", "Retries", ""}};
  for (const auto& [id, name, value] : attributes)
    Do("attribute", {{"id", id}, {"name", name}, {"value", value}});
  EXPECT_EQ(Do("action", {{"id", "0"}})["terms"][0]["value"], ",");
  EXPECT_EQ(Do("add", {{"type", "STEP"}, {"to", "0/1"}})["id"], "1") << "into the group";
  EXPECT_EQ(Do("group", {{"id", "2"}, {"name", "Late"}})["id"], "g1");
  EXPECT_EQ(Do("move", {{"id", "g1"}, {"to", "0"}})["id"], "g0");
  EXPECT_EQ(Do("move", {{"id", "2"}, {"to", "0/1"}})["id"], "1") << "from one group to another";
  Do("dissolve", {{"id", "g1"}});
  const std::tuple<const char*, TJson, const char*> refused[] = {
      {"dissolve", {{"id", "0"}}, ""},
      {"remove", {{"id", "g7"}}, ""},
      {"move", {{"id", "g0"}, {"to", "0/0"}}, ""},
      {"group", {{"id", "0"}, {"name", "Inner"}}, ""},
      {"group", {{"id", "2"}, {"name", " "}}, ""},
      {"attribute", {{"id", "g0"}, {"name", "Retries"}, {"value", "1"}}, ""},
      {"attribute", {{"id", "0"}, {"name", "Retries"}, {"value", "x"}}, "Retries takes a number"}};
  for (const auto& [operation, arguments, reason] : refused) {
    const std::string said = Refusal(operation, arguments);
    EXPECT_THAT(said, testing::AllOf(Not(testing::IsEmpty()), HasSubstr(reason))) << operation << arguments;
  }
  EXPECT_THAT(Saved(), HasSubstr("    <Group Name=\"Late\">\n  " + action("B", " Needs=\"Tools\"") +
                                 "      <Action Type=\"STEP\"/>\n    </Group>\n"
                                 "    <Action Type=\"STEP\" Needs=\"\" Name=\"A\"/>\n"));
}

// Words are all that holds the session and its page together.
TEST_F(EditorSession, KnowsWhatItsPageAsksFor) {
  std::string scripts;
  for (const TAsset& asset : Assets)
    if (asset.Name.ends_with(".js")) scripts += asset.Bytes;
  Open(Tests);
  std::set<std::string> operations;
  for (const std::string asks : {"call(\"", "callUnlessRunning(\"", "look(\"", "edit(\"", "send(\""})
    for (std::size_t at = scripts.find(asks); at != std::string::npos; at = scripts.find(asks, at)) {
      at += asks.size();
      operations.insert(scripts.substr(at, scripts.find('"', at) - at));
    }
  EXPECT_EQ(operations.size(), 31U);
  for (const std::string& operation : operations)
    EXPECT_THAT(Refusal(operation, {{"id", "9"}}), Not(HasSubstr("no operation"))) << operation;
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
  Variable("Mine");
  folder_.Write("p.kxproj", Project("    <Action Type=\"STEP\"/>\n"));
  EXPECT_EQ(Do("save")["saved"], false);
  EXPECT_THAT(folder_.Read("p.kxproj"), HasSubstr("STEP"));
  EXPECT_EQ(Do("reload")["tree"][0]["type"], "STEP");
  EXPECT_EQ(Do("undo")["variables"][0]["name"], "Mine") << "nothing is lost by loading";
  EXPECT_EQ(Do("save", {{"overwrite", true}})["saved"], true);
  EXPECT_THAT(folder_.Read("p.kxproj"), HasSubstr("Mine"));
  Do("propertySet", {{"name", "R"}, {"kind", "Win32"}});
  Do("propertySetValue", {{"set", "R"}, {"name", "MajorVersion"}, {"value", "3"}});
  EXPECT_EQ(Do("quit")["ended"], false);
  EXPECT_THAT(text::ToUtf8(session_->KeepUnsaved()), HasSubstr("p.unsaved.kxproj"));
  EXPECT_THAT(folder_.Read("p.unsaved.kxproj"), HasSubstr("<Value Name=\"MajorVersion\">3</Value>"));
}

// A run beside the editor counts numbers in the file; only what else is changed in it is a matter for the
// user.
TEST_F(EditorSession, NumbersThatARunHasCountedAreTakenOver) {
  const struct {
    const char* Name;
    const char* Mine; // the user's own number
    const char* Theirs;
    bool Saved;
    const char* Property = "Number";
    const char* Before = "5";
  } rows[] = {
      {"counted", nullptr, "", true},
      {"counted, and a comment", nullptr, "    <!-- theirs -->\n", false},
      {"counted what the user has changed", "30", "", false},
      {"changed to the same", "8", "", true},
      {"counted where a variable stood", nullptr, "", true, "Text", "%Mine%"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Name);
    Open(Action("STEP", row.Property, row.Before));
    Variable("Mine");
    if (row.Mine != nullptr) Set("0", 0, "Number", row.Mine);
    folder_.Write("p.kxproj", Project(row.Theirs + Action("STEP", row.Property, "8")));
    EXPECT_EQ(Do("save")["saved"], row.Saved);
    const std::string text = folder_.Read("p.kxproj");
    EXPECT_THAT(text, HasSubstr(std::string("<") + row.Property + ">8</"));
    EXPECT_EQ(text.find("Mine") != std::string::npos, row.Saved);
    EXPECT_EQ(Do("ping")["dirty"], !row.Saved);
  }
}

TEST_F(EditorSession, WhatWasNotSavedIsOfferedAgainUntilItIsSaved) {
  const auto offered = [this] {
    std::string names;
    const TJson files = Do("state")["unsaved"];
    for (const auto& file : files)
      names += std::filesystem::path(file.get<std::string>()).filename().string() + " ";
    return names;
  };
  Open(Tests);
  Variable("First");
  session_->KeepUnsaved();
  Open();
  EXPECT_EQ(offered(), "p.unsaved.kxproj ");
  Variable("Second"); // somebody who does not care about the first
  session_->KeepUnsaved();
  EXPECT_THAT(folder_.Read("p.unsaved.kxproj"), HasSubstr("First"));
  Open();
  EXPECT_EQ(offered(), "p.unsaved.kxproj p.unsaved-2.kxproj ");
  const TJson files = Do("state")["unsaved"];
  EXPECT_EQ(Do("unsaved", {{"file", files[0]}, {"take", true}})["variables"][0]["name"], "First");
  EXPECT_EQ(Do("undo")["variables"].size(), 0U) << "it is a change like any other";
  Do("redo");
  EXPECT_EQ(offered(), "p.unsaved-2.kxproj ");
  EXPECT_THAT(folder_.Read("p.unsaved.kxproj"), HasSubstr("First")) << "nothing is saved yet";
  EXPECT_THAT(Saved(), HasSubstr("First"));
  EXPECT_EQ(folder_.Read("p.unsaved.kxproj"), "");
  EXPECT_EQ(Do("unsaved", {{"file", files[1]}})["unsaved"].size(), 0U);
  EXPECT_NE(Refusal("unsaved", {{"file", text::ToUtf8(folder_.Path("p.kxproj"))}}), "");
}

TEST_F(EditorSession, TellsItsPageWhatTheProjectHolds) {
  // An object a line.
  const auto plain = [this](const TJson& answer) {
    static const std::regex starts(R"re(\},\{)re");
    return folder_.Plain(std::regex_replace(answer.dump(), starts, "},\n{"));
  };
  folder_.Write("p.kxproj",
                "<BuildProject><Variables><Variable Name='V'>1</Variable></Variables><PropertySets>"
                "<PropertySet Name='R' Kind='Win32'><Value Name='MajorVersion'>3</Value></PropertySet>"
                "</PropertySets><Actions><Action Type='STEP' Name='a' Condition='1 == 1' Needs=''/>"
                "<Group Name='G' Needs='a'><Action Type='LOOP' Retries='2' TimeLimit='5m' Parallel='true'>"
                "<LoopVariable>P</LoopVariable><Actions><Action Type='STEP' IdleLimit='9s'>"
                "<Text>x</Text></Action></Actions></Action></Group><Group Name='H'/>"
                "<Action Type='STEP' ContinueOnError='true'/></Actions></BuildProject>");
  Open();
  EXPECT_EQ(
      plain(Do("state")),
      R"({"answer":1,"canRedo":false,"canUndo":false,"dirty":false,"file":"DIR/p.kxproj","generation":1,"hasFile":true,"messages":[],"name":"","propertySets":[{"kind":"Win32","name":"R","values":[{"name":"MajorVersion","value":"3"}]}],"running":false,"tree":[{"id":"0","isLoop":false,"name":"a","type":"STEP","typeName":"Step"},
{"children":[{"children":[{"id":"1/0","isLoop":false,"name":"","type":"STEP","typeName":"Step"}],"id":"1","isLoop":true,"name":"","type":"LOOP","typeName":"Loop"}],"id":"g0","isGroup":true,"name":"G","needs":"a","typeName":"Group"},
{"children":[],"id":"g1","isGroup":true,"name":"H","needs":"","typeName":"Group"},
{"id":"2","isLoop":false,"name":"","type":"STEP","typeName":"Step"}],"types":[{"category":"Tests","image":false,"isLoop":false,"name":"Step","type":"STEP"},
{"category":"Tests","image":false,"isLoop":true,"name":"Loop","type":"LOOP"},
{"category":"Compilers","image":true,"isLoop":false,"name":"Build VS.Net Solution","type":"DEVENV"},
{"category":"Testing Tools","image":true,"isLoop":false,"name":"Run MSTest","type":"MSTEST"},
{"category":"Compilers","image":true,"isLoop":false,"name":"Win32 Version Info Updater","type":"VERSIONINFO"},
{"category":"Compilers","image":true,"isLoop":true,"name":"VS.NET Solution Iterator","type":"SOLUTIONITERATOR"}],"unsaved":[],"variables":[{"name":"V","value":"1"}]})");
  EXPECT_EQ(
      plain(Do("action", {{"id", "0"}})),
      R"({"answer":2,"canRedo":false,"canUndo":false,"continueOnError":"","dirty":false,"generation":1,"hasFile":true,"id":"0","messages":[],"name":"a","pages":[{"fields":[{"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"What is sent.","isSet":false,"items":[],"kind":"text","label":"Text","name":"Text","needs":"","offers":"","property":"Text","takesNewItems":false,"title":"","value":""},
{"buttons":[],"default":"7","enabled":true,"error":"","filter":"","group":"","hint":"A number.","isSet":false,"items":[],"kind":"integer","label":"Number","name":"Number","needs":"","offers":"","property":"Number","takesNewItems":false,"title":"","value":"7"},
{"buttons":[],"default":"False","enabled":true,"error":"","filter":"","group":"","hint":"A flag.","isSet":false,"items":[],"kind":"check","label":"Flag","name":"Flag","needs":"","offers":"","property":"Flag","takesNewItems":false,"title":"","value":"False"},
{"buttons":[],"default":"Green","enabled":true,"error":"","filter":"","group":"","hint":"A colour.","isSet":false,"items":["Red","Green","Blue"],"kind":"dropdown","label":"Colour","name":"Colour","needs":"","offers":"","property":"Colour","takesNewItems":false,"title":"","value":"Green"},
{"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"Lines.","isSet":false,"items":[],"kind":"list","label":"Lines","name":"Lines","needs":"","offers":"","property":"Lines","takesNewItems":false,"title":"","value":""},
{"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"Clear text.","isSet":false,"items":[],"kind":"secret","label":"Password","name":"Password","needs":"","offers":"","property":"Password","takesNewItems":false,"title":"","value":""},
{"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"Encrypted.","isSet":false,"items":[],"kind":"secret","label":"_ Password","name":"_Password","needs":"","offers":"","property":"_Password","takesNewItems":false,"title":"","value":""}],"name":"All Properties"}],"running":false,"terms":[{"applies":true,"help":"The actions and groups, with commas between them, that must have succeeded before; empty: none. Without it the action needs the one before it.","name":"Needs","value":","},
{"applies":true,"help":"The action is passed over unless this holds, such as %Branch% == \"main\" and not %Quick%.","name":"Condition","value":"1 == 1"},
{"applies":true,"help":"How often a failed action is tried again.","name":"Retries","value":""},
{"applies":true,"help":"An attempt that takes longer is ended and has failed: 90s, 30m, 2h.","name":"TimeLimit","value":""},
{"applies":true,"help":"An attempt that says nothing for so long is ended and has failed: 90s, 30m, 2h.","name":"IdleLimit","value":""},
{"applies":false,"help":"The passes of this loop may run at the same time, as far as they do not depend on each other.","name":"Parallel","value":""}],"typeName":"Step"})");
  EXPECT_EQ(
      plain(Do("action", {{"id", "1"}})),
      R"({"answer":3,"canRedo":false,"canUndo":false,"continueOnError":"","dirty":false,"generation":1,"hasFile":true,"id":"1","loopVariable":"P","messages":[],"name":"","pages":[{"fields":[{"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"One a pass.","isSet":false,"items":[],"kind":"list","label":"Values","name":"Values","needs":"","offers":"","property":"Values","takesNewItems":false,"title":"","value":""}],"name":"All Properties"}],"running":false,"terms":[{"applies":true,"help":"The actions and groups, with commas between them, that must have succeeded before; empty: none. Without it the action needs the one before it.","name":"Needs","value":""},
{"applies":true,"help":"The action is passed over unless this holds, such as %Branch% == \"main\" and not %Quick%.","name":"Condition","value":""},
{"applies":true,"help":"How often a failed action is tried again.","name":"Retries","value":"2"},
{"applies":true,"help":"An attempt that takes longer is ended and has failed: 90s, 30m, 2h.","name":"TimeLimit","value":"5m"},
{"applies":true,"help":"An attempt that says nothing for so long is ended and has failed: 90s, 30m, 2h.","name":"IdleLimit","value":""},
{"applies":true,"help":"The passes of this loop may run at the same time, as far as they do not depend on each other.","name":"Parallel","value":"true"}],"typeName":"Loop"})");
  const TJson inner = Do("action", {{"id", "1/0"}});
  EXPECT_EQ(
      plain(Field(inner, 0, "Text")) + plain(inner["terms"]),
      R"({"buttons":[],"default":"","enabled":true,"error":"","filter":"","group":"","hint":"What is sent.","isSet":false,"items":[],"kind":"text","label":"Text","name":"Text","needs":"","offers":"","property":"Text","takesNewItems":false,"title":"","value":"x"}[{"applies":false,"help":"The actions and groups, with commas between them, that must have succeeded before; empty: none. Without it the action needs the one before it.","name":"Needs","value":""},
{"applies":true,"help":"The action is passed over unless this holds, such as %Branch% == \"main\" and not %Quick%.","name":"Condition","value":""},
{"applies":true,"help":"How often a failed action is tried again.","name":"Retries","value":""},
{"applies":true,"help":"An attempt that takes longer is ended and has failed: 90s, 30m, 2h.","name":"TimeLimit","value":""},
{"applies":true,"help":"An attempt that says nothing for so long is ended and has failed: 90s, 30m, 2h.","name":"IdleLimit","value":"9s"},
{"applies":false,"help":"The passes of this loop may run at the same time, as far as they do not depend on each other.","name":"Parallel","value":""}])");
}

TEST_F(EditorSession, OffersTheVariablesThatAreThere) {
  Open("    <Action Type=\"SOLUTIONITERATOR\"><LoopVariable>Item</LoopVariable><Actions>"
       "<Action Type=\"LOOP\"><LoopVariable>Inner</LoopVariable></Action></Actions></Action>\n"
       "    <Action Type=\"STEP\"><Text>%V% $(v)</Text></Action>\n");
  Variable("V");
  Variable("Inner");
  const TJson loop = Do("action", {{"id", "0"}});
  std::string items;
  for (const auto& page : loop["pages"])
    for (const auto& field : page["fields"])
      if (field["items"].dump().find("\"V\"") != std::string::npos)
        items += field["name"].get<std::string>() + field["items"].dump() + "\n";
  EXPECT_EQ(items, R"(cmbVariable["V","Inner","Item"]
)");
  EXPECT_EQ(Do("renameVariable", {{"name", "V"}, {"to", "W"}})["followed"], 2);
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
    const char *Type, *Properties, *Place;
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
    std::string found;
    const TJson entries = Do("validate")["entries"];
    for (const auto& entry : entries)
      if (entry["id"] == "1" && entry["place"] == row.Place)
        found = entry["page"].dump() + " " + entry["field"].get<std::string>();
    EXPECT_EQ(found, std::to_string(row.Page) + " " + row.Field);
  }
}

TEST_F(EditorSession, PagesOfOneNameAreToldApart) {
  Open(Tests);
  std::vector<std::string> names;
  const TJson pages = Do("action", {{"id", "0"}})["pages"];
  for (const auto& page : pages)
    names.push_back(page["name"]);
  EXPECT_THAT(names, ElementsAre("Settings: Test Source", "Settings: MSTest Options", "Publish Results",
                                 "All Properties"));
}

TEST_F(EditorSession, ACircleOfProjectsIsNamedAndHoldsNobodyUp) {
  std::string solution = "\nMicrosoft Visual Studio Solution File, Format Version 10.00\n";
  for (const auto& [name, needed] : {std::pair("A", "B"), {"B", "C"}, {"C", "A"}}) {
    const std::string id = std::string("{") + needed + "}";
    solution += std::string("Project(\"{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"") + name +
                "\", \"http://h/" + name + "\", \"{" + name +
                "}\"\nProjectSection(ProjectDependencies) = postProject\n" + id + " = " + id +
                "\nEndProjectSection\nEndProject\n";
  }
  folder_.Write("A.sln", solution + "Global\nEndGlobal\n");
  Open(Action("DEVENV", "Solution", "A.sln") + Action("SOLUTIONITERATOR", "Solution", "A.sln"));
  Set("0", 0, "BuildType", "Selected Projects");
  EXPECT_THAT(Do("offers", {{"id", "0"}, {"page", 0}, {"field", "SelectedProjects"}}).dump(),
              HasSubstr("A needs B, B needs C, C needs A"));
  Do("validate");
  EXPECT_EQ(Do("quit", {{"discard", true}})["ended"], true);
  EXPECT_TRUE(session_->HasEnded());
}

TEST_F(EditorSession, WhatTakesItsTimeHoldsNobodyUp) {
  Open(Action("STEP", "Text", "slow"));
  TKxEvent began;
  TKxEvent goOn;
  TStepAction::Deeds()[u"validate slow"] = [&](TStepAction&) {
    began.Raise();
    return goOn.WaitFor(Long);
  };
  TKxEvent stop;
  TJson found;
  std::thread checking([&] { found = session_->Handle("validate", TJson::object(), stop); });
  ASSERT_TRUE(began.WaitFor(Long));
  EXPECT_EQ(Variable("V")["dirty"], true);
  EXPECT_EQ(Do("save")["saved"], true);
  EXPECT_EQ(Do("offers", {{"id", "0"}, {"page", 0}, {"field", "Text"}})["error"], "");
  EXPECT_FALSE(stop.IsRaised());
  // Who reads the options is sent away before they change; whoever does not go keeps them as they are.
  EXPECT_THAT(Refusal([&] { Set("options", 1, "DotNetFramework.v4.0", ""); }), HasSubstr("in a moment"));
  EXPECT_TRUE(stop.IsRaised());
  Variable("W");
  EXPECT_THAT(text::ToUtf8(session_->KeepUnsaved()), HasSubstr("p.unsaved.kxproj")) << "as at the end";
  goOn.Raise();
  checking.join();
  EXPECT_EQ(found["isOutdated"], true);
  EXPECT_EQ(Do("validate")["entries"].size(), 0U);
}

TEST_F(EditorSession, TheEndStopsWhatTakesItsTime) {
  Open(Action("STEP", "Text", "slow"));
  TKxEvent began;
  TStepAction::Deeds()[u"validate slow"] = [&](TStepAction& action) {
    began.Raise();
    return action.Host().Stop().WaitFor(std::chrono::seconds(600));
  };
  std::thread checking([&] { Do("validate"); });
  ASSERT_TRUE(began.WaitFor(Long));
  session_->End(Long);
  checking.join();
  Do("validate"); // which begins after the end
}

TEST_F(EditorSession, ALongLogIsGivenInPieces) {
  Open(Action("STEP", "Text", "talk"));
  constexpr int count = 25000;
  folder_.Write("late.cs", std::string(70000, '\n') + "here\r\nthere");
  TStepAction::Deeds()[u"talk"] = [](TStepAction& action) {
    for (int i = 0; i < count; ++i)
      action.SendMessage(u"line " + text::FromInteger(i));
    action.SendMessage(u"late.cs(70001,1): error CS0103: no", TStatusTag::stError);
    for (int i = 0; i < 2; ++i)
      action.SendMessage(u"Warning : It is late.", TStatusTag::stWarning);
    return true;
  };
  Do("run");
  std::size_t next = 0;
  int lines = 0;
  int answers = 0;
  TJson found = TJson::object();
  for (bool goesOn = true; goesOn; ++answers) {
    const TJson piece = TJson::parse(session_->Runs().Events(1, next, std::chrono::seconds(10), stop_));
    EXPECT_EQ(piece["from"], next);
    for (const auto& event : piece["events"])
      if (event["event"] == "message" && event["text"] == "line " + std::to_string(lines)) ++lines;
    for (const auto& finding : piece["findings"])
      found[finding["message"]] = finding["occurrences"];
    next = piece["next"];
    EXPECT_TRUE(next > std::size_t{count} || piece["findings"].empty())
        << "they come with what was said of them";
    goesOn = piece["running"];
  }
  EXPECT_EQ(found.dump(), R"({"It is late.":2,"late.cs(70001,1): error CS0103: no":1})");
  EXPECT_EQ(lines, count);
  EXPECT_GT(answers, 1);
  EXPECT_EQ(next, std::size_t{count} + 6);
  const TJson source = Do("source", {{"event", count + 1}});
  EXPECT_EQ(source["first"], 69993);
  EXPECT_EQ(source["lines"][8], "here");
  EXPECT_EQ(source["lines"].back(), "there");
  EXPECT_EQ(source["open"], "") << "unless somebody wants it";
  for (const auto& [link, address] :
       {std::pair(u"ed:{line}:{file}", "ed:70001:"), {u"javascript:{file}", ""}}) {
    world_.Store.Set({u"Editor", u"OpenFile"}, link);
    const auto opened = Do("source", {{"event", count + 1}})["open"].get<std::string>();
    EXPECT_TRUE(opened.starts_with(address) && opened.empty() == std::string(address).empty()) << opened;
  }
  EXPECT_NE(Refusal("source", {{"event", 1}}), "");
  EXPECT_NE(Refusal("source", {{"event", count + 100}}), "");
}

TEST_F(EditorSession, ARunLogsShowsPlacesAndGivesItsNumbersBack) {
  Open("    <Action Type=\"STEP\">\n      <Text>count</Text>\n      <Number>1</Number>\n    </Action>\n");
  folder_.Write("src/a.cs", "one\ntwo\n");
  std::string counted;
  TStepAction::Deeds()[u"count"] = [&](TStepAction& action) {
    constexpr std::array<std::u16string_view, 1> number{u"Number"};
    action.ChangeStored(number, [&action] { ++action.Number; });
    counted = folder_.Read("p.kxproj");
    action.SendMessage(u"src\\a.cs(2,1): error CS0103: no", TStatusTag::stError);
    action.SendMetricInt(u"Compiler", u"Warnings", action.Number);
    return true;
  };
  const TJson events = RunToTheEnd();
  ASSERT_EQ(events.size(), 5U);
  EXPECT_EQ(events[4]["errors"], 1) << "the end says what the run's summary says";
  EXPECT_EQ(events[1]["line"], 2);
  EXPECT_EQ(Do("source", {{"event", 1}})["lines"][1], "two");
  EXPECT_NE(Refusal("source", {{"event", 0}}), "");
  EXPECT_THAT(counted, HasSubstr("<Number>2</Number>")) << "stored before it is used";
  EXPECT_THAT(Saved(), HasSubstr("<Number>2</Number>")) << "as kxhost run does";
  const TJson run = Do("runs")["runs"][0];
  EXPECT_EQ(run["errors"], 1);
  EXPECT_EQ(run["stopped"], false);
  EXPECT_EQ(run["metrics"][0].dump(),
            R"({"action":"Step","category":"Compiler","configuration":"","name":"Warnings","value":2})");
  RunToTheEnd({{"dryRun", true}});
  EXPECT_THAT(folder_.Read("p.kxproj"), HasSubstr("<Number>2</Number>"));
  TStepAction::Deeds()[u"count"] = [&](TStepAction& action) {
    constexpr std::array<std::u16string_view, 1> number{u"Number"};
    action.ChangeStored(number, [&action] { ++action.Number; });
    folder_.Write("p.kxproj", Project(Action("STEP", "Text", "theirs")));
    return true;
  };
  RunToTheEnd();
  EXPECT_THAT(Do("ping")["messages"].dump(), HasSubstr("edited by somebody else"));
}

TEST_F(EditorSession, ARunIsStoppedAndNothingIsEditedMeanwhile) {
  Open(Action("STEP", "Text", "wait"));
  TKxEvent started;
  TStepAction::Deeds()[u"wait"] = [&](TStepAction& action) {
    started.Raise();
    return action.Terminated.WaitFor(Long);
  };
  Do("run");
  ASSERT_TRUE(started.WaitFor(Long));
  for (const char* operation : {"remove", "run", "quit"})
    EXPECT_THAT(Refusal(operation, {{"id", "0"}}), HasSubstr("running"));
  Do("stop");
  while (Do("ping")["running"] == true)
    std::this_thread::yield();
  EXPECT_EQ(Do("runs")["runs"][0]["stopped"], true);
}

TEST_F(EditorSession, OptionsAreSavedInTheStore) {
  Open(Tests);
  Set("options", 0, "DevEnv2008Location", "/opt/vs");
  EXPECT_THAT(folder_.Read("options.ini"), HasSubstr("/opt/vs"));
  // The host's own, which no package has a page for.
  const char* const own = "DotNetFramework.v4.0";
  const auto folder = text::ToUtf8(folder_.Path("fx"));
  Set("options", 1, own, folder);
  EXPECT_THAT(folder_.Read("options.ini"), HasSubstr("v4.0=" + folder));
  EXPECT_THAT(Refusal([&] { Set("options", 1, own, "fx"); }), HasSubstr("takes the full path of a folder"));
  Set("options", 1, own, "");
  EXPECT_THAT(folder_.Read("options.ini"), Not(HasSubstr("v4.0")));
}

TEST_F(EditorSession, TheChooserListsNamesThatFitTheFilter) {
  const auto listed = [this](std::u16string_view path, std::u16string_view patterns = u"") {
    return ListChooserFolder(path, folder_.Path(""), patterns);
  };
  folder_.Write("Sub/App.sln");
  folder_.Write("Sub/App.SLN.txt");
  const auto folder = listed(u"Sub\\missing\\x.sln", u"*.txt2; *.sln");
  EXPECT_THAT(folder.Files, ElementsAre(u"App.sln"));
  EXPECT_LT(folder.Parent.size(), folder.Path.size());
  EXPECT_THAT(listed(u"Sub").Files, testing::SizeIs(2));
  for (const auto& [path, isThere] :
       {std::pair(u"Sub\\missing\\x.sln", false), {u"Sub\\", true}, {u"", false}, {u"Sub/App.sln", false}})
    EXPECT_EQ(listed(path).IsThere, isThere) << text::ToUtf8(path);
  for (std::size_t i = 0; i <= MostNamesListed; ++i)
    folder_.Write("Many/" + std::to_string(i));
  EXPECT_EQ(listed(u"Many").Files.size(), MostNamesListed);
  EXPECT_EQ(listed(u"Many").More, 1U);
  EXPECT_THROW(ListChooserFolder(std::u16string_view(u"a\0b", 3), u"/", u""), EKxException);
  Open("");
  const TJson answer = Do("list", {{"path", "Sub/"}, {"patterns", "*.sln"}});
  EXPECT_EQ(answer["files"].dump() + answer["isThere"].dump(), "[\"App.sln\"]true");
  const std::tuple<std::u16string_view, std::u16string_view, bool> patterns[] = {
      {u"a.SLN", u"*.sln", true},
      {u"a.sln.txt", u"*.sln", false},
      {u"ab", u"a?", true},
      {u"a", u"a?", false},
      {u"xaxb", u"*a*b", true}};
  for (const auto& [name, pattern, expected] : patterns)
    EXPECT_EQ(MatchesPattern(name, pattern), expected) << text::ToUtf8(name);
}

} // namespace
} // namespace kx::editor
