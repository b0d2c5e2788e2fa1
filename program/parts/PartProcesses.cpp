#include "program/parts/PartProcesses.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace kx {

namespace {

constexpr std::size_t MostErrors = 100; // lines; what a part has to say it says in its log

void Add(std::vector<std::u16string>& errors, std::u16string_view line) {
  if (errors.size() < MostErrors) errors.emplace_back(line);
}

std::u16string EndOf(const TPartOutcome& outcome) {
  if (!outcome.Trouble.empty()) return outcome.Trouble;
  const std::u16string fault = platform::FaultOfExitCode(outcome.ExitCode);
  return u"A process that ran parts was ended by " +
         (fault.empty() ? u"itself with code " + text::FromInteger(outcome.ExitCode) : fault) + u".";
}

} // namespace

TPartProcesses::~TPartProcesses() {
  CloseInputs();
  for (TWorker& worker : workers_)
    if (worker.Thread.joinable()) worker.Thread.join();
}

void TPartProcesses::CloseInputs() {
  for (TWorker& worker : workers_)
    if (worker.Input) worker.Input->Close();
}

void TPartProcesses::Start(std::size_t part, const TPartTask& task) {
  TWorker& worker = Idle();
  worker.Part = part;
  ++running_;
  // One that takes nothing any more is about to end, and its end is news.
  if (worker.Input && !worker.Input->Write(TaskLine(task))) worker.Input->Close();
}

TPartProcesses::TWorker& TPartProcesses::Idle() {
  const auto idle = std::ranges::find_if(workers_, [](const auto& worker) { return !worker.Part; });
  if (idle != workers_.end()) return *idle;
  TWorker& worker = workers_.emplace_back();
  auto input = platform::ProcessInput::Open();
  if (input) {
    worker.Input = *std::move(input);
    StartThread(worker);
  } else {
    Put({&worker, {.Trouble = input.Message()}, true});
  }
  return worker;
}

void TPartProcesses::StartThread(TWorker& worker) {
  try {
    worker.Thread = std::thread([this, &worker] { Serve(worker); });
  } catch (const std::exception& error) {
    Put({&worker, {.Trouble = MessageOf(error)}, true});
  }
}

// On the worker's thread.
void TPartProcesses::Serve(TWorker& worker) {
  TPartOutcome outcome;
  try {
    platform::ProcessRequest request = process_;
    request.Input = worker.Input;
    platform::ProcessOutput output;
    output.OnStdErr = [&](std::u16string_view line) {
      const auto answer = ReadAnswer(line);
      if (!answer) return Add(outcome.Errors, line);
      if (!answer->Before.empty()) Add(outcome.Errors, answer->Before);
      outcome.ExitCode = answer->ExitCode;
      outcome.HasAnswered = true;
      Put({&worker, std::exchange(outcome, {}), false});
    };
    const std::array<const platform::StopSignal*, 1> stops{&stop_};
    const auto ended = platform::RunProcess(request, output, stops);
    if (!ended) {
      outcome.Trouble = ended.Message();
    } else {
      outcome.ExitCode = ended->ExitCode;
      outcome.IsStopped = ended->Stopped;
    }
  } catch (const std::exception& error) {
    outcome.Trouble = MessageOf(error);
  }
  Put({&worker, std::move(outcome), true});
}

void TPartProcesses::Put(TNews news) {
  {
    const std::scoped_lock lock(mutex_);
    news_.push_back(std::move(news));
  }
  changed_.notify_one();
}

TPartProcesses::TNews TPartProcesses::Take() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return !news_.empty(); });
  TNews news = std::move(news_.front());
  news_.pop_front();
  return news;
}

TPartOutcome TPartProcesses::Wait() {
  while (true) {
    TNews news = Take();
    const auto part = std::exchange(news.Of->Part, std::nullopt);
    if (news.HasEnded) Remove(*news.Of);
    if (!part) {
      Note(news.Outcome);
      continue;
    }
    --running_;
    news.Outcome.Part = *part;
    return std::move(news.Outcome);
  }
}

std::vector<std::u16string> TPartProcesses::End() {
  CloseInputs();
  while (!workers_.empty()) {
    const TNews news = Take();
    if (news.HasEnded) Remove(*news.Of);
    Note(news.Outcome);
  }
  return std::exchange(remarks_, {});
}

void TPartProcesses::Remove(const TWorker& ended) {
  const auto worker = std::ranges::find_if(workers_, [&](const auto& other) { return &other == &ended; });
  if (worker->Thread.joinable()) worker->Thread.join();
  workers_.erase(worker);
}

void TPartProcesses::Note(const TPartOutcome& outcome) {
  remarks_.insert(remarks_.end(), outcome.Errors.begin(), outcome.Errors.end());
  const bool isWell = outcome.IsStopped || (outcome.ExitCode == 0 && outcome.Trouble.empty());
  if (!isWell) remarks_.push_back(EndOf(outcome));
}

} // namespace kx
