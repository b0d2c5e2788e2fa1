#include "program/editor/EditedProject.h"

#include "tests/editor/SessionWorld.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

namespace kx::editor {
namespace {

class EditedProject : public testing::Test {
protected:
  ~EditedProject() override { tests::TStepAction::Deeds().clear(); }

  void Open() {
    project_ = std::make_unique<TEditedProject>(world_.Services, TRunSettings{{}, folder_.Path("keys")},
                                                folder_.Path("p.kxproj"));
  }
  void Open(const std::string& actions) {
    folder_.Write("p.kxproj", "<BuildProject><Actions>" + actions + "</Actions></BuildProject>");
    Open();
  }
  TActionNode& Node(const TActionPath& path) { return project_->NodeAt(path); }
  TActionPath Added(std::u16string_view type, const TRowPath& at) {
    return project_->PathOf(project_->AddAction(type, at));
  }
  void SetField(const TActionPath& path, std::size_t page, std::u16string_view field,
                std::u16string_view value) {
    project_->EditPage(Node(path), page, field,
                       [&](TKxPropertyPage& shown) { shown.SetValue(field, value); });
  }
  std::u16string Shown(const TActionPath& path, std::size_t page, std::u16string_view field) {
    return project_->PagesOf(Node(path)).at(page)->Field(field).Value;
  }
  // What the buttons of the window know, how often the actions were made anew, and what would be saved.
  std::string State() {
    std::string state = project_->IsDirty() ? "dirty" : "saved";
    state += project_->CanUndo() ? " undo" : "";
    state += project_->CanRedo() ? " redo" : "";
    state += " " + std::to_string(project_->Generation()) + (project_->HasFile() ? " |" : " new |");
    for (const char c : project_->Text())
      if (c != '\n' && (c != ' ' || state.back() != ' ')) state += c;
    const std::string frame[] = {"<BuildProject>", "<Actions>", "</Actions>", "</BuildProject>"};
    for (const auto& tag : frame)
      if (const auto at = state.find(tag); at != state.npos) state.erase(at, tag.size());
    return state;
  }

