// What one user does to one project in the browser, request by request. No HTTP in here.
#pragma once

#include "program/editor/EditorDesign.h"
#include "program/editor/EditorRuns.h"
#include "program/editor/SessionJson.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

struct TSessionSettings {
  std::u16string FileName; // full path of the project
  TRunSettings Run;        // of every run
  history::TPlace History = {.Off = true};
};

class TEditorSession {
public:
  // Reads the project, which may be missing. Raises EKxParseError. The services and the design service
  // outlive the session; the design service is the one that was set before the plug-ins were loaded.
  TEditorSession(TServiceRegistry& services, TEditorDesign& design, const TSessionSettings& settings);
  ~TEditorSession();

  // Does one thing and gives what the page shows then; raises EKxException with a text for the user, and
  // nothing has changed then. From any thread. Requests follow one another, but what may take its time
  // (disks, solutions) goes on beside the others, until it ends or `stop` is raised: by the caller, when
  // nobody waits any more, or in here. See the table in the source for the operations; docs/editor.md
  // describes what they are for.
  TJson Handle(std::string_view operation, const TJson& arguments, TKxEvent& stop);

  TEditorRuns& Runs() { return runs_; }                   // may be used while a request is handled
  std::string_view Image(std::u16string_view type) const; // SVG of an action type; empty when there is none
  bool IsDirty();                                         // something is not saved
  bool HasEnded() const { return ended_; }                // the user asked for the end; never waits
  // The program ends: stops a run that is going on and whatever goes on beside the requests, now and from now
  // on. Waits this long for the end of the run (the destructor longer).
  void End(std::chrono::milliseconds wait);
  // For the end of the program: takes over what the last run left. Where something is not saved, writes it
  // into a file beside the project, whose name this gives; else empty. Raises EKxException. Files that were
  // kept before stay as they are; a second call writes only what has changed since.
  std::u16string KeepUnsaved();

private:
  using TOperation = TJson (TEditorSession::*)(const TJson& arguments);
  using TWork = std::function<TJson()>;
  static TOperation FindOperation(std::string_view name);
  TJson State(const TJson& arguments);
  TJson Ping(const TJson& arguments);
  TJson Action(const TJson& arguments);
  TJson Set(const TJson& arguments);
  TJson Click(const TJson& arguments);
  TJson ClickWith(const TJson& arguments, const std::optional<std::u16string>& choice);
  TJson Offers(const TJson& arguments);
  TJson Attribute(const TJson& arguments);
  TJson Add(const TJson& arguments);
  TJson Move(const TJson& arguments);
  TJson Copy(const TJson& arguments);
  TJson Remove(const TJson& arguments);
  TJson Group(const TJson& arguments);
  TJson Dissolve(const TJson& arguments);
  TJson Variable(const TJson& arguments);
  TJson RenameVariable(const TJson& arguments);
  TJson PropertySet(const TJson& arguments);
  TJson PropertySetValue(const TJson& arguments);
  TJson Undo(const TJson& arguments);
  TJson Redo(const TJson& arguments);
  TJson Save(const TJson& arguments);
  TJson Reload(const TJson& arguments);
  TJson Validate(const TJson& arguments);
  TJson List(const TJson& arguments);
  TJson Run(const TJson& arguments);
  TJson Stop(const TJson& arguments);
  TJson Runs(const TJson& arguments);
  TJson History(const TJson& arguments);
  TJson Source(const TJson& arguments);
  TJson Timeline(const TJson& arguments);
  TJson Unsaved(const TJson& arguments);
  TJson Quit(const TJson& arguments);

  void EditPage(const TJson& arguments, const std::function<void(TKxPropertyPage&)>& change);
  void EditOptions(TKxPropertyPage& page, const std::function<void(TKxPropertyPage&)>& change);
  TKxPropertyPage& PageOf(const TJson& arguments);
  TPages& OptionsPages();
  TKxPropertyPage& OptionsPage(std::size_t index);
  TJson PagesJson(const TJson& arguments);
  std::string LinkTo(const TEditorRuns::TLocation& location);
  TJson Moved(const TRowPath& row);
  void EditRow(const TJson& arguments, const std::function<void(TProjectText&, const TRowPath&)>& edit);
  void RequireEditable(std::string_view operation, const TJson& arguments);
  std::unique_lock<std::mutex> LockForEditing();
  TJson DoAside(const TWork& work, TKxEvent& stop);
  void StopAsides();
  void TakeRunResult(std::unique_lock<std::mutex>& lock);
  bool Save(TEditedProject::TSaving saving);
  bool TakeCounted(const std::string& present, TEditedProject::TSaving& saving);
  TEditedProject::TSaving BeginSave(TEditedProject::ESave how);
  TJson UnsavedJson() const;
  void LookForCopies();
  std::u16string FullChoice(std::u16string_view choice) const;
  TJson Brief();

  TServiceRegistry& services_;
  TEditorDesign& design_;
  std::mutex mutex_; // guards what follows; never held while something may take its time
  TEditedProject project_;
  TPages optionsPages_;
  history::TPlace history_; // never changes
  TEditorRuns runs_;
  bool wasCleanAtStart_ = false; // when the run began
  std::atomic<bool> ended_ = false;
  std::vector<std::u16string> copies_;   // of what was not saved, beside the project
  std::set<std::u16string> takenCopies_; // which the next save makes superfluous
  std::u16string keptFile_;              // the copy that this session has made, and
  std::string keptText_;                 // what is in it
  bool discarded_ = false;               // the user does not want what is not saved
  bool isSaving_ = false;
  std::condition_variable saved_;
  std::uint64_t answers_ = 0;
  TWork aside_;              // what the operation leaves to be done without the lock, and
  TWork then_;               // with it, once that has been done
  TKxEvent* stop_ = nullptr; // of the request that is being handled

  // Shared by those who read options away from the lock above, alone for who changes or saves them.
  std::shared_timed_mutex optionsMutex_;
  std::mutex asideMutex_; // guards what follows
  std::set<TKxEvent*> underWay_;
  bool isEnding_ = false;
};

} // namespace kx::editor
