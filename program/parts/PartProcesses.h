// Processes that run parts, side by side.
#pragma once

#include "foundation/platform/Process.h"
#include "foundation/platform/StopSignal.h"
#include "program/parts/PartTalk.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kx {

// How a part ended.
struct TPartOutcome {
  std::size_t Part = 0;
  int ExitCode = 0;                        // that the process gave for it, or ended with
  bool HasAnswered = false;                // the process gave the code, and goes on
  bool IsStopped = false;                  // by the user; the exit code then means nothing
  std::u16string Trouble = {};             // why it could not be run; else empty
  std::vector<std::u16string> Errors = {}; // the first lines that were written to standard error meanwhile
};

// A process takes one part after another (PartTalk.h), so that a part costs neither the start of a program
// nor the reading of the project. There are as many as parts have run at once; one that dies takes its part
// with it, and another takes its place. Used by one thread. What it has started has ended when it goes away.
class TPartProcesses {
public:
  // `process` is how one that takes parts is started. The stop signal outlives this.
  TPartProcesses(platform::ProcessRequest process, const platform::StopSignal& stop)
      : process_(std::move(process)), stop_(stop) {}
  ~TPartProcesses();
  TPartProcesses(const TPartProcesses&) = delete;
  TPartProcesses& operator=(const TPartProcesses&) = delete;

  // What cannot be started is an outcome as well.
  void Start(std::size_t part, const TPartTask& task);
  std::size_t Running() const { return running_; } // parts
  TPartOutcome Wait();                             // for the next one that ends, of at least one that runs
  // Ends the processes, of which none has a part any more. What they said, and how they ended where that was
  // no success, while they had none.
  std::vector<std::u16string> End();

private:
  struct TWorker {
    std::shared_ptr<platform::ProcessInput> Input;
    std::optional<std::size_t> Part; // that it runs
    std::thread Thread;
  };
  struct TNews {
    TWorker* Of;
    TPartOutcome Outcome; // its part is for who knows
    bool HasEnded;        // the process, not only its part
  };

  TWorker& Idle(); // one of them, or a new one
  void StartThread(TWorker& worker);
  void Serve(TWorker& worker);
  void Put(TNews news);
  TNews Take();
  void CloseInputs();
  void Remove(const TWorker& ended);
  void Note(const TPartOutcome& outcome); // of a process that had no part

  const platform::ProcessRequest process_;
  const platform::StopSignal& stop_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<TNews> news_;
  std::list<TWorker> workers_; // where they are, their threads know them
  std::size_t running_ = 0;
  std::vector<std::u16string> remarks_;
};

} // namespace kx