  tests::TSessionWorld world_;
  tests::TTemporaryFolder& folder_ = world_.Folder;
  std::unique_ptr<TEditedProject> project_;
};

TEST_F(EditedProject, TakesEachEditAsOneStep) {
  Open("<Action Type='STEP'/><Action Type='STEP'><Text>b</Text></Action>");
  EXPECT_EQ(State(), "saved 1 |<Action Type='STEP'/><Action Type='STEP'><Text>b</Text></Action>");
  SetField({0}, 0, u"Text", u"x");
  SetField({0}, 0, u"Text", u"xy");
  EXPECT_EQ(State(), "dirty undo 1 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>b</Text></Action>");
  SetField({1}, 0, u"Text", u"by");
  SetField({1}, 0, u"Number", u"8");
  EXPECT_EQ(State(), "dirty undo 1 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>by</Text> <Number>8</Number></Action>");
  SetField({1}, 0, u"Number", u"x"); // no number
  EXPECT_EQ(State(), "dirty undo 1 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>by</Text> <Number>8</Number></Action>");
  project_->Undo();
  EXPECT_EQ(State(), "dirty undo redo 2 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>by</Text></Action>");
  SetField({1}, 0, u"Number", u"7"); // as it is
  EXPECT_EQ(State(), "dirty undo redo 2 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>by</Text></Action>");
  project_->Undo();
  project_->Undo();
  project_->Undo();
  EXPECT_EQ(State(), "saved redo 4 |<Action Type='STEP'/><Action Type='STEP'><Text>b</Text></Action>");
  project_->Redo();
  SetField({0}, 0, u"Text", u"z"); // a step of its own behind one that was done again
  EXPECT_EQ(State(), "dirty undo 5 |<Action Type='STEP'> <Text>z</Text></Action><Action "
                     "Type='STEP'><Text>b</Text></Action>");
  project_->Redo();
  project_->Undo();
  EXPECT_EQ(State(), "dirty undo redo 6 |<Action Type='STEP'> <Text>xy</Text></Action><Action "
                     "Type='STEP'><Text>b</Text></Action>");
  project_->SetProperty(Node({1}), u"Colour", u"Blue");
  EXPECT_EQ(Shown({1}, 0, u"Colour"), u"Blue");
  project_->SetProperty(Node({1}), u"Colour", u"Blue");
  EXPECT_EQ(
      State(),
      R"(dirty undo 6 |<Action Type='STEP'> <Text>xy</Text></Action><Action Type='STEP'><Text>b</Text> <Colour Name="Blue">2</Colour></Action>)");
  project_->SetProperty(Node({1}), u"Flag", u"True");
  SetField({1}, 0, u"Text", u"c");
  project_->Undo();
  EXPECT_EQ(
      State(),
      R"(dirty undo redo 7 |<Action Type='STEP'> <Text>xy</Text></Action><Action Type='STEP'><Text>b</Text> <Flag>True</Flag> <Colour Name="Blue">2</Colour></Action>)");
}

TEST_F(EditedProject, MakesActionsWhereTheyAreWanted) {
  Open("<Action Type='LOOP'/><Group Name='G'><Action Type='STEP' Name='a'/></Group>");
  EXPECT_EQ(Added(u"STEP", {0, 7}), (TActionPath{0, 0}));
  EXPECT_EQ(
      State(),
      R"(dirty undo 2 |<Action Type='LOOP'> <Actions> <Action Type="STEP"/> </Action><Group Name='G'><Action Type='STEP' Name='a'/></Group></Actions>)");
  EXPECT_EQ(Added(u"LOOP", {1, 0}), (TActionPath{1}));
  EXPECT_EQ(Added(u"STEP", {9}), (TActionPath{3}));
  EXPECT_EQ(Added(u"STEP", {0, 0}), (TActionPath{0, 0}));
  EXPECT_EQ(
      State(),
      R"(dirty undo 5 |<Action Type='LOOP'> <Actions> <Action Type="STEP"/> <Action Type="STEP"/> </Action><Group Name='G'><Action Type="LOOP"/><Action Type='STEP' Name='a'/></Group> <Action Type="STEP"/></Actions>)");
  EXPECT_EQ(project_->PathOf(Node({0, 1})), (TActionPath{0, 1}));
  EXPECT_EQ(tests::FailureOf([&] { project_->AddAction(u"STEP", {}); }),
            "There is no such place for an action.");
  for (const TActionPath& path : {TActionPath{4}, TActionPath{0, 2}, TActionPath{3, 0}})
    EXPECT_EQ(tests::FailureOf([&] { Node(path); }), "The project has no such action any more.");
  EXPECT_EQ(tests::FailureOf([&] { Node({}); }), "No action is named.");
  project_->EditText([](TProjectText& text) { text.RemoveRow({1}); });
  EXPECT_EQ(
      State(),
      R"(dirty undo 6 |<Action Type='LOOP'> <Actions> <Action Type="STEP"/> <Action Type="STEP"/> </Action> <Action Type="STEP"/></Actions>)");
  project_->EditText([](TProjectText&) {});
  EXPECT_EQ(tests::FailureOf([&] { SetField({0}, 9, u"Text", u""); }), "The action has no such page.");
  EXPECT_EQ(
      State(),
      R"(dirty undo 6 |<Action Type='LOOP'> <Actions> <Action Type="STEP"/> <Action Type="STEP"/> </Action> <Action Type="STEP"/></Actions>)");
}

TEST_F(EditedProject, ANewOneIsSavedUnlessAnotherHasWrittenTheFile) {
  Open();
  EXPECT_EQ(State(), R"(saved 1 new |<?xml version="1.0" encoding="utf-8"?>  )");
  project_->AddAction(u"STEP", {0});
  EXPECT_EQ(State(), R"(dirty undo 2 new |<?xml version="1.0" encoding="utf-8"?>  <Action Type="STEP"/> )");
  auto saving = project_->BeginSave(TEditedProject::ESave::Safely);
  std::string present = "none";
  EXPECT_TRUE(saving.Write(present));
  EXPECT_EQ(present, "none");
  project_->EndSave(saving);
  EXPECT_EQ(State(), R"(saved undo 2 |<?xml version="1.0" encoding="utf-8"?>  <Action Type="STEP"/> )");
  SetField({0}, 0, u"Text", u"x");
  project_->EndSave(project_->BeginSave(TEditedProject::ESave::Safely));
  SetField({0}, 0, u"Text", u"xy"); // a step of its own behind a save
  project_->Undo();
  EXPECT_EQ(
      State(),
      R"(saved undo redo 3 |<?xml version="1.0" encoding="utf-8"?>  <Action Type="STEP"> <Text>x</Text> </Action> )");
  project_->Redo();
  folder_.Write("p.kxproj", "theirs");
  saving = project_->BeginSave(TEditedProject::ESave::Safely);
  EXPECT_FALSE(saving.Write(present));
  EXPECT_EQ(present, "theirs");
  EXPECT_EQ(folder_.Read("p.kxproj"), "theirs");
  EXPECT_FALSE(project_->TakeCounted(present));
  saving = project_->BeginSave(TEditedProject::ESave::Overwrite);
  EXPECT_TRUE(saving.Write(present));
  EXPECT_EQ(folder_.Read("p.kxproj"), project_->Text());
  saving = project_->BeginSave(TEditedProject::ESave::Safely);
  EXPECT_TRUE(saving.Write(present)) << "the same stands there already";
  project_->Reload("<BuildProject><Actions><Action Type='LOOP'/></Actions></BuildProject>");
  EXPECT_EQ(State(), "saved undo 5 |<Action Type='LOOP'/>");
  project_->Undo();
  EXPECT_EQ(
      State(),
      R"(dirty undo redo 6 |<?xml version="1.0" encoding="utf-8"?>  <Action Type="STEP"> <Text>xy</Text> </Action> )");
}

TEST_F(EditedProject, TakesOverNumbersThatARunHasCounted) {
  const auto project = [](const std::string& outer, const std::string& inner, const std::string& more = "") {
    return "<BuildProject><Actions><Action Type='LOOP' Name='L'><LoopVariable>" + outer +
           "</LoopVariable><Actions><Action Type='STEP' Name='S'><Number>" + inner +
           "</Number></Action></Actions></Action>" + more + "</Actions></BuildProject>";
  };
  folder_.Write("p.kxproj", project("a", "1"));
  Open();
  project_->AddAction(u"STEP", {1});
  EXPECT_FALSE(project_->TakeCounted(project("a", "2", "<!-- -->")));
  EXPECT_FALSE(project_->TakeCounted(project("a", "2", "<Action Type='STEP'/>")));
  EXPECT_FALSE(project_->TakeCounted("<BuildProject>"));
  EXPECT_TRUE(project_->TakeCounted(project("b", "2")));
  EXPECT_EQ(*project_->Stored(), project("b", "2"));
  EXPECT_EQ(
      State(),
      R"(dirty undo 3 |<Action Type='LOOP' Name='L'><LoopVariable>b</LoopVariable><Actions><Action Type='STEP' Name='S'><Number>2</Number></Action></Action> <Action Type="STEP"/></Actions>)");
  project_->Undo();
  EXPECT_EQ(
      State(),
      R"(dirty undo redo 4 |<Action Type='LOOP' Name='L'><LoopVariable>a</LoopVariable><Actions><Action Type='STEP' Name='S'><Number>1</Number></Action></Action> <Action Type="STEP"/></Actions>)");
}

TEST_F(EditedProject, KeepsATextThatAwaitsItsButton) {
  Open("<Action Type='MSTEST'/><Action Type='STEP'/>");
  const auto memo = [this] {
    return text::ToUtf8(text::ReplaceAll(Shown({0}, 0, u"MemoAssemblies"), u"\r\n", u","));
  };
  SetField({0}, 0, u"txtAssemblyFilename", u"a.dll");
  EXPECT_EQ(State() + memo(), "saved 1 |<Action Type='MSTEST'/><Action Type='STEP'/>");
  project_->Undo(); // the text alone
  EXPECT_EQ(Shown({0}, 0, u"txtAssemblyFilename"), u"");
  EXPECT_EQ(State(), "saved 1 |<Action Type='MSTEST'/><Action Type='STEP'/>");
  SetField({0}, 0, u"txtAssemblyFilename", u"b.dll");
  SetField({0}, 0, u"txtAssemblyFilename", u"c.dll"); // the same field goes on
  SetField({1}, 0, u"Text", u"x");
  EXPECT_EQ(
      State() + memo(),
      R"(dirty undo 1 |<Action Type='MSTEST'> <AssemblyFileName>"c.dll"</AssemblyFileName></Action><Action Type='STEP'> <Text>x</Text></Action>c.dll,)");
  SetField({0}, 0, u"txtAssemblyFilename", u"d.dll");
  SetField({0}, 0, u"txtAssemblyFilename", u"");
  project_->Accept();
  EXPECT_EQ(
      State() + memo(),
      R"(dirty undo 1 |<Action Type='MSTEST'> <AssemblyFileName>"c.dll"</AssemblyFileName></Action><Action Type='STEP'> <Text>x</Text></Action>c.dll,)");
  SetField({0}, 0, u"txtAssemblyFilename", u"e.dll");
  project_->SetProperty(Node({1}), u"Text", u"y");
  EXPECT_EQ(
      State() + memo(),
      R"(dirty undo 1 |<Action Type='MSTEST'> <AssemblyFileName>"c.dll"|"e.dll"</AssemblyFileName></Action><Action Type='STEP'> <Text>y</Text></Action>c.dll,e.dll,)");
}

TEST_F(EditedProject, ItsCopyAndPagesOfNewActionsChangeNothing) {
  Open("<Action Type='STEP'><Text>t</Text></Action>");
  TKxEvent stop;
  const auto copy = project_->Copy(stop);
  copy->SetProperty(copy->NodeAt({0}), u"Text", u"changed");
  EXPECT_EQ(copy->FileName(), project_->FileName());
  EXPECT_EQ(&copy->Runner().Stop(), &stop);
  EXPECT_EQ(State(), "saved 1 |<Action Type='STEP'><Text>t</Text></Action>");
  const TPages fresh = project_->PagesOfNew(Node({0}));
  EXPECT_EQ(fresh.at(0)->Field(u"Number").Value, u"7");
  EXPECT_EQ(fresh.at(0)->Field(u"Text").Value, u"");
  Node({0}).Set(u"Text", u"behind its back");
  EXPECT_EQ(Shown({0}, 0, u"Text"), u"behind its back"); // read when first asked
  Node({0}).Set(u"Text", u"again");
  EXPECT_EQ(Shown({0}, 0, u"Text"), u"behind its back");
  project_->ReadAgain(Node({0}));
  EXPECT_EQ(Shown({0}, 0, u"Text"), u"again");
}

} // namespace
} // namespace kx::editor
