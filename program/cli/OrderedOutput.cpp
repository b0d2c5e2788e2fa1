#include "program/cli/OrderedOutput.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <thread>

namespace kx::cli {

namespace {

constexpr std::size_t FarthestAhead = 32; // pieces of work
constexpr std::size_t MostKept = 1 << 20; // bytes of one
constexpr std::size_t MostThreads = 8;

} // namespace

std::size_t TOrderedOutput::Begin(std::size_t count) {
  std::unique_lock lock(mutex_);
  moved_.wait(lock, [this] { return isAbandoned_ || begun_ < next_ + FarthestAhead; });
  if (isAbandoned_ || begun_ >= count) return count;
  kept_.try_emplace(begun_);
  return begun_++;
}

void TOrderedOutput::Take(std::size_t number, std::string_view utf8, bool isError) {
  std::unique_lock lock(mutex_);
  TWork& work = kept_.at(number);
  if (work.Size >= MostKept) {
    moved_.wait(lock, [&] { return isAbandoned_ || next_ == number; });
    if (isAbandoned_) return;
    Show(work);
  }
  if (work.Parts.empty() || work.Parts.back().IsError != isError) work.Parts.push_back({isError, {}});
  work.Parts.back().Text += utf8;
  work.Size += utf8.size();
}

void TOrderedOutput::End(std::size_t number) {
  const std::lock_guard lock(mutex_);
  kept_.at(number).HasEnded = true;
  ShowEnded();
}

void TOrderedOutput::Abandon() {
  const std::lock_guard lock(mutex_);
  isAbandoned_ = true;
  moved_.notify_all();
}

void TOrderedOutput::Show(TWork& work) {
  for (const auto& part : work.Parts)
    (part.IsError ? error_ : output_)(part.Text);
  work.Parts.clear();
  work.Size = 0;
}

void TOrderedOutput::ShowEnded() {
  const std::size_t before = next_;
  for (auto first = kept_.begin(); first != kept_.end() && first->first == next_ && first->second.HasEnded;
       first = kept_.erase(first), ++next_)
    Show(first->second);
  if (next_ != before) moved_.notify_all();
}

void DoInOrder(std::size_t count, TOrderedOutput& output, const std::function<void(std::size_t)>& work) {
  std::mutex guard;
  std::exception_ptr raised;
  const auto loop = [&] {
    try {
      for (std::size_t number = output.Begin(count); number < count; number = output.Begin(count)) {
        work(number);
        output.End(number);
      }
    } catch (...) {
      output.Abandon();
      const std::lock_guard lock(guard);
      if (!raised) raised = std::current_exception();
    }
  };
  const std::size_t helpers =
      std::min({std::size_t{std::thread::hardware_concurrency()}, count, MostThreads});
  std::vector<std::thread> threads;
  threads.reserve(helpers);
  try {
    while (threads.size() + 1 < helpers)
      threads.emplace_back(loop);
  } catch (const std::system_error&) {
    // The system has no more threads to give: those that there are do it all.
  }
  loop();
  for (auto& thread : threads)
    thread.join();
  if (raised) std::rethrow_exception(raised);
}

} // namespace kx::cli
