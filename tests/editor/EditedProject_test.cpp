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

} // namespace
} // namespace kx::editor
