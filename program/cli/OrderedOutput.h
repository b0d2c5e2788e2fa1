// The output of work that is done on several threads, in the order of the work.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx::cli {

// Pieces of work have numbers from 0 on and are begun in that order, each by one thread. What one says is
// shown when all before it have ended. Work that has much to say waits for its turn, and none begins that is
// far ahead of the others: what is kept has a limit.
class TOrderedOutput {
public:
  using TPut = std::function<void(std::string_view utf8)>;

  TOrderedOutput(TPut output, TPut error) : output_(std::move(output)), error_(std::move(error)) {}

  // The number of the next piece to be done; `count` when none is left.
  std::size_t Begin(std::size_t count);
  void Say(std::size_t number, std::string_view utf8) { Take(number, utf8, false); }
  void SayError(std::size_t number, std::string_view utf8) { Take(number, utf8, true); }
  void End(std::size_t number);
  // Nobody waits any more and nothing more is begun: what was to be shown cannot be.
  void Abandon();

private:
  struct TPart {
    bool IsError;
    std::string Text;
  };
  struct TWork {
    std::vector<TPart> Parts = {};
    std::size_t Size = 0; // in bytes
    bool HasEnded = false;
  };

  void Take(std::size_t number, std::string_view utf8, bool isError);
  void Show(TWork& work);
  void ShowEnded();

  const TPut output_;
  const TPut error_;
  std::mutex mutex_;
  std::condition_variable moved_;     // next_ has
  std::map<std::size_t, TWork> kept_; // that has begun and is not shown to its end
  std::size_t begun_ = 0;
  std::size_t next_ = 0; // whose turn it is
  bool isAbandoned_ = false;
};

// Does all pieces of work, on as many threads as help; what one of them raises is raised here, once all have
// stopped.
void DoInOrder(std::size_t count, TOrderedOutput& output,
               const std::function<void(std::size_t number)>& work);

} // namespace kx::cli
