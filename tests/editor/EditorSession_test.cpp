#include "editor/EditorSession.h"

#include "editor/FileChooser.h"
#include "package/KxVSDotNetReg.h"
#include "runner/PluginLoader.h"
#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::editor {
namespace {

using testing::HasSubstr;
using testing::Not;
using tests::TStepAction;

// The package's actions and pages over a store of its own, and two actions without pages.
class EditorSession : public testing::Test {
protected:
  EditorSession() {
    store_.Load(host_.Path("options.ini"));
    services_.RegisterAction(u"STEP", u"Tests", TStepAction::Class());
    services_.RegisterAction(u"LOOP", u"Tests", tests::TLoopAction::Class());
    SetServices({.Actions = &services_,
                 .Scripting = &services_,
                 .Options = &services_,
                 .Design = &design_,
                 .PropertySetDesign = &design_});
    RegisterVisualStudioDotNet(TDesignContext());
  }
  ~EditorSession() override {
    session_.reset();
    SetServices({});
  }

  void Open(std::string_view actions) {
    host_.Write("p.kxproj", Project(actions));
    Open();
  }
  void Open() {
    session_.reset();
    session_ = std::make_unique<TEditorSession>(
        services_, design_, TSessionSettings{host_.Path("p.kxproj"), {{}, host_.Path("keys")}});
  }
  static std::string Project(std::string_view actions) {
    return "<BuildProject>\n  <!-- kept -->\n  <Actions>\n" + std::string(actions) +
           "  </Actions>\n</BuildProject>\n";
  }

  TJson Do(std::string_view operation, const TJson& arguments = TJson::object()) {
    return session_->Handle(operation, arguments);
  }
  TJson Set(const char* id, int page, const char* field, const char* value) {
    return Do("set", {{"id", id}, {"page", page}, {"field", field}, {"value", value}});
  }
  std::string Refusal(std::string_view operation, const TJson& arguments) {
    try {
      Do(operation, arguments);
    } catch (const EKxException& error) {
      return error.what();
    }
    return {};
  }
  static TJson Field(const TJson& answer, std::size_t page, std::string_view name) {
    for (const auto& field : answer["pages"][page]["fields"])
      if (field["name"] == name) return field;
    return {};
  }
  std::string Saved() {
    EXPECT_EQ(Do("save")["saved"], true);
    return host_.Read("p.kxproj");
  }
  TJson RunToTheEnd(const TJson& arguments = TJson::object()) {
    Do("run", arguments);
    return EndOfRun();
  }
  TJson EndOfRun() {
    TJson answer;
    do
      answer = TJson::parse(session_->Runs().Events(0, 0, std::chrono::seconds(1)));
    while (answer["running"] == true);
    return answer["events"];
  }

  tests::TEmbeddedHost host_; // for its folder
  TOptionsStore store_;
  TServiceRegistry services_{store_};
  TEditorDesign design_;
  std::unique_ptr<TEditorSession> session_;
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
  Do("attribute", {{"id", "1"}, {"name", "ContinueOnError"}, {"value", "true"}});
  TJson tree = Do("attribute", {{"id", "1"}, {"name", "LoopVariable"}, {"value", "Item"}})["tree"];
  EXPECT_EQ(tree[0]["type"], "MSTEST");
  EXPECT_EQ(tree[1]["name"], "Schleife");
  EXPECT_EQ(tree[1]["continueOnError"], true);
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

TEST_F(EditorSession, ProblemsStandBesideTheirFields) {
  Open("    <Action Type=\"STEP\"/>\n    <Action Type=\"DEVENV\"/>\n");
  TJson entries = Do("validate")["entries"];
  ASSERT_GE(entries.size(), 2U);
  EXPECT_EQ(entries[0]["field"], "Text");
  EXPECT_EQ(entries[1]["id"], "1");
  EXPECT_EQ(entries[1]["page"], 0);
  EXPECT_EQ(entries[1]["field"], "Solution");
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
}

TEST_F(EditorSession, TheChooserListsNamesThatFitTheFilter) {
  host_.Write("Sub/App.sln", "");
  host_.Write("Sub/App.SLN.txt", "");
  const auto folder = ListChooserFolder(u"Sub\\missing\\x.sln", host_.Path(""), u"Solutions (*.sln)|*.sln");
  EXPECT_THAT(folder.Files, testing::ElementsAre(u"App.sln"));
  EXPECT_TRUE(folder.Parent.size() < folder.Path.size());
  EXPECT_THAT(ListChooserFolder(u"Sub", host_.Path(""), u"").Files, testing::SizeIs(2));
  EXPECT_THROW(ListChooserFolder(std::u16string_view(u"a\0b", 3), u"/", u""), EKxException);
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
