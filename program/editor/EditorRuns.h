// The runs of the edited project: one at a time, on a thread of their own, with a log that grows while it is
// read.
#pragma once

#include "program/history/Place.h"
#include "program/runner/Run.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kx::editor {

class TEditorRuns {
public:
  TEditorRuns(const TServiceRegistry& services, TRunSettings settings,
              history::TPlace history = {.Off = true});
  ~TEditorRuns(); // stops a run that is going on and waits for its end
  TEditorRuns(const TEditorRuns&) = delete;
  TEditorRuns& operator=(const TEditorRuns&) = delete;

  // Runs a project that has this text and stands in this file. Raises EKxException while another run goes on.
  void Start(std::string text, std::u16string fileName, std::optional<std::string> stored, bool dryRun);
  void Stop(); // asks the run to end; nothing happens when there is none
  // The same, and waits so long for the end; for the thread that made this object.
  void End(std::chrono::milliseconds wait);
  bool IsRunning() const;

  // The text of the project as the run left it (numbers that it has counted up); once, after the end. A dry
  // run leaves nothing.
  std::optional<std::string> TakeResult();
  bool HasResult() const;

  // The events of the newest run from position `from` on, at most some megabytes; while it goes on waits for
  // the next one, but not longer than `wait` or until `stop` is raised. Another `run` than the newest counts
  // from the beginning. Where the disk took no more events, the last one says so.
  //   {"run":2,"running":true,"errors":1,"warnings":0,"from":10,"next":12,"events":[...],"findings":[...]}
  // The events are those of program/report/JsonLinesSink.h, with the places of problems ("file", "line",
  // "column") and what a loop counts ("unit"). The findings are those that came or changed with these events,
  // each as WriteFinding has it, with its "place" among all of the run, from 0; their files are full paths.
  std::string Events(int run, std::size_t from, std::chrono::milliseconds wait, const TKxEvent& stop);

  // All runs of the session, without their logs: what became of them (WriteRun), the rows of their end
  // tables, their metrics, and what is to be said of their history ("historyTrouble", empty for nothing).
  nlohmann::json Summaries() const;

  // Of the newest run, once it has ended, as program/report/Timeline.h draws it.
  std::string Timeline() const;

  // Where the problem is that the newest run has reported at this position, or the finding in this place; the
  // page cannot ask for others.
  struct TLocation {
    std::u16string File; // full
    int Line = 0;
    int Column = 0; // 0: not known
  };
  std::optional<TLocation> LocationOf(std::size_t event) const;
  std::optional<TLocation> LocationOfFinding(std::size_t place) const;

private:
  class TSink;
  struct TRun;
  static std::string SummaryOf(const TRun& run, const TRunReport& report, const std::u16string& error);
  std::string RunProject(TRun& run, TRunReport& report);
  void Execute(TRun& run);
  void Append(TRun& run, std::string_view line, const TProblemCounts& soFar);
  std::shared_ptr<TRun> Newest() const;
  std::optional<TLocation>
  ReadLocation(const std::function<std::optional<std::string>(const TRun&)>& read) const;
  void WaitForNews(int run, std::size_t from, std::chrono::milliseconds wait, const TKxEvent& stop);

  const TServiceRegistry& services_;
  TRunSettings settings_;
  const history::TPlace history_;
  TKxEvent stop_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<nlohmann::json> summaries_;
  std::shared_ptr<TRun> run_; // the newest
  std::optional<std::string> result_;
  std::thread thread_;
};

} // namespace kx::editor
