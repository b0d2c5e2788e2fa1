// What a session of the editor lives in: the package's actions and pages over a store and a folder of its
// own, and two actions without pages.
#pragma once

#include "package/registration/KxVSDotNetReg.h"
#include "program/editor/EditorSession.h"
#include "program/runner/PluginLoader.h"
#include "tests/runner/TestActions.h"

namespace kx::tests {

class TNoFrameworks : public IKxDotNetInfo {
public:
  std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view /*version*/) override {
    return std::nullopt;
  }
};

struct TSessionWorld {
  TSessionWorld() {
    Store.Load(Folder.Path("options.ini"));
    Services.RegisterAction(u"STEP", u"Tests", TStepAction::Class());
    Services.RegisterAction(u"LOOP", u"Tests", TLoopAction::Class());
    SetServices({.Actions = &Services,
                 .Scripting = &Services,
                 .Options = &Services,
                 .Design = &Design,
                 .PropertySetDesign = &Design,
                 .DotNet = &Frameworks});
    RegisterVisualStudioDotNet(TDesignContext());
  }
  ~TSessionWorld() { SetServices({}); }
  TSessionWorld(const TSessionWorld&) = delete;
  TSessionWorld& operator=(const TSessionWorld&) = delete;

  // Of p.kxproj in the folder.
  std::unique_ptr<editor::TEditorSession> Open() {
    return std::make_unique<editor::TEditorSession>(
        Services, Design, editor::TSessionSettings{Folder.Path("p.kxproj"), {{}, Folder.Path("keys")}});
  }

  TTemporaryFolder Folder;
  TOptionsStore Store;
  TServiceRegistry Services{Store};
  editor::TEditorDesign Design;
  TNoFrameworks Frameworks;
};

} // namespace kx::tests
