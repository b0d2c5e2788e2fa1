// A session of the editor on a project of its own, and verbs for what its page asks.
#pragma once

#include "tests/editor/SessionWorld.h"

#include <gmock/gmock.h>

namespace kx::editor {

class TSessionFixture : public testing::Test {
protected:
  ~TSessionFixture() override { tests::TStepAction::Deeds().clear(); }

  void Open(std::string_view actions) {
    folder_.Write("p.kxproj", Project(actions));
    Open();
  }
  void Open() {
    session_.reset();
    session_ = world_.Open();
  }
  static std::string Project(std::string_view actions) {
    return "<BuildProject>\n  <!-- kept -->\n  <Actions>\n" + std::string(actions) +
           "  </Actions>\n</BuildProject>\n";
  }
  // With one property.
  static std::string Action(const std::string& type, const std::string& name, const std::string& value) {
    return "    <Action Type=\"" + type + "\">\n      <" + name + ">" + value + "</" + name +
           ">\n    </Action>\n";
  }

  TJson Do(std::string_view operation, const TJson& arguments = TJson::object()) {
    return session_->Handle(operation, arguments, stop_);
  }
  TJson Set(const char* id, int page, const char* field, const std::string& value) {
    return Do("set", {{"id", id}, {"page", page}, {"field", field}, {"value", value}});
  }
  TJson Click(int page, const char* field, const char* button, const std::string& choice = "") {
    return Do("click",
              {{"id", "0"}, {"page", page}, {"field", field}, {"button", button}, {"choice", choice}});
  }
  TJson Variable(const char* name) { return Do("variable", {{"name", name}, {"value", "1"}}); }
  // What is said against it; empty when it is done.
  std::string Refusal(const std::function<void()>& deed) {
    try {
      deed();
    } catch (const EKxException& error) {
      return error.what();
    }
    return {};
  }
  std::string Refusal(std::string_view operation, const TJson& arguments = TJson::object()) {
    return Refusal([&] { Do(operation, arguments); });
  }
  static TJson Field(const TJson& answer, int page, std::string_view name) {
    const TJson& fields = answer["pages"][static_cast<std::size_t>(page)]["fields"];
    const auto found = std::ranges::find_if(fields, [&](const auto& field) { return field["name"] == name; });
    return found == fields.end() ? TJson() : *found;
  }
  std::string Saved() {
    EXPECT_EQ(Do("save")["saved"], true);
    return folder_.Read("p.kxproj");
  }
  TJson RunToTheEnd(const TJson& arguments = TJson::object()) {
    Do("run", arguments);
    TJson answer;
    do
      answer = TJson::parse(session_->Runs().Events(0, 0, std::chrono::seconds(1), stop_));
    while (answer["running"] == true);
    return answer["events"];
  }

  tests::TSessionWorld world_;
  tests::TTemporaryFolder& folder_ = world_.Folder;
  TKxEvent stop_; // of requests
  std::unique_ptr<TEditorSession> session_;
};

} // namespace kx::editor
