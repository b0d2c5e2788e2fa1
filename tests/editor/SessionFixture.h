// A session of the editor on a project of its own, and verbs for what its page asks.
#pragma once

#include "package/registration/KxVSDotNetReg.h"
#include "program/editor/EditorSession.h"
#include "program/runner/PluginLoader.h"
#include "tests/runner/TestActions.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace kx::editor {

class TNoFrameworks : public IKxDotNetInfo {
public:
  std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view /*version*/) override {
    return std::nullopt;
  }
};

// The package's actions and pages over a store of its own, and two actions without pages.
class TSessionFixture : public testing::Test {
protected:
  TSessionFixture() {
    store_.Load(host_.Path("options.ini"));
    services_.RegisterAction(u"STEP", u"Tests", tests::TStepAction::Class());
    services_.RegisterAction(u"LOOP", u"Tests", tests::TLoopAction::Class());
    SetServices({.Actions = &services_,
                 .Scripting = &services_,
                 .Options = &services_,
                 .Design = &design_,
                 .PropertySetDesign = &design_,
                 .DotNet = &frameworks_});
    RegisterVisualStudioDotNet(TDesignContext());
  }
  ~TSessionFixture() override {
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
    return session_->Handle(operation, arguments, stop_);
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
      answer = TJson::parse(session_->Runs().Events(0, 0, std::chrono::seconds(1), stop_));
    while (answer["running"] == true);
    return answer["events"];
  }

  tests::TEmbeddedHost host_; // for its folder
  TOptionsStore store_;
  TServiceRegistry services_{store_};
  TEditorDesign design_;
  TNoFrameworks frameworks_;
  TKxEvent stop_; // of requests
  std::unique_ptr<TEditorSession> session_;
};

} // namespace kx::editor
