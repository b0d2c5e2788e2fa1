// kxhost edit: a build project in the user's browser.
#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/ProjectArgument.h"
#include "program/cli/RunArguments.h"
#include "program/cli/Usage.h"
#include "program/editor/EditorDesign.h"
#include "program/editor/EditorServer.h"
#include "program/editor/EditorSession.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace kx::cli {

namespace {

struct TEditArguments {
  std::optional<std::string> File;
  TRunArguments Run;
  bool NoBrowser = false;
};

// Without a page that asks now and then, and with nothing to lose.
constexpr auto IdleEnd = std::chrono::minutes(10);
// Until what goes on has to end when it is asked to.
constexpr auto LongestEnd = std::chrono::seconds(3);

void PrintLine(const std::string& text) {
  Print(text + "\n");
}

// A page that leads on to the editor. The arguments of a program are seen by everybody on the machine, so the
// browser is given this page's name; what stands in it only the user reads.
class TDoorPage {
public:
  platform::Status Open(const std::string& address) {
    auto folder = platform::PrivateFolder::Create();
    if (!folder) return platform::Failure{folder.Message()};
    folder_ = *std::move(folder);
    const auto file =
        platform::CreateTemporaryFile(folder_->Path(), u"kxhost-", u".html"); // for this user only
    if (!file) return platform::Failure{file.Message()};
    auto written = platform::SaveFile(
        *file,
        "<!DOCTYPE html><html lang=\"en\"><meta charset=\"utf-8\"><title>kxhost</title>"
        "<meta name=\"referrer\" content=\"no-referrer\"><meta http-equiv=\"refresh\" content=\"0;url=" +
            address + "\"><p><a href=\"" + address + "\">Open the project</a></p></html>\n");
    return written ? platform::OpenInBrowser(*file) : written;
  }

private:
  std::optional<platform::PrivateFolder> folder_; // removed with this object
};

// Whether a browser that was started shows the page, only the user can see: the address is there in any case.
void ShowAddress(const std::string& address, TDoorPage* door) {
  if (door != nullptr) {
    const auto opened = door->Open(address);
    PrintLine(opened ? "The browser opens the project."
                     : "No browser could be started: " + text::ToUtf8(opened.Message()));
  }
  PrintLine(
      "Where no browser shows it, open this address, which is good for one use; Ctrl-C ends the editor:\n" +
      address);
}

void ServeToTheEnd(editor::TEditorSession& session, const editor::TEditorServer& server,
                   const platform::StopSignal& stop) {
  while (!stop.WaitFor(std::chrono::milliseconds(300))) {
    if (session.HasEnded()) return;
    if (server.Idle() > IdleEnd && !session.Runs().IsRunning() && !session.IsDirty()) return;
  }
}

// A run may be slow to end, and whoever asks a second time does not wait for it.
void KeepBeforehand(editor::TEditorSession& session) {
  try {
    session.KeepUnsaved();
  } catch (const std::exception&) { // said when it fails at the end, too
  }
}

int Edit(const TEditArguments& arguments, const TCommonOptions& common) {
  const std::u16string file = RequireProject(arguments.File);
  editor::TEditorDesign design;
  THostSession host(common, {&design, &design});
  host.Store().Patience.Longest = std::chrono::milliseconds(900); // the page waits meanwhile
  editor::TEditorSession session(host.Services(), design,
                                 {text::ExpandPath(file, platform::CurrentDirectory()),
                                  RunSettingsOf(arguments.Run, host, false), HistoryOf(common)});
  editor::TEditorServer server(session);
  const platform::InterruptHandler interrupts(host.Stop());
  {
    TDoorPage door;
    ShowAddress(server.Address(), arguments.NoBrowser ? nullptr : &door);
    // An address that nobody reads leads nobody here.
    const bool reachable = platform::WriteFailure(platform::ConsoleStream::Output).empty();
    if (reachable || !arguments.NoBrowser) ServeToTheEnd(session, server, host.Stop());
    KeepBeforehand(session);
    session.End(LongestEnd); // pages that wait for its events are answered
  }
  const std::u16string kept = session.KeepUnsaved();
  if (!kept.empty()) PrintLine("What was not saved is kept in " + text::ToUtf8(kept));
  host.SaveOptions();
  // A request that hangs on a disk which does not answer cannot be ended otherwise; nothing is lost by it.
  if (!server.Close(LongestEnd)) std::_Exit(ExitSuccess);
  return ExitSuccess;
}

} // namespace

void DefineEdit(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  auto arguments = std::make_shared<TEditArguments>();
  DefineProject(command, arguments->File);
  DefineRunArguments(command, arguments->Run);
  command.add_flag("--no-browser", arguments->NoBrowser, "Print the address instead of opening the browser");
  command.callback([arguments, &common, &exitCode] { exitCode = Edit(*arguments, common); });
}

} // namespace kx::cli
